// Whole-database structure compare of two SQLite schemas of many tables: beginFullDatabaseCompare
// through the control, median of several runs; then, for scale, the literal nested-scan passes
// (compareResultStructureReference) on a smaller pair of the same shape.
//
//   structure_compare [--tables N] [--columns C] [--runs R] [--reference-tables M]
//     defaults: 2,000 tables of 20 columns, 5 runs, reference on 100 tables (0 skips it).
// 5% of the tables exist on one side only and 5% of the columns differ (type changed, or the
// column exists on one side only).
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "engine/Engine.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"

using namespace varsentix;
using Clock = std::chrono::steady_clock;

namespace {

void exec(sqlite3* db, const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    std::fprintf(stderr, "%s: %s\n", sql.c_str(), error ? error : "?");
    std::exit(1);
  }
}

// side 0 = master, 1 = source. Table t is on one side only when t % 20 == 0 (alternating sides);
// column c of table t differs when (t * columns + c) % 20 == 7: its type on the source side is
// REAL instead of TEXT, or (every other one) its name carries a suffix there.
void makeSchema(const std::string& file, int side, int tables, int columns) {
  std::filesystem::remove(file);
  sqlite3* db = nullptr;
  if (sqlite3_open(file.c_str(), &db) != SQLITE_OK) std::exit(1);
  exec(db, "BEGIN");
  for (int t = 0; t < tables; ++t) {
    if (t % 20 == 0 && (t / 20) % 2 != side) continue;
    std::string sql = "CREATE TABLE tbl" + std::to_string(t) + " (id INTEGER PRIMARY KEY";
    for (int c = 1; c < columns; ++c) {
      const bool differs = (t * columns + c) % 20 == 7;
      std::string name = "col" + std::to_string(c);
      std::string type = "TEXT";
      if (differs && side == 1) {
        if (c % 2 == 0) type = "REAL"; else name += "_x";
      }
      sql += ", " + name + " " + type;
    }
    exec(db, sql + ")");
  }
  exec(db, "COMMIT");
  sqlite3_close(db);
}

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

}  // namespace

int main(int argc, char** argv) {
  int tables = 2000, columns = 20, runs = 5, referenceTables = 100;
  for (int a = 1; a + 1 < argc; a += 2) {
    const std::string option = argv[a];
    const int value = std::atoi(argv[a + 1]);
    if (option == "--tables") tables = value;
    else if (option == "--columns") columns = value;
    else if (option == "--runs") runs = value;
    else if (option == "--reference-tables") referenceTables = value;
  }
  const auto dir = std::filesystem::temp_directory_path() / ("structure_compare_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const std::string master = (dir / "master.db").string();
  const std::string source = (dir / "source.db").string();
  makeSchema(master, 0, tables, columns);
  makeSchema(source, 1, tables, columns);

  std::vector<double> times;
  int32_t masterRows = 0, sourceRows = 0;
  for (int run = 0; run < runs; ++run) {
    Varsenti control;
    const auto start = Clock::now();
    const bool ok = control.beginFullDatabaseCompare("Provider=SQLite;Data Source=" + master,
                                                     "Provider=SQLite;Data Source=" + source, false);
    times.push_back(seconds(start));
    masterRows = control.getMasterDataManager()->getResults()->Count();
    sourceRows = control.getSourceDataManager()->getResults()->Count();
    if (!ok) std::printf("run %d: compare returned false\n", run + 1);
  }
  std::printf("beginFullDatabaseCompare, %d tables x %d columns: median %.3f s of %d runs "
              "(result rows %d / %d with differences only)\n",
              tables, columns, median(times), runs, masterRows, sourceRows);

  if (referenceTables > 0) {
    makeSchema(master, 0, referenceTables, columns);
    makeSchema(source, 1, referenceTables, columns);
    for (int literal = 1; literal >= 0; --literal) {
      clsDBManager m, s;
      m.initializeValues();
      s.initializeValues();
      m.setConnectionString("Provider=SQLite;Data Source=" + master);
      s.setConnectionString("Provider=SQLite;Data Source=" + source);
      Varsenti control;
      engine::openAllTableStructures(m);
      engine::openAllTableStructures(s);
      const auto start = Clock::now();
      if (literal) {
        engine::compareResultStructureReference(m, s, control, "Reading Original");
        engine::compareResultStructureReference(s, m, control, "Reading Modified");
      } else {
        engine::compareResultStructure(m, s, control, "Reading Original");
        engine::compareResultStructure(s, m, control, "Reading Modified");
      }
      std::printf("%s table and field passes, %d tables x %d columns (%d + %d rows): %.3f s\n",
                  literal ? "literal" : "indexed", referenceTables, columns, m.getResults()->Count(),
                  s.getResults()->Count(), seconds(start));
    }
  }
  std::filesystem::remove_all(dir);
  return 0;
}
