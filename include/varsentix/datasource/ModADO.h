#pragma once
// ModADO: readable names of ADO data-type codes and the tests that decide whether values of a
// type can be compared.
//
// The name table exists in two copies that differ on code 202 on purpose:
// getDataTypeName (a bare code, what the control's getFieldDataDescrition shows) names 202 like
// code 8, "Null_terminated_character_string"; fieldTypeNameOfCode (behind getFieldTypeName, the
// name of a field of a database side) names it "Null_terminated_unicode_character_string".
// The operations that read a field of a database side, getFieldTypeName and
// isComparableFieldType, take a clsDBManager and so live one layer up, in
// varsentix/dbside/ModADOFields.h; they look codes up with the functions below.
#include <cstdint>
#include <string>

namespace varsentix::ModADO {

// The name of an ADO DataTypeEnum code; "Not_Defined" for every code without one (negative
// codes included). 202 gives the code 8 name. Cannot fail.
std::string getDataTypeName(int16_t dataType);

// The same table with 202 named "Null_terminated_unicode_character_string": the name a field
// of a database side reports. Cannot fail.
std::string fieldTypeNameOfCode(int16_t dataType);

// Whether values of this ADO type code can be compared. Note 131 is not comparable although
// 14 and 139 are.
bool isComparableTypeCode(int16_t dataType);

// False when the name contains "Empty", "OLE", "error", "Automation", "Binary" or "Not"
// anywhere (case-sensitive); true otherwise. Cannot fail.
bool isComparableTypeName(const std::string& typeName);

}  // namespace varsentix::ModADO
