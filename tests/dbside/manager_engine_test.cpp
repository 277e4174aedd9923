// clsDBManager against every engine: connection and schema messages, keys, record queries, SQL
// statements and their execution, type names of fields, XML save, hostile input.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <fstream>
#include <iostream>
#include <memory>

#include "dbside/DbsideTestSupport.h"
#include "platform/ado/ConnectionString.h"
#include "dbside/EngineSupport.h"
#include "support/TempDir.h"
#include "varsentix/datasource/ModADO.h"
#include "varsentix/dbside/ModADOFields.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/dbside/clsDBManager.h"

using namespace varsentix::testing;
using varsentix::clsDBManager;
using varsentix::clsDBManagerTestAccess;
namespace vb = varsentix::vb;
namespace ado = varsentix::ado;
namespace ModADO = varsentix::ModADO;

namespace {

constexpr const char* kSuccess = "Successfully Completed";

class Manager : public ::testing::TestWithParam<Engine> {
 protected:
  // A fresh database: items(id, name) with two rows, parent/child with a foreign key, pairs with
  // a two-column key, loose without a key.
  std::unique_ptr<TestDatabase> makeDatabase() {
    auto db = makeTestDatabase(GetParam());
    if (!db) return db;
    db->exec("CREATE TABLE items (id INTEGER NOT NULL PRIMARY KEY, name VARCHAR(40))");
    db->exec("INSERT INTO items (id, name) VALUES (1, 'one')");
    db->exec("INSERT INTO items (id, name) VALUES (2, 'O''Brien')");
    db->exec("CREATE TABLE parent (id INTEGER NOT NULL PRIMARY KEY, label VARCHAR(20))");
    db->exec("CREATE TABLE child (id INTEGER NOT NULL PRIMARY KEY, parent_id INTEGER, "
             "FOREIGN KEY (parent_id) REFERENCES parent (id))");
    db->exec("CREATE TABLE pairs (a INTEGER NOT NULL, b INTEGER NOT NULL, c VARCHAR(10), PRIMARY KEY (a, b))");
    db->exec("CREATE TABLE loose (x INTEGER, y VARCHAR(10))");
    return db;
  }
  // A manager connected to db.
  static std::unique_ptr<clsDBManager> connected(const TestDatabase& db) {
    auto m = std::make_unique<clsDBManager>();
    m->setConnectionString(db.connectionString());
    m->openDatabaseConnection();
    EXPECT_EQ(m->getReturnConnectionMessage(), std::string(" ") + kSuccess + "||");
    return m;
  }
  static vb::VBError connectFailure(const std::string& cs) {
    auto failure = failureOf([&] { vb::Ref<ado::Connection>::make()->Open(cs, "", "", -1); });
    if (!failure) ADD_FAILURE() << "the connection string opened: " << cs;
    return failure.value_or(vb::VBError(0, "", ""));
  }
  static vb::VBError queryFailure(const std::string& cs, const std::string& sql) {
    auto connection = vb::Ref<ado::Connection>::make();
    connection->Open(cs);
    auto failure = failureOf([&] {
      vb::Ref<ado::Recordset>::make()->Open(sql, connection, ado::adOpenDynamic, ado::adLockOptimistic, ado::adCmdText);
    });
    if (!failure) ADD_FAILURE() << "the query opened: " << sql;
    return failure.value_or(vb::VBError(0, "", ""));
  }
  static std::string messageTwo(const vb::VBError& e, const std::string& cs) {
    return numberAndDescription(e) +
           " #2 Error occurred when attempting to open connection using the following connection string  " + varsentix::ado::detail::ConnectionString::maskPasswords(cs) + " ||";
  }
  static std::string messageThree(const vb::VBError& e, const std::string& sql) {
    return numberAndDescription(e) + " #3 Error occured when attempting to open table using the following SQL" + sql +
           " ||";
  }
};

#define FRESH_DATABASE(db)  \
  auto db = makeDatabase(); \
  if (!db) GTEST_SKIP() << "engine not available: " << engineName(GetParam())

// ---- Connection and table list ------------------------------------------------------------

TEST_P(Manager, TwoConnectionOpensLeaveBothOutcomes) {
  FRESH_DATABASE(db);
  clsDBManager m;
  m.setConnectionString(db->connectionString());
  EXPECT_FALSE(m.getIsAccess());
  m.openDatabaseConnection();
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(), " Successfully Completed|| Successfully Completed||");
  EXPECT_EQ(m.getDatabaseConnection()->State(), ado::adStateOpen);
}

TEST_P(Manager, FailingConnectionAppendsMessageTwoAndTwoBars) {
  FRESH_DATABASE(db);
  const std::string cs = unopenableConnectionString(*db);
  const auto expected = connectFailure(cs);
  EXPECT_NE(expected.number(), 0);
  EXPECT_FALSE(expected.description().empty());
  clsDBManager m;
  m.setConnectionString(cs);
  m.setReturnConnectionMessage("earlier");
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(), "earlier " + messageTwo(expected, cs) + "||");
  EXPECT_EQ(m.getDatabaseConnection()->State(), ado::adStateClosed);
  // The buffer only grows.
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(),
            "earlier " + messageTwo(expected, cs) + "|| " + messageTwo(connectFailure(cs), cs) + "||");
}

TEST_P(Manager, UnknownDataSourceNameAppendsMessageTwo) {
  FRESH_DATABASE(db);
  const std::string cs = unknownDsnConnectionString();
  const auto expected = connectFailure(cs);
  clsDBManager m;
  m.setConnectionString(cs);
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(), " " + messageTwo(expected, cs) + "||");
  // A later schema open fails on the closed connection with message #5, appended right after
  // the two bars.
  const auto schemaFailure = failureOf([] { vb::Ref<ado::Connection>::make()->OpenSchema(ado::adSchemaTables); });
  ASSERT_TRUE(schemaFailure);
  m.openDatabaseSchema();
  EXPECT_EQ(m.getReturnConnectionMessage(),
            " " + messageTwo(expected, cs) + "||" + numberAndDescription(*schemaFailure) +
                " #5 Error when attempting to open the database schema for the following connection :" + varsentix::ado::detail::ConnectionString::maskPasswords(cs) + " ||");
}

TEST_P(Manager, SchemaListsTheTables) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->openDatabaseSchema();
  EXPECT_EQ(m->getReturnConnectionMessage(), " Successfully Completed||");
  auto schema = m->getDatabaseSchema();
  ASSERT_EQ(schema->State(), ado::adStateOpen);
  std::set<std::string> names;
  for (schema->MoveFirst(); !schema->isEOF(); schema->MoveNext()) {
    names.insert(schema->field("TABLE_NAME").Value().toText());
    (void)schema->field("TABLE_TYPE").Value();
    (void)schema->field("TABLE_SCHEMA").Value();
    (void)schema->field("TABLE_CATALOG").Value();
  }
  for (const char* table : {"items", "parent", "child", "pairs", "loose"}) EXPECT_EQ(names.count(table), 1u) << table;
}

TEST_P(Manager, SchemaOpenThatFailsKeepsTheOldListAndAppendsMessageFive) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->openDatabaseSchema();
  auto old = m->getDatabaseSchema();
  ASSERT_EQ(old->State(), ado::adStateOpen);
  // Break the session from outside: end the server session, or overwrite the file. The SQLite
  // ODBC driver answers its table list even from a damaged file, so there the connection is
  // closed instead and the record-set layer refuses the schema open.
  if (GetParam() == Engine::SQLiteOdbc) {
    m->closeConnection();
  } else if (const auto query = sessionIdQuery(GetParam()); !query.empty()) {
    m->openDataBaseRecordsFromQuery(query);
    const std::string id = m->getDatabaseRecords()->field(0).Value().toText();
    m->closeRecordSet();
    db->exec(endSessionStatement(GetParam(), id));
  } else {
    std::ofstream(databaseFile(*db), std::ios::binary | std::ios::trunc) << std::string(4096, 'x');
  }
  m->setReturnConnectionMessage("before");
  m->openDatabaseSchema();
  EXPECT_TRUE(m->getDatabaseSchema() == old);
  const std::string message = m->getReturnConnectionMessage();
  const std::string tail =
      " #5 Error when attempting to open the database schema for the following connection :" + varsentix::ado::detail::ConnectionString::maskPasswords(db->connectionString()) +
      " ||";
  ASSERT_GT(message.size(), tail.size() + 6) << message;
  EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
  // "before" + number + " " + description, with no blank before the number.
  const std::string failure = message.substr(6, message.size() - tail.size() - 6);
  const auto blank = failure.find(' ');
  ASSERT_NE(blank, std::string::npos) << message;
  EXPECT_NO_THROW(vb::CLng(failure.substr(0, blank))) << message;
  EXPECT_GT(failure.size(), blank + 1) << message;
  if (GetParam() == Engine::SQLiteOdbc) {
    const auto closed = failureOf([] { vb::Ref<ado::Connection>::make()->OpenSchema(ado::adSchemaTables); });
    ASSERT_TRUE(closed);
    EXPECT_EQ(failure, numberAndDescription(*closed));
  } else {
    // The engine's own failure, numbered as a provider failure.
    EXPECT_LT(vb::CLng(failure.substr(0, blank)), 0) << message;
  }
  std::cout << "schema failure on " << engineName(GetParam()) << ": " << failure << "\n";
}

// ---- Keys ------------------------------------------------------------------------------------

TEST_P(Manager, PrimaryKeyColumnOrNoPrimaryKeyDefined) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  EXPECT_EQ(m->getAccessPrimaryKey("items"), "id");
  EXPECT_EQ(m->getAccessPrimaryKey("loose"), "No primary key Defined");
  EXPECT_EQ(m->getAccessPrimaryKey("no_such_table"), "No primary key Defined");
}

TEST_P(Manager, TwoColumnPrimaryKeyGivesTheFirstColumnTheProviderReturns) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  auto rowset = m->getDatabaseConnection()->OpenSchema(ado::adSchemaPrimaryKeys, {vb::Variant(), vb::Variant(), "pairs"});
  ASSERT_FALSE(rowset->isEOF());
  const std::string first = rowset->field("COLUMN_NAME").Value().toText();
  rowset->MoveNext();
  ASSERT_FALSE(rowset->isEOF()) << "the key has two columns";
  EXPECT_EQ(m->getAccessPrimaryKey("pairs"), first);
  EXPECT_EQ(first, "a");
}

TEST_P(Manager, CatalogReadAsSchemaNumber) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  clsDBManagerTestAccess::storeTableCatalog(*m, "28");
  EXPECT_EQ(m->getAccessPrimaryKey("items"), "id");
  EXPECT_EQ(m->getAccessPrimaryKey("loose"), "No primary key Defined");
  clsDBManagerTestAccess::storeTableCatalog(*m, "Sales");
  auto failure = failureOf([&] { m->getAccessPrimaryKey("items"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 13);
  // A number that names another rowset asks that rowset (here the tables, which have no
  // COLUMN_NAME column).
  clsDBManagerTestAccess::storeTableCatalog(*m, "20");
  failure = failureOf([&] { m->getAccessPrimaryKey("items"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 3265);
}

TEST_P(Manager, ForeignKeyRowsetOfAReferredTable) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  auto rowset = m->getAccessForeignKey("parent");
  ASSERT_EQ(rowset->State(), ado::adStateOpen);
  ASSERT_FALSE(rowset->isEOF());
  EXPECT_EQ(rowset->field("FK_TABLE_NAME").Value().toText(), "child");
  EXPECT_EQ(rowset->field("FK_COLUMN_NAME").Value().toText(), "parent_id");
  EXPECT_EQ(rowset->field("PK_COLUMN_NAME").Value().toText(), "id");
  (void)rowset->field("FK_NAME");
}

TEST_P(Manager, ForeignKeyRowsetOfATableNobodyRefersToIsOpenAndEmpty) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  for (const char* table : {"items", "child", "no_such_table"}) {
    auto rowset = m->getAccessForeignKey(table);
    ASSERT_EQ(rowset->State(), ado::adStateOpen) << table;
    EXPECT_TRUE(rowset->isEOF()) << table;
  }
}

TEST_P(Manager, ForeignKeyOfAClosedConnectionIsAnUnopenedRecordSet) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->closeConnection();
  auto rowset = m->getAccessForeignKey("parent");
  EXPECT_EQ(rowset->State(), ado::adStateClosed);
}

// ---- Record queries ---------------------------------------------------------------------------

TEST_P(Manager, QueryOutcomesAppendWithBlankAndBars) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->setTableName("items");
  m->formatSQLClause();
  m->openDataBaseRecordsFromQuery(m->getSql());
  m->openSecondDataBaseRecordsFromQuery("Select * from [items] Where id = 2");
  EXPECT_EQ(m->getReturnSQLMessage(), " Successfully Completed || Successfully Completed ||");
  EXPECT_EQ(m->getDatabaseRecords()->State(), ado::adStateOpen);
  EXPECT_EQ(m->getDatabaseRecords2()->State(), ado::adStateOpen);
  EXPECT_EQ(m->getDatabaseRecords2()->field("name").Value().toText(), "O'Brien");
  m->closeRecordSet2();
  EXPECT_EQ(m->getDatabaseRecords2()->State(), ado::adStateClosed);
  m->openSecondDataBaseRecordsFromQuery("Select * from [items]");
  m->closeSecondConnection();
  EXPECT_EQ(m->getDatabaseRecords2()->State(), ado::adStateClosed);
  m->closeRecordSet();
  EXPECT_EQ(m->getDatabaseRecords()->State(), ado::adStateClosed);
  EXPECT_EQ(m->getDatabaseConnection()->State(), ado::adStateOpen);
}

TEST_P(Manager, QueryAgainstAMissingTableAppendsMessageThree) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  const std::string sql = "Select * From [no_such_table]";
  const auto expected = queryFailure(db->connectionString(), sql);
  m->openDataBaseRecordsFromQuery(sql);
  EXPECT_EQ(m->getReturnSQLMessage(), " " + messageThree(expected, sql) + " ||");
  m->openSecondDataBaseRecordsFromQuery(sql);
  EXPECT_EQ(m->getReturnSQLMessage(),
            " " + messageThree(expected, sql) + " || " + numberAndDescription(expected) +
                " #4 Error occured when attempting to open table using the following SQL" + sql + " || ||");
}

TEST_P(Manager, HostileTableNamesEndInMessageThreeAndChangeNothing) {
  FRESH_DATABASE(db);
  for (const std::string table : {"items]", "it's", "items; DROP TABLE items", "items]; DROP TABLE items; --"}) {
    auto m = connected(*db);
    m->setTableName(table);
    m->formatSQLClause();
    const std::string sql = m->getSql();
    const auto expected = queryFailure(db->connectionString(), sql);
    m->openDataBaseRecordsFromQuery(sql);
    EXPECT_EQ(m->getReturnSQLMessage(), " " + messageThree(expected, sql) + " ||") << table;
  }
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM items"), "2");
}

TEST_P(Manager, InsertStatementFromTheFirstRecordSet) {
  FRESH_DATABASE(db);
  db->exec("CREATE TABLE t (f INTEGER)");
  db->exec("INSERT INTO t (f) VALUES (42)");
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [t]");
  m->formatInsertClauseFromRecordSet("t");
  EXPECT_EQ(m->getSql(), "insert into 't'(f)VALUES (42)");
  EXPECT_EQ(m->getWhereClause(), "VALUES (42)");
  m->closeRecordSet();
  m->openDataBaseRecordsFromQuery("Select * from [items] Where id = 2");
  m->formatInsertClauseFromRecordSet("items");
  EXPECT_EQ(m->getSql(), "insert into 'items'(id,name)VALUES (2,'O''Brien')");
}

TEST_P(Manager, InsertStatementWithTheTableInApostrophesIsRefusedByTheEngineWithMessageSix) {
  FRESH_DATABASE(db);
  db->exec("CREATE TABLE copyto (id INTEGER, name VARCHAR(40))");
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * from [items] Where id = 1");
  m->formatInsertClauseFromRecordSet("copyto");
  const std::string sql = m->getSql();
  ASSERT_EQ(sql, "insert into 'copyto'(id,name)VALUES (1,'one')");
  const bool executed = m->executeSQL();
  if (executed) {
    // An engine that takes a string literal as a table name (SQLite does) runs it.
    EXPECT_EQ(m->getReturnSQLMessage(), kSuccess);
    EXPECT_EQ(db->scalar("SELECT name FROM copyto WHERE id = 1"), "one");
  } else {
    const std::string message = m->getReturnSQLMessage();
    const std::string tail = " #6 Application attempted using the following SQL " + sql + " ||";
    ASSERT_GT(message.size(), tail.size());
    EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
    EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM copyto"), "0");
  }
  EXPECT_EQ(executed, GetParam() == Engine::SQLite || GetParam() == Engine::SQLiteOdbc);
}

TEST_P(Manager, InsertStatementOfANullValueFails) {
  FRESH_DATABASE(db);
  db->exec("INSERT INTO loose (x, y) VALUES (1, NULL)");
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [loose]");
  auto failure = failureOf([&] { m->formatInsertClauseFromRecordSet("loose"); });
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number(), 94);
}

TEST_P(Manager, ExecuteSqlReplacesTheMessage) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->setReturnSQLMessage("earlier text ||");
  m->setSQL("Update [items] Set [name] = 'uno' Where [id] = 1");
  EXPECT_TRUE(m->executeSQL());
  EXPECT_EQ(m->getReturnSQLMessage(), kSuccess);
  EXPECT_EQ(db->scalar("SELECT name FROM items WHERE id = 1"), "uno");
}

TEST_P(Manager, ExecuteSqlAgainstAMissingTableGivesMessageSix) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  const std::string sql = "Delete From [no_such_table]";
  auto expected = failureOf([&] { m->getDatabaseConnection()->Execute(sql, nullptr, -1); });
  ASSERT_TRUE(expected);
  m->setReturnSQLMessage("earlier");
  m->setSQL(sql);
  EXPECT_FALSE(m->executeSQL());
  EXPECT_EQ(m->getReturnSQLMessage(),
            numberAndDescription(*expected) + " #6 Application attempted using the following SQL " + sql + " ||");
  EXPECT_TRUE(m->executeSQL() == false);
}

TEST_P(Manager, ExecuteSqlRefusesASecondStatement) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->setSQL("Delete From [items] Where [id] = 1; Delete From [items]");
  EXPECT_FALSE(m->executeSQL());
  EXPECT_NE(m->getReturnSQLMessage().find(" #6 Application attempted using the following SQL "), std::string::npos);
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM items"), "2");
}

TEST_P(Manager, WhereClauseFromRecordNumberSelectsTheRecordAgain) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->setTableName("items");
  m->setCurrentRecordNumber(5);
  m->getResults()->Add(valueRow("items", 5, "id", "3", "2"));
  m->getResults()->Add(valueRow("items", 5, "name", "202", "O'Brien"));
  m->formatWhereClauseFromRecordNumber();
  EXPECT_EQ(m->getWhereClause(), " Where id = 2 AND name LIKE 'O''Brien'");
  m->createSQLStatement(m->getWhereClause(), "items");
  m->openDataBaseRecordsFromQuery(m->getSql());
  EXPECT_EQ(m->getReturnSQLMessage(), " Successfully Completed ||");
  auto rs = m->getDatabaseRecords();
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("id").Value().toText(), "2");
}

TEST_P(Manager, LiteralsOfTheFieldsOfARecord) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * from [items] Where id = 2");
  auto rs = m->getDatabaseRecords();
  EXPECT_EQ(m->formatWhereClauseFromRecordSet(rs, 0), "2");
  EXPECT_EQ(m->formatWhereClauseFromRecordSet(rs, 1), "'O''Brien'");
  EXPECT_EQ(failureOf([&] { m->formatWhereClauseFromRecordSet(rs, 2); })->number(), 3265);
  // The record set is not moved.
  EXPECT_EQ(rs->field("id").Value().toText(), "2");
}

TEST_P(Manager, DateLiteralIsQuotedOutsideJet) {
  FRESH_DATABASE(db);
  const char* type = GetParam() == Engine::PostgreSQL ? "TIMESTAMP" : (GetParam() == Engine::MariaDB ? "DATETIME" : "TIMESTAMP");
  db->exec(std::string("CREATE TABLE dated (d ") + type + ")");
  db->exec("INSERT INTO dated (d) VALUES ('2024-01-31 10:20:30')");
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [dated]");
  auto rs = m->getDatabaseRecords();
  const auto code = rs->field(0).Type();
  const std::string value = rs->field(0).Value().toText();
  const std::string literal = m->formatWhereClauseFromRecordSet(rs, 0);
  if (code == ado::adDate || code == ado::adDBDate || code == ado::adDBTime || code == ado::adDBTimeStamp) {
    EXPECT_EQ(literal, "'" + value + "'");
    m->setIsAccess(true);
    EXPECT_EQ(m->formatWhereClauseFromRecordSet(rs, 0), "#" + value + "#");
  } else {
    ADD_FAILURE() << "a timestamp column reports type " << code;
  }
  EXPECT_EQ(value, "2024-01-31 10:20:30");
}

TEST_P(Manager, FieldTypeNamesAndComparability) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [items]");
  auto rs = m->getDatabaseRecords();
  for (int16_t i = 0; i < 2; ++i) {
    const auto code = static_cast<int16_t>(rs->field(i).Type());
    EXPECT_EQ(ModADO::getFieldTypeName(*m, i), ModADO::fieldTypeNameOfCode(code));
    EXPECT_EQ(ModADO::isComparableFieldType(*m, i), ModADO::isComparableTypeCode(code));
  }
  EXPECT_EQ(ModADO::getFieldTypeName(*m, 0), "4_byte_signed_integer");
  EXPECT_TRUE(ModADO::isComparableFieldType(*m, 0));
  // Outside the fields, or without an open record set, the failure reaches the caller.
  EXPECT_TRUE(failureOf([&] { ModADO::getFieldTypeName(*m, 2); }));
  EXPECT_TRUE(failureOf([&] { ModADO::isComparableFieldType(*m, -1); }));
  m->closeRecordSet();
  EXPECT_TRUE(failureOf([&] { ModADO::getFieldTypeName(*m, 0); }));
}

TEST_P(Manager, TypeNamesOfTextNumericAndBinaryFields) {
  FRESH_DATABASE(db);
  const std::string blob = GetParam() == Engine::PostgreSQL ? "BYTEA" : (GetParam() == Engine::MariaDB ? "LONGBLOB" : "BLOB");
  db->exec("CREATE TABLE typed (v VARCHAR(40), n NUMERIC(10,2), b " + blob + ")");
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [typed]");
  if (GetParam() == Engine::SQLiteOdbc) {
    // The SQLite ODBC driver reports narrow text and fixed binary; the provider reads NUMERIC's
    // declared type from SQLite, so it is the exact numeric type, as on the SQLite provider.
    EXPECT_EQ(ModADO::getFieldTypeName(*m, 0), "String");
    EXPECT_EQ(ModADO::getFieldTypeName(*m, 1), "Exact_numeric_value_with_a_fixed_precision_and_scale");
    EXPECT_EQ(ModADO::getFieldTypeName(*m, 2), "Binary");
    EXPECT_TRUE(ModADO::isComparableFieldType(*m, 0));
    EXPECT_FALSE(ModADO::isComparableFieldType(*m, 1));
    EXPECT_FALSE(ModADO::isComparableFieldType(*m, 2));
    return;
  }
  ASSERT_EQ(m->getDatabaseRecords()->field(0).Type(), ado::adVarWChar);
  ASSERT_EQ(m->getDatabaseRecords()->field(1).Type(), ado::adNumeric);
  ASSERT_EQ(m->getDatabaseRecords()->field(2).Type(), ado::adLongVarBinary);
  // A field of type 202 has its own name; the bare code names it like code 8.
  EXPECT_EQ(ModADO::getFieldTypeName(*m, 0), "Null_terminated_unicode_character_string");
  EXPECT_EQ(ModADO::getDataTypeName(202), "Null_terminated_character_string");
  EXPECT_TRUE(ModADO::isComparableFieldType(*m, 0));
  EXPECT_EQ(ModADO::getFieldTypeName(*m, 1), "Exact_numeric_value_with_a_fixed_precision_and_scale");
  EXPECT_FALSE(ModADO::isComparableFieldType(*m, 1));
  EXPECT_EQ(ModADO::getFieldTypeName(*m, 2), "Long_Binary_Value");
  EXPECT_FALSE(ModADO::isComparableFieldType(*m, 2));
}

TEST_P(Manager, SaveToXmlWritesTheFirstRecordSet) {
  FRESH_DATABASE(db);
  TempDir dir;
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [items]");
  m->saveToXML(dir.file("items.xml"));
  ASSERT_TRUE(std::filesystem::exists(dir.file("items.xml")));
  std::ifstream in(dir.file("items.xml"));
  const std::string xml((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(xml.find("O&apos;Brien"), std::string::npos);
  EXPECT_NE(xml.find("rs:data"), std::string::npos);
}

TEST_P(Manager, SaveToXmlToAPathThatCannotBeWrittenReturnsAndWritesNothing) {
  FRESH_DATABASE(db);
  TempDir dir;
  auto m = connected(*db);
  m->openDataBaseRecordsFromQuery("Select * From [items]");
  m->saveToXML(dir.file("no-such-folder/items.xml"));
  m->saveToXML("");
  EXPECT_FALSE(std::filesystem::exists(dir.file("no-such-folder")));
  EXPECT_EQ(m->getReturnSQLMessage(), " Successfully Completed ||");
}

TEST_P(Manager, CloseConnectionTwiceIsHarmless) {
  FRESH_DATABASE(db);
  auto m = connected(*db);
  m->closeConnection();
  EXPECT_EQ(m->getDatabaseConnection()->State(), ado::adStateClosed);
  m->closeConnection();
  m->openDatabaseConnection();
  EXPECT_EQ(m->getReturnConnectionMessage(), " Successfully Completed|| Successfully Completed||");
}

INSTANTIATE_TEST_SUITE_P(Engines, Manager, ::testing::ValuesIn(allEngines()), EngineParamName());

}  // namespace

// ---- Bad input without a server ------------------------------------------------------------

TEST(ManagerBadInput, EmptyConnectionStringEndsInAMessage) {
  auto expected = failureOf([] { vb::Ref<ado::Connection>::make()->Open("", "", "", -1); });
  ASSERT_TRUE(expected) << "an empty connection string opened";
  clsDBManager m;
  m.setConnectionString("");
  m.openDatabaseConnection();
  EXPECT_EQ(m.getReturnConnectionMessage(),
            " " + numberAndDescription(*expected) +
                " #2 Error occurred when attempting to open connection using the following connection string   ||||");
}

TEST(ManagerBadInput, ANonDatabaseFileIsRefusedWhenTheConnectionOpens) {
  TempDir dir;
  const std::string file = dir.file("notes.txt");
  std::ofstream(file) << std::string(2048, 'n') << "\nthis is not a database\n";
  const auto schemaFailure = failureOf([] { vb::Ref<ado::Connection>::make()->OpenSchema(ado::adSchemaTables); });
  ASSERT_TRUE(schemaFailure);
  for (const std::string provider : {"Provider=SQLite;Data Source=", "Provider=Microsoft.Jet.OLEDB.4.0;Data Source="}) {
    const std::string cs = provider + file;
    const auto expected = failureOf([&] { vb::Ref<ado::Connection>::make()->Open(cs, "", "", -1); });
    ASSERT_TRUE(expected) << cs;
    clsDBManager m;
    m.setConnectionString(cs);
    m.openDatabaseConnection();
    m.openDatabaseSchema();
    EXPECT_EQ(m.getReturnConnectionMessage(),
              " " + numberAndDescription(*expected) +
                  " #2 Error occurred when attempting to open connection using the following connection string  " + varsentix::ado::detail::ConnectionString::maskPasswords(cs) +
                  " ||||" + numberAndDescription(*schemaFailure) +
                  " #5 Error when attempting to open the database schema for the following connection :" + varsentix::ado::detail::ConnectionString::maskPasswords(cs) + " ||");
    EXPECT_EQ(m.getDatabaseSchema()->State(), ado::adStateClosed);
  }
}

TEST(ManagerBadInput, ANonDatabaseFileThroughTheSqliteOdbcDriverIsRefusedByTheFirstQuery) {
  if (!engineAvailable(Engine::SQLiteOdbc)) GTEST_SKIP() << "engine not available: SQLiteOdbc";
  TempDir dir;
  const std::string file = dir.file("notes.txt");
  std::ofstream(file) << std::string(2048, 'n') << "\nthis is not a database\n";
  const std::string cs = "Provider=MSDASQL;Driver={SQLite3};Database=" + file;
  clsDBManager m;
  m.setConnectionString(cs);
  m.openDatabaseConnection();
  // The driver opens the file lazily: connection and table list succeed.
  EXPECT_EQ(m.getReturnConnectionMessage(), " Successfully Completed||");
  m.openDataBaseRecordsFromQuery("Select * From [notes]");
  const std::string message = m.getReturnSQLMessage();
  EXPECT_NE(message.find("file is not a database"), std::string::npos) << message;
  const std::string tail = " #3 Error occured when attempting to open table using the following SQLSelect * From [notes] || ||";
  ASSERT_GT(message.size(), tail.size());
  EXPECT_EQ(message.substr(message.size() - tail.size()), tail);
}

TEST(ManagerOnPostgreSQL, GuidIsWrittenBare) {
  VARSENTIX_TEST_DATABASE(db, Engine::PostgreSQL);
  db->exec("CREATE TABLE guids (g UUID)");
  db->exec("INSERT INTO guids (g) VALUES ('6f9619ff-8b86-d011-b42d-00c04fc964ff')");
  clsDBManager m;
  m.setConnectionString(db->connectionString());
  m.openDatabaseConnection();
  m.openDataBaseRecordsFromQuery("Select * From [guids]");
  ASSERT_EQ(m.getReturnSQLMessage(), " Successfully Completed ||");
  auto rs = m.getDatabaseRecords();
  ASSERT_EQ(rs->field(0).Type(), ado::adGUID);
  const std::string value = rs->field(0).Value().toText();
  EXPECT_EQ(m.formatWhereClauseFromRecordSet(rs, 0), value);
  EXPECT_EQ(value.find('\''), std::string::npos);
  EXPECT_EQ(ModADO::getFieldTypeName(m, 0), "Globally_unique_identifier");
}
