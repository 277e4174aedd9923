// The varsentix program, run as a user runs it, on the bundled sample pair and on bad input.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/TempDir.h"

using varsentix::testing::TempDir;

namespace {

const std::filesystem::path kSourceDir = VARSENTIX_SOURCE_DIR;

struct Outcome {
  int status = -1;
  std::string out;
  std::string err;
};

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string quoted(const std::string& arg) {
  std::string q = "'";
  for (char c : arg) q += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

// Runs the program in dir with args; environment additions come first ("NO_COLOR=1").
Outcome run(const TempDir& dir, const std::vector<std::string>& args, const std::string& env = "") {
  std::string command = "cd " + quoted(dir.path().string()) + " && " + env + " " + quoted(VARSENTIX_CLI);
  for (const auto& arg : args) command += " " + quoted(arg);
  command += " >stdout.txt 2>stderr.txt </dev/null";
  Outcome r;
  const int raw = std::system(command.c_str());
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  r.out = readFile(dir.path() / "stdout.txt");
  r.err = readFile(dir.path() / "stderr.txt");
  return r;
}

// The sample pair in dir: chinook.sqlite and chinook-changed.sqlite.
void makeSamplePair(const TempDir& dir) {
  std::filesystem::copy_file(kSourceDir / "examples" / "chinook.sqlite", dir.path() / "chinook.sqlite");
  std::filesystem::permissions(dir.path() / "chinook.sqlite", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  const std::string command = quoted((kSourceDir / "examples" / "make-changed-copy.sh").string()) + " " +
                              quoted(dir.file("chinook.sqlite")) + " " + quoted(dir.file("chinook-changed.sqlite"));
  ASSERT_EQ(std::system(command.c_str()), 0);
}

void expectGolden(const std::string& actual, const std::string& name) {
  const auto golden = kSourceDir / "tests" / "cli" / "golden" / name;
  if (std::getenv("VARSENTIX_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(golden, std::ios::binary) << actual;
    return;
  }
  ASSERT_TRUE(std::filesystem::exists(golden)) << golden;
  EXPECT_EQ(actual, readFile(golden)) << "golden file " << name;
}

}  // namespace

TEST(Cli, SamplePairTextReportMatchesTheGoldenFile) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome r = run(dir, {"compare", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(r.err, "");  // no progress bar and no colour when not on a terminal
  EXPECT_EQ(r.out.find("\x1b["), std::string::npos);
  expectGolden(r.out, "chinook.txt");
}

TEST(Cli, SamplePairJsonReportMatchesTheGoldenFile) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome r = run(dir, {"compare", "--format", "json", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  expectGolden(r.out, "chinook.json");
}

namespace {

// A WAL-mode SQLite file in dir with audit triggers: any change to its tables leaves a row in
// audit. With keepWal its last changes stay in its -wal (the writer closes without a checkpoint).
void makeWalDatabase(const TempDir& dir, const std::string& name, const std::string& value, bool keepWal) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(dir.file(name).c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr),
            SQLITE_OK);
  const std::string sql =
      "PRAGMA journal_mode = WAL; PRAGMA wal_autocheckpoint = 0;"
      "CREATE TABLE people (id INTEGER PRIMARY KEY, v TEXT); CREATE TABLE audit (what TEXT);"
      "CREATE TRIGGER people_insert AFTER INSERT ON people BEGIN INSERT INTO audit VALUES ('insert'); END;"
      "CREATE TRIGGER people_update AFTER UPDATE ON people BEGIN INSERT INTO audit VALUES ('update'); END;"
      "CREATE TRIGGER people_delete AFTER DELETE ON people BEGIN INSERT INTO audit VALUES ('delete'); END;"
      "INSERT INTO people VALUES (1, 'same'), (2, '" + value + "'); DELETE FROM audit;";
  ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  if (keepWal) sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  ASSERT_EQ(sqlite3_close(db), SQLITE_OK);
  ASSERT_EQ(std::filesystem::exists(dir.path() / (name + "-wal")), keepWal);
}

}  // namespace

TEST(Cli, CompareLeavesWalModeFilesAndTheirWalByteForByte) {
  TempDir dir;
  makeWalDatabase(dir, "a.sqlite", "in a", true);
  makeWalDatabase(dir, "b.sqlite", "in b", true);
  std::vector<std::pair<std::string, std::string>> before;
  for (const char* file : {"a.sqlite", "a.sqlite-wal", "b.sqlite", "b.sqlite-wal"})
    before.emplace_back(file, readFile(dir.path() / file));
  ASSERT_GT(before[1].second.size(), 0u);
  Outcome r = run(dir, {"compare", "a.sqlite", "b.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("in a"), std::string::npos) << r.out;
  for (const auto& [file, bytes] : before) {
    ASSERT_TRUE(std::filesystem::exists(dir.path() / file)) << file;
    EXPECT_TRUE(readFile(dir.path() / file) == bytes) << file << " changed";
  }
}

TEST(Cli, CompareReadsAWalModeFileClosedCleanlyWithoutChangingIt) {
  TempDir dir;
  makeWalDatabase(dir, "a.sqlite", "in a", false);
  makeWalDatabase(dir, "b.sqlite", "in b", false);
  const std::string a = readFile(dir.path() / "a.sqlite"), b = readFile(dir.path() / "b.sqlite");
  Outcome r = run(dir, {"compare", "a.sqlite", "b.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("in a"), std::string::npos) << r.out;
  EXPECT_TRUE(readFile(dir.path() / "a.sqlite") == a);
  EXPECT_TRUE(readFile(dir.path() / "b.sqlite") == b);
  EXPECT_FALSE(std::filesystem::exists(dir.path() / "a.sqlite-wal") &&
               std::filesystem::file_size(dir.path() / "a.sqlite-wal") > 0);
}

TEST(Cli, IdenticalDatabasesExitZero) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome r = run(dir, {"compare", "chinook.sqlite", "chinook.sqlite"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("No differences: 0 tables, 0 fields, 0 records"), std::string::npos) << r.out;
}

TEST(Cli, SchemaOnlyAndOneTable) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome schema = run(dir, {"compare", "--schema-only", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(schema.status, 1);
  EXPECT_EQ(schema.out.find("Records"), std::string::npos);
  Outcome one = run(dir, {"compare", "--table", "Genre", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(one.status, 1) << one.err;
  EXPECT_NE(one.out.find("Genre: 1 only in Original, 0 only in Modified"), std::string::npos) << one.out;
  EXPECT_NE(one.out.find("GenreId=25 Name='Opera'"), std::string::npos) << one.out;
  Outcome fields = run(dir, {"compare", "--table", "Album", "--fields", "AlbumId", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(fields.status, 0) << fields.out << fields.err;  // the edited title is not compared
}

TEST(Cli, ColourOnlyOnATerminalAndNeverWithNoColor) {
  TempDir dir;
  makeSamplePair(dir);
  // `script` gives the program a terminal; with NO_COLOR set it must still write no colour.
  if (std::system("command -v script >/dev/null 2>&1") != 0) GTEST_SKIP() << "script(1) is not installed";
  const std::string program = quoted(VARSENTIX_CLI) + " compare chinook.sqlite chinook-changed.sqlite";
  auto onTerminal = [&](const std::string& env) {
    std::string command = "cd " + quoted(dir.path().string()) + " && " + env + " script -qec " + quoted(program) +
                          " /dev/null > tty.txt 2>&1 </dev/null";
    (void)std::system(command.c_str());
    return readFile(dir.path() / "tty.txt");
  };
  EXPECT_NE(onTerminal("").find("\x1b[31m"), std::string::npos);
  EXPECT_EQ(onTerminal("NO_COLOR=1").find("\x1b[31m"), std::string::npos);
}

TEST(Cli, MissingFileIsTroubleNamingTheFile) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome r = run(dir, {"compare", "chinook.sqlite", "no-such.sqlite"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "varsentix: no such file: no-such.sqlite\n");
  EXPECT_EQ(r.out, "");
}

TEST(Cli, NonDatabaseFileIsTrouble) {
  TempDir dir;
  makeSamplePair(dir);
  std::ofstream(dir.path() / "notes.txt") << "just some text\n";
  Outcome r = run(dir, {"compare", "notes.txt", "chinook.sqlite"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "varsentix: notes.txt is not a SQLite or Access database\n");
}

TEST(Cli, CorruptSqliteFileIsTroubleWithTheEnginesWords) {
  TempDir dir;
  makeSamplePair(dir);
  std::string header = "SQLite format 3";
  header.push_back('\0');
  std::ofstream(dir.path() / "broken.db", std::ios::binary) << header << std::string(200, 'x');
  Outcome r = run(dir, {"compare", "chinook.sqlite", "broken.db"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err.rfind("varsentix: Modified side (broken.db): ", 0), 0u) << r.err;
}

TEST(Cli, UnknownDataSourceIsTroubleNamingTheSide) {
  TempDir dir;
  makeSamplePair(dir);
  Outcome r = run(dir, {"compare", "DSN=varsentix_no_such_source", "chinook.sqlite"});
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err.rfind("varsentix: Original side (DSN=varsentix_no_such_source): ", 0), 0u) << r.err;
  EXPECT_EQ(r.err.find('\n'), r.err.size() - 1) << "one line: " << r.err;
}

TEST(Cli, BadUsageIsTrouble) {
  TempDir dir;
  EXPECT_EQ(run(dir, {}).status, 2);
  EXPECT_EQ(run(dir, {"compare", "only-one"}).status, 2);
  EXPECT_EQ(run(dir, {"compare", "--bogus", "a", "b"}).status, 2);
  EXPECT_EQ(run(dir, {"frobnicate"}).status, 2);
  Outcome limit = run(dir, {"compare", "--limit", "x", "a", "b"});
  EXPECT_EQ(limit.status, 2);
  EXPECT_EQ(limit.err, "varsentix: --limit takes a whole number, not x\n");
}

TEST(Cli, HelpForEveryCommandAndTheManualMatchesIt) {
  TempDir dir;
  for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
           {"--help"}, {"compare", "--help"}, {"sources", "--help"}, {"help", "compare"}}) {
    Outcome r = run(dir, args);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out.rfind("Usage: varsentix", 0), 0u) << r.out;
  }
  Outcome manual = run(dir, {"help", "--markdown"});
  EXPECT_EQ(manual.out, readFile(kSourceDir / "docs" / "cli.md"))
      << "docs/cli.md is out of date: regenerate it with varsentix help --markdown > docs/cli.md";
}

TEST(Cli, SourcesListsTheMachinesDataSources) {
  TempDir dir;
  std::ofstream(dir.path() / "odbcinst.ini") << "";
  std::ofstream(dir.path() / "odbc.ini") << "[Stock]\nDriver=Made Up Driver\n";
  Outcome r = run(dir, {"sources"}, "ODBCSYSINI=" + quoted(dir.path().string()));
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Stock\tMade Up Driver\n");
}
