// Listing the machine's ODBC data sources through unixODBC, against temporary configurations.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "datasource/OdbcConfig.h"
#include "varsentix/datasource/ModDNS.h"
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::testing;
using Lines = std::vector<std::string>;

namespace {

const std::string kNoConnections = "No ODBC connections were found on this system";

// Loads the list once and describes it, with the message boxes shown meanwhile.
Lines loadAndDescribe() {
  ui::MessageBoxRecorder boxes;
  ModDNS::loadODBCDataSources();
  Lines lines = describeDataSourceList();
  for (const auto& text : boxes.texts()) lines.push_back("box: " + text);
  return lines;
}

std::string errorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const vb::VBError& e) {
    return "error " + std::to_string(e.number());
  }
  return "no error";
}

const DataSource kA{"A", kShortDriver, {{"Database", "/nonexistent/a.db"}}};
const DataSource kB{"B", kLongerDriver, {{"Servername", "127.0.0.1"}}};

}  // namespace

TEST(DataSourceList, TwoDataSourcesGiveCountThreeAndABlankClosingEntry) {
  OdbcConfig config({kA, kB});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe),
            (Lines{"count=3", "[0]=", "[1]=DSN=A | D1", "[2]=DSN=B | D22", "[3]=DSN=  |    "}));
}

TEST(DataSourceList, NoDataSourceGivesCountOneAndTheBareSeparator) {
  OdbcConfig config({});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe), (Lines{"count=1", "[0]=", "[1]=DSN= | "}));
}

TEST(DataSourceList, MissingOdbcIniIsTheSameAsNoDataSource) {
  OdbcConfig config({});
  config.removeOdbcIni();
  EXPECT_EQ(inChildProcess(config, loadAndDescribe), (Lines{"count=1", "[0]=", "[1]=DSN= | "}));
}

TEST(DataSourceList, OneDataSourceClosesWithItsLengthsInBlanks) {
  OdbcConfig config({{"Chinook", kSQLiteDriver, {{"Database", "/nonexistent/chinook.db"}}}});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe),
            (Lines{"count=2", "[0]=", "[1]=DSN=Chinook | SQLite3",
                   "[2]=DSN=" + std::string(7, ' ') + " | " + std::string(7, ' ')}));
}

TEST(DataSourceList, ThreeDataSourcesOfRealDriversInFileOrder) {
  OdbcConfig config({{"Chinook", kSQLiteDriver, {{"Database", "/nonexistent/chinook.db"}}},
                     {"Inventory", kMariaDBDriver, {{"Server", "127.0.0.1"}}},
                     {"Stock", kAccessDriver, {{"DBQ", northwindPath()}}}});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe),
            (Lines{"count=4", "[0]=", "[1]=DSN=Chinook | SQLite3",
                   "[2]=DSN=Inventory | MariaDB Unicode",
                   "[3]=DSN=Stock | Microsoft Access Driver (*.mdb)",
                   "[4]=DSN=" + std::string(5, ' ') + " | " + std::string(31, ' ')}));
}

TEST(DataSourceList, NamesAreBytesAndTheClosingEntryCountsThem) {
  // "Größe": 5 letters, 7 bytes.
  OdbcConfig config({DataSource{"Gr\xc3\xb6\xc3\x9f" "e", kShortDriver, {}}});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe),
            (Lines{"count=2", "[0]=", "[1]=DSN=Gr\xc3\xb6\xc3\x9f" "e | D1",
                   "[2]=DSN=" + std::string(7, ' ') + " |   "}));
}

TEST(DataSourceList, ListedEntriesBecomeConnectionStrings) {
  OdbcConfig config({{"Chinook", kSQLiteDriver, {{"Database", "/nonexistent/chinook.db"}}},
                     {"Sales", kPostgreSQLDriver, {{"Servername", "127.0.0.1"}}},
                     {"Stock", kAccessDriver, {{"DBQ", northwindPath()}}}});
  Lines lines = inChildProcess(config, [] {
    ModDNS::loadODBCDataSources();
    Lines strings;
    for (int16_t i = 1; i <= 3; ++i) {
      std::string entry = ModDNS::getDataSourceEntry(i);
      strings.push_back(ModDNS::getConncectionStringFromDSN(entry));
      strings.push_back(entry);
    }
    return strings;
  });
  EXPECT_EQ(lines, (Lines{std::string(ModDNS::odbcPrefix) + "Chinook", "Chinook | SQLite3",
                          std::string(ModDNS::odbcPrefix) + "Sales", "Sales | PostgreSQL Unicode",
                          std::string(ModDNS::jetPrefix) + northwindPath(),
                          "Stock | Microsoft Access Driver (*.mdb)"}));
}

TEST(DataSourceList, EveryLoadRebuildsTheListFromTheStart) {
  OdbcConfig config({kA, kB});
  Lines lines = inChildProcess(config, [&config] {
    ModDNS::loadODBCDataSources();
    ModDNS::loadODBCDataSources();
    Lines seen = describeDataSourceList();
    config.writeOdbcIni({{"Z", kShortDriver, {}}});
    ModDNS::loadODBCDataSources();
    Lines after = describeDataSourceList();
    seen.insert(seen.end(), after.begin(), after.end());
    return seen;
  });
  EXPECT_EQ(lines, (Lines{"count=3", "[0]=", "[1]=DSN=A | D1", "[2]=DSN=B | D22",
                          "[3]=DSN=  |    ", "count=2", "[0]=", "[1]=DSN=Z | D1",
                          "[2]=DSN=  |   "}));
}

TEST(DataSourceList, PerUserDataSourcesAreListedBeforeTheMachineWideOnes) {
  OdbcConfig config({kA});
  config.writeUserOdbcIni({{"Mine", kSQLiteDriver, {}}});
  EXPECT_EQ(inChildProcess(config, loadAndDescribe),
            (Lines{"count=3", "[0]=", "[1]=DSN=Mine | SQLite3", "[2]=DSN=A | D1",
                   "[3]=DSN=  |   "}));
}

TEST(DataSourceList, IndexOutsideTheListRaisesSubscriptOutOfRange) {
  OdbcConfig config({kA, kB});
  Lines lines = inChildProcess(config, [] {
    ModDNS::loadODBCDataSources();
    return Lines{errorOf([] { ModDNS::getDataSourceEntry(4); }),
                 errorOf([] { ModDNS::getDataSourceEntry(-1); }),
                 errorOf([] { ModDNS::getDataSourceEntry(3); })};
  });
  EXPECT_EQ(lines, (Lines{"error 9", "error 9", "no error"}));
}

TEST(DataSourceList, NeverFilledListRaisesSubscriptOutOfRangeForCountAndEntries) {
  OdbcConfig config({kA});
  Lines lines = inChildProcess(config, [] {
    return Lines{errorOf([] { ModDNS::getDataSourceCount(); }),
                 errorOf([] { ModDNS::getDataSourceEntry(0); })};
  });
  EXPECT_EQ(lines, (Lines{"error 9", "error 9"}));
}

TEST(DataSourceList, MissingDriverManagerShowsTheMessageOnceAndLeavesTheList) {
  OdbcConfig config({kA, kB});
  Lines lines = inChildProcess(config, [] {
    setenv("VARSENTIX_ODBC_LIBRARY", "/nonexistent/libodbc.so.2", 1);
    Lines seen = loadAndDescribe();
    // The driver manager found again: the list fills as usual.
    unsetenv("VARSENTIX_ODBC_LIBRARY");
    Lines after = loadAndDescribe();
    seen.insert(seen.end(), after.begin(), after.end());
    return seen;
  });
  EXPECT_EQ(lines, (Lines{"count: error 9", "box: " + kNoConnections, "count=3", "[0]=",
                          "[1]=DSN=A | D1", "[2]=DSN=B | D22", "[3]=DSN=  |    "}));
}

TEST(DataSourceList, EnvironmentThatCannotBeAllocatedStopsSilentlyAndKeepsTheList) {
  OdbcConfig config({kA, kB});
  Lines lines = inChildProcess(config, [&config] {
    setenv("VARSENTIX_ODBC_LIBRARY", VARSENTIX_ODBC_FAULTS_LIBRARY, 1);
    setenv("VARSENTIX_FAULT_ALLOC_ENV", "1", 1);
    Lines seen = loadAndDescribe();  // never filled: stays so
    unsetenv("VARSENTIX_FAULT_ALLOC_ENV");
    Lines filled = loadAndDescribe();
    seen.insert(seen.end(), filled.begin(), filled.end());
    config.writeOdbcIni({{"Z", kShortDriver, {}}});
    setenv("VARSENTIX_FAULT_ALLOC_ENV", "1", 1);
    Lines kept = loadAndDescribe();  // the list of A and B, not Z
    seen.insert(seen.end(), kept.begin(), kept.end());
    return seen;
  });
  EXPECT_EQ(lines, (Lines{"count: error 9",                                        //
                          "count=3", "[0]=", "[1]=DSN=A | D1", "[2]=DSN=B | D22",  //
                          "[3]=DSN=  |    ",                                       //
                          "count=3", "[0]=", "[1]=DSN=A | D1", "[2]=DSN=B | D22",  //
                          "[3]=DSN=  |    "}));
}

TEST(DataSourceList, CounterOverflowAfter32767EntriesShowsTheMessage) {
  OdbcConfig config({kA});
  Lines lines = inChildProcess(config, [] {
    setenv("VARSENTIX_ODBC_LIBRARY", VARSENTIX_ODBC_FAULTS_LIBRARY, 1);
    setenv("VARSENTIX_FAULT_ENDLESS_DATA_SOURCES", "1", 1);
    ui::MessageBoxRecorder boxes;
    ModDNS::loadODBCDataSources();
    Lines seen{"count=" + std::to_string(ModDNS::getDataSourceCount()),
               ModDNS::getDataSourceEntry(1), ModDNS::getDataSourceEntry(32767)};
    for (const auto& text : boxes.texts()) seen.push_back("box: " + text);
    return seen;
  });
  EXPECT_EQ(lines, (Lines{"count=32767", "DSN=A | D1", "DSN=A | D1", "box: " + kNoConnections}));
}
