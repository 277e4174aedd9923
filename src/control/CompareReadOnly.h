#pragma once
// What keeps a compare from writing: while it runs, the connection of every side it reads is in
// read-only mode (ado::Connection::SetReadOnly), so that the engines themselves refuse any write
// through them. A connection not open yet enters the mode as it opens. When the compare ends each
// connection gets back the mode it had, so that the record operations can write through the same
// managers afterwards.
#include <algorithm>
#include <memory>
#include <vector>

#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/ado/Connection.h"

namespace varsentix::control {

class CompareReadOnly {
 public:
  CompareReadOnly() = default;
  ~CompareReadOnly() {
    while (!scopes_.empty()) scopes_.pop_back();  // the last covered gets its mode back first
  }
  CompareReadOnly(const CompareReadOnly&) = delete;
  CompareReadOnly& operator=(const CompareReadOnly&) = delete;

  // Puts the side's connection (as it holds it now: initializeValues gives a side a new one) into
  // read-only mode until the compare ends. Raises the engine's error when it refuses the mode.
  void cover(clsDBManager& side) {
    vb::Ref<ado::Connection> connection = side.getDatabaseConnection();
    if (connection.isNothing()) return;
    if (std::find(covered_.begin(), covered_.end(), connection) != covered_.end()) return;
    scopes_.push_back(std::make_unique<ado::ReadOnlyScope>(connection, true));
    covered_.push_back(connection);
  }

 private:
  std::vector<vb::Ref<ado::Connection>> covered_;
  std::vector<std::unique_ptr<ado::ReadOnlyScope>> scopes_;
};

}  // namespace varsentix::control
