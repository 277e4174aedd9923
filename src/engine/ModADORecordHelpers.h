#pragma once
// ModADO's helpers for the comparison: the key field of a table, the field count of a side's
// record set, the match test, the foreign-key details of a result row, and the match-query
// builder. They take database sides (clsDBManager), so they live with the engine, their only
// user, above the database side in the layering.
#include <cstdint>
#include <string>

#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/results/clsResultSet.h"

namespace varsentix {
class clsDBManager;
}

namespace varsentix::ModADO {

// The first field row of tableName on this side that is unchanged ("0") and of a comparable type
// name, or the empty text. Failures are passed over.
std::string getFirstComparableFieldName(clsDBManager& manager, const std::string& tableName);
// The number of fields of the side's current record set. Fails when it is not open.
int16_t getRecordSetFieldCount(clsDBManager& manager);
// Whether the side's statement plus where clause returns a record. Opens and closes the side's
// second record set; a failed query gives false.
bool queryReturnsRecords(clsDBManager& manager);

// Fills the five foreign-key texts of row from the first foreign key of the side's current
// table, or the fixed "not defined" texts when there is none. Returns row.
vb::Ref<clsResultSet> fillForeignKeyDetails(const vb::Ref<clsResultSet>& row, clsDBManager& manager);
// The column's text on the current row; "No Foreign(s) key Defined" for empty text or null; the
// empty text when the read fails.
std::string getSchemaFieldText(const vb::Ref<ado::Recordset>& keys, const std::string& column);

// Writes into B the select statement and where clause that look for A's current record.
void buildMatchQuery(clsDBManager& A, clsDBManager& B);
// Whether column i of A's record set is left out of the match: B's first record set has no
// field of that name. When B's record set cannot be read, nothing is left out.
bool isFieldExcludedFromMatch(clsDBManager& A, clsDBManager& B, int16_t i);
// "like " for text-like ADO types, "= " for every other.
std::string getMatchOperator(clsDBManager& A, int16_t i);
// The SQL literal of column i of A's current record, by its ADO type.
std::string formatMatchValue(clsDBManager& A, int16_t i);

// The pieces of the match query, shared by buildMatchQuery and the fast record decisions
// (engine/RecordMatch.h), which write the last record's query without a record set.
// What column i adds to the column list.
std::string matchSelectPiece(int16_t i, const std::string& name);
// What column i adds to the where clause for a value (column 0 always compares with "= ",
// operatorText is not used there) and for Null.
std::string matchValuePiece(int16_t i, const std::string& name, const std::string& operatorText,
                            const std::string& literal);
std::string matchNullPiece(int16_t i, const std::string& name);
// getMatchOperator and formatMatchValue for a type and a value.
std::string matchOperatorFor(int32_t type);
std::string formatMatchLiteral(int32_t type, const vb::Variant& value, bool isAccess);

}  // namespace varsentix::ModADO
