#pragma once
// ADO Recordset, Fields and Field. A record set streams its rows from the provider and holds
// one row at a time (plus what the driver buffers); a record set read from a persisted file or
// made by Clone holds its rows in memory.
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "varsentix/platform/ado/Enums.h"
#include "varsentix/platform/vb/Ref.h"
#include "varsentix/platform/vb/Variant.h"

namespace varsentix::ado {

class Connection;
class Recordset;

namespace detail {
class RecordsetImpl;
}

// One column of the current record. A light view: it reads through its record set.
class Field {
 public:
  Field(Recordset& owner, int32_t index) : owner_(&owner), index_(index) {}

  std::string Name() const;
  DataTypeEnum Type() const;
  int32_t DefinedSize() const;
  // Length of the current value: bytes for text and binary, the fixed size for other types,
  // 0 for Null. Raises 3021 with no current record.
  int32_t ActualSize() const;
  uint8_t Precision() const;
  uint8_t NumericScale() const;
  // The value of the current record. Raises 3021 when isBOF() or isEOF() is true.
  vb::Variant Value() const;
  // Assigns the value in the edit buffer (after AddNew, or starting an edit of the current row).
  void setValue(const vb::Variant& value);
  // The value as read from the database, before any assignment.
  vb::Variant OriginalValue() const;

 private:
  Recordset* owner_;
  int32_t index_;
};

class Fields {
 public:
  explicit Fields(Recordset& owner) : owner_(&owner) {}
  int32_t Count() const;
  // 0-based. Raises 3265 for an index or a name the record set does not have.
  Field Item(int32_t index) const;
  Field Item(const std::string& name) const;
  Field operator[](int32_t index) const { return Item(index); }
  Field operator[](const std::string& name) const { return Item(name); }

 private:
  Recordset* owner_;
};

class Recordset : public std::enable_shared_from_this<Recordset> {
 public:
  Recordset();
  ~Recordset();
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;

  // Cursor settings; they may be changed while the record set is closed (3705 when open).
  CursorTypeEnum CursorType() const;
  void setCursorType(CursorTypeEnum value);
  LockTypeEnum LockType() const;
  void setLockType(LockTypeEnum value);
  CursorLocationEnum CursorLocation() const;
  void setCursorLocation(CursorLocationEnum value);

  // Opens SQL text (adCmdText), a table by name (adCmdTable; "[T]" or "T") or a persisted file
  // (adCmdFile; the connection may be Nothing). Unspecified cursor and lock types keep the
  // properties' values. Raises 3705 when already open, the provider's error on failure.
  void Open(const std::string& source, const vb::Ref<Connection>& activeConnection,
            CursorTypeEnum cursorType = adOpenUnspecified,
            LockTypeEnum lockType = adLockUnspecified, int32_t options = adCmdUnspecified);
  // Raises 3704 when closed. A pending AddNew or edit is cancelled.
  void Close();
  ObjectStateEnum State() const;
  std::string Source() const;

  // ADO's BOF and EOF (EOF is a C macro, hence the names).
  bool isBOF() const;
  bool isEOF() const;
  // The number of records: computed on demand for client-side, static and keyset cursors;
  // -1 for forward-only and server-side dynamic cursors, as ADO reports it.
  int32_t RecordCount();

  void MoveFirst();
  void MoveNext();      // raises 3021 at EOF
  void MovePrevious();  // raises 3021 at BOF
  void MoveLast();

  Fields& getFields();
  // rs.Fields(i) and rs.Fields("name"): field(i), field("name").
  Field field(int32_t index);
  Field field(const std::string& name);
  // field(index).Value() read into out: out's room (its text) is reused where the provider can,
  // so a walk that reads the same columns row after row does not allocate for them.
  void ValueInto(int32_t index, vb::Variant& out);
  // ValueInto(columns[i], row[places[i]]) for every i (row holds every place): a walk that reads
  // the same fields of every record reads them in one call.
  void ValuesInto(const std::vector<int32_t>& columns, const std::vector<size_t>& places,
                  std::vector<vb::Variant>& row);
  // The current record's values, one per field in order, when the record set holds the whole row
  // already (its rows read ahead, or kept in memory): read in place, without a copy each. They
  // stay as they are through the record set's next move (one that fails, or goes past the last
  // record, too): a walk may still read the record it has just left. Not past a second move, a
  // close, or an edit of the record. Empty when the values would be asked of the provider one by
  // one, or there is no current record: use ValueInto.
  std::span<const vb::Variant> HeldRow() const;
  // For a forward-only walk that already holds the rest of its rows, each as field(i).Value()
  // gives it: the record set goes on through those instead of the provider's, from the first of
  // them (at its end when there are none). The provider's cursor is let go. Moving back runs
  // the statement again. Raises 3704 when closed, 3251 for rows held in memory.
  void ReplaceRemainingRows(std::vector<std::vector<vb::Variant>> rows);
  // For a walk that may never read the statement it opens: the next Open of a statement
  // prepares it (its fields are known) and reads its first row when the record set is first
  // used (BOF, EOF, a value, a move), not at once; a statement that sorts a table sorts it then.
  // A failure of that first read is raised by that use. Closing it, or ReplaceRemainingRows,
  // before any use reads nothing. DeferFirstRow(false) takes it back before the Open.
  void DeferFirstRow(bool defer = true);
  // For a walk that trusts another statement to return the very rows of the one it opens, in
  // the same order, at less cost: the next Open of a statement runs statement in its place, then
  // and whenever it runs again; Source() is still the statement opened. risingField: the order
  // is that field's, and the statement is trusted to give its values stored as integers, each
  // greater than the one before; the record set watches that as it reads (InsteadRise).
  // RunInstead("") takes it back before the Open.
  void RunInstead(std::string statement, std::string risingField = "");
  // What the rows read so far of the statement run in place showed of risingField's rise (Broken
  // when it was not watched, or the provider cannot watch). May be asked from another thread
  // than the one reading.
  RiseSeen InsteadRise() const;
  // For a forward-only walk: the rows after the current one are read on a thread of their own,
  // some ahead of the walk, which meanwhile must not use the record set's connection (nor may
  // anyone else). The record set is as before otherwise; moving back runs the statement again,
  // without the thread. Nothing for rows held in memory or a statement read to its end.
  void PrefetchRemainingRows();
  // Ends that thread: the rows it read are still gone through in turn, the others read in step;
  // the connection is free for others again. Nothing when there is no such thread.
  void StopPrefetching() noexcept;

  // Starts a new row in the edit buffer; Update inserts it.
  void AddNew();
  // Writes the edit buffer: an INSERT after AddNew, an UPDATE of the current row after field
  // assignments. Runs in a transaction; an UPDATE locates its row by primary key, else by all
  // original values, and must touch exactly one row or it is rolled back and raises an error.
  // A read-only lock or provider raises an error and changes nothing.
  void Update();
  void CancelUpdate();
  EditModeEnum EditMode() const;

  // An independent record set holding a copy of this one's rows, positioned on its first row.
  vb::Ref<Recordset> Clone(LockTypeEnum lockType = adLockUnspecified);
  // Writes every row in the ADO XML persistence format. Raises an error, and leaves the file
  // untouched, when the file already exists.
  void Save(const std::string& destination, PersistFormatEnum format = adPersistXML);

  // For the record-set layer's own use.
  detail::RecordsetImpl& impl() { return *impl_; }

 private:
  std::unique_ptr<detail::RecordsetImpl> impl_;
  std::unique_ptr<Fields> fields_;
};

}  // namespace varsentix::ado
