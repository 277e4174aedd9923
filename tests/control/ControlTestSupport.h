#pragma once
// Helpers of the control tests: a private ODBC configuration (system and user odbc.ini) in a
// temporary folder.
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "control/ScopedEnv.h"
#include "support/TempDir.h"

namespace varsentix::testing {

// One data source of the fixture: its name, its driver text and further "key=value" lines.
struct FixtureDataSource {
  std::string name;
  std::string driver;
  std::vector<std::string> settings;
};

// The ODBC driver manager reads its data sources from a folder of this process while a fixture
// lives: the system odbc.ini there holds the given data sources, the user odbc.ini is empty.
// The driver manager keeps the system folder it saw first for the whole process, so every
// fixture of a process writes into the same folder (a copy of the drivers' odbcinst.ini of the
// test run included) and empties its odbc.ini again when it goes.
class OdbcDataSourceFixture {
 public:
  explicit OdbcDataSourceFixture(const std::vector<FixtureDataSource>& dataSources) {
    const TempDir& dir = folder();
    std::ofstream system(dir.file("odbc.ini"), std::ios::trunc);
    for (const auto& source : dataSources) {
      system << "[" << source.name << "]\nDriver=" << source.driver << "\n";
      for (const auto& line : source.settings) system << line << "\n";
      system << "\n";
    }
  }
  ~OdbcDataSourceFixture() { std::ofstream(folder().file("odbc.ini"), std::ios::trunc) << ""; }
  OdbcDataSourceFixture(const OdbcDataSourceFixture&) = delete;
  OdbcDataSourceFixture& operator=(const OdbcDataSourceFixture&) = delete;

 // Made once per process; ODBCSYSINI, ODBCINI and HOME point into it from then on. Runs
  // before main (see below), since the driver manager reads ODBCSYSINI only once.
  static const TempDir& folder() {
    static const TempDir dir;
    static const bool prepared = [] {
      std::ofstream(dir.file("user-odbc.ini")) << "";
      std::ofstream(dir.file("odbc.ini")) << "";
      std::ofstream drivers(dir.file("odbcinst.ini"));
      if (const char* old = std::getenv("ODBCSYSINI")) {
        std::ifstream original(std::string(old) + "/odbcinst.ini");
        drivers << original.rdbuf();
      }
      ::setenv("ODBCSYSINI", dir.path().c_str(), 1);
      ::setenv("ODBCINI", dir.file("user-odbc.ini").c_str(), 1);
      ::setenv("HOME", dir.path().c_str(), 1);
      return true;
    }();
    static_cast<void>(prepared);
    return dir;
  }
};

// Points the driver manager at the fixtures' folder before any test talks to it.
inline const bool odbcFixtureFolderReady = (OdbcDataSourceFixture::folder(), true);

}  // namespace varsentix::testing
