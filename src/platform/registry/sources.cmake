# The read-only registry over the system odbc.ini. unixODBC's installer library (libodbcinst) is
# loaded at run time to name the file; the path pkg-config reports is the fallback.
find_package(PkgConfig QUIET)
set(VARSENTIX_SYSTEM_ODBC_INI "/etc/odbc.ini")
if(PkgConfig_FOUND)
  pkg_get_variable(odbc_ini_from_pkgconfig odbc odbcini)
  if(odbc_ini_from_pkgconfig)
    set(VARSENTIX_SYSTEM_ODBC_INI "${odbc_ini_from_pkgconfig}")
  endif()
endif()
target_sources(varsentix PRIVATE
  platform/registry/OdbcIniFile.cpp
  platform/registry/Registry.cpp
  platform/registry/SystemIni.cpp
)
set_source_files_properties(platform/registry/SystemIni.cpp PROPERTIES
  COMPILE_DEFINITIONS "VARSENTIX_SYSTEM_ODBC_INI=\"${VARSENTIX_SYSTEM_ODBC_INI}\"")
target_link_libraries(varsentix PRIVATE ${CMAKE_DL_LIBS})
