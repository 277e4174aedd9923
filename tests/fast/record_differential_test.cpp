// The record comparison with its fast decisions against the literal one (one match query per
// record): random pairs of tables on every engine, with the values that make matching hard (NULL,
// empty text, apostrophes, % and _, backslashes, trailing blanks, letter case, non-ASCII text,
// doubles with long fractions and one unit apart, dates, binary values, duplicate rows, tables
// with and without a primary key, columns one side lacks or types that differ), are compared by
// both. The value rows, both sides' SQL messages, statements and where clauses, the progress
// values and the UpdateCount events must come out identical. On SQLite, numeric columns holding
// texts (which SQLite keeps as they are) are compared by both as well.
#include <gtest/gtest.h>

#include <algorithm>

#include <cmath>
#include <cstdio>
#include <random>
#include <tuple>
#include <string>
#include <utility>
#include <vector>

#include "engine/DataProgress.h"
#include "engine/Engine.h"
#include "engine/EngineTestSupport.h"
#include "engine/RecordMatch.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

enum class Kind { Integer, Text, Real, Date, Binary, Char };

struct ColumnSpec {
  std::string name;
  Kind kind;
};

struct TableSpec {
  std::string name;
  std::vector<ColumnSpec> columns;
  bool primaryKey = false;  // on the first column, an integer
  // An integer column (not the key) whose values rise from record to record as the master's
  // records are stored, as in a table filled in that column's order; -1 for none.
  int risingColumn = -1;
};

// A value as SQL text in the engine's own dialect; "NULL" for null.
using Row = std::vector<std::string>;

std::string quotedName(Engine engine, const std::string& name) {
  return engine == Engine::MariaDB ? "`" + name + "`" : "\"" + name + "\"";
}

std::string typeName(Engine engine, Kind kind, std::mt19937& random) {
  const bool other = random() % 2 == 0;
  switch (kind) {
    case Kind::Integer:
      return engine == Engine::SQLite && other ? "INTEGER" : "BIGINT";
    case Kind::Text:
      return other ? "VARCHAR(30)" : (engine == Engine::MariaDB ? "VARCHAR(40)" : "TEXT");
    case Kind::Real:
      return engine == Engine::SQLite ? "REAL" : engine == Engine::PostgreSQL ? "DOUBLE PRECISION" : "DOUBLE";
    case Kind::Date:
      return "DATE";
    case Kind::Binary:
      return engine == Engine::PostgreSQL ? "BYTEA" : "BLOB";
    case Kind::Char:
      return "CHAR(4)";
  }
  return "TEXT";
}

std::string textLiteral(Engine engine, const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    if (c == '\\' && engine == Engine::MariaDB) out += '\\';
    out += c;
  }
  return out + "'";
}

std::string realLiteral(double value) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.17g", value);
  return buffer;
}

const std::vector<std::string>& textPool() {
  static const std::vector<std::string> pool{
      "", "a", "A", "abc", "ABC", "Abc", "a%", "a%c", "a_c", "abc ", "abc  ", " abc", "it's", "O'Brien",
      "a\\b", "a\\%", "\\", "%", "_", "50% off", "x_y", "é", "É", "Straße", "STRASSE", "中文", "null",
      "Null", "5", "5.0", "ab", "aB", "a b", "tab\tx"};
  return pool;
}

std::string randomValue(Engine engine, Kind kind, std::mt19937& random) {
  auto chance = [&](int percent) { return static_cast<int>(random() % 100) < percent; };
  if (chance(12)) return "NULL";
  switch (kind) {
    case Kind::Integer: {
      static const std::vector<int64_t> pool{0, 1, -1, 2, 5, 42, 2147483647, 9007199254740993LL, -7};
      return std::to_string(pool[random() % pool.size()]);
    }
    case Kind::Text:
    case Kind::Char: {
      std::string text = textPool()[random() % textPool().size()];
      if (kind == Kind::Char && text.size() > 4) text = "ab'd";
      return textLiteral(engine, text);
    }
    case Kind::Real: {
      static const std::vector<double> pool{0.0, -0.0, 0.1, 0.3, 0.1 + 0.2, 1.0 / 3, 1e20, 1e-7, 5.0,
                                            123.45, 1152921504606846976.0, -2.5,
                                            // SQLite 3.40 reads the shortest texts of these one unit
                                            // in the last place off: a match query on them finds nothing.
                                            0.888625687032014, 0.755416097245939, 0.908167449585705,
                                            0.896937900831071, 0.657576998484038, 0.589562627568955};
      double value = pool[random() % pool.size()];
      if (chance(40)) value = std::uniform_real_distribution<double>(-1000, 1000)(random);
      if (chance(10)) value = std::ldexp(static_cast<double>(random()), -static_cast<int>(random() % 60));
      return realLiteral(value);
    }
    case Kind::Date: {
      static const std::vector<std::string> pool{"'2020-01-02'", "'1999-12-31'", "'2024-02-29'"};
      return pool[random() % pool.size()];
    }
    case Kind::Binary: {
      static const std::vector<std::string> pool{"00", "ff01", "41", "6162"};
      const std::string hex = pool[random() % pool.size()];
      return engine == Engine::PostgreSQL ? "'\\x" + hex + "'::bytea" : "X'" + hex + "'";
    }
  }
  return "NULL";
}

// A value near the given one, as a changed record would hold it.
std::string variantOf(Engine engine, Kind kind, const std::string& value, std::mt19937& random) {
  if (value != "NULL" && random() % 2 == 0) {
    if (kind == Kind::Real) {
      const double number = std::strtod(value.c_str(), nullptr);
      return realLiteral(std::nextafter(number, random() % 2 ? 1e300 : -1e300));
    }
    if (kind == Kind::Text && value.size() >= 2) {
      std::string text = value.substr(1, value.size() - 2);
      switch (random() % 3) {
        case 0:
          for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
          break;
        case 1: text += " "; break;
        default: text = "x" + text; break;
      }
      // Undo the escapes textLiteral added before adding them again.
      std::string plain;
      for (size_t i = 0; i < text.size(); ++i) {
        plain += text[i];
        if ((text[i] == '\'' || (text[i] == '\\' && engine == Engine::MariaDB)) && i + 1 < text.size() &&
            text[i + 1] == text[i])
          ++i;
      }
      return textLiteral(engine, plain);
    }
  }
  return randomValue(engine, kind, random);
}

TableSpec randomTable(std::mt19937& random) {
  static const std::vector<std::string> tables{"t", "Order Details", "T2"};
  static const std::vector<std::string> names{"a", "b", "c", "d", "e"};
  TableSpec table;
  table.name = tables[random() % tables.size()];
  const int columnCount = 1 + static_cast<int>(random() % 4);
  table.primaryKey = random() % 3 == 0;
  for (int c = 0; c < columnCount; ++c) {
    Kind kind = static_cast<Kind>(random() % 6);
    if (random() % 3 != 0) kind = random() % 2 ? Kind::Text : (random() % 2 ? Kind::Integer : Kind::Real);
    if (c == 0 && table.primaryKey) kind = Kind::Integer;
    table.columns.push_back({names[c], kind});
  }
  for (int c = 0; c < columnCount; ++c)
    if (table.columns[c].kind == Kind::Integer && !(c == 0 && table.primaryKey) && random() % 3 == 0) {
      table.risingColumn = c;
      break;
    }
  return table;
}

void createTable(TestDatabase& db, const TableSpec& table, std::mt19937& random) {
  std::string sql = "CREATE TABLE " + quotedName(db.engine(), table.name) + " (";
  for (size_t c = 0; c < table.columns.size(); ++c) {
    sql += (c ? ", " : "") + quotedName(db.engine(), table.columns[c].name) + " " +
           typeName(db.engine(), table.columns[c].kind, random);
    if (c == 0 && table.primaryKey) sql += " PRIMARY KEY";
  }
  db.exec(sql + ")");
}

void insertRows(TestDatabase& db, const TableSpec& table, const std::vector<Row>& rows) {
  for (const auto& row : rows) {
    std::string sql = "INSERT INTO " + quotedName(db.engine(), table.name) + " VALUES (";
    for (size_t c = 0; c < row.size(); ++c) sql += (c ? ", " : "") + row[c];
    db.exec(sql + ")");
  }
}

// The other side's table: mostly the same, sometimes a column renamed or of another kind.
TableSpec otherTable(const TableSpec& table, std::mt19937& random) {
  TableSpec other = table;
  // The first column missing on the other side: every match query then fails to run.
  if (random() % 25 == 0) {
    other.columns[0].name += "x";
    return other;
  }
  // A key on one side only: the side without one is walked in an order it must sort for.
  if (table.primaryKey && random() % 4 == 0) other.primaryKey = false;
  if (random() % 6 == 0 && other.columns.size() > 1) {
    auto& column = other.columns[1 + random() % (other.columns.size() - 1)];
    if (random() % 2) column.name += "x";
    else column.kind = column.kind == Kind::Text ? Kind::Integer : Kind::Text;
  }
  return other;
}

struct Pair {
  std::vector<Row> master, source;
};

Pair randomRows(Engine engine, const TableSpec& table, const TableSpec& other, std::mt19937& random) {
  Pair pair;
  const int count = static_cast<int>(random() % 14);
  int64_t nextKey = 1;
  int64_t rising = -3;
  for (int r = 0; r < count; ++r) {
    Row row;
    for (size_t c = 0; c < table.columns.size(); ++c) {
      if (c == 0 && table.primaryKey) row.push_back(std::to_string(nextKey++));
      else if (static_cast<int>(c) == table.risingColumn) row.push_back(std::to_string(rising += 1 + random() % 3));
      else row.push_back(randomValue(engine, table.columns[c].kind, random));
    }
    pair.master.push_back(row);
  }
  for (const auto& row : pair.master) {
    const int fate = static_cast<int>(random() % 100);
    if (fate < 12) continue;  // deleted
    Row copy = row;
    if (fate < 35) {
      const size_t c = random() % copy.size();
      if (!(c == 0 && table.primaryKey)) copy[c] = variantOf(engine, table.columns[c].kind, copy[c], random);
    }
    pair.source.push_back(copy);
    if (fate >= 95 && !table.primaryKey) pair.source.push_back(copy);  // a duplicate
  }
  const int added = static_cast<int>(random() % 3);
  for (int r = 0; r < added; ++r) {
    Row row;
    for (size_t c = 0; c < table.columns.size(); ++c)
      row.push_back(c == 0 && table.primaryKey ? std::to_string(1000 + r)
                                               : randomValue(engine, table.columns[c].kind, random));
    pair.source.push_back(row);
  }
  // A column of another kind on the source side gets values of its own kind.
  for (size_t c = 0; c < other.columns.size(); ++c) {
    if (other.columns[c].kind == table.columns[c].kind) continue;
    for (auto& row : pair.source) row[c] = randomValue(engine, other.columns[c].kind, random);
  }
  return pair;
}

std::vector<std::string> describe(clsDBManager& side) {
  std::vector<std::string> out;
  for (const auto& row : *side.getResults()) out.push_back(row->toString() + " | " + row->getChangeType());
  out.push_back("sql message: " + side.getReturnSQLMessage());
  out.push_back("statement: " + side.getSql());
  out.push_back("where: " + side.getWhereClause());
  return out;
}

struct Outcome {
  std::vector<std::string> master, source;
  std::vector<ProgressEvent> events;
  int32_t position = 0, maximum = 0;
  bool compared = false;
};

Side connectedSide(const std::string& connectionString, const std::string& table, const std::string& fields) {
  auto side = makeSide(connectionString);
  side->openDatabaseConnection();
  side->setTableName(table);
  side->setFieldList(fields);
  return side;
}

// One run of every record walk over the pair: the control's single-table compare, the buffered
// compare each way on its own and both ways as the control runs it, and a window each way, on the
// same two sides one after the other.
Outcome runWalks(TestDatabase& m, TestDatabase& s, const std::string& table, const std::string& fields,
                 const std::string& orderBy, int32_t start, int32_t amount, bool literal,
                 size_t hashBytesInMemory = engine::hashBytesKeptInMemory()) {
  engine::setLiteralRecordMatching(literal);
  const size_t hashesBefore = engine::hashBytesKeptInMemory();
  engine::setHashBytesKeptInMemory(hashBytesInMemory);
  Outcome outcome;
  auto master = connectedSide(m.connectionString(), table, fields);
  auto source = connectedSide(s.connectionString(), table, fields);

  Varsenti control;
  ProgressRecorder recorder(control);
  // Each walk starts its side's results afresh: what both sides hold is kept after every one.
  auto keep = [&](const std::string& walk) {
    for (auto [side, into] : {std::pair{&*master, &outcome.master}, std::pair{&*source, &outcome.source}}) {
      into->push_back("after " + walk);
      for (auto& line : describe(*side)) into->push_back(std::move(line));
    }
  };
  outcome.compared = control.beginTableCompareFromDBManagers(master, source);
  keep("the control's compare");
  if (!orderBy.empty()) {
    // The control's compare starts from empty results; the engine's walk, after a structure
    // compare, finds the field described and walks in its order.
    for (clsDBManager* side : {&*master, &*source}) {
      side->resetResult();
      describeField(*side, table, orderBy);
    }
    engine::compareTableRecords(*master, *source);
    engine::compareTableRecords(*source, *master);
    keep("the compare ordered by " + orderBy);
  }
  engine::compareBufferedRecords(*master, *source, control, "Reading Original");
  keep("the buffered compare of the master");
  engine::compareBufferedRecords(*source, *master, control, "Reading Modified");
  keep("the buffered compare of the source");
  engine::compareBufferedRecordsBothWays(*master, *source, control, "Reading Original", "Reading Modified");
  keep("the buffered compare both ways");
  engine::compareRecordWindow(*master, *source, control, "Reading Original", start, amount);
  keep("the window of the master");
  engine::compareRecordWindow(*source, *master, control, "Reading Modified", start, amount);
  keep("the window of the source");
  outcome.events = recorder.events;
  outcome.position = engine::dataProgress().position;
  outcome.maximum = engine::dataProgress().maximum;
  engine::setLiteralRecordMatching(false);
  engine::setHashBytesKeptInMemory(hashesBefore);
  return outcome;
}

void expectSame(const Outcome& literal, const Outcome& fast, const std::string& what) {
  EXPECT_EQ(literal.compared, fast.compared) << what;
  EXPECT_EQ(literal.master, fast.master) << what;
  EXPECT_EQ(literal.source, fast.source) << what;
  EXPECT_EQ(literal.events, fast.events) << what;
  EXPECT_EQ(literal.position, fast.position) << what;
  EXPECT_EQ(literal.maximum, fast.maximum) << what;
}

// 504 random pairs per engine, in eight shards of 63 (each with its own seed), so that every
// shard stays well within the time one test may take on a busy machine.
constexpr int kRecordShards = 8;
constexpr int kPairsPerShard = 63;

class RecordsOnEngines : public ::testing::TestWithParam<std::tuple<Engine, int>> {};

}  // namespace

TEST_P(RecordsOnEngines, RandomTablePairsCompareAlike) {
  const auto [engine, shard] = GetParam();
  VARSENTIX_TEST_DATABASE(master, engine);
  VARSENTIX_TEST_DATABASE(source, engine);
  std::mt19937 random(7000 + 10 * static_cast<unsigned>(engine) + static_cast<unsigned>(shard));
  int failures = 0;
  const auto before = engine::RecordMatcher::threadTotals();
  for (int pair = 0; pair < kPairsPerShard && failures < 5; ++pair) {
    const TableSpec table = randomTable(random);
    const TableSpec other = otherTable(table, random);
    createTable(*master, table, random);
    createTable(*source, other, random);
    Pair rows = randomRows(engine, table, other, random);
    // Rows of a table without a key are stored in no particular order; or, half the time where
    // the master's rise in a column, in the master's order.
    if (!other.primaryKey && !(table.risingColumn >= 0 && random() % 2 == 0))
      std::shuffle(rows.source.begin(), rows.source.end(), random);
    insertRows(*master, table, rows.master);
    insertRows(*source, other, rows.source);
    std::string fields = "*";
    if (random() % 5 == 0) fields = "[" + table.columns.back().name + "]";
    const auto start = static_cast<int32_t>(random() % 5);
    // Windows of up to 32 records send their match queries; longer ones are decided.
    const auto amount = static_cast<int32_t>(random() % 2 ? random() % 8 : 32 + random() % 8);
    const std::string what = "pair " + std::to_string(pair) + " table " + table.name + " fields " + fields;
    // Sometimes ordered by a column, as after a structure compare (ties in no particular order).
    std::string orderBy;
    if (table.risingColumn >= 0 && random() % 2 == 0) orderBy = table.columns[table.risingColumn].name;
    else if (random() % 2 == 0) orderBy = table.columns[table.columns.size() == 1 ? 0 : 1 + random() % (table.columns.size() - 1)].name;
    const Outcome literal = runWalks(*master, *source, table.name, fields, orderBy, start, amount, true);
    // Half the time the hashes of the other side's records go to a file after a few records, as
    // they do past a quarter of a million.
    const size_t hashBytesInMemory = pair % 2 ? 48 : engine::hashBytesKeptInMemory();
    const Outcome fast =
        runWalks(*master, *source, table.name, fields, orderBy, start, amount, false, hashBytesInMemory);
    expectSame(literal, fast, what + " order by " + orderBy);
    if (::testing::Test::HasFailure()) ++failures;
    master->exec("DROP TABLE " + quotedName(engine, table.name));
    source->exec("DROP TABLE " + quotedName(engine, other.name));
  }
  // The fast decisions were taken, both ways, and the engine was still asked about some records.
  const auto after = engine::RecordMatcher::threadTotals();
  const int64_t matched = after.matched - before.matched;
  const int64_t notMatched = after.notMatched - before.notMatched;
  const int64_t asked = after.askedEngine - before.askedEngine;
  const int64_t joined = after.joined - before.joined;
  const int64_t merged = after.merged - before.merged;
  const int64_t otherWay = after.otherWay - before.otherWay;
  const int64_t keptOnly = after.keptOnly - before.keptOnly;
  const int64_t unsorted = after.unsorted - before.unsorted;
  const int64_t walkedAgain = after.walkedAgain - before.walkedAgain;
  const int64_t inFiles = after.hashesInFiles - before.hashesInFiles;
  std::printf("decided as matched %lld, as not matched %lld (%lld of them in one statement over both "
              "sides, %lld by merging with the other side's ordered records, %lld from what the walk "
              "the other way kept); asked the engine %lld; %lld walks went through the kept records "
              "alone; %lld statements were read without their order, and %lld walks made again sorted; %lld "
              "walks kept their hashes in a file\n",
              static_cast<long long>(matched), static_cast<long long>(notMatched),
              static_cast<long long>(joined), static_cast<long long>(merged),
              static_cast<long long>(otherWay), static_cast<long long>(asked),
              static_cast<long long>(keptOnly), static_cast<long long>(unsorted),
              static_cast<long long>(walkedAgain), static_cast<long long>(inFiles));
  EXPECT_GT(matched, 125);
  EXPECT_GT(inFiles, 25);
  // SQLite files are compared by one statement over both where the other side has a key that
  // is no integer (text or double first columns).
  // Their tables without an index read as stored where ordering them would sort them, and were
  // sorted after all where a record came out of order.
  if (engine == Engine::SQLite) {
    EXPECT_GT(joined, 20);
    EXPECT_GT(unsorted, 125);
    EXPECT_GT(walkedAgain, 37);
  }
  // A walk over an integer first column in key order steps through the other side's records,
  // except on MariaDB, whose connector cannot read two results at once.
  // The walk the other way of the control's compare decides from what that step-through kept.
  if (engine != Engine::MariaDB) {
    EXPECT_GT(merged, 125);
    EXPECT_GT(otherWay, 37);
    EXPECT_GT(keptOnly, 2);
  }
  EXPECT_GT(notMatched, 37);
  EXPECT_GT(asked, 12);
}

INSTANTIATE_TEST_SUITE_P(Engines, RecordsOnEngines,
                         ::testing::Combine(::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::MariaDB),
                                            ::testing::Range(0, kRecordShards)),
                         [](const ::testing::TestParamInfo<std::tuple<Engine, int>>& info) {
                           return engineName(std::get<0>(info.param)) + "_" +
                                  std::to_string(std::get<1>(info.param) + 1) + "of" +
                                  std::to_string(kRecordShards);
                         });

namespace {

// Texts SQLite keeps as they are in INTEGER and REAL columns (they do not read as numbers), and
// some it turns into numbers: the literal comparison never writes the first kind bare, and the
// fast one must answer as it does.
const std::vector<std::string>& numericColumnTexts() {
  static const std::vector<std::string> pool{
      "'1 OR 1=1'", "'0 OR (SELECT count(*) FROM sqlite_master) >= 0'", "'0x10'", "' 7'", "'7 '", "'abc'",
      "'(SELECT 1)'", "'1e999'", "'5'", "'5.0'", "'-'", "'1; DROP TABLE t'", "'$$''$$'", "''", "'12abc'",
      "'NaN'", "'Infinity'", "'1--'", "'x''y'", "'中文'", "'a\\b\\'", "'tab\tx'", "'1/*'"};
  return pool;
}

bool isNumericKind(Kind kind) { return kind == Kind::Integer || kind == Kind::Real; }

void putTexts(Row& row, const TableSpec& table, std::mt19937& random, int percent) {
  for (size_t c = 0; c < row.size(); ++c) {
    if (!isNumericKind(table.columns[c].kind) || (c == 0 && table.primaryKey)) continue;
    if (static_cast<int>(random() % 100) < percent)
      row[c] = numericColumnTexts()[random() % numericColumnTexts().size()];
  }
}

}  // namespace

TEST(RecordsOnSqlite, TextsInNumericColumnsCompareAlike) {
  VARSENTIX_TEST_DATABASE(master, Engine::SQLite);
  VARSENTIX_TEST_DATABASE(source, Engine::SQLite);
  std::mt19937 random(9100);
  int failures = 0;
  int withTexts = 0;
  for (int pair = 0; pair < 60 && failures < 5; ++pair) {
    TableSpec table = randomTable(random);
    // At least one numeric column that may hold a text.
    const size_t at = table.columns.size() == 1 ? 0 : 1 + random() % (table.columns.size() - 1);
    if (!(at == 0 && table.primaryKey)) table.columns[at].kind = random() % 2 ? Kind::Integer : Kind::Real;
    const TableSpec other = otherTable(table, random);
    createTable(*master, table, random);
    createTable(*source, other, random);
    Pair rows = randomRows(Engine::SQLite, table, other, random);
    // The same texts on both sides for records kept alike, other texts here and there.
    std::vector<std::pair<Row, Row>> changed;
    for (auto& row : rows.master) {
      const Row before = row;
      putTexts(row, table, random, 20);
      changed.emplace_back(before, row);
    }
    for (auto& row : rows.source) {
      bool same = false;
      for (const auto& [before, after] : changed)
        if (row == before && random() % 100 < 70) {
          row = after;
          same = true;
          break;
        }
      if (!same) putTexts(row, other, random, 10);
    }
    if (!other.primaryKey) std::shuffle(rows.source.begin(), rows.source.end(), random);
    insertRows(*master, table, rows.master);
    insertRows(*source, other, rows.source);
    if (master->scalar("SELECT count(*) FROM " + quotedName(Engine::SQLite, table.name) + " WHERE typeof(" +
                       quotedName(Engine::SQLite, table.columns[at].name) + ") = 'text'") != "0")
      ++withTexts;
    const std::string fields = random() % 5 == 0 ? "[" + table.columns.back().name + "]" : "*";
    const auto start = static_cast<int32_t>(random() % 5);
    const auto amount = static_cast<int32_t>(random() % 2 ? random() % 8 : 32 + random() % 8);
    std::string orderBy;
    if (random() % 2 == 0) orderBy = table.columns[at].name;
    const std::string what = "pair " + std::to_string(pair) + " table " + table.name + " fields " + fields;
    const Outcome literal = runWalks(*master, *source, table.name, fields, orderBy, start, amount, true);
    const size_t hashBytesInMemory = pair % 2 ? 48 : engine::hashBytesKeptInMemory();
    const Outcome fast =
        runWalks(*master, *source, table.name, fields, orderBy, start, amount, false, hashBytesInMemory);
    expectSame(literal, fast, what + " order by " + orderBy);
    // No text of a numeric column reached the other side bare: its statements fail, never run it.
    for (const auto& line : literal.source)
      EXPECT_EQ(line.find("1 OR 1=1 "), std::string::npos) << what << ": " << line;
    if (::testing::Test::HasFailure()) ++failures;
    master->exec("DROP TABLE " + quotedName(Engine::SQLite, table.name));
    source->exec("DROP TABLE " + quotedName(Engine::SQLite, other.name));
  }
  EXPECT_GT(withTexts, 20);
}
