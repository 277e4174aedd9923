target_sources(varsentix PRIVATE
  datasource/modUtility.cpp
  datasource/BareValue.cpp
  datasource/ModADO.cpp
  datasource/modUtilityFile.cpp
  datasource/ModDNS.cpp
  datasource/modRegFunctions.cpp
)
