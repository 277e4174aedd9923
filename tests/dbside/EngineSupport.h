#pragma once
// Engine-specific pieces of the database-side tests: failing connection strings and a way to
// break an open session from outside.
#include <regex>
#include <string>

#include "support/Engines.h"

namespace varsentix::testing {

// The value of key in a connection string ("" when absent); keys compared as written.
inline std::string connectionValue(const std::string& connectionString, const std::string& key) {
  std::smatch match;
  const std::regex pattern("(^|;)\\s*" + key + "\\s*=\\s*([^;]*)", std::regex::icase);
  return std::regex_search(connectionString, match, pattern) ? match[2].str() : std::string();
}

// The connection string with key's value replaced (key added when absent).
inline std::string withConnectionValue(const std::string& connectionString, const std::string& key,
                                       const std::string& value) {
  const std::regex pattern("(^|;)(\\s*" + key + "\\s*=)[^;]*", std::regex::icase);
  if (std::regex_search(connectionString, pattern)) {
    return std::regex_replace(connectionString, pattern, "$1$2" + value);
  }
  return connectionString + ";" + key + "=" + value;
}

// The file of a file-based test database (SQLite: Data Source, SQLite ODBC: Database).
inline std::string databaseFile(const TestDatabase& db) {
  const std::string cs = db.connectionString();
  if (db.engine() == Engine::SQLite) return connectionValue(cs, "Data Source");
  return connectionValue(cs, "Database");
}

// A connection string on this engine that cannot open: a file in a folder that does not exist
// for the file engines, a database that does not exist for the servers.
inline std::string unopenableConnectionString(const TestDatabase& db) {
  const std::string cs = db.connectionString();
  switch (db.engine()) {
    case Engine::SQLite:
      return withConnectionValue(cs, "Data Source", "/nonexistent-varsentix-folder/missing.db");
    case Engine::SQLiteOdbc:
      return withConnectionValue(cs, "Database", "/nonexistent-varsentix-folder/missing.db");
    case Engine::PostgreSQL:
    case Engine::MariaDB:
      return withConnectionValue(cs, "Database", "varsentix_no_such_database");
  }
  return cs;
}

// A data source name that no odbc.ini defines.
inline std::string unknownDsnConnectionString() {
  return "Provider=MSDASQL;Data Source=VarsentixNoSuchDataSource";
}

// The native query that tells a server session its own id, and the native statement that ends
// a session with that id from another session. Empty for the file engines.
inline std::string sessionIdQuery(Engine engine) {
  if (engine == Engine::PostgreSQL) return "SELECT pg_backend_pid()";
  if (engine == Engine::MariaDB) return "SELECT CONNECTION_ID()";
  return "";
}
inline std::string endSessionStatement(Engine engine, const std::string& id) {
  if (engine == Engine::PostgreSQL) return "SELECT pg_terminate_backend(" + id + ")";
  if (engine == Engine::MariaDB) return "KILL " + id;
  return "";
}

}  // namespace varsentix::testing
