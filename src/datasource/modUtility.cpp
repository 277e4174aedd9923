#include "varsentix/datasource/modUtility.h"

namespace varsentix::modUtility {

std::string escapeSingleQuotes(std::string& text) {
  if (text.find('\'') == std::string::npos) return text;
  std::string result;
  size_t apostrophe;
  while ((apostrophe = text.find('\'')) != std::string::npos) {
    result += text.substr(0, apostrophe + 1);
    result += '\'';
    text.erase(0, apostrophe + 1);
  }
  return result + text;
}

}  // namespace varsentix::modUtility
