#include <thread>

#include "compare/CompareTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

// Both sides prepared for the buffered compare, as beginTableCompareFromFieldList leaves them
// but connected.
void prepareControl(Varsenti& control, TestDatabase& master, TestDatabase& source, const std::string& table) {
  control.setMasterDataManager(preparedSide(master.connectionString(), table));
  control.setSourceDataManager(preparedSide(source.connectionString(), table));
}

std::vector<std::string> valuesOf(Varsenti& control, bool isMaster) {
  std::vector<std::string> values;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster)) values.push_back(control.getResultFieldValue(i, isMaster));
  return values;
}

}  // namespace

TEST(BufferedResults, DataProgressOfAFreshControlIsOneAndOneHundred) {
  std::thread([] {
    Varsenti control;
    EXPECT_EQ(control.getDataProgressStatus(), 1);
    EXPECT_EQ(control.getDataProgressStatusMax(), 100);
  }).join();
}

TEST(BufferedResults, RowsOnlyOnTheSourceSideSetTheSourceOnlyFlag) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
  source->exec("INSERT INTO t VALUES (1, 'only here')");
  Varsenti control;
  prepareControl(control, *master, *source, "t");
  control.setBufferedAmount(10);
  EXPECT_TRUE(control.getBufferedResults());
  EXPECT_TRUE(control.getRecordsExistInSourceOnly());
  EXPECT_FALSE(control.getRecordsExistInMasterOnly());
  EXPECT_EQ(valuesOf(control, false), (std::vector<std::string>{"1", "only here"}));
  // The master side lists its fields again so that the host can show the empty side.
  EXPECT_GT(control.getResultCount(true), 0);
}

TEST(BufferedResults, NoRowsOnEitherSideReturnsFalseAndKeepsThePublishedResults) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  Varsenti control;
  prepareControl(control, *master, *source, "t");
  auto published = collection({row("x", "f", "v", 1)});
  control.setMasterResultSets(published);
  EXPECT_FALSE(control.getBufferedResults());
  EXPECT_TRUE(control.getMasterDatabaseResults() == published);
  EXPECT_FALSE(control.getRecordsExistInSourceOnly());
  EXPECT_FALSE(control.getRecordsExistInMasterOnly());
}

TEST(BufferedResults, EveryWindowStartsAtTheFirstRecordWhateverTheStartPoint) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  master->exec("INSERT INTO t VALUES (1), (2), (3), (4), (5), (6)");
  source->exec("INSERT INTO t VALUES (100)");
  Varsenti control;
  prepareControl(control, *master, *source, "t");
  struct Window {
    int32_t start, amount;
    std::vector<std::string> expected;
  };
  for (const Window& w : {Window{1, 2, {"1", "2", "3"}}, Window{4, 2, {"1", "2", "3"}}, Window{10, 0, {"1"}},
                          Window{1, 100, {"1", "2", "3", "4", "5", "6"}}}) {
    control.setStartPoint(w.start);
    control.setBufferedAmount(w.amount);
    EXPECT_TRUE(control.getBufferedResults());
    EXPECT_EQ(valuesOf(control, true), w.expected) << w.start << "+" << w.amount;
    EXPECT_EQ(valuesOf(control, false), std::vector<std::string>{"100"});
    EXPECT_EQ(control.getStartPoint(), w.start);  // the control never moves it
  }
}

TEST(BufferedResults, ProgressGoesToTheHostEveryFiftyRecords) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
  std::string values;
  for (int i = 1; i <= 120; ++i) values += (i > 1 ? "," : "") + ("(" + std::to_string(i) + ")");
  master->exec("INSERT INTO t VALUES " + values);
  Varsenti control;
  prepareControl(control, *master, *source, "t");
  control.setBufferedAmount(200);
  std::vector<std::string> events;
  control.UpdateCount.connect([&](int32_t& count, int32_t& maxCount, std::string& readFrom) {
    events.push_back(std::to_string(count) + "/" + std::to_string(maxCount) + " " + readFrom);
  });
  control.getBufferedResults();
  // The window counts its steps, not records: the source side has no record, yet its 201 steps
  // report against the maximum the master's pass left on this thread.
  EXPECT_EQ(events, (std::vector<std::string>{"51/120 Reading Original", "101/120 Reading Original",
                                              "51/120 Reading Modified", "101/120 Reading Modified"}));
}

TEST(RecordMatching, RelatedRecordOfATableWithoutPrimaryKeyIsZero) {
  Varsenti control;
  control.setMasterResultSets(collection({row("t", "a", "1", 1)}));
  control.setSourceResults(collection({row("t", "a", "1", 1)}));
  EXPECT_EQ(control.lookupRelatedRecordFromRecordNumber("t", true, 1), 0);
}

TEST(RecordMatching, RelatedRecordIsFoundByPrimaryKeyValue) {
  Varsenti control;
  control.setMasterResultSets(collection({row("t", "id", "7", 1, "5", "id"), row("t", "v", "x", 1, "5", "id")}));
  control.setSourceResults(collection({row("t", "id", "3", 1, "5", "id"), row("t", "v", "y", 1, "5", "id"),
                                       row("t", "id", "7", 2, "5", "id"), row("t", "v", "z", 2, "5", "id")}));
  control.setTotalRecordsForTable(5);
  EXPECT_EQ(control.lookupRelatedRecordFromRecordNumber("t", true, 1), 2);
}

TEST(RecordMatching, SearchingTheSourceStopsAtTheMastersTotal) {
  Varsenti control;
  control.setSourceResults(collection({row("t", "id", "1", 1), row("t", "id", "2", 2), row("t", "id", "3", 3)}));
  control.setTotalRecordsForTable(2);
  control.setTotalRecordsForSourceTable(3);
  EXPECT_EQ(control.getMatchingRecordNumber(false, "t", "id", "2"), 2);
  EXPECT_EQ(control.getMatchingRecordNumber(false, "t", "id", "3"), 0);
}

TEST(BufferedAccessors, PlainFetchAndStore) {
  Varsenti control;
  EXPECT_EQ(control.getBufferedAmount(), 0);
  EXPECT_EQ(control.getStartPoint(), 0);
  control.setBufferedAmount(25);
  control.setStartPoint(3);
  control.setRecordsExistInMasterOnly(true);
  control.setRecordsExistInSourceOnly(true);
  auto r = vb::Ref<clsResultSet>::make();
  EXPECT_TRUE(control.getMatchingResultSet().isNothing());
  control.setMatchingResultSet(r);
  EXPECT_EQ(control.getBufferedAmount(), 25);
  EXPECT_EQ(control.getStartPoint(), 3);
  EXPECT_TRUE(control.getRecordsExistInMasterOnly());
  EXPECT_TRUE(control.getRecordsExistInSourceOnly());
  EXPECT_TRUE(control.getMatchingResultSet() == r);
}
