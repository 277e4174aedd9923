#pragma once
// The data-comparison progress position and maximum. They are kept once per thread, shared by
// every control on that thread: the buffered record comparison writes them, the control's
// getDataProgressStatus / getDataProgressStatusMax read them. Both start at 0.
#include <cstdint>

namespace varsentix::engine {

struct DataProgress {
  int32_t position = 0;
  int32_t maximum = 0;
};

// This thread's counters.
DataProgress& dataProgress() noexcept;

}  // namespace varsentix::engine
