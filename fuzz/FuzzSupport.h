#pragma once
// Shared by the harnesses: the input as text, a scratch file per process, and the rule that
// only the system's own error (vb::VBError) may leave a reader; anything else escapes the
// harness and libFuzzer reports it (std::terminate), as it does crashes and sanitizer findings.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::fuzz {

inline std::string text(const uint8_t* data, size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// A file of this process under $TMPDIR (or /tmp) named after suffix.
inline std::string scratchFile(const std::string& suffix) {
  const char* folder = std::getenv("TMPDIR");
  return std::string(folder && *folder ? folder : "/tmp") + "/varsentix-fuzz-" +
         std::to_string(getpid()) + "-" + suffix;
}

inline void writeFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
}

// Runs body; the system's own error is an answer, every other exception a finding.
template <class Body>
void expectOnlyVBError(Body&& body) {
  try {
    body();
  } catch (const vb::VBError&) {
  }
}

// A broken promise of the code under test: reported as a crash with this text.
[[noreturn]] inline void finding(const std::string& what) {
  std::fprintf(stderr, "FINDING: %s\n", what.c_str());
  std::abort();
}

}  // namespace varsentix::fuzz
