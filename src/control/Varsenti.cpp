// Varsenti: creation and the private file helper.
#include "varsentix/control/Varsenti.h"

#include "varsentix/datasource/ModDNS.h"
#include "varsentix/datasource/modUtilityFile.h"

namespace varsentix {

Varsenti::Varsenti() {
  indexErrorMessage_ = "Error index is greater then results returned";
  showDifferencesOnly_ = false;
  currentProgressCount_ = 1;
  currentProgressCountMax_ = 1;
  currentTableName_ = "";
  totalRecordsForTable_ = -1;
  currentRecordCountMaster_ = 0;
  currentRecordCountSource_ = 0;
  // Rebuilds the library-wide data-source list, so that the DSN queries answer at once.
  ModDNS::loadODBCDataSources();
}

// The managers and result collections go with the control; nothing else to release.
Varsenti::~Varsenti() = default;

void Varsenti::deleteFileIfExists(const std::string& path) {
  if (modUtilityFile::fileExists(path)) modUtilityFile::deleteFileWithRetry(path);
}

}  // namespace varsentix
