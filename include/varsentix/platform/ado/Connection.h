#pragma once
// ADO Connection: one open session with a database through a provider chosen by the
// connection string's Provider key (SQLite, MSDASQL, Microsoft.Jet.OLEDB.4.0).
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado {

class Recordset;
namespace detail {
class ProviderSession;
}

class Connection : public std::enable_shared_from_this<Connection> {
 public:
  Connection();
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Opens the session. Raises 3705 when already open; a provider failure raises the provider's
  // error (number, engine text, SQLSTATE and native code). An empty user or password leaves the
  // connection string's own User ID / Password in force.
  void Open(const std::string& connectionString, const std::string& userID = "",
            const std::string& password = "", int32_t options = -1);
  // Raises 3704 when the connection is closed.
  void Close();
  ObjectStateEnum State() const;
  const std::string& ConnectionString() const { return connectionString_; }
  // The provider's name as the connection string named it ("SQLite" when none was named).
  std::string Provider() const;

  // The engine behind the open connection (Other when closed or not known).
  EngineFamily Engine() const;
  // The number the engine makes of the unquoted numeric literal text in a statement, when the
  // provider can tell it exactly without running one; nullopt otherwise or when closed.
  std::optional<double> NumericLiteralValue(const std::string& literal);
  // NumericLiteralValue(vb::CStr(value)): what the engine makes of the double's shortest text.
  std::optional<double> DoubleLiteralValue(double value);
  // A second, read-only connection to this connection's database with other's database
  // attached under the name "varsentix_other", so that one statement can read both sides (a
  // comparison pushed into the engine). Nothing when the provider cannot give one: other
  // engines, databases not kept in files, either side inside a transaction.
  vb::Ref<Connection> OpenJoinedReader(Connection& other);
  // Whether the engine sorts the rows of sql, a query with an order, to give them in it; false
  // when it does not, when the provider cannot tell, and when the statement fails.
  bool SortsForOrder(const std::string& sql);
  // How far the engine compares the texts of table's column by their UTF-8 bytes (see TextBytes).
  // Unknown when the provider cannot tell (only SQLite's own and PostgreSQL's can), when the
  // column is not found and when asking fails.
  TextBytes TextComparedByBytes(const std::string& table, const std::string& column);
  // Runs one statement. Returns an open record set when the statement produces rows, a closed
  // one otherwise. recordsAffected receives the number of rows a write touched (-1 otherwise).
  vb::Ref<Recordset> Execute(const std::string& commandText, int32_t* recordsAffected = nullptr,
                             int32_t options = adOptionUnspecified);
  // Schema rowsets 20 (tables), 27 (foreign keys), 28 (primary keys). A restriction that is
  // Empty (or the empty text) does not restrict.
  vb::Ref<Recordset> OpenSchema(SchemaEnum schema, const std::vector<vb::Variant>& restrictions = {});

  // Read-only mode, beyond ADO: while it is on, the engine itself refuses every statement that
  // would change the database through this connection (SQLite's query_only, a read-only session
  // on PostgreSQL and MariaDB; Access files are read-only throughout). What a compare runs in.
  // Set on a closed connection, it takes effect when the connection opens (an open that cannot
  // enter it fails). Raises the engine's error when the engine refuses the change. Engines
  // without such a mode are left as they are. A connection opened with Mode=Read in its
  // connection string (ADO's adModeRead) is read-only throughout, whatever is set here.
  void SetReadOnly(bool readOnly);
  // What SetReadOnly set last (false at first).
  bool ReadOnly() const { return readOnly_; }

  // REQUIRES State() == adStateOpen. The provider session, for the record-set layer itself.
  detail::ProviderSession& session();

 private:
  std::string connectionString_;
  std::unique_ptr<detail::ProviderSession> session_;
  bool readOnly_ = false;
};

// Sets a connection's read-only mode for a scope (see Connection::SetReadOnly) and gives it back
// the mode it had at the scope's end. Nothing for Nothing, nor for a connection in that mode.
class ReadOnlyScope {
 public:
  ReadOnlyScope(vb::Ref<Connection> connection, bool readOnly);
  ~ReadOnlyScope();  // a failure to give the mode back is passed over
  ReadOnlyScope(const ReadOnlyScope&) = delete;
  ReadOnlyScope& operator=(const ReadOnlyScope&) = delete;

 private:
  vb::Ref<Connection> connection_;  // Nothing when the mode was left as it was
  bool previous_ = false;
};

}  // namespace varsentix::ado
