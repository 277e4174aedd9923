// clsDBManager: primary and foreign keys from the database's own schema rowsets.
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {
namespace {

// (TABLE_CATALOG, TABLE_SCHEMA unrestricted; TABLE_NAME or PK_TABLE_NAME = tableName)
std::vector<vb::Variant> tableRestriction(const std::string& tableName) {
  return {vb::Variant(), vb::Variant(), vb::Variant(tableName)};
}

bool hasRow(ado::Recordset& rowset) { return !rowset.isBOF() && !rowset.isEOF(); }

std::string textOrEmpty(const vb::Variant& value) { return value.isNull() ? std::string() : value.toText(); }

}  // namespace

std::string clsDBManager::getAccessPrimaryKey(const std::string& tableNameIn) {
  auto rowset = vb::Ref<ado::Recordset>::make();
  rowset->setCursorType(ado::adOpenStatic);
  rowset->setCursorLocation(ado::adUseServer);
  auto connection = data().getConnection();
  if (tableCatalog_ != "") {
    // The catalog text is read as the number of the schema rowset to open, deliberately.
    const auto schema = static_cast<ado::SchemaEnum>(vb::CLng(tableCatalog_));
    rowset = connection->OpenSchema(schema, tableRestriction(tableNameIn));
  } else {
    rowset = connection->OpenSchema(ado::adSchemaPrimaryKeys, tableRestriction(tableNameIn));
  }
  std::string primaryKey;
  if (!rowset->isBOF()) {
    primaryKey = textOrEmpty(rowset->field("COLUMN_NAME").Value());
  } else {
    primaryKey = "No primary key Defined";
  }
  rowset->Close();
  rowset.reset();
  return primaryKey;
}

vb::Ref<ado::Recordset> clsDBManager::getAccessForeignKey(const std::string& tableNameIn) {
  std::string foreignTable;  // kept for diagnostics only: the rowset is the result
  try {
    auto connection = data().getConnection();
    auto rowset = connection->OpenSchema(ado::adSchemaForeignKeys, tableRestriction(tableNameIn));
    if (hasRow(*rowset) && textOrEmpty(rowset->field("FK_TABLE_NAME").Value()) != "") {
      foreignTable = textOrEmpty(rowset->field("FK_TABLE_NAME").Value());
    } else {
      foreignTable = "No Foreign(s) key Defined";
    }
    return rowset;
  } catch (...) {
    foreignTable = "No Foreign(s) key Defined";
    return vb::Ref<ado::Recordset>::make();
  }
}

}  // namespace varsentix
