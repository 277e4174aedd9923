#pragma once
// A RowCursor that reads another cursor's rows on a thread of its own, some batches ahead of the
// one who asks for them (see RowBatches): stepping the statement and converting its values then
// run on another core than the caller's work with the rows. Nothing else may use the cursor's
// connection while the thread reads (a SQLite session serves one thread at a time).
#include <memory>
#include <vector>

#include "platform/ado/Provider.h"
#include "varsentix/platform/ado/RowBatches.h"

namespace varsentix::ado::detail {

class PrefetchCursor : public RowCursor {
 public:
  // Takes inner; the thread starts at the first fetch. When no thread is to be had, inner is read
  // in step with the calls.
  explicit PrefetchCursor(std::unique_ptr<RowCursor> inner);

  const std::vector<ColumnInfo>& columns() const override { return inner_->columns(); }
  // The next row, swapped into row; raises what reading it raised.
  bool fetch(std::vector<vb::Variant>& row) override;
  bool watchRise(size_t column, std::shared_ptr<std::atomic<RiseSeen>> seen) override;
  // Ends the thread (after the batch it is reading): the rows it read are handed out still, those
  // after them read in step. inner's connection is then free for others.
  void stop() noexcept { batches_.stop(); }

 private:
  std::unique_ptr<RowCursor> inner_;
  RowBatches<std::vector<vb::Variant>> batches_;  // declared after inner_: stopped before it goes
  bool started_ = false;
};

}  // namespace varsentix::ado::detail
