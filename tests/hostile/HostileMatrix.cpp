#include "hostile/HostileMatrix.h"

#include <algorithm>
#include <filesystem>

namespace varsentix::testing::hostile {
namespace {

Engine engineOf(Kind kind) {
  switch (kind) {
    case Kind::PostgreSQL: return Engine::PostgreSQL;
    case Kind::MariaDB: return Engine::MariaDB;
    default: return Engine::SQLite;
  }
}

const std::string kHostileTable = std::string("h'q\"b`k;--#/*c*/$$[\\\n\x01") + "\xc3\xa9\\";
const std::vector<std::string> kHostileColumns{"id", "v'\";--", "n", "w\\"};
const std::string kBracketTable = "x]y";

std::string bigText() {
  std::string text;
  while (text.size() < 100 * 1024) text += "\xc3\xa9'\"$$;--\\ x[]` /* #\n";
  return text;
}

std::string quoted(Kind kind, const std::string& name) {
  const char q = kind == Kind::MariaDB ? '`' : '"';
  std::string out(1, q);
  for (char c : name) {
    out += c;
    if (c == q) out += c;
  }
  return out + q;
}

std::string literal(Kind kind, const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    if (c == '\\' && kind == Kind::MariaDB) out += '\\';
    out += c;
  }
  return out + "'";
}

class EngineSide : public HostileSide {
 public:
  EngineSide(Kind kind, std::unique_ptr<TestDatabase> db, bool isMaster, bool withAccess) : db_(std::move(db)) {
    kind_ = kind;
    if (withAccess) {
      table_ = {"Shippers", "ShipperID", {"ShipperID", "CompanyName", "Phone"}};
      createTable(table_, {"INTEGER PRIMARY KEY", textType(), textType()});
      insert(table_, engineShippers());
    } else {
      table_ = {kHostileTable, "id", kHostileColumns};
      createTable(table_, {"INTEGER PRIMARY KEY", textType(), "INTEGER", textType()});
      insert(table_, fixtureRecords(kind, isMaster));
      const TableLayout bracket{kBracketTable, "id", {"id", "v"}};
      createTable(bracket, {"INTEGER PRIMARY KEY", textType()});
      insert(bracket, {{"1", {"1", isMaster ? "a" : "b"}}});
    }
    db_->exec("CREATE TABLE canary (c INTEGER)");
    db_->exec("INSERT INTO canary VALUES (42)");
    createAudit();
  }

  std::string connectionString() const override { return db_->connectionString(); }
  std::string bracketTable() const override { return table_.name == kHostileTable ? kBracketTable : ""; }

  std::vector<std::string> record(const std::string& key) override {
    const std::string where = " FROM " + quoted(kind_, table_.name) + " WHERE " + quoted(kind_, table_.key) + " = " + key;
    if (db_->scalar("SELECT COUNT(*)" + where) == "0") return {"<none>"};
    std::vector<std::string> values;
    for (const auto& column : table_.columns) {
      const std::string isNull = db_->scalar("SELECT CASE WHEN " + quoted(kind_, column) + " IS NULL THEN 1 ELSE 0 END" + where);
      values.push_back(isNull == "1" ? "Null" : db_->scalar("SELECT " + quoted(kind_, column) + where));
    }
    return values;
  }

  std::vector<std::string> keys() override {
    std::vector<std::string> out;
    std::string all = db_->scalar(concatKeys());
    size_t start = 0;
    while (!all.empty()) {
      const size_t comma = all.find(',', start);
      out.push_back(all.substr(start, comma - start));
      if (comma == std::string::npos) break;
      start = comma + 1;
    }
    return out;
  }

  std::string audit() override {
    switch (kind_) {
      case Kind::PostgreSQL: return db_->scalar("SELECT string_agg(op || k, ',' ORDER BY seq) FROM audit_log");
      case Kind::MariaDB:
        return db_->scalar("SELECT GROUP_CONCAT(CONCAT(op, k) ORDER BY seq SEPARATOR ',') FROM audit_log");
      default: return db_->scalar("SELECT group_concat(x, ',') FROM (SELECT op || k AS x FROM audit_log ORDER BY seq)");
    }
  }

  std::string canary() override {
    try {
      return db_->scalar("SELECT CASE WHEN COUNT(*) = 1 THEN MAX(c) ELSE -COUNT(*) END FROM canary");
    } catch (const std::exception& failure) {
      return std::string("canary gone: ") + failure.what();
    }
  }

 private:
  std::string textType() const { return kind_ == Kind::MariaDB ? "LONGTEXT" : "TEXT"; }

  std::string concatKeys() const {
    const std::string k = quoted(kind_, table_.key), t = quoted(kind_, table_.name);
    switch (kind_) {
      case Kind::PostgreSQL: return "SELECT string_agg(" + k + "::text, ',' ORDER BY " + k + ") FROM " + t;
      case Kind::MariaDB: return "SELECT GROUP_CONCAT(" + k + " ORDER BY " + k + " SEPARATOR ',') FROM " + t;
      default: return "SELECT group_concat(x, ',') FROM (SELECT " + k + " AS x FROM " + t + " ORDER BY " + k + ")";
    }
  }

  void createTable(const TableLayout& layout, const std::vector<std::string>& types) {
    std::string sql = "CREATE TABLE " + quoted(kind_, layout.name) + " (";
    for (size_t i = 0; i < layout.columns.size(); ++i)
      sql += (i ? ", " : "") + quoted(kind_, layout.columns[i]) + " " + types[i];
    db_->exec(sql + ")");
  }

  void insert(const TableLayout& layout, const std::map<std::string, std::vector<std::string>>& rows) {
    for (const auto& [key, values] : rows) {
      std::string sql = "INSERT INTO " + quoted(kind_, layout.name) + " VALUES (";
      for (size_t i = 0; i < values.size(); ++i)
        sql += (i ? ", " : "") + (i == 0 ? values[i] : literal(kind_, values[i]));
      db_->exec(sql + ")");
    }
  }

  void createAudit() {
    const std::string t = quoted(kind_, table_.name), k = quoted(kind_, table_.key);
    switch (kind_) {
      case Kind::PostgreSQL:
        db_->exec("CREATE TABLE audit_log (seq SERIAL PRIMARY KEY, op TEXT, k TEXT)");
        db_->exec("CREATE FUNCTION audit_row() RETURNS trigger LANGUAGE plpgsql AS $f$ BEGIN "
                  "IF TG_OP = 'INSERT' THEN INSERT INTO audit_log (op, k) VALUES ('I', NEW." + k + "::text); "
                  "ELSIF TG_OP = 'UPDATE' THEN INSERT INTO audit_log (op, k) VALUES ('U', OLD." + k + "::text); "
                  "ELSE INSERT INTO audit_log (op, k) VALUES ('D', OLD." + k + "::text); END IF; RETURN NULL; END $f$");
        db_->exec("CREATE TRIGGER audit_rows AFTER INSERT OR UPDATE OR DELETE ON " + t +
                  " FOR EACH ROW EXECUTE FUNCTION audit_row()");
        break;
      case Kind::MariaDB:
        db_->exec("CREATE TABLE audit_log (seq INT AUTO_INCREMENT PRIMARY KEY, op VARCHAR(1), k VARCHAR(20))");
        db_->exec("CREATE TRIGGER audit_i AFTER INSERT ON " + t + " FOR EACH ROW INSERT INTO audit_log (op, k) VALUES ('I', NEW." + k + ")");
        db_->exec("CREATE TRIGGER audit_u AFTER UPDATE ON " + t + " FOR EACH ROW INSERT INTO audit_log (op, k) VALUES ('U', OLD." + k + ")");
        db_->exec("CREATE TRIGGER audit_d AFTER DELETE ON " + t + " FOR EACH ROW INSERT INTO audit_log (op, k) VALUES ('D', OLD." + k + ")");
        break;
      default:
        db_->exec("CREATE TABLE audit_log (seq INTEGER PRIMARY KEY AUTOINCREMENT, op TEXT, k TEXT)");
        db_->exec("CREATE TRIGGER audit_i AFTER INSERT ON " + t + " BEGIN INSERT INTO audit_log (op, k) VALUES ('I', NEW." + k + "); END");
        db_->exec("CREATE TRIGGER audit_u AFTER UPDATE ON " + t + " BEGIN INSERT INTO audit_log (op, k) VALUES ('U', OLD." + k + "); END");
        db_->exec("CREATE TRIGGER audit_d AFTER DELETE ON " + t + " BEGIN INSERT INTO audit_log (op, k) VALUES ('D', OLD." + k + "); END");
        break;
    }
  }

  std::unique_ptr<TestDatabase> db_;
};

class AccessSide : public HostileSide {
 public:
  AccessSide() {
    kind_ = Kind::Access;
    table_ = {"Shippers", "ShipperID", {"ShipperID", "CompanyName", "Phone"}};
  }
  std::string connectionString() const override {
    return "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + (sharedDataDir() / "nwind.mdb").string();
  }
  std::vector<std::string> record(const std::string& key) override {
    const auto all = read();
    const auto found = all.find(key);
    return found == all.end() ? std::vector<std::string>{"<none>"} : found->second;
  }
  std::vector<std::string> keys() override {
    std::vector<std::string> out;
    for (const auto& [key, values] : read()) out.push_back(key);
    return out;
  }

 private:
  std::map<std::string, std::vector<std::string>> read() const {
    std::map<std::string, std::vector<std::string>> out;
    auto side = preparedSide(connectionString(), table_.name);
    side->openDataBaseRecordsFromQuery("Select * from [Shippers]");
    auto records = side->getDatabaseRecords();
    for (; !records->isEOF(); records->MoveNext()) {
      std::vector<std::string> values;
      for (const auto& column : table_.columns) {
        const vb::Variant value = records->field(column).Value();
        values.push_back(value.isNull() ? "Null" : value.toText());
      }
      out[values[0]] = values;
    }
    side->closeRecordSet();
    return out;
  }
};

}  // namespace

std::string kindName(Kind kind) {
  switch (kind) {
    case Kind::SQLite: return "SQLite";
    case Kind::PostgreSQL: return "PostgreSQL";
    case Kind::MariaDB: return "MariaDB";
    case Kind::Access: return "Access";
  }
  return "?";
}

std::vector<EnginePair> allPairs() {
  const std::vector<Kind> kinds{Kind::SQLite, Kind::PostgreSQL, Kind::MariaDB, Kind::Access};
  std::vector<EnginePair> pairs;
  for (Kind a : kinds)
    for (Kind b : kinds)
      if (a != b || a != Kind::Access) pairs.push_back({a, b});
  return pairs;
}

std::unique_ptr<HostileSide> HostileSide::make(Kind kind, bool isMaster, bool withAccess, std::string& skipReason) {
  if (kind == Kind::Access) {
    if (!std::filesystem::exists(sharedDataDir() / "nwind.mdb")) {
      skipReason = "nwind.mdb missing";
      return nullptr;
    }
    return std::make_unique<AccessSide>();
  }
  auto db = makeTestDatabase(engineOf(kind));
  if (!db) {
    skipReason = "engine not available: " + kindName(kind);
    return nullptr;
  }
  return std::make_unique<EngineSide>(kind, std::move(db), isMaster, withAccess);
}

std::map<std::string, std::vector<std::string>> HostileSide::records() {
  std::map<std::string, std::vector<std::string>> out;
  for (const auto& key : keys()) out[key] = record(key);
  return out;
}

std::map<std::string, std::vector<std::string>> fixtureRecords(Kind kind, bool isMaster) {
  std::map<std::string, std::vector<std::string>> rows;
  rows["1"] = {"1", "plain text", "1", "x"};
  rows["2"] = isMaster ? std::vector<std::string>{"2", "a'b\"c`d;--e#f/*g*/h$$i\\j]k[l\\", "2", "m\\"}
                       : std::vector<std::string>{"2", "old ' value $$ ; -- \\", "2", "s\\"};
  rows["3"] = {"3", bigText(), "3", "big"};
  if (isMaster) rows["4"] = {"4", "only'master\";--$$\\", "4", "4\\"};
  rows["5"] = {"5", "line1\nline2\r\n\x01\x02\x1f\ttab \xc3\xa9 \xe4\xb8\xad\xe6\x96\x87", "5", "#"};
  rows["6"] = {"6", "six", kind == Kind::SQLite ? "6 OR 1=1" : "6", "y"};
  // Read with backslash escapes, this literal would end early and select every record.
  if (isMaster) rows["7"] = {"7", "\\' OR 1=1 -- ", "7", "z"};
  return rows;
}

std::map<std::string, std::vector<std::string>> accessShippers() {
  return {{"1", {"1", "Speedy Express", "(503) 555-9831"}},
          {"2", {"2", "United Package", "(503) 555-3199"}},
          {"3", {"3", "Federal Shipping", "(503) 555-9931"}}};
}

std::map<std::string, std::vector<std::string>> engineShippers() {
  return {{"1", {"1", "Speedy Express", "(503) 555-9831"}},
          {"2", {"2", "a'b\"c`d;--e#f/*g*/h$$i\\j]k[l\\", "ph\\"}},
          {"4", {"4", bigText(), "x"}}};
}

std::vector<int32_t> recordsWith(Varsenti& control, bool isMaster, const std::string& field, const std::string& value) {
  std::vector<int32_t> out;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster) && control.getResultFieldName(i, isMaster) == field &&
        control.getResultFieldValue(i, isMaster) == value)
      out.push_back(control.getResultSet(i, isMaster)->getRecordNumber());
  return out;
}

std::vector<std::string> differingKeys(Varsenti& control, bool isMaster, const std::string& table,
                                       const std::string& keyField) {
  std::vector<std::string> out;
  for (int32_t i = 1; i <= control.getResultCount(isMaster); ++i)
    if (control.getResultIsDataValue(i, isMaster) && control.getResultDatabaseObjectName(i, isMaster) == table &&
        control.getResultFieldName(i, isMaster) == keyField)
      out.push_back(control.getResultFieldValue(i, isMaster));
  std::sort(out.begin(), out.end());
  return out;
}

}  // namespace varsentix::testing::hostile
