#pragma once
// Turns what the user names on the command line into the connection string of a side.
#include <stdexcept>
#include <string>

namespace varsentix {
class Varsenti;
}

namespace varsentix::cli {

// A problem with the command line or its inputs: the message names the cause; exit status 2.
class CliError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct ResolvedSide {
  std::string connectionString;
  std::string label;  // for the report, with any password hidden
};

// A SQLite file (recognised by its header, any extension), an Access file (.mdb / .accdb or the
// Jet header), DSN=<name> (an ODBC data source, built the way the control builds it), or a full
// connection string (Provider=...). User and password are appended the way the control appends
// them. Raises CliError for a missing file, a folder or a file that is no database.
ResolvedSide resolveSide(Varsenti& control, const std::string& argument, const std::string& user,
                         const std::string& password);

// The connection string with every password value replaced by "***" (the library's masking:
// Pwd, Password, any key ending in password, quoted and braced values whole).
std::string hidePassword(const std::string& connectionString);

}  // namespace varsentix::cli
