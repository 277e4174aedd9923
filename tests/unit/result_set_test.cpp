#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "varsentix/platform/vb/VBError.h"
#include "varsentix/results/clsResultSet.h"

using varsentix::clsResultSet;
using varsentix::vb::VBError;

namespace {
constexpr const char* kFreshRow =
    "databaseObjName=,fieldName=,dataType=,fieldDefinedSize=,fieldActualSize=,dataValue=,"
    "fieldCount=0,recordNumber=0,recordCount=0,changeType=0,isFieldDesc=False,isDataValue=False,"
    "primaryKey=,foreignKey=,fKeyPrimarytable=,fKeyPrimaryColumnName=,fKeyName=,pKeyName=";

int32_t failureNumber(const std::function<void()>& call) {
  try {
    call();
  } catch (const VBError& e) {
    return e.number();
  }
  return 0;
}
}  // namespace

TEST(ResultRow, FreshRowRendersAsTheDocumentedLine) {
  clsResultSet row;
  EXPECT_EQ(row.toString(), kFreshRow);
  row.initializeValues();
  EXPECT_EQ(row.toString(), kFreshRow);
}

TEST(ResultRow, ChangeTypeRoundTripsAsText) {
  clsResultSet row;
  row.setChangeType("3");
  EXPECT_EQ(row.getChangeType(), "3");
  row.setChangeType(" 4 ");
  EXPECT_EQ(row.getChangeType(), "4");
  row.setChangeType("2.5");
  EXPECT_EQ(row.getChangeType(), "2");
}

TEST(ResultRow, BadChangeTypeFailsAndKeepsThePreviousCode) {
  clsResultSet row;
  row.setChangeType("5");
  EXPECT_EQ(failureNumber([&] { row.setChangeType("abc"); }), 13);
  EXPECT_EQ(row.getChangeType(), "5");
  EXPECT_EQ(failureNumber([&] { row.setChangeType("40000"); }), 6);
  EXPECT_EQ(row.getChangeType(), "5");
}

TEST(ResultRow, NegativeLengthRoundTrips) {
  clsResultSet row;
  row.setLength("-1");
  EXPECT_EQ(row.getLength(), "-1");
  EXPECT_EQ(failureNumber([&] { row.setLength("x"); }), 13);
  EXPECT_EQ(row.getLength(), "-1");
}

TEST(ResultRow, InitializeValuesKeepsTheFieldCount) {
  clsResultSet row;
  row.setFieldCount(7);
  row.setFieldName("a");
  row.setChangeType("5");
  row.setShow(true);
  row.initializeValues();
  EXPECT_EQ(row.getFieldCount(), 7);
  EXPECT_EQ(row.getFieldName(), "");
  EXPECT_EQ(row.getChangeType(), "0");
  EXPECT_FALSE(row.getShow());
}

TEST(ResultRow, InitializeValuesClearsEveryOtherField) {
  clsResultSet row;
  row.setFieldName("f");
  row.setDataType("t");
  row.setDatabaseObjName("o");
  row.setDataValue("v");
  row.setFieldDefinedSize("1");
  row.setFieldActualSize("2");
  row.setPrimaryKey("pk");
  row.setFKeyColumnName("fc");
  row.setFKeyPrimaryTable("ft");
  row.setFKeyPrimaryColName("fpc");
  row.setFKeyName("fn");
  row.setPKeyName("pn");
  row.setRecordNumber(3);
  row.setRecordCount(4);
  row.setChangeType("1");
  row.setLength("9");
  row.setIsFieldDesc(true);
  row.setIsDataValue(true);
  row.setShow(true);
  row.initializeValues();
  EXPECT_EQ(row.toString(), kFreshRow);
  EXPECT_EQ(row.getLength(), "0");
  EXPECT_FALSE(row.getShow());
}

TEST(ResultRow, SetFieldCountReturnsAnEmptyValue) {
  clsResultSet row;
  EXPECT_TRUE(row.setFieldCount(12).isEmpty());
  EXPECT_EQ(row.getFieldCount(), 12);
}

TEST(ResultRow, ValuesAreRenderedAsTheyStand) {
  clsResultSet row;
  row.setDataValue("a,b=c");
  EXPECT_NE(row.toString().find(",dataValue=a,b=c,fieldCount="), std::string::npos);
}

TEST(ResultRow, ToStringRendersFlagsAndNumbers) {
  clsResultSet row;
  row.setIsFieldDesc(true);
  row.setRecordNumber(12);
  std::string text = row.toString();
  EXPECT_NE(text.find(",recordNumber=12,"), std::string::npos);
  EXPECT_NE(text.find(",isFieldDesc=True,"), std::string::npos);
}

TEST(ResultRow, ToStringUsesTheDocumentedLabelsAndOrder) {
  clsResultSet row;
  row.setDatabaseObjName("T");
  row.setFieldName("F");
  row.setDataType("String");
  row.setFieldDefinedSize("10");
  row.setFieldActualSize("3");
  row.setDataValue("v");
  row.setFieldCount(2);
  row.setRecordNumber(-4);
  row.setRecordCount(9);
  row.setChangeType("6");
  row.setIsDataValue(true);
  row.setPrimaryKey("id");
  row.setFKeyColumnName("fk");
  row.setFKeyPrimaryTable("P");
  row.setFKeyPrimaryColName("pid");
  row.setFKeyName("fkn");
  row.setPKeyName("pkn");
  row.setLength("77");
  row.setShow(true);
  EXPECT_EQ(row.toString(),
            "databaseObjName=T,fieldName=F,dataType=String,fieldDefinedSize=10,"
            "fieldActualSize=3,dataValue=v,fieldCount=2,recordNumber=-4,recordCount=9,"
            "changeType=6,isFieldDesc=False,isDataValue=True,primaryKey=id,foreignKey=fk,"
            "fKeyPrimarytable=P,fKeyPrimaryColumnName=pid,fKeyName=fkn,pKeyName=pkn");
}

TEST(ResultRow, GettersReturnWhatSettersStored) {
  clsResultSet row;
  row.setFKeyName("n");
  row.setFKeyPrimaryColName("c");
  row.setFKeyPrimaryTable("t");
  row.setFKeyColumnName("k");
  row.setPKeyName("p");
  row.setShow(true);
  row.setIsDataValue(true);
  EXPECT_EQ(row.getFKeyName(), "n");
  EXPECT_EQ(row.getFKeyPrimaryColName(), "c");
  EXPECT_EQ(row.getFKeyPrimaryTable(), "t");
  EXPECT_EQ(row.getFKeyColumnName(), "k");
  EXPECT_EQ(row.getPKeyName(), "p");
  EXPECT_TRUE(row.getShow());
  EXPECT_TRUE(row.getIsDataValue());
}

namespace {

using Setter = void (clsResultSet::*)(const std::string&);
using Getter = std::string (clsResultSet::*)() const;
struct TextField {
  Setter set;
  Getter get;
};
const TextField kTextFields[] = {
    {&clsResultSet::setFieldName, &clsResultSet::getFieldName},
    {&clsResultSet::setDataType, &clsResultSet::getDataType},
    {&clsResultSet::setDatabaseObjName, &clsResultSet::getDatabaseObjName},
    {&clsResultSet::setDataValue, &clsResultSet::getDataValue},
    {&clsResultSet::setFieldDefinedSize, &clsResultSet::getFieldDefinedSize},
    {&clsResultSet::setFieldActualSize, &clsResultSet::getFieldActualSize},
    {&clsResultSet::setPrimaryKey, &clsResultSet::getPrimaryKey},
    {&clsResultSet::setFKeyColumnName, &clsResultSet::getFKeyColumnName},
    {&clsResultSet::setFKeyPrimaryTable, &clsResultSet::getFKeyPrimaryTable},
    {&clsResultSet::setFKeyPrimaryColName, &clsResultSet::getFKeyPrimaryColName},
    {&clsResultSet::setFKeyName, &clsResultSet::getFKeyName},
    {&clsResultSet::setPKeyName, &clsResultSet::getPKeyName},
};

}  // namespace

TEST(ResultRow, EveryTextKeepsItsValueWhenTheOthersChangeInAnyOrder) {
  clsResultSet row;
  std::vector<std::string> expected(std::size(kTextFields));
  uint32_t seed = 7;
  auto next = [&seed] { return seed = seed * 1103515245u + 12345u; };
  for (int step = 0; step < 2000; ++step) {
    const size_t which = next() % std::size(kTextFields);
    std::string text;
    switch (next() % 5) {
      case 0: break;  // empty
      case 1: text = "x"; break;
      case 2: text = std::string("a\0b", 3) + "'%_\\ ä"; break;  // a NUL and more
      case 3: text.assign(next() % 300, static_cast<char>('a' + next() % 26)); break;
      default: text = std::to_string(next()); break;
    }
    (row.*kTextFields[which].set)(text);
    expected[which] = text;
    for (size_t f = 0; f < std::size(kTextFields); ++f)
      ASSERT_EQ((row.*kTextFields[f].get)(), expected[f]) << "step " << step << ", field " << f;
  }
}

TEST(ResultRow, ACopyIsIndependentOfItsOriginal) {
  clsResultSet row;
  row.setDataValue(std::string(100000, 'v'));
  row.setFieldName("name");
  row.setRecordNumber(3);
  clsResultSet copy = row;
  row.setDataValue("changed");
  row.setFieldName("");
  EXPECT_EQ(copy.getDataValue(), std::string(100000, 'v'));
  EXPECT_EQ(copy.getFieldName(), "name");
  EXPECT_EQ(copy.getRecordNumber(), 3);
  copy = row;
  EXPECT_EQ(copy.getDataValue(), "changed");
  EXPECT_EQ(copy.getFieldName(), "");
  copy = copy;  // NOLINT: assigning a row to itself keeps it
  EXPECT_EQ(copy.getDataValue(), "changed");
  clsResultSet moved = std::move(copy);
  EXPECT_EQ(moved.getDataValue(), "changed");
}
