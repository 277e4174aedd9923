#include "engine/ReadAhead.h"

#include <system_error>
#include <utility>

namespace varsentix::engine {

ReadAhead::ReadAhead(vb::Ref<ado::Recordset> rows, std::vector<int32_t> columns, std::vector<size_t> places,
                     size_t width, bool threaded)
    : rows_(std::move(rows)), columns_(std::move(columns)), places_(std::move(places)), width_(width) {
  if (!threaded) return;
  for (size_t i = 0; i < kBatches; ++i) free_.push_back(std::make_unique<Batch>());
  try {
    thread_ = std::thread([this] { run(); });
    threaded_ = true;
  } catch (const std::system_error&) {
    // No thread to be had: read in step.
  }
}

ReadAhead::~ReadAhead() { stop(); }

void ReadAhead::readRow(Row& row) {
  row.resize(width_);
  for (size_t i = 0; i < columns_.size(); ++i) rows_->ValueInto(columns_[i], row[places_[i]]);
}

void ReadAhead::run() {
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
    {
      std::lock_guard<std::mutex> connection(connection_);
      try {
        while (batch->count < kBatchRows) {
          if (rows_->isEOF()) {
            batch->end = true;
            break;
          }
          if (batch->rows.size() == batch->count) batch->rows.emplace_back();
          readRow(batch->rows[batch->count]);
          ++batch->count;
          rows_->MoveNext();
        }
      } catch (...) {
        batch->error = std::current_exception();
      }
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

bool ReadAhead::takeBatch() {
  std::unique_lock<std::mutex> lock(queue_);
  if (batch_) {
    free_.push_back(std::move(batch_));
    changed_.notify_all();
  }
  at_ = 0;
  if (done_) return false;
  changed_.wait(lock, [&] { return !full_.empty() || stopping_; });
  if (full_.empty()) {
    done_ = true;  // stopped
    return false;
  }
  batch_ = std::move(full_.front());
  full_.pop_front();
  done_ = batch_->end || batch_->error;
  return true;
}

ReadAhead::Row* ReadAhead::current() {
  if (!threaded_) {
    if (rows_->isEOF()) return nullptr;
    if (!rowRead_) {
      readRow(row_);
      rowRead_ = true;
    }
    return &row_;
  }
  for (;;) {
    if (batch_ && at_ < batch_->count) return &batch_->rows[at_];
    if (batch_ && batch_->error) std::rethrow_exception(batch_->error);
    if (batch_ && batch_->end) return nullptr;
    if (!takeBatch()) return nullptr;
  }
}

void ReadAhead::next() {
  if (!threaded_) {
    rowRead_ = false;
    rows_->MoveNext();
    return;
  }
  if (batch_ && at_ < batch_->count) ++at_;
}

void ReadAhead::stop() noexcept {
  if (!thread_.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(queue_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

std::unique_lock<std::mutex> ReadAhead::connectionLock() {
  if (!thread_.joinable()) return {};
  return std::unique_lock<std::mutex>(connection_);
}

}  // namespace varsentix::engine
