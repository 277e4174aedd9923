#pragma once
// The Access provider's session ("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=<file.mdb>"):
// the file loaded into an in-memory SQLite database (JetLoader) and answered there through the
// SQLite session, with the Access file's own catalog for the schema rowsets, Jet SQL
// translated (JetSql) and every write refused: the Access file is read-only here.
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/providers/jet/JetLoader.h"
#include "platform/ado/providers/sqlite/SqliteSession.h"

namespace varsentix::ado::detail {

class JetSession : public SqliteSession {
 public:
  // Takes over the loaded database. providerName is the name the connection string used.
  JetSession(LoadedAccessFile loaded, const std::string& providerName);

  // Opens the connection string's Data Source, checking "Jet OLEDB:Database Password".
  static std::unique_ptr<ProviderSession> open(const ConnectionString& connection,
                                               const std::string& userID,
                                               const std::string& password);

  const JetCatalog& catalog() const { return catalog_; }
  const std::string& path() const { return path_; }

  // Jet SQL is translated before the SQLite session sees it.
  std::unique_ptr<RowCursor> query(const std::string& sql) override;
  int64_t execute(const std::string& sql) override;
  int64_t countRows(const std::string& sql) override;
  std::unique_ptr<RowCursor> openSchema(SchemaEnum schema,
                                        const std::vector<vb::Variant>& restrictions) override;
  void rollback() noexcept override {}
  // Read-only throughout: every write is refused already (checkWritable), whatever is asked.
  bool setReadOnly(bool /*readOnly*/) override { return true; }

 protected:
  std::vector<TableEntry> tableList() override;
  std::string tableType(const std::string& name, bool isView) const override;
  std::vector<KeyColumn> primaryKeyRows(const std::string& table) override;
  bool primaryKeysInOneQuery() const override { return false; }
  std::vector<ForeignKeyColumn> foreignKeyRows() override;
  ColumnInfo describeDeclaredType(const std::string& declaredType) const override;
  // Every write: "Cannot update. Database or object is read-only." naming the file.
  void checkWritable() const override;

 private:
  std::string path_;
  JetCatalog catalog_;
};

}  // namespace varsentix::ado::detail
