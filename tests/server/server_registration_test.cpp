// Registration of the four classes in the registration file, and creating them by ProgID
// through the exported class objects.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "control/ScopedEnv.h"
#include "server/RegistrationFile.h"
#include "support/TempDir.h"
#include "varsentix/server.h"

namespace varsentix {
namespace {

namespace fs = std::filesystem;
using server::detail::IniDocument;
using server::detail::readRegistrationFile;
using testing::ScopedEnv;
using testing::TempDir;

const char* const kProgIds[] = {"VarsentiX.Varsenti", "VarsentiX.clsDBManager",
                                "VarsentiX.clsResultSet", "VarsentiX.clsData"};

std::string text(const VX_GUID& g) {
  char buffer[64];
  EXPECT_EQ(VxStringFromCLSID(&g, buffer, sizeof buffer), VX_S_OK);
  return buffer;
}

std::string fileText(const fs::path& file) {
  std::ifstream in(file);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// A registration file of its own for one test.
struct RegistrationFixture {
  TempDir dir;
  fs::path file = dir.path() / "etc" / "classes.ini";
  ScopedEnv overrideFile{"VARSENTIX_REGISTRY_FILE", file.string()};
};

TEST(ServerRegistration, RegistersCreatesEveryClassByProgIDAndUnregisters) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllCanUnloadNow(), VX_S_OK);
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);

  std::vector<VxClassFactory*> factories;
  std::vector<VxObject*> objects;
  for (const char* progId : kProgIds) {
    VX_CLSID clsid{};
    ASSERT_EQ(VxCLSIDFromProgID(progId, &clsid), VX_S_OK) << progId;
    VxClassFactory* factory = nullptr;
    ASSERT_EQ(DllGetClassObject(&clsid, &VX_IID_IClassFactory, reinterpret_cast<void**>(&factory)), VX_S_OK);
    ASSERT_NE(factory, nullptr);
    factories.push_back(factory);
    VxObject* object = nullptr;
    ASSERT_EQ(factory->lpVtbl->CreateInstance(factory, nullptr, &VX_IID_IUnknown,
                                              reinterpret_cast<void**>(&object)),
              VX_S_OK);
    ASSERT_NE(object, nullptr);
    EXPECT_STREQ(object->lpVtbl->GetProgID(object), progId);
    VX_CLSID made{};
    EXPECT_EQ(object->lpVtbl->GetClassID(object, &made), VX_S_OK);
    EXPECT_EQ(text(made), text(clsid));
    objects.push_back(object);
  }
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);

  // The objects are the library's own classes.
  EXPECT_EQ(server::objectOf<Varsenti>(objects[0])->getCurrentProgressCount(), 1);
  EXPECT_EQ(server::objectOf<clsDBManager>(objects[1])->getRecordCount(), -1);
  EXPECT_EQ(server::objectOf<clsResultSet>(objects[2])->getFieldName(), "");
  EXPECT_FALSE(server::objectOf<clsData>(objects[3]).isNothing());

  for (auto* factory : factories) factory->lpVtbl->Release(factory);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);  // the objects are still alive
  for (size_t i = 0; i + 1 < objects.size(); ++i) objects[i]->lpVtbl->Release(objects[i]);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_FALSE);  // one is left
  objects.back()->lpVtbl->Release(objects.back());
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);

  ASSERT_EQ(DllUnregisterServer(), VX_S_OK);
  for (const char* progId : kProgIds) {
    VX_CLSID clsid{};
    EXPECT_EQ(VxCLSIDFromProgID(progId, &clsid), VX_REGDB_E_CLASSNOTREG) << progId;
  }
}

TEST(ServerRegistration, TheFileMapsProgIDsAndClassIdsToThisLibrary) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  const IniDocument document = readRegistrationFile(fixture.file);
  EXPECT_EQ(document.sections.size(), 8u);

  const struct {
    const char* progId;
    const VX_CLSID* clsid;
    const char* name;
  } classes[] = {{"VarsentiX.Varsenti", &VX_CLSID_Varsenti, "Varsenti"},
                 {"VarsentiX.clsDBManager", &VX_CLSID_clsDBManager, "clsDBManager"},
                 {"VarsentiX.clsResultSet", &VX_CLSID_clsResultSet, "clsResultSet"},
                 {"VarsentiX.clsData", &VX_CLSID_clsData, "clsData"}};
  for (const auto& c : classes) {
    const auto* progIdSection = document.find(c.progId);
    ASSERT_NE(progIdSection, nullptr) << c.progId;
    EXPECT_EQ(progIdSection->value("CLSID"), text(*c.clsid));
    const auto* classSection = document.find("CLSID\\" + text(*c.clsid));
    ASSERT_NE(classSection, nullptr) << c.progId;
    EXPECT_EQ(classSection->value("ProgID"), std::string(c.progId));
    EXPECT_EQ(classSection->value("Name"), std::string(c.name));
    EXPECT_EQ(classSection->value("ThreadingModel"), std::string("Apartment"));
    const auto library = classSection->value("InprocServer32");
    ASSERT_TRUE(library.has_value());
    EXPECT_TRUE(fs::path(*library).is_absolute());
    EXPECT_TRUE(fs::exists(*library)) << *library;
  }
}

TEST(ServerRegistration, TheRegisteredLibraryExportsTheServerEntryPoints) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  const auto library =
      readRegistrationFile(fixture.file).find("CLSID\\" + text(VX_CLSID_Varsenti))->value("InprocServer32");
  ASSERT_TRUE(library.has_value());
  void* handle = ::dlopen(library->c_str(), RTLD_NOW);
  ASSERT_NE(handle, nullptr) << ::dlerror();
  EXPECT_EQ(::dlsym(handle, "DllGetClassObject"), reinterpret_cast<void*>(&DllGetClassObject));
  EXPECT_EQ(::dlsym(handle, "DllCanUnloadNow"), reinterpret_cast<void*>(&DllCanUnloadNow));
  EXPECT_EQ(::dlsym(handle, "DllRegisterServer"), reinterpret_cast<void*>(&DllRegisterServer));
  EXPECT_EQ(::dlsym(handle, "DllUnregisterServer"), reinterpret_cast<void*>(&DllUnregisterServer));
  EXPECT_NE(::dlsym(handle, "DllInstall"), nullptr);

  // A host that only has the file: ProgID, then the class object found by name.
  VX_CLSID clsid{};
  ASSERT_EQ(VxCLSIDFromProgID("VarsentiX.Varsenti", &clsid), VX_S_OK);
  auto getClassObject = reinterpret_cast<VX_HRESULT (*)(const VX_CLSID*, const VX_IID*, void**)>(
      ::dlsym(handle, "DllGetClassObject"));
  VxClassFactory* factory = nullptr;
  ASSERT_EQ(getClassObject(&clsid, &VX_IID_IClassFactory, reinterpret_cast<void**>(&factory)), VX_S_OK);
  factory->lpVtbl->Release(factory);
  ::dlclose(handle);
  EXPECT_EQ(DllCanUnloadNow(), VX_S_OK);
}

TEST(ServerRegistration, RegisteringTwiceKeepsOneEntryPerKey) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  const std::string once = fileText(fixture.file);
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  EXPECT_EQ(fileText(fixture.file), once);
  EXPECT_EQ(readRegistrationFile(fixture.file).sections.size(), 8u);
}

TEST(ServerRegistration, OtherRegistrationsInTheFileAreKept) {
  RegistrationFixture fixture;
  fs::create_directories(fixture.file.parent_path());
  std::ofstream(fixture.file) << "; someone else's\n[Other.Thing]\nCLSID={00000000-0000-0000-0000-000000000001}\n";
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  EXPECT_EQ(readRegistrationFile(fixture.file).sections.size(), 9u);
  ASSERT_EQ(DllUnregisterServer(), VX_S_OK);
  const IniDocument after = readRegistrationFile(fixture.file);
  ASSERT_EQ(after.sections.size(), 1u);
  EXPECT_EQ(after.sections[0].name, "Other.Thing");
  EXPECT_EQ(after.sections[0].value("CLSID"), std::string("{00000000-0000-0000-0000-000000000001}"));
}

TEST(ServerRegistration, UnregisteringWithoutAFileCreatesNone) {
  RegistrationFixture fixture;
  EXPECT_EQ(DllUnregisterServer(), VX_S_OK);
  EXPECT_FALSE(fs::exists(fixture.file));
  EXPECT_FALSE(fs::exists(fixture.file.parent_path()));
}

TEST(ServerRegistration, AFileThatCannotBeWrittenFailsTheRegistration) {
  TempDir dir;
  std::ofstream(dir.file("not-a-folder")) << "x";
  ScopedEnv overrideFile("VARSENTIX_REGISTRY_FILE", dir.file("not-a-folder") + "/classes.ini");
  EXPECT_EQ(DllRegisterServer(), VX_SELFREG_E_CLASS);
  EXPECT_EQ(DllUnregisterServer(), VX_SELFREG_E_CLASS);
  VX_CLSID clsid{};
  EXPECT_EQ(VxCLSIDFromProgID("VarsentiX.Varsenti", &clsid), VX_REGDB_E_CLASSNOTREG);
}

TEST(ServerRegistration, NoTemporaryFileIsLeftBehind) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  ASSERT_EQ(DllUnregisterServer(), VX_S_OK);
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(fixture.file.parent_path()))
    names.push_back(entry.path().filename().string());
  EXPECT_EQ(names, std::vector<std::string>{"classes.ini"});
}

TEST(ServerRegistration, PerUserRegistrationGoesToTheUsersConfigFolder) {
  TempDir dir;
  ScopedEnv noOverride("VARSENTIX_REGISTRY_FILE", std::nullopt);
  ScopedEnv config("XDG_CONFIG_HOME", dir.path().string());
  const fs::path userFile = dir.path() / "varsentix" / "classes.ini";
  ASSERT_EQ(DllInstall(1, "user"), VX_S_OK);
  ASSERT_TRUE(fs::exists(userFile));
  EXPECT_NE(readRegistrationFile(userFile).find("VarsentiX.clsData"), nullptr);
  VX_CLSID clsid{};
  ASSERT_EQ(VxCLSIDFromProgID("VarsentiX.clsData", &clsid), VX_S_OK);
  EXPECT_EQ(text(clsid), text(VX_CLSID_clsData));
  ASSERT_EQ(DllInstall(0, "USER"), VX_S_OK);
  EXPECT_EQ(readRegistrationFile(userFile).sections.size(), 0u);
}

TEST(ServerRegistration, PerUserFileFallsBackToHomeConfig) {
  TempDir dir;
  ScopedEnv noOverride("VARSENTIX_REGISTRY_FILE", std::nullopt);
  ScopedEnv noConfig("XDG_CONFIG_HOME", std::nullopt);
  ScopedEnv home("HOME", dir.path().string());
  ASSERT_EQ(DllInstall(1, "user"), VX_S_OK);
  EXPECT_TRUE(fs::exists(dir.path() / ".config" / "varsentix" / "classes.ini"));
}

TEST(ServerRegistration, TheOverrideFileWinsOverThePerUserFile) {
  RegistrationFixture fixture;
  TempDir config;
  ScopedEnv configHome("XDG_CONFIG_HOME", config.path().string());
  ASSERT_EQ(DllInstall(1, "user"), VX_S_OK);
  EXPECT_TRUE(fs::exists(fixture.file));
  EXPECT_FALSE(fs::exists(config.path() / "varsentix"));
}

TEST(ServerRegistration, DllInstallRefusesAnUnknownCommandLine) {
  RegistrationFixture fixture;
  EXPECT_EQ(DllInstall(1, "everyone"), VX_E_INVALIDARG);
  EXPECT_FALSE(fs::exists(fixture.file));
  EXPECT_EQ(DllInstall(1, nullptr), VX_S_OK);  // the same file as DllRegisterServer
  EXPECT_TRUE(fs::exists(fixture.file));
}

TEST(ServerRegistration, ProgIDLookUpIgnoresLetterCaseAndRefusesUnknownNames) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  VX_CLSID clsid{};
  ASSERT_EQ(VxCLSIDFromProgID("varsentix.VARSENTI", &clsid), VX_S_OK);
  EXPECT_EQ(text(clsid), text(VX_CLSID_Varsenti));
  EXPECT_EQ(VxCLSIDFromProgID("VarsentiX.Nothing", &clsid), VX_REGDB_E_CLASSNOTREG);
  EXPECT_EQ(VxCLSIDFromProgID(nullptr, &clsid), VX_E_POINTER);
  EXPECT_EQ(VxCLSIDFromProgID("VarsentiX.Varsenti", nullptr), VX_E_POINTER);
}

TEST(ServerRegistration, ProgIDLookUpReadsThePerUserFileBeforeTheSystemFile) {
  TempDir dir;
  ScopedEnv noOverride("VARSENTIX_REGISTRY_FILE", std::nullopt);
  ScopedEnv config("XDG_CONFIG_HOME", dir.path().string());
  fs::create_directories(dir.path() / "varsentix");
  std::ofstream(dir.path() / "varsentix" / "classes.ini")
      << "[VarsentiX.Varsenti]\nCLSID={12345678-9ABC-DEF0-1234-56789ABCDEF0}\n";
  VX_CLSID clsid{};
  ASSERT_EQ(VxCLSIDFromProgID("VarsentiX.Varsenti", &clsid), VX_S_OK);
  EXPECT_EQ(text(clsid), "{12345678-9ABC-DEF0-1234-56789ABCDEF0}");
  // A class id this library does not serve has no class object.
  void* factory = reinterpret_cast<void*>(1);
  EXPECT_EQ(DllGetClassObject(&clsid, &VX_IID_IClassFactory, &factory), VX_CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(factory, nullptr);
}

TEST(ServerRegistration, TheSystemAndPerUserFilesHaveFixedPlaces) {
  ScopedEnv config("XDG_CONFIG_HOME", "/home/someone/.cfg");
  EXPECT_EQ(server::detail::systemRegistrationFile(), fs::path("/etc/varsentix/classes.ini"));
  EXPECT_EQ(server::detail::userRegistrationFile(), fs::path("/home/someone/.cfg/varsentix/classes.ini"));
}

}  // namespace
}  // namespace varsentix

extern "C" int varsentix_c_host_round_trip(const char* progId);

namespace varsentix {
namespace {

TEST(ServerRegistration, AHostWrittenInCCreatesEveryClassByProgID) {
  RegistrationFixture fixture;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  for (const char* progId : kProgIds) EXPECT_EQ(varsentix_c_host_round_trip(progId), 0) << progId;
  ASSERT_EQ(DllUnregisterServer(), VX_S_OK);
  EXPECT_EQ(varsentix_c_host_round_trip("VarsentiX.Varsenti"), 2);  // no longer registered
}

}  // namespace
}  // namespace varsentix
