#pragma once
#include <filesystem>
#include <fstream>
#include <sstream>

#include "compare/CompareTestSupport.h"

namespace varsentix::testing {

inline std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

// The rows of a table as "v1|v2|..." lines in key order, read natively (outside the library).
inline std::string tableRows(TestDatabase& db, const std::string& table, const std::string& columns,
                             const std::string& key) {
  std::string separator = db.engine() == Engine::MariaDB ? "CONCAT_WS('|', " : "";
  std::string expression;
  if (db.engine() == Engine::MariaDB) {
    expression = "GROUP_CONCAT(CONCAT_WS('|', " + columns + ") ORDER BY " + key + " SEPARATOR ';')";
  } else if (db.engine() == Engine::PostgreSQL) {
    expression = "string_agg(concat_ws('|', " + columns + "), ';' ORDER BY " + key + ")";
  } else {
    std::string concatenated;
    size_t start = 0;
    while (start <= columns.size()) {
      size_t comma = columns.find(',', start);
      if (comma == std::string::npos) comma = columns.size();
      std::string column = columns.substr(start, comma - start);
      concatenated += (concatenated.empty() ? "" : " || '|' || ") + ("COALESCE(" + column + ", '')");
      start = comma + 1;
    }
    expression = "group_concat(row_text, ';') FROM (SELECT " + concatenated + " AS row_text FROM " + table +
                 " ORDER BY " + key + ")";
    return db.scalar("SELECT " + expression);
  }
  (void)separator;
  return db.scalar("SELECT " + expression + " FROM " + table);
}

}  // namespace varsentix::testing
