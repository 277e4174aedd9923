#pragma once
// Facts about ADO data types shared by the providers, the record set and XML persistence:
// fixed byte sizes and the conversion of a value's text form into the Variant sub-type that
// suits a column of a given ADO type.
#include <cstdint>
#include <string>
#include <string_view>

#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado::detail {

// The byte size ADO reports as DefinedSize / ActualSize for a fixed-size type (4 for
// adInteger, 19 for adNumeric, 16 for adDBTimeStamp ...); 0 for text and binary types.
int32_t fixedSizeOf(DataTypeEnum type);
bool isTextType(DataTypeEnum type);
bool isBinaryType(DataTypeEnum type);
bool isDateType(DataTypeEnum type);
// Text and binary types whose values are long (memo, long binary).
bool isLongType(DataTypeEnum type);

// The value of text as a Variant suited to a column of the type: Long for adInteger, Decimal
// for adNumeric, DateTime for the date types, Bytes (from hexadecimal digits) for binary ...
// Raises 13 "Type mismatch" when the text is no value of the type.
vb::Variant variantFromText(DataTypeEnum type, const std::string& text);

// Converts a value that arrived with another sub-type into the one suited to the column
// (an integer for a boolean column becomes a Boolean, text for a date column a DateTime).
// Values that cannot be converted without loss are returned as they are.
vb::Variant coerceToColumn(DataTypeEnum type, vb::Variant value);

// Bytes of a text value (UTF-8) or a binary value; the fixed size for other types; 0 for Null.
int32_t actualSizeOf(DataTypeEnum type, const vb::Variant& value);

// The decimal text "digits" with exactly `scale` digits after the point (rounded half away
// from zero, as the engines round NUMERIC); unchanged when scale is 255 (unknown).
std::string withScale(std::string_view digits, uint8_t scale);

}  // namespace varsentix::ado::detail
