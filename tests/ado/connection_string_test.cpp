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

TEST(ConnectionString, ModeReadWithoutWriteAsksForReadingOnly) {
  using varsentix::ado::detail::opensForReadingOnly;
  auto reads = [](const std::string& text) { return opensForReadingOnly(ConnectionString::parse(text)); };
  EXPECT_FALSE(reads("Provider=SQLite;Data Source=a.db"));
  EXPECT_TRUE(reads("Provider=SQLite;Data Source=a.db;Mode=Read"));
  EXPECT_TRUE(reads("mode = read ;Provider=SQLite"));
  EXPECT_TRUE(reads("Mode=Read|Share Deny None"));
  EXPECT_TRUE(reads("Mode=adModeRead"));
  EXPECT_TRUE(reads("Mode=1"));
  EXPECT_TRUE(reads("Mode=17"));  // adModeRead | adModeShareDenyNone
  EXPECT_FALSE(reads("Mode=3"));
  EXPECT_FALSE(reads("Mode=ReadWrite"));
  EXPECT_FALSE(reads("Mode=Read|Write"));
  EXPECT_FALSE(reads("Mode=Share Deny None"));
  EXPECT_FALSE(reads("Mode=Write;"));
  EXPECT_TRUE(reads("Mode=ReadWrite;Mode=Read"));  // a later duplicate wins
  EXPECT_FALSE(reads("Mode=99999999999999999999"));
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
