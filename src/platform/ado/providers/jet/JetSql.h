#pragma once
// Jet SQL to the SQL of the in-memory SQLite database the Access provider answers from.
// Outside '...' literals, [bracketed] names ("]]" inside is one ']') and comments:
//   #1996-07-04#, #7/4/1996#, #7/4/96 10:30 PM#, #10:30:00#  ->  '1996-07-04 00:00:00' ...
//     (the text dates are stored as; a time alone falls on 1899-12-30, as in Access)
//   "text"          ->  'text'   (Jet takes double quotes for string literals)
//   True / False    ->  -1 / 0   (Access stores Yes/No as -1 and 0)
//   a & b           ->  a || b   (Jet's text concatenation)
// Everything else passes unchanged: SQLite accepts [bracketed] names, and LIKE with % and _ is
// case-insensitive in both. Counting statements is left to the SQLite session.
#include <optional>
#include <string>

#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado::detail {

// Raises ProviderSyntaxError for a # date literal that is not a date or has no closing #.
std::string translateJetSql(const std::string& sql);

// The date/time written between the #s of a Jet date literal (without them), or nullopt when
// the text is not one. Two-digit years 00-29 are 2000-2029, 30-99 are 1930-1999.
std::optional<vb::DateTime> parseJetDateLiteral(const std::string& text);

}  // namespace varsentix::ado::detail
