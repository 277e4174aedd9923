// SQLite declared types onto ADO types: SQLite's affinity rules, refined by the type's name.
// The table is documented in docs/record-set-layer.md; keep the two in step.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "platform/ado/TypeInfo.h"
#include "platform/ado/providers/sqlite/SqliteSession.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::ado::detail {
namespace {

// The unbounded text size reported for TEXT without a length (ADO's size of a memo).
constexpr int32_t kUnboundedText = 536870910;
constexpr int32_t kLongText = 1073741823;
constexpr int32_t kLongBinary = 2147483647;

struct Declared {
  std::string name;  // upper case, blanks collapsed, without the (...) part
  int first = -1;    // first and second numbers inside (...), -1 when absent
  int second = -1;
};

Declared parseDeclared(const std::string& text) {
  Declared d;
  std::string upper = vb::UCase(text);
  size_t open = upper.find('(');
  std::string base = upper.substr(0, open);
  bool blank = false;
  for (char c : base) {
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
      blank = !d.name.empty();
      continue;
    }
    if (blank) d.name += ' ';
    blank = false;
    d.name += c;
  }
  if (open != std::string::npos) {
    const char* p = upper.c_str() + open + 1;
    char* end = nullptr;
    long a = std::strtol(p, &end, 10);
    if (end != p) {
      d.first = static_cast<int>(std::clamp<long>(a, 0, INT32_MAX));
      while (*end == ' ') ++end;
      if (*end == ',') {
        const char* q = end + 1;
        long b = std::strtol(q, &end, 10);
        if (end != q) d.second = static_cast<int>(std::clamp<long>(b, 0, INT32_MAX));
      }
    }
  }
  return d;
}

bool isOneOf(const std::string& name, std::initializer_list<const char*> names) {
  for (const char* n : names)
    if (name == n) return true;
  return false;
}

ColumnInfo fixed(DataTypeEnum type, uint8_t precision, uint8_t scale = 255) {
  ColumnInfo info;
  info.type = type;
  info.definedSize = fixedSizeOf(type);
  info.precision = precision;
  info.numericScale = scale;
  return info;
}

ColumnInfo sized(DataTypeEnum type, int32_t size) {
  ColumnInfo info;
  info.type = type;
  info.definedSize = size;
  return info;
}

ColumnInfo numeric(const Declared& d) {
  ColumnInfo info = fixed(adNumeric, 38);
  if (d.first > 0) {
    info.precision = static_cast<uint8_t>(std::min(d.first, 38));
    info.numericScale = static_cast<uint8_t>(d.second >= 0 ? std::min(d.second, 38) : 0);
  }
  return info;
}

// Types known by their name; false when the name is none of them.
bool byName(const Declared& d, ColumnInfo& info) {
  const std::string& n = d.name;
  if (isOneOf(n, {"BIGINT", "INT8", "UNSIGNED BIG INT", "INTEGER8"})) info = fixed(adBigInt, 19);
  else if (isOneOf(n, {"SMALLINT", "INT2"})) info = fixed(adSmallInt, 5);
  else if (isOneOf(n, {"TINYINT", "INT1"})) info = fixed(adTinyInt, 3);
  else if (isOneOf(n, {"INTEGER", "INT", "INT4", "MEDIUMINT"})) info = fixed(adInteger, 10);
  else if (isOneOf(n, {"BOOLEAN", "BOOL", "BIT", "YESNO"})) info = fixed(adBoolean, 255);
  else if (n == "DATE") info = fixed(adDBDate, 10, 0);
  else if (isOneOf(n, {"DATETIME", "TIMESTAMP", "DATETIME2", "SMALLDATETIME"}))
    info = fixed(adDBTimeStamp, 19, 0);
  else if (n == "TIME") info = fixed(adDBTime, 8, 0);
  else if (isOneOf(n, {"REAL", "DOUBLE", "DOUBLE PRECISION", "FLOAT", "FLOAT8"}))
    info = fixed(adDouble, 15);
  else if (isOneOf(n, {"FLOAT4", "SINGLE"})) info = fixed(adSingle, 7);
  else if (isOneOf(n, {"MONEY", "CURRENCY", "SMALLMONEY"})) info = fixed(adCurrency, 19, 4);
  else if (isOneOf(n, {"NUMERIC", "DECIMAL", "NUMBER"})) info = numeric(d);
  else if (isOneOf(n, {"GUID", "UUID", "UNIQUEIDENTIFIER"})) info = fixed(adGUID, 255);
  else if (isOneOf(n, {"BLOB", "BYTEA", "IMAGE", "LONGBLOB", "MEDIUMBLOB", "LONGVARBINARY"}))
    info = sized(adLongVarBinary, kLongBinary);
  else if (n == "BINARY") info = sized(adBinary, d.first > 0 ? d.first : 1);
  else if (n == "VARBINARY") info = sized(adVarBinary, d.first > 0 ? d.first : kLongBinary);
  else if (isOneOf(n, {"CHAR", "NCHAR", "CHARACTER", "NATIONAL CHARACTER", "NATIONAL CHAR"}))
    info = sized(adWChar, d.first > 0 ? d.first : 1);
  else if (isOneOf(n, {"CLOB", "LONGTEXT", "MEDIUMTEXT", "NTEXT", "MEMO", "LONGVARCHAR"}))
    info = sized(adLongVarWChar, kLongText);
  else if (isOneOf(n, {"VARCHAR", "NVARCHAR", "TEXT", "CHARACTER VARYING", "VARYING CHARACTER",
                       "NATIONAL VARYING CHARACTER", "NATIVE CHARACTER", "VARCHAR2", "NVARCHAR2",
                       "STRING"}))
    info = sized(adVarWChar, d.first > 0 ? d.first : kUnboundedText);
  else return false;
  return true;
}

// SQLite's affinity rules, in SQLite's order, for any other name.
ColumnInfo byAffinity(const Declared& d) {
  const std::string& n = d.name;
  if (n.find("INT") != std::string::npos) return fixed(adInteger, 10);
  if (n.find("CHAR") != std::string::npos || n.find("CLOB") != std::string::npos ||
      n.find("TEXT") != std::string::npos)
    return sized(adVarWChar, d.first > 0 ? d.first : kUnboundedText);
  if (n.find("BLOB") != std::string::npos) return sized(adLongVarBinary, kLongBinary);
  if (n.find("REAL") != std::string::npos || n.find("FLOA") != std::string::npos ||
      n.find("DOUB") != std::string::npos)
    return fixed(adDouble, 15);
  return numeric(d);
}

}  // namespace

ColumnInfo sqliteColumnType(const std::string& declaredType) {
  Declared d = parseDeclared(declaredType);
  if (d.name.empty()) return sized(adVarWChar, kUnboundedText);
  ColumnInfo info;
  if (byName(d, info)) return info;
  return byAffinity(d);
}

}  // namespace varsentix::ado::detail
