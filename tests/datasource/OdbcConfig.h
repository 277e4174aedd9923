#pragma once
// A private ODBC configuration for one test: a folder holding odbcinst.ini (real drivers) and
// odbc.ini (the test's data sources), and a way to run code in a process that uses it.
//
// unixODBC reads ODBCSYSINI once per process and keeps it, so every listing runs in a child
// process (fork) that sets the variables before its first ODBC call. The child hands its
// observations back as lines of text; the test process compares them.
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/TempDir.h"

namespace varsentix::testing {

// The driver names odbcinst.ini registers, each pointing at a real driver library.
inline constexpr const char* kSQLiteDriver = "SQLite3";
inline constexpr const char* kPostgreSQLDriver = "PostgreSQL Unicode";
inline constexpr const char* kMariaDBDriver = "MariaDB Unicode";
inline constexpr const char* kAccessDriver = "Microsoft Access Driver (*.mdb)";
inline constexpr const char* kShortDriver = "D1";    // the SQLite driver again, under a short name
inline constexpr const char* kLongerDriver = "D22";  // the PostgreSQL driver again

struct DataSource {
  std::string name;
  std::string driver;
  std::vector<std::pair<std::string, std::string>> settings;  // written as "name=text"
};

class OdbcConfig {
 public:
  // Writes odbcinst.ini and an odbc.ini with the given data sources, in that order.
  explicit OdbcConfig(const std::vector<DataSource>& dataSources);

  // The folder ODBCSYSINI names.
  std::string folder() const { return dir_.path().string(); }
  // Another folder for HOME, where no .odbc.ini lies unless a test writes one.
  std::string home() const { return (dir_.path() / "home").string(); }

  void writeOdbcIni(const std::vector<DataSource>& dataSources) const;
  void writeOdbcIniText(const std::string& text) const;
  void removeOdbcIni() const;
  void writeUserOdbcIni(const std::vector<DataSource>& dataSources) const;

 private:
  TempDir dir_;
};

// The text of an ini file holding these sections.
std::string iniText(const std::vector<DataSource>& dataSources);

// Runs body in a child process with ODBCSYSINI = config.folder(), HOME = config.home() and the
// per-user file ODBCINI = config.home()/.odbc.ini (ODBCINSTINI removed), and returns the lines it produced. A child that throws or
// dies yields a test failure and a line saying so.
std::vector<std::string> inChildProcess(const OdbcConfig& config,
                                        const std::function<std::vector<std::string>()>& body);

// Sets an environment variable for its lifetime and restores it afterwards (nullptr: unset).
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const char* value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  bool hadValue_ = false;
  std::string previous_;
};

// Lines describing the data-source list: "count=N" (or "count: error 9"), then each entry 0..N
// as "[i]=text".
std::vector<std::string> describeDataSourceList();

// The nwind.mdb sample, as an absolute path.
std::string northwindPath();

}  // namespace varsentix::testing
