#pragma once
// modUtility: text helpers for SQL literals.
#include <string>

namespace varsentix::modUtility {

// Doubles every apostrophe for use inside an SQL string literal: O'Brien gives O''Brien.
// Text without an apostrophe comes back unchanged and the argument is left alone. Otherwise the
// argument is consumed on the way: afterwards it holds only the text after its last apostrophe.
// Callers do not reuse it.
std::string escapeSingleQuotes(std::string& text);

}  // namespace varsentix::modUtility
