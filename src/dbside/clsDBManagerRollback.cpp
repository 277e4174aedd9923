// clsDBManager: the rollback file. Before an update overwrites a row, the row as it was is saved
// as an ADO XML persisted record set; a rollback reads it back and writes its values into the
// row. The side a file belongs to is told by "ORIGINAL" or "MODIFIED" in its name alone.
#include "dbside/RecordWriteSupport.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {

namespace detail {
vb::Ref<ado::Recordset>& rollbackRecordSet() {
  static vb::Ref<ado::Recordset> shared;
  if (shared.isNothing()) shared = vb::Ref<ado::Recordset>::make();
  return shared;
}
}  // namespace detail

namespace {
std::string failureText(const std::exception_ptr& failure) {
  const vb::VBError error = vb::toVBError(failure);
  return vb::CStr(error.number()) + " " + error.description();
}
}  // namespace

void clsDBManager::saveRollBackInformation(const vb::Ref<ado::Recordset>& recset, const bool& isMaster,
                                           const std::string& FileName) {
  (void)isMaster;  // the save does not use it
  auto copy = recset->Clone(ado::adLockUnspecified);
  setRollbackFileName(FileName);
  // An existing file is not overwritten: the save fails, silently, and the file keeps the first
  // state while the shared record set takes the newer clone.
  saveToXML(getRollbackFileName());
  detail::rollbackRecordSet() = copy;
  copy->MoveFirst();
}

bool clsDBManager::checkFileExist(const bool& isMaster) {
  const std::string mark = isMaster ? "ORIGINAL" : "MODIFIED";
  if (vb::InStr(getRollbackFileName(), mark) == 0) {
    ui::MsgBox("File Does Not Exist");
    return false;
  }
  ui::MsgBox("File Exists");
  return true;
}

bool clsDBManager::openRollbackRecord() {
  try {
    auto& saved = detail::rollbackRecordSet();
    saved->setCursorType(ado::adOpenStatic);
    saved->setLockType(ado::adLockReadOnly);
    saved->Open(getRollbackFileName(), data().accessCn(), ado::adOpenUnspecified, ado::adLockUnspecified,
                ado::adCmdFile);
    saved->MoveFirst();
    ui::MsgBox("opening File");
    return true;
  } catch (...) {
    returnSQLMessage_ = failureText(std::current_exception());
    ui::MsgBox(returnSQLMessage_.str());
    returnSQLMessage_ += " #7 Error when attempting to add a new record in table " + tableName_ + " ||";
    return false;
  }
}

bool clsDBManager::rollback(const bool& isMaster, const std::string& rollbackSql) {
  try {
    ado::ReadOnlyScope writable(data().accessCn(), false);  // a write of the record operations
    data().closeRecordSet();
    ui::MsgBox("test 2");
    if (!checkFileExist(isMaster)) return false;
    returnSQLMessage_ = "Successfully Completed";
    auto& records = openFirstRecordSetForWriting(rollbackSql, ado::adCmdText);
    ui::MsgBox(rollbackSql + "test 3");
    if (records->isBOF() && records->isEOF()) return false;
    ui::MsgBox("test 4");
    records->MoveFirst();
    if (!openRollbackRecord()) return false;
    auto& saved = detail::rollbackRecordSet();
    // The statement must select one row, the one the file saved; otherwise nothing is written.
    detail::requireSingleRow(*records);
    const std::string keyColumn = vb::Trim(getAccessPrimaryKey(tableName_));
    detail::requireSameKey(*records, *saved, keyColumn);
    detail::requireRecordByKey(*records, rollbackRecord_, keyColumn);
    const int32_t count = saved->getFields().Count();
    for (int32_t i = 0; i < count; ++i) {
      const std::string name = vb::Trim(records->field(i).Name());
      const std::string key = vb::Trim(getAccessPrimaryKey(tableName_));
      if (name == key) continue;  // the key column is never written back
      if (vb::Trim(records->field(i).Name()) == vb::Trim(saved->field(i).Name()))
        records->field(i).setValue(saved->field(i).Value());
    }
    records->Update();
    data().closeRecordSet();
    return true;
  } catch (const detail::WriteRefused& refused) {
    detail::closeQuietly([&] { data().closeRecordSet(); });
    returnSQLMessage_ = detail::refusedWriteMessage(refused, tableName_);
    return false;
  } catch (...) {
    returnSQLMessage_ = failureText(std::current_exception());
    returnSQLMessage_ += " #7 Error when attempting to add a new record in table " + tableName_ + " ||";
    return false;
  }
}

void clsDBManager::tempReadRollBackInformation() {
  auto& saved = detail::rollbackRecordSet();
  saved->MoveFirst();
  const int32_t count = saved->getFields().Count();
  for (int32_t i = 0; i < count; ++i) {
    auto field = saved->field(i);
    const vb::Variant value = field.Value();
    ui::MsgBox("test 777 " + field.Name() + " = " + (value.isNull() ? std::string() : value.toText()));
  }
}

}  // namespace varsentix
