// clsDBManager without a database: defaults, accessors and their fixed quirks, messages,
// description, the shared rollback file name and the SQL text builders.
#include <gtest/gtest.h>

#include "dbside/DbsideTestSupport.h"
#include "varsentix/dbside/clsDBManager.h"

using varsentix::clsDBManager;
using varsentix::clsDBManagerTestAccess;
using varsentix::clsResultSet;
using varsentix::ResultCollection;
using varsentix::testing::failureOf;
using varsentix::testing::numberAndDescription;
using varsentix::testing::valueRow;
namespace vb = varsentix::vb;
namespace ado = varsentix::ado;

namespace {
constexpr const char* kFreshDescription =
    "connectionString=,isMasterDatabase=False,tableName=,tableDataType=,isSorted=False,"
    "isRecordMatched=False,whereClause=,sSql=,newTable=False,tableCatalog=,tableSchema=,"
    "fieldList=,currentRecordNumber=-1,recordCount=-1,isAccess=False,xmlFileName=,"
    "bsaveToXML=False,bListDBOjectsOnly=False,useDSN =True,returnConnectionMessage =,"
    "returnSQLMessage =";
constexpr const char* kJet = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
}  // namespace

TEST(ManagerDefaults, FreshManagerHoldsTheDocumentedDefaults) {
  clsDBManager m;
  EXPECT_EQ(m.getConnectionString(), "");
  EXPECT_EQ(m.getUserID(), "");
  EXPECT_EQ(m.getPassWord(), "");
  ASSERT_FALSE(m.getDatabaseSchema().isNothing());
  EXPECT_EQ(m.getDatabaseSchema()->State(), ado::adStateClosed);
  ASSERT_FALSE(m.getResults().isNothing());
  EXPECT_EQ(m.getResults()->Count(), 0);
  EXPECT_FALSE(m.getIsMasterDatabase());
  EXPECT_EQ(m.getTableName(), "");
  EXPECT_EQ(m.getTableDataType(), "");
  EXPECT_FALSE(m.getIsSorted());
  EXPECT_EQ(m.getIsRecordMatched(), "False");
  EXPECT_EQ(m.getWhereClause(), "");
  EXPECT_EQ(m.getSql(), "");
  EXPECT_FALSE(m.getNewTable());
  EXPECT_EQ(m.getTableCatalog(), "");
  EXPECT_EQ(m.getTableSchema(), "");
  EXPECT_EQ(m.getFieldList(), "");
  EXPECT_EQ(m.getCurrentRecordNumber(), -1);
  ASSERT_FALSE(m.getResultSetToCopy().isNothing());
  EXPECT_EQ(m.getRecordCount(), -1);
  EXPECT_FALSE(m.getIsAccess());
  EXPECT_EQ(m.getXmlFileName(), "");
  EXPECT_FALSE(m.getSaveToXml());
  EXPECT_FALSE(m.getListDBObjectsOnly());
  EXPECT_TRUE(m.getUseDSN());
  EXPECT_EQ(m.getReturnConnectionMessage(), "");
  EXPECT_EQ(m.getReturnSQLMessage(), "");
  EXPECT_EQ(m.getReturnMessage(), "");
  EXPECT_FALSE(m.getShowViews());
  EXPECT_EQ(m.getFieldCount(), 0);
}

TEST(ManagerDefaults, InitializeValuesRestoresDefaultsAndLeavesTheFieldsWithoutOne) {
  clsDBManager m;
  m.setConnectionString(std::string(kJet) + "x.mdb");
  m.setUseDSN(false);
  m.setCurrentRecordNumber(7);
  m.setRecordCount(9);
  m.setTableName("T");
  m.setReturnMessage("m");
  m.setUserID("u");
  m.setPassWord("p");
  m.setIsRecordMatched(true);
  m.setWhereClause(" Where a = 1");
  m.setSQL("select 1");
  m.setShowViews(true);
  m.setFieldCount(4);
  auto oldResults = m.getResults();
  auto oldSchema = m.getDatabaseSchema();
  auto oldRow = m.getResultSetToCopy();
  auto oldRecords = m.getDatabaseRecords();
  m.initializeValues();
  EXPECT_EQ(m.getConnectionString(), "");
  EXPECT_FALSE(m.getIsAccess());
  EXPECT_TRUE(m.getUseDSN());
  EXPECT_EQ(m.getCurrentRecordNumber(), -1);
  EXPECT_EQ(m.getRecordCount(), -1);
  EXPECT_EQ(m.getTableName(), "");
  EXPECT_EQ(m.getReturnMessage(), "");
  EXPECT_FALSE(m.getResults() == oldResults);
  EXPECT_FALSE(m.getDatabaseSchema() == oldSchema);
  EXPECT_FALSE(m.getResultSetToCopy() == oldRow);
  // A new clsData: its record sets are new objects too.
  EXPECT_FALSE(m.getDatabaseRecords() == oldRecords);
  // Fields without a default keep their values.
  EXPECT_EQ(m.getUserID(), "u");
  EXPECT_EQ(m.getPassWord(), "p");
  EXPECT_EQ(m.getIsRecordMatched(), "True");
  EXPECT_EQ(m.getWhereClause(), " Where a = 1");
  EXPECT_EQ(m.getSql(), "select 1");
  EXPECT_TRUE(m.getShowViews());
  EXPECT_EQ(m.getFieldCount(), 4);
}

TEST(ManagerAccessors, EveryPlainAccessorRoundTrips) {
  clsDBManager m;
  m.setIsMasterDatabase(true);
  m.setNewTable(true);
  m.setTableName("Orders");
  m.setTableDataType("TABLE");
  m.setIsSorted(true);
  m.setWhereClause("w");
  m.setSQL("s");
  m.setFieldList("a,b");
  m.setCurrentRecordNumber(3);
  m.setRecordCount(10);
  m.setIsAccess(true);
  m.setXmlFileName("f.xml");
  m.setSaveToXml(true);
  m.setListDBObjectsOnly(true);
  m.setUseDSN(false);
  m.setUserID("sa");
  m.setPassWord("pw");
  m.setReturnConnectionMessage("c");
  m.setReturnMessage("r");
  m.setReturnSQLMessage("q");
  m.setShowViews(true);
  m.setFieldCount(12);
  EXPECT_TRUE(m.getIsMasterDatabase());
  EXPECT_TRUE(m.getNewTable());
  EXPECT_EQ(m.getTableName(), "Orders");
  EXPECT_EQ(m.getTableDataType(), "TABLE");
  EXPECT_TRUE(m.getIsSorted());
  EXPECT_EQ(m.getWhereClause(), "w");
  EXPECT_EQ(m.getSql(), "s");
  EXPECT_EQ(m.getFieldList(), "a,b");
  EXPECT_EQ(m.getCurrentRecordNumber(), 3);
  EXPECT_EQ(m.getRecordCount(), 10);
  EXPECT_TRUE(m.getIsAccess());
  EXPECT_EQ(m.getXmlFileName(), "f.xml");
  EXPECT_TRUE(m.getSaveToXml());
  EXPECT_TRUE(m.getListDBObjectsOnly());
  EXPECT_FALSE(m.getUseDSN());
  EXPECT_EQ(m.getUserID(), "sa");
  EXPECT_EQ(m.getPassWord(), "pw");
  EXPECT_EQ(m.getReturnConnectionMessage(), "c");
  EXPECT_EQ(m.getReturnMessage(), "r");
  EXPECT_EQ(m.getReturnSQLMessage(), "q");
  EXPECT_TRUE(m.getShowViews());
  EXPECT_EQ(m.getFieldCount(), 12);

  auto results = vb::Ref<ResultCollection>::make();
  m.setResults(results);
  EXPECT_TRUE(m.getResults() == results);
  auto schema = vb::Ref<ado::Recordset>::make();
  m.setDatabaseSchema(schema);
  EXPECT_TRUE(m.getDatabaseSchema() == schema);
  auto row = vb::Ref<clsResultSet>::make();
  m.setResultSetToCopy(row);
  EXPECT_TRUE(m.getResultSetToCopy() == row);
}

TEST(ManagerAccessors, IsRecordMatchedReadsAsText) {
  clsDBManager m;
  m.setIsRecordMatched(true);
  EXPECT_EQ(m.getIsRecordMatched(), "True");
  m.setIsRecordMatched(false);
  EXPECT_EQ(m.getIsRecordMatched(), "False");
}

TEST(ManagerAccessors, TableCatalogAndSchemaSettersDiscardTheirArgument) {
  clsDBManager m;
  m.setTableCatalog("Northwind");
  EXPECT_EQ(m.getTableCatalog(), "");
  m.setTableSchema("dbo");
  EXPECT_EQ(m.getTableSchema(), "");
  clsDBManagerTestAccess::storeTableCatalog(m, "28");
  m.setTableCatalog("anything");
  EXPECT_EQ(m.getTableCatalog(), "");
}

TEST(ManagerAccessors, DataManagerGetterReturnsNoObject) {
  clsDBManager m;
  EXPECT_TRUE(m.getDataManager().isNothing());
  auto data = vb::Ref<varsentix::clsData>::make();
  m.setDataManager(data);
  EXPECT_TRUE(m.getDataManager().isNothing());
  // The manager does use the object it was given.
  EXPECT_TRUE(m.getDatabaseRecords() == data->rsAccess());
}

TEST(ManagerAccessors, ManagerGivenNoDataManagerCreatesOneOnUse) {
  clsDBManager m;
  m.setDataManager(nullptr);
  EXPECT_FALSE(m.getDatabaseRecords().isNothing());
}

TEST(CheckIsAccess, EmptyConnectionStringLeavesIsAccessAsItWas) {
  clsDBManager m;
  m.setIsAccess(true);
  m.setConnectionString("");
  EXPECT_TRUE(m.getIsAccess());
  m.setIsAccess(false);
  m.setConnectionString("");
  EXPECT_FALSE(m.getIsAccess());
}

TEST(CheckIsAccess, JetProviderWithMdbFileIsAccess) {
  clsDBManager m;
  m.setConnectionString(std::string(kJet) + "/data/nwind.mdb");
  EXPECT_TRUE(m.getIsAccess());
  m.setConnectionString("Persist Security Info=False;" + std::string(kJet) + "C:\\a.mdb;User ID=Admin");
  EXPECT_TRUE(m.getIsAccess());
}

TEST(CheckIsAccess, JetProviderWithoutMdbIsNotAccess) {
  clsDBManager m;
  m.setIsAccess(true);
  m.setConnectionString(std::string(kJet) + "/data/sample.accdb");
  EXPECT_FALSE(m.getIsAccess());
}

TEST(CheckIsAccess, MdbWithAnotherProviderIsNotAccess) {
  clsDBManager m;
  m.setIsAccess(true);
  m.setConnectionString("Provider=MSDASQL;Driver={MDBTools};DBQ=/data/nwind.mdb");
  EXPECT_FALSE(m.getIsAccess());
  m.setIsAccess(true);
  m.setConnectionString("Provider=SQLite;Data Source=/data/x.mdb");
  EXPECT_FALSE(m.getIsAccess());
}

TEST(CheckIsAccess, ProviderTextIsCaseSensitiveAndMustBeWhole) {
  clsDBManager m;
  m.setConnectionString("provider=microsoft.jet.oledb.4.0;data source=/d/nwind.mdb");
  EXPECT_FALSE(m.getIsAccess());
  m.setConnectionString("Provider=Microsoft.Jet.OLEDB.4.0; Data Source=/d/nwind.mdb");
  EXPECT_FALSE(m.getIsAccess());
  m.setConnectionString(std::string(kJet) + "/d/NWIND.MDB");
  EXPECT_FALSE(m.getIsAccess());
}

TEST(Messages, ClearMessagesEmptiesAllThree) {
  clsDBManager m;
  m.setReturnConnectionMessage("a");
  m.setReturnSQLMessage("b");
  m.setReturnMessage("c");
  m.clearMessages();
  EXPECT_EQ(m.getReturnConnectionMessage(), "");
  EXPECT_EQ(m.getReturnSQLMessage(), "");
  EXPECT_EQ(m.getReturnMessage(), "");
}

TEST(Lifecycle, ResetResultGivesANewEmptyCollection) {
  clsDBManager m;
  auto old = m.getResults();
  old->Add(vb::Ref<clsResultSet>::make());
  m.resetResult();
  EXPECT_FALSE(m.getResults() == old);
  EXPECT_EQ(m.getResults()->Count(), 0);
  EXPECT_EQ(old->Count(), 1);  // a holder of the old collection keeps it
}

TEST(Lifecycle, DestroyValuesEmptiesOnlyCatalogAndSchema) {
  clsDBManager m;
  clsDBManagerTestAccess::storeTableCatalog(m, "28");
  m.setTableName("T");
  m.setSQL("s");
  m.destroyValues();
  EXPECT_EQ(m.getTableCatalog(), "");
  EXPECT_EQ(m.getTableName(), "T");
  EXPECT_EQ(m.getSql(), "s");
}

TEST(Description, ToStringOfAFreshManagerIsEmpty) {
  clsDBManager m;
  EXPECT_EQ(m.toString(), "");
  EXPECT_EQ(m.describeForDiagnostics(), kFreshDescription);
}

TEST(Description, ToStringStaysEmptyWhileTheComposedTextFollowsTheFields) {
  clsDBManager m;
  m.setConnectionString("Provider=SQLite;Data Source=a.db");
  m.setIsMasterDatabase(true);
  m.setTableName("T");
  m.setTableDataType("TABLE");
  m.setIsSorted(true);
  m.setIsRecordMatched(true);
  m.setWhereClause(" Where a = 1");
  m.setSQL("Select * From [T]");
  m.setNewTable(true);
  m.setFieldList("a,b");
  m.setCurrentRecordNumber(4);
  m.setRecordCount(12);
  m.setIsAccess(true);
  m.setXmlFileName("x.xml");
  m.setSaveToXml(true);
  m.setListDBObjectsOnly(true);
  m.setUseDSN(false);
  m.setReturnConnectionMessage(" Successfully Completed||");
  m.setReturnSQLMessage("q");
  m.setUserID("not shown");
  m.setPassWord("not shown");
  m.setReturnMessage("not shown");
  m.setRollbackFileName("not shown");
  EXPECT_EQ(m.toString(), "");
  EXPECT_EQ(m.describeForDiagnostics(),
            "connectionString=Provider=SQLite;Data Source=a.db,isMasterDatabase=True,tableName=T,"
            "tableDataType=TABLE,isSorted=True,isRecordMatched=True,whereClause= Where a = 1,"
            "sSql=Select * From [T],newTable=True,tableCatalog=,tableSchema=,fieldList=a,b,"
            "currentRecordNumber=4,recordCount=12,isAccess=True,xmlFileName=x.xml,bsaveToXML=True,"
            "bListDBOjectsOnly=True,useDSN =False,returnConnectionMessage = Successfully Completed||,"
            "returnSQLMessage =q");
}

TEST(RollbackFileName, OneValueSharedByEveryManager) {
  clsDBManager master;
  clsDBManager source;
  master.setRollbackFileName("/tmp/ORIGINAL_Orders.xml");
  EXPECT_EQ(source.getRollbackFileName(), "/tmp/ORIGINAL_Orders.xml");
  source.setRollbackFileName("/tmp/MODIFIED_Orders.xml");
  EXPECT_EQ(master.getRollbackFileName(), "/tmp/MODIFIED_Orders.xml");
  clsDBManager later;
  later.initializeValues();
  EXPECT_EQ(later.getRollbackFileName(), "/tmp/MODIFIED_Orders.xml");
  later.setRollbackFileName("");
  EXPECT_EQ(master.getRollbackFileName(), "");
}

TEST(SqlText, SelectTemplatesKeepTheirLetterCase) {
  clsDBManager m;
  m.setTableName("Order Details");
  m.formatSQLClause();
  EXPECT_EQ(m.getSql(), "Select * From [Order Details]");
  m.createSQLStatement(" Where OrderID = 5", "Orders");
  EXPECT_EQ(m.getSql(), "Select * from [Orders] Where OrderID = 5");
  m.createSQLStatement("", "T");
  EXPECT_EQ(m.getSql(), "Select * from [T]");
}

TEST(SqlText, TableNamesAreWrittenAsTheyStand) {
  clsDBManager m;
  m.setTableName("a]b';c");
  m.formatSQLClause();
  EXPECT_EQ(m.getSql(), "Select * From [a]b';c]");
}

TEST(WhereFromRecordNumber, NoMatchingRowsLeavesJustWhere) {
  clsDBManager m;
  m.setTableName("T");
  m.setCurrentRecordNumber(2);
  m.getResults()->Add(valueRow("T", 1, "ID", "3", "1"));
  m.getResults()->Add(valueRow("U", 2, "ID", "3", "2"));
  m.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m.getWhereClause(), " Where ");
  clsDBManager empty;
  empty.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(empty.getWhereClause(), " Where ");
}

TEST(WhereFromRecordNumber, FirstConditionUsesEqualsLaterOnesLike) {
  clsDBManager m;
  m.setTableName("Customers");
  m.setCurrentRecordNumber(2);
  auto results = m.getResults();
  results->Add(valueRow("Customers", 1, "ID", "3", "1"));
  results->Add(valueRow("Customers", 2, "ID", "3", "7"));
  results->Add(valueRow("Orders", 2, "Total", "5", "1.5"));
  results->Add(valueRow("Customers", 2, "Name", "202", "O'Brien"));
  results->Add(valueRow("Customers", 2, "City", "200", "Paris"));
  m.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m.getWhereClause(), " Where ID = 7 AND Name LIKE 'O''Brien' AND City LIKE 'Paris'");
}

TEST(WhereFromRecordNumber, NullInTheFirstConditionLeavesEqualsOpenAndLaterNullsDropOut) {
  clsDBManager m;
  m.setTableName("T");
  m.setCurrentRecordNumber(0);
  m.getResults()->Add(valueRow("T", 0, "A", "202", "Null"));
  m.getResults()->Add(valueRow("T", 0, "B", "3", "Null"));
  m.getResults()->Add(valueRow("T", 0, "C", "3", "4"));
  m.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m.getWhereClause(), " Where A =  AND C LIKE 4");
}

TEST(WhereFromRecordNumber, OnlyTheExactTextNullCounts) {
  clsDBManager m;
  m.setTableName("T");
  m.setCurrentRecordNumber(1);
  m.getResults()->Add(valueRow("T", 1, "A", "202", "NULL"));
  m.getResults()->Add(valueRow("T", 1, "B", "202", "null"));
  m.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m.getWhereClause(), " Where A = 'NULL' AND B LIKE 'null'");
}

TEST(WhereFromRecordNumber, TableNameComparisonIsCaseSensitive) {
  clsDBManager m;
  m.setTableName("t");
  m.setCurrentRecordNumber(1);
  m.getResults()->Add(valueRow("T", 1, "A", "3", "1"));
  m.formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m.getWhereClause(), " Where ");
}

TEST(WhereFromRecordNumber, ADataTypeThatIsNotANumberFails) {
  clsDBManager m;
  m.setTableName("T");
  m.setCurrentRecordNumber(1);
  m.getResults()->Add(valueRow("T", 1, "A", "String", "x"));
  auto failure = failureOf([&] { m.formatWhereClauseFromRecordNumber(); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 13);
}

TEST(ResultSetLiteral, TextLikeTypesAreQuotedWithApostrophesDoubled) {
  clsDBManager m;
  for (const char* type : {"6", "8", "64", "129", "130", "136", "137", "200", "201", "202", "203"}) {
    EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", type, "O'Brien")),
              "'O''Brien'")
        << type;
  }
  EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", "202", "'a''b'")),
            "'''a''''b'''");
}

TEST(ResultSetLiteral, CurrencyIsQuotedAndAGuidIsNot) {
  clsDBManager m;
  EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", "6", "12.5")), "'12.5'");
  EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(
                m, *valueRow("T", 1, "F", "72", "{6F9619FF-8B86-D011-B42D-00C04FC964FF}")),
            "{6F9619FF-8B86-D011-B42D-00C04FC964FF}");
}

TEST(ResultSetLiteral, DatesAreHashedOnAJetSideAndQuotedElsewhere) {
  clsDBManager m;
  for (const char* type : {"7", "133", "134", "135"}) {
    m.setIsAccess(false);
    EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", type, "2024-01-31")),
              "'2024-01-31'");
    m.setIsAccess(true);
    EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", type, "2024-01-31")),
              "#2024-01-31#");
  }
  m.setIsAccess(true);
  EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", "7", "it's")), "#it''s#");
}

TEST(ResultSetLiteral, OtherTypesAreWrittenBare) {
  clsDBManager m;
  for (const char* type : {"0", "2", "3", "4", "5", "9", "10", "11", "12", "13", "14", "16", "17", "18",
                           "19", "20", "21", "72", "128", "131", "132", "138", "139", "204", "205", "999"}) {
    const std::string wellFormed = std::string(type) == "72" ? "{6F9619FF-8B86-D011-B42D-00C04FC964FF}" : "42";
    EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", type, wellFormed)), wellFormed)
        << type;
    // A text not well-formed for the type is never written bare: the statement check refuses it.
    const std::string malformed = clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", type, "4'2"));
    EXPECT_NE(malformed.find('\0'), std::string::npos) << type;
    EXPECT_EQ(malformed.find("4'2"), std::string::npos) << type;
  }
  // The type text is read as a 16-bit integer, VB style.
  EXPECT_EQ(clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", " 202 ", "x")), "'x'");
  EXPECT_EQ(failureOf([&] { clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", "", "x")); })
                ->number(),
            13);
  EXPECT_EQ(failureOf([&] {
              clsDBManagerTestAccess::formatResultSetValue(m, *valueRow("T", 1, "F", "70000", "x"));
            })->number(),
            6);
}

TEST(WithoutConnection, ExecuteSqlFailsWithMessageSixReplacingTheBuffer) {
  clsDBManager m;
  m.setReturnSQLMessage("earlier text");
  m.setSQL("delete from [T]");
  auto expected = failureOf([&] {
    vb::Ref<ado::Connection> closed = vb::Ref<ado::Connection>::make();
    closed->Execute("delete from [T]", nullptr, -1);
  });
  ASSERT_TRUE(expected);
  EXPECT_FALSE(m.executeSQL());
  EXPECT_EQ(m.getReturnSQLMessage(), numberAndDescription(*expected) +
                                         " #6 Application attempted using the following SQL delete from [T] ||");
}

TEST(WithoutConnection, QueriesAppendMessagesThreeAndFour) {
  clsDBManager m;
  m.openDataBaseRecordsFromQuery("Select * From [T]");
  m.openSecondDataBaseRecordsFromQuery("Select * From [U]");
  const std::string message = m.getReturnSQLMessage();
  EXPECT_NE(message.find(" #3 Error occured when attempting to open table using the following SQLSelect * From [T] ||"),
            std::string::npos)
      << message;
  EXPECT_NE(message.find(" #4 Error occured when attempting to open table using the following SQLSelect * From [U] ||"),
            std::string::npos)
      << message;
  EXPECT_EQ(message.substr(message.size() - 6), " || ||");
  EXPECT_EQ(message.front(), ' ');
}

TEST(WithoutConnection, SchemaOpenFailsWithMessageFiveAndKeepsTheOldRecordSet) {
  clsDBManager m;
  m.setConnectionString("Provider=SQLite;Data Source=never-opened.db");
  m.setReturnConnectionMessage("before");
  auto old = m.getDatabaseSchema();
  auto expected = failureOf([] {
    vb::Ref<ado::Connection>::make()->OpenSchema(ado::adSchemaTables);
  });
  ASSERT_TRUE(expected);
  m.openDatabaseSchema();
  EXPECT_TRUE(m.getDatabaseSchema() == old);
  EXPECT_EQ(m.getReturnConnectionMessage(),
            "before" + numberAndDescription(*expected) +
                " #5 Error when attempting to open the database schema for the following connection "
                ":Provider=SQLite;Data Source=never-opened.db ||");
}

TEST(WithoutConnection, ClosingWhatIsNotOpenIsHarmless) {
  clsDBManager m;
  m.closeRecordSet();
  m.closeRecordSet2();
  m.closeSecondConnection();
  m.closeConnection();
  EXPECT_EQ(m.getDatabaseRecords()->State(), ado::adStateClosed);
}

TEST(WithoutConnection, ForeignKeyOfAConnectionThatCannotAnswerIsAnUnopenedRecordSet) {
  clsDBManager m;
  auto rowset = m.getAccessForeignKey("T");
  ASSERT_FALSE(rowset.isNothing());
  EXPECT_EQ(rowset->State(), ado::adStateClosed);
}

TEST(WithoutConnection, PrimaryKeyFailureGoesToTheCaller) {
  clsDBManager m;
  EXPECT_TRUE(failureOf([&] { m.getAccessPrimaryKey("T"); }));
}

TEST(WithoutConnection, NonNumericCatalogFailsAsATypeMismatch) {
  clsDBManager m;
  clsDBManagerTestAccess::storeTableCatalog(m, "Sales");
  auto failure = failureOf([&] { m.getAccessPrimaryKey("T"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 13);
}
