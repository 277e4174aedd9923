#pragma once
// Data sources and connections: data-source list, connection strings, type names, helpers.
#include "varsentix/datasource/ModADO.h"
#include "varsentix/datasource/ModDNS.h"
#include "varsentix/datasource/modRegFunctions.h"
#include "varsentix/datasource/modUtility.h"
#include "varsentix/datasource/modUtilityFile.h"
