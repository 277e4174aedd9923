#pragma once
// clsDBManager: one side of a comparison, the master or the source database. It keeps the
// side's connection settings, its table list, the table under comparison, the SQL it built last,
// the side's difference rows and three message buffers; the database work goes through the
// clsData object it owns.
//
// Message buffers only grow: every operation that reports appends a blank, its outcome and a
// separator ("||" after a connection outcome, " ||" after a query outcome); only clearMessages
// and the setters shorten them.
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "varsentix/dbside/clsData.h"
#include "varsentix/dbside/MessageText.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Collection.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/results/clsResultSet.h"

namespace varsentix {

using ResultCollection = vb::Collection<clsResultSet>;

class clsDBManager {
 public:
  // A new manager holds the defaults of initializeValues.
  clsDBManager();

  // ---- Lifecycle -------------------------------------------------------------------------
  // Every field back to its default: a new clsData, a new empty table-list record set, a new
  // empty results collection, a new resultSetToCopy row; currentRecordNumber and recordCount
  // -1, useDSN true, every other text empty and every other flag false. userID, passWord,
  // isRecordMatched, whereClause, sSql, showViews and fieldCount keep their values.
  void initializeValues();
  // returnConnectionMessage, returnSQLMessage and returnMessage become "" (in that order).
  void clearMessages();
  // Releases the results collection and starts a new empty one.
  void resetResult();
  // Empties tableCatalog and tableSchema; releases nothing else.
  void destroyValues();

  // ---- Connection and table list ----------------------------------------------------------
  // Opens the side's connection through clsData and appends " " + outcome + "||" to
  // returnConnectionMessage. A failure shows only there (message #2) and in the connection state.
  void openDatabaseConnection();
  // Loads the table list (schema rowset 20, no restrictions) into databaseSchema. On failure
  // databaseSchema keeps its record set and returnConnectionMessage grows by the failure's
  // number and description and by message #5.
  void openDatabaseSchema();
  // Closes the main connection through clsData. A connection that is already closed is left
  // as it is: no failure reaches the caller.
  void closeConnection();
  // The clsData object's connection (accessCn).
  vb::Ref<ado::Connection> getDatabaseConnection();

  // ---- Keys --------------------------------------------------------------------------------
  // The COLUMN_NAME of the first row of the table's primary-key rowset, or
  // "No primary key Defined". A non-empty tableCatalog is read as the number of the schema
  // rowset to ask (a non-numeric one makes the call fail). Failures go to the caller.
  std::string getAccessPrimaryKey(const std::string& tableNameIn);
  // The foreign-key rowset whose PK_TABLE_NAME is tableNameIn, open and on its first row; a
  // new, unopened record set when the schema query fails.
  vb::Ref<ado::Recordset> getAccessForeignKey(const std::string& tableNameIn);

  // ---- Record queries ----------------------------------------------------------------------
  // Open the first / second record set with sSql; append " " + outcome + " ||" to
  // returnSQLMessage (messages #3 / #4). Never fail.
  void openDataBaseRecordsFromQuery(const std::string& sSql);
  void openSecondDataBaseRecordsFromQuery(const std::string& sSql);
  vb::Ref<ado::Recordset> getDatabaseRecords();
  vb::Ref<ado::Recordset> getDatabaseRecords2();
  // Close the first / second record set when open. closeSecondConnection is the same as
  // closeRecordSet2.
  void closeRecordSet();
  void closeRecordSet2();
  void closeSecondConnection();

  // ---- SQL statements ----------------------------------------------------------------------
  // sSql := "Select * From [" + tableName + "]".
  void formatSQLClause();
  // sSql := "Select * from [" + tableNameIn + "]" + whereClauseIn (which brings its own blank).
  void createSQLStatement(const std::string& whereClauseIn, const std::string& tableNameIn);
  // The SQL literal of field loopCount (0-based) of the current record of recset: quoted text,
  // #date# on a Jet side, other values bare. A Null value fails (94) to the caller.
  std::string formatWhereClauseFromRecordSet(const vb::Ref<ado::Recordset>& recset, const int16_t& loopCount);
  // sSql := "insert into '" + tableNameIn + "'(F1,F2...)VALUES (v1,v2...)" from the current
  // record of the first record set; whereClause holds the VALUES part.
  void formatInsertClauseFromRecordSet(const std::string& tableNameIn);
  // whereClause := " Where " + the conditions that select record currentRecordNumber of
  // tableName from the difference rows: " = " for the first row, " AND name LIKE " after it;
  // a "Null" value leaves the first condition open and drops a later one.
  void formatWhereClauseFromRecordNumber();
  // Executes sSql on the side's connection. returnSQLMessage is replaced: "Successfully
  // Completed", or the failure's number and description and message #6 (result false).
  bool executeSQL();

  // ---- Description and XML -----------------------------------------------------------------
  // Composes the description of the manager and returns the empty string: callers receive "".
  std::string toString();
  // The text that toString composes, for diagnostics.
  std::string describeForDiagnostics() const;
  // Saves the first record set as an XML persisted record set; failures are ignored.
  void saveToXML(const std::string& xmlFileName);

  // ---- Accessors ---------------------------------------------------------------------------
  std::string getConnectionString() const { return connectionString_; }
  // Also decides isAccess from the new text (see checkIsAccess).
  void setConnectionString(const std::string& connectionStringIn);
  // Returns no object (a Nothing reference), deliberately; reach the record sets through
  // getDatabaseRecords / getDatabaseRecords2.
  vb::Ref<clsData> getDataManager();
  void setDataManager(const vb::Ref<clsData>& dataManagerIn) { dataManager_ = dataManagerIn; }
  vb::Ref<ado::Recordset> getDatabaseSchema() const { return databaseSchema_; }
  void setDatabaseSchema(const vb::Ref<ado::Recordset>& databaseSchemaIn) { databaseSchema_ = databaseSchemaIn; }
  vb::Ref<ResultCollection> getResults() const { return results_; }
  void setResults(const vb::Ref<ResultCollection>& resultsIn) { results_ = resultsIn; }
  bool getIsMasterDatabase() const { return isMasterDatabase_; }
  void setIsMasterDatabase(const bool& isMasterDatabaseIn) { isMasterDatabase_ = isMasterDatabaseIn; }
  bool getNewTable() const { return newTable_; }
  void setNewTable(const bool& newTableIn) { newTable_ = newTableIn; }
  std::string getTableName() const { return tableName_; }
  void setTableName(const std::string& tableNameIn) { tableName_ = tableNameIn; }
  std::string getTableCatalog() const { return tableCatalog_; }
  // Ignores its argument and stores the empty string, deliberately.
  void setTableCatalog(const std::string& tableCatalogIn);
  std::string getTableSchema() const { return tableSchema_; }
  // Ignores its argument and stores the empty string, deliberately.
  void setTableSchema(const std::string& tableSchemaIn);
  std::string getTableDataType() const { return tableDataType_; }
  void setTableDataType(const std::string& tableTypeIn) { tableDataType_ = tableTypeIn; }
  bool getIsSorted() const { return isSorted_; }
  void setIsSorted(const bool& isSortedIn) { isSorted_ = isSortedIn; }
  // The text "True" or "False", not a boolean.
  std::string getIsRecordMatched() const;
  void setIsRecordMatched(const bool& isRecordMatchedIn) { isRecordMatched_ = isRecordMatchedIn; }
  std::string getWhereClause() const { return whereClause_; }
  void setWhereClause(const std::string& whereClauseIn) { whereClause_ = whereClauseIn; }
  std::string getSql() const { return sSql_; }
  void setSQL(const std::string& sSqlIn) { sSql_ = sSqlIn; }
  std::string getFieldList() const { return fieldList_; }
  void setFieldList(const std::string& fieldListIn) { fieldList_ = fieldListIn; }
  int32_t getCurrentRecordNumber() const { return currentRecordNumber_; }
  void setCurrentRecordNumber(const int32_t& currentRecordNumberIn) { currentRecordNumber_ = currentRecordNumberIn; }
  int32_t getRecordCount() const { return recordCount_; }
  void setRecordCount(const int32_t& recordCountIn) { recordCount_ = recordCountIn; }
  bool getIsAccess() const { return isAccess_; }
  void setIsAccess(const bool& isAccessIn) { isAccess_ = isAccessIn; }
  std::string getXmlFileName() const { return xmlFileName_; }
  void setXmlFileName(const std::string& xmlFileNameIn) { xmlFileName_ = xmlFileNameIn; }
  bool getSaveToXml() const { return saveToXml_; }
  void setSaveToXml(const bool& saveToXmlIn) { saveToXml_ = saveToXmlIn; }
  bool getListDBObjectsOnly() const { return listDBObjectsOnly_; }
  void setListDBObjectsOnly(const bool& bListDBOjectsOnlyIn) { listDBObjectsOnly_ = bListDBOjectsOnlyIn; }
  vb::Ref<clsResultSet> getResultSetToCopy() const { return resultSetToCopy_; }
  void setResultSetToCopy(const vb::Ref<clsResultSet>& resultSetToCopyIn) { resultSetToCopy_ = resultSetToCopyIn; }
  bool getUseDSN() const { return useDSN_; }
  void setUseDSN(const bool& useDSNIn) { useDSN_ = useDSNIn; }
  std::string getUserID() const { return userID_; }
  void setUserID(const std::string& userIDIn) { userID_ = userIDIn; }
  std::string getPassWord() const { return passWord_; }
  void setPassWord(const std::string& passWordIn) { passWord_ = passWordIn; }
  std::string getReturnConnectionMessage() const { return returnConnectionMessage_; }
  void setReturnConnectionMessage(const std::string& messageIn) { returnConnectionMessage_ = messageIn; }
  std::string getReturnMessage() const { return returnMessage_; }
  void setReturnMessage(const std::string& messageIn) { returnMessage_ = messageIn; }
  std::string getReturnSQLMessage() const { return returnSQLMessage_.str(); }
  // The same text as kept, for readers that append it elsewhere without a copy of their own.
  const MessageText& returnSQLMessageText() const { return returnSQLMessage_; }
  // Puts back a message kept from returnSQLMessageText.
  void setReturnSQLMessageText(MessageText message) { returnSQLMessage_ = std::move(message); }
  void setReturnSQLMessage(const std::string& messageIn) { returnSQLMessage_.assign(messageIn); }
  // The same as setReturnSQLMessage(getReturnSQLMessage() + piece), without copying the text.
  void appendReturnSQLMessage(std::string_view piece) { returnSQLMessage_ += piece; }
  void appendReturnSQLMessage(std::string_view piece, uint64_t times) { returnSQLMessage_.append(piece, times); }
  bool getShowViews() const { return showViews_; }
  void setShowViews(const bool& showViewsIn) { showViews_ = showViewsIn; }
  int32_t getFieldCount() const { return fieldCount_; }
  void setFieldCount(const int32_t& fieldCountIn) { fieldCount_ = fieldCountIn; }

  // The rollback file name: one value shared by every manager of the process, so that the
  // master and the source manager see the same file.
  std::string getRollbackFileName() const;
  void setRollbackFileName(const std::string& rollbackFileNameIn);

  // ---- Writing records (values copied by field position from dataManager2's first record set)
  // Appends dataManager2's current record as a new row of the current table. False, with
  // message #7 in returnSQLMessage, when the add is refused; nothing is half written.
  bool adoAddNewRecord(clsDBManager& dataManager2);
  // Overwrites the first row that sSql selects with dataManager2's values, all but the primary
  // key column, after saving the row to the rollback file FileName. False without a message when
  // sSql selects no row; false with message #7 when the update is refused.
  bool adoUpdateRecord(clsDBManager& dataManager2, const bool& isMaster, const std::string& FileName);

  // The record formatWhereClauseFromRecordNumber built its where clause from last: the clause
  // and the field name and data value of each of its difference rows. A write checks the row
  // that a statement ending in this clause selects against these values.
  struct ComparedRecord {
    std::string whereClause;
    std::vector<std::pair<std::string, std::string>> values;
  };
  const ComparedRecord& getComparedRecord() const { return comparedRecord_; }
  // The record whose where clause a rollback's statement carries (the control hands in the
  // master side's): a rollback whose statement ends in that clause writes only into a row with
  // its key (with all its values when the table has no key).
  void setRollbackRecord(const ComparedRecord& record) { rollbackRecord_ = record; }

  // ---- The rollback file (shared by every manager of the process) ----------------------------
  // Clones recset into the shared rollback record set and saves the first record set to
  // FileName, which becomes the rollback file name (an existing file is kept as it is).
  void saveRollBackInformation(const vb::Ref<ado::Recordset>& recset, const bool& isMaster,
                               const std::string& FileName);
  // Whether the rollback file name holds "ORIGINAL" (isMaster) or "MODIFIED"; says so in a
  // message box ("File Exists" / "File Does Not Exist"). The file system is not consulted.
  bool checkFileExist(const bool& isMaster);
  // Reads the rollback file into the shared rollback record set ("opening File").
  bool openRollbackRecord();
  // Writes the saved values back into the row rollbackSql selects (the key column excepted),
  // with its diagnostic message boxes "test 2", "File Exists", rollbackSql + "test 3", "test 4".
  bool rollback(const bool& isMaster, const std::string& rollbackSql);
  // Shows "test 777 <field> = <value>" for every field of the saved row.
  void tempReadRollBackInformation();

 private:
  friend struct clsDBManagerTestAccess;

  // True when the shared rollback record set is closed.
  bool isRollbackRecordClosed();
  // Opens the first record set on source with a dynamic cursor and optimistic locking, as the
  // writes and the rollback do.
  vb::Ref<ado::Recordset>& openFirstRecordSetForWriting(const std::string& source, ado::CommandTypeEnum options);

  // isAccess from connectionString: unchanged for an empty string; true only when it contains
  // "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" and ".mdb" (case-sensitive).
  void checkIsAccess();
  // The SQL literal of a difference row's value; its data type text read as a 16-bit code.
  std::string formatResultSetValue(const clsResultSet& row) const;
  // The side's clsData object, for the manager's own work; created anew when it was replaced
  // by Nothing.
  clsData& data();

  std::string connectionString_;
  std::string userID_;
  std::string passWord_;
  vb::Ref<clsData> dataManager_;
  vb::Ref<ado::Recordset> databaseSchema_;
  vb::Ref<ResultCollection> results_;
  bool isMasterDatabase_ = false;
  std::string tableName_;
  std::string tableDataType_;
  bool isSorted_ = false;
  bool isRecordMatched_ = false;
  std::string whereClause_;
  std::string sSql_;
  bool newTable_ = false;
  std::string tableCatalog_;
  std::string tableSchema_;
  std::string fieldList_;
  int32_t currentRecordNumber_ = -1;
  vb::Ref<clsResultSet> resultSetToCopy_;
  int32_t recordCount_ = -1;
  bool isAccess_ = false;
  std::string xmlFileName_;
  bool saveToXml_ = false;
  bool listDBObjectsOnly_ = false;
  bool useDSN_ = true;
  std::string returnConnectionMessage_;
  MessageText returnSQLMessage_;
  std::string returnMessage_;
  bool showViews_ = false;
  int32_t fieldCount_ = 0;
  ComparedRecord comparedRecord_;
  ComparedRecord rollbackRecord_;
};

}  // namespace varsentix
