target_sources(varsentix PRIVATE
  datasource/modUtility.cpp
  datasource/ModDNS.cpp
  datasource/modRegFunctions.cpp
)
