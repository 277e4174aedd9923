varsentix_add_suite(varsentix_hostile_tests
  hostile/bare_values_test.cpp
  hostile/record_guard_test.cpp
)
