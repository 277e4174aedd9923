#include "platform/ado/SqlDialect.h"

#include <cstdio>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

[[noreturn]] void syntaxError(const std::string& what) {
  throw vb::VBError(vb::errnum::ProviderSyntaxError, what, "SQL").withDriverDetail("42000", 0);
}

// A NUL byte stands outside literals only where a value was not well-formed enough to be
// written bare (see datasource/BareValue.h): such a statement is never sent.
[[noreturn]] void refuseNul() {
  syntaxError("The statement holds a value that is not well-formed for its column's data type (a NUL "
              "byte outside any literal); it was not sent.");
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

// Copies the delimited run starting at sql[pos] (a '...' literal, a "..." or `...` quoted
// identifier, the delimiter doubled inside) to out; pos ends after the closing delimiter.
void copyDelimited(const std::string& sql, size_t& pos, std::string& out) {
  char quote = sql[pos];
  out += sql[pos++];
  while (pos < sql.size()) {
    char c = sql[pos++];
    out += c;
    if (c == quote) {
      if (pos < sql.size() && sql[pos] == quote) {
        out += sql[pos++];
        continue;
      }
      return;
    }
  }
  syntaxError(quote == '\'' ? "Unterminated string literal in the SQL statement."
                            : "Unterminated quoted identifier in the SQL statement.");
}

// [name] (a doubled "]]" stands for one ']'): the engine's quoting of name, or the brackets
// kept when the engine takes them.
void translateBracket(const std::string& sql, size_t& pos, const DialectOptions& options,
                      std::string& out) {
  size_t start = pos++;
  std::string name;
  while (true) {
    if (pos >= sql.size()) syntaxError("Unterminated bracketed identifier in the SQL statement.");
    char c = sql[pos++];
    if (c == ']') {
      if (pos < sql.size() && sql[pos] == ']') {
        name += ']';
        ++pos;
        continue;
      }
      break;
    }
    name += c;
  }
  if (options.openQuote == 0) {
    out.append(sql, start, pos - start);
    return;
  }
  out += options.openQuote;
  for (char c : name) {
    out += c;
    if (c == options.closeQuote) out += c;
  }
  out += options.closeQuote;
}

bool readNumber(const std::string& text, size_t& pos, int& value) {
  size_t start = pos;
  value = 0;
  while (pos < text.size() && text[pos] >= '0' && text[pos] <= '9' && pos - start < 4)
    value = value * 10 + (text[pos++] - '0');
  return pos > start;
}

// Jet's #m/d/yyyy [h:mm[:ss] [AM|PM]]# as ISO text; other contents pass unchanged.
std::string isoFromJetDate(const std::string& inner) {
  size_t pos = 0;
  int month = 0, day = 0, year = 0;
  if (!readNumber(inner, pos, month) || pos >= inner.size() || inner[pos++] != '/') return inner;
  if (!readNumber(inner, pos, day) || pos >= inner.size() || inner[pos++] != '/') return inner;
  if (!readNumber(inner, pos, year)) return inner;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", year, month, day);
  std::string result = buffer;
  while (pos < inner.size() && isBlank(inner[pos])) ++pos;
  if (pos == inner.size()) return result;
  int hour = 0, minute = 0, second = 0;
  if (!readNumber(inner, pos, hour) || pos >= inner.size() || inner[pos++] != ':') return inner;
  if (!readNumber(inner, pos, minute)) return inner;
  if (pos < inner.size() && inner[pos] == ':') {
    ++pos;
    if (!readNumber(inner, pos, second)) return inner;
  }
  while (pos < inner.size() && isBlank(inner[pos])) ++pos;
  std::string suffix = inner.substr(pos);
  if (suffix == "PM" || suffix == "pm") {
    if (hour < 12) hour += 12;
  } else if (suffix == "AM" || suffix == "am") {
    if (hour == 12) hour = 0;
  } else if (!suffix.empty()) {
    return inner;
  }
  std::snprintf(buffer, sizeof buffer, " %02d:%02d:%02d", hour, minute, second);
  return result + buffer;
}

void translateHashDate(const std::string& sql, size_t& pos, std::string& out) {
  size_t close = sql.find('#', pos + 1);
  if (close == std::string::npos) syntaxError("Unterminated date literal (#...#) in the SQL statement.");
  std::string inner = sql.substr(pos + 1, close - pos - 1);
  out += '\'';
  for (char c : isoFromJetDate(inner)) {
    out += c;
    if (c == '\'') out += c;
  }
  out += '\'';
  pos = close + 1;
}

void skipLineComment(const std::string& sql, size_t& pos, std::string& out) {
  while (pos < sql.size() && sql[pos] != '\n') {
    if (sql[pos] == '\0') refuseNul();
    out += sql[pos++];
  }
}

void skipBlockComment(const std::string& sql, size_t& pos, std::string& out) {
  size_t close = sql.find("*/", pos + 2);
  if (close == std::string::npos) syntaxError("Unterminated comment in the SQL statement.");
  if (sql.find('\0', pos) < close) refuseNul();
  out.append(sql, pos, close + 2 - pos);
  pos = close + 2;
}

// After the statement's ';': only blanks (and further ';') may follow.
void refuseSecondStatement(const std::string& sql, size_t pos) {
  for (size_t i = pos; i < sql.size(); ++i)
    if (sql[i] == '\0') refuseNul();
    else if (!isBlank(sql[i]) && sql[i] != ';')
      syntaxError("Only one SQL statement can be executed at a time: text follows the ';' that "
                  "ends the first statement.");
}

}  // namespace

std::string translateSql(const std::string& sql, const DialectOptions& options) {
  std::string out;
  out.reserve(sql.size() + 8);
  size_t pos = 0;
  while (pos < sql.size()) {
    char c = sql[pos];
    if (c == '\'' || c == '"' || c == '`') {
      copyDelimited(sql, pos, out);
    } else if (c == '[') {
      translateBracket(sql, pos, options, out);
    } else if (c == '#' && options.translateHashDates) {
      translateHashDate(sql, pos, out);
    } else if (c == '-' && pos + 1 < sql.size() && sql[pos + 1] == '-') {
      skipLineComment(sql, pos, out);
    } else if (c == '/' && pos + 1 < sql.size() && sql[pos + 1] == '*') {
      skipBlockComment(sql, pos, out);
    } else if (c == '\0') {
      refuseNul();
    } else if (c == ';') {
      refuseSecondStatement(sql, pos + 1);
      break;  // the trailing ';' is dropped: engines take one statement without it
    } else {
      out += c;
      ++pos;
    }
  }
  return out;
}

}  // namespace varsentix::ado::detail
