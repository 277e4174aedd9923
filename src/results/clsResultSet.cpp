#include "varsentix/results/clsResultSet.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "varsentix/platform/vb/Conversions.h"

namespace varsentix {
namespace {

// memcpy, which must not be handed a null pointer even for no bytes.
void copyBytes(char* to, const char* from, size_t count) {
  if (count > 0) std::memcpy(to, from, count);
}

}  // namespace

clsResultSet::PackedTexts::PackedTexts(const PackedTexts& other) {
  if (other.size() > 0) {
    data_ = std::make_unique<char[]>(other.size());
    copyBytes(data_.get(), other.data_.get(), other.size());
  }
  std::copy(std::begin(other.ends_), std::end(other.ends_), std::begin(ends_));
}

clsResultSet::PackedTexts& clsResultSet::PackedTexts::operator=(const PackedTexts& other) {
  if (this != &other) *this = PackedTexts(other);
  return *this;
}

std::string clsResultSet::PackedTexts::get(int which) const {
  const uint32_t from = begin(which);
  if (ends_[which] == from) return std::string();
  return std::string(data_.get() + from, ends_[which] - from);
}

void clsResultSet::PackedTexts::set(int which, std::string_view text) {
  const uint32_t from = begin(which);
  const uint32_t oldSize = ends_[which] - from;
  const uint64_t newTotal = uint64_t{size()} - oldSize + text.size();
  if (newTotal > UINT32_MAX) throw std::length_error("clsResultSet: texts longer than 4 GB");
  std::unique_ptr<char[]> data;
  if (newTotal > 0) {
    data = std::make_unique_for_overwrite<char[]>(newTotal);
    copyBytes(data.get(), data_.get(), from);
    copyBytes(data.get() + from, text.data(), text.size());
    copyBytes(data.get() + from + text.size(), data_.get() + ends_[which], size() - ends_[which]);
  }
  data_ = std::move(data);
  const int64_t shift = static_cast<int64_t>(text.size()) - oldSize;
  for (int i = which; i < kCount; ++i) ends_[i] = static_cast<uint32_t>(ends_[i] + shift);
}

void clsResultSet::PackedTexts::clear() {
  data_.reset();
  std::fill(std::begin(ends_), std::end(ends_), 0u);
}

void clsResultSet::initializeValues() {
  texts_.clear();
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
  return "databaseObjName=" + texts_.get(kDatabaseObjName) + ",fieldName=" + texts_.get(kFieldName) +
         ",dataType=" + texts_.get(kDataType) + ",fieldDefinedSize=" + texts_.get(kFieldDefinedSize) +
         ",fieldActualSize=" + texts_.get(kFieldActualSize) + ",dataValue=" + texts_.get(kDataValue) +
         ",fieldCount=" + CStr(fieldCount_) + ",recordNumber=" + CStr(recordNumber_) +
         ",recordCount=" + CStr(recordCount_) + ",changeType=" + CStr(changeType_) +
         ",isFieldDesc=" + CStr(isFieldDesc_) + ",isDataValue=" + CStr(isDataValue_) +
         ",primaryKey=" + texts_.get(kPrimaryKey) + ",foreignKey=" + texts_.get(kFKeyColumnName) +
         ",fKeyPrimarytable=" + texts_.get(kFKeyPrimaryTable) + ",fKeyPrimaryColumnName=" + texts_.get(kFKeyPrimaryColName) +
         ",fKeyName=" + texts_.get(kFKeyName) + ",pKeyName=" + texts_.get(kPKeyName);
}

}  // namespace varsentix
