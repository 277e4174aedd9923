#pragma once
// Shared helpers of the record-set layer's tests: fresh databases per engine, small checks.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/Engines.h"
#include "support/TempDir.h"
#include "varsentix/platform/ado.h"

namespace varsentix::testing {

// The engines the record-set suites run on: every engine of allEngines() when the shared
// engine support is built, SQLite alone otherwise.
std::vector<Engine> adoEngines();
// A fresh database on the engine, or nullptr when the engine is not available.
std::unique_ptr<TestDatabase> freshDatabase(Engine engine);

// Runs body and returns the VBError it raised; fails the test when it raises none.
vb::VBError expectVBError(const std::function<void()>& body);

// An open connection to the database.
vb::Ref<ado::Connection> connect(const TestDatabase& db);

// Copies the bundled Chinook database into dir and returns the copy's path.
std::string copyOfChinook(const TempDir& dir);

}  // namespace varsentix::testing

#define ADO_TEST_DATABASE(var, engine)                                          \
  auto var = ::varsentix::testing::freshDatabase(engine);                       \
  if (!var) GTEST_SKIP() << "engine not available: " << ::varsentix::testing::engineName(engine)
