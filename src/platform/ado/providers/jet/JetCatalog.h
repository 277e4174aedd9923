#pragma once
// What the Access provider knows of an Access file's structure: its tables with their columns
// and primary keys, and the relationships that serve as foreign keys. Filled by MdbFile from the
// file's own catalog (MSysObjects, the table definitions and MSysRelationships).
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado::detail {

// Access column types with the numbers the file format stores.
enum class AccessType : uint8_t {
  Unknown = 0,
  Boolean = 0x01,
  Byte = 0x02,
  Integer = 0x03,
  LongInteger = 0x04,
  Currency = 0x05,
  Single = 0x06,
  Double = 0x07,
  DateTime = 0x08,
  Binary = 0x09,
  Text = 0x0a,
  OleObject = 0x0b,
  Memo = 0x0c,
  ReplicationId = 0x0f,
  Numeric = 0x10,
  Complex = 0x12,
};

struct JetColumn {
  std::string name;
  AccessType type = AccessType::Unknown;
  uint8_t storedType = 0;   // the raw type number, kept for types this provider does not know
  int32_t size = 0;         // characters for Text, bytes for Binary, 0 for long values
  uint8_t precision = 0;    // Numeric only
  uint8_t scale = 0;        // Numeric only
  bool autoNumber = false;  // Long Integer AutoNumber or Replication ID AutoNumber
};

// TABLE_TYPE of the tables schema rowset.
enum class JetTableKind : uint8_t {
  Table,        // "TABLE": a user table
  SystemTable,  // "SYSTEM TABLE": the engine's own tables (MSysObjects, MSysACEs, ...)
  AccessTable,  // "ACCESS TABLE": tables Access keeps for itself (MSysAccessObjects, ...)
};

const char* tableTypeText(JetTableKind kind);

struct JetTable {
  std::string name;
  JetTableKind kind = JetTableKind::Table;
  std::vector<JetColumn> columns;
  std::string primaryKeyName;           // the primary-key index ("PrimaryKey"), empty when none
  std::vector<std::string> primaryKey;  // its columns in key order
  vb::Variant dateCreated;              // from MSysObjects; Null when unknown
  vb::Variant dateModified;
};

// One enforced relationship: a foreign key from fkTable to pkTable.
struct JetRelationship {
  std::string name;                  // szRelationship
  std::string fkTable;               // szObject
  std::string pkTable;               // szReferencedObject
  std::vector<std::pair<std::string, std::string>> columns;  // (fk column, pk column) by icolumn
  bool cascadeUpdates = false;
  bool cascadeDeletes = false;
};

struct JetCatalog {
  std::vector<JetTable> tables;  // user and system tables, in catalog order
  std::vector<JetRelationship> relationships;

  // The table of that name (Access names are case-insensitive), or nullptr.
  const JetTable* findTable(const std::string& name) const;
};

// Case-insensitive equality of two names, as Access compares them (ASCII letters folded).
bool sameName(const std::string& a, const std::string& b);

}  // namespace varsentix::ado::detail
