#pragma once
// Data sources and connections: data-source list, connection strings, type names, helpers.
#include "varsentix/datasource/modUtility.h"
