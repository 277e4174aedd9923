#pragma once
// The columns of the schema rowsets every provider answers (OLE DB names, types and order),
// and the test of a restriction, so that all providers build the same rowsets.
#include <string>
#include <vector>

#include "platform/ado/Provider.h"

namespace varsentix::ado::detail {

// adSchemaTables (20): TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE, TABLE_GUID,
// DESCRIPTION, TABLE_PROPID, DATE_CREATED, DATE_MODIFIED.
// Restrictions: TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE.
std::vector<ColumnInfo> tablesRowsetColumns();
// adSchemaPrimaryKeys (28): TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, COLUMN_NAME, COLUMN_GUID,
// COLUMN_PROPID, ORDINAL, PK_NAME. Restrictions: TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME.
std::vector<ColumnInfo> primaryKeysRowsetColumns();
// adSchemaForeignKeys (27): PK_TABLE_CATALOG, PK_TABLE_SCHEMA, PK_TABLE_NAME, PK_COLUMN_NAME,
// PK_COLUMN_GUID, PK_COLUMN_PROPID, FK_TABLE_CATALOG, FK_TABLE_SCHEMA, FK_TABLE_NAME,
// FK_COLUMN_NAME, FK_COLUMN_GUID, FK_COLUMN_PROPID, ORDINAL, UPDATE_RULE, DELETE_RULE, PK_NAME,
// FK_NAME, DEFERRABILITY. Restrictions: PK_TABLE_CATALOG, PK_TABLE_SCHEMA, PK_TABLE_NAME,
// FK_TABLE_CATALOG, FK_TABLE_SCHEMA, FK_TABLE_NAME.
std::vector<ColumnInfo> foreignKeysRowsetColumns();

// OLE DB DEFERRABILITY values.
inline constexpr int16_t kInitiallyDeferred = 1;
inline constexpr int16_t kInitiallyImmediate = 2;
inline constexpr int16_t kNotDeferrable = 3;

// Whether value passes restriction number index (0-based): an absent, Empty, Null or empty-text
// restriction passes everything. caseInsensitive compares ASCII letters without case (for
// engines whose names are case-insensitive).
bool restrictionMatches(const std::vector<vb::Variant>& restrictions, size_t index,
                        const vb::Variant& value, bool caseInsensitive = false);

// Raises 3251 for a schema number the providers do not answer.
[[noreturn]] void raiseSchemaNotSupported(int32_t schema);

}  // namespace varsentix::ado::detail
