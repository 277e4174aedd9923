// Tables and columns whose names hold ']' cannot be written as [name]: they are not sent to the
// engine and every pass that leaves them out says so in the side's error log (" #20"), so that a
// host never reads "no differences" for them.
#include "compare/CompareTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

class UnbracketableNames : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    master_ = makeTestDatabase(GetParam());
    source_ = makeTestDatabase(GetParam());
    if (!master_ || !source_) GTEST_SKIP() << "engine not available: " << engineName(GetParam());
  }

  // name in the engine's own identifier quotes.
  std::string quoted(const std::string& name) const {
    if (GetParam() == Engine::MariaDB) return "`" + name + "`";
    std::string q = "\"";
    for (char c : name) q += (c == '"') ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
  }

  // The same table on both sides, with a record each side has and one each side lacks.
  void makeTable(const std::string& table, const std::string& first, const std::string& second) {
    const std::string create = "CREATE TABLE " + quoted(table) + " (" + quoted(first) + " VARCHAR(20), " +
                               quoted(second) + " INTEGER)";
    master_->exec(create);
    source_->exec(create);
    master_->exec("INSERT INTO " + quoted(table) + " VALUES ('same', 1), ('only master', 2)");
    source_->exec("INSERT INTO " + quoted(table) + " VALUES ('same', 1), ('only source', 3)");
  }

  static bool sidesSay(clsDBManager& master, clsDBManager& source, const std::string& text) {
    return master.getReturnSQLMessage().find(text) != std::string::npos &&
           source.getReturnSQLMessage().find(text) != std::string::npos;
  }

  static bool logsSay(Varsenti& control, const std::string& text) {
    return control.getErrorLogs(true).find(text) != std::string::npos &&
           control.getErrorLogs(false).find(text) != std::string::npos;
  }

  std::unique_ptr<TestDatabase> master_, source_;
};

const std::string kTableNotCompared = " #20 Not compared: the table we]ird holds ']' and cannot be written in brackets ||";

TEST_P(UnbracketableNames, FullCompareLogsTheTableItCannotReadFieldsOf) {
  makeTable("we]ird", "name", "n");
  makeTable("plain", "name", "n");
  Varsenti control;
  EXPECT_TRUE(control.beginFullDatabaseCompare(master_->connectionString(), source_->connectionString(), false));
  EXPECT_TRUE(logsSay(control, kTableNotCompared)) << control.getErrorLogs(true) << "\n" << control.getErrorLogs(false);
  // The other table is compared as ever.
  int plainFields = 0;
  for (int32_t i = 1; i <= control.getResultCount(true); ++i)
    plainFields += control.getResultDatabaseObjectName(i, true) == "plain" && !control.getResultFieldName(i, true).empty();
  EXPECT_EQ(plainFields, 2);
}

TEST_P(UnbracketableNames, SingleTableComparesLogTheTable) {
  makeTable("we]ird", "name", "n");
  {
    Varsenti control;
    control.beginTableFullDataCompare(master_->connectionString(), source_->connectionString(), "we]ird", "TABLE");
    EXPECT_TRUE(logsSay(control, kTableNotCompared)) << control.getErrorLogs(true);
  }
  {
    Varsenti control;
    control.beginTablebaseCompare(master_->connectionString(), source_->connectionString(), "we]ird", "TABLE");
    EXPECT_NE(control.getErrorLogs(true).find(kTableNotCompared), std::string::npos) << control.getErrorLogs(true);
  }
  {
    Varsenti control;
    control.beginTableCompareFromFieldList(master_->connectionString(), source_->connectionString(), "we]ird", "TABLE",
                                           vb::Variant(std::string("*")));
    EXPECT_TRUE(logsSay(control, kTableNotCompared)) << control.getErrorLogs(true);
  }
  {
    // The host's own sides hold the messages.
    Varsenti control;
    auto master = preparedSide(master_->connectionString(), "we]ird");
    auto source = preparedSide(source_->connectionString(), "we]ird");
    EXPECT_FALSE(control.beginTableCompareFromDBManagers(master, source));
    EXPECT_TRUE(sidesSay(*master, *source, kTableNotCompared)) << master->getReturnSQLMessage();
  }
  {
    Varsenti control;
    auto master = preparedSide(master_->connectionString(), "we]ird");
    auto source = preparedSide(source_->connectionString(), "we]ird");
    control.beginTableCompareFromFieldListFromDBManager(master, source);
    EXPECT_TRUE(logsSay(control, kTableNotCompared)) << control.getErrorLogs(true);
  }
}

// The record walk orders by the first comparable column: here the one it cannot bracket.
TEST_P(UnbracketableNames, RecordCompareLogsTheColumnItWouldOrderBy) {
  makeTable("t", "na]me", "n");
  Varsenti control;
  auto master = preparedSide(master_->connectionString(), "t");
  auto source = preparedSide(source_->connectionString(), "t");
  control.beginTableCompareFromDBManagers(master, source);
  const std::string text =
      " #20 Not compared: the column na]me of the table t (its records) holds ']' and cannot be written in brackets ||";
  EXPECT_TRUE(sidesSay(*master, *source, text)) << master->getReturnSQLMessage() << "\n" << source->getReturnSQLMessage();
  for (auto* side : {&master, &source})
    for (int32_t i = 1; i <= (*side)->getResults()->Count(); ++i)
      EXPECT_FALSE((*side)->getResults()->Item(i)->getIsDataValue()) << "no record was compared";
}

TEST_P(UnbracketableNames, RecordComparesLogAColumnTheyWouldLookUp) {
  makeTable("t", "name", "n]o");
  const std::string text =
      " #20 Not compared: the column n]o of the table t (its records) holds ']' and cannot be written in brackets ||";
  {
    Varsenti control;
    auto master = preparedSide(master_->connectionString(), "t");
    auto source = preparedSide(source_->connectionString(), "t");
    control.beginTableCompareFromDBManagers(master, source);
    EXPECT_TRUE(sidesSay(*master, *source, text)) << master->getReturnSQLMessage() << "\n" << source->getReturnSQLMessage();
  }
  {
    // The buffered walk.
    Varsenti control;
    auto master = preparedSide(master_->connectionString(), "t");
    auto source = preparedSide(source_->connectionString(), "t");
    control.beginTableCompareFromFieldListFromDBManager(master, source);
    EXPECT_TRUE(logsSay(control, text)) << control.getErrorLogs(true) << "\n" << control.getErrorLogs(false);
    for (bool isMaster : {true, false})
      for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
        EXPECT_FALSE(control.getResultIsDataValue(i, isMaster)) << "no record was compared";
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, UnbracketableNames,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::MariaDB), EngineParamName());

}  // namespace
