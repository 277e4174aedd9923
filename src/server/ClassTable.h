#pragma once
// The classes the server makes, and the count of what it has made that is still alive.
#include <atomic>
#include <cstdint>
#include <string>

#include "varsentix/server/CreateObject.h"

namespace varsentix::server::detail {

struct ClassEntry {
  const VX_CLSID* clsid;
  const char* progId;  // "VarsentiX.Varsenti"
  const char* name;    // "Varsenti"
  Object (*create)();  // a new object, counted alive until its last reference goes
};

// The four public classes, in registration order.
const ClassEntry* classEntries() noexcept;
size_t classEntryCount() noexcept;
const ClassEntry* findClass(const VX_CLSID& clsid) noexcept;
// By ProgID (letter case ignored) or by braced class-id text; nullptr when unknown.
const ClassEntry* findClass(const std::string& progIdOrClassId);

// What keeps the library loaded: objects made by class objects, class objects themselves and
// LockServer locks.
struct LiveCounts {
  std::atomic<int32_t> objects{0};
  std::atomic<int32_t> factories{0};
  std::atomic<int32_t> locks{0};
};
LiveCounts& liveCounts() noexcept;

}  // namespace varsentix::server::detail
