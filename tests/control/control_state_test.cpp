// The control's state: option properties, data managers, swapValues and resetDataManagers.
#include <gtest/gtest.h>
#include <pthread.h>

#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix {
namespace {

using Results = Varsenti::Results;

Results collectionWithRows(int rows) {
  auto results = Results::make();
  for (int i = 0; i < rows; ++i) results->Add(vb::Ref<clsResultSet>::make());
  return results;
}

TEST(ControlState, FreshControlHasEveryOptionOff) {
  Varsenti control;
  EXPECT_FALSE(control.compareTables());
  EXPECT_FALSE(control.compareTableDataTypes());
  EXPECT_FALSE(control.compareFieldLengths());
  EXPECT_FALSE(control.ShowSameTables());
  EXPECT_FALSE(control.showDifferencesOnly());
  EXPECT_FALSE(control.showDataOnly());
  EXPECT_FALSE(control.saveToXML());
  EXPECT_FALSE(control.logErrors());
  EXPECT_EQ(control.pathForErrLog(), "");
  EXPECT_EQ(control.getErrorMessagesForLog(), "");
}

TEST(ControlState, MasterDatabaseResultsIsNothingBeforeAnyCompare) {
  Varsenti control;
  EXPECT_TRUE(control.getMasterDatabaseResults().isNothing());
  EXPECT_TRUE(control.getSourceDatabaseResults().isNothing());
  EXPECT_TRUE(control.results.isNothing());
}

TEST(ControlState, OptionPropertiesStoreAndReportBack) {
  Varsenti control;
  control.compareTables(true);
  control.compareTableDataTypes(true);
  control.compareFieldLengths(true);
  control.ShowSameTables(true);
  control.showDifferencesOnly(true);
  control.showDataOnly(true);
  control.logErrors(true);
  EXPECT_TRUE(control.compareTables());
  EXPECT_TRUE(control.compareTableDataTypes());
  EXPECT_TRUE(control.compareFieldLengths());
  EXPECT_TRUE(control.ShowSameTables());
  EXPECT_TRUE(control.showDifferencesOnly());
  EXPECT_TRUE(control.showDataOnly());
  EXPECT_TRUE(control.logErrors());
  control.compareTables(false);
  control.showDifferencesOnly(false);
  EXPECT_FALSE(control.compareTables());
  EXPECT_FALSE(control.showDifferencesOnly());
  EXPECT_TRUE(control.compareTableDataTypes());  // the others keep their values
}

TEST(ControlState, SetterTwinsStoreLikeTheirProperties) {
  Varsenti control;
  control.setshowDifferencesOnly(true);
  control.setShowDataOnly(true);
  control.setLogErrors(true);
  EXPECT_TRUE(control.showDifferencesOnly());
  EXPECT_TRUE(control.showDataOnly());
  EXPECT_TRUE(control.logErrors());
  control.setshowDifferencesOnly(false);
  control.setShowDataOnly(false);
  control.setLogErrors(false);
  EXPECT_FALSE(control.showDifferencesOnly());
  EXPECT_FALSE(control.showDataOnly());
  EXPECT_FALSE(control.logErrors());
}

TEST(ControlState, SaveToXMLIgnoresWhatItIsSetTo) {
  Varsenti control;
  control.saveToXML(true);
  EXPECT_FALSE(control.saveToXML());
  control.saveToXML(true);
  control.saveToXML(false);
  EXPECT_FALSE(control.saveToXML());
}

// Runs the call and returns the error number it failed with (0 when it did not fail).
template <class Call>
int32_t errorNumberOf(Call&& call) {
  try {
    call();
  } catch (const vb::VBError& e) {
    return e.number();
  }
  return 0;
}

TEST(ControlState, PathForErrLogLetFailsWithOutOfStackSpaceAndStoresNothing) {
  Varsenti control;
  try {
    control.pathForErrLog("/var/log/varsentix.log");
    FAIL() << "the let of pathForErrLog returned";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), 28);
    EXPECT_EQ(e.description(), "Out of stack space");
  }
  EXPECT_EQ(control.pathForErrLog(), "");
}

TEST(ControlState, SetPathForErrLogFailsTheSameWayAndStoresNothing) {
  Varsenti control;
  EXPECT_EQ(errorNumberOf([&] { control.setPathForErrLog("/tmp/errors.log"); }), 28);
  EXPECT_EQ(control.pathForErrLog(), "");
  EXPECT_EQ(errorNumberOf([&] { control.setPathForErrLog(""); }), 28);
  EXPECT_EQ(control.pathForErrLog(), "");
}

TEST(ControlState, PathForErrLogFailsEveryTimeAndTheControlGoesOnWorking) {
  Varsenti control;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(errorNumberOf([&] { control.pathForErrLog("x"); }), 28);
  }
  control.setLogErrors(true);
  EXPECT_TRUE(control.logErrors());
  EXPECT_EQ(control.pathForErrLog(), "");
}

// The failed let must stay a failed call on a thread with a small stack, too.
TEST(ControlState, PathForErrLogFailsCleanlyOnASmallThreadStack) {
  struct Outcome {
    Varsenti* control;
    int32_t number = 0;
  } outcome{new Varsenti};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* argument) -> void* {
                  auto* o = static_cast<Outcome*>(argument);
                  o->number = errorNumberOf([&] { o->control->pathForErrLog(std::string(200, 'p')); });
                  return nullptr;
                },
                &outcome),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(outcome.number, 28);
  EXPECT_EQ(outcome.control->pathForErrLog(), "");
  delete outcome.control;
}

TEST(ControlState, DataManagersAreCreatedOnFirstUseAndKept) {
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  vb::Ref<clsDBManager> source = control.getSourceDataManager();
  ASSERT_FALSE(master.isNothing());
  ASSERT_FALSE(source.isNothing());
  EXPECT_FALSE(master == source);
  EXPECT_TRUE(control.getMasterDataManager() == master);
  EXPECT_TRUE(control.getSourceDataManager() == source);
}

TEST(ControlState, ManagersGivenByTheHostAreNotInitialised) {
  Varsenti control;
  auto master = vb::Ref<clsDBManager>::make();
  master->setTableName("Invoice");
  master->setConnectionString("Provider=SQLite;Data Source=a.db");
  control.setMasterDataManager(master);
  EXPECT_TRUE(control.getMasterDataManager() == master);
  EXPECT_EQ(control.getMasterDataManager()->getTableName(), "Invoice");
  EXPECT_EQ(control.getMasterDataManager()->getConnectionString(), "Provider=SQLite;Data Source=a.db");
}

TEST(ControlState, SettingAManagerToNothingMakesTheNextUseCreateAFreshOne) {
  Varsenti control;
  vb::Ref<clsDBManager> first = control.getSourceDataManager();
  first->setTableName("Track");
  control.setSourceDataManager(nullptr);
  vb::Ref<clsDBManager> second = control.getSourceDataManager();
  ASSERT_FALSE(second.isNothing());
  EXPECT_FALSE(second == first);
  EXPECT_EQ(second->getTableName(), "");
}

TEST(ControlState, ResultsFromDataManagerShareTheManagersCollection) {
  Varsenti control;
  auto master = vb::Ref<clsDBManager>::make();
  auto source = vb::Ref<clsDBManager>::make();
  control.setMasterResultsFromDataManager(master);
  control.setSourceResultsFromDataManager(source);
  EXPECT_TRUE(control.getMasterDatabaseResults() == master->getResults());
  EXPECT_TRUE(control.getSourceDatabaseResults() == source->getResults());
  master->getResults()->Add(vb::Ref<clsResultSet>::make());
  EXPECT_EQ(control.getMasterDatabaseResults()->Count(), 1);  // shared, not copied
  EXPECT_EQ(control.getSourceDatabaseResults()->Count(), 0);
}

TEST(ControlState, ResultsFromANothingManagerFailWithObjectNotSet) {
  Varsenti control;
  EXPECT_EQ(errorNumberOf([&] { control.setMasterResultsFromDataManager(nullptr); }), 91);
  EXPECT_EQ(errorNumberOf([&] { control.setSourceResultsFromDataManager(nullptr); }), 91);
  EXPECT_TRUE(control.getMasterDatabaseResults().isNothing());
}

TEST(ControlState, ResultSetsGivenByTheHostAreStoredByReference) {
  Varsenti control;
  Results master = collectionWithRows(2);
  Results source = collectionWithRows(3);
  control.setMasterResultSets(master);
  control.setSourceResults(source);
  EXPECT_TRUE(control.getMasterDatabaseResults() == master);
  EXPECT_TRUE(control.getSourceDatabaseResults() == source);
  control.setMasterResultSets(nullptr);
  EXPECT_TRUE(control.getMasterDatabaseResults().isNothing());
}

TEST(ControlState, SwapValuesOnAFreshControlCreatesBothManagersAndSwapsThem) {
  Varsenti control;
  Results published = collectionWithRows(1);
  control.setMasterResultSets(published);
  control.swapValues();
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  vb::Ref<clsDBManager> source = control.getSourceDataManager();
  ASSERT_FALSE(master.isNothing());
  ASSERT_FALSE(source.isNothing());
  EXPECT_FALSE(master == source);
  EXPECT_TRUE(control.getMasterDatabaseResults() == published);
  EXPECT_TRUE(control.getSourceDatabaseResults().isNothing());
}

TEST(ControlState, SwapValuesExchangesTheManagersButNotThePublishedResults) {
  Varsenti control;
  auto m = vb::Ref<clsDBManager>::make();
  auto s = vb::Ref<clsDBManager>::make();
  control.setMasterDataManager(m);
  control.setSourceDataManager(s);
  Results masterResults = collectionWithRows(2);
  Results sourceResults = collectionWithRows(5);
  control.setMasterResultSets(masterResults);
  control.setSourceResults(sourceResults);
  control.swapValues();
  EXPECT_TRUE(control.getMasterDataManager() == s);
  EXPECT_TRUE(control.getSourceDataManager() == m);
  EXPECT_TRUE(control.getMasterDatabaseResults() == masterResults);
  EXPECT_TRUE(control.getSourceDatabaseResults() == sourceResults);
  control.swapValues();
  EXPECT_TRUE(control.getMasterDataManager() == m);
  EXPECT_TRUE(control.getSourceDataManager() == s);
}

TEST(ControlState, ResetDataManagersEmptiesOnlyTheManagersResults) {
  Varsenti control;
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  vb::Ref<clsDBManager> source = control.getSourceDataManager();
  master->getResults()->Add(vb::Ref<clsResultSet>::make());
  source->getResults()->Add(vb::Ref<clsResultSet>::make());
  control.setMasterResultsFromDataManager(master);
  control.setSourceResultsFromDataManager(source);
  Results publishedMaster = control.getMasterDatabaseResults();
  control.showDifferencesOnly(true);
  master->setTableName("Album");

  control.resetDataManagers();

  EXPECT_EQ(master->getResults()->Count(), 0);
  EXPECT_EQ(source->getResults()->Count(), 0);
  EXPECT_FALSE(master->getResults() == publishedMaster);  // a new collection
  // The control's own references and options stay as they were.
  EXPECT_TRUE(control.getMasterDatabaseResults() == publishedMaster);
  EXPECT_EQ(control.getMasterDatabaseResults()->Count(), 1);
  EXPECT_EQ(control.getSourceDatabaseResults()->Count(), 1);
  EXPECT_TRUE(control.showDifferencesOnly());
  EXPECT_EQ(master->getTableName(), "Album");
  EXPECT_TRUE(control.getMasterDataManager() == master);
}

TEST(ControlState, ResetDataManagersOnAFreshControlCreatesTheManagers) {
  Varsenti control;
  control.resetDataManagers();
  EXPECT_EQ(control.getMasterDataManager()->getResults()->Count(), 0);
  EXPECT_EQ(control.getSourceDataManager()->getResults()->Count(), 0);
  EXPECT_FALSE(control.getMasterDataManager() == control.getSourceDataManager());
}

TEST(ControlState, SetMasterFieldListCreatesTheMasterOnlyAndSetsItsFieldList) {
  Varsenti control;
  control.setMasterFieldList("TrackId,Name,Composer");
  vb::Ref<clsDBManager> master = control.getMasterDataManager();
  EXPECT_EQ(master->getFieldList(), "TrackId,Name,Composer");
  vb::Ref<clsDBManager> source = control.getSourceDataManager();
  EXPECT_FALSE(source == master);
  EXPECT_EQ(source->getFieldList(), "");
}

TEST(ControlState, SetMasterFieldListUsesTheManagerAlreadyThere) {
  Varsenti control;
  auto master = vb::Ref<clsDBManager>::make();
  control.setMasterDataManager(master);
  control.setMasterFieldList("A,B");
  EXPECT_EQ(master->getFieldList(), "A,B");
}

TEST(ControlState, ResultsMemberIsKeptForTheHostAndTouchedByNothing) {
  Varsenti control;
  Results mine = collectionWithRows(4);
  control.results = mine;
  control.swapValues();
  control.resetDataManagers();
  control.setMasterResultSets(collectionWithRows(1));
  EXPECT_TRUE(control.results == mine);
  EXPECT_EQ(control.results->Count(), 4);
}

TEST(ControlState, EachControlHasItsOwnState) {
  Varsenti first;
  Varsenti second;
  first.showDifferencesOnly(true);
  first.setMasterFieldList("X");
  EXPECT_FALSE(second.showDifferencesOnly());
  EXPECT_FALSE(first.getMasterDataManager() == second.getMasterDataManager());
  EXPECT_EQ(second.getMasterDataManager()->getFieldList(), "");
}

}  // namespace
}  // namespace varsentix
