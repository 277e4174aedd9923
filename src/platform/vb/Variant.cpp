#include "varsentix/platform/vb/Variant.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {
namespace {

template <class... Ts>
struct Overloaded : Ts... {
  using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

std::string twoDigits(unsigned value) {
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "%02u", value % 100);
  return buffer;
}

std::string fractionText(uint32_t nanosecond) {
  if (nanosecond == 0) return {};
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%09u", nanosecond % 1000000000u);
  std::string digits(buffer);
  while (!digits.empty() && digits.back() == '0') digits.pop_back();
  return "." + digits;
}

bool readInt(const std::string& text, size_t& pos, size_t width, int& out) {
  if (pos + width > text.size()) return false;
  int value = 0;
  for (size_t i = 0; i < width; ++i) {
    char c = text[pos + i];
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  pos += width;
  out = value;
  return true;
}

bool readTime(const std::string& text, size_t& pos, DateTime& dt) {
  int h = 0, m = 0, s = 0;
  if (!readInt(text, pos, 2, h) || pos >= text.size() || text[pos++] != ':') return false;
  if (!readInt(text, pos, 2, m) || pos >= text.size() || text[pos++] != ':') return false;
  if (!readInt(text, pos, 2, s)) return false;
  dt.hour = static_cast<uint8_t>(h);
  dt.minute = static_cast<uint8_t>(m);
  dt.second = static_cast<uint8_t>(s);
  if (pos < text.size() && text[pos] == '.') {
    ++pos;
    uint32_t nanos = 0;
    size_t digits = 0;
    while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') {
      if (digits < 9) {
        nanos = nanos * 10 + static_cast<uint32_t>(text[pos] - '0');
        ++digits;
      }
      ++pos;
    }
    while (digits++ < 9) nanos *= 10;
    dt.nanosecond = nanos;
  }
  return h < 24 && m < 60 && s < 61;
}

bool readDate(const std::string& text, size_t& pos, DateTime& dt) {
  bool negative = pos < text.size() && text[pos] == '-';
  if (negative) ++pos;
  size_t start = pos;
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9') ++pos;
  if (pos - start < 4) return false;
  // A year past the 32-bit range is no date the system holds (and no exception of the library).
  int32_t year = 0;
  auto [end, error] = std::from_chars(text.data() + start, text.data() + pos, year);
  if (error != std::errc() || end != text.data() + pos) return false;
  int month = 0, day = 0;
  if (pos >= text.size() || text[pos++] != '-' || !readInt(text, pos, 2, month)) return false;
  if (pos >= text.size() || text[pos++] != '-' || !readInt(text, pos, 2, day)) return false;
  dt.year = negative ? -year : year;
  dt.month = static_cast<uint8_t>(month);
  dt.day = static_cast<uint8_t>(day);
  return month >= 1 && month <= 12 && day >= 1 && day <= 31;
}

}  // namespace

std::string DateTime::toText() const {
  std::string date;
  if (kind != Kind::Time) {
    char buffer[32];
    if (year < 0)
      std::snprintf(buffer, sizeof buffer, "-%04d", -year);
    else
      std::snprintf(buffer, sizeof buffer, "%04d", year);
    date = std::string(buffer) + "-" + twoDigits(month) + "-" + twoDigits(day);
    if (kind == Kind::Date) return date;
    date += " ";
  }
  return date + twoDigits(hour) + ":" + twoDigits(minute) + ":" + twoDigits(second) +
         fractionText(nanosecond);
}

DateTime DateTime::parse(const std::string& text) {
  DateTime dt;
  size_t pos = 0;
  bool ok = false;
  if (text.size() >= 8 && text[2] == ':') {
    dt.kind = Kind::Time;
    ok = readTime(text, pos, dt);
  } else if (readDate(text, pos, dt)) {
    if (pos == text.size()) {
      dt.kind = Kind::Date;
      ok = true;
    } else if (text[pos] == ' ' || text[pos] == 'T') {
      ++pos;
      dt.kind = Kind::Timestamp;
      ok = readTime(text, pos, dt);
    }
  }
  if (!ok || pos != text.size()) raiseError(errnum::TypeMismatch);
  return dt;
}

std::string Currency::toText() const {
  bool negative = scaled < 0;
  // Work in unsigned space so that INT64_MIN renders too.
  uint64_t magnitude = negative ? 0 - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
  std::string text = std::to_string(magnitude / 10000);
  uint64_t fraction = magnitude % 10000;
  if (fraction != 0) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "%04u", static_cast<unsigned>(fraction));
    std::string digits(buffer);
    while (digits.back() == '0') digits.pop_back();
    text += "." + digits;
  }
  return negative ? "-" + text : text;
}

std::string Variant::toText() const {
  return std::visit(Overloaded{
                        [](std::monostate) { return std::string(); },
                        [](NullTag) -> std::string { raiseError(errnum::InvalidUseOfNull); },
                        [](bool v) { return CStr(v); },
                        [](int16_t v) { return CStr(v); },
                        [](int32_t v) { return CStr(v); },
                        [](int64_t v) { return CStr(v); },
                        [](float v) { return CStr(v); },
                        [](double v) { return CStr(v); },
                        [](const Currency& v) { return v.toText(); },
                        [](const Decimal& v) { return v.digits; },
                        [](const DateTime& v) { return v.toText(); },
                        [](const std::string& v) { return v; },
                        [](const Bytes& v) {
                          static const char* hex = "0123456789ABCDEF";
                          std::string out;
                          out.reserve(v.size() * 2);
                          for (uint8_t b : v) {
                            out += hex[b >> 4];
                            out += hex[b & 15];
                          }
                          return out;
                        },
                    },
                    value_);
}

double Variant::toDoubleSlowly() const {
  return std::visit(Overloaded{
                        [](std::monostate) { return 0.0; },
                        [](NullTag) -> double { raiseError(errnum::InvalidUseOfNull); },
                        [](bool v) { return v ? -1.0 : 0.0; },
                        [](int16_t v) { return static_cast<double>(v); },
                        [](int32_t v) { return static_cast<double>(v); },
                        [](int64_t v) { return static_cast<double>(v); },
                        [](float v) { return static_cast<double>(v); },
                        [](double v) { return v; },
                        [](const Currency& v) { return static_cast<double>(v.scaled) / 10000.0; },
                        [](const Decimal& v) { return CDbl(v.digits); },
                        [](const DateTime&) -> double { raiseError(errnum::TypeMismatch); },
                        [](const std::string& v) { return CDbl(v); },
                        [](const Bytes&) -> double { raiseError(errnum::TypeMismatch); },
                    },
                    value_);
}

int16_t Variant::toInt16() const { return CInt(toDouble()); }
int32_t Variant::toInt32() const { return CLng(toDouble()); }

int64_t Variant::toInt64Slowly() const {
  double d = std::nearbyint(toDouble());
  if (std::isnan(d) || d < -9.2233720368547758e18 || d >= 9.2233720368547758e18)
    raiseError(errnum::Overflow);
  return static_cast<int64_t>(d);
}

bool Variant::toBool() const {
  if (auto* v = std::get_if<bool>(&value_)) return *v;
  if (auto* s = std::get_if<std::string>(&value_)) {
    if (*s == "True" || *s == "true" || *s == "TRUE") return true;
    if (*s == "False" || *s == "false" || *s == "FALSE") return false;
  }
  return toDouble() != 0.0;
}

void Variant::raiseTypeMismatch() { raiseError(errnum::TypeMismatch); }

const Bytes& Variant::asBytes() const {
  if (auto* v = std::get_if<Bytes>(&value_)) return *v;
  raiseError(errnum::TypeMismatch);
}

const DateTime& Variant::asDateTime() const {
  if (auto* v = std::get_if<DateTime>(&value_)) return *v;
  raiseError(errnum::TypeMismatch);
}

}  // namespace varsentix::vb
