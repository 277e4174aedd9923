varsentix_add_suite(varsentix_odbc_tests
  odbc/engines_test.cpp
)
