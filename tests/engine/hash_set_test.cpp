// The hashes a record walk keeps of the other side: in memory up to a limit, in a temporary file
// past it, with the same answers either way.
#include "engine/HashSet.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <filesystem>
#include <set>
#include <string>
#include <thread>

#include "support/TempDir.h"

namespace varsentix::engine {
namespace {

using varsentix::testing::TempDir;

// Sets the limit for one test, as a number of 128-bit hashes (four times as many 32-bit ones), and
// puts it back.
class KeptInMemory {
 public:
  explicit KeptInMemory(size_t count) : before_(hashBytesKeptInMemory()) { setHashBytesKeptInMemory(count * 16); }
  ~KeptInMemory() { setHashBytesKeptInMemory(before_); }

 private:
  size_t before_;
};

// Sets TMPDIR for one test and puts it back.
class TemporaryDirectory {
 public:
  explicit TemporaryDirectory(const std::string& path) {
    if (const char* before = std::getenv("TMPDIR")) before_ = before, had_ = true;
    ::setenv("TMPDIR", path.c_str(), 1);
  }
  ~TemporaryDirectory() {
    if (had_) ::setenv("TMPDIR", before_.c_str(), 1);
    else ::unsetenv("TMPDIR");
  }

 private:
  std::string before_;
  bool had_ = false;
};

template <typename Hash>
Hash randomHash(std::mt19937_64& random) {
  if constexpr (std::is_same_v<Hash, Hash128>) return {random(), random()};
  else return static_cast<uint32_t>(random());
}

// Fills a set with count random hashes (some repeated) and checks every answer against std::set.
template <typename Hash>
void expectSameAnswers(size_t count, bool expectFile, unsigned seed) {
  std::mt19937_64 random(seed);
  std::set<Hash> expected;
  HashSet<Hash> hashes;
  hashes.reserve(count);
  std::vector<Hash> added;
  for (size_t i = 0; i < count; ++i) {
    // About one in five repeats an earlier one.
    const Hash hash = !added.empty() && random() % 5 == 0 ? added[random() % added.size()] : randomHash<Hash>(random);
    added.push_back(hash);
    expected.insert(hash);
    hashes.add(hash);
  }
  hashes.seal();
  EXPECT_EQ(hashes.inFile(), expectFile);
  EXPECT_EQ(hashes.size(), expected.size());
  for (const Hash& hash : added) ASSERT_EQ(hashes.contains(hash), std::optional<bool>(true));
  for (int i = 0; i < 20000; ++i) {
    const Hash hash = randomHash<Hash>(random);
    ASSERT_EQ(hashes.contains(hash), std::optional<bool>(expected.count(hash) > 0));
  }
  // Below the smallest and above the greatest.
  if (!expected.empty()) {
    const Hash lowest = *expected.begin();
    const Hash highest = *expected.rbegin();
    if (lowest != Hash{}) {
      EXPECT_EQ(hashes.contains(Hash{}), std::optional<bool>(false));
    }
    EXPECT_EQ(hashes.contains(lowest), std::optional<bool>(true));
    EXPECT_EQ(hashes.contains(highest), std::optional<bool>(true));
  }
}

TEST(HashSet, AnEmptySetHoldsNothingInMemoryOrInAFile) {
  HashSet<Hash128> hashes;
  hashes.seal();
  EXPECT_FALSE(hashes.inFile());
  EXPECT_EQ(hashes.contains({1, 2}), std::optional<bool>(false));
}

TEST(HashSet, UpToTheLimitTheHashesStayInMemory) {
  const KeptInMemory limit(5000);
  expectSameAnswers<Hash128>(5000, false, 1);
  expectSameAnswers<uint32_t>(20000, false, 2);
  expectSameAnswers<Hash128>(1, false, 3);
}

TEST(HashSet, TheLimitIsInBytes) {
  const KeptInMemory limit(100);
  expectSameAnswers<uint32_t>(400, false, 11);
  expectSameAnswers<uint32_t>(401, true, 12);
  expectSameAnswers<Hash128>(101, true, 13);
}

TEST(HashSet, HashesBunchedTogetherAreFoundAlike) {
  // Hashes far from evenly spread: most in a narrow band at the bottom of each page, a few far
  // apart, so the first block read is often the wrong one.
  const KeptInMemory limit(100);
  std::mt19937_64 random(14);
  std::set<Hash128> expected;
  HashSet<Hash128> hashes;
  for (int i = 0; i < 20000; ++i) {
    const Hash128 hash = i % 50 == 0 ? Hash128{random(), random()} : Hash128{random() % 4096, random() % 3};
    expected.insert(hash);
    hashes.add(hash);
  }
  hashes.seal();
  ASSERT_TRUE(hashes.inFile());
  for (const Hash128& hash : expected) ASSERT_EQ(hashes.contains(hash), std::optional<bool>(true));
  for (int i = 0; i < 20000; ++i) {
    const Hash128 probe = i % 2 ? Hash128{random() % 4096, random() % 4} : Hash128{random(), random()};
    ASSERT_EQ(hashes.contains(probe), std::optional<bool>(expected.count(probe) > 0));
  }
}

TEST(HashSet, PastTheLimitTheyGoToAFileAndAnswerAlike) {
  const KeptInMemory limit(1000);
  expectSameAnswers<Hash128>(1001, true, 4);
  expectSameAnswers<Hash128>(50000, true, 5);
  expectSameAnswers<uint32_t>(50000, true, 6);
}

TEST(HashSet, AFileOfWholePagesAndOneMoreHash) {
  // 256 hashes of 128 bits a page.
  const KeptInMemory limit(100);
  for (size_t count : {size_t{101}, size_t{256}, size_t{512}, size_t{513}}) {
    HashSet<Hash128> hashes;
    for (size_t i = 0; i < count; ++i) hashes.add({i * 3, i});
    hashes.seal();
    ASSERT_TRUE(hashes.inFile());
    EXPECT_EQ(hashes.size(), count);
    for (size_t i = 0; i < count; ++i) {
      ASSERT_EQ(hashes.contains({i * 3, i}), std::optional<bool>(true)) << i << " of " << count;
      ASSERT_EQ(hashes.contains({i * 3 + 1, i}), std::optional<bool>(false)) << i << " of " << count;
    }
    EXPECT_EQ(hashes.contains({count * 3, count}), std::optional<bool>(false));
  }
}

TEST(HashSet, ManyRunsAreMergedIntoOneFile) {
  // Hundreds of runs share the merge's buffers.
  const KeptInMemory limit(64);
  expectSameAnswers<Hash128>(40000, true, 8);
  expectSameAnswers<uint32_t>(40000, true, 9);
}

TEST(HashSet, OneHashRepeatedAcrossEveryRunIsKeptOnce) {
  const KeptInMemory limit(10);
  HashSet<Hash128> hashes;
  for (int i = 0; i < 5000; ++i) hashes.add({7, 7});
  hashes.add({9, 1});
  hashes.seal();
  EXPECT_TRUE(hashes.inFile());
  EXPECT_EQ(hashes.size(), 2u);
  EXPECT_EQ(hashes.contains({7, 7}), std::optional<bool>(true));
  EXPECT_EQ(hashes.contains({9, 1}), std::optional<bool>(true));
  EXPECT_EQ(hashes.contains({7, 8}), std::optional<bool>(false));
  EXPECT_EQ(hashes.contains({0, 0}), std::optional<bool>(false));
  EXPECT_EQ(hashes.contains({10, 0}), std::optional<bool>(false));
}

TEST(HashSet, WithoutATemporaryDirectoryTheHashesStayInMemory) {
  const TempDir dir;
  const TemporaryDirectory missing((dir.path() / "not-there").string());
  const KeptInMemory limit(100);
  expectSameAnswers<Hash128>(3000, false, 10);
}

TEST(HashSet, TheFileIsWrittenInTheTemporaryDirectoryAndGoneWithTheSet) {
  const TempDir dir;
  const TemporaryDirectory here(dir.path().string());
  const KeptInMemory limit(100);
  {
    HashSet<uint32_t> hashes;
    for (uint32_t i = 0; i < 3000; ++i) hashes.add(i * 7);
    hashes.seal();
    ASSERT_TRUE(hashes.inFile());
    EXPECT_EQ(hashes.contains(21), std::optional<bool>(true));
    EXPECT_EQ(hashes.contains(22), std::optional<bool>(false));
  }
  // No file is left behind, named or not.
  EXPECT_TRUE(std::filesystem::is_empty(dir.path()));
}

TEST(HashSet, TheLimitIsTheThreadsOwn) {
  const KeptInMemory limit(10);
  EXPECT_EQ(hashBytesKeptInMemory(), 160u);
  size_t elsewhere = 0;
  std::thread other([&] { elsewhere = hashBytesKeptInMemory(); });
  other.join();
  EXPECT_EQ(elsewhere, size_t{4} << 20);
}

}  // namespace
}  // namespace varsentix::engine
