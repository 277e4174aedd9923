#include "varsentix/platform/ado/Connection.h"

#include <cctype>

#include "platform/ado/ConnectionString.h"
#include "platform/ado/MemoryCursor.h"
#include "platform/ado/Provider.h"
#include "platform/ado/RecordsetImpl.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado {
namespace {

// The first word of a statement, lower case, after blanks, comments and opening parentheses.
std::string firstKeyword(const std::string& sql) {
  size_t i = 0;
  while (i < sql.size()) {
    char c = sql[i];
    if (std::isspace(static_cast<unsigned char>(c)) || c == '(') {
      ++i;
    } else if (sql.compare(i, 2, "--") == 0) {
      while (i < sql.size() && sql[i] != '\n') ++i;
    } else if (sql.compare(i, 2, "/*") == 0) {
      size_t close = sql.find("*/", i + 2);
      i = close == std::string::npos ? sql.size() : close + 2;
    } else {
      break;
    }
  }
  std::string word;
  while (i < sql.size() && std::isalpha(static_cast<unsigned char>(sql[i]))) word += sql[i++];
  return vb::LCase(word);
}

bool returnsRows(const std::string& sql) {
  std::string word = firstKeyword(sql);
  return word == "select" || word == "with" || word == "values" || word == "pragma" ||
         word == "explain" || word == "show" || word == "describe" || word == "table";
}

}  // namespace

Connection::Connection() = default;
Connection::~Connection() = default;

void Connection::Open(const std::string& connectionString, const std::string& userID,
                      const std::string& password, int32_t /*options*/) {
  if (session_) vb::raiseError(vb::errnum::ObjectOpen);
  auto parsed = detail::ConnectionString::parse(connectionString);
  auto session = detail::openSession(parsed, userID, password);
  // A read-only mode asked before the open holds from the first statement on.
  if (readOnly_) session->setReadOnly(true);
  session_ = std::move(session);
  connectionString_ = connectionString;
}

void Connection::SetReadOnly(bool readOnly) {
  if (session_) session_->setReadOnly(readOnly);
  readOnly_ = readOnly;
}

ReadOnlyScope::ReadOnlyScope(vb::Ref<Connection> connection, bool readOnly)
    : connection_(std::move(connection)) {
  if (connection_.isNothing()) return;
  previous_ = connection_->ReadOnly();
  if (previous_ == readOnly) {
    connection_ = {};
    return;
  }
  try {
    connection_->SetReadOnly(readOnly);
  } catch (...) {
    connection_ = {};
    throw;
  }
}

ReadOnlyScope::~ReadOnlyScope() {
  if (connection_.isNothing()) return;
  try {
    connection_->SetReadOnly(previous_);
  } catch (...) {
    // The mode stays on: writes are refused by the engine, which says so when one is tried.
  }
}

void Connection::Close() {
  if (!session_) vb::raiseError(vb::errnum::ObjectClosed);
  session_.reset();
}

ObjectStateEnum Connection::State() const { return session_ ? adStateOpen : adStateClosed; }

std::string Connection::Provider() const {
  if (session_) return session_->providerName();
  return detail::chosenProviderName(detail::ConnectionString::parse(connectionString_));
}

EngineFamily Connection::Engine() const {
  return session_ ? session_->engineFamily() : EngineFamily::Other;
}

std::optional<double> Connection::NumericLiteralValue(const std::string& literal) {
  return session_ ? session_->numericLiteralValue(literal) : std::nullopt;
}

std::optional<double> Connection::DoubleLiteralValue(double value) {
  return session_ ? session_->doubleLiteralValue(value) : std::nullopt;
}

bool Connection::SortsForOrder(const std::string& sql) {
  if (!session_) return false;
  try {
    return session_->sortsForOrder(sql);
  } catch (...) {
    return false;  // a question, not a statement of the caller's: it fails as "no"
  }
}

TextBytes Connection::TextComparedByBytes(const std::string& table, const std::string& column) {
  if (!session_) return TextBytes::Unknown;
  try {
    return session_->textComparedByBytes(table, column);
  } catch (...) {
    return TextBytes::Unknown;  // a question, as above
  }
}

vb::Ref<Connection> Connection::OpenJoinedReader(Connection& other) {
  if (!session_ || !other.session_) return {};
  auto joined = session_->openJoinedReader(*other.session_);
  if (!joined) return {};
  auto connection = vb::Ref<Connection>::make();
  connection->session_ = std::move(joined);
  connection->connectionString_ = connectionString_;
  connection->readOnly_ = true;  // the reader never writes
  return connection;
}

detail::ProviderSession& Connection::session() {
  if (!session_) vb::raiseError(vb::errnum::ObjectClosed);
  return *session_;
}

vb::Ref<Recordset> Connection::Execute(const std::string& commandText, int32_t* recordsAffected,
                                       int32_t options) {
  detail::ProviderSession& s = session();
  auto result = vb::Ref<Recordset>::make();
  if (options != adExecuteNoRecords && returnsRows(commandText)) {
    auto cursor = s.query(commandText);
    std::shared_ptr<Connection> self = weak_from_this().lock();  // null for a stack object
    auto reopen = [this, self, commandText] { return session().query(commandText); };
    result->impl().openStreaming(self, commandText, std::move(cursor), reopen, commandText, "");
    if (recordsAffected != nullptr) *recordsAffected = -1;
    return result;
  }
  int64_t affected = s.execute(commandText);
  if (recordsAffected != nullptr)
    *recordsAffected = static_cast<int32_t>(std::min<int64_t>(affected, INT32_MAX));
  return result;
}

vb::Ref<Recordset> Connection::OpenSchema(SchemaEnum schema,
                                          const std::vector<vb::Variant>& restrictions) {
  auto cursor = session().openSchema(schema, restrictions);
  std::vector<detail::Row> rows;
  detail::Row row;
  while (cursor->fetch(row)) rows.push_back(row);
  auto result = vb::Ref<Recordset>::make();
  detail::RecordsetImpl& impl = result->impl();
  impl.cursorType = adOpenStatic;
  impl.lockType = adLockReadOnly;
  impl.cursorLocation = adUseClient;
  impl.openInMemory(nullptr, "", cursor->columns(), std::move(rows), "");
  return result;
}

}  // namespace varsentix::ado
