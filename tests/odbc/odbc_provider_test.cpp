// The ODBC provider (Provider=MSDASQL) on the SQLite ODBC driver, PostgreSQL (psqlODBC) and
// MariaDB (Connector/ODBC): open/close, types and values, SQL dialect, errors and writes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "odbc/OdbcTestSupport.h"
#include "platform/ado/Provider.h"
#include "support/Engines.h"
#include "varsentix/platform/ado/Connection.h"
#include "varsentix/platform/ado/Recordset.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::testing::odbc {
namespace {

using ado::Connection;
using ado::Recordset;
using vb::Ref;
using vb::Variant;

class OdbcProviderTest : public ::testing::TestWithParam<Engine> {
 protected:
  Engine engine() const { return GetParam(); }
  std::string ddl(const std::string& sqlite, const std::string& pg, const std::string& maria) const {
    return pick(engine(), sqlite, pg, maria);
  }
  static Ref<Connection> open(const TestDatabase& db) {
    auto connection = Ref<Connection>::make();
    connection->Open(db.connectionString());
    return connection;
  }
  static Ref<Recordset> openRs(const Ref<Connection>& connection, const std::string& source,
                               int32_t options = ado::adCmdText,
                               ado::LockTypeEnum lock = ado::adLockReadOnly) {
    auto rs = Ref<Recordset>::make();
    rs->Open(source, connection, ado::adOpenForwardOnly, lock, options);
    return rs;
  }
};

// ---- connection ---------------------------------------------------------------------------

TEST_P(OdbcProviderTest, OpensAndClosesThroughTheProvider) {
  VARSENTIX_TEST_DATABASE(db, engine());
  auto connection = Ref<Connection>::make();
  EXPECT_EQ(connection->State(), ado::adStateClosed);
  connection->Open(db->connectionString());
  EXPECT_EQ(connection->State(), ado::adStateOpen);
  EXPECT_EQ(connection->session().providerName(), "MSDASQL");
  connection->Close();
  EXPECT_EQ(connection->State(), ado::adStateClosed);
}

TEST_P(OdbcProviderTest, PersistSecurityInfoAndProviderVersionAreAccepted) {
  VARSENTIX_TEST_DATABASE(db, engine());
  std::string text = db->connectionString();
  text.replace(0, std::string("Provider=MSDASQL;").size(),
               "Provider=MSDASQL.1;Persist Security Info=False;");
  auto connection = Ref<Connection>::make();
  connection->Open(text);
  EXPECT_EQ(connection->State(), ado::adStateOpen);
}

// ---- types, sizes and values ----------------------------------------------------------------

struct Expected {
  const char* field;
  ado::DataTypeEnum type;
  int32_t definedSize;  // -1: not checked
  const char* text;     // nullptr: Null
};

TEST_P(OdbcProviderTest, TypesSizesAndTextForms) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec(ddl(
      "CREATE TABLE t (id INTEGER PRIMARY KEY, si SMALLINT, bi BIGINT, dec NUMERIC(12,3), "
      "r REAL, d DOUBLE, vc VARCHAR(40), ch CHAR(5), dt DATE, ts TIMESTAMP, bin BLOB, nn VARCHAR(10))",
      "CREATE TABLE t (id INTEGER PRIMARY KEY, si SMALLINT, bi BIGINT, dec NUMERIC(12,3), "
      "r REAL, d DOUBLE PRECISION, vc VARCHAR(40), ch CHAR(5), dt DATE, ts TIMESTAMP(6), "
      "bin BYTEA, nn VARCHAR(10))",
      "CREATE TABLE t (id INTEGER PRIMARY KEY, si SMALLINT, bi BIGINT, `dec` DECIMAL(12,3), "
      "r FLOAT, d DOUBLE, vc VARCHAR(40), ch CHAR(5), dt DATE, ts DATETIME(6), "
      "bin VARBINARY(16), nn VARCHAR(10))"));
  db->exec(ddl(
      "INSERT INTO t VALUES (1, -32768, 9007199254740993, 12345.678, 1.5, 0.1, 'Zoë 北京', 'ab', "
      "'2024-02-29', '2024-02-29 13:45:56.123456', X'00FF10', NULL)",
      "INSERT INTO t VALUES (1, -32768, 9007199254740993, 12345.678, 1.5, 0.1, 'Zoë 北京', 'ab', "
      "'2024-02-29', '2024-02-29 13:45:56.123456', '\\x00ff10', NULL)",
      "INSERT INTO t VALUES (1, -32768, 9007199254740993, 12345.678, 1.5, 0.1, 'Zoë 北京', 'ab', "
      "'2024-02-29', '2024-02-29 13:45:56.123456', X'00FF10', NULL)"));
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT * FROM [t]");
  ASSERT_FALSE(rs->isEOF());
  const bool narrow = engine() == Engine::SQLiteOdbc;  // the SQLite driver has no wide text
  const ado::DataTypeEnum varText = narrow ? ado::adVarChar : ado::adVarWChar;
  const ado::DataTypeEnum fixedText = narrow ? ado::adChar : ado::adWChar;
  const std::string chText = engine() == Engine::PostgreSQL ? "ab   " : "ab";  // CHAR pads on PostgreSQL
  // The SQLite driver describes columns by its own rules: REAL as SQL_DOUBLE, CHAR as
  // SQL_VARCHAR, BLOB as SQL_BINARY; the provider reports what the driver describes, except for
  // NUMERIC(p,s), which the driver turns into a double and which stays exact here.
  const bool sqlite = engine() == Engine::SQLiteOdbc;
  const ado::DataTypeEnum binType = engine() == Engine::MariaDB ? ado::adVarBinary
                                    : sqlite                    ? ado::adBinary
                                                                : ado::adLongVarBinary;
  std::vector<Expected> expected = {
      {"id", ado::adInteger, 4, "1"},
      {"si", ado::adSmallInt, 2, "-32768"},
      {"bi", ado::adBigInt, 8, "9007199254740993"},
      {"dec", ado::adNumeric, 19, "12345.678"},
      {"r", sqlite ? ado::adDouble : ado::adSingle, sqlite ? 8 : 4, "1.5"},
      {"d", ado::adDouble, 8, "0.1"},
      {"vc", varText, 40, "Zoë 北京"},
      {"ch", sqlite ? ado::adVarChar : fixedText, 5, chText.c_str()},
      {"dt", ado::adDBDate, 6, "2024-02-29"},
      {"ts", ado::adDBTimeStamp, 16, "2024-02-29 13:45:56.123456"},
      {"bin", binType, -1, "00FF10"},
      {"nn", varText, 10, nullptr},
  };
  ASSERT_EQ(rs->getFields().Count(), static_cast<int32_t>(expected.size()));
  for (const auto& e : expected) {
    SCOPED_TRACE(e.field);
    auto field = rs->field(e.field);
    EXPECT_EQ(field.Type(), e.type);
    if (e.definedSize >= 0) {
      EXPECT_EQ(field.DefinedSize(), e.definedSize);
    }
    Variant value = field.Value();
    if (e.text == nullptr) {
      EXPECT_TRUE(value.isNull());
      EXPECT_EQ(field.ActualSize(), 0);
    } else {
      ASSERT_FALSE(value.isNull());
      EXPECT_EQ(value.toText(), e.text);
    }
  }
  EXPECT_EQ(rs->field("dec").Precision(), 12);
  EXPECT_EQ(rs->field("dec").NumericScale(), 3);
  EXPECT_EQ(rs->field("dec").Value().type(), vb::VarType::Decimal);
  EXPECT_EQ(rs->field("ts").Value().type(), vb::VarType::Date);
  EXPECT_EQ(rs->field("ts").Value().asDateTime().nanosecond, 123456000u);
  EXPECT_EQ(rs->field("bin").Value().asBytes(), (vb::Bytes{0x00, 0xFF, 0x10}));
  EXPECT_EQ(rs->field("bi").Value().type(), vb::VarType::LongLong);
  EXPECT_EQ(rs->field("id").Value().type(), vb::VarType::Long);
  EXPECT_EQ(rs->field("si").Value().type(), vb::VarType::Integer);
  rs->MoveNext();
  EXPECT_TRUE(rs->isEOF());
}

TEST_P(OdbcProviderTest, BooleansAreBooleans) {
  VARSENTIX_TEST_DATABASE(db, engine());
  if (engine() == Engine::SQLiteOdbc) {
    db->exec("CREATE TABLE b (id INTEGER PRIMARY KEY, flag BIT)");
    db->exec("INSERT INTO b VALUES (1, 1), (2, 0), (3, NULL)");
  } else if (engine() == Engine::PostgreSQL) {
    db->exec("CREATE TABLE b (id INTEGER PRIMARY KEY, flag BOOLEAN)");
    db->exec("INSERT INTO b VALUES (1, TRUE), (2, FALSE), (3, NULL)");
  } else {
    db->exec("CREATE TABLE b (id INTEGER PRIMARY KEY, flag BIT(1))");
    db->exec("INSERT INTO b VALUES (1, 1), (2, 0), (3, NULL)");
  }
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT flag FROM b ORDER BY id");
  EXPECT_EQ(rs->field("flag").Type(), ado::adBoolean);
  EXPECT_EQ(rs->field("flag").DefinedSize(), 2);
  EXPECT_EQ(rs->field("flag").Value().toText(), "True");
  rs->MoveNext();
  EXPECT_EQ(rs->field("flag").Value().toText(), "False");
  rs->MoveNext();
  EXPECT_TRUE(rs->field("flag").Value().isNull());
}

TEST_P(OdbcProviderTest, LongTextAndBinaryArriveWholeInPieces) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec(ddl("CREATE TABLE l (id INTEGER PRIMARY KEY, memo TEXT, data BLOB)",
               "CREATE TABLE l (id INTEGER PRIMARY KEY, memo TEXT, data BYTEA)",
               "CREATE TABLE l (id INTEGER PRIMARY KEY, memo LONGTEXT, data LONGBLOB)"));
  // 100,000 characters, two bytes each in UTF-8, and 100,000 bytes of binary.
  db->exec(ddl("INSERT INTO l VALUES (1, replace(hex(zeroblob(50000)), '00', 'éß'), zeroblob(100000))",
               "INSERT INTO l VALUES (1, repeat('éß', 50000), decode(repeat('00', 100000), 'hex'))",
               "INSERT INTO l VALUES (1, REPEAT('éß', 50000), REPEAT(X'00', 100000))"));
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT memo, data FROM l");
  std::string memo = rs->field("memo").Value().toText();
  EXPECT_EQ(memo.size(), 200000u);
  EXPECT_EQ(memo.substr(0, 4), "éß");
  EXPECT_EQ(memo.substr(memo.size() - 4), "éß");
  EXPECT_EQ(rs->field("memo").ActualSize(), 200000);
  EXPECT_EQ(rs->field("memo").Type(),
            engine() == Engine::SQLiteOdbc ? ado::adLongVarChar : ado::adLongVarWChar);
  EXPECT_EQ(rs->field("data").Value().asBytes().size(), 100000u);
  EXPECT_EQ(rs->field("data").Type(),
            engine() == Engine::SQLiteOdbc ? ado::adBinary : ado::adLongVarBinary);
}

// The servers keep NUMERIC exactly (SQLite stores it as a double, so it has no place here).
class OdbcServerProviderTest : public OdbcProviderTest {};

TEST_P(OdbcServerProviderTest, ExactDecimalsKeepEveryDigit) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE n (id INTEGER PRIMARY KEY, v NUMERIC(30,6))");
  db->exec("INSERT INTO n VALUES (1, 123456789012345678901234.123456), (2, -0.5), (3, 0)");
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT v FROM n ORDER BY id");
  EXPECT_EQ(rs->field("v").Value().toText(), "123456789012345678901234.123456");
  rs->MoveNext();
  EXPECT_EQ(rs->field("v").Value().toText(), "-0.500000");
  rs->MoveNext();
  EXPECT_EQ(rs->field("v").Value().toText(), "0.000000");
}

// ---- dialect --------------------------------------------------------------------------------

TEST_P(OdbcProviderTest, BracketedIdentifiersWithBlankAndNonAsciiLetter) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec(ddl("CREATE TABLE \"Order Details\" (\"Größe\" INTEGER, \"Unit Price\" INTEGER)",
               "CREATE TABLE \"Order Details\" (\"Größe\" INTEGER, \"Unit Price\" INTEGER)",
               "CREATE TABLE `Order Details` (`Größe` INTEGER, `Unit Price` INTEGER)"));
  db->exec(ddl("INSERT INTO \"Order Details\" VALUES (7, 42)",
               "INSERT INTO \"Order Details\" VALUES (7, 42)",
               "INSERT INTO `Order Details` VALUES (7, 42)"));
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT [Größe], [Unit Price] FROM [Order Details] WHERE [Größe] = 7");
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->getFields().Item(0).Name(), "Größe");
  EXPECT_EQ(rs->field("Größe").Value().toText(), "7");
  EXPECT_EQ(rs->field("Unit Price").Value().toText(), "42");
  auto table = openRs(connection, "Order Details", ado::adCmdTable);
  EXPECT_EQ(table->field("Unit Price").Value().toText(), "42");
}

TEST_P(OdbcProviderTest, LiteralHoldingBracketsIsNotTranslated) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE w (v VARCHAR(20))");
  db->exec("INSERT INTO w VALUES ('[x]')");
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT [v], '[x]' AS [lit] FROM [w] WHERE [v] = '[x]'");
  ASSERT_FALSE(rs->isEOF());
  EXPECT_EQ(rs->field("v").Value().toText(), "[x]");
  EXPECT_EQ(rs->field("lit").Value().toText(), "[x]");
}

TEST_P(OdbcProviderTest, TwoStatementsAreRefusedAndNothingRuns) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE keep (id INTEGER)");
  auto connection = open(*db);
  try {
    connection->Execute("SELECT 1; DROP TABLE keep");
    FAIL() << "a second statement ran";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError);
  }
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM keep"), "0");
  int32_t affected = 0;
  connection->Execute("INSERT INTO [keep] VALUES (1);", &affected);  // one trailing ';' is fine
  EXPECT_EQ(affected, 1);
}

// ---- record set behaviour -------------------------------------------------------------------

TEST_P(OdbcProviderTest, RecordCountAndMoveFirstAfterAPartialWalk) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE m (id INTEGER PRIMARY KEY)");
  db->exec("INSERT INTO m VALUES (1), (2), (3), (4), (5)");
  auto connection = open(*db);
  auto rs = Ref<Recordset>::make();
  rs->Open("SELECT id FROM m ORDER BY id", connection, ado::adOpenStatic, ado::adLockReadOnly,
           ado::adCmdText);
  EXPECT_EQ(rs->RecordCount(), 5);
  rs->MoveNext();
  rs->MoveNext();
  EXPECT_EQ(rs->field("id").Value().toText(), "3");
  rs->MoveFirst();
  EXPECT_EQ(rs->field("id").Value().toText(), "1");
  while (!rs->isEOF()) rs->MoveNext();
  try {
    (void)rs->field("id").Value();
    FAIL() << "no error at EOF";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::NoCurrentRecord);
  }
}

TEST_P(OdbcProviderTest, ExecuteReportsMatchedRowsOfAnUpdate) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE u (id INTEGER PRIMARY KEY, v INTEGER)");
  db->exec("INSERT INTO u VALUES (1, 5), (2, 5), (3, 6)");
  auto connection = open(*db);
  int32_t affected = -2;
  // Nothing changes in value: the rows matched still count (MariaDB's found-rows option).
  connection->Execute("UPDATE [u] SET [v] = 5 WHERE [v] = 5", &affected);
  EXPECT_EQ(affected, 2);
  connection->Execute("UPDATE [u] SET [v] = 9 WHERE [id] = 99", &affected);
  EXPECT_EQ(affected, 0);
}

// ---- errors ---------------------------------------------------------------------------------

TEST_P(OdbcProviderTest, MissingTableRaisesNoSuchTableWithTheDriverText) {
  VARSENTIX_TEST_DATABASE(db, engine());
  auto connection = open(*db);
  try {
    openRs(connection, "SELECT * FROM [no_such_table]");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderNoSuchTable) << e.description();
    EXPECT_NE(e.description().find("no_such_table"), std::string::npos) << e.description();
    EXPECT_FALSE(e.sqlState().empty());
    if (engine() == Engine::PostgreSQL) {
      EXPECT_EQ(e.sqlState(), "42P01");
    }
    if (engine() == Engine::MariaDB) {
      EXPECT_EQ(e.sqlState(), "42S02");
    }
  }
}

TEST_P(OdbcProviderTest, SyntaxErrorRaisesSyntaxError) {
  VARSENTIX_TEST_DATABASE(db, engine());
  auto connection = open(*db);
  try {
    connection->Execute("SELEKT 1");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderSyntaxError) << e.description();
    if (engine() == Engine::PostgreSQL) {
      EXPECT_EQ(e.sqlState(), "42601");
    }
    if (engine() == Engine::MariaDB) {
      EXPECT_EQ(e.sqlState(), "42000");
    }
  }
}

TEST_P(OdbcProviderTest, ConstraintViolationRaisesIntegrityViolation) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE k (id INTEGER PRIMARY KEY)");
  db->exec("INSERT INTO k VALUES (1)");
  auto connection = open(*db);
  try {
    connection->Execute("INSERT INTO [k] VALUES (1)");
    FAIL() << "no error";
  } catch (const vb::VBError& e) {
    EXPECT_EQ(e.number(), vb::errnum::ProviderIntegrityViolation) << e.description();
    if (engine() != Engine::SQLiteOdbc) {
      EXPECT_EQ(e.sqlState().substr(0, 2), "23");
    }
    EXPECT_EQ(e.source(), "Microsoft OLE DB Provider for ODBC Drivers");
  }
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM k"), "1");
}

// ---- writes through the record set ----------------------------------------------------------

TEST_P(OdbcProviderTest, AddNewRoundTripsLongTextAndFractionalTimestamp) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec(ddl("CREATE TABLE r (id INTEGER PRIMARY KEY, memo TEXT, ts TIMESTAMP, amount NUMERIC(12,2))",
               "CREATE TABLE r (id INTEGER PRIMARY KEY, memo TEXT, ts TIMESTAMP(6), amount NUMERIC(12,2))",
               "CREATE TABLE r (id INTEGER PRIMARY KEY, memo LONGTEXT, ts DATETIME(6), amount DECIMAL(12,2))"));
  std::string memo;
  for (int i = 0; i < 10000; ++i) memo += static_cast<char>('a' + i % 26);
  memo.replace(5000, 2, "ü");  // one non-ASCII letter in the middle: 9,999 characters ...
  memo += "!";                  // ... and 10,000 again
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT * FROM [r]", ado::adCmdText, ado::adLockOptimistic);
  rs->AddNew();
  rs->field("id").setValue(int32_t{1});
  rs->field("memo").setValue(memo);
  rs->field("ts").setValue(vb::DateTime::parse("2024-02-29 13:45:56.123456"));
  rs->field("amount").setValue(vb::Decimal{"1234.50"});
  rs->Update();

  EXPECT_EQ(db->scalar(ddl("SELECT length(memo) FROM r", "SELECT length(memo) FROM r",
                           "SELECT CHAR_LENGTH(memo) FROM r")),
            "10000");
  EXPECT_EQ(db->scalar("SELECT memo FROM r"), memo);
  EXPECT_EQ(db->scalar(ddl("SELECT ts FROM r", "SELECT to_char(ts, 'YYYY-MM-DD HH24:MI:SS.US') FROM r",
                           "SELECT DATE_FORMAT(ts, '%Y-%m-%d %H:%i:%s.%f') FROM r")),
            "2024-02-29 13:45:56.123456");

  auto back = openRs(connection, "SELECT * FROM [r]");
  EXPECT_EQ(back->field("memo").Value().toText(), memo);
  EXPECT_EQ(back->field("ts").Value().toText(), "2024-02-29 13:45:56.123456");
  EXPECT_EQ(back->field("amount").Value().toText(), "1234.50");
}

TEST_P(OdbcProviderTest, FieldAssignmentAndUpdateLocateTheRowByItsKey) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE p (id INTEGER PRIMARY KEY, name VARCHAR(30))");
  db->exec("INSERT INTO p VALUES (1, 'one'), (2, 'two')");
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT * FROM [p] WHERE [id] = 2", ado::adCmdText, ado::adLockOptimistic);
  rs->field("name").setValue(std::string("zwei – ü"));
  rs->Update();
  EXPECT_EQ(db->scalar("SELECT name FROM p WHERE id = 2"), "zwei – ü");
  EXPECT_EQ(db->scalar("SELECT name FROM p WHERE id = 1"), "one");
}

TEST_P(OdbcProviderTest, UpdateThatWouldTouchTwoRowsIsRolledBack) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE twin (name VARCHAR(10), v INTEGER)");  // no key: rows located by values
  db->exec("INSERT INTO twin VALUES ('same', 1), ('same', 1)");
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT * FROM [twin]", ado::adCmdText, ado::adLockOptimistic);
  rs->field("v").setValue(int32_t{2});
  EXPECT_THROW(rs->Update(), vb::VBError);
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM twin WHERE v = 1"), "2");
  // The connection is usable afterwards, outside any transaction.
  int32_t affected = 0;
  connection->Execute("INSERT INTO [twin] VALUES ('other', 3)", &affected);
  EXPECT_EQ(affected, 1);
  EXPECT_EQ(db->scalar("SELECT COUNT(*) FROM twin"), "3");
}

TEST_P(OdbcProviderTest, WritesWhileAWalkIsUnderWayLeaveTheWalkWhole) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE big (id INTEGER PRIMARY KEY, v INTEGER)");
  // More rows than the PostgreSQL driver fetches in one block: its server cursor stays open.
  std::string values;
  for (int i = 1; i <= 2500; ++i) values += (values.empty() ? "(" : ", (") + std::to_string(i) + ", 0)";
  db->exec("INSERT INTO big VALUES " + values);
  auto connection = open(*db);
  auto walk = openRs(connection, "SELECT id FROM [big] ORDER BY [id]");
  int rows = 0;
  for (; !walk->isEOF() && rows < 10; walk->MoveNext()) ++rows;
  // A write through another record set and a statement, each committed, mid-walk.
  auto edit = openRs(connection, "SELECT * FROM [big] WHERE [id] = 2000", ado::adCmdText,
                     ado::adLockOptimistic);
  edit->field("v").setValue(int32_t{7});
  edit->Update();
  int32_t affected = 0;
  connection->Execute("UPDATE [big] SET [v] = 8 WHERE [id] = 2001", &affected);
  EXPECT_EQ(affected, 1);
  int64_t lastId = 0;
  for (; !walk->isEOF(); walk->MoveNext()) {
    ++rows;
    lastId = walk->field("id").Value().toInt64();
  }
  EXPECT_EQ(rows, 2500);
  EXPECT_EQ(lastId, 2500);
  EXPECT_EQ(db->scalar("SELECT v FROM big WHERE id = 2000"), "7");
  EXPECT_EQ(db->scalar("SELECT v FROM big WHERE id = 2001"), "8");
}

TEST_P(OdbcProviderTest, ARecordSetWalksOnAfterItsConnectionClosed) {
  VARSENTIX_TEST_DATABASE(db, engine());
  db->exec("CREATE TABLE c (id INTEGER PRIMARY KEY)");
  db->exec("INSERT INTO c VALUES (1), (2), (3)");
  auto connection = open(*db);
  auto rs = openRs(connection, "SELECT id FROM [c] ORDER BY [id]");
  connection->Close();
  int rows = 0;
  for (; !rs->isEOF(); rs->MoveNext()) ++rows;  // no crash, no dangling connection
  EXPECT_EQ(rows, 3);
}

TEST(OdbcPostgreSqlTest, GuidsTextAndOtherTypes) {
  VARSENTIX_TEST_DATABASE(db, Engine::PostgreSQL);
  db->exec("CREATE TABLE g (id UUID, memo TEXT, n NUMERIC, span INTERVAL)");
  db->exec("INSERT INTO g VALUES ('6f9619ff-8b86-d011-b42d-00c04fc964ff', 'x', 1.25, '1 day')");
  auto connection = Ref<Connection>::make();
  connection->Open(db->connectionString());
  auto rs = Ref<Recordset>::make();
  rs->Open("SELECT * FROM g", connection, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
  EXPECT_EQ(rs->field("id").Type(), ado::adGUID);
  EXPECT_EQ(rs->field("id").Value().toText(), "{6F9619FF-8B86-D011-B42D-00C04FC964FF}");
  EXPECT_EQ(rs->field("memo").Type(), ado::adLongVarWChar);
  EXPECT_EQ(rs->field("n").Type(), ado::adNumeric);
  EXPECT_EQ(rs->field("n").Value().toText(), "1.25");  // no declared scale: the digits as stored
  EXPECT_EQ(rs->field("span").Value().toText(), "1 day");  // other types arrive as text
}

TEST(OdbcPostgreSqlTest, TimestampsWithZoneReadAsTheSessionsLocalTime) {
  VARSENTIX_TEST_DATABASE(db, Engine::PostgreSQL);
  db->exec("CREATE TABLE z (at TIMESTAMPTZ, d DATE)");
  db->exec("INSERT INTO z VALUES ('2024-02-29 13:45:56.5+00', '2024-02-29')");
  auto connection = Ref<Connection>::make();
  connection->Open(db->connectionString());
  connection->Execute("SET TIME ZONE 'UTC'");
  auto rs = Ref<Recordset>::make();
  rs->Open("SELECT at, d FROM z", connection, ado::adOpenForwardOnly, ado::adLockReadOnly,
           ado::adCmdText);
  EXPECT_EQ(rs->field("at").Type(), ado::adDBTimeStamp);
  EXPECT_EQ(rs->field("at").Value().type(), vb::VarType::Date);
  EXPECT_EQ(rs->field("at").Value().toText(), "2024-02-29 13:45:56.5");
  EXPECT_EQ(rs->field("d").Value().toText(), "2024-02-29");  // a date's '-' is no zone
}

TEST(OdbcMariaDbTest, UnsignedIntegersUseTheUnsignedTypes) {
  VARSENTIX_TEST_DATABASE(db, Engine::MariaDB);
  db->exec("CREATE TABLE u (t TINYINT UNSIGNED, s TINYINT, b BIGINT UNSIGNED, i INT UNSIGNED)");
  db->exec("INSERT INTO u VALUES (255, -128, 18446744073709551615, 4294967295)");
  auto connection = Ref<Connection>::make();
  connection->Open(db->connectionString());
  auto rs = Ref<Recordset>::make();
  rs->Open("SELECT * FROM u", connection, ado::adOpenForwardOnly, ado::adLockReadOnly, ado::adCmdText);
  EXPECT_EQ(rs->field("t").Type(), ado::adUnsignedTinyInt);
  EXPECT_EQ(rs->field("t").Value().toText(), "255");
  EXPECT_EQ(rs->field("s").Type(), ado::adTinyInt);
  EXPECT_EQ(rs->field("s").Value().toText(), "-128");
  EXPECT_EQ(rs->field("b").Type(), ado::adUnsignedBigInt);
  EXPECT_EQ(rs->field("b").Value().toText(), "18446744073709551615");
  EXPECT_EQ(rs->field("i").Type(), ado::adUnsignedInt);
  EXPECT_EQ(rs->field("i").Value().toText(), "4294967295");
}

TEST(OdbcPostgreSqlTest, ResultsStreamThroughAServerCursor) {
  VARSENTIX_TEST_DATABASE(db, Engine::PostgreSQL);
  db->exec("CREATE TABLE s (id INTEGER PRIMARY KEY)");
  db->exec("INSERT INTO s SELECT generate_series(1, 5000)");
  auto connection = Ref<Connection>::make();
  connection->Open(db->connectionString());
  auto walk = Ref<Recordset>::make();
  walk->Open("SELECT id FROM s ORDER BY id", connection, ado::adOpenForwardOnly,
             ado::adLockReadOnly, ado::adCmdText);
  ASSERT_FALSE(walk->isEOF());
  // The walk reads through a cursor of this session on the server (declare/fetch), not from a
  // result the driver buffered whole.
  auto cursors = Ref<Recordset>::make();
  cursors->Open("SELECT COUNT(*) AS n FROM pg_cursors", connection, ado::adOpenForwardOnly,
                ado::adLockReadOnly, ado::adCmdText);
  EXPECT_GE(cursors->field("n").Value().toInt64(), 1);
  int rows = 0;
  for (; !walk->isEOF(); walk->MoveNext()) ++rows;
  EXPECT_EQ(rows, 5000);
}

// The driver manager is loaded on first use; a machine without it gets a clear provider error.
void openWithoutDriverManager() {
  setenv("VARSENTIX_ODBC_LIBRARY", "/nonexistent/libodbc-missing.so.2", 1);
  auto connection = Ref<Connection>::make();
  try {
    connection->Open("Provider=MSDASQL;Data Source=anything");
  } catch (const vb::VBError& e) {
    if (e.number() == vb::errnum::ProviderError &&
        e.description().find("ODBC driver manager not found") != std::string::npos)
      std::exit(3);
    std::exit(4);
  }
  std::exit(5);
}

TEST(OdbcDriverManagerTest, MissingDriverManagerIsAProviderError) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process: nothing loaded yet
  EXPECT_EXIT(openWithoutDriverManager(), ::testing::ExitedWithCode(3), "");
}

INSTANTIATE_TEST_SUITE_P(Odbc, OdbcProviderTest, ::testing::ValuesIn(odbcEngines()),
                         EngineParamName());
INSTANTIATE_TEST_SUITE_P(Odbc, OdbcServerProviderTest,
                         ::testing::Values(Engine::PostgreSQL, Engine::MariaDB), EngineParamName());

}  // namespace
}  // namespace varsentix::testing::odbc
