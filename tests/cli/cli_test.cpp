// The varsentix program, run as a user runs it, on the bundled sample pair and on bad input.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>

#include <iconv.h>

#include <cstdlib>
#include <optional>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "support/Engines.h"
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

// Runs the program in dir with args; environment additions come first ("NO_COLOR=1"); input,
// when given, is its standard input.
Outcome run(const TempDir& dir, const std::vector<std::string>& args, const std::string& env = "",
            const std::optional<std::string>& input = std::nullopt) {
  std::string command = "cd " + quoted(dir.path().string()) + " && " + env + " " + quoted(VARSENTIX_CLI);
  for (const auto& arg : args) command += " " + quoted(arg);
  if (input) std::ofstream(dir.path() / "stdin.txt", std::ios::binary) << *input;
  command += std::string(" >stdout.txt 2>stderr.txt <") + (input ? "stdin.txt" : "/dev/null");
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

namespace {

// A SQLite file dir/name made by the sqlite3 program from sql (bytes as they are).
void makeSqlite(const TempDir& dir, const std::string& name, const std::string& sql) {
  std::ofstream(dir.path() / "make.sql", std::ios::binary) << sql;
  const std::string command = "sqlite3 -bail " + quoted(dir.file(name)) + " < " + quoted(dir.file("make.sql"));
  ASSERT_EQ(std::system(command.c_str()), 0) << sql;
}

// Whether text is well-formed UTF-8, as glibc's converter judges it.
bool isUtf8(const std::string& text) {
  iconv_t converter = iconv_open("UTF-32LE", "UTF-8");
  if (converter == reinterpret_cast<iconv_t>(-1)) return false;
  std::string in = text;
  char* from = in.data();
  size_t left = in.size();
  std::string buffer(4 * in.size() + 4, '\0');
  char* to = buffer.data();
  size_t room = buffer.size();
  const size_t done = iconv(converter, &from, &left, &to, &room);
  iconv_close(converter);
  return done != static_cast<size_t>(-1) && left == 0;
}

// A table and a column whose names, and a value that, hold an escape sequence, a bell, DEL, a C1
// control (U+009B, the one-byte CSI) and a byte that is not UTF-8; the Modified side lacks the record.
void makeControlCharacterPair(const TempDir& dir) {
  const std::string table = "\"t\x1b[2J\"";
  const std::string create = "CREATE TABLE " + table + " (id INTEGER PRIMARY KEY, \"c\x07\" TEXT);\n";
  makeSqlite(dir, "master.sqlite",
             create + "INSERT INTO " + table + " VALUES (1, 'a\x1b]0;title\x07' || char(127) || char(155) || " +
                 "CAST(X'FF' AS TEXT) || 'z\\');\n");
  makeSqlite(dir, "source.sqlite", create);
}

}  // namespace

TEST(Cli, TextReportShowsControlCharactersAndBytesThatAreNotUtf8Escaped) {
  TempDir dir;
  makeControlCharacterPair(dir);
  Outcome r = run(dir, {"compare", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  for (const std::string raw : {"\x1b", "\x07", "\x7f", "\xc2\x9b", "\xff"})
    EXPECT_EQ(r.out.find(raw), std::string::npos) << "raw byte in the report: " << r.out;
  EXPECT_NE(r.out.find("t\\x1b[2J"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("c\\x07='a\\x1b]0;title\\x07\\x7f\\x9b\\xffz\\\\'"), std::string::npos) << r.out;
}

TEST(Cli, JsonReportIsValidUtf8WhateverTheNamesAndValuesHold) {
  TempDir dir;
  makeControlCharacterPair(dir);
  Outcome r = run(dir, {"compare", "--format", "json", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_TRUE(isUtf8(r.out)) << r.out;
  EXPECT_EQ(r.out.find('\x1b'), std::string::npos);
  EXPECT_NE(r.out.find("\"t\\u001b[2J\""), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("\"a\\u001b]0;title\\u0007\\u007f\\u009b\\ufffdz\\\\\""), std::string::npos) << r.out;
  if (std::system("command -v python3 >/dev/null 2>&1") == 0) {
    const std::string check = "python3 -c 'import json,sys; json.loads(open(sys.argv[1], \"rb\").read().decode(\"utf-8\"))' " +
                              quoted(dir.file("stdout.txt"));
    EXPECT_EQ(std::system(check.c_str()), 0) << "not a JSON document: " << r.out;
  }
}

TEST(Cli, PathsThatLookLikeConnectionStringSyntaxOpenTheFileNamed) {
  TempDir dir;
  makeSqlite(dir, "{x}.sqlite", "CREATE TABLE brace (id INTEGER PRIMARY KEY);\n");
  makeSqlite(dir, "{x}", "CREATE TABLE wrong_file (id INTEGER PRIMARY KEY);\n");
  makeSqlite(dir, "=a.sqlite", "CREATE TABLE equals (id INTEGER PRIMARY KEY);\n");
  makeSqlite(dir, "a;Mode=x.sqlite", "CREATE TABLE semicolon (id INTEGER PRIMARY KEY);\n");
  makeSqlite(dir, "a", "CREATE TABLE wrong_file (id INTEGER PRIMARY KEY);\n");
  Outcome r = run(dir, {"compare", "--objects-only", "{x}.sqlite", "=a.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("brace  only in Original"), std::string::npos) << r.out << r.err;
  EXPECT_NE(r.out.find("equals  only in Modified"), std::string::npos) << r.out << r.err;
  r = run(dir, {"compare", "--objects-only", "a;Mode=x.sqlite", dir.file("{x}.sqlite")});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_NE(r.out.find("semicolon  only in Original"), std::string::npos) << r.out << r.err;
  EXPECT_NE(r.out.find("brace  only in Modified"), std::string::npos) << r.out << r.err;
}

TEST(Cli, AnAccessFileWithASemicolonInItsNameOpensThatFile) {
  TempDir dir;
  const auto sample = varsentix::testing::sharedDataDir() / "nwind.mdb";
  if (!std::filesystem::exists(sample)) GTEST_SKIP() << "no sample Access file: " << sample;
  std::filesystem::copy_file(sample, dir.path() / "nw;Mode=Share Deny None.mdb");
  std::filesystem::copy_file(sample, dir.path() / "{nw}.mdb");
  Outcome r = run(dir, {"compare", "--objects-only", "nw;Mode=Share Deny None.mdb", "{nw}.mdb"});
  EXPECT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("No differences: 0 tables"), std::string::npos) << r.out << r.err;
}

namespace {

// A fresh database on engine as a connection string without its password, or nullopt (skip).
std::string withoutPassword(const std::string& connectionString) {
  return std::regex_replace(connectionString, std::regex("(^|;)\\s*pwd\\s*=[^;]*", std::regex::icase), "");
}

std::string passwordOf(const std::string& connectionString) {
  std::smatch m;
  if (std::regex_search(connectionString, m, std::regex("(?:^|;)\\s*pwd\\s*=([^;]*)", std::regex::icase)))
    return m[1];
  return "";
}

}  // namespace

TEST(Cli, PasswordFromTheEnvironmentOrStandardInputAndNeverShown) {
  using namespace varsentix::testing;
  int engines = 0;
  for (Engine engine : {Engine::PostgreSQL, Engine::MariaDB}) {
    SCOPED_TRACE(engineName(engine));
    auto db = makeTestDatabase(engine);
    if (!db) continue;
    ++engines;
    db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY)");
    TempDir dir;
    const std::string full = db->connectionString();
    const std::string password = passwordOf(full);
    ASSERT_FALSE(password.empty()) << "the server's connection string names no password";
    const std::string bare = withoutPassword(full);
    // Without a password the server refuses.
    EXPECT_EQ(run(dir, {"compare", "--objects-only", bare, bare}).status, 2);
    Outcome fromEnvironment =
        run(dir, {"compare", "--objects-only", bare, bare}, "VARSENTIX_PASSWORD=" + quoted(password));
    EXPECT_EQ(fromEnvironment.status, 0) << fromEnvironment.out << fromEnvironment.err;
    Outcome fromInput = run(dir, {"compare", "--password-stdin", "--objects-only", bare, bare}, "", password + "\n");
    EXPECT_EQ(fromInput.status, 0) << fromInput.out << fromInput.err;
    EXPECT_EQ(run(dir, {"compare", "--password-stdin", "--password", "x", bare, bare}).status, 2);
    // A wrong password holding ';' and quotes: refused, and shown nowhere.
    for (const std::string& form : {std::string("--password=Wrong;S3cretTail\"'"), std::string("env")}) {
      Outcome wrong = form == "env" ? run(dir, {"compare", "--objects-only", bare, bare},
                                          "VARSENTIX_PASSWORD=" + quoted("Wrong;S3cretTail\"'"))
                                    : run(dir, {"compare", "--objects-only", form, bare, bare});
      EXPECT_EQ(wrong.status, 2) << wrong.out << wrong.err;
      EXPECT_EQ((wrong.out + wrong.err).find("S3cretTail"), std::string::npos) << wrong.err;
    }
    // A connection string naming its own password shows it masked.
    Outcome named = run(dir, {"compare", "--format", "json", "--objects-only", full, full});
    EXPECT_EQ(named.status, 0) << named.err;
    EXPECT_EQ(named.out.find(password), std::string::npos) << named.out;
  }
  if (engines == 0) GTEST_SKIP() << "no database server available";
}

TEST(Cli, PasswordsInWhatIsNamedAreNotShownWhenItCannotBeOpened) {
  TempDir dir;
  makeSqlite(dir, "a.sqlite", "CREATE TABLE t (id INTEGER PRIMARY KEY);\n");
  for (const std::string& named : {std::string("DSN=varsentix_no_such_source;Pwd=\"x;S3cretTail\""),
                                   std::string("Driver={Nothing};Jet OLEDB:Database Password=S3cretTail"),
                                   std::string("Provider=SQLite;Data Source=missing.db;Password={S3cretTail}")}) {
    Outcome r = run(dir, {"compare", named, "a.sqlite"});
    EXPECT_EQ(r.status, 2) << named;
    EXPECT_EQ((r.out + r.err).find("S3cretTail"), std::string::npos) << r.out << r.err;
  }
}

TEST(Cli, ATableOrColumnThatCannotBeBracketedIsAProblemNotASameTable) {
  TempDir dir;
  const std::string sql =
      "CREATE TABLE \"we]ird\" (id INTEGER PRIMARY KEY, v TEXT);\n"
      "CREATE TABLE t (id INTEGER PRIMARY KEY, \"na]me\" TEXT);\n"
      "CREATE TABLE plain (id INTEGER PRIMARY KEY);\n";
  makeSqlite(dir, "master.sqlite", sql + "INSERT INTO \"we]ird\" VALUES (1, 'x'); INSERT INTO t VALUES (1, 'a');\n");
  makeSqlite(dir, "source.sqlite", sql + "INSERT INTO \"we]ird\" VALUES (2, 'y'); INSERT INTO t VALUES (2, 'b');\n");
  Outcome r = run(dir, {"compare", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(r.status, 2) << r.out << r.err;
  EXPECT_NE(r.out.find("Problems\n  Not compared: the table we]ird holds ']'"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("  Not compared: the column na]me of the table t (its records) holds ']'"), std::string::npos)
      << r.out;
  EXPECT_EQ(r.out.find("No differences"), std::string::npos) << r.out;
  EXPECT_EQ(r.out.find("no differences\n"), std::string::npos) << r.out;
  EXPECT_NE(r.err.find("varsentix: Not compared: the table we]ird"), std::string::npos) << r.err;
  Outcome json = run(dir, {"compare", "--format", "json", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(json.status, 2);
  EXPECT_NE(json.out.find("\"complete\": false,"), std::string::npos) << json.out;
  EXPECT_NE(json.out.find("\"problems\": [\n    \"Not compared: the table we]ird holds"), std::string::npos) << json.out;
  Outcome one = run(dir, {"compare", "--table", "we]ird", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(one.status, 2) << one.out << one.err;
  Outcome other = run(dir, {"compare", "--table", "plain", "master.sqlite", "source.sqlite"});
  EXPECT_EQ(other.status, 0) << other.out << other.err;
}

TEST(Cli, ATableThatCannotBeBracketedIsAProblemOnAServerToo) {
  using namespace varsentix::testing;
  VARSENTIX_TEST_DATABASE(master, Engine::PostgreSQL);
  VARSENTIX_TEST_DATABASE(source, Engine::PostgreSQL);
  for (auto* db : {master.get(), source.get()})
    db->exec("CREATE TABLE \"we]ird\" (id INTEGER PRIMARY KEY, v VARCHAR(10))");
  master->exec("INSERT INTO \"we]ird\" VALUES (1, 'x')");
  TempDir dir;
  Outcome r = run(dir, {"compare", master->connectionString(), source->connectionString()});
  EXPECT_EQ(r.status, 2) << r.out << r.err;
  EXPECT_NE(r.out.find("Not compared: the table we]ird holds ']'"), std::string::npos) << r.out;
}

TEST(Cli, ARecordThatCannotBeMatchedBecauseOfATextInANumericColumnIsAProblem) {
  TempDir dir;
  const std::string sql =
      "CREATE TABLE t (id INTEGER PRIMARY KEY, n INTEGER);\n"
      "CREATE TABLE canary (x INTEGER);\nINSERT INTO canary VALUES (1);\n"
      "INSERT INTO t VALUES (1, '1 OR 1=1'), (2, '(SELECT count(*) FROM canary)');\n";
  makeSqlite(dir, "master.sqlite", sql);
  makeSqlite(dir, "source.sqlite", sql);
  Outcome r = run(dir, {"compare", "master.sqlite", "source.sqlite"});
  // The same records on both sides, but no match query could be sent for them: never a plain
  // answer, whichever it would be.
  EXPECT_EQ(r.status, 2) << r.out << r.err;
  EXPECT_NE(r.out.find("Problems\n  the table t: "), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("not well-formed for its column's data type"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("Incomplete, 1 problem: "), std::string::npos) << r.out;
}
