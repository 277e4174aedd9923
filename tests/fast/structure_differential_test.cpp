// The indexed table and field passes against the literal nested scans: random pairs of result
// collections (laid out by hand, and read from random schemas on every engine) are classified by
// both; the rows (text and change type, in order), the return messages and the UpdateCount
// events must come out identical.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "engine/Engine.h"
#include "engine/EngineTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

using Rows = vb::Ref<ResultCollection>;

Rows copyRows(const Rows& rows) {
  auto copy = Rows::make();
  for (const auto& row : *rows) copy->Add(row ? vb::Ref<clsResultSet>::make(*row) : vb::Ref<clsResultSet>());
  return copy;
}

std::vector<std::string> describe(clsDBManager& side) {
  std::vector<std::string> out;
  for (const auto& row : *side.getResults())
    out.push_back(row ? row->toString() + " | " + row->getChangeType() : std::string("Nothing"));
  out.push_back("message: " + side.getReturnMessage());
  return out;
}

// What one run of the structure pass leaves behind.
struct Outcome {
  std::vector<std::string> a;
  std::vector<std::string> b;
  std::vector<ProgressEvent> events;
};

// Throws from the handler at the given event (0 = never).
struct PassRun {
  int throwAtEvent = 0;
  bool reference = false;
};

Outcome classify(const Rows& aRows, const Rows& bRows, const PassRun& run) {
  clsDBManager A;
  clsDBManager B;
  A.setResults(copyRows(aRows));
  B.setResults(copyRows(bRows));
  Varsenti control;
  ProgressRecorder recorder(control);
  int seen = 0;
  const auto cookie = control.UpdateCount.connect([&](int32_t&, int32_t&, std::string&) {
    if (++seen == run.throwAtEvent) throw std::runtime_error("handler failed");
  });
  if (run.reference) {
    engine::compareResultStructureReference(A, B, control, "Reading Original");
    engine::compareResultStructureReference(B, A, control, "Reading Modified");
  } else {
    engine::compareResultStructure(A, B, control, "Reading Original");
    engine::compareResultStructure(B, A, control, "Reading Modified");
  }
  control.UpdateCount.disconnect(cookie);
  return {describe(A), describe(B), recorder.events};
}

void expectSame(const Outcome& reference, const Outcome& fast, const std::string& context) {
  ASSERT_EQ(reference.a, fast.a) << context;
  ASSERT_EQ(reference.b, fast.b) << context;
  ASSERT_EQ(reference.events, fast.events) << context;
}

// Random rows over small alphabets, so names repeat: duplicate tables and fields, case variants,
// empty field names anywhere (table rows, trailing rows), rows of one table split up.
Rows randomRows(std::mt19937& random, int count) {
  static const std::vector<std::string> objects{"t", "T", "u", "v", "orders", "Orders"};
  static const std::vector<std::string> fields{"", "", "a", "A", "b", "id", "name"};
  static const std::vector<std::string> types{"Integer", "Text", "Double", "TABLE", ""};
  auto rows = Rows::make();
  auto pick = [&](const std::vector<std::string>& from) {
    return from[std::uniform_int_distribution<size_t>(0, from.size() - 1)(random)];
  };
  for (int n = 0; n < count; ++n) {
    const std::string changeType = std::to_string(std::uniform_int_distribution<int>(0, 5)(random));
    rows->Add(makeRow(pick(objects), pick(fields), pick(types), changeType));
  }
  return rows;
}

int randomSize(std::mt19937& random, bool large) {
  return large ? std::uniform_int_distribution<int>(40, 170)(random)
               : std::uniform_int_distribution<int>(0, 12)(random);
}

}  // namespace

TEST(StructureDifferential, RandomRowCollectionsClassifyAlike) {
  std::mt19937 random(20261121);
  for (int pair = 0; pair < 1500; ++pair) {
    const bool large = pair % 50 == 0;
    const Rows a = randomRows(random, randomSize(random, large));
    const Rows b = randomRows(random, randomSize(random, large));
    PassRun run;
    if (large && pair % 2 == 0) run.throwAtEvent = std::uniform_int_distribution<int>(1, 4)(random);
    PassRun reference = run;
    reference.reference = true;
    expectSame(classify(a, b, reference), classify(a, b, run), "pair " + std::to_string(pair));
  }
}

TEST(StructureDifferential, FieldPassFromAnyStartClassifiesAlike) {
  std::mt19937 random(7);
  for (int pair = 0; pair < 1500; ++pair) {
    const Rows aRows = randomRows(random, randomSize(random, false));
    const Rows bRows = randomRows(random, randomSize(random, false));
    const int32_t i0 = std::uniform_int_distribution<int32_t>(-1, aRows->Count() + 2)(random);
    const int32_t j0 = std::uniform_int_distribution<int32_t>(-1, bRows->Count() + 2)(random);
    clsDBManager A1, B1, A2, B2;
    A1.setResults(copyRows(aRows));
    B1.setResults(copyRows(bRows));
    A2.setResults(copyRows(aRows));
    B2.setResults(copyRows(bRows));
    engine::CompareFieldStructureReference(A1, B1, i0, j0);
    engine::CompareFieldStructure(A2, B2, i0, j0);
    const std::string context = "pair " + std::to_string(pair) + " from " + std::to_string(i0) + ", " +
                                std::to_string(j0);
    ASSERT_EQ(describe(A1), describe(A2)) << context;
    ASSERT_EQ(describe(B1), describe(B2)) << context;
  }
}

TEST(StructureDifferential, NothingRowsAndCollectionsFailAsTheLiteralPassDoes) {
  std::mt19937 random(11);
  for (int pair = 0; pair < 200; ++pair) {
    Rows a = randomRows(random, randomSize(random, pair % 10 == 0));
    Rows b = randomRows(random, randomSize(random, pair % 10 == 0));
    auto withHole = [&](const Rows& rows) {
      auto holed = Rows::make();
      const int hole = std::uniform_int_distribution<int>(0, rows->Count())(random);
      int n = 0;
      for (const auto& row : *rows) {
        if (++n == hole) holed->Add(vb::Ref<clsResultSet>());
        holed->Add(row);
      }
      return holed;
    };
    if (pair % 2 == 0) a = withHole(a); else b = withHole(b);
    PassRun reference;
    reference.reference = true;
    expectSame(classify(a, b, reference), classify(a, b, PassRun{}), "pair " + std::to_string(pair));
  }
  clsDBManager A1, B1, A2, B2;
  A1.setResults(Rows());
  A2.setResults(Rows());
  B1.setResults(randomRows(random, 3));
  B2.setResults(copyRows(B1.getResults()));
  Varsenti control;
  engine::compareResultStructureReference(A1, B1, control, "Reading Original");
  engine::compareResultStructure(A2, B2, control, "Reading Original");
  EXPECT_EQ(A1.getReturnMessage(), A2.getReturnMessage());
  EXPECT_NE(A1.getReturnMessage().find(" #10 "), std::string::npos);
}

// ---- Random schemas on the engines ----

namespace {

class StructureOnEngines : public ::testing::TestWithParam<Engine> {};

std::string quoted(Engine engine, const std::string& name) {
  return engine == Engine::MariaDB ? "`" + name + "`" : "\"" + name + "\"";
}

// Creates one to three random tables of one to four random columns; returns the table names.
std::vector<std::string> randomSchema(TestDatabase& db, std::mt19937& random) {
  static const std::vector<std::string> tables{"t1", "t2", "T1", "orders", "Orders"};
  static const std::vector<std::string> columns{"a", "b", "c", "id", "B"};
  static const std::vector<std::string> types{"INTEGER", "VARCHAR(10)", "VARCHAR(20)", "REAL", "DATE"};
  auto pick = [&](const std::vector<std::string>& from) {
    return from[std::uniform_int_distribution<size_t>(0, from.size() - 1)(random)];
  };
  auto lower = [](std::string text) {
    for (auto& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  };
  std::vector<std::string> made;
  std::set<std::string> usedTables;
  const int tableCount = std::uniform_int_distribution<int>(1, 3)(random);
  for (int t = 0; t < tableCount; ++t) {
    const std::string table = pick(tables);
    if (!usedTables.insert(lower(table)).second) continue;
    std::set<std::string> usedColumns;
    std::string sql = "CREATE TABLE " + quoted(db.engine(), table) + " (";
    const int columnCount = std::uniform_int_distribution<int>(1, 4)(random);
    bool first = true;
    for (int c = 0; c < columnCount; ++c) {
      const std::string column = pick(columns);
      if (!usedColumns.insert(lower(column)).second) continue;
      sql += (first ? "" : ", ") + quoted(db.engine(), column) + " " + pick(types);
      if (first && random() % 2 == 0) sql += " PRIMARY KEY";
      first = false;
    }
    db.exec(sql + ")");
    made.push_back(table);
  }
  return made;
}

void dropAll(TestDatabase& db, const std::vector<std::string>& tables) {
  for (const auto& table : tables) db.exec("DROP TABLE " + quoted(db.engine(), table));
}

}  // namespace

TEST_P(StructureOnEngines, RandomSchemaPairsClassifyAlike) {
  VARSENTIX_TEST_DATABASE(master, GetParam());
  VARSENTIX_TEST_DATABASE(source, GetParam());
  std::mt19937 random(1000 + static_cast<unsigned>(GetParam()));
  for (int pair = 0; pair < 500; ++pair) {
    const auto masterTables = randomSchema(*master, random);
    const auto sourceTables = randomSchema(*source, random);
    auto m = makeSide(master->connectionString());
    auto s = makeSide(source->connectionString());
    engine::openAllTableStructures(*m);
    engine::openAllTableStructures(*s);
    ASSERT_EQ(m->getReturnMessage(), "Successfully Completed");
    ASSERT_EQ(s->getReturnMessage(), "Successfully Completed");
    PassRun reference;
    reference.reference = true;
    expectSame(classify(m->getResults(), s->getResults(), reference),
               classify(m->getResults(), s->getResults(), PassRun{}), "pair " + std::to_string(pair));
    dropAll(*master, masterTables);
    dropAll(*source, sourceTables);
  }
}

INSTANTIATE_TEST_SUITE_P(Engines, StructureOnEngines,
                         ::testing::Values(Engine::SQLite, Engine::PostgreSQL, Engine::MariaDB),
                         EngineParamName());
