// clsDBManager: its description text and the XML save of its first record set.
#include "platform/ado/ConnectionString.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {

std::string clsDBManager::toString() {
  // The description is composed and then dropped: callers receive the empty string.
  const std::string description = describeForDiagnostics();
  (void)description;
  return std::string();
}

std::string clsDBManager::describeForDiagnostics() const {
  // Shown with its passwords masked, as every message that names a connection string.
  std::string text = "connectionString=" + ado::detail::ConnectionString::maskPasswords(connectionString_);
  text += ",isMasterDatabase=" + vb::CStr(isMasterDatabase_);
  text += ",tableName=" + tableName_;
  text += ",tableDataType=" + tableDataType_;
  text += ",isSorted=" + vb::CStr(isSorted_);
  text += ",isRecordMatched=" + vb::CStr(isRecordMatched_);
  text += ",whereClause=" + whereClause_;
  text += ",sSql=" + sSql_;
  text += ",newTable=" + vb::CStr(newTable_);
  text += ",tableCatalog=" + tableCatalog_;
  text += ",tableSchema=" + tableSchema_;
  text += ",fieldList=" + fieldList_;
  text += ",currentRecordNumber=" + vb::CStr(currentRecordNumber_);
  text += ",recordCount=" + vb::CStr(recordCount_);
  text += ",isAccess=" + vb::CStr(isAccess_);
  text += ",xmlFileName=" + xmlFileName_;
  text += ",bsaveToXML=" + vb::CStr(saveToXml_);
  text += ",bListDBOjectsOnly=" + vb::CStr(listDBObjectsOnly_);
  text += ",useDSN =" + vb::CStr(useDSN_);
  text += ",returnConnectionMessage =" + returnConnectionMessage_;
  text += ",returnSQLMessage =" + returnSQLMessage_.str();
  return text;
}

void clsDBManager::saveToXML(const std::string& xmlFileName) { data().saveRecordsToXML(xmlFileName); }

}  // namespace varsentix
