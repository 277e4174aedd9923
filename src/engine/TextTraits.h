#pragma once
// What a text holds that matters to the literal a match query writes for it: whether it is UTF-8
// without NUL, and whether it holds a backslash or a like wildcard. Found in one pass over the
// text, eight bytes at a time while they are plain ASCII without any of those characters (the
// last bytes as the text's last eight): most texts of a record walk are, and the walk asks this
// of every text of every record.
#include <cstdint>
#include <cstring>
#include <string_view>

namespace varsentix::engine {

struct TextTraits {
  bool valid = true;  // UTF-8 without NUL
  bool backslash = false;
  bool wildcard = false;  // % or _
};

namespace detail {

constexpr uint64_t kEveryByte = 0x0101010101010101ull;
constexpr uint64_t kHighBits = 0x8080808080808080ull;

// Not zero when some byte of word is zero (exact as to whether, not as to which).
constexpr uint64_t someZeroByte(uint64_t word) { return (word - kEveryByte) & ~word & kHighBits; }

// Whether eight bytes are ASCII and none of them is NUL, a backslash, % or _.
inline bool plainWord(const char* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return (word & kHighBits) == 0 &&
         (someZeroByte(word) | someZeroByte(word ^ (kEveryByte * '\\')) | someZeroByte(word ^ (kEveryByte * '%')) |
          someZeroByte(word ^ (kEveryByte * '_'))) == 0;
}

}  // namespace detail

inline TextTraits traitsOf(std::string_view text) {
  TextTraits traits;
  size_t i = 0;
  const size_t n = text.size();
  const char* const data = text.data();
  while (i < n) {
    if (n - i >= 8 && detail::plainWord(data + i)) {
      i += 8;
      continue;
    }
    // Fewer than eight bytes left of a text of eight or more: the text's last eight bytes as one
    // word. When all eight are plain, so are those from i on.
    if (n - i < 8 && n >= 8 && detail::plainWord(data + n - 8)) break;
    const auto c = static_cast<unsigned char>(data[i]);
    if (c < 0x80) {
      if (c <= '_') {  // the characters looked for are all at or below '_'
        if (c == 0) {
          traits.valid = false;
          return traits;
        }
        traits.backslash = traits.backslash || c == '\\';
        traits.wildcard = traits.wildcard || c == '%' || c == '_';
      }
      ++i;
      continue;
    }
    const size_t length = (c >> 5) == 0x6 ? 2 : (c >> 4) == 0xE ? 3 : (c >> 3) == 0x1E ? 4 : 0;
    bool sequence = length != 0 && i + length <= n;
    for (size_t k = 1; sequence && k < length; ++k)
      sequence = (static_cast<unsigned char>(data[i + k]) & 0xC0) == 0x80;
    if (!sequence) {
      traits.valid = false;
      return traits;
    }
    i += length;
  }
  return traits;
}

// Only whether text is UTF-8 without NUL (traitsOf(text).valid), where the other traits do not
// matter: eight bytes at a time while they are ASCII without NUL, the rest as traitsOf reads it.
inline bool isUtf8WithoutNul(std::string_view text) {
  size_t i = 0;
  const size_t n = text.size();
  const char* const data = text.data();
  const auto asciiWithoutNul = [data](size_t at) {
    uint64_t word;
    std::memcpy(&word, data + at, sizeof word);
    return (word & detail::kHighBits) == 0 && detail::someZeroByte(word) == 0;
  };
  while (n - i >= 8 && asciiWithoutNul(i)) i += 8;
  // The last bytes as the text's last eight, as traitsOf reads them.
  if (i == n || (n - i < 8 && n >= 8 && asciiWithoutNul(n - 8))) return true;
  // From a character's first byte: the words before were ASCII.
  return traitsOf(text.substr(i)).valid;
}

}  // namespace varsentix::engine
