// clsDBManager: lifecycle, plain accessors and the shared rollback file name.
#include <mutex>

#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {
namespace {

// The rollback file name, one value for the whole process.
struct SharedRollbackFileName {
  std::mutex mutex;
  std::string value;
};
SharedRollbackFileName& sharedRollbackFileName() {
  static SharedRollbackFileName shared;
  return shared;
}

}  // namespace

clsDBManager::clsDBManager() { initializeValues(); }

void clsDBManager::initializeValues() {
  connectionString_.clear();
  dataManager_ = vb::Ref<clsData>::make();
  databaseSchema_ = vb::Ref<ado::Recordset>::make();
  results_ = vb::Ref<ResultCollection>::make();
  isMasterDatabase_ = false;
  tableName_.clear();
  tableDataType_.clear();
  isSorted_ = false;
  newTable_ = false;
  tableCatalog_.clear();
  tableSchema_.clear();
  fieldList_.clear();
  currentRecordNumber_ = -1;
  resultSetToCopy_ = vb::Ref<clsResultSet>::make();
  recordCount_ = -1;
  isAccess_ = false;
  xmlFileName_.clear();
  saveToXml_ = false;
  listDBObjectsOnly_ = false;
  useDSN_ = true;
  returnConnectionMessage_.clear();
  returnSQLMessage_.clear();
  returnMessage_.clear();
}

void clsDBManager::clearMessages() {
  returnConnectionMessage_.clear();
  returnSQLMessage_.clear();
  returnMessage_.clear();
}

void clsDBManager::resetResult() {
  results_.reset();
  results_ = vb::Ref<ResultCollection>::make();
}

void clsDBManager::destroyValues() {
  tableCatalog_.clear();
  tableSchema_.clear();
}

clsData& clsDBManager::data() {
  if (dataManager_.isNothing()) dataManager_ = vb::Ref<clsData>::make();
  return *dataManager_;
}

void clsDBManager::setConnectionString(const std::string& connectionStringIn) {
  connectionString_ = connectionStringIn;
  checkIsAccess();
}

void clsDBManager::checkIsAccess() {
  if (connectionString_.empty()) return;
  if (vb::InStr(connectionString_, "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=") == 0) {
    isAccess_ = false;
  } else {
    isAccess_ = vb::InStr(connectionString_, ".mdb") != 0;
  }
}

vb::Ref<clsData> clsDBManager::getDataManager() {
  // Kept as it always was: a diagnostic text, a test of the reference, and no object returned.
  const std::string diagnostic = "Its Null";
  const bool isNull = dataManager_.isNothing();
  (void)diagnostic;
  (void)isNull;
  return vb::Ref<clsData>();
}

void clsDBManager::setTableCatalog(const std::string& /*tableCatalogIn*/) { tableCatalog_.clear(); }

void clsDBManager::setTableSchema(const std::string& /*tableSchemaIn*/) { tableSchema_.clear(); }

std::string clsDBManager::getIsRecordMatched() const { return vb::CStr(isRecordMatched_); }

std::string clsDBManager::getRollbackFileName() const {
  auto& shared = sharedRollbackFileName();
  std::lock_guard lock(shared.mutex);
  return shared.value;
}

void clsDBManager::setRollbackFileName(const std::string& rollbackFileNameIn) {
  auto& shared = sharedRollbackFileName();
  std::lock_guard lock(shared.mutex);
  shared.value = rollbackFileNameIn;
}

}  // namespace varsentix
