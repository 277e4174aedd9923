#include <gtest/gtest.h>

#include "platform/ado/SqlDialect.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using ado::detail::DialectOptions;
using ado::detail::translateSql;

namespace {
const DialectOptions kPostgres{'"', '"', false};
const DialectOptions kMaria{'`', '`', false};
const DialectOptions kBrackets{0, 0, false};
const DialectOptions kJet{0, 0, true};

int32_t errorOf(const std::string& sql, const DialectOptions& options) {
  try {
    translateSql(sql, options);
  } catch (const vb::VBError& e) {
    return e.number();
  }
  return 0;
}
}  // namespace

TEST(SqlDialect, BracketedIdentifiersBecomeTheEnginesQuoting) {
  EXPECT_EQ(translateSql("Select * From [Order Details]", kPostgres), "Select * From \"Order Details\"");
  EXPECT_EQ(translateSql("select [a b], [c] from [T]", kMaria), "select `a b`, `c` from `T`");
  EXPECT_EQ(translateSql("select * from [Größe]", kPostgres), "select * from \"Größe\"");
}

TEST(SqlDialect, QuotesInsideANameAreDoubled) {
  EXPECT_EQ(translateSql("select * from [a\"b]", kPostgres), "select * from \"a\"\"b\"");
  EXPECT_EQ(translateSql("select * from [a]]b]", kMaria), "select * from `a]b`");
}

TEST(SqlDialect, BracketsAreKeptForEnginesThatTakeThem) {
  EXPECT_EQ(translateSql("Select * from [T] Where [x y] = 1", kBrackets),
            "Select * from [T] Where [x y] = 1");
}

TEST(SqlDialect, ALiteralHoldingBracketsIsNotTranslated) {
  EXPECT_EQ(translateSql("select [v] from [t] where [v] = 'a [x] b'", kPostgres),
            "select \"v\" from \"t\" where \"v\" = 'a [x] b'");
  EXPECT_EQ(translateSql("select 'O''Brien [x]; drop'", kPostgres), "select 'O''Brien [x]; drop'");
}

TEST(SqlDialect, ASecondStatementIsRefusedWithASyntaxError) {
  EXPECT_EQ(errorOf("select 1; drop table t", kPostgres), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(errorOf("select * from [t]; delete from [t]", kBrackets), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(errorOf("select * from [a];drop table b;--]", kMaria), vb::errnum::ProviderSyntaxError);
}

TEST(SqlDialect, OneTrailingSemicolonIsAllowedAndDropped) {
  EXPECT_EQ(translateSql("select 1;", kPostgres), "select 1");
  EXPECT_EQ(translateSql("select 1 ;  \n", kPostgres), "select 1 ");
}

TEST(SqlDialect, SemicolonsInsideLiteralsNamesAndCommentsDoNotEndTheStatement) {
  EXPECT_EQ(translateSql("select ';' from [a;b] -- x; y", kPostgres),
            "select ';' from \"a;b\" -- x; y");
  EXPECT_EQ(translateSql("select /* ; */ 1", kPostgres), "select /* ; */ 1");
}

TEST(SqlDialect, UnterminatedLiteralsAndBracketsAreSyntaxErrors) {
  EXPECT_EQ(errorOf("select 'abc", kPostgres), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(errorOf("select * from [abc", kPostgres), vb::errnum::ProviderSyntaxError);
  EXPECT_EQ(errorOf("select \"abc", kPostgres), vb::errnum::ProviderSyntaxError);
}

TEST(SqlDialect, JetDateLiteralsBecomeIsoTextWhenAsked) {
  EXPECT_EQ(translateSql("select * from [t] where d = #2024-01-31#", kJet),
            "select * from [t] where d = '2024-01-31'");
  EXPECT_EQ(translateSql("where d = #1/31/2024#", kJet), "where d = '2024-01-31'");
  EXPECT_EQ(translateSql("where d = #12/5/1996 3:04:05 PM#", kJet), "where d = '1996-12-05 15:04:05'");
  EXPECT_EQ(translateSql("where d = '#1/31/2024#'", kJet), "where d = '#1/31/2024#'");
  EXPECT_EQ(translateSql("where d = #1/31/2024#", kBrackets), "where d = #1/31/2024#");
}
