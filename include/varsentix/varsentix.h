#pragma once
// The whole public API of libvarsentix, layer by layer.
#include "varsentix/platform.h"
#include "varsentix/results.h"
#include "varsentix/datasource.h"
#include "varsentix/dbside.h"
#include "varsentix/control.h"
#include "varsentix/server.h"

namespace varsentix {
// The library's version, "major.minor.patch".
const char* version() noexcept;
}  // namespace varsentix
