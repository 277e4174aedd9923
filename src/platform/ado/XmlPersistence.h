#pragma once
// The ADO XML persistence format (Save with adPersistXML, Open with adCmdFile): an s:Schema
// section with one s:AttributeType per column, then rs:data with one z:row per row; a missing
// attribute is Null. Files are UTF-8.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "platform/ado/MemoryCursor.h"

namespace varsentix::ado::detail {

struct PersistedRowset {
  std::vector<ColumnInfo> columns;  // baseTable / baseColumn from rs:basetable / rs:basecolumn
  std::vector<Row> rows;
  bool updatable = false;           // rs:updatable of the row element
};

// Writes one rowset to an open file, row by row (the rows need not be in memory).
class XmlRowsetWriter {
 public:
  // keyColumns: names of the base table's key columns (rs:keycolumn='true').
  XmlRowsetWriter(std::FILE* out, std::vector<ColumnInfo> columns, bool updatable,
                  const std::vector<std::string>& keyColumns);
  void writeRow(const Row& row);
  // Closes the document; raises 75 (Path/File access error) when the file could not be written.
  void finish();

 private:
  void put(const std::string& text);
  std::FILE* out_;
  std::vector<ColumnInfo> columns_;
  std::vector<std::string> attributeNames_;
  std::string buffer_;
};

// The text of a value as the format writes it (dateTime as 2024-01-31T10:20:30, booleans
// True/False, binary as hexadecimal digits). REQUIRES value is not Null.
std::string persistedText(DataTypeEnum type, const vb::Variant& value);

// Reads a persisted file. Raises 53 for a missing file, ProviderError naming the line for a
// file that is not in the format.
PersistedRowset readXmlRowset(const std::string& path);
// The same for the content of a file; path only names it in messages.
PersistedRowset readXmlRowsetText(std::string text, const std::string& path);

// Escapes text for a single-quoted XML attribute value (&, <, >, ', ", control characters as
// character references; invalid UTF-8 bytes become U+FFFD).
std::string escapeXmlAttribute(const std::string& text);

}  // namespace varsentix::ado::detail
