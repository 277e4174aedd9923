#include "platform/ado/PrefetchCursor.h"

#include <system_error>
#include <utility>

namespace varsentix::ado::detail {

PrefetchCursor::PrefetchCursor(std::unique_ptr<RowCursor> inner) : inner_(std::move(inner)) {
  for (size_t i = 0; i < kBatches; ++i) free_.push_back(std::make_unique<Batch>());
}

PrefetchCursor::~PrefetchCursor() { stop(); }

bool PrefetchCursor::watchRise(size_t column, std::shared_ptr<std::atomic<RiseSeen>> seen) {
  // Before the first fetch, so before the thread reads anything.
  return !started_ && inner_->watchRise(column, std::move(seen));
}

void PrefetchCursor::run() {
  for (;;) {
    std::unique_ptr<Batch> batch;
    {
      std::unique_lock<std::mutex> lock(queue_);
      changed_.wait(lock, [&] { return stopping_ || !free_.empty(); });
      if (stopping_) return;
      batch = std::move(free_.back());
      free_.pop_back();
    }
    batch->count = 0;
    batch->end = false;
    batch->error = nullptr;
    try {
      while (batch->count < kBatchRows) {
        if (batch->rows.size() == batch->count) batch->rows.emplace_back();
        if (!inner_->fetch(batch->rows[batch->count])) {
          batch->end = true;
          break;
        }
        ++batch->count;
      }
    } catch (...) {
      batch->error = std::current_exception();
    }
    const bool last = batch->end || batch->error;
    {
      std::lock_guard<std::mutex> lock(queue_);
      full_.push_back(std::move(batch));
    }
    changed_.notify_all();
    if (last) return;
  }
}

bool PrefetchCursor::takeBatch() {
  std::unique_lock<std::mutex> lock(queue_);
  if (batch_) {
    free_.push_back(std::move(batch_));
    changed_.notify_all();
  }
  at_ = 0;
  if (done_) return false;
  if (thread_.joinable()) changed_.wait(lock, [&] { return !full_.empty(); });
  if (full_.empty()) return false;  // the thread was stopped
  batch_ = std::move(full_.front());
  full_.pop_front();
  done_ = batch_->end || batch_->error;
  return true;
}

bool PrefetchCursor::fetch(std::vector<vb::Variant>& row) {
  if (!started_) {
    started_ = true;
    try {
      thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
      // No thread to be had: read in step.
    }
  }
  for (;;) {
    if (batch_ && at_ < batch_->count) {
      row.swap(batch_->rows[at_++]);
      return true;
    }
    if (batch_ && batch_->error) std::rethrow_exception(batch_->error);
    if (batch_ && batch_->end) return false;
    // No thread (none to be had, or stopped) and nothing read by it left: read in step.
    if (!takeBatch()) return inner_->fetch(row);
  }
}

void PrefetchCursor::stop() noexcept {
  if (!thread_.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(queue_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

}  // namespace varsentix::ado::detail
