#pragma once
// Helpers of the ODBC provider's tests: the ODBC engines, per-engine DDL, server settings from
// the test environment and loading a SQL script into a test database with the engine's client.
#include <map>
#include <string>
#include <vector>

#include "support/Engines.h"

namespace varsentix::testing::odbc {

// The engines reached through the ODBC provider.
inline std::vector<Engine> odbcEngines() {
  return {Engine::SQLiteOdbc, Engine::PostgreSQL, Engine::MariaDB};
}

// Picks the text for the engine.
inline std::string pick(Engine engine, const std::string& sqlite, const std::string& pg,
                        const std::string& maria) {
  switch (engine) {
    case Engine::PostgreSQL: return pg;
    case Engine::MariaDB: return maria;
    default: return sqlite;
  }
}

// The key=value pairs of the server's ODBC connection string from the environment
// (VARSENTIX_PG_ODBC / VARSENTIX_MARIADB_ODBC), keys in lower case.
std::map<std::string, std::string> serverSettings(Engine engine);
// The server's ODBC connection string with one key replaced (or added).
std::string serverStringWith(Engine engine, const std::string& key, const std::string& value);

// Runs a SQL script file into the test database with the engine's command-line client (psql,
// mariadb), leaving out the lines that drop, create or switch databases so that the script
// fills the fresh database. Raises std::runtime_error when the client fails.
void loadScript(TestDatabase& db, const std::string& scriptPath);

}  // namespace varsentix::testing::odbc
