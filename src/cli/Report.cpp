#include "cli/Report.h"

namespace varsentix::cli {

bool Report::hasDifferences() const {
  for (const auto& t : tables)
    if (t.changeType != 0) return true;
  for (const auto& f : fields)
    if (f.changeType != 0) return true;
  return !records.empty();
}

const char* sideText(SideName side) { return side == SideName::Original ? "Original" : "Modified"; }

}  // namespace varsentix::cli
