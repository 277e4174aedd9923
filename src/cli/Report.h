#pragma once
// What the command line reports: the differences of two databases, read from the control's
// result queries, independent of how they are printed.
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace varsentix::cli {

enum class SideName { Original, Modified };

struct SideInfo {
  std::string label;       // what the user gave: a path, DSN=..., a connection string (password hidden)
  std::string errorLogs;   // the control's error log of the side after the last compare
};

struct TableDifference {
  std::string table;
  SideName side;
  int16_t changeType = 0;
  std::string tableType;
  std::string primaryKey;
};

struct FieldDifference {
  std::string table;
  std::string field;
  SideName side;
  int16_t changeType = 0;
  std::string dataType;
  std::string definedSize;
  // The other side's type, for "Different Datatype".
  std::string otherDataType;
};

struct RecordDifference {
  std::string table;
  SideName side;
  int32_t recordNumber = 0;
  int16_t changeType = 0;
  struct Value {
    std::string field;
    std::optional<std::string> text;  // nullopt for a null value
    int32_t adoType = 0;              // the field's ADO data type code
  };
  std::vector<Value> values;
};

struct Report {
  SideInfo original;
  SideInfo modified;
  bool structureOnly = false;
  std::vector<TableDifference> tables;
  std::vector<FieldDifference> fields;
  std::vector<RecordDifference> records;
  // Tables whose records were compared.
  std::vector<std::string> comparedTables;
  // What could not be compared (a table or column whose name cannot be bracketed), in the
  // control's words, once each: the comparison is incomplete (exit status 2).
  std::vector<std::string> problems;

  bool hasDifferences() const;
};

const char* sideText(SideName side);  // "Original" / "Modified"

// Whether values of an ADO data type are numbers (written without quotes).
bool isNumericType(int32_t adoType);

}  // namespace varsentix::cli
