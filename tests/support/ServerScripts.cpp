#include "support/ServerScripts.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "support/TempDir.h"

namespace varsentix::testing {
namespace {

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string shellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// Whether a script line creates, drops or switches databases (psql's \c, MariaDB's USE).
bool switchesDatabase(const std::string& line) {
  std::string l = lower(line);
  return l.rfind("drop database", 0) == 0 || l.rfind("create database", 0) == 0 ||
         l.rfind("\\c ", 0) == 0 || l.rfind("use ", 0) == 0;
}

}  // namespace

std::map<std::string, std::string> serverSettings(Engine engine) {
  const char* text = std::getenv(engine == Engine::PostgreSQL ? "VARSENTIX_PG_ODBC" : "VARSENTIX_MARIADB_ODBC");
  std::map<std::string, std::string> settings;
  std::stringstream stream(text ? text : "");
  std::string pair;
  while (std::getline(stream, pair, ';')) {
    size_t eq = pair.find('=');
    if (eq != std::string::npos) settings[lower(pair.substr(0, eq))] = pair.substr(eq + 1);
  }
  return settings;
}

std::string serverStringWith(Engine engine, const std::string& key, const std::string& value) {
  const char* text = std::getenv(engine == Engine::PostgreSQL ? "VARSENTIX_PG_ODBC" : "VARSENTIX_MARIADB_ODBC");
  std::stringstream stream(text ? text : "");
  std::string pair, result;
  bool replaced = false;
  while (std::getline(stream, pair, ';')) {
    size_t eq = pair.find('=');
    if (eq != std::string::npos && lower(pair.substr(0, eq)) == lower(key)) {
      pair = key + "=" + value;
      replaced = true;
    }
    if (!pair.empty()) result += pair + ";";
  }
  if (!replaced) result += key + "=" + value + ";";
  return result;
}

void loadScript(TestDatabase& db, const std::string& scriptPath) {
  std::ifstream in(scriptPath);
  if (!in) throw std::runtime_error("cannot read " + scriptPath);
  TempDir dir;
  const std::string filtered = dir.file("script.sql");
  {
    std::ofstream out(filtered);
    std::string line;
    while (std::getline(in, line))
      if (!switchesDatabase(line)) out << line << '\n';
  }
  auto settings = serverSettings(db.engine());
  std::string command;
  if (db.engine() == Engine::PostgreSQL) {
    std::string name = db.scalar("SELECT current_database()");
    command = "PGPASSWORD=" + shellQuoted(settings["pwd"]) + " psql -X -q -v ON_ERROR_STOP=1 -h " +
              shellQuoted(settings["server"]) + " -p " + shellQuoted(settings["port"]) + " -U " +
              shellQuoted(settings["uid"]) + " -d " + shellQuoted(name) + " -f " +
              shellQuoted(filtered) + " >/dev/null";
  } else if (db.engine() == Engine::MariaDB) {
    std::string name = db.scalar("SELECT DATABASE()");
    command = "MYSQL_PWD=" + shellQuoted(settings["pwd"]) + " mariadb --no-defaults -h " +
              shellQuoted(settings["server"]) + " -P " + shellQuoted(settings["port"]) + " -u " +
              shellQuoted(settings["uid"]) + " " + shellQuoted(name) + " < " + shellQuoted(filtered);
  } else {
    throw std::runtime_error("scripts are loaded into the servers only");
  }
  int status = std::system(command.c_str());
  if (status != 0) throw std::runtime_error("loading " + scriptPath + " failed: " + command);
}

}  // namespace varsentix::testing
