#pragma once
// Values written into a statement without quotes ("bare"): numbers, GUIDs, binary values,
// booleans. Such a value can only be written bare when its text is well-formed for its type;
// anything else would become part of the statement's structure (a text stored in a numeric
// column of SQLite, for example, is kept as it is: "1 OR 1=1" would select every row).
#include <cstdint>
#include <string>
#include <string_view>

namespace varsentix::bareValue {

// Whether text may stand bare in a statement as a value of the ADO type adoType:
//   numbers (and currency): an optional sign, digits, an optional fraction and exponent;
//   GUID: hex digits 8-4-4-4-12, in braces or not;
//   binary: hex digits;
//   boolean: True / False or a number;
//   every other type written bare: a number only.
// An empty text is well-formed for none of them.
bool isWellFormed(int32_t adoType, std::string_view text);

// Whether text is a number as above: [+-] digits [. digits] [(e|E) [+-] digits] (digits may stand
// on one side of the point only).
bool isNumber(std::string_view text);

// What a literal builder writes in place of a value that is not well-formed. It holds a NUL byte,
// which the providers' statement check refuses outside literals: the statement is never sent,
// and the failure to run it is reported where that statement's failures always are.
const std::string& malformedMarker();

// The text to write bare for a value of adoType: text itself when well-formed, else the marker.
std::string bareOrMarker(int32_t adoType, std::string text);

}  // namespace varsentix::bareValue
