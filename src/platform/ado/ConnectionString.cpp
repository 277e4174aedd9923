#include "platform/ado/ConnectionString.h"

#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::ado::detail {
namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string trimmed(const std::string& text) {
  size_t first = 0, last = text.size();
  while (first < last && isBlank(text[first])) ++first;
  while (last > first && isBlank(text[last - 1])) --last;
  return text.substr(first, last - first);
}

// Reads a key up to its '=' (a doubled "==" stands for one '=' inside the key).
std::string readKey(const std::string& text, size_t& pos) {
  std::string key;
  while (pos < text.size()) {
    char c = text[pos];
    if (c == '=') {
      if (pos + 1 < text.size() && text[pos + 1] == '=') {
        key += '=';
        pos += 2;
        continue;
      }
      break;
    }
    if (c == ';') break;
    key += c;
    ++pos;
  }
  return trimmed(key);
}

// Reads a value after '=': quoted ('...' or "..." with the quote doubled inside), in braces
// (kept with its braces), or plain up to the next ';'. Leaves pos after the ending ';'; the
// value's text as written runs from begin to end (blanks before it and the ';' left out).
std::string readValue(const std::string& text, size_t& pos, size_t& begin, size_t& end) {
  while (pos < text.size() && isBlank(text[pos])) ++pos;
  begin = pos;
  std::string value;
  if (pos < text.size() && (text[pos] == '"' || text[pos] == '\'')) {
    char quote = text[pos++];
    while (pos < text.size()) {
      if (text[pos] == quote) {
        if (pos + 1 < text.size() && text[pos + 1] == quote) {
          value += quote;
          pos += 2;
          continue;
        }
        ++pos;
        break;
      }
      value += text[pos++];
    }
    while (pos < text.size() && text[pos] != ';') ++pos;
    end = pos;
  } else if (pos < text.size() && text[pos] == '{') {
    // The closing '}' is the first one not doubled ("}}" stands for one '}' inside).
    size_t close = pos + 1;
    while (close < text.size()) {
      if (text[close] == '}') {
        if (close + 1 < text.size() && text[close + 1] == '}') {
          close += 2;
          continue;
        }
        break;
      }
      ++close;
    }
    if (close >= text.size()) close = text.size() - 1;
    value = text.substr(pos, close - pos + 1);
    pos = close + 1;
    while (pos < text.size() && text[pos] != ';') ++pos;
    end = pos;
  } else {
    while (pos < text.size() && text[pos] != ';') value += text[pos++];
    value = trimmed(value);
    end = pos;
    while (end > begin && isBlank(text[end - 1])) --end;
  }
  if (pos < text.size()) ++pos;  // the ';'
  return value;
}

struct Pair {
  std::string key;
  std::string value;
  size_t valueBegin = 0;  // the value as written: text[valueBegin, valueEnd)
  size_t valueEnd = 0;
};

// Every "key=value" of text in order, as parse reads them.
template <typename Visit>
void scan(const std::string& text, Visit&& visit) {
  size_t pos = 0;
  while (pos < text.size()) {
    while (pos < text.size() && (isBlank(text[pos]) || text[pos] == ';')) ++pos;
    if (pos >= text.size()) break;
    std::string key = readKey(text, pos);
    if (pos >= text.size() || text[pos] != '=') {
      // A key without a value ("Foo;"): kept with an empty value.
      const size_t at = pos;
      if (pos < text.size()) ++pos;
      if (!key.empty()) visit(Pair{key, "", at, at});
      continue;
    }
    ++pos;  // the '='
    Pair pair;
    pair.key = key;
    pair.value = readValue(text, pos, pair.valueBegin, pair.valueEnd);
    if (!key.empty()) visit(pair);
  }
}

}  // namespace

ConnectionString ConnectionString::parse(const std::string& text) {
  ConnectionString result;
  result.text_ = text;
  scan(text, [&](const Pair& pair) { result.pairs_.emplace_back(pair.key, pair.value); });
  return result;
}

std::string ConnectionString::quoteValue(const std::string& value) {
  const bool plain = value.find_first_of(";\"'") == std::string::npos &&
                     (value.empty() || (value.front() != '{' && value.front() != '=' &&
                                        !isBlank(value.front()) && !isBlank(value.back())));
  if (plain) return value;
  std::string quoted = "\"";
  for (char c : value) {
    quoted += c;
    if (c == '"') quoted += '"';
  }
  return quoted + "\"";
}

bool ConnectionString::isPasswordKey(const std::string& key) {
  std::string squeezed;
  for (char c : vb::LCase(key))
    if (!isBlank(c)) squeezed += c;
  static const std::string password = "password";
  return squeezed == "pwd" ||
         (squeezed.size() >= password.size() &&
          squeezed.compare(squeezed.size() - password.size(), password.size(), password) == 0);
}

std::string ConnectionString::maskPasswords(const std::string& text) {
  std::string out;
  size_t copied = 0;
  scan(text, [&](const Pair& pair) {
    if (!isPasswordKey(pair.key) || pair.valueBegin == pair.valueEnd) return;
    out += text.substr(copied, pair.valueBegin - copied) + "***";
    copied = pair.valueEnd;
  });
  return out + text.substr(copied);
}

std::optional<std::string> ConnectionString::get(const std::string& key) const {
  std::string wanted = vb::LCase(key);
  std::optional<std::string> found;
  for (const auto& [k, v] : pairs_)
    if (vb::LCase(k) == wanted) found = v;
  return found;
}

std::string ConnectionString::getOr(const std::string& key, const std::string& fallback) const {
  return get(key).value_or(fallback);
}

bool opensForReadingOnly(const ConnectionString& connection) {
  const auto mode = connection.get("Mode");
  if (!mode) return false;
  bool read = false, write = false;
  size_t start = 0;
  while (start <= mode->size()) {
    size_t end = mode->find('|', start);
    if (end == std::string::npos) end = mode->size();
    std::string word = vb::LCase(trimmed(mode->substr(start, end - start)));
    if (word.rfind("admode", 0) == 0) word.erase(0, 6);  // "adModeRead" as well as "Read"
    if (!word.empty() && word.find_first_not_of("0123456789") == std::string::npos) {
      const unsigned long bits = word.size() <= 9 ? std::stoul(word) : 0;
      read = read || (bits & 1) != 0;
      write = write || (bits & 2) != 0;
    } else if (word == "read") {
      read = true;
    } else if (word == "write" || word == "readwrite") {
      write = true;
    }
    start = end + 1;
  }
  return read && !write;
}

}  // namespace varsentix::ado::detail
