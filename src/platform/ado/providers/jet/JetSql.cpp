#include "platform/ado/providers/jet/JetSql.h"

#include <cctype>
#include <vector>

#include "platform/ado/providers/jet/JetLoader.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

constexpr const char* kSource = "Microsoft JET Database Engine";

bool isWordChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

// Splits "7/4/1996 10:30 PM" into tokens: numbers, separators and words.
struct Token {
  enum Kind { Number, Separator, Word } kind;
  std::string text;
};

std::vector<Token> tokenize(const std::string& text) {
  std::vector<Token> tokens;
  for (size_t i = 0; i < text.size();) {
    char c = text[i];
    if (c == ' ' || c == '\t') {
      if (!tokens.empty() && tokens.back().kind != Token::Separator) tokens.push_back({Token::Separator, " "});
      ++i;
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      size_t end = i;
      while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
      tokens.push_back({Token::Number, text.substr(i, end - i)});
      i = end;
    } else if (std::isalpha(static_cast<unsigned char>(c))) {
      size_t end = i;
      while (end < text.size() && std::isalpha(static_cast<unsigned char>(text[end]))) ++end;
      tokens.push_back({Token::Word, upper(text.substr(i, end - i))});
      i = end;
    } else {
      tokens.push_back({Token::Separator, std::string(1, c)});
      ++i;
    }
  }
  while (!tokens.empty() && tokens.back().text == " ") tokens.pop_back();
  return tokens;
}

bool leapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int daysInMonth(int year, int month) {
  static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && leapYear(year) ? 29 : days[month - 1];
}

int number(const Token& token) { return token.text.size() > 6 ? 1000000 : std::stoi(token.text); }

// Reads "y-m-d", "y/m/d" (a four-digit first number) or "m/d/y", "m-d-y" at tokens[pos].
bool readDatePart(const std::vector<Token>& t, size_t& pos, vb::DateTime& out) {
  if (pos + 5 > t.size()) return false;
  if (t[pos].kind != Token::Number || t[pos + 1].kind != Token::Separator ||
      t[pos + 2].kind != Token::Number || t[pos + 3].kind != Token::Separator ||
      t[pos + 4].kind != Token::Number)
    return false;
  const std::string& sep = t[pos + 1].text;
  if ((sep != "-" && sep != "/") || t[pos + 3].text != sep) return false;
  int year, month, day;
  if (t[pos].text.size() >= 3) {
    year = number(t[pos]), month = number(t[pos + 2]), day = number(t[pos + 4]);
  } else {
    month = number(t[pos]), day = number(t[pos + 2]), year = number(t[pos + 4]);
    if (t[pos + 4].text.size() <= 2) year += year < 30 ? 2000 : 1900;
  }
  if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1 ||
      day > daysInMonth(year, month))
    return false;
  out.year = year;
  out.month = static_cast<uint8_t>(month);
  out.day = static_cast<uint8_t>(day);
  pos += 5;
  return true;
}

// Reads "h:m", "h:m:s", each optionally followed by AM or PM, at tokens[pos].
bool readTimePart(const std::vector<Token>& t, size_t& pos, vb::DateTime& out) {
  if (pos + 3 > t.size() || t[pos].kind != Token::Number || t[pos + 1].text != ":" ||
      t[pos + 2].kind != Token::Number)
    return false;
  int hour = number(t[pos]), minute = number(t[pos + 2]), second = 0;
  pos += 3;
  if (pos + 2 <= t.size() && t[pos].text == ":" && t[pos + 1].kind == Token::Number) {
    second = number(t[pos + 1]);
    pos += 2;
  }
  if (pos < t.size() && t[pos].text == " ") ++pos;
  if (pos < t.size() && t[pos].kind == Token::Word) {
    const std::string& word = t[pos].text;
    if (word != "AM" && word != "PM") return false;
    if (hour < 1 || hour > 12) return false;
    hour = hour % 12 + (word == "PM" ? 12 : 0);
    ++pos;
  }
  if (hour > 23 || minute > 59 || second > 59) return false;
  out.hour = static_cast<uint8_t>(hour);
  out.minute = static_cast<uint8_t>(minute);
  out.second = static_cast<uint8_t>(second);
  return true;
}

[[noreturn]] void raiseDateSyntax(const std::string& literal) {
  vb::raiseError(vb::errnum::ProviderSyntaxError,
                 "Syntax error in date in query expression '" + literal + "'.", kSource);
}

// Copies a quoted run (opening quote at sql[i]) whose quote is doubled inside; returns the
// position after it (sql.size() when unterminated).
size_t quotedEnd(const std::string& sql, size_t i, char quote) {
  for (size_t j = i + 1; j < sql.size(); ++j) {
    if (sql[j] != quote) continue;
    if (j + 1 < sql.size() && sql[j + 1] == quote) {
      ++j;
      continue;
    }
    return j + 1;
  }
  return sql.size();
}

// The position after the ']' closing the bracketed name at sql[i] ("]]" inside stands for ']').
size_t bracketEnd(const std::string& sql, size_t i) {
  for (size_t j = i + 1; j < sql.size(); ++j) {
    if (sql[j] != ']') continue;
    if (j + 1 < sql.size() && sql[j + 1] == ']') {
      ++j;
      continue;
    }
    return j + 1;
  }
  return sql.size();
}

// "a""b'c" -> 'a"b''c'
std::string singleQuoted(const std::string& doubleQuoted) {
  std::string body = doubleQuoted.substr(1, doubleQuoted.size() >= 2 ? doubleQuoted.size() - 2 : 0);
  std::string out = "'";
  for (size_t i = 0; i < body.size(); ++i) {
    if (body[i] == '"' && i + 1 < body.size() && body[i + 1] == '"') ++i;
    if (body[i] == '\'') out += '\'';
    out += body[i];
  }
  return out + "'";
}

}  // namespace

std::optional<vb::DateTime> parseJetDateLiteral(const std::string& text) {
  std::vector<Token> tokens = tokenize(text);
  size_t start = 0;
  while (start < tokens.size() && tokens[start].text == " ") ++start;
  vb::DateTime value;  // 1899-12-30 00:00:00: the day a time alone falls on
  value.kind = vb::DateTime::Kind::Timestamp;
  size_t pos = start;
  bool hasDate = readDatePart(tokens, pos, value);
  if (!hasDate) pos = start;
  if (pos < tokens.size() && tokens[pos].text == " ") ++pos;
  bool hasTime = pos < tokens.size() && readTimePart(tokens, pos, value);
  if (!hasDate && !hasTime) return std::nullopt;
  if (pos != tokens.size()) return std::nullopt;
  return value;
}

std::string translateJetSql(const std::string& sql) {
  std::string out;
  out.reserve(sql.size() + 16);
  for (size_t i = 0; i < sql.size();) {
    char c = sql[i];
    if (c == '\'') {
      size_t end = quotedEnd(sql, i, '\'');
      out.append(sql, i, end - i);
      i = end;
    } else if (c == '"') {
      size_t end = quotedEnd(sql, i, '"');
      out += end <= sql.size() && end > i + 1 && sql[end - 1] == '"' ? singleQuoted(sql.substr(i, end - i))
                                                                   : sql.substr(i, end - i);
      i = end;
    } else if (c == '[') {
      size_t end = bracketEnd(sql, i);
      out.append(sql, i, end - i);
      i = end;
    } else if (c == '-' && i + 1 < sql.size() && sql[i + 1] == '-') {
      size_t end = sql.find('\n', i);
      end = end == std::string::npos ? sql.size() : end;
      out.append(sql, i, end - i);
      i = end;
    } else if (c == '/' && i + 1 < sql.size() && sql[i + 1] == '*') {
      size_t end = sql.find("*/", i + 2);
      end = end == std::string::npos ? sql.size() : end + 2;
      out.append(sql, i, end - i);
      i = end;
    } else if (c == '#') {
      size_t end = sql.find('#', i + 1);
      if (end == std::string::npos) raiseDateSyntax(sql.substr(i));
      std::string literal = sql.substr(i, end + 1 - i);
      auto value = parseJetDateLiteral(literal.substr(1, literal.size() - 2));
      if (!value) raiseDateSyntax(literal);
      out += '\'';
      out += storedDateText(*value);
      out += '\'';
      i = end + 1;
    } else if (c == '&') {
      out += "||";
      ++i;
    } else if (isWordChar(c)) {
      size_t end = i;
      while (end < sql.size() && isWordChar(sql[end])) ++end;
      std::string word = sql.substr(i, end - i);
      bool qualified = i > 0 && sql[i - 1] == '.';
      std::string key = upper(word);
      if (!qualified && key == "TRUE") out += "-1";
      else if (!qualified && key == "FALSE") out += "0";
      else out += word;
      i = end;
    } else {
      out += c;
      ++i;
    }
  }
  return out;
}

}  // namespace varsentix::ado::detail
