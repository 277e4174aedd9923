#include "varsentix/results/clsResultSet.h"

#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {

void clsResultSet::initializeValues() {
  fieldName_.clear();
  dataType_.clear();
  databaseObjName_.clear();
  dataValue_.clear();
  fieldDefinedSize_.clear();
  fieldActualSize_.clear();
  primaryKey_.clear();
  fKeyColumnName_.clear();
  fKeyPrimaryTable_.clear();
  fKeyPrimaryColName_.clear();
  fKeyName_.clear();
  pKeyName_.clear();
  recordNumber_ = 0;
  recordCount_ = 0;
  changeType_ = 0;
  length_ = 0;
  isFieldDesc_ = false;
  isDataValue_ = false;
  show_ = false;
  // fieldCount_ is deliberately left as it is.
}

std::string clsResultSet::getChangeType() const { return vb::CStr(changeType_); }
void clsResultSet::setChangeType(const std::string& changeTypeIn) { changeType_ = vb::CInt(changeTypeIn); }
std::string clsResultSet::getLength() const { return vb::CStr(length_); }
void clsResultSet::setLength(const std::string& lengthIn) { length_ = vb::CInt(lengthIn); }

vb::Variant clsResultSet::setFieldCount(const int16_t& fieldCountIn) {
  fieldCount_ = fieldCountIn;
  return vb::Variant();
}

std::string clsResultSet::toString() const {
  using vb::CStr;
  return "databaseObjName=" + databaseObjName_ + ",fieldName=" + fieldName_ +
         ",dataType=" + dataType_ + ",fieldDefinedSize=" + fieldDefinedSize_ +
         ",fieldActualSize=" + fieldActualSize_ + ",dataValue=" + dataValue_ +
         ",fieldCount=" + CStr(fieldCount_) + ",recordNumber=" + CStr(recordNumber_) +
         ",recordCount=" + CStr(recordCount_) + ",changeType=" + CStr(changeType_) +
         ",isFieldDesc=" + CStr(isFieldDesc_) + ",isDataValue=" + CStr(isDataValue_) +
         ",primaryKey=" + primaryKey_ + ",foreignKey=" + fKeyColumnName_ +
         ",fKeyPrimarytable=" + fKeyPrimaryTable_ + ",fKeyPrimaryColumnName=" + fKeyPrimaryColName_ +
         ",fKeyName=" + fKeyName_ + ",pKeyName=" + pKeyName_;
}

}  // namespace varsentix
