#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "text/code_page.h"

namespace kelpdex::text {
namespace {

bool IsCaselessLetter(uint8_t c) {
  return c == 0x83 || c == 0xAA || c == 0xB5 || c == 0xBA || c == 0xDF;  // ƒ ª µ º ß
}

TEST(CodePage, CaseMapsArePairedAndOnlyLettersHaveCase) {
  for (int i = 0; i < 256; ++i) {
    const auto c = static_cast<uint8_t>(i);
    const uint8_t up = CharUpper(c);
    const uint8_t low = CharLower(c);
    SCOPED_TRACE(i);
    EXPECT_TRUE(up == c || low == c);
    EXPECT_EQ(CharLower(up), low);
    EXPECT_EQ(CharUpper(low), up);
    EXPECT_EQ(IsCharAlpha(static_cast<char>(c)), up != low || IsCaselessLetter(c));
    const bool digit =
        IsCharAlphaNumeric(static_cast<char>(c)) && !IsCharAlpha(static_cast<char>(c));
    EXPECT_EQ(digit, i >= '0' && i <= '9');
  }
}

TEST(CodePage, BytesWindowsTreatsSpecially) {
  EXPECT_EQ(CharUpper(uint8_t{0xFF}), 0x9F);                   // ÿ → Ÿ
  EXPECT_EQ(CharUpper(uint8_t{0x9A}), 0x8A);                   // š → Š
  EXPECT_EQ(CharLower(uint8_t{0x8C}), 0x9C);                   // Œ → œ
  for (uint8_t sign : {0xD7, 0xF7, 0x80, 0x99, 0xB2, 0xBD}) {  // × ÷ € ™ ² ½
    EXPECT_FALSE(IsCharAlphaNumeric(static_cast<char>(sign))) << int{sign};
    EXPECT_EQ(CharLower(sign), sign);
  }
}

TEST(CodePage, StringHelpers) {
  EXPECT_EQ(Upper("\x9Akoda \xE9t\xE9 ab-12 \xFF"), "\x8AKODA \xC9T\xC9 AB-12 \x9F");
  EXPECT_EQ(Lower("\x8AKODA \xC9T\xC9"), "\x9Akoda \xE9t\xE9");
  std::string s("caf\xE9\0x", 6);
  UpperInPlace(s);
  EXPECT_EQ(s, std::string("CAF\xC9\0X", 6));
  LowerInPlace(s.data(), 2);
  EXPECT_EQ(s, std::string("caF\xC9\0X", 6));

  EXPECT_EQ(CompareNoCase("abc", "ABC"), 0);
  EXPECT_LT(CompareNoCase("abc", "ABD"), 0);
  EXPECT_LT(CompareNoCase("ab", "abc"), 0);
  EXPECT_GT(CompareNoCase("abc", "AB"), 0);
  EXPECT_GT(CompareNoCase("[", "a"), 0);     // folded to upper case, not lower
  EXPECT_LT(CompareNoCase("z", "\xE9"), 0);  // unsigned bytes
  EXPECT_TRUE(EqualNoCase("\xFF\x8Cuvre", "\x9F\x9CUVRE"));
  EXPECT_FALSE(EqualNoCase("\xD7", "\xF7"));
  EXPECT_FALSE(EqualNoCase("abc", "abcd"));

  EXPECT_TRUE(StartsWithNoCase("Kelpdex", "KELP"));
  EXPECT_TRUE(StartsWithNoCase("Kelpdex", ""));
  EXPECT_FALSE(StartsWithNoCase("kel", "KELP"));
  EXPECT_FALSE(StartsWithNoCase("Kelpdex", "kelq"));
}

}  // namespace
}  // namespace kelpdex::text
