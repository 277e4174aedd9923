varsentix_add_suite(varsentix_engine_tests
  engine/table_structure_test.cpp
  engine/field_structure_test.cpp
  engine/record_compare_test.cpp
  engine/record_helpers_test.cpp
  engine/hash_set_test.cpp
  engine/chinook_golden_test.cpp
)
