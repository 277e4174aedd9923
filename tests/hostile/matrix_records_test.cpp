// The hostile-data matrix, record operations: for every pair of engines in both orders, a record
// one side lacks is copied into it, a differing record is updated and the update rolled back,
// through the control. The audit triggers show that only the target row was written (or, where
// the where clause cannot find the row on that engine, that nothing was), the canary stands,
// and every other record stays as it was.
#include "hostile/HostileMatrix.h"

#include <cstdio>

using namespace varsentix;
using namespace varsentix::testing;
using namespace varsentix::testing::hostile;

namespace {

using HostileRecords = PairTest;

// Every record but key as it was.
void expectOthersAlike(const std::map<std::string, std::vector<std::string>>& before,
                       std::map<std::string, std::vector<std::string>> after, const std::string& key,
                       const std::string& when) {
  auto expected = before;
  expected.erase(key);
  after.erase(key);
  EXPECT_EQ(after, expected) << when;
}

int32_t recordOf(Varsenti& control, bool isMaster, const TableLayout& table, const std::string& key) {
  const auto numbers = recordsWith(control, isMaster, table.key, key);
  return numbers.empty() ? 0 : numbers.front();
}

}  // namespace

TEST_P(HostileRecords, CopyUpdateAndRollBack) {
  const TableLayout& table = master_->table();
  // The side written to: the source unless it is the Access file.
  const bool isMaster = source_->writable();
  HostileSide& target = isMaster ? *source_ : *master_;
  HostileSide& from = isMaster ? *master_ : *source_;
  // Where both sides run the where clauses built from difference rows as written (PostgreSQL
  // refuses LIKE on an integer column, a backslash ends a literal early on MariaDB, and
  // PostgreSQL refuses a LIKE pattern ending in one), every operation must succeed; elsewhere an
  // operation may fail, but then it writes nothing.
  const bool strict = target.kind() == Kind::SQLite && (from.kind() == Kind::SQLite || from.kind() == Kind::Access);
  Varsenti control;
  ui::MessageBoxRecorder boxes;
  auto m = preparedSide(master_->connectionString(), table.name);
  auto s = preparedSide(source_->connectionString(), table.name);
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s)) << control.getErrorLogs(true);

  // Copy the record only the other side has.
  const std::string copyKey = table.name == "Shippers" ? "3" : "4";
  auto& fromManager = isMaster ? m : s;
  fromManager->setCurrentRecordNumber(recordOf(control, isMaster, table, copyKey));
  ASSERT_GT(fromManager->getCurrentRecordNumber(), 0);
  auto before = target.records();
  ASSERT_EQ(target.record(copyKey), std::vector<std::string>{"<none>"});
  boxes.clear();
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, isMaster), "");
  const bool copied = target.record(copyKey) != std::vector<std::string>{"<none>"};
  if (copied || strict) {
    EXPECT_EQ(target.record(copyKey), from.record(copyKey)) << ::testing::PrintToString(boxes.texts());
    EXPECT_EQ(target.audit(), "I" + copyKey);
  } else {
    EXPECT_EQ(target.audit(), "");
  }
  expectOthersAlike(before, target.records(), copyKey, "after the copy");
  const std::string auditAfterCopy = target.audit();

  // Update the differing record of the target from the other side.
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s)) << control.getErrorLogs(true);
  m->setCurrentRecordNumber(recordOf(control, true, table, "2"));
  s->setCurrentRecordNumber(recordOf(control, false, table, "2"));
  ASSERT_GT(m->getCurrentRecordNumber(), 0);
  ASSERT_GT(s->getCurrentRecordNumber(), 0);
  before = target.records();
  const std::vector<std::string> original = target.record("2");
  TempDir dir;
  const std::string file = dir.file(isMaster ? "h-ORIGINAL.xml" : "h-MODIFIED.xml");
  const std::string updated = control.updateRecordFromRecordNumber(m, s, isMaster, file);
  const std::string separator = auditAfterCopy.empty() ? "" : ",";
  if (updated.empty()) {
    EXPECT_EQ(target.record("2"), from.record("2"));
    EXPECT_EQ(target.audit(), auditAfterCopy + separator + "U2");
  } else {
    EXPECT_FALSE(strict) << updated;
    EXPECT_EQ(target.record("2"), original) << updated;
    EXPECT_EQ(target.audit(), auditAfterCopy) << updated;
  }
  expectOthersAlike(before, target.records(), "2", "after the update");
  EXPECT_EQ(from.records().count("2"), 1u);

  // Roll the update back.
  if (!updated.empty()) {
    std::printf("copied %s, update refused: %s\n", copied ? "yes" : "no", updated.c_str());
    return;
  }
  const std::string auditAfterUpdate = target.audit();
  const std::string rolledBack = control.rollBackFromSQL(m, s, isMaster, file, control.getRollBackSQL());
  if (rolledBack.empty()) {
    EXPECT_EQ(target.record("2"), original);
    EXPECT_EQ(target.audit(), auditAfterUpdate + ",U2");
  } else {
    EXPECT_FALSE(strict && isMaster) << rolledBack;
    EXPECT_EQ(target.record("2"), from.record("2")) << rolledBack;
    EXPECT_EQ(target.audit(), auditAfterUpdate) << rolledBack;
  }
  expectOthersAlike(before, target.records(), "2", "after the rollback");
  std::printf("copied %s, updated, rolled back %s\n", copied ? "yes" : "no", rolledBack.empty() ? "yes" : "no");
  EXPECT_EQ(master_->canary(), "42");
  EXPECT_EQ(source_->canary(), "42");
}

INSTANTIATE_TEST_SUITE_P(Pairs, HostileRecords, ::testing::ValuesIn(allPairs()), PairName());
