#pragma once
// modConstants: the change-type vocabulary of difference rows.
#include <cstdint>
#include <string>

namespace varsentix::modConstants {

// Change-type codes as the one-character texts that rows store.
inline constexpr const char* NO_CHANGE = "0";
inline constexpr const char* NEW_TABLE = "1";
inline constexpr const char* NEW_FIELD = "2";
inline constexpr const char* DIFFERENT_DATATYPE = "3";
inline constexpr const char* DIFFERENT_SIZE = "4";
inline constexpr const char* NEW_RECORD = "5";
inline constexpr const char* DIFFERENT_DATA_VALUE = "6";

// The same codes as numbers.
enum ChangeType : int16_t {
  NoChange = 0,
  NewTable = 1,
  NewField = 2,
  DifferentDatatype = 3,
  DifferentSize = 4,
  NewRecord = 5,
  DifferentDataValue = 6,
};

// "No Change", "New Table", "New Field", "Different Datatype", "Different Size", "New Record",
// "Different Data Value" for 0..6; "N/A" for any other code.
std::string getChangeDesciption(int16_t changeType);

// What the control's constant getters return. No change is the empty text, not "0": hosts that
// need the code of an unchanged row use 0 directly.
std::string getConstantForNoChange();
std::string getConstantForNewTable();
std::string getConstantForNewField();
std::string getConstantNewField();
std::string getConstantForDifferentDataType();
std::string getConstantForDifferentSize();
std::string getConstantForNewRecord();
std::string getConstantForDifferentDataValue();

}  // namespace varsentix::modConstants
