#include "platform/ado/providers/jet/JetLoader.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstdio>
#include <initializer_list>

#include "platform/ado/SqlLexer.h"
#include "platform/ado/providers/jet/JetTypes.h"
#include "platform/ado/providers/jet/MdbFile.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

constexpr const char* kSource = "Microsoft JET Database Engine";

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

[[noreturn]] void raiseLoad(sqlite3* db, const std::string& path, const std::string& what) {
  vb::raiseError(vb::errnum::ProviderError,
                 "Cannot load the Access file '" + path + "' (" + what + "): " + sqlite3_errmsg(db),
                 kSource);
}

std::string quoted(const std::string& name) {
  std::string out = "\"";
  for (char c : name) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

void exec(sqlite3* db, const std::string& path, const std::string& sql) {
  // sqlite3_exec runs every statement of its text: the names from the file make one only.
  checkSingleStatement(sql, SqlEngine::SQLite, false);
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
    raiseLoad(db, path, sql);
}

std::string createTableSql(const JetTable& table) {
  std::string sql = "CREATE TABLE " + quoted(table.name) + " (";
  for (size_t i = 0; i < table.columns.size(); ++i) {
    if (i) sql += ", ";
    sql += quoted(table.columns[i].name) + " " + declaredColumnType(table.columns[i]);
    if (table.columns[i].type == AccessType::Boolean) sql += " NOT NULL";  // Yes/No is never Null
  }
  return sql + ")";
}

std::string insertSql(const JetTable& table) {
  std::string sql = "INSERT INTO " + quoted(table.name) + " VALUES (";
  for (size_t i = 0; i < table.columns.size(); ++i) sql += i ? ", ?" : "?";
  return sql + ")";
}

double singleAsDouble(float value) {
  char text[32];
  auto [end, error] = std::to_chars(text, text + sizeof text, value);
  if (error != std::errc()) return value;
  *end = '\0';
  return std::strtod(text, nullptr);
}

void bindValue(sqlite3_stmt* statement, int index, const vb::Variant& value) {
  switch (value.type()) {
    case vb::VarType::Empty:
    case vb::VarType::Null: sqlite3_bind_null(statement, index); break;
    case vb::VarType::Boolean: sqlite3_bind_int(statement, index, value.toBool() ? -1 : 0); break;
    case vb::VarType::Integer:
    case vb::VarType::Long: sqlite3_bind_int(statement, index, value.toInt32()); break;
    case vb::VarType::Single:
      // The double nearest the Single's shortest text (0.15f is stored as 0.15), so that it
      // compares with and reads as the number Access shows.
      sqlite3_bind_double(statement, index, singleAsDouble(static_cast<float>(value.toDouble())));
      break;
    case vb::VarType::Double: sqlite3_bind_double(statement, index, value.toDouble()); break;
    case vb::VarType::Currency:
      // The nearest double to the exact amount; exact for amounts below 900 billion.
      sqlite3_bind_double(statement, index, value.toDouble());
      break;
    case vb::VarType::Date: {
      std::string text = storedDateText(value.asDateTime());
      sqlite3_bind_text(statement, index, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      break;
    }
    case vb::VarType::Bytes: {
      const auto& bytes = value.asBytes();
      sqlite3_bind_blob(statement, index, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
      break;
    }
    case vb::VarType::String: {
      const auto& text = value.asString();
      sqlite3_bind_text(statement, index, text.c_str(), static_cast<int>(text.size()), SQLITE_STATIC);
      break;
    }
    default: {
      std::string text = value.toText();  // Decimal: its exact digits
      sqlite3_bind_text(statement, index, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
      break;
    }
  }
}

void copyTable(MdbFile& file, sqlite3* db, const JetTable& table) {
  exec(db, file.path(), createTableSql(table));
  sqlite3_stmt* raw = nullptr;
  const std::string insertText = insertSql(table);
  checkSingleStatement(insertText, SqlEngine::SQLite, false);
  if (sqlite3_prepare_v2(db, insertText.c_str(), static_cast<int>(insertText.size()), &raw, nullptr) !=
      SQLITE_OK)
    raiseLoad(db, file.path(), "table " + table.name);
  Statement insert(raw);
  file.readRows(table, [&](const std::vector<vb::Variant>& row) {
    for (size_t i = 0; i < row.size(); ++i) bindValue(insert.get(), static_cast<int>(i) + 1, row[i]);
    if (sqlite3_step(insert.get()) != SQLITE_DONE) raiseLoad(db, file.path(), "table " + table.name);
    sqlite3_reset(insert.get());
  });
}

// Date text in the forms other sides write ("YYYY-MM-DD", "YYYY-MM-DDTHH:MM:SS",
// "HH:MM:SS", "YYYY-MM-DD HH:MM", a zero fraction) brought to the stored form.
std::string canonicalDateText(const char* text, int length) {
  std::string value(text, static_cast<size_t>(std::max(length, 0)));
  auto digitsAt = [&](std::initializer_list<size_t> positions) {
    for (size_t p : positions)
      if (p >= value.size() || value[p] < '0' || value[p] > '9') return false;
    return true;
  };
  bool isoDate = value.size() >= 10 && value[4] == '-' && value[7] == '-' &&
                 digitsAt({0, 1, 2, 3, 5, 6, 8, 9});
  if (isoDate && value.size() == 10) return value + " 00:00:00";
  if (isoDate && value.size() > 10 && value[10] == 'T') value[10] = ' ';
  if (value.size() == 8 && value[2] == ':' && value[5] == ':' && digitsAt({0, 1, 3, 4, 6, 7}))
    return "1899-12-30 " + value;
  if (isoDate && value.size() == 16 && value[13] == ':') return value + ":00";
  if (isoDate && value.size() > 19 && value[19] == '.' &&
      value.find_first_not_of('0', 20) == std::string::npos)
    value.resize(19);
  return value;
}

// The collation of Date/Time columns: Jet compares a date column with date text as dates, so
// '1996-07-04' equals the stored '1996-07-04 00:00:00'.
int compareDateTexts(void*, int leftLength, const void* left, int rightLength, const void* right) {
  std::string a = canonicalDateText(static_cast<const char*>(left), leftLength);
  std::string b = canonicalDateText(static_cast<const char*>(right), rightLength);
  return a.compare(b) < 0 ? -1 : a.compare(b) > 0 ? 1 : 0;
}

}  // namespace

void SqliteCloser::operator()(sqlite3* db) const { sqlite3_close_v2(db); }

std::string storedDateText(const vb::DateTime& value) {
  char text[48];
  std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u:%02u", value.year, value.month,
                value.day, value.hour, value.minute, value.second);
  return text;
}

LoadedAccessFile loadAccessFile(const std::string& path, const std::string& databasePassword) {
  auto file = MdbFile::open(path, databasePassword);
  LoadedAccessFile loaded;
  loaded.path = path;
  loaded.format = file->formatName();
  JetCatalog catalog = file->readCatalog();
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(":memory:", &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  loaded.db.reset(raw);
  if (rc != SQLITE_OK) raiseLoad(raw, path, "in-memory database");
  sqlite3* db = loaded.db.get();
  if (sqlite3_create_collation_v2(db, "JETDATE", SQLITE_UTF8, nullptr, &compareDateTexts, nullptr) !=
      SQLITE_OK)
    raiseLoad(db, path, "date collation");
  exec(db, path, "BEGIN");
  for (const auto& table : catalog.tables) {
    if (table.kind == JetTableKind::Table) {
      copyTable(*file, db, table);
    } else {
      try {
        exec(db, path, "SAVEPOINT system_table");
        copyTable(*file, db, table);
        exec(db, path, "RELEASE system_table");
      } catch (const vb::VBError&) {
        exec(db, path, "ROLLBACK TO system_table");
        exec(db, path, "RELEASE system_table");
        continue;
      }
    }
    loaded.catalog.tables.push_back(table);
  }
  for (auto& relationship : catalog.relationships)
    if (loaded.catalog.findTable(relationship.fkTable) && loaded.catalog.findTable(relationship.pkTable))
      loaded.catalog.relationships.push_back(std::move(relationship));
  exec(db, path, "COMMIT");
  exec(db, path, "PRAGMA query_only = 1");
  return loaded;
}

}  // namespace varsentix::ado::detail
