// A driver manager for fault injection: it exports SQLAllocEnv and SQLDataSources and is linked
// against unixODBC, so every other entry point a caller looks up in it is unixODBC's own.
//   VARSENTIX_FAULT_ALLOC_ENV            set: SQLAllocEnv returns SQL_ERROR and allocates nothing
//   VARSENTIX_FAULT_ENDLESS_DATA_SOURCES set: the end of the list is never reported; after the
//                                        last data source the listing starts over
#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>

#include <cstdlib>

namespace {

void* unixOdbc() {
  static void* library = dlopen("libodbc.so.2", RTLD_NOW | RTLD_NOLOAD);
  return library;
}

template <typename Fn>
Fn real(const char* name) {
  return reinterpret_cast<Fn>(dlsym(unixOdbc(), name));
}

}  // namespace

extern "C" SQLRETURN SQL_API SQLAllocEnv(SQLHENV* environment) {
  if (std::getenv("VARSENTIX_FAULT_ALLOC_ENV") != nullptr) return SQL_ERROR;
  static auto allocEnv = real<SQLRETURN (*)(SQLHENV*)>("SQLAllocEnv");
  return allocEnv(environment);
}

extern "C" SQLRETURN SQL_API SQLDataSources(SQLHENV environment, SQLUSMALLINT direction,
                                            SQLCHAR* name, SQLSMALLINT nameSize,
                                            SQLSMALLINT* nameLength, SQLCHAR* description,
                                            SQLSMALLINT descriptionSize,
                                            SQLSMALLINT* descriptionLength) {
  using Fn = SQLRETURN (*)(SQLHENV, SQLUSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*, SQLCHAR*,
                           SQLSMALLINT, SQLSMALLINT*);
  static auto dataSources = real<Fn>("SQLDataSources");
  SQLRETURN status = dataSources(environment, direction, name, nameSize, nameLength, description,
                                 descriptionSize, descriptionLength);
  if (status == SQL_NO_DATA && std::getenv("VARSENTIX_FAULT_ENDLESS_DATA_SOURCES") != nullptr)
    status = dataSources(environment, direction, name, nameSize, nameLength, description,
                         descriptionSize, descriptionLength);
  return status;
}
