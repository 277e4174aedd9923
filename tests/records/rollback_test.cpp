#include "records/RecordTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

struct UpdatedPair {
  std::unique_ptr<TestDatabase> from;
  std::unique_ptr<TestDatabase> to;
  vb::Ref<clsDBManager> source;
  vb::Ref<clsDBManager> target;
};

// to holds (1, 'before'); the update writes 'after' into it, saving the row to file first.
bool updateOnce(TestDatabase& from, TestDatabase& to, const std::string& file, const std::string& newValue,
                vb::Ref<clsDBManager>& target) {
  from.exec("DELETE FROM t");
  from.exec("INSERT INTO t VALUES (7, '" + newValue + "')");
  auto source = preparedSide(from.connectionString(), "t");
  source->openDataBaseRecordsFromQuery("select * from [t]");
  target = preparedSide(to.connectionString(), "t");
  target->setSQL("Select * from [t] Where id = 1");
  return target->adoUpdateRecord(*source, true, file);
}

void createTables(TestDatabase& from, TestDatabase& to) {
  for (auto* db : {&from, &to}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  to.exec("INSERT INTO t VALUES (1, 'before')");
}

class Rollback : public ::testing::TestWithParam<Engine> {};

}  // namespace

TEST_P(Rollback, WritesTheSavedValuesBackButNeverTheKey) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  createTables(*from, *to);
  TempDir dir;
  const std::string file = dir.file("t-ORIGINAL.xml");
  vb::Ref<clsDBManager> target;
  ASSERT_TRUE(updateOnce(*from, *to, file, "after", target)) << target->getReturnSQLMessage();
  EXPECT_EQ(to->scalar("SELECT v FROM t WHERE id = 1"), "after");
  ui::MessageBoxRecorder boxes;
  EXPECT_TRUE(target->rollback(true, "Select * from [t] Where id = 1")) << target->getReturnSQLMessage();
  EXPECT_EQ(to->scalar("SELECT v FROM t WHERE id = 1"), "before");
  EXPECT_EQ(to->scalar("SELECT COUNT(*) FROM t"), "1");
  EXPECT_EQ(boxes.texts(), (std::vector<std::string>{"test 2", "File Exists", "Select * from [t] Where id = 1test 3",
                                                     "test 4", "opening File"}));
  EXPECT_EQ(target->getReturnSQLMessage(), "Successfully Completed");
}

INSTANTIATE_TEST_SUITE_P(Engines, Rollback, ::testing::ValuesIn(allEngines()), EngineParamName());

TEST(RollbackSqlite, AFileNameWithoutTheSideWordStopsAfterFileDoesNotExist) {
  VARSENTIX_TEST_DATABASE(from, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(to, Engine::SQLite);
  createTables(*from, *to);
  TempDir dir;
  vb::Ref<clsDBManager> target;
  ASSERT_TRUE(updateOnce(*from, *to, dir.file("plain.xml"), "after", target));
  for (bool isMaster : {true, false}) {
    ui::MessageBoxRecorder boxes;
    EXPECT_FALSE(target->rollback(isMaster, "Select * from [t] Where id = 1"));
    EXPECT_EQ(boxes.texts(), (std::vector<std::string>{"test 2", "File Does Not Exist"}));
  }
  EXPECT_EQ(to->scalar("SELECT v FROM t"), "after");
}

TEST(RollbackSqlite, AMasterRollbackWithASourceSideFileNameStopsTheSameWay) {
  VARSENTIX_TEST_DATABASE(from, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(to, Engine::SQLite);
  createTables(*from, *to);
  TempDir dir;
  vb::Ref<clsDBManager> target;
  ASSERT_TRUE(updateOnce(*from, *to, dir.file("t-MODIFIED.xml"), "after", target));
  ui::MessageBoxRecorder boxes;
  EXPECT_FALSE(target->rollback(true, "Select * from [t] Where id = 1"));
  EXPECT_EQ(boxes.texts(), (std::vector<std::string>{"test 2", "File Does Not Exist"}));
  EXPECT_TRUE(target->checkFileExist(false));
}

TEST(RollbackSqlite, CheckFileExistLooksAtTheNameOnly) {
  clsDBManager side;
  ui::MessageBoxRecorder boxes;
  side.setRollbackFileName("/nowhere/at/all-ORIGINAL.xml");
  EXPECT_TRUE(side.checkFileExist(true));
  EXPECT_FALSE(side.checkFileExist(false));
  side.setRollbackFileName("x-original.xml");  // the search is case-sensitive
  EXPECT_FALSE(side.checkFileExist(true));
  EXPECT_EQ(boxes.texts(), (std::vector<std::string>{"File Exists", "File Does Not Exist", "File Does Not Exist"}));
}

TEST(RollbackSqlite, ASecondUpdateKeepsTheFirstStateInTheFileAndTheNewerCloneInMemory) {
  VARSENTIX_TEST_DATABASE(from, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(to, Engine::SQLite);
  from->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  to->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20) NOT NULL)");
  to->exec("INSERT INTO t VALUES (1, 'before')");
  TempDir dir;
  const std::string file = dir.file("t-ORIGINAL.xml");
  vb::Ref<clsDBManager> target;
  ASSERT_TRUE(updateOnce(*from, *to, file, "second", target));
  const std::string firstSave = fileText(file);
  EXPECT_NE(firstSave.find("before"), std::string::npos);
  ASSERT_TRUE(updateOnce(*from, *to, file, "third", target));
  EXPECT_EQ(fileText(file), firstSave);  // the save onto an existing file fails, silently
  EXPECT_EQ(to->scalar("SELECT v FROM t"), "third");

  // A third update that the database refuses (NULL into NOT NULL) still saved its clone first:
  // the shared record set now holds the row as the refused update found it.
  from->exec("UPDATE t SET v = NULL");
  auto source = preparedSide(from->connectionString(), "t");
  source->openDataBaseRecordsFromQuery("select * from [t]");
  target->setSQL("Select * from [t] Where id = 1");
  EXPECT_FALSE(target->adoUpdateRecord(*source, true, file));
  EXPECT_EQ(fileText(file), firstSave);
  ui::MessageBoxRecorder boxes;
  target->tempReadRollBackInformation();
  EXPECT_EQ(boxes.texts(), (std::vector<std::string>{"test 777 id = 1", "test 777 v = third"}));

  // The refused update left that record set open, so it cannot be reopened from the file.
  auto fresh = preparedSide(to->connectionString(), "t");
  EXPECT_FALSE(fresh->rollback(true, "Select * from [t] Where id = 1"));
  EXPECT_EQ(fresh->getReturnSQLMessage().rfind("3705 ", 0), 0u) << fresh->getReturnSQLMessage();
  EXPECT_EQ(to->scalar("SELECT v FROM t"), "third");
}

TEST(RollbackSqlite, AMissingRollbackFileReportsItsFailure) {
  VARSENTIX_TEST_DATABASE(db, Engine::SQLite);
  db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v TEXT)");
  db->exec("INSERT INTO t VALUES (1, 'x')");
  TempDir dir;
  auto side = preparedSide(db->connectionString(), "t");
  side->setRollbackFileName(dir.file("gone-ORIGINAL.xml"));
  ui::MessageBoxRecorder boxes;
  EXPECT_FALSE(side->rollback(true, "Select * from [t] Where id = 1"));
  auto texts = boxes.texts();
  ASSERT_EQ(texts.size(), 5u);
  EXPECT_EQ(texts[3], "test 4");
  EXPECT_EQ(texts[4] + " #7 Error when attempting to add a new record in table t ||", side->getReturnSQLMessage());
  EXPECT_EQ(db->scalar("SELECT v FROM t"), "x");
}
