# The ODBC headers come from unixodbc-dev; the driver manager itself is loaded at run time.
find_path(ODBC_INCLUDE_DIR sql.h REQUIRED)
target_include_directories(varsentix PRIVATE ${ODBC_INCLUDE_DIR})
target_sources(varsentix PRIVATE platform/odbc/OdbcApi.cpp)
target_link_libraries(varsentix PRIVATE ${CMAKE_DL_LIBS})
