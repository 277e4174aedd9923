// Record operations: update a record on one side from the other, copy a record that one side
// lacks into it, and roll an update back from its rollback file.
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {

std::string Varsenti::updateRecordFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamanager,
                                                   const vb::Ref<clsDBManager>& sourceDatamanager,
                                                   const bool& isMaster, const std::string& FileName) {
  auto& M = masterDatamanager;
  auto& S = sourceDatamanager;
  deleteFileIfExists(FileName);
  M->formatWhereClauseFromRecordNumber();
  const std::string whereM = M->getWhereClause();
  S->formatWhereClauseFromRecordNumber();
  const std::string whereS = S->getWhereClause();
  M->setSaveToXml(false);
  M->createSQLStatement(whereM, M->getTableName());
  M->openDataBaseRecordsFromQuery(M->getSql());
  setRollBackSQL(M->getSql());
  S->createSQLStatement(whereS, S->getTableName());
  S->openDataBaseRecordsFromQuery(S->getSql());
  const bool ok = isMaster ? S->adoUpdateRecord(*M, isMaster, FileName) : M->adoUpdateRecord(*S, isMaster, FileName);
  M->closeRecordSet();
  std::string result;
  if (!ok) {
    result = S->getReturnSQLMessage();
    ui::MsgBox(result);
  }
  S->clearMessages();
  return result;
}

std::string Varsenti::copyRecordFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamanager,
                                                 const vb::Ref<clsDBManager>& sourceDatamanager,
                                                 const bool& isMaster) {
  auto& M = masterDatamanager;
  auto& S = sourceDatamanager;
  const vb::Ref<clsDBManager>& from = isMaster ? M : S;
  const vb::Ref<clsDBManager>& to = isMaster ? S : M;
  from->formatWhereClauseFromRecordNumber();
  const std::string where = from->getWhereClause();
  if (!canCopyRecord(*from, isMaster)) return "Cannot copy record.";
  const std::string table = from->getTableName();
  from->setSaveToXml(false);
  // Both results land in one temporary that the add overwrites; the calls are kept.
  bool ok = beginTableCompareFromDBManagers(M, S);
  ok = canCopyRecord(*from, isMaster);
  from->createSQLStatement(where, table);
  from->openDataBaseRecordsFromQuery(from->getSql());
  if (!isMaster) from->formatInsertClauseFromRecordSet(table);
  to->setSQL(from->getSql());
  ok = to->adoAddNewRecord(*from);
  if (isMaster) {
    M->closeRecordSet();
    if (!ok) ui::MsgBox(to->getReturnSQLMessage());
    to->clearMessages();
  } else {
    if (!ok) ui::MsgBox(to->getReturnSQLMessage());
    to->clearMessages();
    S->closeRecordSet();
  }
  return "";  // also after a refused add: the message box is the report
}

std::string Varsenti::firstFieldNameFrom(const std::string& tableName, int32_t index, const bool& isMaster) {
  const int32_t n = getResultCount(isMaster);
  for (int32_t i = index; i <= n && getResultDatabaseObjectName(i, isMaster) == tableName; ++i)
    if (getResultIsFieldDesc(i, isMaster)) return getResultFieldName(i, isMaster);
  return "";
}

bool Varsenti::canCopyRecord(clsDBManager& from, const bool& isMaster) {
  const std::string table = from.getTableName();
  const int32_t start = getIndexForRecordNumber(table, from.getCurrentRecordNumber(), isMaster);
  const int32_t n = getResultCount(isMaster);
  int32_t found = 0;
  for (int32_t i = start; i <= n - 1; ++i) {
    if (getResultDatabaseObjectName(i, isMaster) == table) {
      found = i;
      break;
    }
  }
  if (found == 0) return false;
  const std::string fieldName = firstFieldNameFrom(table, found, isMaster);
  const int16_t changeType =
      vb::CInt(getFieldChangeTypeFromRecordNumber(table, fieldName, from.getCurrentRecordNumber(), isMaster));
  return changeType > 0;
}

std::string Varsenti::rollBackFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamananger,
                                               const vb::Ref<clsDBManager>& sourceDatamanager,
                                               const bool& isMaster, const std::string& FileName) {
  (void)masterDatamananger;  // the control's own master manager takes its place
  (void)FileName;
  auto C = getMasterDataManager();
  const auto& S = sourceDatamanager;
  const std::string whereM = selectRollbackRows(*C, *S);
  C->setSaveToXml(false);
  C->createSQLStatement(whereM, C->getTableName());
  C->openDataBaseRecordsFromQuery(C->getSql());
  S->createSQLStatement(whereM, S->getTableName());
  S->openDataBaseRecordsFromQuery(S->getSql());
  return finishRollback(*C, *S, isMaster, "");
}

std::string Varsenti::rollBackFromSQL(const vb::Ref<clsDBManager>& masterDatamananger,
                                      const vb::Ref<clsDBManager>& sourceDatamanager, const bool& isMaster,
                                      const std::string& FileName, const std::string& rollbackSql) {
  (void)masterDatamananger;
  (void)FileName;
  auto C = getMasterDataManager();
  const auto& S = sourceDatamanager;
  selectRollbackRows(*C, *S);
  C->setSaveToXml(false);
  C->openDataBaseRecordsFromQuery(rollbackSql);
  S->openDataBaseRecordsFromQuery(rollbackSql);
  return finishRollback(*C, *S, isMaster, rollbackSql);
}

std::string Varsenti::selectRollbackRows(clsDBManager& C, clsDBManager& S) {
  C.formatWhereClauseFromRecordNumber();
  const std::string whereM = C.getWhereClause();
  ui::MsgBox("test 0.7 " + whereM);
  S.formatWhereClauseFromRecordNumber();
  // The source side is selected with the master side's clause; its own is not fetched.
  const std::string whereS = whereM;
  ui::MsgBox("test 0.9 " + whereS);
  return whereM;
}

std::string Varsenti::finishRollback(clsDBManager& C, clsDBManager& S, const bool& isMaster,
                                     const std::string& rollbackSql) {
  // The statement carries the master side's where clause: the row it selects must be that record.
  (isMaster ? S : C).setRollbackRecord(C.getComparedRecord());
  const bool ok = isMaster ? S.rollback(isMaster, rollbackSql) : C.rollback(isMaster, rollbackSql);
  (isMaster ? S : C).setRollbackRecord({});
  ui::MsgBox("test 0.12 " + vb::CStr(ok));
  C.closeRecordSet();
  std::string result;
  if (!ok) {
    result = S.getReturnSQLMessage();
    ui::MsgBox(result);
  }
  S.clearMessages();
  return result;
}

std::string Varsenti::getRollBackSQL() const { return rollBackSQL_; }
void Varsenti::setRollBackSQL(const std::string& rollBackSQLIn) { rollBackSQL_ = rollBackSQLIn; }
vb::Variant Varsenti::getSaveFile() const { return vb::Variant(clsDBManager().getRollbackFileName()); }

}  // namespace varsentix
