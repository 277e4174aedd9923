#include <gtest/gtest.h>

#include "platform/ado/TypeInfo.h"
#include "platform/ado/providers/sqlite/SqliteSession.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using ado::detail::sqliteColumnType;

TEST(SqliteTypeMapping, DeclaredTypesMapOntoAdoNumbersAndSizes) {
  struct Case {
    const char* declared;
    DataTypeEnum type;
    int32_t size;
  } cases[] = {
      {"INTEGER", adInteger, 4},          {"int", adInteger, 4},
      {"BIGINT", adBigInt, 8},            {"SMALLINT", adSmallInt, 2},
      {"TINYINT", adTinyInt, 1},          {"NVARCHAR(160)", adVarWChar, 160},
      {"VARCHAR( 10 )", adVarWChar, 10},  {"TEXT", adVarWChar, 536870910},
      {"NCHAR(3)", adWChar, 3},           {"CLOB", adLongVarWChar, 1073741823},
      {"REAL", adDouble, 8},              {"FLOAT", adDouble, 8},
      {"DOUBLE PRECISION", adDouble, 8},  {"NUMERIC(10,2)", adNumeric, 19},
      {"DECIMAL", adNumeric, 19},         {"BOOLEAN", adBoolean, 2},
      {"DATE", adDBDate, 6},              {"DATETIME", adDBTimeStamp, 16},
      {"TIMESTAMP", adDBTimeStamp, 16},   {"TIME", adDBTime, 6},
      {"BLOB", adLongVarBinary, 2147483647}, {"VARBINARY(16)", adVarBinary, 16},
      {"MONEY", adCurrency, 8},           {"UUID", adGUID, 16},
      {"", adVarWChar, 536870910},        {"UNSIGNED MEDIUM INTEGER", adInteger, 4},
      {"VARYING STRINGCHAR(7)", adVarWChar, 7}, {"POLYBLOB", adLongVarBinary, 2147483647},
      {"FLOATY", adDouble, 8},            {"WHATEVER", adNumeric, 19},
  };
  for (const auto& c : cases) {
    auto info = sqliteColumnType(c.declared);
    EXPECT_EQ(info.type, c.type) << c.declared;
    EXPECT_EQ(info.definedSize, c.size) << c.declared;
  }
}

TEST(SqliteTypeMapping, NumericKeepsPrecisionAndScale) {
  auto info = sqliteColumnType("NUMERIC(10,2)");
  EXPECT_EQ(info.precision, 10);
  EXPECT_EQ(info.numericScale, 2);
  EXPECT_EQ(sqliteColumnType("DECIMAL(7)").numericScale, 0);
  EXPECT_EQ(sqliteColumnType("NUMERIC").numericScale, 255);
}

TEST(TypeInfo, WithScaleRoundsAndPads) {
  using ado::detail::withScale;
  EXPECT_EQ(withScale("12.5", 2), "12.50");
  EXPECT_EQ(withScale("0.995", 2), "1.00");
  EXPECT_EQ(withScale("-0.001", 2), "0.00");
  EXPECT_EQ(withScale("-1.005", 2), "-1.01");
  EXPECT_EQ(withScale("99.999", 2), "100.00");
  EXPECT_EQ(withScale("7", 0), "7");
  EXPECT_EQ(withScale("3.14159", 255), "3.14159");
}

TEST(TypeInfo, TextBecomesTheVariantOfTheColumnType) {
  using ado::detail::variantFromText;
  EXPECT_EQ(variantFromText(adInteger, "42").type(), vb::VarType::Long);
  EXPECT_EQ(variantFromText(adBigInt, "9000000000").toText(), "9000000000");
  EXPECT_EQ(variantFromText(adNumeric, "12.50").toText(), "12.50");
  EXPECT_EQ(variantFromText(adCurrency, "-3.5").toText(), "-3.5");
  EXPECT_EQ(variantFromText(adBoolean, "True").toBool(), true);
  EXPECT_EQ(variantFromText(adDBTimeStamp, "2024-02-29T13:45:30.25").toText(), "2024-02-29 13:45:30.25");
  EXPECT_EQ(variantFromText(adDBTimeStamp, "2024-02-29").toText(), "2024-02-29 00:00:00");
  EXPECT_EQ(variantFromText(adDBDate, "2024-02-29").toText(), "2024-02-29");
  EXPECT_EQ(variantFromText(adLongVarBinary, "00ff10").asBytes(), (vb::Bytes{0, 255, 16}));
  EXPECT_THROW(variantFromText(adInteger, "x1"), vb::VBError);
  EXPECT_THROW(variantFromText(adInteger, "99999999999"), vb::VBError);
}

TEST(TypeInfo, ActualSizeIsBytesForTextAndBinaryAndFixedOtherwise) {
  using ado::detail::actualSizeOf;
  EXPECT_EQ(actualSizeOf(adVarWChar, vb::Variant("Grüße")), 7);
  EXPECT_EQ(actualSizeOf(adLongVarBinary, vb::Variant(vb::Bytes{1, 2, 3})), 3);
  EXPECT_EQ(actualSizeOf(adInteger, vb::Variant(int32_t{5})), 4);
  EXPECT_EQ(actualSizeOf(adVarWChar, vb::Variant::null()), 0);
}

TEST(TypeInfo, CurrencyPastItsRangeIsAnOverflowAndItsEndsAreExact) {
  using ado::detail::variantFromText;
  EXPECT_EQ(variantFromText(adCurrency, "922337203685477.5807").toText(), "922337203685477.5807");
  EXPECT_EQ(variantFromText(adCurrency, "-922337203685477.5808").toText(), "-922337203685477.5808");
  EXPECT_EQ(variantFromText(adCurrency, "0.123456").toText(), "0.1234");
  EXPECT_EQ(variantFromText(adCurrency, "+000000000000000000000012.5").toText(), "12.5");
  for (const char* text : {"922337203685477.5808", "922337203685477.9999", "-922337203685477.5809",
                           "-922337203685477.9999", "9999999999999999", "99999999999999999999999"}) {
    try {
      variantFromText(adCurrency, text);
      ADD_FAILURE() << text << " gave no error";
    } catch (const vb::VBError& e) {
      EXPECT_EQ(e.number(), vb::errnum::Overflow) << text;
    }
  }
}

TEST(TypeInfo, ASinglePastItsRangeIsAnOverflow) {
  using ado::detail::variantFromText;
  EXPECT_EQ(variantFromText(adSingle, "1.5").toText(), "1.5");
  for (const char* text : {"1e39", "-1e300", "3.5e38"}) {
    try {
      variantFromText(adSingle, text);
      ADD_FAILURE() << text << " gave no error";
    } catch (const vb::VBError& e) {
      EXPECT_EQ(e.number(), vb::errnum::Overflow) << text;
    }
  }
}

TEST(TypeInfo, ADateWhoseYearIsPastThe32BitRangeIsATypeMismatch) {
  using ado::detail::variantFromText;
  EXPECT_EQ(variantFromText(adDBTimeStamp, "2147483647-01-02 03:04:05").toText(), "2147483647-01-02 03:04:05");
  for (const char* text : {"2147483648-01-01", "99999999999999999999-01-01T00:00:00", "-2147483649-01-01"}) {
    try {
      variantFromText(adDBTimeStamp, text);
      ADD_FAILURE() << text << " gave no error";
    } catch (const vb::VBError& e) {
      EXPECT_EQ(e.number(), vb::errnum::TypeMismatch) << text;
    }
  }
}
