#include "AdoTestSupport.h"

#include <sqlite3.h>

#include <filesystem>

namespace varsentix::testing {
namespace {

#ifndef VARSENTIX_HAVE_ENGINES
// SQLite on a file in a temporary folder, for builds without the shared engine support.
class SqliteFileDatabase : public TestDatabase {
 public:
  SqliteFileDatabase() : path_(dir_.file("test.sqlite")) {
    sqlite3_open_v2(path_.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  }
  ~SqliteFileDatabase() override { sqlite3_close_v2(db_); }
  Engine engine() const override { return Engine::SQLite; }
  std::string connectionString() const override { return "Provider=SQLite;Data Source=" + path_; }
  void exec(const std::string& nativeSql) override {
    char* error = nullptr;
    if (sqlite3_exec(db_, nativeSql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
      std::string message = error != nullptr ? error : "?";
      sqlite3_free(error);
      ADD_FAILURE() << "set-up SQL failed: " << message << "\n" << nativeSql;
    }
  }
  std::string scalar(const std::string& nativeSql) override {
    sqlite3_stmt* stmt = nullptr;
    std::string result;
    if (sqlite3_prepare_v2(db_, nativeSql.c_str(), -1, &stmt, nullptr) == SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW && sqlite3_column_type(stmt, 0) != SQLITE_NULL)
      result = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    sqlite3_finalize(stmt);
    return result;
  }

 private:
  TempDir dir_;
  std::string path_;
  sqlite3* db_ = nullptr;
};
#endif

}  // namespace

std::vector<Engine> adoEngines() {
#ifdef VARSENTIX_HAVE_ENGINES
  return allEngines();
#else
  return {Engine::SQLite};
#endif
}

std::unique_ptr<TestDatabase> freshDatabase(Engine engine) {
#ifdef VARSENTIX_HAVE_ENGINES
  return makeTestDatabase(engine);
#else
  if (engine != Engine::SQLite) return nullptr;
  return std::make_unique<SqliteFileDatabase>();
#endif
}

vb::VBError expectVBError(const std::function<void()>& body) {
  try {
    body();
  } catch (const vb::VBError& e) {
    return e;
  }
  ADD_FAILURE() << "expected a VBError, none was raised";
  return vb::VBError(0, "none raised", "test");
}

vb::Ref<ado::Connection> connect(const TestDatabase& db) {
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(db.connectionString());
  return connection;
}

std::string copyOfChinook(const TempDir& dir) {
  std::string copy = dir.file("Chinook_Sqlite.sqlite");
  std::filesystem::copy_file(sharedDataDir() / "Chinook_Sqlite.sqlite", copy);
  return copy;
}

#ifndef VARSENTIX_HAVE_ENGINES
std::string engineName(Engine engine) {
  switch (engine) {
    case Engine::SQLite: return "SQLite";
    case Engine::SQLiteOdbc: return "SQLiteOdbc";
    case Engine::PostgreSQL: return "PostgreSQL";
    case Engine::MariaDB: return "MariaDB";
  }
  return "?";
}
#endif

}  // namespace varsentix::testing
