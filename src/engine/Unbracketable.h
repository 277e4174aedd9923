#pragma once
// Names the engine cannot write into a statement. Statements name tables and columns as
// "[" + name + "]"; a name holding ']' would end its brackets early and the rest of it would be
// read as part of the statement. Such a table or column is not sent to any engine: it is left out
// of the pass and the side's SQL message says so ("Database issues" of getErrorLogs), so that a
// host never takes it for a table or record without differences.
//
// The message: " #20 Not compared: " + what + " holds ']' and cannot be written in brackets ||",
// what being "the table T" or "the column C of the table T (its records)".
#include <string>
#include <utility>

#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado/Recordset.h"

namespace varsentix::engine {

inline bool canBeBracketed(const std::string& name) { return name.find(']') == std::string::npos; }

inline void reportTableNotCompared(clsDBManager& side, const std::string& table) {
  side.appendReturnSQLMessage(" #20 Not compared: the table " + table +
                              " holds ']' and cannot be written in brackets ||");
}

inline void reportColumnNotCompared(clsDBManager& side, const std::string& table, const std::string& column) {
  side.appendReturnSQLMessage(" #20 Not compared: the column " + column + " of the table " + table +
                              " (its records) holds ']' and cannot be written in brackets ||");
}

// Whether an open record set has a column whose name cannot be bracketed; column gets the first.
inline bool unbracketableColumn(const vb::Ref<ado::Recordset>& records, std::string& column) {
  if (!records || records->State() != ado::adStateOpen) return false;
  auto& fields = records->getFields();
  const int32_t count = fields.Count();
  for (int32_t i = 0; i < count; ++i) {
    std::string name = fields.Item(i).Name();
    if (!canBeBracketed(name)) {
      column = std::move(name);
      return true;
    }
  }
  return false;
}

// The " #20 Not compared: ... ||" entries of a side's message, in order (for an entry point
// whose own sides go when it ends, to pass them on to the control's).
inline std::string notComparedEntries(const std::string& message) {
  static const std::string tag = " #20 Not compared: ";
  static const std::string end = "cannot be written in brackets ||";
  std::string entries;
  for (size_t at = message.find(tag); at != std::string::npos; at = message.find(tag, at + tag.size())) {
    const size_t stop = message.find(end, at);
    if (stop == std::string::npos) break;
    entries += message.substr(at, stop + end.size() - at);
  }
  return entries;
}

}  // namespace varsentix::engine
