#include <gtest/gtest.h>

#include <random>
#include <string>

#include "engine/TextTraits.h"

using varsentix::engine::isUtf8WithoutNul;
using varsentix::engine::TextTraits;
using varsentix::engine::traitsOf;

namespace {

// One byte at a time, as the definition reads: UTF-8 sequences of two to four bytes (lead byte
// and continuation bytes), no NUL; a backslash, % or _ anywhere.
TextTraits byteByByte(const std::string& text) {
  TextTraits traits;
  for (size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == 0) return TextTraits{false, traits.backslash, traits.wildcard};
    if (c < 0x80) {
      traits.backslash |= c == '\\';
      traits.wildcard |= c == '%' || c == '_';
      ++i;
      continue;
    }
    size_t length = 0;
    if (c >= 0xC0 && c < 0xE0) length = 2;
    else if (c >= 0xE0 && c < 0xF0) length = 3;
    else if (c >= 0xF0 && c < 0xF8) length = 4;
    if (length == 0 || i + length > text.size()) return TextTraits{false, traits.backslash, traits.wildcard};
    for (size_t k = 1; k < length; ++k)
      if ((static_cast<unsigned char>(text[i + k]) & 0xC0) != 0x80)
        return TextTraits{false, traits.backslash, traits.wildcard};
    i += length;
  }
  return traits;
}

void expectSame(const std::string& text) {
  const TextTraits fast = traitsOf(text);
  const TextTraits plain = byteByByte(text);
  ASSERT_EQ(fast.valid, plain.valid) << "text of " << text.size() << " bytes";
  ASSERT_EQ(isUtf8WithoutNul(text), plain.valid) << "text of " << text.size() << " bytes";
  if (!plain.valid) return;  // what was seen before the fault does not matter then
  ASSERT_EQ(fast.backslash, plain.backslash) << text;
  ASSERT_EQ(fast.wildcard, plain.wildcard) << text;
}

}  // namespace

TEST(TextTraits, PlainTextOfAnyLengthHasNoneOfTheTraits) {
  for (size_t length = 0; length < 40; ++length) {
    const TextTraits traits = traitsOf(std::string(length, 'a'));
    EXPECT_TRUE(traits.valid);
    EXPECT_FALSE(traits.backslash);
    EXPECT_FALSE(traits.wildcard);
  }
}

TEST(TextTraits, EachSpecialCharacterIsFoundAtEveryPlace) {
  // Within the eight-byte words and in the bytes after the last whole word.
  for (size_t length = 1; length < 27; ++length)
    for (size_t at = 0; at < length; ++at) {
      std::string text(length, 'x');
      text[at] = '\\';
      EXPECT_TRUE(traitsOf(text).backslash) << length << " " << at;
      EXPECT_FALSE(traitsOf(text).wildcard);
      text[at] = '%';
      EXPECT_TRUE(traitsOf(text).wildcard) << length << " " << at;
      text[at] = '_';
      EXPECT_TRUE(traitsOf(text).wildcard) << length << " " << at;
      EXPECT_FALSE(traitsOf(text).backslash);
      EXPECT_TRUE(isUtf8WithoutNul(text)) << length << " " << at;
      text[at] = '\0';
      EXPECT_FALSE(traitsOf(text).valid) << length << " " << at;
      EXPECT_FALSE(isUtf8WithoutNul(text)) << length << " " << at;
      text[at] = '\x80';  // a continuation byte alone
      EXPECT_FALSE(traitsOf(text).valid) << length << " " << at;
      EXPECT_FALSE(isUtf8WithoutNul(text)) << length << " " << at;
    }
}

TEST(TextTraits, NeighboursOfTheSpecialCharactersAreNotTaken) {
  // '[', ']', '^', '$', '&', '`' and DEL sit next to the bytes looked for.
  const TextTraits traits = traitsOf("[]^$&`\x7f[]^$&`\x7f[]^$&`\x7f ]^'");
  EXPECT_TRUE(traits.valid);
  EXPECT_FALSE(traits.backslash);
  EXPECT_FALSE(traits.wildcard);
}

TEST(TextTraits, UnicodeTextIsValidAndKeepsItsTraits) {
  EXPECT_TRUE(traitsOf("Sinéad O'Connor, São José dos Campos").valid);
  const TextTraits traits = traitsOf("Gonçalves 100% ünd \xF0\x9F\x98\x80 more text_here");
  EXPECT_TRUE(traits.valid);
  EXPECT_TRUE(traits.wildcard);
  EXPECT_FALSE(traits.backslash);
  EXPECT_FALSE(traitsOf("truncated sequence at the end \xE2\x82").valid);
}

TEST(TextTraits, RandomTextsAgreeWithAReadingByteByByte) {
  std::mt19937 random(20261124);
  const std::string alphabet = std::string("abcXYZ 09'\\%_[]^\x7f") + std::string(1, '\0');
  const char* const sequences[] = {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xC3", "\x80", "\xFF"};
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const int length = std::uniform_int_distribution<int>(0, 48)(random);
    // Mostly plain letters, so that whole words are passed over; now and then anything.
    const int rare = std::uniform_int_distribution<int>(0, 3)(random);
    while (static_cast<int>(text.size()) < length) {
      const int pick = std::uniform_int_distribution<int>(0, 99)(random);
      if (pick < 100 - rare * 3) text += static_cast<char>('a' + pick % 26);
      else if (pick % 2 == 0) text += alphabet[static_cast<size_t>(pick) % alphabet.size()];
      else text += sequences[static_cast<size_t>(pick) % 6];
    }
    expectSame(text);
  }
}
