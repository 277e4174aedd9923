#pragma once
// The system odbc.ini as the registry sees it: sections are keys, entries are values.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace varsentix::registry::detail {

// One value of a key: its kind (REG_*) and its bytes as RegQueryValueExA hands them out.
struct RegValue {
  uint32_t type = 0;
  std::vector<uint8_t> data;
};

struct IniEntry {
  std::string name;
  std::string text;
};

struct IniSection {
  std::string name;
  std::vector<IniEntry> entries;
};

// Reads an ini file the way unixODBC does: "[name]" starts a section, "name = text" is an entry
// (both trimmed of blanks and tabs), lines starting with '#' or ';' are comments, entries before
// the first section are ignored. A missing or unreadable file has no sections.
std::vector<IniSection> readIniFile(const std::string& path);

// The first section whose name equals name in any letter case, if any.
std::optional<IniSection> findSection(const std::vector<IniSection>& sections,
                                      const std::string& name);

// The value an entry's text stands for. Plain text is a string (REG_SZ); the prefixes "sz:",
// "expand:" (REG_EXPAND_SZ), "dword:" (REG_DWORD: decimal, or hexadecimal after 0x) and "hex:"
// (REG_BINARY: comma-separated byte pairs) choose another kind. A number or byte list that cannot
// be read gives a value of kind REG_NONE without data. Texts carry their terminating zero.
RegValue valueFromIniText(const std::string& text);

// ASCII letter-case-insensitive equality, as registry names compare.
bool sameName(const std::string& a, const std::string& b);

}  // namespace varsentix::registry::detail
