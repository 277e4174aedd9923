# The Access provider reads .mdb/.accdb files with mdbtools' libmdb (Debian: mdbtools-dev) into
# an in-memory SQLite database (libsqlite3-dev).
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBMDB REQUIRED IMPORTED_TARGET libmdb)
find_package(SQLite3 REQUIRED)
target_sources(varsentix PRIVATE
  platform/ado/providers/jet/JetSession.cpp
  platform/ado/providers/jet/JetSql.cpp
  platform/ado/providers/jet/JetTypes.cpp
  platform/ado/providers/jet/JetLoader.cpp
  platform/ado/providers/jet/MdbFile.cpp
)
target_link_libraries(varsentix PRIVATE PkgConfig::LIBMDB SQLite::SQLite3)
