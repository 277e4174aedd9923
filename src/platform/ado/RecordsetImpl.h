#pragma once
// The state behind a Recordset: its rows (streamed from a provider cursor, or held in memory
// for persisted files, clones and schema rowsets), its position, and its edit buffer.
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/ado/MemoryCursor.h"
#include "platform/ado/Provider.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Enums.h"

namespace varsentix::ado::detail {

class RecordsetImpl {
 public:
  // Makes a fresh cursor over the same rows (the query run again).
  using Reopen = std::function<std::unique_ptr<RowCursor>()>;

  CursorTypeEnum cursorType = adOpenForwardOnly;
  LockTypeEnum lockType = adLockReadOnly;
  CursorLocationEnum cursorLocation = adUseServer;

  // Opens over a provider cursor that streams its rows. countSql counts them on demand
  // (empty: counted by walking a fresh cursor). baseTable: the table writes go to ("" to take
  // it from the columns' metadata).
  // deferFirst: the first row is read when the record set is first used, not now.
  // risingColumn: the column whose rise is watched (see watchRise), -1 for none.
  void openStreaming(std::shared_ptr<Connection> connection, std::string source,
                     std::unique_ptr<RowCursor> cursor, Reopen reopen, std::string countSql,
                     std::string baseTable, bool deferFirst = false, int32_t risingColumn = -1);
  // Set by Recordset::DeferFirstRow for the next Open.
  bool deferFirstRow = false;
  // Set by Recordset::RunInstead for the next Open.
  std::string runInstead, runInsteadRising;
  // Reads the rows after the current one on a thread (see Recordset::PrefetchRemainingRows).
  void prefetchRemainingRows();
  void stopPrefetching() noexcept;
  // Watches the rise of column's values from the cursor's next row on, and again whenever the
  // statement runs again (see RowCursor::watchRise); Broken when the cursor cannot.
  void watchRise(size_t column);
  RiseSeen riseSeen() const { return rise_ ? rise_->load() : RiseSeen::Broken; }
  // Opens over rows held in memory; connection may be null (writes then stay in memory).
  void openInMemory(std::shared_ptr<Connection> connection, std::string source,
                    std::vector<ColumnInfo> columns, std::vector<Row> rows, std::string baseTable);
  void close();
  // Goes on through rows instead of the cursor's (see Recordset::ReplaceRemainingRows).
  void replaceRemainingRows(std::vector<Row> rows);
  bool isOpen() const { return open_; }
  const std::string& source() const { return source_; }

  bool isBOF() const;
  bool isEOF() const;
  int32_t recordCount();
  void moveFirst();
  void moveNext();
  void movePrevious();
  void moveLast();

  int32_t fieldCount() const { return open_ ? static_cast<int32_t>(columns_.size()) : 0; }
  // Raises 3704 when closed, 3265 for an unknown index / name.
  const ColumnInfo& column(int32_t index) const {
    if (!open_) raiseClosed();
    if (index < 0 || index >= static_cast<int32_t>(columns_.size())) raiseNoSuchItem();
    return columns_[static_cast<size_t>(index)];
  }
  int32_t indexOf(const std::string& name) const;

  // Whether the record set is open on a row and not editing: its values are read as they are.
  bool onPlainRow() const { return open_ && !bof_ && !eof_ && editMode_ == adEditNone; }
  vb::Variant value(int32_t index) const {
    // The common case inline: an open record set on a row, not editing, a valid index.
    if (onPlainRow() && index >= 0 && static_cast<size_t>(index) < columns_.size()) {
      if (inMemory_) return rows_[static_cast<size_t>(pos_)][static_cast<size_t>(index)];
      if (!materialized_) return cursor_->valueAt(static_cast<size_t>(index));
      return current_[static_cast<size_t>(index)];
    }
    return valueSlowly(index);
  }
  // value(index) into out, reusing out's room where the cursor can.
  void valueInto(int32_t index, vb::Variant& out) const {
    if (onPlainRow() && index >= 0 && static_cast<size_t>(index) < columns_.size()) {
      if (inMemory_) out = rows_[static_cast<size_t>(pos_)][static_cast<size_t>(index)];
      else if (!materialized_) cursor_->valueInto(static_cast<size_t>(index), out);
      else out = current_[static_cast<size_t>(index)];
      return;
    }
    out = valueSlowly(index);
  }
  // valueInto(columns[i], row[places[i]]) for every i: one call to a cursor read value by value.
  void valuesInto(const std::vector<int32_t>& columns, const std::vector<size_t>& places, Row& row) const {
    if (onPlainRow() && !inMemory_ && !materialized_) {
      bool inRange = true;  // (a negative index is taken as a very large one)
      for (int32_t index : columns) inRange &= static_cast<uint32_t>(index) < columns_.size();
      if (inRange) return cursor_->valuesInto(columns, places, row);
    }
    for (size_t i = 0; i < columns.size(); ++i) valueInto(columns[i], row[places[i]]);
  }
  // The current row's values when they are held whole (read ahead, or kept in memory); empty
  // when they would be asked of the provider. (See goTo for how they outlive the next move.)
  std::span<const vb::Variant> heldRow() const {
    if (!onPlainRow()) return {};
    if (inMemory_) return rows_[static_cast<size_t>(pos_)];
    return materialized_ ? std::span<const vb::Variant>(current_) : std::span<const vb::Variant>();
  }
  vb::Variant originalValue(int32_t index) const;
  void setValue(int32_t index, const vb::Variant& value);

  void addNew();
  void update();
  void cancelUpdate();
  EditModeEnum editMode() const { return editMode_; }

  // All rows, for Clone: from memory, or by walking a fresh cursor.
  std::vector<Row> allRows();
  const std::vector<ColumnInfo>& columns() const { return columns_; }
  const std::shared_ptr<Connection>& connection() const { return connection_; }
  const std::string& baseTable() const { return baseTable_; }
  // Walks every row (a fresh cursor for a streaming record set) without moving the position.
  void forEachRow(const std::function<void(const Row&)>& visit);
  // Key columns of the base table, best effort (empty when unknown).
  std::vector<std::string> keyColumns() const;

 private:
  void requireOpen() const {
    if (!open_) raiseClosed();
    if (firstPending_) const_cast<RecordsetImpl*>(this)->readFirst();
  }
  // Reads the first row of an open whose first row was deferred.
  void readFirst();
  [[noreturn]] static void raiseClosed();
  [[noreturn]] static void raiseNoSuchItem();
  void requireCurrent() const;
  vb::Variant valueSlowly(int32_t index) const;
  bool goTo(int64_t index);
  void finishPendingEdit();
  const Row& currentRow() const;
  Row& currentRowForWrite();
  void checkUpdatable() const;
  bool writesThrough() const;
  void insertRow();
  void updateRow();
  int64_t runWrite(const std::string& sql, const std::vector<vb::Variant>& values,
                   const std::vector<ColumnInfo>& valueColumns);
  const ColumnInfo& baseColumnOf(int32_t index) const;

  bool open_ = false;
  std::string source_;
  std::shared_ptr<Connection> connection_;
  std::vector<ColumnInfo> columns_;
  std::string baseTable_;

  // Streaming rows.
  bool inMemory_ = false;
  std::unique_ptr<RowCursor> cursor_;
  Reopen reopen_;
  std::shared_ptr<std::atomic<RiseSeen>> rise_;  // watching the rows' rise, when asked
  size_t riseColumn_ = 0;
  void armRise();
  std::string countSql_;
  int64_t cursorPos_ = -1;      // index of the row last fetched from cursor_
  bool cursorDone_ = false;
  bool currentValid_ = false;   // the cursor (or current_) holds the row at cursorPos_
  bool lazy_ = false;           // the cursor reads values one at a time (valueAt)
  mutable bool materialized_ = false;  // current_ holds the current row's values
  mutable Row current_;
  // A row read whole is fetched into fetched_; once it is there, the row moved off goes to left_
  // and the fetched one becomes current_, so that the values of the row left stay where they
  // were (see Recordset::HeldRow) until the next row is read.
  Row fetched_, left_;
  // Rows in memory.
  std::vector<Row> rows_;

  // Position: -1 before the first row; rows count (or more) after the last.
  int64_t pos_ = -1;
  bool bof_ = true;
  bool eof_ = true;
  int64_t knownCount_ = -1;
  // The first row is not read yet (bof_ and eof_ are set meanwhile, so that the inline reads
  // take the way that checks).
  bool firstPending_ = false;

  EditModeEnum editMode_ = adEditNone;
  Row editBuffer_;
  std::vector<bool> assigned_;
};

}  // namespace varsentix::ado::detail
