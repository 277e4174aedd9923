#pragma once
// A RowCursor that reads another cursor's rows on a thread of its own, some batches ahead of the
// one who asks for them: stepping the statement and converting its values then runs on another
// core than the caller's work with the rows. Only for a cursor that nothing else uses while it is
// read (its connection may be used, if its provider allows that from two threads).
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/ado/Provider.h"

namespace varsentix::ado::detail {

class PrefetchCursor : public RowCursor {
 public:
  // Takes inner, which has not been stepped yet. When no thread is to be had, it reads inner in
  // step with the calls.
  explicit PrefetchCursor(std::unique_ptr<RowCursor> inner);
  ~PrefetchCursor() override;
  PrefetchCursor(const PrefetchCursor&) = delete;
  PrefetchCursor& operator=(const PrefetchCursor&) = delete;

  const std::vector<ColumnInfo>& columns() const override { return inner_->columns(); }
  // The next row, swapped into row; raises what reading it raised.
  bool fetch(std::vector<vb::Variant>& row) override;
  bool watchRise(size_t column, std::shared_ptr<std::atomic<RiseSeen>> seen) override;
  // Ends the thread (after the batch it is reading): the rows it read are handed out still, those
  // after them read in step. inner's connection is then free for others.
  void stop() noexcept;

 private:
  struct Batch {
    std::vector<std::vector<vb::Variant>> rows;
    size_t count = 0;
    bool end = false;          // inner's end follows this batch's rows
    std::exception_ptr error;  // reading failed after this batch's rows
  };
  static constexpr size_t kBatchRows = 1024;
  static constexpr size_t kBatches = 4;

  void run();
  // The next batch read (waits for the thread, while there is one); false when there is none
  // to come from it.
  bool takeBatch();

  std::unique_ptr<RowCursor> inner_;
  std::thread thread_;
  std::mutex queue_;
  std::condition_variable changed_;
  std::deque<std::unique_ptr<Batch>> full_;
  std::vector<std::unique_ptr<Batch>> free_;
  bool started_ = false;   // the thread was started (at the first fetch)
  bool stopping_ = false;
  std::unique_ptr<Batch> batch_;  // the batch being handed out
  size_t at_ = 0;
  bool done_ = false;
};

}  // namespace varsentix::ado::detail
