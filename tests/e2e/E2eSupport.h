#pragma once
// Helpers of the end-to-end tests: the Chinook sample and its changed copy on the servers, ODBC
// data sources for them, names compared across naming styles, and the varsentix program run as a
// user runs it.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "control/ControlTestSupport.h"
#include "support/Engines.h"
#include "support/TempDir.h"

namespace varsentix::testing::e2e {

// The Chinook sample loaded into two fresh databases of one server: the original from its own
// script (Chinook_PostgreSql.sql / Chinook_MySql.sql) and the changed copy, which also has
// examples/changes-postgresql.sql / changes-mysql.sql applied.
struct ChinookOnServer {
  std::unique_ptr<TestDatabase> original;
  std::unique_ptr<TestDatabase> changed;
  std::string originalName;  // the databases' names on the server
  std::string changedName;
};

// Loaded once per process and kept for every test of it; nullptr when the engine is not
// available (a test failure is recorded then under VARSENTIX_REQUIRE_ENGINES).
const ChinookOnServer* chinookOnServer(Engine engine);

// The name of the database a test database opens.
std::string databaseName(TestDatabase& db);

// A data source of the fixture that opens one database of the server through its driver,
// user name and password in the data source (password replaced when one is given).
FixtureDataSource serverDataSource(Engine engine, const std::string& dataSourceName,
                                   const std::string& database, const std::string& password = "");

// The connection string the control makes of the listed data source named name (fails the
// test when the control does not list it).
std::string connectionStringOfListedDataSource(const std::string& name);

// A name without letter case and underscores: "invoice_line" and "InvoiceLine" are one name.
std::string plainName(const std::string& name);

// The bundled sample pair made in dir: chinook.sqlite and chinook-changed.sqlite.
void makeSqliteSamplePair(const TempDir& dir);

const std::filesystem::path& sourceDir();
std::string readFile(const std::filesystem::path& path);

// The varsentix program run in dir with args (no terminal, no standard input); with a time limit
// timeout(1) ends it when it runs longer, and the status is then 124.
struct CliOutcome {
  int status = -1;
  std::string out;
  std::string err;
  double seconds = 0;
};
CliOutcome runCli(const TempDir& dir, const std::vector<std::string>& args, int timeLimitSeconds = 0);

}  // namespace varsentix::testing::e2e
