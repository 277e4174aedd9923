#include "engine/Engine.h"
#include "engine/ResultRows.h"
#include "engine/ModADORecordHelpers.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::engine {
namespace {

void appendReturnMessage(clsDBManager& side, const std::string& text) {
  side.setReturnMessage(side.getReturnMessage() + text);
}

}  // namespace

void openAllTableStructures(clsDBManager& manager) {
  try {
    manager.setReturnMessage("Successfully Completed");
    manager.openDatabaseConnection();
    manager.openDatabaseSchema();
    vb::Ref<ado::Recordset> schema = manager.getDatabaseSchema();
    while (!schema->isEOF()) {
      manager.setTableName(schema->field("TABLE_NAME").Value().toText());
      manager.setTableDataType(schema->field("TABLE_TYPE").Value().toText());
      // The schema and catalog are read and compared with Null; that comparison is itself Null,
      // never true, so neither is ever stored.
      (void)schema->field("TABLE_SCHEMA").Value();
      (void)schema->field("TABLE_CATALOG").Value();
      addTableToResults(manager);
      schema->MoveNext();
    }
    manager.closeRecordSet();
  } catch (...) {
    appendReturnMessage(manager, " #19 Error occurred while opeing the structure for all of the tables");
    appendReturnMessage(manager, " Error occurred while attempting to open " + manager.getTableName() + " ||");
  }
}

clsDBManager& addTableToResults(clsDBManager& manager) {
  auto row = vb::Ref<clsResultSet>::make();
  const std::string tableType = manager.getTableDataType();
  if (tableType == "ACCESS TABLE" || tableType == "SYSTEM TABLE") return manager;
  if (tableType == "TABLE" || manager.getShowViews()) {
    const std::string tableName = manager.getTableName();
    row->setDatabaseObjName(tableName);
    row->setDataType(tableType);
    row->setPrimaryKey(manager.getAccessPrimaryKey(tableName));
    ModADO::fillForeignKeyDetails(row, manager);
    manager.getResults()->Add(row);
    if (!manager.getListDBObjectsOnly()) addTableFieldsToResults(manager);
  }
  return manager;
}

clsDBManager& compareResultStructureReference(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                              const std::string& readingFrom) {
  int32_t i = 0;
  int32_t j = 0;
  try {
    A.setReturnMessage("Successfully Completed");
    int16_t counter = 0;
    const int32_t bound = rowCount(A);
    for (i = 1; i <= bound; ++i) {
      for (j = 1; j <= rowCount(B); ++j) {
        if (rowOf(A, i)->getDatabaseObjName() == rowOf(B, j)->getDatabaseObjName()) {
          rowOf(A, i)->setChangeType("0");
          CompareFieldStructureReference(A, B, i, j);
          break;
        }
        rowOf(A, i)->setChangeType("1");
      }
      if (counter == 50) {
        int32_t position = i;
        int32_t maximum = rowCount(A);
        std::string text = readingFrom;
        control.setCurrentProgressCount(position, maximum, text);
        counter = 0;
      }
      ++counter;
    }
  } catch (...) {
    appendReturnMessage(A, " #10 Error occured while comparing result structure. Main index = " +
                               vb::CStr(i) + " Secondary index = " + vb::CStr(j) + " ||");
  }
  return A;
}

void removeUnchangedResults(clsDBManager& manager) {
  auto results = manager.getResults();
  const int32_t n = results->Count();
  for (int32_t i = 1; i <= n; ++i) {
    if (i <= results->Count() && results->Item(i)->getChangeType() == "0") {
      results->Remove(i);
      --i;  // the row that moved into position i is examined next
    }
  }
}

}  // namespace varsentix::engine
