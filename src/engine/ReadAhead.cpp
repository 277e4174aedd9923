#include "engine/ReadAhead.h"

#include <utility>

namespace varsentix::engine {

ReadAhead::ReadAhead(vb::Ref<ado::Recordset> rows, std::vector<int32_t> columns, std::vector<size_t> places,
                     size_t width, bool threaded)
    : rows_(std::move(rows)),
      columns_(std::move(columns)),
      places_(std::move(places)),
      width_(width),
      batches_([this](Row& row) {
        if (rows_->isEOF()) return false;
        readRow(row);
        rows_->MoveNext();
        return true;
      }) {
  if (threaded) threaded_ = batches_.start();  // else (or no thread to be had) read in step
}

ReadAhead::~ReadAhead() { stop(); }

void ReadAhead::readRow(Row& row) {
  row.resize(width_);
  rows_->ValuesInto(columns_, places_, row);
}

ReadAhead::Row* ReadAhead::readCurrent() {
  if (threaded_) {
    if (!batches_.take(row_)) return nullptr;
  } else {
    if (rows_->isEOF()) return nullptr;
    readRow(row_);
  }
  rowRead_ = true;
  return &row_;
}

void ReadAhead::next() {
  if (!threaded_) rows_->MoveNext();
  rowRead_ = false;
}

void ReadAhead::stop() noexcept { batches_.stop(); }

std::unique_lock<std::mutex> ReadAhead::connectionLock() {
  if (!batches_.running()) return {};
  return batches_.readingLock();
}

}  // namespace varsentix::engine
