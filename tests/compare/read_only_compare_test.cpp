// A compare only reads: while it runs the engines refuse any write through its connections, a
// WAL-mode SQLite file (and its -wal) is byte for byte as it was after it, and the record
// operations still write through the same managers afterwards.
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "compare/CompareTestSupport.h"
#include "varsentix/platform/ui/Hooks.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

class ReadOnlyCompare : public ::testing::TestWithParam<Engine> {};

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

// Whether a failure is the engine's own refusal to write in a read-only session.
::testing::AssertionResult refusedByTheEngine(Engine engine, const vb::VBError& error) {
  const std::string text = lowered(error.description());
  bool engines = false;
  switch (engine) {
    case Engine::SQLite:
      engines = (error.nativeError() & 0xff) == SQLITE_READONLY;
      break;
    case Engine::SQLiteOdbc:
      engines = text.find("readonly") != std::string::npos;
      break;
    case Engine::PostgreSQL:
    case Engine::MariaDB:
      engines = error.sqlState() == "25006";  // read-only SQL transaction
      break;
  }
  if (engines) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "not the engine's read-only refusal: " << error.number() << " "
                                       << error.description() << " [" << error.sqlState() << " "
                                       << error.nativeError() << "]";
}

// people: rows 1..count with v 'row <id>'; canary: one row the compare has no business with.
void fillSide(TestDatabase& db, int count, int edited) {
  db.exec("CREATE TABLE people (id INTEGER PRIMARY KEY, v VARCHAR(30))");
  db.exec("CREATE TABLE canary (n INTEGER PRIMARY KEY, note VARCHAR(30))");
  db.exec("INSERT INTO canary VALUES (1, 'untouched')");
  std::string values;
  for (int id = 1; id <= count; ++id) {
    values += (values.empty() ? "" : ", ") + std::string("(") + std::to_string(id) + ", '" +
              (id == edited ? "edited" : "row " + std::to_string(id)) + "')";
  }
  db.exec("INSERT INTO people VALUES " + values);
}

std::string state(TestDatabase& db) {
  return db.scalar("SELECT COUNT(*) FROM people") + " people, v1=" + db.scalar("SELECT v FROM people WHERE id = 1") +
         ", canary " + db.scalar("SELECT COUNT(*) FROM canary") + "/" + db.scalar("SELECT note FROM canary WHERE n = 1");
}

}  // namespace

TEST_P(ReadOnlyCompare, AWriteThroughTheComparesConnectionIsRefusedByTheEngine) {
  VARSENTIX_TEST_DATABASE(master, GetParam());
  VARSENTIX_TEST_DATABASE(source, GetParam());
  fillSide(*master, 160, 0);
  fillSide(*source, 150, 7);  // 151..160 on the master only; row 7 differs
  const std::string masterBefore = state(*master), sourceBefore = state(*source);

  Varsenti control;
  auto m = preparedSide(master->connectionString(), "people");
  auto s = preparedSide(source->connectionString(), "people");
  int events = 0, accepted = 0;
  std::vector<vb::VBError> refusals;
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
    ++events;
    for (auto* side : {&m, &s}) {
      for (const char* write : {"UPDATE people SET v = 'written by a compare' WHERE id = 1",
                                "INSERT INTO canary VALUES (2, 'written by a compare')",
                                "DELETE FROM canary"}) {
        try {
          (*side)->getDatabaseConnection()->Execute(write);
          ++accepted;
        } catch (const vb::VBError& error) {
          refusals.push_back(error);
        }
      }
    }
  });
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s)) << control.getErrorLogs(true);
  ASSERT_GT(events, 0);
  EXPECT_EQ(accepted, 0);
  ASSERT_EQ(refusals.size(), static_cast<size_t>(events) * 6);
  for (const auto& error : refusals) EXPECT_TRUE(refusedByTheEngine(GetParam(), error));
  EXPECT_EQ(state(*master), masterBefore);
  EXPECT_EQ(state(*source), sourceBefore);

  // The same managers write again for the record operations.
  m->setCurrentRecordNumber(recordWith(control, true, "v", "row 155"));
  ASSERT_GT(m->getCurrentRecordNumber(), 0);
  ui::MessageBoxRecorder boxes;
  EXPECT_EQ(control.copyRecordFromRecordNumber(m, s, true), "");
  EXPECT_TRUE(boxes.texts().empty()) << ::testing::PrintToString(boxes.texts());
  EXPECT_EQ(source->scalar("SELECT v FROM people WHERE id = 155"), "row 155");

  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  m->setCurrentRecordNumber(recordWith(control, true, "v", "row 7"));
  s->setCurrentRecordNumber(recordWith(control, false, "v", "edited"));
  TempDir dir;
  EXPECT_EQ(control.updateRecordFromRecordNumber(m, s, true, dir.file("people-ORIGINAL.xml")), "");
  EXPECT_EQ(source->scalar("SELECT v FROM people WHERE id = 7"), "row 7");
  // Writes through the host's own statement work again too.
  EXPECT_NO_THROW(m->getDatabaseConnection()->Execute("UPDATE canary SET note = 'host wrote' WHERE n = 1"));
  EXPECT_EQ(master->scalar("SELECT note FROM canary WHERE n = 1"), "host wrote");
}

TEST_P(ReadOnlyCompare, AFullDatabaseCompareRefusesWritesAndGivesTheModeBack) {
  VARSENTIX_TEST_DATABASE(master, GetParam());
  VARSENTIX_TEST_DATABASE(source, GetParam());
  fillSide(*master, 3, 0);
  fillSide(*source, 3, 2);
  // Enough tables that the structure pass reports its progress (every 50 rows).
  for (int t = 0; t < 14; ++t) master->exec("CREATE TABLE extra" + std::to_string(t) + " (id INTEGER PRIMARY KEY, a INTEGER)");
  const std::string masterBefore = state(*master), sourceBefore = state(*source);

  Varsenti control;
  int events = 0, accepted = 0;
  std::vector<vb::VBError> refusals;
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
    ++events;
    for (bool isMaster : {true, false}) {
      auto side = isMaster ? control.getMasterDataManager() : control.getSourceDataManager();
      try {
        side->getDatabaseConnection()->Execute("UPDATE canary SET note = 'written by a compare'");
        ++accepted;
      } catch (const vb::VBError& error) {
        refusals.push_back(error);
      }
    }
  });
  ASSERT_TRUE(control.beginFullDatabaseCompare(master->connectionString(), source->connectionString(), false));
  ASSERT_GT(events, 0);
  EXPECT_EQ(accepted, 0);
  ASSERT_EQ(refusals.size(), static_cast<size_t>(events) * 2);
  for (const auto& error : refusals) EXPECT_TRUE(refusedByTheEngine(GetParam(), error));
  EXPECT_EQ(state(*master), masterBefore);
  EXPECT_EQ(state(*source), sourceBefore);

  // After the compare the control's managers' connections write again.
  control.getSourceDataManager()->getDatabaseConnection()->Execute("UPDATE canary SET note = 'host wrote'");
  EXPECT_EQ(source->scalar("SELECT note FROM canary WHERE n = 1"), "host wrote");
}

TEST_P(ReadOnlyCompare, ReadOnlyModeIsTheEnginesAndComesAndGoes) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  fillSide(*db, 2, 0);
  ado::Connection connection;
  connection.SetReadOnly(true);  // before the open: holds from the first statement on
  connection.Open(db->connectionString());
  EXPECT_TRUE(connection.ReadOnly());
  try {
    connection.Execute("UPDATE people SET v = 'written' WHERE id = 1");
    ADD_FAILURE() << "the write went through";
  } catch (const vb::VBError& error) {
    EXPECT_TRUE(refusedByTheEngine(GetParam(), error));
  }
  connection.SetReadOnly(false);
  connection.Execute("UPDATE people SET v = 'written' WHERE id = 1");
  EXPECT_EQ(db->scalar("SELECT v FROM people WHERE id = 1"), "written");
  connection.SetReadOnly(true);
  EXPECT_THROW(connection.Execute("DELETE FROM people"), vb::VBError);
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM people"), "2");
}

TEST_P(ReadOnlyCompare, ReadOnlyModeHoldsAlsoBesideARecordSetOpenedBeforeIt) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  fillSide(*db, 2500, 0);  // more rows than a driver fetches in one block
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(db->connectionString());
  // A record set still reading when the mode comes (on PostgreSQL its cursor keeps a transaction
  // open, which the session's mode alone would leave read-write).
  auto rows = connection->Execute("SELECT id FROM people ORDER BY id");
  ASSERT_FALSE(rows->isEOF());
  connection->SetReadOnly(true);
  try {
    connection->Execute("UPDATE people SET v = 'written' WHERE id = 3");
    ADD_FAILURE() << "the write went through";
  } catch (const vb::VBError& error) {
    EXPECT_TRUE(refusedByTheEngine(GetParam(), error));
  }
  rows->MoveNext();
  EXPECT_FALSE(rows->isEOF());
  rows->Close();
  connection->SetReadOnly(false);
  connection->Execute("UPDATE people SET v = 'written' WHERE id = 3");
  EXPECT_EQ(db->scalar("SELECT v FROM people WHERE id = 3"), "written");
}

TEST_P(ReadOnlyCompare, AConnectionOpenedWithModeReadNeverWrites) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  fillSide(*db, 2, 0);
  ado::Connection connection;
  connection.Open(db->connectionString() + ";Mode=Read");
  EXPECT_EQ(connection.Execute("SELECT v FROM people WHERE id = 2")->field(0).Value().toText(), "row 2");
  try {
    connection.Execute("UPDATE people SET v = 'written' WHERE id = 1");
    ADD_FAILURE() << "the write went through";
  } catch (const vb::VBError& error) {
    EXPECT_TRUE(refusedByTheEngine(GetParam(), error));
  }
  connection.SetReadOnly(false);  // no way out of Mode=Read
  EXPECT_THROW(connection.Execute("UPDATE people SET v = 'written' WHERE id = 1"), vb::VBError);
  EXPECT_EQ(db->scalar("SELECT v FROM people WHERE id = 1"), "row 1");
}

INSTANTIATE_TEST_SUITE_P(Engines, ReadOnlyCompare, ::testing::ValuesIn(allEngines()), EngineParamName());

// ---- WAL-mode SQLite files ----------------------------------------------------------------------

namespace {

std::string bytesOf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void execOn(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string why = error != nullptr ? error : "error";
    sqlite3_free(error);
    throw std::runtime_error(sql + ": " + why);
  }
}

// A WAL-mode file whose last changes are still in its -wal (its writer closed without a
// checkpoint), with audit triggers: any change to people or canary leaves a row in audit.
void makeWalDatabase(const std::string& path, const std::string& edited) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr), SQLITE_OK);
  execOn(db, "PRAGMA journal_mode = WAL");
  execOn(db, "PRAGMA wal_autocheckpoint = 0");
  execOn(db,
         "CREATE TABLE people (id INTEGER PRIMARY KEY, v VARCHAR(30));"
         "CREATE TABLE canary (n INTEGER PRIMARY KEY, note VARCHAR(30));"
         "CREATE TABLE audit (what TEXT);"
         "CREATE TRIGGER people_insert AFTER INSERT ON people BEGIN INSERT INTO audit VALUES ('insert'); END;"
         "CREATE TRIGGER people_update AFTER UPDATE ON people BEGIN INSERT INTO audit VALUES ('update'); END;"
         "CREATE TRIGGER people_delete AFTER DELETE ON people BEGIN INSERT INTO audit VALUES ('delete'); END;"
         "CREATE TRIGGER canary_update AFTER UPDATE ON canary BEGIN INSERT INTO audit VALUES ('canary'); END;"
         "INSERT INTO canary VALUES (1, 'untouched');");
  for (int id = 1; id <= 120; ++id)
    execOn(db, "INSERT INTO people VALUES (" + std::to_string(id) + ", '" + (id == 3 ? edited : "row") + "')");
  execOn(db, "DELETE FROM audit");
  sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  ASSERT_EQ(sqlite3_close(db), SQLITE_OK);
}

struct WalPair {
  TempDir dir;
  std::string master = dir.file("master.sqlite"), source = dir.file("source.sqlite");
  std::vector<std::pair<std::string, std::string>> before;  // file, bytes

  WalPair() {
    makeWalDatabase(master, "in master");
    makeWalDatabase(source, "in source");
    for (const auto& file : {master, master + "-wal", source, source + "-wal"}) before.emplace_back(file, bytesOf(file));
  }
  static std::string connectionString(const std::string& file) { return "Provider=SQLite;Data Source=" + file; }

  void expectUnchanged() const {
    for (const auto& [file, bytes] : before) {
      EXPECT_TRUE(std::filesystem::exists(file)) << file;
      EXPECT_TRUE(bytesOf(file) == bytes) << file << " changed";
    }
    EXPECT_GT(std::filesystem::file_size(master + "-wal"), 0u);
  }
  // Read after the bytes were checked (a reader that does not checkpoint).
  static std::string audit(const std::string& file) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* stmt = nullptr;
    std::string count = "?";
    if (sqlite3_prepare_v2(db, "SELECT COUNT(*) FROM audit", -1, &stmt, nullptr) == SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW)
      count = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    sqlite3_finalize(stmt);
    sqlite3_close(db);
    return count;
  }
};

}  // namespace

TEST(ReadOnlyCompareWal, AFullDatabaseCompareLeavesTheFileAndItsWalByteForByte) {
  WalPair pair;
  {
    Varsenti control;  // opens both sides read-write, as a host that does not say Mode=Read
    ASSERT_TRUE(control.beginFullDatabaseCompare(WalPair::connectionString(pair.master),
                                                 WalPair::connectionString(pair.source), false));
    EXPECT_GT(control.getResultCount(true), 0);
  }  // the control's connections close here
  pair.expectUnchanged();
  EXPECT_EQ(WalPair::audit(pair.master), "0");
  EXPECT_EQ(WalPair::audit(pair.source), "0");
}

TEST(ReadOnlyCompareWal, ASingleTableCompareLeavesTheFileAndItsWalByteForByte) {
  WalPair pair;
  {
    Varsenti control;
    control.beginTableFullDataCompare(WalPair::connectionString(pair.master), WalPair::connectionString(pair.source),
                                      "people", "TABLE");
    EXPECT_GT(control.getMasterDataManager()->getResults()->Count(), 0);
  }
  pair.expectUnchanged();
  {
    Varsenti control;
    auto m = preparedSide(WalPair::connectionString(pair.master), "people");
    auto s = preparedSide(WalPair::connectionString(pair.source), "people");
    int refused = 0;
    control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
      try {
        m->getDatabaseConnection()->Execute("UPDATE canary SET note = 'written by a compare'");
      } catch (const vb::VBError&) {
        ++refused;  // and the session that tried still leaves the WAL alone
      }
    });
    ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
    EXPECT_NE(recordWith(control, true, "v", "in master"), 0);
    EXPECT_GT(refused, 0);
  }
  pair.expectUnchanged();
  EXPECT_EQ(WalPair::audit(pair.master), "0");
  EXPECT_EQ(WalPair::audit(pair.source), "0");
}

TEST(ReadOnlyCompareWal, ASessionThatWroteCheckpointsAsUsual) {
  WalPair pair;
  {
    ado::Connection connection;
    connection.Open(WalPair::connectionString(pair.master));
    connection.Execute("UPDATE canary SET note = 'host wrote'");
  }
  // The last connection to close after a write checkpoints the WAL into the file and removes it.
  EXPECT_FALSE(std::filesystem::exists(pair.master + "-wal"));
  EXPECT_EQ(WalPair::audit(pair.master), "1");
}
