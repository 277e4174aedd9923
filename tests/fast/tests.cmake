varsentix_add_suite(varsentix_fast_tests
  fast/structure_differential_test.cpp
  fast/record_differential_test.cpp
)
