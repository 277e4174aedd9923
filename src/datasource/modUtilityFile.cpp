#include "varsentix/datasource/modUtilityFile.h"

#include <fcntl.h>
#include <glob.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::modUtilityFile {
namespace {

constexpr int32_t kRetryWaitMilliseconds = 1000;
constexpr int32_t kMostWaitsBeforeGivingUp = 20;

std::mutex& hookMutex() {
  static std::mutex m;
  return m;
}
SleepHook& sleepHook() {
  static SleepHook hook;
  return hook;
}

// Only * and ? are wildcards, as in a Windows file search: every other glob character is
// taken literally.
std::string globPattern(const std::string& path) {
  std::string pattern;
  for (char c : path) {
    if (c == '[' || c == ']' || c == '\\') pattern += '\\';
    pattern += c;
  }
  return pattern;
}

bool isDirectory(const std::string& path) {
  struct stat info{};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Every file (not directory) that the path names, hidden ones included, in name order.
std::vector<std::string> matchingFiles(const std::string& path) {
  std::vector<std::string> files;
  glob_t found{};
  if (::glob(globPattern(path).c_str(), GLOB_PERIOD | GLOB_NOSORT, nullptr, &found) == 0) {
    for (size_t i = 0; i < found.gl_pathc; ++i) {
      std::string file = found.gl_pathv[i];
      if (!isDirectory(file)) files.push_back(std::move(file));
    }
  }
  ::globfree(&found);
  std::sort(files.begin(), files.end());
  return files;
}

std::string bareName(const std::string& file) {
  const auto slash = file.find_last_of('/');
  return slash == std::string::npos ? file : file.substr(slash + 1);
}

// Whether another process holds a flock or a POSIX record lock on the file.
bool lockedByAnotherProcess(int fd) {
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) return true;
  struct flock probe{};
  probe.l_type = F_WRLCK;
  probe.l_whence = SEEK_SET;
  probe.l_start = 0;
  probe.l_len = 0;
  const bool recordLocked = ::fcntl(fd, F_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
  ::flock(fd, LOCK_UN);
  return recordLocked;
}

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return fd_; }

 private:
  int fd_;
};

bool inUse(const std::string& file) {
  // A file that cannot be opened for the probe (no read permission) cannot be probed either:
  // unlink decides.
  FileDescriptor fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
  return fd.get() >= 0 && lockedByAnotherProcess(fd.get());
}

bool deleteOne(const std::string& file) { return !inUse(file) && ::unlink(file.c_str()) == 0; }

}  // namespace

bool fileExists(const std::string& path) {
  if (path.empty()) return false;
  try {
    const std::string trimmed = vb::Trim(path);
    if (trimmed.empty()) return false;
    const auto files = matchingFiles(trimmed);
    if (files.empty()) return false;
    const std::string name = bareName(files.front());
    return !name.empty() && vb::InStr(vb::LCase(path), vb::LCase(name)) > 0;
  } catch (...) {
    return false;
  }
}

bool deleteFile(const std::string& path) {
  try {
    const auto files = matchingFiles(path);
    if (files.empty()) return false;
    bool allDeleted = true;
    for (const auto& file : files) allDeleted = deleteOne(file) && allDeleted;
    return allDeleted;
  } catch (...) {
    return false;
  }
}

bool deleteFileWithRetry(const std::string& path) {
  if (!fileExists(path)) return true;
  if (deleteFile(path)) return true;
  int32_t waits = 0;
  for (;;) {
    ++waits;
    Sleep(kRetryWaitMilliseconds);
    if (waits > kMostWaitsBeforeGivingUp) return false;
    if (deleteFile(path)) return true;
  }
}

void Sleep(int32_t milliseconds) {
  SleepHook hook;
  {
    std::lock_guard lock(hookMutex());
    hook = sleepHook();
  }
  if (hook) {
    hook(milliseconds);
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
}

SleepHook setSleepHook(SleepHook hook) {
  std::lock_guard lock(hookMutex());
  std::swap(sleepHook(), hook);
  return hook;
}

}  // namespace varsentix::modUtilityFile
