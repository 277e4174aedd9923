// Buffered record comparison and record matching by primary key.
#include "control/CompareReadOnly.h"
#include "engine/Engine.h"
#include "varsentix/control/Varsenti.h"

namespace varsentix {

bool Varsenti::getBufferedResults() {
  // No handler and no clearing of messages: a failure fails the call.
  auto master = getMasterDataManager();
  auto source = getSourceDataManager();
  control::CompareReadOnly readOnly;  // a compare only reads
  readOnly.cover(*master);
  readOnly.cover(*source);
  int32_t start = getStartPoint();
  int32_t amount = getBufferedAmount();
  engine::compareRecordWindow(*master, *source, *this, "Reading Original", start, amount);
  master = getMasterDataManager();
  source = getSourceDataManager();
  start = getStartPoint();
  amount = getBufferedAmount();
  engine::compareRecordWindow(*source, *master, *this, "Reading Modified", start, amount);
  saveSidesToXml(*master, *source);
  return publishBufferedOutcome(*master, *source);
}

int32_t Varsenti::getMatchingRecordNumber(const bool& isMaster, const std::string& tableName,
                                          const std::string& primaryKeyName,
                                          const std::string& primaryKeyValue) {
  // The master side's total bounds the search, whichever side is searched.
  const int32_t total = getTotalRecordsForTable();
  for (int32_t r = 1; r <= total; ++r) {
    if (getFieldValueFromRecordNumber(tableName, primaryKeyName, r, isMaster) == primaryKeyValue) return r;
  }
  return 0;
}

int32_t Varsenti::lookupRelatedRecordFromRecordNumber(const std::string& tableName, const bool& isMaster,
                                                      const int32_t& recordNumber) {
  const std::string primaryKey = getPrimaryKeyFromTableName(tableName, isMaster);
  if (primaryKey.empty()) return 0;
  const std::string value = getFieldValueFromRecordNumber(tableName, primaryKey, recordNumber, isMaster);
  (void)getResultSetFromRecordNumber(tableName, recordNumber, isMaster);
  return getMatchingRecordNumber(!isMaster, tableName, primaryKey, value);
}

}  // namespace varsentix
