#include "varsentix/platform/registry/Registry.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/registry/OdbcIniFile.h"

namespace varsentix::registry {
namespace {

using detail::RegValue;

// The keys that always exist above the data sources: SOFTWARE\ODBC\ODBC.INI.
const std::vector<std::string> kOdbcIniPath = {"SOFTWARE", "ODBC", "ODBC.INI"};

struct OpenKey {
  std::vector<std::string> path;  // below HKEY_LOCAL_MACHINE
  std::vector<std::pair<std::string, RegValue>> values;
};

struct KeyTable {
  std::mutex mutex;
  std::map<HKEY, OpenKey> keys;
  HKEY next = 0x1000;
};

KeyTable& table() {
  static KeyTable keys;
  return keys;
}

// Splits "A\B\C\" into A, B, C. An empty part inside the path makes it invalid (nullopt).
std::optional<std::vector<std::string>> splitPath(const std::string& subKey) {
  std::vector<std::string> parts;
  size_t start = 0;
  while (start <= subKey.size()) {
    size_t slash = subKey.find('\\', start);
    if (slash == std::string::npos) slash = subKey.size();
    parts.push_back(subKey.substr(start, slash - start));
    start = slash + 1;
  }
  while (!parts.empty() && parts.back().empty()) parts.pop_back();
  for (const auto& part : parts)
    if (part.empty()) return std::nullopt;
  return parts;
}

// The key at path below HKEY_LOCAL_MACHINE, with its values read now, or nullopt when absent.
std::optional<OpenKey> lookUp(const std::vector<std::string>& path) {
  for (size_t i = 0; i < path.size() && i < kOdbcIniPath.size(); ++i)
    if (!detail::sameName(path[i], kOdbcIniPath[i])) return std::nullopt;
  if (path.size() <= kOdbcIniPath.size()) return OpenKey{path, {}};
  if (path.size() > kOdbcIniPath.size() + 1) return std::nullopt;
  auto section = detail::findSection(detail::readIniFile(systemOdbcIniPath()), path.back());
  if (!section) return std::nullopt;
  OpenKey key{path, {}};
  for (const auto& entry : section->entries)
    key.values.emplace_back(entry.name, detail::valueFromIniText(entry.text));
  return key;
}

}  // namespace

int32_t RegOpenKeyExA(HKEY key, const std::string& subKey, uint32_t /*options*/,
                      uint32_t samDesired, HKEY* result) {
  if (result == nullptr) return ERROR_INVALID_PARAMETER;
  *result = 0;
  if ((samDesired & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK)) != 0)
    return ERROR_ACCESS_DENIED;
  std::vector<std::string> path;
  if (key != HKEY_LOCAL_MACHINE) {
    std::lock_guard lock(table().mutex);
    auto found = table().keys.find(key);
    if (found == table().keys.end()) return ERROR_INVALID_HANDLE;
    path = found->second.path;
  }
  auto parts = splitPath(subKey);
  if (!parts) return ERROR_FILE_NOT_FOUND;
  path.insert(path.end(), parts->begin(), parts->end());
  auto opened = lookUp(path);
  if (!opened) return ERROR_FILE_NOT_FOUND;
  std::lock_guard lock(table().mutex);
  HKEY handle = table().next++;
  table().keys.emplace(handle, std::move(*opened));
  *result = handle;
  return ERROR_SUCCESS;
}

int32_t RegQueryValueExA(HKEY key, const std::string& valueName, uint32_t* type, uint8_t* data,
                         uint32_t* dataSize) {
  if (data != nullptr && dataSize == nullptr) return ERROR_INVALID_PARAMETER;
  std::lock_guard lock(table().mutex);
  auto found = table().keys.find(key);
  if (found == table().keys.end()) return ERROR_INVALID_HANDLE;
  for (const auto& [name, value] : found->second.values) {
    if (!detail::sameName(name, valueName)) continue;
    const auto size = static_cast<uint32_t>(value.data.size());
    if (type != nullptr) *type = value.type;
    if (data != nullptr && *dataSize < size) {
      *dataSize = size;
      return ERROR_MORE_DATA;
    }
    if (data != nullptr && size > 0) std::memcpy(data, value.data.data(), size);
    if (dataSize != nullptr) *dataSize = size;
    return ERROR_SUCCESS;
  }
  return ERROR_FILE_NOT_FOUND;
}

int32_t RegCloseKey(HKEY key) {
  std::lock_guard lock(table().mutex);
  return table().keys.erase(key) == 1 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

}  // namespace varsentix::registry
