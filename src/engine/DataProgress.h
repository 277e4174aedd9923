#pragma once
// The data-comparison progress of the buffered record routines: a position and a maximum, kept
// once per thread and shared by every control on that thread. Both start at 0. The buffered
// routines write them while they run; the control reads them (getDataProgressStatus and
// getDataProgressStatusMax report 1 and 100 while they are 0).
#include <cstdint>

namespace varsentix::engine {

struct DataProgress {
  int32_t position = 0;
  int32_t maximum = 0;
};

// This thread's progress. The reference stays valid for the thread's life.
DataProgress& dataProgress() noexcept;

}  // namespace varsentix::engine
