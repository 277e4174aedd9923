// The control's compare entry points: each prepares the two sides, runs the engine in its fixed
// order and, when both sides hold rows, publishes their result collections. A compare only
// reads: the sides' connections are read-only while it runs (CompareReadOnly).
#include "control/CompareReadOnly.h"
#include "engine/Engine.h"
#include "engine/Unbracketable.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/ui/Hooks.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {
namespace {

const std::string kReadingOriginal = "Reading Original";
const std::string kReadingModified = "Reading Modified";

bool bothSidesHaveRows(clsDBManager& master, clsDBManager& source) {
  const int32_t masterRows = master.getResults()->Count();
  const int32_t sourceRows = source.getResults()->Count();
  return masterRows >= 1 && sourceRows >= 1;
}

vb::Ref<clsDBManager> freshManager() { return vb::Ref<clsDBManager>::make(); }

}  // namespace

void Varsenti::clearSideMessages() {
  for (auto side : {getMasterDataManager(), getSourceDataManager()}) {
    side->setReturnConnectionMessage("");
    side->setReturnMessage("");
    side->setReturnSQLMessage("");
  }
}

void Varsenti::publish(clsDBManager& master, clsDBManager& source) {
  masterResults_ = master.getResults();
  sourceResults_ = source.getResults();
}

void Varsenti::recordDriverFailure(const std::exception_ptr& failure, const std::string& numberedText) {
  const vb::VBError error = vb::toVBError(failure);
  const std::string cause = " " + vb::CStr(error.number()) + " " + error.description();
  auto master = getMasterDataManager();
  auto source = getSourceDataManager();
  master->setReturnMessage(master->getReturnMessage() + cause);
  master->setReturnMessage(master->getReturnMessage() + numberedText + " ||");
  source->setReturnMessage(source->getReturnMessage() + cause);
  // The master's text is replaced by the source's plus the tag.
  master->setReturnMessage(source->getReturnMessage() + numberedText + " ||");
}

void Varsenti::saveSidesToXml(clsDBManager& master, clsDBManager& source) {
  for (clsDBManager* side : {&master, &source}) {
    if (side->getSaveToXml()) {
      deleteFileIfExists(side->getXmlFileName());
      engine::saveTableRecordsToXML(*side);
    }
  }
}

bool Varsenti::getTables(const std::string& masterConnectionString,
                         const std::string& sourceConnectionString) {
  control::CompareReadOnly readOnly;
  vb::ResumeNext onError;
  bool result = false;
  onError([&] { getMasterDataManager()->initializeValues(); });
  onError([&] { readOnly.cover(*getMasterDataManager()); });
  onError([&] { getMasterDataManager()->setConnectionString(masterConnectionString); });
  onError([&] { getMasterDataManager()->openDatabaseConnection(); });
  onError([&] { getSourceDataManager()->initializeValues(); });
  onError([&] { readOnly.cover(*getSourceDataManager()); });
  onError([&] { getSourceDataManager()->setConnectionString(sourceConnectionString); });
  onError([&] { getSourceDataManager()->openDatabaseConnection(); });
  onError([&] { engine::openAllTableStructures(*getMasterDataManager()); });
  onError([&] { engine::openAllTableStructures(*getSourceDataManager()); });
  onError([&] { result = bothSidesHaveRows(*getMasterDataManager(), *getSourceDataManager()); });
  return result;
}

bool Varsenti::beginFullDatabaseCompare(const std::string& masterConnectionString,
                                        const std::string& sourceConnectionString,
                                        const bool& listObjectsOnly) {
  try {
    control::CompareReadOnly readOnly;
    auto master = getMasterDataManager();
    master->initializeValues();
    readOnly.cover(*master);
    master->setConnectionString(masterConnectionString);
    master->openDatabaseConnection();
    master->setListDBObjectsOnly(listObjectsOnly);
    auto source = getSourceDataManager();
    source->initializeValues();
    readOnly.cover(*source);
    source->setConnectionString(sourceConnectionString);
    // The source side gets the flag before its connection opens, the master side after.
    source->setListDBObjectsOnly(listObjectsOnly);
    source->openDatabaseConnection();
    const auto masterData = master->getDataManager();
    const auto sourceData = source->getDataManager();
    engine::openAllTableStructures(*master);
    engine::openAllTableStructures(*source);
    engine::compareResultStructure(*master, *source, *this, kReadingOriginal);
    engine::compareResultStructure(*source, *master, *this, kReadingModified);
    if (!bothSidesHaveRows(*master, *source)) return false;
    // The emptiness test comes before the removal: true even when nothing is left.
    if (showDifferencesOnly_) {
      engine::removeUnchangedResults(*master);
      engine::removeUnchangedResults(*source);
    }
    publish(*master, *source);
    return true;
  } catch (...) {
    recordDriverFailure(std::current_exception(),
                        " #77 Error occurred while attempting to do a full compare databases in component");
    return false;
  }
}

bool Varsenti::beginDatabaseCompareWithConnection(const vb::Ref<ado::Connection>& masterConnection,
                                                  const vb::Ref<ado::Connection>& sourceConnection) {
  // Compares nothing and returns false, whatever it is given.
  vb::ResumeNext onError;
  onError([&] { clearSideMessages(); });
  auto master = freshManager();
  auto source = freshManager();
  onError([&] { master->initializeValues(); });
  onError([&] { source->initializeValues(); });
  onError([&] { master->getDataManager()->setConnection(masterConnection); });
  onError([&] { source->getDataManager()->setConnection(sourceConnection); });
  return false;
}

bool Varsenti::beginTableFullDataCompare(const std::string& masterConnectionString,
                                         const std::string& sourceConnectionString,
                                         const std::string& tableName, const std::string& tableType) {
  try {
    clearSideMessages();
    control::CompareReadOnly readOnly;
    auto master = getMasterDataManager();
    master->initializeValues();
    readOnly.cover(*master);
    master->setConnectionString(masterConnectionString);
    master->setTableName(tableName);
    master->setTableDataType(tableType);
    auto source = getSourceDataManager();
    source->initializeValues();
    readOnly.cover(*source);
    source->setConnectionString(sourceConnectionString);
    source->setTableName(tableName);
    source->setTableDataType("Table");  // the caller's type is for the master side only
    engine::openTableStructure(*master);
    engine::openTableStructure(*source);
    engine::compareResultStructure(*master, *source, *this, kReadingOriginal);
    engine::compareResultStructure(*source, *master, *this, kReadingModified);
    engine::compareTableRecordsBothWays(*master, *source);
    // Nothing is published: the rows stay in the control's managers.
    return bothSidesHaveRows(*master, *source);
  } catch (...) {
    recordDriverFailure(std::current_exception(),
                        " #76 Error occurred while attempting to compare databases in component");
    return false;
  }
}

bool Varsenti::beginTablebaseCompare(const std::string& masterConnectionString,
                                     const std::string& sourceConnectionString,
                                     const std::string& tableName, const std::string& tableType) {
  (void)tableType;  // ignored: both sides are "TABLE"
  try {
    clearSideMessages();
    control::CompareReadOnly readOnly;
    auto master = freshManager();
    auto source = freshManager();
    master->initializeValues();
    readOnly.cover(*master);
    master->setConnectionString(masterConnectionString);
    master->setTableName(tableName);
    master->setTableDataType("TABLE");
    source->initializeValues();
    readOnly.cover(*source);
    master->openDatabaseConnection();
    source->setConnectionString(sourceConnectionString);
    source->setTableName(tableName);
    source->setTableDataType("TABLE");
    source->openDatabaseConnection();
    engine::openTableStructure(*master);
    engine::openTableStructure(*source);
    engine::compareResultStructure(*master, *source, *this, kReadingOriginal);
    engine::compareResultStructure(*source, *master, *this, kReadingModified);
    // Its own sides go when it ends: what they could not compare is told through the control's.
    getMasterDataManager()->appendReturnSQLMessage(engine::notComparedEntries(master->getReturnSQLMessage()));
    getSourceDataManager()->appendReturnSQLMessage(engine::notComparedEntries(source->getReturnSQLMessage()));
    if (!bothSidesHaveRows(*master, *source)) return false;
    publish(*master, *source);
    return true;
  } catch (...) {
    recordDriverFailure(std::current_exception(),
                        " #76 Error occurred while attempting to compare databases in component");
    return false;
  }
}

bool Varsenti::beginTableCompareFromDBManagers(const vb::Ref<clsDBManager>& masterDatamanager,
                                               const vb::Ref<clsDBManager>& sourceDatamanager) {
  try {
    clearSideMessages();
    control::CompareReadOnly readOnly;
    readOnly.cover(*masterDatamanager);
    readOnly.cover(*sourceDatamanager);
    engine::openTableStructureFromFieldList(*masterDatamanager);
    engine::openTableStructureFromFieldList(*sourceDatamanager);
    engine::compareTableRecordsBothWays(*masterDatamanager, *sourceDatamanager);
    saveSidesToXml(*masterDatamanager, *sourceDatamanager);
    if (!bothSidesHaveRows(*masterDatamanager, *sourceDatamanager)) return false;
    publish(*masterDatamanager, *sourceDatamanager);
    return true;
  } catch (...) {
    recordDriverFailure(std::current_exception(),
                        " #75 Error occurred while attempting to compare databases in component");
    return false;
  }
}

bool Varsenti::beginTableCompareFromFieldListFromDBManager(const vb::Ref<clsDBManager>& masterDatamanager,
                                                           const vb::Ref<clsDBManager>& sourceDatamanager) {
  setMasterDataManager(masterDatamanager);
  setSourceDataManager(sourceDatamanager);
  return beginTableCompareFromFieldListFromDbManagers();
}

bool Varsenti::publishBufferedOutcome(clsDBManager& master, clsDBManager& source) {
  const int32_t masterRows = master.getResults()->Count();
  const int32_t sourceRows = source.getResults()->Count();
  if (masterRows >= 1 && sourceRows >= 1) {
    publish(master, source);
    recordsExistInSourceOnly_ = false;
    recordsExistInMasterOnly_ = false;
    return true;
  }
  if (masterRows >= 1) {
    engine::openTableStructureFromFieldList(source);  // the empty side still lists its fields
    publish(master, source);
    recordsExistInSourceOnly_ = false;
    recordsExistInMasterOnly_ = true;
    return true;
  }
  if (sourceRows >= 1) {
    engine::openTableStructureFromFieldList(master);
    publish(master, source);
    recordsExistInMasterOnly_ = false;
    recordsExistInSourceOnly_ = true;
    return true;
  }
  recordsExistInSourceOnly_ = false;
  recordsExistInMasterOnly_ = false;
  return false;
}

bool Varsenti::beginTableCompareFromFieldListFromDbManagers() {
  try {
    clearSideMessages();
    ui::DoEvents();  // the host's pending messages are processed once
    auto master = getMasterDataManager();
    auto source = getSourceDataManager();
    control::CompareReadOnly readOnly;
    readOnly.cover(*master);
    readOnly.cover(*source);
    engine::openTableStructureFromFieldList(*master);
    engine::openTableStructureFromFieldList(*source);
    engine::compareBufferedRecordsBothWays(*master, *source, *this, kReadingOriginal, kReadingModified);
    saveSidesToXml(*master, *source);
    return publishBufferedOutcome(*master, *source);
  } catch (...) {
    recordDriverFailure(std::current_exception(),
                        " #74 Error occurred while attempting to compare databases in component");
    return false;
  }
}

bool Varsenti::beginTableCompareFromFieldList(const std::string& masterConnectionString,
                                              const std::string& sourceConnectionString,
                                              const std::string& tableName, const std::string& tableType,
                                              const vb::Variant& fieldList) {
  vb::ResumeNext onError;
  bool result = false;
  onError([&] { clearSideMessages(); });
  auto master = freshManager();
  auto source = freshManager();
  const std::pair<vb::Ref<clsDBManager>*, const std::string*> sides[] = {
      {&master, &masterConnectionString}, {&source, &sourceConnectionString}};
  for (const auto& [side, connectionString] : sides) {
    onError([&] { (*side)->initializeValues(); });
    onError([&] { (*side)->setConnectionString(*connectionString); });
    onError([&] { (*side)->setTableName(tableName); });
    onError([&] { (*side)->setFieldList(fieldList.toText()); });
    onError([&] { (*side)->setTableDataType(tableType); });
  }
  onError([&] { result = beginTableCompareFromFieldListFromDBManager(master, source); });
  return result;
}

bool Varsenti::checkFieldLength(const vb::Ref<ado::Recordset>& recSet1, const vb::Ref<ado::Recordset>& recSet2,
                                const int32_t& index) {
  return recSet1->field(index).DefinedSize() == recSet2->field(index).DefinedSize();
}

}  // namespace varsentix
