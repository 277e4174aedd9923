// Whole comparisons through the public control, as a host runs them.
#include <cstdlib>
#include <filesystem>

#include "compare/CompareTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

const std::filesystem::path kSourceDir = VARSENTIX_SOURCE_DIR;

struct SamplePair {
  TempDir dir;
  std::string original;
  std::string changed;
};

void makeSamplePair(SamplePair& pair) {
  pair.original = pair.dir.file("chinook.sqlite");
  pair.changed = pair.dir.file("chinook-changed.sqlite");
  std::filesystem::copy_file(kSourceDir / "examples" / "chinook.sqlite", pair.original);
  std::filesystem::permissions(pair.original, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
  const std::string command = (kSourceDir / "examples" / "make-changed-copy.sh").string() + " '" + pair.original +
                              "' '" + pair.changed + "'";
  ASSERT_EQ(std::system(command.c_str()), 0);
}

std::string sqlite(const std::string& file) { return "Provider=SQLite;Data Source=" + file; }

// "table.field=code" of every row of one side that is not unchanged.
std::vector<std::string> differences(Varsenti& control, bool isMaster) {
  std::vector<std::string> out;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i) {
    const int16_t code = control.getResultChangeType(i, isMaster);
    if (code != 0)
      out.push_back(control.getResultDatabaseObjectName(i, isMaster) + "." + control.getResultFieldName(i, isMaster) +
                    "=" + std::to_string(code));
  }
  return out;
}

}  // namespace

TEST(EndToEnd, ChinookAgainstItsChangedCopyOnSqlite) {
  SamplePair pair;
  makeSamplePair(pair);
  Varsenti control;
  int events = 0;
  control.UpdateCount.connect([&](int32_t&, int32_t& maxCount, std::string& readFrom) {
    ++events;
    EXPECT_TRUE(readFrom == "Reading Original" || readFrom == "Reading Modified") << readFrom;
    EXPECT_GT(maxCount, 50);
  });
  control.showDifferencesOnly(true);
  ASSERT_TRUE(control.beginFullDatabaseCompare(sqlite(pair.original), sqlite(pair.changed), false));
  EXPECT_GT(events, 0);
  auto original = differences(control, true);
  auto modified = differences(control, false);
  // PlaylistTrack only in the original: its table row, two fields and its trailing row.
  EXPECT_EQ(std::count(original.begin(), original.end(), "PlaylistTrack.=1"), 2);
  EXPECT_NE(std::find(original.begin(), original.end(), "PlaylistTrack.TrackId=1"), original.end());
  EXPECT_NE(std::find(original.begin(), original.end(), "Invoice.Total=3"), original.end());
  EXPECT_NE(std::find(modified.begin(), modified.end(), "Invoice.Total=3"), modified.end());
  EXPECT_NE(std::find(modified.begin(), modified.end(), "Review.Comment=1"), modified.end());
  EXPECT_NE(std::find(modified.begin(), modified.end(), "Artist.Country=2"), modified.end());
  EXPECT_EQ(original.size(), 5u) << ::testing::PrintToString(original);
  EXPECT_EQ(control.getErrorLogs(true).find("#"), std::string::npos) << control.getErrorLogs(true);

  // The records of one table, compared on prepared managers.
  auto m = preparedSide(sqlite(pair.original), "Album");
  auto s = preparedSide(sqlite(pair.changed), "Album");
  ASSERT_TRUE(control.beginTableCompareFromFieldListFromDBManager(m, s));
  std::vector<std::string> titles[2];
  for (bool isMaster : {true, false})
    for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
      if (control.getResultIsDataValue(i, isMaster) && control.getResultFieldName(i, isMaster) == "Title")
        titles[isMaster ? 0 : 1].push_back(control.getResultFieldValue(i, isMaster));
  EXPECT_EQ(titles[0], std::vector<std::string>{"Let There Be Rock"});
  EXPECT_EQ(titles[1], std::vector<std::string>{"Let There Be Rock (Live)"});
  const int32_t record = control.getResultRecordNumber("Album", true, 1);
  EXPECT_EQ(control.getFieldValueFromRecordNumber("Album", "AlbumId", record, true), "4");
  EXPECT_EQ(control.getFieldChangeTypeFromRecordNumber("Album", "Title", record, true), "5");
}

TEST(EndToEnd, OneTableDataCompareOfTheSamplePair) {
  SamplePair pair;
  makeSamplePair(pair);
  Varsenti control;
  auto m = preparedSide(sqlite(pair.original), "Artist");
  auto s = preparedSide(sqlite(pair.changed), "Artist");
  ASSERT_TRUE(control.beginTableCompareFromDBManagers(m, s));
  std::vector<std::string> added;
  for (int32_t i = 1; i <= control.getResultCount(false); ++i)
    if (control.getResultIsDataValue(i, false) && control.getResultFieldName(i, false) == "Name")
      added.push_back(control.getResultFieldValue(i, false));
  // Artist 1 gained a country (a column the original lacks, so it is not tested), 276 and 277
  // are new; the NULL name reads as the text Null.
  EXPECT_EQ(added, (std::vector<std::string>{"Sinéad O'Connor", "Null"}));
  for (int32_t i = 1; i <= control.getResultCount(true); ++i) EXPECT_FALSE(control.getResultIsDataValue(i, true));
}
