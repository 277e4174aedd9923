// clsDBManager: the side's connection and its table list.
#include "dbside/Outcome.h"
#include "platform/ado/ConnectionString.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix {

void clsDBManager::openDatabaseConnection() {
  const std::string previous = returnConnectionMessage_;
  const std::string outcome = data().getAccessConnections(connectionString_);
  returnConnectionMessage_ = previous + " " + outcome + "||";
}

void clsDBManager::openDatabaseSchema() {
  try {
    vb::Ref<ado::Connection> connection = data().getConnection();
    databaseSchema_ = connection->OpenSchema(ado::adSchemaTables);
  } catch (...) {
    returnConnectionMessage_ += dbside::numberAndDescription(std::current_exception());
    returnConnectionMessage_ +=
        " #5 Error when attempting to open the database schema for the following connection :" +
        ado::detail::ConnectionString::maskPasswords(connectionString_) + " ||";
  }
}

void clsDBManager::closeConnection() {
  vb::ResumeNext onErrorResumeNext;
  onErrorResumeNext([&] { data().CloseAccess(); });
}

vb::Ref<ado::Connection> clsDBManager::getDatabaseConnection() { return data().getConnection(); }

}  // namespace varsentix
