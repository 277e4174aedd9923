varsentix_add_suite(varsentix_compare_tests
  compare/entry_points_test.cpp
  compare/buffered_test.cpp
  compare/result_queries_test.cpp
  compare/end_to_end_test.cpp
  compare/read_only_compare_test.cpp
  compare/unbracketable_names_test.cpp
)
