#pragma once
// UTF-8 <-> UTF-16 for the wide ODBC entry points (SQLWCHAR is a 16-bit unit in unixODBC).
// Malformed input never fails: a bad byte or a lone surrogate becomes U+FFFD.
#include <cstdint>
#include <string>

namespace varsentix::ado::detail::odbcprovider {

std::u16string utf8ToUtf16(const std::string& text);
std::string utf16ToUtf8(const char16_t* text, size_t units);
inline std::string utf16ToUtf8(const std::u16string& text) {
  return utf16ToUtf8(text.data(), text.size());
}

}  // namespace varsentix::ado::detail::odbcprovider
