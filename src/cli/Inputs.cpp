#include "cli/Inputs.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "varsentix/control/Varsenti.h"

namespace varsentix::cli {
namespace {

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

bool startsWithNoCase(const std::string& text, const std::string& prefix) {
  return lower(text.substr(0, prefix.size())) == lower(prefix);
}

enum class FileKind { SQLite, Access, Other };

FileKind kindOfFile(const std::filesystem::path& path) {
  std::array<char, 32> header{};
  std::ifstream in(path, std::ios::binary);
  in.read(header.data(), header.size());
  const std::streamsize got = in.gcount();
  if (got >= 16 && std::memcmp(header.data(), "SQLite format 3", 16) == 0) return FileKind::SQLite;
  if (got >= 19 && (std::memcmp(header.data() + 4, "Standard Jet DB", 15) == 0 ||
                    std::memcmp(header.data() + 4, "Standard ACE DB", 15) == 0))
    return FileKind::Access;
  const std::string extension = lower(path.extension().string());
  if (extension == ".mdb" || extension == ".accdb") return FileKind::Access;
  return FileKind::Other;
}

// A connection-string value, quoted when it holds a character that would end it.
std::string quotedValue(const std::string& value) {
  const bool plain = value.find_first_of(";\"'") == std::string::npos && !value.empty() &&
                     value.front() != ' ' && value.back() != ' ';
  if (plain) return value;
  std::string quoted = "\"";
  for (char c : value) quoted += (c == '"') ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string connectionStringForDsn(Varsenti& control, const std::string& name) {
  // The entry as the control lists it ("DSN=<name> | <driver>"), so that the control decides
  // how a file-based data source opens.
  const int16_t count = control.getODBCConnectionCount();
  for (int16_t i = 1; i < count; ++i) {
    std::string entry = control.getODBCConnection(i);
    std::string probe = entry;
    if (control.getDSNName(probe) == name) return control.getConncectionStringFromDSN(entry);
  }
  std::string entry = "DSN=" + name + " | ";
  return control.getConncectionStringFromDSN(entry);
}

}  // namespace

std::string hidePassword(const std::string& connectionString) {
  std::string out;
  size_t start = 0;
  while (start <= connectionString.size()) {
    size_t end = connectionString.find(';', start);
    if (end == std::string::npos) end = connectionString.size();
    std::string pair = connectionString.substr(start, end - start);
    const size_t equals = pair.find('=');
    if (equals != std::string::npos) {
      std::string key = lower(pair.substr(0, equals));
      key.erase(0, key.find_first_not_of(' '));
      while (!key.empty() && key.back() == ' ') key.pop_back();
      if (key == "password" || key == "pwd") pair = pair.substr(0, equals + 1) + "***";
    }
    out += pair;
    if (end == connectionString.size()) break;
    out += ';';
    start = end + 1;
  }
  return out;
}

ResolvedSide resolveSide(Varsenti& control, const std::string& argument, const std::string& user,
                         const std::string& password) {
  ResolvedSide side;
  if (argument.empty()) throw CliError("an empty name was given");
  if (startsWithNoCase(argument, "DSN=")) {
    side.connectionString = connectionStringForDsn(control, argument.substr(4));
    side.label = argument;
  } else if (lower(argument).find("provider=") != std::string::npos) {
    side.connectionString = argument;
    side.label = hidePassword(argument);
  } else {
    const std::filesystem::path path(argument);
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw CliError("no such file: " + argument);
    if (std::filesystem::is_directory(path, error)) throw CliError(argument + " is a folder, not a database file");
    std::ifstream probe(path, std::ios::binary);
    if (!probe) throw CliError("cannot read " + argument + ": " + std::strerror(errno));
    switch (kindOfFile(path)) {
      case FileKind::SQLite:
        side.connectionString = "Provider=SQLite;Data Source=" + quotedValue(argument);
        break;
      case FileKind::Access: {
        std::string pathText = argument;
        side.connectionString = control.getOLEDBConnectionFromPath(pathText, false);
        break;
      }
      case FileKind::Other:
        throw CliError(argument + " is not a SQLite or Access database");
    }
    side.label = argument;
  }
  if (!user.empty()) control.addUserIDToConnectionString(user, side.connectionString);
  if (!password.empty()) control.addPasswordToConnectionString(password, side.connectionString);
  // The program only compares: both sides open for reading only (a later Mode key wins over one
  // the user gave), so that neither database can change, whatever the engine.
  if (!side.connectionString.empty() && side.connectionString.back() != ';') side.connectionString += ';';
  side.connectionString += "Mode=Read";
  return side;
}

}  // namespace varsentix::cli
