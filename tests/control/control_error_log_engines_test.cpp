// The error log of a side that connected to a real engine and then failed a query.
#include <gtest/gtest.h>

#include "support/Engines.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

using testing::Engine;

class ControlErrorLogOnEngines : public ::testing::TestWithParam<Engine> {};

// "number description" of opening sql on a connection of its own.
std::string queryFailure(const std::string& connectionString, const std::string& sql) {
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(connectionString, "", "", -1);
  auto records = vb::Ref<ado::Recordset>::make();
  try {
    records->Open(sql, connection, ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
  } catch (const vb::VBError& e) {
    return std::to_string(e.number()) + " " + e.description();
  }
  ADD_FAILURE() << "the query ran: " << sql;
  return "";
}

TEST_P(ControlErrorLogOnEngines, ConnectionSucceedsAndAFailedQueryIsLoggedUnderDatabaseIssues) {
  VARSENTIX_TEST_DATABASE(db, GetParam());
  const std::string sql = "Select * From [NoSuchTable]";
  const std::string failure = queryFailure(db->connectionString(), sql);
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  master->setConnectionString(db->connectionString());
  master->openDatabaseConnection();
  master->openDataBaseRecordsFromQuery(sql);
  EXPECT_EQ(control.getErrorLogs(true),
            "Connection issues = Successfully Completed||Database issues  " + failure +
                " #3 Error occured when attempting to open table using the following SQL"
                "Select * From [NoSuchTable] || ||General Issues ");
  EXPECT_EQ(control.getErrorLogs(false), "Connection issues =Database issues General Issues ");
}

INSTANTIATE_TEST_SUITE_P(Engines, ControlErrorLogOnEngines, ::testing::ValuesIn(testing::allEngines()),
                         testing::EngineParamName());

}  // namespace
}  // namespace varsentix
