file(REMOVE_RECURSE
  "CMakeFiles/varsentix_cli.dir/main.cpp.o"
  "CMakeFiles/varsentix_cli.dir/main.cpp.o.d"
  "varsentix"
  "varsentix.pdb"
)

# Per-language clean rules from dependency scanning.
foreach(lang CXX)
  include(CMakeFiles/varsentix_cli.dir/cmake_clean_${lang}.cmake OPTIONAL)
endforeach()
