#pragma once
// A table's primary key as the side reports it, asked once for a run of rows of that table (the
// field rows of one table, the value rows of one record walk) instead of once per row: the same
// answer as long as the schema does not change during the run. A failed question is not kept,
// so the next row asks again, as it always has.
#include <string>
#include <utility>

#include "varsentix/dbside/clsDBManager.h"

namespace varsentix::engine {

class PrimaryKeyOnce {
 public:
  PrimaryKeyOnce(clsDBManager& manager, std::string tableName)
      : manager_(manager), tableName_(std::move(tableName)) {}
  const std::string& get() {
    if (!known_) {
      key_ = manager_.getAccessPrimaryKey(tableName_);
      known_ = true;
    }
    return key_;
  }

 private:
  clsDBManager& manager_;
  std::string tableName_;
  std::string key_;
  bool known_ = false;
};

}  // namespace varsentix::engine
