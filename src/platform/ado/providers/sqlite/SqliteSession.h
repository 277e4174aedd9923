#pragma once
// The SQLite provider's session ("Provider=SQLite;Data Source=<file>"), exposed so that other
// providers can answer SQL through an SQLite database of their own (the Jet provider loads an
// Access file into an in-memory database and wraps it here).
//
// Extension points, all virtual and all with SQLite's own answer by default:
//   tableList()          the tables and views of rowset 20 and their TABLE_TYPE
//   tableType()          TABLE_TYPE of one entry ("TABLE", "VIEW", "SYSTEM TABLE")
//   primaryKeyRows()     rows of rowset 28 for one table (also what Update locates rows by)
//   foreignKeyRows()     rows of rowset 27 (all foreign keys of the database)
//   describeDeclaredType()  the ADO type, size, precision and scale of a declared column type
//   checkWritable()      raises when the session refuses writes (called before every write)
// and Options carries the provider name and the SQL dialect (e.g. #date# translation).
// The sqlite3 type is only declared here; sqlite3.h stays inside the provider's .cpp files.
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/ado/Provider.h"
#include "platform/ado/SqlDialect.h"
#include "platform/ado/SqlLexer.h"

struct sqlite3;
struct sqlite3_stmt;

namespace varsentix::ado::detail {

// The ADO description of a declared SQLite column type ("NVARCHAR(40)", "NUMERIC(10,2)",
// "INTEGER", "" ...), by SQLite's affinity rules refined by the type's name. Sets type,
// definedSize, precision and numericScale of the result; the name is left empty.
ColumnInfo sqliteColumnType(const std::string& declaredType);

class SqliteSession : public ProviderSession {
 public:
  struct Options {
    std::string providerName = "SQLite";  // providerName() and the source of its errors
    DialectOptions dialect{0, 0, false};  // SQLite takes [brackets] as they are
    SqlEngine engine = SqlEngine::SQLite;   // whose rules the one-statement check reads by
  };
  struct TableEntry {
    std::string name;
    std::string type;  // "TABLE", "VIEW", "SYSTEM TABLE", ...
  };
  struct KeyColumn {
    std::string table;
    std::string column;
    int32_t ordinal = 1;  // 1-based position in the key
    std::string keyName;
  };
  struct ForeignKeyColumn {
    std::string pkTable, pkColumn, fkTable, fkColumn;
    int32_t ordinal = 1;
    std::string updateRule = "NO ACTION", deleteRule = "NO ACTION";
    std::string pkName, fkName;
    int16_t deferrability = 3;  // not deferrable
  };

  // Opens an existing database file for reading and writing, or for reading only (the file is
  // then opened read-only: nothing of it can change). Never creates a file: a missing file
  // raises ProviderError naming it; a file that is no database raises the engine's error.
  // Closing a session that wrote nothing leaves a WAL file as it found it (no checkpoint).
  static std::unique_ptr<SqliteSession> openFile(const std::string& path, bool readingOnly = false);
  // Wraps an open database; closes it on destruction when ownsHandle is true.
  SqliteSession(sqlite3* db, bool ownsHandle, Options options);
  SqliteSession(sqlite3* db, bool ownsHandle) : SqliteSession(db, ownsHandle, Options{}) {}
  ~SqliteSession() override;
  SqliteSession(const SqliteSession&) = delete;
  SqliteSession& operator=(const SqliteSession&) = delete;

  sqlite3* handle() const { return db_; }
  const Options& options() const { return options_; }

  // ProviderSession
  std::string providerName() const override { return options_.providerName; }
  std::unique_ptr<RowCursor> query(const std::string& sql) override;
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
  // Both sides native SQLite databases in files, neither inside a transaction nor holding
  // temporary tables (which would hide a table of the same name from the joined reader). The
  // reader has the function varsentix_exact_literal(value, kind), see the .cpp file.
  std::unique_ptr<ProviderSession> openJoinedReader(ProviderSession& other) override;
  // From the engine's plan for sql: a temporary b-tree for its order.
  bool sortsForOrder(const std::string& sql) override;
  // EqualityAndOrder for a column of text affinity under the BINARY collation, in a UTF-8 file.
  TextBytes textComparedByBytes(const std::string& table, const std::string& column) override;
  // PRAGMA query_only; a file opened for reading only stays so.
  bool setReadOnly(bool readOnly) override;

  // Runs native SQL (no dialect translation) and returns its rows: for the extension points.
  std::unique_ptr<RowCursor> queryNative(const std::string& nativeSql);

 protected:
  virtual std::vector<TableEntry> tableList();
  virtual std::string tableType(const std::string& name, bool isView) const;
  virtual std::vector<KeyColumn> primaryKeyRows(const std::string& table);
  // Whether primaryKeyRows is SQLite's own, so that the keys of all tables can be read at once.
  virtual bool primaryKeysInOneQuery() const { return true; }
  virtual std::vector<ForeignKeyColumn> foreignKeyRows();
  virtual ColumnInfo describeDeclaredType(const std::string& declaredType) const {
    return sqliteColumnType(declaredType);
  }
  virtual void checkWritable() const {}
  // Called after a statement of the session changed the database: its close may checkpoint.
  void noteWritten();

  // Raises the VBError for the database's last failure (number by result code, the engine's
  // text, the extended result code kept as native error).
  [[noreturn]] void raiseLastError(int resultCode) const;

 private:
  friend class SqliteCursor;
  sqlite3* db_;
  bool ownsHandle_;
  Options options_;
  int transactionDepth_ = 0;
  bool readingOnly_ = false;  // the file was opened read-only
  bool queryOnly_ = false;    // PRAGMA query_only is on (setReadOnly)
  bool written_ = false;      // a statement of the session changed the database
  // "SELECT CAST(?1 AS REAL)", prepared on first use: SQLite's own reading of a numeric
  // literal, which is not always the nearest double.
  sqlite3_stmt* literalStatement_ = nullptr;
  sqlite3_stmt* versionStatement_ = nullptr;  // PRAGMA schema_version
  // primaryKeyRows per table as of a schema version.
  std::vector<KeyColumn> cachedPrimaryKeyRows(const std::string& table);
  std::map<std::string, std::vector<KeyColumn>> primaryKeyCache_;
  int64_t primaryKeyCacheVersion_ = -1;
  // The database's schema version (-1 when it cannot be read): the key of the caches below.
  int64_t schemaVersion();
  int64_t readSchemaVersion();
  // While one schema rowset is made, the version read at its start serves every cache it asks:
  // one PRAGMA per rowset rather than one per cache.
  class SchemaVersionScope {
   public:
    explicit SchemaVersionScope(SqliteSession& session);
    ~SchemaVersionScope();
    SchemaVersionScope(const SchemaVersionScope&) = delete;
    SchemaVersionScope& operator=(const SchemaVersionScope&) = delete;

   private:
    SqliteSession& session_;
    bool outermost_;
  };
  bool versionScoped_ = false;
  int64_t scopedVersion_ = -1;
  std::vector<TableEntry> tableCache_;  // tableList() as of a schema version
  // tableList() as of the current schema version, kept until it changes.
  const std::vector<TableEntry>& tables();
  int64_t tableCacheVersion_ = -1;
  // Positions in tableCache_ of the tables whose name, in ASCII letters only, is the given one
  // in lower case, together with every name that is not plain ASCII; ascending. A rowset asked
  // per table needs no walk of the whole list.
  std::vector<uint32_t> tablePositionsFor(const std::string& asciiName);
  std::unordered_map<std::string, std::vector<uint32_t>> asciiNamePositions_;
  std::vector<uint32_t> otherNamePositions_;  // names that are empty or not plain ASCII
  // foreignKeyRows() as of a schema version of the database: one walk of all tables serves
  // every foreign-key rowset until the schema changes.
  std::vector<ForeignKeyColumn> foreignKeyCache_;
  int64_t foreignKeyCacheVersion_ = -1;
};

}  // namespace varsentix::ado::detail
