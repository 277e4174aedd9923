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
#include <string>

#include "varsentix/control/UpdateCountEvent.h"
#include "varsentix/dbside/clsDBManager.h"
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

 private:
  friend struct detail::VarsentiInternals;

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
