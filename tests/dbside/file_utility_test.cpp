// File existence and deletion with retries.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/TempDir.h"
#include "varsentix/datasource/modUtilityFile.h"

extern char** environ;

namespace fs = std::filesystem;
namespace file = varsentix::modUtilityFile;
using varsentix::testing::TempDir;

namespace {

void touch(const std::string& path, const std::string& content = "x") { std::ofstream(path) << content; }

// Counts the waits of deleteFileWithRetry instead of sleeping; an optional action runs at
// every wait (with the count).
class CountingSleep {
 public:
  explicit CountingSleep(std::function<void(int)> atWait = {}) : atWait_(std::move(atWait)) {
    previous_ = file::setSleepHook([this](int32_t milliseconds) {
      ++waits_;
      lastMilliseconds_ = milliseconds;
      if (atWait_) atWait_(waits_);
    });
  }
  ~CountingSleep() { file::setSleepHook(previous_); }
  int waits() const { return waits_; }
  int32_t lastMilliseconds() const { return lastMilliseconds_; }

 private:
  std::function<void(int)> atWait_;
  file::SleepHook previous_;
  int waits_ = 0;
  int32_t lastMilliseconds_ = 0;
};

// Another process that holds an exclusive lock on a file until it is stopped (or its command
// ends). Uses util-linux flock(1).
class LockHolder {
 public:
  LockHolder(const std::string& path, const std::string& readyFile, const std::string& seconds) {
    const std::string script = "touch '" + readyFile + "'; sleep " + seconds;
    const char* argv[] = {"flock", "-x", "-o", path.c_str(), "-c", script.c_str(), nullptr};
    // -o: only flock itself holds the lock, not the shell it starts, so the lock goes with it.
    // A process group of its own lets stop() end the shell too.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    const int spawned = posix_spawnp(&pid_, "flock", nullptr, &attributes, const_cast<char* const*>(argv), environ);
    posix_spawnattr_destroy(&attributes);
    if (spawned != 0) {
      pid_ = -1;
      return;
    }
    // Waits until the child holds the lock (it creates readyFile while holding it).
    while (!fs::exists(readyFile) && running()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ~LockHolder() { stop(); }
  bool started() const { return pid_ > 0; }
  bool running() {
    if (pid_ <= 0) return false;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) == pid_) {
      pid_ = -1;
      return false;
    }
    return true;
  }
  void stop() {
    if (pid_ <= 0) return;
    kill(-pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }
  void join() {
    if (pid_ <= 0) return;
    waitpid(pid_, nullptr, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
};

}  // namespace

TEST(FileExists, EmptyPathIsFalse) { EXPECT_FALSE(file::fileExists("")); }

TEST(FileExists, ExistingAndMissingFiles) {
  TempDir dir;
  touch(dir.file("data.xml"));
  EXPECT_TRUE(file::fileExists(dir.file("data.xml")));
  EXPECT_FALSE(file::fileExists(dir.file("other.xml")));
  EXPECT_FALSE(file::fileExists(dir.file("missing/data.xml")));
}

TEST(FileExists, SurroundingBlanksAreTrimmedForTheLookUp) {
  TempDir dir;
  touch(dir.file("data.xml"));
  EXPECT_TRUE(file::fileExists("  " + dir.file("data.xml") + "  "));
  EXPECT_FALSE(file::fileExists("   "));
}

TEST(FileExists, ReadOnlyAndHiddenFilesAreFound) {
  TempDir dir;
  touch(dir.file("readonly.xml"));
  fs::permissions(dir.file("readonly.xml"), fs::perms::owner_read | fs::perms::group_read);
  touch(dir.file(".hidden.xml"));
  EXPECT_TRUE(file::fileExists(dir.file("readonly.xml")));
  EXPECT_TRUE(file::fileExists(dir.file(".hidden.xml")));
}

TEST(FileExists, DirectoriesAreNotFiles) {
  TempDir dir;
  fs::create_directory(dir.file("folder"));
  EXPECT_FALSE(file::fileExists(dir.file("folder")));
  EXPECT_FALSE(file::fileExists(dir.path().string()));
}

TEST(FileExists, WildcardFindsOnlyAFileWhoseNameIsSpelledOutInThePath) {
  TempDir dir;
  touch(dir.file("report.xml"));
  // The first match's bare name must occur in the path: a pattern does not spell it out.
  EXPECT_FALSE(file::fileExists(dir.file("*.xml")));
  EXPECT_FALSE(file::fileExists(dir.file("repor?.xml")));
  EXPECT_TRUE(file::fileExists(dir.file("report.xml*")));
}

TEST(FileExists, TheNameIsComparedWithoutRegardToLetterCase) {
  TempDir dir;
  fs::create_directory(dir.file("aB"));
  touch(dir.file("aB/Ab"));
  // The match is "Ab"; it occurs in the path only as "aB", which counts.
  EXPECT_TRUE(file::fileExists(dir.file("aB/*")));
  fs::create_directory(dir.file("cd"));
  touch(dir.file("cd/Ab"));
  EXPECT_FALSE(file::fileExists(dir.file("cd/*")));
}

TEST(FileExists, BracketsAreLiteralCharactersNotAPattern) {
  TempDir dir;
  touch(dir.file("a[1].xml"));
  touch(dir.file("a1.xml"));
  EXPECT_TRUE(file::fileExists(dir.file("a[1].xml")));
  fs::remove(dir.file("a[1].xml"));
  EXPECT_FALSE(file::fileExists(dir.file("a[1].xml")));
}

TEST(DeleteFile, DeletesAFileAndReportsIt) {
  TempDir dir;
  touch(dir.file("a.xml"));
  EXPECT_TRUE(file::deleteFile(dir.file("a.xml")));
  EXPECT_FALSE(fs::exists(dir.file("a.xml")));
  EXPECT_FALSE(file::deleteFile(dir.file("a.xml")));
}

TEST(DeleteFile, WildcardsDeleteEveryMatchAndNothingElse) {
  TempDir dir;
  touch(dir.file("a.xml"));
  touch(dir.file("b.xml"));
  touch(dir.file("c.txt"));
  EXPECT_TRUE(file::deleteFile(dir.file("*.xml")));
  EXPECT_FALSE(fs::exists(dir.file("a.xml")));
  EXPECT_FALSE(fs::exists(dir.file("b.xml")));
  EXPECT_TRUE(fs::exists(dir.file("c.txt")));
  EXPECT_FALSE(file::deleteFile(dir.file("*.xml")));
}

TEST(DeleteFile, ReadOnlyFileIsDeleted) {
  TempDir dir;
  touch(dir.file("ro.xml"));
  fs::permissions(dir.file("ro.xml"), fs::perms::owner_read);
  EXPECT_TRUE(file::deleteFile(dir.file("ro.xml")));
  EXPECT_FALSE(fs::exists(dir.file("ro.xml")));
}

TEST(DeleteFile, DirectoriesAndBadPathsFail) {
  TempDir dir;
  fs::create_directory(dir.file("folder"));
  EXPECT_FALSE(file::deleteFile(dir.file("folder")));
  EXPECT_TRUE(fs::exists(dir.file("folder")));
  EXPECT_FALSE(file::deleteFile(""));
  EXPECT_FALSE(file::deleteFile(std::string("\0x", 2)));
}

TEST(DeleteFile, AFileLockedByAnotherProcessIsInUseAndKept) {
  TempDir dir;
  touch(dir.file("held.xml"));
  LockHolder holder(dir.file("held.xml"), dir.file("ready"), "60");
  ASSERT_TRUE(holder.started() && holder.running());
  EXPECT_FALSE(file::deleteFile(dir.file("held.xml")));
  EXPECT_TRUE(fs::exists(dir.file("held.xml")));
  holder.stop();
  EXPECT_TRUE(file::deleteFile(dir.file("held.xml")));
}

TEST(DeleteFileWithRetry, MissingFileReturnsAtOnceWithoutWaiting) {
  TempDir dir;
  CountingSleep sleep;
  EXPECT_TRUE(file::deleteFileWithRetry(dir.file("missing.xml")));
  EXPECT_EQ(sleep.waits(), 0);
}

TEST(DeleteFileWithRetry, DeletableFileGoesWithoutWaiting) {
  TempDir dir;
  touch(dir.file("a.xml"));
  CountingSleep sleep;
  EXPECT_TRUE(file::deleteFileWithRetry(dir.file("a.xml")));
  EXPECT_EQ(sleep.waits(), 0);
  EXPECT_FALSE(fs::exists(dir.file("a.xml")));
}

TEST(DeleteFileWithRetry, FileThatCanNeverBeDeletedGivesUpAfterTwentyOneOneSecondWaits) {
  // A kernel file exists for every user, root included, and unlink always refuses it.
  const std::string undeletable = "/proc/version";
  ASSERT_TRUE(file::fileExists(undeletable));
  CountingSleep sleep;
  EXPECT_FALSE(file::deleteFileWithRetry(undeletable));
  EXPECT_EQ(sleep.waits(), 21);
  EXPECT_EQ(sleep.lastMilliseconds(), 1000);
}

TEST(DeleteFileWithRetry, LockedFileIsDeletedOnTheAttemptAfterTheLockGoes) {
  TempDir dir;
  touch(dir.file("held.xml"));
  LockHolder holder(dir.file("held.xml"), dir.file("ready"), "600");
  ASSERT_TRUE(holder.started() && holder.running());
  // The holder lets go during the third wait.
  CountingSleep sleep([&](int wait) {
    if (wait == 3) holder.stop();
  });
  EXPECT_TRUE(file::deleteFileWithRetry(dir.file("held.xml")));
  EXPECT_EQ(sleep.waits(), 3);
  EXPECT_FALSE(fs::exists(dir.file("held.xml")));
}

TEST(DeleteFileWithRetry, FileHeldByAnotherProcessForThreeSecondsWithTheRealClock) {
  TempDir dir;
  touch(dir.file("held.xml"));
  LockHolder holder(dir.file("held.xml"), dir.file("ready"), "3");
  ASSERT_TRUE(holder.started() && holder.running());
  int waits = 0;
  auto previous = file::setSleepHook([&](int32_t milliseconds) {
    ++waits;
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  });
  const bool deleted = file::deleteFileWithRetry(dir.file("held.xml"));
  file::setSleepHook(previous);
  EXPECT_TRUE(deleted);
  EXPECT_FALSE(fs::exists(dir.file("held.xml")));
  // About three waits; the exact count depends on the machine's load, so only the bounds.
  EXPECT_GE(waits, 1);
  EXPECT_LE(waits, 20);
  holder.join();
}

TEST(Sleep, DefaultHookIsRestoredByAnEmptyFunction) {
  int calls = 0;
  auto previous = file::setSleepHook([&](int32_t) { ++calls; });
  file::Sleep(5);
  EXPECT_EQ(calls, 1);
  auto mine = file::setSleepHook({});
  EXPECT_TRUE(static_cast<bool>(mine));
  file::Sleep(1);  // the real clock: does not count
  EXPECT_EQ(calls, 1);
  file::setSleepHook(previous);
}
