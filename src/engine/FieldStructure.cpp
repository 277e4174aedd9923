#include <string>
#include <utility>

#include "engine/Engine.h"
#include "engine/PrimaryKeyOnce.h"
#include "engine/ResultRows.h"
#include "engine/Unbracketable.h"
#include "engine/VbFlow.h"
#include "varsentix/dbside/ModADOFields.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::engine {
namespace {

// The row count for a message written after a failure: 0 when even that cannot be read.
int32_t rowCountForMessage(clsDBManager& side) noexcept {
  try {
    return rowCount(side);
  } catch (...) {
    return 0;
  }
}

// Appends the row of column k. Every step is passed over when it fails; a failing name test
// still runs the body, which is how each table gets its trailing row at k = column count.
void addFieldRow(clsDBManager& manager, const std::string& tableName, int16_t fieldCount, int16_t k,
                 PrimaryKeyOnce& primaryKey) {
  vb::ResumeNext onError;
  auto row = vb::Ref<clsResultSet>::make();
  auto records = [&] { return manager.getDatabaseRecords(); };
  // Steps that would only raise "no such field" (the trailing row) or "no current record" (an
  // empty table) are passed over without raising: the same outcome, without the cost of an
  // exception per step on schemas of thousands of tables.
  bool hasField = true;
  bool hasRecord = true;
  onError([&] {
    auto recordSet = records();
    hasField = k < recordSet->getFields().Count();
    hasRecord = !recordSet->isBOF() && !recordSet->isEOF();
  });
  ifResumeNext(
      onError, [&] { return !records()->field(k).Name().empty(); },
      [&] {
        onError([&] { row->setDatabaseObjName(tableName); });
        if (hasField) onError([&] { row->setFieldName(records()->field(k).Name()); });
        onError([&] { row->setDataType(ModADO::getFieldTypeName(manager, k)); });
        onError([&] { row->setFieldCount(fieldCount); });
        onError([&] { row->setPrimaryKey(primaryKey.get()); });
        onError([&] { row->setShow(ModADO::isComparableFieldType(manager, k)); });
        if (hasField) onError([&] { row->setFieldDefinedSize(vb::CStr(records()->field(k).DefinedSize())); });
        if (hasField && hasRecord)
          onError([&] { row->setFieldActualSize(vb::CStr(records()->field(k).ActualSize())); });
        onError([&] { row->setIsDataValue(false); });
        onError([&] { row->setIsFieldDesc(true); });
        onError([&] { manager.getResults()->Add(row); });
      });
}

}  // namespace

clsDBManager& addTableFieldsToResults(clsDBManager& manager) {
  std::string query;
  int16_t k = 0;
  try {
    manager.setReturnSQLMessage("Successfully Completed");
    const std::string tableName = manager.getTableName();
    if (!canBeBracketed(tableName)) {
      reportTableNotCompared(manager, tableName);
      return manager;
    }
    const std::string fieldList = manager.getFieldList();
    query = !fieldList.empty() ? "select " + fieldList + " from [" + tableName + "]"
                               : "select * from [" + tableName + "]";
    manager.openDataBaseRecordsFromQuery(query);
    const int32_t columns = manager.getDatabaseRecords()->getFields().Count();
    const int16_t fieldCount = vb::CInt(static_cast<double>(columns));
    const int32_t n = manager.getDatabaseRecords()->getFields().Count();
    PrimaryKeyOnce primaryKey(manager, tableName);
    for (k = 0; k <= n; ++k) addFieldRow(manager, tableName, fieldCount, k, primaryKey);
    manager.closeRecordSet();
  } catch (...) {
    manager.setReturnSQLMessage(manager.getReturnSQLMessage() +
                                " #11 Error occurred while attempting to add table fields to the result set" +
                                " SQL used was " + query + " Main index = " + vb::CStr(k) + " ||");
  }
  return manager;
}

void openTableStructure(clsDBManager& manager) {
  try {
    manager.openDatabaseConnection();
    manager.setReturnMessage("Successfully Completed");
    manager.openDatabaseSchema();
    addTableToResults(manager);
    manager.setFieldCount(manager.getDatabaseRecords()->getFields().Count());
    manager.closeRecordSet();
  } catch (...) {
    manager.setReturnMessage(manager.getReturnMessage() + " #17 Error occurred while opeing the structure for " +
                             manager.getTableName() + " ||");
  }
}

void openTableStructureFromFieldList(clsDBManager& manager) {
  try {
    manager.setReturnMessage("Successfully Completed");
    addTableFieldsToResults(manager);
    manager.setFieldCount(manager.getDatabaseRecords()->getFields().Count());
    manager.closeRecordSet();
  } catch (...) {
    manager.setReturnMessage(manager.getReturnMessage() + " #18 Error occurred while opeing the structure for " +
                             manager.getTableName() + " using the folloiwng fieldList " +
                             manager.getFieldList() + " ||");
  }
}

clsDBManager& CompareFieldStructureReference(clsDBManager& A, clsDBManager& B, int32_t i0, int32_t j0) {
  int32_t i = i0;
  try {
    A.setReturnMessage("Successfully Completed");
    const int32_t bound = rowCount(A);
    for (i = i0; i <= bound; ++i) {
      bool matched = false;
      int32_t j = j0;
      for (j = j0; j <= rowCount(B); ++j) {
        const auto& a = rowOf(A, i);
        const auto& b = rowOf(B, j);
        if (a->getDatabaseObjName() != b->getDatabaseObjName()) continue;
        if (a->getFieldName() == b->getFieldName()) {
          matched = true;
          break;
        }
        a->setChangeType("2");
      }
      if (matched) {
        rowOf(A, i)->setChangeType("0");
        if (!rowOf(A, i)->getFieldName().empty()) compareResultDataTypes(A, B, i, j);
      }
      if (i == rowCount(A)) break;
    }
  } catch (...) {
    A.setReturnMessage(A.getReturnMessage() + " #9 Error in CompareFieldStructure current mainIndex " +
                       vb::CStr(i) + " Secondary index " + vb::CStr(rowCountForMessage(A)) + " ||");
  }
  return A;
}

clsDBManager& compareResultDataTypes(clsDBManager& A, clsDBManager& B, int32_t i, int32_t j) {
  const bool same = rowOf(A, i)->getDataType() == rowOf(B, j)->getDataType();
  rowOf(A, i)->setChangeType(same ? "0" : "3");
  return A;
}

}  // namespace varsentix::engine
