#pragma once
// ModDNS: the machine's ODBC data sources and the connection strings built from them.
//
// The data-source list is process-wide and shared by every control: a zero-based list whose
// entry 0 is always empty, entries 1..n are "DSN=" + name + " | " + driver description in the
// driver manager's order, and one closing entry follows them, so its upper bound is n + 1.
#include <cstdint>
#include <string>

namespace varsentix::ModDNS {

// Fixed texts of the connection strings; each prefix is followed directly by its value.
inline constexpr const char* jetPrefix = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
inline constexpr const char* odbcPrefix = "Provider=MSDASQL;Persist Security Info=False;Data Source=";
inline constexpr const char* userIdKey = ";User ID=";
inline constexpr const char* passwordKey = ";Password=";
inline constexpr const char* odbcIniKey = "SOFTWARE\\ODBC\\ODBC.INI\\";
inline constexpr const char* dbqValue = "DBQ";

// Set by every buildConnectionStringFromDSN to whether the entry's driver is file based.
// Nothing reads it afterwards.
extern bool isFileDriver;

// Rebuilds the list from the driver manager (libodbc, loaded at run time). The entry after the
// last data source is the one of the final, unsuccessful fetch: the driver manager writes
// neither buffer nor length then, so it holds "DSN=", as many blanks as the previous name had
// characters, " | " and as many blanks as the previous description had ("DSN= | " with no data
// source at all). When the environment cannot be allocated the list keeps what it held and
// nothing is shown. Any failure (driver manager missing, more than 32766 data sources) shows the
// message box "No ODBC connections were found on this system"; the list keeps what it held
// until then.
void loadODBCDataSources();

// The list's upper bound. Raises 9 "Subscript out of range" while the list was never filled.
int16_t getDataSourceCount();

// A copy of the entry at index (0 gives the empty text). Raises 9 "Subscript out of range" for an
// index outside 0..getDataSourceCount() or while the list was never filled.
std::string getDataSourceEntry(int16_t index);

// The data source's name of an entry ("Stock" of "DSN=Stock | Microsoft Access Driver (*.mdb)").
// When the entry contains "DSN=" (anywhere, exact case) its first four characters are dropped
// and it is trimmed in place: the caller's text then reads "Stock | Microsoft Access Driver
// (*.mdb)", and a second call on it gives the empty text. Without "DSN=" or without a bar the
// name is empty.
std::string parseDSNName(std::string& entry);

// The trimmed text after the entry's first bar, or empty without one. The entry is not changed.
std::string parseDriverName(const std::string& entry);

// Whether driver contains "Access", "Fox" or "dBase" (exact case, anywhere).
bool isFileBasedDriver(const std::string& driver);

// The connection string for an entry. Takes the name with parseDSNName, so entry loses its
// "DSN=" prefix. An Access driver opens through the Jet provider on the data source's DBQ file;
// any other driver through MSDASQL on the data source's name.
std::string buildConnectionStringFromDSN(std::string& entry);

// For a file-based driver: jetPrefix + the machine-wide DBQ setting of the data source name when
// driver contains "Access" (jetPrefix alone when there is none), otherwise odbcPrefix + name.
std::string getFileDSNConnectionString(const std::string& name, const std::string& driver);

// jetPrefix + pathtoDB as it stands when useDSN is false; with useDSN true pathtoDB is a
// data-source entry and the result is getConncectionStringFromDSN(pathtoDB).
std::string getOLEDBConnectionFromPath(std::string& pathtoDB, const bool& useDSN);

// buildConnectionStringFromDSN(dsnIn): dsnIn loses its "DSN=" prefix.
std::string getConncectionStringFromDSN(std::string& dsnIn);

// Appends " ;User ID=" + userID to connectionString (in place) unless it already contains
// ";User ID=" (exact case), and returns it. Nothing is checked or escaped.
std::string addUserIDToConnectionString(const std::string& userID, std::string& connectionString);

// Appends " ;Password=" + passWordIn to connectionString (in place) unless it already contains
// ";Password=" (exact case), and returns it. Nothing is checked or escaped.
std::string addPasswordToConnectionString(const std::string& passWordIn,
                                          std::string& connectionString);

}  // namespace varsentix::ModDNS
