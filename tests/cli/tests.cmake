varsentix_add_suite(varsentix_cli_tests cli/cli_test.cpp)
add_dependencies(varsentix_cli_tests varsentix_cli)
target_compile_definitions(varsentix_cli_tests PRIVATE VARSENTIX_CLI="$<TARGET_FILE:varsentix_cli>")
