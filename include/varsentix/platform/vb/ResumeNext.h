#pragma once
// Skip-and-continue: the On Error Resume Next style. Each step runs under ResumeNext; a failing
// step is swallowed, remembered as the last error (Err), and the next step runs.
#include <exception>
#include <optional>
#include <utility>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::vb {

class ResumeNext {
 public:
  // Runs one step. Returns true when it completed, false when it failed (and was swallowed).
  template <typename Step>
  bool operator()(Step&& step) noexcept {
    try {
      std::forward<Step>(step)();
      return true;
    } catch (const VBError& e) {
      last_ = e;
    } catch (const std::bad_alloc&) {
      last_ = VBError(errnum::OutOfMemory);
    } catch (const std::exception& e) {
      last_ = VBError(errnum::ProviderError, e.what(), "VarsentiX");
    } catch (...) {
      last_ = VBError(errnum::ProviderError, "Unknown error", "VarsentiX");
    }
    return false;
  }

  // Err: the last failure swallowed, if any (Err.Number 0 when none).
  const std::optional<VBError>& lastError() const noexcept { return last_; }
  int32_t errNumber() const noexcept { return last_ ? last_->number() : 0; }
  // Err.Clear
  void clear() noexcept { last_.reset(); }

 private:
  std::optional<VBError> last_;
};

// Converts any failure that leaves a catch-and-record block into the VBError it carries.
inline VBError toVBError(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const VBError& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return VBError(errnum::OutOfMemory);
  } catch (const std::exception& e) {
    return VBError(errnum::ProviderError, e.what(), "VarsentiX");
  } catch (...) {
    return VBError(errnum::ProviderError, "Unknown error", "VarsentiX");
  }
}

}  // namespace varsentix::vb
