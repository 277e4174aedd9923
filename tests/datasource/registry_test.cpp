// The read-only registry over the system odbc.ini, and the settings read on top of it.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "datasource/OdbcConfig.h"
#include "varsentix/datasource/modRegFunctions.h"
#include "varsentix/platform/registry/Registry.h"

using namespace varsentix;
using namespace varsentix::registry;
using namespace varsentix::testing;

namespace {

const char* const kOdbcIniText = R"(# machine-wide data sources
Orphan = before any section
[ODBC Data Sources]
Stock = Microsoft Access Driver (*.mdb)

[Stock]
Driver      = Microsoft Access Driver (*.mdb)
DBQ         = D:\stock.mdb
; a comment
Port        = dword:42
HexPort     = dword:0x2A
AllBits     = dword:4294967295
Negative    = dword:-7
BadNumber   = dword:forty-two
TooBig      = dword:4294967296
TempDir     = expand:%TEMP%\stock
Blob        = hex:01,02,ff
BadBlob     = hex:1,2
Literal     = sz:dword:5
Empty       =
Options     = a=b;c=d
NoEquals

[Stock]
DBQ = second section of the same name

[Other]
DBQ=/data/other.mdb
)";

class Registry : public ::testing::Test {
 protected:
  Registry() { config_.writeOdbcIniText(kOdbcIniText); }
  std::string read(const std::string& name, const std::string& value) {
    return modRegFunctions::getRegistryString(name, value);
  }
  OdbcConfig config_{{}};
  ScopedEnv sysIni_{"ODBCSYSINI", config_.folder().c_str()};
  ScopedEnv home_{"HOME", config_.home().c_str()};
};

const std::string kStock = "SOFTWARE\\ODBC\\ODBC.INI\\Stock";

}  // namespace

TEST_F(Registry, StringValueOfAMachineWideDataSource) {
  EXPECT_EQ(read(kStock, "DBQ"), "D:\\stock.mdb");
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Other", "DBQ"), "/data/other.mdb");
  EXPECT_EQ(read(kStock, "Driver"), "Microsoft Access Driver (*.mdb)");
}

TEST_F(Registry, NamesMatchInAnyLetterCase) {
  EXPECT_EQ(read(kStock, "dbq"), "D:\\stock.mdb");
  EXPECT_EQ(read("software\\odbc\\odbc.ini\\STOCK", "Dbq"), "D:\\stock.mdb");
}

TEST_F(Registry, NumberValueGivesItsDecimalDigits) {
  EXPECT_EQ(read(kStock, "Port"), "42");
  EXPECT_EQ(read(kStock, "HexPort"), "42");
  EXPECT_EQ(read(kStock, "Negative"), "-7");
}

TEST_F(Registry, NumberIsASigned32BitValue) { EXPECT_EQ(read(kStock, "AllBits"), "-1"); }

TEST_F(Registry, ExpandableStringGivesTheEmptyText) { EXPECT_EQ(read(kStock, "TempDir"), ""); }

TEST_F(Registry, BinaryValueGivesTheEmptyText) { EXPECT_EQ(read(kStock, "Blob"), ""); }

TEST_F(Registry, UnreadableNumberOrBytesGiveTheEmptyText) {
  EXPECT_EQ(read(kStock, "BadNumber"), "");
  EXPECT_EQ(read(kStock, "TooBig"), "");
  EXPECT_EQ(read(kStock, "BadBlob"), "");
}

TEST_F(Registry, StringPrefixKeepsATextThatLooksLikeAnotherKind) {
  EXPECT_EQ(read(kStock, "Literal"), "dword:5");
}

TEST_F(Registry, EmptyValueAndValueHoldingEqualsSigns) {
  EXPECT_EQ(read(kStock, "Empty"), "");
  EXPECT_EQ(read(kStock, "Options"), "a=b;c=d");
  EXPECT_EQ(read(kStock, "NoEquals"), "");
}

TEST_F(Registry, FirstSectionOfARepeatedNameWins) {
  EXPECT_EQ(read(kStock, "DBQ"), "D:\\stock.mdb");
}

TEST_F(Registry, DataSourceListSectionIsAKeyToo) {
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\ODBC Data Sources", "Stock"),
            "Microsoft Access Driver (*.mdb)");
}

TEST_F(Registry, MissingValueKeyOrFileGivesTheEmptyText) {
  EXPECT_EQ(read(kStock, "Nothing"), "");
  EXPECT_EQ(read(kStock, "Orphan"), "");
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Nowhere", "DBQ"), "");
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\", "DBQ"), "");
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBCINST.INI\\SQLite3", "Driver"), "");
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Stock\\Deeper", "DBQ"), "");
  EXPECT_EQ(read("", "DBQ"), "");
  config_.removeOdbcIni();
  EXPECT_EQ(read(kStock, "DBQ"), "");
}

TEST_F(Registry, PerUserDataSourcesAreNotRead) {
  config_.writeUserOdbcIni({{"Mine", "", {{"DBQ", "/home/me/mine.mdb"}}}});
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Mine", "DBQ"), "");
}

TEST_F(Registry, FileIsReadWhenTheKeyIsOpened) {
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Later", "DBQ"), "");
  config_.writeOdbcIni({{"Later", "", {{"DBQ", "/data/later.mdb"}}}});
  EXPECT_EQ(read("SOFTWARE\\ODBC\\ODBC.INI\\Later", "DBQ"), "/data/later.mdb");
}

TEST_F(Registry, QueryFillsTheValueWithTextOrALong) {
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
  vb::Variant text;
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "DBQ", text), "D:\\stock.mdb");
  EXPECT_EQ(text.type(), vb::VarType::String);
  vb::Variant number;
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "Port", number), "42");
  EXPECT_EQ(number.type(), vb::VarType::Long);
  EXPECT_EQ(number.toInt32(), 42);
  EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
}

TEST_F(Registry, QueryOfAnotherKindLeavesTheValueAndGivesItsText) {
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
  vb::Variant value(std::string("held before"));
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "TempDir", value), "held before");
  vb::Variant unset;
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "TempDir", unset), "");
  EXPECT_TRUE(unset.isEmpty());
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "Nothing", value), "held before");
  RegCloseKey(key);
}

TEST_F(Registry, QueryOnAKeyThatNeverOpenedGivesTheEmptyText) {
  vb::Variant value;
  EXPECT_EQ(modRegFunctions::queryRegistryValue(0, "DBQ", value), "");
  EXPECT_TRUE(value.isEmpty());
}

TEST_F(Registry, OpenReportsMissingKeysAndRefusesWriting) {
  HKEY key = 12345;
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\ODBC\\ODBC.INI\\Nowhere", 0,
                          KEY_QUERY_VALUE, &key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(key, 0u);
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_SET_VALUE, &key), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\\\ODBC", 0, KEY_QUERY_VALUE, &key),
            ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, nullptr),
            ERROR_INVALID_PARAMETER);
  EXPECT_EQ(RegOpenKeyExA(777, "Stock", 0, KEY_QUERY_VALUE, &key), ERROR_INVALID_HANDLE);
}

TEST_F(Registry, KeysOpenBelowAnOpenKey) {
  HKEY odbcIni = 0;
  HKEY stock = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\ODBC\\ODBC.INI", 0, KEY_QUERY_VALUE,
                          &odbcIni),
            ERROR_SUCCESS);
  ASSERT_EQ(RegOpenKeyExA(odbcIni, "stock", 0, KEY_QUERY_VALUE, &stock), ERROR_SUCCESS);
  uint32_t size = 0;
  EXPECT_EQ(RegQueryValueExA(odbcIni, "DBQ", nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegQueryValueExA(stock, "DBQ", nullptr, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(stock), ERROR_SUCCESS);
  EXPECT_EQ(RegCloseKey(odbcIni), ERROR_SUCCESS);
}

TEST_F(Registry, QueryGivesKindAndSizeThenData) {
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
  uint32_t type = 99;
  uint32_t size = 0;
  ASSERT_EQ(RegQueryValueExA(key, "DBQ", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_SZ);
  EXPECT_EQ(size, std::strlen("D:\\stock.mdb") + 1);  // with its terminating zero

  uint8_t small[4];
  uint32_t smallSize = sizeof small;
  EXPECT_EQ(RegQueryValueExA(key, "DBQ", nullptr, small, &smallSize), ERROR_MORE_DATA);
  EXPECT_EQ(smallSize, size);

  std::string buffer(size, 'x');
  uint32_t bufferSize = size;
  ASSERT_EQ(RegQueryValueExA(key, "DBQ", nullptr, reinterpret_cast<uint8_t*>(buffer.data()),
                             &bufferSize),
            ERROR_SUCCESS);
  EXPECT_EQ(buffer, std::string("D:\\stock.mdb") + '\0');

  ASSERT_EQ(RegQueryValueExA(key, "Port", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_DWORD);
  EXPECT_EQ(size, 4u);
  ASSERT_EQ(RegQueryValueExA(key, "TempDir", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_EXPAND_SZ);
  ASSERT_EQ(RegQueryValueExA(key, "Blob", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_BINARY);
  EXPECT_EQ(size, 3u);
  ASSERT_EQ(RegQueryValueExA(key, "BadNumber", &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, REG_NONE);
  EXPECT_EQ(size, 0u);
  RegCloseKey(key);
}

TEST_F(Registry, ClosedKeyCannotBeUsedOrClosedAgain) {
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
  ASSERT_EQ(RegCloseKey(key), ERROR_SUCCESS);
  uint32_t size = 0;
  EXPECT_EQ(RegQueryValueExA(key, "DBQ", nullptr, nullptr, &size), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(0), ERROR_INVALID_HANDLE);
}

TEST_F(Registry, ValuesStayAsReadWhileTheKeyIsOpen) {
  HKEY key = 0;
  ASSERT_EQ(RegOpenKeyExA(HKEY_LOCAL_MACHINE, kStock, 0, KEY_QUERY_VALUE, &key), ERROR_SUCCESS);
  config_.removeOdbcIni();
  vb::Variant value;
  EXPECT_EQ(modRegFunctions::queryRegistryValue(key, "DBQ", value), "D:\\stock.mdb");
  RegCloseKey(key);
}

TEST(RegistryFile, SystemFileFollowsODBCSYSINI) {
  ScopedEnv sysIni("ODBCSYSINI", "/some/folder");
  EXPECT_EQ(systemOdbcIniPath(), "/some/folder/odbc.ini");
}

TEST(RegistryFile, WithoutODBCSYSINIItIsTheFileUnixOdbcNames) {
  OdbcConfig config({});
  std::vector<std::string> lines = inChildProcess(config, [] {
    unsetenv("ODBCSYSINI");
    return std::vector<std::string>{systemOdbcIniPath()};
  });
  EXPECT_EQ(lines, std::vector<std::string>{"/etc/odbc.ini"});  // Debian's unixODBC
}
