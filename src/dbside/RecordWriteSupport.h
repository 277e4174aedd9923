#pragma once
// What the record writes and the rollback file share inside the database side.
#include <mutex>

#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Ref.h"

namespace varsentix::detail {

// The rollback record set: one for every manager of the process, created on first use. It holds
// a clone of the rows saved last or, after openRollbackRecord, the rows read back from the file.
vb::Ref<ado::Recordset>& rollbackRecordSet();

// Runs a clean-up step whose own failure must not hide the failure being reported.
template <typename Step>
void closeQuietly(Step&& step) noexcept {
  try {
    step();
  } catch (...) {
  }
}

}  // namespace varsentix::detail
