#pragma once
// The system's SQL dialect and its translation to an engine's: [bracketed] identifiers become
// the engine's quoted identifiers outside string literals; text holding a second statement is
// refused, so that a hostile name cannot smuggle a command.
#include <string>

namespace varsentix::ado::detail {

struct DialectOptions {
  char openQuote = '"';       // the engine's identifier quote ('"', '`'); 0 keeps brackets
  char closeQuote = '"';
  bool translateHashDates = false;  // Jet: #2024-01-31# becomes '2024-01-31'
};

// Translates sql; raises a syntax error (ProviderSyntaxError) for a second statement after a
// ';' outside literals and identifiers (one trailing ';' and blanks after it are allowed), a NUL
// byte outside literals and identifiers (what a value not well-formed for its type is written as),
// or an unterminated literal or bracket.
std::string translateSql(const std::string& sql, const DialectOptions& options);

}  // namespace varsentix::ado::detail
