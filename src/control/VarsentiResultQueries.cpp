// The result queries: the host walks and searches the published difference rows through them.
// Every query is a linear scan, as hosts have always seen it; sides are named by isMaster and
// indexes are 1-based.
#include <limits>

#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {
namespace {

const std::string kCompilingDifferences = "Compiling Differences";
const std::string kDone = "Done";

}  // namespace

const Varsenti::Results& Varsenti::resultsOf(bool isMaster) const {
  return isMaster ? masterResults_ : sourceResults_;
}

void Varsenti::recordQueryFailure(const std::exception_ptr& failure, const std::string& masterText,
                                  const std::string& sourceText) {
  const vb::VBError error = vb::toVBError(failure);
  const std::string cause = " " + vb::CStr(error.number()) + " " + error.description();
  auto master = getMasterDataManager();
  auto source = getSourceDataManager();
  master->setReturnMessage(master->getReturnMessage() + cause + masterText + " ||");
  source->setReturnMessage(source->getReturnMessage() + cause + sourceText + " ||");
}

bool Varsenti::isIndexValid(const int32_t& index, const bool& isMaster) {
  try {
    return index <= resultsOf(isMaster)->Count();  // no lower bound
  } catch (...) {
    recordQueryFailure(std::current_exception(), " # 70 Error occured while checking index in component",
                       " # 71 Error occured while checking index in component");
    return false;
  }
}

vb::Ref<clsResultSet> Varsenti::getResultSet(const int32_t& index, const bool& isMaster) {
  vb::Ref<clsResultSet> row;
  vb::ResumeNext onError;
  onError([&] { row = resultsOf(isMaster)->Item(index); });
  return row;
}

int32_t Varsenti::getResultCount(const bool& isMaster) {
  try {
    return resultsOf(isMaster)->Count();
  } catch (...) {
    recordQueryFailure(std::current_exception(), " # 72 Error occured while getting result count in component",
                       " # 73 Error occured while getting result count in component");
    return 0;
  }
}

std::string Varsenti::getDatabaseObjectName(const int32_t& index) {
  (void)masterResults_->Item(index);  // fetched and not used
  return "";
}

template <typename Getter>
std::string Varsenti::rowText(const int32_t& index, const bool& isMaster, Getter getter) {
  if (!isIndexValid(index, isMaster)) return indexErrorMessage_;
  return ((*getResultSet(index, isMaster)).*getter)();
}

template <typename Getter>
bool Varsenti::rowFlag(const int32_t& index, const bool& isMaster, Getter getter) {
  if (!isIndexValid(index, isMaster)) return false;
  return ((*getResultSet(index, isMaster)).*getter)();
}

std::string Varsenti::getResultDatabaseObjectName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getDatabaseObjName);
}
std::string Varsenti::getResultPrimaryKey(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getPrimaryKey);
}
std::string Varsenti::getResultForeignKeyName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getFKeyName);
}
std::string Varsenti::getResultForeignKeyColumnName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getFKeyColumnName);
}
std::string Varsenti::getResultForeignKeyPrimaryKeyName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getPKeyName);
}
std::string Varsenti::getResultFKeyPrimaryTableName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getFKeyPrimaryTable);
}
std::string Varsenti::getResultDataType(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getDataType);
}
std::string Varsenti::getResultFieldName(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getFieldName);
}
std::string Varsenti::getResultFieldDefinedSize(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getFieldDefinedSize);
}
std::string Varsenti::getResultFieldActualSize(const int32_t& index, const bool& isMaster) {
  // The defined size, as hosts have always read it.
  return rowText(index, isMaster, &clsResultSet::getFieldDefinedSize);
}
std::string Varsenti::getResultFieldValue(const int32_t& index, const bool& isMaster) {
  return rowText(index, isMaster, &clsResultSet::getDataValue);
}
bool Varsenti::getResultIsDataValue(const int32_t& index, const bool& isMaster) {
  return rowFlag(index, isMaster, &clsResultSet::getIsDataValue);
}
bool Varsenti::getResultIsFieldDesc(const int32_t& index, const bool& isMaster) {
  return rowFlag(index, isMaster, &clsResultSet::getIsFieldDesc);
}
bool Varsenti::getResultIsFieldComparable(const int32_t& index, const bool& isMaster) {
  return rowFlag(index, isMaster, &clsResultSet::getShow);
}
int16_t Varsenti::getResultChangeType(const int32_t& index, const bool& isMaster) {
  // Out of range, the fallback text is converted too, and that conversion fails the call.
  return vb::CInt(rowText(index, isMaster, &clsResultSet::getChangeType));
}
int16_t Varsenti::getResultFieldLength(const int32_t& index, const bool& isMaster) {
  return vb::CInt(rowText(index, isMaster, &clsResultSet::getLength));
}

std::string Varsenti::getPrimaryKeyFromTableName(const std::string& tableName, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i)
    if (getResultDatabaseObjectName(i, isMaster) == tableName) return getResultPrimaryKey(i, isMaster);
  return "";
}

int16_t Varsenti::getResultFieldCount(const bool& isMaster, const std::string& tableName) {
  int16_t result = 0;
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName) return getResultSet(i, isMaster)->getFieldCount();
    if (result == 0) {
      auto side = isMaster ? getMasterDataManager() : getSourceDataManager();
      result = vb::CInt(static_cast<double>(side->getFieldCount()));
    }
  }
  return result;
}

int32_t Varsenti::getResultRecordCountForTable(const std::string& tableName, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName && isIndexValid(i, isMaster)) {
      const int64_t count = static_cast<int64_t>(getResultSet(i, isMaster)->getRecordCount()) + 1;
      if (count > std::numeric_limits<int32_t>::max()) vb::raiseError(vb::errnum::Overflow);
      return static_cast<int32_t>(count);
    }
  }
  return -1;
}

std::string Varsenti::getResultFieldValueFromFieldName(const std::string& tableName, const bool& isMaster,
                                                       const std::string& fieldName, const int32_t& currIndex) {
  std::string result;
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = currIndex; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName && getResultIsFieldDesc(i, isMaster) &&
        getResultFieldName(i, isMaster) == fieldName) {
      if (isIndexValid(i, isMaster)) return getResultSet(i, isMaster)->getDataValue();
      result = indexErrorMessage_;
      break;
    }
  }
  return result;
}

int32_t Varsenti::getResultRecordNumber(const std::string& tableName, const bool& isMaster,
                                        const int32_t& currIndex) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = currIndex; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName)
      return isIndexValid(i, isMaster) ? getResultSet(i, isMaster)->getRecordNumber() : -1;
  }
  return 0;
}

int32_t Varsenti::getIndexForRecordNumber(const std::string& tableName, const int32_t& recordNumber,
                                          const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName && isIndexValid(i, isMaster) &&
        getResultSet(i, isMaster)->getRecordNumber() == recordNumber)
      return i;
  }
  return 0;
}

bool Varsenti::hasRowsOfTable(const std::string& tableName, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i)
    if (getResultDatabaseObjectName(i, isMaster) == tableName) return true;
  return false;
}

int32_t Varsenti::incrementRecordCount(const std::string& tableName, const bool& isMaster,
                                       const int32_t& currentCount) {
  (void)getResultRecordCountForTable(tableName, isMaster);
  if (!hasRowsOfTable(tableName, isMaster)) return 0;
  return currentCount + getResultFieldCount(isMaster, tableName);
}

int32_t Varsenti::DecrementRecordCount(const std::string& tableName, const bool& isMaster,
                                       const int32_t& currentCount) {
  (void)getResultRecordCountForTable(tableName, isMaster);
  const int32_t value =
      hasRowsOfTable(tableName, isMaster) ? currentCount - getResultFieldCount(isMaster, tableName) : 0;
  return value > 0 ? value : 1;  // never below 1; an unknown table gives 1
}

int32_t Varsenti::getLastRecordForTable(const std::string& tableName, const bool& isMaster) {
  const int32_t last = getResultRecordCountForTable(tableName, isMaster);
  return hasRowsOfTable(tableName, isMaster) ? last : 0;
}

int32_t Varsenti::getRecordCountInResultsForTable(const std::string& tableName, const bool& isMaster) {
  const std::string cachedTable = getCurrentTableName();
  const int32_t masterTotal = getTotalRecordsForTable();
  const int32_t sourceTotal = getTotalRecordsForSourceTable();
  if (tableName != cachedTable || masterTotal < 1 || sourceTotal < 1) {
    int32_t n = getResultCount(isMaster);
    setCurrentTableName(tableName);
    int32_t count = 1;
    int32_t tick = 1;
    for (int32_t i = 1; i <= n; ++i) {
      if (getResultDatabaseObjectName(i, isMaster) == tableName && getResultSet(i, isMaster)->getIsDataValue())
        ++count;
      if (tick == 50) {
        int32_t position = i;
        std::string text = kCompilingDifferences;
        setCurrentProgressCount(position, n, text);
        tick = 0;
      }
      ++tick;
    }
    int32_t position = n;
    std::string done = kDone;
    setCurrentProgressCount(position, n, done);
    if (isMaster)
      setTotalRecordsForTable(count);
    else
      setTotalRecordsForSourceTable(count);
  }
  return isMaster ? getTotalRecordsForTable() : getTotalRecordsForSourceTable();
}

bool Varsenti::lastRecord(const std::string& tableName, const int32_t& currentIndex, const bool& isMaster) {
  return currentIndex > getRecordCountInResultsForTable(tableName, isMaster);
}

vb::Ref<clsResultSet> Varsenti::getResultSetFromRecordNumber(const std::string& tableName,
                                                             const int32_t& recordNumber, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  (void)getResultRecordCountForTable(tableName, isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName &&
        getResultRecordNumber(tableName, isMaster, i) == recordNumber)
      return getResultSet(i, isMaster);
  }
  return nullptr;
}

int32_t Varsenti::indexOfRecordField(const std::string& tableName, const std::string& fieldName,
                                     const int32_t& recordNumber, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  (void)getResultRecordCountForTable(tableName, isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == tableName &&
        getResultRecordNumber(tableName, isMaster, i) == recordNumber &&
        getResultFieldName(i, isMaster) == fieldName)
      return i;
  }
  return 0;
}

std::string Varsenti::getFieldValueFromRecordNumber(const std::string& tableName, const std::string& fieldName,
                                                    const int32_t& recordNumber, const bool& isMaster) {
  const int32_t i = indexOfRecordField(tableName, fieldName, recordNumber, isMaster);
  return i == 0 ? "" : getResultFieldValueFromFieldName(tableName, isMaster, fieldName, i);
}

std::string Varsenti::getFieldChangeTypeFromRecordNumber(const std::string& tableName, const std::string& fieldName,
                                                         const int32_t& recordNumber, const bool& isMaster) {
  if (recordNumber <= 0) return "";
  const int32_t i = indexOfRecordField(tableName, fieldName, recordNumber, isMaster);
  return i == 0 ? "" : getResultSet(i, isMaster)->getChangeType();
}

int32_t Varsenti::getBufferedAmount() const { return bufferedAmount_; }
void Varsenti::setBufferedAmount(const int32_t& bufferedAmountIn) { bufferedAmount_ = bufferedAmountIn; }
int32_t Varsenti::getStartPoint() const { return startPoint_; }
void Varsenti::setStartPoint(const int32_t& startPointIn) { startPoint_ = startPointIn; }
bool Varsenti::getRecordsExistInSourceOnly() const { return recordsExistInSourceOnly_; }
void Varsenti::setRecordsExistInSourceOnly(const bool& value) { recordsExistInSourceOnly_ = value; }
bool Varsenti::getRecordsExistInMasterOnly() const { return recordsExistInMasterOnly_; }
void Varsenti::setRecordsExistInMasterOnly(const bool& value) { recordsExistInMasterOnly_ = value; }
vb::Ref<clsResultSet> Varsenti::getMatchingResultSet() const { return matchingResultSet_; }
void Varsenti::setMatchingResultSet(const vb::Ref<clsResultSet>& matchingResultSetIn) {
  matchingResultSet_ = matchingResultSetIn;
}

}  // namespace varsentix
