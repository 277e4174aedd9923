#pragma once
// The help of every command: printed by --help and written to docs/cli.md by
// `varsentix help --markdown`, so that the two never differ.
#include <string>

namespace varsentix::cli {

struct CommandHelp {
  const char* name;
  const char* usage;
  const char* text;
};

extern const CommandHelp kMainHelp;
extern const CommandHelp kCompareHelp;
extern const CommandHelp kSourcesHelp;

std::string helpText(const CommandHelp& help);
// The whole manual as Markdown: every command's help and the JSON schema.
std::string markdownManual();

}  // namespace varsentix::cli
