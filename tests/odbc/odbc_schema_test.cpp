// Schema rowsets 20 (tables), 28 (primary keys) and 27 (foreign keys) through the ODBC provider.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "odbc/OdbcTestSupport.h"
#include "support/Engines.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::testing::odbc {
namespace {

using ado::Connection;
using ado::Recordset;
using vb::Ref;
using vb::Variant;

using Record = std::map<std::string, Variant>;

std::vector<Record> readAll(const Ref<Recordset>& rs) {
  std::vector<Record> rows;
  while (!rs->isEOF()) {
    Record row;
    for (int32_t i = 0; i < rs->getFields().Count(); ++i) {
      auto field = rs->getFields().Item(i);
      row[field.Name()] = field.Value();
    }
    rows.push_back(std::move(row));
    rs->MoveNext();
  }
  return rows;
}

std::string text(const Variant& v) { return v.isNull() || v.isEmpty() ? "" : v.toText(); }

class OdbcSchemaTest : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    db_ = makeTestDatabase(GetParam());
    if (!db_) GTEST_SKIP() << "engine not available: " << engineName(GetParam());
    const bool maria = GetParam() == Engine::MariaDB;
    const std::string engineSuffix = maria ? " ENGINE=InnoDB" : "";
    db_->exec("CREATE TABLE artist (artist_id INTEGER NOT NULL PRIMARY KEY, name VARCHAR(50))" +
              engineSuffix);
    db_->exec(
        "CREATE TABLE album (album_id INTEGER NOT NULL, disc INTEGER NOT NULL, artist_id INTEGER, "
        "title VARCHAR(50), PRIMARY KEY (album_id, disc), CONSTRAINT fk_album_artist FOREIGN KEY "
        "(artist_id) REFERENCES artist (artist_id) ON DELETE CASCADE)" + engineSuffix);
    db_->exec(
        "CREATE TABLE track (track_id INTEGER NOT NULL PRIMARY KEY, album_id INTEGER, disc INTEGER, "
        "CONSTRAINT fk_track_album FOREIGN KEY (album_id, disc) REFERENCES album (album_id, disc))" +
        engineSuffix);
    db_->exec("CREATE TABLE loose (v INTEGER)" + engineSuffix);
    db_->exec("CREATE VIEW artist_names AS SELECT name FROM artist");
    connection_ = Ref<Connection>::make();
    connection_->Open(db_->connectionString());
  }

  std::vector<Record> schema(ado::SchemaEnum which, const std::vector<Variant>& restrictions = {}) {
    auto rs = connection_->OpenSchema(which, restrictions);
    return readAll(rs);
  }

  std::unique_ptr<TestDatabase> db_;
  Ref<Connection> connection_;
};

TEST_P(OdbcSchemaTest, TablesRowsetHasTheOleDbColumns) {
  auto rs = connection_->OpenSchema(ado::adSchemaTables);
  std::vector<std::string> names;
  for (int32_t i = 0; i < rs->getFields().Count(); ++i) names.push_back(rs->getFields().Item(i).Name());
  ASSERT_GE(names.size(), 4u);
  EXPECT_EQ(names[0], "TABLE_CATALOG");
  EXPECT_EQ(names[1], "TABLE_SCHEMA");
  EXPECT_EQ(names[2], "TABLE_NAME");
  EXPECT_EQ(names[3], "TABLE_TYPE");
}

TEST_P(OdbcSchemaTest, TablesRowsetListsTablesAndViewsWithTheirTypes) {
  std::map<std::string, std::string> types;
  for (const auto& row : schema(ado::adSchemaTables))
    types[text(row.at("TABLE_NAME"))] = text(row.at("TABLE_TYPE"));
  EXPECT_EQ(types["artist"], "TABLE");
  EXPECT_EQ(types["album"], "TABLE");
  EXPECT_EQ(types["track"], "TABLE");
  EXPECT_EQ(types["loose"], "TABLE");
  EXPECT_EQ(types["artist_names"], "VIEW");
  if (GetParam() == Engine::PostgreSQL) {
    // The system catalogs are not listed as tables.
    EXPECT_EQ(types.count("pg_class"), 0u);
    EXPECT_EQ(types.count("tables"), 0u);  // information_schema.tables
    for (const auto& row : schema(ado::adSchemaTables)) {
      EXPECT_NE(text(row.at("TABLE_SCHEMA")), "pg_catalog");
      EXPECT_NE(text(row.at("TABLE_SCHEMA")), "information_schema");
    }
  }
  if (GetParam() == Engine::SQLiteOdbc) {
    EXPECT_EQ(types["sqlite_master"], "SYSTEM TABLE");
  }
}

class OdbcSqliteSchemaTest : public OdbcSchemaTest {};
class OdbcMariaDbSchemaTest : public OdbcSchemaTest {};

TEST_P(OdbcSqliteSchemaTest, SqliteInternalTablesAreSystemTables) {
  db_->exec("CREATE TABLE counter (id INTEGER PRIMARY KEY AUTOINCREMENT)");  // makes sqlite_sequence
  std::map<std::string, std::string> types;
  for (const auto& row : schema(ado::adSchemaTables))
    types[text(row.at("TABLE_NAME"))] = text(row.at("TABLE_TYPE"));
  EXPECT_EQ(types["sqlite_sequence"], "SYSTEM TABLE");
  EXPECT_EQ(types["counter"], "TABLE");
}

TEST_P(OdbcMariaDbSchemaTest, MariaDbListsOnlyTheConnectedDatabase) {
  auto other = makeTestDatabase(Engine::MariaDB);
  ASSERT_TRUE(other);
  other->exec("CREATE TABLE only_in_other (id INTEGER)");
  const std::string mine = db_->scalar("SELECT DATABASE()");
  for (const auto& row : schema(ado::adSchemaTables)) {
    EXPECT_NE(text(row.at("TABLE_NAME")), "only_in_other");
    EXPECT_EQ(text(row.at("TABLE_CATALOG")), mine);
  }
  EXPECT_TRUE(schema(ado::adSchemaForeignKeys, {Variant(), Variant(), "only_in_other"}).empty());
}

TEST_P(OdbcSchemaTest, TablesRowsetHonoursNameAndTypeRestrictions) {
  auto byName = schema(ado::adSchemaTables, {Variant(), Variant(), "album"});
  ASSERT_EQ(byName.size(), 1u);
  EXPECT_EQ(text(byName[0].at("TABLE_NAME")), "album");
  auto views = schema(ado::adSchemaTables, {Variant(), Variant(), Variant(), "VIEW"});
  ASSERT_EQ(views.size(), 1u);
  EXPECT_EQ(text(views[0].at("TABLE_NAME")), "artist_names");
  EXPECT_TRUE(schema(ado::adSchemaTables, {Variant(), Variant(), "no_such"}).empty());
}

TEST_P(OdbcSchemaTest, PrimaryKeysRowsetGivesColumnsInKeyOrder) {
  auto rows = schema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), "album"});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(text(rows[0].at("TABLE_NAME")), "album");
  EXPECT_EQ(text(rows[0].at("COLUMN_NAME")), "album_id");
  EXPECT_EQ(rows[0].at("ORDINAL").toInt32(), 1);
  EXPECT_EQ(text(rows[1].at("COLUMN_NAME")), "disc");
  EXPECT_EQ(rows[1].at("ORDINAL").toInt32(), 2);
  EXPECT_EQ(rows[0].count("PK_NAME"), 1u);
  if (GetParam() == Engine::MariaDB) {
    EXPECT_EQ(text(rows[0].at("PK_NAME")), "PRIMARY");
  }
  EXPECT_TRUE(schema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), "loose"}).empty());
}

TEST_P(OdbcSchemaTest, PrimaryKeysRowsetWithoutRestrictionCoversEveryTable) {
  std::map<std::string, int> columns;
  for (const auto& row : schema(ado::adSchemaPrimaryKeys)) ++columns[text(row.at("TABLE_NAME"))];
  EXPECT_EQ(columns["artist"], 1);
  EXPECT_EQ(columns["album"], 2);
  EXPECT_EQ(columns["track"], 1);
  EXPECT_EQ(columns.count("loose"), 0u);
  EXPECT_EQ(columns.count("artist_names"), 0u);
}

TEST_P(OdbcSchemaTest, ForeignKeysRowsetHasTheStandardColumns) {
  auto rows = schema(ado::adSchemaForeignKeys, {Variant(), Variant(), Variant(), Variant(), Variant(), "album"});
  ASSERT_EQ(rows.size(), 1u);
  const auto& fk = rows[0];
  EXPECT_EQ(text(fk.at("PK_TABLE_NAME")), "artist");
  EXPECT_EQ(text(fk.at("PK_COLUMN_NAME")), "artist_id");
  EXPECT_EQ(text(fk.at("FK_TABLE_NAME")), "album");
  EXPECT_EQ(text(fk.at("FK_COLUMN_NAME")), "artist_id");
  EXPECT_EQ(fk.at("ORDINAL").toInt32(), 1);
  EXPECT_EQ(text(fk.at("DELETE_RULE")), "CASCADE");
  EXPECT_EQ(text(fk.at("UPDATE_RULE")), "NO ACTION");
  if (GetParam() != Engine::SQLiteOdbc) {
    EXPECT_EQ(text(fk.at("FK_NAME")), "fk_album_artist");
  }
  for (const char* column : {"PK_TABLE_CATALOG", "PK_TABLE_SCHEMA", "FK_TABLE_CATALOG",
                             "FK_TABLE_SCHEMA", "PK_NAME", "DEFERRABILITY"})
    EXPECT_EQ(fk.count(column), 1u) << column;
}

TEST_P(OdbcSchemaTest, ForeignKeysThirdRestrictionIsThePrimaryKeyTable) {
  auto toAlbum = schema(ado::adSchemaForeignKeys, {Variant(), Variant(), "album"});
  ASSERT_EQ(toAlbum.size(), 2u);  // track's two-column key
  for (const auto& row : toAlbum) {
    EXPECT_EQ(text(row.at("PK_TABLE_NAME")), "album");
    EXPECT_EQ(text(row.at("FK_TABLE_NAME")), "track");
  }
  EXPECT_EQ(text(toAlbum[0].at("FK_COLUMN_NAME")), "album_id");
  EXPECT_EQ(toAlbum[0].at("ORDINAL").toInt32(), 1);
  EXPECT_EQ(text(toAlbum[1].at("FK_COLUMN_NAME")), "disc");
  EXPECT_EQ(toAlbum[1].at("ORDINAL").toInt32(), 2);
  auto toArtist = schema(ado::adSchemaForeignKeys, {Variant(), Variant(), "artist"});
  ASSERT_EQ(toArtist.size(), 1u);
  EXPECT_EQ(text(toArtist[0].at("FK_TABLE_NAME")), "album");
  EXPECT_TRUE(schema(ado::adSchemaForeignKeys, {Variant(), Variant(), "track"}).empty());
  EXPECT_EQ(schema(ado::adSchemaForeignKeys).size(), 3u);
}

TEST_P(OdbcSchemaTest, UnsupportedSchemaRaises3251) {
  try {
    connection_->OpenSchema(static_cast<ado::SchemaEnum>(12));
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::NotSupported);
  }
}

INSTANTIATE_TEST_SUITE_P(Odbc, OdbcSchemaTest, ::testing::ValuesIn(odbcEngines()), EngineParamName());
INSTANTIATE_TEST_SUITE_P(Odbc, OdbcSqliteSchemaTest, ::testing::Values(Engine::SQLiteOdbc),
                         EngineParamName());
INSTANTIATE_TEST_SUITE_P(Odbc, OdbcMariaDbSchemaTest, ::testing::Values(Engine::MariaDB),
                         EngineParamName());

}  // namespace
}  // namespace varsentix::testing::odbc
