// The persisted record-set reader (the rollback file, Open with adCmdFile). Whatever it reads
// must be written by the writer to a file the reader reads back with the same column names,
// types and values.
#include <cstdio>
#include <cstdlib>

#include "FuzzSupport.h"
#include "platform/ado/XmlPersistence.h"

using namespace varsentix;
using ado::detail::PersistedRowset;

namespace {

// The text of a value as the writer puts it, "<Null>" for Null.
std::string shown(const ado::detail::ColumnInfo& column, const vb::Variant& value) {
  if (value.isNull() || value.isEmpty()) return "<Null>";
  return ado::detail::persistedText(column.type, value);
}

std::string written(const PersistedRowset& rowset) {
  char* buffer = nullptr;
  size_t length = 0;
  std::FILE* out = open_memstream(&buffer, &length);
  if (out == nullptr) std::abort();
  {
    ado::detail::XmlRowsetWriter writer(out, rowset.columns, rowset.updatable, {});
    for (const auto& row : rowset.rows) writer.writeRow(row);
    writer.finish();
  }
  std::fclose(out);
  std::string text(buffer, length);
  std::free(buffer);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  PersistedRowset first;
  try {
    first = ado::detail::readXmlRowsetText(fuzz::text(data, size), "fuzz.xml");
  } catch (const vb::VBError&) {
    return 0;
  }
  std::string again = written(first);
  PersistedRowset second;
  try {
    second = ado::detail::readXmlRowsetText(again, "again.xml");
  } catch (const vb::VBError& e) {
    fuzz::finding("a saved record set cannot be read again: " + e.description() + "\n" + again);
  }
  if (second.columns.size() != first.columns.size() || second.rows.size() != first.rows.size())
    fuzz::finding("columns or rows differ after saving again");
  for (size_t c = 0; c < first.columns.size(); ++c) {
    if (second.columns[c].name != first.columns[c].name)
      fuzz::finding("column name '" + first.columns[c].name + "' reads back as '" + second.columns[c].name + "'");
    if (second.columns[c].type != first.columns[c].type)
      fuzz::finding("the type of column '" + first.columns[c].name + "' changed");
  }
  for (size_t r = 0; r < first.rows.size(); ++r) {
    if (first.rows[r].size() != first.columns.size() || second.rows[r].size() != first.columns.size())
      fuzz::finding("a row has not one value per column");
    for (size_t c = 0; c < first.columns.size(); ++c) {
      std::string before = shown(first.columns[c], first.rows[r][c]);
      std::string after = shown(second.columns[c], second.rows[r][c]);
      if (before != after)
        fuzz::finding("value '" + before + "' of column '" + first.columns[c].name + "' reads back as '" + after + "'");
    }
  }
  return 0;
}
