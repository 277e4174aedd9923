#pragma once
// An environment variable set (or removed) for one test.
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace varsentix::testing {

// Sets (or, with nullopt, removes) an environment variable; puts the old value back when it goes.
class ScopedEnv {
 public:
  ScopedEnv(std::string name, const std::optional<std::string>& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) previous_ = old;
    if (value) {
      ::setenv(name_.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  ~ScopedEnv() {
    if (previous_) {
      ::setenv(name_.c_str(), previous_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

}  // namespace varsentix::testing
