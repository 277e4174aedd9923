#include "server/Guid.h"

#include <cctype>
#include <cstdio>
#include <cstring>

extern "C" {
// The fixed class ids of the four public classes and the ids of the interfaces handed out.
const VX_CLSID VX_CLSID_Varsenti = {0xB9887F9B, 0x6D25, 0x4F2A, {0xB3, 0x19, 0x69, 0x01, 0x5E, 0xC9, 0x13, 0x17}};
const VX_CLSID VX_CLSID_clsDBManager = {0x18EFAB18, 0x0F20, 0x4898, {0xA9, 0xF5, 0xC8, 0x33, 0xB2, 0x21, 0xD5, 0x79}};
const VX_CLSID VX_CLSID_clsResultSet = {0xC1334F4F, 0xFF52, 0x4D69, {0x96, 0x12, 0x64, 0xDE, 0x34, 0x18, 0x43, 0xFB}};
const VX_CLSID VX_CLSID_clsData = {0x70CADA6A, 0xD6E4, 0x4741, {0xA3, 0xA3, 0xA5, 0x4C, 0x6D, 0x4D, 0x06, 0x04}};
const VX_IID VX_IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
const VX_IID VX_IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
const VX_IID VX_IID_IVarsentiXObject = {0xCB9CB754, 0x4A98, 0x45FB, {0xB2, 0xE7, 0xC7, 0x00, 0x26, 0x99, 0xC3, 0xC1}};
}

namespace varsentix::server::detail {

bool sameGuid(const VX_GUID& a, const VX_GUID& b) noexcept {
  return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
         std::memcmp(a.Data4, b.Data4, sizeof a.Data4) == 0;
}

std::string guidText(const VX_GUID& g) {
  char text[40];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned>(g.Data1), static_cast<unsigned>(g.Data2),
                static_cast<unsigned>(g.Data3), g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3],
                g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

namespace {

// Reads `digits` hexadecimal digits at text[pos]; false on any other character.
bool readHex(const std::string& text, size_t pos, size_t digits, uint32_t& value) {
  value = 0;
  for (size_t i = pos; i < pos + digits; ++i) {
    const int c = static_cast<unsigned char>(text[i]);
    if (!std::isxdigit(c)) return false;
    value = value * 16 + static_cast<uint32_t>(std::isdigit(c) ? c - '0' : std::tolower(c) - 'a' + 10);
  }
  return true;
}

}  // namespace

std::optional<VX_GUID> parseGuid(const std::string& raw) {
  const size_t first = raw.find_first_not_of(" \t");
  const size_t last = raw.find_last_not_of(" \t");
  if (first == std::string::npos) return std::nullopt;
  const std::string text = raw.substr(first, last - first + 1);
  // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
  if (text.size() != 38 || text[0] != '{' || text[37] != '}' || text[9] != '-' ||
      text[14] != '-' || text[19] != '-' || text[24] != '-')
    return std::nullopt;
  VX_GUID g{};
  uint32_t v = 0;
  if (!readHex(text, 1, 8, v)) return std::nullopt;
  g.Data1 = v;
  if (!readHex(text, 10, 4, v)) return std::nullopt;
  g.Data2 = static_cast<uint16_t>(v);
  if (!readHex(text, 15, 4, v)) return std::nullopt;
  g.Data3 = static_cast<uint16_t>(v);
  static constexpr size_t bytePos[8] = {20, 22, 25, 27, 29, 31, 33, 35};
  for (size_t i = 0; i < 8; ++i) {
    if (!readHex(text, bytePos[i], 2, v)) return std::nullopt;
    g.Data4[i] = static_cast<uint8_t>(v);
  }
  return g;
}

}  // namespace varsentix::server::detail

extern "C" VX_HRESULT VxCLSIDFromString(const char* text, VX_CLSID* clsid) {
  if (text == nullptr || clsid == nullptr) return VX_E_POINTER;
  try {
    const auto parsed = varsentix::server::detail::parseGuid(text);
    if (!parsed) return VX_CO_E_CLASSSTRING;
    *clsid = *parsed;
    return VX_S_OK;
  } catch (...) {
    return VX_E_OUTOFMEMORY;
  }
}

extern "C" VX_HRESULT VxStringFromCLSID(const VX_CLSID* clsid, char* buffer, uint32_t bufferSize) {
  if (clsid == nullptr || buffer == nullptr) return VX_E_POINTER;
  if (bufferSize < 39) return VX_E_INVALIDARG;
  try {
    const std::string text = varsentix::server::detail::guidText(*clsid);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return VX_S_OK;
  } catch (...) {
    return VX_E_OUTOFMEMORY;
  }
}
