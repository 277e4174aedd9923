find_package(SQLite3 REQUIRED)
varsentix_add_suite(varsentix_jet_tests
  jet/jet_loader_test.cpp
  jet/jet_provider_test.cpp
  jet/jet_sql_test.cpp
  jet/jet_types_test.cpp
)
target_link_libraries(varsentix_jet_tests PRIVATE SQLite::SQLite3)
