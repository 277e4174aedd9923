#pragma once
// The seam between the record-set layer and the engines. One provider per engine (sqlite, odbc,
// jet) implements ProviderSession; Connection and Recordset above are unaware of which answers.
// Engine headers (sqlite3.h, sql.h, mdbtools.h) stay inside the providers' .cpp files.
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/ado/ConnectionString.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado::detail {

// What a provider knows of one result column.
struct ColumnInfo {
  std::string name;
  DataTypeEnum type = adVarWChar;
  int32_t definedSize = 0;    // ADO DefinedSize: characters for text, bytes for binary, the
                              // fixed byte size for other types
  uint8_t precision = 255;    // 255 where it does not apply
  uint8_t numericScale = 255;
  bool nullable = true;
  std::string baseTable;      // table the column comes from, empty when unknown / computed
  std::string baseColumn;     // column name in that table
};

// A forward-only stream of rows. Values arrive as Variants of the sub-type that suits the
// column's ADO type (Null for SQL NULL).
class RowCursor {
 public:
  virtual ~RowCursor() = default;
  virtual const std::vector<ColumnInfo>& columns() const = 0;
  // Reads the next row into row (resized to the column count). Returns false at the end.
  virtual bool fetch(std::vector<vb::Variant>& row) = 0;

  // Optional value-at-a-time reading, for cursors that can read one value of the current row
  // without converting the others (the record set then converts only what is read):
  // advance() steps to the next row without reading it (false at the end), valueAt(i) reads
  // value i of the row advance() or fetch() reached. Mixing the two stepping calls is allowed.
  virtual bool supportsValueAt() const { return false; }
  virtual bool advance() { return false; }
  virtual vb::Variant valueAt(size_t /*column*/) { return {}; }
  // valueAt(column) into out; cursors that can reuse out's room (its text) override it.
  virtual void valueInto(size_t column, vb::Variant& out) { out = valueAt(column); }
  // valueInto(columns[i], row[places[i]]) for every i, in one call (columns all in range).
  virtual void valuesInto(const std::vector<int32_t>& columns, const std::vector<size_t>& places,
                          std::vector<vb::Variant>& row) {
    for (size_t i = 0; i < columns.size(); ++i) valueInto(static_cast<size_t>(columns[i]), row[places[i]]);
  }

  // Watches the rows read from now on (the row stepped to already, if any, among them): whether
  // each one's value in column is stored as an integer greater than the one before, into seen
  // (Broken at the first that is not, or when reading fails; Held at the end). Distinct integers
  // have one order: a query whose rows come so returns them in the order of that column. False
  // when the cursor cannot watch (seen is left as it is).
  virtual bool watchRise(size_t /*column*/, std::shared_ptr<std::atomic<RiseSeen>> /*seen*/) { return false; }
};

// One open session. All SQL handed to a session is in the system's dialect: [bracketed]
// identifiers, '...' literals with doubled apostrophes, #...# dates for Access. The session
// translates it to its engine and refuses text holding more than one statement.
class ProviderSession {
 public:
  virtual ~ProviderSession() = default;

  // "SQLite", "MSDASQL", "Microsoft.Jet.OLEDB.4.0".
  virtual std::string providerName() const = 0;

  // Runs a statement that returns rows.
  virtual std::unique_ptr<RowCursor> query(const std::string& sql) = 0;
  // The same, for a cursor whose statement need not run before its first advance (its columns
  // are described now; a failure to run it is raised by that advance). Providers whose cursors
  // run their statement as they are made give query's.
  virtual std::unique_ptr<RowCursor> queryDeferred(const std::string& sql) { return query(sql); }
  // Runs a statement; returns rows affected (matched, for UPDATE) or -1 when not applicable.
  // A statement that returns rows may be given too: its rows are discarded.
  virtual int64_t execute(const std::string& sql) = 0;
  // Every row of a table (adCmdTable); table is the bare name.
  virtual std::unique_ptr<RowCursor> openTable(const std::string& table) = 0;
  // Number of rows the statement would return (RecordCount on demand).
  virtual int64_t countRows(const std::string& sql) = 0;

  // Schema rowsets 20, 27, 28 with the OLE DB column names; restrictions as ADO passes them.
  virtual std::unique_ptr<RowCursor> openSchema(SchemaEnum schema,
                                                const std::vector<vb::Variant>& restrictions) = 0;
  // Columns of the table's primary key in key order; empty when it has none.
  virtual std::vector<std::string> primaryKeyColumns(const std::string& table) = 0;

  // Writes. A read-only provider raises its read-only error from each of these.
  virtual void beginTransaction() = 0;
  virtual void commit() = 0;
  virtual void rollback() noexcept = 0;
  // Runs a native statement with '?' markers bound to values (typed by the columns they are
  // written to). Returns the rows affected; for UPDATE, the rows matched.
  virtual int64_t executeBound(const std::string& nativeSql, const std::vector<vb::Variant>& values,
                               const std::vector<ColumnInfo>& valueColumns) = 0;
  // The engine's quoting of an identifier for native SQL ("x" or `x`), embedded quotes doubled.
  virtual std::string quoteIdentifier(const std::string& name) const = 0;

  // The engine behind the session, as far as the provider knows it.
  virtual EngineFamily engineFamily() const { return EngineFamily::Other; }
  // The number the engine makes of an unquoted numeric literal in a statement, when the
  // provider can tell it exactly without a statement of its own; nullopt otherwise.
  virtual std::optional<double> numericLiteralValue(const std::string& /*literal*/) { return std::nullopt; }
  // The same for the literal of a double written as its shortest text (vb::CStr); providers
  // that know the answer without making the text override it.
  virtual std::optional<double> doubleLiteralValue(double value) { return numericLiteralValue(vb::CStr(value)); }
  // A second, read-only session on this session's database with other's database attached
  // under the name "varsentix_other", so that one statement reads both; nullptr when the
  // provider cannot give one (see Connection::OpenJoinedReader).
  virtual std::unique_ptr<ProviderSession> openJoinedReader(ProviderSession& /*other*/) { return nullptr; }
  // Whether the engine sorts the rows of sql, a query with an order, to give them in it (no
  // index gives the order). False when it does not or the provider cannot tell.
  virtual bool sortsForOrder(const std::string& /*sql*/) { return false; }
  // How far the engine compares the texts of table's column by their UTF-8 bytes (see
  // Connection::TextComparedByBytes).
  virtual TextBytes textComparedByBytes(const std::string& /*table*/, const std::string& /*column*/) {
    return TextBytes::Unknown;
  }
  // Puts the session into the engine's read-only mode (true) or back out of it (false): while it
  // is on, the engine itself refuses every statement that would change the database through this
  // session. False, with nothing changed, when the provider has no such mode; the engine's error
  // is raised when it refuses the change. A session opened for reading only (Mode=Read) stays
  // read-only whatever is asked.
  virtual bool setReadOnly(bool /*readOnly*/) { return false; }
};

// Opens a session for the parsed connection string, chosen by its Provider key
// (case-insensitive). Raises 3706 for an unknown provider, the provider's error when the open
// fails. userID / password, when not empty, take the place of the string's User ID / Password.
std::unique_ptr<ProviderSession> openSession(const ConnectionString& connection,
                                             const std::string& userID,
                                             const std::string& password);

// The provider a connection string names: its Provider key, else MSDASQL for an ODBC-style
// string (DSN= or Driver=), else SQLite.
std::string chosenProviderName(const ConnectionString& connection);

using ProviderFactory = std::unique_ptr<ProviderSession> (*)(const ConnectionString& connection,
                                                             const std::string& userID,
                                                             const std::string& password);

// Each provider registers itself under its name(s) from its own .cpp file:
//   static const ProviderRegistrar registrar("SQLite", &openSqliteSession);
// so the providers are linked into the library without a central list.
struct ProviderRegistrar {
  ProviderRegistrar(const char* providerName, ProviderFactory factory);
};

}  // namespace varsentix::ado::detail
