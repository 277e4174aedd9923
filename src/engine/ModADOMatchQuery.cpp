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
    if (i == 0) {
      onError([&] { B.setSQL(B.getSql() + "[" + name + "]"); });
      if (!isNull) {
        onError([&] { B.setWhereClause(B.getWhereClause() + "[" + name + "] = " + formatMatchValue(A, i)); });
      } else {
        onError([&] { B.setWhereClause(B.getWhereClause() + "[" + name + "] is null"); });
      }
    } else {
      onError([&] { B.setSQL(B.getSql() + ",[" + name + "] "); });
      if (!isNull) {
        onError([&] {
          B.setWhereClause(B.getWhereClause() + " AND [" + name + "] " + getMatchOperator(A, i) +
                           formatMatchValue(A, i));
        });
      } else {
        onError([&] { B.setWhereClause(B.getWhereClause() + " AND [" + name + "] is null "); });
      }
    }
  }
  onError([&] { B.setSQL(B.getSql() + " from [" + A.getTableName() + "]"); });
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

std::string getMatchOperator(clsDBManager& A, int16_t i) {
  return isTextLike(fieldOf(A, i).Type()) ? "like " : "= ";
}

std::string formatMatchValue(clsDBManager& A, int16_t i) {
  ado::Field field = fieldOf(A, i);
  const int32_t type = field.Type();
  const std::string text = field.Value().toText();
  if (isDateLike(type)) return A.getIsAccess() ? enclosed("#", text, "#") : enclosed("'", text, "'");
  if (isTextLike(type) || type == ado::adDBFileTime) return enclosed("'", text, "'");
  return text;
}

}  // namespace varsentix::ModADO
