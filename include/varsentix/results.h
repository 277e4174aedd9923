#pragma once
// The result model: difference rows and the change-type vocabulary.
#include "varsentix/results/clsResultSet.h"
#include "varsentix/results/modConstants.h"
