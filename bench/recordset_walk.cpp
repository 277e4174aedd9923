// Walks a large table through a Recordset, reading every field of every row, and the same
// table with a bare sqlite3_step loop in the same run; prints rows/s, the ratio and the peak
// resident set size (VmHWM).
//
//   recordset_walk [--rows N]                    SQLite: a table of N rows (default 1,000,000)
//                                                made in a temporary folder
//   recordset_walk --database <file>              the same on a file made by an earlier run
//                                                (made there when it does not exist)
//   recordset_walk --connection "<ADO string>" --table <name>
//                                                the same Recordset walk over an existing table
//                                                on any provider (e.g. PostgreSQL through
//                                                Provider=MSDASQL;Driver={...};...)
//   recordset_walk --postgresql "<ODBC string>" [--rows N]
//                                                PostgreSQL through the ODBC provider: a fresh
//                                                database with a table of N rows (default
//                                                1,000,000) made on the server, walked, dropped.
//                                                The ODBC string is the server's, without
//                                                Database (scripts/test-servers.sh prints it as
//                                                VARSENTIX_PG_ODBC).
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "varsentix/platform/ado.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using Clock = std::chrono::steady_clock;

namespace {

long peakRssKiB() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmHWM:", 0) == 0) return std::atol(line.c_str() + 6);
  return -1;
}

double seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

// CPU time of the process: the machine may be shared, and waiting for a core is no cost of
// the code measured.
double cpuSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

void check(int rc, sqlite3* db, const char* what) {
  if (rc != SQLITE_OK && rc != SQLITE_DONE && rc != SQLITE_ROW) {
    std::fprintf(stderr, "%s: %s\n", what, sqlite3_errmsg(db));
    std::exit(1);
  }
}

// A table of n rows: an integer key, short and longer text, a decimal, a double, a timestamp
// and a boolean.
void makeTable(const std::string& path, long n) {
  sqlite3* db = nullptr;
  check(sqlite3_open(path.c_str(), &db), db, "open");
  check(sqlite3_exec(db,
                     "CREATE TABLE walk (id INTEGER PRIMARY KEY, name VARCHAR(40), "
                     "note VARCHAR(200), amount NUMERIC(10,2), ratio DOUBLE, at TIMESTAMP, "
                     "flag BOOLEAN); BEGIN",
                     nullptr, nullptr, nullptr),
        db, "create");
  sqlite3_stmt* insert = nullptr;
  check(sqlite3_prepare_v2(db, "INSERT INTO walk VALUES (?, ?, ?, ?, ?, ?, ?)", -1, &insert, nullptr),
        db, "prepare");
  char name[64], note[256], at[32];
  for (long i = 1; i <= n; ++i) {
    std::snprintf(name, sizeof name, "name %ld", i);
    std::snprintf(note, sizeof note, "a note of some length for row number %ld, with more words", i);
    std::snprintf(at, sizeof at, "2024-%02ld-%02ld %02ld:%02ld:%02ld", i % 12 + 1, i % 28 + 1,
                  i % 24, i % 60, (i * 7) % 60);
    sqlite3_bind_int64(insert, 1, i);
    sqlite3_bind_text(insert, 2, name, -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(insert, 3, note, -1, SQLITE_TRANSIENT);
    sqlite3_bind_double(insert, 4, static_cast<double>(i % 100000) / 100.0);
    sqlite3_bind_double(insert, 5, 1.0 / static_cast<double>(i));
    sqlite3_bind_text(insert, 6, at, -1, SQLITE_TRANSIENT);
    sqlite3_bind_int(insert, 7, static_cast<int>(i % 2));
    check(sqlite3_step(insert), db, "insert");
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  check(sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr), db, "commit");
  sqlite3_close(db);
}

// The bare loop: every column read with the sqlite3_column_* call that suits it.
long bareWalk(const std::string& path, size_t& checksum) {
  sqlite3* db = nullptr;
  // The same open flags as the provider's, so that both pay the same locking.
  check(sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr),
        db, "open");
  sqlite3_stmt* stmt = nullptr;
  check(sqlite3_prepare_v2(db, "SELECT * FROM walk", -1, &stmt, nullptr), db, "prepare");
  long rows = 0;
  int columns = sqlite3_column_count(stmt);
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    ++rows;
    for (int i = 0; i < columns; ++i) {
      switch (sqlite3_column_type(stmt, i)) {
        case SQLITE_INTEGER: checksum += static_cast<size_t>(sqlite3_column_int64(stmt, i)); break;
        case SQLITE_FLOAT: checksum += static_cast<size_t>(sqlite3_column_double(stmt, i)); break;
        case SQLITE_NULL: break;
        default: {
          const unsigned char* text = sqlite3_column_text(stmt, i);
          checksum += static_cast<size_t>(sqlite3_column_bytes(stmt, i)) + text[0];
        }
      }
    }
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);
  return rows;
}

// The same walk through the record set: every field's Value read on every row.
long recordsetWalk(const std::string& connectionString, const std::string& table, size_t& checksum) {
  auto cn = vb::Ref<ado::Connection>::make();
  cn->Open(connectionString);
  auto rs = vb::Ref<ado::Recordset>::make();
  rs->Open("select * from [" + table + "]", cn, ado::adOpenForwardOnly, ado::adLockReadOnly,
           ado::adCmdText);
  long rows = 0;
  int32_t columns = rs->getFields().Count();
  while (!rs->isEOF()) {
    ++rows;
    for (int32_t i = 0; i < columns; ++i) {
      vb::Variant value = rs->field(i).Value();
      checksum += value.isNull() ? 0 : 1;  // touched as lightly as the bare loop touches its values
    }
    rs->MoveNext();
  }
  rs->Close();
  cn->Close();
  return rows;
}

void report(const char* label, long rows, double cpu, double wall);

// The walk over PostgreSQL: a database of its own, the same columns as the SQLite table made
// by generate_series on the server.
int postgresqlWalk(const std::string& serverString, long n) {
  const std::string database = "vx_bench_" + std::to_string(getpid());
  auto admin = vb::Ref<ado::Connection>::make();
  admin->Open("Provider=MSDASQL;" + serverString + ";Database=postgres");
  admin->Execute("CREATE DATABASE " + database);
  int status = 0;
  try {
    const std::string connection = "Provider=MSDASQL;" + serverString + ";Database=" + database;
    auto cn = vb::Ref<ado::Connection>::make();
    cn->Open(connection);
    auto start = Clock::now();
    cn->Execute(
        "CREATE TABLE walk (id INTEGER PRIMARY KEY, name VARCHAR(40), note VARCHAR(200), "
        "amount NUMERIC(10,2), ratio DOUBLE PRECISION, at TIMESTAMP, flag BOOLEAN)");
    cn->Execute(
        "INSERT INTO walk SELECT g, 'name ' || g, 'a note of some length for row number ' || g || "
        "', with more words', (g % 100000) / 100.0, 1.0 / g, TIMESTAMP '2024-01-01 00:00:00' + "
        "g * INTERVAL '1 second', g % 2 = 1 FROM generate_series(1, " + std::to_string(n) + ") g");
    cn->Close();
    std::printf("made a PostgreSQL table of %ld rows in %.2f s\n", n, seconds(start));
    std::printf("peak RSS after making the table: %.1f MB\n", peakRssKiB() / 1024.0);
    size_t checksum = 0;
    start = Clock::now();
    double cpu = cpuSeconds();
    long rows = recordsetWalk(connection, "walk", checksum);
    report("Recordset walk over PostgreSQL", rows, cpuSeconds() - cpu, seconds(start));
    std::printf("  = %.0f rows/s by the wall clock (the server works in the same time)\n",
                static_cast<double>(rows) / seconds(start));
    std::printf("peak RSS (VmHWM): %.1f MB\n", peakRssKiB() / 1024.0);
    std::printf("(checksum %zu)\n", checksum);
  } catch (const vb::VBError& e) {
    std::fprintf(stderr, "error %d: %s\n", e.number(), e.description().c_str());
    status = 1;
  }
  admin->Execute("DROP DATABASE IF EXISTS " + database + " WITH (FORCE)");
  return status;
}

void report(const char* label, long rows, double cpu, double wall) {
  std::printf("%-34s %10ld rows in %7.3f s CPU (%7.3f s wall) = %10.0f rows/s\n", label, rows,
              cpu, wall, static_cast<double>(rows) / cpu);
}

}  // namespace

int main(int argc, char** argv) {
  long n = 1000000;
  std::string connection, table = "walk", existing, postgresql;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--rows") == 0) n = std::atol(argv[i + 1]);
    else if (std::strcmp(argv[i], "--connection") == 0) connection = argv[i + 1];
    else if (std::strcmp(argv[i], "--table") == 0) table = argv[i + 1];
    else if (std::strcmp(argv[i], "--database") == 0) existing = argv[i + 1];
    else if (std::strcmp(argv[i], "--postgresql") == 0) postgresql = argv[i + 1];
  }
  try {
    size_t checksum = 0;
    if (!postgresql.empty()) return postgresqlWalk(postgresql, n);
    if (!connection.empty()) {  // any provider: the record-set walk alone
      auto start = Clock::now();
      double cpu = cpuSeconds();
      long rows = recordsetWalk(connection, table, checksum);
      report("Recordset walk", rows, cpuSeconds() - cpu, seconds(start));
      std::printf("peak RSS (VmHWM): %.1f MB\n", peakRssKiB() / 1024.0);
      return 0;
    }
    char pattern[] = "/tmp/varsentix-bench-XXXXXX";
    if (mkdtemp(pattern) == nullptr) return 1;
    std::filesystem::path dir = pattern;
    std::string path = existing.empty() ? (dir / "walk.sqlite").string() : existing;
    auto start = Clock::now();
    if (existing.empty() || !std::filesystem::exists(existing)) makeTable(path, n);
    std::printf("made a table of %ld rows in %.2f s (%.1f MB file)\n", n, seconds(start),
                std::filesystem::file_size(path) / 1048576.0);
    std::printf("peak RSS after making the table: %.1f MB\n", peakRssKiB() / 1024.0);

    // Each walk runs three times, alternating, and the fastest run counts: the first run of
    // either may pay for a cold page cache.
    double bare = 1e30, walked = 1e30, bareWall = 1e30, walkedWall = 1e30;
    long bareRows = 0, rsRows = 0;
    for (int round = 0; round < 3; ++round) {
      start = Clock::now();
      double cpu = cpuSeconds();
      bareRows = bareWalk(path, checksum);
      bare = std::min(bare, cpuSeconds() - cpu);
      bareWall = std::min(bareWall, seconds(start));
      start = Clock::now();
      cpu = cpuSeconds();
      rsRows = recordsetWalk("Provider=SQLite;Data Source=" + path, "walk", checksum);
      walked = std::min(walked, cpuSeconds() - cpu);
      walkedWall = std::min(walkedWall, seconds(start));
    }
    report("bare sqlite3_step loop", bareRows, bare, bareWall);
    report("Recordset walk (every Field.Value)", rsRows, walked, walkedWall);
    std::printf("ratio Recordset / bare loop: %.2fx\n", walked / bare);
    std::printf("peak RSS (VmHWM): %.1f MB\n", peakRssKiB() / 1024.0);
    std::printf("(checksum %zu)\n", checksum);
    std::filesystem::remove_all(dir);
  } catch (const vb::VBError& e) {
    std::fprintf(stderr, "error %d: %s\n", e.number(), e.description().c_str());
    return 1;
  }
  return 0;
}
