// The Access provider through the record-set layer: Connection and Recordset on nwind.mdb
// (JET3), DateTestDatabase.mdb (JET4) and ASampleDatabase.accdb (ACE12).
#include <gtest/gtest.h>

#include <map>

#include "jet/JetFixtures.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado;
using varsentix::testing::TempDir;
using varsentix::testing::copySample;
using varsentix::testing::fileBytes;

namespace {

const std::string kJet = "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";

vb::Ref<Connection> openAccess(const std::string& path, const std::string& extra = "") {
  auto connection = vb::Ref<Connection>::make();
  connection->Open(kJet + path + ";" + extra);
  return connection;
}

vb::Ref<Recordset> openRecordset(const vb::Ref<Connection>& connection, const std::string& source,
                                 int32_t options = adCmdText, LockTypeEnum lock = adLockReadOnly) {
  auto rs = vb::Ref<Recordset>::make();
  rs->Open(source, connection, adOpenStatic, lock, options);
  return rs;
}

// The value of the first field of the first row, as text ("<null>" for Null).
std::string firstValue(const vb::Ref<Connection>& connection, const std::string& sql) {
  auto rs = openRecordset(connection, sql);
  if (rs->isEOF()) return "<none>";
  vb::Variant value = rs->field(0).Value();
  return value.isNull() ? "<null>" : value.toText();
}

// Rows of a schema rowset as "COL=value|COL=value" for the columns asked for.
std::vector<std::string> schemaRows(const vb::Ref<Connection>& connection, SchemaEnum schema,
                                    const std::vector<vb::Variant>& restrictions,
                                    const std::vector<std::string>& columns) {
  std::vector<std::string> rows;
  auto rs = connection->OpenSchema(schema, restrictions);
  while (!rs->isEOF()) {
    std::string row;
    for (const auto& column : columns) {
      vb::Variant value = rs->field(column).Value();
      row += (row.empty() ? "" : "|") + column + "=" + (value.isNull() ? "<null>" : value.toText());
    }
    rows.push_back(row);
    rs->MoveNext();
  }
  return rows;
}

template <class F>
vb::VBError errorOf(F&& action) {
  try {
    action();
  } catch (const vb::VBError& e) {
    return e;
  }
  ADD_FAILURE() << "no error";
  return vb::VBError(0);
}

class NwindProvider : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    path_ = new std::string(copySample(*dir_, "nwind.mdb"));
    connection_ = new vb::Ref<Connection>(openAccess(*path_));
  }
  static void TearDownTestSuite() {
    delete connection_;
    delete path_;
    delete dir_;
  }
  static const vb::Ref<Connection>& cn() { return *connection_; }
  static std::string value(const std::string& sql) { return firstValue(cn(), sql); }

  static TempDir* dir_;
  static std::string* path_;
  static vb::Ref<Connection>* connection_;
};
TempDir* NwindProvider::dir_ = nullptr;
std::string* NwindProvider::path_ = nullptr;
vb::Ref<Connection>* NwindProvider::connection_ = nullptr;

TEST_F(NwindProvider, OpensAndCloses) {
  auto connection = openAccess(*path_);
  EXPECT_EQ(connection->State(), adStateOpen);
  EXPECT_EQ(connection->Provider(), "Microsoft.Jet.OLEDB.4.0");
  connection->Close();
  EXPECT_EQ(connection->State(), adStateClosed);
}

TEST_F(NwindProvider, TablesRowsetTypesEachTable) {
  std::map<std::string, std::string> types;
  auto rs = cn()->OpenSchema(adSchemaTables);
  while (!rs->isEOF()) {
    types[rs->field("TABLE_NAME").Value().toText()] = rs->field("TABLE_TYPE").Value().toText();
    EXPECT_TRUE(rs->field("TABLE_CATALOG").Value().isNull());
    EXPECT_TRUE(rs->field("TABLE_SCHEMA").Value().isNull());
    rs->MoveNext();
  }
  EXPECT_EQ(types["Orders"], "TABLE");
  EXPECT_EQ(types["Ums\xC3\xA4tze"], "TABLE");
  EXPECT_EQ(types["MSysObjects"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysRelationships"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysAccessObjects"], "ACCESS TABLE");
  EXPECT_EQ(types.count("Invoices"), 0u);  // saved queries are not listed
}

TEST_F(NwindProvider, TablesRowsetHonoursTypeAndNameRestrictions) {
  auto tables = schemaRows(cn(), adSchemaTables, {vb::Variant(), vb::Variant(), vb::Variant(), "TABLE"},
                           {"TABLE_NAME"});
  EXPECT_EQ(tables, (std::vector<std::string>{
                        "TABLE_NAME=Categories", "TABLE_NAME=Customers", "TABLE_NAME=Employees",
                        "TABLE_NAME=Order Details", "TABLE_NAME=Orders", "TABLE_NAME=Products",
                        "TABLE_NAME=Shippers", "TABLE_NAME=Suppliers", "TABLE_NAME=Ums\xC3\xA4tze"}));
  EXPECT_EQ(schemaRows(cn(), adSchemaTables, {vb::Variant(), vb::Variant(), "orders"},
                       {"TABLE_NAME", "TABLE_TYPE", "DATE_CREATED"}),
            std::vector<std::string>{"TABLE_NAME=Orders|TABLE_TYPE=TABLE|DATE_CREATED=1995-09-13 10:51:38"});
  EXPECT_EQ(schemaRows(cn(), adSchemaTables, {vb::Variant(), vb::Variant(), vb::Variant(), "SYSTEM TABLE"},
                       {"TABLE_NAME"}).size(), 4u);
}

TEST_F(NwindProvider, PrimaryKeysRowset) {
  EXPECT_EQ(schemaRows(cn(), adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "Order Details"},
                       {"TABLE_NAME", "COLUMN_NAME", "ORDINAL", "PK_NAME"}),
            (std::vector<std::string>{
                "TABLE_NAME=Order Details|COLUMN_NAME=OrderID|ORDINAL=1|PK_NAME=PrimaryKey",
                "TABLE_NAME=Order Details|COLUMN_NAME=ProductID|ORDINAL=2|PK_NAME=PrimaryKey"}));
  EXPECT_EQ(schemaRows(cn(), adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "Customers"},
                       {"COLUMN_NAME"}),
            std::vector<std::string>{"COLUMN_NAME=CustomerID"});
  EXPECT_TRUE(schemaRows(cn(), adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "MSysRelationships"},
                         {"COLUMN_NAME"}).empty());
}

TEST_F(NwindProvider, ForeignKeysRowsetRestrictedByPrimaryKeyTable) {
  EXPECT_EQ(schemaRows(cn(), adSchemaForeignKeys, {vb::Variant(), vb::Variant(), "Customers"},
                       {"PK_TABLE_NAME", "PK_COLUMN_NAME", "FK_TABLE_NAME", "FK_COLUMN_NAME",
                        "ORDINAL", "UPDATE_RULE", "DELETE_RULE", "PK_NAME", "FK_NAME"}),
            std::vector<std::string>{
                "PK_TABLE_NAME=Customers|PK_COLUMN_NAME=CustomerID|FK_TABLE_NAME=Orders|"
                "FK_COLUMN_NAME=CustomerID|ORDINAL=1|UPDATE_RULE=CASCADE|DELETE_RULE=NO ACTION|"
                "PK_NAME=PrimaryKey|FK_NAME=CustomersOrders"});
  EXPECT_EQ(schemaRows(cn(), adSchemaForeignKeys, {vb::Variant(), vb::Variant(), "Shippers"},
                       {"PK_COLUMN_NAME", "FK_COLUMN_NAME"}),
            std::vector<std::string>{"PK_COLUMN_NAME=ShipperID|FK_COLUMN_NAME=ShipVia"});
}

TEST_F(NwindProvider, ForeignKeysRowsetRestrictedByForeignKeyTableOrNot) {
  EXPECT_EQ(schemaRows(cn(), adSchemaForeignKeys,
                       {vb::Variant(), vb::Variant(), vb::Variant(), vb::Variant(), vb::Variant(), "Order Details"},
                       {"PK_TABLE_NAME", "FK_NAME", "DELETE_RULE"}),
            (std::vector<std::string>{
                "PK_TABLE_NAME=Orders|FK_NAME=OrdersOrder Details|DELETE_RULE=CASCADE",
                "PK_TABLE_NAME=Products|FK_NAME=ProductsOrder Details|DELETE_RULE=NO ACTION"}));
  EXPECT_EQ(schemaRows(cn(), adSchemaForeignKeys, {}, {"FK_NAME"}).size(), 7u);
}

TEST_F(NwindProvider, FieldsReportJetTypesAndSizes) {
  struct Expect {
    const char* table;
    const char* field;
    DataTypeEnum type;
    int32_t size;
  };
  const Expect expected[] = {
      {"Orders", "OrderID", adInteger, 4},        {"Orders", "CustomerID", adVarWChar, 5},
      {"Orders", "OrderDate", adDate, 8},         {"Orders", "Freight", adCurrency, 8},
      {"Orders", "ShipName", adVarWChar, 40},     {"Products", "Discontinued", adBoolean, 2},
      {"Products", "UnitsInStock", adSmallInt, 2}, {"Order Details", "Discount", adSingle, 4},
      {"Employees", "Photo", adLongVarBinary, 1073741823},
      {"Employees", "Notes", adLongVarWChar, 536870910},
  };
  for (const auto& e : expected) {
    auto rs = openRecordset(cn(), e.table, adCmdTable);
    Field field = rs->field(e.field);
    EXPECT_EQ(field.Type(), e.type) << e.table << "." << e.field;
    EXPECT_EQ(field.DefinedSize(), e.size) << e.table << "." << e.field;
  }
}

TEST_F(NwindProvider, ValuesKeepTheirTypes) {
  auto rs = openRecordset(cn(), "SELECT * FROM [Orders] WHERE [OrderID] = 10331");
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("Freight").Value(), vb::Variant(vb::Currency{101900}));
  EXPECT_EQ(rs->field("Freight").Value().toText(), "10.19");
  EXPECT_EQ(rs->field("OrderID").Value(), vb::Variant(int32_t{10331}));
  EXPECT_EQ(rs->field("OrderDate").Value().type(), vb::VarType::Date);
  EXPECT_EQ(rs->field("OrderDate").Value().toText(), "1994-11-16 00:00:00");
  EXPECT_TRUE(rs->field("ShipRegion").Value().isNull());
  EXPECT_EQ(rs->field("ShipRegion").ActualSize(), 0);
  EXPECT_EQ(rs->field("ShipName").Value().toText(), "Bon app'");
}

TEST_F(NwindProvider, YesNoReadsAsBoolean) {
  EXPECT_EQ(value("SELECT Discontinued FROM Products WHERE ProductID = 5"), "True");
  EXPECT_EQ(value("SELECT Discontinued FROM Products WHERE ProductID = 1"), "False");
}

TEST_F(NwindProvider, YesNoFieldsAreNeverNullInTheirXml) {
  TempDir dir;
  auto rs = openRecordset(cn(), "SELECT [ProductID], [Discontinued] FROM [Products] WHERE [ProductID] = 5");
  rs->Save(dir.file("products.xml"), adPersistXML);
  auto bytes = fileBytes(dir.file("products.xml"));
  std::string xml(bytes.begin(), bytes.end());
  auto discontinued = xml.find("name='Discontinued'");
  ASSERT_NE(discontinued, std::string::npos) << xml;
  auto end = xml.find("</s:AttributeType>", discontinued);
  EXPECT_NE(xml.substr(discontinued, end - discontinued).find("rs:maybenull='false'"), std::string::npos) << xml;
  auto product = xml.find("name='ProductID'");
  EXPECT_EQ(xml.substr(product, xml.find("</s:AttributeType>", product) - product).find("maybenull"),
            std::string::npos) << xml;
}

TEST_F(NwindProvider, UmlautsAndLineBreaks) {
  EXPECT_EQ(value("SELECT [City] FROM [Customers] WHERE [CustomerID] = 'FRANK'"), "M\xC3\xBCnchen");
  EXPECT_EQ(value("SELECT [Address] FROM [Employees] WHERE [EmployeeID] = 1"),
            "507 - 20th Ave. E.\r\nApt. 2A");
  auto rs = openRecordset(cn(), "Ums\xC3\xA4tze", adCmdTable);
  EXPECT_EQ(rs->RecordCount(), 830);
}

TEST_F(NwindProvider, DateLiteralsInQueries) {
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] WHERE [OrderDate] = #1994-11-16#"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] WHERE [OrderDate] = #11/16/1994#"), "2");
  EXPECT_EQ(value("SELECT min([OrderID]) FROM [Orders] WHERE [OrderDate] >= #8/4/1994 00:00:00#"), "10248");
  auto rs = openRecordset(cn(), "SELECT * FROM [Orders] WHERE [OrderDate] BETWEEN #1994-11-16# AND #11/16/94 11:59 PM#");
  EXPECT_EQ(rs->RecordCount(), 2);
}

TEST_F(NwindProvider, DateValuesWrittenBackAsLiteralsFindTheirRows) {
  auto rs = openRecordset(cn(), "SELECT [OrderDate] FROM [Orders] WHERE [OrderID] = 10330");
  std::string text = rs->field("OrderDate").Value().toText();
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] WHERE [OrderDate] = #" + text + "#"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] WHERE [OrderDate] = '" + text + "'"), "2");
  EXPECT_EQ(value("SELECT count(*) FROM [Orders] WHERE [OrderDate] = '1994-11-16'"), "2");
}

TEST_F(NwindProvider, LikeIsCaseInsensitive) {
  EXPECT_EQ(value("SELECT count(*) FROM [Customers] WHERE [CompanyName] LIKE 'ALFREDS%'"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM [Customers] WHERE [CompanyName] LIKE 'alfreds%'"), "1");
}

TEST_F(NwindProvider, SecondStatementIsRefused) {
  vb::VBError e = errorOf([] { openRecordset(cn(), "SELECT * FROM [Orders]; SELECT * FROM [Customers]"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError);
}

TEST_F(NwindProvider, MissingTableIsAnError) {
  vb::VBError e = errorOf([] { openRecordset(cn(), "SELECT * FROM [NoSuchTable]"); });
  EXPECT_NE(e.number(), 0);
}

TEST(JetProviderWrites, EveryWriteIsRefusedAndTheFileStaysUnchanged) {
  TempDir dir;
  std::string path = copySample(dir, "nwind.mdb");
  auto before = fileBytes(path);
  auto connection = openAccess(path);
  for (const char* sql : {"DELETE FROM [Orders]",
                          "UPDATE [Orders] SET [Freight] = 0 WHERE [OrderID] = 10330",
                          "INSERT INTO [Shippers] ([CompanyName]) VALUES ('X')",
                          "CREATE TABLE [T] ([A] LONG)", "DROP TABLE [Orders]"}) {
    vb::VBError e = errorOf([&] { connection->Execute(sql); });
    EXPECT_EQ(e.number(), vb::errnum::ProviderReadOnly) << sql;
    EXPECT_EQ(e.description().rfind("Cannot update. Database or object is read-only.", 0), 0u) << e.description();
    EXPECT_NE(e.description().find(path), std::string::npos);
  }
  EXPECT_EQ(firstValue(connection, "SELECT count(*) FROM [Orders]"), "830");
  EXPECT_EQ(firstValue(connection, "SELECT [Freight] FROM [Orders] WHERE [OrderID] = 10330"), "12.75");
  connection->Close();
  EXPECT_EQ(fileBytes(path), before);
}

TEST(JetProviderWrites, RecordsetUpdateIsRefused) {
  TempDir dir;
  std::string path = copySample(dir, "nwind.mdb");
  auto before = fileBytes(path);
  auto connection = openAccess(path);
  auto rs = openRecordset(connection, "SELECT * FROM [Shippers] WHERE [ShipperID] = 1", adCmdText,
                          adLockOptimistic);
  rs->field("Phone").setValue(vb::Variant("(503) 555-0000"));
  vb::VBError e = errorOf([&] { rs->Update(); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderReadOnly);
  EXPECT_EQ(e.description().rfind("Cannot update. Database or object is read-only.", 0), 0u) << e.description();
  rs->CancelUpdate();
  rs->AddNew();
  rs->field("CompanyName").setValue(vb::Variant("New Shipper"));
  e = errorOf([&] { rs->Update(); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderReadOnly);
  rs->CancelUpdate();
  rs->Close();
  EXPECT_EQ(firstValue(connection, "SELECT count(*) FROM [Shippers]"), "3");
  EXPECT_EQ(firstValue(connection, "SELECT [Phone] FROM [Shippers] WHERE [ShipperID] = 1"), "(503) 555-9831");
  connection->Close();
  EXPECT_EQ(fileBytes(path), before);
}

TEST(JetProviderOpen, MissingFileFailsNamingIt) {
  TempDir dir;
  auto connection = vb::Ref<Connection>::make();
  std::string path = dir.file("missing.mdb");
  vb::VBError e = errorOf([&] { connection->Open(kJet + path); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_EQ(e.description(), "Could not find file '" + path + "'.");
  EXPECT_EQ(connection->State(), adStateClosed);
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(JetProviderOpen, PathWithBlanksAndUmlautsInQuotes) {
  TempDir dir;
  std::filesystem::create_directory(dir.path() / "Daten f\xC3\xBCr; Tests");
  std::string path = (dir.path() / "Daten f\xC3\xBCr; Tests" / "Nord wind.mdb").string();
  std::filesystem::copy_file(varsentix::testing::sharedDataDir() / "nwind.mdb", path);
  auto connection = vb::Ref<Connection>::make();
  connection->Open("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\"" + path + "\";Persist Security Info=False");
  EXPECT_EQ(firstValue(connection, "SELECT count(*) FROM [Shippers]"), "3");
}

TEST(JetProviderOpen, ConnectionStringWithoutDataSourceFails) {
  auto connection = vb::Ref<Connection>::make();
  vb::VBError e = errorOf([&] { connection->Open("Provider=Microsoft.Jet.OLEDB.4.0"); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
}

TEST(JetProviderOpen, DatabasePasswordFromTheConnectionString) {
  TempDir dir;
  std::string path = copySample(dir, "nwind.mdb");
  varsentix::testing::setJet3Password(path, "Geheim");
  auto connection = vb::Ref<Connection>::make();
  vb::VBError e = errorOf([&] { connection->Open(kJet + path); });
  EXPECT_EQ(e.number(), vb::errnum::ProviderError);
  EXPECT_NE(e.description().find(path), std::string::npos);
  connection->Open(kJet + path + ";Jet OLEDB:Database Password=Geheim");
  EXPECT_EQ(firstValue(connection, "SELECT count(*) FROM [Customers]"), "91");
}

TEST(JetProviderJet4, OddDatesAndLineBreaks) {
  TempDir dir;
  auto connection = openAccess(copySample(dir, "DateTestDatabase.mdb"));
  auto rs = openRecordset(connection, "SELECT * FROM [DateTest] ORDER BY [IDCol]");
  std::vector<std::string> dates;
  while (!rs->isEOF()) {
    EXPECT_EQ(rs->field("DateTimeCol").Type(), adDate);
    dates.push_back(rs->field("DateTimeCol").Value().toText());
    rs->MoveNext();
  }
  EXPECT_EQ(dates, (std::vector<std::string>{"2021-12-02 00:00:00", "9999-01-01 00:00:00",
                                             "1898-01-01 00:00:00", "0632-01-01 00:00:00",
                                             "2021-12-02 00:00:00", "2021-12-02 00:00:00"}));
  EXPECT_EQ(firstValue(connection, "SELECT [IDCol] FROM [DateTest] WHERE [DateTimeCol] = #9999-01-01#"), "2");
  EXPECT_EQ(firstValue(connection, "SELECT [IDCol] FROM [DateTest] WHERE [DateTimeCol] < #1/1/1000#"), "4");
  EXPECT_EQ(firstValue(connection, "SELECT [LongTextCol] FROM [DateTest] WHERE [IDCol] = 6"),
            "New line\r\nin field");
  auto text = openRecordset(connection, "DateTest", adCmdTable);
  EXPECT_EQ(text->field("ShortTextCol").Type(), adVarWChar);
  EXPECT_EQ(text->field("ShortTextCol").DefinedSize(), 255);
  EXPECT_EQ(text->field("LongTextCol").Type(), adLongVarWChar);
}

TEST(JetProviderAce, Access2007FileThroughEitherProviderName) {
  TempDir dir;
  std::string path = copySample(dir, "ASampleDatabase.accdb");
  auto connection = vb::Ref<Connection>::make();
  connection->Open("Provider=Microsoft.ACE.OLEDB.12.0;Data Source=" + path);
  EXPECT_EQ(firstValue(connection, "SELECT count(*) FROM [Asset Items]"), "65");
  auto jet = openAccess(path);
  EXPECT_EQ(firstValue(jet, "SELECT [Cost] FROM [Asset Items] WHERE [Asset No] = '30050'"), "1995.5");
  EXPECT_EQ(schemaRows(jet, adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "Asset Items"},
                       {"COLUMN_NAME", "PK_NAME"}),
            std::vector<std::string>{"COLUMN_NAME=Asset No|PK_NAME=PrimaryKey"});
}

}  // namespace
