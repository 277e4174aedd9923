// The change-type vocabulary and the field data-type names that the control offers hosts.
#include <gtest/gtest.h>

#include "varsentix/control/Varsenti.h"

namespace varsentix {
namespace {

TEST(ControlVocabulary, ChangeDescriptionsOfTheSevenCodes) {
  Varsenti control;
  const char* expected[] = {"No Change",      "New Table",  "New Field",           "Different Datatype",
                            "Different Size", "New Record", "Different Data Value"};
  for (int16_t code = 0; code <= 6; ++code) EXPECT_EQ(control.getChangeDesciption(code), expected[code]);
}

TEST(ControlVocabulary, DifferentDatatypeIsOneWord) {
  Varsenti control;
  EXPECT_EQ(control.getChangeDesciption(3), "Different Datatype");
  EXPECT_EQ(control.getChangeDesciption(6), "Different Data Value");
}

TEST(ControlVocabulary, CodesOutsideTheVocabularyAreNA) {
  Varsenti control;
  for (int16_t code : {int16_t{7}, int16_t{-1}, int16_t{32767}, int16_t{-32768}, int16_t{100}}) {
    EXPECT_EQ(control.getChangeDesciption(code), "N/A") << code;
  }
}

TEST(ControlVocabulary, ConstantForNoChangeIsTheEmptyText) {
  Varsenti control;
  EXPECT_EQ(control.getConstantForNoChange(), "");
  control.showDifferencesOnly(true);  // whatever the state of the control
  control.setMasterFieldList("A");
  EXPECT_EQ(control.getConstantForNoChange(), "");
}

TEST(ControlVocabulary, ConstantGettersReturnTheCodesAsText) {
  Varsenti control;
  EXPECT_EQ(control.getConstantForNewTable(), "1");
  EXPECT_EQ(control.getConstantForNewField(), "2");
  EXPECT_EQ(control.getConstantNewField(), "2");
  EXPECT_EQ(control.getConstantForDifferentDataType(), "3");
  EXPECT_EQ(control.getConstantForDifferentSize(), "4");
  EXPECT_EQ(control.getConstantForNewRecord(), "5");
  EXPECT_EQ(control.getConstantForDifferentDataValue(), "6");
}

TEST(ControlVocabulary, FieldDataDescriptionNames202LikeCode8) {
  Varsenti control;
  EXPECT_EQ(control.getFieldDataDescrition(202), "Null_terminated_character_string");
  EXPECT_EQ(control.getFieldDataDescrition(8), "Null_terminated_character_string");
}

TEST(ControlVocabulary, FieldDataDescriptionOfCodesWithoutANameIsNotDefined) {
  Varsenti control;
  for (int16_t code : {int16_t{1}, int16_t{15}, int16_t{22}, int16_t{300}, int16_t{-1}}) {
    EXPECT_EQ(control.getFieldDataDescrition(code), "Not_Defined") << code;
  }
}

TEST(ControlVocabulary, FieldDataDescriptionsKeepTheirSpelling) {
  Varsenti control;
  EXPECT_EQ(control.getFieldDataDescrition(3), "4_byte_signed_integer");
  EXPECT_EQ(control.getFieldDataDescrition(7), "Date_value");
  EXPECT_EQ(control.getFieldDataDescrition(133), "Date_Value");
  EXPECT_EQ(control.getFieldDataDescrition(130), "Null_Terminated_Unicode_character_string");
  EXPECT_EQ(control.getFieldDataDescrition(203), "long_Null_terminated_string_string");
  EXPECT_EQ(control.getFieldDataDescrition(64), "DOS/Win32_file_time");
  EXPECT_EQ(control.getFieldDataDescrition(205), "Long_Binary_Value");
}

TEST(ControlVocabulary, ArgumentsAreTakenFromTheHostsVariables) {
  Varsenti control;
  int16_t code = 5;
  EXPECT_EQ(control.getChangeDesciption(code), "New Record");
  int16_t type = 135;
  EXPECT_EQ(control.getFieldDataDescrition(type), "Date_Time_stamp");
  EXPECT_EQ(code, 5);
  EXPECT_EQ(type, 135);
}

}  // namespace
}  // namespace varsentix
