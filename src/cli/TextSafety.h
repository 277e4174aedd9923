#pragma once
// Texts read from databases (names, values, driver messages) on their way to a terminal or a
// JSON document: control characters and bytes that are not UTF-8 are shown in a visible form
// instead of being written as they are.
#include <cstddef>
#include <cstdint>
#include <string>

namespace varsentix::cli {

// The length (1 to 4) of the well-formed UTF-8 sequence at text[at], or 0 when the byte there
// starts none (a stray continuation byte, an overlong form, a surrogate, past U+10FFFF, or a
// sequence cut short). codePoint gets the character of a well-formed sequence.
size_t utf8SequenceAt(const std::string& text, size_t at, char32_t& codePoint);

// For the text report: every C0 control (U+0000 to U+001F), DEL (U+007F) and C1 control
// (U+0080 to U+009F) as \xHH of its code (\n, \r and \t as themselves: "\n"...), every byte that
// is not part of well-formed UTF-8 as \xHH of the byte, and a backslash as \\; everything else as
// it is. So "\x1b[2J" in a name reaches the terminal as the six characters \x1b[2J.
std::string escapedForTerminal(const std::string& text);

// The JSON string literal of text (with its quotes): '"', '\' and every control character (C0,
// DEL, C1) escaped, each byte that is not part of well-formed UTF-8 replaced by U+FFFD; the
// document is always valid UTF-8.
std::string jsonString(const std::string& text);

}  // namespace varsentix::cli
