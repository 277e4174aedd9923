// The SQLite provider: opening files, its errors, its schema rowsets, the sample database and
// the extension points other providers build on.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <span>

#include "AdoTestSupport.h"
#include "platform/ado/providers/sqlite/SqliteSession.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using namespace varsentix::testing;

namespace {

std::string emptyDatabase(const TempDir& dir, const std::string& name = "db.sqlite") {
  std::string path = dir.file(name);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_exec(db, "CREATE TABLE seeded (id INTEGER PRIMARY KEY AUTOINCREMENT, v TEXT)", nullptr, nullptr, nullptr);
  sqlite3_exec(db, "INSERT INTO seeded (v) VALUES ('x')", nullptr, nullptr, nullptr);
  sqlite3_close(db);
  return path;
}

}  // namespace

TEST(SqliteProvider, AMissingFileIsReportedAndNotCreated) {
  TempDir dir;
  std::string path = dir.file("missing.sqlite");
  auto cn = vb::Ref<Connection>::make();
  auto e = expectVBError([&] { cn->Open("Provider=SQLite;Data Source=" + path); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_NE(e.description().find(path), std::string::npos) << e.description();
  EXPECT_NE(e.description().find("does not exist"), std::string::npos) << e.description();
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(cn->State(), adStateClosed);
}

TEST(SqliteProvider, AFileThatIsNoDatabaseGivesTheEnginesError) {
  TempDir dir;
  std::string path = dir.file("text.sqlite");
  std::ofstream(path) << "this is plain text, long enough to fill a database header of one hundred bytes......";
  auto cn = vb::Ref<Connection>::make();
  auto e = expectVBError([&] { cn->Open("Provider=SQLite;Data Source=" + path); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_EQ(e.description(), "file is not a database");
  EXPECT_EQ(e.nativeError(), SQLITE_NOTADB);
  EXPECT_EQ(cn->State(), adStateClosed);
}

TEST(SqliteProvider, AConnectionStringWithoutProviderOpensSqliteAndUnknownProvidersAreRefused) {
  TempDir dir;
  std::string path = emptyDatabase(dir);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Data Source=" + path);
  EXPECT_EQ(cn->Provider(), "SQLite");
  cn->Close();
  cn->Open("provider=sqlite;data source='" + path + "'");
  EXPECT_EQ(cn->State(), adStateOpen);
  auto other = vb::Ref<Connection>::make();
  EXPECT_EQ(expectVBError([&] { other->Open("Provider=NoSuchProvider;Data Source=x"); }).number(),
            vb::errnum::ProviderNotFound);
}

TEST(SqliteProvider, InternalTablesAreSystemTables) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  std::map<std::string, std::string> types;
  auto rs = cn->OpenSchema(adSchemaTables);
  for (; !rs->isEOF(); rs->MoveNext())
    types[rs->field("TABLE_NAME").Value().toText()] = rs->field("TABLE_TYPE").Value().toText();
  EXPECT_EQ(types["seeded"], "TABLE");
  EXPECT_EQ(types["sqlite_sequence"], "SYSTEM TABLE");
  EXPECT_EQ(types["sqlite_master"], "SYSTEM TABLE");
  auto system = cn->OpenSchema(adSchemaTables, {vb::Variant(), vb::Variant(), vb::Variant(), "SYSTEM TABLE"});
  EXPECT_EQ(system->RecordCount(), 2);
}

TEST(SqliteProvider, ErrorsKeepTheEnginesTextAndExtendedCode) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  auto e = expectVBError([&] { cn->Execute("INSERT INTO [seeded] ([id], [v]) VALUES (1, 'dup')"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderIntegrityViolation);
  EXPECT_EQ(e.description(), "UNIQUE constraint failed: seeded.id");
  EXPECT_EQ(e.sqlState(), "23000");
  EXPECT_EQ(e.nativeError(), SQLITE_CONSTRAINT_PRIMARYKEY);
  e = expectVBError([&] { cn->Execute("select * from [nope]"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderNoSuchTable);
  EXPECT_EQ(e.description(), "no such table: nope");
  e = expectVBError([&] { cn->Execute("selekt 1"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError);
  EXPECT_NE(e.description().find("syntax error"), std::string::npos);
}

TEST(SqliteProvider, ComputedColumnsTakeTheTypeOfTheirValues) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  auto rs = cn->Execute("select count(*) as n, 1.5 as f, 'x' as s, x'00' as b, null as z from [seeded]");
  EXPECT_EQ(rs->field("n").Type(), adBigInt);
  EXPECT_EQ(rs->field("n").Value().toText(), "1");
  EXPECT_EQ(rs->field("f").Type(), adDouble);
  EXPECT_EQ(rs->field("s").Type(), adVarWChar);
  EXPECT_EQ(rs->field("b").Type(), adLongVarBinary);
  EXPECT_EQ(rs->field("z").Type(), adVarWChar);
  EXPECT_EQ(rs->CursorType(), adOpenForwardOnly);
  EXPECT_EQ(rs->RecordCount(), -1);
}

TEST(SqliteProvider, ChinookIsOpenedAndWalked) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + copyOfChinook(dir));
  std::set<std::string> tables;
  auto schema = cn->OpenSchema(adSchemaTables, {vb::Variant(), vb::Variant(), vb::Variant(), "TABLE"});
  for (; !schema->isEOF(); schema->MoveNext()) tables.insert(schema->field("TABLE_NAME").Value().toText());
  EXPECT_EQ(tables, (std::set<std::string>{"Album", "Artist", "Customer", "Employee", "Genre", "Invoice",
                                           "InvoiceLine", "MediaType", "Playlist", "PlaylistTrack", "Track"}));

  auto track = vb::Ref<Recordset>::make();
  track->setCursorLocation(adUseClient);
  track->Open("select * from [Track] order by [TrackId]", cn, adOpenDynamic, adLockOptimistic, adCmdText);
  EXPECT_EQ(track->RecordCount(), 3503);
  EXPECT_EQ(track->field("TrackId").Type(), adInteger);
  EXPECT_EQ(track->field("Name").Type(), adVarWChar);
  EXPECT_EQ(track->field("Name").DefinedSize(), 200);
  EXPECT_EQ(track->field("UnitPrice").Type(), adNumeric);
  EXPECT_EQ(track->field("UnitPrice").Value().toText(), "0.99");
  EXPECT_EQ(track->field("Name").Value().toText(), "For Those About To Rock (We Salute You)");
  int rows = 0;
  int64_t milliseconds = 0;
  for (; !track->isEOF(); track->MoveNext()) {
    ++rows;
    milliseconds += track->field("Milliseconds").Value().toInt64();
    for (int32_t i = 0; i < track->getFields().Count(); ++i) track->field(i).Value();
  }
  EXPECT_EQ(rows, 3503);
  EXPECT_GT(milliseconds, 0);

  auto invoice = vb::Ref<Recordset>::make();
  invoice->Open("[Invoice]", cn, adOpenStatic, adLockReadOnly, adCmdTable);
  EXPECT_EQ(invoice->field("InvoiceDate").Type(), adDBTimeStamp);
  EXPECT_EQ(invoice->field("InvoiceDate").Value().toText(), "2021-01-01 00:00:00");

  auto pk = cn->OpenSchema(adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "PlaylistTrack"});
  ASSERT_EQ(pk->RecordCount(), 2);
  EXPECT_EQ(pk->field("COLUMN_NAME").Value().toText(), "PlaylistId");
  auto fk = cn->OpenSchema(adSchemaForeignKeys, {vb::Variant(), vb::Variant(), "Artist"});
  ASSERT_FALSE(fk->isEOF());
  EXPECT_EQ(fk->field("FK_TABLE_NAME").Value().toText(), "Album");
  EXPECT_EQ(fk->field("FK_COLUMN_NAME").Value().toText(), "ArtistId");
  EXPECT_EQ(fk->field("PK_COLUMN_NAME").Value().toText(), "ArtistId");
}

TEST(SqliteProvider, AnUpdateOnChinookIsWrittenAndReadBack) {
  TempDir dir;
  std::string path = copyOfChinook(dir);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("Select * from [Artist] Where ArtistId = 1", cn, adOpenDynamic, adLockOptimistic, adCmdText);
  rs->field("Name").setValue("AC/DC'");
  rs->Update();
  rs->Close();
  auto check = cn->Execute("select [Name] from [Artist] where [ArtistId] = 1");
  EXPECT_EQ(check->field(0).Value().toText(), "AC/DC'");
}

namespace {

// A provider built on the SQLite session, as the Access provider is: its own name, its own
// table types, no writes.
class ReadOnlyTestSession : public ado::detail::SqliteSession {
 public:
  explicit ReadOnlyTestSession(sqlite3* db)
      : SqliteSession(db, true, Options{"Test.Provider", {0, 0, true}}) {}

 protected:
  std::string tableType(const std::string& name, bool isView) const override {
    if (name.rfind("MSys", 0) == 0) return "ACCESS TABLE";
    return SqliteSession::tableType(name, isView);
  }
  void checkWritable() const override {
    throw vb::VBError(vb::errnum::ProviderReadOnly, "Test files are read-only here.", "Test.Provider");
  }
};

}  // namespace

TEST(SqliteProvider, ASessionWrappingAnOpenDatabaseCanChangeNamesTypesAndRefuseWrites) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(":memory:", &db), SQLITE_OK);
  sqlite3_exec(db, "CREATE TABLE MSysObjects (id INTEGER); CREATE TABLE Orders (d DATETIME);"
                   "INSERT INTO Orders VALUES ('1996-07-04 00:00:00')", nullptr, nullptr, nullptr);
  ReadOnlyTestSession session(db);
  EXPECT_EQ(session.providerName(), "Test.Provider");
  auto tables = session.openSchema(adSchemaTables, {});
  std::map<std::string, std::string> types;
  std::vector<vb::Variant> row;
  while (tables->fetch(row)) types[row[2].toText()] = row[3].toText();
  EXPECT_EQ(types["MSysObjects"], "ACCESS TABLE");
  EXPECT_EQ(types["Orders"], "TABLE");
  auto dated = session.query("select * from [Orders] where [d] = #7/4/1996 12:00:00 AM#");
  EXPECT_TRUE(dated->fetch(row));
  auto e = expectVBError([&] { session.execute("DELETE FROM [Orders]"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderReadOnly);
  e = expectVBError([&] { session.beginTransaction(); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderReadOnly);
  auto still = session.query("select count(*) from [Orders]");
  ASSERT_TRUE(still->fetch(row));
  EXPECT_EQ(row[0].toInt64(), 1);
}

TEST(SqliteProvider, AnInsertNamingItsTableAsALiteralRuns) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  int32_t affected = 0;
  cn->Execute("insert into 'seeded'(id,v)VALUES (7,'O''Brien [x]')", &affected);
  EXPECT_EQ(affected, 1);
  auto rs = cn->Execute("Select * from [seeded] Where id = 7 AND v LIKE 'O''Brien [x]'");
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("v").Value().toText(), "O'Brien [x]");
}

TEST(SqliteProvider, ExecuteWithoutRecordsReturnsAClosedRecordSet) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  auto rs = cn->Execute("select * from [seeded]", nullptr, adExecuteNoRecords);
  EXPECT_EQ(rs->State(), adStateClosed);
  auto none = vb::Ref<Recordset>::make();
  EXPECT_EQ(expectVBError([&] { none->Open("select 1", vb::Ref<Connection>()); }).number(),
            vb::errnum::ArgumentsWrongType);
}

TEST(SqliteProvider, ATableOpenedByNameIsUpdatableWithoutAKey) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  cn->Execute("CREATE TABLE [no key] ([a] INTEGER, [b] TEXT)");
  cn->Execute("INSERT INTO [no key] VALUES (1, NULL)");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("no key", cn, adOpenDynamic, adLockOptimistic, adCmdTable);
  rs->field("b").setValue("set");
  rs->Update();
  auto check = cn->Execute("select [b] from [no key]");
  EXPECT_EQ(check->field(0).Value().toText(), "set");
}

namespace {

void execOn(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
  char* error = nullptr;
  const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error);
  const std::string message = error ? error : "";
  sqlite3_free(error);
  sqlite3_close(db);
  ASSERT_EQ(rc, SQLITE_OK) << message;
}

// "table.column" per row of a primary-key rowset, in the rowset's order.
std::vector<std::string> keyColumns(Connection& cn, const vb::Variant& table) {
  std::vector<std::string> columns;
  auto rowset = cn.OpenSchema(adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), table});
  for (; !rowset->isEOF(); rowset->MoveNext())
    columns.push_back(rowset->field("TABLE_NAME").Value().toText() + "." +
                      rowset->field("COLUMN_NAME").Value().toText());
  return columns;
}

// "fkTable.fkColumn>pkTable.pkColumn" per row of a foreign-key rowset, in the rowset's order.
std::vector<std::string> foreignKeys(Connection& cn, const vb::Variant& pkTable) {
  std::vector<std::string> keys;
  auto rowset = cn.OpenSchema(adSchemaForeignKeys, {vb::Variant(), vb::Variant(), pkTable});
  for (; !rowset->isEOF(); rowset->MoveNext())
    keys.push_back(rowset->field("FK_TABLE_NAME").Value().toText() + "." +
                   rowset->field("FK_COLUMN_NAME").Value().toText() + ">" +
                   rowset->field("PK_TABLE_NAME").Value().toText() + "." +
                   rowset->field("PK_COLUMN_NAME").Value().toText());
  return keys;
}

}  // namespace

TEST(SqliteProvider, KeyRowsetsFindTablesByNameInAnyLetterCase) {
  TempDir dir;
  const std::string path = emptyDatabase(dir);
  execOn(path,
         "CREATE TABLE Orders (b INTEGER, a INTEGER, note TEXT, PRIMARY KEY (a, b));"
         "CREATE TABLE \"Käse\" (k TEXT PRIMARY KEY);"
         "CREATE TABLE \"\" (e INTEGER PRIMARY KEY);"
         "CREATE TABLE plain (x INTEGER);"
         "CREATE VIEW v AS SELECT * FROM Orders;");
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  EXPECT_EQ(keyColumns(*cn, "ORDERS"), (std::vector<std::string>{"Orders.a", "Orders.b"}));
  EXPECT_EQ(keyColumns(*cn, "orders"), (std::vector<std::string>{"Orders.a", "Orders.b"}));
  EXPECT_EQ(keyColumns(*cn, "Käse"), (std::vector<std::string>{"Käse.k"}));
  EXPECT_TRUE(keyColumns(*cn, "plain").empty());
  EXPECT_TRUE(keyColumns(*cn, "v").empty());
  EXPECT_TRUE(keyColumns(*cn, "missing").empty());
  // Without a restriction: every table with a key, in the table list's order.
  EXPECT_EQ(keyColumns(*cn, vb::Variant()),
            (std::vector<std::string>{".e", "Käse.k", "Orders.a", "Orders.b", "seeded.id"}));
}

TEST(SqliteProvider, KeyRowsetsSeeWhatAnotherConnectionChanges) {
  TempDir dir;
  const std::string path = emptyDatabase(dir);
  execOn(path, "CREATE TABLE parent (id INTEGER);");
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  EXPECT_TRUE(keyColumns(*cn, "parent").empty());
  EXPECT_TRUE(foreignKeys(*cn, "parent").empty());

  execOn(path,
         "DROP TABLE parent;"
         "CREATE TABLE parent (id INTEGER PRIMARY KEY, code TEXT, UNIQUE (id, code));"
         "CREATE TABLE child (pid INTEGER REFERENCES parent, pcode TEXT,"
         "  FOREIGN KEY (pid, pcode) REFERENCES parent (id, code));"
         "CREATE TABLE another (p INTEGER REFERENCES parent (id));");
  EXPECT_EQ(keyColumns(*cn, "PARENT"), (std::vector<std::string>{"parent.id"}));
  // Tables in the list's order; per table, each key's columns in order.
  EXPECT_EQ(foreignKeys(*cn, "parent"),
            (std::vector<std::string>{"another.p>parent.id", "child.pid>parent.id", "child.pcode>parent.code",
                                      "child.pid>parent.id"}));

  execOn(path, "DROP TABLE another;");
  EXPECT_EQ(foreignKeys(*cn, "parent"),
            (std::vector<std::string>{"child.pid>parent.id", "child.pcode>parent.code", "child.pid>parent.id"}));
}

TEST(SqliteProvider, AnOpenWhoseFirstRowIsDeferredReadsItOnFirstUseAndNotAtAllWhenClosedFirst) {
  TempDir dir;
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + emptyDatabase(dir));
  // A statement of a table's column that prepares and fails at its first step.
  const std::string failing = "select v as x from seeded where abs(-9223372036854775807 - 1) > 0";
  auto rs = vb::Ref<Recordset>::make();
  EXPECT_EQ(expectVBError([&] { rs->Open(failing, cn, adOpenForwardOnly, adLockReadOnly, adCmdText); }).description(),
            "integer overflow");
  EXPECT_EQ(rs->State(), adStateClosed);

  rs->DeferFirstRow();
  rs->Open(failing, cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->State(), adStateOpen);
  EXPECT_EQ(rs->getFields().Count(), 1);  // its fields are known
  EXPECT_EQ(rs->field(0).Name(), "x");
  rs->Close();  // nothing read, nothing raised

  rs->DeferFirstRow();
  rs->Open(failing, cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(expectVBError([&] { (void)rs->isEOF(); }).description(), "integer overflow");
  rs->Close();

  // Rows put in place of the statement's before it is read: the statement is not read.
  rs->DeferFirstRow();
  rs->Open(failing, cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  rs->ReplaceRemainingRows({{vb::Variant(std::string("seven"))}});
  EXPECT_FALSE(rs->isBOF());
  EXPECT_EQ(rs->field(0).Value().toText(), "seven");
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
  rs->Close();

  // The deferral is the next Open's alone.
  EXPECT_THROW(rs->Open(failing, cn, adOpenForwardOnly, adLockReadOnly, adCmdText), vb::VBError);
  rs->DeferFirstRow();
  rs->Open("select v from seeded", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_FALSE(rs->isBOF());
  EXPECT_EQ(rs->field(0).Value().toText(), "x");
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
}

namespace {

// A database with a table k (n INTEGER, v TEXT) without an index, filled with the statements
// given, in their order.
vb::Ref<Connection> tableWithoutIndex(const TempDir& dir, const std::string& inserts,
                                      const std::string& extra = "") {
  const std::string path = dir.file("order.sqlite");
  std::filesystem::remove(path);
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  const std::string script = "CREATE TABLE k (n INTEGER, v TEXT);" + inserts + extra;
  EXPECT_EQ(sqlite3_exec(db, script.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
  sqlite3_close(db);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  return cn;
}

// What the record set saw of n's rise, reading "select <fields> from [k]" in place of the same
// ordered by [n], to its end.
RiseSeen riseToTheEnd(const vb::Ref<Connection>& cn, const std::string& fields = "*",
                      const std::string& rising = "n") {
  const std::string unordered = "select " + fields + " from [k]";
  auto rs = vb::Ref<Recordset>::make();
  rs->RunInstead(unordered, rising);
  rs->Open(unordered + " order by [n]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  while (!rs->isEOF()) rs->MoveNext();
  return rs->InsteadRise();
}

}  // namespace

TEST(SqliteProvider, TheEnginesPlanTellsWhetherAnOrderCostsASort) {
  TempDir dir;
  auto cn = tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a');");
  EXPECT_TRUE(cn->SortsForOrder("select * from [k] order by [n]"));
  EXPECT_FALSE(cn->SortsForOrder("select * from [k]"));
  EXPECT_FALSE(cn->SortsForOrder("select * from [k] order by [rowid]"));
  // A question, not an error: a statement that fails is no sort.
  EXPECT_FALSE(cn->SortsForOrder("select * from [gone] order by [n]"));
  cn->Execute("CREATE INDEX kn ON k (n)");
  EXPECT_FALSE(cn->SortsForOrder("select * from [k] order by [n]"));
  cn->Close();
  EXPECT_FALSE(cn->SortsForOrder("select * from [k] order by [n]"));
}

TEST(SqliteProvider, TextColumnsUnderBinaryCollationCompareByTheirBytes) {
  TempDir dir;
  auto cn = tableWithoutIndex(dir, "",
                              "CREATE TABLE t (a TEXT, b VARCHAR(20), c NVARCHAR(9) COLLATE NOCASE, d TEXT COLLATE RTRIM, "
                              "e CLOB, f STRING, g INTEGER, h, i CHARINT, j TEXT COLLATE binary);");
  EXPECT_EQ(cn->TextComparedByBytes("t", "a"), TextBytes::EqualityAndOrder);
  EXPECT_EQ(cn->TextComparedByBytes("t", "b"), TextBytes::EqualityAndOrder);
  EXPECT_EQ(cn->TextComparedByBytes("T", "B"), TextBytes::EqualityAndOrder);  // names as SQLite finds them, without case
  EXPECT_EQ(cn->TextComparedByBytes("t", "e"), TextBytes::EqualityAndOrder);
  EXPECT_EQ(cn->TextComparedByBytes("t", "j"), TextBytes::EqualityAndOrder);
  EXPECT_EQ(cn->TextComparedByBytes("k", "v"), TextBytes::EqualityAndOrder);
  // Other collations fold case or trailing blanks.
  EXPECT_EQ(cn->TextComparedByBytes("t", "c"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("t", "d"), TextBytes::Unknown);
  // Other affinities read a literal that looks like a number as one.
  EXPECT_EQ(cn->TextComparedByBytes("t", "f"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("t", "g"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("t", "h"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("t", "i"), TextBytes::Unknown);
  // A question, not an error.
  EXPECT_EQ(cn->TextComparedByBytes("t", "gone"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("gone", "a"), TextBytes::Unknown);
  EXPECT_EQ(cn->TextComparedByBytes("t'; drop table t; --", "a"), TextBytes::Unknown);
  // A temporary table hides the file's table of the same name, as it does from a statement.
  cn->Execute("CREATE TEMP TABLE t (a TEXT COLLATE NOCASE)");
  EXPECT_EQ(cn->TextComparedByBytes("t", "a"), TextBytes::Unknown);
  cn->Close();
  EXPECT_EQ(cn->TextComparedByBytes("k", "v"), TextBytes::Unknown);
}

TEST(SqliteProvider, AUtf16DatabaseDoesNotCompareTextsByTheirUtf8Bytes) {
  TempDir dir;
  const std::string path = dir.file("utf16.sqlite");
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  ASSERT_EQ(sqlite3_exec(db, "PRAGMA encoding = 'UTF-16le'; CREATE TABLE t (a TEXT);", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(db);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  EXPECT_EQ(cn->TextComparedByBytes("t", "a"), TextBytes::Unknown);
}

TEST(SqliteProvider, ARecordSetReadingAnotherStatementWatchesItsKeyRise) {
  TempDir dir;
  const std::string rising = "INSERT INTO k VALUES (-5, 'a'), (0, 'b'), (7, 'c'), (9000000000, 'd');";
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, rising)), RiseSeen::Held);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, rising), "[v], [N]", "N"), RiseSeen::Held);  // any letter case
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "")), RiseSeen::Held);  // no records at all

  // Not where the table breaks the order, nor where the key's values are not all integers.
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (3, 'b'), (2, 'c');")), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (1, 'b'), (2, 'c');")), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (NULL, 'b'), (2, 'c');")), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (NULL, 'a'), (1, 'b');")), RiseSeen::Broken);
  // 1.5 reads as an integer column's 1 to the record set, and sorts between 1 and 2 all the same.
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (1.5, 'b'), (2, 'c');")), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), ('2x', 'b');")), RiseSeen::Broken);
  // Not where the statement does not read the field, or reads it twice, or under another name.
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, rising), "[v]"), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, rising), "[n], [v], [n]"), RiseSeen::Broken);
  EXPECT_EQ(riseToTheEnd(tableWithoutIndex(dir, rising), "[v] as [n], [n] as [m]"), RiseSeen::Broken);

  // As it reads: holding until its end, and anew when the statement runs again.
  auto cn = tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (2, 'b'), (3, 'c');");
  auto rs = vb::Ref<Recordset>::make();
  rs->RunInstead("select * from [k]", "n");
  rs->Open("select * from [k] order by [n]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->Source(), "select * from [k] order by [n]");
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Holding);
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Holding);
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Held);
  rs->MoveFirst();
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Holding);
  rs->Close();
  // Nothing watched: without a field, or without a statement in place.
  rs->RunInstead("select * from [k]");
  rs->Open("select * from [k] order by [n]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Broken);
  rs->Close();
  rs->Open("select * from [k] order by [n]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->InsteadRise(), RiseSeen::Broken);
}

TEST(SqliteProvider, AnOpenMayRunAnotherStatementInPlaceOfTheOneItNames) {
  TempDir dir;
  auto cn = tableWithoutIndex(dir, "INSERT INTO k VALUES (1, 'a'), (2, 'b');");
  auto rs = vb::Ref<Recordset>::make();
  rs->RunInstead("select [n], [v] from [k] where [n] > 1");
  rs->Open("select [n], [v] from [k]", cn, adOpenStatic, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->Source(), "select [n], [v] from [k]");
  EXPECT_EQ(rs->field(0).Value().toInt64(), 2);
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
  EXPECT_EQ(rs->RecordCount(), 1);  // counted by the statement run in its place
  rs->Close();
  rs->RunInstead("select [n], [v] from [k] where [n] > 1");
  rs->Open("select [n], [v] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
  rs->MoveFirst();  // runs the statement again: the one run in its place
  EXPECT_EQ(rs->field(0).Value().toInt64(), 2);
  rs->Close();

  // The next Open's alone, and taken back before it by the empty text.
  rs->Open("select [n], [v] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->field(0).Value().toInt64(), 1);
  rs->Close();
  rs->RunInstead("select [n], [v] from [k] where [n] > 1");
  rs->RunInstead("");
  rs->Open("select [n], [v] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->field(0).Value().toInt64(), 1);
}

TEST(SqliteProvider, ARecordSetReadingItsRowsAheadHoldsEachRowWholeThroughTheNextMove) {
  TempDir dir;
  // More rows than the thread reads ahead at once: the rows left go on across its batches.
  std::string inserts = "INSERT INTO k VALUES ";
  for (int i = 1; i <= 3000; ++i) inserts += (i > 1 ? ", (" : "(") + std::to_string(i) + ", 'row " + std::to_string(i) + "')";
  auto cn = tableWithoutIndex(dir, inserts);
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("select [n], [v] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  // Read value by value: nothing held.
  EXPECT_TRUE(rs->HeldRow().empty());
  rs->PrefetchRemainingRows();
  int64_t rows = 1;
  std::span<const vb::Variant> left;
  for (rs->MoveNext(); !rs->isEOF(); rs->MoveNext()) {
    ++rows;
    if (!left.empty()) {
      ASSERT_EQ(left[0].toInt64(), rows - 1);
      ASSERT_EQ(left[1].toText(), "row " + std::to_string(rows - 1));
    }
    left = rs->HeldRow();
    ASSERT_EQ(left.size(), 2u) << rows;
    ASSERT_EQ(left[0].toInt64(), rows);
    ASSERT_EQ(left[1].toText(), "row " + std::to_string(rows));
  }
  EXPECT_EQ(rows, 3000);
  EXPECT_TRUE(rs->HeldRow().empty());
  EXPECT_EQ(left[1].toText(), "row 3000");  // the last record's values, past it
}

TEST(SqliteProvider, ARecordSetReadingItsRowsAheadOnAThreadGivesTheSameRowsInTurn) {
  TempDir dir;
  // More rows than the thread reads ahead at once; the last one's absolute value overflows.
  std::string inserts = "INSERT INTO k VALUES ";
  for (int i = 1; i <= 5000; ++i) inserts += (i > 1 ? ", (" : "(") + std::to_string(i) + ", 'row " + std::to_string(i) + "')";
  auto cn = tableWithoutIndex(dir, inserts + "; INSERT INTO k VALUES (-9223372036854775807 - 1, 'last');");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("select [n], [v], abs([n]) as [a] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->field(1).Value().toText(), "row 1");
  rs->PrefetchRemainingRows();
  EXPECT_EQ(rs->field(1).Value().toText(), "row 1");  // the current row stays
  for (int i = 2; i <= 3000; ++i) {
    rs->MoveNext();
    ASSERT_EQ(rs->field(0).Value().toInt64(), i);
    ASSERT_EQ(rs->field(1).Value().toText(), "row " + std::to_string(i));
  }
  // Stopped half way: the rows go on in turn, and the connection serves others meanwhile.
  rs->StopPrefetching();
  EXPECT_EQ(cn->Execute("select count(*) from [k]")->field(0).Value().toInt64(), 5001);
  for (int i = 3001; i <= 5000; ++i) {
    rs->MoveNext();
    ASSERT_EQ(rs->field(0).Value().toInt64(), i);
  }
  // The failure of the row after them is raised by the move to it, as without the thread.
  EXPECT_EQ(expectVBError([&] { rs->MoveNext(); }).description(), "integer overflow");
  rs->Close();

  // Read ahead to the end; moving back runs the statement again.
  rs->Open("select [n], [v] from [k] where [n] > 0", cn, adOpenStatic, adLockReadOnly, adCmdText);
  rs->PrefetchRemainingRows();
  int64_t count = 0, sum = 0;
  for (; !rs->isEOF(); rs->MoveNext()) ++count, sum += rs->field(0).Value().toInt64();
  EXPECT_EQ(count, 5000);
  EXPECT_EQ(sum, 5000 * 5001 / 2);
  rs->MoveFirst();
  EXPECT_EQ(rs->field(0).Value().toInt64(), 1);
  rs->MoveNext();
  EXPECT_EQ(rs->field(0).Value().toInt64(), 2);
  // Closed while the thread reads: nothing is left running.
  rs->Close();
  rs->Open("select [n] from [k]", cn, adOpenForwardOnly, adLockReadOnly, adCmdText);
  rs->PrefetchRemainingRows();
  rs->MoveNext();
  rs->Close();
  EXPECT_EQ(cn->Execute("select max([n]) from [k]")->field(0).Value().toInt64(), 5000);
}

TEST(SqliteProvider, ADateWhoseYearIsPastThe32BitRangeIsShownAsItIsWritten) {
  TempDir dir;
  std::string path = emptyDatabase(dir);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  cn->Execute("CREATE TABLE [d] ([id] INTEGER PRIMARY KEY, [at] DATETIME, [on] DATE)");
  cn->Execute("INSERT INTO [d] VALUES (1, '99999999999-01-01 00:00:00', '2147483648-12-31')");
  cn->Execute("INSERT INTO [d] VALUES (2, '2024-01-31 10:20:30', '2024-01-31')");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("SELECT * FROM [d] ORDER BY [id]", cn, adOpenStatic, adLockReadOnly, adCmdText);
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("at").Value().toText(), "99999999999-01-01 00:00:00");
  EXPECT_EQ(rs->field("on").Value().toText(), "2147483648-12-31");
  rs->MoveNext();
  EXPECT_EQ(rs->field("at").Value().toText(), "2024-01-31 10:20:30");
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
}

TEST(SqliteProvider, ANumberNoSingleCanHoldInASingleColumnIsReadAsADouble) {
  TempDir dir;
  std::string path = emptyDatabase(dir);
  auto cn = vb::Ref<Connection>::make();
  cn->Open("Provider=SQLite;Data Source=" + path);
  cn->Execute("CREATE TABLE [s] ([id] INTEGER PRIMARY KEY, [v] FLOAT4)");
  cn->Execute("INSERT INTO [s] VALUES (1, 1e300), (2, -1e300), (3, 0.25)");
  auto rs = vb::Ref<Recordset>::make();
  rs->Open("SELECT [v] FROM [s] ORDER BY [id]", cn, adOpenStatic, adLockReadOnly, adCmdText);
  EXPECT_EQ(rs->field("v").Value().toText(), "1e+300");
  rs->MoveNext();
  EXPECT_EQ(rs->field("v").Value().toText(), "-1e+300");
  rs->MoveNext();
  EXPECT_EQ(rs->field("v").Value().type(), vb::VarType::Single);
  EXPECT_EQ(rs->field("v").Value().toText(), "0.25");
}
