#pragma once
// clsData: the record-set objects of one database side, the side's connection and its first and
// second record set, plus a separate Oracle connection and record set that the rest of the
// system does not use. Each operation that reports an outcome returns "Successfully Completed"
// or the failure's number, description and a numbered message (#1 to #4); it never fails to
// the caller. The operations without an outcome let failures through.
#include <string>

#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Ref.h"

namespace varsentix {

class clsData {
 public:
  // The public members. Each is created empty on first use, also after it was replaced by
  // Nothing: reading a member that is Nothing gives a new closed object. Assign through the
  // returned reference to replace one.
  vb::Ref<ado::Connection>& accessCn();
  vb::Ref<ado::Recordset>& rsOracle();
  vb::Ref<ado::Recordset>& rsAccess();
  vb::Ref<ado::Recordset>& rsAccess2();

  // Opens accessCn with connectionString (empty user and password, options -1) unless it is
  // already open. Outcome text; message #2 on failure.
  std::string getAccessConnections(const std::string& connectionString);
  // The same without an outcome text; failures go to the caller.
  void getAccessConnection(const std::string& connectionString);
  vb::Ref<ado::Connection> getConnection();
  void setConnection(const vb::Ref<ado::Connection>& connectionIn);

  // Opens rsAccess with sSql on accessCn: client cursor location, dynamic cursor, optimistic
  // lock, SQL text. Outcome text; message #3 on failure.
  std::string getAccessRecordsFromSQL(const std::string& sSql);
  void getAccessRecords(const std::string& sSql);
  // Replaces rsAccess2 by a new record set (the old one is released even when the open fails)
  // and opens it with sSql: default cursor location, dynamic cursor, optimistic lock, SQL text.
  // Outcome text; message #4 on failure.
  std::string getAccessRecordsFromSQL2(const std::string& sSql);
  void getAccessRecords2(const std::string& sSql);
  // Opens rsAccess on the table tableName: dynamic cursor, optimistic lock, table command.
  // Outcome text; message #1 on failure.
  std::string openAccessTables(const std::string& tableName);
  void openAccessTable(const std::string& tableName);

  // Saves rsAccess as an XML persisted record set; every failure is ignored (so an existing
  // file is kept as it was).
  void saveRecordsToXML(const std::string& FileName);

  // Closes rsAccess when it is open; otherwise nothing.
  void closeRecordSet();
  // Closes rsAccess when open, then accessCn without testing its state (3704 when closed).
  void CloseAccess();
  // Closes rsAccess2 when open.
  void CloseAccess2();
  // Closes rsOracle, rsAccess, the Oracle connection and accessCn, each only when open, then
  // releases the four public members.
  void closeAll();

  // The Oracle connection: empty user and password, options -1. Failures go to the caller.
  void getOracleConnection(const std::string& connectionString);
  // Opens rsOracle on the Oracle connection: client cursor location, dynamic, optimistic, text.
  void getOrcaleRecords(const std::string& sSql);

 private:
  vb::Ref<ado::Connection>& oracleCn();

  // Connections first: members go in reverse order, so record sets go before the connections
  // they read from.
  vb::Ref<ado::Connection> accessCn_;
  vb::Ref<ado::Connection> oracleCn_;
  vb::Ref<ado::Recordset> rsOracle_;
  vb::Ref<ado::Recordset> rsAccess_;
  vb::Ref<ado::Recordset> rsAccess2_;
};

}  // namespace varsentix
