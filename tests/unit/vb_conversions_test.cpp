#include <gtest/gtest.h>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix::vb;

namespace {

int32_t errorNumberOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const VBError& e) {
    return e.number();
  }
  return 0;
}

}  // namespace

TEST(VBConversions, CIntAllowsSurroundingBlanks) { EXPECT_EQ(CInt(" 4 "), 4); }

TEST(VBConversions, CIntRoundsHalfToEven) {
  EXPECT_EQ(CInt("2.5"), 2);
  EXPECT_EQ(CInt("3.5"), 4);
  EXPECT_EQ(CInt("-2.5"), -2);
  EXPECT_EQ(CInt("2.51"), 3);
  EXPECT_EQ(CInt("0.5"), 0);
  EXPECT_EQ(CInt("1.5"), 2);
}

TEST(VBConversions, CIntOfTextThatIsNotANumberIsTypeMismatch) {
  EXPECT_EQ(errorNumberOf([] { CInt("abc"); }), 13);
  EXPECT_EQ(errorNumberOf([] { CInt(""); }), 13);
  EXPECT_EQ(errorNumberOf([] { CInt("   "); }), 13);
  EXPECT_EQ(errorNumberOf([] { CInt("4x"); }), 13);
  EXPECT_EQ(errorNumberOf([] { CInt("--4"); }), 13);
}

TEST(VBConversions, CIntOutOfRangeIsOverflow) {
  EXPECT_EQ(errorNumberOf([] { CInt("40000"); }), 6);
  EXPECT_EQ(errorNumberOf([] { CInt("32767.5"); }), 6);
  EXPECT_EQ(errorNumberOf([] { CInt("-32769"); }), 6);
}

TEST(VBConversions, CIntAcceptsTheWholeInt16Range) {
  EXPECT_EQ(CInt("-32768"), -32768);
  EXPECT_EQ(CInt("32767"), 32767);
  EXPECT_EQ(CInt("+7"), 7);
  EXPECT_EQ(CInt("-1"), -1);
  EXPECT_EQ(CInt("1E2"), 100);
  EXPECT_EQ(CInt("&H10"), 16);
}

TEST(VBConversions, ErrorTextsAreTheStandardOnes) {
  try {
    CInt("abc");
    FAIL();
  } catch (const VBError& e) {
    EXPECT_EQ(e.description(), "Type mismatch");
  }
  try {
    CInt("40000");
    FAIL();
  } catch (const VBError& e) {
    EXPECT_EQ(e.description(), "Overflow");
  }
}

TEST(VBConversions, CLngCoversInt32) {
  EXPECT_EQ(CLng(" 40000 "), 40000);
  EXPECT_EQ(CLng("-2147483648"), INT32_MIN);
  EXPECT_EQ(CLng("2.5"), 2);
  EXPECT_EQ(errorNumberOf([] { CLng("2147483648"); }), 6);
  EXPECT_EQ(errorNumberOf([] { CLng("x"); }), 13);
}

TEST(VBConversions, CStrHasNoLeadingBlank) {
  EXPECT_EQ(CStr(int16_t{5}), "5");
  EXPECT_EQ(CStr(int32_t{-12}), "-12");
  EXPECT_EQ(CStr(true), "True");
  EXPECT_EQ(CStr(false), "False");
  EXPECT_EQ(CStr(0.1), "0.1");
  EXPECT_EQ(CStr(2.0), "2");
}

TEST(VBConversions, TrimRemovesBlanksOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(LTrim("  a "), "a ");
  EXPECT_EQ(RTrim("  a "), "  a");
  EXPECT_EQ(Trim("\ta\t"), "\ta\t");
  EXPECT_EQ(Trim("   "), "");
}

TEST(VBConversions, InStrIsOneBasedAndCaseSensitive) {
  EXPECT_EQ(InStr("DSN=x", "DSN="), 1);
  EXPECT_EQ(InStr("a|b", "|"), 2);
  EXPECT_EQ(InStr("abc", "B"), 0);
  EXPECT_EQ(InStr("abcabc", "b", 3), 5);
  EXPECT_EQ(InStr("abc", "", 2), 2);
}

TEST(VBConversions, LeftMidRight) {
  EXPECT_EQ(Left("abcdef", 2), "ab");
  EXPECT_EQ(Left("ab", 10), "ab");
  EXPECT_EQ(Right("abcdef", 2), "ef");
  EXPECT_EQ(Mid("abcdef", 3), "cdef");
  EXPECT_EQ(Mid("abcdef", 3, 2), "cd");
  EXPECT_EQ(Mid("abc", 9), "");
  EXPECT_EQ(errorNumberOf([] { Mid("abc", 0); }), 5);
}
