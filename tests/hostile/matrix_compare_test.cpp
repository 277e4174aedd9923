// The hostile-data matrix, compares: every pair of engines in both orders, the full compare and
// the single-table (buffered field-list) compare. Nothing but the system's own reads may run:
// the canary stands, the audit triggers log nothing, every record stays as it was; records that
// differ are reported and records alike are not; a table whose name the statements cannot
// carry is reported as an error, never passed over as having no differences.
#include "hostile/HostileMatrix.h"

using namespace varsentix;
using namespace varsentix::testing;
using namespace varsentix::testing::hostile;

namespace {

class HostileCompare : public PairTest {
 protected:
  void SetUp() override {
    PairTest::SetUp();
    if (IsSkipped()) return;
    before_ = {master_->records(), source_->records()};
  }

  // Nothing written, nothing dropped, on either side.
  void expectUntouched(const std::string& after) {
    for (auto* side : {master_.get(), source_.get()}) {
      const std::string which = kindName(side->kind()) + (side == master_.get() ? " master" : " source");
      EXPECT_EQ(side->canary(), "42") << which << " after " << after;
      EXPECT_EQ(side->audit(), "") << which << " after " << after;
    }
    EXPECT_EQ(master_->records(), before_.first) << "after " << after;
    EXPECT_EQ(source_->records(), before_.second) << "after " << after;
  }

  bool contains(const std::vector<std::string>& keys, const std::string& key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
  }

  std::pair<std::map<std::string, std::vector<std::string>>, std::map<std::string, std::vector<std::string>>> before_;
};

}  // namespace

TEST_P(HostileCompare, SingleTable) {
  const TableLayout& table = master_->table();
  Varsenti control;
  ui::MessageBoxRecorder boxes;
  auto m = preparedSide(master_->connectionString(), table.name);
  auto s = preparedSide(source_->connectionString(), table.name);
  EXPECT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  const auto masterKeys = differingKeys(control, true, table.name, table.key);
  const auto sourceKeys = differingKeys(control, false, table.name, table.key);
  const std::string logs = control.getErrorLogs(true) + " / " + control.getErrorLogs(false);
  const std::string what = ::testing::PrintToString(masterKeys) + " " + ::testing::PrintToString(sourceKeys) + " " + logs;
  if (table.name == "Shippers") {
    // Only-in-the-file "3", different "2", alike "1"; only-on-the-engine "4".
    const bool accessIsMaster = master_->kind() == Kind::Access;
    const auto& accessKeys = accessIsMaster ? masterKeys : sourceKeys;
    const auto& engineKeys = accessIsMaster ? sourceKeys : masterKeys;
    EXPECT_TRUE(contains(accessKeys, "2") && contains(accessKeys, "3") && !contains(accessKeys, "1")) << what;
    EXPECT_TRUE(contains(engineKeys, "2") && contains(engineKeys, "4") && !contains(engineKeys, "1")) << what;
  } else {
    EXPECT_TRUE(contains(masterKeys, "2") && contains(masterKeys, "4") && contains(masterKeys, "7")) << what;
    EXPECT_TRUE(contains(sourceKeys, "2")) << what;
    for (const char* alike : {"1", "5"}) {
      EXPECT_FALSE(contains(masterKeys, alike)) << alike << " " << what;
      EXPECT_FALSE(contains(sourceKeys, alike)) << alike << " " << what;
    }
    // A text in a numeric SQLite column is never matched through a bare literal.
    const bool sqlite = master_->kind() == Kind::SQLite || source_->kind() == Kind::SQLite;
    EXPECT_EQ(contains(masterKeys, "6"), sqlite) << what;
    EXPECT_EQ(contains(sourceKeys, "6"), sqlite) << what;
  }
  expectUntouched("the single-table compare");
}

TEST_P(HostileCompare, TableWithABracketInItsName) {
  const std::string name = master_->bracketTable();
  if (name.empty()) GTEST_SKIP() << "no such table beside an Access file";
  Varsenti control;
  ui::MessageBoxRecorder boxes;
  auto m = preparedSide(master_->connectionString(), name);
  auto s = preparedSide(source_->connectionString(), name);
  const bool compared = control.beginTableCompareFromFieldListFromDBManager(m, s);
  const auto masterValues = differingKeys(control, true, name, "v");
  const auto sourceValues = differingKeys(control, false, name, "v");
  const bool correct = compared && masterValues == std::vector<std::string>{"a"} &&
                       sourceValues == std::vector<std::string>{"b"};
  const std::string logs = control.getErrorLogs(true) + control.getErrorLogs(false);
  const bool reported = logs.find('#') != std::string::npos;
  EXPECT_TRUE(correct || reported) << "compared " << compared << ", values " << ::testing::PrintToString(masterValues)
                                   << " " << ::testing::PrintToString(sourceValues) << ", logs: " << logs;
  expectUntouched("the compare of " + name);
}

TEST_P(HostileCompare, FullDatabase) {
  Varsenti control;
  ui::MessageBoxRecorder boxes;
  control.beginFullDatabaseCompare(master_->connectionString(), source_->connectionString(), false);
  // The compared table is listed by its very name on both sides.
  for (bool isMaster : {true, false}) {
    bool listed = false;
    for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
      listed = listed || control.getResultDatabaseObjectName(i, isMaster) == master_->table().name;
    EXPECT_TRUE(listed) << (isMaster ? "master: " : "source: ") << control.getErrorLogs(isMaster);
  }
  expectUntouched("the full compare");
}

INSTANTIATE_TEST_SUITE_P(Pairs, HostileCompare, ::testing::ValuesIn(allPairs()), PairName());
