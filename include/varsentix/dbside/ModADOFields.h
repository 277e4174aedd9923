#pragma once
// ModADO's operations on a field of a database side. They read the type code of field
// fieldIndex (0-based) of the manager's current record set (getDatabaseRecords) without moving
// it, then look the code up with the tables of varsentix/datasource/ModADO.h. They have no
// protection of their own: a manager without an open record set or an index outside its fields
// makes them fail to the caller.
#include <cstdint>
#include <string>

#include "varsentix/datasource/ModADO.h"
#include "varsentix/dbside/clsDBManager.h"

namespace varsentix::ModADO {

// The field's type name; code 202 reads "Null_terminated_unicode_character_string".
std::string getFieldTypeName(clsDBManager& dataManager, const int16_t& fieldIndex);
// Whether values of the field can be compared (isComparableTypeCode of its type code).
bool isComparableFieldType(clsDBManager& dataManager, const int16_t& fieldIndex);

}  // namespace varsentix::ModADO
