// Opening ODBC connections: DSNs, driver strings, user and password, and the failures a user
// meets (unknown DSN, wrong password, server down), each a clear error rather than a hang.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "odbc/OdbcTestSupport.h"
#include "support/Engines.h"
#include "support/TempDir.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::testing::odbc {
namespace {

using ado::Connection;
using ado::Recordset;
using vb::Ref;

vb::VBError openFails(const std::string& connectionString, const std::string& user = "",
                      const std::string& password = "") {
  auto connection = Ref<Connection>::make();
  try {
    connection->Open(connectionString, user, password);
  } catch (const vb::VBError& e) {
    EXPECT_EQ(connection->State(), ado::adStateClosed);
    return e;
  }
  ADD_FAILURE() << "opened: " << connectionString;
  return vb::VBError(0);
}

// A loopback TCP port nobody listens on.
int closedPort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  socklen_t length = sizeof address;
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  int port = ntohs(address.sin_port);
  close(fd);
  return port;
}

// A user DSN file for the duration of a test (ODBCINI names the user's odbc.ini).
class UserDsnFile {
 public:
  explicit UserDsnFile(const std::string& content) {
    path_ = dir_.file("odbc.ini");
    std::ofstream(path_) << content;
    const char* previous = std::getenv("ODBCINI");
    hadPrevious_ = previous != nullptr;
    if (hadPrevious_) previous_ = previous;
    setenv("ODBCINI", path_.c_str(), 1);
  }
  ~UserDsnFile() {
    if (hadPrevious_) setenv("ODBCINI", previous_.c_str(), 1);
    else unsetenv("ODBCINI");
  }

 private:
  TempDir dir_;
  std::string path_, previous_;
  bool hadPrevious_ = false;
};

TEST(OdbcConnectionTest, UnknownDsnRaisesTheDriverManagerMessage) {
  vb::VBError e = openFails("Provider=MSDASQL;Persist Security Info=False;Data Source=vx_no_such_dsn");
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_EQ(e.sqlState(), "IM002");
  EXPECT_NE(e.description().find("[unixODBC]"), std::string::npos) << e.description();
  EXPECT_EQ(e.source(), "Microsoft OLE DB Provider for ODBC Drivers");
}

TEST(OdbcConnectionTest, UnknownDriverRaisesAProviderError) {
  vb::VBError e = openFails("Provider=MSDASQL;Driver={No Such Driver};Database=x");
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_FALSE(e.sqlState().empty());
  EXPECT_NE(e.description().find("[unixODBC]"), std::string::npos) << e.description();
}

// An SQLite file whose name is not ASCII, with one row holding 'ü'.
std::string makeNonAsciiSqliteFile(const TempDir& dir) {
  const std::string path = dir.file("Größe – データ.db");
  sqlite3* db = nullptr;
  EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, "CREATE TABLE t (v TEXT); INSERT INTO t VALUES ('ü')", nullptr,
                         nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(db);
  return path;
}

void expectTheRow(const Ref<Connection>& connection) {
  auto rs = Ref<Recordset>::make();
  rs->Open("SELECT v FROM [t]", connection, ado::adOpenForwardOnly, ado::adLockReadOnly,
           ado::adCmdText);
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("v").Value().toText(), "ü");
}

TEST(OdbcConnectionTest, SqliteFileWithANonAsciiNameOpensThroughTheNarrowDriver) {
  TempDir dir;
  const std::string path = makeNonAsciiSqliteFile(dir);
  auto connection = Ref<Connection>::make();
  connection->Open("Provider=MSDASQL;Driver={SQLite3};Database=" + path);
  expectTheRow(connection);
}

TEST(OdbcConnectionTest, NarrowDriverUnderAnUnknownNameStillGetsTheNameWhole) {
  if (!engineAvailable(Engine::SQLiteOdbc)) GTEST_SKIP() << "SQLite ODBC driver not available";
  // The driver's library under a name that says nothing: it is reached through the wide entry
  // point first, found to be narrow, and connected again through the narrow one.
  TempDir dir;
  const std::string path = makeNonAsciiSqliteFile(dir);
  const std::string driver = "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so";  // libsqliteodbc
  if (!std::filesystem::exists(driver)) GTEST_SKIP() << driver << " not found";
  const std::string library = dir.file("libanonymous.so");
  ASSERT_EQ(symlink(driver.c_str(), library.c_str()), 0);
  auto connection = Ref<Connection>::make();
  connection->Open("Provider=MSDASQL;Driver=" + library + ";Database=" + path);
  expectTheRow(connection);
}

class OdbcServerConnectionTest : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    if (!engineAvailable(GetParam())) {
      auto db = makeTestDatabase(GetParam());  // records the failure when engines are required
      GTEST_SKIP() << "engine not available: " << engineName(GetParam());
    }
  }
};

TEST_P(OdbcServerConnectionTest, WrongPasswordIsAClearError) {
  vb::VBError e = openFails("Provider=MSDASQL;" + serverStringWith(GetParam(), "Pwd", "wrong-password"));
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_FALSE(e.sqlState().empty());
  const std::string expected = GetParam() == Engine::PostgreSQL ? "password authentication failed"
                                                                : "Access denied";
  EXPECT_NE(e.description().find(expected), std::string::npos) << e.description();
}

TEST_P(OdbcServerConnectionTest, PasswordArgumentTakesThePlaceOfTheStringsPassword) {
  auto settings = serverSettings(GetParam());
  // The connection string's password is wrong; the one given to Open is right.
  std::string text = "Provider=MSDASQL;" + serverStringWith(GetParam(), "Pwd", "wrong-password");
  auto connection = Ref<Connection>::make();
  connection->Open(text, settings["uid"], settings["pwd"]);
  EXPECT_EQ(connection->State(), ado::adStateOpen);
  vb::VBError e = openFails(text, settings["uid"], "still-wrong");
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
}

TEST_P(OdbcServerConnectionTest, ServerDownIsAClearError) {
  vb::VBError e = openFails("Provider=MSDASQL;" +
                            serverStringWith(GetParam(), "Port", std::to_string(closedPort())));
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  // psqlODBC says 08001; Connector/ODBC says HY000 with the client library's error 2002.
  EXPECT_FALSE(e.sqlState().empty());
  if (GetParam() == Engine::PostgreSQL) {
    EXPECT_EQ(e.sqlState(), "08001") << e.description();
    EXPECT_NE(e.description().find("Connection refused"), std::string::npos) << e.description();
  } else {
    EXPECT_NE(e.description().find("Can't connect"), std::string::npos) << e.description();
  }
}

// A loopback port that accepts connections and never says a word.
class SilentServer {
 public:
  SilentServer() {
    fd_ = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(fd_, 8);
    getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
    port_ = ntohs(address.sin_port);
  }
  ~SilentServer() { close(fd_); }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  int port() const { return port_; }

 private:
  int fd_ = -1;
  int port_ = 0;
};

TEST_P(OdbcServerConnectionTest, ServerThatNeverAnswersEndsAtTheConnectTimeout) {
  SilentServer silent;
  vb::VBError e = openFails("Provider=MSDASQL;Connect Timeout=2;" +
                            serverStringWith(GetParam(), "Port", std::to_string(silent.port())));
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_EQ(e.sqlState().substr(0, 2), "08") << e.sqlState();
  const std::string expected = GetParam() == Engine::PostgreSQL ? "timeout expired" : "handshake";
  EXPECT_NE(e.description().find(expected), std::string::npos) << e.description();
}

TEST_P(OdbcServerConnectionTest, UnknownDatabaseIsAClearError) {
  vb::VBError e = openFails("Provider=MSDASQL;" +
                            serverStringWith(GetParam(), "Database", "vx_no_such_database"));
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_NE(e.description().find("vx_no_such_database"), std::string::npos) << e.description();
}

TEST_P(OdbcServerConnectionTest, DataSourceNameWithUserAndPasswordGetsTheDriverOptions) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  auto settings = serverSettings(GetParam());
  const bool pg = GetParam() == Engine::PostgreSQL;
  const std::string database = db->scalar(pg ? "SELECT current_database()" : "SELECT DATABASE()");
  // One name per engine: the driver manager keeps what it read of odbc.ini for a while.
  const std::string name = pg ? "vx_test_dsn_pg" : "vx_test_dsn_mariadb";
  UserDsnFile dsn("[" + name + "]\nDriver=" + std::string(pg ? "PostgreSQL Unicode" : "MariaDB Unicode") +
                  "\n" + (pg ? "Servername" : "Server") + "=" + settings["server"] + "\nPort=" +
                  settings["port"] + "\nDatabase=" + database + "\n");
  if (pg) {
    db->exec("CREATE TABLE flags (id INTEGER PRIMARY KEY, flag BOOLEAN)");
    db->exec("INSERT INTO flags VALUES (1, TRUE), (2, TRUE)");
  } else {
    db->exec("CREATE TABLE flags (id INTEGER PRIMARY KEY, flag INTEGER)");
    db->exec("INSERT INTO flags VALUES (1, 1), (2, 1)");
  }
  auto connection = Ref<Connection>::make();
  connection->Open("Provider=MSDASQL;Persist Security Info=False;Data Source=" + name + ";User ID=" +
                   settings["uid"] + ";Password=" + settings["pwd"]);
  ASSERT_EQ(connection->State(), ado::adStateOpen);
  if (pg) {
    // Booleans are described as booleans: the provider's driver options reached a DSN too.
    auto rs = Ref<Recordset>::make();
    rs->Open("SELECT flag FROM flags", connection, ado::adOpenForwardOnly, ado::adLockReadOnly,
             ado::adCmdText);
    EXPECT_EQ(rs->field("flag").Type(), ado::adBoolean);
  } else {
    // Matched rows are reported although nothing changes: the found-rows option is in force.
    int32_t affected = 0;
    connection->Execute("UPDATE flags SET flag = 1", &affected);
    EXPECT_EQ(affected, 2);
  }
}

INSTANTIATE_TEST_SUITE_P(Odbc, OdbcServerConnectionTest,
                         ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), EngineParamName());

}  // namespace
}  // namespace varsentix::testing::odbc
