#pragma once
// Collection<T>: Visual Basic's 1-based, ordered collection of object references. The
// collection itself is an object, so hold it through Ref<Collection<T>> to share it by reference.
#include <cstdint>
#include <vector>

#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {

template <typename T>
class Collection {
 public:
  int32_t Count() const noexcept { return static_cast<int32_t>(items_.size()); }

  // REQUIRES 1 <= index <= Count(); otherwise raises 5 "Invalid procedure call or argument",
  // as a VB Collection does.
  const Ref<T>& Item(int32_t index) const {
    check(index);
    return items_[static_cast<size_t>(index - 1)];
  }
  void Add(Ref<T> item) { items_.push_back(std::move(item)); }
  void Remove(int32_t index) {
    check(index);
    items_.erase(items_.begin() + (index - 1));
  }
  void Clear() noexcept { items_.clear(); }

  auto begin() const noexcept { return items_.begin(); }
  auto end() const noexcept { return items_.end(); }

 private:
  void check(int32_t index) const {
    if (index < 1 || index > Count()) raiseError(errnum::InvalidProcedureCall);
  }
  std::vector<Ref<T>> items_;
};

}  // namespace varsentix::vb
