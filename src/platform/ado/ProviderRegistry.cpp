// The providers' registry: each provider registers itself under its name(s) from its own file.
#include <map>
#include <mutex>

#include "platform/ado/Provider.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, ProviderFactory> factories;  // by lower-case name
};

Registry& registry() {
  static Registry instance;  // built on first use, so registrars in any file may run first
  return instance;
}

}  // namespace

std::string chosenProviderName(const ConnectionString& connection) {
  if (auto named = connection.get("Provider")) return vb::Trim(*named);
  if (connection.get("DSN") || connection.get("Driver")) return "MSDASQL";
  return "SQLite";
}

ProviderRegistrar::ProviderRegistrar(const char* providerName, ProviderFactory factory) {
  Registry& r = registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.factories[vb::LCase(providerName)] = factory;
}

std::unique_ptr<ProviderSession> openSession(const ConnectionString& connection,
                                             const std::string& userID,
                                             const std::string& password) {
  std::string name = chosenProviderName(connection);
  ProviderFactory factory = nullptr;
  {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto found = r.factories.find(vb::LCase(name));
    if (found != r.factories.end()) factory = found->second;
  }
  if (factory == nullptr) vb::raiseError(vb::errnum::ProviderNotFound);
  return factory(connection, userID, password);
}

}  // namespace varsentix::ado::detail
