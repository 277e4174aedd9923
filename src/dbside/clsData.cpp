#include "varsentix/dbside/clsData.h"

#include "dbside/Outcome.h"
#include "platform/ado/ConnectionString.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {
namespace {

template <typename T>
vb::Ref<T>& createdOnFirstUse(vb::Ref<T>& member) {
  if (member.isNothing()) member = vb::Ref<T>::make();
  return member;
}

template <typename T>
bool isOpen(const vb::Ref<T>& object) {
  return !object.isNothing() && object->State() == ado::adStateOpen;
}

// The options of every connection open: an empty user name and password, options -1.
void openConnection(ado::Connection& connection, const std::string& connectionString) {
  connection.Open(connectionString, "", "", -1);
}

}  // namespace

vb::Ref<ado::Connection>& clsData::accessCn() { return createdOnFirstUse(accessCn_); }
vb::Ref<ado::Recordset>& clsData::rsOracle() { return createdOnFirstUse(rsOracle_); }
vb::Ref<ado::Recordset>& clsData::rsAccess() { return createdOnFirstUse(rsAccess_); }
vb::Ref<ado::Recordset>& clsData::rsAccess2() { return createdOnFirstUse(rsAccess2_); }
vb::Ref<ado::Connection>& clsData::oracleCn() { return createdOnFirstUse(oracleCn_); }

std::string clsData::getAccessConnections(const std::string& connectionString) {
  return dbside::outcomeOf([&] { getAccessConnection(connectionString); }, [&] {
    return " #2 Error occurred when attempting to open connection using the following connection string " +
           std::string(" ") + ado::detail::ConnectionString::maskPasswords(connectionString) + " ||";
  });
}

void clsData::getAccessConnection(const std::string& connectionString) {
  if (accessCn()->State() != ado::adStateOpen) openConnection(*accessCn(), connectionString);
}

vb::Ref<ado::Connection> clsData::getConnection() { return accessCn(); }

void clsData::setConnection(const vb::Ref<ado::Connection>& connectionIn) { accessCn_ = connectionIn; }

std::string clsData::getAccessRecordsFromSQL(const std::string& sSql) {
  return dbside::outcomeOf([&] { getAccessRecords(sSql); }, [&] {
    return " #3 Error occured when attempting to open table using the following SQL" + sSql + " ||";
  });
}

void clsData::getAccessRecords(const std::string& sSql) {
  rsAccess()->setCursorLocation(ado::adUseClient);
  rsAccess()->Open(sSql, accessCn(), ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
}

std::string clsData::getAccessRecordsFromSQL2(const std::string& sSql) {
  return dbside::outcomeOf([&] { getAccessRecords2(sSql); }, [&] {
    return " #4 Error occured when attempting to open table using the following SQL" + sSql + " ||";
  });
}

void clsData::getAccessRecords2(const std::string& sSql) {
  rsAccess2_ = vb::Ref<ado::Recordset>::make();
  rsAccess2_->Open(sSql, accessCn(), ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
}

std::string clsData::openAccessTables(const std::string& tableName) {
  return dbside::outcomeOf([&] { openAccessTable(tableName); }, [&] {
    return " #1 Error Occurred when attempting to open the following table: " + tableName + " " + " ||";
  });
}

void clsData::openAccessTable(const std::string& tableName) {
  rsAccess()->Open(tableName, accessCn(), ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdTable);
}

void clsData::saveRecordsToXML(const std::string& FileName) {
  vb::ResumeNext onErrorResumeNext;
  onErrorResumeNext([&] { rsAccess()->Save(FileName, ado::adPersistXML); });
}

void clsData::closeRecordSet() {
  if (isOpen(rsAccess())) rsAccess()->Close();
}

void clsData::CloseAccess() {
  if (isOpen(rsAccess())) rsAccess()->Close();
  accessCn()->Close();
}

void clsData::CloseAccess2() {
  if (isOpen(rsAccess2())) rsAccess2()->Close();
}

void clsData::closeAll() {
  // The second record set is only released, not closed; it goes first so that its cursor never
  // outlives the connection it reads from.
  rsAccess2_.reset();
  if (isOpen(rsOracle_)) rsOracle_->Close();
  if (isOpen(rsAccess_)) rsAccess_->Close();
  if (isOpen(oracleCn_)) oracleCn_->Close();
  if (isOpen(accessCn_)) accessCn_->Close();
  rsOracle_.reset();
  rsAccess_.reset();
  accessCn_.reset();
}

void clsData::getOracleConnection(const std::string& connectionString) {
  openConnection(*oracleCn(), connectionString);
}

void clsData::getOrcaleRecords(const std::string& sSql) {
  rsOracle()->setCursorLocation(ado::adUseClient);
  rsOracle()->Open(sSql, oracleCn(), ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
}

}  // namespace varsentix
