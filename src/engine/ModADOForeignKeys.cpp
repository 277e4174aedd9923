#include "engine/ModADORecordHelpers.h"
#include "engine/VbFlow.h"
#include "varsentix/dbside/clsDBManager.h"

namespace varsentix::ModADO {
namespace {
constexpr const char* kNoForeignKey = "No Foreign(s) key Defined";
}

vb::Ref<clsResultSet> fillForeignKeyDetails(const vb::Ref<clsResultSet>& row, clsDBManager& manager) {
  vb::ResumeNext onError;
  std::string tableName;
  vb::Ref<ado::Recordset> keys;
  onError([&] { tableName = manager.getTableName(); });
  onError([&] { keys = manager.getAccessForeignKey(tableName); });
  engine::ifResumeNext(
      onError, [&] { return !keys->isBOF(); },
      [&] {
        // Only the first foreign key the schema returns is reported.
        onError([&] { row->setFKeyColumnName(getSchemaFieldText(keys, "FK_COLUMN_NAME")); });
        onError([&] { row->setFKeyName(getSchemaFieldText(keys, "FK_NAME")); });
        onError([&] { row->setFKeyPrimaryColName(getSchemaFieldText(keys, "PK_COLUMN_NAME")); });
        onError([&] { row->setFKeyPrimaryTable(getSchemaFieldText(keys, "PK_TABLE_NAME")); });
        onError([&] { row->setPKeyName(getSchemaFieldText(keys, "PK_NAME")); });
      },
      [&] {
        // pKeyName keeps what it held.
        onError([&] { row->setFKeyPrimaryTable("Not Defined"); });
        onError([&] { row->setFKeyName("FKey name not defined"); });
        onError([&] { row->setFKeyPrimaryColName("Key was not defined"); });
        onError([&] { row->setFKeyColumnName(kNoForeignKey); });
      });
  onError([&] { keys->Close(); });
  keys.reset();
  return row;
}

std::string getSchemaFieldText(const vb::Ref<ado::Recordset>& keys, const std::string& column) {
  try {
    vb::Variant value = keys->field(column).Value();
    if (!value.isNull() && !value.isEmpty()) {
      std::string text = value.toText();
      if (!text.empty()) return text;
    }
    return kNoForeignKey;
  } catch (...) {
    return "";
  }
}

}  // namespace varsentix::ModADO
