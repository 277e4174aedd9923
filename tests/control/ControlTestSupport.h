#pragma once
// Helpers of the control tests: environment variables set for one test, and a private ODBC
// configuration (system and user odbc.ini) in a temporary folder.
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/TempDir.h"

namespace varsentix::testing {

// Sets (or, with nullopt, removes) an environment variable; puts the old value back when it goes.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) previous_ = old;
    if (value) {
      ::setenv(name_.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  ~ScopedEnv() {
    if (previous_) {
      ::setenv(name_.c_str(), previous_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

// One data source of the fixture: its name, its driver text and further "key=value" lines.
struct DataSourceSpec {
  std::string name;
  std::string driver;
  std::vector<std::string> settings;
};

// The ODBC driver manager reads its data sources from a fresh folder while this lives: the
// system odbc.ini there holds the given data sources, the user odbc.ini is empty.
class OdbcDataSourceFixture {
 public:
  explicit OdbcDataSourceFixture(const std::vector<DataSourceSpec>& dataSources)
      : sysIni_("ODBCSYSINI", dir_.path().string()),
        userIni_("ODBCINI", dir_.file("user-odbc.ini")),
        home_("HOME", dir_.path().string()) {
    std::ofstream(dir_.file("user-odbc.ini")) << "";
    std::ofstream(dir_.file("odbcinst.ini")) << "";
    std::ofstream system(dir_.file("odbc.ini"));
    for (const auto& source : dataSources) {
      system << "[" << source.name << "]\nDriver=" << source.driver << "\n";
      for (const auto& line : source.settings) system << line << "\n";
      system << "\n";
    }
  }

 private:
  TempDir dir_;
  ScopedEnv sysIni_;
  ScopedEnv userIni_;
  ScopedEnv home_;
};

}  // namespace varsentix::testing
