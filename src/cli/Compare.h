#pragma once
// The compare command: drives the control as a host form does and reads the differences back
// through its result queries.
#include <functional>
#include <string>

#include "cli/Inputs.h"
#include "cli/Report.h"

namespace varsentix {
class Varsenti;
}

namespace varsentix::cli {

struct CompareOptions {
  bool schemaOnly = false;     // tables and fields only
  bool objectsOnly = false;    // tables only
  bool showUnchanged = false;  // also list what is the same on both sides
  std::string table;           // only this table
  std::string fields;          // with table: only these fields, comma-separated
  // Told the name of each table before its records are compared (for progress).
  std::function<void(const std::string&)> onTable;
};

// Runs the comparison. Raises CliError when a side cannot be opened (the cause taken from the
// control's error log of that side).
Report runCompare(Varsenti& control, const ResolvedSide& original, const ResolvedSide& modified,
                  const CompareOptions& options);

// The cause of a failed connection or table-list read in a side's error log, or "" when the
// log shows none. The log's numbered texts are what the control recorded.
std::string connectionFailureIn(const std::string& errorLogs);

}  // namespace varsentix::cli
