#include "varsentix/datasource/ModDNS.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "platform/odbc/OdbcApi.h"
#include "varsentix/datasource/modRegFunctions.h"
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ModDNS {

bool isFileDriver = false;

namespace {

constexpr SQLSMALLINT kBufferLength = 1024;
constexpr const char* kNoConnectionsMessage = "No ODBC connections were found on this system";

// The process-wide list. "dimensioned" is false until the first fill: an undimensioned list has
// no bounds at all, so every subscript fails.
struct DataSourceList {
  bool dimensioned = false;
  std::vector<std::string> entries;
};

DataSourceList& dataSourceList() {
  static DataSourceList list;
  return list;
}

// ReDim Preserve list(0 To upperBound).
void redimPreserve(int16_t upperBound) {
  DataSourceList& list = dataSourceList();
  list.entries.resize(static_cast<size_t>(upperBound) + 1);
  list.dimensioned = true;
}

// Integer arithmetic: 32767 + 1 overflows (6).
int16_t plusOne(int16_t counter) {
  if (counter == std::numeric_limits<int16_t>::max()) vb::raiseError(vb::errnum::Overflow);
  return static_cast<int16_t>(counter + 1);
}

// Frees the environment handle when the listing ends, however it ends.
class Environment {
 public:
  Environment(const odbc::OdbcApi& api, SQLHENV handle) : api_(api), handle_(handle) {}
  ~Environment() { api_.SQLFreeHandle(SQL_HANDLE_ENV, handle_); }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  SQLHENV get() const { return handle_; }

 private:
  const odbc::OdbcApi& api_;
  SQLHENV handle_;
};

// The listing itself; failures leave it as exceptions.
void fillDataSourceList() {
  const odbc::OdbcApi& api = odbc::odbcApi();
  SQLHENV handle = SQL_NULL_HENV;
  if (api.SQLAllocEnv(&handle) == SQL_ERROR) return;
  Environment environment(api, handle);

  SQLRETURN status = 0;
  int16_t i = 1;
  // The lengths live across fetches: the final, unsuccessful fetch leaves them as they were.
  SQLSMALLINT nameLength = 0;
  SQLSMALLINT descriptionLength = 0;
  std::string nameBuffer;
  std::string descriptionBuffer;
  while (status == 0) {
    redimPreserve(i);
    nameBuffer.assign(kBufferLength, ' ');
    descriptionBuffer.assign(kBufferLength, ' ');
    status = api.SQLDataSources(environment.get(), SQL_FETCH_NEXT,
                                reinterpret_cast<SQLCHAR*>(nameBuffer.data()), kBufferLength,
                                &nameLength,
                                reinterpret_cast<SQLCHAR*>(descriptionBuffer.data()),
                                kBufferLength, &descriptionLength);
    std::string name = vb::Left(nameBuffer, nameLength);
    std::string description = vb::Left(descriptionBuffer, descriptionLength);
    dataSourceList().entries[static_cast<size_t>(i)] = "DSN=" + name + " | " + description;
    i = plusOne(i);
  }
}

void checkSubscript(int32_t index) {
  const DataSourceList& list = dataSourceList();
  if (!list.dimensioned || index < 0 || static_cast<size_t>(index) >= list.entries.size())
    vb::raiseError(vb::errnum::SubscriptOutOfRange);
}

}  // namespace

void loadODBCDataSources() {
  try {
    fillDataSourceList();
  } catch (...) {
    ui::MsgBox(kNoConnectionsMessage);
  }
}

int16_t getDataSourceCount() {
  checkSubscript(0);
  return static_cast<int16_t>(dataSourceList().entries.size() - 1);
}

std::string getDataSourceEntry(int16_t index) {
  checkSubscript(index);
  return dataSourceList().entries[static_cast<size_t>(index)];
}

std::string parseDSNName(std::string& entry) {
  std::string name;
  vb::ResumeNext step;
  if (vb::InStr(entry, "DSN=") > 0) {
    step([&] { entry = vb::Trim(vb::Right(entry, static_cast<int32_t>(entry.size()) - 4)); });
    step([&] { name = vb::Trim(vb::Left(entry, vb::InStr(entry, "|") - 1)); });
  }
  return name;
}

std::string parseDriverName(const std::string& entry) {
  int32_t bar = vb::InStr(entry, "|");
  if (bar == 0) return {};
  return vb::Trim(vb::Mid(entry, bar + 1));
}

bool isFileBasedDriver(const std::string& driver) {
  return vb::InStr(driver, "Access") > 0 || vb::InStr(driver, "Fox") > 0 ||
         vb::InStr(driver, "dBase") > 0;
}

std::string buildConnectionStringFromDSN(std::string& entry) {
  vb::ResumeNext step;
  std::string name;
  std::string driver;
  std::string result;
  step([&] { name = parseDSNName(entry); });
  step([&] { driver = parseDriverName(entry); });
  step([&] { isFileDriver = isFileBasedDriver(driver); });
  if (isFileDriver) {
    step([&] { result = getFileDSNConnectionString(name, driver); });
  } else {
    step([&] { result = odbcPrefix + name; });
  }
  return result;
}

std::string getFileDSNConnectionString(const std::string& name, const std::string& driver) {
  vb::ResumeNext step;
  std::string result;
  if (vb::InStr(driver, "Access") > 0) {
    step([&] {
      std::string path = modRegFunctions::getRegistryString(odbcIniKey + name, dbqValue);
      result = jetPrefix + path;
    });
  } else {
    step([&] { result = odbcPrefix + name; });
  }
  return result;
}

std::string getOLEDBConnectionFromPath(std::string& pathtoDB, const bool& useDSN) {
  if (useDSN) return getConncectionStringFromDSN(pathtoDB);
  return jetPrefix + pathtoDB;
}

std::string getConncectionStringFromDSN(std::string& dsnIn) {
  return buildConnectionStringFromDSN(dsnIn);
}

std::string addUserIDToConnectionString(const std::string& userID, std::string& connectionString) {
  if (vb::InStr(connectionString, userIdKey) == 0)
    connectionString = connectionString + " " + userIdKey + userID;
  return connectionString;
}

std::string addPasswordToConnectionString(const std::string& passWordIn,
                                          std::string& connectionString) {
  if (vb::InStr(connectionString, passwordKey) == 0)
    connectionString = connectionString + " " + passwordKey + passWordIn;
  return connectionString;
}

}  // namespace varsentix::ModDNS
