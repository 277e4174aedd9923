#include <gtest/gtest.h>

#include "varsentix/datasource/modUtility.h"

using varsentix::modUtility::escapeSingleQuotes;

TEST(EscapeSingleQuotes, DoublesTheApostropheOfOBrien) {
  std::string name = "O'Brien";
  EXPECT_EQ(escapeSingleQuotes(name), "O''Brien");
  EXPECT_EQ(name, "Brien");  // consumed up to the last apostrophe
}

TEST(EscapeSingleQuotes, DoublesEveryApostrophe) {
  std::string text = "a'b'c'd";
  EXPECT_EQ(escapeSingleQuotes(text), "a''b''c''d");
  EXPECT_EQ(text, "d");
  std::string pair = "it''s";
  EXPECT_EQ(escapeSingleQuotes(pair), "it''''s");
  EXPECT_EQ(pair, "s");
}

TEST(EscapeSingleQuotes, TextWithoutApostropheIsUnchangedAndNotConsumed) {
  std::string text = "Smith";
  EXPECT_EQ(escapeSingleQuotes(text), "Smith");
  EXPECT_EQ(text, "Smith");
  std::string empty;
  EXPECT_EQ(escapeSingleQuotes(empty), "");
}

TEST(EscapeSingleQuotes, LeadingAndTrailingApostrophes) {
  std::string leading = "'abc";
  EXPECT_EQ(escapeSingleQuotes(leading), "''abc");
  EXPECT_EQ(leading, "abc");
  std::string trailing = "abc'";
  EXPECT_EQ(escapeSingleQuotes(trailing), "abc''");
  EXPECT_EQ(trailing, "");
  std::string only = "'";
  EXPECT_EQ(escapeSingleQuotes(only), "''");
  EXPECT_EQ(only, "");
}
