varsentix_add_suite(varsentix_server_tests
  server/server_registration_test.cpp
  server/server_class_objects_test.cpp
  server/server_concurrency_test.cpp
  server/server_c_host.c
)
target_link_libraries(varsentix_server_tests PRIVATE ${CMAKE_DL_LIBS})
