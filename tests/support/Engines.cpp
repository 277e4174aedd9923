#include "support/Engines.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <string>

#include "platform/odbc/OdbcApi.h"
#include "support/TempDir.h"

namespace varsentix::testing {
namespace {

bool enginesRequired() {
  const char* value = std::getenv("VARSENTIX_REQUIRE_ENGINES");
  return value != nullptr && *value != '\0' && std::string(value) != "0";
}

std::string envOr(const char* name, const std::string& fallback = "") {
  const char* value = std::getenv(name);
  return (value != nullptr && *value != '\0') ? value : fallback;
}

// ---- ODBC, straight on the driver manager (never through the record-set layer) ----

class OdbcLink {
 public:
  explicit OdbcLink(const std::string& connectionString) : api_(odbc::odbcApi()) {
    check(api_.SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env_), SQL_HANDLE_ENV, env_, "env");
    api_.SQLSetEnvAttr(env_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    check(api_.SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_), SQL_HANDLE_ENV, env_, "dbc");
    api_.SQLSetConnectAttr(dbc_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(10), 0);
    std::string text = connectionString;
    SQLRETURN rc = api_.SQLDriverConnect(dbc_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                                         SQL_NTS, nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(rc)) {
      std::string why = diagnostics(SQL_HANDLE_DBC, dbc_);
      release();
      throw std::runtime_error("cannot connect: " + why);
    }
    connected_ = true;
  }
  ~OdbcLink() { release(); }
  OdbcLink(const OdbcLink&) = delete;
  OdbcLink& operator=(const OdbcLink&) = delete;

  void exec(const std::string& sql) { Statement st(*this, sql); }

  std::string scalar(const std::string& sql) {
    Statement st(*this, sql);
    SQLSMALLINT columns = 0;
    api_.SQLNumResultCols(st.handle, &columns);
    if (columns == 0 || api_.SQLFetch(st.handle) != SQL_SUCCESS) return "";
    std::string value;
    char buffer[4096];
    for (;;) {
      SQLLEN indicator = 0;
      SQLRETURN rc = api_.SQLGetData(st.handle, 1, SQL_C_CHAR, buffer, sizeof buffer, &indicator);
      if (rc == SQL_NO_DATA || indicator == SQL_NULL_DATA) break;
      check(rc, SQL_HANDLE_STMT, st.handle, sql);
      if (rc == SQL_SUCCESS) {
        value.append(buffer, static_cast<size_t>(indicator));
        break;
      }
      value.append(buffer);  // truncated piece, NUL-terminated
    }
    return value;
  }

 private:
  struct Statement {
    Statement(OdbcLink& link, const std::string& sql) : api(link.api_) {
      link.check(api.SQLAllocHandle(SQL_HANDLE_STMT, link.dbc_, &handle), SQL_HANDLE_DBC,
                 link.dbc_, sql);
      std::string text = sql;
      SQLRETURN rc = api.SQLExecDirect(handle, reinterpret_cast<SQLCHAR*>(text.data()),
                                       static_cast<SQLINTEGER>(text.size()));
      if (rc != SQL_NO_DATA) {
        try {
          link.check(rc, SQL_HANDLE_STMT, handle, sql);
        } catch (...) {
          api.SQLFreeHandle(SQL_HANDLE_STMT, handle);
          throw;
        }
      }
    }
    ~Statement() { api.SQLFreeHandle(SQL_HANDLE_STMT, handle); }
    const odbc::OdbcApi& api;
    SQLHSTMT handle = SQL_NULL_HSTMT;
  };

  std::string diagnostics(SQLSMALLINT type, SQLHANDLE handle) const {
    std::string text;
    for (SQLSMALLINT i = 1;; ++i) {
      SQLCHAR state[6] = {};
      SQLCHAR message[1024] = {};
      SQLINTEGER native = 0;
      SQLSMALLINT length = 0;
      if (!SQL_SUCCEEDED(api_.SQLGetDiagRec(type, handle, i, state, &native, message,
                                            sizeof message, &length)))
        break;
      text += std::string("[") + reinterpret_cast<char*>(state) + "] " +
              reinterpret_cast<char*>(message) + " ";
    }
    return text;
  }

  void check(SQLRETURN rc, SQLSMALLINT type, SQLHANDLE handle, const std::string& what) const {
    if (!SQL_SUCCEEDED(rc)) throw std::runtime_error(what + ": " + diagnostics(type, handle));
  }

  void release() {
    if (dbc_ != SQL_NULL_HDBC) {
      if (connected_) api_.SQLDisconnect(dbc_);
      api_.SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
      dbc_ = SQL_NULL_HDBC;
    }
    if (env_ != SQL_NULL_HENV) {
      api_.SQLFreeHandle(SQL_HANDLE_ENV, env_);
      env_ = SQL_NULL_HENV;
    }
  }

  const odbc::OdbcApi& api_;
  SQLHENV env_ = SQL_NULL_HENV;
  SQLHDBC dbc_ = SQL_NULL_HDBC;
  bool connected_ = false;
};

// ---- SQLite files, through the SQLite library itself ----

class SqliteFile {
 public:
  explicit SqliteFile(const std::string& path) {
    if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
        SQLITE_OK) {
      std::string why = db_ ? sqlite3_errmsg(db_) : "out of memory";
      sqlite3_close(db_);
      throw std::runtime_error("cannot open " + path + ": " + why);
    }
    sqlite3_busy_timeout(db_, 10000);
  }
  ~SqliteFile() { sqlite3_close(db_); }
  SqliteFile(const SqliteFile&) = delete;
  SqliteFile& operator=(const SqliteFile&) = delete;

  void exec(const std::string& sql) {
    char* error = nullptr;
    if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
      std::string why = error ? error : "error";
      sqlite3_free(error);
      throw std::runtime_error(sql + ": " + why);
    }
  }

  std::string scalar(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
      throw std::runtime_error(sql + ": " + sqlite3_errmsg(db_));
    std::string value;
    int rc = sqlite3_step(statement);
    if (rc == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
      value.assign(text, static_cast<size_t>(sqlite3_column_bytes(statement, 0)));
    }
    sqlite3_finalize(statement);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) throw std::runtime_error(sql + ": " + sqlite3_errmsg(db_));
    return value;
  }

 private:
  sqlite3* db_ = nullptr;
};

class SqliteDatabase final : public TestDatabase {
 public:
  explicit SqliteDatabase(Engine engine) : engine_(engine), file_(dir_.file("test.db")) {
    SqliteFile create(file_);  // the file exists from the start
  }
  Engine engine() const override { return engine_; }
  std::string connectionString() const override {
    if (engine_ == Engine::SQLite) return "Provider=SQLite;Data Source=" + file_;
    return "Provider=MSDASQL;Driver={SQLite3};Database=" + file_;
  }
  void exec(const std::string& sql) override { SqliteFile(file_).exec(sql); }
  std::string scalar(const std::string& sql) override { return SqliteFile(file_).scalar(sql); }

 private:
  Engine engine_;
  TempDir dir_;
  std::string file_;
};

// ---- PostgreSQL and MariaDB: a database of its own on the test server ----

std::string serverString(Engine engine) {
  return envOr(engine == Engine::PostgreSQL ? "VARSENTIX_PG_ODBC" : "VARSENTIX_MARIADB_ODBC");
}

// The server's administrative connection: the maintenance database on PostgreSQL.
std::string adminString(Engine engine) {
  std::string text = serverString(engine);
  if (engine == Engine::PostgreSQL) text += ";Database=postgres";
  return text;
}

std::string uniqueDatabaseName() {
  static std::atomic<unsigned> counter{0};
  static const unsigned salt = std::random_device{}() % 100000u;
  return "vx_test_" + std::to_string(getpid()) + "_" + std::to_string(salt) + "_" +
         std::to_string(counter++);
}

class ServerDatabase final : public TestDatabase {
 public:
  explicit ServerDatabase(Engine engine) : engine_(engine), name_(uniqueDatabaseName()) {
    OdbcLink admin(adminString(engine_));
    if (engine_ == Engine::PostgreSQL)
      admin.exec("CREATE DATABASE " + name_ + " ENCODING 'UTF8' TEMPLATE template0");
    else
      admin.exec("CREATE DATABASE `" + name_ + "` CHARACTER SET utf8mb4 COLLATE utf8mb4_general_ci");
  }
  ~ServerDatabase() override {
    link_.reset();
    // A session of the test that is still closing may hold the database a moment longer.
    std::string failure;
    for (int attempt = 0; attempt < 20; ++attempt) {
      try {
        OdbcLink admin(adminString(engine_));
        if (engine_ == Engine::PostgreSQL)
          admin.exec("DROP DATABASE IF EXISTS " + name_ + " WITH (FORCE)");
        else
          admin.exec("DROP DATABASE IF EXISTS `" + name_ + "`");
        return;
      } catch (const std::exception& e) {
        failure = e.what();
        usleep(250000);
      }
    }
    ADD_FAILURE() << "cannot drop test database " << name_ << ": " << failure;
  }
  Engine engine() const override { return engine_; }
  std::string connectionString() const override { return "Provider=MSDASQL;" + odbcString(); }
  void exec(const std::string& sql) override { link().exec(sql); }
  std::string scalar(const std::string& sql) override { return link().scalar(sql); }

 private:
  std::string odbcString() const { return serverString(engine_) + ";Database=" + name_; }
  OdbcLink& link() {
    if (!link_) link_ = std::make_unique<OdbcLink>(odbcString());
    return *link_;
  }

  Engine engine_;
  std::string name_;
  std::unique_ptr<OdbcLink> link_;
};

// Why an engine cannot be used ("" when it can); probed once per process.
std::string unavailableReason(Engine engine) {
  static std::mutex mutex;
  static std::map<Engine, std::string> reasons;
  std::lock_guard lock(mutex);
  auto found = reasons.find(engine);
  if (found != reasons.end()) return found->second;
  std::string reason;
  try {
    switch (engine) {
      case Engine::SQLite:
        break;
      case Engine::SQLiteOdbc: {
        TempDir dir;
        OdbcLink probe("Driver={SQLite3};Database=" + dir.file("probe.db"));
        break;
      }
      case Engine::PostgreSQL:
      case Engine::MariaDB:
        if (serverString(engine).empty()) {
          reason = engine == Engine::PostgreSQL ? "VARSENTIX_PG_ODBC is not set"
                                                : "VARSENTIX_MARIADB_ODBC is not set";
          break;
        }
        OdbcLink probe(adminString(engine));
        break;
    }
  } catch (const std::exception& e) {
    reason = e.what();
  }
  reasons[engine] = reason;
  return reason;
}

}  // namespace

std::string engineName(Engine engine) {
  switch (engine) {
    case Engine::SQLite: return "SQLite";
    case Engine::SQLiteOdbc: return "SQLiteOdbc";
    case Engine::PostgreSQL: return "PostgreSQL";
    case Engine::MariaDB: return "MariaDB";
  }
  return "Unknown";
}

std::vector<Engine> allEngines() {
  return {Engine::SQLite, Engine::SQLiteOdbc, Engine::PostgreSQL, Engine::MariaDB};
}

bool engineAvailable(Engine engine) { return unavailableReason(engine).empty(); }

std::unique_ptr<TestDatabase> makeTestDatabase(Engine engine) {
  std::string reason = unavailableReason(engine);
  if (reason.empty()) {
    try {
      if (engine == Engine::SQLite || engine == Engine::SQLiteOdbc)
        return std::make_unique<SqliteDatabase>(engine);
      return std::make_unique<ServerDatabase>(engine);
    } catch (const std::exception& e) {
      reason = e.what();
    }
  }
  if (enginesRequired())
    ADD_FAILURE() << "engine " << engineName(engine) << " is required but not available: " << reason;
  return nullptr;
}

}  // namespace varsentix::testing
