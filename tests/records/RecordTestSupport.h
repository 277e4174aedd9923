#pragma once
#include <filesystem>
#include <fstream>
#include <sstream>

#include "compare/CompareTestSupport.h"

namespace varsentix::testing {

inline std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace varsentix::testing
