#pragma once
// The readable report: tables first, then fields, then records per table.
#include <cstddef>
#include <ostream>

#include "cli/Report.h"

namespace varsentix::cli {

struct TextOptions {
  bool colour = false;  // ANSI colours (a terminal, and NO_COLOR not set)
  size_t limit = 20;    // records listed per table and side; the rest are counted
};

void writeText(std::ostream& out, const Report& report, const TextOptions& options);

}  // namespace varsentix::cli
