// Connection strings: Access files by path, data-source entries, user and password appended.
#include <gtest/gtest.h>

#include <string>

#include "datasource/OdbcConfig.h"
#include "varsentix/datasource/ModDNS.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

const std::string kJet = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
const std::string kOdbc = "Provider=MSDASQL;Persist Security Info=False;Data Source=";

// The machine-wide data sources of these tests: the registry reads $ODBCSYSINI/odbc.ini.
class ConnectionStrings : public ::testing::Test {
 protected:
  OdbcConfig config_{{{"Stock", kAccessDriver, {{"DBQ", "D:\\stock.mdb"}}},
                      {"Northwind", kAccessDriver, {{"DBQ", northwindPath()}}},
                      {"NoFile", kAccessDriver, {{"Description", "an Access source without DBQ"}}},
                      {"Sales", kPostgreSQLDriver, {{"Servername", "127.0.0.1"}}}}};
  ScopedEnv sysIni_{"ODBCSYSINI", config_.folder().c_str()};
  ScopedEnv home_{"HOME", config_.home().c_str()};
};

}  // namespace

TEST(ConnectionStringTexts, FixedTextsLetterForLetter) {
  EXPECT_EQ(ModDNS::jetPrefix, kJet);
  EXPECT_EQ(ModDNS::odbcPrefix, kOdbc);
  EXPECT_EQ(std::string(ModDNS::userIdKey), ";User ID=");
  EXPECT_EQ(std::string(ModDNS::passwordKey), ";Password=");
  EXPECT_EQ(std::string(ModDNS::odbcIniKey), "SOFTWARE\\ODBC\\ODBC.INI\\");
  EXPECT_EQ(std::string(ModDNS::dbqValue), "DBQ");
}

TEST(GetOLEDBConnectionFromPath, PathFollowsTheJetPrefixDirectly) {
  std::string path = "C:\\db\\a.mdb";
  EXPECT_EQ(ModDNS::getOLEDBConnectionFromPath(path, false), kJet + "C:\\db\\a.mdb");
  EXPECT_EQ(path, "C:\\db\\a.mdb");
}

TEST(GetOLEDBConnectionFromPath, PathIsTakenAsItStands) {
  std::string path = "  /no such/file.mdb ";
  EXPECT_EQ(ModDNS::getOLEDBConnectionFromPath(path, false), kJet + "  /no such/file.mdb ");
  std::string empty;
  EXPECT_EQ(ModDNS::getOLEDBConnectionFromPath(empty, false), kJet);
}

TEST_F(ConnectionStrings, PathAsADataSourceEntryWhenUseDSN) {
  std::string entry = "DSN=Sales | SQL Server";
  EXPECT_EQ(ModDNS::getOLEDBConnectionFromPath(entry, true), kOdbc + "Sales");
  EXPECT_EQ(entry, "Sales | SQL Server");
}

TEST(AddUserIDToConnectionString, AppendsWithABlankBeforeTheSemicolonIntoTheCallersText) {
  std::string s = "DSN=x";
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("sa", s), "DSN=x ;User ID=sa");
  EXPECT_EQ(s, "DSN=x ;User ID=sa");
}

TEST(AddUserIDToConnectionString, SecondUserIsIgnored) {
  std::string s = "DSN=x";
  ModDNS::addUserIDToConnectionString("sa", s);
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("bob", s), "DSN=x ;User ID=sa");
  EXPECT_EQ(s, "DSN=x ;User ID=sa");
}

TEST(AddUserIDToConnectionString, KeyInOtherLetterCaseStillGetsTheKeyAppended) {
  std::string s = "DSN=x;user id=sa";
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("bob", s), "DSN=x;user id=sa ;User ID=bob");
  EXPECT_EQ(s, "DSN=x;user id=sa ;User ID=bob");
}

TEST(AddUserIDToConnectionString, KeyWithoutItsSemicolonIsNotTheKey) {
  std::string s = "User ID=sa";
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("bob", s), "User ID=sa ;User ID=bob");
}

TEST(AddUserIDToConnectionString, UserIsNeitherCheckedNorEscaped) {
  std::string s = "DSN=x";
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("a b;Password=c", s), "DSN=x ;User ID=a b;Password=c");
  std::string empty;
  EXPECT_EQ(ModDNS::addUserIDToConnectionString("", empty), " ;User ID=");
}

TEST(AddPasswordToConnectionString, AfterTheUserGivesBothWithTheirBlanks) {
  std::string s = "DSN=x";
  ModDNS::addUserIDToConnectionString("sa", s);
  EXPECT_EQ(ModDNS::addPasswordToConnectionString("pw", s), "DSN=x ;User ID=sa ;Password=pw");
  EXPECT_EQ(s, "DSN=x ;User ID=sa ;Password=pw");
}

TEST(AddPasswordToConnectionString, ExistingPasswordIsKept) {
  std::string s = "DSN=x;Password=old";
  EXPECT_EQ(ModDNS::addPasswordToConnectionString("new", s), "DSN=x;Password=old");
  EXPECT_EQ(s, "DSN=x;Password=old");
}

TEST(AddPasswordToConnectionString, KeyInSmallLettersStillGetsTheKeyAppended) {
  std::string s = "DSN=x;password=old";
  EXPECT_EQ(ModDNS::addPasswordToConnectionString("new", s), "DSN=x;password=old ;Password=new");
}

TEST_F(ConnectionStrings, OtherDriverOpensThroughOdbcAndTheEntryLosesItsPrefix) {
  std::string entry = "DSN=Sales | SQL Server";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kOdbc + "Sales");
  EXPECT_EQ(entry, "Sales | SQL Server");
  EXPECT_FALSE(ModDNS::isFileDriver);
}

TEST_F(ConnectionStrings, SecondCallWithTheSameVariableGivesAnEmptyName) {
  std::string entry = "DSN=Sales | SQL Server";
  ModDNS::getConncectionStringFromDSN(entry);
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kOdbc);
  EXPECT_EQ(entry, "Sales | SQL Server");
}

TEST_F(ConnectionStrings, AccessDataSourceOpensThroughJetOnItsMachineWideDBQ) {
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kJet + "D:\\stock.mdb");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
  EXPECT_TRUE(ModDNS::isFileDriver);
}

TEST_F(ConnectionStrings, AccessDataSourceOnTheNorthwindSample) {
  std::string entry = "DSN=Northwind | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::buildConnectionStringFromDSN(entry), kJet + northwindPath());
}

TEST_F(ConnectionStrings, FoxProDataSourceOpensThroughOdbc) {
  std::string entry = "DSN=Old | Microsoft FoxPro Driver";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kOdbc + "Old");
  EXPECT_TRUE(ModDNS::isFileDriver);
}

TEST_F(ConnectionStrings, DBaseDataSourceOpensThroughOdbc) {
  std::string entry = "DSN=Ledger | Microsoft dBase Driver (*.dbf)";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kOdbc + "Ledger");
  EXPECT_TRUE(ModDNS::isFileDriver);
}

TEST_F(ConnectionStrings, FlagFollowsEveryCall) {
  std::string access = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  std::string other = "DSN=Sales | PostgreSQL Unicode";
  ModDNS::buildConnectionStringFromDSN(access);
  ASSERT_TRUE(ModDNS::isFileDriver);
  ModDNS::buildConnectionStringFromDSN(other);
  EXPECT_FALSE(ModDNS::isFileDriver);
}

TEST_F(ConnectionStrings, AccessDataSourceWithoutDBQGivesTheBareJetPrefix) {
  std::string entry = "DSN=NoFile | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kJet);
}

TEST_F(ConnectionStrings, AccessDataSourceUnknownToTheMachineGivesTheBareJetPrefix) {
  std::string entry = "DSN=Elsewhere | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kJet);
}

TEST_F(ConnectionStrings, PerUserAccessDataSourceIsNotReadAndGivesTheBareJetPrefix) {
  config_.writeUserOdbcIni({{"Private", kAccessDriver, {{"DBQ", northwindPath()}}}});
  std::string entry = "DSN=Private | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kJet);
}

TEST_F(ConnectionStrings, AccessWordInSmallLettersIsAnOrdinaryOdbcSource) {
  std::string entry = "DSN=Stock | microsoft access driver";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(entry), kOdbc + "Stock");
}

TEST_F(ConnectionStrings, EntryWithoutPrefixOrBarGivesTheOdbcPrefixAlone) {
  std::string noPrefix = "Sales | SQL Server";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(noPrefix), kOdbc);
  EXPECT_EQ(noPrefix, "Sales | SQL Server");
  std::string noBar = "DSN=Sales";
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(noBar), kOdbc);
  EXPECT_EQ(noBar, "Sales");
  std::string empty;
  EXPECT_EQ(ModDNS::getConncectionStringFromDSN(empty), kOdbc);
}

TEST(GetFileDSNConnectionString, NonAccessFileDriverGivesTheOdbcString) {
  EXPECT_EQ(ModDNS::getFileDSNConnectionString("Old", "Microsoft FoxPro Driver"), kOdbc + "Old");
  EXPECT_EQ(ModDNS::getFileDSNConnectionString("", "dBase"), kOdbc);
}

TEST_F(ConnectionStrings, FileDriverFunctionReadsDBQForAccess) {
  EXPECT_EQ(ModDNS::getFileDSNConnectionString("Stock", "Microsoft Access Driver (*.mdb)"),
            kJet + "D:\\stock.mdb");
}
