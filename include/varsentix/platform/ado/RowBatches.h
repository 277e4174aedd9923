#pragma once
// Rows read on a thread of their own, in batches handed to whoever takes them, some batches ahead
// of the taker: reading them (stepping a statement, converting its values) then runs on another
// core than the work the taker does with them. The record walks read each side's records so.
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace varsentix::ado {

template <typename Row>
class RowBatches {
 public:
  // read: reads the next row into row (its room reused), false at the end, after which it is not
  // called again; what it raises is raised to the taker after the rows read before it.
  explicit RowBatches(std::function<bool(Row&)> read) : read_(std::move(read)) {
    for (size_t i = 0; i < kBatches; ++i) free_.push_back(std::make_unique<Batch>());
  }
  ~RowBatches() { stop(); }
  RowBatches(const RowBatches&) = delete;
  RowBatches& operator=(const RowBatches&) = delete;

  // Starts the reading thread; false when no thread is to be had (nothing is read then).
  bool start() {
    try {
      thread_ = std::thread([this] { run(); });
      return true;
    } catch (const std::system_error&) {
      return false;
    }
  }
  bool running() const { return thread_.joinable(); }

  // The next row read, swapped into row (row's former room goes back to the thread). False at
  // the end of the rows, and once stopped with no row read left (then ended() tells which).
  bool take(Row& row) {
    for (;;) {
      if (batch_ && at_ < batch_->count) {
        row.swap(batch_->rows[at_++]);
        return true;
      }
      if (batch_ && batch_->error) std::rethrow_exception(batch_->error);
      if (batch_ && batch_->end) return false;
      if (!takeBatch()) return false;
    }
  }
  // Whether take found the end of the rows (not merely a stopped thread).
  bool ended() const { return batch_ && batch_->end && at_ >= batch_->count; }

  // Ends the thread after the batch it is reading; the rows read are still taken in turn.
  void stop() noexcept {
    if (!thread_.joinable()) return;
    {
      std::lock_guard<std::mutex> lock(queue_);
      stopping_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }

  // Held by the thread while it reads a batch: whoever else uses what read uses holds it too.
  std::unique_lock<std::mutex> readingLock() { return std::unique_lock<std::mutex>(reading_); }

 private:
  static constexpr size_t kBatchRows = 1024;
  static constexpr size_t kBatches = 4;
  struct Batch {
    std::vector<Row> rows;
    size_t count = 0;
    bool end = false;          // the end of the rows follows this batch's
    std::exception_ptr error;  // reading failed after this batch's rows
  };

  void run() {
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
        std::lock_guard<std::mutex> reading(reading_);
        try {
          while (batch->count < kBatchRows) {
            if (batch->rows.size() == batch->count) batch->rows.emplace_back();
            if (!read_(batch->rows[batch->count])) {
              batch->end = true;
              break;
            }
            ++batch->count;
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

  // The next batch (waits for the thread while it runs); false when none is left to come.
  bool takeBatch() {
    std::unique_lock<std::mutex> lock(queue_);
    if (batch_) {
      free_.push_back(std::move(batch_));
      changed_.notify_all();
    }
    at_ = 0;
    changed_.wait(lock, [&] { return !full_.empty() || stopping_ || !thread_.joinable(); });
    if (full_.empty()) return false;
    batch_ = std::move(full_.front());
    full_.pop_front();
    return true;
  }

  std::function<bool(Row&)> read_;
  std::mutex reading_;
  std::mutex queue_;
  std::condition_variable changed_;
  std::deque<std::unique_ptr<Batch>> full_;
  std::vector<std::unique_ptr<Batch>> free_;
  bool stopping_ = false;
  std::unique_ptr<Batch> batch_;  // the one being taken from
  size_t at_ = 0;
  std::thread thread_;
};

}  // namespace varsentix::ado
