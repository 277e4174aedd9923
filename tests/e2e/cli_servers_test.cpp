// The varsentix program on ODBC data sources of PostgreSQL and MariaDB holding the Chinook
// sample and its changed copy: the same report as for the SQLite sample pair, names and type
// names aside; and the trouble a user meets on servers (a wrong password, a server that is down).
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "e2e/E2eSupport.h"
#include "support/ServerScripts.h"

namespace varsentix::testing::e2e {
namespace {

// ---- A small reader of the JSON report -------------------------------------------------------

struct Json {
  enum Kind { Null, Bool, Number, String, Array, Object } kind = Null;
  std::string text;  // string contents, number or bool text
  std::vector<Json> items;
  std::vector<std::pair<std::string, Json>> members;

  const Json& operator[](const std::string& key) const {
    for (const auto& [name, value] : members)
      if (name == key) return value;
    throw std::runtime_error("no member " + key);
  }
  bool has(const std::string& key) const {
    return std::any_of(members.begin(), members.end(), [&](const auto& m) { return m.first == key; });
  }
};

class JsonReader {
 public:
  explicit JsonReader(const std::string& text) : text_(text) {}
  Json document() {
    Json value = read();
    blanks();
    if (at_ != text_.size()) fail("text after the document");
    return value;
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error("JSON: " + what + " at " + std::to_string(at_));
  }
  void blanks() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
  }
  bool take(char c) {
    blanks();
    if (at_ < text_.size() && text_[at_] == c) {
      ++at_;
      return true;
    }
    return false;
  }
  void expect(char c) {
    if (!take(c)) fail(std::string("expected ") + c);
  }
  std::string string() {
    expect('"');
    std::string out;
    while (at_ < text_.size() && text_[at_] != '"') {
      char c = text_[at_++];
      if (c != '\\') {
        out += c;
        continue;
      }
      if (at_ >= text_.size()) fail("unfinished escape");
      char e = text_[at_++];
      switch (e) {
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case 'r': out += '\r'; break;
        case 'b': out += '\b'; break;
        case 'f': out += '\f'; break;
        case 'u': {
          unsigned code = std::stoul(text_.substr(at_, 4), nullptr, 16);
          at_ += 4;
          if (code < 0x80) {
            out += static_cast<char>(code);
          } else if (code < 0x800) {
            out += static_cast<char>(0xC0 | (code >> 6));
            out += static_cast<char>(0x80 | (code & 0x3F));
          } else {
            out += static_cast<char>(0xE0 | (code >> 12));
            out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (code & 0x3F));
          }
          break;
        }
        default: out += e;
      }
    }
    expect('"');
    return out;
  }
  Json read() {
    blanks();
    if (at_ >= text_.size()) fail("unexpected end");
    Json value;
    const char c = text_[at_];
    if (c == '{') {
      value.kind = Json::Object;
      ++at_;
      if (take('}')) return value;
      do {
        blanks();
        std::string key = string();
        expect(':');
        value.members.emplace_back(key, read());
      } while (take(','));
      expect('}');
    } else if (c == '[') {
      value.kind = Json::Array;
      ++at_;
      if (take(']')) return value;
      do value.items.push_back(read());
      while (take(','));
      expect(']');
    } else if (c == '"') {
      value.kind = Json::String;
      value.text = string();
    } else if (text_.compare(at_, 4, "null") == 0) {
      at_ += 4;
    } else if (text_.compare(at_, 4, "true") == 0 || text_.compare(at_, 5, "false") == 0) {
      value.kind = Json::Bool;
      value.text = c == 't' ? "true" : "false";
      at_ += c == 't' ? 4 : 5;
    } else {
      value.kind = Json::Number;
      while (at_ < text_.size() && (std::isdigit(static_cast<unsigned char>(text_[at_])) ||
                                    std::string("+-.eE").find(text_[at_]) != std::string::npos))
        value.text += text_[at_++];
      if (value.text.empty()) fail("unexpected character");
    }
    return value;
  }

  const std::string& text_;
  size_t at_ = 0;
};

// ---- The report made comparable across engines ------------------------------------------------

std::string plainValue(const Json& value) { return value.kind == Json::Null ? "null" : "'" + value.text + "'"; }

// Every difference of a report as one line, names made plain (no letter case, no underscores)
// and type names left out; sorted, since each engine lists its tables in its own order.
std::vector<std::string> comparableReport(const Json& report) {
  std::vector<std::string> lines;
  lines.push_back("differences=" + report["differences"].text);
  lines.push_back("recordsCompared=" + report["recordsCompared"].text);
  for (const auto& t : report["tables"].items)
    lines.push_back("table " + plainName(t["table"].text) + " " + t["side"].text + " " + t["changeType"].text +
                    " " + t["change"].text + " key=" + plainName(t["primaryKey"].text));
  for (const auto& f : report["fields"].items) {
    std::string line = "field " + plainName(f["table"].text) + "." + plainName(f["field"].text) + " " +
                       f["side"].text + " " + f["changeType"].text + " " + f["change"].text;
    // The sizes of types that differ are the types' own (a decimal's 19, a double's 8).
    if (f["changeType"].text != "3") line += " size=" + f["definedSize"].text;
    line += f.has("otherDataType") ? " (other type)" : "";
    lines.push_back(line);
  }
  for (const auto& name : report["comparedTables"].items) lines.push_back("compared " + plainName(name.text));
  // A record number is the record's position in its table as the engine returns it: PostgreSQL
  // moves an updated row to the end of its table, so it is left out.
  for (const auto& r : report["records"].items) {
    std::string line = "record " + plainName(r["table"].text) + " " + r["side"].text + " " + r["changeType"].text +
                       " " + r["change"].text + ":";
    for (const auto& [field, value] : r["values"].members) line += " " + plainName(field) + "=" + plainValue(value);
    lines.push_back(line);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Records are matched with LIKE and the record's own text, in which a backslash is the escape
// character on PostgreSQL: a record holding one finds no match on the other side, and the pair
// of equal records is listed on both sides. Takes those twins out of the lines and returns how
// many records were taken out.
int takeOutBackslashTwins(std::vector<std::string>& lines) {
  auto twinOf = [](std::string line) {
    const size_t side = line.find(" original ");
    if (side != std::string::npos) line.replace(side, 10, " modified ");
    return line;
  };
  int taken = 0;
  for (bool found = true; found;) {
    found = false;
    for (auto line = lines.begin(); line != lines.end(); ++line) {
      if (line->rfind("record ", 0) != 0 || line->find('\\') == std::string::npos ||
          line->find(" original ") == std::string::npos)
        continue;
      auto twin = std::find(lines.begin(), lines.end(), twinOf(*line));
      if (twin == lines.end()) continue;
      const auto first = std::min(line, twin), second = std::max(line, twin);
      lines.erase(second);
      lines.erase(first);
      ++taken;
      found = true;
      break;
    }
  }
  return taken;
}

std::vector<std::string> sqliteGoldenReport() {
  return comparableReport(JsonReader(readFile(sourceDir() / "tests" / "cli" / "golden" / "chinook.json")).document());
}

int closedPort() {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  socklen_t length = sizeof address;
  bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  const int port = ntohs(address.sin_port);
  close(fd);
  return port;
}

size_t lineCount(const std::string& text) { return static_cast<size_t>(std::count(text.begin(), text.end(), '\n')); }

class CliOnServers : public ::testing::TestWithParam<Engine> {
 protected:
  void SetUp() override {
    pair_ = chinookOnServer(GetParam());
    if (pair_ == nullptr) GTEST_SKIP() << "engine not available: " << engineName(GetParam());
  }
  const ChinookOnServer* pair_ = nullptr;
};

TEST_P(CliOnServers, DataSourcePairReportsTheSampleDifferences) {
  OdbcDataSourceFixture odbc({serverDataSource(GetParam(), "vx_cli_original", pair_->originalName),
                              serverDataSource(GetParam(), "vx_cli_changed", pair_->changedName)});
  TempDir dir;
  CliOutcome r = runCli(dir, {"compare", "--format", "json", "DSN=vx_cli_original", "DSN=vx_cli_changed"});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_EQ(r.err, "");
  const Json report = JsonReader(r.out).document();
  EXPECT_EQ(report["sides"]["original"]["source"].text, "DSN=vx_cli_original");
  EXPECT_EQ(report["sides"]["modified"]["source"].text, "DSN=vx_cli_changed");
  EXPECT_EQ(report["sides"]["original"]["errorLogs"].text.find('#'), std::string::npos)
      << report["sides"]["original"]["errorLogs"].text;
  EXPECT_EQ(report["sides"]["modified"]["errorLogs"].text.find('#'), std::string::npos)
      << report["sides"]["modified"]["errorLogs"].text;
  auto lines = comparableReport(report);
  // The Chinook script for PostgreSQL keeps the backslashes of four track names (psql reads
  // them as they are); MariaDB's client reads "\ " as a blank, so none are left there.
  EXPECT_EQ(takeOutBackslashTwins(lines), GetParam() == Engine::PostgreSQL ? 4 : 0);
  EXPECT_EQ(lines, sqliteGoldenReport()) << r.out;
  // The two type differences name each side's own type and the other's.
  for (const auto& f : report["fields"].items)
    if (f["changeType"].text == "3") {
      EXPECT_FALSE(f["dataType"].text.empty());
      EXPECT_NE(f["dataType"].text, f["otherDataType"].text);
    }
}

TEST_P(CliOnServers, WrongPasswordIsOneLineNamingTheSide) {
  OdbcDataSourceFixture odbc({serverDataSource(GetParam(), "vx_cli_original", pair_->originalName),
                              serverDataSource(GetParam(), "vx_cli_badpw", pair_->changedName, "wrong-password")});
  TempDir dir;
  CliOutcome r = runCli(dir, {"compare", "DSN=vx_cli_original", "DSN=vx_cli_badpw"});
  EXPECT_EQ(r.status, 2) << r.out << r.err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(lineCount(r.err), 1u) << r.err;
  EXPECT_EQ(r.err.rfind("varsentix: Modified side (DSN=vx_cli_badpw): ", 0), 0u) << r.err;
  EXPECT_EQ(r.err.find("wrong-password"), std::string::npos) << r.err;  // never the password itself

  CliOutcome swapped = runCli(dir, {"compare", "DSN=vx_cli_badpw", "DSN=vx_cli_original"});
  EXPECT_EQ(swapped.status, 2);
  EXPECT_EQ(lineCount(swapped.err), 1u) << swapped.err;
  EXPECT_EQ(swapped.err.rfind("varsentix: Original side (DSN=vx_cli_badpw): ", 0), 0u) << swapped.err;
}

TEST_P(CliOnServers, ServerThatIsDownIsOneLineAndNoHang) {
  TempDir dir;
  const std::string down = "Provider=MSDASQL;" + serverStringWith(GetParam(), "Port", std::to_string(closedPort())) +
                           "Database=" + pair_->originalName;
  const std::string up = "Provider=MSDASQL;" + serverStringWith(GetParam(), "Database", pair_->originalName);
  // A program waiting far longer than the driver's login timeout (10 s) is ended at 60 s, and
  // its status 124 fails the check.
  CliOutcome r = runCli(dir, {"compare", up, down}, 60);
  const int status = r.status;
  const std::string err = r.err;
  EXPECT_EQ(status, 2) << err;
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(lineCount(err), 1u) << err;
  EXPECT_EQ(err.rfind("varsentix: Modified side (", 0), 0u) << err;
  EXPECT_EQ(err.find(serverSettings(GetParam())["pwd"]), std::string::npos) << err;  // the password is hidden
}

INSTANTIATE_TEST_SUITE_P(Servers, CliOnServers, ::testing::Values(Engine::PostgreSQL, Engine::MariaDB),
                         EngineParamName());

// The reader of this suite against the SQLite sample pair itself: the golden report is what the
// program writes there, so the comparison above has something to be equal to.
TEST(CliOnServersReference, SqliteSamplePairReadsAsTheGoldenReport) {
  TempDir dir;
  makeSqliteSamplePair(dir);
  CliOutcome r = runCli(dir, {"compare", "--format", "json", "chinook.sqlite", "chinook-changed.sqlite"});
  EXPECT_EQ(r.status, 1) << r.err;
  const auto lines = comparableReport(JsonReader(r.out).document());
  EXPECT_EQ(lines, sqliteGoldenReport());
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const std::string& l) { return l.rfind("record ", 0) == 0; }),
            9);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "record artist modified 5 New Record: artistid='277' name=null"),
            lines.end());
}

}  // namespace
}  // namespace varsentix::testing::e2e
