#pragma once
// clsResultSet: one difference row. Data only: twenty fields, a getter and a setter for each,
// an initializer and a text rendering.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "varsentix/platform/vb/Variant.h"

namespace varsentix {

class clsResultSet {
 public:
  // Stores the defaults: every text empty, every number 0, every boolean false, except
  // fieldCount, which a re-initialised row keeps.
  void initializeValues();

  std::string getFieldDefinedSize() const { return texts_.get(kFieldDefinedSize); }
  void setFieldDefinedSize(const std::string& fieldDefinedSizeIn) { texts_.set(kFieldDefinedSize, fieldDefinedSizeIn); }
  std::string getFieldActualSize() const { return texts_.get(kFieldActualSize); }
  void setFieldActualSize(const std::string& fieldActualSizeIn) { texts_.set(kFieldActualSize, fieldActualSizeIn); }
  void setPrimaryKey(const std::string& primaryKeyIn) { texts_.set(kPrimaryKey, primaryKeyIn); }
  std::string getPrimaryKey() const { return texts_.get(kPrimaryKey); }
  void setFKeyColumnName(const std::string& foreignKeyIn) { texts_.set(kFKeyColumnName, foreignKeyIn); }
  std::string getFKeyColumnName() const { return texts_.get(kFKeyColumnName); }
  void setFKeyName(const std::string& fKeyNameIn) { texts_.set(kFKeyName, fKeyNameIn); }
  std::string getFKeyName() const { return texts_.get(kFKeyName); }
  void setPKeyName(const std::string& pKeyNameIn) { texts_.set(kPKeyName, pKeyNameIn); }
  std::string getPKeyName() const { return texts_.get(kPKeyName); }
  void setFKeyPrimaryTable(const std::string& fKeyPrimarytableIn) { texts_.set(kFKeyPrimaryTable, fKeyPrimarytableIn); }
  std::string getFKeyPrimaryTable() const { return texts_.get(kFKeyPrimaryTable); }
  void setFKeyPrimaryColName(const std::string& fKeyPrimaryColumnNameIn) { texts_.set(kFKeyPrimaryColName, fKeyPrimaryColumnNameIn); }
  std::string getFKeyPrimaryColName() const { return texts_.get(kFKeyPrimaryColName); }
  std::string getFieldName() const { return texts_.get(kFieldName); }
  void setFieldName(const std::string& fieldNameIn) { texts_.set(kFieldName, fieldNameIn); }

  // The change type is a 16-bit code exchanged as decimal text. The setter converts with CInt:
  // it raises 13 "Type mismatch" or 6 "Overflow" and keeps the old code on bad text.
  std::string getChangeType() const;
  void setChangeType(const std::string& changeTypeIn);

  std::string getDataType() const { return texts_.get(kDataType); }
  void setDataType(const std::string& dataTypeIn) { texts_.set(kDataType, dataTypeIn); }

  // The length is exchanged as text like the change type, and fails the same way.
  std::string getLength() const;
  void setLength(const std::string& lengthIn);

  std::string getDatabaseObjName() const { return texts_.get(kDatabaseObjName); }
  void setDatabaseObjName(const std::string& databaseObjNameIn) { texts_.set(kDatabaseObjName, databaseObjNameIn); }
  std::string getDataValue() const { return texts_.get(kDataValue); }
  void setDataValue(const std::string& dataValueIn) { texts_.set(kDataValue, dataValueIn); }
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
  // The twelve texts of a row, one after another in one exactly sized block: a compare keeps a
  // row per differing value, and twelve separate strings took about three times the memory.
  class PackedTexts {
   public:
    PackedTexts() = default;
    PackedTexts(const PackedTexts& other);
    PackedTexts& operator=(const PackedTexts& other);
    PackedTexts(PackedTexts&&) noexcept = default;
    PackedTexts& operator=(PackedTexts&&) noexcept = default;

    std::string get(int which) const;
    void set(int which, std::string_view text);
    void clear();

   private:
    static constexpr int kCount = 12;
    uint32_t begin(int which) const { return which == 0 ? 0 : ends_[which - 1]; }
    uint32_t size() const { return ends_[kCount - 1]; }
    std::unique_ptr<char[]> data_;
    uint32_t ends_[kCount] = {};  // where each text ends in data_
  };
  enum : int {
    kFieldName,
    kDataType,
    kDatabaseObjName,
    kDataValue,
    kFieldDefinedSize,
    kFieldActualSize,
    kPrimaryKey,
    kFKeyColumnName,
    kFKeyPrimaryTable,
    kFKeyPrimaryColName,
    kFKeyName,
    kPKeyName
  };

  PackedTexts texts_;
  int32_t recordNumber_ = 0;
  int32_t recordCount_ = 0;
  int16_t fieldCount_ = 0;
  int16_t changeType_ = 0;
  int16_t length_ = 0;
  bool isFieldDesc_ = false;
  bool isDataValue_ = false;
  bool show_ = false;
};

}  // namespace varsentix
