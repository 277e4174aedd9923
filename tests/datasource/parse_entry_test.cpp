// Taking a data-source entry apart: its name, its driver, whether the driver is file based.
#include <gtest/gtest.h>

#include <string>

#include "varsentix/datasource/ModDNS.h"

using namespace varsentix;

TEST(ParseDSNName, GivesTheNameAndDropsThePrefixFromTheCallersText) {
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "Stock");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
}

TEST(ParseDSNName, SecondCallOnTheSameTextGivesEmptyAndLeavesIt) {
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  ModDNS::parseDSNName(entry);
  EXPECT_EQ(ModDNS::parseDSNName(entry), "");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
}

TEST(ParseDSNName, WithoutABarTheNameIsEmptyButThePrefixIsGone) {
  std::string entry = "DSN=Sales";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "");
  EXPECT_EQ(entry, "Sales");
}

TEST(ParseDSNName, WithoutThePrefixTheNameIsEmptyAndTheTextUnchanged) {
  std::string entry = "Sales | SQL Server";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "");
  EXPECT_EQ(entry, "Sales | SQL Server");
}

TEST(ParseDSNName, PrefixInSmallLettersIsNotThePrefix) {
  std::string entry = "dsn=Sales | SQL Server";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "");
  EXPECT_EQ(entry, "dsn=Sales | SQL Server");
}

TEST(ParseDSNName, PrefixFoundElsewhereStillDropsTheFirstFourCharacters) {
  std::string entry = "xxDSN=Sales | SQL Server";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "N=Sales");
  EXPECT_EQ(entry, "N=Sales | SQL Server");
}

TEST(ParseDSNName, BlanksAroundTheNameAndTheRestAreTrimmed) {
  std::string entry = "DSN=  My Data  |  SQLite3  ";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "My Data");
  EXPECT_EQ(entry, "My Data  |  SQLite3");
}

TEST(ParseDSNName, ClosingEntryOfTheListGivesAnEmptyName) {
  std::string entry = "DSN=  |    ";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "");
  EXPECT_EQ(entry, "|");
}

TEST(ParseDriverName, GivesTheTextAfterTheBar) {
  const std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(ModDNS::parseDriverName(entry), "Microsoft Access Driver (*.mdb)");
  EXPECT_EQ(entry, "DSN=Stock | Microsoft Access Driver (*.mdb)");
}

TEST(ParseDriverName, WithoutABarIsEmpty) {
  EXPECT_EQ(ModDNS::parseDriverName("DSN=Stock"), "");
  EXPECT_EQ(ModDNS::parseDriverName(""), "");
}

TEST(ParseDriverName, EverythingAfterTheFirstBarTrimmed) {
  EXPECT_EQ(ModDNS::parseDriverName("DSN=a | b | c "), "b | c");
  EXPECT_EQ(ModDNS::parseDriverName("DSN= | "), "");
  EXPECT_EQ(ModDNS::parseDriverName("Stock|SQLite3"), "SQLite3");
}

TEST(IsFileBasedDriver, AccessFoxAndDBaseInExactCase) {
  EXPECT_TRUE(ModDNS::isFileBasedDriver("Microsoft Access Driver (*.mdb)"));
  EXPECT_TRUE(ModDNS::isFileBasedDriver("Microsoft FoxPro Driver"));
  EXPECT_TRUE(ModDNS::isFileBasedDriver("dBase"));
  EXPECT_TRUE(ModDNS::isFileBasedDriver("Microsoft dBase Driver (*.dbf)"));
  EXPECT_TRUE(ModDNS::isFileBasedDriver("xxdBasexx"));
}

TEST(IsFileBasedDriver, WordsInOtherLetterCaseAreNotFileBased) {
  EXPECT_FALSE(ModDNS::isFileBasedDriver("microsoft access driver (*.mdb)"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver("ACCESS"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver("DBASE"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver("foxpro"));
}

TEST(IsFileBasedDriver, OtherDriversAreNot) {
  EXPECT_FALSE(ModDNS::isFileBasedDriver("SQLite3"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver("PostgreSQL Unicode"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver("SQL Server"));
  EXPECT_FALSE(ModDNS::isFileBasedDriver(""));
}

TEST(ParseDSNName, BarInsideTheNameEndsTheNameThere) {
  std::string entry = "DSN=Left|Right | SQLite3";
  EXPECT_EQ(ModDNS::parseDSNName(entry), "Left");
  EXPECT_EQ(ModDNS::parseDriverName(entry), "Right | SQLite3");
}
