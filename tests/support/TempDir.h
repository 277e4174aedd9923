#pragma once
// A fresh directory for one test, removed with everything in it when the object goes.
#include <filesystem>
#include <string>

namespace varsentix::testing {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // path() / name, as text.
  std::string file(const std::string& name) const;

 private:
  std::filesystem::path path_;
};

// The folder of the bundled sample databases (../shared/data beside the repository).
std::filesystem::path sharedDataDir();

}  // namespace varsentix::testing
