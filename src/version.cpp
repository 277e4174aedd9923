#include "varsentix/varsentix.h"

namespace varsentix {
const char* version() noexcept { return VARSENTIX_VERSION; }
}  // namespace varsentix
