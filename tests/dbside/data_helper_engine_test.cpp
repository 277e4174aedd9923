// clsData against every engine: connections, record sets, outcome texts #1 to #4, closing.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "dbside/DbsideTestSupport.h"
#include "platform/ado/ConnectionString.h"
#include "dbside/EngineSupport.h"
#include "support/TempDir.h"
#include "varsentix/dbside/clsData.h"
#include "varsentix/dbside/clsDBManager.h"

using namespace varsentix::testing;
using varsentix::clsData;
namespace vb = varsentix::vb;
namespace ado = varsentix::ado;

namespace {

class DataHelper : public ::testing::TestWithParam<Engine> {
 protected:
  // A fresh database with one table items(id, name) of two rows.
  std::unique_ptr<TestDatabase> makeDatabase() {
    auto db = makeTestDatabase(GetParam());
    if (db) {
      db->exec("CREATE TABLE items (id INTEGER PRIMARY KEY, name VARCHAR(40))");
      db->exec("INSERT INTO items (id, name) VALUES (1, 'one')");
      db->exec("INSERT INTO items (id, name) VALUES (2, 'two')");
    }
    return db;
  }
  // The failure a direct open of this connection string raises.
  static vb::VBError connectFailure(const std::string& cs) {
    auto failure = failureOf([&] { vb::Ref<ado::Connection>::make()->Open(cs, "", "", -1); });
    if (!failure) ADD_FAILURE() << "the connection string opened: " << cs;
    return failure.value_or(vb::VBError(0, "", ""));
  }
  // The failure a direct open of this SQL raises on a connection of its own.
  static vb::VBError queryFailure(const std::string& cs, const std::string& sql) {
    auto connection = vb::Ref<ado::Connection>::make();
    connection->Open(cs);
    auto failure = failureOf([&] {
      vb::Ref<ado::Recordset>::make()->Open(sql, connection, ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
    });
    if (!failure) ADD_FAILURE() << "the query opened: " << sql;
    return failure.value_or(vb::VBError(0, "", ""));
  }
};

#define FRESH_DATABASE(db)                                   \
  auto db = makeDatabase();                                  \
  if (!db) GTEST_SKIP() << "engine not available: " << engineName(GetParam())

TEST_P(DataHelper, ConnectionOpensAndReportsSuccess) {
  FRESH_DATABASE(db);
  clsData data;
  EXPECT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  EXPECT_EQ(data.accessCn()->State(), ado::adStateOpen);
  EXPECT_TRUE(data.getConnection() == data.accessCn());
}

TEST_P(DataHelper, AnOpenConnectionIsNotReopened) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  auto connection = data.accessCn();
  // Even a string that could not open anything: the open connection is kept as it is.
  EXPECT_EQ(data.getAccessConnections("Provider=MSDASQL;Data Source=VarsentixNoSuchDataSource"),
            "Successfully Completed");
  EXPECT_TRUE(data.accessCn() == connection);
  EXPECT_EQ(connection->ConnectionString(), db->connectionString());
  data.getAccessConnection("Provider=MSDASQL;Data Source=VarsentixNoSuchDataSource");
  EXPECT_EQ(data.accessCn()->State(), ado::adStateOpen);
}

// A failing connection's message, and the side's description, name the connection string with
// every password hidden: quoted with ';' inside, braced, Pwd, Password and Jet's own key.
TEST_P(DataHelper, FailingConnectionMessageHidesEveryPassword) {
  FRESH_DATABASE(db);
  const std::string cs = withConnectionValue(unopenableConnectionString(*db), "Pwd", "\"Wrong1;S3cretTail\"") +
                         ";Password='Wrong2;Tail2';PWD={Wrong3;Tail3};Jet OLEDB:Database Password=Clear4";
  clsData data;
  const std::string outcome = data.getAccessConnections(cs);
  ASSERT_NE(outcome.find(" #2 Error occurred"), std::string::npos) << outcome;
  varsentix::clsDBManager side;
  side.initializeValues();
  side.setConnectionString(cs);
  side.openDatabaseConnection();
  const std::string log = side.getReturnConnectionMessage();
  ASSERT_NE(log.find(" #2 Error occurred"), std::string::npos) << log;
  for (const std::string& text : {outcome, log, side.describeForDiagnostics()}) {
    for (const char* secret : {"Wrong1", "S3cretTail", "Wrong2", "Tail2", "Wrong3", "Tail3", "Clear4"})
      EXPECT_EQ(text.find(secret), std::string::npos) << secret << " shown in: " << text;
    EXPECT_NE(text.find("Jet OLEDB:Database Password=***"), std::string::npos) << text;
  }
}

TEST_P(DataHelper, FailingConnectionGivesMessageTwo) {
  FRESH_DATABASE(db);
  const std::string cs = unopenableConnectionString(*db);
  const auto expected = connectFailure(cs);
  clsData data;
  EXPECT_EQ(data.getAccessConnections(cs),
            numberAndDescription(expected) +
                " #2 Error occurred when attempting to open connection using the following connection string  " + varsentix::ado::detail::ConnectionString::maskPasswords(cs) +
                " ||");
  EXPECT_EQ(data.accessCn()->State(), ado::adStateClosed);
  EXPECT_NE(expected.number(), 0);
  // Without an outcome text the failure reaches the caller.
  auto failure = failureOf([&] { data.getAccessConnection(cs); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), expected.number());
}

TEST_P(DataHelper, FirstRecordSetOpensWithClientCursorDynamicOptimistic) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  EXPECT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  auto rs = data.rsAccess();
  EXPECT_EQ(rs->State(), ado::adStateOpen);
  EXPECT_EQ(rs->CursorLocation(), ado::adUseClient);
  EXPECT_EQ(rs->LockType(), ado::adLockOptimistic);
  EXPECT_EQ(rs->getFields().Count(), 2);
  EXPECT_FALSE(rs->isEOF());
}

TEST_P(DataHelper, SecondRecordSetKeepsTheDefaultCursorLocation) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  const auto defaultLocation = vb::Ref<ado::Recordset>::make()->CursorLocation();
  EXPECT_EQ(data.getAccessRecordsFromSQL2("Select * From [items]"), "Successfully Completed");
  EXPECT_EQ(data.rsAccess2()->State(), ado::adStateOpen);
  EXPECT_EQ(data.rsAccess2()->CursorLocation(), defaultLocation);
  EXPECT_EQ(data.rsAccess2()->LockType(), ado::adLockOptimistic);
  // The first record set is untouched.
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateClosed);
}

TEST_P(DataHelper, FailingQueriesGiveMessagesThreeAndFour) {
  FRESH_DATABASE(db);
  const std::string sql = "Select * From [no_such_table]";
  const auto expected = queryFailure(db->connectionString(), sql);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  EXPECT_EQ(data.getAccessRecordsFromSQL(sql),
            numberAndDescription(expected) +
                " #3 Error occured when attempting to open table using the following SQLSelect * From [no_such_table] ||");
  EXPECT_EQ(data.getAccessRecordsFromSQL2(sql),
            numberAndDescription(expected) +
                " #4 Error occured when attempting to open table using the following SQLSelect * From [no_such_table] ||");
  EXPECT_TRUE(failureOf([&] { data.getAccessRecords(sql); }));
  EXPECT_TRUE(failureOf([&] { data.getAccessRecords2(sql); }));
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateClosed);
}

TEST_P(DataHelper, SecondRecordSetIsReleasedEvenWhenTheNewOpenFails) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL2("Select * From [items]"), "Successfully Completed");
  std::weak_ptr<ado::Recordset> previous = data.rsAccess2().shared();
  EXPECT_NE(data.getAccessRecordsFromSQL2("Select * From [no_such_table]"), "Successfully Completed");
  EXPECT_TRUE(previous.expired());
  EXPECT_EQ(data.rsAccess2()->State(), ado::adStateClosed);
}

TEST_P(DataHelper, FirstRecordSetAlreadyOpenFailsWithMessageThree) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  const std::string second = data.getAccessRecordsFromSQL("Select * From [items]");
  EXPECT_EQ(second.substr(0, 5), "3705 ");
  EXPECT_NE(second.find(" #3 Error occured when attempting to open table using the following SQLSelect * From [items] ||"),
            std::string::npos);
  data.closeRecordSet();
  EXPECT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
}

TEST_P(DataHelper, TableOpensByNameAndAMissingTableGivesMessageOne) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  EXPECT_EQ(data.openAccessTables("items"), "Successfully Completed");
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateOpen);
  EXPECT_EQ(data.rsAccess()->getFields().Count(), 2);
  data.closeRecordSet();
  auto expected = failureOf([&] {
    vb::Ref<ado::Recordset>::make()->Open("no_such_table", data.accessCn(), ado::adOpenDynamic, ado::adLockOptimistic,
                                          ado::adCmdTable);
  });
  ASSERT_TRUE(expected);
  EXPECT_EQ(data.openAccessTables("no_such_table"),
            numberAndDescription(*expected) +
                " #1 Error Occurred when attempting to open the following table: no_such_table  ||");
  EXPECT_TRUE(failureOf([&] { data.openAccessTable("no_such_table"); }));
}

TEST_P(DataHelper, ClosingAnAlreadyClosedRecordSetIsANoOp) {
  FRESH_DATABASE(db);
  clsData data;
  data.closeRecordSet();
  data.CloseAccess2();
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  data.closeRecordSet();
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateClosed);
  data.closeRecordSet();
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateClosed);
  data.CloseAccess2();
  EXPECT_EQ(data.accessCn()->State(), ado::adStateOpen);
}

TEST_P(DataHelper, CloseAccessClosesRecordSetAndConnectionButNotTwice) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  data.CloseAccess();
  EXPECT_EQ(data.rsAccess()->State(), ado::adStateClosed);
  EXPECT_EQ(data.accessCn()->State(), ado::adStateClosed);
  // The connection is closed without testing its state.
  auto failure = failureOf([&] { data.CloseAccess(); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 3704);
  // And a closed connection opens again.
  EXPECT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
}

TEST_P(DataHelper, CloseAllClosesAndReleasesTheMembers) {
  FRESH_DATABASE(db);
  clsData data;
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL2("Select * From [items]"), "Successfully Completed");
  data.getOracleConnection(db->connectionString());
  data.getOrcaleRecords("Select * From [items]");
  auto connection = data.accessCn();
  auto first = data.rsAccess();
  auto oracle = data.rsOracle();
  std::weak_ptr<ado::Recordset> second = data.rsAccess2().shared();
  data.closeAll();
  EXPECT_EQ(connection->State(), ado::adStateClosed);
  EXPECT_EQ(first->State(), ado::adStateClosed);
  EXPECT_EQ(oracle->State(), ado::adStateClosed);
  EXPECT_TRUE(second.expired());
  // Released: the next use creates new, closed objects.
  EXPECT_FALSE(data.accessCn() == connection);
  EXPECT_EQ(data.accessCn()->State(), ado::adStateClosed);
  EXPECT_FALSE(data.rsAccess() == first);
  EXPECT_FALSE(data.rsOracle() == oracle);
  // Closing everything twice is harmless.
  data.closeAll();
}

TEST_P(DataHelper, OracleMembersAreASeparateConnection) {
  FRESH_DATABASE(db);
  clsData data;
  data.getOracleConnection(db->connectionString());
  data.getOrcaleRecords("Select * From [items]");
  EXPECT_EQ(data.rsOracle()->State(), ado::adStateOpen);
  EXPECT_EQ(data.rsOracle()->CursorLocation(), ado::adUseClient);
  EXPECT_EQ(data.accessCn()->State(), ado::adStateClosed);
  clsData other;
  auto failure = failureOf([&] { other.getOracleConnection(unopenableConnectionString(*db)); });
  ASSERT_TRUE(failure);
  EXPECT_NE(failure->number(), 3705);
}

TEST_P(DataHelper, ConnectionCanBeReplaced) {
  FRESH_DATABASE(db);
  clsData data;
  auto connection = vb::Ref<ado::Connection>::make();
  connection->Open(db->connectionString());
  data.setConnection(connection);
  EXPECT_TRUE(data.getConnection() == connection);
  EXPECT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  data.setConnection(nullptr);
  EXPECT_FALSE(data.getConnection() == connection);
  EXPECT_EQ(data.getConnection()->State(), ado::adStateClosed);
}

TEST_P(DataHelper, SaveToXmlWritesTheFirstRecordSetAndIgnoresFailures) {
  FRESH_DATABASE(db);
  TempDir dir;
  clsData data;
  data.saveRecordsToXML(dir.file("closed.xml"));  // a closed record set: ignored
  EXPECT_FALSE(std::filesystem::exists(dir.file("closed.xml")));
  ASSERT_EQ(data.getAccessConnections(db->connectionString()), "Successfully Completed");
  ASSERT_EQ(data.getAccessRecordsFromSQL("Select * From [items]"), "Successfully Completed");
  data.saveRecordsToXML(dir.file("items.xml"));
  ASSERT_TRUE(std::filesystem::exists(dir.file("items.xml")));
  const auto size = std::filesystem::file_size(dir.file("items.xml"));
  data.saveRecordsToXML(dir.file("items.xml"));  // exists: not overwritten, no failure
  EXPECT_EQ(std::filesystem::file_size(dir.file("items.xml")), size);
  data.saveRecordsToXML(dir.file("no-such-folder/items.xml"));
  EXPECT_FALSE(std::filesystem::exists(dir.file("no-such-folder")));
}

INSTANTIATE_TEST_SUITE_P(Engines, DataHelper, ::testing::ValuesIn(allEngines()), EngineParamName());

}  // namespace

TEST(DataHelperWithoutDatabase, MembersAreCreatedEmptyOnFirstUse) {
  clsData data;
  ASSERT_FALSE(data.accessCn().isNothing());
  EXPECT_EQ(data.accessCn()->State(), ado::adStateClosed);
  EXPECT_FALSE(data.rsAccess().isNothing());
  EXPECT_FALSE(data.rsAccess2().isNothing());
  EXPECT_FALSE(data.rsOracle().isNothing());
  auto first = data.rsAccess();
  EXPECT_TRUE(data.rsAccess() == first);
  data.rsAccess() = nullptr;
  EXPECT_FALSE(data.rsAccess().isNothing());
  EXPECT_FALSE(data.rsAccess() == first);
}

TEST(DataHelperWithoutDatabase, UnknownDataSourceGivesMessageTwo) {
  const std::string cs = unknownDsnConnectionString();
  auto expected = failureOf([&] { vb::Ref<ado::Connection>::make()->Open(cs, "", "", -1); });
  ASSERT_TRUE(expected);
  clsData data;
  EXPECT_EQ(data.getAccessConnections(cs),
            numberAndDescription(*expected) +
                " #2 Error occurred when attempting to open connection using the following connection string  " + varsentix::ado::detail::ConnectionString::maskPasswords(cs) +
                " ||");
}

TEST(DataHelperWithoutDatabase, QueriesOnAClosedConnectionGiveTheirMessages) {
  clsData data;
  const std::string three = data.getAccessRecordsFromSQL("Select * From [T]");
  EXPECT_EQ(three.substr(three.find(" #3")),
            " #3 Error occured when attempting to open table using the following SQLSelect * From [T] ||");
  EXPECT_NE(three.substr(0, three.find(" #3")).find(' '), std::string::npos);
  const std::string one = data.openAccessTables("T");
  EXPECT_EQ(one.substr(one.find(" #1")), " #1 Error Occurred when attempting to open the following table: T  ||");
}
