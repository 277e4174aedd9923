#pragma once
// The engines integration tests run against, and fresh databases on them.
//
// The test script (scripts/test.sh) starts PostgreSQL and MariaDB on loopback and exports:
//   VARSENTIX_PG_ODBC     ODBC connection string (Driver={...};Server=127.0.0.1;Port=...;
//                         Uid=...;Pwd=...) of a role that may CREATE DATABASE
//   VARSENTIX_MARIADB_ODBC the same for MariaDB
//   ODBCSYSINI            a temporary folder whose odbcinst.ini registers the drivers
//                         "SQLite3", "PostgreSQL Unicode" and "MariaDB Unicode"
//   VARSENTIX_REQUIRE_ENGINES=1 (set when CI is set): a missing engine fails the test instead
//                         of skipping it.
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace varsentix::testing {

enum class Engine { SQLite, SQLiteOdbc, PostgreSQL, MariaDB };

// "SQLite", "SQLiteOdbc", "PostgreSQL", "MariaDB": for test names.
std::string engineName(Engine engine);
std::vector<Engine> allEngines();

// A fresh, empty database on one engine, dropped (or deleted) when the object goes.
class TestDatabase {
 public:
  virtual ~TestDatabase() = default;
  virtual Engine engine() const = 0;
  // The ADO connection string that opens it: "Provider=SQLite;Data Source=<file>" or
  // "Provider=MSDASQL;Driver={...};Server=...;Database=<fresh>;..." for the ODBC engines.
  virtual std::string connectionString() const = 0;
  // Runs SQL in the engine's own dialect, outside the record-set layer (for set-up and checks).
  virtual void exec(const std::string& nativeSql) = 0;
  // The first column of the first row of a native query, as text ("" for NULL or no row).
  virtual std::string scalar(const std::string& nativeSql) = 0;
};

// Creates a fresh database, or returns nullptr when the engine is not available; with
// VARSENTIX_REQUIRE_ENGINES set it also records a test failure (ADD_FAILURE). Use the macro
// VARSENTIX_TEST_DATABASE(db, engine), which skips the test when nullptr comes back.
std::unique_ptr<TestDatabase> makeTestDatabase(Engine engine);

// Whether an engine can be used in this run (servers started, drivers registered).
bool engineAvailable(Engine engine);

}  // namespace varsentix::testing

// For typed/parameterised suites over engines:
//   INSTANTIATE_TEST_SUITE_P(Engines, MySuite, ::testing::ValuesIn(allEngines()), EngineParamName);
namespace varsentix::testing {
struct EngineParamName {
  template <class ParamInfo>
  std::string operator()(const ParamInfo& info) const {
    return engineName(info.param);
  }
};

}  // namespace varsentix::testing

// Declares `var` as a fresh database on `engine`, or skips the test (fails it under
// VARSENTIX_REQUIRE_ENGINES) when the engine is not available.
#define VARSENTIX_TEST_DATABASE(var, engine)                                              \
  auto var = ::varsentix::testing::makeTestDatabase(engine);                              \
  if (!var) GTEST_SKIP() << "engine not available: " << ::varsentix::testing::engineName(engine)

