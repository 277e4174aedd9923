#pragma once
// The report as one JSON document; its schema is described in docs/cli.md and is stable:
// fields are only ever added.
#include <ostream>

#include "cli/Report.h"

namespace varsentix::cli {

void writeJson(std::ostream& out, const Report& report);

}  // namespace varsentix::cli
