#include "platform/ado/PrefetchCursor.h"

#include <utility>

namespace varsentix::ado::detail {

PrefetchCursor::PrefetchCursor(std::unique_ptr<RowCursor> inner)
    : inner_(std::move(inner)), batches_([this](std::vector<vb::Variant>& row) { return inner_->fetch(row); }) {}

bool PrefetchCursor::watchRise(size_t column, std::shared_ptr<std::atomic<RiseSeen>> seen) {
  // Before the first fetch, so before the thread reads anything.
  return !started_ && inner_->watchRise(column, std::move(seen));
}

bool PrefetchCursor::fetch(std::vector<vb::Variant>& row) {
  if (!started_) {
    started_ = true;
    batches_.start();
  }
  if (batches_.take(row)) return true;
  // No thread (none to be had, or stopped) and none of its rows left: read in step.
  return !batches_.ended() && inner_->fetch(row);
}

}  // namespace varsentix::ado::detail
