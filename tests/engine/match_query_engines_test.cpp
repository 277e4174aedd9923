// The match query of one side's record run on another engine: whatever the record holds, the
// statement selects by the record's values and nothing else runs.
#include <gtest/gtest.h>

#include "engine/EngineTestSupport.h"
#include "engine/ModADORecordHelpers.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

// A is table t on aDb, at its first record; B is table t on bDb (a lower-case name: the one
// PostgreSQL makes of an unquoted one).
void openSides(TestDatabase& aDb, TestDatabase& bDb, Side& a, Side& b) {
  a = makeSide(aDb.connectionString());
  b = makeSide(bDb.connectionString());
  a->openDatabaseConnection();
  b->openDatabaseConnection();
  a->setTableName("t");
  a->openDataBaseRecordsFromQuery("select * from [t]");
  b->openDataBaseRecordsFromQuery("select * from [t]");
}

// Whether table still holds its one row. A drop left uncommitted by another session holds the
// table locked: the wait for it is bounded, and a table that cannot be read counts as gone.
bool tableAlive(TestDatabase& db, const std::string& table) {
  try {
    if (db.engine() == Engine::PostgreSQL) db.exec("SET lock_timeout = '10s'");
    return db.scalar("SELECT count(*) FROM " + table) == "1";
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

TEST(MatchQueryAcrossEngines, ADollarQuotedTextInAnIntegerColumnRunsNothingOnPostgreSQL) {
  VARSENTIX_TEST_DATABASE(aDb, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(bDb, Engine::PostgreSQL);
  // SQLite keeps a text in an INTEGER column; its literal is written bare.
  aDb->exec("CREATE TABLE t (id INTEGER)");
  aDb->exec("INSERT INTO t VALUES ('length($$''$$); DROP TABLE canary; --''')");
  bDb->exec("CREATE TABLE t (id INTEGER)");
  bDb->exec("INSERT INTO t VALUES (1)");
  bDb->exec("CREATE TABLE canary (id INTEGER)");
  bDb->exec("INSERT INTO canary VALUES (1)");
  Side a, b;
  openSides(*aDb, *bDb, a, b);
  ModADO::buildMatchQuery(*a, *b);
  // A text is no integer: it is not written bare, and the statement is not sent.
  EXPECT_EQ(b->getWhereClause().find("DROP"), std::string::npos) << b->getWhereClause();
  EXPECT_FALSE(ModADO::queryReturnsRecords(*b));
  EXPECT_TRUE(tableAlive(*bDb, "canary"));
  // Had it been written bare, PostgreSQL's own reading of the text refuses it too: the system's
  // dialect reads '$$); DROP TABLE canary; --' as a literal, PostgreSQL $$'$$.
  b->setWhereClause(" Where [id] = length($$'$$); DROP TABLE canary; --'");
  EXPECT_FALSE(ModADO::queryReturnsRecords(*b));
  EXPECT_TRUE(tableAlive(*bDb, "canary"));
}

TEST(MatchQueryAcrossEngines, ABackslashBeforeTheNextLiteralHidesNoRecordOnMariaDB) {
  VARSENTIX_TEST_DATABASE(aDb, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(bDb, Engine::MariaDB);
  aDb->exec("CREATE TABLE t (a VARCHAR(20), b VARCHAR(20))");
  aDb->exec("INSERT INTO t VALUES ('x\\', ' OR 1=1 -- ')");
  bDb->exec("CREATE TABLE t (a VARCHAR(20), b VARCHAR(20))");
  bDb->exec("INSERT INTO t VALUES ('another', 'row')");
  Side a, b;
  openSides(*aDb, *bDb, a, b);
  ModADO::buildMatchQuery(*a, *b);
  EXPECT_EQ(b->getWhereClause(), " Where [a] = 'x\\' AND [b] like ' OR 1=1 -- '");
  // Read with backslash escapes, 'x\' AND `b` like ' is one literal and OR 1=1 selects every row.
  EXPECT_FALSE(ModADO::queryReturnsRecords(*b));
  // The record itself is found where it is (the set-up link reads a doubled backslash as one).
  bDb->exec("INSERT INTO t VALUES ('x\\\\', ' OR 1=1 -- ')");
  EXPECT_TRUE(ModADO::queryReturnsRecords(*b));
}
