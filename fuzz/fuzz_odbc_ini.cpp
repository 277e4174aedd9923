// odbc.ini reading (the registry of data sources): readIniFile on any file content, the
// sections found again by name, and every entry's text as a registry value.
#include "FuzzSupport.h"
#include "platform/registry/OdbcIniFile.h"

using namespace varsentix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = fuzz::scratchFile("odbc.ini");
  fuzz::writeFile(path, fuzz::text(data, size));
  fuzz::expectOnlyVBError([&] {
    auto sections = registry::detail::readIniFile(path);
    for (const auto& section : sections) {
      if (!registry::detail::findSection(sections, section.name))
        fuzz::finding("a section is not found by its own name");
      for (const auto& entry : section.entries) {
        auto value = registry::detail::valueFromIniText(entry.text);
        (void)value;
      }
    }
  });
  return 0;
}
