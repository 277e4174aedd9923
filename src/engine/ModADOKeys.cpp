#include "varsentix/dbside/clsDBManager.h"
#include "engine/ModADORecordHelpers.h"
#include "engine/VbFlow.h"
#include "varsentix/dbside/ModADOFields.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix::ModADO {

std::string getFirstComparableFieldName(clsDBManager& manager, const std::string& tableName) {
  vb::ResumeNext onError;
  std::string result;
  vb::Ref<vb::Collection<clsResultSet>> results;
  onError([&] { results = manager.getResults(); });
  int32_t count = 0;
  onError([&] { count = results->Count(); });
  for (int32_t i = 1; i <= count; ++i) {
    bool found = false;
    engine::ifResumeNext(
        onError,
        [&] {
          const auto& row = results->Item(i);
          return row->getDatabaseObjName() == tableName && row->getChangeType() == "0" &&
                 row->getIsFieldDesc() && isComparableTypeName(row->getDataType());
        },
        [&] {
          onError([&] { result = results->Item(i)->getFieldName(); });
          found = true;
        });
    if (found) break;
  }
  return result;
}

int16_t getRecordSetFieldCount(clsDBManager& manager) {
  return vb::CInt(static_cast<double>(manager.getDatabaseRecords()->getFields().Count()));
}

bool queryReturnsRecords(clsDBManager& manager) {
  vb::ResumeNext onError;
  bool result = false;
  std::string sql;
  onError([&] { sql = manager.getSql() + manager.getWhereClause(); });
  onError([&] { manager.openSecondDataBaseRecordsFromQuery(sql); });
  engine::ifResumeNext(
      onError, [&] { return manager.getDatabaseRecords2()->isEOF(); }, [&] { result = false; },
      [&] { result = true; });
  onError([&] { manager.closeRecordSet2(); });
  return result;
}

}  // namespace varsentix::ModADO
