#pragma once
// Helpers shared by the database-side tests.
#include <functional>
#include <optional>
#include <string>

#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {

// The test's way to the manager's private state that no public setter reaches (tableCatalog is
// never stored by setTableCatalog).
struct clsDBManagerTestAccess {
  static void storeTableCatalog(clsDBManager& manager, const std::string& text) { manager.tableCatalog_ = text; }
  static std::string formatResultSetValue(const clsDBManager& manager, const clsResultSet& row) {
    return manager.formatResultSetValue(row);
  }
};

namespace testing {

// The VBError a call raises, or nullopt when it completes.
inline std::optional<vb::VBError> failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const vb::VBError& e) {
    return e;
  }
  return std::nullopt;
}

// number + " " + description of a failure, as the messages write it.
inline std::string numberAndDescription(const vb::VBError& e) {
  return std::to_string(e.number()) + " " + e.description();
}

// A difference row of a record comparison.
inline vb::Ref<clsResultSet> valueRow(const std::string& table, int32_t recordNumber, const std::string& field,
                                      const std::string& dataType, const std::string& value) {
  auto row = vb::Ref<clsResultSet>::make();
  row->setDatabaseObjName(table);
  row->setRecordNumber(recordNumber);
  row->setFieldName(field);
  row->setDataType(dataType);
  row->setDataValue(value);
  return row;
}

}  // namespace testing
}  // namespace varsentix
