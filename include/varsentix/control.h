#pragma once
// The public control Varsenti and its UpdateCount event.
#include "varsentix/control/UpdateCountEvent.h"
#include "varsentix/control/Varsenti.h"
