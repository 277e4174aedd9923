target_sources(varsentix PRIVATE
  results/clsResultSet.cpp
  results/modConstants.cpp
)
