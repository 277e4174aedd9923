target_sources(varsentix PRIVATE
  datasource/modUtility.cpp
)
