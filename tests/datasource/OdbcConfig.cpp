#include "datasource/OdbcConfig.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "varsentix/datasource/ModDNS.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::testing {
namespace {

void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::trunc);
  file << text;
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

// Every driver is a real library from the Debian packages libsqliteodbc, odbc-postgresql,
// odbc-mariadb and (for the Access name, when installed) odbc-mdbtools.
std::string odbcinstText() {
  const std::vector<DataSource> drivers = {
      {kSQLiteDriver, "", {{"Description", "SQLite3 ODBC Driver"}, {"Driver", VARSENTIX_SQLITE_ODBC_DRIVER}}},
      {kPostgreSQLDriver, "", {{"Description", "PostgreSQL ODBC driver (Unicode version)"}, {"Driver", VARSENTIX_POSTGRESQL_ODBC_DRIVER}}},
      {kMariaDBDriver, "", {{"Description", "MariaDB Connector/ODBC(Unicode)"}, {"Driver", VARSENTIX_MARIADB_ODBC_DRIVER}}},
      {kAccessDriver, "", {{"Description", "Access files"}, {"Driver", VARSENTIX_ACCESS_ODBC_DRIVER}}},
      {kShortDriver, "", {{"Driver", VARSENTIX_SQLITE_ODBC_DRIVER}}},
      {kLongerDriver, "", {{"Driver", VARSENTIX_POSTGRESQL_ODBC_DRIVER}}},
  };
  return iniText(drivers);
}

void setOrUnset(const char* name, const char* value) {
  if (value != nullptr)
    setenv(name, value, 1);
  else
    unsetenv(name);
}

// In the child: run the body and write its lines (or the failure) to fd; never returns.
[[noreturn]] void runChild(int fd, const OdbcConfig& config,
                           const std::function<std::vector<std::string>()>& body) {
  std::string out;
  int status = 0;
  try {
    setenv("ODBCSYSINI", config.folder().c_str(), 1);
    setenv("HOME", config.home().c_str(), 1);
    setenv("ODBCINI", (config.home() + "/.odbc.ini").c_str(), 1);
    unsetenv("ODBCINSTINI");
    for (const auto& line : body()) out += line + "\n";
  } catch (const vb::VBError& e) {
    out = "child failed: error " + std::to_string(e.number()) + " " + e.description() + "\n";
    status = 3;
  } catch (const std::exception& e) {
    out = std::string("child failed: ") + e.what() + "\n";
    status = 3;
  }
  size_t written = 0;
  while (written < out.size()) {
    ssize_t n = write(fd, out.data() + written, out.size() - written);
    if (n <= 0) break;
    written += static_cast<size_t>(n);
  }
  close(fd);
  _exit(status);
}

}  // namespace

std::string iniText(const std::vector<DataSource>& dataSources) {
  std::string text;
  for (const auto& source : dataSources) {
    text += "[" + source.name + "]\n";
    if (!source.driver.empty()) text += "Driver=" + source.driver + "\n";
    for (const auto& [name, value] : source.settings) text += name + "=" + value + "\n";
    text += "\n";
  }
  return text;
}

OdbcConfig::OdbcConfig(const std::vector<DataSource>& dataSources) {
  std::filesystem::create_directory(home());
  writeFile(dir_.path() / "odbcinst.ini", odbcinstText());
  writeOdbcIni(dataSources);
}

void OdbcConfig::writeOdbcIni(const std::vector<DataSource>& dataSources) const {
  writeOdbcIniText(iniText(dataSources));
}

void OdbcConfig::writeOdbcIniText(const std::string& text) const {
  writeFile(dir_.path() / "odbc.ini", text);
}

void OdbcConfig::removeOdbcIni() const { std::filesystem::remove(dir_.path() / "odbc.ini"); }

void OdbcConfig::writeUserOdbcIni(const std::vector<DataSource>& dataSources) const {
  writeFile(std::filesystem::path(home()) / ".odbc.ini", iniText(dataSources));
}

std::vector<std::string> inChildProcess(const OdbcConfig& config,
                                        const std::function<std::vector<std::string>()>& body) {
  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("pipe failed");
  fflush(nullptr);
  pid_t child = fork();
  if (child < 0) throw std::runtime_error("fork failed");
  if (child == 0) {
    close(fds[0]);
    runChild(fds[1], config, body);
  }
  close(fds[1]);
  std::string text;
  char buffer[4096];
  ssize_t n;
  while ((n = read(fds[0], buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(n));
  close(fds[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    ADD_FAILURE() << "child process ended abnormally (status " << status << "): " << text;
  std::vector<std::string> lines;
  std::istringstream stream(text);
  std::string line;
  while (std::getline(stream, line)) lines.push_back(line);
  return lines;
}

ScopedEnv::ScopedEnv(std::string name, const char* value) : name_(std::move(name)) {
  if (const char* old = std::getenv(name_.c_str())) {
    hadValue_ = true;
    previous_ = old;
  }
  setOrUnset(name_.c_str(), value);
}

ScopedEnv::~ScopedEnv() { setOrUnset(name_.c_str(), hadValue_ ? previous_.c_str() : nullptr); }

std::vector<std::string> describeDataSourceList() {
  std::vector<std::string> lines;
  int16_t count = 0;
  try {
    count = ModDNS::getDataSourceCount();
  } catch (const vb::VBError& e) {
    return {"count: error " + std::to_string(e.number())};
  }
  lines.push_back("count=" + std::to_string(count));
  for (int16_t i = 0; i <= count; ++i)
    lines.push_back("[" + std::to_string(i) + "]=" + ModDNS::getDataSourceEntry(i));
  return lines;
}

std::string northwindPath() {
  return std::filesystem::canonical(sharedDataDir() / "nwind.mdb").string();
}

}  // namespace varsentix::testing
