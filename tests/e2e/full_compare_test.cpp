// The Chinook sample against its changed copy on PostgreSQL and MariaDB, compared through ODBC
// data sources listed by the control, as a host compares them; and the SQLite sample against the
// same sample on PostgreSQL, whose names are spelt differently.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "e2e/E2eSupport.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"

namespace varsentix::testing::e2e {
namespace {

std::string sqlite(const std::string& file) { return "Provider=SQLite;Data Source=" + file; }

// "table.field=code" of every row of one side that shows a difference, names made plain so that
// the spellings of the engines compare equal; sorted.
std::vector<std::string> plainDifferences(Varsenti& control, bool isMaster) {
  std::vector<std::string> out;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i) {
    const int16_t code = control.getResultChangeType(i, isMaster);
    if (code != 0)
      out.push_back(plainName(control.getResultDatabaseObjectName(i, isMaster)) + "." +
                    plainName(control.getResultFieldName(i, isMaster)) + "=" + std::to_string(code));
  }
  std::sort(out.begin(), out.end());
  return out;
}

// The row of one side for table.field (plain names), or 0.
int32_t rowOf(Varsenti& control, bool isMaster, const std::string& table, const std::string& field) {
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (plainName(control.getResultDatabaseObjectName(i, isMaster)) == table &&
        plainName(control.getResultFieldName(i, isMaster)) == field)
      return i;
  return 0;
}

// The plain names of the tables one side reports, each with its change type.
std::map<std::string, int16_t> tablesOf(Varsenti& control, bool isMaster) {
  std::map<std::string, int16_t> tables;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (!control.getResultIsFieldDesc(i, isMaster))
      tables[plainName(control.getResultDatabaseObjectName(i, isMaster))] = control.getResultChangeType(i, isMaster);
  return tables;
}

// The differences the full compare reports for the bundled SQLite sample pair.
struct SqliteReference {
  std::vector<std::string> original, modified;
};
const SqliteReference& sqliteReference() {
  static const SqliteReference reference = [] {
    TempDir dir;
    makeSqliteSamplePair(dir);
    Varsenti control;
    control.beginFullDatabaseCompare(sqlite(dir.file("chinook.sqlite")), sqlite(dir.file("chinook-changed.sqlite")),
                                     false);
    return SqliteReference{plainDifferences(control, true), plainDifferences(control, false)};
  }();
  return reference;
}

vb::Ref<clsDBManager> preparedSide(const std::string& connectionString, const std::string& table, bool isMaster) {
  auto side = vb::Ref<clsDBManager>::make();
  side->initializeValues();
  side->setIsMasterDatabase(isMaster);
  side->setConnectionString(connectionString);
  side->openDatabaseConnection();
  side->setTableName(table);
  side->setFieldList("*");
  return side;
}

// The values one side reports for a field in a one-table record compare, in order.
std::vector<std::string> valuesOf(Varsenti& control, bool isMaster, const std::string& field) {
  std::vector<std::string> values;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster) && control.getResultFieldName(i, isMaster) == field)
      values.push_back(control.getResultFieldValue(i, isMaster));
  return values;
}

class ServerChinook : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    pair_ = chinookOnServer(GetParam());
    if (pair_ == nullptr) GTEST_SKIP() << "engine not available: " << engineName(GetParam());
  }
  bool pg() const { return GetParam() == Engine::PostgreSQL; }
  // Data sources for the two databases, listed while the fixture lives. Each engine has names of
  // its own: the driver manager may keep what it read of odbc.ini within the same second.
  std::string original() const { return "vx_e2e_original_" + engineName(GetParam()); }
  std::string changed() const { return "vx_e2e_changed_" + engineName(GetParam()); }
  std::vector<FixtureDataSource> dataSources() const {
    return {serverDataSource(GetParam(), original(), pair_->originalName),
            serverDataSource(GetParam(), changed(), pair_->changedName)};
  }
  const ChinookOnServer* pair_ = nullptr;
};

TEST_P(ServerChinook, FullCompareThroughListedDataSourcesFindsTheSampleDifferences) {
  OdbcDataSourceFixture odbc(dataSources());
  const std::string master = connectionStringOfListedDataSource(original());
  const std::string source = connectionStringOfListedDataSource(changed());
  EXPECT_EQ(master, "Provider=MSDASQL;Persist Security Info=False;Data Source=" + original());

  Varsenti control;
  int events = 0;
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) { ++events; });
  ASSERT_TRUE(control.beginFullDatabaseCompare(master, source, false)) << control.getErrorLogs(true);
  EXPECT_GT(events, 0);
  EXPECT_EQ(control.getErrorLogs(true).find('#'), std::string::npos) << control.getErrorLogs(true);
  EXPECT_EQ(control.getErrorLogs(false).find('#'), std::string::npos) << control.getErrorLogs(false);

  // The same differences as the SQLite sample pair, names aside.
  EXPECT_EQ(plainDifferences(control, true), sqliteReference().original);
  EXPECT_EQ(plainDifferences(control, false), sqliteReference().modified);
  EXPECT_EQ(plainDifferences(control, true).size(), 5u);
  EXPECT_EQ(plainDifferences(control, false).size(), 8u);

  // Eleven tables in the original, eleven in the copy (one dropped, one added).
  auto masterTables = tablesOf(control, true);
  auto sourceTables = tablesOf(control, false);
  EXPECT_EQ(masterTables.size(), 11u);
  EXPECT_EQ(sourceTables.size(), 11u);
  EXPECT_EQ(masterTables["playlisttrack"], 1) << ::testing::PrintToString(masterTables);
  EXPECT_EQ(sourceTables["review"], 1) << ::testing::PrintToString(sourceTables);
  EXPECT_EQ(masterTables.count("invoiceline"), 1u);
  EXPECT_EQ(masterTables["invoiceline"], 0);

  // A sample of rows through the query methods.
  const int32_t total = rowOf(control, true, "invoice", "total");
  ASSERT_GT(total, 0);
  EXPECT_EQ(control.getResultChangeType(total, true), 3);
  EXPECT_EQ(control.getResultDataType(total, true), "Exact_numeric_value_with_a_fixed_precision_and_scale");
  EXPECT_EQ(control.getResultFieldName(total, true), pg() ? "total" : "Total");
  const int32_t sourceTotal = rowOf(control, false, "invoice", "total");
  ASSERT_GT(sourceTotal, 0);
  EXPECT_EQ(control.getResultChangeType(sourceTotal, false), 3);
  EXPECT_NE(control.getResultDataType(sourceTotal, false), control.getResultDataType(total, true));
  const int32_t country = rowOf(control, false, "artist", "country");
  ASSERT_GT(country, 0);
  EXPECT_EQ(control.getResultChangeType(country, false), 2);
  EXPECT_EQ(control.getResultFieldDefinedSize(country, false), "40");
  EXPECT_EQ(control.getResultPrimaryKey(country, false), pg() ? "artist_id" : "ArtistId");
  const int32_t comment = rowOf(control, false, "review", "comment");
  ASSERT_GT(comment, 0);
  EXPECT_EQ(control.getResultChangeType(comment, false), 1);
  EXPECT_EQ(control.getResultFieldDefinedSize(comment, false), "200");
}

TEST_P(ServerChinook, OneTableRecordCompareOnPreparedManagers) {
  const std::string album = pg() ? "album" : "Album";
  const std::string title = pg() ? "title" : "Title";
  Varsenti control;
  auto m = preparedSide(pair_->original->connectionString(), album, true);
  auto s = preparedSide(pair_->changed->connectionString(), album, false);
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s)) << control.getErrorLogs(true);
  EXPECT_EQ(valuesOf(control, true, title), std::vector<std::string>{"Let There Be Rock"});
  EXPECT_EQ(valuesOf(control, false, title), std::vector<std::string>{"Let There Be Rock (Live)"});
  const int32_t record = control.getResultRecordNumber(album, true, 1);
  EXPECT_EQ(control.getFieldValueFromRecordNumber(album, pg() ? "album_id" : "AlbumId", record, true), "4");
  EXPECT_EQ(control.getFieldChangeTypeFromRecordNumber(album, title, record, true), "5");
}

TEST_P(ServerChinook, OneTableRecordCompareSeesNullsApostrophesAndDeletions) {
  const std::string customer = pg() ? "customer" : "Customer";
  const std::string company = pg() ? "company" : "Company";
  {
    Varsenti control;
    ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(
        preparedSide(pair_->original->connectionString(), customer, true),
        preparedSide(pair_->changed->connectionString(), customer, false)));
    EXPECT_EQ(valuesOf(control, true, company),
              std::vector<std::string>{"Embraer - Empresa Brasileira de Aeronáutica S.A."});
    EXPECT_EQ(valuesOf(control, false, company), std::vector<std::string>{"Null"});  // NULL reads as Null
  }
  {
    const std::string employee = pg() ? "employee" : "Employee";
    const std::string titleField = pg() ? "title" : "Title";
    Varsenti control;
    ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(
        preparedSide(pair_->original->connectionString(), employee, true),
        preparedSide(pair_->changed->connectionString(), employee, false)));
    EXPECT_EQ(valuesOf(control, false, titleField), std::vector<std::string>{"IT Staff's Manager"});
  }
  {
    const std::string genre = pg() ? "genre" : "Genre";
    Varsenti control;
    ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(
        preparedSide(pair_->original->connectionString(), genre, true),
        preparedSide(pair_->changed->connectionString(), genre, false)));
    EXPECT_EQ(valuesOf(control, true, pg() ? "name" : "Name"), std::vector<std::string>{"Opera"});
    EXPECT_EQ(valuesOf(control, false, pg() ? "name" : "Name"), std::vector<std::string>{});
  }
}

// Track 1077 is "Último Pau-De-Arara": read through the record-set layer it comes back whole.
TEST_P(ServerChinook, TextHoldingCapitalUWithAcuteReadsWhole) {
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(pair_->original->connectionString());
  auto rs = vb::Ref<ado::Recordset>::make();
  rs->Open(pg() ? "SELECT [track_id], [name] FROM [track] WHERE [track_id] IN (1068, 1077, 2457) ORDER BY 1"
                : "SELECT [TrackId], [Name] FROM [Track] WHERE [TrackId] IN (1068, 1077, 2457) ORDER BY 1",
           connection, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
  std::vector<std::string> names;
  for (; !rs->isEOF(); rs->MoveNext()) names.push_back(rs->field(1).Value().toText());
  EXPECT_EQ(names, (std::vector<std::string>{"Motéis", "Último Pau-De-Arara", "A Última Guerra"}));
}

INSTANTIATE_TEST_SUITE_P(Servers, ServerChinook, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         EngineParamName());

// The SQLite sample (PascalCase names) against the same sample on PostgreSQL (snake_case).
TEST(SqliteAgainstPostgreSql, NamesSpeltDifferentlyAreDifferentTables) {
  const ChinookOnServer* pair = chinookOnServer(Engine::PostgreSQL);
  if (pair == nullptr) GTEST_SKIP() << "engine not available: PostgreSQL";
  TempDir dir;
  std::filesystem::copy_file(sourceDir() / "examples" / "chinook.sqlite", dir.path() / "chinook.sqlite");
  OdbcDataSourceFixture odbc({serverDataSource(Engine::PostgreSQL, "vx_e2e_pg", pair->originalName)});
  const std::string source = connectionStringOfListedDataSource("vx_e2e_pg");

  Varsenti control;
  ASSERT_TRUE(control.beginFullDatabaseCompare(sqlite(dir.file("chinook.sqlite")), source, false));
  EXPECT_EQ(control.getErrorLogs(false).find('#'), std::string::npos) << control.getErrorLogs(false);
  auto masterTables = tablesOf(control, true);
  auto sourceTables = tablesOf(control, false);
  EXPECT_EQ(masterTables.size(), 11u);
  EXPECT_EQ(sourceTables.size(), 11u);
  // Table names are matched exactly: "Album" is not "album", and every table is new on each side.
  for (const auto& [name, code] : masterTables) EXPECT_EQ(code, 1) << "original " << name;
  for (const auto& [name, code] : sourceTables) EXPECT_EQ(code, 1) << "modified " << name;
  EXPECT_EQ(masterTables.count("invoiceline"), 1u);
  EXPECT_EQ(sourceTables.count("invoiceline"), 1u);
  const int32_t album = rowOf(control, true, "album", "");
  ASSERT_GT(album, 0);
  EXPECT_EQ(control.getResultDatabaseObjectName(album, true), "Album");
  const int32_t pgAlbum = rowOf(control, false, "album", "");
  ASSERT_GT(pgAlbum, 0);
  EXPECT_EQ(control.getResultDatabaseObjectName(pgAlbum, false), "album");
  // Their fields come along as fields of a new table.
  const int32_t trackName = rowOf(control, false, "track", "name");
  ASSERT_GT(trackName, 0);
  EXPECT_EQ(control.getResultChangeType(trackName, false), 1);
  EXPECT_EQ(control.getResultFieldName(trackName, false), "name");
}

}  // namespace
}  // namespace varsentix::testing::e2e
