// Concurrent writers of one registration file: every write replaces the file whole, and no
// writer loses another one's sections.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "control/ScopedEnv.h"
#include "server/RegistrationFile.h"
#include "support/TempDir.h"
#include "varsentix/server.h"

namespace varsentix {
namespace {

namespace fs = std::filesystem;
using server::detail::IniDocument;
using server::detail::readRegistrationFile;
using server::detail::updateRegistrationFile;

// A registration is whole when each class id section holds its four values and each ProgID
// section its two; readers must never see anything in between.
bool wholeOrAbsent(const IniDocument& document) {
  for (const auto& section : document.sections) {
    if (section.name.rfind("CLSID\\", 0) == 0 && section.values.size() != 4) return false;
    if (section.name.rfind("VarsentiX.", 0) == 0 && section.values.size() != 2) return false;
  }
  return true;
}

TEST(ServerConcurrency, ConcurrentRegistrationsNeitherCorruptNorLoseEntries) {
  testing::TempDir dir;
  const fs::path file = dir.path() / "classes.ini";
  testing::ScopedEnv overrideFile("VARSENTIX_REGISTRY_FILE", file.string());
  constexpr int kWriters = 3;
  constexpr int kRounds = 15;
  std::atomic<bool> failed{false};
  std::atomic<bool> done{false};
  std::vector<std::thread> threads;
  for (int w = 0; w < kWriters; ++w) {
    threads.emplace_back([&, w] {
      for (int r = 0; r < kRounds; ++r) {
        if ((r % 2 == 0 ? DllRegisterServer() : DllUnregisterServer()) != VX_S_OK) failed = true;
        // A section of this writer's own, added by a read-modify-write of the same file.
        updateRegistrationFile(file, [&](IniDocument& d) {
          d.sections.push_back({"Writer" + std::to_string(w) + ".Round" + std::to_string(r), {{"CLSID", "x"}}});
        }, true);
      }
    });
  }
  std::thread reader([&] {
    while (!done) {
      if (fs::exists(file) && !wholeOrAbsent(readRegistrationFile(file))) failed = true;
    }
  });
  for (auto& t : threads) t.join();
  done = true;
  reader.join();
  EXPECT_FALSE(failed);
  const IniDocument last = readRegistrationFile(file);
  for (int w = 0; w < kWriters; ++w)
    for (int r = 0; r < kRounds; ++r)
      EXPECT_NE(last.find("Writer" + std::to_string(w) + ".Round" + std::to_string(r)), nullptr) << w << " " << r;
  ASSERT_EQ(DllRegisterServer(), VX_S_OK);
  EXPECT_TRUE(wholeOrAbsent(readRegistrationFile(file)));
  EXPECT_EQ(readRegistrationFile(file).sections.size(), size_t{kWriters * kRounds + 8});
}

TEST(ServerConcurrency, TheIniTextRoundTrips) {
  const std::string text =
      "; comment\nignored=before any section\n[A\\B]\nkey = value with = sign \nflag\n\n# other\n[C]\nx=1\n";
  const IniDocument document = IniDocument::parse(text);
  ASSERT_EQ(document.sections.size(), 2u);
  EXPECT_EQ(document.sections[0].name, "A\\B");
  EXPECT_EQ(document.sections[0].value("KEY"), std::string("value with = sign"));
  EXPECT_EQ(document.sections[0].value("flag"), std::string(""));
  EXPECT_FALSE(document.sections[0].value("ignored").has_value());
  EXPECT_EQ(IniDocument::parse(document.render()).render(), document.render());
}

}  // namespace
}  // namespace varsentix
