#pragma once
// A set of hashes, filled once and then only asked: what a record walk keeps of the other side's
// records when it cannot read them in step with its own.
//
// Up to a limit the hashes stay in memory, sorted, with a directory over their top bits. Past it
// they go to a temporary file: each full batch is sorted and written as a run, and sealing the set
// merges the runs into one sorted file, of which only the first hash of every page stays in
// memory. A question then reads a block of one page. Memory stays within the limit whatever the
// size of the table, but for 16 bytes per 4,096 of file; the file is gone when the set is.
//
// When the file cannot be written (no temporary directory, a full disk), the hashes stay in
// memory as before. When a page cannot be read back, the set cannot answer (nullopt): the record
// is then left to the engine.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace varsentix::engine {

using Hash128 = std::pair<uint64_t, uint64_t>;

// Per thread: how many bytes of hashes a set keeps in memory before it moves them to a file (at
// least one hash). Tests set it low to take the file's way on small tables.
size_t hashBytesKeptInMemory();
void setHashBytesKeptInMemory(size_t bytes);

template <typename Hash>
class HashSet {
 public:
  HashSet();
  ~HashSet();
  HashSet(const HashSet&) = delete;
  HashSet& operator=(const HashSet&) = delete;

  // Room for count hashes in memory (no more than the limit).
  void reserve(size_t count);
  void add(const Hash& hash);
  // Call once, after the last add and before the first question.
  void seal();
  // Whether the hash was added; nullopt when the file could not be read.
  std::optional<bool> contains(const Hash& hash) const;
  // Whether the hashes went to a file.
  bool inFile() const { return merged_ >= 0; }
  // How many distinct hashes the set holds (after seal).
  size_t size() const { return count_; }

 private:
  // Sorts the hashes in memory and writes them to the runs' file; false when it cannot.
  bool spill();
  // Brings the runs written so far back into memory (the file failed).
  void takeRunsBack();
  void sealInMemory();
  bool mergeRuns();

  static uint64_t top(uint32_t hash) { return static_cast<uint64_t>(hash) << 32; }
  static uint64_t top(const Hash128& hash) { return hash.first; }

  size_t limit_;
  std::vector<Hash> hashes_;  // in memory: all of them, or the batch being filled
  // In memory: the first position of each bucket, and the end.
  std::vector<uint32_t> directory_;
  int shift_ = 63;
  // The runs: where each starts in runs_'s file and how many hashes it holds.
  int runs_ = -1;
  std::vector<std::pair<uint64_t, size_t>> runList_;
  // The merged file, its size and the first hash of each of its pages.
  int merged_ = -1;
  size_t count_ = 0;
  std::vector<Hash> pageFirst_;
  // The block read last, and the position of its first hash in the file.
  mutable std::vector<Hash> block_;
  mutable size_t blockAt_ = SIZE_MAX;
};

extern template class HashSet<Hash128>;
extern template class HashSet<uint32_t>;

}  // namespace varsentix::engine
