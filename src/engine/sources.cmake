target_sources(varsentix PRIVATE
  engine/DataProgress.cpp
)
