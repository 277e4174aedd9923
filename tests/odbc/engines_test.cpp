// The test engines themselves: a fresh database per request, native exec/scalar, cleanup.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/Engines.h"

namespace varsentix::testing {
namespace {

class EnginesTest : public ::testing::TestWithParam<Engine> {};

TEST_P(EnginesTest, FreshDatabaseRunsNativeSql) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  EXPECT_EQ(db->engine(), GetParam());
  db->exec("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(20))");
  db->exec("INSERT INTO t (id, name) VALUES (1, 'Zoë')");
  EXPECT_EQ(db->scalar("SELECT name FROM t WHERE id = 1"), "Zoë");
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM t"), "1");
  EXPECT_EQ(db->scalar("SELECT name FROM t WHERE id = 2"), "");
  EXPECT_ANY_THROW(db->exec("SELECT * FROM no_such_table"));
}

TEST_P(EnginesTest, EachDatabaseIsFreshAndSeparate) {
  VARSENTIX_TEST_DATABASE(first, GetParam());
  VARSENTIX_TEST_DATABASE(second, GetParam());
  EXPECT_NE(first->connectionString(), second->connectionString());
  first->exec("CREATE TABLE only_here (id INTEGER)");
  EXPECT_ANY_THROW(second->exec("SELECT * FROM only_here"));
}

TEST_P(EnginesTest, ConnectionStringNamesTheProvider) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  const std::string text = db->connectionString();
  if (GetParam() == Engine::SQLite)
    EXPECT_EQ(text.rfind("Provider=SQLite;Data Source=", 0), 0u) << text;
  else
    EXPECT_EQ(text.rfind("Provider=MSDASQL;", 0), 0u) << text;
}

TEST(EnginesServerTest, DatabaseIsDroppedWhenTheObjectGoes) {
  if (!engineAvailable(Engine::PostgreSQL)) GTEST_SKIP() << "PostgreSQL not available";
  std::string name;
  {
    VARSENTIX_TEST_DATABASE(db, Engine::PostgreSQL);
    name = db->scalar("SELECT current_database()");
    ASSERT_FALSE(name.empty());
  }
  VARSENTIX_TEST_DATABASE(other, Engine::PostgreSQL);
  EXPECT_EQ(other->scalar("SELECT COUNT(*) FROM pg_database WHERE datname = '" + name + "'"), "0");
}

INSTANTIATE_TEST_SUITE_P(Engines, EnginesTest, ::testing::ValuesIn(allEngines()), EngineParamName());

}  // namespace
}  // namespace varsentix::testing
