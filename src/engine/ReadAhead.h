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
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/ado/RowBatches.h"
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
  Row* current() { return rowRead_ ? &row_ : readCurrent(); }
  // Steps to the next record (the current one's row may be swapped out by the caller first).
  void next();
  // Ends the reading thread; the record set is left where it got to.
  void stop() noexcept;
  bool threaded() const { return threaded_; }
  // Held while using the other side's connection (empty when there is no thread).
  std::unique_lock<std::mutex> connectionLock();

 private:
  void readRow(Row& row);
  Row* readCurrent();

  vb::Ref<ado::Recordset> rows_;
  std::vector<int32_t> columns_;
  std::vector<size_t> places_;
  size_t width_;
  bool threaded_ = false;
  // The current record's values (read in step, or taken from the thread's batches).
  Row row_;
  bool rowRead_ = false;
  ado::RowBatches<Row> batches_;  // declared last: its thread stops before the rest goes
};

}  // namespace varsentix::engine
