#pragma once
// The last look at a statement before an engine gets it: the native text (after the dialect's
// translation) is read the way the receiving engine reads it, and is refused unless it is
// exactly one statement read with certainty. Each engine has its own lexer:
//   PostgreSQL  '...' (standard conforming), E'...', U&'...', B'...', X'...', $tag$...$tag$,
//               "identifiers", -- comments, nested /* */ comments, $1 parameters
//   MariaDB     '...' and "..." (backslash escapes as the session has them), `identifiers`,
//               # and "-- " comments, /* */ comments; /*! */ and /*M! */ are refused
//   SQLite      '...', "...", `...`, [...], -- and /* */ comments (not nested)
//   Jet         the SQLite text the Access provider's translation makes
//   Other       an unknown ODBC engine: only what every engine above reads alike
// The text is refused (ProviderSyntaxError, naming why) for a ';' followed by more than blanks,
// an unterminated literal, identifier or comment, an executable comment, a NUL byte, a '$' or
// parameter sign the engine could read otherwise, ODBC escape braces, or a ';' inside a
// comment (the ODBC drivers look for statement ends themselves).
#include <string>

namespace varsentix::ado::detail {

enum class SqlEngine { SQLite, PostgreSQL, MariaDB, Jet, Other };

// Raises ProviderSyntaxError unless nativeSql is exactly one statement the engine's lexer
// reads with certainty. backslashEscapes: whether a backslash escapes the next character in a
// plain '...' literal of this session (MariaDB without NO_BACKSLASH_ESCAPES, PostgreSQL with
// standard_conforming_strings off); SQLite and Jet never escape.
void checkSingleStatement(const std::string& nativeSql, SqlEngine engine, bool backslashEscapes);

// The engine's name as messages use it ("PostgreSQL", "MariaDB", ...).
const char* sqlEngineName(SqlEngine engine);

}  // namespace varsentix::ado::detail
