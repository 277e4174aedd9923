#----------------------------------------------------------------
# Generated CMake target import file for configuration "RelWithDebInfo".
#----------------------------------------------------------------

# Commands may need to know the format version.
set(CMAKE_IMPORT_FILE_VERSION 1)

# Import target "varsentix::varsentix" for configuration "RelWithDebInfo"
set_property(TARGET varsentix::varsentix APPEND PROPERTY IMPORTED_CONFIGURATIONS RELWITHDEBINFO)
set_target_properties(varsentix::varsentix PROPERTIES
  IMPORTED_LOCATION_RELWITHDEBINFO "${_IMPORT_PREFIX}/lib/libvarsentix.so.0.1.0"
  IMPORTED_SONAME_RELWITHDEBINFO "libvarsentix.so.0"
  )

list(APPEND _cmake_import_check_targets varsentix::varsentix )
list(APPEND _cmake_import_check_files_for_varsentix::varsentix "${_IMPORT_PREFIX}/lib/libvarsentix.so.0.1.0" )

# Commands beyond this point should not need to know the version.
set(CMAKE_IMPORT_FILE_VERSION)
