#include "compare/CompareTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

struct TwoDatabases {
  std::unique_ptr<TestDatabase> master;
  std::unique_ptr<TestDatabase> source;
};

}  // namespace

TEST(FullDatabaseCompare, OneSideWithoutTablesReturnsFalseAndKeepsThePreviousResults) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(empty, Engine::SQLite);
  master->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  Varsenti control;
  auto previousMaster = collection({row("x", "f", "v", 1)});
  auto previousSource = collection({});
  control.setMasterResultSets(previousMaster);
  control.setSourceResults(previousSource);
  EXPECT_FALSE(control.beginFullDatabaseCompare(master->connectionString(), empty->connectionString(), false));
  EXPECT_TRUE(control.getMasterDatabaseResults() == previousMaster);
  EXPECT_TRUE(control.getSourceDatabaseResults() == previousSource);
}

TEST(FullDatabaseCompare, ShowDifferencesOnlyRemovesEveryUnchangedRowAndStillReturnsTrue) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT)");
  Varsenti control;
  control.showDifferencesOnly(true);
  EXPECT_TRUE(control.beginFullDatabaseCompare(master->connectionString(), source->connectionString(), false));
  EXPECT_EQ(control.getResultCount(true), 0);
  EXPECT_EQ(control.getResultCount(false), 0);
}

TEST(FullDatabaseCompare, PublishesTheManagersOwnCollections) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  master->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT)");
  master->exec("CREATE TABLE only_here (id INTEGER PRIMARY KEY)");
  source->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, name INTEGER)");
  Varsenti control;
  EXPECT_TRUE(control.beginFullDatabaseCompare(master->connectionString(), source->connectionString(), false));
  EXPECT_TRUE(control.getMasterDatabaseResults() == control.getMasterDataManager()->getResults());
  EXPECT_TRUE(control.getSourceDatabaseResults() == control.getSourceDataManager()->getResults());
  // Rows: only_here (table, id, trailing), t (table, id, name, trailing).
  EXPECT_EQ(control.getResultCount(true), 7);
  int newTables = 0, typeChanges = 0;
  for (int32_t i = 1; i <= control.getResultCount(true); ++i) {
    newTables += control.getResultChangeType(i, true) == 1;
    typeChanges += control.getResultChangeType(i, true) == 3;
  }
  EXPECT_EQ(newTables, 3);
  EXPECT_EQ(typeChanges, 1);
}

TEST(FullDatabaseCompare, ObjectsOnlyListsTablesWithoutFields) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT)");
  Varsenti control;
  EXPECT_TRUE(control.beginFullDatabaseCompare(master->connectionString(), source->connectionString(), true));
  EXPECT_EQ(control.getResultCount(true), 1);
  EXPECT_EQ(control.getResultFieldName(1, true), "");
  EXPECT_TRUE(control.getMasterDataManager()->getListDBObjectsOnly());
}

TEST(FullDatabaseCompare, AFailureRecordsMessage77AndTheMasterTextBecomesTheSources) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  std::string columns = "c0 INTEGER";
  for (int i = 1; i < 60; ++i) columns += ", c" + std::to_string(i) + " INTEGER";
  master->exec("CREATE TABLE wide (" + columns + ")");
  Varsenti control;
  // At the first progress report the source side loses its result collection, so the driver's
  // own count of the rows fails.
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
    control.getSourceDataManager()->setResults(nullptr);
  });
  EXPECT_FALSE(control.beginFullDatabaseCompare(master->connectionString(), master->connectionString(), false));
  const std::string source = control.getSourceDataManager()->getReturnMessage();
  const std::string cause = " 91 Object variable or With block variable not set";
  ASSERT_GE(source.size(), cause.size());
  EXPECT_EQ(source.substr(source.size() - cause.size()), cause);
  EXPECT_EQ(control.getMasterDataManager()->getReturnMessage(),
            source + " #77 Error occurred while attempting to do a full compare databases in component ||");
}

TEST(TableFullDataCompare, TheSourceSideAlwaysReportsItsTableTypeAsTable) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  Varsenti control;
  const bool result =
      control.beginTableFullDataCompare(master->connectionString(), source->connectionString(), "t", "TABLE");
  EXPECT_EQ(control.getMasterDataManager()->getTableDataType(), "TABLE");
  EXPECT_EQ(control.getSourceDataManager()->getTableDataType(), "Table");
  // "Table" is not "TABLE": the source lists no table, so not both sides have rows.
  EXPECT_FALSE(result);
  EXPECT_TRUE(control.getMasterDatabaseResults().isNothing());  // nothing is published
}

TEST(TablebaseCompare, NeverChangesTheControlsManagers) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
  Varsenti control;
  auto before = control.getMasterDataManager();
  EXPECT_TRUE(control.beginTablebaseCompare(master->connectionString(), source->connectionString(), "t", "VIEW"));
  EXPECT_TRUE(control.getMasterDataManager() == before);
  EXPECT_EQ(before->getResults()->Count(), 0);
  EXPECT_EQ(control.getResultCount(true), 4);  // the fresh managers' rows are published
}

TEST(DatabaseCompareWithConnection, ReturnsFalseEvenWithTwoValidConnections) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  auto a = vb::Ref<ado::Connection>::make();
  auto b = vb::Ref<ado::Connection>::make();
  a->Open(db->connectionString());
  b->Open(db->connectionString());
  Varsenti control;
  EXPECT_FALSE(control.beginDatabaseCompareWithConnection(a, b));
  EXPECT_TRUE(control.getMasterDatabaseResults().isNothing());
}

TEST(TableCompareFromDBManagers, ComparesRecordsOnPreparedManagersAndPublishesThem) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
  master->exec("INSERT INTO t VALUES (1, 'a'), (2, 'b')");
  source->exec("INSERT INTO t VALUES (1, 'a'), (3, 'c')");
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  Varsenti control;
  EXPECT_TRUE(control.beginTableCompareFromDBManagers(m, s));
  EXPECT_TRUE(control.getMasterDatabaseResults() == m->getResults());
  std::vector<std::string> masterValues, sourceValues;
  for (int32_t i = 1; i <= control.getResultCount(true); ++i)
    if (control.getResultIsDataValue(i, true)) masterValues.push_back(control.getResultFieldValue(i, true));
  for (int32_t i = 1; i <= control.getResultCount(false); ++i)
    if (control.getResultIsDataValue(i, false)) sourceValues.push_back(control.getResultFieldValue(i, false));
  EXPECT_EQ(masterValues, (std::vector<std::string>{"2", "b"}));
  EXPECT_EQ(sourceValues, (std::vector<std::string>{"3", "c"}));
}

TEST(TableCompareFromDBManagers, SavesEachSideToItsXmlFileWhenAsked) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  master->exec("INSERT INTO t VALUES (1)");
  TempDir dir;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  m->setSaveToXml(true);
  m->setXmlFileName(dir.file("master.xml"));
  m->setSQL("select * from [t]");
  std::ofstream(dir.file("master.xml")) << "old";
  Varsenti control;
  control.beginTableCompareFromDBManagers(m, s);
  std::ifstream in(dir.file("master.xml"));
  std::string first;
  std::getline(in, first);
  EXPECT_NE(first, "old");  // the old file was removed and the records saved anew
  EXPECT_FALSE(std::filesystem::exists(dir.file("source.xml")));
}

TEST(FieldListCompare, RowsOnlyOnTheMasterSideSetTheMasterOnlyFlag) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
  master->exec("INSERT INTO t VALUES (1, 'a'), (2, 'b')");
  source->exec("INSERT INTO t VALUES (1, 'a')");
  Varsenti control;
  // The source's one record is found on the master side, so its emptied results stay empty.
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  int yields = 0;
  ui::setDoEventsHook([&] { ++yields; });
  EXPECT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  ui::setDoEventsHook({});
  EXPECT_EQ(yields, 1);
  EXPECT_TRUE(control.getRecordsExistInMasterOnly());
  EXPECT_FALSE(control.getRecordsExistInSourceOnly());
  EXPECT_TRUE(control.getMasterDataManager() == m);
}

TEST(FieldListCompare, FreshManagersWithoutAConnectionCompareNoRecords) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  master->exec("INSERT INTO t VALUES (1)");
  Varsenti control;
  // The managers are never connected: their queries fail, and each side lists only the trailing
  // row of its table, so "both sides have rows" holds while no record was compared.
  EXPECT_TRUE(control.beginTableCompareFromFieldList(master->connectionString(), source->connectionString(), "t",
                                                     "TABLE", vb::Variant("*")));
  EXPECT_EQ(control.getMasterDataManager()->getFieldList(), "*");  // the fresh managers became the control's
  for (bool isMaster : {true, false}) {
    ASSERT_EQ(control.getResultCount(isMaster), 1);
    EXPECT_EQ(control.getResultFieldName(1, isMaster), "");
    EXPECT_FALSE(control.getResultIsDataValue(1, isMaster));
  }
  EXPECT_NE(control.getErrorLogs(true).find(" #3 Error occured when attempting to open table using the following SQL"),
            std::string::npos);
}

TEST(CheckFieldLength, EqualDefinedSizesOfDifferentTypesAreEqual) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE t (a VARCHAR(10), b NVARCHAR(10), c VARCHAR(11))");
  auto rs = vb::Ref<ado::Recordset>::make();
  auto cn = vb::Ref<ado::Connection>::make();
  cn->Open(db->connectionString());
  rs->Open("select [a], [a] as b2 from [t]", cn);
  auto other = vb::Ref<ado::Recordset>::make();
  other->Open("select [b], [c] from [t]", cn);
  Varsenti control;
  EXPECT_TRUE(control.checkFieldLength(rs, other, 0));
  EXPECT_FALSE(control.checkFieldLength(rs, other, 1));
}
