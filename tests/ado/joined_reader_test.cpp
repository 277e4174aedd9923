// The joined reader of two SQLite files: one read-only connection that sees this side's
// database as main and the other's as varsentix_other, with the function that tells whether a
// value survives being written as a literal. The record comparison decides records with it.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <utility>

#include "AdoTestSupport.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using namespace varsentix::testing;

namespace {

// A database file with table t (id, name, amount) holding the given rows.
std::string databaseWith(const TempDir& dir, const std::string& name, const std::string& inserts) {
  std::string path = dir.file(name);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  std::string sql = "CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(20), amount DOUBLE);" + inserts;
  EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  sqlite3_close(db);
  return path;
}

vb::Ref<Connection> opened(const std::string& path) {
  auto connection = vb::Ref<Connection>::make();
  connection->Open("Provider=SQLite;Data Source=" + path);
  return connection;
}

vb::Variant scalar(Connection& connection, const std::string& sql) {
  auto rows = connection.Execute(sql);
  EXPECT_FALSE(rows->isEOF()) << sql;
  return rows->field(0).Value();
}

struct Pair {
  TempDir dir;
  vb::Ref<Connection> own, other;
  Pair()
      : own(opened(databaseWith(dir, "own.sqlite", "INSERT INTO t VALUES (1, 'one', 1.5);"))),
        other(opened(databaseWith(dir, "other.sqlite",
                                  "INSERT INTO t VALUES (1, 'One', 1.5); INSERT INTO t VALUES (2, 'two', 2);"))) {}
};

}  // namespace

TEST(JoinedReader, ReadsBothFilesInOneStatement) {
  Pair pair;
  auto joined = pair.own->OpenJoinedReader(*pair.other);
  ASSERT_FALSE(joined.isNothing());
  EXPECT_EQ(joined->Engine(), EngineFamily::SQLite);
  EXPECT_EQ(scalar(*joined, "select count(*) from [t]").toInt64(), 1);
  EXPECT_EQ(scalar(*joined, "select count(*) from varsentix_other.[t]").toInt64(), 2);
  EXPECT_EQ(scalar(*joined,
                   "select count(*) from [t] as a join varsentix_other.[t] as b on b.[name] like a.[name]")
                .toInt64(),
            1);
}

TEST(JoinedReader, WritesNothing) {
  Pair pair;
  auto joined = pair.own->OpenJoinedReader(*pair.other);
  ASSERT_FALSE(joined.isNothing());
  auto e = expectVBError([&] { joined->Execute("insert into [t] values (9, 'nine', 9)"); });
  EXPECT_NE(e.description().find("readonly"), std::string::npos) << e.description();
  expectVBError([&] { joined->Execute("delete from varsentix_other.[t]"); });
  EXPECT_EQ(scalar(*pair.other, "select count(*) from [t]").toInt64(), 2);
}

TEST(JoinedReader, NotGivenWhileEitherSideIsInsideATransaction) {
  Pair pair;
  pair.own->Execute("BEGIN");
  pair.own->Execute("insert into [t] values (3, 'three', 3)");
  EXPECT_TRUE(pair.own->OpenJoinedReader(*pair.other).isNothing());
  pair.own->Execute("ROLLBACK");
  pair.other->Execute("BEGIN");
  EXPECT_TRUE(pair.own->OpenJoinedReader(*pair.other).isNothing());
  pair.other->Execute("COMMIT");
  EXPECT_FALSE(pair.own->OpenJoinedReader(*pair.other).isNothing());
}

TEST(JoinedReader, NotGivenWhenATemporaryTableCouldHideATable) {
  Pair pair;
  pair.other->Execute("create temp table t (x integer)");
  EXPECT_TRUE(pair.own->OpenJoinedReader(*pair.other).isNothing());
  EXPECT_TRUE(pair.other->OpenJoinedReader(*pair.own).isNothing());
}

TEST(JoinedReader, NotGivenForDatabasesInMemoryOrClosedConnections) {
  Pair pair;
  auto memory = opened(":memory:");
  EXPECT_TRUE(memory->OpenJoinedReader(*pair.other).isNothing());
  EXPECT_TRUE(pair.own->OpenJoinedReader(*memory).isNothing());
  auto closed = vb::Ref<Connection>::make();
  EXPECT_TRUE(pair.own->OpenJoinedReader(*closed).isNothing());
  EXPECT_TRUE(closed->OpenJoinedReader(*pair.own).isNothing());
}

TEST(JoinedReader, ExactLiteralTellsWhichValuesReadBackAsThemselves) {
  Pair pair;
  auto joined = pair.own->OpenJoinedReader(*pair.other);
  ASSERT_FALSE(joined.isNothing());
  auto exact = [&](const std::string& value, const std::string& kind) {
    return scalar(*joined, "select varsentix_exact_literal(" + value + ", '" + kind + "')").toInt64();
  };
  EXPECT_EQ(exact("null", "I"), 1);
  EXPECT_EQ(exact("null", "T"), 1);
  EXPECT_EQ(exact("42", "I"), 1);
  EXPECT_EQ(exact("-9223372036854775808", "I"), 1);
  EXPECT_EQ(exact("'it''s 100% _x_'", "T"), 1);
  EXPECT_EQ(exact("1.5", "D"), 1);
  EXPECT_EQ(exact("0.1", "D"), 1);
  // A value stored in a column of another kind is shown converted: never certain.
  EXPECT_EQ(exact("1.5", "I"), 0);
  EXPECT_EQ(exact("'42'", "I"), 0);
  EXPECT_EQ(exact("42", "T"), 0);
  EXPECT_EQ(exact("42", "D"), 0);
  EXPECT_EQ(exact("x'41'", "T"), 0);
  // A NUL cuts the literal short; a text past 10,000 bytes is too long for a like pattern.
  EXPECT_EQ(exact("'a' || char(0) || 'b'", "T"), 0);
  EXPECT_EQ(exact("printf('%.*c', 10000, 'x')", "T"), 1);
  EXPECT_EQ(exact("printf('%.*c', 10001, 'x')", "T"), 0);
  EXPECT_EQ(exact("'x'", "?"), 0);
}

TEST(JoinedReader, ADoubleIsCertainOnlyWhenSqliteReadsItsShortestTextBackToIt) {
  TempDir dir;
  const std::string path = databaseWith(dir, "own.sqlite", "");
  // SQLite reads the 15-digit text of this double one unit in the last place off.
  const double misread = 0.888625687032014;
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db, "INSERT INTO t VALUES (?1, 'x', ?2)", -1, &stmt, nullptr);
  for (auto [id, value] : {std::pair{1, misread}, std::pair{2, 0.1 + 0.2}, std::pair{3, 1e20}}) {
    sqlite3_bind_int(stmt, 1, id);
    sqlite3_bind_double(stmt, 2, value);
    EXPECT_EQ(sqlite3_step(stmt), SQLITE_DONE);
    sqlite3_reset(stmt);
  }
  sqlite3_finalize(stmt);
  sqlite3_close(db);

  auto own = opened(path);
  ASSERT_NE(scalar(*own, "select cast('0.888625687032014' as real) = amount from t where id = 1").toInt64(), 1)
      << "the premise: SQLite misreads the shortest text of " << misread;
  auto joined = own->OpenJoinedReader(*own);
  ASSERT_FALSE(joined.isNothing());
  auto exactOf = [&](int id) {
    return scalar(*joined, "select varsentix_exact_literal(amount, 'D') from t where id = " + std::to_string(id))
        .toInt64();
  };
  EXPECT_EQ(exactOf(1), 0);
  EXPECT_EQ(exactOf(2), 1);  // 0.30000000000000004: seventeen digits, read back exactly
  EXPECT_EQ(exactOf(3), 1);
}
