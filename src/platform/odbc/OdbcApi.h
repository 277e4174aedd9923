#pragma once
// The ODBC driver manager (unixODBC's libodbc.so.2), loaded at run time so that a machine
// without it still runs everything that does not need ODBC. The environment variable
// VARSENTIX_ODBC_LIBRARY names another library file (tests point it at a missing one).
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

namespace varsentix::odbc {

// The driver-manager entry points the library calls. Add members here as providers need them.
struct OdbcApi {
  SQLRETURN (*SQLAllocEnv)(SQLHENV*);
  SQLRETURN (*SQLAllocHandle)(SQLSMALLINT, SQLHANDLE, SQLHANDLE*);
  SQLRETURN (*SQLFreeHandle)(SQLSMALLINT, SQLHANDLE);
  SQLRETURN (*SQLSetEnvAttr)(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER);
  SQLRETURN (*SQLDataSources)(SQLHENV, SQLUSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*, SQLCHAR*,
                              SQLSMALLINT, SQLSMALLINT*);
  SQLRETURN (*SQLDriverConnect)(SQLHDBC, SQLHWND, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT,
                                SQLSMALLINT*, SQLUSMALLINT);
  SQLRETURN (*SQLDisconnect)(SQLHDBC);
  SQLRETURN (*SQLSetConnectAttr)(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER);
  SQLRETURN (*SQLGetInfo)(SQLHDBC, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT*);
  SQLRETURN (*SQLEndTran)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT);
  SQLRETURN (*SQLSetStmtAttr)(SQLHSTMT, SQLINTEGER, SQLPOINTER, SQLINTEGER);
  SQLRETURN (*SQLExecDirect)(SQLHSTMT, SQLCHAR*, SQLINTEGER);
  SQLRETURN (*SQLPrepare)(SQLHSTMT, SQLCHAR*, SQLINTEGER);
  SQLRETURN (*SQLExecute)(SQLHSTMT);
  SQLRETURN (*SQLBindParameter)(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLSMALLINT, SQLSMALLINT,
                                SQLULEN, SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN*);
  SQLRETURN (*SQLNumResultCols)(SQLHSTMT, SQLSMALLINT*);
  SQLRETURN (*SQLDescribeCol)(SQLHSTMT, SQLUSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*,
                              SQLSMALLINT*, SQLULEN*, SQLSMALLINT*, SQLSMALLINT*);
  SQLRETURN (*SQLColAttribute)(SQLHSTMT, SQLUSMALLINT, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT,
                               SQLSMALLINT*, SQLLEN*);
  SQLRETURN (*SQLFetch)(SQLHSTMT);
  SQLRETURN (*SQLGetData)(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN*);
  SQLRETURN (*SQLRowCount)(SQLHSTMT, SQLLEN*);
  SQLRETURN (*SQLMoreResults)(SQLHSTMT);
  SQLRETURN (*SQLCloseCursor)(SQLHSTMT);
  SQLRETURN (*SQLFreeStmt)(SQLHSTMT, SQLUSMALLINT);
  SQLRETURN (*SQLGetDiagRec)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLCHAR*, SQLINTEGER*, SQLCHAR*,
                             SQLSMALLINT, SQLSMALLINT*);
  SQLRETURN (*SQLTables)(SQLHSTMT, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR*,
                         SQLSMALLINT, SQLCHAR*, SQLSMALLINT);
  SQLRETURN (*SQLPrimaryKeys)(SQLHSTMT, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR*,
                              SQLSMALLINT);
  SQLRETURN (*SQLForeignKeys)(SQLHSTMT, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR*,
                              SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR*,
                              SQLSMALLINT);
  // The wide (UTF-16) entry points: Unicode drivers take text through these unchanged.
  SQLRETURN (*SQLDriverConnectW)(SQLHDBC, SQLHWND, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                                 SQLSMALLINT*, SQLUSMALLINT);
  SQLRETURN (*SQLExecDirectW)(SQLHSTMT, SQLWCHAR*, SQLINTEGER);
  SQLRETURN (*SQLPrepareW)(SQLHSTMT, SQLWCHAR*, SQLINTEGER);
  SQLRETURN (*SQLDescribeColW)(SQLHSTMT, SQLUSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLSMALLINT*,
                               SQLSMALLINT*, SQLULEN*, SQLSMALLINT*, SQLSMALLINT*);
  SQLRETURN (*SQLColAttributeW)(SQLHSTMT, SQLUSMALLINT, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT,
                                SQLSMALLINT*, SQLLEN*);
  SQLRETURN (*SQLGetDiagRecW)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLWCHAR*, SQLINTEGER*,
                              SQLWCHAR*, SQLSMALLINT, SQLSMALLINT*);
  SQLRETURN (*SQLTablesW)(SQLHSTMT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*,
                          SQLSMALLINT, SQLWCHAR*, SQLSMALLINT);
  SQLRETURN (*SQLPrimaryKeysW)(SQLHSTMT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*,
                               SQLSMALLINT);
  SQLRETURN (*SQLForeignKeysW)(SQLHSTMT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*,
                               SQLSMALLINT, SQLWCHAR*, SQLSMALLINT, SQLWCHAR*, SQLSMALLINT,
                               SQLWCHAR*, SQLSMALLINT);
  SQLRETURN (*SQLGetConnectAttr)(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER, SQLINTEGER*);
};

// The loaded driver manager. Loads it on first use (thread-safe). Raises VBError (ProviderError,
// "ODBC driver manager not found: <dlerror>") when the library or
// one of its entry points cannot be loaded; later calls try again.
const OdbcApi& odbcApi();

// The library file loaded: $VARSENTIX_ODBC_LIBRARY, or "libodbc.so.2".
const char* odbcLibraryName();

}  // namespace varsentix::odbc
