#include <gtest/gtest.h>

#include "engine/Engine.h"
#include "engine/EngineTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

class TableStructure : public ::testing::TestWithParam<Engine> {};

std::vector<std::string> tableRowNames(clsDBManager& side) {
  std::vector<std::string> out;
  for (const auto& row : *side.getResults())
    if (row->getFieldName().empty() && !row->getIsFieldDesc()) out.push_back(row->getDatabaseObjName());
  return out;
}

}  // namespace

TEST_P(TableStructure, TableOnBothSidesIsNoChangeAndMasterOnlyTableIsNewOnlyThere) {
  VARSENTIX_TEST_DATABASE(master, GetParam());
  VARSENTIX_TEST_DATABASE(source, GetParam());
  master->exec("CREATE TABLE shared_t (id INTEGER PRIMARY KEY, name VARCHAR(20))");
  master->exec("CREATE TABLE master_only (id INTEGER PRIMARY KEY)");
  source->exec("CREATE TABLE shared_t (id INTEGER PRIMARY KEY, name VARCHAR(20))");
  auto m = makeSide(master->connectionString());
  auto s = makeSide(source->connectionString());
  Varsenti control;
  engine::openAllTableStructures(*m);
  engine::openAllTableStructures(*s);
  engine::compareResultStructure(*m, *s, control, "Reading Original");
  engine::compareResultStructure(*s, *m, control, "Reading Modified");

  for (const auto& row : *m->getResults()) {
    if (row->getDatabaseObjName() == "master_only")
      EXPECT_EQ(row->getChangeType(), "1") << row->toString();
    else
      EXPECT_EQ(row->getChangeType(), "0") << row->toString();
  }
  for (const auto& row : *s->getResults()) {
    EXPECT_NE(row->getDatabaseObjName(), "master_only");
    EXPECT_EQ(row->getChangeType(), "0") << row->toString();
  }
  EXPECT_EQ(m->getReturnMessage(), "Successfully Completed");
}

TEST_P(TableStructure, ViewYieldsRowsOnlyWhenViewsAreShown) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  db->exec("CREATE TABLE base_t (id INTEGER PRIMARY KEY)");
  db->exec("CREATE VIEW view_v AS SELECT id FROM base_t");
  auto hidden = makeSide(db->connectionString());
  engine::openAllTableStructures(*hidden);
  EXPECT_EQ(tableRowNames(*hidden), std::vector<std::string>{"base_t"});

  auto shown = makeSide(db->connectionString());
  shown->setShowViews(true);
  engine::openAllTableStructures(*shown);
  auto names = tableRowNames(*shown);
  EXPECT_NE(std::find(names.begin(), names.end(), "view_v"), names.end());
}

INSTANTIATE_TEST_SUITE_P(Engines, TableStructure, ::testing::ValuesIn(allEngines()), EngineParamName());

TEST(TableStructureRows, SystemAndAccessTablesNeverYieldRowsWhateverShowViewsSays) {
  for (bool showViews : {false, true}) {
    for (const char* type : {"SYSTEM TABLE", "ACCESS TABLE"}) {
      clsDBManager side;
      side.initializeValues();
      side.setShowViews(showViews);
      side.setTableName("MSysObjects");
      side.setTableDataType(type);
      engine::addTableToResults(side);
      EXPECT_EQ(side.getResults()->Count(), 0) << type;
    }
  }
}

TEST(TableStructureRows, SqliteInternalTablesAreNotListed) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE counter_t (id INTEGER PRIMARY KEY AUTOINCREMENT, v TEXT)");
  db->exec("INSERT INTO counter_t (v) VALUES ('x')");  // creates sqlite_sequence
  auto side = makeSide(db->connectionString());
  side->setShowViews(true);
  engine::openAllTableStructures(*side);
  EXPECT_EQ(tableRowNames(*side), std::vector<std::string>{"counter_t"});
}

TEST(TableStructureRows, OtherTypesNeedShowViewsAndTypeComparisonIsCaseSensitive) {
  clsDBManager side;
  side.initializeValues();
  side.setTableName("T");
  side.setTableDataType("Table");  // not "TABLE"
  side.setListDBObjectsOnly(true);
  engine::addTableToResults(side);
  EXPECT_EQ(side.getResults()->Count(), 0);
}

TEST(TableStructureRows, WhenTheOtherSideHasNoRowsNothingIsWritten) {
  clsDBManager a, b;
  a.initializeValues();
  b.initializeValues();
  a.getResults()->Add(makeRow("T", "", "", "4"));
  a.getResults()->Add(makeRow("T", "f", "", "6"));
  Varsenti control;
  engine::compareResultStructure(a, b, control, "Reading Original");
  EXPECT_EQ(changeTypes(a), (std::vector<std::string>{"4", "6"}));
}

TEST(TableStructureRows, ObjectNamesDifferingOnlyInLetterCaseAreDifferentTables) {
  clsDBManager a, b;
  a.initializeValues();
  b.initializeValues();
  a.getResults()->Add(makeRow("Orders"));
  b.getResults()->Add(makeRow("orders"));
  Varsenti control;
  engine::compareResultStructure(a, b, control, "Reading Original");
  engine::compareResultStructure(b, a, control, "Reading Modified");
  EXPECT_EQ(changeTypes(a), std::vector<std::string>{"1"});
  EXPECT_EQ(changeTypes(b), std::vector<std::string>{"1"});
}

namespace {
std::vector<ProgressEvent> progressFor(int rows) {
  clsDBManager a, b;
  a.initializeValues();
  b.initializeValues();
  for (int i = 1; i <= rows; ++i) a.getResults()->Add(makeRow("T" + std::to_string(i)));
  b.getResults()->Add(makeRow("elsewhere"));
  Varsenti control;
  ProgressRecorder recorder(control);
  engine::compareResultStructure(a, b, control, "Reading Original");
  return recorder.events;
}
}  // namespace

TEST(TableStructureProgress, FiftyRowsReportNothing) { EXPECT_TRUE(progressFor(50).empty()); }

TEST(TableStructureProgress, FirstReportComesAtRow51) {
  EXPECT_EQ(progressFor(51), (std::vector<ProgressEvent>{{51, 51, "Reading Original"}}));
}

TEST(TableStructureProgress, ThenEveryFiftyRows) {
  EXPECT_EQ(progressFor(101),
            (std::vector<ProgressEvent>{{51, 101, "Reading Original"}, {101, 101, "Reading Original"}}));
  EXPECT_EQ(progressFor(150),
            (std::vector<ProgressEvent>{{51, 150, "Reading Original"}, {101, 150, "Reading Original"}}));
}

TEST(TableStructureProgress, HandlerThatThrowsFailsTheComparisonWithMessage10) {
  clsDBManager a, b;
  a.initializeValues();
  b.initializeValues();
  for (int i = 1; i <= 60; ++i) a.getResults()->Add(makeRow("T" + std::to_string(i)));
  b.getResults()->Add(makeRow("T1"));
  Varsenti control;
  control.UpdateCount.connect([](int32_t&, int32_t&, std::string&) { throw vb::VBError(5); });
  engine::compareResultStructure(a, b, control, "Reading Original");
  EXPECT_EQ(a.getReturnMessage(),
            "Successfully Completed #10 Error occured while comparing result structure. Main index = 51 "
            "Secondary index = 2 ||");
}

TEST(TableStructureProgress, HandlerChangingTheCountMovesTheControlsPosition) {
  clsDBManager a, b;
  a.initializeValues();
  b.initializeValues();
  for (int i = 1; i <= 51; ++i) a.getResults()->Add(makeRow("T" + std::to_string(i)));
  Varsenti control;
  control.UpdateCount.connect([](int32_t& count, int32_t&, std::string&) { count = 7; });
  b.getResults()->Add(makeRow("x"));
  engine::compareResultStructure(a, b, control, "Reading Original");
  EXPECT_EQ(control.getCurrentProgressCount(), 7);
}

TEST(RemoveUnchangedResults, NoUnchangedRowRemainsIncludingTableRows) {
  clsDBManager side;
  side.initializeValues();
  for (const char* ct : {"0", "0", "1", "0", "2", "0", "0", "3", "0"})
    side.getResults()->Add(makeRow("T", "f", "", ct));
  engine::removeUnchangedResults(side);
  EXPECT_EQ(changeTypes(side), (std::vector<std::string>{"1", "2", "3"}));
}

TEST(RemoveUnchangedResults, AllUnchangedLeavesNothing) {
  clsDBManager side;
  side.initializeValues();
  for (int i = 0; i < 5; ++i) side.getResults()->Add(makeRow("T"));
  engine::removeUnchangedResults(side);
  EXPECT_EQ(side.getResults()->Count(), 0);
}

TEST(OpenAllTableStructures, FailureRecordsMessage19WithTheTableName) {
  clsDBManager side;
  side.initializeValues();
  side.setConnectionString("Provider=SQLite;Data Source=/nonexistent/folder/missing.db");
  engine::openAllTableStructures(side);
  // The connection fails, so the schema rowset never opens and reading it fails.
  EXPECT_EQ(side.getReturnMessage(),
            "Successfully Completed #19 Error occurred while opeing the structure for all of the tables"
            " Error occurred while attempting to open  ||");
  EXPECT_EQ(side.getResults()->Count(), 0);
}
