file(REMOVE_RECURSE
  "CMakeFiles/varsentix.dir/datasource/modUtility.cpp.o"
  "CMakeFiles/varsentix.dir/datasource/modUtility.cpp.o.d"
  "CMakeFiles/varsentix.dir/platform/odbc/OdbcApi.cpp.o"
  "CMakeFiles/varsentix.dir/platform/odbc/OdbcApi.cpp.o.d"
  "CMakeFiles/varsentix.dir/platform/ui/Hooks.cpp.o"
  "CMakeFiles/varsentix.dir/platform/ui/Hooks.cpp.o.d"
  "CMakeFiles/varsentix.dir/platform/vb/Conversions.cpp.o"
  "CMakeFiles/varsentix.dir/platform/vb/Conversions.cpp.o.d"
  "CMakeFiles/varsentix.dir/platform/vb/VBError.cpp.o"
  "CMakeFiles/varsentix.dir/platform/vb/VBError.cpp.o.d"
  "CMakeFiles/varsentix.dir/platform/vb/Variant.cpp.o"
  "CMakeFiles/varsentix.dir/platform/vb/Variant.cpp.o.d"
  "CMakeFiles/varsentix.dir/results/clsResultSet.cpp.o"
  "CMakeFiles/varsentix.dir/results/clsResultSet.cpp.o.d"
  "CMakeFiles/varsentix.dir/results/modConstants.cpp.o"
  "CMakeFiles/varsentix.dir/results/modConstants.cpp.o.d"
  "CMakeFiles/varsentix.dir/version.cpp.o"
  "CMakeFiles/varsentix.dir/version.cpp.o.d"
  "libvarsentix.pdb"
  "libvarsentix.so"
  "libvarsentix.so.0"
  "libvarsentix.so.0.1.0"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/varsentix.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
