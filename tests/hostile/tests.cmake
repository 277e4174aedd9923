varsentix_add_suite(varsentix_hostile_tests
  hostile/bare_values_test.cpp
  hostile/record_guard_test.cpp
)

# The hostile-data matrix: one test per pair of engines and kind of work, each well within the
# time a test may take.
varsentix_add_suite(varsentix_hostile_matrix_tests
  hostile/HostileMatrix.cpp
  hostile/matrix_compare_test.cpp
  hostile/matrix_records_test.cpp
)
