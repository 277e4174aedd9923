#include "server/RegistrationFile.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <system_error>

namespace varsentix::server::detail {
namespace {

namespace fs = std::filesystem;

std::string trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  const size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

bool sameName(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

[[noreturn]] void throwErrno(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A file descriptor closed when it goes.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0) ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  int release() { return std::exchange(fd_, -1); }

 private:
  int fd_;
};

// A temporary file removed when it goes, unless it was renamed into place.
struct TempFile {
  std::string path;
  bool committed = false;
  ~TempFile() {
    if (!path.empty() && !committed) ::unlink(path.c_str());
  }
};

void writeAll(int fd, const std::string& text, const std::string& path) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      throwErrno("cannot write " + path);
    }
    done += static_cast<size_t>(n);
  }
}

// Writes text into a fresh file beside `file` and renames it over `file`.
void replaceAtomically(const fs::path& file, const std::string& text, int folderFd) {
  TempFile temp;
  temp.path = (file.parent_path() / ("." + file.filename().string() + ".XXXXXX")).string();
  Fd fd(::mkstemp(temp.path.data()));
  if (fd.get() < 0) {
    temp.path.clear();
    throwErrno("cannot create a temporary file beside " + file.string());
  }
  if (::fchmod(fd.get(), 0644) != 0) throwErrno("cannot set the mode of " + temp.path);
  writeAll(fd.get(), text, temp.path);
  if (::fsync(fd.get()) != 0) throwErrno("cannot flush " + temp.path);
  if (::close(fd.release()) != 0) throwErrno("cannot close " + temp.path);
  if (::rename(temp.path.c_str(), file.c_str()) != 0) throwErrno("cannot replace " + file.string());
  temp.committed = true;
  ::fsync(folderFd);  // make the rename durable; a failure here loses nothing already visible
}

std::string homeFolder() {
  if (const char* home = std::getenv("HOME"); home && *home) return home;
  if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
  return "/";
}

}  // namespace

std::optional<std::string> IniSection::value(const std::string& key) const {
  for (const auto& [name, text] : values) {
    if (sameName(name, key)) return text;
  }
  return std::nullopt;
}

IniDocument IniDocument::parse(const std::string& text) {
  IniDocument document;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    const std::string trimmed = trim(line);
    if (trimmed.empty() || trimmed[0] == ';' || trimmed[0] == '#') continue;
    if (trimmed.front() == '[' && trimmed.back() == ']') {
      document.sections.push_back({trim(trimmed.substr(1, trimmed.size() - 2)), {}});
      continue;
    }
    if (document.sections.empty()) continue;
    const size_t equals = trimmed.find('=');
    if (equals == std::string::npos) {
      document.sections.back().values.emplace_back(trimmed, "");
    } else {
      document.sections.back().values.emplace_back(trim(trimmed.substr(0, equals)),
                                                   trim(trimmed.substr(equals + 1)));
    }
  }
  return document;
}

std::string IniDocument::render() const {
  std::string text = "; VarsentiX class registrations (format: docs/server.md).\n";
  for (const auto& section : sections) {
    text += "\n[" + section.name + "]\n";
    for (const auto& [name, value] : section.values) text += name + "=" + value + "\n";
  }
  return text;
}

const IniSection* IniDocument::find(const std::string& name) const {
  for (const auto& section : sections) {
    if (sameName(section.name, name)) return &section;
  }
  return nullptr;
}

size_t IniDocument::remove(const std::string& name) {
  return std::erase_if(sections, [&](const IniSection& s) { return sameName(s.name, name); });
}

std::optional<fs::path> overrideRegistrationFile() {
  const char* file = std::getenv("VARSENTIX_REGISTRY_FILE");
  if (file == nullptr || *file == '\0') return std::nullopt;
  return fs::path(file);
}

fs::path systemRegistrationFile() { return "/etc/varsentix/classes.ini"; }

fs::path userRegistrationFile() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const fs::path base = (config && *config == '/') ? fs::path(config) : fs::path(homeFolder()) / ".config";
  return base / "varsentix" / "classes.ini";
}

IniDocument readRegistrationFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) {
    if (errno == ENOENT || !fs::exists(file)) return {};
    throwErrno("cannot read " + file.string());
  }
  std::ostringstream text;
  text << in.rdbuf();
  if (in.bad()) throwErrno("cannot read " + file.string());
  return IniDocument::parse(text.str());
}

void updateRegistrationFile(const fs::path& fileIn, const std::function<void(IniDocument&)>& change,
                            bool createIfMissing) {
  const fs::path file = fs::absolute(fileIn);
  const fs::path folder = file.parent_path();
  if (createIfMissing) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) throw std::system_error(ec, "cannot create " + folder.string());
  }
  Fd folderFd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folderFd.get() < 0) {
    if (!createIfMissing && errno == ENOENT) return;
    throwErrno("cannot open " + folder.string());
  }
  while (::flock(folderFd.get(), LOCK_EX) != 0) {
    if (errno != EINTR) throwErrno("cannot lock " + folder.string());
  }
  const bool exists = fs::exists(file);
  if (!exists && !createIfMissing) return;
  IniDocument document = readRegistrationFile(file);
  change(document);
  replaceAtomically(file, document.render(), folderFd.get());
}

}  // namespace varsentix::server::detail
