file(REMOVE_RECURSE
  "CMakeFiles/varsentix_unit_tests.dir/unit/change_types_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/change_types_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/escape_single_quotes_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/escape_single_quotes_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/result_set_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/result_set_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/ui_hooks_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/ui_hooks_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_conversions_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_conversions_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_objects_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_objects_test.cpp.o.d"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_variant_test.cpp.o"
  "CMakeFiles/varsentix_unit_tests.dir/unit/vb_variant_test.cpp.o.d"
  "varsentix_unit_tests"
  "varsentix_unit_tests.pdb"
  "varsentix_unit_tests[1]_tests.cmake"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/varsentix_unit_tests.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
