#include "platform/ado/TypeInfo.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <cstdio>
#include <limits>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

bool isDecimalText(std::string_view text) {
  size_t i = 0;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  bool digits = false, point = false;
  for (; i < text.size(); ++i) {
    if (text[i] >= '0' && text[i] <= '9') {
      digits = true;
    } else if (text[i] == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  return digits;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

vb::Bytes bytesFromHex(const std::string& text) {
  if (text.size() % 2 != 0) vb::raiseError(vb::errnum::TypeMismatch);
  vb::Bytes bytes;
  bytes.reserve(text.size() / 2);
  for (size_t i = 0; i < text.size(); i += 2) {
    int high = hexValue(text[i]), low = hexValue(text[i + 1]);
    if (high < 0 || low < 0) vb::raiseError(vb::errnum::TypeMismatch);
    bytes.push_back(static_cast<uint8_t>(high * 16 + low));
  }
  return bytes;
}

// Text to Currency: four decimals kept (more are cut), 6 "Overflow" outside
// -922,337,203,685,477.5808..922,337,203,685,477.5807.
vb::Currency currencyFromText(const std::string& text) {
  if (!isDecimalText(text)) vb::raiseError(vb::errnum::TypeMismatch);
  bool negative = text[0] == '-';
  size_t i = (text[0] == '-' || text[0] == '+') ? 1 : 0;
  // The magnitude in ten-thousandths, counted towards the sign's end so that the most negative
  // amount fits: every step is checked.
  int64_t scaled = 0;
  int fractionDigits = 0;
  bool point = false;
  auto add = [&](int digit) {
    if (__builtin_mul_overflow(scaled, int64_t{10}, &scaled) ||
        __builtin_add_overflow(scaled, negative ? -digit : digit, &scaled))
      vb::raiseError(vb::errnum::Overflow);
  };
  for (; i < text.size(); ++i) {
    if (text[i] == '.') {
      point = true;
      continue;
    }
    if (point && fractionDigits == 4) continue;
    add(text[i] - '0');
    if (point) ++fractionDigits;
  }
  while (fractionDigits++ < 4) add(0);
  return vb::Currency{scaled};
}

vb::DateTime dateFromText(DataTypeEnum type, const std::string& text) {
  vb::DateTime value = vb::DateTime::parse(text);
  if (type == adDBDate && value.kind == vb::DateTime::Kind::Timestamp && value.hour == 0 &&
      value.minute == 0 && value.second == 0 && value.nanosecond == 0)
    value.kind = vb::DateTime::Kind::Date;
  if ((type == adDBTimeStamp || type == adDate) && value.kind == vb::DateTime::Kind::Date)
    value.kind = vb::DateTime::Kind::Timestamp;
  return value;
}

template <class T>
T checkedInteger(double value) {
  if (std::isnan(value) || value < static_cast<double>(std::numeric_limits<T>::min()) ||
      value > static_cast<double>(std::numeric_limits<T>::max()))
    vb::raiseError(vb::errnum::Overflow);
  return static_cast<T>(value);
}

int64_t integerFromText(const std::string& text) {
  size_t used = 0;
  int64_t value = 0;
  try {
    value = std::stoll(text, &used);
  } catch (const std::exception&) {
    vb::raiseError(vb::errnum::TypeMismatch);
  }
  if (used != text.size()) vb::raiseError(vb::errnum::TypeMismatch);
  return value;
}

bool booleanFromText(const std::string& text) {
  std::string lower = vb::LCase(vb::Trim(text));
  if (lower == "true" || lower == "1" || lower == "-1") return true;
  if (lower == "false" || lower == "0") return false;
  vb::raiseError(vb::errnum::TypeMismatch);
}

}  // namespace

int32_t fixedSizeOf(DataTypeEnum type) {
  switch (type) {
    case adTinyInt:
    case adUnsignedTinyInt: return 1;
    case adSmallInt:
    case adUnsignedSmallInt:
    case adBoolean: return 2;
    case adInteger:
    case adUnsignedInt:
    case adSingle:
    case adError: return 4;
    case adBigInt:
    case adUnsignedBigInt:
    case adDouble:
    case adCurrency:
    case adDate:
    case adFileTime: return 8;
    case adDBDate:
    case adDBTime: return 6;
    case adDBTimeStamp:
    case adGUID:
    case adDecimal:
    case adVariant: return 16;
    case adNumeric:
    case adVarNumeric: return 19;
    default: return 0;
  }
}

bool isTextType(DataTypeEnum type) {
  switch (type) {
    case adBSTR:
    case adChar:
    case adWChar:
    case adVarChar:
    case adLongVarChar:
    case adVarWChar:
    case adLongVarWChar: return true;
    default: return false;
  }
}

bool isBinaryType(DataTypeEnum type) {
  return type == adBinary || type == adVarBinary || type == adLongVarBinary;
}

bool isDateType(DataTypeEnum type) {
  return type == adDate || type == adDBDate || type == adDBTime || type == adDBTimeStamp;
}

bool isLongType(DataTypeEnum type) {
  return type == adLongVarChar || type == adLongVarWChar || type == adLongVarBinary;
}

vb::Variant variantFromText(DataTypeEnum type, const std::string& text) {
  switch (type) {
    case adTinyInt:
    case adUnsignedTinyInt:
    case adSmallInt: return checkedInteger<int16_t>(static_cast<double>(integerFromText(text)));
    case adInteger:
    case adUnsignedSmallInt: return checkedInteger<int32_t>(static_cast<double>(integerFromText(text)));
    case adUnsignedInt:
    case adBigInt:
    case adUnsignedBigInt: return integerFromText(text);
    case adSingle: {
      double value = vb::CDbl(text);
      if (std::isfinite(value) && std::fabs(value) > std::numeric_limits<float>::max())
        vb::raiseError(vb::errnum::Overflow);
      return static_cast<float>(value);
    }
    case adDouble: return vb::CDbl(text);
    case adCurrency: return currencyFromText(text);
    case adNumeric:
    case adDecimal:
    case adVarNumeric:
      if (!isDecimalText(text)) vb::raiseError(vb::errnum::TypeMismatch);
      return vb::Decimal{text};
    case adBoolean: return booleanFromText(text);
    case adDate:
    case adDBDate:
    case adDBTime:
    case adDBTimeStamp: return dateFromText(type, text);
    case adBinary:
    case adVarBinary:
    case adLongVarBinary: return bytesFromHex(text);
    default: return text;
  }
}

vb::Variant coerceToColumn(DataTypeEnum type, vb::Variant value) {
  if (value.isNull() || value.isEmpty()) return value;
  vb::VarType sub = value.type();
  try {
    if (sub == vb::VarType::String) {
      if (isTextType(type) || type == adGUID) return value;
      if (isBinaryType(type)) {
        const std::string& s = value.asString();
        return vb::Bytes(s.begin(), s.end());
      }
      return variantFromText(type, value.asString());
    }
    if (sub == vb::VarType::Bytes) return value;
    if (isTextType(type)) return value.toText();
    switch (type) {
      case adBoolean: return value.toBool();
      case adTinyInt:
      case adUnsignedTinyInt:
      case adSmallInt:
        if (sub == vb::VarType::Integer) return value;
        break;
      case adInteger:
      case adUnsignedSmallInt:
        if (sub == vb::VarType::Long) return value;
        if (sub == vb::VarType::Integer || sub == vb::VarType::LongLong || sub == vb::VarType::Boolean) {
          int64_t v = value.toInt64();
          if (v >= INT32_MIN && v <= INT32_MAX) return static_cast<int32_t>(v);
          return v;
        }
        break;
      case adBigInt:
      case adUnsignedInt:
      case adUnsignedBigInt:
        if (sub == vb::VarType::Integer || sub == vb::VarType::Long) return value.toInt64();
        break;
      case adDouble:
        if (sub == vb::VarType::Single || sub == vb::VarType::Integer || sub == vb::VarType::Long)
          return value.toDouble();
        break;
      case adNumeric:
      case adDecimal:
      case adVarNumeric:
        if (sub != vb::VarType::Date && sub != vb::VarType::Boolean)
          return vb::Decimal{value.toText()};
        break;
      case adCurrency:
        if (sub != vb::VarType::Date) return currencyFromText(value.toText());
        break;
      default: break;
    }
  } catch (const vb::VBError&) {
    // Not convertible: the value stays as it came.
  }
  return value;
}

int32_t actualSizeOf(DataTypeEnum type, const vb::Variant& value) {
  if (value.isNull() || value.isEmpty()) return 0;
  if (value.type() == vb::VarType::String)
    return static_cast<int32_t>(std::min<size_t>(value.asString().size(), INT32_MAX));
  if (value.type() == vb::VarType::Bytes)
    return static_cast<int32_t>(std::min<size_t>(value.asBytes().size(), INT32_MAX));
  int32_t fixed = fixedSizeOf(type);
  return fixed != 0 ? fixed : static_cast<int32_t>(value.toText().size());
}

std::string withScale(std::string_view digits, uint8_t scale) {
  if (scale == 255 || !isDecimalText(digits)) return std::string(digits);
  std::string_view text(digits);
  bool negative = text[0] == '-';
  if (text[0] == '-' || text[0] == '+') text.remove_prefix(1);
  size_t point = text.find('.');
  std::string_view whole = text.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
  // all: the digits of the result without its point.
  std::string all;
  all.reserve(whole.size() + scale + 2);
  if (whole.empty()) all.push_back('0');
  all.append(whole.data(), whole.size());
  size_t kept = std::min<size_t>(fraction.size(), scale);
  all.append(fraction.data(), kept);
  all.append(scale - kept, '0');
  if (fraction.size() > scale && fraction[scale] >= '5') {
    size_t i = all.size();
    while (i > 0 && all[i - 1] == '9') all[--i] = '0';
    if (i == 0)
      all.insert(all.begin(), '1');
    else
      ++all[i - 1];
  }
  std::string result;
  result.reserve(all.size() + 2);
  if (negative && all.find_first_not_of('0') != std::string::npos) result.push_back('-');
  result.append(all, 0, all.size() - scale);
  if (scale > 0) {
    result.push_back('.');
    result.append(all, all.size() - scale, scale);
  }
  return result;
}

}  // namespace varsentix::ado::detail
