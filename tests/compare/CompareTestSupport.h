#pragma once
// Helpers for tests that drive the public control as a host does.
#include <gtest/gtest.h>

#include <fstream>

#include <string>
#include <vector>

#include "support/Engines.h"
#include "support/TempDir.h"
#include "varsentix/varsentix.h"

namespace varsentix::testing {

// A side prepared as a host prepares one for the record compares: connected, with its table
// and field list.
inline vb::Ref<clsDBManager> preparedSide(const std::string& connectionString, const std::string& table,
                                          const std::string& fieldList = "*") {
  auto side = vb::Ref<clsDBManager>::make();
  side->initializeValues();
  side->setConnectionString(connectionString);
  side->openDatabaseConnection();
  side->setTableName(table);
  side->setFieldList(fieldList);
  return side;
}

// The record number of the first value row of a side whose field holds value (0 when none).
inline int32_t recordWith(Varsenti& control, bool isMaster, const std::string& field, const std::string& value) {
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster) && control.getResultFieldName(i, isMaster) == field &&
        control.getResultFieldValue(i, isMaster) == value)
      return control.getResultSet(i, isMaster)->getRecordNumber();
  return 0;
}

inline vb::Ref<clsResultSet> row(const std::string& table, const std::string& field, const std::string& value,
                                 int32_t recordNumber, const std::string& changeType = "5",
                                 const std::string& primaryKey = "") {
  auto r = vb::Ref<clsResultSet>::make();
  r->setDatabaseObjName(table);
  r->setFieldName(field);
  r->setDataValue(value);
  r->setRecordNumber(recordNumber);
  r->setChangeType(changeType);
  r->setIsDataValue(true);
  r->setIsFieldDesc(true);
  r->setPrimaryKey(primaryKey);
  return r;
}

inline Varsenti::Results collection(const std::vector<vb::Ref<clsResultSet>>& rows) {
  auto c = Varsenti::Results::make();
  for (const auto& r : rows) c->Add(r);
  return c;
}

}  // namespace varsentix::testing
