#include "e2e/E2eSupport.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "support/ServerScripts.h"
#include "varsentix/control/Varsenti.h"

namespace varsentix::testing::e2e {
namespace {

std::string quoted(const std::string& arg) {
  std::string q = "'";
  for (char c : arg) q += (c == '\'') ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string changesScript(Engine engine) {
  return (sourceDir() / "examples" /
          (engine == Engine::PostgreSQL ? "changes-postgresql.sql" : "changes-mysql.sql"))
      .string();
}

std::string chinookScript(Engine engine) {
  return (sharedDataDir() / (engine == Engine::PostgreSQL ? "Chinook_PostgreSql.sql" : "Chinook_MySql.sql"))
      .string();
}

}  // namespace

const std::filesystem::path& sourceDir() {
  static const std::filesystem::path dir = VARSENTIX_SOURCE_DIR;
  return dir;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string databaseName(TestDatabase& db) {
  return db.scalar(db.engine() == Engine::PostgreSQL ? "SELECT current_database()" : "SELECT DATABASE()");
}

namespace {

std::map<Engine, std::unique_ptr<ChinookOnServer>>& loadedPairs() {
  static std::map<Engine, std::unique_ptr<ChinookOnServer>> loaded;
  return loaded;
}

// Drops the loaded databases after the last test, while the ODBC driver manager is still there.
class DropLoadedPairs : public ::testing::Environment {
 public:
  void TearDown() override { loadedPairs().clear(); }
};
[[maybe_unused]] ::testing::Environment* const dropLoadedPairs =
    ::testing::AddGlobalTestEnvironment(new DropLoadedPairs);

}  // namespace

const ChinookOnServer* chinookOnServer(Engine engine) {
  auto& slot = loadedPairs()[engine];
  if (!slot) {
    auto pair = std::make_unique<ChinookOnServer>();
    pair->original = makeTestDatabase(engine);
    pair->changed = makeTestDatabase(engine);
    if (!pair->original || !pair->changed) return nullptr;
    loadScript(*pair->original, chinookScript(engine));
    loadScript(*pair->changed, chinookScript(engine));
    loadScript(*pair->changed, changesScript(engine));
    pair->originalName = databaseName(*pair->original);
    pair->changedName = databaseName(*pair->changed);
    slot = std::move(pair);
  }
  return slot.get();
}

FixtureDataSource serverDataSource(Engine engine, const std::string& dataSourceName,
                                   const std::string& database, const std::string& password) {
  auto settings = serverSettings(engine);
  const std::string pwd = password.empty() ? settings["pwd"] : password;
  if (engine == Engine::PostgreSQL)
    return {dataSourceName, "PostgreSQL Unicode",
            {"Servername=" + settings["server"], "Port=" + settings["port"], "Database=" + database,
             "Username=" + settings["uid"], "Password=" + pwd}};
  return {dataSourceName, "MariaDB Unicode",
          {"Server=" + settings["server"], "Port=" + settings["port"], "Database=" + database,
           "User=" + settings["uid"], "Password=" + pwd}};
}

std::string connectionStringOfListedDataSource(const std::string& name) {
  Varsenti control;  // lists the machine's data sources when created
  for (int16_t i = 1; i < control.getODBCConnectionCount(); ++i) {
    std::string entry = control.getODBCConnection(i);
    std::string probe = entry;
    if (control.getDSNName(probe) == name) return control.getConncectionStringFromDSN(entry);
  }
  ADD_FAILURE() << "the control does not list the data source " << name;
  return "";
}

std::string plainName(const std::string& name) {
  std::string plain;
  for (unsigned char c : name)
    if (c != '_') plain += static_cast<char>(std::tolower(c));
  return plain;
}

void makeSqliteSamplePair(const TempDir& dir) {
  std::filesystem::copy_file(sourceDir() / "examples" / "chinook.sqlite", dir.path() / "chinook.sqlite");
  std::filesystem::permissions(dir.path() / "chinook.sqlite", std::filesystem::perms::owner_write,
                               std::filesystem::perm_options::add);
  const std::string command = quoted((sourceDir() / "examples" / "make-changed-copy.sh").string()) + " " +
                              quoted(dir.file("chinook.sqlite")) + " " + quoted(dir.file("chinook-changed.sqlite"));
  ASSERT_EQ(std::system(command.c_str()), 0);
}

CliOutcome runCli(const TempDir& dir, const std::vector<std::string>& args, int timeLimitSeconds) {
  std::string command = "cd " + quoted(dir.path().string()) + " && ";
  if (timeLimitSeconds > 0) command += "timeout " + std::to_string(timeLimitSeconds) + " ";
  command += quoted(VARSENTIX_CLI);
  for (const auto& arg : args) command += " " + quoted(arg);
  command += " >stdout.txt 2>stderr.txt </dev/null";
  CliOutcome r;
  const auto start = std::chrono::steady_clock::now();
  const int raw = std::system(command.c_str());
  r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  r.out = readFile(dir.path() / "stdout.txt");
  r.err = readFile(dir.path() / "stderr.txt");
  return r;
}

}  // namespace varsentix::testing::e2e
