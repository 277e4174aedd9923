// Jet SQL as the Access provider hands it to its in-memory database.
#include <gtest/gtest.h>

#include "jet/JetFixtures.h"
#include "platform/ado/providers/jet/JetLoader.h"
#include "platform/ado/providers/jet/JetSql.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado::detail;

namespace {

std::string date(const std::string& literal) {
  auto value = parseJetDateLiteral(literal);
  return value ? storedDateText(*value) : "<none>";
}

TEST(JetDateLiterals, IsoDates) {
  EXPECT_EQ(date("1996-07-04"), "1996-07-04 00:00:00");
  EXPECT_EQ(date("1996/07/04"), "1996-07-04 00:00:00");
  EXPECT_EQ(date("0100-01-01"), "0100-01-01 00:00:00");
  EXPECT_EQ(date("9999-12-31 23:59:59"), "9999-12-31 23:59:59");
}

TEST(JetDateLiterals, UsDatesAreMonthFirst) {
  EXPECT_EQ(date("7/4/1996"), "1996-07-04 00:00:00");
  EXPECT_EQ(date("12/31/1999"), "1999-12-31 00:00:00");
  EXPECT_EQ(date("07-04-1996"), "1996-07-04 00:00:00");
}

TEST(JetDateLiterals, TwoDigitYearsPivotAt30) {
  EXPECT_EQ(date("7/4/96"), "1996-07-04 00:00:00");
  EXPECT_EQ(date("7/4/29"), "2029-07-04 00:00:00");
  EXPECT_EQ(date("7/4/30"), "1930-07-04 00:00:00");
}

TEST(JetDateLiterals, DatesWithTimes) {
  EXPECT_EQ(date("1996-07-04 10:30"), "1996-07-04 10:30:00");
  EXPECT_EQ(date("7/4/1996 10:30:15 PM"), "1996-07-04 22:30:15");
  EXPECT_EQ(date("7/4/1996 12:00 AM"), "1996-07-04 00:00:00");
  EXPECT_EQ(date("7/4/1996 12:00 pm"), "1996-07-04 12:00:00");
}

TEST(JetDateLiterals, ATimeAloneFallsOnDayZero) {
  EXPECT_EQ(date("10:30"), "1899-12-30 10:30:00");
  EXPECT_EQ(date(" 8:05:09 PM "), "1899-12-30 20:05:09");
}

TEST(JetDateLiterals, NonDatesAreRefused) {
  for (const char* text : {"", "x", "13/1/1996", "2/30/1996", "1996-02-30", "25:00", "7/4",
                           "1996-07-04 10", "7/4/1996 13:00 PM", "7/4/1996 garbage", "99-7-4"})
    EXPECT_EQ(date(text), "<none>") << text;
  EXPECT_EQ(date("2/29/1996"), "1996-02-29 00:00:00");
  EXPECT_EQ(date("2/29/1900"), "<none>");
}

TEST(JetSqlTranslation, DateLiteralsBecomeStoredText) {
  EXPECT_EQ(translateJetSql("SELECT * FROM Orders WHERE OrderDate = #7/4/1996#"),
            "SELECT * FROM Orders WHERE OrderDate = '1996-07-04 00:00:00'");
  EXPECT_EQ(translateJetSql("WHERE d BETWEEN #1996-01-01# AND #1996-12-31 23:59:59#"),
            "WHERE d BETWEEN '1996-01-01 00:00:00' AND '1996-12-31 23:59:59'");
}

TEST(JetSqlTranslation, LiteralsAndBracketedNamesAreLeftAlone) {
  EXPECT_EQ(translateJetSql("SELECT [a#b], '#1/1/2000#', 'it''s #x#' FROM [T]"),
            "SELECT [a#b], '#1/1/2000#', 'it''s #x#' FROM [T]");
  EXPECT_EQ(translateJetSql("SELECT [True], 'False' FROM t"), "SELECT [True], 'False' FROM t");
}

TEST(JetSqlTranslation, DoubledBracketsAndCommentsAreLeftAlone) {
  EXPECT_EQ(translateJetSql("SELECT [a]]True] FROM t -- #not a date# & True\nWHERE x = True"),
            "SELECT [a]]True] FROM t -- #not a date# & True\nWHERE x = -1");
  EXPECT_EQ(translateJetSql("SELECT /* it's #x# */ 1"), "SELECT /* it's #x# */ 1");
}

TEST(JetSqlTranslation, DoubleQuotedTextBecomesAStringLiteral) {
  EXPECT_EQ(translateJetSql("WHERE a = \"O'Brien\" AND b = \"say \"\"hi\"\"\""),
            "WHERE a = 'O''Brien' AND b = 'say \"hi\"'");
}

TEST(JetSqlTranslation, YesNoConstantsAndConcatenation) {
  EXPECT_EQ(translateJetSql("WHERE Discontinued = True OR x = false"),
            "WHERE Discontinued = -1 OR x = 0");
  EXPECT_EQ(translateJetSql("SELECT FirstName & ' ' & LastName FROM Employees"),
            "SELECT FirstName || ' ' || LastName FROM Employees");
  EXPECT_EQ(translateJetSql("SELECT TrueValue, t.True FROM t"), "SELECT TrueValue, t.True FROM t");
}

TEST(JetSqlTranslation, BadDateLiteralsAreSyntaxErrors) {
  try {
    translateJetSql("SELECT * FROM Orders WHERE OrderDate = #31/31/1996#");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError);
    EXPECT_EQ(e.description(), "Syntax error in date in query expression '#31/31/1996#'.");
  }
  EXPECT_THROW(translateJetSql("SELECT * FROM Orders WHERE OrderDate = #1/1/1996"), vb::VBError);
}

// The translated text run on the loaded nwind.mdb.
class NwindQueries : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new varsentix::testing::TempDir();
    loaded_ = new LoadedAccessFile(
        loadAccessFile(varsentix::testing::copySample(*dir_, "nwind.mdb"), ""));
  }
  static void TearDownTestSuite() {
    delete loaded_;
    delete dir_;
  }
  static std::string value(const std::string& jetSql) {
    return varsentix::testing::scalar(loaded_->db.get(), translateJetSql(jetSql));
  }
  static varsentix::testing::TempDir* dir_;
  static LoadedAccessFile* loaded_;
};
varsentix::testing::TempDir* NwindQueries::dir_ = nullptr;
LoadedAccessFile* NwindQueries::loaded_ = nullptr;

TEST_F(NwindQueries, DateLiteralsMatchStoredDates) {
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = #11/16/1994#"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = #1994-11-16#"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate < #1994-08-05#"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate >= #1/1/1996#"),
            value("SELECT count(*) FROM Orders WHERE OrderDate > #12/31/1995 11:59:59 PM#"));
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate BETWEEN #1995-01-01# AND #1995-12-31#"),
            value("SELECT count(*) FROM Orders WHERE OrderDate LIKE '1995-%'"));
}

TEST_F(NwindQueries, DateTextComparesAsADate) {
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = '1994-11-16'"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = '1994-11-16 00:00:00'"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE '1994-11-16T00:00:00' = OrderDate"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = '1994-11-16 00:00:00.000'"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate > '1996-06-04'"),
            value("SELECT count(*) FROM Orders WHERE OrderDate >= #6/5/1996#"));
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate < '1994-08-05'"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate = '1994-11-16 00:00:01'"), "0");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE OrderDate IN (SELECT OrderDate FROM Orders WHERE OrderID = 10330)"), "2");
}

TEST_F(NwindQueries, LikeIgnoresCase) {
  EXPECT_EQ(value("SELECT count(*) FROM [Customers] WHERE [CompanyName] LIKE 'alfreds%'"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM [Customers] WHERE [CompanyName] LIKE 'ALFREDS F_TTERKISTE'"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM [Customers] WHERE [Country] LIKE 'germany'"), "11");
}

TEST_F(NwindQueries, YesNoComparesWithTrueAndFalse) {
  EXPECT_EQ(value("SELECT count(*) FROM Products WHERE Discontinued = True"),
            value("SELECT count(*) FROM Products WHERE Discontinued <> 0"));
  EXPECT_EQ(value("SELECT count(*) FROM Products WHERE Discontinued = True") + "+" +
                value("SELECT count(*) FROM Products WHERE Discontinued = False"),
            value("SELECT count(*) FROM Products WHERE Discontinued = True") + "+" +
                std::to_string(77 - std::stoi(value("SELECT count(*) FROM Products WHERE Discontinued = True"))));
}

TEST_F(NwindQueries, CurrencyComparesAsANumber) {
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE Freight = 12.75"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM Products WHERE UnitPrice > 100"), "2");
}

TEST_F(NwindQueries, SinglesCompareAsTheNumbersAccessShows) {
  EXPECT_EQ(value("SELECT Discount FROM [Order Details] WHERE OrderID = 10250 AND ProductID = 51"), "0.15");
  EXPECT_EQ(value("SELECT count(*) FROM [Order Details] WHERE OrderID = 10250 AND Discount = 0.15"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM [Order Details] WHERE OrderID = 10250 AND Discount LIKE 0.15"), "2");
}

TEST_F(NwindQueries, WhereClauseOfLikeConditionsFindsItsRecord) {
  // The form the record comparison writes: the first condition with =, the later ones LIKE.
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] Where OrderID = 10331 AND CustomerID LIKE 'BONAP'"
                  " AND OrderDate LIKE #1994-11-16 00:00:00# AND Freight LIKE '10.19'"
                  " AND ShipName LIKE 'Bon app''' AND ShipVia LIKE 1"),
            "1");
  EXPECT_EQ(value("SELECT count(*) FROM [Products] Where ProductID = 5 AND Discontinued LIKE True"), "1");
}

TEST_F(NwindQueries, BracketedNamesWithBlanksAndUmlauts) {
  EXPECT_EQ(value("SELECT count(*) FROM [Order Details] WHERE [OrderID] = 10330"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM [Ums\xC3\xA4tze]"), "830");
  EXPECT_EQ(value("SELECT [FirstName] & ' ' & [LastName] FROM [Employees] WHERE [EmployeeID] = 1"),
            "Nancy Davolio");
}

}  // namespace
