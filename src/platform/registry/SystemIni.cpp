// Where the machine-wide data sources live: the system odbc.ini of unixODBC.
#include <dlfcn.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "varsentix/platform/registry/Registry.h"

#ifndef VARSENTIX_SYSTEM_ODBC_INI
#define VARSENTIX_SYSTEM_ODBC_INI "/etc/odbc.ini"
#endif

namespace varsentix::registry {
namespace {

// unixODBC's installer library names the system odbc.ini (it is loaded at run time, like the
// driver manager, so a machine without unixODBC falls back to the path known at build time).
using SystemIniFn = int (*)(char* fileName, int verify);

SystemIniFn systemIniFunction() {
  static SystemIniFn function = [] {
    void* library = dlopen("libodbcinst.so.2", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return SystemIniFn{nullptr};
    return reinterpret_cast<SystemIniFn>(dlsym(library, "_odbcinst_SystemINI"));
  }();
  return function;
}

}  // namespace

std::string systemOdbcIniPath() {
  // unixODBC reads ODBCSYSINI once per process; it is read here on every call so that the file
  // follows the variable.
  if (const char* folder = std::getenv("ODBCSYSINI")) return std::string(folder) + "/odbc.ini";
  if (SystemIniFn function = systemIniFunction()) {
    std::vector<char> name(8192, '\0');
    function(name.data(), 0);  // 0: only name the file, never create it
    if (name[0] != '\0') return name.data();
  }
  return VARSENTIX_SYSTEM_ODBC_INI;
}

}  // namespace varsentix::registry
