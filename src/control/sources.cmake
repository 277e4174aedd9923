# The public control Varsenti, one file per concern.
target_sources(varsentix PRIVATE
  control/Varsenti.cpp
  control/VarsentiDataSources.cpp
  control/VarsentiErrorLog.cpp
  control/VarsentiManagers.cpp
  control/VarsentiOptions.cpp
  control/VarsentiProgress.cpp
  control/VarsentiVocabulary.cpp
  control/VarsentiCompare.cpp
  control/VarsentiBuffered.cpp
  control/VarsentiResultQueries.cpp
  control/VarsentiRecordOperations.cpp
)
