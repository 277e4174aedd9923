varsentix_add_suite(varsentix_odbc_tests
  odbc/odbc_types_test.cpp
  odbc/engines_test.cpp
  odbc/odbc_provider_test.cpp
  odbc/odbc_schema_test.cpp
  odbc/odbc_connection_test.cpp
  odbc/odbc_chinook_test.cpp
)
