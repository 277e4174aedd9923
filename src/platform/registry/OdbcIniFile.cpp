#include "platform/registry/OdbcIniFile.h"

#include <charconv>
#include <cstring>
#include <fstream>
#include <string_view>

#include "varsentix/platform/registry/Registry.h"

namespace varsentix::registry::detail {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  size_t last = text.find_last_not_of(blanks);
  return text.substr(first, last - first + 1);
}

bool startsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

RegValue textValue(uint32_t type, std::string_view text) {
  RegValue value{type, std::vector<uint8_t>(text.begin(), text.end())};
  value.data.push_back(0);
  return value;
}

// "42", "-1", "4294967295" or "0x2A": a 32-bit pattern (negative numbers in two's complement).
std::optional<uint32_t> parseDword(std::string_view text) {
  text = trimmed(text);
  int base = 10;
  if (startsWith(text, "0x") || startsWith(text, "0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  bool negative = base == 10 && startsWith(text, "-");
  if (negative) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  uint64_t magnitude = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (negative ? magnitude > 2147483648u : magnitude > 4294967295u) return std::nullopt;
  return static_cast<uint32_t>(negative ? 0u - magnitude : magnitude);
}

// "01,ff, 2a": bytes as pairs of hexadecimal digits; the empty text is no bytes.
std::optional<std::vector<uint8_t>> parseBytes(std::string_view text) {
  std::vector<uint8_t> bytes;
  if (trimmed(text).empty()) return bytes;
  while (true) {
    size_t comma = text.find(',');
    std::string_view pair = trimmed(text.substr(0, comma));
    unsigned byte = 0;
    auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), byte, 16);
    if (pair.size() != 2 || error != std::errc() || end != pair.data() + pair.size())
      return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(byte));
    if (comma == std::string_view::npos) return bytes;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace

bool sameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return true;
}

std::vector<IniSection> readIniFile(const std::string& path) {
  std::vector<IniSection> sections;
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) {
    std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#' || text.front() == ';') continue;
    if (text.front() == '[') {
      text.remove_prefix(1);
      sections.push_back({std::string(trimmed(text.substr(0, text.find(']')))), {}});
    } else if (!sections.empty()) {
      size_t equals = text.find('=');
      std::string_view name = trimmed(text.substr(0, equals));
      std::string_view value = equals == std::string_view::npos ? "" : trimmed(text.substr(equals + 1));
      sections.back().entries.push_back({std::string(name), std::string(value)});
    }
  }
  return sections;
}

std::optional<IniSection> findSection(const std::vector<IniSection>& sections,
                                      const std::string& name) {
  for (const auto& section : sections)
    if (sameName(section.name, name)) return section;
  return std::nullopt;
}

RegValue valueFromIniText(const std::string& text) {
  std::string_view view = text;
  if (startsWith(view, "sz:")) return textValue(REG_SZ, view.substr(3));
  if (startsWith(view, "expand:")) return textValue(REG_EXPAND_SZ, view.substr(7));
  if (startsWith(view, "dword:")) {
    auto number = parseDword(view.substr(6));
    if (!number) return RegValue{REG_NONE, {}};
    RegValue value{REG_DWORD, std::vector<uint8_t>(sizeof(uint32_t))};
    std::memcpy(value.data.data(), &*number, sizeof(uint32_t));
    return value;
  }
  if (startsWith(view, "hex:")) {
    auto bytes = parseBytes(view.substr(4));
    if (!bytes) return RegValue{REG_NONE, {}};
    return RegValue{REG_BINARY, std::move(*bytes)};
  }
  return textValue(REG_SZ, view);
}

}  // namespace varsentix::registry::detail
