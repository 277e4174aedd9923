// varsentix: compare two relational databases from the command line.
#include <cstring>
#include <iostream>
#include <string>

#include "varsentix/varsentix.h"

namespace {

constexpr const char* kUsage =
    "Usage: varsentix COMMAND [ARGS...]\n"
    "\n"
    "Compare two relational databases: tables, fields and records that one side has and the\n"
    "other lacks, and fields whose type differs.\n"
    "\n"
    "Options:\n"
    "  --help      show this text and exit\n"
    "  --version   show the version and exit\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << kUsage;
    return 2;
  }
  std::string first = argv[1];
  if (first == "--help" || first == "-h" || first == "help") {
    std::cout << kUsage;
    return 0;
  }
  if (first == "--version") {
    std::cout << "varsentix " << varsentix::version() << "\n";
    return 0;
  }
  std::cerr << "varsentix: unknown command '" << first << "' (see varsentix --help)\n";
  return 2;
}
