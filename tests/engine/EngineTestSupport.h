#pragma once
// Helpers for the comparison-engine tests: database sides on real test databases, rows made by
// hand, and a recorder of the control's UpdateCount events.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "support/Engines.h"
#include "support/TempDir.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::testing {

using Side = vb::Ref<clsDBManager>;

// A side as the drivers prepare one: initialised and given its connection string.
inline Side makeSide(const std::string& connectionString) {
  auto side = Side::make();
  side->initializeValues();
  side->setConnectionString(connectionString);
  return side;
}

// A row as the comparison would hold it, for tests that lay out result collections by hand.
inline vb::Ref<clsResultSet> makeRow(const std::string& object, const std::string& field = "",
                                     const std::string& dataType = "", const std::string& changeType = "0",
                                     bool isFieldDesc = false) {
  auto row = vb::Ref<clsResultSet>::make();
  row->setDatabaseObjName(object);
  row->setFieldName(field);
  row->setDataType(dataType);
  row->setChangeType(changeType);
  row->setIsFieldDesc(isFieldDesc);
  return row;
}

// A field description as the structure compare leaves it in a side's results: the side's
// single-table record walk is then ordered by that field.
inline void describeField(clsDBManager& side, const std::string& table, const std::string& field) {
  side.getResults()->Add(makeRow(table, field, "202", "0", true));
}

inline std::vector<std::string> changeTypes(clsDBManager& side) {
  std::vector<std::string> out;
  for (const auto& row : *side.getResults()) out.push_back(row->getChangeType());
  return out;
}

// "object.field=changeType" for every row, in order (table rows show as "object.").
inline std::vector<std::string> classified(clsDBManager& side) {
  std::vector<std::string> out;
  for (const auto& row : *side.getResults())
    out.push_back(row->getDatabaseObjName() + "." + row->getFieldName() + "=" + row->getChangeType());
  return out;
}

struct ProgressEvent {
  int32_t count;
  int32_t maxCount;
  std::string readFrom;
  bool operator==(const ProgressEvent&) const = default;
};

inline void PrintTo(const ProgressEvent& e, std::ostream* os) {
  *os << "(" << e.count << ", " << e.maxCount << ", " << e.readFrom << ")";
}

// Records every UpdateCount the control raises while it lives.
class ProgressRecorder {
 public:
  explicit ProgressRecorder(Varsenti& control) : control_(control) {
    cookie_ = control.UpdateCount.connect([this](int32_t& count, int32_t& maxCount, std::string& readFrom) {
      events.push_back({count, maxCount, readFrom});
    });
  }
  ~ProgressRecorder() { control_.UpdateCount.disconnect(cookie_); }
  std::vector<ProgressEvent> events;

 private:
  Varsenti& control_;
  UpdateCountEvent::Cookie cookie_;
};

}  // namespace varsentix::testing
