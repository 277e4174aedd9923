// Class objects and the objects they make, behind the plain C vtables of Server.h.
#include <atomic>
#include <new>

#include "server/ClassTable.h"
#include "server/Guid.h"

namespace varsentix::server {
namespace {

using detail::ClassEntry;
using detail::liveCounts;
using detail::sameGuid;

// An object handed to a host: a reference count around the shared object.
struct ObjectImpl : VxObject {
  ObjectImpl(const ClassEntry* entryIn, Object objectIn);
  std::atomic<uint32_t> refs{1};
  const ClassEntry* entry;
  Object object;
};

ObjectImpl* self(VxObject* object) { return static_cast<ObjectImpl*>(object); }

VX_HRESULT objectQueryInterface(VxObject* object, const VX_IID* riid, void** ppv) {
  if (ppv == nullptr) return VX_E_POINTER;
  *ppv = nullptr;
  if (object == nullptr || riid == nullptr) return VX_E_POINTER;
  if (!sameGuid(*riid, VX_IID_IUnknown) && !sameGuid(*riid, VX_IID_IVarsentiXObject))
    return VX_E_NOINTERFACE;
  self(object)->refs.fetch_add(1);
  *ppv = object;
  return VX_S_OK;
}

uint32_t objectAddRef(VxObject* object) { return self(object)->refs.fetch_add(1) + 1; }

uint32_t objectRelease(VxObject* object) {
  const uint32_t left = self(object)->refs.fetch_sub(1) - 1;
  if (left == 0) delete self(object);
  return left;
}

const char* objectProgID(VxObject* object) { return object ? self(object)->entry->progId : nullptr; }

VX_HRESULT objectClassID(VxObject* object, VX_CLSID* clsid) {
  if (object == nullptr || clsid == nullptr) return VX_E_POINTER;
  *clsid = *self(object)->entry->clsid;
  return VX_S_OK;
}

const VxObjectVtbl kObjectVtbl = {&objectQueryInterface, &objectAddRef, &objectRelease,
                                  &objectProgID, &objectClassID};

ObjectImpl::ObjectImpl(const ClassEntry* entryIn, Object objectIn)
    : VxObject{&kObjectVtbl}, entry(entryIn), object(std::move(objectIn)) {}

// A class object of one class. Counted alive while a host holds it.
struct FactoryImpl : VxClassFactory {
  explicit FactoryImpl(const ClassEntry* entryIn);
  ~FactoryImpl() { liveCounts().factories.fetch_sub(1); }
  std::atomic<uint32_t> refs{1};
  const ClassEntry* entry;
};

FactoryImpl* self(VxClassFactory* factory) { return static_cast<FactoryImpl*>(factory); }

VX_HRESULT factoryQueryInterface(VxClassFactory* factory, const VX_IID* riid, void** ppv) {
  if (ppv == nullptr) return VX_E_POINTER;
  *ppv = nullptr;
  if (factory == nullptr || riid == nullptr) return VX_E_POINTER;
  if (!sameGuid(*riid, VX_IID_IUnknown) && !sameGuid(*riid, VX_IID_IClassFactory))
    return VX_E_NOINTERFACE;
  self(factory)->refs.fetch_add(1);
  *ppv = factory;
  return VX_S_OK;
}

uint32_t factoryAddRef(VxClassFactory* factory) { return self(factory)->refs.fetch_add(1) + 1; }

uint32_t factoryRelease(VxClassFactory* factory) {
  const uint32_t left = self(factory)->refs.fetch_sub(1) - 1;
  if (left == 0) delete self(factory);
  return left;
}

VX_HRESULT factoryCreateInstance(VxClassFactory* factory, void* outer, const VX_IID* riid,
                                 void** ppv) {
  if (ppv == nullptr) return VX_E_POINTER;
  *ppv = nullptr;
  if (factory == nullptr || riid == nullptr) return VX_E_POINTER;
  if (outer != nullptr) return VX_CLASS_E_NOAGGREGATION;
  if (!sameGuid(*riid, VX_IID_IUnknown) && !sameGuid(*riid, VX_IID_IVarsentiXObject))
    return VX_E_NOINTERFACE;
  try {
    const ClassEntry* entry = self(factory)->entry;
    *ppv = static_cast<VxObject*>(new ObjectImpl(entry, entry->create()));
    return VX_S_OK;
  } catch (const std::bad_alloc&) {
    return VX_E_OUTOFMEMORY;
  } catch (...) {
    return VX_E_FAIL;
  }
}

VX_HRESULT factoryLockServer(VxClassFactory*, int32_t lock) {
  if (lock) {
    liveCounts().locks.fetch_add(1);
  } else if (liveCounts().locks.fetch_sub(1) <= 0) {
    liveCounts().locks.fetch_add(1);  // more unlocks than locks: keep the count at zero
  }
  return VX_S_OK;
}

const VxClassFactoryVtbl kFactoryVtbl = {&factoryQueryInterface, &factoryAddRef, &factoryRelease,
                                         &factoryCreateInstance, &factoryLockServer};

FactoryImpl::FactoryImpl(const ClassEntry* entryIn) : VxClassFactory{&kFactoryVtbl}, entry(entryIn) {
  liveCounts().factories.fetch_add(1);
}

// Releases a C reference when it goes out of scope.
template <class T>
struct Released {
  T* pointer = nullptr;
  ~Released() {
    if (pointer) pointer->lpVtbl->Release(pointer);
  }
};

}  // namespace

Object CreateObject(const std::string& classIn) {
  const ClassEntry* entry = detail::findClass(classIn);
  if (entry == nullptr)
    vb::raiseError(CannotCreateObject, "ActiveX component can't create object", "VarsentiX");
  Released<VxClassFactory> factory;
  VX_HRESULT hr = DllGetClassObject(entry->clsid, &VX_IID_IClassFactory,
                                    reinterpret_cast<void**>(&factory.pointer));
  if (hr != VX_S_OK)
    vb::raiseError(CannotCreateObject, "ActiveX component can't create object", "VarsentiX");
  Released<VxObject> made;
  hr = factory.pointer->lpVtbl->CreateInstance(factory.pointer, nullptr, &VX_IID_IUnknown,
                                               reinterpret_cast<void**>(&made.pointer));
  if (hr == VX_E_OUTOFMEMORY) vb::raiseError(vb::errnum::OutOfMemory);
  if (hr != VX_S_OK)
    vb::raiseError(CannotCreateObject, "ActiveX component can't create object", "VarsentiX");
  return objectOf(made.pointer);
}

Object objectOf(VxObject* object) {
  if (object == nullptr) vb::raiseError(vb::errnum::ObjectNotSet);
  return static_cast<ObjectImpl*>(object)->object;
}

std::string progIdOf(const VX_CLSID& clsid) {
  const ClassEntry* entry = detail::findClass(clsid);
  return entry ? entry->progId : "";
}

}  // namespace varsentix::server

using namespace varsentix::server;

extern "C" VX_HRESULT DllGetClassObject(const VX_CLSID* rclsid, const VX_IID* riid, void** ppv) {
  if (ppv == nullptr) return VX_E_POINTER;
  *ppv = nullptr;
  if (rclsid == nullptr || riid == nullptr) return VX_E_POINTER;
  const detail::ClassEntry* entry = detail::findClass(*rclsid);
  if (entry == nullptr) return VX_CLASS_E_CLASSNOTAVAILABLE;
  if (!detail::sameGuid(*riid, VX_IID_IClassFactory) && !detail::sameGuid(*riid, VX_IID_IUnknown))
    return VX_E_NOINTERFACE;
  try {
    *ppv = static_cast<VxClassFactory*>(new FactoryImpl(entry));
    return VX_S_OK;
  } catch (...) {
    return VX_E_OUTOFMEMORY;
  }
}

extern "C" VX_HRESULT DllCanUnloadNow(void) {
  const auto& counts = detail::liveCounts();
  const bool idle = counts.objects.load() == 0 && counts.factories.load() == 0 && counts.locks.load() == 0;
  return idle ? VX_S_OK : VX_S_FALSE;
}
