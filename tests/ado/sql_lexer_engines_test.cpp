// The one-statement check and the sessions' literal rules against the real engines: text that
// would hide a second statement from a reader of the wrong dialect is refused and runs nothing
// (a canary table stays), and any text written as a '...' literal comes back unchanged.
#include <gtest/gtest.h>
#include <sql.h>
#include <sqlext.h>

#include <filesystem>
#include <string>
#include <vector>

#include "AdoTestSupport.h"
#include "platform/ado/SqlLexer.h"
#include "platform/odbc/OdbcApi.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using namespace varsentix::testing;

namespace {

// text as the system writes a literal: in apostrophes, each apostrophe doubled.
std::string literal(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  return out + "'";
}

void makeCanary(TestDatabase& db) {
  db.exec("CREATE TABLE canary (id INTEGER)");
  db.exec("INSERT INTO canary VALUES (1)");
}

bool canaryAlive(TestDatabase& db) {
  try {
    return db.scalar("SELECT count(*) FROM canary") == "1";
  } catch (const std::exception&) {
    return false;
  }
}

// Runs sql on cn; the number of the VBError it raised, 0 when it ran.
int32_t runNumber(Connection& cn, const std::string& sql) {
  try {
    auto rs = cn.Execute(sql);
    if (rs && rs->State() == adStateOpen) rs->Close();
  } catch (const vb::VBError& e) {
    return e.number();
  }
  return 0;
}

std::string firstValue(Connection& cn, const std::string& sql) {
  auto rs = cn.Execute(sql);
  EXPECT_FALSE(rs->isEOF());
  vb::Variant value = rs->field(0).Value();
  rs->Close();
  return value.isNull() ? "<null>" : value.toText();
}

std::vector<std::string> hostileTexts() {
  std::string big;
  const std::string piece = "' \" ` ] [ ; -- # /* */ $$ $a$ \\ é\n";
  while (big.size() < 100 * 1024) big += piece;
  return {
      "' \" ` ] [ ; -- # /* */ $$ $a$ \\",
      "x\\",
      "\\",
      "\\'",
      "' OR 1=1 -- ",
      "$$'$$; DROP TABLE canary; --'",
      "*/ ; DROP TABLE canary; /*",
      "line one\nline two\r\nline three\r",
      std::string("\x01\x02\x1b\x1f\x7f\t\f\v", 8),
      "Größe – 日本語 – ✓ 😀",
      big,
  };
}

class LexerOnEngine : public ::testing::TestWithParam<Engine> {};

}  // namespace

TEST_P(LexerOnEngine, ALiteralComesBackExactlyAsWritten) {
  ADO_TEST_DATABASE(db, GetParam());
  makeCanary(*db);
  auto cn = connect(*db);
  for (const std::string& text : hostileTexts()) {
    EXPECT_EQ(firstValue(*cn, "select " + literal(text) + " as [v]"), text)
        << "text of " << text.size() << " bytes starting " << text.substr(0, 40);
  }
  EXPECT_TRUE(canaryAlive(*db));
}

TEST_P(LexerOnEngine, ASecondStatementIsRefusedAndNothingRuns) {
  ADO_TEST_DATABASE(db, GetParam());
  makeCanary(*db);
  auto cn = connect(*db);
  EXPECT_EQ(runNumber(*cn, "select 1; DROP TABLE canary"), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(runNumber(*cn, "select 1 -- ;\n; DROP TABLE canary"), vb::errnum::ProviderSyntaxError);
  EXPECT_TRUE(canaryAlive(*db));
}

INSTANTIATE_TEST_SUITE_P(Engines, LexerOnEngine, ::testing::ValuesIn(adoEngines()), EngineParamName());

// ---- PostgreSQL -----------------------------------------------------------------------------

namespace {

struct PostgresCase {
  const char* why;
  const char* sql;
};

}  // namespace

TEST(LexerOnPostgreSQL, QuotesTheSystemsDialectDoesNotKnowHideNoStatement) {
  ADO_TEST_DATABASE(db, Engine::PostgreSQL);
  makeCanary(*db);
  auto cn = connect(*db);
  const PostgresCase cases[] = {
      {"dollar quote", "select 1 where 1 = length($$'$$); DROP TABLE canary; --'"},
      {"tagged dollar quote", "select 1 where 1 = length($x$'$x$); DROP TABLE canary; --'"},
      {"escape string", "select E'\\''; DROP TABLE canary; --'"},
      {"continued escape string", "select E'a'\n'\\'' ; DROP TABLE canary; --'"},
      {"comment ended at a carriage return", "select 1 -- x\r; DROP TABLE canary"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(runNumber(*cn, c.sql), vb::errnum::ProviderSyntaxError) << c.why;
    EXPECT_TRUE(canaryAlive(*db)) << c.why;
  }
}

TEST(LexerOnPostgreSQL, ConstructsReadAsOneStatementRunAsOne) {
  ADO_TEST_DATABASE(db, Engine::PostgreSQL);
  makeCanary(*db);
  auto cn = connect(*db);
  // (The system's own dialect must read the text as one statement too: its quotes pair up.)
  EXPECT_EQ(firstValue(*cn, "select $$a';'b$$"), "a';'b");
  EXPECT_EQ(firstValue(*cn, "select $t$ $$ '' $t$"), " $$ '' ");
  EXPECT_EQ(firstValue(*cn, "select E'a\\\\b', E'it''s'"), "a\\b");
  EXPECT_EQ(firstValue(*cn, "select 'a\\'"), "a\\");
  EXPECT_EQ(firstValue(*cn, "select 'con'\n'tinued'"), "continued");
  EXPECT_EQ(firstValue(*cn, "select /* a /* nested */ comment */ 'x'"), "x");
  EXPECT_EQ(firstValue(*cn, "select U&'d\\0061t\\+000061'"), "data");
  EXPECT_TRUE(canaryAlive(*db));
}

TEST(LexerOnPostgreSQL, TheSessionReadsStandardStringsEvenWhereTheDatabaseSaysOtherwise) {
  ADO_TEST_DATABASE(db, Engine::PostgreSQL);
  makeCanary(*db);
  const std::string name = db->scalar("select current_database()");
  db->exec("ALTER DATABASE \"" + name + "\" SET standard_conforming_strings = off");
  auto cn = connect(*db);
  EXPECT_EQ(firstValue(*cn, "show standard_conforming_strings"), "on");
  // Read with backslash escapes this would be one literal and then a second statement.
  auto rs = cn->Execute("select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b");
  EXPECT_EQ(rs->field(0).Value().toText(), "x\\");
  EXPECT_EQ(rs->field(1).Value().toText(), " ; DROP TABLE canary; -- ");
  rs->Close();
  EXPECT_TRUE(canaryAlive(*db));
}

// ---- MariaDB --------------------------------------------------------------------------------

TEST(LexerOnMariaDB, TheSessionReadsABackslashAsAPlainCharacter) {
  ADO_TEST_DATABASE(db, Engine::MariaDB);
  makeCanary(*db);
  auto cn = connect(*db);
  EXPECT_NE(firstValue(*cn, "select @@SESSION.sql_mode").find("NO_BACKSLASH_ESCAPES"), std::string::npos);
  // With backslash escapes the second apostrophe would be escaped and the third end the literal.
  auto rs = cn->Execute("select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b");
  EXPECT_EQ(rs->field(0).Value().toText(), "x\\");
  EXPECT_EQ(rs->field(1).Value().toText(), " ; DROP TABLE canary; -- ");
  rs->Close();
  EXPECT_TRUE(canaryAlive(*db));
}

TEST(LexerOnMariaDB, TheBackslashPairSelectsNoOtherRow) {
  ADO_TEST_DATABASE(db, Engine::MariaDB);
  db->exec("CREATE TABLE t (a VARCHAR(20), b VARCHAR(20))");
  db->exec("INSERT INTO t VALUES ('another', 'row')");
  auto cn = connect(*db);
  auto rs = cn->Execute("select [a], [b] from [t] where [a] = 'x\\' AND [b] like ' OR 1=1 -- '");
  EXPECT_TRUE(rs->isEOF());
  rs->Close();
}

TEST(LexerOnMariaDB, ExecutableCommentsAreRefused) {
  ADO_TEST_DATABASE(db, Engine::MariaDB);
  makeCanary(*db);
  auto cn = connect(*db);
  EXPECT_EQ(runNumber(*cn, "select 1 /*! , (select count(*) from canary) */"), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(runNumber(*cn, "select 1 /*M! , 2 */"), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(runNumber(*cn, "select 1 # x\n; DROP TABLE canary"), vb::errnum::ProviderSyntaxError);
  EXPECT_TRUE(canaryAlive(*db));
}

// ---- the Access provider --------------------------------------------------------------------

TEST(LexerOnJet, ALiteralComesBackExactlyAsWritten) {
  const auto file = sharedDataDir() / "nwind.mdb";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "nwind.mdb missing";
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + file.string());
  for (const std::string& text : hostileTexts())
    EXPECT_EQ(firstValue(*cn, "select " + literal(text) + " as [v]"), text)
        << "text of " << text.size() << " bytes starting " << text.substr(0, 40);
  EXPECT_EQ(runNumber(*cn, "select 1 /* ; */"), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(runNumber(*cn, "select $a(';') as v"), vb::errnum::ProviderSyntaxError);
}

// ---- a session that changes its own literal rules -------------------------------------------

namespace {

std::string refusalText(Connection& cn, const std::string& sql) {
  try {
    auto rs = cn.Execute(sql);
    if (rs && rs->State() == adStateOpen) rs->Close();
  } catch (const vb::VBError& e) {
    return e.description();
  }
  return "";
}

}  // namespace

TEST(LexerOnMariaDB, AStatementThatChangesTheSqlModeIsFollowed) {
  ADO_TEST_DATABASE(db, Engine::MariaDB);
  makeCanary(*db);
  auto cn = connect(*db);
  cn->Execute("SET SESSION sql_mode = ''");
  // The session now reads 'x\' as a, ' as one literal and the rest as a second statement.
  EXPECT_NE(refusalText(*cn, "select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b").find("Only one SQL statement"),
            std::string::npos);
  EXPECT_EQ(firstValue(*cn, "select 'a\\\\b'"), "a\\b");
  EXPECT_TRUE(canaryAlive(*db));
}

TEST(LexerOnPostgreSQL, AStatementThatChangesStandardStringsIsFollowed) {
  ADO_TEST_DATABASE(db, Engine::PostgreSQL);
  makeCanary(*db);
  auto cn = connect(*db);
  cn->Execute("SET standard_conforming_strings = off");
  EXPECT_NE(refusalText(*cn, "select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b").find("Only one SQL statement"),
            std::string::npos);
  EXPECT_TRUE(canaryAlive(*db));
  cn->Execute("RESET ALL");
  EXPECT_EQ(firstValue(*cn, "select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b"), "x\\");
  // SET LOCAL lasts until the transaction ends.
  cn->Execute("BEGIN");
  cn->Execute("SET LOCAL standard_conforming_strings = off");
  EXPECT_NE(refusalText(*cn, "select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b").find("Only one SQL statement"),
            std::string::npos);
  cn->Execute("COMMIT");
  EXPECT_EQ(firstValue(*cn, "select 'x\\' as a, ' ; DROP TABLE canary; -- ' as b"), "x\\");
  EXPECT_TRUE(canaryAlive(*db));
}

// ---- against the engines' own readers -------------------------------------------------------

namespace {

// A plain ODBC connection beside the record-set layer, to ask how many results a text gives:
// more than one means the engine (with its driver) read more than one statement.
class RawOdbc {
 public:
  explicit RawOdbc(const std::string& odbcString) : api_(odbc::odbcApi()) {
    api_.SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env_);
    api_.SQLSetEnvAttr(env_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    api_.SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_);
    std::string text = odbcString;
    connected_ = SQL_SUCCEEDED(api_.SQLDriverConnect(dbc_, nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                                                     static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr,
                                                     SQL_DRIVER_NOPROMPT));
  }
  ~RawOdbc() {
    if (connected_) api_.SQLDisconnect(dbc_);
    api_.SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
    api_.SQLFreeHandle(SQL_HANDLE_ENV, env_);
  }
  RawOdbc(const RawOdbc&) = delete;
  RawOdbc& operator=(const RawOdbc&) = delete;

  bool connected() const { return connected_; }

  // The number of results sql gives (a failing later statement counts too); 0 when it fails.
  int results(const std::string& sql) {
    SQLHSTMT statement = SQL_NULL_HSTMT;
    api_.SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &statement);
    std::string text = sql;
    int count = 0;
    SQLRETURN rc = api_.SQLExecDirect(statement, reinterpret_cast<SQLCHAR*>(text.data()),
                                      static_cast<SQLINTEGER>(text.size()));
    if (SQL_SUCCEEDED(rc) || rc == SQL_NO_DATA) {
      count = 1;
      while (api_.SQLMoreResults(statement) != SQL_NO_DATA && count < 100) ++count;
    }
    api_.SQLFreeHandle(SQL_HANDLE_STMT, statement);
    return count;
  }

 private:
  const odbc::OdbcApi& api_;
  SQLHENV env_ = SQL_NULL_HENV;
  SQLHDBC dbc_ = SQL_NULL_HDBC;
  bool connected_ = false;
};

std::string odbcStringOf(const TestDatabase& db) {
  const std::string prefix = "Provider=MSDASQL;";
  std::string text = db.connectionString();
  return text.compare(0, prefix.size(), prefix) == 0 ? text.substr(prefix.size()) : text;
}

// Every text "select 1" + up to three pieces: each one the check takes for engine must give at
// most one result on raw. Returns how many of them ran.
template <size_t N>
int differential(RawOdbc& raw, ado::detail::SqlEngine engine, const char* const (&pieces)[N]) {
  std::vector<std::string> texts;
  for (const char* a : pieces) {
    texts.push_back(std::string("select 1") + a);
    for (const char* b : pieces) {
      texts.push_back(std::string("select 1") + a + b);
      for (const char* c : pieces) texts.push_back(std::string("select 1") + a + b + c);
    }
  }
  int ran = 0;
  for (const std::string& sql : texts) {
    try {
      ado::detail::checkSingleStatement(sql, engine, false);
    } catch (const vb::VBError&) {
      continue;
    }
    const int results = raw.results(sql);
    if (results > 0) ++ran;
    EXPECT_LE(results, 1) << "taken, but the engine read more than one statement: " << sql;
    if (results > 1) break;
  }
  return ran;
}

}  // namespace

TEST(LexerOnPostgreSQL, WhatTheCheckTakesPostgreSQLRunsAsOneStatement) {
  ADO_TEST_DATABASE(db, Engine::PostgreSQL);
  RawOdbc raw(odbcStringOf(*db));
  ASSERT_TRUE(raw.connected());
  ASSERT_EQ(raw.results("select 1; select 2"), 2);  // the way a second statement shows
  // Pieces that open or close a literal, name or comment, and whole items and second statements
  // that run when the pieces around them are read one way or another.
  const char* const pieces[] = {"'",     "\"",         "$$",       ", $$'$$",    "; select 2", "; select 2 -- ",
                                " -- ",  "\n",         ", E'\\''", ", '\\'",     "/*",         "*/",
                                ", 'x'", "e'",         ", $a$",    "$a$ ",       "\r",         " /* /* */",
                                "' \n'", ", U&'",      ", b'",     "$1"};
  EXPECT_GT(differential(raw, ado::detail::SqlEngine::PostgreSQL, pieces), 100);
}

TEST(LexerOnMariaDB, WhatTheCheckTakesMariaDBRunsAsOneStatement) {
  ADO_TEST_DATABASE(db, Engine::MariaDB);
  // 1 << 26: the connector lets the server run several statements of one text.
  RawOdbc raw(odbcStringOf(*db) + ";OPTION=67108866");
  ASSERT_TRUE(raw.connected());
  ASSERT_EQ(raw.results("SET SESSION sql_mode = CONCAT_WS(',', NULLIF(@@SESSION.sql_mode, ''), "
                        "'NO_BACKSLASH_ESCAPES')"),
            1);
  ASSERT_EQ(raw.results("select 1; select 2"), 2);  // the way a second statement shows
  const char* const pieces[] = {"'",     "\"",     "`",        "#",          "-- ",    "--",        "\n",
                                ", '\\'", "; select 2", "; select 2 -- ", "/*",   "*/",     "/*!",       ", 'x'",
                                ", \"\\\"", "' ",   "\\",       ", `v`",      "/*M!",   "--\t",      ", @'"};
  EXPECT_GT(differential(raw, ado::detail::SqlEngine::MariaDB, pieces), 100);
}
