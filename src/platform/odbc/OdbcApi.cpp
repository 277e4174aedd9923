#include "platform/odbc/OdbcApi.h"

#include <dlfcn.h>

#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::odbc {
namespace {

struct Loaded {
  void* handle = nullptr;
  OdbcApi api{};
};

template <typename Fn>
void bind(void* handle, Fn& slot, const char* name) {
  void* symbol = dlsym(handle, name);
  if (symbol == nullptr)
    vb::raiseError(vb::errnum::ProviderError,
                   std::string("ODBC driver manager entry point not found: ") + name, "ODBC");
  slot = reinterpret_cast<Fn>(symbol);
}

std::unique_ptr<Loaded> load() {
  void* handle = dlopen(odbcLibraryName(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    const char* why = dlerror();
    vb::raiseError(vb::errnum::ProviderError,
                   std::string("ODBC driver manager not found: ") + (why ? why : odbcLibraryName()),
                   "ODBC");
  }
  auto loaded = std::make_unique<Loaded>();
  loaded->handle = handle;
  OdbcApi& a = loaded->api;
#define VARSENTIX_ODBC_BIND(name) bind(handle, a.name, #name)
  VARSENTIX_ODBC_BIND(SQLAllocEnv);
  VARSENTIX_ODBC_BIND(SQLAllocHandle);
  VARSENTIX_ODBC_BIND(SQLFreeHandle);
  VARSENTIX_ODBC_BIND(SQLSetEnvAttr);
  VARSENTIX_ODBC_BIND(SQLDataSources);
  VARSENTIX_ODBC_BIND(SQLDriverConnect);
  VARSENTIX_ODBC_BIND(SQLDisconnect);
  VARSENTIX_ODBC_BIND(SQLSetConnectAttr);
  VARSENTIX_ODBC_BIND(SQLGetInfo);
  VARSENTIX_ODBC_BIND(SQLEndTran);
  VARSENTIX_ODBC_BIND(SQLSetStmtAttr);
  VARSENTIX_ODBC_BIND(SQLExecDirect);
  VARSENTIX_ODBC_BIND(SQLPrepare);
  VARSENTIX_ODBC_BIND(SQLExecute);
  VARSENTIX_ODBC_BIND(SQLBindParameter);
  VARSENTIX_ODBC_BIND(SQLNumResultCols);
  VARSENTIX_ODBC_BIND(SQLDescribeCol);
  VARSENTIX_ODBC_BIND(SQLColAttribute);
  VARSENTIX_ODBC_BIND(SQLFetch);
  VARSENTIX_ODBC_BIND(SQLGetData);
  VARSENTIX_ODBC_BIND(SQLRowCount);
  VARSENTIX_ODBC_BIND(SQLMoreResults);
  VARSENTIX_ODBC_BIND(SQLCloseCursor);
  VARSENTIX_ODBC_BIND(SQLFreeStmt);
  VARSENTIX_ODBC_BIND(SQLGetDiagRec);
  VARSENTIX_ODBC_BIND(SQLTables);
  VARSENTIX_ODBC_BIND(SQLPrimaryKeys);
  VARSENTIX_ODBC_BIND(SQLForeignKeys);
  VARSENTIX_ODBC_BIND(SQLDriverConnectW);
  VARSENTIX_ODBC_BIND(SQLExecDirectW);
  VARSENTIX_ODBC_BIND(SQLPrepareW);
  VARSENTIX_ODBC_BIND(SQLDescribeColW);
  VARSENTIX_ODBC_BIND(SQLColAttributeW);
  VARSENTIX_ODBC_BIND(SQLGetDiagRecW);
  VARSENTIX_ODBC_BIND(SQLTablesW);
  VARSENTIX_ODBC_BIND(SQLPrimaryKeysW);
  VARSENTIX_ODBC_BIND(SQLForeignKeysW);
  VARSENTIX_ODBC_BIND(SQLGetConnectAttr);
#undef VARSENTIX_ODBC_BIND
  return loaded;
}

}  // namespace

const char* odbcLibraryName() {
  const char* overridden = std::getenv("VARSENTIX_ODBC_LIBRARY");
  return (overridden != nullptr && *overridden != '\0') ? overridden : "libodbc.so.2";
}

const OdbcApi& odbcApi() {
  // Loaded once and kept for the life of the process: drivers it loads keep pointers into it.
  static std::mutex mutex;
  static std::unique_ptr<Loaded> loaded;
  std::lock_guard lock(mutex);
  if (!loaded) loaded = load();
  return loaded->api;
}

}  // namespace varsentix::odbc
