// Varsenti: the machine's ODBC data sources and the connection strings built from them.
#include "varsentix/control/Varsenti.h"
#include "varsentix/datasource/ModDNS.h"

namespace varsentix {

int16_t Varsenti::getODBCConnectionCount() const { return ModDNS::getDataSourceCount(); }

std::string Varsenti::getODBCConnection(const int16_t& index) const {
  return ModDNS::getDataSourceEntry(index);
}

std::string Varsenti::getDSNName(std::string& dsNameIn) const { return ModDNS::parseDSNName(dsNameIn); }

std::string Varsenti::getDriverName(std::string& dsNameIn) const {
  return ModDNS::parseDriverName(dsNameIn);
}

std::string Varsenti::getOLEDBConnectionFromPath(std::string& pathtoDB, const bool& useDSN) {
  if (useDSN) return getConncectionStringFromDSN(pathtoDB);
  return ModDNS::jetPrefix + pathtoDB;
}

std::string Varsenti::getConncectionStringFromDSN(std::string& dsnIn) {
  return ModDNS::buildConnectionStringFromDSN(dsnIn);
}

std::string Varsenti::addUserIDToConnectionString(const std::string& userID,
                                                  std::string& connectionString) {
  return ModDNS::addUserIDToConnectionString(userID, connectionString);
}

std::string Varsenti::addPasswordToConnectionString(const std::string& passWordIn,
                                                    std::string& connectionString) {
  return ModDNS::addPasswordToConnectionString(passWordIn, connectionString);
}

}  // namespace varsentix
