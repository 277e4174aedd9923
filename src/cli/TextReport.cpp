#include "cli/TextReport.h"

#include <map>
#include <set>

#include "cli/TextSafety.h"
#include "varsentix/results/modConstants.h"

namespace varsentix::cli {
namespace {

struct Palette {
  const char* bold = "";
  const char* original = "";
  const char* modified = "";
  const char* dim = "";
  const char* reset = "";
};

Palette paletteFor(bool colour) {
  if (!colour) return {};
  return {"\x1b[1m", "\x1b[31m", "\x1b[32m", "\x1b[2m", "\x1b[0m"};
}

std::string onlyIn(SideName side, const Palette& p) {
  return std::string(side == SideName::Original ? p.original : p.modified) + "only in " + sideText(side) + p.reset;
}

// Names, values and labels as the report shows them: control characters and bytes that are not
// UTF-8 in the visible form of escapedForTerminal.
std::string shown(const std::string& text) { return escapedForTerminal(text); }

// What a section without differences says: never a plain "no differences" when something was
// not compared.
std::string noDifferences(const Report& report) {
  return report.problems.empty() ? "no differences" : "no differences in what was compared (see Problems)";
}

std::string valueText(const RecordDifference::Value& value) {
  if (!value.text) return "NULL";
  if (isNumericType(value.adoType)) return shown(*value.text);
  std::string text = "'";
  for (char c : shown(*value.text)) {
    if (c == '\'') text += "''";
    else text += c;
  }
  return text + "'";
}

void writeTables(std::ostream& out, const Report& report, const Palette& p) {
  out << p.bold << "Tables" << p.reset << "\n";
  if (report.tables.empty()) out << "  " << noDifferences(report) << "\n";
  for (const auto& t : report.tables) {
    out << "  " << shown(t.table) << "  ";
    if (t.changeType == 1) out << onlyIn(t.side, p);
    else out << p.dim << modConstants::getChangeDesciption(t.changeType) << " (" << sideText(t.side) << ")" << p.reset;
    out << "\n";
  }
}

void writeFields(std::ostream& out, const Report& report, const Palette& p) {
  out << "\n" << p.bold << "Fields" << p.reset << "\n";
  size_t listed = 0;
  std::set<std::string> typePairsShown;
  for (const auto& f : report.fields) {
    const std::string name = shown(f.table) + "." + shown(f.field);
    if (f.changeType == 1) continue;  // a field of a table on one side only: the table says it
    if (f.changeType == 3) {
      if (!typePairsShown.insert(name).second) continue;
      const bool original = f.side == SideName::Original;
      out << "  " << name << "  type differs: Original " << shown(original ? f.dataType : f.otherDataType)
          << ", Modified " << shown(original ? f.otherDataType : f.dataType) << "\n";
    } else if (f.changeType == 2) {
      out << "  " << name << "  " << onlyIn(f.side, p) << "  " << shown(f.dataType);
      if (!f.definedSize.empty()) out << "(" << shown(f.definedSize) << ")";
      out << "\n";
    } else {
      out << "  " << name << "  " << p.dim << modConstants::getChangeDesciption(f.changeType) << " ("
          << sideText(f.side) << ")" << p.reset << "\n";
    }
    ++listed;
  }
  if (listed == 0) out << "  " << noDifferences(report) << "\n";
}

void writeRecords(std::ostream& out, const Report& report, const TextOptions& options, const Palette& p) {
  out << "\n" << p.bold << "Records" << p.reset << "\n";
  if (report.comparedTables.empty()) {
    out << "  not compared\n";
    return;
  }
  std::map<std::string, std::vector<const RecordDifference*>> byTable;
  for (const auto& r : report.records) byTable[r.table].push_back(&r);
  size_t tablesWithDifferences = 0;
  for (const auto& table : report.comparedTables) {
    auto found = byTable.find(table);
    if (found == byTable.end()) continue;
    ++tablesWithDifferences;
    size_t counts[2] = {0, 0};
    for (const auto* r : found->second) ++counts[r->side == SideName::Original ? 0 : 1];
    out << "  " << p.bold << shown(table) << p.reset << ": " << counts[0] << " only in Original, " << counts[1]
        << " only in Modified\n";
    for (SideName side : {SideName::Original, SideName::Modified}) {
      size_t listed = 0;
      size_t total = counts[side == SideName::Original ? 0 : 1];
      for (const auto* r : found->second) {
        if (r->side != side) continue;
        if (listed == options.limit) break;
        out << "    " << onlyIn(side, p) << "  ";
        bool first = true;
        for (const auto& value : r->values) {
          out << (first ? "" : " ") << shown(value.field) << "=" << valueText(value);
          first = false;
        }
        out << "\n";
        ++listed;
      }
      if (total > listed) out << "    " << p.dim << "... and " << (total - listed) << " more only in " << sideText(side) << p.reset << "\n";
    }
  }
  const size_t same = report.comparedTables.size() - tablesWithDifferences;
  if (tablesWithDifferences == 0)
    out << "  no differences in " << report.comparedTables.size() << " tables"
        << (report.problems.empty() ? "" : " (not all compared: see Problems)") << "\n";
  else if (same > 0) out << "  " << same << " other tables have the same records on both sides\n";
}

}  // namespace

void writeText(std::ostream& out, const Report& report, const TextOptions& options) {
  const Palette p = paletteFor(options.colour);
  out << p.bold << "Original:" << p.reset << " " << shown(report.original.label) << "\n";
  out << p.bold << "Modified:" << p.reset << " " << shown(report.modified.label) << "\n\n";
  writeTables(out, report, p);
  writeFields(out, report, p);
  if (!report.structureOnly) writeRecords(out, report, options, p);
  if (!report.problems.empty()) {
    out << "\n" << p.bold << "Problems" << p.reset << "\n";
    for (const auto& problem : report.problems) out << "  " << shown(problem) << "\n";
  }
  size_t tables = 0, fields = 0;
  std::set<std::string> typeDiffs;
  for (const auto& t : report.tables) tables += t.changeType != 0;
  for (const auto& f : report.fields) {
    if (f.changeType == 3) typeDiffs.insert(f.table + "." + f.field);
    else fields += f.changeType == 2;
  }
  fields += typeDiffs.size();
  out << "\n";
  if (!report.problems.empty())
    out << "Incomplete, " << report.problems.size() << (report.problems.size() == 1 ? " problem: " : " problems: ");
  else
    out << (report.hasDifferences() ? "Differences: " : "No differences: ");
  out << tables << " tables, "
      << fields << " fields";
  if (!report.structureOnly) out << ", " << report.records.size() << " records";
  out << "\n";
}

}  // namespace varsentix::cli
