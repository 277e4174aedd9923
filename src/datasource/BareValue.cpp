#include "datasource/BareValue.h"

#include "varsentix/platform/ado/Enums.h"

namespace varsentix::bareValue {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool allHex(std::string_view text) {
  for (char c : text)
    if (!isHexDigit(c)) return false;
  return true;
}

bool isGuid(std::string_view text) {
  if (text.size() == 38) {
    if (text.front() != '{' || text.back() != '}') return false;
    text = text.substr(1, 36);
  }
  if (text.size() != 36) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    if (dash ? text[i] != '-' : !isHexDigit(text[i])) return false;
  }
  return true;
}

bool isNumericType(int32_t adoType) {
  switch (adoType) {
    case ado::adSmallInt:
    case ado::adInteger:
    case ado::adSingle:
    case ado::adDouble:
    case ado::adCurrency:
    case ado::adDecimal:
    case ado::adTinyInt:
    case ado::adUnsignedTinyInt:
    case ado::adUnsignedSmallInt:
    case ado::adUnsignedInt:
    case ado::adBigInt:
    case ado::adUnsignedBigInt:
    case ado::adNumeric:
    case ado::adVarNumeric:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool isNumber(std::string_view text) {
  size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  size_t digits = 0;
  while (i < text.size() && isDigit(text[i])) ++i, ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && isDigit(text[i])) ++i, ++digits;
  }
  if (digits == 0) return false;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    size_t exponent = 0;
    while (i < text.size() && isDigit(text[i])) ++i, ++exponent;
    if (exponent == 0) return false;
  }
  return i == text.size();
}

bool isWellFormed(int32_t adoType, std::string_view text) {
  if (text.empty()) return false;
  if (isNumericType(adoType)) return isNumber(text);
  switch (adoType) {
    case ado::adGUID:
      return isGuid(text);
    case ado::adBinary:
    case ado::adVarBinary:
    case ado::adLongVarBinary:
      return allHex(text);
    case ado::adBoolean:
      return text == "True" || text == "False" || isNumber(text);
    default:
      return isNumber(text);
  }
}

const std::string& malformedMarker() {
  static const std::string marker(std::string(1, '\0') + "<a value not well-formed for its type>");
  return marker;
}

std::string bareOrMarker(int32_t adoType, std::string text) {
  if (isWellFormed(adoType, text)) return text;
  return malformedMarker();
}

}  // namespace varsentix::bareValue
