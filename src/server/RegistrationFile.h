#pragma once
// The registration file: an INI text whose sections stand for registry keys
// ("[CLSID\{...}]", "[VarsentiX.Varsenti]") and whose "name=value" lines stand for their values.
// Writers hold an exclusive lock on the file's folder and replace the file atomically (a temporary
// file in the same folder, then rename), so a reader always sees a whole file and concurrent
// writers never lose each other's sections.
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace varsentix::server::detail {

struct IniSection {
  std::string name;
  std::vector<std::pair<std::string, std::string>> values;
  // The value of key (letter case ignored), if present.
  std::optional<std::string> value(const std::string& key) const;
};

struct IniDocument {
  std::vector<IniSection> sections;

  // Lenient: comments (";" or "#"), blank lines and lines outside a section are skipped; a line
  // without "=" is a key with an empty value; names and values are trimmed of blanks.
  static IniDocument parse(const std::string& text);
  std::string render() const;
  // Section lookup ignores letter case, as registry key names do.
  const IniSection* find(const std::string& name) const;
  // Removes every section of that name; returns how many went.
  size_t remove(const std::string& name);
};

// The file named by VARSENTIX_REGISTRY_FILE, if that is set and not empty.
std::optional<std::filesystem::path> overrideRegistrationFile();
// /etc/varsentix/classes.ini
std::filesystem::path systemRegistrationFile();
// $XDG_CONFIG_HOME/varsentix/classes.ini, or ~/.config/varsentix/classes.ini.
std::filesystem::path userRegistrationFile();

// Reads a registration file; an empty document when it does not exist. Throws
// std::system_error when it exists but cannot be read.
IniDocument readRegistrationFile(const std::filesystem::path& file);

// Locks the file's folder, reads the file, applies change and writes the result atomically.
// With createIfMissing false a missing file is left missing. Throws std::system_error (or what
// change throws) on failure; the file is then unchanged.
void updateRegistrationFile(const std::filesystem::path& file,
                            const std::function<void(IniDocument&)>& change, bool createIfMissing);

}  // namespace varsentix::server::detail
