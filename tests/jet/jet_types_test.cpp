// The Access provider's type table: Access column -> declared type -> ADO type.
#include <gtest/gtest.h>

#include "platform/ado/providers/jet/JetTypes.h"

using namespace varsentix::ado;
using namespace varsentix::ado::detail;

namespace {

JetColumn column(AccessType type, int32_t size = 0, uint8_t precision = 0, uint8_t scale = 0) {
  JetColumn c;
  c.name = "c";
  c.type = type;
  c.size = size;
  c.precision = precision;
  c.scale = scale;
  return c;
}

struct Expected {
  AccessType access;
  int32_t size;
  const char* declared;
  DataTypeEnum ado;
  int32_t definedSize;
};

TEST(JetTypes, EachAccessTypeHasItsDeclaredAndAdoType) {
  const Expected table[] = {
      {AccessType::Boolean, 0, "BIT", adBoolean, 2},
      {AccessType::Byte, 0, "BYTE", adUnsignedTinyInt, 1},
      {AccessType::Integer, 0, "SHORT", adSmallInt, 2},
      {AccessType::LongInteger, 0, "LONG", adInteger, 4},
      {AccessType::Currency, 0, "CURRENCY", adCurrency, 8},
      {AccessType::Single, 0, "SINGLE", adSingle, 4},
      {AccessType::Double, 0, "DOUBLE", adDouble, 8},
      {AccessType::DateTime, 0, "DATETIME COLLATE JETDATE", adDate, 8},
      {AccessType::Binary, 50, "BINARY(50)", adBinary, 50},
      {AccessType::Text, 40, "TEXT(40) COLLATE NOCASE", adVarWChar, 40},
      {AccessType::OleObject, 0, "LONGBINARY", adLongVarBinary, 1073741823},
      {AccessType::Memo, 0, "LONGTEXT COLLATE NOCASE", adLongVarWChar, 536870910},
      {AccessType::ReplicationId, 0, "GUID", adGUID, 16},
      {AccessType::Complex, 0, "LONG", adInteger, 4},
      {AccessType::Unknown, 8, "LONGBINARY", adLongVarBinary, 1073741823},
  };
  for (const auto& row : table) {
    JetColumn c = column(row.access, row.size);
    EXPECT_EQ(declaredColumnType(c), row.declared);
    ColumnInfo info = columnInfoFor(c);
    EXPECT_EQ(info.type, row.ado) << row.declared;
    EXPECT_EQ(info.definedSize, row.definedSize) << row.declared;
    EXPECT_EQ(info.name, "c");
  }
}

TEST(JetTypes, DecimalKeepsPrecisionAndScale) {
  JetColumn c = column(AccessType::Numeric, 0, 18, 4);
  EXPECT_EQ(declaredColumnType(c), "DECIMAL(18,4)");
  ColumnInfo info = columnInfoFor(c);
  EXPECT_EQ(info.type, adNumeric);
  EXPECT_EQ(info.precision, 18);
  EXPECT_EQ(info.numericScale, 4);
  EXPECT_EQ(info.definedSize, 19);
}

TEST(JetTypes, DeclaredTypesReadBackWithoutCollation) {
  auto text = columnInfoForDeclaredType("TEXT(255)");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->type, adVarWChar);
  EXPECT_EQ(text->definedSize, 255);
  auto money = columnInfoForDeclaredType("currency");
  ASSERT_TRUE(money);
  EXPECT_EQ(money->type, adCurrency);
  EXPECT_EQ(money->precision, 19);
  EXPECT_FALSE(columnInfoForDeclaredType("INTEGER"));
  EXPECT_FALSE(columnInfoForDeclaredType(""));
}

TEST(JetTypes, OnlyYesNoColumnsAreNeverNull) {
  EXPECT_FALSE(columnInfoFor(column(AccessType::Boolean)).nullable);
  EXPECT_TRUE(columnInfoFor(column(AccessType::Text, 5)).nullable);
}

}  // namespace
