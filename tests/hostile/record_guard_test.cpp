// A record operation changes exactly the compared row or nothing: its where clause, built from
// the difference rows, must select that row alone, or nothing is written.
#include "compare/CompareTestSupport.h"
#include "records/RecordTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

const std::string kSeven = " #7 Error when attempting to add a new record in table t ||";

}  // namespace

// The where clause of the source's record carried the text of its INTEGER column bare: it
// selected every row, and the update overwrote the first of them, another record, reporting
// success.
TEST(RecordGuard, AnUpdateFromARowWithSqlInANumericColumnOverwritesNoOtherRow) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, n INTEGER, v TEXT)");
  master->exec("INSERT INTO t VALUES (1, 10, 'keep'), (2, 5, 'new')");
  source->exec("INSERT INTO t VALUES (1, 10, 'keep'), (2, '2 OR 1=1', 'old')");
  ASSERT_EQ(source->scalar("SELECT typeof(n) FROM t WHERE id = 2"), "text");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "new"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "old"));
  ASSERT_GT(m->getCurrentRecordNumber(), 0);
  ASSERT_GT(s->getCurrentRecordNumber(), 0);
  TempDir dir;
  ui::MessageBoxRecorder boxes;
  const std::string result = control.updateRecordFromRecordNumber(m, s, true, dir.file("t-ORIGINAL.xml"));
  EXPECT_NE(result.find(kSeven), std::string::npos) << result;
  EXPECT_NE(result.find("not well-formed"), std::string::npos) << result;
  EXPECT_EQ(source->scalar("SELECT n || '|' || v FROM t WHERE id = 1"), "10|keep");
  EXPECT_EQ(source->scalar("SELECT n || '|' || v FROM t WHERE id = 2"), "2 OR 1=1|old");
}

// Rows alike but for a text that a LIKE pattern of the compared record also matches: the
// where clause selects two rows, so the update writes nothing.
TEST(RecordGuard, AnUpdateWhoseWhereClauseSelectsTwoRowsWritesNothing) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (w TEXT, v TEXT)");
  master->exec("INSERT INTO t VALUES ('x', 'new')");
  source->exec("INSERT INTO t VALUES ('x', 'abc'), ('x', 'a%')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "new"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "a%"));
  ASSERT_GT(s->getCurrentRecordNumber(), 0);
  TempDir dir;
  const std::string file = dir.file("t-ORIGINAL.xml");
  ui::MessageBoxRecorder boxes;
  const std::string result = control.updateRecordFromRecordNumber(m, s, true, file);
  EXPECT_NE(result.find(kSeven + " The statement selects more than one row"), std::string::npos) << result;
  EXPECT_EQ(source->scalar("SELECT group_concat(w || v, ',') FROM (SELECT * FROM t ORDER BY rowid)"), "xabc,xa%");
  EXPECT_FALSE(std::filesystem::exists(file));  // nothing saved either
}

// The where clause selects one row, but not the compared one (SQLite's LIKE ignores the case of
// ASCII letters, and the compared row itself is gone): nothing is written.
TEST(RecordGuard, AnUpdateWhoseWhereClauseSelectsAnotherRowWritesNothing) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (w TEXT, v TEXT)");
  master->exec("INSERT INTO t VALUES ('x', 'new')");
  source->exec("INSERT INTO t VALUES ('x', 'abc')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "new"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "abc"));
  source->exec("UPDATE t SET v = 'ABC'");
  TempDir dir;
  ui::MessageBoxRecorder boxes;
  const std::string result = control.updateRecordFromRecordNumber(m, s, true, dir.file("t-ORIGINAL.xml"));
  EXPECT_NE(result.find(kSeven + " The row selected is not the compared record"), std::string::npos) << result;
  EXPECT_EQ(source->scalar("SELECT w || v FROM t"), "xABC");
}

// A copy takes its values from the record its where clause selects on the side it copies from:
// when that selects two records, nothing is copied.
TEST(RecordGuard, ACopyWhoseWhereClauseSelectsTwoRecordsCopiesNothing) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (w TEXT, v TEXT)");
  master->exec("INSERT INTO t VALUES ('x', 'abc'), ('x', 'a_c')");
  source->exec("INSERT INTO t VALUES ('x', 'zzz')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "a_c"));
  ASSERT_GT(m->getCurrentRecordNumber(), 0);
  ui::MessageBoxRecorder boxes;
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, true), "");
  ASSERT_EQ(boxes.texts().size(), 1u);
  EXPECT_NE(boxes.texts()[0].find(kSeven + " The statement selects more than one row"), std::string::npos)
      << boxes.texts()[0];
  EXPECT_EQ(source->scalar("SELECT group_concat(w || v, ',') FROM t"), "xzzz");
}

// Row 1 of t updated from another database through a manager, its old values saved to the
// rollback file; row 2 another row the rollbacks below must leave alone.
class RollbackGuard : public ::testing::Test {
 protected:
  void SetUp() override {
    from_ = makeTestDatabase(Engine::SQLite);
    to_ = makeTestDatabase(Engine::SQLite);
    if (!from_ || !to_) GTEST_SKIP() << "engine not available: SQLite";
    for (auto* db : {from_.get(), to_.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
    from_->exec("INSERT INTO t VALUES (1, 'after')");
    to_->exec("INSERT INTO t VALUES (1, 'before'), (2, 'other')");
    auto source = preparedSide(from_->connectionString(), "t");
    source->openDataBaseRecordsFromQuery("select * from [t]");
    target_ = preparedSide(to_->connectionString(), "t");
    target_->setSQL("Select * from [t] Where id = 1");
    ASSERT_TRUE(target_->adoUpdateRecord(*source, true, dir_.file("t-ORIGINAL.xml"))) << target_->getReturnSQLMessage();
  }

  // A rollback through statement is refused with reason, and nothing is written back.
  void expectRefused(const std::string& statement, const std::string& reason) {
    ui::MessageBoxRecorder boxes;
    EXPECT_FALSE(target_->rollback(true, statement));
    EXPECT_NE(target_->getReturnSQLMessage().find(kSeven + reason), std::string::npos)
        << target_->getReturnSQLMessage();
    EXPECT_EQ(to_->scalar("SELECT group_concat(id || v, ',') FROM t"), "1after,2other");
  }

  TempDir dir_;
  std::unique_ptr<TestDatabase> from_, to_;
  vb::Ref<clsDBManager> target_;
};

// A rollback whose statement selects more than the saved row writes nothing back.
TEST_F(RollbackGuard, ARollbackWhoseStatementSelectsTwoRowsWritesNothing) {
  expectRefused("Select * from [t] Where id = 1 OR v LIKE 'o%'", " The statement selects more than one row");
}

// ... and one whose statement selects a row other than the saved one, too.
TEST_F(RollbackGuard, ARollbackOfAnotherRowWritesNothing) {
  expectRefused("Select * from [t] Where id = 2", " The row selected is not the row saved");
}

// The where clause rebuilt from difference rows wrote field names bare: a column whose name
// reads as a condition selected every row. Names that are not plain are bracketed now.
TEST(RecordGuard, AColumnNameCannotChangeTheWhereClause) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()})
    db->exec("CREATE TABLE t (\"1=1 OR id\" INTEGER PRIMARY KEY, \"v'--\" TEXT)");
  master->exec("INSERT INTO t VALUES (1, 'keep'), (2, 'new')");
  source->exec("INSERT INTO t VALUES (1, 'keep'), (2, 'old')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v'--", "new"));
  s->setCurrentRecordNumber(recordWith(control, false, "v'--", "old"));
  TempDir dir;
  ui::MessageBoxRecorder boxes;
  EXPECT_EQ(control.updateRecordFromRecordNumber(m, s, true, dir.file("t-ORIGINAL.xml")), "");
  EXPECT_EQ(control.getRollBackSQL(), "Select * from [t] Where [1=1 OR id] = 2 AND [v'--] LIKE 'new'");
  EXPECT_EQ(source->scalar("SELECT group_concat(\"v'--\", ',') FROM (SELECT * FROM t ORDER BY 1)"), "keep,new");
}

// Without a key, the row a rollback selects must hold every value of the record its where clause
// was built from: a LIKE pattern that finds another row alone does not make it the row to write.
TEST(RecordGuard, ARollbackWithoutAKeyWritesOnlyIntoTheComparedRecord) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (w TEXT, v TEXT)");
  master->exec("INSERT INTO t VALUES ('x', 'a_c')");
  source->exec("INSERT INTO t VALUES ('x', 'old'), ('y', 'abc')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "a_c"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "old"));
  TempDir dir;
  const std::string file = dir.file("t-ORIGINAL.xml");
  ui::MessageBoxRecorder boxes;
  ASSERT_EQ(control.updateRecordFromRecordNumber(m, s, true, file), "");
  ASSERT_EQ(source->scalar("SELECT group_concat(w || v, ',') FROM (SELECT * FROM t ORDER BY rowid)"), "xa_c,yabc");
  // The updated row is gone; the master's where clause now finds the other row alone.
  source->exec("DELETE FROM t WHERE v = 'a_c'");
  source->exec("UPDATE t SET w = 'x'");
  const std::string result = control.rollBackFromSQL(m, s, true, file, control.getRollBackSQL());
  EXPECT_NE(result.find(kSeven + " The row selected is not the compared record"), std::string::npos) << result;
  EXPECT_EQ(source->scalar("SELECT group_concat(w || v, ',') FROM t"), "xabc");
}
