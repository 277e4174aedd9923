#include "records/RecordTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

class Writes : public ::testing::TestWithParam<Engine> {};

// A source side positioned on the record of `sql` in its first record set.
vb::Ref<clsDBManager> positioned(TestDatabase& db, const std::string& table, const std::string& sql) {
  auto side = preparedSide(db.connectionString(), table);
  side->openDataBaseRecordsFromQuery(sql);
  return side;
}

}  // namespace

TEST_P(Writes, AddCopiesEveryFieldIncludingTheKeyAndReportsSuccess) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  for (auto* db : {from.get(), to.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  from->exec("INSERT INTO t VALUES (5, 'O''Brien')");
  auto source = positioned(*from, "t", "select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  target->setReturnSQLMessage("old text");
  EXPECT_TRUE(target->adoAddNewRecord(*source)) << target->getReturnSQLMessage();
  EXPECT_EQ(target->getReturnSQLMessage(), "Successfully Completed");
  EXPECT_EQ(to->scalar("SELECT v FROM t WHERE id = 5"), "O'Brien");
}

TEST_P(Writes, ARefusedAddReportsMessage7AndWritesNothing) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  for (auto* db : {from.get(), to.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  from->exec("INSERT INTO t VALUES (1, 'new')");
  to->exec("INSERT INTO t VALUES (1, 'already here')");
  auto source = positioned(*from, "t", "select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  EXPECT_FALSE(target->adoAddNewRecord(*source));
  const std::string message = target->getReturnSQLMessage();
  const std::string tag = " #7 Error when attempting to add a new record in table t ||";
  ASSERT_GE(message.size(), tag.size());
  EXPECT_EQ(message.substr(message.size() - tag.size()), tag) << message;
  EXPECT_EQ(to->scalar("SELECT COUNT(*) FROM t"), "1");
  EXPECT_EQ(to->scalar("SELECT v FROM t"), "already here");
}

TEST_P(Writes, UpdateNeverOverwritesTheKeyColumn) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  for (auto* db : {from.get(), to.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  from->exec("INSERT INTO t VALUES (9, 'fresh')");
  to->exec("INSERT INTO t VALUES (1, 'stale')");
  TempDir dir;
  auto source = positioned(*from, "t", "select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  target->setSQL("Select * from [t] Where id = 1");
  EXPECT_TRUE(target->adoUpdateRecord(*source, true, dir.file("rollback-ORIGINAL.xml")))
      << target->getReturnSQLMessage();
  EXPECT_EQ(target->getReturnSQLMessage(), "Successfully Completed");
  EXPECT_EQ(to->scalar("SELECT id FROM t"), "1");
  EXPECT_EQ(to->scalar("SELECT v FROM t"), "fresh");
  EXPECT_TRUE(std::filesystem::exists(dir.file("rollback-ORIGINAL.xml")));
  EXPECT_NE(fileText(dir.file("rollback-ORIGINAL.xml")).find("stale"), std::string::npos);
}

TEST_P(Writes, UpdateThatSelectsNoRowReturnsFalseAndWritesNoRollbackFile) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  for (auto* db : {from.get(), to.get()}) db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(20))");
  from->exec("INSERT INTO t VALUES (1, 'x')");
  TempDir dir;
  auto source = positioned(*from, "t", "select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  target->setSQL("Select * from [t] Where id = 1");
  EXPECT_FALSE(target->adoUpdateRecord(*source, true, dir.file("none-ORIGINAL.xml")));
  EXPECT_EQ(target->getReturnSQLMessage(), "Successfully Completed");
  EXPECT_FALSE(std::filesystem::exists(dir.file("none-ORIGINAL.xml")));
}

TEST_P(Writes, ARefusedUpdateReportsMessage7AndLeavesTheRowAsItWas) {
  VARSENTIX_TEST_DATABASE(from, GetParam());
  VARSENTIX_TEST_DATABASE(to, GetParam());
  from->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(40))");
  to->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, v VARCHAR(40) NOT NULL)");
  from->exec("INSERT INTO t VALUES (1, NULL)");
  to->exec("INSERT INTO t VALUES (1, 'kept')");
  TempDir dir;
  auto source = positioned(*from, "t", "select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  target->setSQL("Select * from [t] Where id = 1");
  EXPECT_FALSE(target->adoUpdateRecord(*source, true, dir.file("r-ORIGINAL.xml")));
  EXPECT_NE(target->getReturnSQLMessage().find(" #7 Error when attempting to add a new record in table t ||"),
            std::string::npos);
  EXPECT_EQ(to->scalar("SELECT v FROM t WHERE id = 1"), "kept");
}

INSTANTIATE_TEST_SUITE_P(Engines, Writes, ::testing::ValuesIn(allEngines()), EngineParamName());

TEST(WritesSqlite, CopyingIntoATableWithAnotherFieldOrderWritesByPosition) {
  VARSENTIX_TEST_DATABASE(from, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(to, Engine::SQLite);
  from->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, first_name TEXT, last_name TEXT)");
  to->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, last_name TEXT, first_name TEXT)");
  from->exec("INSERT INTO t VALUES (1, 'Ada', 'Lovelace')");
  auto source = preparedSide(from->connectionString(), "t");
  source->openDataBaseRecordsFromQuery("select * from [t]");
  auto target = preparedSide(to->connectionString(), "t");
  EXPECT_TRUE(target->adoAddNewRecord(*source));
  EXPECT_EQ(to->scalar("SELECT last_name FROM t"), "Ada");  // not guarded: by position
}

TEST(WritesAccess, WritingToAnAccessFileIsRefusedAndTheFileIsUnchanged) {
  TempDir dir;
  const std::string mdb = dir.file("nwind.mdb");
  std::filesystem::copy_file(sharedDataDir() / "nwind.mdb", mdb);
  const std::string before = fileText(mdb);
  VARSENTIX_TEST_DATABASE(from, Engine::SQLite);
  from->exec("CREATE TABLE Shippers (ShipperID INTEGER PRIMARY KEY, CompanyName TEXT, Phone TEXT)");
  from->exec("INSERT INTO Shippers VALUES (99, 'Nobody', '555')");
  auto source = preparedSide(from->connectionString(), "Shippers");
  source->openDataBaseRecordsFromQuery("select * from [Shippers]");
  auto target = preparedSide("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + mdb, "Shippers");
  EXPECT_FALSE(target->adoAddNewRecord(*source));
  EXPECT_NE(target->getReturnSQLMessage().find(" #7 Error when attempting to add a new record in table Shippers ||"),
            std::string::npos)
      << target->getReturnSQLMessage();
  target->setSQL("Select * from [Shippers] Where ShipperID = 1");
  EXPECT_FALSE(target->adoUpdateRecord(*source, true, dir.file("r-ORIGINAL.xml")));
  EXPECT_NE(target->getReturnSQLMessage().find(" #7 "), std::string::npos);
  target->closeConnection();
  EXPECT_EQ(fileText(mdb), before);
}
