// clsDBManager: record queries and the SQL statements the side builds.
#include "datasource/BareValue.h"
#include "dbside/Outcome.h"
#include "varsentix/datasource/modUtility.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {
namespace {

enum class LiteralStyle { Quoted, Date, Bare };

// How a value of an ADO data type is written as an SQL literal. Currency is quoted and a GUID
// is not, deliberately.
LiteralStyle literalStyle(int32_t dataType) {
  switch (dataType) {
    case ado::adCurrency:
    case ado::adBSTR:
    case ado::adFileTime:
    case ado::adChar:
    case ado::adWChar:
    case ado::adChapter:
    case ado::adDBFileTime:
    case ado::adVarChar:
    case ado::adLongVarChar:
    case ado::adVarWChar:
    case ado::adLongVarWChar:
      return LiteralStyle::Quoted;
    case ado::adDate:
    case ado::adDBDate:
    case ado::adDBTime:
    case ado::adDBTimeStamp:
      return LiteralStyle::Date;
    default:
      return LiteralStyle::Bare;
  }
}

// 'text' with apostrophes doubled; dates as #text# on a Jet side; other values as they stand.
std::string sqlLiteral(int32_t dataType, std::string valueText, bool isAccess) {
  switch (literalStyle(dataType)) {
    case LiteralStyle::Quoted:
      return "'" + modUtility::escapeSingleQuotes(valueText) + "'";
    case LiteralStyle::Date:
      if (isAccess) return "#" + modUtility::escapeSingleQuotes(valueText) + "#";
      return "'" + modUtility::escapeSingleQuotes(valueText) + "'";
    case LiteralStyle::Bare:
      break;
  }
  // Written bare only when well-formed for its type; otherwise the statement is refused.
  return bareValue::bareOrMarker(dataType, std::move(valueText));
}

constexpr const char* kNullValue = "Null";

// A field name as the where and insert texts write it: bare when it is a plain name (letters,
// digits and _, not starting with a digit), as they always have; any other name is bracketed,
// its ']' doubled, so that no name read from a database changes the statement.
std::string fieldNameInStatement(const std::string& name) {
  bool plain = !name.empty() && !(name[0] >= '0' && name[0] <= '9');
  for (char c : name)
    plain = plain && ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_');
  if (plain) return name;
  std::string bracketed = "[";
  for (char c : name) {
    bracketed += c;
    if (c == ']') bracketed += ']';
  }
  return bracketed + "]";
}

}  // namespace

void clsDBManager::openDataBaseRecordsFromQuery(const std::string& sSql) {
  const std::string outcome = data().getAccessRecordsFromSQL(sSql);
  returnSQLMessage_ += " " + outcome + " ||";
}

void clsDBManager::openSecondDataBaseRecordsFromQuery(const std::string& sSql) {
  const std::string outcome = data().getAccessRecordsFromSQL2(sSql);
  returnSQLMessage_ += " " + outcome + " ||";
}

vb::Ref<ado::Recordset> clsDBManager::getDatabaseRecords() { return data().rsAccess(); }

vb::Ref<ado::Recordset> clsDBManager::getDatabaseRecords2() { return data().rsAccess2(); }

void clsDBManager::closeRecordSet() { data().closeRecordSet(); }

void clsDBManager::closeRecordSet2() { data().CloseAccess2(); }

void clsDBManager::closeSecondConnection() { data().CloseAccess2(); }

void clsDBManager::formatSQLClause() { sSql_ = "Select * From [" + tableName_ + "]"; }

void clsDBManager::createSQLStatement(const std::string& whereClauseIn, const std::string& tableNameIn) {
  sSql_ = "Select * from [" + tableNameIn + "]";
  sSql_ += whereClauseIn;
}

std::string clsDBManager::formatWhereClauseFromRecordSet(const vb::Ref<ado::Recordset>& recset,
                                                         const int16_t& loopCount) {
  const ado::Field field = recset->field(loopCount);
  return sqlLiteral(field.Type(), field.Value().toText(), isAccess_);
}

void clsDBManager::formatInsertClauseFromRecordSet(const std::string& tableNameIn) {
  // The table name stands in single quotes, its apostrophes doubled.
  std::string table = tableNameIn;
  sSql_ = "insert into '" + modUtility::escapeSingleQuotes(table) + "'";
  auto records = getDatabaseRecords();
  const int32_t fieldCount = records->getFields().Count();
  for (int32_t i = 0; i < fieldCount; ++i) {
    const auto index = static_cast<int16_t>(i);
    if (i == 0) {
      sSql_ += "(" + fieldNameInStatement(records->field(i).Name());
      whereClause_ = "VALUES (" + formatWhereClauseFromRecordSet(records, index);
    } else {
      sSql_ += "," + fieldNameInStatement(records->field(i).Name());
      whereClause_ += "," + formatWhereClauseFromRecordSet(records, index);
    }
  }
  sSql_ += ")";
  whereClause_ += ")";
  sSql_ += whereClause_;
}

void clsDBManager::formatWhereClauseFromRecordNumber() {
  whereClause_ = " Where ";
  comparedRecord_ = {};
  bool first = true;
  for (const auto& row : *results_) {
    if (row->getDatabaseObjName() != tableName_ || row->getRecordNumber() != currentRecordNumber_) continue;
    comparedRecord_.values.emplace_back(row->getFieldName(), row->getDataValue());
    const bool isNull = row->getDataValue() == kNullValue;
    if (first) {
      whereClause_ += fieldNameInStatement(row->getFieldName()) + " = ";
      first = false;
    } else if (!isNull) {
      whereClause_ += " AND " + fieldNameInStatement(row->getFieldName()) + " LIKE ";
    }
    if (!isNull) whereClause_ += formatResultSetValue(*row);
  }
  comparedRecord_.whereClause = whereClause_;
}

bool clsDBManager::executeSQL() {
  returnSQLMessage_ = dbside::kSuccessfullyCompleted;
  try {
    data().getConnection()->Execute(sSql_, nullptr, ado::adOptionUnspecified);
    return true;
  } catch (...) {
    returnSQLMessage_ = dbside::numberAndDescription(std::current_exception()) +
                        " #6 Application attempted using the following SQL " + sSql_ + " ||";
    return false;
  }
}

std::string clsDBManager::formatResultSetValue(const clsResultSet& row) const {
  const int16_t dataType = vb::CInt(row.getDataType());
  return sqlLiteral(dataType, row.getDataValue(), isAccess_);
}

}  // namespace varsentix
