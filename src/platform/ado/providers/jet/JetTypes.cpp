#include "platform/ado/providers/jet/JetTypes.h"

#include <cstdio>

namespace varsentix::ado::detail {
namespace {

// DefinedSize the Jet OLE DB provider reports for Memo and OLE Object columns.
constexpr int32_t kMemoSize = 536870910;
constexpr int32_t kOleObjectSize = 1073741823;

struct TypeRow {
  const char* declared;   // the declared type, before any "(size)"
  DataTypeEnum ado;
  int32_t definedSize;    // fixed size; 0 = taken from the column
  uint8_t precision;      // 255 where it does not apply
};

// One row per Access type: Access name -> declared type -> ADO type.
//   Yes/No          BIT          adBoolean 11          2
//   Byte            BYTE         adUnsignedTinyInt 17  1
//   Integer         SHORT        adSmallInt 2          2
//   Long Integer    LONG         adInteger 3           4
//   Currency        CURRENCY     adCurrency 6          8
//   Single          SINGLE       adSingle 4            4
//   Double          DOUBLE       adDouble 5            8
//   Date/Time       DATETIME     adDate 7              8
//   Binary          BINARY(n)    adBinary 128          n
//   Text            TEXT(n)      adVarWChar 202        n characters
//   OLE Object      LONGBINARY   adLongVarBinary 205   1073741823
//   Memo            LONGTEXT     adLongVarWChar 203    536870910
//   Replication ID  GUID         adGUID 72             16
//   Decimal         DECIMAL(p,s) adNumeric 131         19
const TypeRow kTypes[] = {
    {"BIT", adBoolean, 2, 255},
    {"BYTE", adUnsignedTinyInt, 1, 3},
    {"SHORT", adSmallInt, 2, 5},
    {"LONG", adInteger, 4, 10},
    {"CURRENCY", adCurrency, 8, 19},
    {"SINGLE", adSingle, 4, 7},
    {"DOUBLE", adDouble, 8, 15},
    {"DATETIME", adDate, 8, 255},
    {"BINARY", adBinary, 0, 255},
    {"TEXT", adVarWChar, 0, 255},
    {"LONGBINARY", adLongVarBinary, kOleObjectSize, 255},
    {"LONGTEXT", adLongVarWChar, kMemoSize, 255},
    {"GUID", adGUID, 16, 255},
    {"DECIMAL", adNumeric, 19, 0},
};

const TypeRow* rowFor(const std::string& declared) {
  for (const auto& row : kTypes)
    if (sameName(declared, row.declared)) return &row;
  return nullptr;
}

const char* baseDeclaredType(AccessType type) {
  switch (type) {
    case AccessType::Boolean: return "BIT";
    case AccessType::Byte: return "BYTE";
    case AccessType::Integer: return "SHORT";
    case AccessType::LongInteger:
    case AccessType::Complex: return "LONG";
    case AccessType::Currency: return "CURRENCY";
    case AccessType::Single: return "SINGLE";
    case AccessType::Double: return "DOUBLE";
    case AccessType::DateTime: return "DATETIME";
    case AccessType::Binary: return "BINARY";
    case AccessType::Text: return "TEXT";
    case AccessType::OleObject: return "LONGBINARY";
    case AccessType::Memo: return "LONGTEXT";
    case AccessType::ReplicationId: return "GUID";
    case AccessType::Numeric: return "DECIMAL";
    default: return "LONGBINARY";
  }
}

}  // namespace

std::string declaredColumnType(const JetColumn& column) {
  std::string declared = baseDeclaredType(column.type);
  char size[32];
  switch (column.type) {
    case AccessType::Text:
      std::snprintf(size, sizeof size, "(%d)", column.size);
      return declared + size + " COLLATE NOCASE";
    case AccessType::Binary:
      std::snprintf(size, sizeof size, "(%d)", column.size);
      return declared + size;
    case AccessType::Numeric:
      std::snprintf(size, sizeof size, "(%u,%u)", column.precision, column.scale);
      return declared + size;
    case AccessType::Memo: return declared + " COLLATE NOCASE";
    case AccessType::DateTime: return declared + " COLLATE JETDATE";
    default: return declared;
  }
}

std::optional<ColumnInfo> columnInfoForDeclaredType(const std::string& declaredType) {
  std::string base = declaredType;
  std::string arguments;
  if (auto open = declaredType.find('('); open != std::string::npos) {
    base = declaredType.substr(0, open);
    auto close = declaredType.find(')', open);
    arguments = declaredType.substr(open + 1, close == std::string::npos ? std::string::npos
                                                                         : close - open - 1);
  }
  while (!base.empty() && base.back() == ' ') base.pop_back();
  const TypeRow* row = rowFor(base);
  if (!row) return std::nullopt;
  ColumnInfo info;
  info.type = row->ado;
  info.definedSize = row->definedSize;
  info.precision = row->precision;
  int first = 0, second = 0;
  int found = std::sscanf(arguments.c_str(), "%d,%d", &first, &second);
  if ((row->ado == adVarWChar || row->ado == adBinary) && found >= 1) info.definedSize = first;
  if (row->ado == adNumeric && found == 2) {
    info.precision = static_cast<uint8_t>(first);
    info.numericScale = static_cast<uint8_t>(second);
  }
  return info;
}

ColumnInfo columnInfoFor(const JetColumn& column) {
  std::string declared = declaredColumnType(column);
  if (auto collate = declared.find(" COLLATE"); collate != std::string::npos)
    declared.resize(collate);
  ColumnInfo info = *columnInfoForDeclaredType(declared);
  info.name = column.name;
  info.nullable = column.type != AccessType::Boolean;
  return info;
}

}  // namespace varsentix::ado::detail
