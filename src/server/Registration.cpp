// DllRegisterServer & co: the four classes in the registration file.
#include <dlfcn.h>
#include <strings.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "server/ClassTable.h"
#include "server/Guid.h"
#include "server/RegistrationFile.h"

namespace varsentix::server::detail {
namespace {

namespace fs = std::filesystem;

// The absolute path of this library, as the dynamic loader knows it.
std::string libraryPath() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<void*>(&DllGetClassObject), &info) == 0 || info.dli_fname == nullptr)
    throw std::runtime_error("cannot find the library's own path");
  return fs::absolute(info.dli_fname).lexically_normal().string();
}

std::string classKey(const ClassEntry& entry) { return "CLSID\\" + guidText(*entry.clsid); }

void removeClasses(IniDocument& document) {
  for (size_t i = 0; i < classEntryCount(); ++i) {
    const ClassEntry& entry = classEntries()[i];
    document.remove(classKey(entry));
    document.remove(entry.progId);
  }
}

void addClasses(IniDocument& document, const std::string& library) {
  removeClasses(document);
  for (size_t i = 0; i < classEntryCount(); ++i) {
    const ClassEntry& entry = classEntries()[i];
    const std::string clsid = guidText(*entry.clsid);
    document.sections.push_back({classKey(entry),
                                 {{"Name", entry.name},
                                  {"ProgID", entry.progId},
                                  {"InprocServer32", library},
                                  {"ThreadingModel", "Apartment"}}});
    document.sections.push_back({entry.progId, {{"Name", entry.name}, {"CLSID", clsid}}});
  }
}

// The file a registration writes: the override, else the per-user or the system-wide file.
fs::path targetFile(bool perUser) {
  if (auto file = overrideRegistrationFile()) return *file;
  return perUser ? userRegistrationFile() : systemRegistrationFile();
}

VX_HRESULT registerInto(const fs::path& file) noexcept {
  try {
    const std::string library = libraryPath();
    updateRegistrationFile(file, [&](IniDocument& d) { addClasses(d, library); }, true);
    return VX_S_OK;
  } catch (...) {
    return VX_SELFREG_E_CLASS;
  }
}

VX_HRESULT unregisterFrom(const fs::path& file) noexcept {
  try {
    updateRegistrationFile(file, &removeClasses, false);
    return VX_S_OK;
  } catch (...) {
    return VX_SELFREG_E_CLASS;
  }
}

// The class id registered for a ProgID in one file, if any.
std::optional<VX_GUID> lookUp(const fs::path& file, const std::string& progId) {
  const IniDocument document = readRegistrationFile(file);
  const IniSection* section = document.find(progId);
  if (section == nullptr) return std::nullopt;
  const auto clsid = section->value("CLSID");
  return clsid ? parseGuid(*clsid) : std::nullopt;
}

}  // namespace
}  // namespace varsentix::server::detail

using namespace varsentix::server::detail;

extern "C" VX_HRESULT DllRegisterServer(void) { return registerInto(targetFile(false)); }

extern "C" VX_HRESULT DllUnregisterServer(void) { return unregisterFrom(targetFile(false)); }

extern "C" VX_HRESULT DllInstall(int32_t install, const char* cmdLine) {
  bool perUser = false;
  if (cmdLine != nullptr && *cmdLine != '\0') {
    if (::strcasecmp(cmdLine, "user") != 0) return VX_E_INVALIDARG;
    perUser = true;
  }
  try {
    const auto file = targetFile(perUser);
    return install ? registerInto(file) : unregisterFrom(file);
  } catch (...) {
    return VX_E_OUTOFMEMORY;
  }
}

extern "C" VX_HRESULT VxCLSIDFromProgID(const char* progId, VX_CLSID* clsid) {
  if (progId == nullptr || clsid == nullptr) return VX_E_POINTER;
  try {
    std::vector<std::filesystem::path> files;
    if (auto file = overrideRegistrationFile()) {
      files.push_back(*file);
    } else {
      files = {userRegistrationFile(), systemRegistrationFile()};
    }
    for (const auto& file : files) {
      try {
        if (const auto found = lookUp(file, progId)) {
          *clsid = *found;
          return VX_S_OK;
        }
      } catch (const std::system_error&) {
        // An unreadable file holds no registration for us; look at the next one.
      }
    }
    return VX_REGDB_E_CLASSNOTREG;
  } catch (...) {
    return VX_E_OUTOFMEMORY;
  }
}
