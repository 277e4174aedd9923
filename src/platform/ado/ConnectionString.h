#pragma once
// ADO / OLE DB connection-string syntax: "key=value;" pairs, keys case-insensitive, values in
// single or double quotes when they hold ';' (a doubled quote inside stands for one), blanks
// around keys and values ignored, a value in braces kept whole with its braces ("}}" inside
// stands for one '}', as ODBC reads it: "Driver={SQLite3 ODBC Driver}").
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace varsentix::ado::detail {

class ConnectionString {
 public:
  static ConnectionString parse(const std::string& text);

  // The value of key (case-insensitive), or nullopt when absent. A later duplicate wins.
  std::optional<std::string> get(const std::string& key) const;
  std::string getOr(const std::string& key, const std::string& fallback) const;
  const std::vector<std::pair<std::string, std::string>>& pairs() const { return pairs_; }
  const std::string& text() const { return text_; }

  // The value as it is to be written after "key=" so that parse reads back exactly value: as it
  // is when nothing in it would be read otherwise, else in double quotes with every '"' doubled
  // (a value holding ';', a quote, a leading '{' or '=', or blanks at either end).
  static std::string quoteValue(const std::string& value);

  // text with the value of every password key replaced by "***", the rest as it was written.
  // Password keys: Pwd, Password, and any key ending in "password" (Jet OLEDB:Database
  // Password), compared without regard to case or blanks. Values are found as parse finds them,
  // quoted and braced ones whole. Every place that shows a connection string shows it masked.
  static std::string maskPasswords(const std::string& text);
  // Whether key names a password (see maskPasswords).
  static bool isPasswordKey(const std::string& key);

 private:
  std::string text_;
  std::vector<std::pair<std::string, std::string>> pairs_;
};

// Whether the string's Mode key (ADO's ConnectModeEnum, as text: "Read", "Write", "ReadWrite",
// "Share Deny None", ... joined by '|', or as its number) asks for reading only: adModeRead
// without adModeWrite. Such a session opens read-only (a read-only file, a read-only session).
bool opensForReadingOnly(const ConnectionString& connection);

}  // namespace varsentix::ado::detail
