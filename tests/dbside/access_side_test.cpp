// A database side on an Access (Jet) file, read only: the Northwind sample.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "dbside/DbsideTestSupport.h"
#include "platform/ado/ConnectionString.h"
#include "support/TempDir.h"
#include "varsentix/datasource/ModADO.h"
#include "varsentix/dbside/ModADOFields.h"
#include "varsentix/dbside/clsDBManager.h"

using namespace varsentix::testing;
using varsentix::clsDBManager;
namespace vb = varsentix::vb;
namespace ado = varsentix::ado;
namespace ModADO = varsentix::ModADO;

namespace {

std::string northwind() {
  return "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + (sharedDataDir() / "nwind.mdb").string();
}

class AccessSide : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(sharedDataDir() / "nwind.mdb")) GTEST_SKIP() << "nwind.mdb missing";
    m.setConnectionString(northwind());
    m.openDatabaseConnection();
    ASSERT_EQ(m.getReturnConnectionMessage(), " Successfully Completed||");
  }
  clsDBManager m;
};

}  // namespace

TEST_F(AccessSide, IsAnAccessSide) { EXPECT_TRUE(m.getIsAccess()); }

TEST_F(AccessSide, SchemaListsTheNorthwindTables) {
  m.openDatabaseSchema();
  EXPECT_EQ(m.getReturnConnectionMessage(), " Successfully Completed||");
  auto schema = m.getDatabaseSchema();
  std::set<std::string> names;
  for (; !schema->isEOF(); schema->MoveNext()) names.insert(schema->field("TABLE_NAME").Value().toText());
  for (const char* table : {"Customers", "Orders", "Order Details", "Products", "Shippers", "Umsätze"}) {
    EXPECT_EQ(names.count(table), 1u) << table;
  }
}

TEST_F(AccessSide, PrimaryAndForeignKeys) {
  EXPECT_EQ(m.getAccessPrimaryKey("Customers"), "CustomerID");
  const std::string detailKey = m.getAccessPrimaryKey("Order Details");
  EXPECT_TRUE(detailKey == "OrderID" || detailKey == "ProductID") << detailKey;
  auto rowset = m.getAccessForeignKey("Customers");
  ASSERT_EQ(rowset->State(), ado::adStateOpen);
  ASSERT_FALSE(rowset->isEOF());
  EXPECT_EQ(rowset->field("FK_TABLE_NAME").Value().toText(), "Orders");
}

TEST_F(AccessSide, DatesAreWrittenBetweenHashes) {
  m.createSQLStatement(" Where OrderID = 10248", "Orders");
  m.openDataBaseRecordsFromQuery(m.getSql());
  ASSERT_EQ(m.getReturnSQLMessage(), " Successfully Completed ||");
  auto rs = m.getDatabaseRecords();
  ASSERT_FALSE(rs->isEOF());
  const std::string value = rs->field("OrderDate").Value().toText();
  int16_t index = -1;
  for (int16_t i = 0; i < rs->getFields().Count(); ++i) {
    if (rs->field(i).Name() == "OrderDate") index = i;
  }
  ASSERT_GE(index, 0);
  EXPECT_EQ(m.formatWhereClauseFromRecordSet(rs, index), "#" + value + "#");
}

TEST_F(AccessSide, CurrencyIsQuoted) {
  m.createSQLStatement(" Where ProductID = 1", "Products");
  m.openDataBaseRecordsFromQuery(m.getSql());
  ASSERT_EQ(m.getReturnSQLMessage(), " Successfully Completed ||");
  auto rs = m.getDatabaseRecords();
  ASSERT_FALSE(rs->isEOF());
  int16_t price = -1;
  for (int16_t i = 0; i < rs->getFields().Count(); ++i) {
    if (rs->field(i).Name() == "UnitPrice") price = i;
  }
  ASSERT_GE(price, 0);
  EXPECT_EQ(rs->field(price).Type(), ado::adCurrency);
  EXPECT_EQ(ModADO::getFieldTypeName(m, price), "Currency_value");
  EXPECT_EQ(m.formatWhereClauseFromRecordSet(rs, price), "'" + rs->field(price).Value().toText() + "'");
}

TEST_F(AccessSide, InsertStatementOfAShipper) {
  m.createSQLStatement(" Where ShipperID = 1", "Shippers");
  m.openDataBaseRecordsFromQuery(m.getSql());
  ASSERT_EQ(m.getReturnSQLMessage(), " Successfully Completed ||");
  m.formatInsertClauseFromRecordSet("Shippers");
  auto rs = m.getDatabaseRecords();
  EXPECT_EQ(m.getSql(), "insert into 'Shippers'(ShipperID,CompanyName,Phone)VALUES (1,'" +
                            rs->field("CompanyName").Value().toText() + "','" + rs->field("Phone").Value().toText() +
                            "')");
}

TEST_F(AccessSide, WritingIsRefusedWithMessageSix) {
  m.setSQL("Delete From [Shippers] Where ShipperID = 1");
  EXPECT_FALSE(m.executeSQL());
  const std::string message = m.getReturnSQLMessage();
  const std::string tail = " #6 Application attempted using the following SQL Delete From [Shippers] Where ShipperID = 1 ||";
  ASSERT_GT(message.size(), tail.size());
  EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
}

TEST_F(AccessSide, MissingTableGivesMessageThree) {
  m.openDataBaseRecordsFromQuery("Select * From [No Such Table]");
  const std::string message = m.getReturnSQLMessage();
  const std::string tail =
      " #3 Error occured when attempting to open table using the following SQLSelect * From [No Such Table] || ||";
  ASSERT_GT(message.size(), tail.size());
  EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
  EXPECT_EQ(message.front(), ' ');
}

TEST(AccessSideBadFile, MissingMdbFileGivesMessageTwo) {
  const std::string cs = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/nonexistent-varsentix-folder/missing.mdb";
  auto expected = failureOf([&] { vb::Ref<ado::Connection>::make()->Open(cs, "", "", -1); });
  ASSERT_TRUE(expected);
  clsDBManager m;
  m.setConnectionString(cs);
  EXPECT_TRUE(m.getIsAccess());
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(),
            " " + numberAndDescription(*expected) +
                " #2 Error occurred when attempting to open connection using the following connection string  " + varsentix::ado::detail::ConnectionString::maskPasswords(cs) +
                " ||||");
}
