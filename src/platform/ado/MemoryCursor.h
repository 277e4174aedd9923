#pragma once
// A RowCursor over rows held in memory: schema rowsets, persisted files, clones.
#include <utility>
#include <vector>

#include "platform/ado/Provider.h"

namespace varsentix::ado::detail {

using Row = std::vector<vb::Variant>;

class MemoryCursor : public RowCursor {
 public:
  MemoryCursor(std::vector<ColumnInfo> columns, std::vector<Row> rows)
      : columns_(std::move(columns)), rows_(std::move(rows)) {}
  const std::vector<ColumnInfo>& columns() const override { return columns_; }
  bool fetch(Row& row) override {
    if (next_ >= rows_.size()) return false;
    row = rows_[next_++];
    return true;
  }
  // Hands the rows over (the cursor is empty afterwards).
  std::vector<Row> takeRows() { return std::move(rows_); }

 private:
  std::vector<ColumnInfo> columns_;
  std::vector<Row> rows_;
  size_t next_ = 0;
};

}  // namespace varsentix::ado::detail
