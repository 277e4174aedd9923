// Varsenti: the change-type vocabulary and the names of field data types, for hosts.
#include "varsentix/control/Varsenti.h"
#include "varsentix/datasource/ModADO.h"
#include "varsentix/results/modConstants.h"

namespace varsentix {

std::string Varsenti::getChangeDesciption(const int16_t& changeType) const {
  return modConstants::getChangeDesciption(changeType);
}

std::string Varsenti::getConstantForNoChange() const { return modConstants::getConstantForNoChange(); }
std::string Varsenti::getConstantForNewTable() const { return modConstants::getConstantForNewTable(); }
std::string Varsenti::getConstantForNewField() const { return modConstants::getConstantForNewField(); }
std::string Varsenti::getConstantNewField() const { return modConstants::getConstantNewField(); }
std::string Varsenti::getConstantForDifferentDataType() const {
  return modConstants::getConstantForDifferentDataType();
}
std::string Varsenti::getConstantForDifferentSize() const {
  return modConstants::getConstantForDifferentSize();
}
std::string Varsenti::getConstantForNewRecord() const { return modConstants::getConstantForNewRecord(); }
std::string Varsenti::getConstantForDifferentDataValue() const {
  return modConstants::getConstantForDifferentDataValue();
}

std::string Varsenti::getFieldDataDescrition(const int16_t& dataType) const {
  return ModADO::getDataTypeName(dataType);
}

}  // namespace varsentix
