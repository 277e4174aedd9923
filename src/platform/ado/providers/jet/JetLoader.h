#pragma once
// Reads a whole Access file into a new in-memory SQLite database: one table per Access table
// (user and system tables), columns declared with the types of JetTypes.h, every row copied.
// Keys are not declared in SQLite: the catalog carries them.
// The loaded database is read-only (PRAGMA query_only) and the Access file is never written.
#include <memory>
#include <string>

#include "platform/ado/providers/jet/JetCatalog.h"

struct sqlite3;

namespace varsentix::ado::detail {

struct SqliteCloser {
  void operator()(sqlite3* db) const;
};
using SqliteHandle = std::unique_ptr<sqlite3, SqliteCloser>;

struct LoadedAccessFile {
  std::string path;
  std::string format;  // "JET3", "JET4", "ACE12", ...
  JetCatalog catalog;  // the tables actually loaded, with keys and relationships
  SqliteHandle db;
};

// Loads the file. Raises ProviderError naming the file when it is missing, is not an Access
// database, carries a database password other than databasePassword, or cannot be read.
// A system table that libmdb cannot read is left out; a user table that fails fails the load.
LoadedAccessFile loadAccessFile(const std::string& path, const std::string& databasePassword);

// The text a date/time is stored as in the loaded database: "YYYY-MM-DD HH:MM:SS" with a
// four-digit year, so that text order is time order for every year Access holds (100-9999).
std::string storedDateText(const vb::DateTime& value);

}  // namespace varsentix::ado::detail
