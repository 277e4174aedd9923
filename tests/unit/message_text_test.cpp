// A side's message text: runs of repeated pieces, read whole or appended elsewhere.
#include <gtest/gtest.h>

#include <string>

#include "varsentix/dbside/MessageText.h"

using varsentix::MessageText;

TEST(MessageText, RepeatedPiecesReadBackInOrder) {
  MessageText text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0u);
  text = "Successfully Completed";
  for (int i = 0; i < 3; ++i) text += " Successfully Completed ||";
  text += " #12 failed ||";
  text += "";
  text += " Successfully Completed ||";
  const std::string expected =
      "Successfully Completed Successfully Completed || Successfully Completed || Successfully Completed ||"
      " #12 failed || Successfully Completed ||";
  EXPECT_EQ(text.str(), expected);
  EXPECT_EQ(text.size(), expected.size());
  std::string appended = "before:";
  text.appendTo(appended);
  EXPECT_EQ(appended, "before:" + expected);
}

TEST(MessageText, AssigningReplacesTheWholeText) {
  MessageText text;
  text = "a";
  text += "b";
  text = "a";  // the same text as the first run, but not the whole text
  EXPECT_EQ(text.str(), "a");
  text = "";
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.str(), "");
}

TEST(MessageText, AssignFromAViewReplacesTheWholeTextToo) {
  MessageText text;
  text.assign("a");
  text.assign("a");
  EXPECT_EQ(text.str(), "a");
  text += "b";
  text.assign("a");  // the first run's text, but not the whole text
  EXPECT_EQ(text.str(), "a");
  text += "a";  // counted as a repeat of the run
  EXPECT_EQ(text.str(), "aa");
  text.assign("c");
  EXPECT_EQ(text.str(), "c");
  text.assign("");
  EXPECT_TRUE(text.empty());
}

TEST(MessageText, AMillionOutcomesAreCountedNotStored) {
  MessageText text;
  for (int i = 0; i < 1000000; ++i) text += " Successfully Completed ||";
  EXPECT_EQ(text.size(), 26000000u);
  const std::string whole = text.str();
  EXPECT_EQ(whole.size(), 26000000u);
  EXPECT_EQ(whole.substr(whole.size() - 26), " Successfully Completed ||");
}

TEST(MessageText, APieceAppendedManyTimesOverIsTheSameTextAsAppendedOneByOne) {
  MessageText once, many;
  for (int i = 0; i < 3; ++i) once += "ab";
  once += "c";
  for (int i = 0; i < 2; ++i) once += "c";
  many.append("ab", 2);
  many.append("ab", 1);
  many.append("c", 0);  // nothing
  many.append("", 5);   // nothing
  many.append("c", 3);
  EXPECT_EQ(many.str(), once.str());
  EXPECT_EQ(many.str(), "abababccc");
  EXPECT_EQ(many.size(), 9u);
  many.append(" Successfully Completed ||", 1000000);
  EXPECT_EQ(many.size(), 9u + 26000000u);
}
