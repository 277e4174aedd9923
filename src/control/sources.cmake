# The public control Varsenti, one file per concern.
target_sources(varsentix PRIVATE
  control/Varsenti.cpp
  control/VarsentiDataSources.cpp
  control/VarsentiErrorLog.cpp
  control/VarsentiManagers.cpp
  control/VarsentiOptions.cpp
  control/VarsentiProgress.cpp
  control/VarsentiVocabulary.cpp
)
