#pragma once
// clsResultSet: one difference row. Data only: twenty fields, a getter and a setter for each,
// an initializer and a text rendering.
#include <cstdint>
#include <string>

#include "varsentix/platform/vb/Variant.h"

namespace varsentix {

class clsResultSet {
 public:
  // Stores the defaults: every text empty, every number 0, every boolean false, except
  // fieldCount, which a re-initialised row keeps.
  void initializeValues();

  std::string getFieldDefinedSize() const { return fieldDefinedSize_; }
  void setFieldDefinedSize(const std::string& fieldDefinedSizeIn) { fieldDefinedSize_ = fieldDefinedSizeIn; }
  std::string getFieldActualSize() const { return fieldActualSize_; }
  void setFieldActualSize(const std::string& fieldActualSizeIn) { fieldActualSize_ = fieldActualSizeIn; }
  void setPrimaryKey(const std::string& primaryKeyIn) { primaryKey_ = primaryKeyIn; }
  std::string getPrimaryKey() const { return primaryKey_; }
  void setFKeyColumnName(const std::string& foreignKeyIn) { fKeyColumnName_ = foreignKeyIn; }
  std::string getFKeyColumnName() const { return fKeyColumnName_; }
  void setFKeyName(const std::string& fKeyNameIn) { fKeyName_ = fKeyNameIn; }
  std::string getFKeyName() const { return fKeyName_; }
  void setPKeyName(const std::string& pKeyNameIn) { pKeyName_ = pKeyNameIn; }
  std::string getPKeyName() const { return pKeyName_; }
  void setFKeyPrimaryTable(const std::string& fKeyPrimarytableIn) { fKeyPrimaryTable_ = fKeyPrimarytableIn; }
  std::string getFKeyPrimaryTable() const { return fKeyPrimaryTable_; }
  void setFKeyPrimaryColName(const std::string& fKeyPrimaryColumnNameIn) { fKeyPrimaryColName_ = fKeyPrimaryColumnNameIn; }
  std::string getFKeyPrimaryColName() const { return fKeyPrimaryColName_; }
  std::string getFieldName() const { return fieldName_; }
  void setFieldName(const std::string& fieldNameIn) { fieldName_ = fieldNameIn; }

  // The change type is a 16-bit code exchanged as decimal text. The setter converts with CInt:
  // it raises 13 "Type mismatch" or 6 "Overflow" and keeps the old code on bad text.
  std::string getChangeType() const;
  void setChangeType(const std::string& changeTypeIn);

  std::string getDataType() const { return dataType_; }
  void setDataType(const std::string& dataTypeIn) { dataType_ = dataTypeIn; }

  // The length is exchanged as text like the change type, and fails the same way.
  std::string getLength() const;
  void setLength(const std::string& lengthIn);

  std::string getDatabaseObjName() const { return databaseObjName_; }
  void setDatabaseObjName(const std::string& databaseObjNameIn) { databaseObjName_ = databaseObjNameIn; }
  std::string getDataValue() const { return dataValue_; }
  void setDataValue(const std::string& dataValueIn) { dataValue_ = dataValueIn; }
  bool getIsFieldDesc() const { return isFieldDesc_; }
  void setIsFieldDesc(const bool& isFieldDescIn) { isFieldDesc_ = isFieldDescIn; }
  void setShow(const bool& showIn) { show_ = showIn; }
  bool getShow() const { return show_; }
  bool getIsDataValue() const { return isDataValue_; }
  void setIsDataValue(const bool& isDataValueIn) { isDataValue_ = isDataValueIn; }

  int16_t getFieldCount() const { return fieldCount_; }
  // Unlike every other setter this one is a function: it returns an Empty value.
  vb::Variant setFieldCount(const int16_t& fieldCountIn);

  int32_t getRecordCount() const { return recordCount_; }
  void setRecordCount(const int32_t& recordCountIn) { recordCount_ = recordCountIn; }
  int32_t getRecordNumber() const { return recordNumber_; }
  void setRecordNumber(const int32_t& recordNumberIn) { recordNumber_ = recordNumberIn; }

  // "databaseObjName=...,fieldName=...,...,pKeyName=..." with every field but length and show.
  // Values are not escaped, so a value holding "," or "=" makes the text ambiguous.
  std::string toString() const;

 private:
  std::string fieldName_;
  int16_t fieldCount_ = 0;
  int32_t recordNumber_ = 0;
  int32_t recordCount_ = 0;
  int16_t changeType_ = 0;
  std::string dataType_;
  int16_t length_ = 0;
  std::string databaseObjName_;
  std::string dataValue_;
  bool isFieldDesc_ = false;
  bool isDataValue_ = false;
  std::string fieldDefinedSize_;
  std::string fieldActualSize_;
  std::string primaryKey_;
  std::string fKeyColumnName_;
  std::string fKeyPrimaryTable_;
  std::string fKeyPrimaryColName_;
  std::string fKeyName_;
  std::string pKeyName_;
  bool show_ = false;
};

}  // namespace varsentix
