// The table and field passes through one index of the other side's rows.
//
// The literal passes (compareResultStructureReference, CompareFieldStructureReference) rewrite
// later rows many times over, but the last write to every row comes from that row's own visit,
// and that write depends only on the row's names and on where B holds the same names. Both
// routines here compute exactly that write directly. docs/performance.md gives the argument.
#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/Engine.h"
#include "varsentix/control/Varsenti.h"
#include "varsentix/dbside/clsDBManager.h"
#include "varsentix/platform/vb/Conversions.h"

namespace varsentix::engine {
namespace {

// The three texts of a row the passes read.
struct RowNames {
  std::string object;
  std::string field;
  std::string dataType;
};

// Reads every row of a side; nullopt when the collection or a row is Nothing or a read fails
// (the literal routine then runs and fails the way it always has).
std::optional<std::vector<RowNames>> readRows(clsDBManager& side) {
  try {
    auto results = side.getResults();
    std::vector<RowNames> rows;
    rows.reserve(static_cast<size_t>(results->Count()));
    for (const auto& row : *results) {
      rows.push_back({row->getDatabaseObjName(), row->getFieldName(), row->getDataType()});
    }
    return rows;
  } catch (...) {
    return std::nullopt;
  }
}

// Where each object name and each (object name, field name) pair occurs among B's rows.
class SideIndex {
 public:
  struct Object {
    int32_t first = 0;  // 1-based position of the first row with this object name
    int32_t last = 0;   // ... and of the last
    std::unordered_map<std::string, std::vector<int32_t>> fields;  // ascending positions
  };

  explicit SideIndex(const std::vector<RowNames>& rows) : rows_(rows) {
    for (size_t n = 0; n < rows.size(); ++n) {
      const auto position = static_cast<int32_t>(n + 1);
      auto& object = objects_[rows[n].object];
      if (object.first == 0) object.first = position;
      object.last = position;
      object.fields[rows[n].field].push_back(position);
    }
  }

  const Object* find(const std::string& objectName) const {
    const auto found = objects_.find(objectName);
    return found == objects_.end() ? nullptr : &found->second;
  }

  // The change type the field pass writes last on row a when it scans B from j0: the data-type
  // verdict of the first row from j0 on with the same object and field name ("0" alone for an
  // empty field name), else "2" when some row from j0 on has the object name, else nothing.
  const char* fieldVerdict(const RowNames& a, int32_t j0) const {
    const Object* object = find(a.object);
    if (object == nullptr || object->last < j0) return nullptr;
    const auto field = object->fields.find(a.field);
    if (field != object->fields.end()) {
      const auto match = std::lower_bound(field->second.begin(), field->second.end(), j0);
      if (match != field->second.end()) {
        if (a.field.empty()) return "0";
        return a.dataType == rows_[static_cast<size_t>(*match - 1)].dataType ? "0" : "3";
      }
    }
    return "2";
  }

 private:
  const std::vector<RowNames>& rows_;
  std::unordered_map<std::string, Object> objects_;
};

void setChangeType(clsDBManager& side, int32_t index, const char* changeType) {
  side.getResults()->Item(index)->setChangeType(changeType);
}

// After a failure at row i of the table-level pass, the literal pass leaves every later row as
// the last field pass started so far wrote it: the latest matched visit v <= i (field pass from
// jv, the first B row with v's object name) whose scan reached an object name of the row. The
// rows are written here as that pass would have left them.
void writeInterimRows(clsDBManager& A, const std::vector<RowNames>& aRows, const SideIndex& index,
                      const std::vector<int32_t>& matchedStarts, int32_t i) {
  // suffixMin[k] = smallest start among matched visits k..end: ascending in k, so the last k
  // whose suffix minimum reaches the row is the latest visit whose pass wrote it.
  std::vector<int32_t> suffixMin(matchedStarts.size());
  int32_t smallest = INT32_MAX;
  for (size_t k = matchedStarts.size(); k-- > 0;) {
    smallest = std::min(smallest, matchedStarts[k]);
    suffixMin[k] = smallest;
  }
  for (size_t r = static_cast<size_t>(i); r < aRows.size(); ++r) {
    const auto* object = index.find(aRows[r].object);
    if (object == nullptr) continue;
    const auto after = std::upper_bound(suffixMin.begin(), suffixMin.end(), object->last);
    if (after == suffixMin.begin()) continue;
    const int32_t start = matchedStarts[static_cast<size_t>(after - suffixMin.begin() - 1)];
    if (const char* verdict = index.fieldVerdict(aRows[r], start))
      setChangeType(A, static_cast<int32_t>(r + 1), verdict);
  }
}

}  // namespace

clsDBManager& compareResultStructure(clsDBManager& A, clsDBManager& B, Varsenti& control,
                                     const std::string& readingFrom) {
  auto aRows = readRows(A);
  auto bRows = aRows ? readRows(B) : std::nullopt;
  if (!aRows || !bRows) return compareResultStructureReference(A, B, control, readingFrom);
  const SideIndex index(*bRows);
  const auto bCount = static_cast<int32_t>(bRows->size());
  std::vector<int32_t> matchedStarts;  // for the rows left behind by a failure
  int32_t i = 0;
  int32_t j = 0;
  try {
    A.setReturnMessage("Successfully Completed");
    int16_t counter = 0;
    const auto bound = static_cast<int32_t>(aRows->size());
    for (i = 1; i <= bound; ++i) {
      const RowNames& a = (*aRows)[static_cast<size_t>(i - 1)];
      j = bCount + 1;  // where the literal scan stops without a match
      if (bCount > 0) {
        if (const auto* object = index.find(a.object)) {
          j = object->first;
          matchedStarts.push_back(j);
          setChangeType(A, i, index.fieldVerdict(a, j));
        } else {
          setChangeType(A, i, "1");
        }
      }
      if (counter == 50) {
        int32_t position = i;
        int32_t maximum = A.getResults()->Count();
        std::string text = readingFrom;
        control.setCurrentProgressCount(position, maximum, text);
        counter = 0;
      }
      ++counter;
    }
  } catch (...) {
    try {
      writeInterimRows(A, *aRows, index, matchedStarts, i);
    } catch (...) {
      // the rows stay as far as they got; the message below still goes out
    }
    A.setReturnMessage(A.getReturnMessage() + " #10 Error occured while comparing result structure. Main index = " +
                       vb::CStr(i) + " Secondary index = " + vb::CStr(j) + " ||");
  }
  return A;
}

clsDBManager& CompareFieldStructure(clsDBManager& A, clsDBManager& B, int32_t i0, int32_t j0) {
  if (i0 < 1 || j0 < 1) return CompareFieldStructureReference(A, B, i0, j0);
  auto aRows = readRows(A);
  auto bRows = aRows ? readRows(B) : std::nullopt;
  if (!aRows || !bRows) return CompareFieldStructureReference(A, B, i0, j0);
  const SideIndex index(*bRows);
  A.setReturnMessage("Successfully Completed");
  const auto bound = static_cast<int32_t>(aRows->size());
  for (int32_t i = i0; i <= bound; ++i) {
    if (const char* verdict = index.fieldVerdict((*aRows)[static_cast<size_t>(i - 1)], j0))
      setChangeType(A, i, verdict);
  }
  return A;
}

}  // namespace varsentix::engine
