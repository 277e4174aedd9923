// checkSingleStatement: the dialect lexer that refuses text holding more than one statement.
// The first byte chooses the engine and whether backslashes escape in literals.
#include "FuzzSupport.h"
#include "platform/ado/SqlLexer.h"

using namespace varsentix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  using ado::detail::SqlEngine;
  static const SqlEngine engines[] = {SqlEngine::SQLite, SqlEngine::PostgreSQL, SqlEngine::MariaDB,
                                      SqlEngine::Jet, SqlEngine::Other};
  SqlEngine engine = engines[(data[0] & 0x7f) % 5];
  bool backslashEscapes = (data[0] & 0x80) != 0;
  std::string sql = fuzz::text(data + 1, size - 1);
  fuzz::expectOnlyVBError([&] { ado::detail::checkSingleStatement(sql, engine, backslashEscapes); });
  return 0;
}
