// varsentix: compare two relational databases from the command line. A host of the control:
// it drives the Varsenti entry points and reads the differences through its result queries.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "cli/Compare.h"
#include "cli/HelpText.h"
#include "cli/Inputs.h"
#include "cli/JsonReport.h"
#include "cli/Progress.h"
#include "cli/TextReport.h"
#include "cli/TextSafety.h"
#include "varsentix/varsentix.h"

namespace {

using namespace varsentix;
using namespace varsentix::cli;

constexpr int kSame = 0;
constexpr int kDifferent = 1;
constexpr int kTrouble = 2;

struct Arguments {
  std::vector<std::string> positional;
  CompareOptions compare;
  std::string user;
  std::optional<std::string> password;  // --password
  bool passwordFromStdin = false;       // --password-stdin
  std::string format = "text";
  size_t limit = 20;
  bool help = false;
};

std::string valueOf(const std::vector<std::string>& args, size_t& i, const std::string& option) {
  const std::string& arg = args[i];
  const size_t equals = arg.find('=');
  if (equals != std::string::npos) return arg.substr(equals + 1);
  if (i + 1 >= args.size()) throw CliError(option + " needs a value");
  return args[++i];
}

Arguments parseCompare(const std::vector<std::string>& args) {
  Arguments a;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const std::string name = arg.substr(0, arg.find('='));
    if (arg == "--help" || arg == "-h") a.help = true;
    else if (arg == "--schema-only") a.compare.schemaOnly = true;
    else if (arg == "--objects-only") a.compare.objectsOnly = true;
    else if (arg == "--show-unchanged") a.compare.showUnchanged = true;
    else if (name == "--table") a.compare.table = valueOf(args, i, name);
    else if (name == "--fields") a.compare.fields = valueOf(args, i, name);
    else if (name == "--user") a.user = valueOf(args, i, name);
    else if (name == "--password") a.password = valueOf(args, i, name);
    else if (arg == "--password-stdin") a.passwordFromStdin = true;
    else if (name == "--format") a.format = valueOf(args, i, name);
    else if (name == "--limit") {
      const std::string text = valueOf(args, i, name);
      char* end = nullptr;
      const long value = std::strtol(text.c_str(), &end, 10);
      if (text.empty() || *end != '\0' || value < 0) throw CliError("--limit takes a whole number, not " + text);
      a.limit = static_cast<size_t>(value);
    } else if (arg.size() > 1 && arg[0] == '-') throw CliError("unknown option " + arg);
    else a.positional.push_back(arg);
  }
  if (a.help) return a;
  if (a.positional.size() != 2) throw CliError("compare takes two databases, MASTER and SOURCE");
  if (a.format != "text" && a.format != "json") throw CliError("--format is text or json, not " + a.format);
  if (!a.compare.fields.empty() && a.compare.table.empty()) throw CliError("--fields goes with --table");
  if (a.password && a.passwordFromStdin) throw CliError("--password and --password-stdin exclude each other");
  return a;
}

// The password for both sides: --password, else the first line of standard input with
// --password-stdin, else VARSENTIX_PASSWORD, else none.
std::string passwordOf(const Arguments& a) {
  if (a.password) return *a.password;
  if (a.passwordFromStdin) {
    std::string line;
    if (!std::getline(std::cin, line) && line.empty()) throw CliError("--password-stdin: standard input gave no password");
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
  }
  const char* fromEnvironment = std::getenv("VARSENTIX_PASSWORD");
  return fromEnvironment != nullptr ? std::string(fromEnvironment) : std::string();
}

bool colourWanted() {
  const char* noColour = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) && (noColour == nullptr || *noColour == '\0');
}

int runCompareCommand(const std::vector<std::string>& args) {
  const Arguments a = parseCompare(args);
  if (a.help) {
    std::cout << helpText(kCompareHelp);
    return kSame;
  }
  const std::string password = passwordOf(a);
  Varsenti control;
  const ResolvedSide original = resolveSide(control, a.positional[0], a.user, password);
  const ResolvedSide modified = resolveSide(control, a.positional[1], a.user, password);
  ProgressBar progress(control, isatty(STDERR_FILENO));
  CompareOptions options = a.compare;
  options.onTable = [&](const std::string& table) { progress.setSubject(table); };
  const Report report = runCompare(control, original, modified, options);
  progress.finish();
  if (a.format == "json")
    writeJson(std::cout, report);
  else
    writeText(std::cout, report, {colourWanted() && a.format == "text", a.limit});
  std::cout.flush();
  if (!std::cout) throw CliError("cannot write the report");
  // Something not compared is never "no differences".
  for (const auto& problem : report.problems) std::cerr << "varsentix: " << escapedForTerminal(problem) << "\n";
  if (!report.problems.empty()) return kTrouble;
  return report.hasDifferences() ? kDifferent : kSame;
}

int runSourcesCommand(const std::vector<std::string>& args) {
  for (const auto& arg : args) {
    if (arg == "--help" || arg == "-h") {
      std::cout << helpText(kSourcesHelp);
      return kSame;
    }
    throw CliError("sources takes no arguments");
  }
  Varsenti control;
  const int16_t count = control.getODBCConnectionCount();
  // The last entry closes the list and names no data source.
  if (count <= 1) std::cout << "No ODBC data sources.\n";
  for (int16_t i = 1; i < count; ++i) {
    std::string entry = control.getODBCConnection(i);
    const std::string driver = control.getDriverName(entry);
    const std::string name = control.getDSNName(entry);
    std::cout << name << "\t" << driver << "\n";
  }
  return kSame;
}

int runHelpCommand(const std::vector<std::string>& args) {
  if (!args.empty() && args[0] == "--markdown") std::cout << markdownManual();
  else if (!args.empty() && args[0] == "compare") std::cout << helpText(kCompareHelp);
  else if (!args.empty() && args[0] == "sources") std::cout << helpText(kSourcesHelp);
  else std::cout << helpText(kMainHelp);
  return kSame;
}

int run(const std::vector<std::string>& args) {
  if (args.empty()) {
    std::cerr << helpText(kMainHelp);
    return kTrouble;
  }
  const std::string& command = args[0];
  const std::vector<std::string> rest(args.begin() + 1, args.end());
  if (command == "--help" || command == "-h") return runHelpCommand({});
  if (command == "--version") {
    std::cout << "varsentix " << version() << "\n";
    return kSame;
  }
  if (command == "compare") return runCompareCommand(rest);
  if (command == "sources") return runSourcesCommand(rest);
  if (command == "help") return runHelpCommand(rest);
  throw CliError("unknown command '" + command + "' (see varsentix --help)");
}

}  // namespace

int main(int argc, char** argv) {
  // Message boxes of the library go to standard error, as the default hook does.
  try {
    return run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const CliError& e) {
    std::cerr << "varsentix: " << escapedForTerminal(e.what()) << "\n";
  } catch (const vb::VBError& e) {
    std::cerr << "varsentix: " << escapedForTerminal(e.description()) << " (error " << e.number() << ")\n";
  } catch (const std::exception& e) {
    std::cerr << "varsentix: " << escapedForTerminal(e.what()) << "\n";
  }
  return kTrouble;
}
