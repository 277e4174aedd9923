#include "datasource/BareValue.h"
#include "engine/ModADORecordHelpers.h"
#include "varsentix/datasource/modUtility.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/ResumeNext.h"

namespace varsentix::ModADO {
namespace {

ado::Field fieldOf(clsDBManager& side, int16_t i) { return side.getDatabaseRecords()->field(i); }

bool isTextLike(int32_t type) {
  switch (type) {
    case ado::adBSTR:
    case ado::adFileTime:
    case ado::adChar:
    case ado::adWChar:
    case ado::adChapter:
    case ado::adVarChar:
    case ado::adLongVarChar:
    case ado::adVarWChar:
    case ado::adLongVarWChar:
      return true;
    default:
      return false;
  }
}

bool isDateLike(int32_t type) {
  return type == ado::adDate || type == ado::adDBDate || type == ado::adDBTime ||
         type == ado::adDBTimeStamp;
}

std::string enclosed(const std::string& open, std::string text, const std::string& close) {
  return open + modUtility::escapeSingleQuotes(text) + close;
}

}  // namespace

void buildMatchQuery(clsDBManager& A, clsDBManager& B) {
  vb::ResumeNext onError;
  onError([&] { B.setSQL("Select "); });
  onError([&] { B.setWhereClause(" Where "); });
  int16_t n = 0;
  onError([&] { n = getRecordSetFieldCount(A); });
  for (int16_t i = 0; i < n; ++i) {
    bool excluded = true;  // a failing test takes the Then branch: the column is skipped
    onError([&] { excluded = isFieldExcludedFromMatch(A, B, i); });
    if (excluded) continue;
    std::string name;
    bool isNull = false;
    onError([&] { name = fieldOf(A, i).Name(); });
    onError([&] { isNull = fieldOf(A, i).Value().isNull(); });
    onError([&] { B.setSQL(B.getSql() + matchSelectPiece(i, name)); });
    if (!isNull) {
      onError([&] {
        // The first column is always compared with "= "; its operator is not asked for.
        const std::string operatorText = i == 0 ? std::string() : getMatchOperator(A, i);
        B.setWhereClause(B.getWhereClause() + matchValuePiece(i, name, operatorText, formatMatchValue(A, i)));
      });
    } else {
      onError([&] { B.setWhereClause(B.getWhereClause() + matchNullPiece(i, name)); });
    }
  }
  onError([&] { B.setSQL(B.getSql() + " from [" + A.getTableName() + "]"); });
}

std::string matchSelectPiece(int16_t i, const std::string& name) {
  return i == 0 ? "[" + name + "]" : ",[" + name + "] ";
}

std::string matchValuePiece(int16_t i, const std::string& name, const std::string& operatorText,
                            const std::string& literal) {
  return i == 0 ? "[" + name + "] = " + literal : " AND [" + name + "] " + operatorText + literal;
}

std::string matchNullPiece(int16_t i, const std::string& name) {
  return i == 0 ? "[" + name + "] is null" : " AND [" + name + "] is null ";
}

bool isFieldExcludedFromMatch(clsDBManager& A, clsDBManager& B, int16_t i) {
  try {
    const std::string name = fieldOf(A, i).Name();
    auto& fieldsOfB = B.getDatabaseRecords()->getFields();
    const int32_t countOfB = fieldsOfB.Count();
    for (int32_t j = 0; j < countOfB; ++j) {
      if (fieldsOfB.Item(j).Name() == name) return false;
    }
    return countOfB > 0;
  } catch (...) {
    return false;
  }
}

std::string getMatchOperator(clsDBManager& A, int16_t i) { return matchOperatorFor(fieldOf(A, i).Type()); }

std::string matchOperatorFor(int32_t type) { return isTextLike(type) ? "like " : "= "; }

std::string formatMatchValue(clsDBManager& A, int16_t i) {
  ado::Field field = fieldOf(A, i);
  const int32_t type = field.Type();
  return formatMatchLiteral(type, field.Value(), A.getIsAccess());
}

std::string formatMatchLiteral(int32_t type, const vb::Variant& value, bool isAccess) {
  const std::string text = value.toText();
  if (isDateLike(type)) return isAccess ? enclosed("#", text, "#") : enclosed("'", text, "'");
  if (isTextLike(type) || type == ado::adDBFileTime) return enclosed("'", text, "'");
  // Written bare only when well-formed for its type; otherwise the statement is refused.
  return bareValue::bareOrMarker(type, text);
}

}  // namespace varsentix::ModADO
