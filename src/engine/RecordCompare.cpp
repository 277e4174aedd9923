#include <algorithm>
#include <exception>
#include <functional>
#include <limits>
#include <optional>
#include <system_error>
#include <thread>

#include "engine/DataProgress.h"
#include "engine/Engine.h"
#include "engine/ModADORecordHelpers.h"
#include "engine/PrimaryKeyOnce.h"
#include "engine/RecordMatch.h"
#include "engine/Unbracketable.h"
#include "engine/VbFlow.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::engine {
namespace {

void appendSqlMessage(clsDBManager& side, const std::string& text) { side.appendReturnSQLMessage(text); }

void appendRecordValueFailure(clsDBManager& A, int16_t k, int16_t columnCount) {
  appendSqlMessage(A, " #12 Error occured while comparing record value  Index=" + vb::CStr(k) +
                          "FieldCount=" + vb::CStr(columnCount) + " ||");
}

// A side's message after a record looked up; made once, not per record.
const std::string& completedText() {
  static const std::string completed = "Successfully Completed";
  return completed;
}

// A Long addition as VB does it: 6 "Overflow" past the int32 range.
int32_t addLong(int32_t a, int32_t b) {
  int64_t sum = static_cast<int64_t>(a) + b;
  if (sum < std::numeric_limits<int32_t>::min() || sum > std::numeric_limits<int32_t>::max())
    vb::raiseError(vb::errnum::Overflow);
  return static_cast<int32_t>(sum);
}

clsDBManager& addValueRow(clsDBManager& A, int16_t changeType, int16_t k, int16_t columnCount,
                          PrimaryKeyOnce* primaryKey);

// compareRecordValues; with primaryKey, the value rows take the key from it instead of asking
// the side once per row.
clsDBManager& compareRecord(clsDBManager& A, clsDBManager& B, int16_t columnCount,
                            PrimaryKeyOnce* primaryKey) {
  int16_t k = 0;
  try {
    A.setReturnSQLMessage("Successfully Completed");
    ModADO::buildMatchQuery(A, B);
    if (!ModADO::queryReturnsRecords(B)) {
      for (k = 0; k < columnCount; ++k) addValueRow(A, 5, k, columnCount, primaryKey);
    }
  } catch (...) {
    appendRecordValueFailure(A, k, columnCount);
  }
  return A;
}

clsDBManager& addValueRow(clsDBManager& A, int16_t changeType, int16_t k, int16_t columnCount,
                          PrimaryKeyOnce* primaryKey) {
  vb::ResumeNext onError;
  auto row = vb::Ref<clsResultSet>::make();
  auto field = [&] { return A.getDatabaseRecords()->field(k); };
  onError([&] { row->setChangeType(vb::CStr(changeType)); });
  ifResumeNext(
      onError, [&] { return !field().Value().isNull(); },
      [&] { onError([&] { row->setDataValue(field().Value().toText()); }); },
      [&] { onError([&] { row->setDataValue("Null"); }); });
  onError([&] { row->setIsDataValue(true); });
  onError([&] { row->setRecordCount(addLong(A.getRecordCount(), 4)); });
  onError([&] { row->setRecordNumber(A.getCurrentRecordNumber()); });
  onError([&] { row->setFieldCount(columnCount); });
  onError([&] { row->setFieldName(field().Name()); });
  onError([&] { row->setPrimaryKey(primaryKey ? primaryKey->get() : A.getAccessPrimaryKey(A.getTableName())); });
  onError([&] { row->setDataType(vb::CStr(static_cast<int32_t>(field().Type()))); });
  onError([&] { row->setLength(vb::CStr(field().ActualSize())); });
  onError([&] { row->setDatabaseObjName(A.getTableName()); });
  onError([&] { row->setIsFieldDesc(true); });
  onError([&] { A.getResults()->Add(row); });
  ifResumeNext(
      onError, [&] { return field().Name() == "AddressNumber1"; },
      [&] { onError([&] { row->setIsFieldDesc(true); }); });
  return A;
}

// The record lookups of one walk: through the matcher where it decides, by match query where it
// does not. Whatever decided the walk's last record leaves B's statement and where clause.
class RecordLookup {
 public:
  // otherWay: shared with the walk the other way of a compare in both directions.
  RecordLookup(clsDBManager& A, clsDBManager& B, RecordMatcher::OtherWay* otherWay = nullptr)
      : A_(A), B_(B), otherWay_(otherWay) {}
  // Prepares the matcher once A's records are open (when there are any).
  // A walk of at most kFewRecords records sends its few match queries: reading all of B's table
  // would cost more than they do.
  static constexpr int64_t kFewRecords = 32;
  // orderedBy: the column A's statement orders its records by, if any.
  // unreadMatches: the walk raises no events and may go through only the records of A that the
  // walk the other way kept (see RecordMatcher::replayOtherWay); then call completeUnread once
  // A's records are all compared.
  // mayCheckOrder: the walk can be made again when text keys turn out not to come in byte order
  // (see orderBroken).
  void prepare(int64_t mostRecords = -1, const std::string& orderedBy = "", bool unreadMatches = false,
               bool mayCheckOrder = false) {
    if (mostRecords >= 0 && mostRecords <= kFewRecords) return;
    auto records = A_.getDatabaseRecords();
    if (records->State() != ado::adStateOpen) return;
    if (unreadMatches) {
      // Before A's statement is read: it need not be (the records kept take its rows' place).
      matcher_ = RecordMatcher::prepare(A_, B_, orderedBy, otherWay_, true);
      if (matcher_) keptPlaces_ = matcher_->replayOtherWay(*records, recordCount_);
      if (!keptPlaces_.empty()) return;
      matcher_.reset();
    }
    if (!records->isEOF()) matcher_ = RecordMatcher::prepare(A_, B_, orderedBy, otherWay_, false, mayCheckOrder);
    if (unreadMatches && matcher_) readOwnRecordsAhead(*records);
  }
  void compare(int16_t columnCount) {
    if (nextKept_ < keptPlaces_.size()) {
      // The records before this one are matched, unread.
      const int64_t place = keptPlaces_[nextKept_++];
      matchUnread(place - compared_, columnCount);
      compared_ = place + 1;
    }
    auto decision = RecordMatcher::Decision::AskEngine;
    try {
      if (matcher_) decision = matcher_->decide(*A_.getDatabaseRecords());
    } catch (...) {
      // A value the matcher cannot read: the match query's builder passes such steps over, so
      // the engine decides as it always has.
      decision = RecordMatcher::Decision::AskEngine;
    }
    if (decision == RecordMatcher::Decision::AskEngine) {
      // The match query runs on B's connection, which may be reading B's records ahead.
      const auto lock = matcher_ ? matcher_->otherConnectionLock() : std::unique_lock<std::mutex>();
      compareRecord(A_, B_, columnCount, literalRecordMatching() ? nullptr : &primaryKey());
      lastDecided_ = false;
    } else {
      compareDecidedRecord(decision == RecordMatcher::Decision::Match, columnCount);
      lastDecided_ = true;
    }
  }
  // Call when the walk has gone through its records without failing: the records after the
  // last one it went through are matched.
  void completeUnread(int16_t columnCount) {
    if (!keptPlaces_.empty()) matchUnread(recordCount_ - compared_, columnCount);
    compared_ = recordCount_;
  }
  // Call when the walk has compared every record without failing.
  void completeOtherWay() noexcept {
    if (matcher_) matcher_->completeOtherWay();
  }
  // Whether the text keys the walk steps through, trusted to come in byte order on both sides,
  // did not (so far; toEnd: to B's last record, read now): the walk is then to be made again
  // without.
  bool orderBroken(bool toEnd = false) noexcept { return matcher_ && !matcher_->orderHeld(toEnd); }
  // Call when the walk ends, normally or not.
  void finish() noexcept {
    if (matcher_) matcher_->stopReading();  // before the walk closes B's statement
    if (readingOwnAhead_) {
      // A's connection is free for others again, whether the walk went through or not.
      readingOwnAhead_->StopPrefetching();
      readingOwnAhead_ = {};
    }
    try {
      if (lastDecided_) matcher_->writeLastMatchQuery(A_, B_);
    } catch (...) {
      // Writing two texts into B: nothing left that can fail but memory.
    }
    lastDecided_ = false;
  }

 private:
  // What compareRecordValues does when its match query runs and finds a record or none.
  void compareDecidedRecord(bool matched, int16_t columnCount) {
    int16_t k = 0;
    try {
      A_.setReturnSQLMessage(completedText());
      B_.appendReturnSQLMessage(" Successfully Completed ||");
      if (!matched) {
        for (k = 0; k < columnCount; ++k) addValueRow(A_, 5, k, columnCount, &primaryKey());
      }
    } catch (...) {
      appendRecordValueFailure(A_, k, columnCount);
    }
  }

  // What compareDecidedRecord does for records matched, records times over.
  void matchUnread(int64_t records, int16_t columnCount) {
    if (records <= 0) return;
    matcher_->countMatchedUnread(records);
    try {
      A_.setReturnSQLMessage(completedText());
      B_.appendReturnSQLMessage(" Successfully Completed ||", static_cast<uint64_t>(records));
    } catch (...) {
      appendRecordValueFailure(A_, 0, columnCount);
    }
    lastDecided_ = true;
  }

  // A walk that raises no events, on SQLite's own provider, has A's records read on a thread of
  // their own while it decides them. Nothing of the walk may use A's connection meanwhile: A's
  // primary key is asked now (a failed question keeps A's records read in step, to ask again)
  // and the matcher reads literals elsewhere.
  void readOwnRecordsAhead(ado::Recordset& records) {
    if (literalRecordMatching()) return;
    try {
      auto own = A_.getDatabaseConnection();
      auto other = B_.getDatabaseConnection();
      if (!own || !other || &*own == &*other || own->State() != ado::adStateOpen || own->Provider() != "SQLite")
        return;
      (void)primaryKey().get();
      if (!matcher_->leaveOwnConnection(A_)) return;
      records.PrefetchRemainingRows();
      readingOwnAhead_ = A_.getDatabaseRecords();
      RecordMatcher::countOwnReadAhead();
    } catch (...) {
      // Read in step, as always.
    }
  }

  // The key of A's table, asked once per walk.
  PrimaryKeyOnce& primaryKey() {
    if (!primaryKey_) primaryKey_.emplace(A_, A_.getTableName());
    return *primaryKey_;
  }

  clsDBManager& A_;
  clsDBManager& B_;
  RecordMatcher::OtherWay* otherWay_;
  std::unique_ptr<RecordMatcher> matcher_;
  vb::Ref<ado::Recordset> readingOwnAhead_;  // A's records, while read on a thread of their own
  std::optional<PrimaryKeyOnce> primaryKey_;
  bool lastDecided_ = false;
  // Going through kept records only: their places among A's records, the next one's index, how
  // many records were compared so far, and how many A's statement has.
  std::vector<int64_t> keptPlaces_;
  size_t nextKept_ = 0;
  int64_t compared_ = 0;
  int64_t recordCount_ = 0;
};


// What the buffered and windowed comparisons share: open A's statement and, when it has records,
// reset A's position, counts and results. Returns the column count.
int16_t openBufferedSide(clsDBManager& A, const std::string& query) {
  A.setReturnSQLMessage("Successfully Completed");
  A.openDataBaseRecordsFromQuery(query);
  int16_t columnCount = 0;
  auto records = A.getDatabaseRecords();
  if (!records->isBOF()) {
    columnCount = ModADO::getRecordSetFieldCount(A);
    A.setCurrentRecordNumber(1);
    A.setFieldCount(columnCount);
    const int32_t recordCount = records->RecordCount();
    A.setRecordCount(recordCount);
    dataProgress().maximum = recordCount;
    records->MoveFirst();
    A.resetResult();
  }
  return columnCount;
}

// One step of a buffered walk: count it, report every 50 steps, advance the record number.
void countBufferedStep(clsDBManager& A, Varsenti& control, const std::string& readingFrom,
                       int16_t& counter) {
  DataProgress& progress = dataProgress();
  progress.position = addLong(progress.position, 1);
  ++counter;
  if (counter == 50) {
    if (progress.position < progress.maximum && progress.position > 0) {
      int32_t position = progress.position;
      int32_t maximum = progress.maximum;
      std::string text = readingFrom;
      control.setCurrentProgressCount(position, maximum, text);
    }
    counter = 0;
  }
  A.setCurrentRecordNumber(addLong(A.getCurrentRecordNumber(), 1));
}

// What the buffered and windowed walks share: open A's statement, reset the progress, run the
// walk over A's records, close both sides; any failure is recorded as message #14.
// mostRecords: how many records the walk compares at most (-1: all of them).
// otherWay: shared with the walk the other way of a compare in both directions.
template <typename Walk>
void walkBufferedSide(clsDBManager& A, clsDBManager& B, int64_t mostRecords, Walk&& walk,
                      RecordMatcher::OtherWay* otherWay = nullptr) {
  std::string query;
  RecordLookup lookup(A, B, otherWay);
  try {
    const std::string tableName = A.getTableName();
    if (!canBeBracketed(tableName)) {
      lookup.finish();
      reportTableNotCompared(A, tableName);
      return;
    }
    query = buildSelectStatement(A);
    const int16_t columnCount = openBufferedSide(A, query);
    if (std::string column; unbracketableColumn(A.getDatabaseRecords(), column)) {
      lookup.finish();
      A.closeRecordSet();
      reportColumnNotCompared(A, tableName, column);
      return;
    }
    dataProgress().position = 1;
    int16_t counter = 0;
    auto records = A.getDatabaseRecords();
    lookup.prepare(mostRecords);
    walk(*records, lookup, columnCount, counter);
    lookup.completeOtherWay();
    lookup.finish();
    A.closeRecordSet();
    B.closeRecordSet();
  } catch (...) {
    lookup.finish();
    appendSqlMessage(A, " #14 Error occurred while attempting to get data differences from specified fields SQL used = " +
                            query + " ||");
  }
}

}  // namespace

std::string buildSelectStatement(clsDBManager& manager) {
  // Access and other sides build the same text.
  (void)manager.getIsAccess();
  return "select " + manager.getFieldList() + " from [" + manager.getTableName() + "]";
}

namespace {

// Whether A and B are two connections of SQLite's own provider, both open.
bool twoSqliteConnections(clsDBManager& A, clsDBManager& B) {
  try {
    auto a = A.getDatabaseConnection();
    auto b = B.getDatabaseConnection();
    return a && b && &*a != &*b && a->State() == ado::adStateOpen && b->State() == ado::adStateOpen &&
           a->Provider() == "SQLite" && b->Provider() == "SQLite";
  } catch (...) {
    return false;
  }
}

// Runs here on this thread and there on a thread of its own, at once (one after the other when
// no thread is to be had); a failure of either is raised once both are done, here's first.
void atOnce(const std::function<void()>& here, const std::function<void()>& there) {
  std::exception_ptr failed;
  std::thread other;
  try {
    other = std::thread([&] {
      try {
        there();
      } catch (...) {
        failed = std::current_exception();
      }
    });
  } catch (const std::system_error&) {
    // No thread to be had: one after the other.
  }
  if (!other.joinable()) {
    here();
    there();
    return;
  }
  try {
    here();
  } catch (...) {
    other.join();
    throw;
  }
  other.join();
  if (failed) std::rethrow_exception(failed);
}

// Opens the walk's statement on A, then on B. Opening a statement that sorts a table without an
// index sorts it there and then (SQLite steps to the first record); on two SQLite files of
// SQLite's own provider the two sorts run on two cores. Each side's message and record set are
// its own, so the outcome is the same as opening one after the other.
void openOnBothSides(clsDBManager& A, clsDBManager& B, const std::string& query) {
  if (!twoSqliteConnections(A, B)) {
    A.openDataBaseRecordsFromQuery(query);
    B.openDataBaseRecordsFromQuery(query);
    return;
  }
  atOnce([&] { A.openDataBaseRecordsFromQuery(query); }, [&] { B.openDataBaseRecordsFromQuery(query); });
}

// The sides of a walk whose statements run without their order.
struct Unsorted {
  bool own = false, other = false;
  bool any() const { return own || other; }
};

// Of the sides allowed, those whose engine would sort the walk's statement (ordered) for its order:
// no index gives it. Their tables are often filled in key order: read as stored, they give the
// records in that order already, which the walk then watches (see UnsortedOpens). The watch
// follows integer keys: a text key (orderedBy, in table) is sorted.
Unsorted sortingSides(clsDBManager& A, clsDBManager& B, const std::string& ordered, const std::string& table,
                      const std::string& orderedBy, Unsorted allowed) {
  Unsorted sides;
  if (literalRecordMatching()) return sides;
  try {
    auto sorts = [&](clsDBManager& side) {
      auto connection = side.getDatabaseConnection();
      return connection && connection->State() == ado::adStateOpen &&
             connection->TextComparedByBytes(table, orderedBy) == ado::TextBytes::Unknown &&
             connection->SortsForOrder(ordered);
    };
    sides.own = allowed.own && sorts(A);
    sides.other = allowed.other && sorts(B);
  } catch (...) {
    return {};
  }
  return sides;
}

// While it lives, the next Open of the record set of each side told runs the walk's statement
// without its order (unordered), watching that the records come with the key's values rising
// from record to record (stored as integers, none repeated): then they come in the order of the
// statement with it. A side whose records do not is walked again, sorted.
class UnsortedOpens {
 public:
  UnsortedOpens(clsDBManager& A, clsDBManager& B, Unsorted sides, const std::string& unordered,
                const std::string& key) {
    if (sides.own) a_ = A.getDatabaseRecords();
    if (sides.other) b_ = B.getDatabaseRecords();
    for (auto* records : {&a_, &b_}) {
      if (!*records) continue;
      (*records)->RunInstead(unordered, key);
      RecordMatcher::countUnsortedStatement();
    }
  }
  ~UnsortedOpens() {
    for (auto* records : {&a_, &b_})
      if (*records) (*records)->RunInstead("");
  }
  UnsortedOpens(const UnsortedOpens&) = delete;
  UnsortedOpens& operator=(const UnsortedOpens&) = delete;

 private:
  vb::Ref<ado::Recordset> a_, b_;
};

// What a walk changes on its sides, kept before a walk whose sides read unsorted and put back if
// it is walked again: A's result rows, both messages, B's statement and where clause, what a
// first walk of a pair keeps for the second, and the counts of its decisions.
class WalkSnapshot {
 public:
  WalkSnapshot(clsDBManager& A, clsDBManager& B, const RecordMatcher::OtherWay* otherWay)
      : results_(A.getResults() ? A.getResults()->Count() : 0),
        ownMessage_(A.returnSQLMessageText()),
        otherMessage_(B.returnSQLMessageText()),
        otherSql_(B.getSql()),
        otherWhere_(B.getWhereClause()),
        filledOtherWay_(otherWay && !otherWay->complete),
        counts_(RecordMatcher::threadTotals()) {}
  void restore(clsDBManager& A, clsDBManager& B, RecordMatcher::OtherWay* otherWay) const {
    if (auto results = A.getResults())
      while (results->Count() > results_) results->Remove(results->Count());
    A.setReturnSQLMessageText(ownMessage_);
    B.setReturnSQLMessageText(otherMessage_);
    B.setSQL(otherSql_);
    B.setWhereClause(otherWhere_);
    // A second walk of a pair only reads what the first kept (going through it would have opened
    // no statement unsorted).
    if (filledOtherWay_) *otherWay = RecordMatcher::OtherWay{};
    RecordMatcher::countWalkedAgain(counts_);
  }

 private:
  int32_t results_;
  MessageText ownMessage_, otherMessage_;
  std::string otherSql_, otherWhere_;
  bool filledOtherWay_;
  RecordMatcher::Counts counts_;
};

// While it lives, the next Open of either side's record set reads its first row on first use.
class DeferredOpens {
 public:
  DeferredOpens(clsDBManager& A, clsDBManager& B) : a_(A.getDatabaseRecords()), b_(B.getDatabaseRecords()) {
    a_->DeferFirstRow();
    b_->DeferFirstRow();
  }
  ~DeferredOpens() {
    // An Open that did not happen does not leave it to a later one.
    a_->DeferFirstRow(false);
    b_->DeferFirstRow(false);
  }
  DeferredOpens(const DeferredOpens&) = delete;
  DeferredOpens& operator=(const DeferredOpens&) = delete;

 private:
  vb::Ref<ado::Recordset> a_, b_;
};

// Of the sides read unsorted, those whose records broke the key's rise so far; at the end of the
// walk (finished), also A's when it did not rise to its last record.
Unsorted brokenSides(clsDBManager& A, clsDBManager& B, Unsorted watched, bool finished) noexcept {
  try {
    Unsorted broken;
    if (watched.own) {
      const ado::RiseSeen seen = A.getDatabaseRecords()->InsteadRise();
      broken.own = seen == ado::RiseSeen::Broken || (finished && seen != ado::RiseSeen::Held);
    }
    if (watched.other) broken.other = B.getDatabaseRecords()->InsteadRise() == ado::RiseSeen::Broken;
    return broken;
  } catch (...) {
    return watched;  // not known to hold: walked again sorted
  }
}

// One walk of A's records against B, in the order of A's first comparable field. Sides in
// mayReadUnsorted whose engine would sort read their statements without the order (see
// UnsortedOpens); the walk ends early, false, with broken naming those whose records did not
// come in it, and is to be walked again from what it changed (WalkSnapshot) with them sorted.
bool walkTableRecords(clsDBManager& A, clsDBManager& B, RecordMatcher::OtherWay* otherWay,
                      Unsorted mayReadUnsorted, Unsorted& broken, bool mayCheckOrder, bool& orderBroken) {
  std::string query;
  std::string orderBy;
  Unsorted watched;
  RecordLookup lookup(A, B, otherWay);
  // Ends a walk whose order broke: B's reading stopped, both statements closed (before the
  // lookup goes, so nothing is read again).
  auto abandon = [&](Unsorted sides) {
    broken = sides;
    lookup.finish();
    for (auto* side : {&A, &B}) {
      try {
        side->closeRecordSet();
      } catch (...) {
        // Closing what only read.
      }
    }
    return false;
  };
  try {
    A.setReturnSQLMessage("Successfully Completed");
    const std::string tableName = A.getTableName();
    if (!canBeBracketed(tableName)) {
      lookup.finish();
      reportTableNotCompared(A, tableName);
      return true;
    }
    orderBy = ModADO::getFirstComparableFieldName(A, tableName);
    if (!canBeBracketed(orderBy)) {
      lookup.finish();
      reportColumnNotCompared(A, tableName, orderBy);
      return true;
    }
    query = buildSelectStatement(A);
    const std::string unordered = query;
    if (!orderBy.empty()) query += " order by [" + orderBy + "]";
    {
      // The walk may go through what the first walk kept: its statements are opened (their
      // fields known) and read only if it does not. Else a side that would sort its table for
      // the order reads it as stored, which is often in the order already.
      std::optional<DeferredOpens> deferred;
      std::optional<UnsortedOpens> unsorted;
      if (RecordMatcher::mayGoThroughKept(otherWay, A, B, query)) {
        deferred.emplace(A, B);
      } else if (!orderBy.empty() && mayReadUnsorted.any()) {
        watched = sortingSides(A, B, query, A.getTableName(), orderBy, mayReadUnsorted);
        if (watched.any()) unsorted.emplace(A, B, watched, unordered, orderBy);
      }
      openOnBothSides(A, B, query);
    }
    if (std::string column; unbracketableColumn(A.getDatabaseRecords(), column) ||
                            unbracketableColumn(B.getDatabaseRecords(), column)) {
      lookup.finish();
      A.closeRecordSet();
      B.closeRecordSet();
      reportColumnNotCompared(A, tableName, column);
      return true;
    }
    auto records = A.getDatabaseRecords();
    if (records->State() == ado::adStateOpen) {
      lookup.prepare(-1, orderBy, true, mayCheckOrder);
      int16_t columnCount = 0;
      if (!records->isBOF()) columnCount = ModADO::getRecordSetFieldCount(A);
      uint32_t step = 0;
      while (!records->isEOF()) {
        lookup.compare(columnCount);
        records->MoveNext();
        if (watched.any() && (++step & 255) == 0) {
          const Unsorted sides = brokenSides(A, B, watched, false);
          if (sides.any()) return abandon(sides);
        }
        if (lookup.orderBroken()) {
          orderBroken = true;
          return abandon({});
        }
      }
      lookup.completeUnread(columnCount);
      lookup.completeOtherWay();
      if (lookup.orderBroken(true)) {
        orderBroken = true;
        return abandon({});
      }
      if (watched.any()) {
        const Unsorted sides = brokenSides(A, B, watched, true);
        if (sides.any()) return abandon(sides);
        // B's records not read to the end may not be in order after the last read: what was kept
        // of them cannot stand for them.
        if (watched.other && otherWay && B.getDatabaseRecords()->InsteadRise() != ado::RiseSeen::Held)
          otherWay->replayable = false;
      }
    }
    lookup.finish();
    A.closeRecordSet();
    B.closeRecordSet();
  } catch (...) {
    if (watched.any()) {
      const Unsorted sides = brokenSides(A, B, watched, false);
      if (sides.any()) return abandon(sides);
    }
    if (lookup.orderBroken()) {
      orderBroken = true;
      return abandon({});
    }
    lookup.finish();
    appendSqlMessage(A, " #16 SQL used " + query + "Last field name used " + orderBy + " ||");
  }
  return true;
}

void compareTableRecordsWith(clsDBManager& A, clsDBManager& B, RecordMatcher::OtherWay* otherWay) {
  Unsorted mayReadUnsorted{true, true};
  bool mayCheckOrder = true;
  for (;;) {
    const WalkSnapshot before(A, B, otherWay);
    Unsorted broken;
    bool orderBroken = false;
    if (walkTableRecords(A, B, otherWay, mayReadUnsorted, broken, mayCheckOrder, orderBroken)) return;
    // Made again: with the sides whose records did not rise sorted, or without trusting text keys
    // to come in byte order. Each can happen once.
    before.restore(A, B, otherWay);
    if (broken.own) mayReadUnsorted.own = false;
    if (broken.other) mayReadUnsorted.other = false;
    if (orderBroken) mayCheckOrder = false;
  }
}

}  // namespace

void compareTableRecords(clsDBManager& A, clsDBManager& B) { compareTableRecordsWith(A, B, nullptr); }

void compareTableRecordsBothWays(clsDBManager& A, clsDBManager& B) {
  RecordMatcher::OtherWay otherWay;
  compareTableRecordsWith(A, B, &otherWay);
  compareTableRecordsWith(B, A, &otherWay);
}

clsDBManager& compareRecordValues(clsDBManager& A, clsDBManager& B, int16_t columnCount) {
  return compareRecord(A, B, columnCount, nullptr);
}

clsDBManager& addRecordValueToResults(clsDBManager& A, int16_t changeType, int16_t k,
                                      int16_t columnCount) {
  return addValueRow(A, changeType, k, columnCount, nullptr);
}

namespace {

void compareBufferedRecordsWith(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                const std::string& readingFrom, RecordMatcher::OtherWay* otherWay) {
  walkBufferedSide(
      A, B, -1,
      [&](ado::Recordset& records, RecordLookup& lookup, int16_t columnCount, int16_t& counter) {
        while (!records.isEOF()) {
          lookup.compare(columnCount);
          records.MoveNext();
          countBufferedStep(A, control, readingFrom, counter);
        }
      },
      otherWay);
}

}  // namespace

void compareBufferedRecords(clsDBManager& A, clsDBManager& B, Varsenti& control,
                            const std::string& readingFrom) {
  compareBufferedRecordsWith(A, B, control, readingFrom, nullptr);
}

void compareBufferedRecordsBothWays(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                    const std::string& readingA, const std::string& readingB) {
  RecordMatcher::OtherWay otherWay;
  compareBufferedRecordsWith(A, B, control, readingA, &otherWay);
  compareBufferedRecordsWith(B, A, control, readingB, &otherWay);
}

void compareRecordWindow(clsDBManager& A, clsDBManager& B, Varsenti& control,
                         const std::string& readingFrom, int32_t s, int32_t n) {
  const int64_t steps = std::max<int64_t>(0, static_cast<int64_t>(n) + 1);
  walkBufferedSide(A, B, steps, [&](ado::Recordset& records, RecordLookup& lookup, int16_t columnCount,
                                   int16_t& counter) {
    // The window's start only sets how many steps run; every window starts at the first record.
    const int64_t last = static_cast<int64_t>(s) + n;
    for (int64_t i = s; i <= last; ++i) {
      if (!records.isBOF() && !records.isEOF()) {
        lookup.compare(columnCount);
        records.MoveNext();
      }
      countBufferedStep(A, control, readingFrom, counter);
    }
  });
}

void saveTableRecordsToXML(clsDBManager& manager) {
  vb::ResumeNext onError;
  bool named = false;
  onError([&] { named = !manager.getTableName().empty(); });
  if (!named) return;
  onError([&] { manager.openDataBaseRecordsFromQuery(manager.getSql()); });
  onError([&] { manager.saveToXML(manager.getXmlFileName()); });
  onError([&] { manager.closeRecordSet(); });
}

}  // namespace varsentix::engine
