#include "platform/ado/RecordsetImpl.h"

#include <algorithm>
#include <set>

#include "platform/ado/PrefetchCursor.h"
#include "platform/ado/TypeInfo.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

constexpr const char* kSource = "ADODB.Recordset";

[[noreturn]] void raise(int32_t number) { throw vb::VBError(number, kSource); }

[[noreturn]] void raiseWrite(int32_t number, const std::string& text) {
  throw vb::VBError(number, text, kSource);
}

// The one table every column with a base table comes from; "" when none or several.
std::string commonBaseTable(const std::vector<ColumnInfo>& columns) {
  std::string table;
  for (const auto& c : columns) {
    if (c.baseTable.empty()) continue;
    if (table.empty())
      table = c.baseTable;
    else if (vb::LCase(table) != vb::LCase(c.baseTable))
      return "";
  }
  return table;
}

}  // namespace

// ---- opening and closing --------------------------------------------------------------------

void RecordsetImpl::openStreaming(std::shared_ptr<Connection> connection, std::string source,
                                  std::unique_ptr<RowCursor> cursor, Reopen reopen,
                                  std::string countSql, std::string baseTable, bool deferFirst,
                                  int32_t risingColumn) {
  columns_ = cursor->columns();
  connection_ = std::move(connection);
  source_ = std::move(source);
  cursor_ = std::move(cursor);
  reopen_ = std::move(reopen);
  rise_.reset();
  countSql_ = std::move(countSql);
  bool tableGiven = !baseTable.empty();
  baseTable_ = tableGiven ? std::move(baseTable) : commonBaseTable(columns_);
  if (tableGiven)
    for (auto& c : columns_)
      if (c.baseTable.empty()) c.baseTable = baseTable_, c.baseColumn = c.name;
  inMemory_ = false;
  lazy_ = cursor_->supportsValueAt();
  materialized_ = false;
  cursorPos_ = -1;
  cursorDone_ = false;
  currentValid_ = false;
  knownCount_ = -1;
  rows_.clear();
  open_ = true;
  editMode_ = adEditNone;
  firstPending_ = false;
  if (risingColumn >= 0) watchRise(static_cast<size_t>(risingColumn));  // from the first row on
  if (deferFirst) {
    firstPending_ = true;
    pos_ = -1;
    bof_ = eof_ = true;
    return;
  }
  try {
    readFirst();
  } catch (...) {
    close();  // an Open that fails leaves the record set closed
    throw;
  }
}

void RecordsetImpl::watchRise(size_t column) {
  riseColumn_ = column;
  rise_ = std::make_shared<std::atomic<RiseSeen>>(RiseSeen::Holding);
  armRise();
}

void RecordsetImpl::armRise() {
  rise_->store(RiseSeen::Holding);
  if (!cursor_->watchRise(riseColumn_, rise_)) rise_->store(RiseSeen::Broken);
}

void RecordsetImpl::readFirst() {
  firstPending_ = false;
  bool any = goTo(0);
  pos_ = any ? 0 : -1;
  bof_ = eof_ = !any;
}

void RecordsetImpl::openInMemory(std::shared_ptr<Connection> connection, std::string source,
                                 std::vector<ColumnInfo> columns, std::vector<Row> rows,
                                 std::string baseTable) {
  connection_ = std::move(connection);
  source_ = std::move(source);
  columns_ = std::move(columns);
  rows_ = std::move(rows);
  baseTable_ = baseTable.empty() ? commonBaseTable(columns_) : std::move(baseTable);
  inMemory_ = true;
  cursor_.reset();
  reopen_ = nullptr;
  knownCount_ = static_cast<int64_t>(rows_.size());
  open_ = true;
  editMode_ = adEditNone;
  pos_ = rows_.empty() ? -1 : 0;
  bof_ = eof_ = rows_.empty();
}

void RecordsetImpl::close() {
  if (!open_) raiseClosed();  // a first row not read yet is not read now
  open_ = false;
  firstPending_ = false;
  editMode_ = adEditNone;
  cursor_.reset();
  reopen_ = nullptr;
  rise_.reset();
  rows_.clear();
  rows_.shrink_to_fit();
  current_.clear();
  fetched_.clear();
  left_.clear();
  columns_.clear();
  connection_.reset();
  bof_ = eof_ = true;
}

void RecordsetImpl::prefetchRemainingRows() {
  requireOpen();  // a deferred first row is read now, by the caller
  if (inMemory_ || cursorDone_) return;
  if (currentValid_) currentRow();  // the current row's values, before the cursor goes on
  cursor_ = std::make_unique<PrefetchCursor>(std::move(cursor_));
  lazy_ = false;
}

void RecordsetImpl::stopPrefetching() noexcept {
  if (auto* prefetching = dynamic_cast<PrefetchCursor*>(cursor_.get())) prefetching->stop();
}

void RecordsetImpl::replaceRemainingRows(std::vector<Row> rows) {
  if (!open_) raiseClosed();
  if (inMemory_) raise(vb::errnum::NotSupported);  // its rows are at hand already
  editMode_ = adEditNone;
  firstPending_ = false;  // a first row not read yet is not read at all
  // The rows take the places from the current one on; reopen_ still runs the statement again.
  const int64_t first = std::max<int64_t>(pos_, 0);
  cursor_ = std::make_unique<MemoryCursor>(columns_, std::move(rows));
  lazy_ = false;
  materialized_ = false;
  cursorPos_ = first - 1;
  cursorDone_ = false;
  currentValid_ = false;
  knownCount_ = -1;
  const bool any = goTo(first);
  pos_ = first;
  bof_ = first == 0 && !any;
  eof_ = !any;
}

void RecordsetImpl::raiseClosed() { raise(vb::errnum::ObjectClosed); }
void RecordsetImpl::raiseNoSuchItem() { raise(vb::errnum::ItemNotFound); }

void RecordsetImpl::requireCurrent() const {
  requireOpen();
  if (bof_ || eof_) raise(vb::errnum::NoCurrentRecord);
}

// ---- position -------------------------------------------------------------------------------

bool RecordsetImpl::goTo(int64_t index) {
  if (index < 0) return false;
  if (inMemory_) return index < static_cast<int64_t>(rows_.size());
  if (index < cursorPos_ || (index == cursorPos_ && !currentValid_)) {
    cursor_ = reopen_();  // moving back: run the query again and walk to the row
    if (rise_) armRise();
    lazy_ = cursor_->supportsValueAt();
    cursorPos_ = -1;
    cursorDone_ = false;
    currentValid_ = false;
  }
  while (cursorPos_ < index) {
    if (cursorDone_) return false;
    bool stepped = false;
    if (lazy_) {
      stepped = cursor_->advance();
    } else if ((stepped = cursor_->fetch(fetched_))) {
      left_.swap(current_);
      current_.swap(fetched_);
    }
    materialized_ = !lazy_;
    if (!stepped) {
      cursorDone_ = true;
      currentValid_ = false;
      knownCount_ = cursorPos_ + 1;
      return false;
    }
    ++cursorPos_;
    currentValid_ = true;
  }
  return true;
}

bool RecordsetImpl::isBOF() const {
  requireOpen();
  return bof_;
}

bool RecordsetImpl::isEOF() const {
  requireOpen();
  return eof_;
}

void RecordsetImpl::finishPendingEdit() {
  if (editMode_ != adEditNone) update();  // moving off an edited row saves it, as ADO does
}

void RecordsetImpl::moveNext() {
  requireOpen();
  finishPendingEdit();
  if (eof_) raise(vb::errnum::NoCurrentRecord);
  int64_t target = pos_ + 1;
  bool found = goTo(target);
  pos_ = target;
  bof_ = false;
  eof_ = !found;
}

void RecordsetImpl::movePrevious() {
  requireOpen();
  finishPendingEdit();
  if (bof_) raise(vb::errnum::NoCurrentRecord);
  int64_t target = pos_ - 1;
  if (target < 0) {
    pos_ = -1;
    bof_ = true;
    eof_ = false;
    return;
  }
  bool found = goTo(target);
  if (!found) {  // the rows changed under a re-run query: fall back to the end
    pos_ = target;
    eof_ = true;
    return;
  }
  pos_ = target;
  bof_ = eof_ = false;
}

void RecordsetImpl::moveFirst() {
  requireOpen();
  finishPendingEdit();
  bool found = goTo(0);
  pos_ = found ? 0 : -1;
  bof_ = eof_ = !found;
  if (!found) raise(vb::errnum::NoCurrentRecord);
}

void RecordsetImpl::moveLast() {
  requireOpen();
  finishPendingEdit();
  if (inMemory_) {
    if (rows_.empty()) raise(vb::errnum::NoCurrentRecord);
    pos_ = static_cast<int64_t>(rows_.size()) - 1;
    bof_ = eof_ = false;
    return;
  }
  if (cursorDone_ || !currentValid_) {  // walk from the start again
    if (!goTo(0)) {
      pos_ = -1;
      bof_ = eof_ = true;
      raise(vb::errnum::NoCurrentRecord);
    }
  }
  currentRow();  // the row reached so far, read before the cursor moves on
  Row next;
  while (cursor_->fetch(next)) {
    current_.swap(next);
    ++cursorPos_;
  }
  materialized_ = true;
  cursorDone_ = true;
  currentValid_ = true;
  knownCount_ = cursorPos_ + 1;
  pos_ = cursorPos_;
  bof_ = eof_ = false;
}

int32_t RecordsetImpl::recordCount() {
  requireOpen();
  if (inMemory_) return static_cast<int32_t>(rows_.size());
  bool server = cursorLocation != adUseClient;
  if (cursorType == adOpenForwardOnly || (server && cursorType == adOpenDynamic)) return -1;
  if (knownCount_ < 0) {
    if (!countSql_.empty() && connection_) {
      knownCount_ = connection_->session().countRows(countSql_);
    } else {
      auto counter = reopen_();
      Row row;
      int64_t n = 0;
      while (counter->fetch(row)) ++n;
      knownCount_ = n;
    }
  }
  return static_cast<int32_t>(std::min<int64_t>(knownCount_, INT32_MAX));
}

// ---- fields ---------------------------------------------------------------------------------

int32_t RecordsetImpl::indexOf(const std::string& name) const {
  if (!open_) raise(vb::errnum::ItemNotFound);
  for (size_t i = 0; i < columns_.size(); ++i)
    if (columns_[i].name == name) return static_cast<int32_t>(i);
  std::string wanted = vb::LCase(name);  // ADO finds fields without regard to case
  for (size_t i = 0; i < columns_.size(); ++i)
    if (vb::LCase(columns_[i].name) == wanted) return static_cast<int32_t>(i);
  raise(vb::errnum::ItemNotFound);
}

const Row& RecordsetImpl::currentRow() const {
  if (inMemory_) return rows_[static_cast<size_t>(pos_)];
  if (!materialized_) {
    current_.resize(columns_.size());
    for (size_t i = 0; i < columns_.size(); ++i) current_[i] = cursor_->valueAt(i);
    materialized_ = true;
  }
  return current_;
}

Row& RecordsetImpl::currentRowForWrite() {
  currentRow();
  return inMemory_ ? rows_[static_cast<size_t>(pos_)] : current_;
}

vb::Variant RecordsetImpl::valueSlowly(int32_t index) const {
  column(index);
  if (editMode_ != adEditNone) {
    const vb::Variant& v = editBuffer_[static_cast<size_t>(index)];
    return v.isEmpty() ? vb::Variant::null() : v;
  }
  requireCurrent();
  return currentRow()[static_cast<size_t>(index)];
}

vb::Variant RecordsetImpl::originalValue(int32_t index) const {
  column(index);
  if (editMode_ == adEditAdd) return vb::Variant::null();
  requireCurrent();
  return currentRow()[static_cast<size_t>(index)];
}

void RecordsetImpl::checkUpdatable() const {
  requireOpen();
  if (lockType == adLockReadOnly || lockType == adLockUnspecified)
    raise(vb::errnum::NotSupported);
}

void RecordsetImpl::setValue(int32_t index, const vb::Variant& value) {
  const ColumnInfo& info = column(index);
  checkUpdatable();
  if (editMode_ == adEditNone) {
    requireCurrent();
    editBuffer_ = currentRow();
    assigned_.assign(columns_.size(), false);
    editMode_ = adEditInProgress;
  }
  editBuffer_[static_cast<size_t>(index)] = coerceToColumn(info.type, value);
  assigned_[static_cast<size_t>(index)] = true;
}

// ---- writes ---------------------------------------------------------------------------------

void RecordsetImpl::addNew() {
  checkUpdatable();
  finishPendingEdit();
  editBuffer_.assign(columns_.size(), vb::Variant());
  assigned_.assign(columns_.size(), false);
  editMode_ = adEditAdd;
}

void RecordsetImpl::cancelUpdate() {
  requireOpen();
  editMode_ = adEditNone;
  editBuffer_.clear();
  assigned_.clear();
}

bool RecordsetImpl::writesThrough() const {
  return connection_ && connection_->State() == adStateOpen;
}

const ColumnInfo& RecordsetImpl::baseColumnOf(int32_t index) const {
  const ColumnInfo& c = columns_[static_cast<size_t>(index)];
  if (c.baseColumn.empty() || vb::LCase(c.baseTable) != vb::LCase(baseTable_))
    raiseWrite(vb::errnum::ProviderError,
               "The field '" + c.name + "' cannot be updated: it is not a column of table '" +
                   baseTable_ + "'.");
  return c;
}

int64_t RecordsetImpl::runWrite(const std::string& sql, const std::vector<vb::Variant>& values,
                                const std::vector<ColumnInfo>& valueColumns) {
  ProviderSession& session = connection_->session();
  session.beginTransaction();
  try {
    int64_t affected = session.executeBound(sql, values, valueColumns);
    if (affected != 1) {
      session.rollback();
      if (affected == 0)
        raiseWrite(vb::errnum::ProviderRowNotFound,
                   "Row cannot be located for updating. Some values may have been changed since "
                   "it was last read.");
      raiseWrite(vb::errnum::ProviderError,
                 "Insufficient key column information for updating or refreshing: the update "
                 "would change " + std::to_string(affected) + " rows. Nothing was changed.");
    }
    session.commit();
    return affected;
  } catch (...) {
    session.rollback();  // a no-op when the transaction has already ended
    throw;
  }
}

void RecordsetImpl::insertRow() {
  ProviderSession& session = connection_->session();
  std::string names, markers;
  std::vector<vb::Variant> values;
  std::vector<ColumnInfo> valueColumns;
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (!assigned_[i]) continue;
    const ColumnInfo& c = baseColumnOf(static_cast<int32_t>(i));
    names += (names.empty() ? "" : ", ") + session.quoteIdentifier(c.baseColumn);
    markers += markers.empty() ? "?" : ", ?";
    values.push_back(editBuffer_[i]);
    valueColumns.push_back(c);
  }
  std::string sql = "INSERT INTO " + session.quoteIdentifier(baseTable_) +
                    (names.empty() ? " DEFAULT VALUES" : " (" + names + ") VALUES (" + markers + ")");
  runWrite(sql, values, valueColumns);
}

void RecordsetImpl::updateRow() {
  ProviderSession& session = connection_->session();
  std::string sets;
  std::vector<vb::Variant> values;
  std::vector<ColumnInfo> valueColumns;
  for (size_t i = 0; i < columns_.size(); ++i) {
    if (!assigned_[i]) continue;
    const ColumnInfo& c = baseColumnOf(static_cast<int32_t>(i));
    sets += (sets.empty() ? "" : ", ") + session.quoteIdentifier(c.baseColumn) + " = ?";
    values.push_back(editBuffer_[i]);
    valueColumns.push_back(c);
  }
  // The row is located by its primary key when the record set holds all of it, else by all
  // the original values of the base table's columns.
  const Row& original = currentRow();
  std::vector<size_t> locate;
  std::set<std::string> wanted;
  for (const auto& k : session.primaryKeyColumns(baseTable_)) wanted.insert(vb::LCase(k));
  for (size_t i = 0; i < columns_.size() && !wanted.empty(); ++i) {
    const ColumnInfo& c = columns_[i];
    if (!c.baseColumn.empty() && vb::LCase(c.baseTable) == vb::LCase(baseTable_) &&
        wanted.count(vb::LCase(c.baseColumn)) && !original[i].isNull())
      locate.push_back(i);
  }
  if (locate.empty() || locate.size() != wanted.size()) {
    locate.clear();
    for (size_t i = 0; i < columns_.size(); ++i) {
      const ColumnInfo& c = columns_[i];
      if (!c.baseColumn.empty() && vb::LCase(c.baseTable) == vb::LCase(baseTable_))
        locate.push_back(i);
    }
  }
  std::string where;
  for (size_t i : locate) {
    const ColumnInfo& c = columns_[i];
    where += (where.empty() ? "" : " AND ") + session.quoteIdentifier(c.baseColumn);
    if (original[i].isNull()) {
      where += " IS NULL";
    } else {
      where += " = ?";
      values.push_back(original[i]);
      valueColumns.push_back(c);
    }
  }
  if (where.empty())
    raiseWrite(vb::errnum::ProviderError,
               "Insufficient key column information for updating or refreshing.");
  runWrite("UPDATE " + session.quoteIdentifier(baseTable_) + " SET " + sets + " WHERE " + where,
           values, valueColumns);
}

void RecordsetImpl::update() {
  requireOpen();
  if (editMode_ == adEditNone) return;
  bool anyAssigned = false;
  for (bool a : assigned_) anyAssigned = anyAssigned || a;
  if (editMode_ == adEditInProgress && !anyAssigned) {
    cancelUpdate();
    return;
  }
  checkUpdatable();
  bool through = writesThrough();
  if (through && baseTable_.empty())
    raiseWrite(vb::errnum::ProviderError,
               "Insufficient base table information for updating or refreshing.");
  if (through) {
    if (editMode_ == adEditAdd)
      insertRow();
    else
      updateRow();
  }
  // Written: the record set shows the written values.
  Row written = editBuffer_;
  for (auto& v : written)
    if (v.isEmpty()) v = vb::Variant::null();
  if (editMode_ == adEditAdd) {
    if (inMemory_) {
      rows_.push_back(std::move(written));
      pos_ = static_cast<int64_t>(rows_.size()) - 1;
    } else {
      current_ = std::move(written);
      materialized_ = true;
      currentValid_ = false;  // the cursor's row at this position is another one
      if (pos_ < 0) pos_ = 0;
      if (knownCount_ >= 0) ++knownCount_;
    }
    bof_ = eof_ = false;
  } else {
    currentRowForWrite() = std::move(written);
  }
  editMode_ = adEditNone;
  editBuffer_.clear();
  assigned_.clear();
}

// ---- whole rowset ---------------------------------------------------------------------------

void RecordsetImpl::forEachRow(const std::function<void(const Row&)>& visit) {
  requireOpen();
  if (inMemory_) {
    for (const auto& row : rows_) visit(row);
    return;
  }
  auto walker = reopen_();
  Row row;
  while (walker->fetch(row)) visit(row);
}

std::vector<Row> RecordsetImpl::allRows() {
  std::vector<Row> rows;
  forEachRow([&](const Row& row) { rows.push_back(row); });
  return rows;
}

std::vector<std::string> RecordsetImpl::keyColumns() const {
  if (baseTable_.empty() || !writesThrough()) return {};
  try {
    return connection_->session().primaryKeyColumns(baseTable_);
  } catch (const vb::VBError&) {
    return {};
  }
}

}  // namespace varsentix::ado::detail
