#pragma once
// The whole public API of libvarsentix.

// Platform conventions (what Visual Basic and Windows provided).
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Collection.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/ResumeNext.h"
#include "varsentix/platform/vb/VBError.h"
#include "varsentix/platform/vb/Variant.h"

// Result model.
#include "varsentix/results/clsResultSet.h"
#include "varsentix/results/modConstants.h"

// Data sources and connections.
#include "varsentix/datasource/modUtility.h"

namespace varsentix {
// The library's version, "major.minor.patch".
const char* version() noexcept;
}  // namespace varsentix
