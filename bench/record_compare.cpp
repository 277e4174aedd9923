// Record comparison of one large table against a changed copy of it: the control's
// beginTableCompareFromDBManagers (records of each side looked up on the other) measured against
// sqldiff on SQLite files, and against streaming both tables through the record-set layer on
// PostgreSQL over ODBC. Prints medians; asserts nothing.
//
//   record_compare [--rows N] [--runs R] [--full-precision-reals] [--variant pk|plain|text|both|all]
//                  [--sqlite-only | --pg-only] [--timeout S] [--keep]
//     --rows N        rows of the original table (default 1,000,000)
//     --runs R        timed runs of each contender per variant, alternating (default 5)
//     --full-precision-reals
//                     the real column holds random doubles with long fractions (default: amounts
//                     with two decimals)
//     --variant       pk: id INTEGER PRIMARY KEY; plain: no index nor key at all (id a plain
//                     INTEGER column); text: the id written as a text code ('C0000001', a
//                     VARCHAR(20) first column without index, which no walk can follow in step:
//                     the other side's records are kept as hashes); both: pk and plain (default);
//                     all: the three
//     --timeout S     a run still going after S seconds is ended and reported as timed out
//                     (default 0: no limit)
//     --keep          keep the SQLite files (their folder is printed)
//     --hash-memory MB
//                     megabytes of hashes of the other side's records a walk keeps in memory, per
//                     set, before it moves them to a temporary file (default: the library's, 4)
//     --cpus N        keep every run to the first N processors this process may use (as on a
//                     machine whose other processors are busy); default: all of them
// The PostgreSQL half runs when VARSENTIX_PG_ODBC holds the server's ODBC string without
// Database (scripts/test-servers.sh exports it); it makes two databases per variant and drops them.
//
// The table: id, name VARCHAR(100), amount (real), quantity (integer). The changed copy differs
// in 1% of the rows: a third deleted, a third with one column changed (name, amount or quantity
// in turn) and a third new rows appended. The rows are a function of the id alone, so every
// engine gets the same data.
//
// Every timed run is a child process of its own: its peak resident set (ru_maxrss from wait4) is
// that run's alone, its wall time is taken from fork to reap, and its CPU time (user and system, all
// its threads) comes from wait4 too. The comparison's child also reports the time of the call alone
// and how many result rows and records each side holds.
#include <sched.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "engine/RecordMatch.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* kSqldiff = "/usr/bin/sqldiff";

double seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const size_t half = values.size() / 2;
  return values.size() % 2 ? values[half] : (values[half - 1] + values[half]) / 2;
}

std::string withCommas(long value) {
  std::string digits = std::to_string(value), out;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

long residentKiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return -1;
}

// ---- the data ------------------------------------------------------------------------------

uint64_t mix(uint64_t x) {  // splitmix64
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

// A pseudo-random number per id and purpose.
uint64_t draw(int64_t id, uint64_t purpose) { return mix(static_cast<uint64_t>(id) * 0x100000001B3ull ^ mix(purpose)); }

// The shape of the table: see --variant.
enum class Variant { Pk, Plain, Text };

const char* tagOf(Variant variant) {
  return variant == Variant::Pk ? "pk" : variant == Variant::Plain ? "plain" : "text";
}

const char* variantName(Variant variant) {
  switch (variant) {
    case Variant::Pk: return "id INTEGER PRIMARY KEY";
    case Variant::Plain: return "no index nor key (id a plain INTEGER column)";
    default: return "a text code first, no index nor key (code VARCHAR(20))";
  }
}

// The first column's name, and the text code of an id.
const char* keyColumn(Variant variant) { return variant == Variant::Text ? "code" : "id"; }
std::string codeOf(int64_t id) {
  char code[24];
  std::snprintf(code, sizeof code, "C%07lld", static_cast<long long>(id));
  return code;
}

struct Row {
  int64_t id = 0;
  std::string name;
  double amount = 0;
  int64_t quantity = 0;
};

enum class Change : uint8_t { None, Deleted, Name, Amount, Quantity };

class DataSet {
 public:
  DataSet(long rows, bool fullPrecision) : rows_(rows), fullPrecision_(fullPrecision), plan_(rows + 1, Change::None) {
    const long changes = std::max(3L, rows / 100);
    deleted = changes / 3;
    modified = changes / 3;
    inserted = changes - deleted - modified;
    std::mt19937_64 random(20261121);
    std::uniform_int_distribution<long> anyId(1, rows);
    for (long picked = 0; picked < deleted + modified && picked < rows;) {
      const long id = anyId(random);
      if (plan_[id] != Change::None) continue;
      if (picked < deleted) {
        plan_[id] = Change::Deleted;
      } else {
        const long k = picked - deleted;
        plan_[id] = k % 3 == 0 ? Change::Name : k % 3 == 1 ? Change::Amount : Change::Quantity;
      }
      ++picked;
    }
  }

  // Calls emit(row) for every row of one side in id order: the original (master) or the changed
  // copy, whose new rows come last.
  void forEach(bool master, const std::function<void(const Row&)>& emit) const {
    for (long id = 1; id <= rows_; ++id) {
      Row row = original(id);
      if (!master) {
        switch (plan_[id]) {
          case Change::Deleted: continue;
          case Change::Name: row.name += " (revised)"; break;
          case Change::Amount: row.amount = amountOf(id, 7); break;
          case Change::Quantity: row.quantity += 1; break;
          case Change::None: break;
        }
      }
      emit(row);
    }
    if (!master)
      for (long id = rows_ + 1; id <= rows_ + inserted; ++id) emit(original(id));
  }

  // Records each side has that the other lacks (a changed row counts on both sides).
  long masterOnly() const { return deleted + modified; }
  long sourceOnly() const { return inserted + modified; }
  bool fullPrecision() const { return fullPrecision_; }

  long deleted = 0, modified = 0, inserted = 0;

 private:
  Row original(int64_t id) const {
    static const char* const words[] = {"north", "south", "harbour", "mill",   "garden", "station",
                                        "river", "market", "bridge", "church", "hill",   "castle",
                                        "lane",  "field",  "park",   "wharf"};
    const uint64_t r = draw(id, 1);
    Row row;
    row.id = id;
    row.name = std::string("Customer ") + std::to_string(100000 + draw(id, 2) % 900000) + " " + words[r % 16] + " " +
               words[(r >> 4) % 16];
    row.amount = amountOf(id, 3);
    row.quantity = static_cast<int64_t>(draw(id, 4) % 100000);
    return row;
  }

  // Two decimals (up to 1,000,000.00), or a double in [0, 1e6) with all 53 bits random.
  double amountOf(int64_t id, uint64_t purpose) const {
    const uint64_t r = draw(id, purpose);
    if (fullPrecision_) return static_cast<double>(r >> 11) * 0x1.0p-53 * 1e6;
    return static_cast<double>(r % 100000000) / 100.0;
  }

  long rows_;
  bool fullPrecision_;
  std::vector<Change> plan_;  // per id 1..rows_: what the changed copy does to it
};

// ---- SQLite files --------------------------------------------------------------------------

void sqliteCheck(int rc, sqlite3* db, const char* what) {
  if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
    std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
    std::_Exit(1);
  }
}

// One transaction, one prepared insert. Without a key the rowid is still given as the id, as a
// copy of the original changed in place would keep it.
void writeSqlite(const std::string& file, const DataSet& data, bool master, Variant variant) {
  std::filesystem::remove(file);
  sqlite3* db = nullptr;
  sqliteCheck(sqlite3_open(file.c_str(), &db), db, "open");
  const bool primaryKey = variant == Variant::Pk;
  const std::string create =
      primaryKey ? "CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(100), amount REAL, quantity INTEGER)"
      : variant == Variant::Plain ? "CREATE TABLE t (id INTEGER, name VARCHAR(100), amount REAL, quantity INTEGER)"
                                  : "CREATE TABLE t (code VARCHAR(20), name VARCHAR(100), amount REAL, quantity INTEGER)";
  sqliteCheck(sqlite3_exec(db, ("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; " + create + "; BEGIN").c_str(),
                           nullptr, nullptr, nullptr),
              db, "create");
  sqlite3_stmt* insert = nullptr;
  sqliteCheck(sqlite3_prepare_v2(db,
                                 primaryKey ? "INSERT INTO t VALUES (?1, ?2, ?3, ?4)"
                                 : variant == Variant::Plain
                                     ? "INSERT INTO t (rowid, id, name, amount, quantity) VALUES (?1, ?1, ?2, ?3, ?4)"
                                     : "INSERT INTO t (rowid, code, name, amount, quantity) VALUES (?1, ?5, ?2, ?3, ?4)",
                                 -1, &insert, nullptr),
              db, "prepare");
  data.forEach(master, [&](const Row& row) {
    sqlite3_bind_int64(insert, 1, row.id);
    sqlite3_bind_text(insert, 2, row.name.c_str(), static_cast<int>(row.name.size()), SQLITE_STATIC);
    sqlite3_bind_double(insert, 3, row.amount);
    sqlite3_bind_int64(insert, 4, row.quantity);
    if (variant == Variant::Text) sqlite3_bind_text(insert, 5, codeOf(row.id).c_str(), -1, SQLITE_TRANSIENT);
    sqliteCheck(sqlite3_step(insert), db, "insert");
    sqlite3_reset(insert);
  });
  sqlite3_finalize(insert);
  sqliteCheck(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
  sqlite3_close(db);
}

// ---- PostgreSQL through the record-set layer -------------------------------------------------

std::string literal(double value, bool fullPrecision) {
  char text[40];
  std::snprintf(text, sizeof text, fullPrecision ? "%.17g" : "%.2f", value);
  return text;
}

// Multi-row INSERT statements of 1,000 rows each.
void writePostgres(const std::string& connectionString, const DataSet& data, bool master, Variant variant) {
  auto cn = vb::Ref<ado::Connection>::make();
  cn->Open(connectionString);
  cn->Execute(variant == Variant::Pk
                  ? "CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(100), amount DOUBLE PRECISION, quantity INTEGER)"
              : variant == Variant::Plain
                  ? "CREATE TABLE t (id INTEGER, name VARCHAR(100), amount DOUBLE PRECISION, quantity INTEGER)"
                  : "CREATE TABLE t (code VARCHAR(20), name VARCHAR(100), amount DOUBLE PRECISION, quantity INTEGER)");
  std::string sql;
  int batched = 0;
  auto flush = [&] {
    if (batched == 0) return;
    cn->Execute(sql);
    sql.clear();
    batched = 0;
  };
  data.forEach(master, [&](const Row& row) {
    sql += batched == 0 ? "INSERT INTO t VALUES " : ",";
    sql += "(" + (variant == Variant::Text ? "'" + codeOf(row.id) + "'" : std::to_string(row.id)) + ",'" + row.name + "'," + literal(row.amount, data.fullPrecision()) + "," +
           std::to_string(row.quantity) + ")";
    if (++batched == 1000) flush();
  });
  flush();
  cn->Execute("ANALYZE t");
  cn->Close();
}

// ---- child processes -----------------------------------------------------------------------

// What a child reports through its pipe (plain data).
struct Report {
  bool ok = false;
  double callSeconds = 0;
  int32_t resultRows[2] = {0, 0};  // master, source
  int32_t records[2] = {0, 0};     // records among the data-value rows
  long streamedRows = 0;
  // How the comparison's walks went (counts of engine::RecordMatcher::threadTotals()).
  long merged = 0, keptOnly = 0, unsorted = 0, askedEngine = 0, ownReadAhead = 0, hashesInFiles = 0;
  char error[240] = {};
};

struct Measured {
  Report report;
  bool timedOut = false;
  int exitCode = 0;
  double wall = 0;      // fork to reap
  double cpu = 0;       // user and system time of the child, all its threads
  double peakMB = 0;    // ru_maxrss of the child
};

void fail(Report& report, const std::string& why) {
  report.ok = false;
  std::snprintf(report.error, sizeof report.error, "%s", why.c_str());
}

Measured reap(pid_t pid, Clock::time_point start) {
  Measured m;
  int status = 0;
  rusage usage{};
  while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR) {
  }
  m.wall = seconds(start);
  m.cpu = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
          static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  m.peakMB = static_cast<double>(usage.ru_maxrss) / 1024.0;
  if (WIFSIGNALED(status)) {
    m.timedOut = WTERMSIG(status) == SIGALRM;
    m.exitCode = 128 + WTERMSIG(status);
  } else {
    m.exitCode = WEXITSTATUS(status);
  }
  return m;
}

// Runs body in a child process; the child ends with _exit so nothing of the parent is torn down.
Measured inChild(const std::function<void(Report&)>& body, int timeout) {
  int fds[2];
  if (pipe(fds) != 0) std::exit(1);
  std::fflush(nullptr);
  const auto start = Clock::now();
  const pid_t pid = fork();
  if (pid < 0) std::exit(1);
  if (pid == 0) {
    close(fds[0]);
    if (timeout > 0) alarm(static_cast<unsigned>(timeout));
    Report report;
    try {
      report.ok = true;
      body(report);
    } catch (const vb::VBError& e) {
      fail(report, "error " + std::to_string(e.number()) + ": " + e.description());
    } catch (const std::exception& e) {
      fail(report, e.what());
    }
    std::fflush(nullptr);
    const ssize_t written = write(fds[1], &report, sizeof report);
    _exit(written == static_cast<ssize_t>(sizeof report) ? 0 : 1);
  }
  close(fds[1]);
  Report report;
  size_t got = 0;
  while (got < sizeof report) {
    const ssize_t n = read(fds[0], reinterpret_cast<char*>(&report) + got, sizeof report - got);
    if (n <= 0) break;
    got += static_cast<size_t>(n);
  }
  close(fds[0]);
  Measured m = reap(pid, start);
  if (got == sizeof report) m.report = report;
  else if (m.timedOut) fail(m.report, "timed out after " + std::to_string(timeout) + " s");
  else fail(m.report, "the child ended without a report (exit " + std::to_string(m.exitCode) + ")");
  return m;
}

// sqldiff a b > output (/dev/null for the timed runs).
Measured runSqldiff(const std::string& a, const std::string& b, const std::string& output, int timeout) {
  std::fflush(nullptr);
  const auto start = Clock::now();
  const pid_t pid = fork();
  if (pid < 0) std::exit(1);
  if (pid == 0) {
    const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || dup2(out, STDOUT_FILENO) < 0) _exit(126);
    if (timeout > 0) alarm(static_cast<unsigned>(timeout));
    execl(kSqldiff, "sqldiff", a.c_str(), b.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  Measured m = reap(pid, start);
  m.report.ok = m.exitCode == 0;
  if (m.timedOut) fail(m.report, "timed out after " + std::to_string(timeout) + " s");
  else if (!m.report.ok) fail(m.report, "sqldiff exited with " + std::to_string(m.exitCode));
  return m;
}

// ---- the contenders --------------------------------------------------------------------------

vb::Ref<clsDBManager> preparedSide(const std::string& connectionString) {
  auto side = vb::Ref<clsDBManager>::make();
  side->initializeValues();
  side->setConnectionString(connectionString);
  side->openDatabaseConnection();
  side->setTableName("t");
  side->setFieldList("*");
  return side;
}

void countResults(const clsDBManager& side, int which, const char* firstField, Report& report) {
  const auto results = side.getResults();
  report.resultRows[which] = results->Count();
  // Each record is one data-value row per field; its first field counts the records.
  int32_t records = 0;
  for (const auto& row : *results)
    if (row->getIsDataValue() && row->getFieldName() == firstField) ++records;
  report.records[which] = records;
}

// The comparison as a user runs it: two managers prepared, then the control's call.
void compareRecords(const std::string& master, const std::string& source, Variant variant, Report& report) {
  auto m = preparedSide(master);
  auto s = preparedSide(source);
  Varsenti control;
  const auto start = Clock::now();
  const bool ok = control.beginTableCompareFromDBManagers(m, s);
  report.callSeconds = seconds(start);
  if (!ok) fail(report, "beginTableCompareFromDBManagers returned false");
  const auto& walks = engine::RecordMatcher::threadTotals();
  report.merged = static_cast<long>(walks.merged);
  report.keptOnly = static_cast<long>(walks.keptOnly);
  report.unsorted = static_cast<long>(walks.unsorted);
  report.askedEngine = static_cast<long>(walks.askedEngine);
  report.ownReadAhead = static_cast<long>(walks.ownReadAhead);
  report.hashesInFiles = static_cast<long>(walks.hashesInFiles);
  countResults(*m, 0, keyColumn(variant), report);
  countResults(*s, 1, keyColumn(variant), report);
}

// Both tables once through the record-set layer, every field's Value read on every row.
void streamBoth(const std::string& master, const std::string& source, Report& report) {
  const auto start = Clock::now();
  for (const std::string* connection : {&master, &source}) {
    auto cn = vb::Ref<ado::Connection>::make();
    cn->Open(*connection);
    auto rs = vb::Ref<ado::Recordset>::make();
    rs->Open("select * from t", cn, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
    const int32_t columns = rs->getFields().Count();
    long nulls = 0;
    while (!rs->isEOF()) {
      ++report.streamedRows;
      for (int32_t i = 0; i < columns; ++i)
        if (rs->field(i).Value().isNull()) ++nulls;
      rs->MoveNext();
    }
    rs->Close();
    cn->Close();
    if (nulls != 0) fail(report, "unexpected NULL values");
  }
  report.callSeconds = seconds(start);
}

// ---- reporting -------------------------------------------------------------------------------

struct Series {
  std::vector<double> wall, cpu, call, peak;
  Report last;
  int failures = 0;
  std::string firstError;
  bool varied = false;  // result counts differed between runs

  void add(const Measured& m) {
    if (!m.report.ok) {
      if (failures++ == 0) firstError = m.report.error;
      return;
    }
    if (!wall.empty() && (m.report.resultRows[0] != last.resultRows[0] || m.report.resultRows[1] != last.resultRows[1]))
      varied = true;
    wall.push_back(m.wall);
    cpu.push_back(m.cpu);
    call.push_back(m.report.callSeconds);
    peak.push_back(m.peakMB);
    last = m.report;
  }
  bool any() const { return !wall.empty(); }
};

void printRun(const char* label, const Measured& m) {
  if (!m.report.ok) {
    std::printf("  %-9s failed: %s (%.3f s)\n", label, m.report.error, m.wall);
    return;
  }
  std::printf("  %-9s %8.3f s wall, %6.3f s CPU, peak RSS %7.1f MB", label, m.wall, m.cpu, m.peakMB);
  if (m.report.callSeconds > 0)
    std::printf(" (%s %.3f s)", m.report.streamedRows > 0 ? "walk" : "call", m.report.callSeconds);
  if (m.report.resultRows[0] + m.report.resultRows[1] > 0)
    std::printf(", result rows %d / %d", m.report.resultRows[0], m.report.resultRows[1]);
  if (m.report.streamedRows > 0) std::printf(", %ld rows streamed", m.report.streamedRows);
  std::printf("\n");
}

void printFailures(const char* label, const Series& s) {
  if (s.failures > 0) std::printf("  %s: %d run(s) failed, first: %s\n", label, s.failures, s.firstError.c_str());
}

void printOurs(const Series& ours, const DataSet& data, int runs) {
  printFailures("beginTableCompareFromDBManagers", ours);
  if (!ours.any()) return;
  std::printf("  beginTableCompareFromDBManagers: median %.3f s wall (call %.3f s), %.3f s CPU, peak RSS %.1f MB, %zu of "
              "%d runs\n",
              median(ours.wall), median(ours.call), median(ours.cpu), median(ours.peak), ours.wall.size(), runs);
  std::printf("    result rows: master %d, source %d%s\n", ours.last.resultRows[0], ours.last.resultRows[1],
              ours.varied ? " (NOT the same in every run)" : "");
  std::printf("    records reported: master %d (expected %ld: deleted + changed), source %d (expected %ld: new + "
              "changed)\n",
              ours.last.records[0], data.masterOnly(), ours.last.records[1], data.sourceOnly());
  std::printf("    walks: %ld records merged, %ld walk(s) through kept records alone, %ld statement(s) read unsorted"
              ", %ld walk(s) reading their own records ahead, %ld match queries, %ld walk(s) keeping hashes in a "
              "file\n",
              ours.last.merged, ours.last.keptOnly, ours.last.unsorted, ours.last.ownReadAhead,
              ours.last.askedEngine, ours.last.hashesInFiles);
}

// The statements sqldiff writes, counted by kind, from one untimed run.
std::string sqldiffSummary(const std::string& a, const std::string& b, const std::string& dir) {
  const std::string out = dir + "/sqldiff.sql";
  Measured m = runSqldiff(a, b, out, 0);
  if (!m.report.ok) return std::string("sqldiff failed: ") + m.report.error;
  long deletes = 0, updates = 0, inserts = 0, other = 0;
  std::ifstream in(out);
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("DELETE", 0) == 0) ++deletes;
    else if (line.rfind("UPDATE", 0) == 0) ++updates;
    else if (line.rfind("INSERT", 0) == 0) ++inserts;
    else ++other;
  }
  std::filesystem::remove(out);
  return "sqldiff writes " + std::to_string(deletes) + " DELETE, " + std::to_string(updates) + " UPDATE, " +
         std::to_string(inserts) + " INSERT" + (other ? ", " + std::to_string(other) + " other" : "") + " statements";
}

struct Options {
  long rows = 1000000;
  int runs = 5;
  bool fullPrecision = false;
  bool sqlite = true, postgres = true;
  bool pk = true, plain = true, text = false;
  bool wants(Variant variant) const {
    return variant == Variant::Pk ? pk : variant == Variant::Plain ? plain : text;
  }
  int timeout = 0;
  bool keep = false;
  long hashMegabytes = 0;  // 0: the library's own limit
  int cpus = 0;            // 0: every processor this process may run on
};

void sqliteHalf(const Options& options, const DataSet& data, const std::string& dir) {
  const bool haveSqldiff = access(kSqldiff, X_OK) == 0;
  if (!haveSqldiff)
    std::printf("%s not found: install the Debian package sqlite3-tools (apt-get install sqlite3-tools) to compare "
                "with it; only our comparison is measured\n",
                kSqldiff);
  for (Variant variant : {Variant::Pk, Variant::Plain, Variant::Text}) {
    if (!options.wants(variant)) continue;
    const std::string tag = tagOf(variant);
    const std::string master = dir + "/" + tag + "_master.db", source = dir + "/" + tag + "_source.db";
    Measured made = inChild([&](Report&) {
      writeSqlite(master, data, true, variant);
      writeSqlite(source, data, false, variant);
    }, 0);
    if (!made.report.ok) {
      std::printf("SQLite, %s: could not make the files: %s\n", variantName(variant), made.report.error);
      continue;
    }
    std::printf("\nSQLite, %s: files of %.1f MB and %.1f MB made in %.2f s\n", variantName(variant),
                std::filesystem::file_size(master) / 1048576.0, std::filesystem::file_size(source) / 1048576.0,
                made.wall);
    if (haveSqldiff) std::printf("  %s\n", sqldiffSummary(master, source, dir).c_str());
    Series sqldiff, ours;
    for (int run = 0; run < options.runs; ++run) {
      std::printf(" run %d\n", run + 1);
      for (int turn = 0; turn < 2; ++turn) {
        if ((turn == 0) == (run % 2 == 0)) {  // sqldiff first in odd runs, ours first in even ones
          if (!haveSqldiff) continue;
          Measured m = runSqldiff(master, source, "/dev/null", options.timeout);
          printRun("sqldiff", m);
          sqldiff.add(m);
        } else {
          Measured m = inChild([&](Report& r) {
            compareRecords("Provider=SQLite;Data Source=" + master, "Provider=SQLite;Data Source=" + source, variant,
                           r);
          }, options.timeout);
          printRun("ours", m);
          ours.add(m);
        }
      }
    }
    std::printf(" medians of %d runs\n", options.runs);
    printFailures("sqldiff", sqldiff);
    if (sqldiff.any())
      std::printf("  sqldiff: median %.3f s wall, %.3f s CPU, peak RSS %.1f MB\n", median(sqldiff.wall),
                  median(sqldiff.cpu), median(sqldiff.peak));
    printOurs(ours, data, options.runs);
    if (ours.any() && sqldiff.any())
      std::printf("SQLite %s: ours / sqldiff = %.2fx time (%.2fx CPU time); our peak RSS %.1f MB (sqldiff %.1f MB)\n",
                  tag.c_str(), median(ours.wall) / median(sqldiff.wall), median(ours.cpu) / median(sqldiff.cpu),
                  median(ours.peak), median(sqldiff.peak));
    else if (ours.any())
      std::printf("SQLite %s: no sqldiff figure; our peak RSS %.1f MB\n", tag.c_str(), median(ours.peak));
    if (!options.keep) {
      std::filesystem::remove(master);
      std::filesystem::remove(source);
    }
  }
}

void postgresHalf(const Options& options, const DataSet& data) {
  const char* server = std::getenv("VARSENTIX_PG_ODBC");
  if (server == nullptr || *server == '\0') {
    std::printf("\nPostgreSQL: skipped, VARSENTIX_PG_ODBC is not set (eval \"$(scripts/test-servers.sh start)\" "
                "starts a server on loopback and sets it)\n");
    return;
  }
  const std::string admin = std::string("Provider=MSDASQL;") + server + ";Database=postgres";
  const std::string prefix = "vx_bench_" + std::to_string(getpid()) + "_";
  auto connectionOf = [&](const std::string& database) {
    return std::string("Provider=MSDASQL;") + server + ";Database=" + database;
  };
  auto onServer = [&](const std::vector<std::string>& statements) {
    return inChild([&](Report&) {
      auto cn = vb::Ref<ado::Connection>::make();
      cn->Open(admin);
      for (const auto& sql : statements) cn->Execute(sql);
      cn->Close();
    }, 0);
  };
  for (Variant variant : {Variant::Pk, Variant::Plain, Variant::Text}) {
    if (!options.wants(variant)) continue;
    const std::string tag = tagOf(variant);
    const std::string masterDb = prefix + tag + "_master", sourceDb = prefix + tag + "_source";
    const std::string master = connectionOf(masterDb), source = connectionOf(sourceDb);
    Measured made = onServer({"CREATE DATABASE " + masterDb + " ENCODING 'UTF8' TEMPLATE template0",
                              "CREATE DATABASE " + sourceDb + " ENCODING 'UTF8' TEMPLATE template0"});
    if (made.report.ok) made = inChild([&](Report&) {
      writePostgres(master, data, true, variant);
      writePostgres(source, data, false, variant);
    }, 0);
    if (!made.report.ok) {
      std::printf("\nPostgreSQL, %s: could not make the databases: %s\n", variantName(variant), made.report.error);
    } else {
      std::printf("\nPostgreSQL over ODBC, %s: databases %s and %s loaded in %.2f s\n", variantName(variant),
                  masterDb.c_str(), sourceDb.c_str(), made.wall);
      Series stream, ours;
      for (int run = 0; run < options.runs; ++run) {
        std::printf(" run %d\n", run + 1);
        for (int turn = 0; turn < 2; ++turn) {
          if ((turn == 0) == (run % 2 == 0)) {
            Measured m = inChild([&](Report& r) { streamBoth(master, source, r); }, options.timeout);
            printRun("streaming", m);
            stream.add(m);
          } else {
            Measured m = inChild([&](Report& r) { compareRecords(master, source, variant, r); }, options.timeout);
            printRun("ours", m);
            ours.add(m);
          }
        }
      }
      std::printf(" medians of %d runs\n", options.runs);
      printFailures("streaming", stream);
      if (stream.any())
        std::printf("  streaming both tables: median %.3f s wall (walk %.3f s), peak RSS %.1f MB, %ld rows\n",
                    median(stream.wall), median(stream.call), median(stream.peak), stream.last.streamedRows);
      printOurs(ours, data, options.runs);
      if (ours.any() && stream.any())
        std::printf("PostgreSQL %s: ours / streaming = %.2fx time; our peak RSS %.1f MB\n", tag.c_str(),
                    median(ours.wall) / median(stream.wall), median(ours.peak));
    }
    Measured dropped = onServer({"DROP DATABASE IF EXISTS " + masterDb + " WITH (FORCE)",
                                 "DROP DATABASE IF EXISTS " + sourceDb + " WITH (FORCE)"});
    if (!dropped.report.ok) std::printf("  could not drop the databases: %s\n", dropped.report.error);
  }
}

// Keeps this process, and so every child and the commands they start, to the first count of the
// processors it may run on: a machine whose other processors are busy, reproduced.
bool keepToProcessors(int count) {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return false;
  cpu_set_t kept;
  CPU_ZERO(&kept);
  int taken = 0;
  for (int cpu = 0; cpu < CPU_SETSIZE && taken < count; ++cpu)
    if (CPU_ISSET(cpu, &allowed)) {
      CPU_SET(cpu, &kept);
      ++taken;
    }
  if (taken < count || sched_setaffinity(0, sizeof kept, &kept) != 0) {
    std::fprintf(stderr, "record_compare: cannot keep to %d processor(s): %d may be used\n", count, CPU_COUNT(&allowed));
    return false;
  }
  std::printf("kept to %d processor(s): both contenders share them\n", count);
  return true;
}

void usage() {
  std::fprintf(stderr,
               "usage: record_compare [--rows N] [--runs R] [--full-precision-reals] [--variant pk|plain|text|both|all]\n"
               "                      [--sqlite-only | --pg-only] [--timeout S] [--keep] [--hash-memory MB]\n"
               "                      [--cpus N]\n");
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int a = 1; a < argc; ++a) {
    const std::string option = argv[a];
    auto value = [&]() -> std::string {
      if (a + 1 >= argc) usage();
      return argv[++a];
    };
    if (option == "--rows") options.rows = std::atol(value().c_str());
    else if (option == "--runs") options.runs = std::atoi(value().c_str());
    else if (option == "--timeout") options.timeout = std::atoi(value().c_str());
    else if (option == "--full-precision-reals") options.fullPrecision = true;
    else if (option == "--sqlite-only") options.postgres = false;
    else if (option == "--pg-only") options.sqlite = false;
    else if (option == "--keep") options.keep = true;
    else if (option == "--hash-memory") options.hashMegabytes = std::atol(value().c_str());
    else if (option == "--cpus") options.cpus = std::atoi(value().c_str());
    else if (option == "--variant") {
      const std::string v = value();
      options.pk = v == "pk" || v == "both" || v == "all";
      options.plain = v == "plain" || v == "both" || v == "all";
      options.text = v == "text" || v == "all";
      if (!options.pk && !options.plain && !options.text) usage();
    } else usage();
  }
  if (options.rows < 1 || options.runs < 1 || options.cpus < 0 || (!options.sqlite && !options.postgres)) usage();
  if (options.cpus > 0 && !keepToProcessors(options.cpus)) return 1;

  // Set here, before the first child: every child is forked from this thread.
  if (options.hashMegabytes > 0) engine::setHashBytesKeptInMemory(static_cast<size_t>(options.hashMegabytes) << 20);
  const DataSet data(options.rows, options.fullPrecision);
  std::printf("record_compare: %s rows; the copy has %s deleted, %s changed in one column, %s new; "
              "reals %s; %d runs each\n",
              withCommas(options.rows).c_str(), withCommas(data.deleted).c_str(), withCommas(data.modified).c_str(),
              withCommas(data.inserted).c_str(), options.fullPrecision ? "at full precision" : "with two decimals",
              options.runs);
  // Our children start from this process's pages; sqldiff's child replaces them.
  std::printf("resident set of this process before the first child: %.1f MB\n", residentKiB() / 1024.0);
  if (options.sqlite) {
    char pattern[] = "/tmp/varsentix-record-compare-XXXXXX";
    if (mkdtemp(pattern) == nullptr) return 1;
    const std::string dir = pattern;
    sqliteHalf(options, data, dir);
    if (options.keep) std::printf("SQLite files kept in %s\n", dir.c_str());
    else std::filesystem::remove_all(dir);
  }
  if (options.postgres) postgresHalf(options, data);
  return 0;
}
