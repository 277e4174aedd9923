varsentix_add_suite(varsentix_control_tests
  control/control_state_test.cpp
  control/control_progress_test.cpp
  control/control_error_log_test.cpp
  control/control_vocabulary_test.cpp
  control/control_data_sources_test.cpp
  control/control_files_test.cpp
)
