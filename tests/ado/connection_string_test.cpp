#include <gtest/gtest.h>

#include "platform/ado/ConnectionString.h"

using varsentix::ado::detail::ConnectionString;

TEST(ConnectionString, KeysAreCaseInsensitiveAndBlanksAroundThemIgnored) {
  auto cs = ConnectionString::parse(" Provider = SQLite ; data source= /tmp/a b.sqlite ;");
  EXPECT_EQ(cs.get("PROVIDER").value(), "SQLite");
  EXPECT_EQ(cs.get("Data Source").value(), "/tmp/a b.sqlite");
  EXPECT_FALSE(cs.get("User ID").has_value());
  EXPECT_EQ(cs.getOr("Password", "none"), "none");
}

TEST(ConnectionString, QuotedValuesMayHoldSemicolonsAndDoubledQuotes) {
  auto cs = ConnectionString::parse("Password='a;b''c';User ID=\"x\"\"y\";Mode=Read");
  EXPECT_EQ(cs.get("Password").value(), "a;b'c");
  EXPECT_EQ(cs.get("User ID").value(), "x\"y");
  EXPECT_EQ(cs.get("Mode").value(), "Read");
}

TEST(ConnectionString, BracedValuesAreKeptWholeWithTheirBraces) {
  auto cs = ConnectionString::parse("Driver={SQLite3 ODBC; Driver};Database=/tmp/x.db");
  EXPECT_EQ(cs.get("Driver").value(), "{SQLite3 ODBC; Driver}");
  EXPECT_EQ(cs.get("database").value(), "/tmp/x.db");
}

TEST(ConnectionString, ALaterDuplicateWinsAndPairsKeepTheirOrder) {
  auto cs = ConnectionString::parse("DSN=a;dsn=b;Uid=u");
  EXPECT_EQ(cs.get("DSN").value(), "b");
  ASSERT_EQ(cs.pairs().size(), 3u);
  EXPECT_EQ(cs.pairs()[2].first, "Uid");
}

TEST(ConnectionString, DoubledEqualsSignStandsForOneInAKey) {
  auto cs = ConnectionString::parse("a==b=c;Empty=;");
  EXPECT_EQ(cs.get("a=b").value(), "c");
  EXPECT_EQ(cs.get("Empty").value(), "");
}

TEST(ConnectionString, EmptyTextHasNoPairs) {
  EXPECT_TRUE(ConnectionString::parse("").pairs().empty());
  EXPECT_TRUE(ConnectionString::parse(" ;; ").pairs().empty());
}

#include "platform/ado/Provider.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/vb/VBError.h"

namespace {

using namespace varsentix;
using ado::detail::chosenProviderName;

int openedByTestProvider = 0;
std::string userSeen, passwordSeen;

std::unique_ptr<ado::detail::ProviderSession> refuseAfterRecording(
    const ConnectionString& /*connection*/, const std::string& user, const std::string& password) {
  ++openedByTestProvider;
  userSeen = user;
  passwordSeen = password;
  throw vb::VBError(vb::errnum::ProviderError, "recorded", "Test");
}

const ado::detail::ProviderRegistrar testRegistrar("Test.Recorder", &refuseAfterRecording);

}  // namespace

TEST(ProviderChoice, TheProviderKeyChoosesElseOdbcStringsGoToMsdasqlElseSqlite) {
  EXPECT_EQ(chosenProviderName(ConnectionString::parse("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.mdb")),
            "Microsoft.Jet.OLEDB.4.0");
  EXPECT_EQ(chosenProviderName(ConnectionString::parse("DSN=Northwind;Uid=a")), "MSDASQL");
  EXPECT_EQ(chosenProviderName(ConnectionString::parse("driver={SQLite3};Database=x")), "MSDASQL");
  EXPECT_EQ(chosenProviderName(ConnectionString::parse("Data Source=/tmp/x.sqlite")), "SQLite");
  EXPECT_EQ(chosenProviderName(ConnectionString::parse("Provider=MSDASQL;DSN=x")), "MSDASQL");
}

TEST(ProviderChoice, ProviderNamesAreFoundWithoutRegardToCaseAndGetTheUserAndPassword) {
  openedByTestProvider = 0;
  auto cn = vb::Ref<ado::Connection>::make();
  try {
    cn->Open("provider=TEST.RECORDER;User ID=u", "someone", "secret");
    FAIL() << "the test provider always refuses";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.description(), "recorded");
  }
  EXPECT_EQ(openedByTestProvider, 1);
  EXPECT_EQ(userSeen, "someone");
  EXPECT_EQ(passwordSeen, "secret");
  EXPECT_EQ(cn->State(), ado::adStateClosed);
}
