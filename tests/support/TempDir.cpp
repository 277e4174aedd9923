#include "support/TempDir.h"

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace varsentix::testing {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "varsentix-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::file(const std::string& name) const { return (path_ / name).string(); }

std::filesystem::path sharedDataDir() {
  if (const char* overridden = std::getenv("VARSENTIX_SHARED_DATA")) return overridden;
  return VARSENTIX_SHARED_DATA_DIR;
}

}  // namespace varsentix::testing
