// The Chinook sample loaded into PostgreSQL and MariaDB from its own scripts, then walked through
// the ODBC provider. The scripts drop, create and switch to a database named chinook; those lines
// are left out so that they fill the fresh test database instead (OdbcTestSupport: loadScript).
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "odbc/OdbcTestSupport.h"
#include "support/Engines.h"
#include "support/TempDir.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::testing::odbc {
namespace {

using ado::Connection;
using ado::Recordset;
using vb::Ref;
using vb::Variant;

// Names differ between the two scripts: snake_case on PostgreSQL, PascalCase on MySQL.
struct Names {
  std::string track, trackId, trackName, milliseconds, artist, artistId, artistName, invoice,
      invoiceId, total, employee, employeeId, birthDate, playlistTrack, genre, genreId, genreName;
};

const Names kPg{"track", "track_id", "name", "milliseconds", "artist", "artist_id", "name",
                "invoice", "invoice_id", "total", "employee", "employee_id", "birth_date",
                "playlist_track", "genre", "genre_id", "name"};
const Names kMy{"Track", "TrackId", "Name", "Milliseconds", "Artist", "ArtistId", "Name",
                "Invoice", "InvoiceId", "Total", "Employee", "EmployeeId", "BirthDate",
                "PlaylistTrack", "Genre", "GenreId", "Name"};

class OdbcChinookTest : public ::testing::TestWithParam<Engine> {
 protected:
  static void SetUpTestSuite() { databases_ = new std::map<Engine, std::unique_ptr<TestDatabase>>(); }
  static void TearDownTestSuite() {
    delete databases_;
    databases_ = nullptr;
  }

  void SetUp() override {
    auto& slot = (*databases_)[GetParam()];
    if (!slot) {
      auto db = makeTestDatabase(GetParam());
      if (!db) GTEST_SKIP() << "engine not available: " << engineName(GetParam());
      const std::string script = GetParam() == Engine::PostgreSQL ? "Chinook_PostgreSql.sql"
                                                                  : "Chinook_MySql.sql";
      loadScript(*db, (sharedDataDir() / script).string());
      slot = std::move(db);
    }
    db_ = slot.get();
    n_ = GetParam() == Engine::PostgreSQL ? kPg : kMy;
    connection_ = Ref<Connection>::make();
    connection_->Open(db_->connectionString());
  }

  Ref<Recordset> open(const std::string& source, int32_t options = ado::adCmdText,
                      ado::LockTypeEnum lock = ado::adLockReadOnly) {
    auto rs = Ref<Recordset>::make();
    rs->Open(source, connection_, ado::adOpenForwardOnly, lock, options);
    return rs;
  }

  static std::map<Engine, std::unique_ptr<TestDatabase>>* databases_;
  TestDatabase* db_ = nullptr;
  Names n_;
  Ref<Connection> connection_;
};

std::map<Engine, std::unique_ptr<TestDatabase>>* OdbcChinookTest::databases_ = nullptr;

TEST_P(OdbcChinookTest, ListsTheElevenTables) {
  auto rs = connection_->OpenSchema(ado::adSchemaTables, {Variant(), Variant(), Variant(), "TABLE"});
  int tables = 0;
  for (; !rs->isEOF(); rs->MoveNext()) ++tables;
  EXPECT_EQ(tables, 11);
}

TEST_P(OdbcChinookTest, WalksEveryTrackAndAgreesWithTheEngine) {
  auto rs = open(n_.track, ado::adCmdTable);
  int64_t rows = 0, milliseconds = 0;
  for (; !rs->isEOF(); rs->MoveNext()) {
    ++rows;
    milliseconds += rs->field(n_.milliseconds).Value().toInt64();
  }
  EXPECT_EQ(rows, 3503);
  EXPECT_EQ(std::to_string(milliseconds),
            db_->scalar("SELECT SUM(" + n_.milliseconds + ") FROM " + n_.track));
}

TEST_P(OdbcChinookTest, NonAsciiNamesDecimalsAndTimestampsReadBack) {
  auto artist = open("SELECT [" + n_.artistName + "] FROM [" + n_.artist + "] WHERE [" +
                     n_.artistId + "] = 6");
  EXPECT_EQ(artist->field(n_.artistName).Value().toText(), "Antônio Carlos Jobim");
  EXPECT_EQ(artist->field(n_.artistName).Type(), ado::adVarWChar);

  auto invoice = open("SELECT [" + n_.total + "] FROM [" + n_.invoice + "] WHERE [" + n_.invoiceId +
                      "] = 1");
  EXPECT_EQ(invoice->field(n_.total).Type(), ado::adNumeric);
  EXPECT_EQ(invoice->field(n_.total).Value().toText(), "1.98");
  EXPECT_EQ(invoice->field(n_.total).NumericScale(), 2);

  auto employee = open("SELECT [" + n_.birthDate + "] FROM [" + n_.employee + "] WHERE [" +
                       n_.employeeId + "] = 1");
  EXPECT_EQ(employee->field(n_.birthDate).Type(), ado::adDBTimeStamp);
  EXPECT_EQ(employee->field(n_.birthDate).Value().toText(), "1962-02-18 00:00:00");
}

TEST_P(OdbcChinookTest, KeysOfTheSample) {
  auto pk = connection_->OpenSchema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), n_.playlistTrack});
  int columns = 0;
  for (; !pk->isEOF(); pk->MoveNext()) ++columns;
  EXPECT_EQ(columns, 2);
  auto fk = connection_->OpenSchema(ado::adSchemaForeignKeys);
  int keys = 0;
  for (; !fk->isEOF(); fk->MoveNext()) ++keys;
  EXPECT_EQ(keys, 11);
  auto toGenre = connection_->OpenSchema(ado::adSchemaForeignKeys, {Variant(), Variant(), n_.genre});
  ASSERT_FALSE(toGenre->isEOF());
  EXPECT_EQ(toGenre->field("FK_TABLE_NAME").Value().toText(), n_.track);
  EXPECT_EQ(toGenre->field("PK_COLUMN_NAME").Value().toText(), n_.genreId);
}

TEST_P(OdbcChinookTest, UpdatesOneGenreByItsKeyAndPutsItBack) {
  auto rs = open("SELECT * FROM [" + n_.genre + "] WHERE [" + n_.genreId + "] = 2",
                 ado::adCmdText, ado::adLockOptimistic);
  const std::string original = rs->field(n_.genreName).Value().toText();
  EXPECT_EQ(original, "Jazz");
  rs->field(n_.genreName).setValue(std::string("Jäzz"));
  rs->Update();
  EXPECT_EQ(db_->scalar("SELECT " + n_.genreName + " FROM " + n_.genre + " WHERE " + n_.genreId + " = 2"),
            "Jäzz");
  rs->field(n_.genreName).setValue(original);
  rs->Update();
  EXPECT_EQ(db_->scalar("SELECT " + n_.genreName + " FROM " + n_.genre + " WHERE " + n_.genreId + " = 2"),
            "Jazz");
}

INSTANTIATE_TEST_SUITE_P(Odbc, OdbcChinookTest,
                         ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), EngineParamName());

}  // namespace
}  // namespace varsentix::testing::odbc
