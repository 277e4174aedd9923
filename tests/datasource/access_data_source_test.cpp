// An Access data source listed by the driver manager opens through the Jet provider on its DBQ
// file and shows that file's tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "datasource/OdbcConfig.h"
#include "varsentix/datasource/ModDNS.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"

using namespace varsentix;
using namespace varsentix::testing;
using Lines = std::vector<std::string>;

namespace {

// In the child: list, pick the entry named, build its string, open it and list its tables.
Lines openListedDataSource(const std::string& wanted) {
  ModDNS::loadODBCDataSources();
  Lines lines;
  for (int16_t i = 1; i < ModDNS::getDataSourceCount(); ++i) {
    std::string entry = ModDNS::getDataSourceEntry(i);
    if (entry.rfind("DSN=" + wanted + " |", 0) != 0) continue;
    std::string connectionString = ModDNS::getConncectionStringFromDSN(entry);
    lines.push_back(connectionString);
    auto connection = vb::Ref<ado::Connection>::make();
    connection->Open(connectionString);
    lines.push_back(connection->State() == ado::adStateOpen ? "open" : "closed");
    auto tables = connection->OpenSchema(ado::adSchemaTables,
                                         {vb::Variant(), vb::Variant(), vb::Variant(), "TABLE"});
    while (!tables->isEOF()) {
      lines.push_back(tables->field("TABLE_NAME").Value().toText());
      tables->MoveNext();
    }
    connection->Close();
  }
  return lines;
}

bool holds(const Lines& lines, const std::string& text) {
  return std::find(lines.begin(), lines.end(), text) != lines.end();
}

}  // namespace

TEST(AccessDataSource, OpensThroughJetOnItsDBQFileAndListsItsTables) {
  OdbcConfig config({{"Chinook", kSQLiteDriver, {{"Database", "/nonexistent/chinook.db"}}},
                     {"Stock", kAccessDriver, {{"DBQ", northwindPath()}}}});
  Lines lines = inChildProcess(config, [] { return openListedDataSource("Stock"); });
  ASSERT_GE(lines.size(), 2u) << ::testing::PrintToString(lines);
  EXPECT_EQ(lines[0], std::string(ModDNS::jetPrefix) + northwindPath());
  EXPECT_EQ(lines[1], "open");
  for (const char* table : {"Customers", "Orders", "Order Details", "Products", "Employees",
                            "Suppliers", "Categories", "Shippers"})
    EXPECT_TRUE(holds(lines, table)) << table << " missing from " << ::testing::PrintToString(lines);
}
