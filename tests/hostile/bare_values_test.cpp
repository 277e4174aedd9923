// Values written bare into statements (numbers, GUIDs, binary, booleans) are written only when
// well-formed for their type; any other text stops the statement before it reaches an engine.
// SQLite keeps a text stored in an INTEGER column as it is, so such texts reach the literal
// builders from real databases.
#include "compare/CompareTestSupport.h"
#include "datasource/BareValue.h"
#include "engine/ModADORecordHelpers.h"
#include "platform/ado/SqlDialect.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

std::vector<std::string> valuesOf(Varsenti& control, bool isMaster, const std::string& field) {
  std::vector<std::string> out;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster) && control.getResultFieldName(i, isMaster) == field)
      out.push_back(control.getResultFieldValue(i, isMaster));
  return out;
}

}  // namespace

TEST(BareValues, WellFormedTextsPerType) {
  using bareValue::isWellFormed;
  for (const char* number : {"0", "-1", "+7", "12.5", ".5", "5.", "1e+20", "1E-07", "-2.5e3", "9007199254740993"})
    EXPECT_TRUE(isWellFormed(ado::adInteger, number)) << number;
  for (const char* bad : {"", "1 OR 1=1", "0x10", " 5", "5 ", "1e", "e5", ".", "-", "NaN", "Infinity", "1,5",
                          "(select 1)", "1--", "5;", "1/**/"})
    EXPECT_FALSE(isWellFormed(ado::adDouble, bad)) << bad;
  EXPECT_TRUE(isWellFormed(ado::adCurrency, "12.3456"));
  EXPECT_TRUE(isWellFormed(ado::adGUID, "6F9619FF-8B86-D011-B42D-00C04FC964FF"));
  EXPECT_TRUE(isWellFormed(ado::adGUID, "{6f9619ff-8b86-d011-b42d-00c04fc964ff}"));
  EXPECT_FALSE(isWellFormed(ado::adGUID, "{6F9619FF-8B86-D011-B42D-00C04FC964FF"));
  EXPECT_FALSE(isWellFormed(ado::adGUID, "6F9619FF-8B86-D011-B42D-00C04FC964F' OR 1=1"));
  EXPECT_TRUE(isWellFormed(ado::adVarBinary, "00FFab"));
  EXPECT_FALSE(isWellFormed(ado::adLongVarBinary, "00FG"));
  EXPECT_TRUE(isWellFormed(ado::adBoolean, "True"));
  EXPECT_TRUE(isWellFormed(ado::adBoolean, "-1"));
  EXPECT_FALSE(isWellFormed(ado::adBoolean, "true OR 1=1"));
  EXPECT_TRUE(isWellFormed(ado::adEmpty, "3"));
  EXPECT_FALSE(isWellFormed(ado::adVariant, "abc"));
}

TEST(BareValues, LiteralsOfWellFormedValuesStayAsTheyWere) {
  EXPECT_EQ(ModADO::formatMatchLiteral(ado::adInteger, vb::Variant(int32_t{17}), false), "17");
  EXPECT_EQ(ModADO::formatMatchLiteral(ado::adCurrency, vb::Variant(std::string("12.5")), false), "12.5");
  EXPECT_EQ(ModADO::formatMatchLiteral(ado::adGUID, vb::Variant(std::string("{6F9619FF-8B86-D011-B42D-00C04FC964FF}")),
                                       false),
            "{6F9619FF-8B86-D011-B42D-00C04FC964FF}");
  EXPECT_EQ(ModADO::formatMatchLiteral(ado::adVarWChar, vb::Variant(std::string("O'Brien")), false), "'O''Brien'");
  EXPECT_EQ(ModADO::formatMatchLiteral(ado::adDouble, vb::Variant(1e20), false), "1e+20");
}

TEST(BareValues, AMalformedBareValueBecomesTheMarkerTheStatementCheckRefuses) {
  const std::string literal = ModADO::formatMatchLiteral(ado::adInteger, vb::Variant(std::string("1 OR 1=1")), false);
  EXPECT_EQ(literal, bareValue::malformedMarker());
  EXPECT_NE(literal.find('\0'), std::string::npos);
}

// A text in a SQLite INTEGER column used to go bare into the match query sent to the other
// side, where it ran as part of the statement: here it made a record of the master look present
// on the source when the source has no such record.
TEST(BareValues, TextInAnIntegerColumnDoesNotRunOnTheOtherSide) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (n INTEGER, v TEXT)");
  master->exec("INSERT INTO t VALUES ('0 OR (SELECT count(*) FROM secret) > 0 OR 1', 'x')");
  source->exec("CREATE TABLE secret (s TEXT)");
  source->exec("INSERT INTO secret VALUES ('s')");
  source->exec("INSERT INTO t VALUES (5, 'y')");
  ASSERT_EQ(master->scalar("SELECT typeof(n) FROM t"), "text");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  // The master's record is not on the source: reported as new, never taken as found.
  EXPECT_EQ(valuesOf(control, true, "v"), std::vector<std::string>{"x"});
  EXPECT_EQ(valuesOf(control, true, "n"),
            std::vector<std::string>{"0 OR (SELECT count(*) FROM secret) > 0 OR 1"});
  EXPECT_EQ(valuesOf(control, false, "v"), std::vector<std::string>{"y"});
}

// With PostgreSQL's dollar quoting a bare text could hide a second statement from the check of
// apostrophes: a text in a SQLite INTEGER column dropped a table of the other database.
TEST(BareValues, DollarQuotingInABareValueDropsNothingOnPostgreSql) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::PostgreSQL);
  master->exec("CREATE TABLE t (n INTEGER, v TEXT)");
  source->exec("CREATE TABLE t (n INTEGER, v TEXT)");
  source->exec("CREATE TABLE canary (c INTEGER)");
  source->exec("INSERT INTO canary VALUES (1)");
  master->exec("INSERT INTO t VALUES ('0 OR $$''$$ IS NULL; DROP TABLE canary; SELECT 1 --''', 'x')");
  ASSERT_EQ(master->scalar("SELECT typeof(n) FROM t"), "text");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  control.beginTableCompareFromFieldListFromDBManager(m, s);
  EXPECT_EQ(source->scalar("SELECT count(*) FROM canary"), "1");
  EXPECT_EQ(valuesOf(control, true, "v"), std::vector<std::string>{"x"});
}

// A subquery in a bare value ran on the other database; a recursive one would never end. The
// statement is refused before it is sent, so this compare ends at once.
TEST(BareValues, ARecursiveQueryInABareValueIsNeverSent) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  for (auto* db : {master.get(), source.get()}) db->exec("CREATE TABLE t (n INTEGER, v TEXT)");
  master->exec("INSERT INTO t VALUES ('(WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) "
               "SELECT max(x) FROM c)', 'x')");
  source->exec("INSERT INTO t VALUES (1, 'x')");
  Varsenti control;
  auto m = preparedSide(master->connectionString(), "t");
  auto s = preparedSide(source->connectionString(), "t");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  EXPECT_EQ(valuesOf(control, true, "v"), std::vector<std::string>{"x"});
}

// The statement check every provider runs refuses the marker: a NUL byte outside literals (in a
// comment too), while a NUL inside a literal is a value like any other.
TEST(BareValues, TheStatementCheckRefusesANulOutsideLiterals) {
  const ado::detail::DialectOptions options;
  const std::string marker = bareValue::malformedMarker();
  for (const std::string& sql : {"Select * from [t] Where [n] = " + marker,
                                 "Select * from [t] Where [n] = " + marker + " AND [v] like 'x'",
                                 "Select * from [t] -- " + marker, "Select * from [t] /* " + marker + " */"}) {
    try {
      ado::detail::translateSql(sql, options);
      ADD_FAILURE() << "not refused";
    } catch (const vb::VBError& refused) {
      EXPECT_EQ(refused.number(), vb::errnum::ProviderSyntaxError);
      EXPECT_NE(refused.description().find("not well-formed"), std::string::npos) << refused.description();
    }
  }
  const std::string inside = "Select * from [t] Where [v] = 'a" + std::string(1, '\0') + "b'";
  EXPECT_EQ(ado::detail::translateSql(inside, options), "Select * from \"t\" Where \"v\" = 'a" + std::string(1, '\0') + "b'");
}
