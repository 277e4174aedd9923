// Class objects, the objects they make, DllCanUnloadNow and CreateObject.
#include <gtest/gtest.h>

#include <cstring>

#include "varsentix/platform/vb/VBError.h"
#include "varsentix/server.h"

namespace varsentix {
namespace {

VxClassFactory* classObject(const VX_CLSID& clsid) {
  VxClassFactory* factory = nullptr;
  EXPECT_EQ(DllGetClassObject(&clsid, &VX_IID_IClassFactory, reinterpret_cast<void**>(&factory)), VX_S_OK);
  return factory;
}

template <class Call>
int32_t errorNumberOf(Call&& call) {
  try {
    call();
  } catch (const vb::VBError& e) {
    return e.number();
  }
  return 0;
}

TEST(ServerClassObjects, NothingIsAliveAtFirst) { EXPECT_EQ(DllCanUnloadNow(), VX_S_OK); }

TEST(ServerClassObjects, AHeldClassObjectKeepsTheServerLoaded) {
  VxClassFactory* factory = classObject(VX_CLSID_clsResultSet);
  ASSERT_NE(factory, nullptr);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);
  EXPECT_EQ(factory->lpVtbl->AddRef(factory), 2u);
  EXPECT_EQ(factory->lpVtbl->Release(factory), 1u);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);
  EXPECT_EQ(factory->lpVtbl->Release(factory), 0u);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, LockServerKeepsTheServerLoadedUntilUnlocked) {
  VxClassFactory* factory = classObject(VX_CLSID_clsData);
  ASSERT_EQ(factory->lpVtbl->LockServer(factory, 1), VX_S_OK);
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);
  factory = classObject(VX_CLSID_clsData);
  ASSERT_EQ(factory->lpVtbl->LockServer(factory, 0), VX_S_OK);
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, DllGetClassObjectRefusesWhatItDoesNotServe) {
  const VX_CLSID unknown = {0x01234567, 0x89AB, 0xCDEF, {1, 2, 3, 4, 5, 6, 7, 8}};
  void* out = reinterpret_cast<void*>(1);
  EXPECT_EQ(DllGetClassObject(&unknown, &VX_IID_IClassFactory, &out), VX_CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(out, nullptr);
  out = reinterpret_cast<void*>(1);
  EXPECT_EQ(DllGetClassObject(&VX_CLSID_Varsenti, &VX_IID_IVarsentiXObject, &out), VX_E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(DllGetClassObject(&VX_CLSID_Varsenti, &VX_IID_IClassFactory, nullptr), VX_E_POINTER);
  EXPECT_EQ(DllGetClassObject(nullptr, &VX_IID_IClassFactory, &out), VX_E_POINTER);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, ClassObjectAnswersIUnknownAndIClassFactoryOnly) {
  VxClassFactory* factory = nullptr;
  ASSERT_EQ(DllGetClassObject(&VX_CLSID_Varsenti, &VX_IID_IUnknown, reinterpret_cast<void**>(&factory)), VX_S_OK);
  void* other = nullptr;
  EXPECT_EQ(factory->lpVtbl->QueryInterface(factory, &VX_IID_IClassFactory, &other), VX_S_OK);
  EXPECT_EQ(other, factory);
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(factory->lpVtbl->QueryInterface(factory, &VX_IID_IVarsentiXObject, &other), VX_E_NOINTERFACE);
  EXPECT_EQ(other, nullptr);
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, CreateInstanceRefusesAggregationAndUnknownInterfaces) {
  VxClassFactory* factory = classObject(VX_CLSID_clsDBManager);
  void* object = reinterpret_cast<void*>(1);
  int outer = 0;
  EXPECT_EQ(factory->lpVtbl->CreateInstance(factory, &outer, &VX_IID_IUnknown, &object), VX_CLASS_E_NOAGGREGATION);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IClassFactory, &object), VX_E_NOINTERFACE);
  EXPECT_EQ(factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IUnknown, nullptr), VX_E_POINTER);
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, ObjectsCountReferencesAndAnswerTheirInterfaces) {
  VxClassFactory* factory = classObject(VX_CLSID_Varsenti);
  VxObject* object = nullptr;
  ASSERT_EQ(factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IVarsentiXObject,
                                            reinterpret_cast<void**>(&object)),
            VX_S_OK);
  factory->lpVtbl->Release(factory);
  void* same = nullptr;
  EXPECT_EQ(object->lpVtbl->QueryInterface(object, &VX_IID_IUnknown, &same), VX_S_OK);
  EXPECT_EQ(same, object);
  EXPECT_EQ(object->lpVtbl->QueryInterface(object, &VX_IID_IClassFactory, &same), VX_E_NOINTERFACE);
  EXPECT_EQ(same, nullptr);
  EXPECT_EQ(object->lpVtbl->Release(object), 1u);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);
  EXPECT_EQ(object->lpVtbl->Release(object), 0u);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, EachCreateInstanceMakesANewObject) {
  VxClassFactory* factory = classObject(VX_CLSID_Varsenti);
  VxObject* first = nullptr;
  VxObject* second = nullptr;
  factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IUnknown, reinterpret_cast<void**>(&first));
  factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IUnknown, reinterpret_cast<void**>(&second));
  factory->lpVtbl->Release(factory);
  auto a = server::objectOf<Varsenti>(first);
  auto b = server::objectOf<Varsenti>(second);
  EXPECT_FALSE(a == b);
  a->showDifferencesOnly(true);
  EXPECT_FALSE(b->showDifferencesOnly());
  first->lpVtbl->Release(first);
  second->lpVtbl->Release(second);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);  // a and b still hold the controls
  a.reset();
  b.reset();
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerClassObjects, ObjectOfTheWrongClassIsATypeMismatch) {
  VxClassFactory* factory = classObject(VX_CLSID_clsResultSet);
  VxObject* object = nullptr;
  factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IUnknown, reinterpret_cast<void**>(&object));
  factory->lpVtbl->Release(factory);
  EXPECT_EQ(errorNumberOf([&] { server::objectOf<Varsenti>(object); }), 13);
  EXPECT_EQ(errorNumberOf([&] { server::objectOf<Varsenti>(nullptr); }), 91);
  object->lpVtbl->Release(object);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerCreateObject, CreatesTheControlByProgID) {
  {
    vb::Ref<Varsenti> control = server::CreateObject<Varsenti>("VarsentiX.Varsenti");
    ASSERT_FALSE(control.isNothing());
    EXPECT_EQ(control->getCurrentProgressCount(), 1);
    EXPECT_EQ(control->getTotalRecordsForTable(), -1);
    EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);
  }
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerCreateObject, CreatesEveryPublicClass) {
  server::Object control = server::CreateObject("VarsentiX.Varsenti");
  server::Object manager = server::CreateObject("VarsentiX.clsDBManager");
  server::Object row = server::CreateObject("VarsentiX.clsResultSet");
  server::Object data = server::CreateObject("VarsentiX.clsData");
  EXPECT_TRUE(std::holds_alternative<vb::Ref<Varsenti>>(control));
  EXPECT_TRUE(std::holds_alternative<vb::Ref<clsDBManager>>(manager));
  EXPECT_TRUE(std::holds_alternative<vb::Ref<clsResultSet>>(row));
  EXPECT_TRUE(std::holds_alternative<vb::Ref<clsData>>(data));
}

TEST(ServerCreateObject, AcceptsAnyLetterCaseAndTheClassIdText) {
  auto manager = server::CreateObject<clsDBManager>("varsentix.clsdbmanager");
  EXPECT_EQ(manager->getRecordCount(), -1);
  auto row = server::CreateObject<clsResultSet>("{c1334f4f-ff52-4d69-9612-64de341843fb}");
  EXPECT_FALSE(row.isNothing());
  EXPECT_EQ(server::progIdOf(VX_CLSID_clsResultSet), "VarsentiX.clsResultSet");
}

TEST(ServerCreateObject, UnknownClassesCannotBeCreated) {
  try {
    server::CreateObject("VarsentiX.Missing");
    FAIL() << "an unknown class was created";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), 429);
    EXPECT_EQ(e.description(), "ActiveX component can't create object");
  }
  EXPECT_EQ(errorNumberOf([] { server::CreateObject(""); }), 429);
  EXPECT_EQ(errorNumberOf([] { server::CreateObject("{00000000-0000-0000-0000-000000000000}"); }), 429);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerCreateObject, TheWrongTypeIsATypeMismatchAndLeavesNothingAlive) {
  EXPECT_EQ(errorNumberOf([] { server::CreateObject<clsData>("VarsentiX.clsResultSet"); }), 13);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerCreateObject, ObjectsMadeDirectlyAreNotCounted) {
  Varsenti control;
  auto row = vb::Ref<clsResultSet>::make();
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerGuids, TextFormRoundTrips) {
  char buffer[39];
  ASSERT_EQ(VxStringFromCLSID(&VX_CLSID_Varsenti, buffer, sizeof buffer), VX_S_OK);
  EXPECT_STREQ(buffer, "{B9887F9B-6D25-4F2A-B319-69015EC91317}");
  VX_CLSID back{};
  ASSERT_EQ(VxCLSIDFromString(buffer, &back), VX_S_OK);
  EXPECT_EQ(std::memcmp(&back, &VX_CLSID_Varsenti, sizeof back), 0);
  ASSERT_EQ(VxCLSIDFromString("{b9887f9b-6d25-4f2a-b319-69015ec91317}", &back), VX_S_OK);
  EXPECT_EQ(std::memcmp(&back, &VX_CLSID_Varsenti, sizeof back), 0);
}

TEST(ServerGuids, MalformedTextIsRefused) {
  VX_CLSID out{};
  for (const char* bad : {"", "B9887F9B-6D25-4F2A-B319-69015EC91317", "{B9887F9B-6D25-4F2A-B319-69015EC9131}",
                          "{B9887F9B-6D25-4F2A-B319-69015EC9131G}", "{B9887F9B+6D25-4F2A-B319-69015EC91317}",
                          "VarsentiX.Varsenti"}) {
    EXPECT_EQ(VxCLSIDFromString(bad, &out), VX_CO_E_CLASSSTRING) << bad;
  }
  EXPECT_EQ(VxCLSIDFromString(nullptr, &out), VX_E_POINTER);
  char small[10];
  EXPECT_EQ(VxStringFromCLSID(&VX_CLSID_clsData, small, sizeof small), VX_E_INVALIDARG);
}

TEST(ServerGuids, TheFourClassIdsDiffer) {
  const VX_CLSID* ids[] = {&VX_CLSID_Varsenti, &VX_CLSID_clsDBManager, &VX_CLSID_clsResultSet, &VX_CLSID_clsData};
  for (size_t i = 0; i < 4; ++i)
    for (size_t j = i + 1; j < 4; ++j) EXPECT_NE(std::memcmp(ids[i], ids[j], sizeof(VX_CLSID)), 0);
}

}  // namespace
}  // namespace varsentix
