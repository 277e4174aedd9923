// Copy, update and roll back one difference through the control, checked with fresh queries.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "records/RecordTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

class RecordOperations : public ::testing::TestWithParam<Engine> {};

std::string rows(TestDatabase& db) {
  std::string out;
  for (const char* id : {"1", "2", "3"}) {
    const std::string v = db.scalar(std::string("SELECT v FROM people WHERE id = ") + id);
    const std::string n = db.scalar(std::string("SELECT COUNT(*) FROM people WHERE id = ") + id);
    out += std::string(id) + ":" + (n == "0" ? "-" : v) + " ";
  }
  return out;
}

}  // namespace

TEST_P(RecordOperations, CompareCopyUpdateAndRollBack) {
  VARSENTIX_TEST_DATABASE(master, GetParam());
  VARSENTIX_TEST_DATABASE(source, GetParam());
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v VARCHAR(30))");
  master->exec("INSERT INTO people VALUES (1, 'same'), (2, 'edited in master'), (3, 'only in master')");
  source->exec("INSERT INTO people VALUES (1, 'same'), (2, 'edited in source')");
  ASSERT_EQ(rows(*source), "1:same 2:edited in source 3:- ");

  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));

  // Copy the master-only record into the source.
  m->setCurrentRecordNumber(recordWith(control, true, "v", "only in master"));
  ui::MessageBoxRecorder boxes;
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, true), "");
  EXPECT_TRUE(boxes.texts().empty()) << ::testing::PrintToString(boxes.texts());
  EXPECT_EQ(rows(*source), "1:same 2:edited in source 3:only in master ");
  EXPECT_EQ(rows(*master), "1:same 2:edited in master 3:only in master ");

  // Update the edited record of the source from the master.
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "edited in master"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "edited in source"));
  TempDir dir;
  const std::string file = dir.file("people-ORIGINAL.xml");
  EXPECT_EQ(control.updateRecordFromRecordNumber(m, s, true, file), "");
  EXPECT_EQ(control.getRollBackSQL(), "Select * from [people] Where id = 2 AND v LIKE 'edited in master'");
  EXPECT_EQ(rows(*source), "1:same 2:edited in master 3:only in master ");
  EXPECT_TRUE(control.getSaveFile().toText() == file);

  // Roll the update back from the rollback file.
  boxes.clear();
  EXPECT_EQ(control.rollBackFromSQL(m, s, true, file, control.getRollBackSQL()), "");
  EXPECT_EQ(rows(*source), "1:same 2:edited in source 3:only in master ");
  // Its own three boxes on success; the side's diagnostic boxes come in between.
  std::vector<std::string> own;
  for (const auto& text : boxes.texts())
    if (text.rfind("test 0.", 0) == 0) own.push_back(text);
  ASSERT_EQ(own.size(), 3u) << ::testing::PrintToString(boxes.texts());
  EXPECT_EQ(own[0].rfind("test 0.7 ", 0), 0u);
  EXPECT_EQ(own[1].rfind("test 0.9 ", 0), 0u);
  EXPECT_EQ(own[2], "test 0.12 True");
  EXPECT_EQ(boxes.texts().size(), 8u) << ::testing::PrintToString(boxes.texts());
}

INSTANTIATE_TEST_SUITE_P(Engines, RecordOperations, ::testing::ValuesIn(allEngines()), EngineParamName());

TEST(RecordOperationsSqlite, UpdateDeletesAnExistingFileFirstAndKeepsTheMastersSelect) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT)");
  master->exec("INSERT INTO people VALUES (1, 'new')");
  source->exec("INSERT INTO people VALUES (1, 'old')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(1);
  s->setCurrentRecordNumber(1);
  TempDir dir;
  const std::string file = dir.file("x-ORIGINAL.xml");
  std::ofstream(file) << "an old rollback file";
  EXPECT_EQ(control.updateRecordFromRecordNumber(m, s, true, file), "");
  EXPECT_NE(fileText(file).find("old"), std::string::npos);
  EXPECT_EQ(fileText(file).find("an old rollback file"), std::string::npos);  // replaced, not kept
  EXPECT_EQ(source->scalar("SELECT v FROM people"), "new");
}

TEST(RecordOperationsSqlite, RollBackFromRecordNumberIgnoresItsFirstArgumentAndShowsItsBoxes) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT)");
  master->exec("INSERT INTO people VALUES (1, 'a')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  control.getMasterDataManager()->setCurrentRecordNumber(1);
  s->setRollbackFileName("no side word.xml");
  ui::MessageBoxRecorder boxes;
  auto unrelated = vb::Ref<clsDBManager>::make();
  const std::string result = control.rollBackFromRecordNumber(unrelated, s, true, "ignored.xml");
  const auto texts = boxes.texts();
  // Its own four boxes on a failed roll-back (the side's own "test 2" and "File Does Not Exist"
  // come in between).
  ASSERT_EQ(texts.size(), 6u) << ::testing::PrintToString(texts);
  EXPECT_EQ(texts[0], "test 0.7  Where id = 1 AND v LIKE 'a'");
  EXPECT_EQ(texts[1], "test 0.9  Where id = 1 AND v LIKE 'a'");
  EXPECT_EQ(texts[2], "test 2");
  EXPECT_EQ(texts[3], "File Does Not Exist");
  EXPECT_EQ(texts[4], "test 0.12 False");
  EXPECT_EQ(texts[5], result);
  EXPECT_FALSE(result.empty());
  EXPECT_EQ(unrelated->getWhereClause(), "");  // the first argument was not used
  EXPECT_EQ(s->getReturnSQLMessage(), "");     // cleared at the end
}

TEST(RecordOperationsSqlite, CopyOfARecordWithoutChangeIsRefusedWithoutTouchingEitherDatabase) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT)");
  master->exec("INSERT INTO people VALUES (1, 'a')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  // The host's rows for record 1 say "no change".
  auto id = row("people", "id", "1", 1, "0");
  id->setDataType("3");
  auto v = row("people", "v", "a", 1, "0");
  v->setDataType("202");
  auto rowsOfM = collection({id, v});
  m->setResults(rowsOfM);
  control.setMasterResultSets(rowsOfM);
  m->setCurrentRecordNumber(1);
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, true), "Cannot copy record.");
  EXPECT_EQ(source->scalar("SELECT COUNT(*) FROM people"), "0");
  EXPECT_EQ(master->scalar("SELECT COUNT(*) FROM people"), "1");
}

TEST(RecordOperationsSqlite, ARefusedCopyShowsTheSqlMessageAndStillReturnsEmpty) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  master->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT)");
  source->exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT CHECK (v <> 'forbidden'))");
  master->exec("INSERT INTO people VALUES (1, 'forbidden')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(1);
  ui::MessageBoxRecorder boxes;
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, true), "");
  ASSERT_EQ(boxes.texts().size(), 1u);
  EXPECT_NE(boxes.texts()[0].find(" #7 Error when attempting to add a new record in table people ||"),
            std::string::npos);
  EXPECT_EQ(source->scalar("SELECT COUNT(*) FROM people"), "0");
  EXPECT_EQ(s->getReturnSQLMessage(), "");
}

TEST(RecordOperationsSqlite, KillingTheProcessDuringAnUpdateLeavesTheOldOrTheNewRow) {
  for (int attempt = 0; attempt < 6; ++attempt) {
    VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
    VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
    for (auto* db : {master.get(), source.get()})
      db->exec("CREATE TABLE big (id INTEGER PRIMARY KEY, a TEXT, b TEXT)");
    // Large values make the write take long enough to be interrupted.
    master->exec("INSERT INTO big VALUES (1, replace(hex(zeroblob(4000000)), '0', 'n'), 'new')");
    source->exec("INSERT INTO big VALUES (1, replace(hex(zeroblob(4000000)), '0', 'o'), 'old')");
    TempDir dir;
    const std::string file = dir.file("big-ORIGINAL.xml");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      auto from = preparedSide(master->connectionString(), "big");
      from->openDataBaseRecordsFromQuery("select * from [big]");
      auto to = preparedSide(source->connectionString(), "big");
      to->setSQL("Select * from [big] Where id = 1");
      to->adoUpdateRecord(*from, true, file);
      _exit(0);
    }
    // Kill the child as soon as the rollback file appears (plus a varying delay).
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(file) && std::chrono::steady_clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    std::this_thread::sleep_for(std::chrono::milliseconds(attempt * 15));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string a = source->scalar("SELECT substr(a, 1, 1) || substr(a, length(a), 1) || length(a) FROM big");
    const std::string b = source->scalar("SELECT b FROM big");
    const bool old = a == "oo8000000" && b == "old";
    const bool fresh = a == "nn8000000" && b == "new";
    EXPECT_TRUE(old || fresh) << "attempt " << attempt << ": a=" << a << " b=" << b;
    EXPECT_EQ(source->scalar("SELECT COUNT(*) FROM big"), "1");
    EXPECT_EQ(source->scalar("PRAGMA integrity_check"), "ok");
  }
}
