varsentix_add_suite(varsentix_dbside_tests
  dbside/type_names_test.cpp
  dbside/file_utility_test.cpp
  dbside/manager_test.cpp
  dbside/data_helper_engine_test.cpp
  dbside/manager_engine_test.cpp
  dbside/access_side_test.cpp
)
