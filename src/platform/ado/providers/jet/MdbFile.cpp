#include "platform/ado/providers/jet/MdbFile.h"

// glib and iconv must be seen before mdbtools.h, which includes them inside extern "C".
#include <glib.h>
#include <iconv.h>
#include <mdbtools.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>

#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

static_assert(std::endian::native == std::endian::little, "Access files are little-endian");

constexpr const char* kSource = "Microsoft JET Database Engine";
constexpr int kOffsetMask = 0x1fff;          // a row offset without its deleted/lookup flags
constexpr uint32_t kSystemObject = 0x80000000u;  // MSysObjects.Flags: the engine's own object
constexpr uint32_t kAccessObject = 0x00000002u;  // MSysObjects.Flags: an object Access keeps
constexpr int32_t kRelationNotEnforced = 0x2;    // MSysRelationships.grbit
constexpr int32_t kRelationCascadeUpdates = 0x100;
constexpr int32_t kRelationCascadeDeletes = 0x1000;

[[noreturn]] void raiseProvider(const std::string& text) {
  vb::raiseError(vb::errnum::ProviderError, text, kSource);
}

template <class T>
T readLE(const unsigned char* p) {
  T value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

struct MdbCloser {
  void operator()(MdbHandle* mdb) const { mdb_close(mdb); }
};
struct TableDefFree {
  void operator()(MdbTableDef* table) const { mdb_free_tabledef(table); }
};
using TableDefPtr = std::unique_ptr<MdbTableDef, TableDefFree>;

// ---- The file header: format and database password -------------------------------------

// RC4 keystream: the header of every Jet/ACE file is encoded with it (key 0x6b39dac7).
std::vector<uint8_t> rc4Keystream(size_t length) {
  const uint8_t key[4] = {0xc7, 0xda, 0x39, 0x6b};
  std::array<uint8_t, 256> s{};
  for (int i = 0; i < 256; ++i) s[i] = static_cast<uint8_t>(i);
  for (int i = 0, j = 0; i < 256; ++i) {
    j = (j + s[i] + key[i % 4]) & 0xff;
    std::swap(s[i], s[j]);
  }
  std::vector<uint8_t> out(length);
  for (size_t n = 0, i = 0, j = 0; n < length; ++n) {
    i = (i + 1) & 0xff;
    j = (j + s[i]) & 0xff;
    std::swap(s[i], s[j]);
    out[n] = s[(s[i] + s[j]) & 0xff];
  }
  return out;
}

void appendUtf8(std::string& out, uint32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xc0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3f));
  } else {
    out += static_cast<char>(0xe0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3f));
    out += static_cast<char>(0x80 | (c & 0x3f));
  }
}

struct FileHeader {
  uint8_t version = 0;    // 0 JET3, 1 JET4, 2.. ACE
  std::string password;   // the database password, "" when none
};

constexpr size_t kHeaderStart = 0x18;
constexpr size_t kPasswordOffset = 0x42 - kHeaderStart;
constexpr size_t kCreationDateOffset = 0x72 - kHeaderStart;

// JET3 keeps up to 20 single-byte characters; JET4 and ACE up to 20 UCS-2 characters, each
// 4-byte group further masked with the whole days of the file's creation date.
std::string decodePassword(const std::vector<uint8_t>& header, uint8_t version) {
  std::string password;
  if (version == 0) {
    for (size_t i = 0; i < 20 && header[kPasswordOffset + i] != 0; ++i)
      appendUtf8(password, header[kPasswordOffset + i]);
    return password;
  }
  double created = readLE<double>(header.data() + kCreationDateOffset);
  uint32_t mask = std::isfinite(created) && std::fabs(created) < 2e9
                      ? static_cast<uint32_t>(static_cast<int32_t>(created))
                      : 0;
  uint8_t maskBytes[4];
  std::memcpy(maskBytes, &mask, 4);
  for (size_t i = 0; i + 1 < 40; i += 2) {
    uint32_t c = (header[kPasswordOffset + i] ^ maskBytes[i % 4]) |
                 ((header[kPasswordOffset + i + 1] ^ maskBytes[(i + 1) % 4]) << 8);
    if (c == 0) break;
    appendUtf8(password, c);
  }
  return password;
}

FileHeader readHeader(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error))
    raiseProvider("Could not find file '" + path + "'.");
  std::ifstream in(path, std::ios::binary);
  std::vector<uint8_t> page(0x100);
  if (!in || !in.read(reinterpret_cast<char*>(page.data()), static_cast<std::streamsize>(page.size())))
    raiseProvider("Unrecognized database format '" + path + "'.");
  if (std::memcmp(page.data() + 4, "Standard Jet DB", 15) != 0 &&
      std::memcmp(page.data() + 4, "Standard ACE DB", 15) != 0)
    raiseProvider("Unrecognized database format '" + path + "'.");
  FileHeader result;
  result.version = page[0x14];
  size_t length = result.version == 0 ? 126 : 128;
  std::vector<uint8_t> header(page.begin() + kHeaderStart, page.begin() + kHeaderStart + length);
  auto keystream = rc4Keystream(length);
  for (size_t i = 0; i < length; ++i) header[i] ^= keystream[i];
  result.password = decodePassword(header, result.version);
  return result;
}

// ---- Values -----------------------------------------------------------------------------

// Text as the file stores it (JET3: the file's code page; JET4/ACE: UCS-2, maybe compressed)
// to UTF-8, through libmdb's converter.
std::string decodeText(MdbHandle* mdb, const void* data, size_t length) {
  if (length == 0) return {};
  std::vector<char> out(length * 3 + 16);
  int written = mdb_unicode2ascii(mdb, static_cast<const char*>(data), length, out.data(),
                                  out.size() - 1);
  return std::string(out.data(), static_cast<size_t>(std::max(written, 0)));
}

// The bytes of a Memo or OLE Object value: stored in the row, on one other page, or on a
// chain of pages. field points at the value's 12-byte header in the row.
vb::Bytes readLongValue(MdbHandle* mdb, const unsigned char* field, size_t fieldLength) {
  vb::Bytes out;
  if (fieldLength < MDB_MEMO_OVERHEAD) return out;
  uint32_t header = readLE<uint32_t>(field);
  size_t total = header & 0x3fffffffu;
  if (header & 0x80000000u) {
    size_t n = std::min(total, fieldLength - MDB_MEMO_OVERHEAD);
    out.assign(field + MDB_MEMO_OVERHEAD, field + MDB_MEMO_OVERHEAD + n);
    return out;
  }
  bool singlePage = (header & 0x40000000u) != 0;
  uint32_t pageRow = readLE<uint32_t>(field + 4);
  out.reserve(total);
  const size_t pageSize = static_cast<size_t>(mdb->fmt->pg_size);
  for (size_t pages = 0; pageRow != 0 && out.size() < total && pages <= total / 16 + 2; ++pages) {
    void* buffer = nullptr;
    int offset = 0;
    size_t length = 0;
    if (mdb_find_pg_row(mdb, static_cast<int>(pageRow), &buffer, &offset, &length) != 0) break;
    offset &= kOffsetMask;
    if (static_cast<size_t>(offset) + length > pageSize) break;
    const unsigned char* row = static_cast<const unsigned char*>(buffer) + offset;
    if (!singlePage) {
      if (length < 4) break;
      pageRow = readLE<uint32_t>(row);
      row += 4;
      length -= 4;
    } else {
      pageRow = 0;
    }
    size_t n = std::min(length, total - out.size());
    out.insert(out.end(), row, row + n);
  }
  return out;
}

std::string guidText(const unsigned char* p) {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                readLE<uint32_t>(p), readLE<uint16_t>(p + 4), readLE<uint16_t>(p + 6), p[8], p[9],
                p[10], p[11], p[12], p[13], p[14], p[15]);
  return text;
}

// Fixed byte size of a stored value, 0 for variable-length types.
size_t fixedSize(AccessType type) {
  switch (type) {
    case AccessType::Byte: return 1;
    case AccessType::Integer: return 2;
    case AccessType::LongInteger:
    case AccessType::Single:
    case AccessType::Complex: return 4;
    case AccessType::Currency:
    case AccessType::Double:
    case AccessType::DateTime: return 8;
    case AccessType::ReplicationId: return 16;
    case AccessType::Numeric: return 17;
    default: return 0;
  }
}

vb::Variant valueOf(MdbHandle* mdb, const JetColumn& column, const MdbField& field) {
  AccessType type = column.type;
  if (type == AccessType::Boolean) return vb::Variant(field.is_null == 0);  // kept in the null mask
  if (field.is_null) return vb::Variant::null();
  size_t length = field.siz > 0 ? static_cast<size_t>(field.siz) : 0;
  if (field.start < 0 || static_cast<size_t>(field.start) + length > static_cast<size_t>(mdb->fmt->pg_size))
    raiseProvider("A value of the column '" + column.name + "' lies outside its page: the file is damaged.");
  const unsigned char* p = mdb->pg_buf + field.start;
  if (length < fixedSize(type)) return vb::Variant::null();
  switch (type) {
    case AccessType::Byte: return vb::Variant(static_cast<int16_t>(p[0]));
    case AccessType::Integer: return vb::Variant(readLE<int16_t>(p));
    case AccessType::LongInteger:
    case AccessType::Complex: return vb::Variant(readLE<int32_t>(p));
    case AccessType::Currency: return vb::Variant(vb::Currency{readLE<int64_t>(p)});
    case AccessType::Single: return vb::Variant(readLE<float>(p));
    case AccessType::Double: return vb::Variant(readLE<double>(p));
    case AccessType::DateTime: return vb::Variant(accessDateToDateTime(readLE<double>(p)));
    case AccessType::Text: return vb::Variant(decodeText(mdb, p, length));
    case AccessType::Memo: {
      vb::Bytes raw = readLongValue(mdb, p, length);
      return vb::Variant(decodeText(mdb, raw.data(), raw.size()));
    }
    case AccessType::OleObject: return vb::Variant(readLongValue(mdb, p, length));
    case AccessType::ReplicationId: return vb::Variant(guidText(p));
    case AccessType::Numeric: {
      char* text = mdb_numeric_to_string(mdb, field.start, column.scale, column.precision);
      vb::Decimal value{text ? text : "0"};
      g_free(text);
      return vb::Variant(std::move(value));
    }
    default: return vb::Variant(vb::Bytes(p, p + length));  // Binary and unknown types
  }
}

// ---- Catalog ----------------------------------------------------------------------------

AccessType accessTypeOf(int stored) {
  switch (stored) {
    case MDB_BOOL: case MDB_BYTE: case MDB_INT: case MDB_LONGINT: case MDB_MONEY:
    case MDB_FLOAT: case MDB_DOUBLE: case MDB_DATETIME: case MDB_BINARY: case MDB_TEXT:
    case MDB_OLE: case MDB_MEMO: case MDB_REPID: case MDB_NUMERIC: case MDB_COMPLEX:
      return static_cast<AccessType>(stored);
    default: return AccessType::Unknown;
  }
}

bool startsWithMSys(const std::string& name) {
  return name.size() >= 4 && sameName(name.substr(0, 4), "MSys");
}

JetTableKind kindOf(const MdbCatalogEntry& entry) {
  uint32_t flags = static_cast<uint32_t>(entry.flags);
  if (flags & kSystemObject) return JetTableKind::SystemTable;
  if ((flags & kAccessObject) || startsWithMSys(entry.object_name)) return JetTableKind::AccessTable;
  return JetTableKind::Table;
}

MdbColumn* columnAt(MdbTableDef* table, unsigned i) {
  return static_cast<MdbColumn*>(g_ptr_array_index(table->columns, i));
}

JetColumn describeColumn(const MdbHandle* mdb, const MdbColumn& column) {
  JetColumn result;
  result.name = column.name;
  result.storedType = static_cast<uint8_t>(column.col_type);
  result.type = accessTypeOf(column.col_type);
  if (result.type == AccessType::Text)
    result.size = mdb->f->jet_version == MDB_VER_JET3 ? column.col_size : column.col_size / 2;
  else if (result.type == AccessType::Binary || result.type == AccessType::Unknown)
    result.size = column.col_size;
  if (result.type == AccessType::Numeric) {
    // A scale above the precision cannot be: the two bytes were read the other way round.
    int precision = column.col_prec, scale = column.col_scale;
    if (scale > precision) std::swap(precision, scale);
    result.precision = static_cast<uint8_t>(std::clamp(precision, 1, 28));
    result.scale = static_cast<uint8_t>(std::clamp(scale, 0, static_cast<int>(result.precision)));
  }
  result.autoNumber = column.is_long_auto || column.is_uuid_auto;
  return result;
}

// The primary-key index's columns, matched by the column numbers the index stores. libmdb's
// mdb_read_indices returns null also when it succeeds; a failed read leaves the table's index
// array missing or shorter than its count of indexes.
void readPrimaryKey(MdbTableDef* table, JetTable& out, const std::string& path) {
  if (table->num_idxs == 0) return;
  if (table->indices == nullptr || table->indices->len < table->num_idxs)
    raiseProvider("Cannot read the indexes of the table '" + out.name + "' of the Access file '" +
                  path + "': the file is damaged.");
  for (unsigned i = 0; i < table->num_idxs; ++i) {
    auto* index = static_cast<MdbIndex*>(g_ptr_array_index(table->indices, i));
    if (index == nullptr || index->index_type != 1) continue;
    out.primaryKeyName = index->name;
    for (unsigned k = 0; k < index->num_keys && k < MDB_MAX_IDX_COLS; ++k) {
      int number = index->key_col_num[k] - 1;
      const MdbColumn* found = nullptr;
      for (unsigned c = 0; c < table->num_cols && !found; ++c)
        if (columnAt(table, c)->col_num == number) found = columnAt(table, c);
      if (!found && number >= 0 && static_cast<unsigned>(number) < table->num_cols)
        found = columnAt(table, static_cast<unsigned>(number));
      if (found) out.primaryKey.emplace_back(found->name);
    }
    return;
  }
}

const MdbCatalogEntry* findEntry(MdbHandle* mdb, const std::string& name) {
  for (unsigned i = 0; i < mdb->num_catalog; ++i) {
    auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
    if (entry->object_type == MDB_TABLE && sameName(entry->object_name, name)) return entry;
  }
  return nullptr;
}

int columnIndex(const JetTable& table, const std::string& name) {
  for (size_t i = 0; i < table.columns.size(); ++i)
    if (sameName(table.columns[i].name, name)) return static_cast<int>(i);
  return -1;
}

}  // namespace

// ---- Shared helpers -----------------------------------------------------------------------

const char* tableTypeText(JetTableKind kind) {
  switch (kind) {
    case JetTableKind::SystemTable: return "SYSTEM TABLE";
    case JetTableKind::AccessTable: return "ACCESS TABLE";
    default: return "TABLE";
  }
}

bool sameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
    if (x != y) return false;
  }
  return true;
}

const JetTable* JetCatalog::findTable(const std::string& name) const {
  for (const auto& table : tables)
    if (sameName(table.name, name)) return &table;
  return nullptr;
}

vb::DateTime accessDateToDateTime(double value) {
  // Whole days count from 1899-12-30; the fraction's magnitude is the time of day, also for
  // days before it (-1.25 is 1899-12-29 06:00). Far past what Access stores (years 100..9999)
  // a value is damage, not a date.
  if (!std::isfinite(value) || std::fabs(value) > 1e11)
    raiseProvider("A date/time value of the Access file is out of range: the file is damaged.");
  double day = std::trunc(value);
  int64_t seconds = std::llround(std::fabs(value - day) * 86400.0);
  int64_t days = static_cast<int64_t>(day) + seconds / 86400;
  seconds %= 86400;
  // Days since 1970-01-01 to the civil date (proleptic Gregorian calendar).
  int64_t z = days - 25569 + 719468;
  int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  int64_t doe = z - era * 146097;
  int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  int64_t mp = (5 * doy + 2) / 153;
  int64_t d = doy - (153 * mp + 2) / 5 + 1;
  int64_t m = mp < 10 ? mp + 3 : mp - 9;
  vb::DateTime result;
  result.year = static_cast<int32_t>(yoe + era * 400 + (m <= 2 ? 1 : 0));
  result.month = static_cast<uint8_t>(m);
  result.day = static_cast<uint8_t>(d);
  result.hour = static_cast<uint8_t>(seconds / 3600);
  result.minute = static_cast<uint8_t>(seconds / 60 % 60);
  result.second = static_cast<uint8_t>(seconds % 60);
  result.kind = vb::DateTime::Kind::Timestamp;
  return result;
}

// ---- MdbFile ------------------------------------------------------------------------------

struct MdbFile::Impl {
  std::string path;
  std::unique_ptr<MdbHandle, MdbCloser> mdb;
};

MdbFile::MdbFile(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
MdbFile::~MdbFile() = default;

std::unique_ptr<MdbFile> MdbFile::open(const std::string& path, const std::string& databasePassword) {
  FileHeader header = readHeader(path);
  if (!header.password.empty() && header.password != databasePassword)
    raiseProvider("Not a valid password: the Access file '" + path +
                  "' is protected by a database password (Jet OLEDB:Database Password).");
  auto impl = std::make_unique<Impl>();
  impl->path = path;
  impl->mdb.reset(mdb_open(path.c_str(), MDB_NOFLAGS));  // MDB_NOFLAGS: opened read-only
  if (!impl->mdb) raiseProvider("Unrecognized database format '" + path + "'.");
  return std::unique_ptr<MdbFile>(new MdbFile(std::move(impl)));
}

const std::string& MdbFile::path() const { return impl_->path; }

std::string MdbFile::formatName() const {
  switch (impl_->mdb->f->jet_version) {
    case MDB_VER_JET3: return "JET3";
    case MDB_VER_JET4: return "JET4";
    case MDB_VER_ACCDB_2007: return "ACE12";
    case MDB_VER_ACCDB_2010: return "ACE14";
    case MDB_VER_ACCDB_2013: return "ACE15";
    case MDB_VER_ACCDB_2016: return "ACE16";
    default: return "ACE17";
  }
}

JetCatalog MdbFile::readCatalog() {
  MdbHandle* mdb = impl_->mdb.get();
  if (!mdb_read_catalog(mdb, MDB_ANY))
    raiseProvider("Cannot read the catalog of the Access file '" + impl_->path +
                  "': the file is damaged, encrypted or in a format this provider cannot read.");
  JetCatalog catalog;
  for (unsigned i = 0; i < mdb->num_catalog; ++i) {
    auto* entry = static_cast<MdbCatalogEntry*>(g_ptr_array_index(mdb->catalog, i));
    if (entry->object_type != MDB_TABLE) continue;
    TableDefPtr table(mdb_read_table(entry));
    if (!table || !mdb_read_columns(table.get()))
      raiseProvider("Cannot read the table '" + std::string(entry->object_name) +
                    "' of the Access file '" + impl_->path + "'.");
    if (table->columns == nullptr || table->columns->len < table->num_cols)
      raiseProvider("Cannot read the table '" + std::string(entry->object_name) +
                    "' of the Access file '" + impl_->path + "'.");
    mdb_read_indices(table.get());
    JetTable described;
    described.name = entry->object_name;
    described.kind = kindOf(*entry);
    for (unsigned c = 0; c < table->num_cols; ++c)
      described.columns.push_back(describeColumn(mdb, *columnAt(table.get(), c)));
    readPrimaryKey(table.get(), described, impl_->path);
    catalog.tables.push_back(std::move(described));
  }
  readObjectDates(catalog);
  readRelationships(catalog);
  return catalog;
}

void MdbFile::readObjectDates(JetCatalog& catalog) {
  const JetTable* objects = catalog.findTable("MSysObjects");
  if (!objects) return;
  int name = columnIndex(*objects, "Name"), type = columnIndex(*objects, "Type");
  int created = columnIndex(*objects, "DateCreate"), updated = columnIndex(*objects, "DateUpdate");
  if (name < 0 || type < 0 || created < 0 || updated < 0) return;
  readRows(*objects, [&](const std::vector<vb::Variant>& row) {
    if (row[type].isNull() || row[type].toInt32() != 1 || row[name].isNull()) return;
    for (auto& table : catalog.tables)
      if (sameName(table.name, row[name].asString())) {
        table.dateCreated = row[created];
        table.dateModified = row[updated];
      }
  });
}

void MdbFile::readRelationships(JetCatalog& catalog) {
  const JetTable* relationships = catalog.findTable("MSysRelationships");
  if (!relationships) return;
  const char* names[] = {"szRelationship", "grbit", "icolumn", "szObject", "szColumn",
                         "szReferencedObject", "szReferencedColumn"};
  int at[7];
  for (int i = 0; i < 7; ++i)
    if ((at[i] = columnIndex(*relationships, names[i])) < 0) return;
  struct Part { int32_t ordinal; std::string fk, pk; };
  std::vector<std::pair<JetRelationship, std::vector<Part>>> found;
  readRows(*relationships, [&](const std::vector<vb::Variant>& row) {
    for (int i : at)
      if (row[i].isNull()) return;
    int32_t grbit = row[at[1]].toInt32();
    if (grbit & kRelationNotEnforced) return;
    const std::string& name = row[at[0]].asString();
    auto it = std::find_if(found.begin(), found.end(),
                           [&](const auto& r) { return sameName(r.first.name, name); });
    if (it == found.end()) {
      JetRelationship relationship;
      relationship.name = name;
      relationship.fkTable = row[at[3]].asString();
      relationship.pkTable = row[at[5]].asString();
      relationship.cascadeUpdates = (grbit & kRelationCascadeUpdates) != 0;
      relationship.cascadeDeletes = (grbit & kRelationCascadeDeletes) != 0;
      found.emplace_back(std::move(relationship), std::vector<Part>{});
      it = std::prev(found.end());
    }
    it->second.push_back({row[at[2]].toInt32(), row[at[4]].asString(), row[at[6]].asString()});
  });
  for (auto& [relationship, parts] : found) {
    if (!catalog.findTable(relationship.fkTable) || !catalog.findTable(relationship.pkTable)) continue;
    std::sort(parts.begin(), parts.end(),
              [](const Part& a, const Part& b) { return a.ordinal < b.ordinal; });
    for (auto& part : parts) relationship.columns.emplace_back(part.fk, part.pk);
    catalog.relationships.push_back(std::move(relationship));
  }
}

void MdbFile::readRows(const JetTable& described,
                       const std::function<void(const std::vector<vb::Variant>&)>& onRow) {
  MdbHandle* mdb = impl_->mdb.get();
  const MdbCatalogEntry* entry = findEntry(mdb, described.name);
  if (!entry)
    raiseProvider("The Access file '" + impl_->path + "' has no table '" + described.name + "'.");
  TableDefPtr table(mdb_read_table(const_cast<MdbCatalogEntry*>(entry)));
  if (!table || !mdb_read_columns(table.get()) || table->num_cols > MDB_MAX_COLS ||
      table->num_cols != described.columns.size())
    raiseProvider("Cannot read the table '" + described.name + "' of the Access file '" +
                  impl_->path + "'.");
  std::vector<MdbField> fields(MDB_MAX_COLS);
  std::vector<vb::Variant> row(table->num_cols);
  mdb_rewind_table(table.get());
  while (mdb_fetch_row(table.get())) {
    int start = 0;
    size_t length = 0;
    if (mdb_find_row(mdb, static_cast<int>(table->cur_row) - 1, &start, &length) != 0) continue;
    if (mdb_crack_row(table.get(), start & kOffsetMask, length, fields.data()) < 0) continue;
    for (unsigned c = 0; c < table->num_cols; ++c)
      row[c] = valueOf(mdb, described.columns[c], fields[c]);
    onRow(row);
  }
}

}  // namespace varsentix::ado::detail
