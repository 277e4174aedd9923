
# Consider dependencies only in project.
set(CMAKE_DEPENDS_IN_PROJECT_ONLY OFF)

# The set of languages for which implicit dependencies are needed:
set(CMAKE_DEPENDS_LANGUAGES
  )

# The set of dependency files which are needed:
set(CMAKE_DEPENDS_DEPENDENCY_FILES
  "/work/main/tests/unit/change_types_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/change_types_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/change_types_test.cpp.o.d"
  "/work/main/tests/unit/escape_single_quotes_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/escape_single_quotes_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/escape_single_quotes_test.cpp.o.d"
  "/work/main/tests/unit/result_set_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/result_set_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/result_set_test.cpp.o.d"
  "/work/main/tests/unit/ui_hooks_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/ui_hooks_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/ui_hooks_test.cpp.o.d"
  "/work/main/tests/unit/vb_conversions_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_conversions_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_conversions_test.cpp.o.d"
  "/work/main/tests/unit/vb_objects_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_objects_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_objects_test.cpp.o.d"
  "/work/main/tests/unit/vb_variant_test.cpp" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_variant_test.cpp.o" "gcc" "tests/CMakeFiles/varsentix_unit_tests.dir/unit/vb_variant_test.cpp.o.d"
  )

# Targets to which this target links.
set(CMAKE_TARGET_LINKED_INFO_FILES
  "/work/main/build/tests/CMakeFiles/varsentix_test_support.dir/DependInfo.cmake"
  "/work/main/build/src/CMakeFiles/varsentix.dir/DependInfo.cmake"
  )

# Fortran module output directory.
set(CMAKE_Fortran_TARGET_MODULE_DIR "")
