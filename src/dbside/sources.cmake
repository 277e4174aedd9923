target_sources(varsentix PRIVATE
  dbside/clsData.cpp
  dbside/clsDBManagerAccessors.cpp
  dbside/clsDBManagerConnection.cpp
  dbside/clsDBManagerKeys.cpp
  dbside/clsDBManagerQueries.cpp
  dbside/clsDBManagerDescription.cpp
  dbside/clsDBManagerWrites.cpp
  dbside/clsDBManagerRollback.cpp
  dbside/RecordWriteGuard.cpp
  dbside/MessageText.cpp
  dbside/ModADOFields.cpp
)
