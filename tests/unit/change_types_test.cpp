#include <gtest/gtest.h>

#include "varsentix/results/modConstants.h"

using namespace varsentix::modConstants;

TEST(ChangeTypes, DescriptionsOfTheSevenCodes) {
  EXPECT_EQ(getChangeDesciption(0), "No Change");
  EXPECT_EQ(getChangeDesciption(1), "New Table");
  EXPECT_EQ(getChangeDesciption(2), "New Field");
  EXPECT_EQ(getChangeDesciption(3), "Different Datatype");
  EXPECT_EQ(getChangeDesciption(4), "Different Size");
  EXPECT_EQ(getChangeDesciption(5), "New Record");
  EXPECT_EQ(getChangeDesciption(6), "Different Data Value");
}

TEST(ChangeTypes, DescriptionOfUnknownCodeIsNA) {
  EXPECT_EQ(getChangeDesciption(7), "N/A");
  EXPECT_EQ(getChangeDesciption(-1), "N/A");
  EXPECT_EQ(getChangeDesciption(32767), "N/A");
  EXPECT_EQ(getChangeDesciption(-32768), "N/A");
}

TEST(ChangeTypes, NoChangeConstantIsTheEmptyText) { EXPECT_EQ(getConstantForNoChange(), ""); }

TEST(ChangeTypes, ConstantsAreOneCharacterTexts) {
  EXPECT_EQ(getConstantForNewTable(), "1");
  EXPECT_EQ(getConstantForNewField(), "2");
  EXPECT_EQ(getConstantNewField(), "2");
  EXPECT_EQ(getConstantForDifferentDataType(), "3");
  EXPECT_EQ(getConstantForDifferentSize(), "4");
  EXPECT_EQ(getConstantForNewRecord(), "5");
  EXPECT_EQ(getConstantForDifferentDataValue(), "6");
}
