#pragma once
// Deciding, without a statement per record, what the match query of a record would find.
//
// The record comparison asks side B, for every record of A, whether B has a record with the same
// values: one statement per record, a full scan of B's table whenever its first column is not
// indexed. A RecordMatcher reads the tested columns of B's table once, before the walk, and then
// decides each record of A from its values:
//   - Match: B holds a record the statement certainly returns (the same values, and a statement
//     that the engine certainly runs);
//   - NoMatch: the statement certainly runs and no record of B can satisfy it;
//   - AskEngine: anything else. The walk then sends the match query as always.
// What "certainly" means per engine (how = and like compare, how a literal is read) is written
// down in docs/performance.md. Memory: 24 bytes per record of B's table while the walk runs, up
// to 4 MB a set of hashes; past that they go to a temporary file (see HashSet).
//
// When both sides are SQLite files and B's table can be searched by its first column, the
// matcher reads no table itself: one statement on a joined reader walks A's statement in step
// with the walk and answers, per record, whether the match query would find a record (the
// query's own predicate, evaluated by SQLite on the values it would read from the literals),
// or that a literal would not read back as its value (then the engine is asked). Memory does
// not grow with the tables.
//
// Before both, when the match query's first column holds integers, the matcher reads B's tested
// columns ordered by it and steps through them with the walk while A's records come in key
// order (a walk ordered by that column, or a table read as stored with its keys in order): each
// record of A is decided against B's records with the same key, and nothing else is kept. A Null
// or non-integer key, or one out of order, leaves the step-through for the hashes.
//
// A compare in both directions walks B against A right after A against B. The first walk's
// step-through sees B's records beside A's records with the same key; it keeps, in an OtherWay,
// the keys under which a record of B may lack a certain match in A, with A's records under them.
// The second walk then reads only the key of a record under any other key (its match is
// certain), and decides the others against A's kept records as the step-through would.
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/HashSet.h"
#include "engine/ReadAhead.h"
#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix {
class clsDBManager;
namespace ado {
class Connection;
class Recordset;
}  // namespace ado
}  // namespace varsentix

namespace varsentix::engine {

// Per thread: when true, every record is looked up with its own match query (the literal
// comparison, which the fast one is checked against). False by default.
bool literalRecordMatching();
void setLiteralRecordMatching(bool literal);

class RecordMatcher {
 public:
  enum class Decision { Match, NoMatch, AskEngine };

  // Prepares the decisions for a walk over A's open record set against B, reading B's table
  // once. nullptr when they cannot be made for this walk (another engine, a column type or
  // value it does not cover, B's table unreadable, the literal comparison switched on).
  // orderedBy: the column the walk's statement orders A's records by ("" when unordered: the
  // records may still come in the order of an integer first column, and are merged while they
  // do).
  // otherWay: shared by the two walks of a compare in both directions; the first fills it, the
  // second uses it when it walks the same table and columns the other way.
  // keptOnly: only a matcher that decides from what the walk the other way kept (nullptr
  // otherwise, nothing of either side read).
  struct OtherWay;
  // mayCheckOrder: text keys whose engine's order is not known to be byte order may be stepped
  // through all the same, checked as they are read (see orderHeld); the walk is then to be made
  // again, without, when they turn out not to be.
  static std::unique_ptr<RecordMatcher> prepare(clsDBManager& A, clsDBManager& B,
                                                const std::string& orderedBy = "",
                                                OtherWay* otherWay = nullptr, bool keptOnly = false,
                                                bool mayCheckOrder = false);
  // Whether the walk of A against B opening query may go through the records the walk the other
  // way kept (see replayOtherWay): the statement it opens on either side need not be read.
  static bool mayGoThroughKept(const OtherWay* otherWay, clsDBManager& A, clsDBManager& B,
                               const std::string& query);

  // When the merge read the statement the walk opened on B and the walk left it open (it failed),
  // the statement is put back on its first record, where the walk leaves it.
  ~RecordMatcher();
  RecordMatcher(const RecordMatcher&) = delete;
  RecordMatcher& operator=(const RecordMatcher&) = delete;

  // Decides A's current record and keeps its values for lastMatchQuery.
  Decision decide(ado::Recordset& records);

  // While B's records are read on a thread of their own, whoever else uses B's connection holds
  // this lock (the walk, to send a match query). Empty when there is no such thread.
  std::unique_lock<std::mutex> otherConnectionLock();
  // Ends the reading of B's records; call before the walk closes B's statement.
  void stopReading() noexcept;
  // Makes the decisions leave A's connection alone from now on (another thread is to read A's
  // records through it): how SQLite reads a literal, when asked of A's connection, is asked of a
  // reader of its own. False when no such reader is to be had (A's connection is still used).
  bool leaveOwnConnection(clsDBManager& A);

  // Writes into B the statement and where clause the match query builder leaves for the record
  // decide saw last.
  void writeLastMatchQuery(clsDBManager& A, clsDBManager& B) const;

  // Call when the walk has compared every record of A without failing: the rest of B's records
  // are read, and the other way's decisions become ready for the walk of B against A.
  void completeOtherWay() noexcept;
  // False when text keys stepped through on trust (mayCheckOrder) did not come in byte order, on
  // either side, or left the step-through for another reason: then the decisions made so far
  // may be wrong (a record of B with A's key may come later), and the walk is to be made again.
  // toEnd: after the walk, B's records not read yet are read and checked too. (Asked after every
  // record: inline.)
  bool orderHeld(bool toEnd = false) noexcept {
    if (!orderChecked_ || orderFailed_) return !orderFailed_;
    return !toEnd || restInOrder();
  }

  // The walk of B against A right after A against B, when the first walk read B's records from
  // the very statement this walk runs on B (its own, records, on its first record) and kept
  // those it needs: the records under keys whose match is not certain, and the last one. The
  // walk then goes through those alone (records' rows are replaced by them), the others being
  // matched. Returns, for each of them, its place among all the statement's records (from 0);
  // empty when the walk reads its own statement. count: how many records the statement has.
  std::vector<int64_t> replayOtherWay(ado::Recordset& records, int64_t& count);
  // Counts records decided as matched without being read (see replayOtherWay).
  void countMatchedUnread(int64_t records);

  // How the decisions of every matcher on this thread went so far, for benchmarks and tests.
  struct Counts {
    int64_t matched = 0, notMatched = 0, askedEngine = 0;
    int64_t joined = 0;  // of the matched and not matched: by the joined statement
    int64_t merged = 0;  // ... by the merge with B's ordered records
    int64_t otherWay = 0;  // ... from what the walk the other way kept
    int64_t walkStatementsRead = 0;  // merges that read the statement the walk opened on B
    int64_t readAhead = 0;           // merges that read B's records on a thread of their own
    int64_t keptOnly = 0;  // walks that went through only the records the walk the other way kept
    int64_t unsorted = 0;  // walk statements run without their order (trusted to come in it)
    int64_t walkedAgain = 0;  // walks ended early and made again, a side's records not in order
    int64_t ownReadAhead = 0;  // walks that read A's records on a thread of their own
    int64_t hashesInFiles = 0;  // walks whose hashes of B's records went to a temporary file
  };
  static const Counts& threadTotals();
  // Counts a walk that reads A's records on a thread of their own.
  static void countOwnReadAhead();
  // Counts a walk statement run without its order.
  static void countUnsortedStatement();
  // Counts a walk ended early to be made again with a side sorted; the decisions it made, and
  // how it made them, are taken back to what they were before it (before).
  static void countWalkedAgain(const Counts& before);

 private:
  enum class Kind { Integer, Double, Text };
  enum class Compare { Equal, Like };
  struct Column {
    int16_t index = 0;      // position in A's record set
    std::string name;
    int32_t type = 0;       // A's ADO type
    Kind kind = Kind::Integer;
    Compare compare = Compare::Equal;
    bool excluded = false;  // left out of the match query
  };
  RecordMatcher() = default;
  // The tested columns' positions in columns_.
  std::vector<size_t> testedPositions() const;
  // The first walk of a pair: keeps what the walk the other way needs (while collecting_).
  void closeOtherWayGroup();
  // Whether every record of B in group_ is matched the other way (then nothing is kept).
  bool groupCertainOtherWay() const;
  // Keeps A's current record for the other way, unless the group is certain already.
  void keepOwnRecordForOtherWay();
  void markOtherWayMatches();
  void stopCollecting();
  bool readRestOfOtherSide();
  // The second walk of a pair: whether the first one's decisions serve it.
  bool fitsOtherWay(const OtherWay& otherWay, const ado::Connection& own) const;
  Decision decideOtherWay(ado::Recordset& records);
  // Keys the values in group_'s next slot (keying into other_) and counts the slot in; when
  // they are not covered, marks the group uncertain instead. False when not covered.
  bool keyGroupSlot();
  // The decision for A's record, its values read, against B's records with its key in group_.
  Decision decideAgainstGroup(bool covered);
  // Opens B's tested columns ordered by the first column; false when the walk cannot merge.
  // otherWalk: the statement the walk opened on B (walkSource, as A's) and has not moved, read
  // instead of one of the merge's own when it serves.
  bool prepareMerge(const std::string& orderedBy, const vb::Ref<ado::Recordset>& otherWalk,
                    const std::string& walkSource);
  // Finds the tested columns in rows by name (into mergeColumns_); false when one is missing,
  // repeated or of another kind.
  bool readsTestedColumns(ado::Recordset& rows);
  Decision decideMerged(ado::Recordset& records);
  // The merge's key of a value into integer (or text, for text keys); false when it has none.
  bool mergeKeyOf(const vb::Variant& value, int64_t& integer, std::string& text) const;
  // -1, 0 or 1 as one key comes before, with or after another in the merge's order (of texts
  // when text, else of integers).
  static int compareKeys(bool text, int64_t integer, const std::string& keyText, int64_t otherInteger,
                         const std::string& otherText);
  int compareKeys(int64_t integer, const std::string& text, int64_t otherInteger,
                  const std::string& otherText) const {
    if (!textKeys_) return (integer > otherInteger) - (integer < otherInteger);
    return compareKeys(true, integer, text, otherInteger, otherText);
  }
  // Reads B's records up to the walk's key; false when B's order is not one the merge follows.
  bool loadGroup(int64_t key, const std::string& keyText);
  // Runs body with the add* functions keying into other_, leaving A's keys as they were.
  // (A template, not a std::function: called per record, a capture of more than two words would
  // be allocated each time.)
  template <typename Body>
  bool keyingOtherSide(Body&& body) {
    Keys* const before = keys_;
    keys_ = &other_;
    try {
      const bool result = body();
      keys_ = before;
      return result;
    } catch (...) {
      keys_ = before;
      throw;
    }
  }
  bool readGroup(int64_t key, const std::string& keyText);
  // Reads the key of B's current record into otherKey_; false when it is not an integer or
  // comes before the one read last.
  bool readOtherKey(const ReadAhead::Row& row);
  std::string testedColumnsSelect() const;
  // Leaves the merge for the hashes (or for the engine when they cannot be made).
  void leaveMerge();
  // Reads B's table into the hashes (keying into other_); false when they cannot be made.
  bool buildHashes();
  bool readHashes();
  bool otherKindsMatch(ado::Recordset& rows, const std::vector<int32_t>* positions = nullptr) const;
  // Reads the tested values of A's current record and makes their strict key; false when the
  // engine must be asked.
  // strictKey false: the values are read and judged, their strict key made only when asked for
  // (ownStrictKey).
  bool readOwnValues(ado::Recordset& records, bool strictKey = true);
  // The strict key of A's values read last (covered), made now if it was not yet.
  const std::string& ownStrictKey();
  // All keys of A's record from the values read last; false when the engine must be asked.
  bool makeOwnKeys();
  // The decision from the hashes for the values read last, their strict key made.
  Decision decideFromKeptValues();
  // Sets up the joined statement; false when it cannot serve this walk.
  bool prepareJoined(ado::Recordset& records, ado::Connection& own, const std::string& table);
  Decision decideJoined();
  Decision decideFromHashes(ado::Recordset& records);
  bool readOtherSide(ado::Recordset& rows, size_t expectedRows);
  // Appends the strict and loose key parts of one value of B; false when it is not covered.
  bool addOtherValue(const Column& column, const vb::Variant& value);
  // Whether a value of B is covered by the keys (addOtherValue's verdict, nothing made).
  bool otherValueCovered(const Column& column, const vb::Variant& value) const;
  // The same for a value of A; false when the engine must be asked.
  bool addOwnValue(const Column& column, const vb::Variant& value);
  // A part that is the same in the strict and both loose keys (Null, numbers).
  void addToEveryKey(std::string_view part);
  // ... the part of an integer, and of a double.
  void addIntegerToEveryKey(int64_t integer);
  void addDoubleToEveryKey(double number);
  // The loose key parts of a text value, the same for both sides.
  void addLooseText(const Column& column, const std::string& text);
  void clearKeys();

  ado::EngineFamily engine_ = ado::EngineFamily::Other;
  vb::Ref<ado::Connection> otherConnection_;
  vb::Ref<ado::Connection> literalReader_;  // asked how B's engine reads a literal
  std::vector<Column> columns_;  // every column of A's record set, in order
  std::vector<size_t> tested_;   // the positions in columns_ of the tested ones
  bool hasLikeColumns_ = false;
  HashSet<Hash128> strict_;             // B's records: every tested value as it is
  // Loose keys only filter: a 32-bit hash that collides sends one record to the engine (about
  // 1 in 4,000 records of A per million records of B), and halves their memory.
  HashSet<uint32_t> loose_;             // ... as the engine's = and like can find them
  HashSet<uint32_t> looseWithoutLike_;  // ... leaving the like columns out
  // The keys of one record.
  struct Keys {
    std::string strict, loose, looseWithoutLike;
    bool wildcard = false;  // a like column's literal holds % or _
  };
  // The add* functions key into *keys_: A's record (own_), or B's records (other_).
  Keys own_, other_;
  Keys* keys_ = &own_;
  bool strictOnly_ = false;  // while set, the add* functions make the strict key alone
  bool keyless_ = false;     // while set, they only judge whether the value is covered
  bool ownKeyed_ = false;    // own_.strict is the strict key of ownRow_
  bool ownExact_ = true;     // every double of ownRow_ reads back from its literal as itself
  // A's record decided last: its values where the record set holds them (they outlive the walk's
  // next move, as writeLastMatchQuery needs), else read into lastValues_.
  std::vector<vb::Variant> lastValues_;
  std::span<const vb::Variant> ownRow_;
  const vb::Variant& ownValue(size_t c) const { return ownRow_[c]; }
  // The joined statement: the decision, then A's record as the walk reads it.
  vb::Ref<ado::Connection> joined_;
  vb::Ref<ado::Recordset> joinedRows_;
  bool joinedStarted_ = false;
  // The merge: B's tested columns in the walk's order (open while the walk merges), and B's
  // records with the walk's key.
  std::string table_;
  vb::Ref<ado::Recordset> mergeRows_;
  vb::Ref<ado::Recordset> otherWalk_;   // the walk's statement on B, when mergeRows_ is it
  std::vector<int32_t> mergeColumns_;   // the tested columns' positions in mergeRows_
  std::unique_ptr<ReadAhead> otherRows_;  // mergeRows_'s records, read ahead while merging
  bool readAhead_ = false;                // on a thread of their own
  void startReading();
  bool askAlways_ = false;  // neither merge nor hashes: every record goes to the engine
  bool haveKey_ = false;
  int64_t walkKey_ = 0;
  bool haveOtherKey_ = false;
  int64_t otherKey_ = 0;  // the key of the B record read last
  bool otherKeyRead_ = false;  // ... which is otherRows_'s current record
  // Text keys (a text first column ordered and compared by its bytes on B's engine): the keys
  // are the texts beside these, and A's record's key and B's are read into scratch texts.
  bool textKeys_ = false;
  // Reads B's records not read yet, checking their keys' order (see orderHeld).
  bool restInOrder() noexcept;
  std::string walkText_, otherText_, ownText_, keyText_;
  bool mayCheckOrder_ = false;  // (see prepare)
  bool orderChecked_ = false;   // text keys stepped through on trust of their order
  bool orderFailed_ = false;    // ... which did not hold
  // B's records with the walk's key: their strict keys and their values (for the loose keys,
  // made only when A's record finds no strict match). Slots are reused: group_ holds groupSize_.
  struct GroupRecord {
    std::string strict;  // when keyed
    bool keyed = false;
    std::vector<vb::Variant> values;
    bool matchedOtherWay = false;  // an A record with the same values has its strict match here
    int64_t place = 0;             // among B's records, when keepingOther_
  };
  std::vector<GroupRecord> group_;
  // A group record's strict key, made now if it was not yet.
  const std::string& strictKeyOf(GroupRecord& slot);
  // Whether A's values read last are those of the group record, type for type.
  bool sameValues(const GroupRecord& slot) const;
  size_t groupSize_ = 0;
  bool groupUncertain_ = false;  // a record of the group holds a value the keys do not cover
  size_t sameSlot_ = 0;  // the group record holding A's very values (groupSize_ when none known)
  // The first walk of a pair: A's records with the walk's key (tested values only), kept for the
  // other way while collecting_.
  OtherWay* otherWay_ = nullptr;
  bool collecting_ = false;
  std::vector<std::vector<vb::Variant>> ownGroup_;
  size_t ownGroupSize_ = 0;
  // ... and B's whole records for the second walk to go through (see replayOtherWay), while
  // keepingOther_: B's records read so far, the group records not covered (out of group_), and
  // the last record of a certain group.
  bool keepingOther_ = false;
  int64_t otherRead_ = 0;
  struct PlacedRecord {
    int64_t place = 0;
    std::vector<vb::Variant> values;
  };
  std::vector<PlacedRecord> uncovered_;
  PlacedRecord lastCertain_;
  bool haveLastCertain_ = false;
  // Keeps B's current record (row, swapped out) under a key A does not have.
  void keepOtherRecord(std::vector<vb::Variant>& row);
  // Keeps B's records of group_ (closing an uncertain group).
  void keepOtherGroup();
  // Completes what is kept: B's last record, and whether the second walk can go through it.
  void finishKeeping();
  // The second walk: the first one's decisions (nullptr when not used), and which of its keys
  // group_ holds.
  OtherWay* usingOtherWay_ = nullptr;
  bool haveGroupKey_ = false;
  int64_t groupKey_ = 0;
  std::string groupText_;
  size_t nextUncertain_ = 0;  // the first of the uncertain keys not before the walk's key
  vb::Variant keyValue_;      // the key of the record read last
};

// What the first walk of a compare in both directions keeps for the second.
struct RecordMatcher::OtherWay {
  bool complete = false;
  // The first walk's sides, table and tested columns: the second must walk them the other way.
  const ado::Connection* ownConnection = nullptr;
  const ado::Connection* otherConnection = nullptr;
  ado::EngineFamily engine = ado::EngineFamily::Other;
  std::string table;
  std::vector<Column> tested;
  // Keys are integers, or texts in byte order (textKeys).
  bool textKeys = false;
  // B's greatest key; whether B had records at all.
  bool haveLastKey = false;
  int64_t lastKey = 0;
  std::string lastText;
  // The keys under which a record of B may lack a certain match, in ascending order, with A's
  // records under each (their tested values, in order): none where A has no record with the key.
  // The first walk finds them in key order; the second looks them up in key order.
  using Records = std::vector<std::vector<vb::Variant>>;
  struct UncertainKey {
    int64_t key = 0;
    std::string text;
    Records records;
  };
  std::vector<UncertainKey> uncertainKeys;
  // Appends the key; false when it is not past the last one (then nothing is kept).
  bool addUncertainKey(int64_t key, const std::string& text, Records records = {});
  // B's records that the second walk needs, when it may go through them instead of reading its
  // statement (replayable): those under the uncertain keys and B's last record, in B's order,
  // each with its place among B's records and the values of its every column. otherSource:
  // B's statement they come from; otherCount: how many records it returned.
  bool replayable = false;
  std::string otherSource;
  int64_t otherCount = 0;
  std::vector<int64_t> otherPlaces;
  std::vector<std::vector<vb::Variant>> otherRecords;
};

}  // namespace varsentix::engine
