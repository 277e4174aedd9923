#include "varsentix/datasource/ModADO.h"

#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::ModADO {
namespace {

constexpr const char* kNotDefined = "Not_Defined";

// The shared part of both name tables: every code but 202.
const char* commonName(int16_t dataType) {
  switch (dataType) {
    case 0: return "Empty";
    case 2: return "2_byte_signed_integer";
    case 3: return "4_byte_signed_integer";
    case 4: return "Single_precision_floating_point_value";
    case 5: return "Double_precision_floating_point_value";
    case 6: return "Currency_value";
    case 7: return "Date_value";
    case 8: return "Null_terminated_character_string";
    case 9: return "Pointer_IDispatch_interface_to_OLE_object";
    case 10: return "32_bit_error_code";
    case 11: return "Boolean_Value";
    case 12: return "Automation_Variant";
    case 13: return "Pointer_IUnknown_interface_to_OLE_object";
    case 14: return "Exact_numeric_value_with_fixed_precision_and_scale";
    case 16: return "1_byte_signed_integer";
    case 17: return "1_byte_unsigned_integer";
    case 18: return "2_byte_unsigned_integer";
    case 19: return "4_byte_unsigned_integer";
    case 20: return "8_byte_signed_integer";
    case 21: return "8_byte_unsigned_integer";
    case 64: return "DOS/Win32_file_time";
    case 72: return "Globally_unique_identifier";
    case 128: return "Binary";
    case 129: return "String_Value";
    case 130: return "Null_Terminated_Unicode_character_string";
    case 131: return "Exact_numeric_value_with_a_fixed_precision_and_scale";
    case 132: return "User_defined_variable";
    case 133: return "Date_Value";
    case 134: return "Time_Value";
    case 135: return "Date_Time_stamp";
    case 136: return "Character_type";
    case 137: return "Database_file_time";
    case 138: return "Variant_that_is_not_equivalent_to_Automation_variant";
    case 139: return "Variable_width_exact_numeric_with_signed_scale_value";
    case 200: return "String";
    case 201: return "Long_String";
    case 203: return "long_Null_terminated_string_string";
    case 204: return "Binary_Value";
    case 205: return "Long_Binary_Value";
    default: return kNotDefined;
  }
}

constexpr int16_t kVarWChar = 202;

bool contains(const std::string& text, const char* word) { return vb::InStr(text, word) > 0; }

}  // namespace

std::string getDataTypeName(int16_t dataType) {
  if (dataType == kVarWChar) return "Null_terminated_character_string";
  return commonName(dataType);
}

std::string fieldTypeNameOfCode(int16_t dataType) {
  if (dataType == kVarWChar) return "Null_terminated_unicode_character_string";
  return commonName(dataType);
}

bool isComparableTypeCode(int16_t dataType) {
  switch (dataType) {
    case 2: case 3: case 4: case 5: case 6: case 7: case 8: case 11: case 14:
    case 16: case 17: case 18: case 19: case 20: case 21: case 64: case 72:
    case 129: case 130: case 133: case 134: case 135: case 136: case 137: case 138: case 139:
    case 200: case 201: case 202: case 203:
      return true;
    default:
      return false;
  }
}

bool isComparableTypeName(const std::string& typeName) {
  if (contains(typeName, "Empty") || contains(typeName, "OLE") || contains(typeName, "error")) {
    return false;
  }
  if (contains(typeName, "Automation") || contains(typeName, "Binary")) return false;
  if (contains(typeName, "Not")) return false;
  return true;
}

}  // namespace varsentix::ModADO
