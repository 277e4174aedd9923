# Load time of the Access sample files: VARSENTIX_SHARED_DATA or ../shared/data.
add_executable(varsentix_jet_load_bench ${CMAKE_CURRENT_LIST_DIR}/jet_load_bench.cpp)
target_link_libraries(varsentix_jet_load_bench PRIVATE varsentix::varsentix)
target_include_directories(varsentix_jet_load_bench PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(varsentix_jet_load_bench PRIVATE
  VARSENTIX_SHARED_DATA_DIR="${PROJECT_SOURCE_DIR}/../shared/data")
