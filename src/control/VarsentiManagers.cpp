// Varsenti: the two database-side managers and the published result collections.
#include "varsentix/control/Varsenti.h"

namespace varsentix {
namespace {

// The manager in member, a fresh one (not initialised) when member is empty.
vb::Ref<clsDBManager> createdOnFirstUse(vb::Ref<clsDBManager>& member) {
  if (member.isNothing()) member = vb::Ref<clsDBManager>::make();
  return member;
}

}  // namespace

vb::Ref<clsDBManager> Varsenti::getMasterDataManager() { return createdOnFirstUse(masterDataManager_); }

vb::Ref<clsDBManager> Varsenti::getSourceDataManager() { return createdOnFirstUse(sourceDataManager_); }

void Varsenti::setMasterDataManager(const vb::Ref<clsDBManager>& masterDataManagerIn) {
  masterDataManager_ = masterDataManagerIn;
}

void Varsenti::setSourceDataManager(const vb::Ref<clsDBManager>& sourceDataManagerIn) {
  sourceDataManager_ = sourceDataManagerIn;
}

void Varsenti::setMasterResultsFromDataManager(const vb::Ref<clsDBManager>& masterDataManagerIn) {
  masterResults_ = masterDataManagerIn->getResults();
}

void Varsenti::setSourceResultsFromDataManager(const vb::Ref<clsDBManager>& sourceDataManagerIn) {
  sourceResults_ = sourceDataManagerIn->getResults();
}

void Varsenti::setMasterResultSets(const Results& masterResultsIn) { masterResults_ = masterResultsIn; }

void Varsenti::setSourceResults(const Results& sourceResultsIn) { sourceResults_ = sourceResultsIn; }

void Varsenti::setMasterFieldList(const std::string& fieldListIn) {
  getMasterDataManager()->setFieldList(fieldListIn);
}

void Varsenti::swapValues() {
  vb::Ref<clsDBManager> formerMaster = getMasterDataManager();
  vb::Ref<clsDBManager> formerSource = getSourceDataManager();
  setMasterDataManager(formerSource);
  setSourceDataManager(formerMaster);
  // The published masterResults / sourceResults are deliberately not swapped.
}

void Varsenti::resetDataManagers() {
  vb::Ref<clsDBManager> master = getMasterDataManager();
  vb::Ref<clsDBManager> source = getSourceDataManager();
  master->resetResult();
  source->resetResult();
}

}  // namespace varsentix
