#include "cli/Inputs.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/ado/ConnectionString.h"
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
  return ado::detail::ConnectionString::maskPasswords(connectionString);
}

ResolvedSide resolveSide(Varsenti& control, const std::string& argument, const std::string& user,
                         const std::string& password) {
  ResolvedSide side;
  if (argument.empty()) throw CliError("an empty name was given");
  if (startsWithNoCase(argument, "DSN=")) {
    side.connectionString = connectionStringForDsn(control, argument.substr(4));
    side.label = hidePassword(argument);
  } else if (lower(argument).find("provider=") != std::string::npos) {
    side.connectionString = argument;
    side.label = hidePassword(argument);
  } else {
    const std::filesystem::path path(argument);
    std::error_code error;
    // A connection string without Provider= is taken for a path: its passwords are not shown.
    if (!std::filesystem::exists(path, error)) throw CliError("no such file: " + hidePassword(argument));
    if (std::filesystem::is_directory(path, error)) throw CliError(argument + " is a folder, not a database file");
    std::ifstream probe(path, std::ios::binary);
    if (!probe) throw CliError("cannot read " + argument + ": " + std::strerror(errno));
    switch (kindOfFile(path)) {
      case FileKind::SQLite:
        side.connectionString = "Provider=SQLite;Data Source=" + ado::detail::ConnectionString::quoteValue(argument);
        break;
      case FileKind::Access: {
        // The control appends the path as it is: quoted here when a ';', a quote, a leading '{'
        // or '=' or blanks at its ends would otherwise be read as more than the path.
        std::string pathText = ado::detail::ConnectionString::quoteValue(argument);
        side.connectionString = control.getOLEDBConnectionFromPath(pathText, false);
        break;
      }
      case FileKind::Other:
        throw CliError(argument + " is not a SQLite or Access database");
    }
    side.label = argument;
  }
  // Appended the way the control appends them, quoted so that a ';' or a quote inside stays in.
  if (!user.empty())
    control.addUserIDToConnectionString(ado::detail::ConnectionString::quoteValue(user), side.connectionString);
  if (!password.empty())
    control.addPasswordToConnectionString(ado::detail::ConnectionString::quoteValue(password), side.connectionString);
  // The program only compares: both sides open for reading only (a later Mode key wins over one
  // the user gave), so that neither database can change, whatever the engine.
  if (!side.connectionString.empty() && side.connectionString.back() != ';') side.connectionString += ';';
  side.connectionString += "Mode=Read";
  return side;
}

}  // namespace varsentix::cli
