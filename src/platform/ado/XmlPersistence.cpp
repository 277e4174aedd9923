#include "platform/ado/XmlPersistence.h"

#include <expat.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <unordered_map>

#include "platform/ado/TypeInfo.h"
#include "varsentix/platform/vb/Conversions.h"
#include "varsentix/platform/vb/VBError.h"

namespace varsentix::ado::detail {
namespace {

constexpr const char* kNsS = "uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882";
constexpr const char* kNsDt = "uuid:C2F41010-65B3-11d1-A29F-00AA00C14882";
constexpr const char* kNsRs = "urn:schemas-microsoft-com:rowset";
constexpr const char* kNsZ = "#RowsetSchema";
constexpr const char* kSource = "ADODB.Recordset";

// Control characters have no place in XML 1.0, not even as references. They are written as
// references all the same and, on reading, carried through the parser as the private-use
// characters U+10FF00 + code (F4 8F BC 80+code in UTF-8).
constexpr unsigned char kCarrier[3] = {0xF4, 0x8F, 0xBC};

struct XmlType {
  const char* type;
  const char* dbType;  // nullptr: none written
};

XmlType xmlTypeOf(DataTypeEnum type) {
  switch (type) {
    case adChar:
    case adVarChar:
    case adLongVarChar: return {"string", "str"};
    case adInteger: return {"int", nullptr};
    case adSmallInt: return {"i2", nullptr};
    case adTinyInt: return {"i1", nullptr};
    case adUnsignedTinyInt: return {"ui1", nullptr};
    case adUnsignedSmallInt: return {"ui2", nullptr};
    case adUnsignedInt: return {"ui4", nullptr};
    case adBigInt: return {"i8", nullptr};
    case adUnsignedBigInt: return {"ui8", nullptr};
    case adSingle: return {"r4", nullptr};
    case adDouble: return {"float", nullptr};
    case adCurrency: return {"number", "currency"};
    case adNumeric: return {"number", "numeric"};
    case adDecimal: return {"number", "decimal"};
    case adVarNumeric: return {"number", "varnumeric"};
    case adBoolean: return {"boolean", nullptr};
    case adDate: return {"dateTime", "variantdate"};
    case adDBTimeStamp: return {"dateTime", "timestamp"};
    case adFileTime: return {"dateTime", "filetime"};
    case adDBDate: return {"date", nullptr};
    case adDBTime: return {"time", nullptr};
    case adGUID: return {"uuid", nullptr};
    case adBinary:
    case adVarBinary:
    case adLongVarBinary: return {"bin.hex", nullptr};
    default: return {"string", nullptr};
  }
}

DataTypeEnum adoTypeOf(const std::string& type, const std::string& dbType, bool isLong,
                       bool fixedLength) {
  static const std::unordered_map<std::string, DataTypeEnum> simple = {
      {"int", adInteger},        {"i4", adInteger},         {"i2", adSmallInt},
      {"i1", adTinyInt},         {"ui1", adUnsignedTinyInt}, {"ui2", adUnsignedSmallInt},
      {"ui4", adUnsignedInt},    {"i8", adBigInt},          {"ui8", adUnsignedBigInt},
      {"r4", adSingle},          {"float", adDouble},       {"r8", adDouble},
      {"boolean", adBoolean},    {"date", adDBDate},        {"time", adDBTime},
      {"uuid", adGUID}};
  if (auto it = simple.find(type); it != simple.end()) return it->second;
  if (type == "number") {
    if (dbType == "currency") return adCurrency;
    if (dbType == "decimal") return adDecimal;
    if (dbType == "varnumeric") return adVarNumeric;
    return adNumeric;
  }
  if (type == "dateTime") {
    if (dbType == "variantdate") return adDate;
    if (dbType == "filetime") return adFileTime;
    return adDBTimeStamp;
  }
  if (type == "bin.hex" || type == "bin.base64")
    return isLong ? adLongVarBinary : fixedLength ? adBinary : adVarBinary;
  if (dbType == "str") return isLong ? adLongVarChar : fixedLength ? adChar : adVarChar;
  return isLong ? adLongVarWChar : fixedLength ? adWChar : adVarWChar;
}

// Whether expat, as the reader runs it, takes name as the name of an attribute. Names with
// characters outside ASCII are asked of it: which of those XML allows differs between editions
// of the standard (U+00D7 is none; characters outside the Basic Multilingual Plane are none for
// expat), and a name the reader refuses would leave a file that cannot be read again.
bool expatTakesAttributeName(const std::string& name) {
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
      XML_ParserCreateNS("UTF-8", '|'), &XML_ParserFree);
  if (!parser) return false;
  std::string document = "<r " + name + "='1'/>";
  return XML_Parse(parser.get(), document.data(), static_cast<int>(document.size()), XML_TRUE) ==
         XML_STATUS_OK;
}

// An XML name ADO can use as the attribute of a column; others are written as c<n>.
bool isXmlName(const std::string& name) {
  if (name.empty() || (name.size() >= 3 && vb::LCase(name.substr(0, 3)) == "xml")) return false;
  auto asciiLetter = [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  auto asciiDigit = [](unsigned char c) { return c >= '0' && c <= '9'; };
  unsigned char first = static_cast<unsigned char>(name[0]);
  if (first < 0x80 && !asciiLetter(first)) return false;
  bool ascii = true;
  for (unsigned char c : name) {
    if (c >= 0x80) {
      ascii = false;
    } else if (!(asciiLetter(c) || asciiDigit(c) || c == '-' || c == '.')) {
      return false;
    }
  }
  return ascii || (name.size() < 1024 && expatTakesAttributeName(name));
}

// Length of the valid UTF-8 sequence at text[i] that XML accepts, or 0.
size_t validSequence(const std::string& text, size_t i) {
  auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
  unsigned char c = byte(i);
  size_t length = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
  if (length == 0 || i + length > text.size()) return 0;
  uint32_t code = length == 1 ? c : length == 2 ? c & 0x1F : length == 3 ? c & 0x0F : c & 0x07;
  for (size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byte(i + k) & 0x3F);
  }
  static const uint32_t minimum[5] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < minimum[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) ||
      code == 0xFFFE || code == 0xFFFF)
    return 0;
  return length;
}

std::string attribute(const char* name, const std::string& value) {
  return std::string(" ") + name + "='" + escapeXmlAttribute(value) + "'";
}

}  // namespace

std::string escapeXmlAttribute(const std::string& text) {
  std::string out;
  out.reserve(text.size() + 8);
  for (size_t i = 0; i < text.size();) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 0x80) {
      size_t length = validSequence(text, i);
      if (length == 0) {
        out += "\xEF\xBF\xBD";
        ++i;
      } else {
        out.append(text, i, length);
        i += length;
      }
      continue;
    }
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '\'': out += "&apos;"; break;
      case '"': out += "&quot;"; break;
      default:
        if (c < 0x20) {
          char buffer[8];
          std::snprintf(buffer, sizeof buffer, "&#x%X;", c);
          out += buffer;
        } else {
          out += static_cast<char>(c);
        }
    }
    ++i;
  }
  return out;
}

std::string persistedText(DataTypeEnum /*type*/, const vb::Variant& value) {
  if (value.type() == vb::VarType::Date) {
    std::string text = value.asDateTime().toText();
    if (value.asDateTime().kind == vb::DateTime::Kind::Timestamp) {
      size_t blank = text.find(' ', 1);
      if (blank != std::string::npos) text[blank] = 'T';
    }
    return text;
  }
  return value.toText();
}

// ---- writing --------------------------------------------------------------------------------

XmlRowsetWriter::XmlRowsetWriter(std::FILE* out, std::vector<ColumnInfo> columns, bool updatable,
                                 const std::vector<std::string>& keyColumns)
    : out_(out), columns_(std::move(columns)) {
  std::vector<std::string> lowerKeys;
  for (const auto& k : keyColumns) lowerKeys.push_back(vb::LCase(k));
  std::string head =
      std::string("<xml xmlns:s='") + kNsS + "'\n\txmlns:dt='" + kNsDt + "'\n\txmlns:rs='" + kNsRs +
      "'\n\txmlns:z='" + kNsZ + "'>\n<s:Schema id='RowsetSchema'>\n"
      "\t<s:ElementType name='row' content='eltOnly'" + (updatable ? " rs:updatable='true'" : "") +
      ">\n";
  std::vector<std::string> used;
  auto isUsed = [&](const std::string& name) {
    return std::find(used.begin(), used.end(), name) != used.end();
  };
  for (size_t i = 0; i < columns_.size(); ++i) {
    const ColumnInfo& c = columns_[i];
    bool plain = isXmlName(c.name) && !isUsed(c.name);
    std::string xmlName = plain ? c.name : "c" + std::to_string(i);
    // A generated name may be the plain name of an earlier column ("c1" beside "a b").
    for (int k = 1; !plain && isUsed(xmlName); ++k) xmlName = "c" + std::to_string(i) + "_" + std::to_string(k);
    used.push_back(xmlName);
    attributeNames_.push_back(xmlName);
    head += "\t\t<s:AttributeType" + attribute("name", xmlName);
    if (!plain) head += attribute("rs:name", c.name);
    head += attribute("rs:number", std::to_string(i + 1));
    if (c.nullable) head += " rs:nullable='true'";
    if (updatable && !c.baseColumn.empty()) head += " rs:writeunknown='true'";
    if (!c.baseTable.empty()) head += attribute("rs:basetable", c.baseTable);
    if (!c.baseColumn.empty()) head += attribute("rs:basecolumn", c.baseColumn);
    if (!c.baseColumn.empty() &&
        std::find(lowerKeys.begin(), lowerKeys.end(), vb::LCase(c.baseColumn)) != lowerKeys.end())
      head += " rs:keycolumn='true'";
    XmlType t = xmlTypeOf(c.type);
    head += ">\n\t\t\t<s:datatype" + attribute("dt:type", t.type);
    if (t.dbType != nullptr) head += attribute("rs:dbtype", t.dbType);
    head += attribute("dt:maxLength", std::to_string(c.definedSize));
    if (c.precision != 255) head += attribute("rs:precision", std::to_string(c.precision));
    if (c.numericScale != 255) head += attribute("rs:scale", std::to_string(c.numericScale));
    if (fixedSizeOf(c.type) != 0 || c.type == adWChar || c.type == adChar || c.type == adBinary)
      head += " rs:fixedlength='true'";
    if (isLongType(c.type)) head += " rs:long='true'";
    if (!c.nullable) head += " rs:maybenull='false'";
    head += "/>\n\t\t</s:AttributeType>\n";
  }
  head += "\t\t<s:extends type='rs:rowbase'/>\n\t</s:ElementType>\n</s:Schema>\n<rs:data>\n";
  put(head);
}

void XmlRowsetWriter::put(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), out_) != text.size())
    vb::raiseError(vb::errnum::PathFileAccessError);
}

void XmlRowsetWriter::writeRow(const Row& row) {
  buffer_ = "\t<z:row";
  for (size_t i = 0; i < columns_.size() && i < row.size(); ++i) {
    const vb::Variant& v = row[i];
    if (v.isNull() || v.isEmpty()) continue;  // Null: the attribute is left out
    buffer_ += ' ';
    buffer_ += attributeNames_[i];
    buffer_ += "='";
    buffer_ += escapeXmlAttribute(persistedText(columns_[i].type, v));
    buffer_ += '\'';
  }
  buffer_ += "/>\n";
  put(buffer_);
}

void XmlRowsetWriter::finish() {
  put("</rs:data>\n</xml>\n");
  if (std::fflush(out_) != 0) vb::raiseError(vb::errnum::PathFileAccessError);
}

// ---- reading --------------------------------------------------------------------------------

namespace {

// A number attribute; 0 for text that is none, clamped to the 32-bit range.
int32_t numberOf(const std::string& text) {
  long long value = std::strtoll(text.c_str(), nullptr, 10);
  return static_cast<int32_t>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
}

uint8_t byteOf(const std::string& text) {
  return static_cast<uint8_t>(std::clamp<int32_t>(numberOf(text), 0, 255));
}

struct Reader {
  PersistedRowset result;
  std::vector<int> numbers;                       // rs:number of each column
  std::unordered_map<std::string, size_t> byXmlName;
  std::vector<std::string> path;                  // element names, namespace|local
  bool carriers = false;
  XML_Parser parser = nullptr;
  std::string error;  // why the file is refused, with its line; the first reason found

  void refuse(const std::string& why) {
    if (!error.empty()) return;
    error = why + " at line " + std::to_string(XML_GetCurrentLineNumber(parser));
    XML_StopParser(parser, XML_FALSE);
  }

  static std::string ns(const char* uri, const char* local) { return std::string(uri) + "|" + local; }

  std::string restore(const char* text) const {
    std::string value(text);
    if (!carriers) return value;
    std::string out;
    for (size_t i = 0; i < value.size(); ++i) {
      if (i + 3 < value.size() && static_cast<unsigned char>(value[i]) == kCarrier[0] &&
          static_cast<unsigned char>(value[i + 1]) == kCarrier[1] &&
          static_cast<unsigned char>(value[i + 2]) == kCarrier[2] &&
          static_cast<unsigned char>(value[i + 3]) >= 0x80 &&
          static_cast<unsigned char>(value[i + 3]) < 0xA0) {
        out += static_cast<char>(static_cast<unsigned char>(value[i + 3]) - 0x80);
        i += 3;
      } else {
        out += value[i];
      }
    }
    return out;
  }

  void attributeType(const char** atts) {
    // Rows already read have no value for a column declared after them.
    if (!result.rows.empty()) return refuse("a column is declared after the rows");
    ColumnInfo c;
    std::string xmlName;
    bool ownName = false;  // rs:name: the column's name when name holds a generated one
    int number = static_cast<int>(result.columns.size()) + 1;
    for (size_t i = 0; atts[i] != nullptr; i += 2) {
      std::string name = atts[i], value = restore(atts[i + 1]);
      if (name == "name") xmlName = value;
      else if (name == ns(kNsRs, "name")) {
        c.name = value;
        ownName = true;
      }
      else if (name == ns(kNsRs, "number")) number = numberOf(value);
      else if (name == ns(kNsRs, "basetable")) c.baseTable = value;
      else if (name == ns(kNsRs, "basecolumn")) c.baseColumn = value;
      else if (name == ns(kNsRs, "nullable")) c.nullable = vb::LCase(value) == "true";
    }
    if (!ownName) c.name = xmlName;
    byXmlName[xmlName] = result.columns.size();
    result.columns.push_back(c);
    numbers.push_back(number);
  }

  void dataType(const char** atts) {
    if (result.columns.empty()) return;
    ColumnInfo& c = result.columns.back();
    std::string type = "string", dbType;
    bool isLong = false, fixed = false;
    for (size_t i = 0; atts[i] != nullptr; i += 2) {
      std::string name = atts[i], value = atts[i + 1];
      if (name == ns(kNsDt, "type")) type = value;
      else if (name == ns(kNsRs, "dbtype")) dbType = value;
      else if (name == ns(kNsDt, "maxLength")) c.definedSize = numberOf(value);
      else if (name == ns(kNsRs, "precision")) c.precision = byteOf(value);
      else if (name == ns(kNsRs, "scale")) c.numericScale = byteOf(value);
      else if (name == ns(kNsRs, "long")) isLong = vb::LCase(value) == "true";
      else if (name == ns(kNsRs, "fixedlength")) fixed = vb::LCase(value) == "true";
      else if (name == ns(kNsRs, "maybenull") && vb::LCase(value) == "false") c.nullable = false;
    }
    c.type = adoTypeOf(type, dbType, isLong, fixed);
  }

  void row(const char** atts) {
    Row values(result.columns.size(), vb::Variant::null());
    for (size_t i = 0; atts[i] != nullptr; i += 2) {
      auto found = byXmlName.find(atts[i]);
      if (found == byXmlName.end()) continue;
      const ColumnInfo& c = result.columns[found->second];
      std::string text = restore(atts[i + 1]);
      try {
        values[found->second] = variantFromText(c.type, text);
      } catch (const vb::VBError&) {
        values[found->second] = text;  // kept as written when it is no value of the type
      }
    }
    result.rows.push_back(std::move(values));
  }

  void start(const char* name, const char** atts) {
    std::string element = name;
    std::string parent = path.empty() ? "" : path.back();
    path.push_back(element);
    if (element == ns(kNsS, "ElementType")) {
      for (size_t i = 0; atts[i] != nullptr; i += 2)
        if (std::string(atts[i]) == ns(kNsRs, "updatable"))
          result.updatable = vb::LCase(atts[i + 1]) == "true";
    } else if (element == ns(kNsS, "AttributeType")) {
      attributeType(atts);
    } else if (element == ns(kNsS, "datatype") && parent == ns(kNsS, "AttributeType")) {
      dataType(atts);
    } else if (element == ns(kNsZ, "row") &&
               (parent == ns(kNsRs, "data") || parent == ns(kNsRs, "insert"))) {
      row(atts);
    }
  }

  // Orders columns by rs:number (rows are read after the schema, so they are reordered too).
  void order() {
    std::vector<size_t> index(result.columns.size());
    for (size_t i = 0; i < index.size(); ++i) index[i] = i;
    std::stable_sort(index.begin(), index.end(), [&](size_t a, size_t b) { return numbers[a] < numbers[b]; });
    bool same = true;
    for (size_t i = 0; i < index.size(); ++i) same = same && index[i] == i;
    if (same) return;
    std::vector<ColumnInfo> columns;
    for (size_t i : index) columns.push_back(result.columns[i]);
    result.columns = std::move(columns);
    for (auto& r : result.rows) {
      Row reordered;
      for (size_t i : index) reordered.push_back(i < r.size() ? r[i] : vb::Variant::null());
      r = std::move(reordered);
    }
  }
};

// Replaces references to control characters by their carriers (see kCarrier).
bool carryControlCharacters(std::string& text) {
  bool any = false;
  size_t i = 0;
  while (true) {
    size_t amp = text.find("&#", i);
    if (amp == std::string::npos) break;
    size_t semi = text.find(';', amp);
    if (semi == std::string::npos || semi - amp > 10) {
      i = amp + 2;
      continue;
    }
    bool hex = text[amp + 2] == 'x' || text[amp + 2] == 'X';
    std::string digits = text.substr(amp + (hex ? 3 : 2), semi - amp - (hex ? 3 : 2));
    char* end = nullptr;
    long code = std::strtol(digits.c_str(), &end, hex ? 16 : 10);
    bool control = !digits.empty() && *end == '\0' && code >= 0 && code < 0x20 && code != 9 &&
                   code != 10 && code != 13;
    if (!control) {
      i = semi + 1;
      continue;
    }
    any = true;
    std::string carrier = {static_cast<char>(kCarrier[0]), static_cast<char>(kCarrier[1]),
                           static_cast<char>(kCarrier[2]), static_cast<char>(0x80 + code)};
    text.replace(amp, semi + 1 - amp, carrier);
    i = amp + carrier.size();
  }
  return any;
}

}  // namespace

PersistedRowset readXmlRowset(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) vb::raiseError(vb::errnum::FileNotFound, "File not found: " + path, kSource);
  std::stringstream content;
  content << in.rdbuf();
  return readXmlRowsetText(content.str(), path);
}

PersistedRowset readXmlRowsetText(std::string text, const std::string& path) {
  Reader reader;
  reader.carriers = carryControlCharacters(text);
  std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
      XML_ParserCreateNS("UTF-8", '|'), &XML_ParserFree);
  if (!parser) vb::raiseError(vb::errnum::OutOfMemory);
  reader.parser = parser.get();
  XML_SetUserData(parser.get(), &reader);
  XML_SetElementHandler(
      parser.get(),
      [](void* data, const XML_Char* name, const XML_Char** atts) {
        static_cast<Reader*>(data)->start(name, atts);
      },
      [](void* data, const XML_Char*) { static_cast<Reader*>(data)->path.pop_back(); });
  auto refused = [&](const std::string& why) {
    vb::raiseError(vb::errnum::ProviderError,
                   "The file is not a persisted record set: " + why + " of " + path, kSource);
  };
  // In pieces: XML_Parse takes a length of type int.
  constexpr size_t kPiece = 1 << 24;
  for (size_t at = 0;;) {
    size_t length = std::min(kPiece, text.size() - at);
    bool last = at + length == text.size();
    if (XML_Parse(parser.get(), text.data() + at, static_cast<int>(length), last ? XML_TRUE : XML_FALSE) !=
        XML_STATUS_OK) {
      if (!reader.error.empty()) refused(reader.error);
      refused(std::string(XML_ErrorString(XML_GetErrorCode(parser.get()))) + " at line " +
              std::to_string(XML_GetCurrentLineNumber(parser.get())));
    }
    at += length;
    if (last) break;
  }
  if (!reader.error.empty()) refused(reader.error);
  if (reader.result.columns.empty())
    vb::raiseError(vb::errnum::ProviderError,
                   "The file is not a persisted record set: it has no schema section: " + path,
                   kSource);
  reader.order();
  return std::move(reader.result);
}

}  // namespace varsentix::ado::detail
