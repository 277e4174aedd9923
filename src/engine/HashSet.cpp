#include "engine/HashSet.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <queue>
#include <stdexcept>
#include <string>

namespace varsentix::engine {
namespace {

// 4 MB a set: 262,144 hashes of 128 bits, 1,048,576 of 32.
thread_local size_t bytesInMemory = size_t{4} << 20;

// Memory keeps the first hash of every page of the merged file. A question reads a block of the
// page where the hash would be if the hashes were spread evenly (they are hashes), and the block
// before or after it when they are not.
constexpr size_t kPageBytes = 4096;
constexpr size_t kBlockBytes = 512;
// Memory for the merge's reading buffers, shared by the runs.
constexpr size_t kMergeBytes = size_t{4} << 20;

// A file of its own in the temporary directory, gone once closed.
int openTemporaryFile() {
  const char* folder = std::getenv("TMPDIR");
  const std::string directory = folder && *folder ? folder : "/tmp";
#ifdef O_TMPFILE
  const int fd = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (fd >= 0) return fd;
#endif
  std::string path = directory + "/varsentix-hashes-XXXXXX";
  const int named = ::mkstemp(path.data());
  if (named < 0) return -1;
  ::unlink(path.c_str());
  ::fcntl(named, F_SETFD, FD_CLOEXEC);
  return named;
}

bool writeAll(int fd, const void* data, size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t n = ::write(fd, bytes, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

bool readAllAt(int fd, void* data, size_t size, uint64_t offset) {
  auto* bytes = static_cast<char*>(data);
  while (size > 0) {
    const ssize_t n = ::pread(fd, bytes, size, static_cast<off_t>(offset));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    bytes += n;
    size -= static_cast<size_t>(n);
    offset += static_cast<uint64_t>(n);
  }
  return true;
}

void closeFile(int& fd) {
  if (fd >= 0) ::close(fd);
  fd = -1;
}

}  // namespace

size_t hashBytesKeptInMemory() { return bytesInMemory; }
void setHashBytesKeptInMemory(size_t bytes) { bytesInMemory = bytes; }

template <typename Hash>
HashSet<Hash>::HashSet() : limit_(std::max<size_t>(1, bytesInMemory / sizeof(Hash))) {}

template <typename Hash>
HashSet<Hash>::~HashSet() {
  closeFile(runs_);
  closeFile(merged_);
}

template <typename Hash>
void HashSet<Hash>::reserve(size_t count) {
  hashes_.reserve(std::min(count, limit_));
}

template <typename Hash>
void HashSet<Hash>::add(const Hash& hash) {
  if (hashes_.size() >= limit_ && !spill()) {
    // The file failed: every hash stays in memory from now on.
    takeRunsBack();
    limit_ = SIZE_MAX;
  }
  hashes_.push_back(hash);
}

template <typename Hash>
bool HashSet<Hash>::spill() {
  if (runs_ < 0) runs_ = openTemporaryFile();
  if (runs_ < 0) return false;
  std::sort(hashes_.begin(), hashes_.end());
  const uint64_t start = runList_.empty() ? 0 : runList_.back().first + runList_.back().second * sizeof(Hash);
  if (!writeAll(runs_, hashes_.data(), hashes_.size() * sizeof(Hash))) return false;
  runList_.emplace_back(start, hashes_.size());
  hashes_.clear();
  return true;
}

template <typename Hash>
void HashSet<Hash>::takeRunsBack() {
  for (const auto& [start, count] : runList_) {
    const size_t at = hashes_.size();
    hashes_.resize(at + count);
    if (!readAllAt(runs_, hashes_.data() + at, count * sizeof(Hash), start))
      throw std::runtime_error("cannot read back the hashes of the temporary file");
  }
  runList_.clear();
  closeFile(runs_);
}

template <typename Hash>
void HashSet<Hash>::seal() {
  if (!runList_.empty()) {
    if ((hashes_.empty() || spill()) && mergeRuns()) {
      std::vector<Hash>().swap(hashes_);
      closeFile(runs_);
      return;
    }
    closeFile(merged_);
    pageFirst_.clear();
    takeRunsBack();
  }
  sealInMemory();
}

template <typename Hash>
void HashSet<Hash>::sealInMemory() {
  std::sort(hashes_.begin(), hashes_.end());
  hashes_.erase(std::unique(hashes_.begin(), hashes_.end()), hashes_.end());
  count_ = hashes_.size();
  // About eight hashes per bucket.
  int bits = 0;
  while (bits < 32 && (size_t{1} << bits) * 8 < hashes_.size()) ++bits;
  shift_ = 64 - bits;
  const size_t buckets = size_t{1} << bits;
  directory_.assign(buckets + 1, 0);
  size_t position = 0;
  for (size_t bucket = 0; bucket < buckets; ++bucket) {
    directory_[bucket] = static_cast<uint32_t>(position);
    while (position < hashes_.size() && (bits == 0 ? 0 : top(hashes_[position]) >> shift_) == bucket) ++position;
  }
  directory_[buckets] = static_cast<uint32_t>(hashes_.size());
}

template <typename Hash>
bool HashSet<Hash>::mergeRuns() {
  merged_ = openTemporaryFile();
  if (merged_ < 0) return false;
  constexpr size_t perPage = kPageBytes / sizeof(Hash);
  // Each run is read through a buffer of its own.
  struct Run {
    uint64_t next;   // file offset of the next hash to buffer
    size_t left;     // hashes not yet buffered
    std::vector<Hash> buffer;
    size_t at = 0;
  };
  const size_t perRun = std::max<size_t>(perPage, kMergeBytes / runList_.size() / sizeof(Hash));
  std::vector<Run> runs;
  for (const auto& [start, count] : runList_) runs.push_back(Run{start, count, {}, 0});
  auto refill = [&](Run& run) {
    const size_t take = std::min(perRun, run.left);
    run.buffer.resize(take);
    run.at = 0;
    if (take == 0) return true;
    if (!readAllAt(runs_, run.buffer.data(), take * sizeof(Hash), run.next)) return false;
    run.next += take * sizeof(Hash);
    run.left -= take;
    return true;
  };
  using Head = std::pair<Hash, size_t>;
  std::priority_queue<Head, std::vector<Head>, std::greater<Head>> heads;
  for (size_t r = 0; r < runs.size(); ++r) {
    if (!refill(runs[r])) return false;
    if (!runs[r].buffer.empty()) heads.emplace(runs[r].buffer[0], r);
  }
  std::vector<Hash> out;
  out.reserve(perPage * 16);
  count_ = 0;
  pageFirst_.clear();
  Hash last{};
  while (!heads.empty()) {
    const auto [hash, r] = heads.top();
    heads.pop();
    // Each hash once.
    if (count_ == 0 || !(last == hash)) {
      if (count_ % perPage == 0) pageFirst_.push_back(hash);
      out.push_back(hash);
      last = hash;
      ++count_;
      if (out.size() == out.capacity()) {
        if (!writeAll(merged_, out.data(), out.size() * sizeof(Hash))) return false;
        out.clear();
      }
    }
    Run& run = runs[r];
    if (++run.at == run.buffer.size() && !refill(run)) return false;
    if (run.at < run.buffer.size()) heads.emplace(run.buffer[run.at], r);
  }
  if (!writeAll(merged_, out.data(), out.size() * sizeof(Hash))) return false;
  blockAt_ = SIZE_MAX;
  ::posix_fadvise(merged_, 0, 0, POSIX_FADV_RANDOM);
  return true;
}

template <typename Hash>
std::optional<bool> HashSet<Hash>::contains(const Hash& hash) const {
  if (merged_ < 0) {
    const size_t bucket = shift_ >= 64 ? 0 : static_cast<size_t>(top(hash) >> shift_);
    for (uint32_t i = directory_[bucket]; i < directory_[bucket + 1]; ++i)
      if (hashes_[i] == hash) return true;
    return false;
  }
  // The page whose first hash is the last one not past the hash holds it, if any does.
  const auto after = std::upper_bound(pageFirst_.begin(), pageFirst_.end(), hash);
  if (after == pageFirst_.begin()) return false;
  constexpr size_t perPage = kPageBytes / sizeof(Hash);
  constexpr size_t perBlock = kBlockBytes / sizeof(Hash);
  const auto page = static_cast<size_t>(after - pageFirst_.begin()) - 1;
  const size_t pageStart = page * perPage;
  const size_t inPage = std::min(perPage, count_ - pageStart);
  // Where the hash would be among the page's, by its top bits between the page's first hash and
  // the next page's.
  const uint64_t low = top(pageFirst_[page]);
  const uint64_t high = after == pageFirst_.end() ? UINT64_MAX : top(*after);
  const long double share =
      high > low ? static_cast<long double>(top(hash) - low) / static_cast<long double>(high - low) : 0.0L;
  size_t start = static_cast<size_t>(share * static_cast<long double>(inPage));
  start = start > perBlock / 2 ? start - perBlock / 2 : 0;
  int moved = 0;  // -1 back, 1 on
  for (;;) {
    start = std::min(start, inPage > perBlock ? inPage - perBlock : 0);
    const size_t at = pageStart + start;
    if (at != blockAt_) {
      block_.resize(std::min(perBlock, inPage - start));
      blockAt_ = SIZE_MAX;
      if (!readAllAt(merged_, block_.data(), block_.size() * sizeof(Hash), at * sizeof(Hash))) return std::nullopt;
      blockAt_ = at;
    }
    // Turning back means the hash falls between two neighbouring hashes of the file.
    if (hash < block_.front() && start > 0) {
      if (moved > 0) return false;
      moved = -1;
      start = start > perBlock ? start - perBlock : 0;
    } else if (block_.back() < hash && start + block_.size() < inPage) {
      if (moved < 0) return false;
      moved = 1;
      start += perBlock;
    } else {
      return std::binary_search(block_.begin(), block_.end(), hash);
    }
  }
}

template class HashSet<Hash128>;
template class HashSet<uint32_t>;

}  // namespace varsentix::engine
