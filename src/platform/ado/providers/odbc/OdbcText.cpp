#include "platform/ado/providers/odbc/OdbcText.h"

namespace varsentix::ado::detail::odbcprovider {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

}  // namespace

std::u16string utf8ToUtf16(const std::string& text) {
  std::u16string out;
  out.reserve(text.size());
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  for (size_t i = 0; i < n;) {
    unsigned char b = p[i];
    char32_t c;
    size_t length;
    if (b < 0x80) {
      c = b, length = 1;
    } else if ((b & 0xE0) == 0xC0) {
      c = b & 0x1F, length = 2;
    } else if ((b & 0xF0) == 0xE0) {
      c = b & 0x0F, length = 3;
    } else if ((b & 0xF8) == 0xF0) {
      c = b & 0x07, length = 4;
    } else {
      out += static_cast<char16_t>(kReplacement);
      ++i;
      continue;
    }
    bool valid = i + length <= n;
    for (size_t k = 1; valid && k < length; ++k) {
      if ((p[i + k] & 0xC0) != 0x80) valid = false;
      else c = (c << 6) | (p[i + k] & 0x3F);
    }
    if (!valid || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out += static_cast<char16_t>(kReplacement);
      ++i;
      continue;
    }
    if (c >= 0x10000) {
      c -= 0x10000;
      out += static_cast<char16_t>(0xD800 + (c >> 10));
      out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    } else {
      out += static_cast<char16_t>(c);
    }
    i += length;
  }
  return out;
}

std::string utf16ToUtf8(const char16_t* text, size_t units) {
  std::string out;
  out.reserve(units);
  for (size_t i = 0; i < units; ++i) {
    char32_t c = text[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < units && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = kReplacement;
    }
    appendUtf8(out, c);
  }
  return out;
}

}  // namespace varsentix::ado::detail::odbcprovider
