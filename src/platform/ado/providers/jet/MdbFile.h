#pragma once
// An Access file opened read-only through mdbtools' libmdb: its catalog and its rows.
// mdbtools.h stays inside MdbFile.cpp.
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/providers/jet/JetCatalog.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado::detail {

class MdbFile {
 public:
  // Opens path read-only (the file is never written). Raises ProviderError, naming the file,
  // when it is missing or unreadable, is not an Access database, or carries a database
  // password that databasePassword does not match (a file without one ignores it).
  static std::unique_ptr<MdbFile> open(const std::string& path, const std::string& databasePassword);
  ~MdbFile();
  MdbFile(const MdbFile&) = delete;
  MdbFile& operator=(const MdbFile&) = delete;

  const std::string& path() const;
  // "JET3", "JET4", "ACE12", "ACE14", "ACE15", "ACE16" or "ACE17".
  std::string formatName() const;

  // Tables (user and system; linked tables and saved queries are left out), their columns and
  // primary keys, and the enforced relationships. Raises ProviderError when the catalog
  // cannot be read.
  JetCatalog readCatalog();

  // Calls onRow once per row of table with one value per column, typed as valueOf describes:
  // Null for NULL; bool; int16 for Byte and Integer; int32; Currency; float; double; DateTime;
  // Bytes for Binary and OLE Object; UTF-8 text for Text and Memo; "{XXXXXXXX-XXXX-...}" for
  // Replication ID; Decimal for Numeric. The vector is reused between calls.
  void readRows(const JetTable& table,
                const std::function<void(const std::vector<vb::Variant>&)>& onRow);

 private:
  struct Impl;
  // Creation and modification dates of the tables, from MSysObjects.
  void readObjectDates(JetCatalog& catalog);
  // Enforced relationships, from MSysRelationships.
  void readRelationships(JetCatalog& catalog);
  explicit MdbFile(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

// A date as Access stores it (days since 1899-12-30, the fraction the time of day, counted
// away from day 0 for earlier dates) as a calendar timestamp rounded to the second.
vb::DateTime accessDateToDateTime(double value);

}  // namespace varsentix::ado::detail
