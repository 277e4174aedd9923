#pragma once
// The ADO 2.7 enumerations the system uses, with ADO's own numbers.
#include <cstdint>

namespace varsentix::ado {

enum CursorTypeEnum : int32_t {
  adOpenUnspecified = -1,
  adOpenForwardOnly = 0,
  adOpenKeyset = 1,
  adOpenDynamic = 2,
  adOpenStatic = 3,
};

enum LockTypeEnum : int32_t {
  adLockUnspecified = -1,
  adLockReadOnly = 1,
  adLockPessimistic = 2,
  adLockOptimistic = 3,
  adLockBatchOptimistic = 4,
};

enum CursorLocationEnum : int32_t {
  adUseNone = 1,
  adUseServer = 2,
  adUseClient = 3,
};

enum CommandTypeEnum : int32_t {
  adCmdUnspecified = -1,
  adCmdText = 1,
  adCmdTable = 2,
  adCmdStoredProc = 4,
  adCmdUnknown = 8,
  adCmdFile = 256,
  adCmdTableDirect = 512,
};

enum ExecuteOptionEnum : int32_t {
  adOptionUnspecified = -1,
  adExecuteNoRecords = 128,
};

enum ObjectStateEnum : int32_t {
  adStateClosed = 0,
  adStateOpen = 1,
};

enum SchemaEnum : int32_t {
  adSchemaTables = 20,
  adSchemaColumns = 4,
  adSchemaForeignKeys = 27,
  adSchemaPrimaryKeys = 28,
};

enum PersistFormatEnum : int32_t {
  adPersistADTG = 0,
  adPersistXML = 1,
};

enum EditModeEnum : int32_t {
  adEditNone = 0,
  adEditInProgress = 1,
  adEditAdd = 2,
};

enum DataTypeEnum : int32_t {
  adEmpty = 0,
  adSmallInt = 2,
  adInteger = 3,
  adSingle = 4,
  adDouble = 5,
  adCurrency = 6,
  adDate = 7,
  adBSTR = 8,
  adIDispatch = 9,
  adError = 10,
  adBoolean = 11,
  adVariant = 12,
  adIUnknown = 13,
  adDecimal = 14,
  adTinyInt = 16,
  adUnsignedTinyInt = 17,
  adUnsignedSmallInt = 18,
  adUnsignedInt = 19,
  adBigInt = 20,
  adUnsignedBigInt = 21,
  adFileTime = 64,
  adGUID = 72,
  adBinary = 128,
  adChar = 129,
  adWChar = 130,
  adNumeric = 131,
  adUserDefined = 132,
  adDBDate = 133,
  adDBTime = 134,
  adDBTimeStamp = 135,
  adChapter = 136,
  adPropVariant = 138,
  adDBFileTime = 137,
  adVarNumeric = 139,
  adVarChar = 200,
  adLongVarChar = 201,
  adVarWChar = 202,
  adLongVarWChar = 203,
  adVarBinary = 204,
  adLongVarBinary = 205,
};

// Not an ADO enumeration: the database engine behind a connection, for the routines that must
// know how it compares values (Connection::Engine).
enum class EngineFamily { Other, SQLite, PostgreSQL, MariaDB };

// What a record set watching its rows' order (Recordset::RunInstead) has seen of the rows read so
// far: each one's value rising (Holding), every one's to the end (Held), or one's not (Broken;
// also when the provider cannot watch).
enum class RiseSeen { Holding, Broken, Held };

// How far an engine compares the texts of a column by their UTF-8 bytes alone (no case folding,
// no trimming, no locale): not known to (Unknown); = holds exactly when the bytes are equal, the
// order being another or not known (Equality); that, and ORDER BY sorts them as memcmp does
// (EqualityAndOrder).
enum class TextBytes { Unknown, Equality, EqualityAndOrder };

}  // namespace varsentix::ado
