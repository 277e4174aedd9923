#include "compare/CompareTestSupport.h"

using namespace varsentix;
using namespace varsentix::testing;

namespace {

constexpr const char* kIndexError = "Error index is greater then results returned";

// Master rows: table row of t, two field rows, then two records of two values each.
void publishSample(Varsenti& control) {
  auto tableRow = vb::Ref<clsResultSet>::make();
  tableRow->setDatabaseObjName("t");
  tableRow->setPrimaryKey("id");
  tableRow->setFKeyName("fk");
  tableRow->setFKeyColumnName("fkc");
  tableRow->setPKeyName("pk");
  tableRow->setFKeyPrimaryTable("parent");
  tableRow->setDataType("TABLE");
  auto field = vb::Ref<clsResultSet>::make();
  field->setDatabaseObjName("t");
  field->setFieldName("id");
  field->setIsFieldDesc(true);
  field->setShow(true);
  field->setFieldDefinedSize("10");
  field->setFieldActualSize("4");
  field->setFieldCount(2);
  field->setLength("8");
  control.setMasterResultSets(collection({tableRow, field, row("t", "id", "1", 1, "5", "id"),
                                          row("t", "v", "a", 1, "5", "id"), row("t", "id", "2", 2, "5", "id"),
                                          row("t", "v", "Null", 2, "5", "id")}));
  control.setSourceResults(collection({}));
}

}  // namespace

TEST(ResultQueries, AnIndexPastTheEndGivesTheFallbackAndZeroFailsTheCall) {
  Varsenti control;
  publishSample(control);
  const int32_t n = control.getResultCount(true);
  EXPECT_EQ(control.getResultFieldName(n + 1, true), kIndexError);
  EXPECT_THROW(control.getResultFieldName(0, true), vb::VBError);
  EXPECT_THROW(control.getResultFieldName(-1, true), vb::VBError);
  EXPECT_FALSE(control.getResultIsDataValue(n + 1, true));
  EXPECT_FALSE(control.getResultIsFieldDesc(n + 1, true));
  EXPECT_FALSE(control.getResultIsFieldComparable(n + 1, true));
  EXPECT_THROW(control.getResultChangeType(n + 1, true), vb::VBError);
  EXPECT_THROW(control.getResultFieldLength(n + 1, true), vb::VBError);
  for (auto query : {&Varsenti::getResultDatabaseObjectName, &Varsenti::getResultPrimaryKey,
                     &Varsenti::getResultForeignKeyName, &Varsenti::getResultForeignKeyColumnName,
                     &Varsenti::getResultForeignKeyPrimaryKeyName, &Varsenti::getResultFKeyPrimaryTableName,
                     &Varsenti::getResultDataType, &Varsenti::getResultFieldDefinedSize,
                     &Varsenti::getResultFieldActualSize, &Varsenti::getResultFieldValue})
    EXPECT_EQ((control.*query)(n + 1, true), kIndexError);
}

TEST(ResultQueries, RowPropertiesOfAValidIndex) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.getResultDatabaseObjectName(1, true), "t");
  EXPECT_EQ(control.getResultPrimaryKey(1, true), "id");
  EXPECT_EQ(control.getResultForeignKeyName(1, true), "fk");
  EXPECT_EQ(control.getResultForeignKeyColumnName(1, true), "fkc");
  EXPECT_EQ(control.getResultForeignKeyPrimaryKeyName(1, true), "pk");
  EXPECT_EQ(control.getResultFKeyPrimaryTableName(1, true), "parent");
  EXPECT_EQ(control.getResultDataType(1, true), "TABLE");
  EXPECT_TRUE(control.getResultIsFieldComparable(2, true));
  EXPECT_EQ(control.getResultFieldLength(2, true), 8);
  EXPECT_EQ(control.getResultChangeType(3, true), 5);
  EXPECT_EQ(control.getResultFieldValue(4, true), "a");
}

TEST(ResultQueries, ActualSizeReturnsTheDefinedSize) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.getResultFieldActualSize(2, true), "10");
  EXPECT_EQ(control.getResultFieldActualSize(2, true), control.getResultFieldDefinedSize(2, true));
}

TEST(ResultQueries, DatabaseObjectNameIsAlwaysEmpty) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.getDatabaseObjectName(1), "");
  Varsenti fresh;
  EXPECT_THROW(fresh.getDatabaseObjectName(1), vb::VBError);  // the collection is fetched first
}

TEST(ResultQueries, WithoutPublishedResultsTheCountIsZeroAndMessagesAreRecorded) {
  Varsenti control;
  EXPECT_EQ(control.getResultCount(true), 0);
  EXPECT_EQ(control.getMasterDataManager()->getReturnMessage(),
            " 91 Object variable or With block variable not set # 72 Error occured while getting result count in component ||");
  EXPECT_EQ(control.getSourceDataManager()->getReturnMessage(),
            " 91 Object variable or With block variable not set # 73 Error occured while getting result count in component ||");
  EXPECT_EQ(control.getResultFieldName(1, false), kIndexError);
  EXPECT_NE(control.getSourceDataManager()->getReturnMessage().find(
                " 91 Object variable or With block variable not set # 71 Error occured while checking index in component ||"),
            std::string::npos);
  EXPECT_NE(control.getMasterDataManager()->getReturnMessage().find("# 70 Error occured while checking index"),
            std::string::npos);
}

TEST(ResultQueries, ResultSetOfABadIndexIsAnEmptyReference) {
  Varsenti control;
  publishSample(control);
  EXPECT_TRUE(control.getResultSet(99, true).isNothing());
  EXPECT_TRUE(control.getResultSet(0, true).isNothing());
  EXPECT_FALSE(control.getResultSet(1, true).isNothing());
}

TEST(ResultQueries, UnknownTables) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.DecrementRecordCount("nope", true, 10), 1);
  EXPECT_EQ(control.incrementRecordCount("nope", true, 10), 0);
  EXPECT_EQ(control.getResultRecordCountForTable("nope", true), -1);
  EXPECT_EQ(control.getLastRecordForTable("nope", true), 0);
  EXPECT_EQ(control.getPrimaryKeyFromTableName("nope", true), "");
  EXPECT_EQ(control.getIndexForRecordNumber("nope", 1, true), 0);
  EXPECT_TRUE(control.getResultSetFromRecordNumber("nope", 1, true).isNothing());
}

TEST(ResultQueries, MovingByTheFieldCount) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.getResultFieldCount(true, "t"), 0);  // the table row carries no field count
  EXPECT_EQ(control.incrementRecordCount("t", true, 3), 3);
  EXPECT_EQ(control.DecrementRecordCount("t", true, 3), 3);
  control.getMasterDataManager()->setFieldCount(4);
  EXPECT_EQ(control.getResultFieldCount(true, "absent"), 4);  // the manager's count, as the side has rows
  EXPECT_EQ(control.getResultFieldCount(false, "absent"), 0);
}

TEST(ResultQueries, RecordLookups) {
  Varsenti control;
  publishSample(control);
  EXPECT_EQ(control.getPrimaryKeyFromTableName("t", true), "id");
  EXPECT_EQ(control.getResultRecordCountForTable("t", true), 1);  // the table row's count plus one
  EXPECT_EQ(control.getLastRecordForTable("t", true), 1);
  EXPECT_EQ(control.getIndexForRecordNumber("t", 2, true), 5);
  EXPECT_EQ(control.getResultRecordNumber("t", true, 3), 1);
  EXPECT_EQ(control.getResultRecordNumber("elsewhere", true, 1), 0);
  EXPECT_EQ(control.getFieldValueFromRecordNumber("t", "v", 2, true), "Null");
  EXPECT_EQ(control.getFieldValueFromRecordNumber("t", "v", 9, true), "");
  EXPECT_EQ(control.getResultFieldValueFromFieldName("t", true, "v", 1), "a");
  EXPECT_EQ(control.getFieldChangeTypeFromRecordNumber("t", "v", 1, true), "5");
  EXPECT_EQ(control.getFieldChangeTypeFromRecordNumber("t", "v", 0, true), "");
  auto found = control.getResultSetFromRecordNumber("t", 2, true);
  ASSERT_FALSE(found.isNothing());
  EXPECT_EQ(found->getDataValue(), "2");
}

TEST(ResultQueries, RecordCountInResultsIsCountedOnceWithProgressAndCached) {
  Varsenti control;
  std::vector<vb::Ref<clsResultSet>> rows;
  for (int i = 1; i <= 120; ++i) rows.push_back(row(i <= 100 ? "t" : "u", "f", "v", i));
  control.setMasterResultSets(collection(rows));
  std::vector<std::string> events;
  control.UpdateCount.connect([&](int32_t& count, int32_t& maxCount, std::string& readFrom) {
    events.push_back(std::to_string(count) + "/" + std::to_string(maxCount) + " " + readFrom);
  });
  control.setTotalRecordsForSourceTable(1);
  EXPECT_EQ(control.getRecordCountInResultsForTable("t", true), 101);
  EXPECT_EQ(events, (std::vector<std::string>{"50/120 Compiling Differences", "100/120 Compiling Differences",
                                              "120/120 Done"}));
  events.clear();
  EXPECT_EQ(control.getRecordCountInResultsForTable("t", true), 101);
  EXPECT_TRUE(events.empty());  // cached
  EXPECT_TRUE(control.lastRecord("t", 102, true));
  EXPECT_FALSE(control.lastRecord("t", 101, true));
}

TEST(ResultQueries, RecordCountOfATableWithoutDataRowsIsOneAndRecountsWhileATotalIsBelowOne) {
  Varsenti control;
  publishSample(control);
  std::vector<std::string> events;
  control.UpdateCount.connect([&](int32_t&, int32_t&, std::string& readFrom) { events.push_back(readFrom); });
  EXPECT_EQ(control.getRecordCountInResultsForTable("none", true), 1);
  EXPECT_EQ(events, std::vector<std::string>{"Done"});
  // The source total is still 0, so the next call counts again.
  EXPECT_EQ(control.getRecordCountInResultsForTable("none", true), 1);
  EXPECT_EQ(events.size(), 2u);
}
