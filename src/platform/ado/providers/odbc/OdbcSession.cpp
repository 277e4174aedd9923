// The ODBC provider ("Provider=MSDASQL"): any ODBC driver through the driver manager loaded at
// run time. Text crosses the driver boundary as UTF-16 through the wide entry points for
// Unicode drivers and as UTF-8 through the narrow ones for drivers without them (the SQLite
// ODBC driver), so that non-ASCII text never passes through a locale-dependent conversion.
#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/MemoryCursor.h"
#include "platform/ado/Provider.h"
#include "platform/ado/SchemaRowsets.h"
#include "platform/ado/SqlDialect.h"
#include "platform/ado/SqlLexer.h"
#include "platform/ado/TypeInfo.h"
#include "platform/ado/providers/odbc/OdbcText.h"
#include "platform/ado/providers/odbc/OdbcTypes.h"
#include "platform/ado/providers/sqlite/SqliteSession.h"
#include "platform/odbc/OdbcApi.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail::odbcprovider {
namespace {

// The error source ADO shows for this provider.
const char* const kSource = "Microsoft OLE DB Provider for ODBC Drivers";
// Seconds a connection may take to open, unless the string's "Connect Timeout" says otherwise.
constexpr SQLULEN kLoginTimeoutSeconds = 10;
constexpr size_t kPieceBytes = 16384;  // SQLGetData buffer for a piece of a value

enum class Dbms { Other, PostgreSQL, MariaDB, SQLite };

std::string lower(std::string text) { return vb::LCase(text); }

bool startsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

// ---- errors ---------------------------------------------------------------------------------

// The ADO-like number of a failure from its SQLSTATE (and, for drivers that only say HY000,
// its text).
int32_t numberFor(const std::string& state, const std::string& message) {
  std::string text = lower(message);
  if (state == "42S02" || state == "42P01" || text.find("no such table") != std::string::npos)
    return vb::errnum::ProviderNoSuchTable;
  if (startsWith(state, "23") || text.find("constraint failed") != std::string::npos)
    return vb::errnum::ProviderIntegrityViolation;
  if (startsWith(state, "42") || state == "37000" || text.find("syntax error") != std::string::npos)
    return vb::errnum::ProviderSyntaxError;
  return vb::errnum::ProviderError;
}

// ---- statements -----------------------------------------------------------------------------

struct Statement {
  Statement(const odbc::OdbcApi& api, SQLHSTMT handle) : api(&api), handle(handle) {}
  ~Statement() {
    if (handle != SQL_NULL_HSTMT) api->SQLFreeHandle(SQL_HANDLE_STMT, handle);
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  const odbc::OdbcApi* api;
  SQLHSTMT handle;
};

// How a column's values are read.
enum class Reader { Text, Integer, Unsigned, Bit, Real, Double, Decimal, DateText, Binary, Guid };

Reader readerFor(DataTypeEnum type) {
  switch (type) {
    case adTinyInt:
    case adUnsignedTinyInt:
    case adSmallInt:
    case adUnsignedSmallInt:
    case adInteger:
    case adUnsignedInt:
    case adBigInt: return Reader::Integer;
    case adUnsignedBigInt: return Reader::Unsigned;
    case adBoolean: return Reader::Bit;
    case adSingle: return Reader::Real;
    case adDouble: return Reader::Double;
    case adNumeric: return Reader::Decimal;
    case adDBDate:
    case adDBTime:
    case adDBTimeStamp: return Reader::DateText;
    case adBinary:
    case adVarBinary:
    case adLongVarBinary: return Reader::Binary;
    case adGUID: return Reader::Guid;
    default: return Reader::Text;
  }
}

vb::Variant integerValue(int64_t v, DataTypeEnum type) {
  switch (type) {
    case adTinyInt:
    case adUnsignedTinyInt:
    case adSmallInt: return static_cast<int16_t>(v);
    case adUnsignedSmallInt:
    case adInteger: return static_cast<int32_t>(v);
    default: return v;
  }
}

// "{6F9619FF-8B86-D011-B42D-00C04FC964FF}", as ADO shows a GUID.
std::string guidText(const std::string& text) {
  std::string inner = text;
  if (inner.size() == 38 && inner.front() == '{' && inner.back() == '}')
    inner = inner.substr(1, 36);
  if (inner.size() != 36) return text;
  return "{" + vb::UCase(inner) + "}";
}

// A time or timestamp with a zone ("2024-01-31 12:00:00+01", "12:00:00-05:30") as the local
// time the engine wrote: ADO's date types carry no zone.
std::string withoutZone(const std::string& text) {
  size_t sign = text.find_last_of("+-");
  if (sign == std::string::npos || sign < 8 || text.find(':') == std::string::npos ||
      text.find(':') > sign)
    return text;
  for (size_t i = sign + 1; i < text.size(); ++i)
    if (!(text[i] >= '0' && text[i] <= '9') && text[i] != ':') return text;
  return text.substr(0, sign);
}

// ".5" / "-.5" from some drivers become "0.5" / "-0.5".
std::string decimalText(std::string text) {
  if (!text.empty() && text[0] == '.') text.insert(0, "0");
  if (text.size() > 1 && text[0] == '-' && text[1] == '.') text.insert(1, "0");
  return text;
}

}  // namespace

// ---- the session ----------------------------------------------------------------------------

// The connection itself. Shared by the cursors it opened, so that a record set still walking
// after its Connection closed keeps a valid connection until it goes (as SQLite keeps a closed
// database while statements remain); SessionHandle below is what Connection owns.
class OdbcSession final : public ProviderSession, public std::enable_shared_from_this<OdbcSession> {
 public:
  OdbcSession() : api_(odbc::odbcApi()) {}
  ~OdbcSession() override;
  OdbcSession(const OdbcSession&) = delete;
  OdbcSession& operator=(const OdbcSession&) = delete;

  void connect(const ConnectionString& connection, const std::string& userID,
               const std::string& password);

  // ProviderSession
  std::string providerName() const override { return "MSDASQL"; }
  std::unique_ptr<RowCursor> query(const std::string& sql) override;
  std::unique_ptr<RowCursor> queryDeferred(const std::string& sql) override;
  int64_t execute(const std::string& sql) override;
  std::unique_ptr<RowCursor> openTable(const std::string& table) override;
  int64_t countRows(const std::string& sql) override;
  std::unique_ptr<RowCursor> openSchema(SchemaEnum schema,
                                        const std::vector<vb::Variant>& restrictions) override;
  std::vector<std::string> primaryKeyColumns(const std::string& table) override;
  void beginTransaction() override;
  void commit() override;
  void rollback() noexcept override;
  int64_t executeBound(const std::string& nativeSql, const std::vector<vb::Variant>& values,
                       const std::vector<ColumnInfo>& valueColumns) override;
  std::string quoteIdentifier(const std::string& name) const override;
  EngineFamily engineFamily() const override;
  std::optional<double> numericLiteralValue(const std::string& literal) override;
  std::optional<double> doubleLiteralValue(double value) override;
  // PostgreSQL: Equality for a text or varchar column under a deterministic collation, and the
  // order too under the C or POSIX collation in a UTF-8 database.
  TextBytes textComparedByBytes(const std::string& table, const std::string& column) override;
  // PostgreSQL: the session's transactions read only (SET SESSION CHARACTERISTICS); MariaDB: SET
  // SESSION TRANSACTION READ ONLY; SQLite: PRAGMA query_only. Other engines: false (the driver is
  // told SQL_MODE_READ_ONLY, which it may or may not enforce).
  bool setReadOnly(bool readOnly) override;

  // For the cursor.
  const odbc::OdbcApi& api() const { return api_; }
  bool wide() const { return wide_; }
  Dbms dbms() const { return dbms_; }
  // Raises the handle's first diagnostic record as VBError; number 0 picks it by SQLSTATE.
  [[noreturn]] void raise(SQLSMALLINT handleType, SQLHANDLE handle, const std::string& context,
                          int32_t number = 0) const;
  void check(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle,
             const std::string& context = "") const {
    if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) raise(handleType, handle, context);
  }
  std::string columnText(SQLHSTMT stmt, SQLUSMALLINT column, SQLUSMALLINT field) const;
  // The declared type of a column of an SQLite table ("DECIMAL(10,2)"), "" when unknown.
  std::string sqliteDeclaredType(const std::string& table, const std::string& column);

 private:
  struct TableRow {
    vb::Variant catalog, schema;
    std::string name, type;
  };
  struct KeyRow {
    vb::Variant catalog, schema;
    std::string table, column, keyName;
    int32_t ordinal = 1;
  };

  SQLRETURN driverConnect(const std::string& text);
  void disconnect() noexcept;
  void detect();
  // Makes the session read string literals the way the system writes them (doubled
  // apostrophes, a backslash as a plain character) and checks that it does; raises otherwise.
  void settleLiteralRules();
  // Reads again how the session reads a backslash, after a statement that may have changed it.
  void rereadLiteralRules();
  // Whether nativeSql may change how the session reads literals (it names the setting).
  bool mayChangeLiteralRules(const std::string& nativeSql) const;
  // Which lexer reads the statements sent: the engine's.
  SqlEngine lexedAs() const;
  std::string odbcConnectionString(const ConnectionString& connection, const std::string& userID,
                                   const std::string& password, Dbms dbms) const;
  std::unique_ptr<Statement> newStatement();
  void execDirect(Statement& stmt, const std::string& nativeSql);
  // SQLPrepare(W) of nativeSql on stmt.
  void prepare(Statement& stmt, const std::string& nativeSql);
  // Hands nativeSql to the driver through the wide or narrow entry point (members of OdbcApi).
  template <typename Wide, typename Narrow>
  void passText(Statement& stmt, const std::string& nativeSql, Wide wide, Narrow narrow);
  std::unique_ptr<RowCursor> queryNative(const std::string& nativeSql);
  std::string translate(const std::string& sql) const;
  std::vector<TableRow> tableRows();
  std::vector<KeyRow> primaryKeyRows(const vb::Variant& catalog, const vb::Variant& schema,
                                     const std::string& table);
  void foreignKeyRows(const std::string& pkTable, const std::string& fkTable,
                      std::vector<Row>& rows);
  bool hiddenSchema(const vb::Variant& schema) const;
  // text as a string literal of the engine.
  std::string literal(const std::string& text) const;
  void correctKeyOrder(const std::string& table, std::vector<KeyRow>& keys);
  std::vector<Row> readAll(std::unique_ptr<RowCursor> cursor);
  // Catalog function arguments: (pointer, length) in the session's text form.
  struct CatalogArg {
    std::u16string w;
    std::string a;
    bool null = true;
  };
  CatalogArg catalogArg(const std::string& text, bool null) const;

  const odbc::OdbcApi& api_;
  SQLHENV env_ = SQL_NULL_HENV;
  SQLHDBC dbc_ = SQL_NULL_HDBC;
  bool connected_ = false;
  bool wide_ = true;
  Dbms dbms_ = Dbms::Other;
  std::string quote_ = "\"";
  std::string catalog_;  // the connected database (MariaDB lists only its tables)
  int transactionDepth_ = 0;
  SQLULEN loginTimeout_ = kLoginTimeoutSeconds;
  bool readingOnly_ = false;  // opened with Mode=Read: read-only throughout
  // How this session reads a backslash in a '...' literal: plain, as an escape of the next
  // character, or not known (before settleLiteralRules has seen the engine's setting, or when
  // reading it again failed): then text is checked both ways and must be one statement in both.
  enum class Backslash { Plain, Escapes, Unknown };
  Backslash backslash_ = Backslash::Unknown;
  bool rulesToReread_ = false;
  // A statement has named the setting: the end of a transaction may undo it (SET LOCAL).
  bool rulesNamed_ = false;
};

// ---- the cursor -----------------------------------------------------------------------------

class OdbcCursor final : public RowCursor {
 public:
  // unexecuted: stmt is prepared, and executed by the first advance.
  OdbcCursor(std::shared_ptr<OdbcSession> session, std::unique_ptr<Statement> stmt, bool unexecuted = false)
      : owner_(std::move(session)),
        session_(*owner_),
        api_(session_.api()),
        stmt_(std::move(stmt)),
        unexecuted_(unexecuted) {
    describe();
  }
  const std::vector<ColumnInfo>& columns() const override { return columns_; }
  bool fetch(std::vector<vb::Variant>& row) override;
  // Values are read from the driver when first asked for, and kept for the rest of the row: a
  // walk that reads one column of a row does not pay for converting the others.
  bool supportsValueAt() const override { return true; }
  bool advance() override;
  vb::Variant valueAt(size_t column) override { return valueOf(column); }
  void valueInto(size_t column, vb::Variant& out) override { out = valueOf(column); }

 private:
  void describe();
  // The current row's value in column, read now if it was not yet. Drivers need not let
  // SQLGetData go back to an earlier column, so the columns before it are read (and kept) too.
  const vb::Variant& valueOf(size_t column);
  void read(size_t index, vb::Variant& out);
  // Reads a text value in pieces; false for NULL.
  bool readText(SQLUSMALLINT column, std::string& out, bool forceNarrow = false);
  size_t trustTheTerminator(size_t bytes, size_t limit) const;
  bool readBinary(SQLUSMALLINT column, vb::Bytes& out);
  template <typename T>
  bool readFixed(SQLUSMALLINT column, SQLSMALLINT cType, T& out) {
    SQLLEN indicator = 0;
    SQLRETURN rc = api_.SQLGetData(stmt_->handle, column, cType, &out, sizeof out, &indicator);
    session_.check(rc, SQL_HANDLE_STMT, stmt_->handle);
    return indicator != SQL_NULL_DATA;
  }

  std::shared_ptr<OdbcSession> owner_;
  OdbcSession& session_;
  const odbc::OdbcApi& api_;
  std::unique_ptr<Statement> stmt_;
  std::vector<ColumnInfo> columns_;
  std::vector<Reader> readers_;
  bool unexecuted_;
  bool done_ = false;
  std::vector<char> piece_ = std::vector<char>(kPieceBytes);
  std::vector<vb::Variant> row_;  // the current row's values read so far: row_[0, read_)
  size_t read_ = 0;
  bool onRow_ = false;
};

void OdbcCursor::describe() {
  SQLSMALLINT count = 0;
  session_.check(api_.SQLNumResultCols(stmt_->handle, &count), SQL_HANDLE_STMT, stmt_->handle);
  for (SQLUSMALLINT i = 1; i <= static_cast<SQLUSMALLINT>(count); ++i) {
    SQLSMALLINT nameLength = 0, sqlType = 0, digits = 0, nullable = SQL_NULLABLE_UNKNOWN;
    SQLULEN size = 0;
    std::string name;
    if (session_.wide()) {
      char16_t buffer[512] = {};
      session_.check(api_.SQLDescribeColW(stmt_->handle, i, reinterpret_cast<SQLWCHAR*>(buffer),
                                          511, &nameLength, &sqlType, &size, &digits, &nullable),
                     SQL_HANDLE_STMT, stmt_->handle);
      name = utf16ToUtf8(buffer, std::min<size_t>(static_cast<size_t>(nameLength), 511));
    } else {
      char buffer[1024] = {};
      session_.check(api_.SQLDescribeCol(stmt_->handle, i, reinterpret_cast<SQLCHAR*>(buffer),
                                         1023, &nameLength, &sqlType, &size, &digits, &nullable),
                     SQL_HANDLE_STMT, stmt_->handle);
      name.assign(buffer, std::min<size_t>(static_cast<size_t>(nameLength), 1023));
    }
    SQLLEN isUnsigned = SQL_FALSE;
    if (!SQL_SUCCEEDED(api_.SQLColAttribute(stmt_->handle, i, SQL_DESC_UNSIGNED, nullptr, 0,
                                            nullptr, &isUnsigned)))
      isUnsigned = SQL_FALSE;
    ColumnInfo info = columnTypeOf(sqlType, size, digits, isUnsigned == SQL_TRUE);
    info.baseTable = session_.columnText(stmt_->handle, i, SQL_DESC_BASE_TABLE_NAME);
    if (!info.baseTable.empty()) {
      info.baseColumn = session_.columnText(stmt_->handle, i, SQL_DESC_BASE_COLUMN_NAME);
      if (info.baseColumn.empty()) info.baseTable.clear();
    }
    if (session_.dbms() == Dbms::SQLite) {
      // The SQLite driver describes NUMERIC(p,s) / DECIMAL(p,s) columns as doubles or text and
      // drops the scale; they are exact numerics as SQLite's own provider reports them.
      std::string typeName = vb::UCase(session_.columnText(stmt_->handle, i, SQL_DESC_TYPE_NAME));
      if (typeName.rfind("NUMERIC", 0) == 0 || typeName.rfind("DECIMAL", 0) == 0) {
        std::string declared = session_.sqliteDeclaredType(info.baseTable, info.baseColumn);
        ColumnInfo exact = sqliteColumnType(declared.empty() ? typeName : declared);
        if (exact.type == adNumeric) {
          info.type = exact.type;
          info.definedSize = exact.definedSize;
          info.precision = exact.precision;
          info.numericScale = exact.numericScale;
        }
      }
    }
    info.name = name;
    info.nullable = nullable != SQL_NO_NULLS;
    readers_.push_back(readerFor(info.type));
    columns_.push_back(std::move(info));
  }
}

bool OdbcCursor::advance() {
  onRow_ = false;
  read_ = 0;
  if (done_) return false;
  if (unexecuted_) {
    unexecuted_ = false;
    const SQLRETURN executed = api_.SQLExecute(stmt_->handle);
    if (!SQL_SUCCEEDED(executed) && executed != SQL_NO_DATA) {
      done_ = true;
      session_.raise(SQL_HANDLE_STMT, stmt_->handle, "");
    }
  }
  SQLRETURN rc = api_.SQLFetch(stmt_->handle);
  if (rc == SQL_NO_DATA) {
    done_ = true;
    api_.SQLCloseCursor(stmt_->handle);
    return false;
  }
  if (!SQL_SUCCEEDED(rc)) {
    done_ = true;
    session_.raise(SQL_HANDLE_STMT, stmt_->handle, "");
  }
  row_.resize(columns_.size());
  onRow_ = true;
  return true;
}

const vb::Variant& OdbcCursor::valueOf(size_t column) {
  if (!onRow_ || column >= columns_.size()) throw vb::VBError(vb::errnum::NoCurrentRecord);
  for (; read_ <= column; ++read_) read(read_, row_[read_]);
  return row_[column];
}

bool OdbcCursor::fetch(std::vector<vb::Variant>& row) {
  if (!advance()) return false;
  row.resize(columns_.size());
  for (size_t i = 0; i < columns_.size(); ++i) row[i] = valueOf(i);
  return true;
}

// A driver writes a terminator right after the text it wrote. MariaDB's connector (3.1) reports
// some texts holding letters such as U+00DA one unit shorter than it wrote them: when the unit at
// the reported end is not the terminator, the text goes on to the terminator.
size_t OdbcCursor::trustTheTerminator(size_t bytes, size_t limit) const {
  auto unitAt = [&](size_t offset) {
    char16_t unit;
    std::memcpy(&unit, piece_.data() + offset, sizeof unit);
    return unit;
  };
  while (bytes + sizeof(char16_t) <= limit && unitAt(bytes) != 0) bytes += sizeof(char16_t);
  return bytes;
}

bool OdbcCursor::readText(SQLUSMALLINT column, std::string& out, bool forceNarrow) {
  out.clear();
  bool wide = session_.wide() && !forceNarrow;
  const SQLSMALLINT cType = wide ? SQL_C_WCHAR : SQL_C_CHAR;
  const size_t terminator = wide ? sizeof(char16_t) : 1;
  std::u16string units;
  for (;;) {
    SQLLEN indicator = 0;
    SQLRETURN rc = api_.SQLGetData(stmt_->handle, column, cType, piece_.data(),
                                   static_cast<SQLLEN>(piece_.size()), &indicator);
    if (rc == SQL_NO_DATA) break;  // every piece read
    session_.check(rc, SQL_HANDLE_STMT, stmt_->handle);
    if (indicator == SQL_NULL_DATA) return false;
    size_t bytes = (indicator == SQL_NO_TOTAL || static_cast<size_t>(indicator) + terminator > piece_.size())
                       ? piece_.size() - terminator
                       : static_cast<size_t>(indicator);
    if (wide) {
      bytes -= bytes % sizeof(char16_t);
      bytes = trustTheTerminator(bytes, piece_.size() - terminator);
      size_t start = units.size();
      units.resize(start + bytes / sizeof(char16_t));
      std::memcpy(units.data() + start, piece_.data(), bytes);
    } else {
      out.append(piece_.data(), bytes);
    }
    if (rc == SQL_SUCCESS) break;  // the last piece
  }
  if (wide) out = utf16ToUtf8(units);
  return true;
}

bool OdbcCursor::readBinary(SQLUSMALLINT column, vb::Bytes& out) {
  out.clear();
  for (;;) {
    SQLLEN indicator = 0;
    SQLRETURN rc = api_.SQLGetData(stmt_->handle, column, SQL_C_BINARY, piece_.data(),
                                   static_cast<SQLLEN>(piece_.size()), &indicator);
    if (rc == SQL_NO_DATA) break;
    session_.check(rc, SQL_HANDLE_STMT, stmt_->handle);
    if (indicator == SQL_NULL_DATA) return false;
    size_t bytes = (indicator == SQL_NO_TOTAL || static_cast<size_t>(indicator) > piece_.size())
                       ? piece_.size()
                       : static_cast<size_t>(indicator);
    out.insert(out.end(), piece_.begin(), piece_.begin() + static_cast<std::ptrdiff_t>(bytes));
    if (rc == SQL_SUCCESS) break;
  }
  return true;
}

void OdbcCursor::read(size_t index, vb::Variant& out) {
  const ColumnInfo& column = columns_[index];
  const auto number = static_cast<SQLUSMALLINT>(index + 1);
  switch (readers_[index]) {
    case Reader::Integer: {
      SQLBIGINT v = 0;
      out = readFixed(number, SQL_C_SBIGINT, v) ? integerValue(v, column.type) : vb::Variant::null();
      return;
    }
    case Reader::Unsigned: {
      SQLUBIGINT v = 0;
      if (!readFixed(number, SQL_C_UBIGINT, v))
        out = vb::Variant::null();
      else if (v <= static_cast<SQLUBIGINT>(INT64_MAX))
        out = static_cast<int64_t>(v);
      else
        out = vb::Decimal{std::to_string(v)};
      return;
    }
    case Reader::Bit: {
      unsigned char v = 0;
      out = readFixed(number, SQL_C_BIT, v) ? vb::Variant(v != 0) : vb::Variant::null();
      return;
    }
    case Reader::Real: {
      float v = 0;
      out = readFixed(number, SQL_C_FLOAT, v) ? vb::Variant(v) : vb::Variant::null();
      return;
    }
    case Reader::Double: {
      double v = 0;
      out = readFixed(number, SQL_C_DOUBLE, v) ? vb::Variant(v) : vb::Variant::null();
      return;
    }
    case Reader::Binary: {
      vb::Bytes bytes;
      out = readBinary(number, bytes) ? vb::Variant(std::move(bytes)) : vb::Variant::null();
      return;
    }
    default: break;
  }
  std::string text;
  // Numbers and dates are ASCII: read narrow, whatever the session's text form.
  bool ascii = readers_[index] == Reader::Decimal || readers_[index] == Reader::DateText;
  if (!readText(number, text, ascii)) {
    out = vb::Variant::null();
    return;
  }
  switch (readers_[index]) {
    case Reader::Decimal:
      text = decimalText(std::move(text));
      if (session_.dbms() == Dbms::SQLite && column.numericScale != 255) {
        try {
          out = variantFromText(adNumeric, text);
          out = vb::Decimal{withScale(out.toText(), column.numericScale)};
        } catch (const vb::VBError&) {
          out = std::move(text);  // SQLite keeps any text in any column
        }
      } else {
        out = vb::Decimal{std::move(text)};
      }
      return;
    case Reader::DateText:
      try {
        out = variantFromText(column.type, withoutZone(text));
      } catch (const vb::VBError&) {
        out = std::move(text);  // a value the calendar cannot hold is shown as the engine wrote it
      }
      return;
    case Reader::Guid: out = guidText(text); return;
    default: out = std::move(text); return;
  }
}

// ---- connecting -----------------------------------------------------------------------------

namespace {

// A value as an ODBC connection string carries it: in braces when it holds ';', braces or
// surrounding blanks (a value already in braces is kept).
std::string odbcValue(const std::string& value) {
  if (value.size() >= 2 && value.front() == '{' && value.back() == '}') return value;
  bool plain = value.find_first_of(";{}=") == std::string::npos &&
               (value.empty() || (value.front() != ' ' && value.back() != ' '));
  if (plain) return value;
  std::string braced = "{";
  for (char c : value) {
    braced += c;
    if (c == '}') braced += '}';
  }
  return braced + "}";
}

// Which engine a connection string aims at, from its Driver name (a DSN says nothing here).
Dbms guessDbms(const ConnectionString& connection) {
  std::string driver = lower(connection.getOr("Driver", ""));
  if (driver.find("postgres") != std::string::npos || driver.find("psql") != std::string::npos)
    return Dbms::PostgreSQL;
  if (driver.find("maria") != std::string::npos || driver.find("mysql") != std::string::npos)
    return Dbms::MariaDB;
  if (driver.find("sqlite") != std::string::npos) return Dbms::SQLite;
  return Dbms::Other;
}

bool isAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace

OdbcSession::~OdbcSession() {
  rollback();
  disconnect();
  if (env_ != SQL_NULL_HENV) api_.SQLFreeHandle(SQL_HANDLE_ENV, env_);
}

void OdbcSession::disconnect() noexcept {
  if (dbc_ == SQL_NULL_HDBC) return;
  if (connected_) api_.SQLDisconnect(dbc_);
  api_.SQLFreeHandle(SQL_HANDLE_DBC, dbc_);
  dbc_ = SQL_NULL_HDBC;
  connected_ = false;
}

std::string OdbcSession::odbcConnectionString(const ConnectionString& connection,
                                              const std::string& userID,
                                              const std::string& password, Dbms dbms) const {
  std::string text;
  std::vector<std::string> given;  // lower-case keys passed on
  auto add = [&](const std::string& key, const std::string& value) {
    text += key + "=" + odbcValue(value) + ";";
    given.push_back(lower(key));
  };
  auto has = [&](const std::string& key) {
    return std::find(given.begin(), given.end(), lower(key)) != given.end();
  };
  for (const auto& [key, value] : connection.pairs()) {
    std::string k = lower(key);
    if (k == "provider" || k == "persist security info" || k == "extended properties" ||
        k == "connect timeout" || k == "mode")
      continue;
    if (k == "data source" || k == "datasource" || k == "dsn") add("DSN", value);
    else if (k == "user id" || k == "uid" || k == "user") add("UID", value);
    else if (k == "password" || k == "pwd") add("PWD", value);
    else if (k == "initial catalog") add("DATABASE", value);
    else if (k == "option" && dbms == Dbms::MariaDB) continue;  // merged below
    else add(key, value);
  }
  if (!userID.empty()) add("UID", userID);
  if (!password.empty()) add("PWD", password);
  if (dbms == Dbms::PostgreSQL) {
    // Declare/fetch: a large result streams in blocks instead of being buffered whole.
    if (!has("UseDeclareFetch")) add("UseDeclareFetch", "1");
    if (!has("Fetch")) add("Fetch", "1000");
    if (!has("BoolsAsChar")) add("BoolsAsChar", "0");  // booleans described as SQL_BIT
  } else if (dbms == Dbms::MariaDB) {
    // FOUND_ROWS (2): UPDATE reports the rows it matched, not only those it changed.
    long option = 0;
    if (auto user = connection.get("OPTION")) option = std::strtol(user->c_str(), nullptr, 10);
    add("OPTION", std::to_string(option | 2));
    if (!has("CHARSET")) add("CHARSET", "utf8mb4");
    // The connector leaves the login timeout aside: without this a server that accepts the
    // connection and never greets would hold the open for ever.
    if (!has("CONN_TIMEOUT")) add("CONN_TIMEOUT", std::to_string(loginTimeout_));
  }
  return text;
}

SQLRETURN OdbcSession::driverConnect(const std::string& text) {
  if (dbc_ == SQL_NULL_HDBC) {
    check(api_.SQLAllocHandle(SQL_HANDLE_DBC, env_, &dbc_), SQL_HANDLE_ENV, env_);
    api_.SQLSetConnectAttr(dbc_, SQL_ATTR_LOGIN_TIMEOUT,
                           reinterpret_cast<SQLPOINTER>(loginTimeout_), 0);
  }
  SQLRETURN rc;
  if (wide_) {
    std::u16string w = utf8ToUtf16(text);
    rc = api_.SQLDriverConnectW(dbc_, nullptr, reinterpret_cast<SQLWCHAR*>(w.data()),
                                static_cast<SQLSMALLINT>(w.size()), nullptr, 0, nullptr,
                                SQL_DRIVER_NOPROMPT);
  } else {
    std::string a = text;
    rc = api_.SQLDriverConnect(dbc_, nullptr, reinterpret_cast<SQLCHAR*>(a.data()),
                               static_cast<SQLSMALLINT>(a.size()), nullptr, 0, nullptr,
                               SQL_DRIVER_NOPROMPT);
  }
  connected_ = SQL_SUCCEEDED(rc);
  return rc;
}

void OdbcSession::detect() {
  char buffer[256] = {};
  SQLSMALLINT length = 0;
  std::string dbmsName, driverName;
  if (SQL_SUCCEEDED(api_.SQLGetInfo(dbc_, SQL_DBMS_NAME, buffer, sizeof buffer, &length)))
    dbmsName = lower(buffer);
  std::memset(buffer, 0, sizeof buffer);
  if (SQL_SUCCEEDED(api_.SQLGetInfo(dbc_, SQL_DRIVER_NAME, buffer, sizeof buffer, &length)))
    driverName = lower(buffer);
  if (dbmsName.find("postgres") != std::string::npos) dbms_ = Dbms::PostgreSQL;
  else if (dbmsName.find("maria") != std::string::npos || dbmsName.find("mysql") != std::string::npos)
    dbms_ = Dbms::MariaDB;
  else if (dbmsName.find("sqlite") != std::string::npos) dbms_ = Dbms::SQLite;
  else dbms_ = Dbms::Other;
  // Drivers without wide entry points get UTF-8 through the narrow ones unchanged; through the
  // wide ones the driver manager would convert it by the process locale.
  wide_ = !(driverName.find("sqlite") != std::string::npos || driverName.find("psqlodbca") != std::string::npos ||
            driverName.find("mdbodbc") != std::string::npos);
  std::memset(buffer, 0, sizeof buffer);
  if (SQL_SUCCEEDED(api_.SQLGetInfo(dbc_, SQL_IDENTIFIER_QUOTE_CHAR, buffer, sizeof buffer, &length)))
    quote_ = std::string(buffer) == " " ? "" : std::string(buffer);
  if (dbms_ == Dbms::MariaDB) {
    std::memset(buffer, 0, sizeof buffer);
    SQLINTEGER got = 0;
    if (SQL_SUCCEEDED(api_.SQLGetConnectAttr(dbc_, SQL_ATTR_CURRENT_CATALOG, buffer,
                                             sizeof buffer - 1, &got)))
      catalog_ = buffer;
  }
}

void OdbcSession::connect(const ConnectionString& connection, const std::string& userID,
                          const std::string& password) {
  check(api_.SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env_), SQL_HANDLE_ENV, SQL_NULL_HANDLE);
  api_.SQLSetEnvAttr(env_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
  if (auto timeout = connection.get("Connect Timeout")) {
    long seconds = std::strtol(timeout->c_str(), nullptr, 10);
    if (seconds > 0) loginTimeout_ = static_cast<SQLULEN>(seconds);
  }
  Dbms guessed = guessDbms(connection);
  wide_ = guessed != Dbms::SQLite;
  std::string text = odbcConnectionString(connection, userID, password, guessed);
  if (!SQL_SUCCEEDED(driverConnect(text))) raise(SQL_HANDLE_DBC, dbc_, "", vb::errnum::ProviderError);
  bool wasWide = wide_;
  detect();
  // A DSN (or an unexpected driver) that needs other options, or a narrow driver reached through
  // the wide entry points with non-ASCII text: connect again the right way.
  bool optionsDiffer = dbms_ != guessed && (dbms_ == Dbms::PostgreSQL || dbms_ == Dbms::MariaDB);
  bool textDiffers = wasWide != wide_ && !isAscii(text);
  if (optionsDiffer || textDiffers) {
    Dbms found = dbms_;
    bool wide = wide_;
    disconnect();
    text = odbcConnectionString(connection, userID, password, found);
    wide_ = wide;
    if (!SQL_SUCCEEDED(driverConnect(text))) raise(SQL_HANDLE_DBC, dbc_, "", vb::errnum::ProviderError);
    detect();
  }
  settleLiteralRules();
  if (opensForReadingOnly(connection)) {
    setReadOnly(true);
    readingOnly_ = true;
  }
}

SqlEngine OdbcSession::lexedAs() const {
  switch (dbms_) {
    case Dbms::PostgreSQL: return SqlEngine::PostgreSQL;
    case Dbms::MariaDB: return SqlEngine::MariaDB;
    case Dbms::SQLite: return SqlEngine::SQLite;
    default: return SqlEngine::Other;
  }
}

namespace {

// The first column of the first row of cursor as text ("" for none); the rest is read away.
std::string firstText(std::unique_ptr<RowCursor> cursor) {
  Row row;
  std::string text;
  if (cursor->fetch(row) && !row.empty() && !row[0].isNull()) text = row[0].toText();
  while (cursor->fetch(row)) {
  }
  return text;
}

bool listHolds(const std::string& commaList, const std::string& item) {
  size_t start = 0;
  while (start <= commaList.size()) {
    size_t end = commaList.find(',', start);
    if (end == std::string::npos) end = commaList.size();
    if (vb::UCase(commaList.substr(start, end - start)) == item) return true;
    start = end + 1;
  }
  return false;
}

}  // namespace

void OdbcSession::settleLiteralRules() {
  // The system writes a literal as '...' with each apostrophe doubled and nothing else escaped.
  // An engine that read a backslash as an escape would end such a literal elsewhere than the
  // system meant: a value ending in a backslash would swallow the next one's opening quote.
  if (dbms_ == Dbms::MariaDB) {
    auto stmt = newStatement();
    execDirect(*stmt,
               "SET SESSION sql_mode = CONCAT_WS(',', NULLIF(@@SESSION.sql_mode, ''), 'NO_BACKSLASH_ESCAPES')");
    stmt.reset();
    const std::string mode = firstText(queryNative("SELECT @@SESSION.sql_mode"));
    if (!listHolds(mode, "NO_BACKSLASH_ESCAPES"))
      vb::raiseError(vb::errnum::ProviderError,
                     "The MariaDB session could not be set to read a backslash in a string literal as a plain "
                     "character: its sql_mode is '" + mode + "', without NO_BACKSLASH_ESCAPES.",
                     kSource);
    backslash_ = Backslash::Plain;
  } else if (dbms_ == Dbms::PostgreSQL) {
    std::string setting = firstText(queryNative("SHOW standard_conforming_strings"));
    if (lower(setting) != "on") {
      auto stmt = newStatement();
      execDirect(*stmt, "SET standard_conforming_strings = on");
      stmt.reset();
      setting = firstText(queryNative("SHOW standard_conforming_strings"));
    }
    if (lower(setting) != "on")
      vb::raiseError(vb::errnum::ProviderError,
                     "The PostgreSQL session could not be set to read a backslash in a string literal as a "
                     "plain character: standard_conforming_strings is '" + setting + "', not 'on'.",
                     kSource);
    backslash_ = Backslash::Plain;
  } else if (dbms_ == Dbms::SQLite) {
    backslash_ = Backslash::Plain;
  }
}

bool OdbcSession::mayChangeLiteralRules(const std::string& nativeSql) const {
  if (dbms_ != Dbms::MariaDB && dbms_ != Dbms::PostgreSQL) return false;
  const std::string text = lower(nativeSql);
  if (dbms_ == Dbms::MariaDB) return text.find("sql_mode") != std::string::npos;
  if (text.find("standard_conforming_strings") != std::string::npos) return true;
  // RESET ALL and DISCARD ALL put every setting back to the database's default; the end of a
  // transaction undoes a SET LOCAL.
  const size_t start = text.find_first_not_of(" \t\r\n\f(");
  if (start == std::string::npos) return false;
  for (const char* word : {"reset", "discard", "commit", "rollback", "end", "abort"})
    if (text.compare(start, std::strlen(word), word) == 0) return true;
  return false;
}

void OdbcSession::rereadLiteralRules() {
  try {
    if (dbms_ == Dbms::MariaDB) {
      const std::string mode = firstText(queryNative("SELECT @@SESSION.sql_mode"));
      backslash_ = listHolds(mode, "NO_BACKSLASH_ESCAPES") ? Backslash::Plain : Backslash::Escapes;
    } else if (dbms_ == Dbms::PostgreSQL) {
      const std::string setting = lower(firstText(queryNative("SHOW standard_conforming_strings")));
      backslash_ = setting == "on" ? Backslash::Plain : Backslash::Escapes;
    }
  } catch (const vb::VBError&) {
    // In a failed transaction PostgreSQL answers nothing until it ends: asked again next time.
    backslash_ = Backslash::Unknown;
    rulesToReread_ = true;
  }
}

bool OdbcSession::setReadOnly(bool readOnly) {
  if (readingOnly_) return true;
  const char* statement = nullptr;
  switch (dbms_) {
    case Dbms::PostgreSQL:
      statement = readOnly ? "SET SESSION CHARACTERISTICS AS TRANSACTION READ ONLY"
                           : "SET SESSION CHARACTERISTICS AS TRANSACTION READ WRITE";
      break;
    case Dbms::MariaDB:
      statement = readOnly ? "SET SESSION TRANSACTION READ ONLY" : "SET SESSION TRANSACTION READ WRITE";
      break;
    case Dbms::SQLite:
      statement = readOnly ? "PRAGMA query_only = 1" : "PRAGMA query_only = 0";
      break;
    default:
      api_.SQLSetConnectAttr(dbc_, SQL_ATTR_ACCESS_MODE,
                             reinterpret_cast<SQLPOINTER>(readOnly ? SQL_MODE_READ_ONLY : SQL_MODE_READ_WRITE), 0);
      return false;
  }
  auto stmt = newStatement();
  execDirect(*stmt, statement);
  return true;
}

void OdbcSession::raise(SQLSMALLINT handleType, SQLHANDLE handle, const std::string& context,
                        int32_t number) const {
  std::string state, message;
  SQLINTEGER native = 0;
  if (handle != SQL_NULL_HANDLE) {
    if (wide_) {
      char16_t st[6] = {};
      char16_t text[2048] = {};
      SQLSMALLINT length = 0;
      if (SQL_SUCCEEDED(api_.SQLGetDiagRecW(handleType, handle, 1, reinterpret_cast<SQLWCHAR*>(st),
                                            &native, reinterpret_cast<SQLWCHAR*>(text), 2047, &length))) {
        state = utf16ToUtf8(st, 5);
        message = utf16ToUtf8(text, std::min<size_t>(static_cast<size_t>(length), 2047));
      }
    } else {
      char st[6] = {};
      char text[4096] = {};
      SQLSMALLINT length = 0;
      if (SQL_SUCCEEDED(api_.SQLGetDiagRec(handleType, handle, 1, reinterpret_cast<SQLCHAR*>(st),
                                           &native, reinterpret_cast<SQLCHAR*>(text), 4095, &length))) {
        state.assign(st, strnlen(st, 5));
        message.assign(text, std::min<size_t>(static_cast<size_t>(length), 4095));
      }
    }
  }
  while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.pop_back();
  if (message.empty()) message = "The ODBC driver reported a failure without a message.";
  if (!context.empty()) message += " (" + context + ")";
  throw vb::VBError(number != 0 ? number : numberFor(state, message), message, kSource)
      .withDriverDetail(state.empty() ? "HY000" : state, native);
}

std::string OdbcSession::columnText(SQLHSTMT stmt, SQLUSMALLINT column, SQLUSMALLINT field) const {
  SQLSMALLINT length = 0;
  if (wide_) {
    char16_t buffer[512] = {};
    if (!SQL_SUCCEEDED(api_.SQLColAttributeW(stmt, column, field, buffer, sizeof buffer - 2,
                                             &length, nullptr)))
      return "";
    return utf16ToUtf8(buffer, std::min<size_t>(static_cast<size_t>(length) / 2, 511));
  }
  char buffer[1024] = {};
  if (!SQL_SUCCEEDED(api_.SQLColAttribute(stmt, column, field, buffer, sizeof buffer - 1, &length,
                                          nullptr)))
    return "";
  return std::string(buffer, strnlen(buffer, sizeof buffer - 1));
}

// ---- statements -----------------------------------------------------------------------------

std::unique_ptr<Statement> OdbcSession::newStatement() {
  SQLHSTMT handle = SQL_NULL_HSTMT;
  check(api_.SQLAllocHandle(SQL_HANDLE_STMT, dbc_, &handle), SQL_HANDLE_DBC, dbc_);
  return std::make_unique<Statement>(api_, handle);
}

template <typename Wide, typename Narrow>
void OdbcSession::passText(Statement& stmt, const std::string& nativeSql, Wide wide, Narrow narrow) {
  // Whatever builds the text, the engine gets one statement read as the engine reads it.
  if (rulesToReread_) {
    rulesToReread_ = false;
    rereadLiteralRules();
  }
  if (backslash_ == Backslash::Unknown) {
    checkSingleStatement(nativeSql, lexedAs(), false);
    checkSingleStatement(nativeSql, lexedAs(), true);
  } else {
    checkSingleStatement(nativeSql, lexedAs(), backslash_ == Backslash::Escapes);
  }
  SQLRETURN rc;
  if (wide_) {
    std::u16string w = utf8ToUtf16(nativeSql);
    rc = (api_.*wide)(stmt.handle, reinterpret_cast<SQLWCHAR*>(w.data()), static_cast<SQLINTEGER>(w.size()));
  } else {
    std::string a = nativeSql;
    rc = (api_.*narrow)(stmt.handle, reinterpret_cast<SQLCHAR*>(a.data()), static_cast<SQLINTEGER>(a.size()));
  }
  check(rc, SQL_HANDLE_STMT, stmt.handle);
}

void OdbcSession::execDirect(Statement& stmt, const std::string& nativeSql) {
  passText(stmt, nativeSql, &odbc::OdbcApi::SQLExecDirectW, &odbc::OdbcApi::SQLExecDirect);
}

void OdbcSession::prepare(Statement& stmt, const std::string& nativeSql) {
  passText(stmt, nativeSql, &odbc::OdbcApi::SQLPrepareW, &odbc::OdbcApi::SQLPrepare);
}

std::string OdbcSession::translate(const std::string& sql) const {
  DialectOptions options;
  options.openQuote = quote_.empty() ? 0 : quote_[0];
  options.closeQuote = options.openQuote;
  std::string native = translateSql(sql, options);
  // One trailing ';' is allowed in the dialect; drivers that prepare the text may not take it.
  size_t end = native.find_last_not_of(" \t\r\n");
  if (end != std::string::npos && native[end] == ';') native.erase(end);
  return native;
}

std::unique_ptr<RowCursor> OdbcSession::queryNative(const std::string& nativeSql) {
  auto stmt = newStatement();
  execDirect(*stmt, nativeSql);
  return std::make_unique<OdbcCursor>(shared_from_this(), std::move(stmt));
}

std::unique_ptr<RowCursor> OdbcSession::query(const std::string& sql) {
  const std::string native = translate(sql);
  auto cursor = queryNative(native);
  if (mayChangeLiteralRules(native)) rulesToReread_ = rulesNamed_ = true;
  return cursor;
}

std::unique_ptr<RowCursor> OdbcSession::queryDeferred(const std::string& sql) {
  const std::string native = translate(sql);
  auto stmt = newStatement();
  prepare(*stmt, native);
  if (mayChangeLiteralRules(native)) rulesToReread_ = rulesNamed_ = true;
  return std::make_unique<OdbcCursor>(shared_from_this(), std::move(stmt), true);
}

int64_t OdbcSession::execute(const std::string& sql) {
  std::string native = translate(sql);
  if (native.find_first_not_of(" \t\r\n") == std::string::npos) return -1;
  auto stmt = newStatement();
  execDirect(*stmt, native);
  if (mayChangeLiteralRules(native)) rulesToReread_ = rulesNamed_ = true;
  SQLSMALLINT columns = 0;
  api_.SQLNumResultCols(stmt->handle, &columns);
  if (columns > 0) return -1;  // rows returned are discarded
  SQLLEN rows = -1;
  if (!SQL_SUCCEEDED(api_.SQLRowCount(stmt->handle, &rows))) rows = -1;
  return rows;
}

std::unique_ptr<RowCursor> OdbcSession::openTable(const std::string& table) {
  return queryNative("SELECT * FROM " + quoteIdentifier(table));
}

int64_t OdbcSession::countRows(const std::string& sql) {
  auto cursor = queryNative("SELECT COUNT(*) FROM (" + translate(sql) + ") vx_count");
  std::vector<vb::Variant> row;
  if (!cursor->fetch(row) || row.empty() || row[0].isNull()) return 0;
  return row[0].toInt64();
}

EngineFamily OdbcSession::engineFamily() const {
  // SQLite behind its ODBC driver is left out: the driver hands out doubles as 15-digit text.
  switch (dbms_) {
    case Dbms::PostgreSQL: return EngineFamily::PostgreSQL;
    case Dbms::MariaDB: return EngineFamily::MariaDB;
    default: return EngineFamily::Other;
  }
}

std::optional<double> OdbcSession::numericLiteralValue(const std::string& literal) {
  // PostgreSQL reads a numeric literal exactly and rounds it to the nearest double once when it
  // meets a double column (as strtod does); far from the ends of the range, where it would
  // refuse the literal or keep a denormal, it is left to the engine.
  if (dbms_ != Dbms::PostgreSQL || literal.empty() ||
      literal.find_first_not_of("0123456789+-.eE") != std::string::npos)
    return std::nullopt;
  double value = 0;
  const char* end = literal.data() + literal.size();
  auto [ptr, ec] = std::from_chars(literal.data(), end, value);
  if (ec != std::errc() || ptr != end) return std::nullopt;
  const double magnitude = std::fabs(value);
  if (magnitude != 0 && (magnitude < 1e-300 || magnitude > 1e300)) return std::nullopt;
  return value;
}

std::optional<double> OdbcSession::doubleLiteralValue(double value) {
  // The shortest text of a double reads back as the double: what numericLiteralValue makes of it
  // without making it.
  if (dbms_ != Dbms::PostgreSQL || !std::isfinite(value)) return std::nullopt;
  const double magnitude = std::fabs(value);
  if (magnitude != 0 && (magnitude < 1e-300 || magnitude > 1e300)) return std::nullopt;
  return value;
}

TextBytes OdbcSession::textComparedByBytes(const std::string& table, const std::string& column) {
  if (dbms_ != Dbms::PostgreSQL) return TextBytes::Unknown;
  // The table as the statements name it (quoted, on the search path); the column's type and
  // collation, the database's own when the column has the default one.
  auto cursor = queryNative(
      "SELECT t.typname::text, CASE WHEN co.collisdeterministic THEN 1 ELSE 0 END, "
      "CASE WHEN co.oid = 100 THEN d.datcollate::text ELSE co.collname::text END, "
      "pg_catalog.pg_encoding_to_char(d.encoding)::text "
      "FROM pg_catalog.pg_attribute a JOIN pg_catalog.pg_type t ON t.oid = a.atttypid "
      "JOIN pg_catalog.pg_collation co ON co.oid = a.attcollation "
      "JOIN pg_catalog.pg_database d ON d.datname = pg_catalog.current_database() "
      "WHERE a.attrelid = pg_catalog.to_regclass(" + literal(quoteIdentifier(table)) + ") AND a.attname = " +
      literal(column) + " AND a.attnum > 0 AND NOT a.attisdropped");
  Row row;
  TextBytes bytes = TextBytes::Unknown;
  if (cursor->fetch(row) && row.size() == 4 && !row[0].isNull() && !row[1].isNull()) {
    const std::string type = row[0].toText();
    // char(n) pads and trims: not its bytes.
    if ((type == "varchar" || type == "text") && row[1].toText() == "1") {
      const std::string collation = row[2].isNull() ? "" : row[2].toText();
      const bool utf8 = !row[3].isNull() && row[3].toText() == "UTF8";
      bytes = utf8 && (collation == "C" || collation == "POSIX") ? TextBytes::EqualityAndOrder : TextBytes::Equality;
    }
  }
  while (cursor->fetch(row)) {
  }
  return bytes;
}

std::string OdbcSession::quoteIdentifier(const std::string& name) const {
  if (quote_.empty()) return name;
  std::string quoted = quote_;
  for (char c : name) {
    quoted += c;
    if (c == quote_[0]) quoted += c;
  }
  return quoted + quote_;
}

// ---- schema rowsets -------------------------------------------------------------------------

OdbcSession::CatalogArg OdbcSession::catalogArg(const std::string& text, bool null) const {
  CatalogArg arg;
  arg.null = null;
  if (!null) {
    if (wide_) arg.w = utf8ToUtf16(text);
    else arg.a = text;
  }
  return arg;
}

namespace {
// Pointer and length of a catalog argument for the narrow or wide call.
template <typename Char, typename Text>
std::pair<Char*, SQLSMALLINT> argOf(Text& text, bool null) {
  if (null) return {nullptr, 0};
  return {reinterpret_cast<Char*>(text.data()), static_cast<SQLSMALLINT>(text.size())};
}
}  // namespace

std::vector<Row> OdbcSession::readAll(std::unique_ptr<RowCursor> cursor) {
  std::vector<Row> rows;
  Row row;
  while (cursor->fetch(row)) rows.push_back(row);
  return rows;
}

bool OdbcSession::hiddenSchema(const vb::Variant& schema) const {
  if (dbms_ != Dbms::PostgreSQL || schema.isNull() || schema.isEmpty()) return false;
  std::string name = lower(schema.toText());
  return name == "pg_catalog" || name == "information_schema" || startsWith(name, "pg_toast") ||
         startsWith(name, "pg_temp_");
}

namespace {
vb::Variant nullIfEmpty(const vb::Variant& v) {
  if (v.isEmpty() || v.isNull()) return vb::Variant::null();
  if (v.type() == vb::VarType::String && v.asString().empty()) return vb::Variant::null();
  return v;
}
}  // namespace

std::vector<OdbcSession::TableRow> OdbcSession::tableRows() {
  auto stmt = newStatement();
  bool restrictCatalog = dbms_ == Dbms::MariaDB && !catalog_.empty();
  CatalogArg catalog = catalogArg(catalog_, !restrictCatalog);
  CatalogArg all = catalogArg("%", false);
  SQLRETURN rc;
  if (wide_) {
    auto [c, cl] = argOf<SQLWCHAR>(catalog.w, catalog.null);
    auto [s, sl] = argOf<SQLWCHAR>(all.w, false);
    auto [t, tl] = argOf<SQLWCHAR>(all.w, false);
    rc = api_.SQLTablesW(stmt->handle, c, cl, s, sl, t, tl, nullptr, 0);
  } else {
    auto [c, cl] = argOf<SQLCHAR>(catalog.a, catalog.null);
    auto [s, sl] = argOf<SQLCHAR>(all.a, false);
    auto [t, tl] = argOf<SQLCHAR>(all.a, false);
    rc = api_.SQLTables(stmt->handle, c, cl, s, sl, t, tl, nullptr, 0);
  }
  check(rc, SQL_HANDLE_STMT, stmt->handle, "SQLTables");
  std::vector<TableRow> tables;
  for (const Row& row : readAll(std::make_unique<OdbcCursor>(shared_from_this(), std::move(stmt)))) {
    if (row.size() < 4 || row[2].isNull()) continue;
    TableRow t{nullIfEmpty(row[0]), nullIfEmpty(row[1]), row[2].toText(),
               row[3].isNull() ? std::string("TABLE") : row[3].toText()};
    if (hiddenSchema(t.schema)) continue;
    if (dbms_ == Dbms::MariaDB && restrictCatalog && !t.catalog.isNull() &&
        t.catalog.toText() != catalog_)
      continue;
    if (dbms_ == Dbms::SQLite && startsWith(lower(t.name), "sqlite_")) t.type = "SYSTEM TABLE";
    if (t.type == "BASE TABLE") t.type = "TABLE";
    tables.push_back(std::move(t));
  }
  if (dbms_ == Dbms::SQLite &&
      std::none_of(tables.begin(), tables.end(), [](const TableRow& t) { return t.name == "sqlite_master"; }))
    tables.push_back({vb::Variant::null(), vb::Variant::null(), "sqlite_master", "SYSTEM TABLE"});
  std::stable_sort(tables.begin(), tables.end(), [](const TableRow& a, const TableRow& b) {
    if (a.type != b.type) return a.type < b.type;
    std::string as = a.schema.isNull() ? "" : a.schema.toText();
    std::string bs = b.schema.isNull() ? "" : b.schema.toText();
    if (as != bs) return as < bs;
    return a.name < b.name;
  });
  return tables;
}

std::vector<OdbcSession::KeyRow> OdbcSession::primaryKeyRows(const vb::Variant& catalog,
                                                             const vb::Variant& schema,
                                                             const std::string& table) {
  auto stmt = newStatement();
  CatalogArg c = catalogArg(catalog.isNull() ? catalog_ : catalog.toText(),
                            catalog.isNull() && (dbms_ != Dbms::MariaDB || catalog_.empty()));
  CatalogArg s = catalogArg(schema.isNull() ? "" : schema.toText(), schema.isNull());
  CatalogArg t = catalogArg(table, false);
  SQLRETURN rc;
  if (wide_) {
    auto [cp, cl] = argOf<SQLWCHAR>(c.w, c.null);
    auto [sp, sl] = argOf<SQLWCHAR>(s.w, s.null);
    auto [tp, tl] = argOf<SQLWCHAR>(t.w, false);
    rc = api_.SQLPrimaryKeysW(stmt->handle, cp, cl, sp, sl, tp, tl);
  } else {
    auto [cp, cl] = argOf<SQLCHAR>(c.a, c.null);
    auto [sp, sl] = argOf<SQLCHAR>(s.a, s.null);
    auto [tp, tl] = argOf<SQLCHAR>(t.a, false);
    rc = api_.SQLPrimaryKeys(stmt->handle, cp, cl, sp, sl, tp, tl);
  }
  check(rc, SQL_HANDLE_STMT, stmt->handle, "SQLPrimaryKeys");
  std::vector<KeyRow> keys;
  // TABLE_CAT, TABLE_SCHEM, TABLE_NAME, COLUMN_NAME, KEY_SEQ, PK_NAME
  for (const Row& row : readAll(std::make_unique<OdbcCursor>(shared_from_this(), std::move(stmt)))) {
    if (row.size() < 6 || row[3].isNull()) continue;
    KeyRow k{nullIfEmpty(row[0]), nullIfEmpty(row[1]), row[2].toText(), row[3].toText(),
             row[5].isNull() ? std::string() : row[5].toText(),
             row[4].isNull() ? 1 : row[4].toInt32()};
    keys.push_back(std::move(k));
  }
  correctKeyOrder(table, keys);
  for (auto& k : keys)
    if (k.keyName.empty() && dbms_ == Dbms::SQLite) k.keyName = "pk_" + table;  // as SQLite names it
  std::stable_sort(keys.begin(), keys.end(),
                   [](const KeyRow& a, const KeyRow& b) { return a.ordinal < b.ordinal; });
  return keys;
}

std::string OdbcSession::literal(const std::string& text) const {
  std::string quoted = "'";
  for (char c : text) {
    if (c == '\'' || (c == '\\' && dbms_ == Dbms::MariaDB && backslash_ == Backslash::Escapes)) quoted += c;
    quoted += c;
  }
  return quoted + "'";
}

std::string OdbcSession::sqliteDeclaredType(const std::string& table, const std::string& column) {
  if (table.empty() || column.empty()) return "";
  try {
    auto cursor = queryNative("SELECT type FROM pragma_table_info(" + literal(table) +
                              ") WHERE name = " + literal(column));
    Row row;
    std::string declared;
    if (cursor->fetch(row) && !row.empty() && !row[0].isNull()) declared = row[0].toText();
    while (cursor->fetch(row)) {
    }
    return declared;
  } catch (const vb::VBError&) {
    return "";
  }
}

void OdbcSession::correctKeyOrder(const std::string& table, std::vector<KeyRow>& keys) {
  // The SQLite and MariaDB drivers number key columns by their place in the table, not in the
  // key: the engine's own catalog has the key order.
  std::string sql;
  if (dbms_ == Dbms::SQLite)
    sql = "SELECT name, pk FROM pragma_table_info(" + literal(table) + ") WHERE pk > 0";
  else if (dbms_ == Dbms::MariaDB)
    sql = "SELECT COLUMN_NAME, SEQ_IN_INDEX FROM information_schema.STATISTICS WHERE "
          "TABLE_SCHEMA = DATABASE() AND TABLE_NAME = " + literal(table) +
          " AND INDEX_NAME = 'PRIMARY'";
  if (sql.empty() || keys.empty()) return;
  std::vector<Row> order;
  try {
    order = readAll(queryNative(sql));
  } catch (const vb::VBError&) {
    return;  // the driver's numbering stands
  }
  for (auto& k : keys)
    for (const Row& row : order)
      if (row.size() >= 2 && !row[0].isNull() && lower(row[0].toText()) == lower(k.column))
        k.ordinal = row[1].toInt32();
}

namespace {
std::string ruleText(const vb::Variant& rule) {
  if (rule.isNull()) return "NO ACTION";
  switch (rule.toInt32()) {
    case SQL_CASCADE: return "CASCADE";
    case SQL_SET_NULL: return "SET NULL";
    case SQL_SET_DEFAULT: return "SET DEFAULT";
    default: return "NO ACTION";  // SQL_NO_ACTION, SQL_RESTRICT
  }
}
int16_t deferrabilityOf(const vb::Variant& v) {
  if (v.isNull()) return kNotDeferrable;
  switch (v.toInt32()) {
    case SQL_INITIALLY_DEFERRED: return kInitiallyDeferred;
    case SQL_INITIALLY_IMMEDIATE: return kInitiallyImmediate;
    default: return kNotDeferrable;
  }
}
}  // namespace

void OdbcSession::foreignKeyRows(const std::string& pkTable, const std::string& fkTable,
                                 std::vector<Row>& rows) {
  auto stmt = newStatement();
  bool restrictCatalog = dbms_ == Dbms::MariaDB && !catalog_.empty();
  CatalogArg cat = catalogArg(catalog_, !restrictCatalog);
  CatalogArg pk = catalogArg(pkTable, pkTable.empty());
  CatalogArg fk = catalogArg(fkTable, fkTable.empty());
  SQLRETURN rc;
  if (wide_) {
    auto [cp, cl] = argOf<SQLWCHAR>(cat.w, cat.null);
    auto [pp, pl] = argOf<SQLWCHAR>(pk.w, pk.null);
    auto [fp, fl] = argOf<SQLWCHAR>(fk.w, fk.null);
    rc = api_.SQLForeignKeysW(stmt->handle, pk.null ? nullptr : cp, pk.null ? 0 : cl, nullptr, 0,
                              pp, pl, fk.null ? nullptr : cp, fk.null ? 0 : cl, nullptr, 0, fp, fl);
  } else {
    auto [cp, cl] = argOf<SQLCHAR>(cat.a, cat.null);
    auto [pp, pl] = argOf<SQLCHAR>(pk.a, pk.null);
    auto [fp, fl] = argOf<SQLCHAR>(fk.a, fk.null);
    rc = api_.SQLForeignKeys(stmt->handle, pk.null ? nullptr : cp, pk.null ? 0 : cl, nullptr, 0,
                             pp, pl, fk.null ? nullptr : cp, fk.null ? 0 : cl, nullptr, 0, fp, fl);
  }
  check(rc, SQL_HANDLE_STMT, stmt->handle, "SQLForeignKeys");
  // PKTABLE_CAT, PKTABLE_SCHEM, PKTABLE_NAME, PKCOLUMN_NAME, FKTABLE_CAT, FKTABLE_SCHEM,
  // FKTABLE_NAME, FKCOLUMN_NAME, KEY_SEQ, UPDATE_RULE, DELETE_RULE, FK_NAME, PK_NAME,
  // DEFERRABILITY
  const vb::Variant null = vb::Variant::null();
  int keyNumber = -1;  // SQLite names no keys: they are named as the SQLite provider names them
  for (Row r : readAll(std::make_unique<OdbcCursor>(shared_from_this(), std::move(stmt)))) {
    if (r.size() < 13) continue;
    if (dbms_ == Dbms::SQLite) {
      if (r[8].isNull() || r[8].toInt32() <= 1) ++keyNumber;
      if (nullIfEmpty(r[11]).isNull()) r[11] = "fk_" + r[6].toText() + "_" + std::to_string(keyNumber);
      if (nullIfEmpty(r[12]).isNull()) r[12] = "pk_" + r[2].toText();
    }
    if (hiddenSchema(r[1]) || hiddenSchema(r[5])) continue;
    if (restrictCatalog && !r[4].isNull() && r[4].toText() != catalog_) continue;
    rows.push_back({nullIfEmpty(r[0]), nullIfEmpty(r[1]), r[2], r[3], null, null,
                    nullIfEmpty(r[4]), nullIfEmpty(r[5]), r[6], r[7], null, null,
                    r[8].isNull() ? vb::Variant(int32_t{1}) : vb::Variant(r[8].toInt32()),
                    ruleText(r[9]), ruleText(r[10]), nullIfEmpty(r[12]), nullIfEmpty(r[11]),
                    deferrabilityOf(r.size() > 13 ? r[13] : null)});
  }
}

std::unique_ptr<RowCursor> OdbcSession::openSchema(SchemaEnum schema,
                                                   const std::vector<vb::Variant>& r) {
  // Names are case-sensitive on PostgreSQL, not on the others.
  const bool noCase = dbms_ != Dbms::PostgreSQL;
  const vb::Variant null = vb::Variant::null();
  std::vector<Row> rows;
  if (schema == adSchemaTables) {
    for (const auto& t : tableRows()) {
      Row row{t.catalog, t.schema, t.name, t.type, null, null, null, null, null};
      if (restrictionMatches(r, 0, row[0], noCase) && restrictionMatches(r, 1, row[1], noCase) &&
          restrictionMatches(r, 2, row[2], noCase) && restrictionMatches(r, 3, row[3]))
        rows.push_back(std::move(row));
    }
    return std::make_unique<MemoryCursor>(tablesRowsetColumns(), std::move(rows));
  }
  if (schema == adSchemaPrimaryKeys) {
    for (const auto& t : tableRows()) {
      if (t.type != "TABLE" || !restrictionMatches(r, 0, t.catalog, noCase) ||
          !restrictionMatches(r, 1, t.schema, noCase) || !restrictionMatches(r, 2, t.name, noCase))
        continue;
      for (const auto& k : primaryKeyRows(t.catalog, t.schema, t.name))
        rows.push_back({k.catalog, k.schema, k.table, k.column, null, null, k.ordinal,
                        k.keyName.empty() ? null : vb::Variant(k.keyName)});
    }
    return std::make_unique<MemoryCursor>(primaryKeysRowsetColumns(), std::move(rows));
  }
  if (schema == adSchemaForeignKeys) {
    for (const auto& t : tableRows()) {
      if (t.type != "TABLE" || !restrictionMatches(r, 3, t.catalog, noCase) ||
          !restrictionMatches(r, 4, t.schema, noCase) || !restrictionMatches(r, 5, t.name, noCase))
        continue;
      foreignKeyRows("", t.name, rows);
    }
    std::vector<Row> kept;
    for (auto& row : rows) {
      if (restrictionMatches(r, 0, row[0], noCase) && restrictionMatches(r, 1, row[1], noCase) &&
          restrictionMatches(r, 2, row[2], noCase) && restrictionMatches(r, 3, row[6], noCase) &&
          restrictionMatches(r, 4, row[7], noCase) && restrictionMatches(r, 5, row[8], noCase))
        kept.push_back(std::move(row));
    }
    std::stable_sort(kept.begin(), kept.end(), [](const Row& a, const Row& b) {
      std::string af = a[8].toText(), bf = b[8].toText();
      if (af != bf) return af < bf;
      std::string an = a[16].isNull() ? "" : a[16].toText(), bn = b[16].isNull() ? "" : b[16].toText();
      if (an != bn) return an < bn;
      return a[12].toInt32() < b[12].toInt32();
    });
    return std::make_unique<MemoryCursor>(foreignKeysRowsetColumns(), std::move(kept));
  }
  raiseSchemaNotSupported(schema);
}

std::vector<std::string> OdbcSession::primaryKeyColumns(const std::string& table) {
  vb::Variant catalog = vb::Variant::null(), schema = vb::Variant::null();
  if (dbms_ == Dbms::PostgreSQL) {
    // The schema the name resolves to on the search path.
    auto cursor = queryNative(
        "SELECT n.nspname FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON "
        "n.oid = c.relnamespace WHERE c.oid = to_regclass(" + literal(quoteIdentifier(table)) + ")");
    Row row;
    if (cursor->fetch(row) && !row.empty() && !row[0].isNull()) schema = row[0].toText();
    while (cursor->fetch(row)) {
    }
  }
  std::vector<std::string> columns;
  for (const auto& k : primaryKeyRows(catalog, schema, table)) columns.push_back(k.column);
  return columns;
}

// ---- writes ---------------------------------------------------------------------------------

void OdbcSession::beginTransaction() {
  if (transactionDepth_++ > 0) return;
  SQLRETURN rc = api_.SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                                        reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
  if (!SQL_SUCCEEDED(rc)) {
    transactionDepth_ = 0;
    raise(SQL_HANDLE_DBC, dbc_, "");
  }
}

void OdbcSession::commit() {
  if (transactionDepth_ == 0) return;
  if (--transactionDepth_ > 0) return;
  SQLRETURN rc = api_.SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_COMMIT);
  if (!SQL_SUCCEEDED(rc)) {
    try {
      raise(SQL_HANDLE_DBC, dbc_, "");
    } catch (...) {
      api_.SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
      api_.SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT,
                             reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
      throw;
    }
  }
  api_.SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON),
                         0);
  if (rulesNamed_) rulesToReread_ = true;
}

void OdbcSession::rollback() noexcept {
  if (transactionDepth_ == 0 || dbc_ == SQL_NULL_HDBC) return;
  transactionDepth_ = 0;
  api_.SQLEndTran(SQL_HANDLE_DBC, dbc_, SQL_ROLLBACK);
  api_.SQLSetConnectAttr(dbc_, SQL_ATTR_AUTOCOMMIT, reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON),
                         0);
  if (rulesNamed_) rulesToReread_ = true;
}

namespace {

// One bound parameter and the buffer it points into (kept alive until the statement ran).
struct Parameter {
  SQLSMALLINT cType = SQL_C_CHAR;
  SQLSMALLINT sqlType = SQL_VARCHAR;
  SQLULEN columnSize = 1;
  SQLSMALLINT digits = 0;
  std::string narrow;
  std::u16string wide;
  vb::Bytes bytes;
  SQLBIGINT integer = 0;
  double real = 0;
  float single = 0;
  unsigned char bit = 0;
  SQLLEN indicator = 0;
  SQLPOINTER data() {
    switch (cType) {
      case SQL_C_WCHAR: return wide.data();
      case SQL_C_BINARY: return bytes.data();
      case SQL_C_SBIGINT: return &integer;
      case SQL_C_DOUBLE: return &real;
      case SQL_C_FLOAT: return &single;
      case SQL_C_BIT: return &bit;
      default: return narrow.data();
    }
  }
};

SQLSMALLINT wideTextType(SQLSMALLINT sqlType, bool wide, size_t length) {
  bool isLong = length > 4000 || sqlType == SQL_LONGVARCHAR || sqlType == SQL_WLONGVARCHAR;
  if (wide) {
    if (isLong) return SQL_WLONGVARCHAR;
    return sqlType == SQL_CHAR || sqlType == SQL_WCHAR ? SQL_WCHAR : SQL_WVARCHAR;
  }
  if (isLong) return SQL_LONGVARCHAR;
  return sqlType == SQL_CHAR || sqlType == SQL_WCHAR ? SQL_CHAR : SQL_VARCHAR;
}

bool isTextSqlType(SQLSMALLINT t) {
  return t == SQL_CHAR || t == SQL_VARCHAR || t == SQL_LONGVARCHAR || t == SQL_WCHAR ||
         t == SQL_WVARCHAR || t == SQL_WLONGVARCHAR;
}

// Digits after the point in a decimal text, and all digits.
std::pair<SQLULEN, SQLSMALLINT> decimalShape(const std::string& text) {
  size_t point = text.find('.');
  SQLULEN digits = 0;
  for (char c : text) digits += (c >= '0' && c <= '9') ? 1 : 0;
  SQLSMALLINT scale = point == std::string::npos ? 0 : static_cast<SQLSMALLINT>(text.size() - point - 1);
  return {std::max<SQLULEN>(digits, 1), scale};
}

}  // namespace

int64_t OdbcSession::executeBound(const std::string& nativeSql,
                                  const std::vector<vb::Variant>& values,
                                  const std::vector<ColumnInfo>& valueColumns) {
  auto stmt = newStatement();
  prepare(*stmt, nativeSql);
  if (mayChangeLiteralRules(nativeSql)) rulesToReread_ = rulesNamed_ = true;
  SQLRETURN rc;

  std::vector<Parameter> params(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    DataTypeEnum type = i < valueColumns.size() ? valueColumns[i].type : adVarWChar;
    vb::Variant value = coerceToColumn(type, values[i]);
    Parameter& p = params[i];
    p.sqlType = sqlTypeFor(type);
    if (isTextSqlType(p.sqlType)) p.sqlType = wideTextType(p.sqlType, wide_, 0);
    auto bindText = [&](const std::string& text) {
      if (wide_) {
        p.cType = SQL_C_WCHAR;
        p.wide = utf8ToUtf16(text);
        p.indicator = static_cast<SQLLEN>(p.wide.size() * sizeof(char16_t));
        p.columnSize = std::max<SQLULEN>(p.wide.size(), 1);
        p.wide.push_back(u'\0');
      } else {
        p.cType = SQL_C_CHAR;
        p.narrow = text;
        p.indicator = static_cast<SQLLEN>(text.size());
        p.columnSize = std::max<SQLULEN>(text.size(), 1);
      }
      if (isTextSqlType(p.sqlType)) p.sqlType = wideTextType(p.sqlType, wide_, p.columnSize);
    };
    switch (value.type()) {
      case vb::VarType::Empty:
      case vb::VarType::Null:
        p.cType = SQL_C_CHAR;
        p.narrow = " ";
        p.indicator = SQL_NULL_DATA;
        break;
      case vb::VarType::Boolean:
        p.cType = SQL_C_BIT;
        p.bit = value.toBool() ? 1 : 0;
        p.sqlType = SQL_BIT;
        break;
      case vb::VarType::Integer:
      case vb::VarType::Long:
      case vb::VarType::LongLong:
        p.cType = SQL_C_SBIGINT;
        p.integer = value.toInt64();
        if (isTextSqlType(p.sqlType) || p.sqlType == SQL_BIT || p.sqlType == SQL_GUID)
          p.sqlType = SQL_BIGINT;
        p.columnSize = 19;
        break;
      case vb::VarType::Single:
        p.cType = SQL_C_FLOAT;
        p.single = static_cast<float>(value.toDouble());
        p.sqlType = SQL_REAL;
        p.columnSize = 7;
        break;
      case vb::VarType::Double:
        p.cType = SQL_C_DOUBLE;
        p.real = value.toDouble();
        p.sqlType = p.sqlType == SQL_REAL ? SQL_REAL : SQL_DOUBLE;
        p.columnSize = 15;
        break;
      case vb::VarType::Bytes:
        p.cType = SQL_C_BINARY;
        p.bytes = value.asBytes();
        p.indicator = static_cast<SQLLEN>(p.bytes.size());
        p.columnSize = std::max<SQLULEN>(p.bytes.size(), 1);
        if (p.bytes.empty()) p.bytes.push_back(0);  // a valid pointer for an empty value
        if (p.sqlType != SQL_BINARY && p.sqlType != SQL_VARBINARY && p.sqlType != SQL_LONGVARBINARY)
          p.sqlType = SQL_VARBINARY;
        if (p.columnSize > 8000) p.sqlType = SQL_LONGVARBINARY;
        break;
      case vb::VarType::Decimal:
      case vb::VarType::Currency: {
        // Exact digits as text: no rounding through a binary number.
        std::string text = value.toText();
        p.cType = SQL_C_CHAR;
        p.narrow = text;
        p.indicator = static_cast<SQLLEN>(text.size());
        auto [precision, scale] = decimalShape(text);
        if (p.sqlType == SQL_DECIMAL || p.sqlType == SQL_NUMERIC) {
          p.columnSize = std::max<SQLULEN>(precision, 1);
          p.digits = scale;
        } else {
          p.columnSize = text.size();
        }
        break;
      }
      case vb::VarType::Date: {
        // Timestamps as their text with every fractional digit: some drivers drop the fraction
        // of a bound timestamp structure.
        const vb::DateTime& dt = value.asDateTime();
        std::string text = dt.toText();
        p.cType = SQL_C_CHAR;
        p.narrow = text;
        p.indicator = static_cast<SQLLEN>(text.size());
        size_t point = text.rfind('.');
        p.digits = point == std::string::npos ? 0 : static_cast<SQLSMALLINT>(text.size() - point - 1);
        if (dt.kind == vb::DateTime::Kind::Date) p.sqlType = SQL_TYPE_DATE, p.columnSize = 10;
        else if (dt.kind == vb::DateTime::Kind::Time) p.sqlType = SQL_TYPE_TIME, p.columnSize = text.size();
        else p.sqlType = SQL_TYPE_TIMESTAMP, p.columnSize = std::max<SQLULEN>(text.size(), 19);
        if (isTextSqlType(sqlTypeFor(type)) || dbms_ == Dbms::SQLite) {
          p.sqlType = SQL_VARCHAR;  // a text column, or SQLite, which keeps dates as text
          p.digits = 0;
          bindText(text);
        }
        break;
      }
      default:
        bindText(value.toText());
        break;
    }
    rc = api_.SQLBindParameter(stmt->handle, static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT,
                               p.cType, p.sqlType, p.columnSize, p.digits, p.data(),
                               p.indicator > 0 ? p.indicator : 0, &p.indicator);
    check(rc, SQL_HANDLE_STMT, stmt->handle);
  }
  rc = api_.SQLExecute(stmt->handle);
  check(rc, SQL_HANDLE_STMT, stmt->handle);
  SQLLEN rows = 0;
  if (rc == SQL_NO_DATA) return 0;
  if (!SQL_SUCCEEDED(api_.SQLRowCount(stmt->handle, &rows))) rows = -1;
  return rows;
}

// ---- registration ---------------------------------------------------------------------------

namespace {

// What the Connection owns: every call goes to the shared session; closing ends a pending
// transaction and lets the session go when no cursor holds it any more.
class SessionHandle final : public ProviderSession {
 public:
  explicit SessionHandle(std::shared_ptr<OdbcSession> session) : s_(std::move(session)) {}
  ~SessionHandle() override { s_->rollback(); }
  SessionHandle(const SessionHandle&) = delete;
  SessionHandle& operator=(const SessionHandle&) = delete;

  std::string providerName() const override { return s_->providerName(); }
  std::unique_ptr<RowCursor> query(const std::string& sql) override { return s_->query(sql); }
  std::unique_ptr<RowCursor> queryDeferred(const std::string& sql) override { return s_->queryDeferred(sql); }
  int64_t execute(const std::string& sql) override { return s_->execute(sql); }
  std::unique_ptr<RowCursor> openTable(const std::string& table) override {
    return s_->openTable(table);
  }
  int64_t countRows(const std::string& sql) override { return s_->countRows(sql); }
  std::unique_ptr<RowCursor> openSchema(SchemaEnum schema,
                                        const std::vector<vb::Variant>& restrictions) override {
    return s_->openSchema(schema, restrictions);
  }
  std::vector<std::string> primaryKeyColumns(const std::string& table) override {
    return s_->primaryKeyColumns(table);
  }
  void beginTransaction() override { s_->beginTransaction(); }
  void commit() override { s_->commit(); }
  void rollback() noexcept override { s_->rollback(); }
  int64_t executeBound(const std::string& nativeSql, const std::vector<vb::Variant>& values,
                       const std::vector<ColumnInfo>& valueColumns) override {
    return s_->executeBound(nativeSql, values, valueColumns);
  }
  std::string quoteIdentifier(const std::string& name) const override {
    return s_->quoteIdentifier(name);
  }
  EngineFamily engineFamily() const override { return s_->engineFamily(); }
  std::optional<double> numericLiteralValue(const std::string& literal) override {
    return s_->numericLiteralValue(literal);
  }
  std::optional<double> doubleLiteralValue(double value) override { return s_->doubleLiteralValue(value); }
  TextBytes textComparedByBytes(const std::string& table, const std::string& column) override {
    return s_->textComparedByBytes(table, column);
  }
  bool setReadOnly(bool readOnly) override { return s_->setReadOnly(readOnly); }

 private:
  std::shared_ptr<OdbcSession> s_;
};

std::unique_ptr<ProviderSession> openOdbcSession(const ConnectionString& connection,
                                                 const std::string& userID,
                                                 const std::string& password) {
  auto session = std::make_shared<OdbcSession>();
  session->connect(connection, userID, password);
  return std::make_unique<SessionHandle>(std::move(session));
}

const ProviderRegistrar registrar("MSDASQL", &openOdbcSession);
const ProviderRegistrar registrarVersioned("MSDASQL.1", &openOdbcSession);

}  // namespace
}  // namespace varsentix::ado::detail::odbcprovider
