// The one-statement check on native text, read by each engine's own rules.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <random>
#include <string>

#include "platform/ado/SqlLexer.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using ado::detail::checkSingleStatement;
using ado::detail::SqlEngine;

namespace {

// "" when the text is taken, else the message it is refused with (a syntax error).
std::string refusal(const std::string& sql, SqlEngine engine, bool backslashEscapes = false) {
  try {
    checkSingleStatement(sql, engine, backslashEscapes);
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError) << sql;
    return e.description().empty() ? "(no message)" : e.description();
  }
  return "";
}

bool taken(const std::string& sql, SqlEngine engine, bool backslashEscapes = false) {
  return refusal(sql, engine, backslashEscapes).empty();
}

// The bytes of a string literal, NUL bytes included.
template <size_t N>
std::string bytes(const char (&text)[N]) {
  return std::string(text, N - 1);
}

const SqlEngine kAll[] = {SqlEngine::SQLite, SqlEngine::PostgreSQL, SqlEngine::MariaDB, SqlEngine::Jet,
                          SqlEngine::Other};

}  // namespace

// ---- every engine ---------------------------------------------------------------------------

TEST(SqlLexer, OneStatementIsTakenByEveryEngine) {
  for (SqlEngine engine : kAll) {
    EXPECT_TRUE(taken("select a, b from t where a = 'x' and b like 'y%'", engine));
    EXPECT_TRUE(taken("select 1;", engine));
    EXPECT_TRUE(taken("select 1 ; ;  \n", engine));
    EXPECT_TRUE(taken("", engine));
    EXPECT_TRUE(taken("   ", engine));
  }
}

TEST(SqlLexer, TextAfterTheEndingSemicolonIsRefusedByEveryEngine) {
  for (SqlEngine engine : kAll) {
    EXPECT_NE(refusal("select 1; drop table t", engine).find("Only one SQL statement"), std::string::npos);
    EXPECT_FALSE(taken("select 1;drop table t", engine));
    EXPECT_FALSE(taken("select 1; -- a comment", engine));
  }
}

TEST(SqlLexer, SemicolonsInsideLiteralsDoNotEndTheStatement) {
  for (SqlEngine engine : kAll) EXPECT_TRUE(taken("select 'a;b', 'O''Brien; drop table t'", engine));
}

TEST(SqlLexer, UnterminatedLiteralsAndCommentsAreRefusedByEveryEngine) {
  for (SqlEngine engine : kAll) {
    EXPECT_NE(refusal("select 'abc", engine).find("Unterminated string literal"), std::string::npos);
    EXPECT_FALSE(taken("select 'it''s", engine));
    EXPECT_NE(refusal("select 1 /* open", engine).find("Unterminated comment"), std::string::npos);
    EXPECT_FALSE(taken("select 1 /*", engine));
    EXPECT_FALSE(taken("select 1 /*/", engine));
  }
}

TEST(SqlLexer, NulBytesAreRefusedOutsideLiterals) {
  for (SqlEngine engine : kAll) {
    EXPECT_NE(refusal(bytes("select 1\0; drop table t"), engine).find("NUL"), std::string::npos);
    EXPECT_FALSE(taken(bytes("select 1 -- x\0\n"), engine));
    EXPECT_FALSE(taken(bytes("select 1 /* \0 */"), engine));
  }
  // Inside a literal only MariaDB, which reads the text by its length, takes one.
  const std::string nulInLiteral = bytes("select 'a\0b'");
  EXPECT_TRUE(taken(nulInLiteral, SqlEngine::MariaDB));
  EXPECT_FALSE(taken(nulInLiteral, SqlEngine::SQLite));
  EXPECT_FALSE(taken(nulInLiteral, SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken(nulInLiteral, SqlEngine::Other));
}

TEST(SqlLexer, ControlCharactersAreTakenInsideLiteralsOnly) {
  for (SqlEngine engine : kAll) {
    EXPECT_TRUE(taken("select 'a\x01\x02\x1b\x7f\tb'", engine));
    EXPECT_TRUE(taken("select\t1\r\n,\f2", engine));
    EXPECT_FALSE(taken("select \x0b 1", engine));
    EXPECT_FALSE(taken("select \x01 1", engine));
  }
}

TEST(SqlLexer, SemicolonsInsideCommentsAreRefused) {
  // Drivers look for statement ends themselves: a ';' in a comment is not left to them.
  for (SqlEngine engine : kAll) {
    EXPECT_NE(refusal("select 1 /* a; b */", engine).find("inside a comment"), std::string::npos);
    EXPECT_FALSE(taken("select 1 -- a; b\n", engine));
  }
}

TEST(SqlLexer, OdbcEscapeBracesAndBackslashesOutsideLiteralsAreRefused) {
  for (SqlEngine engine : kAll) {
    EXPECT_FALSE(taken("select {fn now()}", engine));
    EXPECT_FALSE(taken("select 1 } ", engine));
    EXPECT_FALSE(taken("select \\N", engine));
    EXPECT_TRUE(taken("select '{fn now()}'", engine));
  }
}

TEST(SqlLexer, NumbersGluedToAQuoteOrDollarAreRefused) {
  for (SqlEngine engine : kAll) {
    EXPECT_FALSE(taken("select 1e'x'", engine));
    EXPECT_FALSE(taken("select 1'x'", engine));
    EXPECT_FALSE(taken("select 1$$x$$", engine));
    EXPECT_TRUE(taken("select 1.5e3, 0x1F, 12 'x'", engine));
  }
}

// ---- PostgreSQL -----------------------------------------------------------------------------

TEST(SqlLexerPostgres, DollarQuotesHideWhatTheyHold) {
  EXPECT_TRUE(taken("select $$a; b ' c$$", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select $tag$ $$ ; ' $tag$", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select $t1$x$t$y$t1$", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select $_$x$_$", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select $é$x$é$", SqlEngine::PostgreSQL));
  EXPECT_NE(refusal("select $$abc", SqlEngine::PostgreSQL).find("Unterminated dollar-quoted"), std::string::npos);
  EXPECT_FALSE(taken("select $tag$abc$TAG$", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, TheDollarQuoteThatHidAStatementFromTheOldCheckIsSeen) {
  // The system's dialect reads '$$; DROP TABLE canary; --' as a literal; PostgreSQL reads
  // $$'$$ as one and then a second statement.
  EXPECT_NE(refusal("select id from t where id = $$'$$; DROP TABLE canary; --'", SqlEngine::PostgreSQL)
                .find("Only one SQL statement"),
            std::string::npos);
  EXPECT_FALSE(taken("select 1 where 1 = $a$'$a$; drop table t; --'", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, ParametersAndDollarsInsideNames) {
  EXPECT_TRUE(taken("select $1, $22 from t", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select a$b, a$$b$$ from t$1", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select abc$$x from t", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $1abc", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $1$", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $ 1", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $abc", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select $abc + 1", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select 'a'$", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, StandardStringsKeepBackslashesPlain) {
  EXPECT_TRUE(taken("select 'a\\'", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select 'a\\'; drop table t; --'", SqlEngine::PostgreSQL));
  // With standard_conforming_strings off the backslash escapes.
  EXPECT_FALSE(taken("select 'a\\'", SqlEngine::PostgreSQL, true));
  EXPECT_TRUE(taken("select 'a\\'; drop table t; --'", SqlEngine::PostgreSQL, true));
}

TEST(SqlLexerPostgres, EscapeStringsReadBackslashes) {
  EXPECT_TRUE(taken("select E'a\\'b'", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select e'a\\\\', 'b'", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select E'it''s'", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select E'\\''; drop table t; --'", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select E'a\\", SqlEngine::PostgreSQL));
  // Only a lone E starts one: a name ending in e does not.
  EXPECT_TRUE(taken("select note'a\\'", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select t.e'a\\'b'", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, ALiteralContinuedOnTheNextLineKeepsItsRules) {
  // E'a' then a line break and '...': one E literal, the backslash still escaping.
  EXPECT_TRUE(taken("select E'a'\n'\\''", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select E'a'\n'\\'; drop table t; --'", SqlEngine::PostgreSQL));
  // Read as a new standard literal this would be one literal; PostgreSQL ends it after \''.
  EXPECT_FALSE(taken("select E'a'\n'\\'' ; drop table t; --'", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select E'a'\r\n\t'\\'' ; drop table t; --'", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select E'a' -- note\n  '\\''", SqlEngine::PostgreSQL));
  // On the same line it is a new, standard literal.
  EXPECT_FALSE(taken("select E'a' '\\''", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select E'a' -- ; \n'x'", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, PrefixedLiteralsAndUnicodeForms) {
  EXPECT_TRUE(taken("select U&'d\\0061t\\+000061', U&\"d\\0061t\"", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select B'0101', X'1F', N'text\\'", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select B'01''01'", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select U&'abc", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select U&'x'", SqlEngine::PostgreSQL, true));
  EXPECT_FALSE(taken("select B'01'", SqlEngine::PostgreSQL, true));
}

TEST(SqlLexerPostgres, QuotedIdentifiers) {
  EXPECT_TRUE(taken("select \"a;b\"\"c\" from \"t'\"", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select \"abc", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, BlockCommentsNest) {
  EXPECT_TRUE(taken("select 1 /* a /* b */ c */", SqlEngine::PostgreSQL));
  EXPECT_FALSE(taken("select 1 /* a /* b */ c", SqlEngine::PostgreSQL));
  // Not nested, this would end at the first */ and run the rest.
  EXPECT_FALSE(taken("select 1 /* /* */ ; drop table t; -- */", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select 1 /**/, 2 /***/", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, LineCommentsEndAtACarriageReturn) {
  EXPECT_FALSE(taken("select 1 -- x\r; drop table t", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select 1 -- x ' \" $$\n, 2", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select 1 +-- x\n 2", SqlEngine::PostgreSQL));
}

TEST(SqlLexerPostgres, HashBackquoteAndBracketsAreOperatorCharacters) {
  EXPECT_TRUE(taken("select a # b, a[1], 1 ` 2 from t", SqlEngine::PostgreSQL));
  EXPECT_TRUE(taken("select a::text, @ -1 from t", SqlEngine::PostgreSQL));
}

// ---- MariaDB --------------------------------------------------------------------------------

TEST(SqlLexerMariaDB, TheBackslashPairThatHidARecord) {
  // x\ in one column, ' OR 1=1 --  in the next.
  const std::string sql = "select `a`, `b` from `t` where `a` = 'x\\' AND `b` like ' OR 1=1 -- '";
  // With NO_BACKSLASH_ESCAPES: two literals, one statement.
  EXPECT_TRUE(taken(sql, SqlEngine::MariaDB, false));
  // With backslash escapes the second quote is escaped; the comment hides the rest.
  EXPECT_TRUE(taken(sql, SqlEngine::MariaDB, true));
  EXPECT_TRUE(taken("select 'x\\' , ' ; drop table t; -- '", SqlEngine::MariaDB, false));
  EXPECT_FALSE(taken("select 'x\\' , ' ; drop table t; -- '", SqlEngine::MariaDB, true));
}

TEST(SqlLexerMariaDB, BackslashEscapesFollowTheSession) {
  EXPECT_TRUE(taken("select 'a\\'", SqlEngine::MariaDB, false));
  EXPECT_FALSE(taken("select 'a\\'", SqlEngine::MariaDB, true));
  // "..." is a string, or a name under ANSI_QUOTES: with escapes on, a backslash in it is refused.
  EXPECT_FALSE(taken("select \"a\\\"b\"", SqlEngine::MariaDB, true));
  EXPECT_FALSE(taken("select \"a\\\"b\"", SqlEngine::MariaDB, false));
  EXPECT_TRUE(taken("select \"a\\\"", SqlEngine::MariaDB, false));
  // A backslash after a non-ASCII byte may end a multi-byte character.
  EXPECT_FALSE(taken("select '\xbf\\' ; drop table t; -- '", SqlEngine::MariaDB, true));
  EXPECT_TRUE(taken("select '\xbf\\'", SqlEngine::MariaDB, false));
  EXPECT_TRUE(taken("select 'a''b', \"a\"\"b\"", SqlEngine::MariaDB, false));
  EXPECT_FALSE(taken("select 'a\\", SqlEngine::MariaDB, true));
}

TEST(SqlLexerMariaDB, BackquotedNames) {
  EXPECT_TRUE(taken("select `a;b``c'` from `t\\`", SqlEngine::MariaDB, true));
  EXPECT_FALSE(taken("select `abc", SqlEngine::MariaDB));
}

TEST(SqlLexerMariaDB, HashAndDashDashBlankComments) {
  EXPECT_TRUE(taken("select 1 # ' \" ` \n, 2", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select 1 # x\n; drop table t", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 -- ' x\n, 2", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 --\t'\n", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 --", SqlEngine::MariaDB));
  // "--" before anything else is two minus signs: the quote after it opens a literal.
  EXPECT_FALSE(taken("select 1 --'x", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 --'x'", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select 1 --'; drop table t; -- '\n; x", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 ---- x ' \n", SqlEngine::MariaDB));
}

TEST(SqlLexerMariaDB, ExecutableCommentsAreRefused) {
  EXPECT_NE(refusal("select 1 /*! , 2 */", SqlEngine::MariaDB).find("executable comment"), std::string::npos);
  EXPECT_FALSE(taken("select 1 /*!50000 , 2 */", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select 1 /*M! , 2 */", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select 1 /*M!100000 , 2 */", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 /* ! */", SqlEngine::MariaDB));
  EXPECT_TRUE(taken("select 1 /*+ hint */", SqlEngine::MariaDB));
  // Comments do not nest in MariaDB; one opened inside another is refused.
  EXPECT_FALSE(taken("select 1 /* /* */", SqlEngine::MariaDB));
}

TEST(SqlLexerMariaDB, VariablesAndDollars) {
  EXPECT_TRUE(taken("select @a, @@sql_mode, a$b, $x from t", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select @'a\\'", SqlEngine::MariaDB));
  EXPECT_FALSE(taken("select @`a`", SqlEngine::MariaDB));
}

// ---- SQLite and the Access provider ---------------------------------------------------------

TEST(SqlLexerSQLite, QuotesNamesAndBrackets) {
  for (SqlEngine engine : {SqlEngine::SQLite, SqlEngine::Jet}) {
    EXPECT_TRUE(taken("select 'a\\', \"b;\"\"\", `c;``d`, [e;'f] from [t]", engine));
    EXPECT_FALSE(taken("select [abc", engine));
    EXPECT_FALSE(taken("select `abc", engine));
    EXPECT_FALSE(taken("select \"abc", engine));
    EXPECT_FALSE(taken("select 'a\\'; drop table t; --'", engine));
    EXPECT_TRUE(taken("select x'0A1B', a$b from t", engine));
  }
}

TEST(SqlLexerSQLite, CommentsDoNotNest) {
  EXPECT_TRUE(taken("select 1 /* /* */", SqlEngine::SQLite));
  EXPECT_FALSE(taken("select 1 /* /* */ ; drop table t; -- */", SqlEngine::SQLite));
  EXPECT_TRUE(taken("select 1 /* a /* b */ - 2", SqlEngine::SQLite));
  EXPECT_TRUE(taken("select 1 -- x\r ' \n", SqlEngine::SQLite));
}

TEST(SqlLexerSQLite, ParameterSignsAreRefused) {
  for (SqlEngine engine : {SqlEngine::SQLite, SqlEngine::Jet}) {
    EXPECT_FALSE(taken("select $a(';') from t", engine));
    EXPECT_FALSE(taken("select #a from t", engine));
    EXPECT_FALSE(taken("select :a from t", engine));
    EXPECT_FALSE(taken("select @a from t", engine));
    EXPECT_TRUE(taken("select ?, ?1 from t where a = '#$:@'", engine));
  }
}

// ---- an unknown engine ----------------------------------------------------------------------

TEST(SqlLexerOther, OnlyWhatEveryEngineReadsAlike) {
  EXPECT_TRUE(taken("select \"a\", 'b''c' from t where x = 1 -- note\n", SqlEngine::Other));
  EXPECT_TRUE(taken("select [a b] from [t]", SqlEngine::Other));
  EXPECT_FALSE(taken("select 'a\\'", SqlEngine::Other));
  EXPECT_FALSE(taken("select \"a\\\"", SqlEngine::Other));
  EXPECT_FALSE(taken("select `a`", SqlEngine::Other));
  EXPECT_FALSE(taken("select $$a$$", SqlEngine::Other));
  EXPECT_FALSE(taken("select a$b", SqlEngine::Other));
  EXPECT_FALSE(taken("select 1 # x", SqlEngine::Other));
  EXPECT_FALSE(taken("select 1 --x", SqlEngine::Other));
  EXPECT_FALSE(taken("select 1 -- x\r\n", SqlEngine::Other));
  EXPECT_FALSE(taken("select 1 /*! 2 */", SqlEngine::Other));
  EXPECT_FALSE(taken("select 1 /* /* */ */", SqlEngine::Other));
  EXPECT_FALSE(taken("select [a'b]", SqlEngine::Other));
  EXPECT_FALSE(taken("select [a]]b]", SqlEngine::Other));
  EXPECT_FALSE(taken("select :a, @b", SqlEngine::Other));
}

// ---- hostile literals -----------------------------------------------------------------------

TEST(SqlLexer, HostileTextInsideALiteralIsTakenAsOneStatement) {
  const std::string hostile = "' \" ` ] [ ; -- # /* */ $$ $a$ \\ \n\r\t\x01\x1f\x7f é 日本 \\";
  std::string literal = "'";
  for (char c : hostile) {
    if (c == '\'') literal += '\'';
    literal += c;
  }
  literal += "'";
  for (SqlEngine engine : {SqlEngine::SQLite, SqlEngine::Jet, SqlEngine::PostgreSQL, SqlEngine::MariaDB})
    EXPECT_TRUE(taken("select " + literal + " as v", engine)) << static_cast<int>(engine);
}

TEST(SqlLexer, ALongTextIsReadToItsEnd) {
  std::string text(100 * 1024, 'x');
  for (size_t i = 0; i < text.size(); i += 97) text[i] = "';\\$-/*#"[i % 8];
  std::string literal = "'";
  for (char c : text) {
    if (c == '\'') literal += '\'';
    literal += c;
  }
  literal += "'";
  for (SqlEngine engine : {SqlEngine::SQLite, SqlEngine::PostgreSQL, SqlEngine::MariaDB}) {
    EXPECT_TRUE(taken("select " + literal, engine));
    EXPECT_FALSE(taken("select " + literal + "; drop table t", engine));
  }
}

// ---- against SQLite's own reader ------------------------------------------------------------

TEST(SqlLexerSQLite, WhatTheCheckTakesSQLiteReadsAsOneStatement) {
  // Texts made of pieces that start or end literals, names, comments and statements: whenever
  // the check takes one, SQLite's reader must find nothing after its first statement.
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
  sqlite3_exec(db, "CREATE TABLE t (a, b)", nullptr, nullptr, nullptr);
  const char* pieces[] = {"'", "\"", "`", "[", "]", ";", "--", "/*", "*/", "\n", "\r", " ", "a", "1",
                          "$", "\\", "x'", "#", ":", "@", "?", "''", "e", "-", "/", "*", "(", ")", ","};
  std::mt19937 random(20240611);
  std::uniform_int_distribution<size_t> piece(0, std::size(pieces) - 1), length(1, 12);
  int taken = 0, prepared = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string sql = "select a from t where a = ";
    for (size_t n = length(random); n > 0; --n) sql += pieces[piece(random)];
    sql += " and b = 1";
    try {
      checkSingleStatement(sql, SqlEngine::SQLite, false);
    } catch (const vb::VBError&) {
      continue;
    }
    ++taken;
    sqlite3_stmt* statement = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &statement, &tail) == SQLITE_OK) {
      ++prepared;
      for (const char* c = tail; c != nullptr && *c != '\0'; ++c)
        ASSERT_TRUE(*c == ' ' || *c == '\t' || *c == '\n' || *c == '\r' || *c == '\f' || *c == ';')
            << "taken, but SQLite reads more after its first statement: " << sql;
    }
    sqlite3_finalize(statement);
  }
  sqlite3_close(db);
  // The pieces make many texts the check takes, and many SQLite prepares.
  EXPECT_GT(taken, 1000);
  EXPECT_GT(prepared, 200);
}
