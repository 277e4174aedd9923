#pragma once
// Helpers of the ODBC provider's tests: the ODBC engines and per-engine DDL.
#include <map>
#include <string>
#include <vector>

#include "support/Engines.h"
#include "support/ServerScripts.h"

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

// Server settings and script loading come from support/ServerScripts.h.

}  // namespace varsentix::testing::odbc
