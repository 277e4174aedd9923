// translateSql: the system's SQL dialect to an engine's. The first byte chooses the options.
// What it lets through must hold one statement only: translated again with the same options it
// is accepted and stays as it is.
#include "FuzzSupport.h"
#include "platform/ado/SqlDialect.h"

using namespace varsentix;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  ado::detail::DialectOptions options;
  switch (data[0] % 4) {
    case 0: break;
    case 1: options.openQuote = options.closeQuote = '`'; break;
    case 2: options.openQuote = options.closeQuote = 0; break;
    default: options.translateHashDates = true; break;
  }
  std::string sql = fuzz::text(data + 1, size - 1);
  std::string translated;
  try {
    translated = ado::detail::translateSql(sql, options);
  } catch (const vb::VBError&) {
    return 0;
  }
  try {
    if (ado::detail::translateSql(translated, options) != translated)
      fuzz::finding("a translated statement changes when translated again");
  } catch (const vb::VBError& e) {
    fuzz::finding("a translated statement is refused when translated again: " + e.description());
  }
  return 0;
}
