#include "AdoTestSupport.h"

#include <filesystem>

namespace varsentix::testing {

std::vector<Engine> adoEngines() { return allEngines(); }

std::unique_ptr<TestDatabase> freshDatabase(Engine engine) { return makeTestDatabase(engine); }

vb::VBError expectVBError(const std::function<void()>& body) {
  try {
    body();
  } catch (const vb::VBError& e) {
    return e;
  }
  ADD_FAILURE() << "expected a VBError, none was raised";
  return vb::VBError(0, "none raised", "test");
}

vb::Ref<ado::Connection> connect(const TestDatabase& db) {
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(db.connectionString());
  return connection;
}

std::string copyOfChinook(const TempDir& dir) {
  std::string copy = dir.file("Chinook_Sqlite.sqlite");
  std::filesystem::copy_file(sharedDataDir() / "Chinook_Sqlite.sqlite", copy);
  return copy;
}


}  // namespace varsentix::testing
