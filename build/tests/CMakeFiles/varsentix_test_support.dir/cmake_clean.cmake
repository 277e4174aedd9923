file(REMOVE_RECURSE
  "CMakeFiles/varsentix_test_support.dir/support/TempDir.cpp.o"
  "CMakeFiles/varsentix_test_support.dir/support/TempDir.cpp.o.d"
  "libvarsentix_test_support.a"
  "libvarsentix_test_support.pdb"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/varsentix_test_support.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
