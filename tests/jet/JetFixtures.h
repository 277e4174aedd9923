#pragma once
// Helpers of the Access provider's tests: copies of the sample files in a test's own folder,
// the loaded database queried natively, and a copy of an Access file given a database password.
#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "support/TempDir.h"

namespace varsentix::testing {

inline std::vector<char> fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Copies a sample database into dir and returns the copy's path.
inline std::string copySample(const TempDir& dir, const std::string& name) {
  std::string target = dir.file(name);
  std::filesystem::copy_file(sharedDataDir() / name, target);
  return target;
}

// The first column of the first row of a native query on the loaded database, as text
// ("<null>" for NULL, "<none>" without a row).
inline std::string scalar(sqlite3* db, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
    return std::string("<error: ") + sqlite3_errmsg(db) + ">";
  std::string result = "<none>";
  if (sqlite3_step(statement) == SQLITE_ROW) {
    const unsigned char* text = sqlite3_column_text(statement, 0);
    result = text ? reinterpret_cast<const char*>(text) : "<null>";
  }
  sqlite3_finalize(statement);
  return result;
}

// Writes password into the (RC4-encoded) header of a JET3 file, as Access does when a
// database password is set: up to 20 single-byte characters at 0x42.
inline void setJet3Password(const std::string& path, const std::string& password) {
  std::array<uint8_t, 256> s{};
  const uint8_t key[4] = {0xc7, 0xda, 0x39, 0x6b};
  for (int i = 0; i < 256; ++i) s[i] = static_cast<uint8_t>(i);
  for (int i = 0, j = 0; i < 256; ++i) {
    j = (j + s[i] + key[i % 4]) & 0xff;
    std::swap(s[i], s[j]);
  }
  std::vector<uint8_t> keystream(126);
  for (size_t n = 0, i = 0, j = 0; n < keystream.size(); ++n) {
    i = (i + 1) & 0xff;
    j = (j + s[i]) & 0xff;
    std::swap(s[i], s[j]);
    keystream[n] = s[(s[i] + s[j]) & 0xff];
  }
  std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
  for (size_t i = 0; i < 20; ++i) {
    uint8_t plain = i < password.size() ? static_cast<uint8_t>(password[i]) : 0;
    file.seekp(static_cast<std::streamoff>(0x42 + i));
    char encoded = static_cast<char>(plain ^ keystream[0x42 - 0x18 + i]);
    file.write(&encoded, 1);
  }
}

}  // namespace varsentix::testing
