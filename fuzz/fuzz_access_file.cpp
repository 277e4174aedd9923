// The Access loader on damaged files. The input is a list of changes to one of the sample
// databases: its first byte chooses the file (nwind.mdb for one in four, as it loads slowly), then each 5 bytes are an offset (4 bytes, little
// endian, taken modulo the file's size) and the byte written there. The loader must load the
// file or end in the system's own error.
#include <fstream>
#include <iterator>
#include <vector>

#include "FuzzSupport.h"
#include "platform/ado/providers/jet/JetLoader.h"

using namespace varsentix;

namespace {

std::vector<char> sample(const char* name) {
  std::ifstream in(std::string(VARSENTIX_SHARED_DATA_DIR) + "/" + name, std::ios::binary);
  std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (bytes.empty()) fuzz::finding(std::string("the sample database is missing: ") + name);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<char> samples[] = {sample("DateTestDatabase.mdb"), sample("nwind.mdb")};
  static const std::string path = fuzz::scratchFile("damaged.mdb");
  if (size == 0) return 0;
  std::vector<char> bytes = samples[data[0] % 4 == 1 ? 1 : 0];
  for (size_t at = 1; at + 5 <= size; at += 5) {
    uint32_t offset = static_cast<uint32_t>(data[at]) | static_cast<uint32_t>(data[at + 1]) << 8 |
                      static_cast<uint32_t>(data[at + 2]) << 16 | static_cast<uint32_t>(data[at + 3]) << 24;
    bytes[offset % bytes.size()] = static_cast<char>(data[at + 4]);
  }
  fuzz::writeFile(path, std::string(bytes.data(), bytes.size()));
  fuzz::expectOnlyVBError([&] { ado::detail::loadAccessFile(path, ""); });
  return 0;
}
