# The ODBC provider ("Provider=MSDASQL;..."): any ODBC driver through the driver manager, which
# platform/odbc loads at run time (the headers come from unixodbc-dev).
target_sources(varsentix PRIVATE
  platform/ado/providers/odbc/OdbcSession.cpp
  platform/ado/providers/odbc/OdbcTypes.cpp
  platform/ado/providers/odbc/OdbcText.cpp
)
