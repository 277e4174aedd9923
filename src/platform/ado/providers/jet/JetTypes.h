#pragma once
// The Access provider's one type table: each Access column type, the column type declared for
// it in the in-memory SQLite database, and the ADO type the provider reports for it (the
// numbers Microsoft's Jet OLE DB provider reports). docs/jet-provider.md shows the table.
#include <optional>
#include <string>

#include "platform/ado/Provider.h"
#include "platform/ado/providers/jet/JetCatalog.h"

namespace varsentix::ado::detail {

// The declared SQLite column type that keeps the Access type: "BIT", "BYTE", "SHORT", "LONG",
// "CURRENCY", "SINGLE", "DOUBLE", "DATETIME", "BINARY(n)", "TEXT(n)", "LONGBINARY", "LONGTEXT",
// "GUID", "DECIMAL(p,s)"; text columns also get COLLATE NOCASE (Jet compares text without
// regard to case) and date columns COLLATE JETDATE (the loader's collation that compares date
// text as dates). Complex columns keep their Long id; unknown types their raw bytes.
std::string declaredColumnType(const JetColumn& column);

// The ADO description of a column declared with declaredColumnType (the collation left out),
// or nullopt for a declared type that is not one of the above (computed columns).
std::optional<ColumnInfo> columnInfoForDeclaredType(const std::string& declaredType);

// The ADO description of an Access column (name, type, size, precision, scale).
ColumnInfo columnInfoFor(const JetColumn& column);

}  // namespace varsentix::ado::detail
