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

bool isNumericType(int32_t adoType) {
  switch (adoType) {
    case 2: case 3: case 4: case 5: case 6: case 11: case 14: case 16: case 17: case 18:
    case 19: case 20: case 21: case 131: case 139:
      return true;
    default:
      return false;
  }
}

}  // namespace varsentix::cli
