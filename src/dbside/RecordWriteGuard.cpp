// The checks a record write makes before it writes: the statement it was given must select
// exactly the one row it is meant for. A where clause built from difference rows can select
// more (a LIKE pattern from a value holding % or _, duplicate rows) or another row (a value that
// reads differently on the engine): then nothing is written.
#include "dbside/RecordWriteSupport.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::detail {
namespace {

// ADO's "Operation is not allowed in this context."
constexpr int32_t kNotAllowed = 3219;

std::string valueText(const vb::Variant& value) { return value.isNull() ? "Null" : value.toText(); }

bool hasField(ado::Recordset& records, const std::string& name) {
  auto& fields = records.getFields();
  for (int32_t i = 0; i < fields.Count(); ++i)
    if (fields.Item(i).Name() == name) return true;
  return false;
}

}  // namespace

WriteRefused::WriteRefused(std::string reason)
    : vb::VBError(kNotAllowed, "Operation is not allowed in this context.", "VarsentiX"),
      reason_(std::move(reason)) {}

void requireSingleRow(ado::Recordset& records) {
  records.MoveFirst();
  records.MoveNext();
  const bool more = !records.isEOF();
  records.MoveFirst();
  if (more)
    throw WriteRefused("The statement selects more than one row, so the row to write cannot be told: nothing "
                       "was written.");
}

bool endsInWhereOf(ado::Recordset& records, const clsDBManager::ComparedRecord& compared) {
  if (compared.values.empty()) return false;
  const std::string source = records.Source();
  const std::string& where = compared.whereClause;
  return source.size() >= where.size() && source.compare(source.size() - where.size(), where.size(), where) == 0;
}

bool hasComparedRecord(ado::Recordset& records, clsDBManager& side) {
  return endsInWhereOf(records, side.getComparedRecord());
}

namespace {
void requireValues(ado::Recordset& records, const clsDBManager::ComparedRecord& compared, const std::string& only) {
  for (const auto& [name, value] : compared.values) {
    if (!only.empty() && name != only) continue;
    if (!hasField(records, name))
      throw WriteRefused("The row selected lacks the compared field " + name + ": nothing was written.");
    if (valueText(records.field(name).Value()) != value)
      throw WriteRefused("The row selected is not the compared record (its field " + name +
                         " holds another value): nothing was written.");
  }
}
}  // namespace

void requireComparedRecord(ado::Recordset& records, clsDBManager& side) {
  if (hasComparedRecord(records, side)) requireValues(records, side.getComparedRecord(), "");
}

void requireRecordByKey(ado::Recordset& records, const clsDBManager::ComparedRecord& compared,
                        const std::string& keyColumn) {
  if (!endsInWhereOf(records, compared)) return;
  bool keyed = false;
  for (const auto& entry : compared.values) keyed = keyed || entry.first == keyColumn;
  requireValues(records, compared, keyed ? keyColumn : "");
}

void requireComparedSource(ado::Recordset& records, clsDBManager& other) {
  if (!hasComparedRecord(records, other)) return;
  requireSingleRow(records);
  requireComparedRecord(records, other);
}

void requireSameKey(ado::Recordset& records, ado::Recordset& saved, const std::string& keyColumn) {
  if (keyColumn.empty() || !hasField(records, keyColumn) || !hasField(saved, keyColumn)) return;
  if (valueText(records.field(keyColumn).Value()) != valueText(saved.field(keyColumn).Value()))
    throw WriteRefused("The row selected is not the row saved in the rollback file (its key " + keyColumn +
                       " differs): nothing was written.");
}

std::string refusedWriteMessage(const WriteRefused& refused, const std::string& tableName) {
  return vb::CStr(refused.number()) + " " + refused.description() +
         " #7 Error when attempting to add a new record in table " + tableName + " || " + refused.reason() + " ||";
}

}  // namespace varsentix::detail
