#include "platform/ado/SqlLexer.h"

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw vb::VBError(vb::errnum::ProviderSyntaxError, why, "SQL").withDriverDetail("42000", 0);
}

bool isBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }
bool isControl(unsigned char c) { return c < 0x20 || c == 0x7f; }
bool isDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool isLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
// The first character of an unquoted name (bytes of UTF-8 sequences included).
bool isWordStart(unsigned char c) { return isLetter(c) || c == '_' || c >= 0x80; }
bool isWordPart(unsigned char c) { return isWordStart(c) || isDigit(c); }

// One statement read the way one engine reads it. Every construct that can hide text from the
// reader (literals, quoted names, comments) is followed to its end; whatever the reader is not
// sure the engine (and the ODBC driver before it) reads the same way is refused.
class Lexer {
 public:
  Lexer(const std::string& sql, SqlEngine engine, bool backslashEscapes)
      : s_(sql), n_(sql.size()), engine_(engine == SqlEngine::Jet ? SqlEngine::SQLite : engine),
        backslashEscapes_(backslashEscapes && (engine == SqlEngine::PostgreSQL || engine == SqlEngine::MariaDB)) {}

  void run() {
    while (p_ < n_) {
      const unsigned char c = byte(p_);
      if (isBlank(c)) {
        ++p_;
      } else if (c == 0) {
        refuse("The SQL statement holds a NUL byte outside a literal; the engine could read the text after it "
               "as more SQL. It is refused.");
      } else if (isControl(c)) {
        refuse("The SQL statement holds a control character outside a literal, which " + std::string(name()) +
               " may not read as a blank. It is refused.");
      } else if (c == ';') {
        refuseSecondStatement();
        return;
      } else if (c == '\'') {
        stringLiteral(plainStringRule());
      } else if (c == '"') {
        doubleQuoted();
      } else if (c == '`') {
        backQuoted();
      } else if (c == '[') {
        bracketed();
      } else if (c == '-' && byte(p_ + 1) == '-') {
        dashDash();
      } else if (c == '/' && byte(p_ + 1) == '*') {
        blockComment();
      } else if (c == '#') {
        hash();
      } else if (c == '$') {
        dollar();
      } else if (c == '@' || c == ':') {
        parameterSign(c);
      } else if (c == '{' || c == '}') {
        refuse("The SQL statement holds a brace outside a literal; the ODBC driver would read it as the start "
               "or end of an escape sequence and rewrite the text. It is refused.");
      } else if (c == '\\') {
        refuse("The SQL statement holds a backslash outside a literal. It is refused.");
      } else if (isDigit(c)) {
        number();
      } else if (isWordStart(c)) {
        word();
      } else {
        ++p_;  // an operator or punctuation character
      }
    }
  }

 private:
  // How a string literal's body is read.
  enum class Rule {
    Doubled,          // '' stands for ', a backslash is plain
    DoubledEscaped,   // '' stands for ', a backslash escapes the next character
    PlainNoBackslash, // '' stands for ', a backslash is refused (an unknown engine)
  };

  const std::string& s_;
  const size_t n_;
  const SqlEngine engine_;
  const bool backslashEscapes_;
  size_t p_ = 0;

  // The byte at i, or -1 past the end (a NUL byte in the text reads as 0).
  int byte(size_t i) const { return i < n_ ? static_cast<unsigned char>(s_[i]) : -1; }

  const char* name() const { return sqlEngineName(engine_); }

  Rule plainStringRule() const {
    if (engine_ == SqlEngine::Other) return Rule::PlainNoBackslash;
    return backslashEscapes_ ? Rule::DoubledEscaped : Rule::Doubled;
  }

  // After the statement's ';': only blanks (and further ';') may follow.
  void refuseSecondStatement() const {
    for (size_t i = p_ + 1; i < n_; ++i)
      if (!isBlank(static_cast<unsigned char>(s_[i])) && s_[i] != ';')
        refuse("Only one SQL statement can be executed at a time: text follows the ';' that ends the first "
               "statement.");
  }

  // A NUL byte inside a literal: MariaDB reads the text by its length; the other engines and
  // drivers take the text up to the first NUL.
  void nulInLiteral() const {
    if (engine_ == SqlEngine::MariaDB) return;
    refuse("The SQL statement holds a NUL byte inside a literal, where " + std::string(name()) +
           " would end the text. It is refused.");
  }

  // The body of a quoted run opened at s_[p_] by quote; p_ ends after the closing quote.
  void quotedBody(char quote, Rule rule, const char* unterminated) {
    size_t i = p_ + 1;
    while (true) {
      if (i >= n_) refuse(unterminated);
      const char c = s_[i];
      if (c == quote) {
        if (byte(i + 1) == static_cast<unsigned char>(quote)) {
          i += 2;
          continue;
        }
        p_ = i + 1;
        return;
      }
      if (c == '\\') {
        if (rule == Rule::DoubledEscaped) {
          // In a multi-byte character set (GBK, Big5, SJIS) a backslash byte can end a
          // character: the engine would not read it as an escape.
          if (engine_ == SqlEngine::MariaDB && i > 0 && static_cast<unsigned char>(s_[i - 1]) >= 0x80)
            refuse("The SQL statement holds a backslash after a non-ASCII byte inside a literal, which "
                   "MariaDB may read as part of a character rather than as an escape. It is refused.");
          if (i + 1 >= n_) refuse(unterminated);
          if (s_[i + 1] == '\0') nulInLiteral();
          i += 2;
          continue;
        }
        if (rule == Rule::PlainNoBackslash)
          refuse("The SQL statement holds a backslash inside a quoted text where " + std::string(name()) +
                 " may or may not read it as escaping the next character. It is refused.");
      }
      if (c == '\0') nulInLiteral();
      ++i;
    }
  }

  void stringLiteral(Rule rule) {
    quotedBody('\'', rule, "Unterminated string literal in the SQL statement.");
    if (engine_ == SqlEngine::PostgreSQL) postgresContinuation(rule);
  }

  // PostgreSQL continues a string literal over blanks holding a line break (and -- comments)
  // when another ' follows: the continuation is read by the first part's rules.
  void postgresContinuation(Rule rule) {
    while (true) {
      size_t i = p_;
      bool lineBreak = false;
      while (i < n_) {
        const char c = s_[i];
        if (c == ' ' || c == '\t' || c == '\f') {
          ++i;
        } else if (c == '\n' || c == '\r') {
          lineBreak = true;
          ++i;
        } else if (c == '-' && byte(i + 1) == '-') {
          while (i < n_ && s_[i] != '\n' && s_[i] != '\r') {
            if (s_[i] == ';') semicolonInComment();
            if (s_[i] == '\0') nulInComment();
            ++i;
          }
        } else {
          break;
        }
      }
      if (!lineBreak || byte(i) != '\'') return;
      p_ = i;
      quotedBody('\'', rule, "Unterminated string literal in the SQL statement.");
    }
  }

  void doubleQuoted() {
    switch (engine_) {
      case SqlEngine::MariaDB:
        // A string, read as '...' is; under ANSI_QUOTES a name, where a backslash never escapes:
        // with backslash escapes on, a backslash inside is refused.
        quotedBody('"', backslashEscapes_ ? Rule::PlainNoBackslash : Rule::Doubled,
                   "Unterminated string literal in the SQL statement.");
        return;
      case SqlEngine::Other:
        quotedBody('"', Rule::PlainNoBackslash, "Unterminated quoted identifier in the SQL statement.");
        return;
      default:
        quotedBody('"', Rule::Doubled, "Unterminated quoted identifier in the SQL statement.");
        return;
    }
  }

  void backQuoted() {
    switch (engine_) {
      case SqlEngine::MariaDB:
      case SqlEngine::SQLite:
        quotedBody('`', Rule::Doubled, "Unterminated quoted identifier in the SQL statement.");
        return;
      case SqlEngine::PostgreSQL:
        ++p_;  // an operator character
        return;
      default:
        refuse("The SQL statement holds a backquote outside a literal; engines differ on what it starts. It "
               "is refused.");
    }
  }

  void bracketed() {
    if (engine_ == SqlEngine::PostgreSQL || engine_ == SqlEngine::MariaDB) {
      ++p_;  // array subscripts and the like
      return;
    }
    size_t close = s_.find(']', p_ + 1);
    if (close == std::string::npos) refuse("Unterminated bracketed identifier in the SQL statement.");
    if (engine_ == SqlEngine::Other) {
      // Only names every engine reads alike: an engine without bracketed names reads the
      // characters inside as SQL.
      for (size_t i = p_ + 1; i < close; ++i) {
        const auto c = static_cast<unsigned char>(s_[i]);
        if (!isWordPart(c) && c != ' ')
          refuse("The SQL statement holds a bracketed name with characters this engine may read as SQL. It "
                 "is refused.");
      }
      if (byte(close + 1) == ']')
        refuse("The SQL statement holds a bracketed name followed by ']'. It is refused.");
    } else {
      for (size_t i = p_ + 1; i < close; ++i)
        if (s_[i] == '\0') nulInLiteral();
    }
    p_ = close + 1;
  }

  [[noreturn]] void semicolonInComment() const {
    refuse("The SQL statement holds a ';' inside a comment; the ODBC driver may take it for the end of a "
           "statement. It is refused.");
  }
  [[noreturn]] void nulInComment() const {
    refuse("The SQL statement holds a NUL byte inside a comment, where the engine could end the comment. "
           "It is refused.");
  }

  // A comment from s_[p_] to the end of its line (the line break stays for the main loop).
  void lineComment() {
    const bool carriageReturnEnds = engine_ == SqlEngine::PostgreSQL;
    for (size_t i = p_; i < n_; ++i) {
      const char c = s_[i];
      if (c == '\n' || (c == '\r' && carriageReturnEnds)) {
        p_ = i;
        return;
      }
      if (c == '\r' && engine_ == SqlEngine::Other)
        refuse("The SQL statement holds a carriage return inside a -- comment; engines differ on whether it "
               "ends the comment. It is refused.");
      if (c == ';') semicolonInComment();
      if (c == '\0') nulInComment();
    }
    p_ = n_;
  }

  void dashDash() {
    const int next = byte(p_ + 2);
    switch (engine_) {
      case SqlEngine::MariaDB:
        // "--" starts a comment only before a blank or control character (or the end).
        if (next == -1 || next == ' ' || isControl(static_cast<unsigned char>(next))) {
          lineComment();
        } else {
          ++p_;  // a minus sign
        }
        return;
      case SqlEngine::Other:
        if (next == -1 || next == ' ' || next == '\t' || next == '\n') {
          lineComment();
          return;
        }
        refuse("The SQL statement holds \"--\" before a character other than a blank; engines differ on "
               "whether it starts a comment. It is refused.");
      default:
        lineComment();
        return;
    }
  }

  void blockComment() {
    if (engine_ == SqlEngine::MariaDB || engine_ == SqlEngine::Other) {
      if (byte(p_ + 2) == '!' || ((byte(p_ + 2) == 'M' || byte(p_ + 2) == 'm') && byte(p_ + 3) == '!'))
        refuse("The SQL statement holds an executable comment (/*! ... */ or /*M! ... */), whose text "
               "MariaDB runs. It is refused.");
    }
    const bool nests = engine_ == SqlEngine::PostgreSQL;
    int depth = 1;
    size_t i = p_ + 2;
    while (true) {
      if (i + 1 >= n_) refuse("Unterminated comment in the SQL statement.");
      const char c = s_[i];
      if (c == '*' && s_[i + 1] == '/') {
        i += 2;
        if (--depth == 0 || !nests) break;
        continue;
      }
      if (c == '/' && s_[i + 1] == '*') {
        if (engine_ == SqlEngine::MariaDB || engine_ == SqlEngine::Other)
          refuse("The SQL statement holds a comment opened inside a comment; " + std::string(name()) +
                 " may not read where it ends. It is refused.");
        if (nests) ++depth;
        i += 2;
        continue;
      }
      if (c == ';') semicolonInComment();
      if (c == '\0') nulInComment();
      ++i;
    }
    p_ = i;
  }

  void hash() {
    switch (engine_) {
      case SqlEngine::MariaDB:
        lineComment();
        return;
      case SqlEngine::PostgreSQL:
        ++p_;  // an operator character
        return;
      case SqlEngine::SQLite:
        refuse("The SQL statement holds a '#' outside a literal, which SQLite reads as a parameter. It is "
               "refused.");
      default:
        refuse("The SQL statement holds a '#' outside a literal; engines differ on what it starts. It is "
               "refused.");
    }
  }

  void dollar() {
    switch (engine_) {
      case SqlEngine::PostgreSQL:
        postgresDollar();
        return;
      case SqlEngine::MariaDB:
        ++p_;  // part of a name
        return;
      case SqlEngine::SQLite:
        refuse("The SQL statement holds a '$' outside a literal, which SQLite reads as a parameter. It is "
               "refused.");
      default:
        refuse("The SQL statement holds a '$' outside a literal; engines differ on what it starts. It is "
               "refused.");
    }
  }

  // $tag$ ... $tag$ (tag: a name without '$', not starting with a digit), or $1.
  void postgresDollar() {
    const int next = byte(p_ + 1);
    if (next != -1 && isDigit(static_cast<unsigned char>(next))) {
      size_t i = p_ + 1;
      while (i < n_ && isDigit(static_cast<unsigned char>(s_[i]))) ++i;
      const int after = byte(i);
      if (after != -1 && (isWordPart(static_cast<unsigned char>(after)) || after == '$' || after == '\''))
        refuse("The SQL statement holds a parameter ($n) followed by more characters of a name, which "
               "PostgreSQL does not read with certainty. It is refused.");
      p_ = i;
      return;
    }
    size_t i = p_ + 1;
    if (next != '$') {
      if (next == -1 || !isWordStart(static_cast<unsigned char>(next)))
        refuse("The SQL statement holds a '$' that starts neither a dollar-quoted string nor a parameter. It "
               "is refused.");
      while (i < n_ && isWordPart(static_cast<unsigned char>(s_[i]))) ++i;
      if (byte(i) != '$')
        refuse("The SQL statement holds a '$' followed by a name without a closing '$', which PostgreSQL "
               "does not read with certainty. It is refused.");
    }
    const std::string tag = s_.substr(p_, i + 1 - p_);
    const size_t close = s_.find(tag, i + 1);
    if (close == std::string::npos)
      refuse("Unterminated dollar-quoted string (" + tag + "...) in the SQL statement.");
    if (s_.find('\0', i + 1) < close) nulInLiteral();
    p_ = close + tag.size();
  }

  void parameterSign(unsigned char c) {
    switch (engine_) {
      case SqlEngine::SQLite:
        refuse(std::string("The SQL statement holds a '") + static_cast<char>(c) +
               "' outside a literal, which SQLite reads as a parameter. It is refused.");
      case SqlEngine::MariaDB: {
        const int next = byte(p_ + 1);
        if (c == '@' && (next == '\'' || next == '"' || next == '`'))
          refuse("The SQL statement holds a quoted variable name (@'...'), which MariaDB reads by rules of "
                 "its own. It is refused.");
        ++p_;
        return;
      }
      case SqlEngine::PostgreSQL:
        ++p_;  // an operator character or a cast
        return;
      default:
        refuse(std::string("The SQL statement holds a '") + static_cast<char>(c) +
               "' outside a literal; engines differ on what it starts. It is refused.");
    }
  }

  // Digits and the name characters glued to them. A quote or '$' right after is refused:
  // engines (and versions of one) split such text differently.
  void number() {
    size_t i = p_;
    while (i < n_ && isWordPart(static_cast<unsigned char>(s_[i]))) ++i;
    const int after = byte(i);
    if (after == '\'' || after == '"' || after == '`' || after == '$')
      refuse("The SQL statement holds a number followed directly by a quote or '$'. It is refused.");
    p_ = i;
  }

  void word() {
    const size_t start = p_;
    if (engine_ == SqlEngine::PostgreSQL && postgresPrefixedString()) return;
    size_t i = start;
    // PostgreSQL, MariaDB and SQLite take '$' inside a name.
    while (i < n_ && (isWordPart(static_cast<unsigned char>(s_[i])) || (s_[i] == '$' && engine_ != SqlEngine::Other)))
      ++i;
    p_ = i;
  }

  // E'...', B'...', X'...', N'...', U&'...' and U&"...": a one-letter word right before the
  // quote. True when one was read.
  bool postgresPrefixedString() {
    const auto letter = static_cast<unsigned char>(s_[p_]);
    const int next = byte(p_ + 1);
    const char lower = static_cast<char>(letter | 0x20);
    if (next == '\'') {
      ++p_;
      if (lower == 'e') {
        stringLiteral(Rule::DoubledEscaped);
        return true;
      }
      if (lower == 'b' || lower == 'x') {
        if (backslashEscapes_)
          refuse("The SQL statement holds a bit-string literal, which PostgreSQL reads by rules of its own "
                 "while standard_conforming_strings is off. It is refused.");
        stringLiteral(Rule::Doubled);
        return true;
      }
      if (lower == 'n') {
        stringLiteral(plainStringRule());
        return true;
      }
      --p_;
      return false;
    }
    if (lower == 'u' && next == '&' && (byte(p_ + 2) == '\'' || byte(p_ + 2) == '"')) {
      p_ += 2;
      if (s_[p_] == '"') {
        quotedBody('"', Rule::Doubled, "Unterminated quoted identifier in the SQL statement.");
        return true;
      }
      if (backslashEscapes_)
        refuse("The SQL statement holds a U&'...' literal, which PostgreSQL refuses while "
               "standard_conforming_strings is off. It is refused.");
      stringLiteral(Rule::Doubled);
      return true;
    }
    return false;
  }
};

}  // namespace

const char* sqlEngineName(SqlEngine engine) {
  switch (engine) {
    case SqlEngine::SQLite: return "SQLite";
    case SqlEngine::PostgreSQL: return "PostgreSQL";
    case SqlEngine::MariaDB: return "MariaDB";
    case SqlEngine::Jet: return "the Access provider";
    default: return "the engine";
  }
}

void checkSingleStatement(const std::string& nativeSql, SqlEngine engine, bool backslashEscapes) {
  Lexer(nativeSql, engine, backslashEscapes).run();
}

}  // namespace varsentix::ado::detail
