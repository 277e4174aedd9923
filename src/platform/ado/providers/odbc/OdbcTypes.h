#pragma once
// How the ODBC provider describes columns: ODBC SQL types mapped to ADO DataTypeEnum numbers
// the way the OLE DB provider for ODBC (MSDASQL) maps them. The table lives in OdbcTypes.cpp
// and in docs/odbc-provider.md. Plain integers here: sql.h stays inside the .cpp files.
#include <cstdint>

#include "platform/ado/Provider.h"

namespace varsentix::ado::detail::odbcprovider {

// The ADO description of an ODBC result column: type, DefinedSize (characters for text, bytes
// for binary, the fixed size otherwise), precision and scale. The name is left empty.
// columnSize and decimalDigits are what SQLDescribeCol reports; isUnsigned is SQL_DESC_UNSIGNED.
ColumnInfo columnTypeOf(int16_t sqlType, uint64_t columnSize, int16_t decimalDigits,
                        bool isUnsigned);

// The ODBC SQL type a parameter written to a column of this ADO type is bound as.
int16_t sqlTypeFor(DataTypeEnum type);

}  // namespace varsentix::ado::detail::odbcprovider
