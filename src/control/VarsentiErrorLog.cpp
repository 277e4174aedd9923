// Varsenti: the error log read-out of one side.
#include "varsentix/control/Varsenti.h"

namespace varsentix {

std::string Varsenti::getErrorLogs(const bool& isMaster) {
  vb::Ref<clsDBManager> side = isMaster ? getMasterDataManager() : getSourceDataManager();
  return "Connection issues =" + side->getReturnConnectionMessage() + "Database issues " +
         side->getReturnSQLMessage() + "General Issues " + side->getReturnMessage();
}

}  // namespace varsentix
