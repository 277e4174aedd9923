#include "engine/RecordMatch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

#include "engine/ModADORecordHelpers.h"
#include "engine/TextTraits.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::engine {
namespace {

thread_local bool literalMatching = false;
thread_local RecordMatcher::Counts totals;

// Longest text the fast decisions take: far below SQLite's limit on like patterns.
constexpr size_t kLongestText = 10000;

bool isIntegerType(int32_t type) {
  switch (type) {
    case ado::adSmallInt:
    case ado::adInteger:
    case ado::adTinyInt:
    case ado::adUnsignedTinyInt:
    case ado::adUnsignedSmallInt:
    case ado::adUnsignedInt:
    case ado::adBigInt:
      return true;
    default:
      return false;
  }
}

// Text types whose = and like compare the text as stored. PostgreSQL's and MariaDB's
// fixed-length texts pad and trim, so only SQLite takes those.
bool isTextType(int32_t type, ado::EngineFamily engine) {
  switch (type) {
    case ado::adVarChar:
    case ado::adLongVarChar:
    case ado::adVarWChar:
    case ado::adLongVarWChar:
      return true;
    case ado::adChar:
    case ado::adWChar:
      return engine == ado::EngineFamily::SQLite;
    default:
      return false;
  }
}

void appendBytes(std::string& key, const void* data, size_t size) {
  key.append(static_cast<const char*>(data), size);
}

void appendNumber(std::string& key, double value) {
  // Integral values within 64 bits are keyed as integers, so that 5 and 5.0 meet: every engine
  // here compares an integer and a double by their values.
  if (value >= -9223372036854775808.0 && value < 9223372036854775808.0 && std::trunc(value) == value) {
    const auto integer = static_cast<int64_t>(value);
    key += 'I';
    appendBytes(key, &integer, sizeof integer);
    return;
  }
  key += 'F';
  appendBytes(key, &value, sizeof value);
}

void appendInteger(std::string& key, int64_t value) {
  key += 'I';
  appendBytes(key, &value, sizeof value);
}

void appendText(std::string& key, std::string_view text) {
  const auto size = static_cast<uint32_t>(text.size());
  key += 'T';
  appendBytes(key, &size, sizeof size);
  key.append(text);
}

std::optional<int64_t> integerOf(const vb::Variant& value) {
  switch (value.type()) {
    case vb::VarType::Integer:
    case vb::VarType::Long:
    case vb::VarType::LongLong:
      return value.toInt64();
    default:
      return std::nullopt;
  }
}

uint64_t mixA(uint64_t x) {
  x ^= x >> 30;
  x *= 0xbf58476d1ce4e5b9ULL;
  x ^= x >> 27;
  x *= 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

uint64_t mixB(uint64_t x) {
  x ^= x >> 33;
  x *= 0xff51afd7ed558ccdULL;
  x ^= x >> 33;
  x *= 0xc4ceb9fe1a85ec53ULL;
  return x ^ (x >> 33);
}

// Two independent 64-bit hashes of the key: a strict key is trusted on equal hashes, so a false
// match needs both to collide (about 1 in 2^128 per pair of records).
std::pair<uint64_t, uint64_t> hashKey(const std::string& key) {
  uint64_t a = 0x243f6a8885a308d3ULL ^ key.size();
  uint64_t b = 0x13198a2e03707344ULL + key.size();
  size_t i = 0;
  for (; i + 8 <= key.size(); i += 8) {
    uint64_t word;
    std::memcpy(&word, key.data() + i, 8);
    a = mixA(a ^ word);
    b = mixB(b + word + 0x9e3779b97f4a7c15ULL);
  }
  uint64_t tail = 0;
  std::memcpy(&tail, key.data() + i, key.size() - i);
  a = mixA(a ^ tail ^ 0xa0761d6478bd642fULL);
  b = mixB(b + tail + 0xe7037ed1a0b428dbULL);
  return {a, b};
}

uint32_t looseHash(const std::string& key) { return static_cast<uint32_t>(hashKey(key).first >> 32); }

// The same value of the same type: Null, an integer, the same double bit for bit, the same text.
bool sameValue(const vb::Variant& a, const vb::Variant& b) {
  if (a.type() != b.type()) return false;
  switch (a.type()) {
    case vb::VarType::Null:
      return true;
    case vb::VarType::Integer:
    case vb::VarType::Long:
    case vb::VarType::LongLong:
      return a.toInt64() == b.toInt64();
    case vb::VarType::Double: {
      const double x = a.toDouble(), y = b.toDouble();
      return std::memcmp(&x, &y, sizeof x) == 0;
    }
    case vb::VarType::String:
      return a.asString() == b.asString();
    default:
      return false;
  }
}

// Sets a flag for a scope, and sets it back when the scope ends, left by a throw or not.
class FlagScope {
 public:
  FlagScope(bool& flag, bool value) : flag_(flag), before_(flag) { flag_ = value; }
  ~FlagScope() { flag_ = before_; }
  FlagScope(const FlagScope&) = delete;
  FlagScope& operator=(const FlagScope&) = delete;

 private:
  bool& flag_;
  bool before_;
};

}  // namespace

// Called for every record of both sides: defined before its callers so that it can be inlined.
inline bool RecordMatcher::mergeKeyOf(const vb::Variant& value, int64_t& integer, std::string& text) const {
  if (!textKeys_) {
    const auto key = integerOf(value);
    if (key) integer = *key;
    return key.has_value();
  }
  if (value.type() != vb::VarType::String) return false;
  text.assign(value.asString());
  return true;
}

bool literalRecordMatching() { return literalMatching; }
const RecordMatcher::Counts& RecordMatcher::threadTotals() { return totals; }
void RecordMatcher::countUnsortedStatement() { ++totals.unsorted; }
void RecordMatcher::countOwnReadAhead() { ++totals.ownReadAhead; }
void RecordMatcher::countWalkedAgain(const Counts& before) {
  Counts kept = before;
  kept.unsorted = totals.unsorted;  // the statements it read unsorted were read all the same
  kept.walkedAgain = totals.walkedAgain + 1;
  totals = kept;
}
void setLiteralRecordMatching(bool literal) { literalMatching = literal; }

std::unique_ptr<RecordMatcher> RecordMatcher::prepare(clsDBManager& A, clsDBManager& B,
                                                     const std::string& orderedBy, OtherWay* otherWay,
                                                     bool keptOnly, bool mayCheckOrder) {
  if (literalMatching) return nullptr;
  try {
    std::unique_ptr<RecordMatcher> matcher(new RecordMatcher());
    matcher->otherConnection_ = B.getDatabaseConnection();
    matcher->literalReader_ = matcher->otherConnection_;
    matcher->mayCheckOrder_ = mayCheckOrder;
    if (matcher->otherConnection_->State() != ado::adStateOpen) return nullptr;
    matcher->engine_ = matcher->otherConnection_->Engine();
    if (matcher->engine_ == ado::EngineFamily::Other) return nullptr;

    auto records = A.getDatabaseRecords();
    const std::string table = A.getTableName();
    if (table.find_first_of("[]") != std::string::npos) return nullptr;
    const int16_t count = ModADO::getRecordSetFieldCount(A);
    for (int16_t i = 0; i < count; ++i) {
      Column column;
      column.index = i;
      column.excluded = ModADO::isFieldExcludedFromMatch(A, B, i);
      ado::Field field = records->field(i);
      column.name = field.Name();
      column.type = field.Type();
      if (!column.excluded) {
        if (column.name.find_first_of("[]") != std::string::npos) return nullptr;
        if (isIntegerType(column.type) || column.type == ado::adDouble) {
          column.kind = column.type == ado::adDouble ? Kind::Double : Kind::Integer;
        } else if (isTextType(column.type, matcher->engine_)) {
          column.kind = Kind::Text;
          column.compare = i == 0 ? Compare::Equal : Compare::Like;
          if (column.compare == Compare::Like) matcher->hasLikeColumns_ = true;
        } else {
          return nullptr;
        }
      }
      matcher->columns_.push_back(std::move(column));
    }
    // Nothing tested, or the first column left out: the match query is not a statement the
    // engines run; leave it to them.
    if (matcher->testedColumnsSelect().empty() || matcher->columns_[0].excluded) return nullptr;
    matcher->table_ = table;
    matcher->tested_ = matcher->testedPositions();
    matcher->lastValues_.resize(matcher->columns_.size());
    matcher->ownRow_ = matcher->lastValues_;
    auto own = A.getDatabaseConnection();
    // The walk the other way of one that kept its decisions, ordered by the same key or not
    // ordered at all: its keys must rise, so that its last record, whose values are written into
    // B, is one under B's greatest key, whose values it reads.
    if (otherWay && otherWay->complete && own &&
        (orderedBy.empty() || vb::LCase(orderedBy) == vb::LCase(matcher->columns_[0].name)) &&
        matcher->fitsOtherWay(*otherWay, *own)) {
      matcher->usingOtherWay_ = otherWay;
      matcher->textKeys_ = otherWay->textKeys;
      return matcher;
    }
    if (keptOnly) return nullptr;
    // An ordered walk (the single-table compare's) raises no events while it runs: nothing but
    // the walk itself uses B's connection, so B's records can be read on a thread of their own.
    // The buffered walks raise events, whose handlers may use it. Only SQLite's own provider
    // reads ahead: the ODBC driver manager serializes the calls of all connections (its default
    // threading level), so two threads there only wait on each other.
    matcher->readAhead_ = !orderedBy.empty() && own && &*own != &*matcher->otherConnection_ &&
                          own->State() == ado::adStateOpen && own->Provider() == "SQLite" &&
                          matcher->otherConnection_->Provider() == "SQLite";
    // How B's engine reads a double's literal is asked of B's connection; while B's records are
    // read ahead, of A's, which is SQLite's own provider too and reads it the same way (one
    // library, one routine): the walk then never waits for the thread to ask.
    if (matcher->readAhead_) matcher->literalReader_ = own;
    if (matcher->prepareMerge(orderedBy, orderedBy.empty() ? vb::Ref<ado::Recordset>() : B.getDatabaseRecords(),
                              records->Source())) {
      // The decisions the other way are made with the same engine's = and like, and literals
      // read back the same way: the sides must be of one kind.
      // The second walk's B is the first one's A: text keys must be in byte order there too.
      if (otherWay && !otherWay->complete && own && own->State() == ado::adStateOpen &&
          own->Engine() == matcher->engine_ &&
          (!matcher->textKeys_ ||
           own->TextComparedByBytes(table, matcher->columns_[0].name) != ado::TextBytes::Unknown)) {
        *otherWay = OtherWay();
        otherWay->ownConnection = &*own;
        otherWay->otherConnection = &*matcher->otherConnection_;
        otherWay->engine = matcher->engine_;
        otherWay->table = table;
        otherWay->textKeys = matcher->textKeys_;
        for (size_t c : matcher->tested_) otherWay->tested.push_back(matcher->columns_[c]);
        matcher->otherWay_ = otherWay;
        matcher->collecting_ = true;
        // B's whole records can be kept for the second walk when the merge reads the walk's own
        // statement on B, with every column tested and in A's order.
        matcher->keepingOther_ = static_cast<bool>(matcher->otherWalk_) &&
                                 matcher->tested_.size() == matcher->columns_.size() &&
                                 matcher->otherWalk_->getFields().Count() ==
                                     static_cast<int32_t>(matcher->columns_.size());
        for (size_t t = 0; t < matcher->mergeColumns_.size() && matcher->keepingOther_; ++t)
          matcher->keepingOther_ = matcher->mergeColumns_[t] == static_cast<int32_t>(t);
      }
      return matcher;
    }
    if (matcher->engine_ == ado::EngineFamily::SQLite) {
      if (own && own->State() == ado::adStateOpen && matcher->prepareJoined(*records, *own, table))
        return matcher;
    }
    if (!matcher->buildHashes()) return nullptr;
    return matcher;
  } catch (...) {
    return nullptr;
  }
}

std::vector<size_t> RecordMatcher::testedPositions() const {
  std::vector<size_t> positions;
  for (size_t c = 0; c < columns_.size(); ++c)
    if (!columns_[c].excluded) positions.push_back(c);
  return positions;
}

// "select [a],[b]" over the tested columns.
std::string RecordMatcher::testedColumnsSelect() const {
  std::string select;
  for (const Column& column : columns_)
    if (!column.excluded) select += (select.empty() ? "select [" : ",[") + column.name + "]";
  return select;
}

bool RecordMatcher::buildHashes() {
  return keyingOtherSide([&] { return readHashes(); });
}

bool RecordMatcher::readHashes() {
  try {
    size_t expectedRows = 0;
    try {
      // Room for every record up front: growing the hash vectors would double them for a while.
      auto count = otherConnection_->Execute("select count(*) from [" + table_ + "]");
      expectedRows = static_cast<size_t>(std::max<int64_t>(0, count->field(0).Value().toInt64()));
    } catch (...) {
      expectedRows = 0;
    }
    auto rows = vb::Ref<ado::Recordset>::make();
    rows->Open(testedColumnsSelect() + " from [" + table_ + "]", otherConnection_, ado::adOpenForwardOnly,
               ado::adLockReadOnly, ado::adCmdText);
    const bool covered = readOtherSide(*rows, expectedRows);
    rows->Close();
    return covered;
  } catch (...) {
    return false;
  }
}

RecordMatcher::~RecordMatcher() {
  otherRows_.reset();
  if (!otherWalk_) return;
  try {
    if (otherWalk_->State() == ado::adStateOpen && !(otherWalk_->isBOF() && otherWalk_->isEOF()))
      otherWalk_->MoveFirst();
  } catch (...) {
    // Only reading: the statement stays where it is.
  }
}

bool RecordMatcher::readsTestedColumns(ado::Recordset& rows) {
  // Each tested column by its name, once.
  mergeColumns_.clear();
  auto& fields = rows.getFields();
  const int32_t count = fields.Count();
  for (size_t c : tested_) {
    int32_t found = -1;
    for (int32_t i = 0; i < count; ++i) {
      if (rows.field(i).Name() != columns_[c].name) continue;
      if (found >= 0) return false;
      found = i;
    }
    if (found < 0) return false;
    mergeColumns_.push_back(found);
  }
  return otherKindsMatch(rows, &mergeColumns_);
}

bool RecordMatcher::prepareMerge(const std::string& orderedBy, const vb::Ref<ado::Recordset>& otherWalk,
                                 const std::string& walkSource) {
  // A walk ordered by the first column reads A's records in key order, and an integer column
  // orders the same way on every engine here: B's records read in that order meet A's record by
  // record. A walk without an order mostly does too (a table read as stored, its keys given in
  // order); at the first record out of order the walk leaves for the hashes.
  //
  // A text column orders the same way on both sides where B's engine orders and compares its
  // texts by their bytes: then B's records come in byte order, those equal to A's key are those
  // with its very bytes, and A's records are checked to come in that order as they are read.
  // Where B's engine compares them by their bytes but its order is not known (a collation of the
  // server's locale), the walk may trust B's records to come in byte order too, checking them as
  // they are read, to the last: if they do not, the walk is made again without (orderHeld).
  // Only a walk ordered by the column is tried: a table read as stored is seldom in text order.
  const Column& key = columns_[0];
  const ado::TextBytes bytes = key.kind == Kind::Text && !orderedBy.empty()
                                   ? otherConnection_->TextComparedByBytes(table_, key.name)
                                   : ado::TextBytes::Unknown;
  textKeys_ = bytes == ado::TextBytes::EqualityAndOrder || (bytes == ado::TextBytes::Equality && mayCheckOrder_);
  orderChecked_ = textKeys_ && bytes == ado::TextBytes::Equality;
  if (key.kind != Kind::Integer && !textKeys_) return false;
  if (!orderedBy.empty() && vb::LCase(orderedBy) != vb::LCase(key.name)) return false;
  // MariaDB's connector streams a result over the connection itself: a match query sent while
  // B's records are being read would fail.
  if (engine_ == ado::EngineFamily::MariaDB) return false;
  try {
    // The walk has opened the same statement on B, which it never reads: ordered by the key, it
    // holds B's tested columns in the order wanted. Read from its first record, it saves running
    // (and, without an index, sorting) a statement of B's table.
    if (otherWalk && otherWalk->State() == ado::adStateOpen && !walkSource.empty() &&
        otherWalk->Source() == walkSource && readsTestedColumns(*otherWalk)) {
      mergeRows_ = otherWalk;
      otherWalk_ = otherWalk;
      ++totals.walkStatementsRead;
      startReading();
      return true;
    }
    mergeColumns_.clear();
    for (size_t t = 0; t < tested_.size(); ++t) mergeColumns_.push_back(static_cast<int32_t>(t));
    mergeRows_ = vb::Ref<ado::Recordset>::make();
    mergeRows_->Open(testedColumnsSelect() + " from [" + table_ + "] order by [" + key.name + "]",
                     otherConnection_, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
    if (!otherKindsMatch(*mergeRows_)) {
      mergeRows_->Close();
      mergeRows_ = {};
      return false;
    }
    startReading();
    return true;
  } catch (...) {
    mergeRows_ = {};
    return false;
  }
}

void RecordMatcher::startReading() {
  otherRows_ = std::make_unique<ReadAhead>(mergeRows_, mergeColumns_, tested_, columns_.size(), readAhead_);
  otherKeyRead_ = false;
  if (otherRows_->threaded()) ++totals.readAhead;
}

bool RecordMatcher::leaveOwnConnection(clsDBManager& A) {
  auto own = A.getDatabaseConnection();
  if (!own || !literalReader_ || &*literalReader_ != &*own) return true;
  try {
    // A second session on the same file reads literals with the same library, the same way.
    auto reader = own->OpenJoinedReader(*otherConnection_);
    if (!reader) return false;
    literalReader_ = reader;
    return true;
  } catch (...) {
    return false;
  }
}

void RecordMatcher::stopReading() noexcept {
  if (otherRows_) otherRows_->stop();
}

std::unique_lock<std::mutex> RecordMatcher::otherConnectionLock() {
  return otherRows_ ? otherRows_->connectionLock() : std::unique_lock<std::mutex>();
}

void RecordMatcher::leaveMerge() {
  // Trusted to come in byte order, the keys may have come otherwise: what was decided stands
  // only if they did.
  if (orderChecked_) orderFailed_ = true;
  stopCollecting();
  group_.clear();
  otherRows_.reset();  // the thread reading ahead is done with B's connection
  try {
    if (mergeRows_ && mergeRows_.shared() != otherWalk_.shared()) mergeRows_->Close();  // the walk closes its own
  } catch (...) {
    // Only reading: nothing to undo.
  }
  mergeRows_ = {};
  // A walk whose order failed is made again: B's table need not be read for the hashes.
  askAlways_ = orderFailed_ || !buildHashes();
}

int RecordMatcher::compareKeys(bool text, int64_t integer, const std::string& keyText, int64_t otherInteger,
                               const std::string& otherText) {
  if (text) {
    // Byte by byte, as unsigned bytes (char_traits<char> compares so), then by length: memcmp's
    // order, which the engine's is.
    const int order = keyText.compare(otherText);
    return (order > 0) - (order < 0);
  }
  return (integer > otherInteger) - (integer < otherInteger);
}

bool RecordMatcher::loadGroup(int64_t key, const std::string& keyText) {
  try {
    return keyingOtherSide([&] { return readGroup(key, keyText); });
  } catch (...) {
    // B's records could not be read on: those read so far are gone, so the merge cannot go on.
    return false;
  }
}

bool RecordMatcher::readOtherKey(const ReadAhead::Row& row) {
  if (!textKeys_) {
    // Null or another kind of value first, or an order the integers do not follow: not a merge.
    const auto otherKey = integerOf(row[tested_[0]]);
    if (!otherKey || (haveOtherKey_ && *otherKey < otherKey_)) return false;
    haveOtherKey_ = true;
    otherKey_ = *otherKey;
    return true;
  }
  int64_t otherKey = 0;
  if (!mergeKeyOf(row[tested_[0]], otherKey, keyText_) ||
      (haveOtherKey_ && compareKeys(otherKey, keyText_, otherKey_, otherText_) < 0))
    return false;
  haveOtherKey_ = true;
  otherKey_ = otherKey;
  otherText_.swap(keyText_);
  return true;
}

bool RecordMatcher::readGroup(int64_t key, const std::string& keyText) {
  groupSize_ = 0;
  groupUncertain_ = false;
  uncovered_.clear();
  while (ReadAhead::Row* row = otherRows_->current()) {
    // The record the group before stopped at has its key read already.
    if (!otherKeyRead_ && !readOtherKey(*row)) return false;
    otherKeyRead_ = true;
    const int order = compareKeys(otherKey_, otherText_, key, keyText);
    if (order > 0) break;
    if (order == 0) {
      if (groupSize_ == group_.size()) group_.emplace_back();
      GroupRecord& slot = group_[groupSize_];
      slot.values.swap(*row);  // the record's values, read ahead, become the slot's
      slot.place = otherRead_;
      keyGroupSlot();
    } else if (collecting_) {
      // A record of B under a key A does not have: the walk the other way decides it.
      if (!otherWay_->addUncertainKey(otherKey_, otherText_)) {
        stopCollecting();
      } else if (keepingOther_) {
        keepOtherRecord(*row);
      }
    }
    otherRows_->next();
    otherKeyRead_ = false;
    ++otherRead_;
  }
  return true;
}

void RecordMatcher::keepOtherRecord(std::vector<vb::Variant>& row) {
  otherWay_->otherPlaces.push_back(otherRead_);
  otherWay_->otherRecords.emplace_back().swap(row);
}

void RecordMatcher::keepOtherGroup() {
  // The group's records, counted in or not covered, in B's order.
  size_t g = 0, u = 0;
  while (g < groupSize_ || u < uncovered_.size()) {
    if (u == uncovered_.size() || (g < groupSize_ && group_[g].place < uncovered_[u].place)) {
      otherWay_->otherPlaces.push_back(group_[g].place);
      otherWay_->otherRecords.emplace_back().swap(group_[g].values);
      ++g;
    } else {
      otherWay_->otherPlaces.push_back(uncovered_[u].place);
      otherWay_->otherRecords.push_back(std::move(uncovered_[u].values));
      ++u;
    }
  }
  uncovered_.clear();
}

bool RecordMatcher::keyGroupSlot() {
  GroupRecord& slot = group_[groupSize_];
  slot.matchedOtherWay = false;
  slot.keyed = false;  // its strict key is made when a comparison needs it
  bool covered = true;
  for (size_t c : tested_)
    if (!(covered = otherValueCovered(columns_[c], slot.values[c]))) break;
  if (covered) {
    ++groupSize_;
  } else {
    groupUncertain_ = true;
    // The slot is used again by the next record: a record kept for the second walk moves out.
    if (keepingOther_) uncovered_.push_back(PlacedRecord{slot.place, std::move(slot.values)});
  }
  return covered;
}

const std::string& RecordMatcher::strictKeyOf(GroupRecord& slot) {
  if (!slot.keyed) {
    keyingOtherSide([&] {
      clearKeys();
      const FlagScope strictOnly(strictOnly_, true);
      for (size_t c : tested_) addOtherValue(columns_[c], slot.values[c]);
      slot.strict.assign(keys_->strict);
      return true;
    });
    slot.keyed = true;
  }
  return slot.strict;
}

const std::string& RecordMatcher::ownStrictKey() {
  if (!ownKeyed_) {
    clearKeys();
    const FlagScope strictOnly(strictOnly_, true);
    for (size_t c : tested_) addOwnValue(columns_[c], ownValue(c));
    ownKeyed_ = true;
  }
  return own_.strict;
}

bool RecordMatcher::sameValues(const GroupRecord& slot) const {
  for (size_t c : tested_)
    if (!sameValue(ownValue(c), slot.values[c])) return false;
  return true;
}

RecordMatcher::Decision RecordMatcher::decideMerged(ado::Recordset& records) {
  const bool covered = readOwnValues(records, false);
  int64_t key = 0;
  const bool keyed = mergeKeyOf(ownValue(0), key, ownText_);
  const int order = keyed && haveKey_ ? compareKeys(key, ownText_, walkKey_, walkText_) : 1;
  const bool inOrder = keyed && order >= 0;
  const bool newKey = inOrder && order != 0;
  if (newKey && haveKey_ && collecting_) closeOtherWayGroup();
  if (!inOrder || (newKey && !loadGroup(key, ownText_))) {
    leaveMerge();
    if (askAlways_ || !covered) return Decision::AskEngine;
    return decideFromKeptValues();
  }
  haveKey_ = true;
  walkKey_ = key;
  if (newKey && textKeys_) walkText_.swap(ownText_);
  const Decision decision = decideAgainstGroup(covered);
  if (collecting_) {
    if (decision == Decision::Match) markOtherWayMatches();
    keepOwnRecordForOtherWay();
  }
  return decision;
}

RecordMatcher::Decision RecordMatcher::decideAgainstGroup(bool covered) {
  if (!covered) return Decision::AskEngine;
  // Mostly B's record holds A's very values: their strict keys are then the same, unless a double
  // of A reads back from its literal as another double.
  sameSlot_ = groupSize_;
  if (ownExact_)
    for (size_t g = 0; g < groupSize_; ++g)
      if (sameValues(group_[g])) {
        sameSlot_ = g;
        return Decision::Match;
      }
  for (size_t g = 0; g < groupSize_; ++g)
    if (strictKeyOf(group_[g]) == ownStrictKey()) return Decision::Match;
  if (groupUncertain_) return Decision::AskEngine;
  if (!makeOwnKeys()) return Decision::AskEngine;
  // The loose keys of B's records, compared with A's the way the hashes compare them.
  for (size_t g = 0; g < groupSize_; ++g) {
    const bool same = keyingOtherSide([&] {
      clearKeys();
      for (size_t c : tested_) addOtherValue(columns_[c], group_[g].values[c]);
      return own_.wildcard ? other_.looseWithoutLike == own_.looseWithoutLike : other_.loose == own_.loose;
    });
    if (same) return Decision::AskEngine;
  }
  return Decision::NoMatch;
}

bool RecordMatcher::groupCertainOtherWay() const {
  if (groupUncertain_) return false;
  for (size_t g = 0; g < groupSize_; ++g)
    if (!group_[g].matchedOtherWay) return false;
  return true;
}

void RecordMatcher::keepOwnRecordForOtherWay() {
  // Once every record of B under the key is matched the other way, A's records under it are not
  // needed: most keys keep none.
  if (groupCertainOtherWay()) {
    ownGroupSize_ = 0;
    return;
  }
  if (ownGroupSize_ == ownGroup_.size()) ownGroup_.emplace_back();
  std::vector<vb::Variant>& kept = ownGroup_[ownGroupSize_++];
  kept.resize(tested_.size());
  for (size_t t = 0; t < tested_.size(); ++t) kept[t] = ownValue(tested_[t]);
}

void RecordMatcher::markOtherWayMatches() {
  // A record of B with the very values of A's record is matched by A's record the other way:
  // its literals read back as A's did (the same engine reads them), and A's record holds what
  // B's record holds.
  for (size_t g = 0; g < groupSize_; ++g) {
    GroupRecord& other = group_[g];
    if (other.matchedOtherWay) continue;
    if (g == sameSlot_) {
      other.matchedOtherWay = true;  // found to hold A's values by decideAgainstGroup, A's doubles exact
      continue;
    }
    if (!sameValues(other)) continue;
    other.matchedOtherWay = ownExact_ || strictKeyOf(other) == ownStrictKey();
  }
}

void RecordMatcher::closeOtherWayGroup() {
  // B's records with the key A's walk leaves: A's records with it are all seen.
  if (!groupCertainOtherWay()) {
    const auto end = ownGroup_.begin() + static_cast<std::ptrdiff_t>(ownGroupSize_);
    if (!otherWay_->addUncertainKey(walkKey_, walkText_, OtherWay::Records(ownGroup_.begin(), end))) {
      stopCollecting();
      return;
    }
    if (keepingOther_) keepOtherGroup();
  } else if (keepingOther_ && groupSize_ > 0) {
    // Perhaps B's last record: the second walk writes its values into A when it ends.
    GroupRecord& last = group_[groupSize_ - 1];
    lastCertain_.place = last.place;
    lastCertain_.values.swap(last.values);
    haveLastCertain_ = true;
  }
  ownGroupSize_ = 0;
}

void RecordMatcher::stopCollecting() {
  if (otherWay_) *otherWay_ = OtherWay();
  otherWay_ = nullptr;
  collecting_ = false;
  keepingOther_ = false;
}

bool RecordMatcher::readRestOfOtherSide() {
  // Past A's last key: records of B under keys A does not have.
  while (ReadAhead::Row* row = otherRows_->current()) {
    if (!readOtherKey(*row)) return false;
    if (!haveKey_ || compareKeys(otherKey_, otherText_, walkKey_, walkText_) != 0) {
      if (!otherWay_->addUncertainKey(otherKey_, otherText_)) return false;
      if (keepingOther_) keepOtherRecord(*row);
    } else {
      keepingOther_ = false;  // a record of the last group not read with it: let the walk read them
    }
    otherRows_->next();
    otherKeyRead_ = false;
    ++otherRead_;
  }
  return true;
}

void RecordMatcher::completeOtherWay() noexcept {
  if (!collecting_ || !mergeRows_) return;
  try {
    if (haveKey_) closeOtherWayGroup();
    if (!collecting_) return;
    if (!readRestOfOtherSide()) {
      if (orderChecked_) orderFailed_ = true;
      stopCollecting();
      return;
    }
    otherWay_->haveLastKey = haveOtherKey_;
    otherWay_->lastKey = otherKey_;
    otherWay_->lastText = otherText_;
    finishKeeping();
    otherWay_->complete = true;
    otherWay_ = nullptr;
    collecting_ = false;
  } catch (...) {
    stopCollecting();
  }
}

bool RecordMatcher::restInOrder() noexcept {
  if (!otherRows_) return true;
  try {
    // keyingOtherSide is not needed: only the keys are read.
    while (ReadAhead::Row* row = otherRows_->current()) {
      if (!readOtherKey(*row)) {
        orderFailed_ = true;
        break;
      }
      otherRows_->next();
      otherKeyRead_ = false;
      ++otherRead_;
    }
  } catch (...) {
    orderFailed_ = true;
  }
  return !orderFailed_;
}

void RecordMatcher::finishKeeping() {
  OtherWay& way = *otherWay_;
  // B's last record is kept, whether its key is certain or not.
  const int64_t last = otherRead_ - 1;
  if (keepingOther_ && otherRead_ > 0 && (way.otherPlaces.empty() || way.otherPlaces.back() != last)) {
    if (haveLastCertain_ && lastCertain_.place == last) {
      way.otherPlaces.push_back(last);
      way.otherRecords.push_back(std::move(lastCertain_.values));
    } else {
      keepingOther_ = false;
    }
  }
  if (keepingOther_ && otherRead_ > 0) {
    way.replayable = true;
    way.otherSource = mergeRows_->Source();
    way.otherCount = otherRead_;
  } else {
    way.otherPlaces.clear();
    way.otherRecords.clear();
  }
  keepingOther_ = false;
}

bool RecordMatcher::mayGoThroughKept(const OtherWay* otherWay, clsDBManager& A, clsDBManager& B,
                                     const std::string& query) {
  if (literalMatching || !otherWay || !otherWay->complete || !otherWay->replayable || otherWay->otherSource != query)
    return false;
  try {
    // The first walk's B is this walk's A, and the other way round.
    auto own = A.getDatabaseConnection();
    auto other = B.getDatabaseConnection();
    return own && other && &*own == otherWay->otherConnection && &*other == otherWay->ownConnection;
  } catch (...) {
    return false;
  }
}

std::vector<int64_t> RecordMatcher::replayOtherWay(ado::Recordset& records, int64_t& count) {
  if (!usingOtherWay_) return {};
  OtherWay& way = *usingOtherWay_;
  try {
    // records may not have read its first row yet: nothing here reads it.
    if (!way.replayable || way.otherPlaces.empty() || records.Source() != way.otherSource ||
        records.getFields().Count() != static_cast<int32_t>(columns_.size()))
      return {};
    for (const auto& record : way.otherRecords)
      if (record.size() != columns_.size()) return {};
    count = way.otherCount;
    std::vector<int64_t> places = std::move(way.otherPlaces);
    records.ReplaceRemainingRows(std::move(way.otherRecords));
    way.replayable = false;
    way.otherPlaces.clear();
    way.otherRecords.clear();
    ++totals.keptOnly;
    return places;
  } catch (...) {
    way.replayable = false;
    return {};
  }
}

void RecordMatcher::countMatchedUnread(int64_t records) {
  totals.matched += records;
  totals.otherWay += records;
}

bool RecordMatcher::OtherWay::addUncertainKey(int64_t key, const std::string& text, Records records) {
  if (!uncertainKeys.empty()) {
    const int order = compareKeys(textKeys, key, text, uncertainKeys.back().key, uncertainKeys.back().text);
    if (order <= 0) return order == 0 && records.empty();  // another record of B under it
  }
  uncertainKeys.push_back(UncertainKey{key, text, std::move(records)});
  return true;
}

bool RecordMatcher::fitsOtherWay(const OtherWay& otherWay, const ado::Connection& own) const {
  // This walk goes from the first one's B to its A, over the same table and tested columns.
  if (otherWay.ownConnection != &*otherConnection_ || otherWay.otherConnection != &own) return false;
  if (otherWay.engine != engine_ || otherWay.table != table_) return false;
  if (tested_.size() != otherWay.tested.size() || tested_.empty() || tested_[0] != 0) return false;
  for (size_t t = 0; t < tested_.size(); ++t) {
    const Column& mine = columns_[tested_[t]];
    const Column& theirs = otherWay.tested[t];
    if (mine.name != theirs.name || mine.kind != theirs.kind || mine.compare != theirs.compare) return false;
  }
  // Text keys in the same byte order as the first walk's.
  return columns_[0].kind == (otherWay.textKeys ? Kind::Text : Kind::Integer);
}

RecordMatcher::Decision RecordMatcher::decideOtherWay(ado::Recordset& records) {
  const OtherWay& way = *usingOtherWay_;
  records.ValueInto(columns_[0].index, keyValue_);
  int64_t key = 0;
  if (!mergeKeyOf(keyValue_, key, ownText_) || (haveKey_ && compareKeys(key, ownText_, walkKey_, walkText_) < 0) ||
      !way.haveLastKey || compareKeys(key, ownText_, way.lastKey, way.lastText) > 0) {
    // Not the records the first walk read (the table changed in between): the hashes decide
    // from here on.
    usingOtherWay_ = nullptr;
    askAlways_ = !buildHashes();
    if (!readOwnValues(records) || askAlways_) return Decision::AskEngine;
    return decideFromKeptValues();
  }
  haveKey_ = true;
  walkKey_ = key;
  if (textKeys_) walkText_.swap(ownText_);
  const auto& uncertain = way.uncertainKeys;
  auto order = [&](size_t at) {
    return compareKeys(uncertain[at].key, uncertain[at].text, walkKey_, walkText_);
  };
  while (nextUncertain_ < uncertain.size() && order(nextUncertain_) < 0) ++nextUncertain_;
  if (nextUncertain_ == uncertain.size() || order(nextUncertain_) != 0) {
    // The walk's last records: their values are written into B when the walk ends.
    if (compareKeys(walkKey_, walkText_, way.lastKey, way.lastText) == 0) readOwnValues(records);
    return Decision::Match;
  }
  const bool covered = readOwnValues(records, false);
  if (!haveGroupKey_ || compareKeys(groupKey_, groupText_, walkKey_, walkText_) != 0) {
    haveGroupKey_ = false;
    groupSize_ = 0;
    groupUncertain_ = false;
    keyingOtherSide([&] {
      for (const auto& kept : uncertain[nextUncertain_].records) {
        if (groupSize_ == group_.size()) group_.emplace_back();
        std::vector<vb::Variant>& values = group_[groupSize_].values;
        values.resize(columns_.size());
        for (size_t t = 0; t < tested_.size(); ++t) values[tested_[t]] = kept[t];
        keyGroupSlot();
      }
      return true;
    });
    haveGroupKey_ = true;
    groupKey_ = walkKey_;
    groupText_ = walkText_;
  }
  return decideAgainstGroup(covered);
}

bool RecordMatcher::prepareJoined(ado::Recordset& records, ado::Connection& own, const std::string& table) {
  try {
    // The statement reaches A's columns by name: they must be distinct and plain.
    std::vector<std::string> names;
    for (const Column& column : columns_) {
      if (column.name.empty() || column.name.find_first_of("[]") != std::string::npos) return false;
      names.push_back(vb::LCase(column.name));
    }
    std::sort(names.begin(), names.end());
    if (std::adjacent_find(names.begin(), names.end()) != names.end()) return false;
    const std::string walk = records.Source();
    if (walk.empty()) return false;
    joined_ = own.OpenJoinedReader(*otherConnection_);
    if (!joined_) return false;
    std::string certain, where;
    for (const Column& column : columns_) {
      if (column.excluded) continue;
      const std::string a = "varsentix_a.[" + column.name + "]";
      const std::string b = "varsentix_b.[" + column.name + "]";
      const char* kind = column.kind == Kind::Integer ? "'I'" : column.kind == Kind::Double ? "'D'" : "'T'";
      certain += (certain.empty() ? "" : " and ") + ("varsentix_exact_literal(" + a + ", " + kind + ")");
      // What the match query's pieces test: "is null" for Null, else = or like the literal.
      where += (where.empty() ? "" : " and ") +
               (column.compare == Compare::Like
                    ? "(case when " + a + " is null then " + b + " is null else " + b + " like " + a + " end)"
                    : b + " is +" + a);  // + leaves the value without affinity, as a literal is
    }
    const std::string sql = "select case when " + certain + " then exists (select 1 from varsentix_other.[" +
                            table + "] as varsentix_b where " + where +
                            ") end as varsentix_match, varsentix_a.* from (" + walk + ") as varsentix_a";
    // One search of B's table per record, never a scan of it: when its first column is not
    // indexed, B's table is read once into the hashes instead.
    auto plan = joined_->Execute("explain query plan " + sql);
    for (; !plan->isEOF(); plan->MoveNext()) {
      const std::string detail = plan->field(3).Value().toText();
      if (detail.rfind("SCAN varsentix_b", 0) == 0 || detail.find("AUTOMATIC") != std::string::npos) {
        joined_ = {};
        return false;
      }
    }
    joinedRows_ = vb::Ref<ado::Recordset>::make();
    joinedRows_->Open(sql, joined_, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
    return true;
  } catch (...) {
    joinedRows_ = {};
    joined_ = {};
    return false;
  }
}

RecordMatcher::Decision RecordMatcher::decideJoined() {
  // One row per record of the walk, in the walk's order: the statement runs the walk's own.
  if (joinedStarted_ && !joinedRows_->isEOF()) joinedRows_->MoveNext();
  joinedStarted_ = true;
  if (joinedRows_->isEOF()) return Decision::AskEngine;
  const vb::Variant found = joinedRows_->field(0).Value();
  if (found.isNull()) return Decision::AskEngine;
  return found.toInt64() != 0 ? Decision::Match : Decision::NoMatch;
}

bool RecordMatcher::otherKindsMatch(ado::Recordset& rows, const std::vector<int32_t>* positions) const {
  // The other side's columns must be of the same kind as this side's.
  int32_t position = 0;
  for (const Column& column : columns_) {
    if (column.excluded) continue;
    const int32_t at = positions ? (*positions)[static_cast<size_t>(position)] : position;
    ++position;
    const int32_t type = rows.field(at).Type();
    const bool sameKind = column.kind == Kind::Text      ? isTextType(type, engine_)
                          : column.kind == Kind::Double ? type == ado::adDouble
                                                        : isIntegerType(type);
    if (!sameKind) return false;
  }
  return true;
}

bool RecordMatcher::readOtherSide(ado::Recordset& rows, size_t expectedRows) {
  if (!otherKindsMatch(rows)) return false;
  strict_.reserve(expectedRows);
  loose_.reserve(expectedRows);
  if (hasLikeColumns_) looseWithoutLike_.reserve(expectedRows);
  int32_t position = 0;
  while (!rows.isEOF()) {
    clearKeys();
    position = 0;
    for (const Column& column : columns_) {
      if (column.excluded) continue;
      if (!addOtherValue(column, rows.field(position++).Value())) return false;
    }
    strict_.add(hashKey(keys_->strict));
    loose_.add(looseHash(keys_->loose));
    if (hasLikeColumns_) looseWithoutLike_.add(looseHash(keys_->looseWithoutLike));
    rows.MoveNext();
  }
  strict_.seal();
  loose_.seal();
  looseWithoutLike_.seal();
  if (strict_.inFile()) ++totals.hashesInFiles;
  return true;
}

void RecordMatcher::clearKeys() {
  keys_->strict.clear();
  keys_->loose.clear();
  keys_->looseWithoutLike.clear();
  keys_->wildcard = false;
}

bool RecordMatcher::otherValueCovered(const Column& column, const vb::Variant& value) const {
  switch (value.type()) {
    case vb::VarType::Null:
      return true;
    case vb::VarType::Integer:
    case vb::VarType::Long:
    case vb::VarType::LongLong:
      return column.kind != Kind::Text;
    case vb::VarType::Double:
      // SQLite keeps what a column holds: an integer column may hold a double, and the two are
      // compared by value.
      return column.kind != Kind::Text && (column.kind == Kind::Double || engine_ == ado::EngineFamily::SQLite) &&
             !std::isnan(value.toDouble());
    case vb::VarType::String:
      return column.kind == Kind::Text;
    default:
      return false;
  }
}

bool RecordMatcher::addOtherValue(const Column& column, const vb::Variant& value) {
  if (!otherValueCovered(column, value)) return false;
  if (keyless_) return true;
  if (value.isNull()) {
    addToEveryKey("N");
    return true;
  }
  if (column.kind != Kind::Text) {
    if (const auto integer = integerOf(value)) addIntegerToEveryKey(*integer);
    else addDoubleToEveryKey(value.toDouble());
    return true;
  }
  const std::string& text = value.asString();
  appendText(keys_->strict, text);
  addLooseText(column, text);
  return true;
}

bool RecordMatcher::addOwnValue(const Column& column, const vb::Variant& value) {
  // (keyless_: only whether the value is covered, and whether a double is exact; no key made.)
  if (value.isNull()) {
    if (!keyless_) addToEveryKey("N");
    return true;
  }
  if (column.kind != Kind::Text) {
    if (auto integer = integerOf(value)) {
      if (!keyless_) addIntegerToEveryKey(*integer);
      return true;
    }
    if (value.type() != vb::VarType::Double) return false;
    // The literal is the shortest text of the double; the engine reads it back its own way.
    const double stored = value.toDouble();
    // The engine may be asked how it reads the literal (literalReader_: see prepare).
    const auto read = literalReader_->DoubleLiteralValue(stored);
    if (!read) return false;
    if (std::memcmp(&stored, &*read, sizeof stored) != 0) ownExact_ = false;
    if (!keyless_) addDoubleToEveryKey(*read);
    return true;
  }
  if (value.type() != vb::VarType::String) return false;
  const std::string& text = value.asString();
  if (text.size() > kLongestText) return false;
  // Only whether it is covered: on SQLite, backslashes and wildcards do not change that.
  if (keyless_ && engine_ == ado::EngineFamily::SQLite) return isUtf8WithoutNul(text);
  const TextTraits traits = traitsOf(text);
  if (!traits.valid) return false;
  // Backslash escapes in MariaDB's literals, and in like patterns on both servers.
  if (engine_ != ado::EngineFamily::SQLite && traits.backslash) return false;
  if (keyless_) return true;
  appendText(keys_->strict, text);
  keys_->wildcard = keys_->wildcard || (column.compare == Compare::Like && traits.wildcard);
  addLooseText(column, text);
  return true;
}

void RecordMatcher::addIntegerToEveryKey(int64_t integer) {
  std::string part;
  appendInteger(part, integer);
  addToEveryKey(part);
}

void RecordMatcher::addDoubleToEveryKey(double number) {
  std::string part;
  appendNumber(part, number);
  addToEveryKey(part);
}

void RecordMatcher::addToEveryKey(std::string_view part) {
  if (keyless_) return;
  keys_->strict += part;
  if (strictOnly_) return;
  keys_->loose += part;
  keys_->looseWithoutLike += part;
}

void RecordMatcher::addLooseText(const Column& column, const std::string& text) {
  if (strictOnly_) return;
  keys_->looseWithoutLike += (column.compare == Compare::Like ? "T" : "");
  switch (engine_) {
    case ado::EngineFamily::SQLite:
      // = may compare under NOCASE or RTRIM, like ignores the case of ASCII letters.
      if (column.compare == Compare::Equal) {
        const std::string folded = vb::LCase(vb::RTrim(text));
        appendText(keys_->loose, folded);
        appendText(keys_->looseWithoutLike, folded);
      } else {
        appendText(keys_->loose, vb::LCase(text));
      }
      break;
    case ado::EngineFamily::PostgreSQL:
      appendText(keys_->loose, text);
      if (column.compare == Compare::Equal) appendText(keys_->looseWithoutLike, text);
      break;
    default:
      // MariaDB compares texts by its collation (case, accents, trailing blanks): only that the
      // value is there is kept.
      keys_->loose += 'T';
      if (column.compare == Compare::Equal) keys_->looseWithoutLike += 'T';
      break;
  }
}

RecordMatcher::Decision RecordMatcher::decide(ado::Recordset& records) {
  const bool merging = static_cast<bool>(mergeRows_);
  const bool otherWay = usingOtherWay_ != nullptr;
  Decision decision = Decision::AskEngine;
  try {
    decision = joinedRows_ ? decideJoined()
               : otherWay  ? decideOtherWay(records)
               : merging   ? decideMerged(records)
                           : decideFromHashes(records);
  } catch (...) {
    // A record the first walk of a pair could not read is missing from what it keeps.
    stopCollecting();
    throw;
  }
  ++(decision == Decision::Match ? totals.matched
     : decision == Decision::NoMatch ? totals.notMatched
                                     : totals.askedEngine);
  if (decision != Decision::AskEngine) {
    if (joinedRows_) ++totals.joined;
    if (merging && mergeRows_) ++totals.merged;
    if (otherWay && usingOtherWay_) ++totals.otherWay;
  }
  return decision;
}

bool RecordMatcher::makeOwnKeys() {
  clearKeys();
  ownKeyed_ = false;
  for (size_t c = 0; c < columns_.size(); ++c)
    if (!columns_[c].excluded && !addOwnValue(columns_[c], ownValue(c))) return false;
  ownKeyed_ = true;
  return true;
}

bool RecordMatcher::readOwnValues(ado::Recordset& records, bool strictKey) {
  // Most records have their match: the strict key alone decides them, or, beside B's records
  // with the same key, the values themselves. The loose keys are made only for a record that
  // finds no match.
  clearKeys();
  ownExact_ = true;
  ownKeyed_ = false;
  bool covered = true;
  {
    const FlagScope strictOnly(strictOnly_, true);
    const FlagScope keyless(keyless_, !strictKey);
    // A row read ahead is held whole by the record set: its values are read where they are.
    ownRow_ = records.HeldRow();
    const bool held = !ownRow_.empty();
    if (!held) ownRow_ = lastValues_;
    for (size_t c = 0; c < columns_.size(); ++c) {
      const Column& column = columns_[c];
      if (column.excluded) continue;
      if (!held) records.ValueInto(column.index, lastValues_[c]);
      if (covered) covered = addOwnValue(column, ownValue(c));
    }
  }
  ownKeyed_ = strictKey && covered;
  return covered;
}

RecordMatcher::Decision RecordMatcher::decideFromHashes(ado::Recordset& records) {
  if (askAlways_) return Decision::AskEngine;
  if (!readOwnValues(records)) return Decision::AskEngine;
  return decideFromKeptValues();
}

RecordMatcher::Decision RecordMatcher::decideFromKeptValues() {
  // A page of the hashes' file that cannot be read decides nothing.
  const std::optional<bool> strict = strict_.contains(hashKey(ownStrictKey()));
  if (!strict) return Decision::AskEngine;
  if (*strict) return Decision::Match;
  if (!makeOwnKeys()) return Decision::AskEngine;
  const std::optional<bool> found = keys_->wildcard
                                        ? looseWithoutLike_.contains(looseHash(keys_->looseWithoutLike))
                                        : loose_.contains(looseHash(keys_->loose));
  return found == false ? Decision::NoMatch : Decision::AskEngine;
}

void RecordMatcher::writeLastMatchQuery(clsDBManager& A, clsDBManager& B) const {
  std::string sql = "Select ";
  std::string where = " Where ";
  const bool isAccess = A.getIsAccess();
  for (size_t c = 0; c < columns_.size(); ++c) {
    const Column& column = columns_[c];
    if (column.excluded) continue;
    // The joined statement's row is the record's: its values follow the decision.
    const vb::Variant value =
        joinedRows_ ? joinedRows_->field(static_cast<int16_t>(1 + column.index)).Value() : ownValue(c);
    sql += ModADO::matchSelectPiece(column.index, column.name);
    where += value.isNull() ? ModADO::matchNullPiece(column.index, column.name)
                            : ModADO::matchValuePiece(column.index, column.name,
                                                      ModADO::matchOperatorFor(column.type),
                                                      ModADO::formatMatchLiteral(column.type, value, isAccess));
  }
  B.setSQL(sql + " from [" + A.getTableName() + "]");
  B.setWhereClause(where);
}

}  // namespace varsentix::engine
