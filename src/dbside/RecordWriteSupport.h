#pragma once
// What the record writes and the rollback file share inside the database side.
#include <mutex>
#include <string>

#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/VBError.h"

#include "varsentix/dbside/clsDBManager.h"

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

// A write refused before anything was written because its statement does not select the one
// row it is meant for. reason() says why, in words for the side's message.
class WriteRefused : public vb::VBError {
 public:
  explicit WriteRefused(std::string reason);
  const std::string& reason() const noexcept { return reason_; }

 private:
  std::string reason_;
};

// Raises WriteRefused unless records (open, on its first row) selects exactly one row.
// Leaves records on its first row.
void requireSingleRow(ado::Recordset& records);

// Whether records was opened on a statement that ends in the where clause side built last from
// its difference rows (formatWhereClauseFromRecordNumber): then its row must be that record.
bool hasComparedRecord(ado::Recordset& records, clsDBManager& side);

// Raises WriteRefused unless the current row of records is the record side compared: when
// hasComparedRecord, every field the where clause was built from holds, as text ("Null" for
// null), the data value of its difference row. Nothing is checked otherwise (a statement the
// caller wrote).
void requireComparedRecord(ado::Recordset& records, clsDBManager& side);

// For the record a write takes its values from (other's first record set): when
// hasComparedRecord, its statement must select that record alone. Leaves records on its first
// row.
void requireComparedSource(ado::Recordset& records, clsDBManager& other);

// Raises WriteRefused unless the current row of records is the record compared was built from,
// when records' statement ends in its where clause: the key column keyColumn holds the compared
// value, or, when the record has no value of that column, every compared field does.
void requireRecordByKey(ado::Recordset& records, const clsDBManager::ComparedRecord& compared,
                        const std::string& keyColumn);

// Raises WriteRefused unless the current row of records has, in the key column keyColumn, the
// value the saved row holds in it. Nothing is checked when either lacks that column.
void requireSameKey(ado::Recordset& records, ado::Recordset& saved, const std::string& keyColumn);

// The #7 message of a refused write: the usual text, then the reason.
std::string refusedWriteMessage(const WriteRefused& refused, const std::string& tableName);

}  // namespace varsentix::detail
