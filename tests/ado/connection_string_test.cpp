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

TEST(ConnectionString, BracedValuesEndAtTheFirstBraceNotDoubled) {
  auto cs = ConnectionString::parse("Pwd={a}}b;c};Uid=u");
  EXPECT_EQ(cs.get("Pwd").value(), "{a}}b;c}");
  EXPECT_EQ(cs.get("Uid").value(), "u");
  ASSERT_EQ(cs.pairs().size(), 2u);
}

TEST(ConnectionString, QuotedValuesReadBackAsWritten) {
  for (const std::string value :
       {"plain", "", "/tmp/{x}.sqlite", "{x}.sqlite", "=a.sqlite", "a;Mode=x.sqlite", "it's \"both\"; kinds",
        "\"", "'", " blank at both ends ", "{a}", "x==y", "tab\there", "}"}) {
    const std::string text = "Data Source=" + ConnectionString::quoteValue(value) + ";Mode=Read";
    auto cs = ConnectionString::parse(text);
    EXPECT_EQ(cs.get("Data Source").value(), value) << text;
    EXPECT_EQ(cs.get("Mode").value(), "Read") << text;
    EXPECT_EQ(cs.pairs().size(), 2u) << text;
  }
  EXPECT_EQ(ConnectionString::quoteValue("C:\\db\\a.mdb"), "C:\\db\\a.mdb");  // nothing to quote
  EXPECT_EQ(ConnectionString::quoteValue("a;b"), "\"a;b\"");
  EXPECT_EQ(ConnectionString::quoteValue("say \"hi\""), "\"say \"\"hi\"\"\"");
}

TEST(ConnectionString, EveryFormOfPasswordIsMasked) {
  const std::string cases[][2] = {
      {"DSN=x;Pwd=secret;Uid=u", "DSN=x;Pwd=***;Uid=u"},
      {"DSN=x ;User ID=sa ;Password=pw", "DSN=x ;User ID=sa ;Password=***"},
      {"DSN=x;PASSWORD = pw ;Uid=u", "DSN=x;PASSWORD = *** ;Uid=u"},
      {"Pwd=\"S3cret;S3cretTail\";Uid=u", "Pwd=***;Uid=u"},
      {"Pwd='a;b''c;d';Uid=u", "Pwd=***;Uid=u"},
      {"Pwd={a;b}}c;d};Uid=u", "Pwd=***;Uid=u"},
      {"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.mdb;Jet OLEDB:Database Password=topsecret",
       "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.mdb;Jet OLEDB:Database Password=***"},
      {"jet oledb:database password=x;  pass word = y", "jet oledb:database password=***;  pass word = ***"},
      {"Driver={PostgreSQL Unicode};Server=h;Some_Password=x;PwdHint=keep",
       "Driver={PostgreSQL Unicode};Server=h;Some_Password=***;PwdHint=keep"},
      {"Pwd=\"unclosed;Uid=u", "Pwd=***"},
      {"DSN=x;Pwd=", "DSN=x;Pwd="},
      {"DSN=x", "DSN=x"},
  };
  for (const auto& [given, shown] : cases) EXPECT_EQ(ConnectionString::maskPasswords(given), shown) << given;
}

TEST(ConnectionString, PasswordKeysAreKnownWithoutRegardToCaseOrBlanks) {
  EXPECT_TRUE(ConnectionString::isPasswordKey("PWD"));
  EXPECT_TRUE(ConnectionString::isPasswordKey(" Password "));
  EXPECT_TRUE(ConnectionString::isPasswordKey("Jet OLEDB:Database Password"));
  EXPECT_TRUE(ConnectionString::isPasswordKey("Jet OLEDB:New Database PASS WORD"));
  EXPECT_FALSE(ConnectionString::isPasswordKey("User ID"));
  EXPECT_FALSE(ConnectionString::isPasswordKey("PasswordHint"));
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
