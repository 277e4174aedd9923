#pragma once
// Ref<T>: an object reference as Visual Basic has them. Copies share the object; using an empty
// reference raises 91 "Object variable or With block variable not set" instead of crashing.
#include <memory>
#include <utility>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {

template <typename T>
class Ref {
 public:
  Ref() = default;                              // Nothing
  Ref(std::nullptr_t) {}                        // Set x = Nothing
  Ref(std::shared_ptr<T> object) : object_(std::move(object)) {}
  template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ref(const Ref<U>& other) : object_(other.shared()) {}

  // Set x = New T(args...)
  template <typename... Args>
  static Ref make(Args&&... args) {
    return Ref(std::make_shared<T>(std::forward<Args>(args)...));
  }

  // REQUIRES nothing: raises 91 when the reference is Nothing.
  T* operator->() const { return &get(); }
  T& operator*() const { return get(); }
  T& get() const {
    if (!object_) raiseError(errnum::ObjectNotSet);
    return *object_;
  }

  bool isNothing() const noexcept { return !object_; }
  explicit operator bool() const noexcept { return static_cast<bool>(object_); }
  const std::shared_ptr<T>& shared() const noexcept { return object_; }
  void reset() noexcept { object_.reset(); }

  // "Is": the same object.
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }

 private:
  std::shared_ptr<T> object_;
};

}  // namespace varsentix::vb
