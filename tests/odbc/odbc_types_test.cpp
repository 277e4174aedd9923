// The ODBC provider's type table and its UTF-8 / UTF-16 conversion, without a driver.
#include <gtest/gtest.h>
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <string>

#include "platform/ado/providers/odbc/OdbcText.h"
#include "platform/ado/providers/odbc/OdbcTypes.h"

namespace varsentix::ado::detail::odbcprovider {
namespace {

struct Mapping {
  SQLSMALLINT sqlType;
  bool isUnsigned;
  DataTypeEnum expected;
};

TEST(OdbcTypeTable, MapsOdbcTypesAsTheOleDbProviderForOdbcDoes) {
  const Mapping table[] = {
      {SQL_CHAR, false, adChar},              {SQL_VARCHAR, false, adVarChar},
      {SQL_LONGVARCHAR, false, adLongVarChar}, {SQL_WCHAR, false, adWChar},
      {SQL_WVARCHAR, false, adVarWChar},      {SQL_WLONGVARCHAR, false, adLongVarWChar},
      {SQL_DECIMAL, false, adNumeric},        {SQL_NUMERIC, false, adNumeric},
      {SQL_SMALLINT, false, adSmallInt},      {SQL_SMALLINT, true, adUnsignedSmallInt},
      {SQL_INTEGER, false, adInteger},        {SQL_INTEGER, true, adUnsignedInt},
      {SQL_REAL, false, adSingle},            {SQL_FLOAT, false, adDouble},
      {SQL_DOUBLE, false, adDouble},          {SQL_BIT, false, adBoolean},
      {SQL_TINYINT, false, adTinyInt},        {SQL_TINYINT, true, adUnsignedTinyInt},
      {SQL_BIGINT, false, adBigInt},          {SQL_BIGINT, true, adUnsignedBigInt},
      {SQL_BINARY, false, adBinary},          {SQL_VARBINARY, false, adVarBinary},
      {SQL_LONGVARBINARY, false, adLongVarBinary}, {SQL_TYPE_DATE, false, adDBDate},
      {SQL_TYPE_TIME, false, adDBTime},       {SQL_TYPE_TIMESTAMP, false, adDBTimeStamp},
      {SQL_GUID, false, adGUID},
  };
  for (const auto& m : table) {
    SCOPED_TRACE(m.sqlType);
    EXPECT_EQ(columnTypeOf(m.sqlType, 10, 0, m.isUnsigned).type, m.expected);
  }
}

TEST(OdbcTypeTable, DefinedSizeIsCharactersBytesOrTheFixedSize) {
  EXPECT_EQ(columnTypeOf(SQL_WVARCHAR, 40, 0, false).definedSize, 40);
  EXPECT_EQ(columnTypeOf(SQL_VARBINARY, 16, 0, false).definedSize, 16);
  EXPECT_EQ(columnTypeOf(SQL_INTEGER, 10, 0, false).definedSize, 4);
  EXPECT_EQ(columnTypeOf(SQL_BIGINT, 19, 0, false).definedSize, 8);
  EXPECT_EQ(columnTypeOf(SQL_TYPE_TIMESTAMP, 26, 6, false).definedSize, 16);
  EXPECT_EQ(columnTypeOf(SQL_WLONGVARCHAR, 5000000000ULL, 0, false).definedSize, 2147483647);
  ColumnInfo decimal = columnTypeOf(SQL_DECIMAL, 12, 3, false);
  EXPECT_EQ(decimal.definedSize, 19);
  EXPECT_EQ(decimal.precision, 12);
  EXPECT_EQ(decimal.numericScale, 3);
}

TEST(OdbcTypeTable, UnknownTypesArriveAsText) {
  ColumnInfo interval = columnTypeOf(SQL_INTERVAL_DAY_TO_SECOND, 25, 6, false);
  EXPECT_EQ(interval.type, adVarWChar);
  EXPECT_EQ(interval.definedSize, 25);
}

TEST(OdbcTypeTable, ParametersAreBoundAsTheColumnsOdbcType) {
  EXPECT_EQ(sqlTypeFor(adInteger), SQL_INTEGER);
  EXPECT_EQ(sqlTypeFor(adNumeric), SQL_DECIMAL);
  EXPECT_EQ(sqlTypeFor(adDBTimeStamp), SQL_TYPE_TIMESTAMP);
  EXPECT_EQ(sqlTypeFor(adLongVarBinary), SQL_LONGVARBINARY);
  EXPECT_EQ(sqlTypeFor(adVarWChar), SQL_WVARCHAR);
  EXPECT_EQ(sqlTypeFor(adBoolean), SQL_BIT);
}

TEST(OdbcText, RoundTripsEveryPlaneIncludingSurrogatePairs) {
  const std::string text = "A é € 北京 😀 z";
  std::u16string wide = utf8ToUtf16(text);
  EXPECT_EQ(wide.size(), 13u);  // 12 characters, the emoji a surrogate pair
  EXPECT_EQ(wide[2], u'é');
  EXPECT_EQ(utf16ToUtf8(wide), text);
}

TEST(OdbcText, MalformedInputBecomesReplacementCharacters) {
  EXPECT_EQ(utf8ToUtf16(std::string("a\xff" "b")), u"a\uFFFDb");
  EXPECT_EQ(utf8ToUtf16(std::string("\xc3")), u"\uFFFD");  // cut short
  const char16_t lone[] = {u'x', 0xD800, u'y'};
  EXPECT_EQ(utf16ToUtf8(lone, 3), "x\xEF\xBF\xBDy");
  EXPECT_EQ(utf8ToUtf16(""), u"");
}

}  // namespace
}  // namespace varsentix::ado::detail::odbcprovider
