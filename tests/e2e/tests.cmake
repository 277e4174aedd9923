# Whole comparisons of the samples on every kind of database, through the public control and
# the varsentix program.
varsentix_add_suite(varsentix_e2e_tests
  e2e/E2eSupport.cpp
  e2e/full_compare_test.cpp
  e2e/nwind_copy_test.cpp
  e2e/cli_servers_test.cpp
)
add_dependencies(varsentix_e2e_tests varsentix_cli)
target_compile_definitions(varsentix_e2e_tests PRIVATE VARSENTIX_CLI="$<TARGET_FILE:varsentix_cli>")
