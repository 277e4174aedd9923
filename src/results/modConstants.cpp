#include "varsentix/results/modConstants.h"

namespace varsentix::modConstants {

std::string getChangeDesciption(int16_t changeType) {
  switch (changeType) {
    case NoChange: return "No Change";
    case NewTable: return "New Table";
    case NewField: return "New Field";
    case DifferentDatatype: return "Different Datatype";
    case DifferentSize: return "Different Size";
    case NewRecord: return "New Record";
    case DifferentDataValue: return "Different Data Value";
    default: return "N/A";
  }
}

std::string getConstantForNoChange() { return ""; }
std::string getConstantForNewTable() { return NEW_TABLE; }
std::string getConstantForNewField() { return NEW_FIELD; }
std::string getConstantNewField() { return NEW_FIELD; }
std::string getConstantForDifferentDataType() { return DIFFERENT_DATATYPE; }
std::string getConstantForDifferentSize() { return DIFFERENT_SIZE; }
std::string getConstantForNewRecord() { return NEW_RECORD; }
std::string getConstantForDifferentDataValue() { return DIFFERENT_DATA_VALUE; }

}  // namespace varsentix::modConstants
