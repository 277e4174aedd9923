varsentix_add_suite(varsentix_record_tests
  records/writes_test.cpp
  records/rollback_test.cpp
  records/record_operations_test.cpp
)
