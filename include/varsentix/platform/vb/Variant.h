#pragma once
// Variant: the value type that crosses the record-set layer and the by-name row interface.
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace varsentix::vb {

// Sub-types, numbered as VarType numbers them where VB has one.
enum class VarType : int32_t {
  Empty = 0,
  Null = 1,
  Integer = 2,   // int16
  Long = 3,      // int32
  Single = 4,    // float
  Double = 5,
  Currency = 6,  // int64 scaled by 10,000
  Date = 7,
  String = 8,
  Boolean = 11,
  Decimal = 14,   // exact decimal digits, kept as text
  LongLong = 20,  // int64 (8-byte integer columns)
  Bytes = 8209,   // vbArray + vbByte
};

// A calendar date, a time of day, or both, with nanoseconds. Years may lie outside 1900..9999.
struct DateTime {
  enum class Kind : uint8_t { Date, Time, Timestamp };
  int32_t year = 1899;
  uint8_t month = 12;
  uint8_t day = 30;
  uint8_t hour = 0;
  uint8_t minute = 0;
  uint8_t second = 0;
  uint32_t nanosecond = 0;
  Kind kind = Kind::Timestamp;

  // "YYYY-MM-DD", "HH:MM:SS" or "YYYY-MM-DD HH:MM:SS", with ".fffffffff" (trailing zeros cut)
  // when the fraction is not zero. Negative years print with a leading minus.
  std::string toText() const;
  // Reads the forms toText writes, and "YYYY-MM-DDTHH:MM:SS". Raises 13 on anything else.
  static DateTime parse(const std::string& text);
  bool operator==(const DateTime&) const = default;
};

struct Currency {
  int64_t scaled = 0;  // value times 10,000
  std::string toText() const;
  bool operator==(const Currency&) const = default;
};

struct Decimal {
  std::string digits;  // "-12.340": sign, digits, optional point; kept exactly as the engine sent it
  bool operator==(const Decimal&) const = default;
};

using Bytes = std::vector<uint8_t>;

class Variant {
 public:
  struct NullTag {
    bool operator==(const NullTag&) const = default;
  };

 private:
  using Storage = std::variant<std::monostate, NullTag, bool, int16_t, int32_t, int64_t, float, double, Currency,
                               Decimal, DateTime, std::string, Bytes>;
  template <typename T, typename Of>
  struct OneOf;
  template <typename T, typename... Alternatives>
  struct OneOf<T, std::variant<Alternatives...>> : std::bool_constant<(std::is_same_v<T, Alternatives> || ...)> {};

 public:
  // Whether T is the own type of one of the sub-types.
  template <typename T>
  static constexpr bool isSubType = OneOf<T, Storage>::value;

  Variant() = default;  // Empty
  static Variant null() { return Variant(NullTag{}); }
  Variant(NullTag) : value_(NullTag{}) {}
  Variant(bool v) : value_(v) {}
  Variant(int16_t v) : value_(v) {}
  Variant(int32_t v) : value_(v) {}
  Variant(int64_t v) : value_(v) {}
  Variant(float v) : value_(v) {}
  Variant(double v) : value_(v) {}
  Variant(Currency v) : value_(v) {}
  Variant(Decimal v) : value_(std::move(v)) {}
  Variant(DateTime v) : value_(v) {}
  Variant(std::string v) : value_(std::move(v)) {}
  Variant(const char* v) : value_(std::string(v)) {}
  Variant(Bytes v) : value_(std::move(v)) {}

  VarType type() const {
    // By the alternative's index (the order of value_'s alternatives): a table, not a visit, as
    // record-set walks ask for the type of every value.
    static constexpr VarType kTypes[] = {
        VarType::Empty,    VarType::Null,     VarType::Boolean, VarType::Integer, VarType::Long,
        VarType::LongLong, VarType::Single,   VarType::Double,  VarType::Currency, VarType::Decimal,
        VarType::Date,     VarType::String,   VarType::Bytes};
    static_assert(sizeof kTypes / sizeof kTypes[0] == std::variant_size_v<decltype(value_)>);
    return kTypes[value_.index()];
  }
  bool isEmpty() const { return value_.index() == 0; }
  bool isNull() const { return std::holds_alternative<NullTag>(value_); }

  // Text form (CStr): locale-free. Empty gives "", Null raises 94 "Invalid use of Null".
  // Booleans "True"/"False", integers in decimal, floating point as the shortest text that reads
  // back to the same number, Decimal with its exact digits, Currency without trailing zeros,
  // dates as DateTime::toText, bytes as upper-case hexadecimal digits.
  std::string toText() const;
  // CInt / CLng / CDbl / CBool of the value (13 for text that is not a number, 94 for Null).
  int16_t toInt16() const;
  int32_t toInt32() const;
  int64_t toInt64() const {
    // Integers as they are, inline: comparisons ask for every key.
    if (auto* v = std::get_if<int64_t>(&value_)) return *v;
    if (auto* v = std::get_if<int32_t>(&value_)) return *v;
    return toInt64Slowly();
  }
  double toDouble() const {
    if (auto* v = std::get_if<double>(&value_)) return *v;
    return toDoubleSlowly();
  }
  bool toBool() const;

  // Sets the value to v, of one of the sub-types' own types (bool, int16_t, ..., std::string,
  // Bytes), in place: no Variant is made and moved in, and a value of the same sub-type is
  // assigned over. Record-set walks set every value of every row so.
  template <typename T>
    requires(isSubType<std::remove_cvref_t<T>>)
  void set(T&& v) {
    value_ = std::forward<T>(v);
  }

  // Typed access; raises 13 "Type mismatch" when the sub-type differs.
  const std::string& asString() const {
    if (auto* v = std::get_if<std::string>(&value_)) return *v;
    raiseTypeMismatch();
  }
  const Bytes& asBytes() const;
  const DateTime& asDateTime() const;

  bool operator==(const Variant& other) const = default;

 private:
  int64_t toInt64Slowly() const;
  double toDoubleSlowly() const;
  [[noreturn]] static void raiseTypeMismatch();

  Storage value_;
};

}  // namespace varsentix::vb
