// The Access loader: libmdb reads the sample files into an in-memory SQLite database.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <memory>

#include "jet/JetFixtures.h"
#include "platform/ado/providers/jet/JetLoader.h"
#include "platform/ado/providers/jet/MdbFile.h"
#include "varsentix/platform/vb/VBError.h"

using namespace varsentix;
using namespace varsentix::ado::detail;
using varsentix::testing::TempDir;
using varsentix::testing::copySample;
using varsentix::testing::fileBytes;
using varsentix::testing::scalar;

namespace {

// nwind.mdb loaded once for the read-only checks of this suite.
class NwindLoaded : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir_ = new TempDir();
    loaded_ = new LoadedAccessFile(loadAccessFile(copySample(*dir_, "nwind.mdb"), ""));
  }
  static void TearDownTestSuite() {
    delete loaded_;
    delete dir_;
  }
  static sqlite3* db() { return loaded_->db.get(); }
  static const JetCatalog& catalog() { return loaded_->catalog; }
  static std::string value(const std::string& sql) { return scalar(db(), sql); }

  static TempDir* dir_;
  static LoadedAccessFile* loaded_;
};
TempDir* NwindLoaded::dir_ = nullptr;
LoadedAccessFile* NwindLoaded::loaded_ = nullptr;

std::map<std::string, std::string> tableTypes(const JetCatalog& catalog) {
  std::map<std::string, std::string> types;
  for (const auto& table : catalog.tables) types[table.name] = tableTypeText(table.kind);
  return types;
}

TEST_F(NwindLoaded, IsReadAsJet3) { EXPECT_EQ(loaded_->format, "JET3"); }

TEST_F(NwindLoaded, ListsTheNineUserTables) {
  std::vector<std::string> users;
  for (const auto& table : catalog().tables)
    if (table.kind == JetTableKind::Table) users.push_back(table.name);
  std::sort(users.begin(), users.end());
  EXPECT_EQ(users, (std::vector<std::string>{"Categories", "Customers", "Employees", "Order Details",
                                             "Orders", "Products", "Shippers", "Suppliers",
                                             "Ums\xC3\xA4tze"}));
}

TEST_F(NwindLoaded, EngineTablesAreSystemTablesAndAccessTablesAreAccessTables) {
  auto types = tableTypes(catalog());
  EXPECT_EQ(types["MSysObjects"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysACEs"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysQueries"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysRelationships"], "SYSTEM TABLE");
  EXPECT_EQ(types["MSysAccessObjects"], "ACCESS TABLE");
  EXPECT_EQ(types["MSysIMEXSpecs"], "ACCESS TABLE");
  EXPECT_EQ(types["MSysModules2"], "ACCESS TABLE");
  EXPECT_EQ(types["Orders"], "TABLE");
}

TEST_F(NwindLoaded, SavedQueriesFormsAndReportsAreNotTables) {
  auto types = tableTypes(catalog());
  EXPECT_EQ(types.count("Invoices"), 0u);            // a saved query
  EXPECT_EQ(types.count("Sales by Category"), 0u);   // a query and a report
  EXPECT_EQ(types.count("Main Switchboard"), 0u);    // a form
}

TEST_F(NwindLoaded, CopiesEveryRow) {
  const std::map<std::string, int> counts = {
      {"Categories", 8}, {"Customers", 91}, {"Employees", 9},   {"Order Details", 2155},
      {"Orders", 830},   {"Products", 77},  {"Shippers", 3},    {"Suppliers", 29},
      {"Ums\xC3\xA4tze", 830}, {"MSysRelationships", 7}};
  for (const auto& [table, count] : counts)
    EXPECT_EQ(value("SELECT count(*) FROM \"" + table + "\""), std::to_string(count)) << table;
}

TEST_F(NwindLoaded, NullsAreNullAndNotEmptyText) {
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE ShipRegion IS NULL"), "507");
  EXPECT_EQ(value("SELECT count(*) FROM Orders WHERE ShipRegion = ''"), "0");
  EXPECT_EQ(value("SELECT Region FROM Customers WHERE CustomerID = 'ALFKI'"), "<null>");
  EXPECT_EQ(value("SELECT Fax FROM Customers WHERE CustomerID = 'KOENE'"), "<null>");
  EXPECT_EQ(value("SELECT Fax FROM Customers WHERE CustomerID = 'ALFKI'"), "030-0076545");
  EXPECT_EQ(value("SELECT typeof(ReportsTo) FROM Employees WHERE EmployeeID = 2"), "null");
  EXPECT_EQ(value("SELECT ReportsTo FROM Employees WHERE EmployeeID = 1"), "2");
}

TEST_F(NwindLoaded, CurrencyIsExact) {
  EXPECT_EQ(value("SELECT UnitPrice FROM Products WHERE ProductID = 1"), "18");
  EXPECT_EQ(value("SELECT Freight FROM Orders WHERE OrderID = 10330"), "12.75");
  EXPECT_EQ(value("SELECT Freight FROM Orders WHERE OrderID = 10331"), "10.19");
  EXPECT_EQ(value("SELECT typeof(Freight) FROM Orders WHERE OrderID = 10331"), "real");
}

TEST_F(NwindLoaded, DatesAreStoredAsSortableText) {
  EXPECT_EQ(value("SELECT OrderDate FROM Orders WHERE OrderID = 10330"), "1994-11-16 00:00:00");
  EXPECT_EQ(value("SELECT min(OrderDate) FROM Orders"), "1994-08-04 00:00:00");
  EXPECT_EQ(value("SELECT max(OrderDate) FROM Orders"), "1996-06-05 00:00:00");
  EXPECT_EQ(value("SELECT BirthDate FROM Employees WHERE EmployeeID = 1"), "1948-12-08 00:00:00");
}

TEST_F(NwindLoaded, TextIsUtf8) {
  EXPECT_EQ(value("SELECT City FROM Customers WHERE CustomerID = 'FRANK'"), "M\xC3\xBCnchen");
  EXPECT_EQ(value("SELECT CompanyName FROM Customers WHERE CustomerID = 'KOENE'"),
            "K\xC3\xB6niglich Essen");
  EXPECT_EQ(value("SELECT ShipAddress FROM Orders WHERE OrderID = 10330"),
            "Carrera 52 con Ave. Bol\xC3\xADvar #65-98 Llano Largo");
  EXPECT_EQ(value("SELECT count(*) FROM \"Ums\xC3\xA4tze\""), "830");
}

TEST_F(NwindLoaded, TextKeepsItsLineBreaks) {
  EXPECT_EQ(value("SELECT Address FROM Employees WHERE EmployeeID = 1"),
            "507 - 20th Ave. E.\r\nApt. 2A");
}

TEST_F(NwindLoaded, MemoValuesAreReadWhole) {
  std::string notes = value("SELECT Notes FROM Employees WHERE EmployeeID = 2");
  EXPECT_EQ(notes.rfind("Andrew received his BTS commercial in 1974", 0), 0u);
  EXPECT_NE(notes.find("Pacific Rim Importers Association."), std::string::npos);
}

TEST_F(NwindLoaded, OleObjectsAreBinaryWithTheirOleHeader) {
  EXPECT_EQ(value("SELECT typeof(Photo) FROM Employees WHERE EmployeeID = 1"), "blob");
  EXPECT_EQ(value("SELECT length(Photo) FROM Employees WHERE EmployeeID = 1"), "21626");
  EXPECT_EQ(value("SELECT hex(substr(Photo, 1, 2)) FROM Employees WHERE EmployeeID = 1"), "151C");
}

TEST_F(NwindLoaded, YesNoIsMinusOneOrZero) {
  EXPECT_EQ(value("SELECT Discontinued FROM Products WHERE ProductID = 1"), "0");
  EXPECT_EQ(value("SELECT Discontinued FROM Products WHERE ProductID = 5"), "-1");
  EXPECT_EQ(value("SELECT count(*) FROM Products WHERE Discontinued IS NULL"), "0");
}

TEST_F(NwindLoaded, ColumnsDeclareTheirAccessTypes) {
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Orders') WHERE name = 'Freight'"), "CURRENCY");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Orders') WHERE name = 'CustomerID'"), "TEXT(5)");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Orders') WHERE name = 'OrderDate'"), "DATETIME");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Products') WHERE name = 'Discontinued'"), "BIT");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Products') WHERE name = 'UnitsInStock'"), "SHORT");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Employees') WHERE name = 'Notes'"), "LONGTEXT");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Employees') WHERE name = 'Photo'"), "LONGBINARY");
  EXPECT_EQ(value("SELECT type FROM pragma_table_info('Order Details') WHERE name = 'Discount'"), "SINGLE");
}

TEST_F(NwindLoaded, TextComparesWithoutCase) {
  EXPECT_EQ(value("SELECT count(*) FROM Customers WHERE CustomerID = 'alfki'"), "1");
  EXPECT_EQ(value("SELECT count(*) FROM Customers WHERE City LIKE 'berlin'"), "1");
}

TEST_F(NwindLoaded, PrimaryKeysComeFromThePrimaryKeyIndex) {
  const JetTable* details = catalog().findTable("Order Details");
  ASSERT_NE(details, nullptr);
  EXPECT_EQ(details->primaryKeyName, "PrimaryKey");
  EXPECT_EQ(details->primaryKey, (std::vector<std::string>{"OrderID", "ProductID"}));
  EXPECT_EQ(catalog().findTable("Customers")->primaryKey, std::vector<std::string>{"CustomerID"});
  EXPECT_EQ(catalog().findTable("MSysRelationships")->primaryKey, std::vector<std::string>{});
}

TEST_F(NwindLoaded, RelationshipsBecomeForeignKeys) {
  ASSERT_EQ(catalog().relationships.size(), 7u);
  const JetRelationship* customersOrders = nullptr;
  for (const auto& relationship : catalog().relationships)
    if (relationship.name == "CustomersOrders") customersOrders = &relationship;
  ASSERT_NE(customersOrders, nullptr);
  EXPECT_EQ(customersOrders->fkTable, "Orders");
  EXPECT_EQ(customersOrders->pkTable, "Customers");
  ASSERT_EQ(customersOrders->columns.size(), 1u);
  EXPECT_EQ(customersOrders->columns[0], std::make_pair(std::string("CustomerID"), std::string("CustomerID")));
  EXPECT_TRUE(customersOrders->cascadeUpdates);
  EXPECT_FALSE(customersOrders->cascadeDeletes);
}

TEST_F(NwindLoaded, TablesKnowWhenTheyWereCreated) {
  const JetTable* orders = catalog().findTable("Orders");
  ASSERT_FALSE(orders->dateCreated.isNull());
  EXPECT_EQ(orders->dateCreated.toText(), "1995-09-13 10:51:38");
}

TEST_F(NwindLoaded, TheLoadedDatabaseRefusesWrites) {
  EXPECT_NE(sqlite3_exec(db(), "DELETE FROM Orders", nullptr, nullptr, nullptr), SQLITE_OK);
  EXPECT_EQ(value("SELECT count(*) FROM Orders"), "830");
}

TEST(JetLoader, LeavesTheAccessFileByteForByteUnchanged) {
  TempDir dir;
  std::string path = copySample(dir, "nwind.mdb");
  auto before = fileBytes(path);
  auto modified = std::filesystem::last_write_time(path);
  { auto loaded = loadAccessFile(path, ""); }
  EXPECT_EQ(fileBytes(path), before);
  EXPECT_EQ(std::filesystem::last_write_time(path), modified);
  EXPECT_EQ(fileBytes((varsentix::testing::sharedDataDir() / "nwind.mdb").string()), before);
}

TEST(JetLoader, ReadsOddDatesOfAJet4File) {
  TempDir dir;
  auto loaded = loadAccessFile(copySample(dir, "DateTestDatabase.mdb"), "");
  sqlite3* db = loaded.db.get();
  EXPECT_EQ(loaded.format, "JET4");
  EXPECT_EQ(scalar(db, "SELECT count(*) FROM DateTest"), "6");
  EXPECT_EQ(scalar(db, "SELECT DateTimeCol FROM DateTest WHERE IDCol = 1"), "2021-12-02 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT DateTimeCol FROM DateTest WHERE IDCol = 2"), "9999-01-01 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT DateTimeCol FROM DateTest WHERE IDCol = 3"), "1898-01-01 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT DateCol FROM DateTest WHERE IDCol = 3"), "1899-01-01 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT TimeCol FROM DateTest WHERE IDCol = 3"), "1900-01-01 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT DateTimeCol FROM DateTest WHERE IDCol = 4"), "0632-01-01 00:00:00");
  EXPECT_EQ(scalar(db, "SELECT TimeCol FROM DateTest WHERE IDCol = 4"), "0634-01-01 00:00:00");
  // Text order is time order, across centuries.
  EXPECT_EQ(scalar(db, "SELECT group_concat(IDCol) FROM (SELECT IDCol FROM DateTest ORDER BY DateTimeCol, IDCol)"),
            "4,3,1,5,6,2");
}

TEST(JetLoader, ReadsLineBreaksOfAJet4File) {
  TempDir dir;
  auto loaded = loadAccessFile(copySample(dir, "DateTestDatabase.mdb"), "");
  sqlite3* db = loaded.db.get();
  EXPECT_EQ(scalar(db, "SELECT LongTextCol FROM DateTest WHERE IDCol = 6"), "New line\r\nin field");
  EXPECT_EQ(scalar(db, "SELECT ShortTextCol FROM DateTest WHERE IDCol = 6"), "No new line");
  EXPECT_EQ(scalar(db, "SELECT LongTextCol FROM DateTest WHERE IDCol = 5"),
            "Escaped new line \\r\\n in field");
  EXPECT_EQ(scalar(db, "SELECT type FROM pragma_table_info('DateTest') WHERE name = 'ShortTextCol'"),
            "TEXT(255)");
}

TEST(JetLoader, ReadsAnAccess2007File) {
  TempDir dir;
  auto loaded = loadAccessFile(copySample(dir, "ASampleDatabase.accdb"), "");
  sqlite3* db = loaded.db.get();
  EXPECT_EQ(loaded.format, "ACE12");
  EXPECT_EQ(scalar(db, "SELECT count(*) FROM [Asset Items]"), "65");
  EXPECT_EQ(scalar(db, "SELECT Cost FROM [Asset Items] WHERE [Asset No] = '30050'"), "1995.5");
  EXPECT_EQ(scalar(db, "SELECT Acquired FROM [Asset Items] WHERE [Asset No] = '30050'"), "1997-09-02 00:00:00");
  EXPECT_EQ(loaded.catalog.findTable("Asset Items")->primaryKey, std::vector<std::string>{"Asset No"});
  // Access's templates of multi-valued fields: Decimal (precision 18, scale 0) and GUID.
  EXPECT_EQ(scalar(db, "SELECT type FROM pragma_table_info('MSysComplexType_Decimal') WHERE name = 'Value'"),
            "DECIMAL(18,0)");
  EXPECT_EQ(scalar(db, "SELECT type FROM pragma_table_info('MSysComplexType_GUID') WHERE name = 'Value'"),
            "GUID");
}

TEST(JetLoader, MissingFileNamesTheFile) {
  TempDir dir;
  std::string path = dir.file("absent.mdb");
  try {
    loadAccessFile(path, "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_EQ(e.description(), "Could not find file '" + path + "'.");
  }
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(JetLoader, FileThatIsNoAccessDatabaseIsRefused) {
  TempDir dir;
  std::string path = dir.file("notes.mdb");
  std::ofstream(path) << "This is a text file, not an Access database.\n";
  try {
    loadAccessFile(path, "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_EQ(e.description(), "Unrecognized database format '" + path + "'.");
  }
  std::string sqlite = copySample(dir, "Chinook_Sqlite.sqlite");
  EXPECT_THROW(loadAccessFile(sqlite, ""), vb::VBError);
}

TEST(JetLoader, EmptyFileAndFolderAreRefused) {
  TempDir dir;
  std::string empty = dir.file("empty.mdb");
  std::ofstream(empty).close();
  try {
    loadAccessFile(empty, "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_EQ(e.description(), "Unrecognized database format '" + empty + "'.");
  }
  try {
    loadAccessFile(dir.path().string(), "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_EQ(e.description(), "Could not find file '" + dir.path().string() + "'.");
  }
}

TEST(JetLoader, TruncatedFileFailsWithAnError) {
  TempDir dir;
  auto bytes = fileBytes((varsentix::testing::sharedDataDir() / "nwind.mdb").string());
  std::string path = dir.file("truncated.mdb");
  std::ofstream(path, std::ios::binary).write(bytes.data(), 4096);
  try {
    loadAccessFile(path, "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_NE(e.description().find(path), std::string::npos) << e.description();
  }
}

namespace {

// nwind.mdb with the given bytes overwritten, written to dir.
std::string damagedNwind(const TempDir& dir, const std::vector<std::pair<size_t, unsigned char>>& changes,
                         const std::string& name = "damaged.mdb") {
  auto bytes = fileBytes((varsentix::testing::sharedDataDir() / "nwind.mdb").string());
  for (const auto& [offset, value] : changes) bytes.at(offset) = static_cast<char>(value);
  std::string path = dir.file(name);
  std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return path;
}

}  // namespace

// One byte of a table definition makes libmdb give up reading the table's indexes and leave
// them missing; the loader must not walk them.
TEST(JetLoader, ATableWhoseIndexesCannotBeReadFailsWithAnError) {
  TempDir dir;
  for (auto change : {std::pair<size_t, unsigned char>{432159, 0xE5}, {1126429, 0x56}}) {
    std::string path = damagedNwind(dir, {change}, "index" + std::to_string(change.first) + ".mdb");
    try {
      loadAccessFile(path, "");
      FAIL() << "no error for the byte at " << change.first;
    } catch (const vb::VBError& e) {
      EXPECT_EQ(e.number(), vb::errnum::ProviderError);
      EXPECT_NE(e.description().find("Cannot read the indexes of the table"), std::string::npos)
          << e.description();
      EXPECT_NE(e.description().find(path), std::string::npos) << e.description();
    }
  }
}

// Damaged table definitions, chosen by a fixed sequence: each load ends with the file loaded or
// with the system's own error, never with a crash or another exception.
TEST(JetLoader, DamagedTableDefinitionsEndInLoadOrError) {
  TempDir dir;
  auto original = fileBytes((varsentix::testing::sharedDataDir() / "nwind.mdb").string());
  constexpr size_t kPage = 2048;  // JET3
  std::vector<size_t> definitionPages;
  for (size_t page = 0; page * kPage < original.size(); ++page)
    if (original[page * kPage] == 0x02) definitionPages.push_back(page);
  ASSERT_FALSE(definitionPages.empty());
  uint32_t state = 12345;
  auto next = [&] { return state = state * 1103515245u + 12345u, state >> 8; };
  for (int round = 0; round < 25; ++round) {
    std::vector<std::pair<size_t, unsigned char>> changes;
    for (int k = 0; k < 3; ++k) {
      size_t page = definitionPages[next() % definitionPages.size()];
      changes.emplace_back(page * kPage + next() % kPage, static_cast<unsigned char>(next()));
    }
    std::string path = damagedNwind(dir, changes);
    try {
      loadAccessFile(path, "");
    } catch (const vb::VBError&) {
      // a clear error is an answer too
    }
    std::filesystem::remove(path);
  }
}

TEST(JetLoader, PasswordProtectedFileNeedsItsPassword) {
  TempDir dir;
  std::string path = copySample(dir, "nwind.mdb");
  varsentix::testing::setJet3Password(path, "Geheim");
  try {
    loadAccessFile(path, "");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderError);
    EXPECT_NE(e.description().find("Not a valid password"), std::string::npos);
    EXPECT_NE(e.description().find(path), std::string::npos);
  }
  EXPECT_THROW(loadAccessFile(path, "geheim"), vb::VBError);
  auto loaded = loadAccessFile(path, "Geheim");
  EXPECT_EQ(scalar(loaded.db.get(), "SELECT count(*) FROM Orders"), "830");
}

TEST(JetLoader, FilesWithoutPasswordOpenWithOrWithoutOne) {
  TempDir dir;
  EXPECT_NO_THROW(loadAccessFile(copySample(dir, "DateTestDatabase.mdb"), ""));
  EXPECT_NO_THROW(loadAccessFile(copySample(dir, "ASampleDatabase.accdb"), ""));
  EXPECT_NO_THROW(loadAccessFile(copySample(dir, "nwind.mdb"), "unused"));
}

TEST(AccessDates, WholeDaysCountFromTheLastDayOf1899) {
  EXPECT_EQ(accessDateToDateTime(0.0).toText(), "1899-12-30 00:00:00");
  EXPECT_EQ(accessDateToDateTime(35250.0).toText(), "1996-07-04 00:00:00");
  EXPECT_EQ(accessDateToDateTime(2958465.0).toText(), "9999-12-31 00:00:00");
  EXPECT_EQ(accessDateToDateTime(-657434.0).toText(), "0100-01-01 00:00:00");
}

TEST(AccessDates, TheFractionIsTheTimeOfDayOnBothSidesOfDayZero) {
  EXPECT_EQ(accessDateToDateTime(35250.75).toText(), "1996-07-04 18:00:00");
  EXPECT_EQ(accessDateToDateTime(-1.25).toText(), "1899-12-29 06:00:00");
  EXPECT_EQ(accessDateToDateTime(0.5).toText(), "1899-12-30 12:00:00");
  // 08:00 is not exact in binary: rounded to the second, not cut.
  EXPECT_EQ(accessDateToDateTime(1.0 / 3.0).toText(), "1899-12-30 08:00:00");
  EXPECT_EQ(accessDateToDateTime(35250.0 + 86399.9999 / 86400.0).toText(), "1996-07-05 00:00:00");
}

}  // namespace

// Found by fuzzing: a damaged date value converted to an integer outside its range.
TEST(AccessDates, AValueNoCalendarCanHoldIsAnErrorOfTheFile) {
  for (double value : {6.87196e+206, -1e300, std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN()}) {
    try {
      accessDateToDateTime(value);
      ADD_FAILURE() << value << " gave no error";
    } catch (const vb::VBError& e) {
      EXPECT_EQ(e.number(), vb::errnum::ProviderError);
      EXPECT_NE(e.description().find("out of range"), std::string::npos) << e.description();
    }
  }
  EXPECT_EQ(accessDateToDateTime(2958465.0).toText(), "9999-12-31 00:00:00");
}
