#include "cli/Compare.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <regex>
#include <set>

#include "varsentix/control/Varsenti.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::cli {
namespace {

bool sideIsMaster(SideName side) { return side == SideName::Original; }

// The text between "<number> " and the numbered tag, in the part of the log that follows label.
std::string causeBefore(const std::string& log, const std::string& label, const std::string& tag) {
  const size_t from = log.find(label);
  if (from == std::string::npos) return "";
  const size_t at = log.find(tag, from);
  if (at == std::string::npos) return "";
  std::string text = vb::Trim(log.substr(from + label.size(), at - from - label.size()));
  // A later failure is appended after earlier outcomes: keep the last one before the tag.
  const size_t lastBars = text.rfind("||");
  if (lastBars != std::string::npos) text = vb::Trim(text.substr(lastBars + 2));
  if (text.rfind("Successfully Completed", 0) == 0) text = vb::Trim(text.substr(22));
  const size_t blank = text.find(' ');  // the error number comes first
  return blank == std::string::npos ? text : text.substr(blank + 1);
}

std::string splitFieldList(const std::string& fields) {
  std::string list;
  size_t start = 0;
  while (start <= fields.size()) {
    size_t comma = fields.find(',', start);
    if (comma == std::string::npos) comma = fields.size();
    const std::string name = vb::Trim(fields.substr(start, comma - start));
    if (!name.empty()) {
      if (name.find(']') != std::string::npos) throw CliError("a field name may not hold ']': " + name);
      list += (list.empty() ? "[" : ", [") + name + "]";
    }
    start = comma + 1;
  }
  if (list.empty()) throw CliError("--fields names no field");
  return list;
}

void readStructure(Varsenti& control, SideName side, const CompareOptions& options, Report& report,
                   std::map<std::string, std::string>& typeOf) {
  const bool isMaster = sideIsMaster(side);
  const int32_t n = control.getResultCount(isMaster);
  for (int32_t i = 1; i <= n; ++i) {
    const std::string table = control.getResultDatabaseObjectName(i, isMaster);
    if (!options.table.empty() && table != options.table) continue;
    const std::string field = control.getResultFieldName(i, isMaster);
    const bool isFieldDesc = control.getResultIsFieldDesc(i, isMaster);
    const int16_t changeType = control.getResultChangeType(i, isMaster);
    if (field.empty() && !isFieldDesc) {
      report.tables.push_back({table, side, changeType, control.getResultDataType(i, isMaster),
                               control.getResultPrimaryKey(i, isMaster)});
    } else if (!field.empty()) {
      FieldDifference difference{table, field, side, changeType, control.getResultDataType(i, isMaster),
                                 control.getResultFieldDefinedSize(i, isMaster), ""};
      typeOf[std::string(isMaster ? "O" : "M") + "\x1f" + table + "\x1f" + field] = difference.dataType;
      report.fields.push_back(difference);
    }
  }
}

void readRecords(Varsenti& control, SideName side, const std::string& table, Report& report) {
  const bool isMaster = sideIsMaster(side);
  const int32_t n = control.getResultCount(isMaster);
  RecordDifference* current = nullptr;
  for (int32_t i = 1; i <= n; ++i) {
    if (!control.getResultIsDataValue(i, isMaster)) continue;
    const int32_t number = control.getResultRecordNumber(table, isMaster, i);
    if (current == nullptr || current->recordNumber != number) {
      report.records.push_back({table, side, number, control.getResultChangeType(i, isMaster), {}});
      current = &report.records.back();
    }
    const std::string value = control.getResultFieldValue(i, isMaster);
    int32_t adoType = 0;
    try {
      adoType = vb::CLng(control.getResultDataType(i, isMaster));  // value rows carry the type code
    } catch (const vb::VBError&) {
    }
    // The control stores a null value as the text "Null".
    current->values.push_back({control.getResultFieldName(i, isMaster),
                               value == "Null" ? std::nullopt : std::optional<std::string>(value), adoType});
  }
}

// The fields of table present on both sides, in the original's order, as a bracketed list.
std::string commonFieldList(const Report& report, const std::string& table) {
  std::string list;
  for (const auto& f : report.fields) {
    if (f.side != SideName::Original || f.table != table || f.changeType == 2) continue;
    if (f.field.find(']') != std::string::npos) return "*";  // cannot be bracketed: take them all
    list += (list.empty() ? "[" : ", [") + f.field + "]";
  }
  return list;
}

vb::Ref<clsDBManager> preparedSide(const std::string& connectionString, const std::string& table,
                                   const std::string& fieldList, bool isMaster) {
  auto side = vb::Ref<clsDBManager>::make();
  side->initializeValues();
  side->setIsMasterDatabase(isMaster);
  side->setConnectionString(connectionString);
  side->openDatabaseConnection();
  side->setTableName(table);
  side->setFieldList(fieldList);
  return side;
}

// Keeps a table compare's log only when it records a failure (a numbered text such as " #14").
void appendFailures(std::string& logs, const std::string& tableLog) {
  for (size_t at = tableLog.find(" #"); at != std::string::npos; at = tableLog.find(" #", at + 1)) {
    const size_t digit = at + 2 < tableLog.size() && tableLog[at + 2] == ' ' ? at + 3 : at + 2;
    if (digit < tableLog.size() && std::isdigit(static_cast<unsigned char>(tableLog[digit]))) {
      logs += "\n" + tableLog;
      return;
    }
  }
}

void failOnConnection(Varsenti& control, SideName side, const ResolvedSide& resolved) {
  // A driver's message may run over several lines (libpq adds a hint line): the report says it on one.
  const std::string cause = std::regex_replace(connectionFailureIn(control.getErrorLogs(sideIsMaster(side))),
                                               std::regex("\\s*[\r\n]+\\s*"), " ");
  if (!cause.empty())
    throw CliError(std::string(sideText(side)) + " side (" + resolved.label + "): " + cause);
}

// The control's " #20 Not compared: ... ||" entries of a log, without their tag and bars.
void collectNotCompared(const std::string& log, const std::string& table, std::vector<std::string>& problems) {
  static const std::string tag = " #20 ";
  static const std::string end = "cannot be written in brackets";
  for (size_t at = log.find(tag + "Not compared: "); at != std::string::npos;
       at = log.find(tag + "Not compared: ", at + 1)) {
    const size_t stop = log.find(end, at);
    if (stop == std::string::npos) break;
    const std::string problem = log.substr(at + tag.size(), stop + end.size() - at - tag.size());
    // With --table, the problems of that table only.
    if (!table.empty() && problem.find("the table " + table + " ") == std::string::npos) continue;
    if (std::find(problems.begin(), problems.end(), problem) == problems.end()) problems.push_back(problem);
  }
}

// How many match queries of a table's compare were not sent because a value of the record could
// not be written as its column's type (SQLite keeps a text in an INTEGER column, say): such a
// record cannot be matched, so it is reported on its own side whether or not the other side has it.
void collectUnmatchable(const std::string& tableLog, const std::string& table, std::vector<std::string>& problems) {
  static const std::string refusal = "not well-formed for its column's data type";
  size_t count = 0;
  for (size_t at = tableLog.find(refusal); at != std::string::npos; at = tableLog.find(refusal, at + 1)) ++count;
  if (count == 0) return;
  problems.push_back("the table " + table + ": " + std::to_string(count) +
                     (count == 1 ? " match query was" : " match queries were") +
                     " not sent, for a value not well-formed for its column's data type; such a record "
                     "could not be matched and is listed as only on its side");
}

}  // namespace

std::string connectionFailureIn(const std::string& errorLogs) {
  std::string cause = causeBefore(errorLogs, "Connection issues =", " #2 Error occurred when attempting to open connection");
  if (cause.empty())
    cause = causeBefore(errorLogs, "Connection issues =", " #5 Error when attempting to open the database schema");
  return cause;
}

Report runCompare(Varsenti& control, const ResolvedSide& original, const ResolvedSide& modified,
                  const CompareOptions& options) {
  Report report;
  report.original.label = original.label;
  report.modified.label = modified.label;
  report.structureOnly = options.schemaOnly || options.objectsOnly;

  control.showDifferencesOnly(false);
  const bool bothHaveTables =
      control.beginFullDatabaseCompare(original.connectionString, modified.connectionString, options.objectsOnly);
  failOnConnection(control, SideName::Original, original);
  failOnConnection(control, SideName::Modified, modified);
  if (!bothHaveTables) {
    // One side has no table at all: the control publishes nothing, so publish its rows by hand.
    control.setMasterResultsFromDataManager(control.getMasterDataManager());
    control.setSourceResultsFromDataManager(control.getSourceDataManager());
  }
  std::map<std::string, std::string> typeOf;
  readStructure(control, SideName::Original, options, report, typeOf);
  readStructure(control, SideName::Modified, options, report, typeOf);
  for (auto& field : report.fields) {
    const char* other = field.side == SideName::Original ? "M" : "O";
    auto found = typeOf.find(std::string(other) + "\x1f" + field.table + "\x1f" + field.field);
    if (found != typeOf.end()) field.otherDataType = found->second;
  }
  report.original.errorLogs = control.getErrorLogs(true);
  report.modified.errorLogs = control.getErrorLogs(false);
  if (!options.table.empty() && report.tables.empty())
    throw CliError("no table named " + options.table + " on either side");

  if (!report.structureOnly) {
    for (const auto& table : report.tables) {
      if (table.side != SideName::Original || table.changeType != 0) continue;
      // The records are compared on the fields both sides have (a field on one side only is a
      // difference of its own, shown with the fields), or on the fields the user named.
      const std::string fieldList =
          options.fields.empty() ? commonFieldList(report, table.table) : splitFieldList(options.fields);
      if (fieldList.empty()) continue;
      if (options.onTable) options.onTable(table.table);
      auto master = preparedSide(original.connectionString, table.table, fieldList, true);
      auto source = preparedSide(modified.connectionString, table.table, fieldList, false);
      if (control.beginTableCompareFromFieldListFromDBManager(master, source)) {
        readRecords(control, SideName::Original, table.table, report);
        readRecords(control, SideName::Modified, table.table, report);
      }
      report.comparedTables.push_back(table.table);
      const std::string originalLog = control.getErrorLogs(true), modifiedLog = control.getErrorLogs(false);
      collectUnmatchable(originalLog + modifiedLog, table.table, report.problems);
      appendFailures(report.original.errorLogs, originalLog);
      appendFailures(report.modified.errorLogs, modifiedLog);
    }
  }
  collectNotCompared(report.original.errorLogs, options.table, report.problems);
  collectNotCompared(report.modified.errorLogs, options.table, report.problems);
  if (!options.showUnchanged) {
    std::erase_if(report.tables, [](const TableDifference& t) { return t.changeType == 0; });
    std::erase_if(report.fields, [](const FieldDifference& f) { return f.changeType == 0; });
  }
  return report;
}

}  // namespace varsentix::cli
