#include "varsentix/datasource/modRegFunctions.h"

#include <cstdint>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::modRegFunctions {
namespace {

// A failed registry call ends the read; its number stands for the failure.
void check(int32_t result) {
  if (result != registry::ERROR_SUCCESS) vb::raiseError(vb::errnum::InvalidProcedureCall);
}

// The text of whatever value holds: an unset value is the empty text.
std::string textOf(const vb::Variant& value) noexcept {
  try {
    return value.toText();
  } catch (...) {
    return {};
  }
}

void readString(registry::HKEY key, const std::string& valueName, uint32_t size,
                vb::Variant& value) {
  std::string buffer(size, '\0');
  uint32_t bufferSize = size;
  if (registry::RegQueryValueExA(key, valueName, nullptr, reinterpret_cast<uint8_t*>(buffer.data()),
                                 &bufferSize) == registry::ERROR_SUCCESS)
    value = vb::Left(buffer, static_cast<int32_t>(size) - 1);  // the terminating zero dropped
  else
    value = std::string();
}

void readNumber(registry::HKEY key, const std::string& valueName, vb::Variant& value) {
  int32_t number = 0;
  uint32_t size = sizeof number;
  if (registry::RegQueryValueExA(key, valueName, nullptr, reinterpret_cast<uint8_t*>(&number),
                                 &size) == registry::ERROR_SUCCESS)
    value = number;
}

}  // namespace

std::string queryRegistryValue(registry::HKEY key, const std::string& valueName,
                               vb::Variant& value) {
  try {
    uint32_t type = 0;
    uint32_t size = 0;
    check(registry::RegQueryValueExA(key, valueName, &type, nullptr, &size));
    if (type == registry::REG_SZ) readString(key, valueName, size, value);
    if (type == registry::REG_DWORD) readNumber(key, valueName, value);
  } catch (...) {
  }
  return textOf(value);
}

std::string getRegistryString(const std::string& keyPath, const std::string& valueName) {
  registry::HKEY key = 0;
  // The result of opening is not looked at: a key that did not open fails the query instead.
  registry::RegOpenKeyExA(registry::HKEY_LOCAL_MACHINE, keyPath, 0, registry::KEY_QUERY_VALUE, &key);
  vb::Variant scratch;
  std::string result = queryRegistryValue(key, valueName, scratch);
  registry::RegCloseKey(key);
  return result;
}

}  // namespace varsentix::modRegFunctions
