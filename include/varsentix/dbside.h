#pragma once
// One database side: the manager, its connection helper and the type names of its fields.
#include "varsentix/dbside/ModADOFields.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/dbside/clsData.h"
