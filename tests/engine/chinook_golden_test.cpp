// The whole comparison of the Chinook sample against its changed copy (examples/changes.sql),
// checked against a golden file that a reader can hold against the changes by eye:
// tests/engine/golden/chinook.txt. Run with VARSENTIX_UPDATE_GOLDEN=1 to write it anew.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "engine/Engine.h"
#include "engine/EngineTestSupport.h"
#include "varsentix/results/modConstants.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

const std::filesystem::path kSourceDir = VARSENTIX_SOURCE_DIR;

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

void appendRows(std::ostream& out, const char* heading, clsDBManager& side) {
  out << "## " << heading << ": " << side.getResults()->Count() << " rows\n";
  for (const auto& row : *side.getResults()) {
    out << row->toString() << " | "
        << modConstants::getChangeDesciption(vb::CInt(row->getChangeType())) << "\n";
  }
}

std::vector<std::string> tablesOnBothSides(clsDBManager& m) {
  std::vector<std::string> names;
  for (const auto& row : *m.getResults())
    if (row->getFieldName().empty() && !row->getIsFieldDesc() && row->getChangeType() == "0")
      names.push_back(row->getDatabaseObjName());
  return names;
}

}  // namespace

TEST(ChinookGolden, StructureAndRecordsOfTheChangedCopy) {
  TempDir dir;
  const std::string original = dir.file("chinook.sqlite");
  const std::string changed = dir.file("chinook-changed.sqlite");
  std::filesystem::copy_file(kSourceDir / "examples" / "chinook.sqlite", original);
  std::filesystem::permissions(original, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
  const std::string command = (kSourceDir / "examples" / "make-changed-copy.sh").string() + " '" + original +
                              "' '" + changed + "'";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;

  auto m = makeSide("Provider=SQLite;Data Source=" + original);
  auto s = makeSide("Provider=SQLite;Data Source=" + changed);
  Varsenti control;
  ProgressRecorder recorder(control);
  engine::openAllTableStructures(*m);
  engine::openAllTableStructures(*s);
  engine::compareResultStructure(*m, *s, control, "Reading Original");
  engine::compareResultStructure(*s, *m, control, "Reading Modified");
  for (const auto& table : tablesOnBothSides(*m)) {
    for (auto* side : {&m, &s}) {
      (*side)->setTableName(table);
      (*side)->setFieldList("*");
    }
    engine::compareTableRecords(*m, *s);
    engine::compareTableRecords(*s, *m);
  }

  std::ostringstream report;
  appendRows(report, "Original", *m);
  appendRows(report, "Modified", *s);
  report << "## UpdateCount events: " << recorder.events.size() << "\n";
  for (const auto& e : recorder.events) report << e.count << " " << e.maxCount << " " << e.readFrom << "\n";

  const auto golden = kSourceDir / "tests" / "engine" / "golden" / "chinook.txt";
  if (std::getenv("VARSENTIX_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(golden, std::ios::binary) << report.str();
    GTEST_SKIP() << "wrote " << golden;
  }
  ASSERT_TRUE(std::filesystem::exists(golden)) << golden;
  EXPECT_EQ(report.str(), readFile(golden));

  // What the changes must show, whatever the golden file says.
  auto find = [](clsDBManager& side, const std::string& table, const std::string& field,
                 const std::string& value = "") -> std::string {
    for (const auto& row : *side.getResults())
      if (row->getDatabaseObjName() == table && row->getFieldName() == field &&
          (value.empty() || row->getDataValue() == value))
        return row->getChangeType();
    return "none";
  };
  EXPECT_EQ(find(*s, "Review", ""), "1");
  EXPECT_EQ(find(*m, "PlaylistTrack", ""), "1");
  EXPECT_EQ(find(*s, "Artist", "Country"), "2");
  EXPECT_EQ(find(*m, "Invoice", "Total"), "3");
  EXPECT_EQ(find(*s, "Invoice", "Total"), "3");
  EXPECT_EQ(find(*s, "Artist", "Name", "Sinéad O'Connor"), "5");
  EXPECT_EQ(find(*m, "Genre", "Name", "Opera"), "5");
  EXPECT_EQ(find(*m, "Album", "Title", "Let There Be Rock"), "5");
  EXPECT_EQ(find(*s, "Album", "Title", "Let There Be Rock (Live)"), "5");
  EXPECT_EQ(find(*s, "Customer", "Company", "Null"), "5");
}
