target_sources(varsentix_test_support PRIVATE
  support/TempDir.cpp
  support/Engines.cpp
  support/ServerScripts.cpp
)
# Test databases are set up natively: SQLite files through the SQLite library, the servers
# through the ODBC driver manager (its headers from unixodbc-dev).
find_package(SQLite3 REQUIRED)
find_path(ODBC_INCLUDE_DIR sql.h REQUIRED)
target_include_directories(varsentix_test_support PRIVATE ${ODBC_INCLUDE_DIR})
target_link_libraries(varsentix_test_support PUBLIC SQLite::SQLite3)
