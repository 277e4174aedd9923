#include "varsentix/dbside/ModADOFields.h"

namespace varsentix::ModADO {
namespace {

int16_t fieldTypeCode(clsDBManager& dataManager, int16_t fieldIndex) {
  auto records = dataManager.getDatabaseRecords();
  return static_cast<int16_t>(records->field(fieldIndex).Type());
}

}  // namespace

std::string getFieldTypeName(clsDBManager& dataManager, const int16_t& fieldIndex) {
  return fieldTypeNameOfCode(fieldTypeCode(dataManager, fieldIndex));
}

bool isComparableFieldType(clsDBManager& dataManager, const int16_t& fieldIndex) {
  return isComparableTypeCode(fieldTypeCode(dataManager, fieldIndex));
}

}  // namespace varsentix::ModADO
