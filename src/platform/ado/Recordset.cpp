#include "varsentix/platform/ado/Recordset.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/ado/RecordsetImpl.h"
#include "platform/ado/TypeInfo.h"
#include "platform/ado/XmlPersistence.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado {
namespace {

constexpr const char* kSource = "ADODB.Recordset";
constexpr int32_t kFileAlreadyExists = 58;

// "[T]" or "T" -> T ("]]" inside brackets stands for one ']').
std::string bareTableName(const std::string& source) {
  std::string name = vb::Trim(source);
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']') {
    std::string inner = name.substr(1, name.size() - 2), out;
    for (size_t i = 0; i < inner.size(); ++i) {
      out += inner[i];
      if (inner[i] == ']' && i + 1 < inner.size() && inner[i + 1] == ']') ++i;
    }
    return out;
  }
  return name;
}

std::string bracketed(const std::string& table) {
  std::string out = "[";
  for (char c : table) {
    out += c;
    if (c == ']') out += c;
  }
  return out + "]";
}

// The one column named name (in any ASCII letter case) that is its table's column of that name;
// -1 when there is none or more than one.
int32_t tableColumnNamed(const std::vector<detail::ColumnInfo>& columns, const std::string& name) {
  auto same = [](const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
             return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
  };
  int32_t found = -1;
  for (size_t i = 0; i < columns.size(); ++i) {
    if (!same(columns[i].name, name)) continue;
    if (found >= 0 || !same(columns[i].baseColumn, name)) return -1;
    found = static_cast<int32_t>(i);
  }
  return found;
}

// Unspecified command type: a single name (bare or bracketed) is a table, anything else SQL.
bool looksLikeTableName(const std::string& source) {
  std::string s = vb::Trim(source);
  if (s.empty()) return false;
  if (s.front() == '[' && s.back() == ']') return s.find(']') == s.size() - 1 || s.find("]]") != std::string::npos;
  for (char c : s)
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || static_cast<unsigned char>(c) >= 0x80))
      return false;
  std::string lower = vb::LCase(s);
  return lower != "select" && lower != "show" && lower != "values";
}

}  // namespace

// ---- Field / Fields -------------------------------------------------------------------------

std::string Field::Name() const { return owner_->impl().column(index_).name; }
DataTypeEnum Field::Type() const { return owner_->impl().column(index_).type; }
int32_t Field::DefinedSize() const { return owner_->impl().column(index_).definedSize; }
uint8_t Field::Precision() const { return owner_->impl().column(index_).precision; }
uint8_t Field::NumericScale() const { return owner_->impl().column(index_).numericScale; }
vb::Variant Field::Value() const { return owner_->impl().value(index_); }
vb::Variant Field::OriginalValue() const { return owner_->impl().originalValue(index_); }
void Field::setValue(const vb::Variant& value) { owner_->impl().setValue(index_, value); }

int32_t Field::ActualSize() const {
  auto& impl = owner_->impl();
  return detail::actualSizeOf(impl.column(index_).type, impl.value(index_));
}

int32_t Fields::Count() const { return owner_->impl().fieldCount(); }

Field Fields::Item(int32_t index) const {
  owner_->impl().column(index);  // 3265 for an index the record set does not have
  return Field(*owner_, index);
}

Field Fields::Item(const std::string& name) const {
  return Field(*owner_, owner_->impl().indexOf(name));
}

// ---- Recordset ------------------------------------------------------------------------------

Recordset::Recordset()
    : impl_(std::make_unique<detail::RecordsetImpl>()), fields_(std::make_unique<Fields>(*this)) {}
Recordset::~Recordset() = default;


CursorTypeEnum Recordset::CursorType() const { return impl_->cursorType; }
LockTypeEnum Recordset::LockType() const { return impl_->lockType; }
CursorLocationEnum Recordset::CursorLocation() const { return impl_->cursorLocation; }

void Recordset::setCursorType(CursorTypeEnum value) {
  if (impl_->isOpen()) vb::raiseError(vb::errnum::ObjectOpen);
  impl_->cursorType = value;
}
void Recordset::setLockType(LockTypeEnum value) {
  if (impl_->isOpen()) vb::raiseError(vb::errnum::ObjectOpen);
  impl_->lockType = value;
}
void Recordset::setCursorLocation(CursorLocationEnum value) {
  if (impl_->isOpen()) vb::raiseError(vb::errnum::ObjectOpen);
  impl_->cursorLocation = value;
}

void Recordset::Open(const std::string& source, const vb::Ref<Connection>& activeConnection,
                     CursorTypeEnum cursorType, LockTypeEnum lockType, int32_t options) {
  const bool deferFirst = std::exchange(impl_->deferFirstRow, false);  // this Open's alone
  const std::string instead = std::exchange(impl_->runInstead, std::string());
  const std::string rising = std::exchange(impl_->runInsteadRising, std::string());
  if (impl_->isOpen()) vb::raiseError(vb::errnum::ObjectOpen);
  if (cursorType != adOpenUnspecified) impl_->cursorType = cursorType;
  if (lockType != adLockUnspecified) impl_->lockType = lockType;
  std::shared_ptr<Connection> connection = activeConnection.shared();

  if (options == adCmdFile) {
    detail::PersistedRowset persisted = detail::readXmlRowset(source);
    if (impl_->cursorType == adOpenForwardOnly || impl_->cursorType == adOpenDynamic)
      impl_->cursorType = adOpenStatic;
    if (impl_->cursorLocation != adUseClient) impl_->cursorLocation = adUseClient;
    if (connection && connection->State() != adStateOpen) connection.reset();
    impl_->openInMemory(connection, source, std::move(persisted.columns),
                        std::move(persisted.rows), "");
    return;
  }
  if (!connection) vb::raiseError(vb::errnum::ArgumentsWrongType);
  if (connection->State() != adStateOpen) vb::raiseError(vb::errnum::ObjectClosed);
  if (impl_->cursorLocation == adUseClient) impl_->cursorType = adOpenStatic;  // as ADO does

  bool isTable = options == adCmdTable || options == adCmdTableDirect ||
                 ((options == adCmdUnspecified || options == adCmdUnknown) && looksLikeTableName(source));
  detail::ProviderSession& session = connection->session();
  if (isTable) {
    std::string table = bareTableName(source);
    auto cursor = session.openTable(table);
    auto reopen = [connection, table] { return connection->session().openTable(table); };
    impl_->openStreaming(connection, source, std::move(cursor), reopen,
                         "SELECT * FROM " + bracketed(table), table, deferFirst);
  } else {
    const std::string run = instead.empty() ? source : instead;
    auto cursor = deferFirst ? session.queryDeferred(run) : session.query(run);
    auto reopen = [connection, run] { return connection->session().query(run); };
    const int32_t risingColumn = instead.empty() || rising.empty() ? -1 : tableColumnNamed(cursor->columns(), rising);
    impl_->openStreaming(connection, source, std::move(cursor), reopen, run, "", deferFirst,
                         risingColumn);
  }
}

void Recordset::DeferFirstRow(bool defer) { impl_->deferFirstRow = defer; }

void Recordset::RunInstead(std::string statement, std::string risingField) {
  impl_->runInstead = std::move(statement);
  impl_->runInsteadRising = std::move(risingField);
}

RiseSeen Recordset::InsteadRise() const { return impl_->riseSeen(); }

void Recordset::PrefetchRemainingRows() { impl_->prefetchRemainingRows(); }
void Recordset::StopPrefetching() noexcept { impl_->stopPrefetching(); }

void Recordset::Close() { impl_->close(); }
ObjectStateEnum Recordset::State() const { return impl_->isOpen() ? adStateOpen : adStateClosed; }
std::string Recordset::Source() const { return impl_->source(); }
bool Recordset::isBOF() const { return impl_->isBOF(); }
bool Recordset::isEOF() const { return impl_->isEOF(); }
int32_t Recordset::RecordCount() { return impl_->recordCount(); }
void Recordset::MoveFirst() { impl_->moveFirst(); }
void Recordset::MoveNext() { impl_->moveNext(); }
void Recordset::MovePrevious() { impl_->movePrevious(); }
void Recordset::MoveLast() { impl_->moveLast(); }

Fields& Recordset::getFields() { return *fields_; }
Field Recordset::field(int32_t index) { return fields_->Item(index); }
Field Recordset::field(const std::string& name) { return fields_->Item(name); }
void Recordset::ValueInto(int32_t index, vb::Variant& out) { impl_->valueInto(index, out); }
void Recordset::ValuesInto(const std::vector<int32_t>& columns, const std::vector<size_t>& places,
                           std::vector<vb::Variant>& row) {
  impl_->valuesInto(columns, places, row);
}
std::span<const vb::Variant> Recordset::HeldRow() const { return impl_->heldRow(); }
void Recordset::ReplaceRemainingRows(std::vector<std::vector<vb::Variant>> rows) {
  impl_->replaceRemainingRows(std::move(rows));
}

void Recordset::AddNew() { impl_->addNew(); }
void Recordset::Update() { impl_->update(); }
void Recordset::CancelUpdate() { impl_->cancelUpdate(); }
EditModeEnum Recordset::EditMode() const { return impl_->editMode(); }

vb::Ref<Recordset> Recordset::Clone(LockTypeEnum lockType) {
  if (!impl_->isOpen()) vb::raiseError(vb::errnum::ObjectClosed);
  auto copy = vb::Ref<Recordset>::make();
  detail::RecordsetImpl& target = copy->impl();
  target.cursorType = adOpenStatic;
  target.cursorLocation = impl_->cursorLocation;
  target.lockType = lockType == adLockUnspecified ? impl_->lockType : lockType;
  target.openInMemory(impl_->connection(), impl_->source(), impl_->columns(), impl_->allRows(),
                      impl_->baseTable());
  return copy;
}

void Recordset::Save(const std::string& destination, PersistFormatEnum format) {
  if (!impl_->isOpen()) vb::raiseError(vb::errnum::ObjectClosed);
  if (format != adPersistXML)
    vb::raiseError(vb::errnum::NotSupported,
                   "Only the XML persistence format (adPersistXML) is supported.", kSource);
  std::error_code ec;
  if (std::filesystem::exists(destination, ec))
    vb::raiseError(kFileAlreadyExists, "File already exists", kSource);
  // Written to a temporary file beside the destination, then linked into place: link() fails
  // when the destination has appeared meanwhile, so an existing file is never overwritten and
  // a failed save leaves no partial file.
  std::string temporary = destination + ".XXXXXX";
  int fd = mkstemp(temporary.data());
  if (fd < 0)
    vb::raiseError(vb::errnum::PathFileAccessError,
                   "Path/File access error: cannot write " + destination + ": " + std::strerror(errno),
                   kSource);
  std::FILE* out = fdopen(fd, "wb");
  try {
    bool updatable = impl_->lockType != adLockReadOnly && impl_->lockType != adLockUnspecified;
    detail::XmlRowsetWriter writer(out, impl_->columns(), updatable, impl_->keyColumns());
    impl_->forEachRow([&](const detail::Row& row) { writer.writeRow(row); });
    writer.finish();
  } catch (...) {
    std::fclose(out);
    unlink(temporary.c_str());
    throw;
  }
  bool flushed = std::fclose(out) == 0;
  int linked = flushed ? link(temporary.c_str(), destination.c_str()) : -1;
  int linkError = errno;
  unlink(temporary.c_str());
  if (linked != 0) {
    if (flushed && linkError == EEXIST)
      vb::raiseError(kFileAlreadyExists, "File already exists", kSource);
    vb::raiseError(vb::errnum::PathFileAccessError,
                   "Path/File access error: cannot write " + destination, kSource);
  }
  if (!impl_->isBOF() || !impl_->isEOF()) {
    if (impl_->editMode() == adEditNone) impl_->moveFirst();  // ADO leaves the first row current
  }
}

}  // namespace varsentix::ado
