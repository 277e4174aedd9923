#pragma once
// The record-set layer: ADO's Connection, Recordset, Fields and enumerations.
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/ado/Recordset.h"
