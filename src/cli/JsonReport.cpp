#include "cli/JsonReport.h"

#include "cli/TextSafety.h"
#include "varsentix/results/modConstants.h"
#include "varsentix/varsentix.h"

namespace varsentix::cli {
namespace {

std::string quoted(const std::string& text) { return jsonString(text); }

std::string sideKey(SideName side) { return side == SideName::Original ? "\"original\"" : "\"modified\""; }

std::string change(int16_t changeType) {
  return "\"changeType\": " + std::to_string(changeType) +
         ", \"change\": " + quoted(modConstants::getChangeDesciption(changeType));
}

template <typename Items, typename Write>
void writeArray(std::ostream& out, const char* name, const Items& items, Write write, bool last = false) {
  out << "  " << quoted(name) << ": [";
  bool first = true;
  for (const auto& item : items) {
    out << (first ? "\n    " : ",\n    ");
    write(item);
    first = false;
  }
  out << (first ? "]" : "\n  ]") << (last ? "\n" : ",\n");
}

}  // namespace

void writeJson(std::ostream& out, const Report& report) {
  out << "{\n  \"format\": \"varsentix-report\",\n  \"version\": 1,\n  \"tool\": " << quoted(version()) << ",\n";
  out << "  \"sides\": {\n";
  out << "    \"original\": {\"source\": " << quoted(report.original.label)
      << ", \"errorLogs\": " << quoted(report.original.errorLogs) << "},\n";
  out << "    \"modified\": {\"source\": " << quoted(report.modified.label)
      << ", \"errorLogs\": " << quoted(report.modified.errorLogs) << "}\n  },\n";
  out << "  \"differences\": " << (report.hasDifferences() ? "true" : "false") << ",\n";
  out << "  \"recordsCompared\": " << (report.structureOnly ? "false" : "true") << ",\n";
  out << "  \"complete\": " << (report.problems.empty() ? "true" : "false") << ",\n";
  writeArray(out, "tables", report.tables, [&](const TableDifference& t) {
    out << "{\"table\": " << quoted(t.table) << ", \"side\": " << sideKey(t.side) << ", " << change(t.changeType)
        << ", \"tableType\": " << quoted(t.tableType) << ", \"primaryKey\": " << quoted(t.primaryKey) << "}";
  });
  writeArray(out, "fields", report.fields, [&](const FieldDifference& f) {
    out << "{\"table\": " << quoted(f.table) << ", \"field\": " << quoted(f.field) << ", \"side\": " << sideKey(f.side)
        << ", " << change(f.changeType) << ", \"dataType\": " << quoted(f.dataType)
        << ", \"definedSize\": " << quoted(f.definedSize);
    if (f.changeType == 3) out << ", \"otherDataType\": " << quoted(f.otherDataType);
    out << "}";
  });
  writeArray(out, "comparedTables", report.comparedTables, [&](const std::string& t) { out << quoted(t); });
  writeArray(out, "problems", report.problems, [&](const std::string& p) { out << quoted(p); });
  writeArray(
      out, "records", report.records,
      [&](const RecordDifference& r) {
        out << "{\"table\": " << quoted(r.table) << ", \"side\": " << sideKey(r.side)
            << ", \"recordNumber\": " << r.recordNumber << ", " << change(r.changeType) << ", \"values\": {";
        bool first = true;
        for (const auto& value : r.values) {
          out << (first ? "" : ", ") << quoted(value.field) << ": " << (value.text ? quoted(*value.text) : std::string("null"));
          first = false;
        }
        out << "}}";
      },
      true);
  out << "}\n";
}

}  // namespace varsentix::cli
