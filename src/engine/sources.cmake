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
)
