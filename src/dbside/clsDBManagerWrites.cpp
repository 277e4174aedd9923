// clsDBManager: writing a record of the other side into this side (copy and update). Values are
// copied by field position from the other side's first record set.
#include "dbside/RecordWriteSupport.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {

bool clsDBManager::adoAddNewRecord(clsDBManager& dataManager2) {
  try {
    // A write of the record operations: allowed for its own statements also while a compare
    // holds the connection read-only (not on a connection opened for reading only).
    ado::ReadOnlyScope writable(data().accessCn(), false);
    data().closeRecordSet();
    returnSQLMessage_ = "Successfully Completed";
    auto& records = openFirstRecordSetForWriting("[" + tableName_ + "]", ado::adCmdTable);
    auto other = dataManager2.getDatabaseRecords();
    // The values come from the other side's compared record, and from it alone.
    detail::requireComparedSource(*other, dataManager2);
    records->AddNew();
    other->MoveFirst();
    const int32_t count = other->getFields().Count();
    for (int32_t i = 0; i < count; ++i) records->field(i).setValue(other->field(i).Value());
    records->Update();
    data().closeRecordSet();
    return true;
  } catch (const detail::WriteRefused& refused) {
    detail::closeQuietly([&] { data().closeRecordSet(); });
    returnSQLMessage_ = detail::refusedWriteMessage(refused, tableName_);
    return false;
  } catch (...) {
    const vb::VBError error = vb::toVBError(std::current_exception());
    detail::closeQuietly([&] { data().closeRecordSet(); });
    returnSQLMessage_ = vb::CStr(error.number()) + " " + error.description();
    returnSQLMessage_ += " #7 Error when attempting to add a new record in table " + tableName_ + " ||";
    return false;
  }
}

bool clsDBManager::adoUpdateRecord(clsDBManager& dataManager2, const bool& isMaster, const std::string& FileName) {
  try {
    ado::ReadOnlyScope writable(data().accessCn(), false);  // as in adoAddNewRecord
    data().closeRecordSet();
    returnSQLMessage_ = "Successfully Completed";
    auto& records = openFirstRecordSetForWriting(sSql_, ado::adCmdText);
    if (records->isBOF()) return false;  // no row: nothing saved, nothing changed
    // The statement must select the compared record and nothing else; otherwise nothing is
    // saved or written.
    detail::requireSingleRow(*records);
    detail::requireComparedRecord(*records, *this);
    detail::requireComparedSource(*dataManager2.getDatabaseRecords(), dataManager2);
    // The row as it was goes to the rollback file before anything changes.
    saveRollBackInformation(records, isMaster, FileName);
    records->MoveFirst();
    auto other = dataManager2.getDatabaseRecords();
    other->MoveFirst();
    const int32_t count = other->getFields().Count();
    for (int32_t i = 0; i < count; ++i) {
      const std::string name = vb::Trim(records->field(i).Name());
      // Asked once a field, as the update has always done; the key column keeps its value.
      const std::string key = vb::Trim(dataManager2.getAccessPrimaryKey(tableName_));
      if (name != key) records->field(i).setValue(other->field(i).Value());
    }
    records->Update();
    data().closeRecordSet();
    if (!isRollbackRecordClosed()) detail::rollbackRecordSet()->Close();
    return true;
  } catch (const detail::WriteRefused& refused) {
    detail::closeQuietly([&] { data().closeRecordSet(); });
    returnSQLMessage_ = detail::refusedWriteMessage(refused, tableName_);
    return false;
  } catch (...) {
    const vb::VBError error = vb::toVBError(std::current_exception());
    returnSQLMessage_ = vb::CStr(error.number()) + " " + error.description();
    returnSQLMessage_ += " #7 Error when attempting to add a new record in table " + tableName_ + " ||";
    return false;
  }
}

vb::Ref<ado::Recordset>& clsDBManager::openFirstRecordSetForWriting(const std::string& source,
                                                                    ado::CommandTypeEnum options) {
  auto& records = data().rsAccess();
  records->setCursorType(ado::adOpenDynamic);
  records->setLockType(ado::adLockOptimistic);
  records->Open(source, data().accessCn(), ado::adOpenUnspecified, ado::adLockUnspecified, options);
  return records;
}

bool clsDBManager::isRollbackRecordClosed() {
  return detail::rollbackRecordSet()->State() == ado::adStateClosed;
}

}  // namespace varsentix
