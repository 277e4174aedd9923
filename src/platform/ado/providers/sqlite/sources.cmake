# The SQLite provider: the embedded default ("Provider=SQLite;Data Source=<file>").
find_package(SQLite3 REQUIRED)
target_link_libraries(varsentix PRIVATE SQLite::SQLite3)
target_sources(varsentix PRIVATE
  platform/ado/providers/sqlite/SqliteSession.cpp
  platform/ado/providers/sqlite/SqliteTypes.cpp
)
