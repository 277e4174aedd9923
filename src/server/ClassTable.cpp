#include "server/ClassTable.h"

#include <algorithm>
#include <cctype>
#include <memory>

#include "server/Guid.h"

namespace varsentix::server::detail {

LiveCounts& liveCounts() noexcept {
  static LiveCounts counts;
  return counts;
}

namespace {

// A new T whose life the server counts: the count drops when the last reference goes.
template <class T>
Object makeCounted() {
  auto object = std::make_unique<T>();
  auto& counts = liveCounts();
  counts.objects.fetch_add(1);
  return vb::Ref<T>(std::shared_ptr<T>(object.release(), [](T* gone) {
    delete gone;
    liveCounts().objects.fetch_sub(1);
  }));
}

const ClassEntry kClasses[] = {
    {&VX_CLSID_Varsenti, "VarsentiX.Varsenti", "Varsenti", &makeCounted<Varsenti>},
    {&VX_CLSID_clsDBManager, "VarsentiX.clsDBManager", "clsDBManager", &makeCounted<clsDBManager>},
    {&VX_CLSID_clsResultSet, "VarsentiX.clsResultSet", "clsResultSet", &makeCounted<clsResultSet>},
    {&VX_CLSID_clsData, "VarsentiX.clsData", "clsData", &makeCounted<clsData>},
};

bool equalsIgnoringCase(const std::string& a, const char* b) {
  const std::string other(b);
  return a.size() == other.size() &&
         std::equal(a.begin(), a.end(), other.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

const ClassEntry* classEntries() noexcept { return kClasses; }
size_t classEntryCount() noexcept { return std::size(kClasses); }

const ClassEntry* findClass(const VX_CLSID& clsid) noexcept {
  for (const auto& entry : kClasses) {
    if (sameGuid(*entry.clsid, clsid)) return &entry;
  }
  return nullptr;
}

const ClassEntry* findClass(const std::string& progIdOrClassId) {
  if (const auto clsid = parseGuid(progIdOrClassId)) return findClass(*clsid);
  for (const auto& entry : kClasses) {
    if (equalsIgnoringCase(progIdOrClassId, entry.progId)) return &entry;
  }
  return nullptr;
}

}  // namespace varsentix::server::detail
