// Connection strings: ConnectionString::parse and the control's helpers of ModDNS (the entry
// parsers, the strings built from a data-source entry, user name and password appended).
// The input is split at the first NUL byte into a connection string and a second text (entry,
// user name, password). The data-source settings come from a small odbc.ini of the harness.
#include <cstdlib>

#include "FuzzSupport.h"
#include "platform/ado/ConnectionString.h"
#include "varsentix/datasource/ModDNS.h"

using namespace varsentix;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  std::string folder = fuzz::scratchFile("odbc");
  std::string command = "mkdir -p '" + folder + "'";
  if (std::system(command.c_str()) != 0) return 0;
  fuzz::writeFile(folder + "/odbc.ini",
                  "[Stock]\nDriver = Microsoft Access Driver (*.mdb)\nDBQ = /data/stock.mdb\n"
                  "[Sales]\nDriver = PostgreSQL Unicode\n");
  setenv("ODBCSYSINI", folder.c_str(), 1);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string input = fuzz::text(data, size);
  size_t split = input.find('\0');
  std::string connection = input.substr(0, split);
  std::string other = split == std::string::npos ? std::string() : input.substr(split + 1);

  fuzz::expectOnlyVBError([&] {
    auto parsed = ado::detail::ConnectionString::parse(connection);
    for (const auto& [key, value] : parsed.pairs()) {
      if (key.empty()) fuzz::finding("a pair with an empty key");
      if (!parsed.get(key)) fuzz::finding("a parsed key is not found again");
    }
    parsed.getOr("Provider", "");
    parsed.getOr("Data Source", "");
  });
  fuzz::expectOnlyVBError([&] {
    std::string entry = other;
    ModDNS::parseDriverName(entry);
    ModDNS::isFileBasedDriver(entry);
    std::string name = entry;
    ModDNS::parseDSNName(name);
    std::string built = entry;
    ModDNS::buildConnectionStringFromDSN(built);
    std::string viaPath = other;
    ModDNS::getOLEDBConnectionFromPath(viaPath, true);
    std::string plain = other;
    ModDNS::getOLEDBConnectionFromPath(plain, false);
  });
  fuzz::expectOnlyVBError([&] {
    std::string s = connection;
    std::string first = ModDNS::addUserIDToConnectionString(other, s);
    if (first != s) fuzz::finding("the user name was not written into the caller's string");
    ModDNS::addPasswordToConnectionString(other, s);
    std::string again = s;
    ModDNS::addUserIDToConnectionString(other, s);
    ModDNS::addPasswordToConnectionString(other, s);
    if (s != again) fuzz::finding("a second user name or password was appended");
  });
  return 0;
}
