#include "cli/TextSafety.h"

#include <cstdio>

namespace varsentix::cli {
namespace {

bool isContinuation(unsigned char c) { return (c & 0xC0) == 0x80; }

std::string hexEscape(const char* form, unsigned value) {
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, form, value);
  return buffer;
}

bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }

}  // namespace

size_t utf8SequenceAt(const std::string& text, size_t at, char32_t& codePoint) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  size_t length = 0;
  char32_t minimum = 0;
  if (lead < 0x80) {
    codePoint = lead;
    return 1;
  } else if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2, minimum = 0x80, codePoint = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3, minimum = 0x800, codePoint = lead & 0x0F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4, minimum = 0x10000, codePoint = lead & 0x07;
  } else {
    return 0;
  }
  if (at + length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if (!isContinuation(byte(at + i))) return 0;
    codePoint = (codePoint << 6) | (byte(at + i) & 0x3F);
  }
  if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) return 0;
  return length;
}

std::string escapedForTerminal(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    char32_t c = 0;
    const size_t length = utf8SequenceAt(text, i, c);
    if (length == 0) {
      out += hexEscape("\\x%02x", static_cast<unsigned char>(text[i]));
      ++i;
      continue;
    }
    if (c == '\n') out += "\\n";
    else if (c == '\r') out += "\\r";
    else if (c == '\t') out += "\\t";
    else if (c == '\\') out += "\\\\";
    else if (isControl(c)) out += hexEscape("\\x%02x", static_cast<unsigned>(c));
    else out.append(text, i, length);
    i += length;
  }
  return out;
}

std::string jsonString(const std::string& text) {
  std::string out = "\"";
  out.reserve(text.size() + 2);
  for (size_t i = 0; i < text.size();) {
    char32_t c = 0;
    const size_t length = utf8SequenceAt(text, i, c);
    if (length == 0) {
      out += "\\ufffd";
      ++i;
      continue;
    }
    if (c == '"') out += "\\\"";
    else if (c == '\\') out += "\\\\";
    else if (c == '\n') out += "\\n";
    else if (c == '\r') out += "\\r";
    else if (c == '\t') out += "\\t";
    else if (isControl(c)) out += hexEscape("\\u%04x", static_cast<unsigned>(c));
    else out.append(text, i, length);
    i += length;
  }
  return out + "\"";
}

}  // namespace varsentix::cli
