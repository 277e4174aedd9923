// The machine's ODBC data sources and the connection strings the control builds for hosts.
#include <gtest/gtest.h>

#include "ControlTestSupport.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

using testing::FixtureDataSource;
using testing::OdbcDataSourceFixture;

const std::string kJetPrefix = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
const std::string kOdbcPrefix = "Provider=MSDASQL;Persist Security Info=False;Data Source=";

template <class Call>
int32_t errorNumberOf(Call&& call) {
  try {
    call();
  } catch (const vb::VBError& e) {
    return e.number();
  }
  return 0;
}

TEST(ControlDataSources, TwoDataSourcesAreListedWithTheClosingEntry) {
  OdbcDataSourceFixture odbc({{"A", "D1", {}}, {"B", "D22", {}}});
  Varsenti control;
  EXPECT_EQ(control.getODBCConnectionCount(), 3);
  EXPECT_EQ(control.getODBCConnection(0), "");
  EXPECT_EQ(control.getODBCConnection(1), "DSN=A | D1");
  EXPECT_EQ(control.getODBCConnection(2), "DSN=B | D22");
  EXPECT_EQ(control.getODBCConnection(3), "DSN=" + std::string(1, ' ') + " | " + std::string(3, ' '));
}

TEST(ControlDataSources, WithoutDataSourcesTheListHoldsOnlyTheClosingEntry) {
  OdbcDataSourceFixture odbc({});
  Varsenti control;
  EXPECT_EQ(control.getODBCConnectionCount(), 1);
  EXPECT_EQ(control.getODBCConnection(0), "");
  EXPECT_EQ(control.getODBCConnection(1), "DSN= | ");
}

TEST(ControlDataSources, AnIndexOutsideTheListFailsTheCall) {
  OdbcDataSourceFixture odbc(std::vector<FixtureDataSource>{{"A", "D1", {}}});
  Varsenti control;
  ASSERT_EQ(control.getODBCConnectionCount(), 2);
  EXPECT_EQ(errorNumberOf([&] { control.getODBCConnection(3); }), 9);
  EXPECT_EQ(errorNumberOf([&] { control.getODBCConnection(-1); }), 9);
}

TEST(ControlDataSources, EveryNewControlRebuildsTheListForAllControls) {
  std::unique_ptr<Varsenti> first;
  {
    OdbcDataSourceFixture odbc({{"A", "D1", {}}, {"B", "D22", {}}});
    first = std::make_unique<Varsenti>();
    ASSERT_EQ(first->getODBCConnectionCount(), 3);
  }
  OdbcDataSourceFixture odbc(std::vector<FixtureDataSource>{{"Cee", "D4444", {}}});
  EXPECT_EQ(first->getODBCConnectionCount(), 3);  // nothing changes until a control is created
  Varsenti second;
  EXPECT_EQ(second.getODBCConnectionCount(), 2);
  EXPECT_EQ(second.getODBCConnection(1), "DSN=Cee | D4444");
  EXPECT_EQ(second.getODBCConnection(2), "DSN=" + std::string(3, ' ') + " | " + std::string(5, ' '));
  EXPECT_EQ(first->getODBCConnectionCount(), 2);  // the list is shared by every control
  EXPECT_EQ(first->getODBCConnection(1), "DSN=Cee | D4444");
}

TEST(ControlDataSources, GetDSNNameStripsThePrefixFromTheHostsVariable) {
  Varsenti control;
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(control.getDSNName(entry), "Stock");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
  EXPECT_EQ(control.getDSNName(entry), "");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
}

TEST(ControlDataSources, GetDriverNameLeavesTheHostsVariableAlone) {
  Varsenti control;
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(control.getDriverName(entry), "Microsoft Access Driver (*.mdb)");
  EXPECT_EQ(entry, "DSN=Stock | Microsoft Access Driver (*.mdb)");
  std::string noBar = "DSN=Stock";
  EXPECT_EQ(control.getDriverName(noBar), "");
}

TEST(ControlDataSources, AListedEntryTurnsIntoItsNameAndDriver) {
  OdbcDataSourceFixture odbc(std::vector<FixtureDataSource>{{"Sales", "Some Driver", {}}});
  Varsenti control;
  std::string entry = control.getODBCConnection(1);
  EXPECT_EQ(control.getDriverName(entry), "Some Driver");
  EXPECT_EQ(control.getDSNName(entry), "Sales");
}

TEST(ControlConnectionStrings, PathGivesTheJetProviderFollowedDirectlyByThePath) {
  Varsenti control;
  std::string path = "C:\\db\\a.mdb";
  EXPECT_EQ(control.getOLEDBConnectionFromPath(path, false), kJetPrefix + "C:\\db\\a.mdb");
  EXPECT_EQ(path, "C:\\db\\a.mdb");
  std::string untrimmed = " /data/with blank.mdb ";
  EXPECT_EQ(control.getOLEDBConnectionFromPath(untrimmed, false), kJetPrefix + " /data/with blank.mdb ");
}

TEST(ControlConnectionStrings, PathWithUseDSNIsReadAsADataSourceEntry) {
  Varsenti control;
  std::string entry = "DSN=Sales | SQL Server";
  EXPECT_EQ(control.getOLEDBConnectionFromPath(entry, true), kOdbcPrefix + "Sales");
  EXPECT_EQ(entry, "Sales | SQL Server");
}

TEST(ControlConnectionStrings, UserIDIsAppendedAfterABlankIntoTheHostsVariable) {
  Varsenti control;
  std::string s = "DSN=x";
  EXPECT_EQ(control.addUserIDToConnectionString("sa", s), "DSN=x ;User ID=sa");
  EXPECT_EQ(s, "DSN=x ;User ID=sa");
  EXPECT_EQ(control.addUserIDToConnectionString("bob", s), "DSN=x ;User ID=sa");
  EXPECT_EQ(s, "DSN=x ;User ID=sa");
}

TEST(ControlConnectionStrings, UserIDKeyInOtherLetterCaseDoesNotCount) {
  Varsenti control;
  std::string s = "DSN=x;user id=old";
  EXPECT_EQ(control.addUserIDToConnectionString("sa", s), "DSN=x;user id=old ;User ID=sa");
}

TEST(ControlConnectionStrings, PasswordFollowsTheUserID) {
  Varsenti control;
  std::string s = "DSN=x";
  control.addUserIDToConnectionString("sa", s);
  EXPECT_EQ(control.addPasswordToConnectionString("pw", s), "DSN=x ;User ID=sa ;Password=pw");
  EXPECT_EQ(s, "DSN=x ;User ID=sa ;Password=pw");
  EXPECT_EQ(control.addPasswordToConnectionString("other", s), "DSN=x ;User ID=sa ;Password=pw");
}

TEST(ControlConnectionStrings, AnODBCDataSourceGivesTheODBCProviderAndLosesItsPrefix) {
  Varsenti control;
  std::string entry = "DSN=Sales | SQL Server";
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kOdbcPrefix + "Sales");
  EXPECT_EQ(entry, "Sales | SQL Server");
  // The second call sees the changed variable: no "DSN=" any more, so no name.
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kOdbcPrefix);
}

TEST(ControlConnectionStrings, AnAccessDataSourceOpensItsFileThroughJet) {
  OdbcDataSourceFixture odbc(std::vector<FixtureDataSource>{{"Stock", "Microsoft Access Driver (*.mdb)", {"DBQ=D:\\stock.mdb"}}});
  Varsenti control;
  std::string entry = "DSN=Stock | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kJetPrefix + "D:\\stock.mdb");
  EXPECT_EQ(entry, "Stock | Microsoft Access Driver (*.mdb)");
}

TEST(ControlConnectionStrings, AnAccessDataSourceWithoutAPathGivesTheBareJetPrefix) {
  OdbcDataSourceFixture odbc({});
  Varsenti control;
  std::string entry = "DSN=Missing | Microsoft Access Driver (*.mdb)";
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kJetPrefix);
}

TEST(ControlConnectionStrings, AFoxProDataSourceGoesThroughODBC) {
  Varsenti control;
  std::string entry = "DSN=Old | Microsoft FoxPro Driver";
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kOdbcPrefix + "Old");
}

TEST(ControlConnectionStrings, AnEntryWithoutPrefixOrBarGivesTheBareODBCProvider) {
  Varsenti control;
  std::string entry = "Sales";
  EXPECT_EQ(control.getConncectionStringFromDSN(entry), kOdbcPrefix);
  EXPECT_EQ(entry, "Sales");
}

}  // namespace
}  // namespace varsentix
