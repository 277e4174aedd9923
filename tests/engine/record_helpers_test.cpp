#include <gtest/gtest.h>

#include "engine/EngineTestSupport.h"
#include "engine/ModADORecordHelpers.h"

using namespace varsentix;
using namespace varsentix::testing;

// --- The key field of a table ---

TEST(FirstComparableFieldName, FirstUnchangedFieldOfAComparableType) {
  clsDBManager side;
  side.initializeValues();
  side.getResults()->Add(makeRow("T", "a", "Binary", "0", true));
  side.getResults()->Add(makeRow("T", "b", "String", "3", true));
  side.getResults()->Add(makeRow("T", "c", "Long_String", "0", true));
  side.getResults()->Add(makeRow("T", "d", "String", "0", true));
  EXPECT_EQ(ModADO::getFirstComparableFieldName(side, "T"), "c");
}

TEST(FirstComparableFieldName, TableNameInOtherLetterCaseFindsNothing) {
  clsDBManager side;
  side.initializeValues();
  side.getResults()->Add(makeRow("T", "c", "Long_String", "0", true));
  EXPECT_EQ(ModADO::getFirstComparableFieldName(side, "t"), "");
}

TEST(FirstComparableFieldName, TableRowsAndOtherTablesDoNotCount) {
  clsDBManager side;
  side.initializeValues();
  side.getResults()->Add(makeRow("T", "", "TABLE", "0", false));
  side.getResults()->Add(makeRow("U", "u", "String", "0", true));
  side.getResults()->Add(makeRow("T", "t", "Date_Time_stamp", "0", true));
  EXPECT_EQ(ModADO::getFirstComparableFieldName(side, "T"), "t");
}

TEST(RecordSetFieldCount, CountsTheOpenRecordSet) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a INTEGER, b TEXT, c TEXT)");
  auto side = makeSide(db->connectionString());
  side->openDatabaseConnection();
  side->openDataBaseRecordsFromQuery("select * from [T]");
  EXPECT_EQ(ModADO::getRecordSetFieldCount(*side), 3);
}

TEST(QueryReturnsRecords, FalseWhenNothingIsFoundAndTheSecondRecordSetIsClosedEitherWay) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a INTEGER)");
  db->exec("INSERT INTO T VALUES (1)");
  auto side = makeSide(db->connectionString());
  side->openDatabaseConnection();
  side->setSQL("Select [a] from [T]");
  side->setWhereClause(" Where [a] = 2");
  EXPECT_FALSE(ModADO::queryReturnsRecords(*side));
  EXPECT_EQ(side->getDatabaseRecords2()->State(), ado::adStateClosed);
  side->setWhereClause(" Where [a] = 1");
  EXPECT_TRUE(ModADO::queryReturnsRecords(*side));
  EXPECT_EQ(side->getDatabaseRecords2()->State(), ado::adStateClosed);
  side->setWhereClause(" Where [no_such_column] = 1");
  EXPECT_FALSE(ModADO::queryReturnsRecords(*side));
}

// --- Foreign-key details of a result row ---

namespace {
vb::Ref<clsResultSet> detailsOf(const std::string& connectionString, const std::string& table) {
  auto side = makeSide(connectionString);
  side->openDatabaseConnection();
  side->setTableName(table);
  auto row = vb::Ref<clsResultSet>::make();
  row->setPKeyName("kept");
  return ModADO::fillForeignKeyDetails(row, *side);
}

class ForeignKeyDetails : public ::testing::TestWithParam<Engine> {};
}  // namespace

TEST_P(ForeignKeyDetails, TableWithoutForeignKeysGetsTheFixedTextsAndKeepsPKeyName) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  db->exec("CREATE TABLE lonely (id INTEGER PRIMARY KEY)");
  auto row = detailsOf(db->connectionString(), "lonely");
  EXPECT_EQ(row->getFKeyPrimaryTable(), "Not Defined");
  EXPECT_EQ(row->getFKeyName(), "FKey name not defined");
  EXPECT_EQ(row->getFKeyPrimaryColName(), "Key was not defined");
  EXPECT_EQ(row->getFKeyColumnName(), "No Foreign(s) key Defined");
  EXPECT_EQ(row->getPKeyName(), "kept");
}

TEST_P(ForeignKeyDetails, AReferencedTableReportsTheFirstForeignKeyOnly) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  db->exec("CREATE TABLE parent (id INTEGER PRIMARY KEY)");
  db->exec("CREATE TABLE child_a (id INTEGER PRIMARY KEY, parent_id INTEGER, "
           "CONSTRAINT fk_a FOREIGN KEY (parent_id) REFERENCES parent (id))");
  db->exec("CREATE TABLE child_b (id INTEGER PRIMARY KEY, parent_ref INTEGER, "
           "CONSTRAINT fk_b FOREIGN KEY (parent_ref) REFERENCES parent (id))");
  auto row = detailsOf(db->connectionString(), "parent");
  EXPECT_EQ(row->getFKeyPrimaryTable(), "parent");
  EXPECT_EQ(row->getFKeyPrimaryColName(), "id");
  const std::string column = row->getFKeyColumnName();
  EXPECT_TRUE(column == "parent_id" || column == "parent_ref") << column;
  if (GetParam() != Engine::SQLite && GetParam() != Engine::SQLiteOdbc) {
    EXPECT_EQ(row->getFKeyName(), column == "parent_id" ? "fk_a" : "fk_b");
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, ForeignKeyDetails, ::testing::ValuesIn(allEngines()), EngineParamName());

TEST(SchemaFieldText, NullOrEmptyTextGivesTheNoForeignKeyTextWhicheverColumn) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  auto cn = vb::Ref<ado::Connection>::make();
  cn->Open(db->connectionString());
  auto keys = vb::Ref<ado::Recordset>::make();
  keys->Open("select NULL as PK_NAME, '' as FK_NAME, 'fk_x' as FK_COLUMN_NAME", cn);
  EXPECT_EQ(ModADO::getSchemaFieldText(keys, "PK_NAME"), "No Foreign(s) key Defined");
  EXPECT_EQ(ModADO::getSchemaFieldText(keys, "FK_NAME"), "No Foreign(s) key Defined");
  EXPECT_EQ(ModADO::getSchemaFieldText(keys, "FK_COLUMN_NAME"), "fk_x");
  EXPECT_EQ(ModADO::getSchemaFieldText(keys, "NO_SUCH_COLUMN"), "");
}

TEST(SchemaFieldText, AFailedReadGivesTheEmptyText) {
  auto closed = vb::Ref<ado::Recordset>::make();
  EXPECT_EQ(ModADO::getSchemaFieldText(closed, "FK_NAME"), "");
  EXPECT_EQ(ModADO::getSchemaFieldText(nullptr, "FK_NAME"), "");
}

// --- The match-query builder ---

namespace {
struct MatchSides {
  std::unique_ptr<TestDatabase> db;
  Side a;
  Side b;
};

// A holds `row` of table T (columns a, b, c of the given types); B's first record set is
// opened on `bColumns` of a table of its own, to decide which columns it offers.
void openSides(TestDatabase& db, Side& a, Side& b, const std::string& bTable = "T") {
  a = makeSide(db.connectionString());
  b = makeSide(db.connectionString());
  a->openDatabaseConnection();
  b->openDatabaseConnection();
  a->setTableName("T");
  a->openDataBaseRecordsFromQuery("select * from [T]");
  b->openDataBaseRecordsFromQuery("select * from [" + bTable + "]");
}
}  // namespace

TEST(MatchQuery, FirstColumnUsesEqualsAndLaterTextColumnsUseLike) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a VARCHAR(10), b VARCHAR(10), c INTEGER)");
  db->exec("INSERT INTO T VALUES ('x', 'O''Brien', 7)");
  Side a, b;
  openSides(*db, a, b);
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getSql(), "Select [a],[b] ,[c]  from [T]");
  EXPECT_EQ(b->getWhereClause(), " Where [a] = 'x' AND [b] like 'O''Brien' AND [c] = 7");
}

TEST(MatchQuery, NullFirstColumnAndNullLaterColumn) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a INTEGER, b VARCHAR(10))");
  db->exec("INSERT INTO T VALUES (NULL, NULL)");
  Side a, b;
  openSides(*db, a, b);
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getWhereClause(), " Where [a] is null AND [b] is null ");
}

TEST(MatchQuery, PercentAndUnderscoreMatchByPattern) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (id INTEGER, label VARCHAR(10))");
  db->exec("INSERT INTO T VALUES (1, 'a%')");
  db->exec("CREATE TABLE other_side (id INTEGER, label VARCHAR(10))");
  db->exec("INSERT INTO other_side VALUES (1, 'abc')");
  Side a, b;
  openSides(*db, a, b);
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getWhereClause(), " Where [id] = 1 AND [label] like 'a%'");
  // Looking in a table holding 'abc' finds it: the pattern matches.
  b->setSQL("Select [id],[label]  from [other_side]");
  EXPECT_TRUE(ModADO::queryReturnsRecords(*b));
}

TEST(MatchQuery, WhenColumnZeroIsExcludedEveryColumnTakesTheLaterForm) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (only_a INTEGER, b INTEGER, c VARCHAR(5))");
  db->exec("INSERT INTO T VALUES (1, 2, 'z')");
  db->exec("CREATE TABLE B_side (b INTEGER, c VARCHAR(5))");
  Side a, b;
  openSides(*db, a, b, "B_side");
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getSql(), "Select ,[b] ,[c]  from [T]");
  EXPECT_EQ(b->getWhereClause(), " Where  AND [b] = 2 AND [c] like 'z'");
}

TEST(MatchQuery, WithEveryColumnExcludedTheStatementIsLeftBare) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a INTEGER)");
  db->exec("INSERT INTO T VALUES (1)");
  db->exec("CREATE TABLE unrelated (z INTEGER)");
  Side a, b;
  openSides(*db, a, b, "unrelated");
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getSql(), "Select  from [T]");
  EXPECT_EQ(b->getWhereClause(), " Where ");
  EXPECT_FALSE(ModADO::queryReturnsRecords(*b));  // sent as it stands, and it fails
}

TEST(MatchQuery, WhenTheOtherSideHasNoOpenRecordSetNoColumnIsExcluded) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (a INTEGER, b VARCHAR(5))");
  db->exec("INSERT INTO T VALUES (1, 'q')");
  Side a, b;
  openSides(*db, a, b);
  b->closeRecordSet();
  EXPECT_FALSE(ModADO::isFieldExcludedFromMatch(*a, *b, 0));
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getWhereClause(), " Where [a] = 1 AND [b] like 'q'");
}

TEST(MatchOperator, ByAdoTypeCode) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE T (i INTEGER, r REAL, t VARCHAR(5), d DATE, blob_col BLOB)");
  db->exec("INSERT INTO T VALUES (1, 2.5, 'x', '2024-01-31', x'00ff')");
  Side a, b;
  openSides(*db, a, b);
  EXPECT_EQ(ModADO::getMatchOperator(*a, 0), "= ");
  EXPECT_EQ(ModADO::getMatchOperator(*a, 1), "= ");
  EXPECT_EQ(ModADO::getMatchOperator(*a, 2), "like ");
  EXPECT_EQ(ModADO::getMatchOperator(*a, 3), "= ");
  EXPECT_EQ(ModADO::getMatchOperator(*a, 4), "= ");
  EXPECT_EQ(ModADO::formatMatchValue(*a, 1), "2.5");
  EXPECT_EQ(ModADO::formatMatchValue(*a, 3), "'2024-01-31'");
  EXPECT_EQ(ModADO::formatMatchValue(*a, 4), "00FF");
  a->setIsAccess(true);
  EXPECT_EQ(ModADO::formatMatchValue(*a, 3), "#2024-01-31#");
}
