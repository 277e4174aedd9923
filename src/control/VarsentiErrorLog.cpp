// Varsenti: the error log read-out of one side.
#include <string_view>

#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"

namespace varsentix {

std::string Varsenti::getErrorLogs(const bool& isMaster) {
  vb::Ref<clsDBManager> side = isMaster ? getMasterDataManager() : getSourceDataManager();
  // Built once at its full size: after a record compare the SQL message holds one outcome per
  // record, tens of megabytes for a large table.
  const std::string connection = side->getReturnConnectionMessage();
  const MessageText& sql = side->returnSQLMessageText();
  const std::string general = side->getReturnMessage();
  static constexpr std::string_view kConnection = "Connection issues =", kDatabase = "Database issues ",
                                    kGeneral = "General Issues ";
  std::string logs;
  logs.reserve(kConnection.size() + connection.size() + kDatabase.size() + sql.size() + kGeneral.size() +
               general.size());
  logs += kConnection;
  logs += connection;
  logs += kDatabase;
  sql.appendTo(logs);
  logs += kGeneral;
  logs += general;
  return logs;
}

}  // namespace varsentix
