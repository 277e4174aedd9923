#pragma once
// Varsenti: the public control. It owns the master ("Original") and the source ("Modified")
// database sides, the option flags, the progress state and its UpdateCount event, and it offers
// hosts the change-type vocabulary, the machine's ODBC data sources and connection strings.
//
// Arguments cross this interface by reference, as hosts pass them: a non-const reference is
// written back where the operation changes the caller's variable (getDSNName,
// getConncectionStringFromDSN, addUserIDToConnectionString, ...); every other argument is a
// const reference. Failures reach the host as vb::VBError.
#include <cstdint>
#include <exception>
#include <string>

#include "varsentix/control/UpdateCountEvent.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Variant.h"
#include "varsentix/platform/vb/Collection.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/results/clsResultSet.h"

namespace varsentix {

namespace detail {
struct VarsentiInternals;  // reaches the private helpers from the tests
}

class Varsenti {
 public:
  // One side's ordered, 1-based difference rows, shared by reference with its manager.
  using Results = vb::Ref<vb::Collection<clsResultSet>>;

  // Creation: sets the defaults in order and lists the machine's ODBC data sources into the
  // library-wide list (rebuilt by every control created).
  Varsenti();
  ~Varsenti();
  Varsenti(const Varsenti&) = delete;
  Varsenti& operator=(const Varsenti&) = delete;

  // Outgoing event UpdateCount(count, maxCount, readFrom), raised by setCurrentProgressCount.
  UpdateCountEvent UpdateCount;

  // Read/write member kept for hosts; no operation of the control reads or writes it.
  Results results;

  // ---- Option properties (stored and reported back; only showDifferencesOnly is consulted,
  // by the whole-database compare) ------------------------------------------------------------
  bool showDifferencesOnly() const { return showDifferencesOnly_; }
  void showDifferencesOnly(const bool& value) { showDifferencesOnly_ = value; }
  void setshowDifferencesOnly(const bool& showDifferecesIn);
  bool showDataOnly() const { return showDataOnly_; }
  void showDataOnly(const bool& value) { showDataOnly_ = value; }
  void setShowDataOnly(const bool& showDataOnlyIn);
  bool ShowSameTables() const { return ShowSameTables_; }
  void ShowSameTables(const bool& value) { ShowSameTables_ = value; }
  bool compareFieldLengths() const { return compareFieldLengths_; }
  void compareFieldLengths(const bool& value) { compareFieldLengths_ = value; }
  bool compareTableDataTypes() const { return compareTableDataTypes_; }
  void compareTableDataTypes(const bool& value) { compareTableDataTypes_ = value; }
  bool compareTables() const { return compareTables_; }
  void compareTables(const bool& value) { compareTables_ = value; }
  bool logErrors() const { return logErrors_; }
  void logErrors(const bool& value) { logErrors_ = value; }
  void setLogErrors(const bool& m_logErrorsIn);

  // saveToXML stays false for the control's whole life: the let stores the member's own value
  // back into it and ignores its argument.
  bool saveToXML() const { return saveToXML_; }
  void saveToXML(const bool& value);

  // The let of pathForErrLog copies its argument and invokes itself again with the copy, without
  // end; the member is never written. The exhausted recursion fails the call with error 28
  // "Out of stack space" (never a crash). setPathForErrLog goes the same way.
  std::string pathForErrLog() const { return pathForErrLog_; }
  void pathForErrLog(const std::string& value);
  void setPathForErrLog(const std::string& pathforErrLogIn);

  // ---- Data managers (each created on first use, never initialised by the control) ----------
  vb::Ref<clsDBManager> getMasterDataManager();
  vb::Ref<clsDBManager> getSourceDataManager();
  void setMasterDataManager(const vb::Ref<clsDBManager>& masterDataManagerIn);
  void setSourceDataManager(const vb::Ref<clsDBManager>& sourceDataManagerIn);
  void setMasterResultsFromDataManager(const vb::Ref<clsDBManager>& masterDataManagerIn);
  void setSourceResultsFromDataManager(const vb::Ref<clsDBManager>& sourceDataManagerIn);
  void setMasterResultSets(const Results& masterResultsIn);
  void setSourceResults(const Results& sourceResultsIn);
  // The published collections; an empty reference until a compare (or a host) sets them.
  Results getMasterDatabaseResults() const { return masterResults_; }
  Results getSourceDatabaseResults() const { return sourceResults_; }
  // Creates the master manager if needed and gives it the field list; the source is untouched.
  void setMasterFieldList(const std::string& fieldListIn);
  // Exchanges the two managers (creating them if needed); the published results stay put.
  void swapValues();
  // Creates the managers if needed and empties their result collections, master first.
  void resetDataManagers();

  // ---- Progress --------------------------------------------------------------------------
  // currentProgressCount := count, then raises UpdateCount(currentProgressCount, maxCount,
  // readingFrom). A handler that changes count changes the progress position; maxCount and
  // readingFrom are the caller's own variables. The maximum is not stored.
  void setCurrentProgressCount(int32_t& currentProgressCountIn, int32_t& currentProgressCountMaxIn,
                               std::string& readingFrom);
  int32_t getCurrentProgressCount() const { return currentProgressCount_; }
  // Always 1: nothing stores the maximum.
  int32_t getCurrentProgressCountMax() const { return currentProgressCountMax_; }
  std::string getCurrentTableName() const { return currentTableName_; }
  void setCurrentTableName(const std::string& tableNameIn) { currentTableName_ = tableNameIn; }
  int32_t getTotalRecordsForTable() const { return totalRecordsForTable_; }
  void setTotalRecordsForTable(const int32_t& totalRecordsForTableIn) {
    totalRecordsForTable_ = totalRecordsForTableIn;
  }
  int32_t getTotalRecordsForSourceTable() const { return totalRecordsForSourceTable_; }
  void setTotalRecordsForSourceTable(const int32_t& totalRecordsForSourceTableIn) {
    totalRecordsForSourceTable_ = totalRecordsForSourceTableIn;
  }
  int32_t getCurrentRecordCountMaster() const { return currentRecordCountMaster_; }
  void setCurrentRecordCountMaster(const int32_t& currentRecordCountMasterIn) {
    currentRecordCountMaster_ = currentRecordCountMasterIn;
  }
  int32_t getCurrentRecordCountSource() const { return currentRecordCountSource_; }
  // Changes nothing: the value goes into a temporary that is discarded; the member stays 0.
  void setCurrentRecordCountSource(const int32_t& currentRecordCountSourceIn);
  // Does nothing; raises no event.
  void testEvent();
  // The engine's data-comparison progress on this thread, or 1 while that is 0.
  int32_t getDataProgressStatus() const;
  // The engine's data-comparison progress maximum on this thread, or 100 while that is 0.
  int32_t getDataProgressStatusMax() const;

  // ---- Error log ---------------------------------------------------------------------------
  std::string getErrorMessagesForLog() const { return errorMessagesForLog_; }
  void setErrorMessagesForLog(const std::string& errorMessagesForLogIn) {
    errorMessagesForLog_ = errorMessagesForLogIn;
  }
  // "Connection issues =" + connection message + "Database issues " + SQL message +
  // "General Issues " + general message of the master (isMaster) or the source manager.
  std::string getErrorLogs(const bool& isMaster);

  // ---- Change types ------------------------------------------------------------------------
  std::string getChangeDesciption(const int16_t& changeType) const;
  std::string getConstantForNoChange() const;  // the empty text, not "0"
  std::string getConstantForNewTable() const;
  std::string getConstantForNewField() const;
  std::string getConstantNewField() const;
  std::string getConstantForDifferentDataType() const;
  std::string getConstantForDifferentSize() const;
  std::string getConstantForNewRecord() const;
  std::string getConstantForDifferentDataValue() const;

  // ---- ODBC data sources (the library-wide list filled at creation) -------------------------
  // The list's upper bound: the number of data sources plus the closing entry.
  int16_t getODBCConnectionCount() const;
  // The entry "DSN=<name> | <driver>" at index (0 is the empty text); 9 "Subscript out of
  // range" outside the list.
  std::string getODBCConnection(const int16_t& index) const;
  // The name of an entry; the host's variable loses everything up to and including "DSN=".
  std::string getDSNName(std::string& dsNameIn) const;
  std::string getDriverName(std::string& dsNameIn) const;

  // ---- Connection strings ------------------------------------------------------------------
  // useDSN false: the Jet provider prefix followed directly by the path; true: the string of
  // the data-source entry pathtoDB (which loses its "DSN=" prefix).
  std::string getOLEDBConnectionFromPath(std::string& pathtoDB, const bool& useDSN);
  std::string getConncectionStringFromDSN(std::string& dsnIn);
  // Appends " ;User ID=" + userID unless ";User ID=" is there already, into the caller's variable.
  std::string addUserIDToConnectionString(const std::string& userID, std::string& connectionString);
  std::string addPasswordToConnectionString(const std::string& passWordIn,
                                            std::string& connectionString);

  // ---- Field data types --------------------------------------------------------------------
  std::string getFieldDataDescrition(const int16_t& dataType) const;

  // ---- Compare entry points ----------------------------------------------------------------
  // Each prepares the two sides, runs the comparison in its fixed order (master first) and,
  // when both sides hold rows, publishes their result collections. Failures are recorded in
  // the managers' messages (#74 to #77) or skipped, never thrown.
  bool getTables(const std::string& masterConnectionString, const std::string& sourceConnectionString);
  bool beginFullDatabaseCompare(const std::string& masterConnectionString,
                                const std::string& sourceConnectionString, const bool& listObjectsOnly);
  // Compares nothing and returns false.
  bool beginDatabaseCompareWithConnection(const vb::Ref<ado::Connection>& masterConnection,
                                          const vb::Ref<ado::Connection>& sourceConnection);
  bool beginTableFullDataCompare(const std::string& masterConnectionString,
                                 const std::string& sourceConnectionString, const std::string& tableName,
                                 const std::string& tableType);
  bool beginTablebaseCompare(const std::string& masterConnectionString,
                             const std::string& sourceConnectionString, const std::string& tableName,
                             const std::string& tableType);
  bool beginTableCompareFromDBManagers(const vb::Ref<clsDBManager>& masterDatamanager,
                                       const vb::Ref<clsDBManager>& sourceDatamanager);
  bool beginTableCompareFromFieldListFromDBManager(const vb::Ref<clsDBManager>& masterDatamanager,
                                                   const vb::Ref<clsDBManager>& sourceDatamanager);
  bool beginTableCompareFromFieldListFromDbManagers();
  bool beginTableCompareFromFieldList(const std::string& masterConnectionString,
                                      const std::string& sourceConnectionString, const std::string& tableName,
                                      const std::string& tableType, const vb::Variant& fieldList);
  bool checkFieldLength(const vb::Ref<ado::Recordset>& recSet1, const vb::Ref<ado::Recordset>& recSet2,
                        const int32_t& index);

  // ---- Buffered comparison and record matching ----------------------------------------------
  bool getBufferedResults();
  int32_t getBufferedAmount() const;
  void setBufferedAmount(const int32_t& bufferedAmountIn);
  int32_t getStartPoint() const;
  void setStartPoint(const int32_t& startPointIn);
  bool getRecordsExistInSourceOnly() const;
  void setRecordsExistInSourceOnly(const bool& recordsExistInSourceOnlyIn);
  bool getRecordsExistInMasterOnly() const;
  void setRecordsExistInMasterOnly(const bool& recordsExistInMasterOnlyIn);
  vb::Ref<clsResultSet> getMatchingResultSet() const;
  void setMatchingResultSet(const vb::Ref<clsResultSet>& matchingResultSetIn);
  int32_t getMatchingRecordNumber(const bool& isMaster, const std::string& tableName,
                                  const std::string& primaryKeyName, const std::string& primaryKeyValue);
  int32_t lookupRelatedRecordFromRecordNumber(const std::string& tableName, const bool& isMaster,
                                              const int32_t& recordNumber);

  // ---- Result queries (1-based indexes; isMaster names the side) ------------------------------
  vb::Ref<clsResultSet> getResultSet(const int32_t& index, const bool& isMaster);
  int32_t getResultCount(const bool& isMaster);
  std::string getDatabaseObjectName(const int32_t& index);
  std::string getResultDatabaseObjectName(const int32_t& index, const bool& isMaster);
  std::string getResultPrimaryKey(const int32_t& index, const bool& isMaster);
  std::string getResultForeignKeyName(const int32_t& index, const bool& isMaster);
  std::string getResultForeignKeyColumnName(const int32_t& index, const bool& isMaster);
  std::string getResultForeignKeyPrimaryKeyName(const int32_t& index, const bool& isMaster);
  std::string getResultFKeyPrimaryTableName(const int32_t& index, const bool& isMaster);
  std::string getResultDataType(const int32_t& index, const bool& isMaster);
  std::string getResultFieldName(const int32_t& index, const bool& isMaster);
  std::string getResultFieldDefinedSize(const int32_t& index, const bool& isMaster);
  std::string getResultFieldActualSize(const int32_t& index, const bool& isMaster);
  std::string getResultFieldValue(const int32_t& index, const bool& isMaster);
  bool getResultIsDataValue(const int32_t& index, const bool& isMaster);
  bool getResultIsFieldDesc(const int32_t& index, const bool& isMaster);
  bool getResultIsFieldComparable(const int32_t& index, const bool& isMaster);
  int16_t getResultChangeType(const int32_t& index, const bool& isMaster);
  int16_t getResultFieldLength(const int32_t& index, const bool& isMaster);
  std::string getPrimaryKeyFromTableName(const std::string& tableName, const bool& isMaster);
  int16_t getResultFieldCount(const bool& isMaster, const std::string& tableName);
  int32_t getResultRecordCountForTable(const std::string& tableName, const bool& isMaster);
  std::string getResultFieldValueFromFieldName(const std::string& tableName, const bool& isMaster,
                                               const std::string& fieldName, const int32_t& currIndex);
  int32_t getResultRecordNumber(const std::string& tableName, const bool& isMaster, const int32_t& currIndex);
  int32_t getIndexForRecordNumber(const std::string& tableName, const int32_t& recordNumber, const bool& isMaster);
  int32_t incrementRecordCount(const std::string& tableName, const bool& isMaster, const int32_t& currentCount);
  int32_t DecrementRecordCount(const std::string& tableName, const bool& isMaster, const int32_t& currentCount);
  int32_t getLastRecordForTable(const std::string& tableName, const bool& isMaster);
  int32_t getRecordCountInResultsForTable(const std::string& tableName, const bool& isMaster);
  bool lastRecord(const std::string& tableName, const int32_t& currentIndex, const bool& isMaster);
  vb::Ref<clsResultSet> getResultSetFromRecordNumber(const std::string& tableName, const int32_t& recordNumber,
                                                     const bool& isMaster);
  std::string getFieldValueFromRecordNumber(const std::string& tableName, const std::string& fieldName,
                                            const int32_t& recordNumber, const bool& isMaster);
  std::string getFieldChangeTypeFromRecordNumber(const std::string& tableName, const std::string& fieldName,
                                                 const int32_t& recordNumber, const bool& isMaster);

  // ---- Record operations -------------------------------------------------------------------
  // Updates the current record (each manager's currentRecordNumber) of one side from the other:
  // isMaster copies the master's values into the source. Returns "" or the source's SQL message.
  std::string updateRecordFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamanager,
                                           const vb::Ref<clsDBManager>& sourceDatamanager, const bool& isMaster,
                                           const std::string& FileName);
  // Copies the current record of the master (isMaster) or the source side into the other side.
  // "Cannot copy record." when the record shows no difference; "" otherwise, even when the add
  // is refused (a message box then shows why).
  std::string copyRecordFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamanager,
                                         const vb::Ref<clsDBManager>& sourceDatamanager, const bool& isMaster);
  // Rolls an update back from the rollback file; the first argument is not used (the control's
  // own master manager serves). Shows "test 0.7 ", "test 0.9 " and "test 0.12 " message boxes.
  std::string rollBackFromRecordNumber(const vb::Ref<clsDBManager>& masterDatamananger,
                                       const vb::Ref<clsDBManager>& sourceDatamanager, const bool& isMaster,
                                       const std::string& FileName);
  std::string rollBackFromSQL(const vb::Ref<clsDBManager>& masterDatamananger,
                              const vb::Ref<clsDBManager>& sourceDatamanager, const bool& isMaster,
                              const std::string& FileName, const std::string& rollbackSql);
  std::string getRollBackSQL() const;
  void setRollBackSQL(const std::string& rollBackSQLIn);
  // The library-wide rollback file name.
  vb::Variant getSaveFile() const;

 private:
  friend struct detail::VarsentiInternals;

  // Compare drivers' shared steps.
  void clearSideMessages();
  void publish(clsDBManager& master, clsDBManager& source);
  void recordDriverFailure(const std::exception_ptr& failure, const std::string& numberedText);
  void saveSidesToXml(clsDBManager& master, clsDBManager& source);
  bool publishBufferedOutcome(clsDBManager& master, clsDBManager& source);
  // Result queries' shared steps.
  const Results& resultsOf(bool isMaster) const;
  void recordQueryFailure(const std::exception_ptr& failure, const std::string& masterText,
                          const std::string& sourceText);
  bool isIndexValid(const int32_t& index, const bool& isMaster);
  template <typename Getter>
  std::string rowText(const int32_t& index, const bool& isMaster, Getter getter);
  template <typename Getter>
  bool rowFlag(const int32_t& index, const bool& isMaster, Getter getter);
  bool hasRowsOfTable(const std::string& tableName, const bool& isMaster);
  int32_t indexOfRecordField(const std::string& tableName, const std::string& fieldName,
                             const int32_t& recordNumber, const bool& isMaster);
  // Record operations' shared steps.
  bool canCopyRecord(clsDBManager& from, const bool& isMaster);
  std::string firstFieldNameFrom(const std::string& tableName, int32_t index, const bool& isMaster);
  std::string selectRollbackRows(clsDBManager& C, clsDBManager& S);
  std::string finishRollback(clsDBManager& C, clsDBManager& S, const bool& isMaster, const std::string& rollbackSql);

  // Removes a file that exists (retrying while it is held); never reports anything.
  void deleteFileIfExists(const std::string& path);
  void letPathForErrLog(const std::string& value);

  bool compareTables_ = false;
  bool compareTableDataTypes_ = false;
  bool compareFieldLengths_ = false;
  bool ShowSameTables_ = false;
  bool showDifferencesOnly_ = false;
  bool showDataOnly_ = false;
  bool saveToXML_ = false;
  Results masterResults_;
  Results sourceResults_;
  std::string indexErrorMessage_;
  vb::Ref<clsDBManager> masterDataManager_;
  vb::Ref<clsDBManager> sourceDataManager_;
  std::string pathForErrLog_;
  std::string errorMessagesForLog_;
  bool logErrors_ = false;
  int32_t currentProgressCountMax_ = 0;
  int32_t currentProgressCount_ = 0;
  std::string currentTableName_;
  int32_t totalRecordsForTable_ = 0;
  int32_t totalRecordsForSourceTable_ = 0;
  int32_t currentRecordCountMaster_ = 0;
  int32_t currentRecordCountSource_ = 0;
  vb::Ref<clsResultSet> matchingResultSet_;
  bool recordsExistInSourceOnly_ = false;
  bool recordsExistInMasterOnly_ = false;
  int32_t bufferedAmount_ = 0;
  int32_t startPoint_ = 0;
  std::string rollBackSQL_;
};

}  // namespace varsentix
