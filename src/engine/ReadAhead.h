#pragma once
// The records of the other side that a record walk steps through, read on a thread of their own
// while the walk reads its own side: the two sides' reading (stepping the statement, converting
// every value) then runs on two cores instead of one after the other.
//
// The thread uses the other side's connection; so may the walk (its match queries). Whoever uses
// that connection while reading ahead holds connectionLock(): the thread holds it while it reads
// a batch of records, the walk while it asks the engine. Nothing else may use the connection
// until stop() has returned: a walk that raises events (whose handlers may use it) reads without
// a thread.
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::engine {

class ReadAhead {
 public:
  using Row = std::vector<vb::Variant>;

  // rows: an open record set on its first record (or at its end), read from there on. Each row
  // holds width values; the value of rows' column columns[i] goes to places[i]. threaded: read
  // on a thread of its own, else in step with the calls.
  ReadAhead(vb::Ref<ado::Recordset> rows, std::vector<int32_t> columns, std::vector<size_t> places, size_t width,
            bool threaded);
  ~ReadAhead();
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;

  // The current record's values; nullptr past the last record. Raises what reading raised.
  Row* current();
  // Steps to the next record (the current one's row may be swapped out by the caller first).
  void next();
  // Ends the reading thread; the record set is left where it got to.
  void stop() noexcept;
  bool threaded() const { return threaded_; }
  // Held while using the other side's connection (empty when there is no thread).
  std::unique_lock<std::mutex> connectionLock();

 private:
  struct Batch {
    std::vector<Row> rows;
    size_t count = 0;
    bool end = false;          // the record set's end follows this batch's rows
    std::exception_ptr error;  // reading failed after this batch's rows
  };
  static constexpr size_t kBatchRows = 1024;
  static constexpr size_t kBatches = 4;

  void readRow(Row& row);
  void run();
  // The next batch from the thread (waits for it); false when there is none to come.
  bool takeBatch();

  vb::Ref<ado::Recordset> rows_;
  std::vector<int32_t> columns_;
  std::vector<size_t> places_;
  size_t width_;
  bool threaded_ = false;

  // Reading in step: the one row.
  Row row_;
  bool rowRead_ = false;

  // Reading ahead.
  std::mutex connection_;
  std::mutex queue_;
  std::condition_variable changed_;
  std::deque<std::unique_ptr<Batch>> full_;
  std::vector<std::unique_ptr<Batch>> free_;
  bool stopping_ = false;
  std::unique_ptr<Batch> batch_;  // the one being consumed
  size_t at_ = 0;
  bool done_ = false;  // the thread has handed over its last batch
  std::thread thread_;
};

}  // namespace varsentix::engine
