#include "cli/HelpText.h"

namespace varsentix::cli {

const CommandHelp kMainHelp{
    "varsentix",
    "varsentix COMMAND [OPTIONS] [ARGS...]",
    "Compares two relational databases: the tables, fields and records that one side has and\n"
    "the other lacks, and the fields whose type differs. The first database is the Original\n"
    "side, the second the Modified side.\n"
    "\n"
    "Commands:\n"
    "  compare MASTER SOURCE   compare two databases (see varsentix compare --help)\n"
    "  sources                 list the machine's ODBC data sources\n"
    "  help [COMMAND]          show the help of a command\n"
    "\n"
    "Options:\n"
    "  --help                  show this text\n"
    "  --version               show the version\n"};

const CommandHelp kCompareHelp{
    "compare",
    "varsentix compare MASTER SOURCE [OPTIONS]",
    "Compares the Original database MASTER with the Modified database SOURCE: first the\n"
    "structure of the whole database (tables, then fields), then the records of every table\n"
    "present on both sides. A record present on one side only, or differing in any compared\n"
    "field, is listed as only in that side.\n"
    "\n"
    "MASTER and SOURCE may each be:\n"
    "  a SQLite file            recognised by its header, whatever its extension; any file\n"
    "                           name opens that file ({x}.db, =a.db and a;b.db too)\n"
    "  an Access file           .mdb (read only)\n"
    "  DSN=NAME                 an ODBC data source (see varsentix sources)\n"
    "  a connection string      Provider=SQLite;Data Source=FILE, Provider=MSDASQL;Driver={...};...\n"
    "\n"
    "Options:\n"
    "  --schema-only            compare tables and fields, not records\n"
    "  --objects-only           compare the table lists only\n"
    "  --table T                compare one table only\n"
    "  --fields A,B             with --table: compare only these fields of its records\n"
    "  --show-unchanged         also list tables and fields that are the same on both sides\n"
    "  --user U                 user name for both sides (appended as User ID)\n"
    "  --password P             password for both sides. Other users of the machine can see\n"
    "                           it (ps, /proc): prefer --password-stdin or VARSENTIX_PASSWORD\n"
    "  --password-stdin         read the password from the first line of standard input\n"
    "  --format text|json       the report's form (default text); json writes one document\n"
    "  --limit N                records listed per table and side in the text report (default 20)\n"
    "  --help                   show this text\n"
    "\n"
    "Without --password or --password-stdin the password is taken from the environment\n"
    "variable VARSENTIX_PASSWORD when it is set. Passwords are shown as *** wherever a\n"
    "connection string is shown (Pwd, Password, Jet OLEDB:Database Password and any other key\n"
    "ending in password).\n"
    "\n"
    "Colour is used only when standard output is a terminal and NO_COLOR is not set. A progress\n"
    "bar is drawn on standard error when it is a terminal. Control characters and bytes that are\n"
    "not UTF-8 in names and values are shown, not sent to the terminal: a backslash as \\\\,\n"
    "newline, carriage return and tab as \\n, \\r and \\t, any other control character (U+0000 to\n"
    "U+001F, U+007F to U+009F) and each byte that is not part of UTF-8 as \\xHH (\\x1b for ESC).\n"
    "\n"
    "A table or column whose name holds ']' cannot be named in the statements the control sends;\n"
    "it is not compared, and is listed under Problems (and on standard error).\n"
    "\n"
    "Records are mostly compared by reading both sides in key order. Where that cannot be done\n"
    "(a table stored out of key order, a text key compared without regard to case, MariaDB),\n"
    "24 bytes per record of the other side are kept: up to 4 MB a set in memory, the rest in a\n"
    "file in $TMPDIR (or /tmp) that is gone once the table is compared.\n"
    "\n"
    "Exit status: 0 no differences, 1 differences found, 2 trouble (a missing file, a file that\n"
    "is no database, a data source or server that cannot be reached, a wrong password, a table\n"
    "or column that could not be compared).\n"};

const CommandHelp kSourcesHelp{
    "sources",
    "varsentix sources",
    "Lists the machine's ODBC data sources as the control lists them: each name with its\n"
    "driver. A name can be compared as DSN=NAME.\n"};

std::string helpText(const CommandHelp& help) { return "Usage: " + std::string(help.usage) + "\n\n" + help.text; }

std::string markdownManual() {
  std::string text =
      "# The varsentix command line\n\n"
      "This page is generated from the program's own help (`varsentix help --markdown`).\n";
  for (const CommandHelp* help : {&kMainHelp, &kCompareHelp, &kSourcesHelp}) {
    text += "\n## " + std::string(help->name) + "\n\n```\n" + helpText(*help) + "```\n";
  }
  text +=
      "\n## The JSON report\n\n"
      "`varsentix compare --format json` writes one document:\n\n"
      "```\n"
      "{\n"
      "  \"format\": \"varsentix-report\", \"version\": 1, \"tool\": \"<library version>\",\n"
      "  \"sides\": {\n"
      "    \"original\": {\"source\": \"<what was named>\", \"errorLogs\": \"<the control's error log>\"},\n"
      "    \"modified\": {\"source\": \"...\", \"errorLogs\": \"...\"}\n"
      "  },\n"
      "  \"differences\": true,          // false when nothing differs (exit status 0)\n"
      "  \"recordsCompared\": true,      // false with --schema-only / --objects-only\n"
      "  \"complete\": true,             // false when something could not be compared (problems)\n"
      "  \"tables\": [{\"table\", \"side\", \"changeType\", \"change\", \"tableType\", \"primaryKey\"}],\n"
      "  \"fields\": [{\"table\", \"field\", \"side\", \"changeType\", \"change\", \"dataType\", \"definedSize\",\n"
      "              \"otherDataType\" (for a type difference)}],\n"
      "  \"comparedTables\": [\"<table whose records were compared>\"],\n"
      "  \"problems\": [\"<what could not be compared, in the control's words>\"],\n"
      "  \"records\": [{\"table\", \"side\", \"recordNumber\", \"changeType\", \"change\",\n"
      "               \"values\": {\"<field>\": \"<text>\" or null}}]\n"
      "}\n"
      "```\n\n"
      "`side` is `original` or `modified`. `changeType` is the control's code and `change` its\n"
      "description: 0 No Change, 1 New Table, 2 New Field, 3 Different Datatype, 5 New Record.\n"
      "Each side reports its own rows: a field whose type differs appears once per side. Values\n"
      "are the databases' text forms; a null value is `null` (as is the text Null, which the\n"
      "comparison cannot tell from a null value). The document is always valid UTF-8: control\n"
      "characters in texts are written as JSON escapes (\\u001b), and each byte of a name or value\n"
      "that is not part of UTF-8 is replaced by U+FFFD (written \\ufffd). `problems` lists the\n"
      "tables and columns that were not compared (exit status 2); it is empty when all were.\n"
      "New members may be added to the document in later versions; existing ones keep their\n"
      "names and meaning.\n";
  return text;
}

}  // namespace varsentix::cli
