#pragma once
// C++ side of the in-process server: create the public classes by ProgID or class id through
// the same class objects that DllGetClassObject hands out.
#include <string>
#include <variant>

#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/dbside/clsData.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/VBError.h"
#include "varsentix/results/clsResultSet.h"
#include "varsentix/server/Server.h"

namespace varsentix::server {

// An object of one of the four public classes.
using Object =
    std::variant<vb::Ref<Varsenti>, vb::Ref<clsDBManager>, vb::Ref<clsResultSet>, vb::Ref<clsData>>;

// Error raised when a class cannot be made: 429 "ActiveX component can't create object".
inline constexpr int32_t CannotCreateObject = 429;

// Creates a new object by ProgID ("VarsentiX.Varsenti", "VarsentiX.clsDBManager",
// "VarsentiX.clsResultSet", "VarsentiX.clsData"; letter case ignored) or by the braced text of
// its class id. The library serves its own classes without a registry look-up. Raises 429 for
// any other name. The object counts as alive for DllCanUnloadNow until its last reference goes.
Object CreateObject(const std::string& classIn);

// The same, typed. Raises 13 "Type mismatch" when classIn names another class.
template <class T>
vb::Ref<T> CreateObject(const std::string& classIn) {
  Object object = CreateObject(classIn);
  if (auto* ref = std::get_if<vb::Ref<T>>(&object)) return *ref;
  vb::raiseError(vb::errnum::TypeMismatch);
}

// The object behind a VxObject made by a class object: a new reference sharing it. Raises 91
// for a null pointer.
Object objectOf(VxObject* object);

template <class T>
vb::Ref<T> objectOf(VxObject* object) {
  Object any = objectOf(object);
  if (auto* ref = std::get_if<vb::Ref<T>>(&any)) return *ref;
  vb::raiseError(vb::errnum::TypeMismatch);
}

// The ProgID of a class id served by this library ("" for any other).
std::string progIdOf(const VX_CLSID& clsid);

}  // namespace varsentix::server
