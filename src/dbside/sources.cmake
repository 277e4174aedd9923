target_sources(varsentix PRIVATE
  dbside/clsDBManagerWrites.cpp
  dbside/clsDBManagerRollback.cpp
)
