#include "engine/DataProgress.h"

namespace varsentix::engine {

DataProgress& dataProgress() noexcept {
  thread_local DataProgress progress;
  return progress;
}

}  // namespace varsentix::engine
