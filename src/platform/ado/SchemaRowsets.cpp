#include "platform/ado/SchemaRowsets.h"

#include <algorithm>

#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

ColumnInfo column(const char* name, DataTypeEnum type, int32_t size, bool nullable = true) {
  ColumnInfo info;
  info.name = name;
  info.type = type;
  info.definedSize = size;
  info.nullable = nullable;
  if (type == adInteger || type == adUnsignedInt) info.precision = 10;
  if (type == adSmallInt || type == adUnsignedSmallInt) info.precision = 5;
  return info;
}

ColumnInfo text(const char* name) { return column(name, adVarWChar, 128); }

}  // namespace

std::vector<ColumnInfo> tablesRowsetColumns() {
  return {text("TABLE_CATALOG"),   text("TABLE_SCHEMA"),
          text("TABLE_NAME"),      text("TABLE_TYPE"),
          column("TABLE_GUID", adGUID, 16), column("DESCRIPTION", adVarWChar, 255),
          column("TABLE_PROPID", adUnsignedInt, 4), column("DATE_CREATED", adDate, 8),
          column("DATE_MODIFIED", adDate, 8)};
}

std::vector<ColumnInfo> primaryKeysRowsetColumns() {
  return {text("TABLE_CATALOG"), text("TABLE_SCHEMA"), text("TABLE_NAME"), text("COLUMN_NAME"),
          column("COLUMN_GUID", adGUID, 16), column("COLUMN_PROPID", adUnsignedInt, 4),
          column("ORDINAL", adUnsignedInt, 4), text("PK_NAME")};
}

std::vector<ColumnInfo> foreignKeysRowsetColumns() {
  return {text("PK_TABLE_CATALOG"),
          text("PK_TABLE_SCHEMA"),
          text("PK_TABLE_NAME"),
          text("PK_COLUMN_NAME"),
          column("PK_COLUMN_GUID", adGUID, 16),
          column("PK_COLUMN_PROPID", adUnsignedInt, 4),
          text("FK_TABLE_CATALOG"),
          text("FK_TABLE_SCHEMA"),
          text("FK_TABLE_NAME"),
          text("FK_COLUMN_NAME"),
          column("FK_COLUMN_GUID", adGUID, 16),
          column("FK_COLUMN_PROPID", adUnsignedInt, 4),
          column("ORDINAL", adUnsignedInt, 4),
          text("UPDATE_RULE"),
          text("DELETE_RULE"),
          text("PK_NAME"),
          text("FK_NAME"),
          column("DEFERRABILITY", adSmallInt, 2)};
}

bool restrictionMatches(const std::vector<vb::Variant>& restrictions, size_t index,
                        const vb::Variant& value, bool caseInsensitive) {
  if (index >= restrictions.size()) return true;
  const vb::Variant& wanted = restrictions[index];
  if (wanted.isEmpty() || wanted.isNull()) return true;
  std::string wantedText = wanted.toText();
  if (wantedText.empty()) return true;
  if (value.isNull() || value.isEmpty()) return false;
  std::string actual = value.toText();
  if (actual == wantedText) return true;
  if (!caseInsensitive) return false;
  // ASCII texts compare letter by letter without copies; anything else through LCase.
  auto ascii = [](const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
  };
  if (ascii(actual) && ascii(wantedText)) {
    if (actual.size() != wantedText.size()) return false;
    for (size_t n = 0; n < actual.size(); ++n) {
      const char a = actual[n] >= 'A' && actual[n] <= 'Z' ? static_cast<char>(actual[n] - 'A' + 'a') : actual[n];
      const char w = wantedText[n] >= 'A' && wantedText[n] <= 'Z' ? static_cast<char>(wantedText[n] - 'A' + 'a')
                                                                  : wantedText[n];
      if (a != w) return false;
    }
    return true;
  }
  return vb::LCase(actual) == vb::LCase(wantedText);
}

void raiseSchemaNotSupported(int32_t schema) {
  vb::raiseError(vb::errnum::NotSupported,
                 "Object or provider is not capable of performing requested operation. Schema " +
                     std::to_string(schema) + " is not supported.",
                 "VarsentiX");
}

}  // namespace varsentix::ado::detail
