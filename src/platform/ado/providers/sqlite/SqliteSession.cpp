#include "platform/ado/providers/sqlite/SqliteSession.h"

#include <sqlite3.h>

#include <algorithm>
#include <system_error>
#include <charconv>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>

#include "platform/ado/MemoryCursor.h"
#include "platform/ado/SchemaRowsets.h"
#include "platform/ado/TypeInfo.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

bool isAscii(const std::string& text) {
  for (char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalsIgnoringAsciiCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t n = 0; n < a.size(); ++n)
    if (asciiLower(a[n]) != asciiLower(b[n])) return false;
  return true;
}

struct StatementDeleter {
  void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

// A prepared statement of native text; empty when it does not prepare.
Statement prepared(sqlite3* db, const std::string& nativeSql) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db, nativeSql.c_str(), static_cast<int>(nativeSql.size()), &raw, nullptr) !=
      SQLITE_OK) {
    sqlite3_finalize(raw);
    return {};
  }
  return Statement(raw);
}

// The ADO-like number and an SQLSTATE-like class of an SQLite failure.
std::pair<int32_t, const char*> classify(int resultCode, const std::string& message) {
  switch (resultCode & 0xff) {
    case SQLITE_CONSTRAINT: return {vb::errnum::ProviderIntegrityViolation, "23000"};
    case SQLITE_READONLY: return {vb::errnum::ProviderReadOnly, "25006"};
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
    case SQLITE_AUTH:
    case SQLITE_PERM: return {vb::errnum::ProviderError, "08001"};
    case SQLITE_ERROR:
      if (message.rfind("no such table", 0) == 0)
        return {vb::errnum::ProviderNoSuchTable, "42S02"};
      return {vb::errnum::ProviderSyntaxError, "42000"};
    default: return {vb::errnum::ProviderError, "HY000"};
  }
}

[[noreturn]] void raiseFor(sqlite3* db, int resultCode, const std::string& source) {
  std::string message = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(resultCode);
  int extended = db != nullptr ? sqlite3_extended_errcode(db) : resultCode;
  auto [number, state] = classify(resultCode, message);
  throw vb::VBError(number, message, source).withDriverDetail(state, extended);
}

std::string lower(const std::string& text) { return vb::LCase(text); }

// ---- reading values -------------------------------------------------------------------------

// The value of an integer as its column's type asks for, handed to put (the one place that
// knows the mapping, whether the value is made anew or set in place).
template <typename Put>
[[gnu::always_inline]] inline auto withInteger(sqlite3_int64 v, const ColumnInfo& column, Put&& put) {
  switch (column.type) {
    case adBoolean: return put(v != 0);
    case adTinyInt:
    case adUnsignedTinyInt:
    case adSmallInt:
      if (v >= INT16_MIN && v <= INT16_MAX) return put(static_cast<int16_t>(v));
      return put(static_cast<int64_t>(v));
    case adInteger:
    case adUnsignedSmallInt:
      if (v >= INT32_MIN && v <= INT32_MAX) return put(static_cast<int32_t>(v));
      return put(static_cast<int64_t>(v));
    case adDouble: return put(static_cast<double>(v));
    case adSingle: return put(static_cast<float>(v));
    case adNumeric:
    case adDecimal:
    case adVarNumeric: return put(vb::Decimal{withScale(std::to_string(v), column.numericScale)});
    case adCurrency:
      if (v > INT64_MAX / 10000 || v < INT64_MIN / 10000) return put(static_cast<int64_t>(v));
      return put(vb::Currency{v * 10000});
    default:
      if (isTextType(column.type)) return put(std::to_string(v));
      return put(static_cast<int64_t>(v));
  }
}

// v with exactly scale decimals, computed in integers when that gives the same digits as
// rounding v's shortest text: not for large numbers, nor near a half, where the two may differ.
std::optional<std::string> quickDecimal(double v, uint8_t scale) {
  static const double powers[] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
  if (scale > 9 || !(std::fabs(v) < 1e9)) return std::nullopt;
  double scaled = std::fabs(v) * powers[scale];
  double fraction = scaled - std::floor(scaled);
  if (std::fabs(fraction - 0.5) < 1e-6) return std::nullopt;
  auto units = static_cast<uint64_t>(std::llround(scaled));
  // Digits written right to left into a buffer: "-", the whole part, ".", scale decimals.
  char buffer[48];
  char* p = buffer + sizeof buffer;
  for (int i = 0; i < scale; ++i, units /= 10) *--p = static_cast<char>('0' + units % 10);
  if (scale > 0) *--p = '.';
  do {
    *--p = static_cast<char>('0' + units % 10);
    units /= 10;
  } while (units != 0);
  bool zero = true;
  for (char* q = p; q < buffer + sizeof buffer; ++q) zero = zero && (*q == '0' || *q == '.');
  if (v < 0 && !zero) *--p = '-';
  return std::string(p, static_cast<size_t>(buffer + sizeof buffer - p));
}

// The value of a double as its column's type asks for, handed to put.
template <typename Put>
[[gnu::always_inline]] inline auto withFloat(double v, const ColumnInfo& column, Put&& put) {
  switch (column.type) {
    case adDouble: return put(v);
    case adSingle:
      // A number no Single can hold (SQLite keeps any double in such a column) stays a Double.
      if (std::isfinite(v) && std::fabs(v) > std::numeric_limits<float>::max()) return put(v);
      return put(static_cast<float>(v));
    case adBoolean: return put(v != 0.0);
    case adNumeric:
    case adDecimal:
    case adVarNumeric: {
      if (auto quick = quickDecimal(v, column.numericScale)) return put(vb::Decimal{std::move(*quick)});
      // The shortest fixed-point text that reads back to v, rounded to the column's scale.
      if (!std::isfinite(v)) return put(vb::Decimal{vb::CStr(v)});
      char buffer[400];
      auto written = std::to_chars(buffer, buffer + sizeof buffer, v, std::chars_format::fixed);
      return put(vb::Decimal{withScale(std::string_view(buffer, static_cast<size_t>(written.ptr - buffer)),
                                       column.numericScale)});
    }
    case adCurrency:
      if (std::fabs(v) < 9.2e14) return put(vb::Currency{std::llround(v * 10000.0)});
      return put(v);
    default:
      if (isTextType(column.type)) return put(vb::CStr(v));
      return put(v);
  }
}

// Reads exactly width digits at p; false when one is not a digit.
bool digitsAt(const char* p, int width, int& value) {
  value = 0;
  for (int i = 0; i < width; ++i) {
    if (p[i] < '0' || p[i] > '9') return false;
    value = value * 10 + (p[i] - '0');
  }
  return true;
}

// The stored forms "YYYY-MM-DD" and "YYYY-MM-DD HH:MM:SS[.fffffffff]" read without allocating;
// false for any other text (read then by DateTime::parse).
bool fastDateTime(const char* t, int n, vb::DateTime& out) {
  int year, month, day, hour = 0, minute = 0, second = 0;
  if (n < 10 || t[4] != '-' || t[7] != '-' || !digitsAt(t, 4, year) || !digitsAt(t + 5, 2, month) ||
      !digitsAt(t + 8, 2, day) || month < 1 || month > 12 || day < 1 || day > 31)
    return false;
  uint32_t nanos = 0;
  if (n == 10) {
    out.kind = vb::DateTime::Kind::Date;
  } else {
    if (n < 19 || (t[10] != ' ' && t[10] != 'T') || t[13] != ':' || t[16] != ':' ||
        !digitsAt(t + 11, 2, hour) || !digitsAt(t + 14, 2, minute) || !digitsAt(t + 17, 2, second) ||
        hour > 23 || minute > 59 || second > 60)
      return false;
    if (n > 19) {
      if (t[19] != '.' || n == 20 || n > 29) return false;
      int digits = 0;
      for (int i = 20; i < n; ++i, ++digits) {
        if (t[i] < '0' || t[i] > '9') return false;
        nanos = nanos * 10 + static_cast<uint32_t>(t[i] - '0');
      }
      for (; digits < 9; ++digits) nanos *= 10;
    }
    out.kind = vb::DateTime::Kind::Timestamp;
  }
  out.year = year;
  out.month = static_cast<uint8_t>(month);
  out.day = static_cast<uint8_t>(day);
  out.hour = static_cast<uint8_t>(hour);
  out.minute = static_cast<uint8_t>(minute);
  out.second = static_cast<uint8_t>(second);
  out.nanosecond = nanos;
  return true;
}

vb::Variant fromText(const char* text, int bytes, const ColumnInfo& column) {
  if (isTextType(column.type) || column.type == adGUID) return std::string(text, static_cast<size_t>(bytes));
  vb::DateTime when;
  if ((column.type == adDBTimeStamp || column.type == adDate) && fastDateTime(text, bytes, when)) {
    when.kind = vb::DateTime::Kind::Timestamp;
    return when;
  }
  if (column.type == adDBDate && bytes == 10 && fastDateTime(text, bytes, when)) return when;
  std::string value(text, static_cast<size_t>(bytes));
  if (isBinaryType(column.type)) return vb::Bytes(value.begin(), value.end());
  try {
    return variantFromText(column.type, value);
  } catch (const vb::VBError&) {
    return value;  // SQLite keeps any text in any column: it is shown as it is
  }
}

// Makes a Variant of the value withInteger and withFloat hand over.
const auto madeAnew = [](auto&& value) { return vb::Variant(std::forward<decltype(value)>(value)); };

// The value of one column of the current row as the Variant its column type asks for. Reads
// through the column's sqlite3_value: fewer API calls than the sqlite3_column_* family, which
// matters on a walk of millions of rows. storageClass is value's sqlite3_value_type, which a
// caller that has already asked for it hands over.
vb::Variant convertValue(sqlite3_value* value, int storageClass, const ColumnInfo& column, bool textColumn) {
  switch (storageClass) {
    case SQLITE_NULL: return vb::Variant::null();
    case SQLITE_INTEGER: return withInteger(sqlite3_value_int64(value), column, madeAnew);
    case SQLITE_FLOAT: return withFloat(sqlite3_value_double(value), column, madeAnew);
    case SQLITE_TEXT:
      return fromText(reinterpret_cast<const char*>(sqlite3_value_text(value)),
                      sqlite3_value_bytes(value), column);
    default: {
      const auto* data = static_cast<const uint8_t*>(sqlite3_value_blob(value));
      int bytes = sqlite3_value_bytes(value);
      if (textColumn) return std::string(reinterpret_cast<const char*>(data), static_cast<size_t>(bytes));
      return vb::Bytes(data, data + bytes);
    }
  }
}

vb::Variant convertValue(sqlite3_value* value, const ColumnInfo& column, bool textColumn) {
  return convertValue(value, sqlite3_value_type(value), column, textColumn);
}

// (Inlined into the loops that read a row: it is called for every value.)
[[gnu::always_inline]] inline void readValue(sqlite3_stmt* stmt, int i, const ColumnInfo& column, bool textColumn,
                                             vb::Variant& out) {
  sqlite3_value* value = sqlite3_column_value(stmt, i);
  // Numbers are set into out in place, and the row's previous text is refilled in place, so a
  // walk neither allocates per value nor makes and moves a Variant per number.
  const auto inPlace = [&out](auto&& number) { out.set(std::forward<decltype(number)>(number)); };
  const int storageClass = sqlite3_value_type(value);
  switch (storageClass) {
    case SQLITE_INTEGER: return withInteger(sqlite3_value_int64(value), column, inPlace);
    case SQLITE_FLOAT: return withFloat(sqlite3_value_double(value), column, inPlace);
    case SQLITE_TEXT:
      if (textColumn && out.type() == vb::VarType::String) {
        const_cast<std::string&>(out.asString())
            .assign(reinterpret_cast<const char*>(sqlite3_value_text(value)),
                    static_cast<size_t>(sqlite3_value_bytes(value)));
        return;
      }
      break;
    default:
      break;
  }
  out = convertValue(value, storageClass, column, textColumn);
}

// The type of a computed column (no declared type) from the storage class of its first value.
ColumnInfo typeOfComputed(int storageClass) {
  switch (storageClass) {
    case SQLITE_INTEGER: return sqliteColumnType("BIGINT");
    case SQLITE_FLOAT: return sqliteColumnType("DOUBLE");
    case SQLITE_BLOB: return sqliteColumnType("BLOB");
    default: return sqliteColumnType("");
  }
}

// ---- binding --------------------------------------------------------------------------------

int bindText(sqlite3_stmt* stmt, int index, const std::string& text) {
  return sqlite3_bind_text64(stmt, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

int bindValue(sqlite3_stmt* stmt, int index, const vb::Variant& value) {
  switch (value.type()) {
    case vb::VarType::Empty:
    case vb::VarType::Null: return sqlite3_bind_null(stmt, index);
    case vb::VarType::Boolean: return sqlite3_bind_int(stmt, index, value.toBool() ? 1 : 0);
    case vb::VarType::Integer:
    case vb::VarType::Long:
    case vb::VarType::LongLong: return sqlite3_bind_int64(stmt, index, value.toInt64());
    case vb::VarType::Single:
    case vb::VarType::Double: return sqlite3_bind_double(stmt, index, value.toDouble());
    case vb::VarType::Bytes: {
      const vb::Bytes& bytes = value.asBytes();
      return sqlite3_bind_blob64(stmt, index, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    }
    default: return bindText(stmt, index, value.toText());  // decimals, currency, dates, text
  }
}

}  // namespace

// ---- the cursor -----------------------------------------------------------------------------

class SqliteCursor : public RowCursor {
 public:
  SqliteCursor(sqlite3* db, Statement stmt, const SqliteSession& session)
      : db_(db), stmt_(std::move(stmt)), source_(session.providerName()) {
    // A computed column takes the type of its first value: the first row is read now. Columns of
    // tables are described by their declarations, and the first row is read by the first
    // advance (a statement that sorts sorts then).
    for (int i = 0, count = sqlite3_column_count(stmt_.get()); i < count; ++i) {
      if (sqlite3_column_decltype(stmt_.get(), i) == nullptr) {
        step();
        started_ = true;
        pending_ = true;
        break;
      }
    }
    describe(session);
  }
  const std::vector<ColumnInfo>& columns() const override { return columns_; }
  bool supportsValueAt() const override { return true; }
  bool advance() override {
    if (!started_) {
      started_ = true;
      step();
      return hasRow_;
    }
    if (!hasRow_) return false;
    if (pending_) {
      pending_ = false;  // the first row was stepped to when the cursor was made
      return true;
    }
    step();
    return hasRow_;
  }
  vb::Variant valueAt(size_t column) override {
    return convertValue(sqlite3_column_value(stmt_.get(), static_cast<int>(column)),
                        columns_[column], textColumns_[column]);
  }
  void valueInto(size_t column, vb::Variant& out) override {
    readValue(stmt_.get(), static_cast<int>(column), columns_[column], textColumns_[column], out);
  }
  void valuesInto(const std::vector<int32_t>& columns, const std::vector<size_t>& places,
                  std::vector<vb::Variant>& row) override {
    sqlite3_stmt* stmt = stmt_.get();
    for (size_t i = 0; i < columns.size(); ++i) {
      const auto column = static_cast<size_t>(columns[i]);
      readValue(stmt, columns[i], columns_[column], textColumns_[column], row[places[i]]);
    }
  }
  bool watchRise(size_t column, std::shared_ptr<std::atomic<RiseSeen>> seen) override {
    if (column >= columns_.size()) return false;
    riseColumn_ = static_cast<int>(column);
    rise_ = std::move(seen);
    haveRisen_ = false;
    if (started_) {
      // The row stepped to as the cursor was made is the first watched; an ended one was empty.
      if (hasRow_) watchRow();
      else rise_->store(RiseSeen::Held);
    }
    return true;
  }
  bool fetch(std::vector<vb::Variant>& row) override {
    if (!advance()) return false;
    row.resize(columns_.size());
    sqlite3_stmt* stmt = stmt_.get();
    for (size_t i = 0; i < columns_.size(); ++i)
      readValue(stmt, static_cast<int>(i), columns_[i], textColumns_[i], row[i]);
    return true;
  }

 private:
  void step() {
    int rc = sqlite3_step(stmt_.get());
    if (rc == SQLITE_ROW) {
      hasRow_ = true;
      if (rise_) watchRow();
    } else if (rc == SQLITE_DONE) {
      hasRow_ = false;
      if (rise_) rise_->store(RiseSeen::Held);
    } else {
      hasRow_ = false;
      if (rise_) rise_->store(RiseSeen::Broken);
      raiseFor(db_, rc, source_);
    }
  }
  // The watched value of the row stepped to: stored as an integer above the one before, or the
  // watch is broken (and ends).
  void watchRow() {
    // Through the column's sqlite3_value: one call that finds the column instead of two.
    sqlite3_value* column = sqlite3_column_value(stmt_.get(), riseColumn_);
    const bool integer = sqlite3_value_type(column) == SQLITE_INTEGER;
    const sqlite3_int64 value = integer ? sqlite3_value_int64(column) : 0;
    if (!integer || (haveRisen_ && value <= lastRisen_)) {
      rise_->store(RiseSeen::Broken);
      rise_.reset();
      return;
    }
    haveRisen_ = true;
    lastRisen_ = value;
  }
  void describe(const SqliteSession& session);

  sqlite3* db_;
  Statement stmt_;
  std::string source_;
  std::vector<ColumnInfo> columns_;
  std::vector<uint8_t> textColumns_;  // per column: isTextType(type) (bytes: read for every value)
  bool started_ = false;  // the statement was stepped
  bool hasRow_ = false;
  bool pending_ = false;  // the first row was stepped to when the cursor was made
  // Watching the rows' rise (see watchRise): the column, where the outcome goes (none once
  // broken), and the value of the row before.
  int riseColumn_ = 0;
  std::shared_ptr<std::atomic<RiseSeen>> rise_;
  bool haveRisen_ = false;
  sqlite3_int64 lastRisen_ = 0;
};

void SqliteCursor::describe(const SqliteSession& session) {
  sqlite3_stmt* stmt = stmt_.get();
  int count = sqlite3_column_count(stmt);
  columns_.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const char* declared = sqlite3_column_decltype(stmt, i);
    ColumnInfo info = declared != nullptr
                          ? session.describeDeclaredType(declared)
                          : typeOfComputed(hasRow_ ? sqlite3_column_type(stmt, i) : SQLITE_NULL);
    const char* name = sqlite3_column_name(stmt, i);
    info.name = name != nullptr ? name : "";
    const char* table = sqlite3_column_table_name(stmt, i);
    const char* origin = sqlite3_column_origin_name(stmt, i);
    const char* database = sqlite3_column_database_name(stmt, i);
    if (table != nullptr && origin != nullptr) {
      info.baseTable = table;
      info.baseColumn = origin;
      int notNull = 0, primaryKey = 0, autoIncrement = 0;
      if (sqlite3_table_column_metadata(db_, database, table, origin, nullptr, nullptr, &notNull,
                                        &primaryKey, &autoIncrement) == SQLITE_OK)
        info.nullable = notNull == 0;
    }
    textColumns_.push_back(isTextType(info.type));
    columns_.push_back(std::move(info));
  }
}

// ---- the session ----------------------------------------------------------------------------

std::unique_ptr<SqliteSession> SqliteSession::openFile(const std::string& path, bool readingOnly) {
  auto fail = [&](const std::string& message) {
    throw vb::VBError(vb::errnum::ProviderError, message, "SQLite")
        .withDriverDetail("08001", SQLITE_CANTOPEN);
  };
  if (path.empty()) fail("No database file was named: the connection string has no Data Source.");
  std::error_code ec;
  if (path != ":memory:" && !std::filesystem::exists(path, ec))
    fail("unable to open database file: " + path + " does not exist");
  if (path != ":memory:" && std::filesystem::is_directory(path, ec))
    fail("unable to open database file: " + path + " is a folder");
  sqlite3* db = nullptr;
  // NOMUTEX: a session is used from one thread at a time, so SQLite need not lock per call.
  const int access = readingOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  int rc = sqlite3_open_v2(path.c_str(), &db, access | SQLITE_OPEN_NOMUTEX, nullptr);
  auto session = std::make_unique<SqliteSession>(db, true);  // owns db even when rc failed
  if (rc != SQLITE_OK) session->raiseLastError(rc);
  session->readingOnly_ = readingOnly;
  sqlite3_busy_timeout(db, 5000);
  // The last connection to close a WAL database checkpoints it into the file and deletes the
  // WAL: a change of both files that a session which only read must not make. noteWritten()
  // gives the checkpoint back to a session that wrote.
  sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (readingOnly) sqlite3_exec(db, "PRAGMA query_only = 1", nullptr, nullptr, nullptr);
  // Opening is lazy: read the schema now so that a file that is no database fails here.
  rc = sqlite3_exec(db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) session->raiseLastError(rc);
  return session;
}

SqliteSession::SqliteSession(sqlite3* db, bool ownsHandle, Options options)
    : db_(db), ownsHandle_(ownsHandle), options_(std::move(options)) {}

SqliteSession::~SqliteSession() {
  sqlite3_finalize(literalStatement_);
  sqlite3_finalize(versionStatement_);
  if (ownsHandle_ && db_ != nullptr) sqlite3_close_v2(db_);  // waits for open cursors
}

EngineFamily SqliteSession::engineFamily() const {
  // Access files are read into SQLite too, but their statements are translated first.
  return options_.providerName == "SQLite" ? EngineFamily::SQLite : EngineFamily::Other;
}

namespace {

// SQLite reads a literal of at most 15 digits without an exponent as the digits d (an integer
// below 2^53) divided by 10^k in long double, then rounds to double. When k <= 3 that is the
// nearest double: a double-rounding error needs the long double quotient to fall on a midpoint
// between doubles, at most 2^-64 relative from d / 10^k, while a midpoint differs from it by at
// least 2^-53 / 10^k relative (its numerator is a non-zero integer), and 10^k < 2^11.
bool readsAsNearest(std::string_view literal) {
  if (literal.empty()) return false;
  size_t digits = 0, fraction = 0;
  bool point = false;
  for (size_t i = literal[0] == '-' ? 1 : 0; i < literal.size(); ++i) {
    const char c = literal[i];
    if (c == '.' && !point) {
      point = true;
    } else if (c >= '0' && c <= '9') {
      ++digits;
      if (point) ++fraction;
    } else {
      return false;
    }
  }
  return digits != 0 && digits <= 15 && fraction <= 3;
}

std::optional<double> nearestWhenExact(const std::string& literal) {
  if (!readsAsNearest(literal)) return std::nullopt;
  double value = 0;
  const char* end = literal.data() + literal.size();
  auto [ptr, ec] = std::from_chars(literal.data(), end, value);
  if (ec != std::errc() || ptr != end) return std::nullopt;
  return value;
}

}  // namespace

std::optional<double> SqliteSession::numericLiteralValue(const std::string& literal) {
  // A literal is read by the same routine as a text cast to REAL; an integer literal is kept
  // as an integer by SQLite, which compares equal to the same value as REAL.
  if (literal.empty() || literal.find_first_not_of("0123456789+-.eE") != std::string::npos)
    return std::nullopt;
  if (auto value = nearestWhenExact(literal)) return value;
  if (literalStatement_ == nullptr &&
      sqlite3_prepare_v2(db_, "SELECT CAST(?1 AS REAL)", -1, &literalStatement_, nullptr) != SQLITE_OK)
    return std::nullopt;
  std::optional<double> value;
  if (sqlite3_bind_text(literalStatement_, 1, literal.data(), static_cast<int>(literal.size()),
                        SQLITE_STATIC) == SQLITE_OK &&
      sqlite3_step(literalStatement_) == SQLITE_ROW &&
      sqlite3_column_type(literalStatement_, 0) == SQLITE_FLOAT)
    value = sqlite3_column_double(literalStatement_, 0);
  sqlite3_reset(literalStatement_);
  sqlite3_clear_bindings(literalStatement_);
  return value;
}

std::optional<double> SqliteSession::doubleLiteralValue(double value) {
  if (!std::isfinite(value)) return std::nullopt;  // "NaN", "Infinity": no numeric literal
  // A double below a million, not whole, that is the nearest to some thousandths: its shortest
  // text has no exponent (the fixed form is the shorter), at most 3 decimals and 9 digits, and
  // reads back as itself. Amounts mostly are such; no text need be made for them.
  if (std::fabs(value) < 1e6 && std::trunc(value) != value) {
    const double thousandths = std::nearbyint(value * 1000);
    if (thousandths / 1000 == value) return value;
  }
  char buffer[64];
  const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
  if (ec != std::errc()) return numericLiteralValue(vb::CStr(value));
  const std::string_view text(buffer, static_cast<size_t>(end - buffer));
  // Read as the nearest double, the shortest text is the double itself.
  if (readsAsNearest(text)) return value;
  return numericLiteralValue(std::string(text));
}

void SqliteSession::raiseLastError(int resultCode) const {
  raiseFor(db_, resultCode, options_.providerName);
}

namespace {

// Longest text the joined comparison takes as certain: far below SQLite's limit on like
// patterns, past which the like of a statement fails.
constexpr int kLongestExactText = 10000;

// varsentix_exact_literal(value, kind): 1 when a statement that writes value as a literal, the
// way the record comparison writes one for a column of that kind, makes SQLite read back the
// very same value; 0 otherwise. Kinds: 'I' integer column, 'D' double column, 'T' text column.
//   - NULL is written as "is null": always certain;
//   - an integer in an integer column is written in decimal: certain;
//   - a double in a double column is written as its shortest text, which SQLite does not always
//     read back to the same double: checked by reading it the engine's way;
//   - a text in a text column is written between apostrophes: certain unless it holds a NUL or
//     is too long for a like pattern.
// Anything else (a value stored in a column of another kind) is left uncertain.
void exactLiteral(sqlite3_context* context, int /*argc*/, sqlite3_value** argv) {
  auto* session = static_cast<SqliteSession*>(sqlite3_user_data(context));
  sqlite3_value* value = argv[0];
  const auto* kindText = sqlite3_value_text(argv[1]);
  const char kind = kindText != nullptr ? static_cast<char>(kindText[0]) : '?';
  bool exact = false;
  switch (sqlite3_value_type(value)) {
    case SQLITE_NULL:
      exact = true;
      break;
    case SQLITE_INTEGER:
      exact = kind == 'I';
      break;
    case SQLITE_FLOAT:
      if (kind == 'D') {
        const double stored = sqlite3_value_double(value);
        const auto read = session->doubleLiteralValue(stored);
        exact = read.has_value() && *read == stored;
      }
      break;
    case SQLITE_TEXT:
      if (kind == 'T') {
        const auto* text = sqlite3_value_text(value);
        const int bytes = sqlite3_value_bytes(value);
        exact = bytes <= kLongestExactText && std::memchr(text, 0, static_cast<size_t>(bytes)) == nullptr;
      }
      break;
    default:
      break;
  }
  sqlite3_result_int(context, exact ? 1 : 0);
}

bool holdsTemporaryObjects(sqlite3* db) {
  Statement stmt = prepared(db, "SELECT 1 FROM temp.sqlite_master LIMIT 1");
  return !stmt || sqlite3_step(stmt.get()) != SQLITE_DONE;
}

std::string fileOf(sqlite3* db) {
  const char* path = sqlite3_db_filename(db, "main");
  return path != nullptr ? path : "";
}

}  // namespace

std::unique_ptr<ProviderSession> SqliteSession::openJoinedReader(ProviderSession& other) {
  auto* peer = dynamic_cast<SqliteSession*>(&other);
  if (peer == nullptr || engineFamily() != EngineFamily::SQLite ||
      peer->engineFamily() != EngineFamily::SQLite)
    return nullptr;
  // Uncommitted changes would be seen by the sides' own statements but not by the reader.
  if (sqlite3_get_autocommit(db_) == 0 || sqlite3_get_autocommit(peer->db_) == 0) return nullptr;
  if (holdsTemporaryObjects(db_) || holdsTemporaryObjects(peer->db_)) return nullptr;
  const std::string path = fileOf(db_), otherPath = fileOf(peer->db_);
  if (path.empty() || otherPath.empty()) return nullptr;  // in-memory databases
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
  auto joined = std::make_unique<SqliteSession>(db, true, options_);
  if (rc != SQLITE_OK) return nullptr;
  joined->readingOnly_ = true;
  sqlite3_busy_timeout(db, 5000);
  // Read-only like its file, the attached one included, and no checkpoint when it closes.
  sqlite3_db_config(db, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(db, "ATTACH DATABASE ?1 AS varsentix_other", -1, &raw, nullptr) != SQLITE_OK)
    return nullptr;
  Statement attach(raw);
  if (bindText(attach.get(), 1, otherPath) != SQLITE_OK || sqlite3_step(attach.get()) != SQLITE_DONE)
    return nullptr;
  if (sqlite3_create_function_v2(db, "varsentix_exact_literal", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC,
                                 joined.get(), &exactLiteral, nullptr, nullptr, nullptr) != SQLITE_OK)
    return nullptr;
  if (sqlite3_exec(db, "PRAGMA query_only = 1", nullptr, nullptr, nullptr) != SQLITE_OK) return nullptr;
  return joined;
}

namespace {

// Whether the engine's plan for a query sorts its rows to give them in order.
bool planSortsForOrder(sqlite3* db, const std::string& nativeSql) {
  Statement plan = prepared(db, "EXPLAIN QUERY PLAN " + nativeSql);
  if (!plan) return false;
  bool sorts = false;
  int rc;
  while ((rc = sqlite3_step(plan.get())) == SQLITE_ROW) {
    const auto* detail = reinterpret_cast<const char*>(sqlite3_column_text(plan.get(), 3));
    if (detail != nullptr && std::strstr(detail, "TEMP B-TREE") != nullptr &&
        std::strstr(detail, "ORDER BY") != nullptr)
      sorts = true;
  }
  return rc == SQLITE_DONE && sorts;
}

}  // namespace

bool SqliteSession::sortsForOrder(const std::string& sql) {
  const std::string native = translateSql(sql, options_.dialect);
  checkSingleStatement(native, options_.engine, false);
  return planSortsForOrder(db_, native);
}

TextBytes SqliteSession::textComparedByBytes(const std::string& table, const std::string& column) {
  // Access files compare their texts without regard to case.
  if (engineFamily() != EngineFamily::SQLite) return TextBytes::Unknown;
  // BINARY compares the bytes of the database's encoding: those of UTF-8 only in a UTF-8 file.
  Statement encoding = prepared(db_, "PRAGMA encoding");
  if (!encoding || sqlite3_step(encoding.get()) != SQLITE_ROW) return TextBytes::Unknown;
  const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(encoding.get(), 0));
  if (name == nullptr || std::strcmp(name, "UTF-8") != 0) return TextBytes::Unknown;
  // The table as a statement names it: a temporary one first, then the main database's.
  const char* declared = nullptr;
  const char* collation = nullptr;
  if (sqlite3_table_column_metadata(db_, nullptr, table.c_str(), column.c_str(), &declared, &collation, nullptr,
                                    nullptr, nullptr) != SQLITE_OK)
    return TextBytes::Unknown;
  if (collation == nullptr || sqlite3_stricmp(collation, "BINARY") != 0) return TextBytes::Unknown;
  // Text affinity: the declared type names CHAR, CLOB or TEXT and not INT. With another affinity
  // a literal that reads as a number is compared as one.
  std::string type = declared != nullptr ? declared : "";
  for (char& c : type) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (type.find("INT") != std::string::npos) return TextBytes::Unknown;
  const bool text = type.find("CHAR") != std::string::npos || type.find("CLOB") != std::string::npos ||
                    type.find("TEXT") != std::string::npos;
  return text ? TextBytes::EqualityAndOrder : TextBytes::Unknown;
}

bool SqliteSession::setReadOnly(bool readOnly) {
  if (readingOnly_) return true;
  const int rc = sqlite3_exec(db_, readOnly ? "PRAGMA query_only = 1" : "PRAGMA query_only = 0", nullptr,
                              nullptr, nullptr);
  if (rc != SQLITE_OK) raiseLastError(rc);
  queryOnly_ = readOnly;
  return true;
}

void SqliteSession::noteWritten() {
  if (written_) return;
  written_ = true;
  if (ownsHandle_) sqlite3_db_config(db_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

std::unique_ptr<RowCursor> SqliteSession::queryNative(const std::string& nativeSql) {
  checkSingleStatement(nativeSql, options_.engine, false);
  sqlite3_stmt* raw = nullptr;
  int rc = sqlite3_prepare_v2(db_, nativeSql.c_str(), static_cast<int>(nativeSql.size()), &raw,
                              nullptr);
  Statement stmt(raw);
  if (rc != SQLITE_OK) raiseLastError(rc);
  if (!stmt) raiseFor(nullptr, SQLITE_ERROR, options_.providerName);  // blank text
  if (!sqlite3_stmt_readonly(stmt.get())) {
    checkWritable();
    // A statement that writes as it returns rows (unless the engine is to refuse it).
    if (!queryOnly_ && !readingOnly_) noteWritten();
  }
  return std::make_unique<SqliteCursor>(db_, std::move(stmt), *this);
}

std::unique_ptr<RowCursor> SqliteSession::query(const std::string& sql) {
  return queryNative(translateSql(sql, options_.dialect));
}

int64_t SqliteSession::execute(const std::string& sql) {
  std::string native = translateSql(sql, options_.dialect);
  checkSingleStatement(native, options_.engine, false);
  sqlite3_stmt* raw = nullptr;
  int rc = sqlite3_prepare_v2(db_, native.c_str(), static_cast<int>(native.size()), &raw, nullptr);
  Statement stmt(raw);
  if (rc != SQLITE_OK) raiseLastError(rc);
  if (!stmt) return -1;  // nothing but blanks or comments
  bool readOnly = sqlite3_stmt_readonly(stmt.get()) != 0;
  if (!readOnly) checkWritable();
  sqlite3_int64 before = sqlite3_total_changes64(db_);
  while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
  }
  if (rc != SQLITE_DONE) raiseLastError(rc);
  if (!readOnly) noteWritten();
  return readOnly ? -1 : static_cast<int64_t>(sqlite3_total_changes64(db_) - before);
}

std::unique_ptr<RowCursor> SqliteSession::openTable(const std::string& table) {
  return queryNative("SELECT * FROM " + quoteIdentifier(table));
}

int64_t SqliteSession::countRows(const std::string& sql) {
  auto cursor = queryNative("SELECT count(*) FROM (" + translateSql(sql, options_.dialect) + ")");
  std::vector<vb::Variant> row;
  if (!cursor->fetch(row) || row.empty()) return 0;
  return row[0].toInt64();
}

std::string SqliteSession::quoteIdentifier(const std::string& name) const {
  std::string quoted = "\"";
  for (char c : name) {
    quoted += c;
    if (c == '"') quoted += c;
  }
  return quoted + "\"";
}

// ---- schema rowsets -------------------------------------------------------------------------

std::string SqliteSession::tableType(const std::string& name, bool isView) const {
  if (lower(name).rfind("sqlite_", 0) == 0) return "SYSTEM TABLE";
  return isView ? "VIEW" : "TABLE";
}

SqliteSession::SchemaVersionScope::SchemaVersionScope(SqliteSession& session)
    : session_(session), outermost_(!session.versionScoped_) {
  if (!outermost_) return;
  session_.scopedVersion_ = session_.readSchemaVersion();
  session_.versionScoped_ = true;
}

SqliteSession::SchemaVersionScope::~SchemaVersionScope() {
  if (outermost_) session_.versionScoped_ = false;
}

int64_t SqliteSession::schemaVersion() { return versionScoped_ ? scopedVersion_ : readSchemaVersion(); }

int64_t SqliteSession::readSchemaVersion() {
  // Asked before every cached schema answer: one statement kept prepared.
  if (versionStatement_ == nullptr &&
      sqlite3_prepare_v2(db_, "PRAGMA schema_version", -1, &versionStatement_, nullptr) != SQLITE_OK)
    return -1;
  const int64_t version =
      sqlite3_step(versionStatement_) == SQLITE_ROW ? sqlite3_column_int64(versionStatement_, 0) : -1;
  sqlite3_reset(versionStatement_);
  return version;
}

std::vector<SqliteSession::KeyColumn> SqliteSession::cachedPrimaryKeyRows(const std::string& table) {
  const int64_t version = schemaVersion();
  if (version < 0) return primaryKeyRows(table);
  if (version != primaryKeyCacheVersion_) {
    primaryKeyCache_.clear();
    primaryKeyCacheVersion_ = version;
  }
  if (primaryKeysInOneQuery() && primaryKeyCache_.empty()) {
    // Every table's key in one statement: a schema of thousands of tables is asked about each.
    auto cursor = queryNative(
        "SELECT m.name, p.name, p.pk FROM sqlite_master AS m, pragma_table_info(m.name) AS p "
        "WHERE m.type = 'table' AND p.pk > 0 ORDER BY m.name, p.pk");
    std::vector<vb::Variant> row;
    while (cursor->fetch(row)) {
      const std::string name = row[0].toText();
      primaryKeyCache_[name].push_back(
          {name, row[1].toText(), static_cast<int32_t>(row[2].toInt64()), "pk_" + name});
    }
    // The tables the statement found no key for have none: not asked again one by one.
    for (const auto& t : tables())
      if (t.type != "VIEW") primaryKeyCache_.emplace(t.name, std::vector<KeyColumn>());
    primaryKeyCache_.emplace("", std::vector<KeyColumn>());  // marks the cache as filled
  }
  auto found = primaryKeyCache_.find(table);
  if (found == primaryKeyCache_.end()) {
    // A table without a key, a view, or a name spelt in another letter case: asked on its own.
    found = primaryKeyCache_.emplace(table, primaryKeyRows(table)).first;
  }
  return found->second;
}

const std::vector<SqliteSession::TableEntry>& SqliteSession::tables() {
  const int64_t version = schemaVersion();
  if (version < 0 || version != tableCacheVersion_) {
    tableCache_ = tableList();
    tableCacheVersion_ = version;
    asciiNamePositions_.clear();
    otherNamePositions_.clear();
    for (size_t p = 0; p < tableCache_.size(); ++p) {
      const std::string& name = tableCache_[p].name;
      if (name.empty() || !isAscii(name)) {
        otherNamePositions_.push_back(static_cast<uint32_t>(p));
        continue;
      }
      std::string key = name;
      for (char& c : key) c = asciiLower(c);
      asciiNamePositions_[key].push_back(static_cast<uint32_t>(p));
    }
  }
  return tableCache_;
}

std::vector<uint32_t> SqliteSession::tablePositionsFor(const std::string& asciiName) {
  tables();
  std::string key = asciiName;
  for (char& c : key) c = asciiLower(c);
  std::vector<uint32_t> positions = otherNamePositions_;
  auto found = asciiNamePositions_.find(key);
  if (found != asciiNamePositions_.end()) {
    positions.insert(positions.end(), found->second.begin(), found->second.end());
    std::sort(positions.begin(), positions.end());
  }
  return positions;
}

std::vector<SqliteSession::TableEntry> SqliteSession::tableList() {
  std::vector<TableEntry> tables{{"sqlite_master", tableType("sqlite_master", false)}};
  auto cursor = queryNative(
      "SELECT name, type FROM sqlite_master WHERE type IN ('table','view') ORDER BY name");
  std::vector<vb::Variant> row;
  while (cursor->fetch(row)) {
    std::string name = row[0].toText();
    tables.push_back({name, tableType(name, row[1].toText() == "view")});
  }
  std::stable_sort(tables.begin(), tables.end(), [](const TableEntry& a, const TableEntry& b) {
    return a.type != b.type ? a.type < b.type : a.name < b.name;
  });
  return tables;
}

std::vector<SqliteSession::KeyColumn> SqliteSession::primaryKeyRows(const std::string& table) {
  std::vector<KeyColumn> keys;
  std::string literal = "'";
  for (char c : table) literal += c == '\'' ? std::string("''") : std::string(1, c);
  literal += "'";
  auto cursor =
      queryNative("SELECT name, pk FROM pragma_table_info(" + literal + ") WHERE pk > 0 ORDER BY pk");
  std::vector<vb::Variant> row;
  while (cursor->fetch(row))
    keys.push_back({table, row[0].toText(), static_cast<int32_t>(row[1].toInt64()), "pk_" + table});
  return keys;
}

std::vector<SqliteSession::ForeignKeyColumn> SqliteSession::foreignKeyRows() {
  // The schema version changes with every schema change any connection commits.
  const int64_t version = schemaVersion();
  if (version >= 0 && version == foreignKeyCacheVersion_) return foreignKeyCache_;
  const std::vector<TableEntry>& tables = this->tables();
  std::map<std::string, std::string> storedName;  // lower-case name -> name as created
  for (const auto& t : tables) storedName[lower(t.name)] = t.name;
  // Every table's foreign keys in one statement, then handed out in the table list's order.
  std::unordered_map<std::string, std::vector<std::vector<vb::Variant>>> rowsOf;
  {
    auto cursor = queryNative(
        "SELECT m.name, f.id, f.seq, f.\"table\", f.\"from\", f.\"to\", f.on_update, f.on_delete "
        "FROM sqlite_master AS m, pragma_foreign_key_list(m.name) AS f WHERE m.type = 'table' "
        "ORDER BY m.name, f.id, f.seq");
    std::vector<vb::Variant> read;
    while (cursor->fetch(read)) {
      const std::string name = read[0].toText();
      rowsOf[name].emplace_back(read.begin() + 1, read.end());
    }
  }
  std::vector<ForeignKeyColumn> keys;
  for (const auto& t : tables) {
    if (t.type == "VIEW") continue;
    auto rowsOfTable = rowsOf.find(t.name);
    if (rowsOfTable == rowsOf.end()) continue;
    for (const auto& row : rowsOfTable->second) {
      ForeignKeyColumn fk;
      std::string referenced = row[2].toText();
      auto found = storedName.find(lower(referenced));
      fk.pkTable = found != storedName.end() ? found->second : referenced;
      fk.fkTable = t.name;
      fk.fkColumn = row[3].toText();
      fk.ordinal = static_cast<int32_t>(row[1].toInt64()) + 1;
      if (!row[4].isNull()) {
        fk.pkColumn = row[4].toText();
      } else {  // REFERENCES t without columns: the referenced table's primary key
        auto pk = cachedPrimaryKeyRows(fk.pkTable);
        if (static_cast<size_t>(fk.ordinal) <= pk.size()) fk.pkColumn = pk[fk.ordinal - 1].column;
      }
      auto rule = [](const std::string& r) { return r == "RESTRICT" ? std::string("NO ACTION") : r; };
      fk.updateRule = rule(row[5].toText());
      fk.deleteRule = rule(row[6].toText());
      fk.pkName = "pk_" + fk.pkTable;
      fk.fkName = "fk_" + t.name + "_" + row[0].toText();
      keys.push_back(std::move(fk));
    }
  }
  foreignKeyCache_ = keys;
  foreignKeyCacheVersion_ = version;
  return keys;
}

std::unique_ptr<RowCursor> SqliteSession::openSchema(SchemaEnum schema,
                                                     const std::vector<vb::Variant>& r) {
  const vb::Variant null = vb::Variant::null();
  std::vector<Row> rows;
  SchemaVersionScope sameVersion(*this);
  if (schema == adSchemaTables) {
    for (const auto& t : tables()) {
      Row row{null, null, t.name, t.type, null, null, null, null, null};
      if (restrictionMatches(r, 2, row[2], true) && restrictionMatches(r, 3, row[3]))
        rows.push_back(std::move(row));
    }
    if (!restrictionMatches(r, 0, null) || !restrictionMatches(r, 1, null)) rows.clear();
    return std::make_unique<MemoryCursor>(tablesRowsetColumns(), std::move(rows));
  }
  if (schema == adSchemaPrimaryKeys) {
    if (restrictionMatches(r, 0, null) && restrictionMatches(r, 1, null)) {
      // A restriction of plain ASCII text is compared here letter by letter (as restrictionMatches
      // does for ASCII), without a copy per table: the rowset is asked once per table.
      std::string wanted;
      const bool asciiWanted = r.size() > 2 && r[2].type() == vb::VarType::String && !(wanted = r[2].toText()).empty() &&
                               isAscii(wanted);
      // An ASCII name can only be matched by the tables of the same name in any letter case and
      // by names that are not ASCII: only those are looked at.
      std::vector<uint32_t> positions;
      if (asciiWanted) {
        positions = tablePositionsFor(wanted);
      } else {
        positions.resize(tables().size());
        for (size_t p = 0; p < positions.size(); ++p) positions[p] = static_cast<uint32_t>(p);
      }
      for (const uint32_t p : positions) {
        const TableEntry& t = tableCache_[p];
        if (t.type == "VIEW") continue;
        const bool matches = asciiWanted && !t.name.empty() && isAscii(t.name)
                                 ? equalsIgnoringAsciiCase(t.name, wanted)
                                 : restrictionMatches(r, 2, t.name, true);
        if (!matches) continue;
        for (const auto& k : cachedPrimaryKeyRows(t.name))
          rows.push_back({null, null, k.table, k.column, null, null, k.ordinal, k.keyName});
      }
    }
    return std::make_unique<MemoryCursor>(primaryKeysRowsetColumns(), std::move(rows));
  }
  if (schema == adSchemaForeignKeys) {
    bool catalogsPass = restrictionMatches(r, 0, null) && restrictionMatches(r, 1, null) &&
                        restrictionMatches(r, 3, null) && restrictionMatches(r, 4, null);
    std::vector<ForeignKeyColumn> keys = catalogsPass ? foreignKeyRows() : std::vector<ForeignKeyColumn>{};
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) {
      if (a.fkTable != b.fkTable) return a.fkTable < b.fkTable;
      if (a.fkName != b.fkName) return a.fkName < b.fkName;
      return a.ordinal < b.ordinal;
    });
    for (const auto& k : keys) {
      if (!restrictionMatches(r, 2, k.pkTable, true) || !restrictionMatches(r, 5, k.fkTable, true))
        continue;
      rows.push_back({null, null, k.pkTable, k.pkColumn, null, null, null, null, k.fkTable,
                      k.fkColumn, null, null, k.ordinal, k.updateRule, k.deleteRule, k.pkName,
                      k.fkName, k.deferrability});
    }
    return std::make_unique<MemoryCursor>(foreignKeysRowsetColumns(), std::move(rows));
  }
  raiseSchemaNotSupported(schema);
}

std::vector<std::string> SqliteSession::primaryKeyColumns(const std::string& table) {
  std::vector<std::string> columns;
  SchemaVersionScope sameVersion(*this);
  for (const auto& k : cachedPrimaryKeyRows(table)) columns.push_back(k.column);
  return columns;
}

// ---- writes ---------------------------------------------------------------------------------

void SqliteSession::beginTransaction() {
  checkWritable();
  int rc = sqlite3_exec(db_, "SAVEPOINT varsentix_write", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) raiseLastError(rc);
  ++transactionDepth_;
}

void SqliteSession::commit() {
  int rc = sqlite3_exec(db_, "RELEASE varsentix_write", nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) raiseLastError(rc);
  --transactionDepth_;
}

void SqliteSession::rollback() noexcept {
  if (transactionDepth_ == 0) return;
  sqlite3_exec(db_, "ROLLBACK TO varsentix_write", nullptr, nullptr, nullptr);
  sqlite3_exec(db_, "RELEASE varsentix_write", nullptr, nullptr, nullptr);
  --transactionDepth_;
}

int64_t SqliteSession::executeBound(const std::string& nativeSql,
                                    const std::vector<vb::Variant>& values,
                                    const std::vector<ColumnInfo>& /*valueColumns*/) {
  checkWritable();
  checkSingleStatement(nativeSql, options_.engine, false);
  sqlite3_stmt* raw = nullptr;
  int rc = sqlite3_prepare_v2(db_, nativeSql.c_str(), static_cast<int>(nativeSql.size()), &raw,
                              nullptr);
  Statement stmt(raw);
  if (rc != SQLITE_OK) raiseLastError(rc);
  for (size_t i = 0; i < values.size(); ++i) {
    rc = bindValue(stmt.get(), static_cast<int>(i + 1), values[i]);
    if (rc != SQLITE_OK) raiseLastError(rc);
  }
  rc = sqlite3_step(stmt.get());
  if (rc != SQLITE_DONE && rc != SQLITE_ROW) raiseLastError(rc);
  noteWritten();
  return sqlite3_changes64(db_);
}

// ---- registration ---------------------------------------------------------------------------

namespace {

std::unique_ptr<ProviderSession> openSqliteSession(const ConnectionString& connection,
                                                   const std::string& /*userID*/,
                                                   const std::string& /*password*/) {
  std::string path = connection.getOr("Data Source", connection.getOr("DataSource", ""));
  return SqliteSession::openFile(path, opensForReadingOnly(connection));
}

const ProviderRegistrar registrar("SQLite", &openSqliteSession);

}  // namespace
}  // namespace varsentix::ado::detail
