#include "platform/ado/providers/jet/JetSession.h"

#include <algorithm>

#include "platform/ado/MemoryCursor.h"
#include "platform/ado/SchemaRowsets.h"
#include "platform/ado/providers/jet/JetSql.h"
#include "platform/ado/providers/jet/JetTypes.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

constexpr const char* kSource = "Microsoft JET Database Engine";

SqliteSession::Options jetOptions(const std::string& providerName) {
  SqliteSession::Options options;
  options.providerName = providerName;
  options.dialect = DialectOptions{0, 0, false};  // brackets kept; #dates# done by JetSql
  options.engine = SqlEngine::Jet;                 // what reaches SQLite is checked
  return options;
}

std::unique_ptr<ProviderSession> openJet(const ConnectionString& connection, const std::string& userID,
                                         const std::string& password) {
  return JetSession::open(connection, userID, password);
}

const ProviderRegistrar jet4Registrar("Microsoft.Jet.OLEDB.4.0", &openJet);
const ProviderRegistrar ace12Registrar("Microsoft.ACE.OLEDB.12.0", &openJet);

}  // namespace

JetSession::JetSession(LoadedAccessFile loaded, const std::string& providerName)
    : SqliteSession(loaded.db.release(), true, jetOptions(providerName)),
      path_(std::move(loaded.path)),
      catalog_(std::move(loaded.catalog)) {}

std::unique_ptr<ProviderSession> JetSession::open(const ConnectionString& connection,
                                                  const std::string& /*userID*/,
                                                  const std::string& /*password*/) {
  std::string path = connection.getOr("Data Source", "");
  if (path.empty())
    vb::raiseError(vb::errnum::ProviderError,
                   "No Access file was named: the connection string has no Data Source.", kSource);
  std::string databasePassword = connection.getOr("Jet OLEDB:Database Password", "");
  std::string provider = connection.getOr("Provider", "Microsoft.Jet.OLEDB.4.0");
  return std::make_unique<JetSession>(loadAccessFile(path, databasePassword), provider);
}

std::unique_ptr<RowCursor> JetSession::query(const std::string& sql) {
  return SqliteSession::query(translateJetSql(sql));
}

int64_t JetSession::execute(const std::string& sql) {
  return SqliteSession::execute(translateJetSql(sql));
}

int64_t JetSession::countRows(const std::string& sql) {
  return SqliteSession::countRows(translateJetSql(sql));
}

std::unique_ptr<RowCursor> JetSession::openSchema(SchemaEnum schema,
                                                  const std::vector<vb::Variant>& restrictions) {
  if (schema != adSchemaTables) return SqliteSession::openSchema(schema, restrictions);
  // The tables rowset with the dates MSysObjects keeps.
  const vb::Variant null = vb::Variant::null();
  std::vector<Row> rows;
  if (restrictionMatches(restrictions, 0, null) && restrictionMatches(restrictions, 1, null)) {
    for (const auto& entry : tableList()) {
      const JetTable* table = catalog_.findTable(entry.name);
      Row row{null, null, entry.name, entry.type, null, null, null,
              table ? table->dateCreated : null, table ? table->dateModified : null};
      if (restrictionMatches(restrictions, 2, row[2], true) && restrictionMatches(restrictions, 3, row[3]))
        rows.push_back(std::move(row));
    }
  }
  return std::make_unique<MemoryCursor>(tablesRowsetColumns(), std::move(rows));
}

std::vector<SqliteSession::TableEntry> JetSession::tableList() {
  std::vector<TableEntry> tables;
  for (const auto& table : catalog_.tables) tables.push_back({table.name, tableTypeText(table.kind)});
  std::stable_sort(tables.begin(), tables.end(), [](const TableEntry& a, const TableEntry& b) {
    return a.type != b.type ? a.type < b.type : a.name < b.name;
  });
  return tables;
}

std::string JetSession::tableType(const std::string& name, bool /*isView*/) const {
  const JetTable* table = catalog_.findTable(name);
  return table ? tableTypeText(table->kind) : "TABLE";
}

std::vector<SqliteSession::KeyColumn> JetSession::primaryKeyRows(const std::string& name) {
  std::vector<KeyColumn> keys;
  const JetTable* table = catalog_.findTable(name);
  if (!table) return keys;
  for (size_t i = 0; i < table->primaryKey.size(); ++i)
    keys.push_back({table->name, table->primaryKey[i], static_cast<int32_t>(i + 1), table->primaryKeyName});
  return keys;
}

std::vector<SqliteSession::ForeignKeyColumn> JetSession::foreignKeyRows() {
  std::vector<ForeignKeyColumn> keys;
  for (const auto& relationship : catalog_.relationships) {
    const JetTable* pkTable = catalog_.findTable(relationship.pkTable);
    const JetTable* fkTable = catalog_.findTable(relationship.fkTable);
    for (size_t i = 0; i < relationship.columns.size(); ++i) {
      ForeignKeyColumn key;
      key.pkTable = pkTable ? pkTable->name : relationship.pkTable;
      key.fkTable = fkTable ? fkTable->name : relationship.fkTable;
      key.fkColumn = relationship.columns[i].first;
      key.pkColumn = relationship.columns[i].second;
      key.ordinal = static_cast<int32_t>(i + 1);
      key.updateRule = relationship.cascadeUpdates ? "CASCADE" : "NO ACTION";
      key.deleteRule = relationship.cascadeDeletes ? "CASCADE" : "NO ACTION";
      key.pkName = pkTable ? pkTable->primaryKeyName : "";
      key.fkName = relationship.name;
      keys.push_back(std::move(key));
    }
  }
  return keys;
}

ColumnInfo JetSession::describeDeclaredType(const std::string& declaredType) const {
  if (auto info = columnInfoForDeclaredType(declaredType)) return *info;
  return SqliteSession::describeDeclaredType(declaredType);
}

void JetSession::checkWritable() const {
  vb::raiseError(vb::errnum::ProviderReadOnly,
                 "Cannot update. Database or object is read-only. The Access file '" + path_ +
                     "' is read-only here: the Access provider reads it and never writes it.",
                 kSource);
}

}  // namespace varsentix::ado::detail
