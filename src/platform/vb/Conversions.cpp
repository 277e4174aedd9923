#include "varsentix/platform/vb/Conversions.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

// Parses "&H1F" / "&O17" integer literals. Returns false when text is not one.
bool parseRadixLiteral(std::string_view text, double& out) {
  if (text.size() < 3 || text[0] != '&') return false;
  int base = 0;
  if (text[1] == 'H' || text[1] == 'h') base = 16;
  if (text[1] == 'O' || text[1] == 'o') base = 8;
  if (base == 0) return false;
  uint64_t value = 0;
  auto digits = text.substr(2);
  auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (ec != std::errc() || ptr != digits.data() + digits.size()) return false;
  out = static_cast<double>(value);
  return true;
}

// Parses a decimal number: optional sign, digits with an optional point, optional exponent.
double parseNumber(std::string_view raw) {
  std::string_view text = raw;
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  if (text.empty()) raiseError(errnum::TypeMismatch);
  double value = 0;
  if (parseRadixLiteral(text, value)) return value;
  std::string normal(text);
  if (normal.front() == '+') normal.erase(0, 1);
  for (char& c : normal) {
    if (c == 'D' || c == 'd') c = 'e';  // VB accepts 1D3 as 1E3
  }
  // from_chars rejects a leading '.' after a sign only in odd cases; normalise "-.5" and ".5".
  bool negative = !normal.empty() && normal.front() == '-';
  std::string_view body(normal);
  if (negative) body.remove_prefix(1);
  if (body.empty() || !(std::isdigit(static_cast<unsigned char>(body.front())) || body.front() == '.'))
    raiseError(errnum::TypeMismatch);
  auto [ptr, ec] = std::from_chars(body.data(), body.data() + body.size(), value);
  if (ec == std::errc::result_out_of_range) raiseError(errnum::Overflow);
  if (ec != std::errc() || ptr != body.data() + body.size()) raiseError(errnum::TypeMismatch);
  return negative ? -value : value;
}

template <typename Int>
Int roundChecked(double value) {
  if (std::isnan(value)) raiseError(errnum::Overflow);
  double rounded = std::nearbyint(value);  // default rounding mode: ties to even
  if (rounded < static_cast<double>(std::numeric_limits<Int>::min()) ||
      rounded > static_cast<double>(std::numeric_limits<Int>::max()))
    raiseError(errnum::Overflow);
  return static_cast<Int>(rounded);
}

template <typename Float>
std::string shortestText(Float value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  char buffer[64];
  auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  (void)ec;
  return std::string(buffer, ptr);
}

}  // namespace

int16_t CInt(std::string_view text) { return roundChecked<int16_t>(parseNumber(text)); }
int32_t CLng(std::string_view text) { return roundChecked<int32_t>(parseNumber(text)); }
double CDbl(std::string_view text) { return parseNumber(text); }
int16_t CInt(double value) { return roundChecked<int16_t>(value); }
int32_t CLng(double value) { return roundChecked<int32_t>(value); }

std::string CStr(int64_t value) { return std::to_string(value); }
std::string CStr(bool value) { return value ? "True" : "False"; }
std::string CStr(double value) { return shortestText(value); }
std::string CStr(float value) { return shortestText(value); }

std::string LTrim(std::string_view text) {
  size_t begin = text.find_first_not_of(' ');
  return begin == std::string_view::npos ? std::string() : std::string(text.substr(begin));
}

std::string RTrim(std::string_view text) {
  size_t end = text.find_last_not_of(' ');
  return end == std::string_view::npos ? std::string() : std::string(text.substr(0, end + 1));
}

std::string Trim(std::string_view text) { return LTrim(RTrim(text)); }

int32_t InStr(std::string_view haystack, std::string_view needle, int32_t start) {
  if (start < 1) raiseError(errnum::InvalidProcedureCall);
  if (static_cast<size_t>(start - 1) > haystack.size()) return 0;
  size_t pos = haystack.find(needle, static_cast<size_t>(start - 1));
  return pos == std::string_view::npos ? 0 : static_cast<int32_t>(pos + 1);
}

std::string Left(std::string_view text, int32_t length) {
  if (length < 0) raiseError(errnum::InvalidProcedureCall);
  return std::string(text.substr(0, static_cast<size_t>(length)));
}

std::string Right(std::string_view text, int32_t length) {
  if (length < 0) raiseError(errnum::InvalidProcedureCall);
  size_t n = std::min(text.size(), static_cast<size_t>(length));
  return std::string(text.substr(text.size() - n));
}

std::string Mid(std::string_view text, int32_t start) {
  if (start < 1) raiseError(errnum::InvalidProcedureCall);
  if (static_cast<size_t>(start - 1) >= text.size()) return {};
  return std::string(text.substr(static_cast<size_t>(start - 1)));
}

std::string Mid(std::string_view text, int32_t start, int32_t length) {
  if (length < 0) raiseError(errnum::InvalidProcedureCall);
  return Left(Mid(text, start), length);
}

std::string UCase(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string LCase(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return out;
}

}  // namespace varsentix::vb
