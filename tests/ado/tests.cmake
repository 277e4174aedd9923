# The record-set layer: connection strings, SQL dialect, types, record sets on every engine,
# XML persistence and the SQLite provider.
find_package(SQLite3 REQUIRED)
varsentix_add_suite(varsentix_ado_tests
  ado/AdoTestSupport.cpp
  ado/connection_string_test.cpp
  ado/sql_dialect_test.cpp
  ado/sql_lexer_test.cpp
  ado/sql_lexer_engines_test.cpp
  ado/type_info_test.cpp
  ado/recordset_engines_test.cpp
  ado/xml_persistence_test.cpp
  ado/sqlite_provider_test.cpp
  ado/joined_reader_test.cpp
)
target_link_libraries(varsentix_ado_tests PRIVATE SQLite::SQLite3)
