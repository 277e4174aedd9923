// The error log: getErrorLogs composes one side's three message buffers behind fixed labels.
#include <gtest/gtest.h>

#include <fstream>

#include "ControlTestSupport.h"
#include "support/TempDir.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

using testing::OdbcDataSourceFixture;
using testing::TempDir;

const std::string kEmptyLog = "Connection issues =Database issues General Issues ";

// The failure the record-set layer reports for a connection string, as "number description".
std::string providerFailure(const std::string& connectionString) {
  ado::Connection connection;
  try {
    connection.Open(connectionString, "", "", -1);
  } catch (const vb::VBError& e) {
    EXPECT_NE(e.number(), 0);
    EXPECT_FALSE(e.description().empty());
    return std::to_string(e.number()) + " " + e.description();
  }
  ADD_FAILURE() << "the connection opened: " << connectionString;
  return "";
}

// What one failed openDatabaseConnection leaves in the connection message: a blank, the
// failure, message #2 with the connection string, " ||" and the manager's "||".
std::string failedConnectionOutcome(const std::string& connectionString) {
  return " " + providerFailure(connectionString) +
         " #2 Error occurred when attempting to open connection using the following connection "
         "string  " +
         connectionString + " ||||";
}

TEST(ControlErrorLog, FreshControlLogsOnlyTheThreeLabels) {
  Varsenti control;
  EXPECT_EQ(control.getErrorLogs(true), "Connection issues =Database issues General Issues ");
  EXPECT_EQ(control.getErrorLogs(false), "Connection issues =Database issues General Issues ");
}

TEST(ControlErrorLog, TheThreeMessagesFollowTheirLabelsWithNothingBetween) {
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->setReturnConnectionMessage(" conn||");
  master->setReturnSQLMessage(" sql ||");
  master->setReturnMessage(" general ||");
  EXPECT_EQ(control.getErrorLogs(true),
            "Connection issues = conn||Database issues  sql ||General Issues  general ||");
  EXPECT_EQ(control.getErrorLogs(false), kEmptyLog);
}

TEST(ControlErrorLog, FalseReadsTheSourceSide) {
  Varsenti control;
  control.getSourceDataManager()->setReturnMessage("S");
  control.getMasterDataManager()->setReturnMessage("M");
  EXPECT_EQ(control.getErrorLogs(false), "Connection issues =Database issues General Issues S");
  EXPECT_EQ(control.getErrorLogs(true), "Connection issues =Database issues General Issues M");
}

TEST(ControlErrorLog, ReadsTheManagerTheHostPutInPlace) {
  Varsenti control;
  auto mine = vb::Ref<clsDBManager>::make();
  mine->setReturnSQLMessage("x");
  control.setSourceDataManager(mine);
  EXPECT_EQ(control.getErrorLogs(false), "Connection issues =Database issues xGeneral Issues ");
  control.swapValues();
  EXPECT_EQ(control.getErrorLogs(true), "Connection issues =Database issues xGeneral Issues ");
  EXPECT_EQ(control.getErrorLogs(false), kEmptyLog);
}

TEST(ControlErrorLog, MasterSideAfterAFailedConnectionToAMissingSQLiteFile) {
  TempDir dir;
  const std::string connectionString =
      "Provider=SQLite;Data Source=" + dir.file("no-such-folder") + "/chinook.db";
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->initializeValues();
  master->setConnectionString(connectionString);
  master->openDatabaseConnection();

  const std::string log = control.getErrorLogs(true);
  EXPECT_EQ(log, "Connection issues =" + failedConnectionOutcome(connectionString) +
                     "Database issues General Issues ");
  // The same text, spelt out around the provider's own words.
  EXPECT_EQ(log.rfind("Connection issues = ", 0), 0u);
  EXPECT_NE(log.find(" #2 Error occurred when attempting to open connection using the following "
                     "connection string  Provider=SQLite;Data Source="),
            std::string::npos);
  const std::string tail = "/chinook.db ||||Database issues General Issues ";
  ASSERT_GT(log.size(), tail.size());
  EXPECT_EQ(log.substr(log.size() - tail.size()), tail);
  EXPECT_EQ(control.getErrorLogs(false), kEmptyLog);
}

TEST(ControlErrorLog, SourceSideAfterAFailedConnectionToAnUnknownDataSource) {
  OdbcDataSourceFixture noDataSources({});
  const std::string connectionString =
      "Provider=MSDASQL;Persist Security Info=False;Data Source=VarsentiXNoSuchDataSource";
  Varsenti control;
  vb::Ref<clsDBManager> source = control.getSourceDataManager();
  source->initializeValues();
  source->setConnectionString(connectionString);
  source->openDatabaseConnection();

  const std::string log = control.getErrorLogs(false);
  EXPECT_EQ(log, "Connection issues =" + failedConnectionOutcome(connectionString) +
                     "Database issues General Issues ");
  EXPECT_NE(log.find(" #2 Error occurred when attempting to open connection using the following "
                     "connection string  Provider=MSDASQL;Persist Security Info=False;Data "
                     "Source=VarsentiXNoSuchDataSource ||||Database issues General Issues "),
            std::string::npos);
  EXPECT_EQ(control.getErrorLogs(true), kEmptyLog);
}

TEST(ControlErrorLog, TwoFailedConnectionsLeaveBothOutcomesInTheLog) {
  TempDir dir;
  const std::string connectionString = "Provider=SQLite;Data Source=" + dir.file("gone") + "/x.db";
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->setConnectionString(connectionString);
  master->openDatabaseConnection();
  master->openDatabaseConnection();
  const std::string once = failedConnectionOutcome(connectionString);
  EXPECT_EQ(control.getErrorLogs(true),
            "Connection issues =" + once + once + "Database issues General Issues ");
}

TEST(ControlErrorLog, ASuccessfulConnectionIsLoggedAsSuccessfullyCompleted) {
  TempDir dir;
  std::ofstream(dir.file("fresh.db")) << "";  // an empty file is an empty SQLite database
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->setConnectionString("Provider=SQLite;Data Source=" + dir.file("fresh.db"));
  master->openDatabaseConnection();
  EXPECT_EQ(control.getErrorLogs(true),
            "Connection issues = Successfully Completed||Database issues General Issues ");
}

TEST(ControlErrorLog, ClearedMessagesLeaveOnlyTheLabels) {
  TempDir dir;
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->setConnectionString("Provider=SQLite;Data Source=" + dir.file("nope") + "/x.db");
  master->openDatabaseConnection();
  ASSERT_NE(control.getErrorLogs(true), kEmptyLog);
  master->clearMessages();
  EXPECT_EQ(control.getErrorLogs(true), kEmptyLog);
}

}  // namespace
}  // namespace varsentix
