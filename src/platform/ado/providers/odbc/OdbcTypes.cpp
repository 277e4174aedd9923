#include "platform/ado/providers/odbc/OdbcTypes.h"

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <limits>

#include "platform/ado/TypeInfo.h"

namespace varsentix::ado::detail::odbcprovider {
namespace {

// ODBC SQL type -> ADO type, as MSDASQL maps them (signed / unsigned where they differ).
struct TypeRow {
  SQLSMALLINT sqlType;
  DataTypeEnum signedType;
  DataTypeEnum unsignedType;
};

constexpr TypeRow kTypes[] = {
    {SQL_CHAR, adChar, adChar},                       // 129
    {SQL_VARCHAR, adVarChar, adVarChar},              // 200
    {SQL_LONGVARCHAR, adLongVarChar, adLongVarChar},  // 201
    {SQL_WCHAR, adWChar, adWChar},                    // 130
    {SQL_WVARCHAR, adVarWChar, adVarWChar},           // 202
    {SQL_WLONGVARCHAR, adLongVarWChar, adLongVarWChar},  // 203
    {SQL_DECIMAL, adNumeric, adNumeric},              // 131
    {SQL_NUMERIC, adNumeric, adNumeric},              // 131
    {SQL_SMALLINT, adSmallInt, adUnsignedSmallInt},   // 2 / 18
    {SQL_INTEGER, adInteger, adUnsignedInt},          // 3 / 19
    {SQL_REAL, adSingle, adSingle},                   // 4
    {SQL_FLOAT, adDouble, adDouble},                  // 5
    {SQL_DOUBLE, adDouble, adDouble},                 // 5
    {SQL_BIT, adBoolean, adBoolean},                  // 11
    {SQL_TINYINT, adTinyInt, adUnsignedTinyInt},      // 16 / 17
    {SQL_BIGINT, adBigInt, adUnsignedBigInt},         // 20 / 21
    {SQL_BINARY, adBinary, adBinary},                 // 128
    {SQL_VARBINARY, adVarBinary, adVarBinary},        // 204
    {SQL_LONGVARBINARY, adLongVarBinary, adLongVarBinary},  // 205
    {SQL_TYPE_DATE, adDBDate, adDBDate},              // 133
    {SQL_TYPE_TIME, adDBTime, adDBTime},              // 134
    {SQL_TYPE_TIMESTAMP, adDBTimeStamp, adDBTimeStamp},  // 135
    {SQL_DATE, adDBDate, adDBDate},                   // ODBC 2 codes some drivers still send
    {SQL_TIME, adDBTime, adDBTime},
    {SQL_TIMESTAMP, adDBTimeStamp, adDBTimeStamp},
    {SQL_GUID, adGUID, adGUID},                       // 72
};

int32_t clampSize(uint64_t size) {
  return static_cast<int32_t>(std::min<uint64_t>(size, std::numeric_limits<int32_t>::max()));
}

}  // namespace

ColumnInfo columnTypeOf(int16_t sqlType, uint64_t columnSize, int16_t decimalDigits,
                        bool isUnsigned) {
  ColumnInfo info;
  info.type = adVarWChar;  // any other type (intervals, driver-specific ones) arrives as text
  bool known = false;
  for (const TypeRow& row : kTypes) {
    if (row.sqlType == sqlType) {
      info.type = isUnsigned ? row.unsignedType : row.signedType;
      known = true;
      break;
    }
  }
  if (isTextType(info.type) || isBinaryType(info.type)) {
    info.definedSize = clampSize(columnSize);
  } else {
    info.definedSize = fixedSizeOf(info.type);
  }
  if (!known) info.definedSize = clampSize(columnSize == 0 ? 255 : columnSize);
  switch (info.type) {
    case adNumeric:
      info.precision = static_cast<uint8_t>(std::min<uint64_t>(columnSize, 255));
      info.numericScale = static_cast<uint8_t>(std::clamp<int>(decimalDigits, 0, 255));
      break;
    case adTinyInt:
    case adUnsignedTinyInt: info.precision = 3; break;
    case adSmallInt:
    case adUnsignedSmallInt: info.precision = 5; break;
    case adInteger:
    case adUnsignedInt: info.precision = 10; break;
    case adBigInt: info.precision = 19; break;
    case adUnsignedBigInt: info.precision = 20; break;
    case adSingle: info.precision = 7; break;
    case adDouble: info.precision = 15; break;
    case adDBTimeStamp:
      info.precision = static_cast<uint8_t>(std::min<uint64_t>(columnSize, 255));
      info.numericScale = static_cast<uint8_t>(std::clamp<int>(decimalDigits, 0, 9));
      break;
    default: break;
  }
  return info;
}

int16_t sqlTypeFor(DataTypeEnum type) {
  switch (type) {
    case adChar: return SQL_CHAR;
    case adVarChar: return SQL_VARCHAR;
    case adLongVarChar: return SQL_LONGVARCHAR;
    case adWChar: return SQL_WCHAR;
    case adLongVarWChar: return SQL_WLONGVARCHAR;
    case adNumeric:
    case adDecimal:
    case adVarNumeric:
    case adCurrency: return SQL_DECIMAL;
    case adSmallInt:
    case adUnsignedSmallInt: return SQL_SMALLINT;
    case adInteger:
    case adUnsignedInt: return SQL_INTEGER;
    case adSingle: return SQL_REAL;
    case adDouble: return SQL_DOUBLE;
    case adBoolean: return SQL_BIT;
    case adTinyInt:
    case adUnsignedTinyInt: return SQL_TINYINT;
    case adBigInt:
    case adUnsignedBigInt: return SQL_BIGINT;
    case adBinary: return SQL_BINARY;
    case adVarBinary: return SQL_VARBINARY;
    case adLongVarBinary: return SQL_LONGVARBINARY;
    case adDBDate: return SQL_TYPE_DATE;
    case adDBTime: return SQL_TYPE_TIME;
    case adDate:
    case adDBTimeStamp: return SQL_TYPE_TIMESTAMP;
    case adGUID: return SQL_GUID;
    default: return SQL_WVARCHAR;
  }
}

}  // namespace varsentix::ado::detail::odbcprovider
