#pragma once
// The hostile-data matrix: two sides on any two engines (SQLite, PostgreSQL, MariaDB, and an
// Access file, which is only ever read), holding tables whose names and values carry quotes,
// brackets, statement separators, comment marks, dollar quotes, backslashes (trailing ones too),
// newlines, control characters, non-ASCII text, a 100 KB text and, on SQLite, texts in numeric
// columns. A canary table and audit triggers (every INSERT, UPDATE and DELETE of the compared
// table logged into audit_log) show that nothing ran but the system's own statements and that a
// record operation changed only its row.
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "compare/CompareTestSupport.h"

namespace varsentix::testing::hostile {

enum class Kind { SQLite, PostgreSQL, MariaDB, Access };

std::string kindName(Kind kind);

struct EnginePair {
  Kind master;
  Kind source;
};

// Every ordered pair of two different kinds, and each writable engine with itself.
std::vector<EnginePair> allPairs();

struct PairName {
  template <class ParamInfo>
  std::string operator()(const ParamInfo& info) const {
    return kindName(info.param.master) + "_" + kindName(info.param.source);
  }
};

// The compared table's layout: its name, its key column and its other columns.
struct TableLayout {
  std::string name;
  std::string key;
  std::vector<std::string> columns;  // the key first
};

// One side's database: built with the hostile fixture (writable engines) or an Access file.
class HostileSide {
 public:
  // nullptr (and a skip reason) when the engine is not available.
  static std::unique_ptr<HostileSide> make(Kind kind, bool isMaster, bool withAccess, std::string& skipReason);
  virtual ~HostileSide() = default;

  Kind kind() const { return kind_; }
  bool writable() const { return kind_ != Kind::Access; }
  virtual std::string connectionString() const = 0;
  // The compared table (the hostile one, or Shippers when an Access file takes part).
  const TableLayout& table() const { return table_; }
  // The table whose name holds ']' (none when an Access file takes part).
  virtual std::string bracketTable() const { return ""; }
  // The values of the record with key value key, column by column ("<none>" when absent).
  virtual std::vector<std::string> record(const std::string& key) = 0;
  // Every record, keyed by its key's text.
  std::map<std::string, std::vector<std::string>> records();
  virtual std::vector<std::string> keys() = 0;
  // What the audit triggers logged: "I4,U2", in order ("" when nothing).
  virtual std::string audit() { return ""; }
  // "42" while the canary table stands with its one row.
  virtual std::string canary() { return "42"; }

 protected:
  Kind kind_ = Kind::SQLite;
  TableLayout table_;
};

// The values the fixture gives the compared table's records, by key value, for one side.
// Keys: "1" alike, "2" differs (the update's record), "3" a 100 KB text alike, "4" on the
// master only (the copy's record), "5" control characters alike, "6" a number alike, except
// that on SQLite its numeric column holds SQL text, "7" on the master only, a text that a
// literal read with backslash escapes would end early.
std::map<std::string, std::vector<std::string>> fixtureRecords(Kind kind, bool isMaster);
// With an Access file: nwind's Shippers as the file holds them, and the other side's Shippers
// (key "1" alike, "2" differs, "3" only in the file, "4" a 100 KB text only on the engine).
std::map<std::string, std::vector<std::string>> accessShippers();
std::map<std::string, std::vector<std::string>> engineShippers();

// The record numbers (in a side's difference rows) of the records whose field holds value.
std::vector<int32_t> recordsWith(Varsenti& control, bool isMaster, const std::string& field,
                                 const std::string& value);
// The key values of the records a side's difference rows hold for table.
std::vector<std::string> differingKeys(Varsenti& control, bool isMaster, const std::string& table,
                                       const std::string& keyField);

// A test over one pair of engines: its two hostile sides, made fresh for each test (skipped when
// an engine is not available).
class PairTest : public ::testing::TestWithParam<EnginePair> {
 protected:
  void SetUp() override {
    const bool withAccess = GetParam().master == Kind::Access || GetParam().source == Kind::Access;
    std::string skip;
    master_ = HostileSide::make(GetParam().master, true, withAccess, skip);
    if (master_) source_ = HostileSide::make(GetParam().source, false, withAccess, skip);
    if (!master_ || !source_) GTEST_SKIP() << skip;
  }

  std::unique_ptr<HostileSide> master_, source_;
};

}  // namespace varsentix::testing::hostile
