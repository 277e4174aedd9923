# The record-set layer: Connection, Recordset, the provider seam and XML persistence.
find_package(EXPAT REQUIRED)
target_link_libraries(varsentix PRIVATE EXPAT::EXPAT)
target_sources(varsentix PRIVATE
  platform/ado/Connection.cpp
  platform/ado/ConnectionString.cpp
  platform/ado/PrefetchCursor.cpp
  platform/ado/ProviderRegistry.cpp
  platform/ado/Recordset.cpp
  platform/ado/RecordsetImpl.cpp
  platform/ado/SchemaRowsets.cpp
  platform/ado/SqlDialect.cpp
  platform/ado/SqlLexer.cpp
  platform/ado/TypeInfo.cpp
  platform/ado/XmlPersistence.cpp
)
