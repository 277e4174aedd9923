target_sources(varsentix PRIVATE
  engine/DataProgress.cpp
  engine/ModADOKeys.cpp
  engine/ModADOForeignKeys.cpp
  engine/ModADOMatchQuery.cpp
  engine/TableStructure.cpp
  engine/FieldStructure.cpp
  engine/StructureIndex.cpp
  engine/RecordCompare.cpp
  engine/RecordMatch.cpp
  engine/ReadAhead.cpp
  engine/HashSet.cpp
)
# The record walks read the other side's records ahead on a thread of their own.
find_package(Threads REQUIRED)
target_link_libraries(varsentix PRIVATE Threads::Threads)
