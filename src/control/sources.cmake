target_sources(varsentix PRIVATE
  control/VarsentiCompare.cpp
  control/VarsentiBuffered.cpp
  control/VarsentiResultQueries.cpp
  control/VarsentiRecordOperations.cpp
)
