# Data sources, connection strings and the registry over odbc.ini. The listing tests register
# real ODBC drivers (Debian packages libsqliteodbc, odbc-postgresql, odbc-mariadb) in a temporary
# odbcinst.ini. The Access driver name points at MDB Tools' driver (odbc-mdbtools) when it is
# installed, else at the SQLite driver: listing never loads a driver, and an Access data source
# opens through the Jet provider, not through ODBC.
set(odbc_driver_dirs /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/odbc /usr/lib/odbc /usr/lib64 /usr/lib)
find_file(VARSENTIX_SQLITE_ODBC_DRIVER libsqlite3odbc.so PATHS ${odbc_driver_dirs} NO_DEFAULT_PATH REQUIRED)
find_file(VARSENTIX_POSTGRESQL_ODBC_DRIVER psqlodbcw.so PATHS ${odbc_driver_dirs} NO_DEFAULT_PATH REQUIRED)
find_file(VARSENTIX_MARIADB_ODBC_DRIVER libmaodbc.so PATHS ${odbc_driver_dirs} NO_DEFAULT_PATH REQUIRED)
find_file(VARSENTIX_MDBTOOLS_ODBC_DRIVER libmdbodbc.so PATHS ${odbc_driver_dirs} NO_DEFAULT_PATH)
set(access_odbc_driver ${VARSENTIX_SQLITE_ODBC_DRIVER})
if(VARSENTIX_MDBTOOLS_ODBC_DRIVER)
  set(access_odbc_driver ${VARSENTIX_MDBTOOLS_ODBC_DRIVER})
endif()

# A driver manager that forwards every call to unixODBC and fails on request (environment
# variables VARSENTIX_FAULT_ALLOC_ENV, VARSENTIX_FAULT_ENDLESS_DATA_SOURCES).
find_package(ODBC REQUIRED)
add_library(varsentix_odbc_faults SHARED datasource/odbc_faults.cpp)
target_link_libraries(varsentix_odbc_faults PRIVATE ODBC::ODBC varsentix_build_flags ${CMAKE_DL_LIBS})
# Keep libodbc as a dependency although no call to it is linked directly.
target_link_options(varsentix_odbc_faults PRIVATE -Wl,--no-as-needed)

set(datasource_test_sources
  datasource/OdbcConfig.cpp
  datasource/data_source_list_test.cpp
  datasource/parse_entry_test.cpp
  datasource/connection_string_test.cpp
  datasource/registry_test.cpp
)
# Opening an Access data source through the Jet provider needs that provider in the library.
if(EXISTS ${PROJECT_SOURCE_DIR}/src/platform/ado/providers/jet/sources.cmake)
  list(APPEND datasource_test_sources datasource/access_data_source_test.cpp)
else()
  message(STATUS "Jet provider not built: the Access data-source open test is left out")
endif()

varsentix_add_suite(varsentix_datasource_tests ${datasource_test_sources})
add_dependencies(varsentix_datasource_tests varsentix_odbc_faults)
target_compile_definitions(varsentix_datasource_tests PRIVATE
  VARSENTIX_SQLITE_ODBC_DRIVER="${VARSENTIX_SQLITE_ODBC_DRIVER}"
  VARSENTIX_POSTGRESQL_ODBC_DRIVER="${VARSENTIX_POSTGRESQL_ODBC_DRIVER}"
  VARSENTIX_MARIADB_ODBC_DRIVER="${VARSENTIX_MARIADB_ODBC_DRIVER}"
  VARSENTIX_ACCESS_ODBC_DRIVER="${access_odbc_driver}"
  VARSENTIX_ODBC_FAULTS_LIBRARY="$<TARGET_FILE:varsentix_odbc_faults>")
