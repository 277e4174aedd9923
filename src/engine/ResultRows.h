#pragma once
// Row access shared by the table and field passes: row index of a side's results (1-based) and
// their count, both failing as the collection does.
#include <cstdint>

#include "varsentix/dbside/clsDBManager.h"

namespace varsentix::engine {

inline const vb::Ref<clsResultSet>& rowOf(clsDBManager& side, int32_t index) {
  return side.getResults()->Item(index);
}

inline int32_t rowCount(clsDBManager& side) { return side.getResults()->Count(); }

}  // namespace varsentix::engine
