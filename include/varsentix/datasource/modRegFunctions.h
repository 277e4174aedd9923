#pragma once
// modRegFunctions: the one settings read the library makes, the value of a machine-wide ODBC
// data source's setting (the DBQ file of an Access data source). Neither function ever fails:
// anything that goes wrong gives the empty text.
#include <string>

#include "varsentix/platform/registry/Registry.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::modRegFunctions {

// The text of valueName of the key keyPath below HKEY_LOCAL_MACHINE (for example
// "SOFTWARE\ODBC\ODBC.INI\Stock" and "DBQ"): a string as it stands, a 32-bit number as its
// decimal digits, the empty text for any other kind, a missing key or value, or any failure.
std::string getRegistryString(const std::string& keyPath, const std::string& valueName);

// Reads valueName of an open key into value (text for a string, a Long for a 32-bit number;
// any other kind leaves value as it was) and returns value as text. Stops at the first failure
// and returns the text of whatever value holds then.
std::string queryRegistryValue(registry::HKEY key, const std::string& valueName,
                               vb::Variant& value);

}  // namespace varsentix::modRegFunctions
