// The control's private file helper: removes a file before the control writes it anew.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/TempDir.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/datasource/modUtilityFile.h"

namespace varsentix::detail {
struct VarsentiInternals {
  static void deleteFileIfExists(Varsenti& control, const std::string& path) {
    control.deleteFileIfExists(path);
  }
};
}  // namespace varsentix::detail

namespace varsentix {
namespace {

using detail::VarsentiInternals;
using testing::TempDir;

// Counts the waits of the retrying delete while it lives.
struct SleepCounter {
  SleepCounter() {
    previous = modUtilityFile::setSleepHook([this](int32_t) { ++waits; });
  }
  ~SleepCounter() { modUtilityFile::setSleepHook(previous); }
  int waits = 0;
  modUtilityFile::SleepHook previous;
};

TEST(ControlFiles, DeleteFileIfExistsRemovesAnExistingFile) {
  TempDir dir;
  const std::string path = dir.file("master.xml");
  std::ofstream(path) << "<xml/>";
  Varsenti control;
  SleepCounter sleeps;
  VarsentiInternals::deleteFileIfExists(control, path);
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(sleeps.waits, 0);
}

TEST(ControlFiles, DeleteFileIfExistsReturnsAtOnceForAMissingFile) {
  TempDir dir;
  Varsenti control;
  SleepCounter sleeps;
  VarsentiInternals::deleteFileIfExists(control, dir.file("none.xml"));
  VarsentiInternals::deleteFileIfExists(control, "");
  EXPECT_EQ(sleeps.waits, 0);
}

TEST(ControlFiles, DeleteFileIfExistsLeavesOtherFilesAlone) {
  TempDir dir;
  std::ofstream(dir.file("keep.xml")) << "k";
  std::ofstream(dir.file("drop.xml")) << "d";
  Varsenti control;
  VarsentiInternals::deleteFileIfExists(control, dir.file("drop.xml"));
  EXPECT_TRUE(std::filesystem::exists(dir.file("keep.xml")));
  EXPECT_FALSE(std::filesystem::exists(dir.file("drop.xml")));
}

}  // namespace
}  // namespace varsentix
