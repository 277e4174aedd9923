#pragma once
// Server settings from the test environment and SQL scripts run into test databases on the
// servers with the engine's own command-line client.
#include <map>
#include <string>

#include "support/Engines.h"

namespace varsentix::testing {

// The key=value pairs of the server's ODBC connection string from the environment
// (VARSENTIX_PG_ODBC / VARSENTIX_MARIADB_ODBC), keys in lower case.
std::map<std::string, std::string> serverSettings(Engine engine);
// The server's ODBC connection string with one key replaced (or added).
std::string serverStringWith(Engine engine, const std::string& key, const std::string& value);

// Runs a SQL script file into the test database with the engine's command-line client (psql,
// mariadb), leaving out the lines that drop, create or switch databases so that the script
// fills the fresh database. Raises std::runtime_error when the client fails.
void loadScript(TestDatabase& db, const std::string& scriptPath);

}  // namespace varsentix::testing
