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
// (kept with its braces), or plain up to the next ';'. Leaves pos after the ending ';'.
std::string readValue(const std::string& text, size_t& pos) {
  while (pos < text.size() && isBlank(text[pos])) ++pos;
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
  } else if (pos < text.size() && text[pos] == '{') {
    size_t close = text.find('}', pos);
    if (close == std::string::npos) close = text.size() - 1;
    value = text.substr(pos, close - pos + 1);
    pos = close + 1;
    while (pos < text.size() && text[pos] != ';') ++pos;
  } else {
    while (pos < text.size() && text[pos] != ';') value += text[pos++];
    value = trimmed(value);
  }
  if (pos < text.size()) ++pos;  // the ';'
  return value;
}

}  // namespace

ConnectionString ConnectionString::parse(const std::string& text) {
  ConnectionString result;
  result.text_ = text;
  size_t pos = 0;
  while (pos < text.size()) {
    while (pos < text.size() && (isBlank(text[pos]) || text[pos] == ';')) ++pos;
    if (pos >= text.size()) break;
    std::string key = readKey(text, pos);
    if (pos >= text.size() || text[pos] != '=') {
      // A key without a value ("Foo;"): kept with an empty value.
      if (pos < text.size()) ++pos;
      if (!key.empty()) result.pairs_.emplace_back(key, "");
      continue;
    }
    ++pos;  // the '='
    std::string value = readValue(text, pos);
    if (!key.empty()) result.pairs_.emplace_back(key, value);
  }
  return result;
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
