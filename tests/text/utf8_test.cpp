#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "text/utf8.h"

namespace kelpdex::text {
namespace {

TEST(Utf8, CodePointMappingIsABijectionOnTheCodePage) {
  int mapped = 0;
  for (uint32_t cp = 0; cp < 0x3000; ++cp) {
    if (const int c = UnicodeToCp1252(cp); c >= 0) {
      EXPECT_EQ(Cp1252ToUnicode(static_cast<uint8_t>(c)), cp);
      ++mapped;
    }
  }
  EXPECT_EQ(mapped, 256);
  EXPECT_EQ(Cp1252ToUnicode(0x80), 0x20ACu);
  EXPECT_EQ(Cp1252ToUnicode(0x9F), 0x0178u);
  EXPECT_EQ(Cp1252ToUnicode(0x8D), 0x008Du);
  EXPECT_EQ(UnicodeToCp1252(0x80), -1);  // C1 control whose byte holds €
  EXPECT_EQ(UnicodeToCp1252(0x10FFFF), -1);
}

TEST(Utf8, EveryByteRoundTripsThroughBothDecoders) {
  std::string all;
  for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
  std::string utf8 = "x";
  AppendCp1252AsUtf8(utf8, all);
  EXPECT_EQ(utf8.substr(0, 4), std::string("x\0\x01\x02", 4));
  EXPECT_EQ(Cp1252ToUtf8("\x80\xE9\x81"), "\xE2\x82\xAC\xC3\xA9\xC2\x81");
  EXPECT_EQ(Utf8ToCp1252(utf8), "x" + all);
  std::string strict;
  EXPECT_EQ(DecodeUtf8Prefix(utf8, strict), utf8.size());
  EXPECT_EQ(strict, "x" + all);
}

TEST(Utf8, LenientDecodingReplacesEachBadSequenceOnce) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"\xF0\x9F\x98\x80!", "?!"},  // valid, but not in the code page
      {"\xC0\xAF", "??"},           // overlong
      {"\xE0\x80\xAF", "???"},
      {"\xF0\x80\x80\xAF", "????"},
      {"\xED\xA0\x80", "???"},       // surrogate
      {"\xF4\x90\x80\x80", "????"},  // past U+10FFFF
      {"\xF5\x80", "??"},
      {"a\x80z", "a?z"},
      {"\xE2\x82Z\xC3\xA9", "?Z\xE9"},  // truncated, then valid text
      {"\xF0\x9F\x98", "?"},
  };
  for (const auto& [utf8, expected] : cases) {
    EXPECT_EQ(Utf8ToCp1252(utf8), expected) << testing::PrintToString(std::string(utf8));
  }
  // A sequence cut short by the end of the view, not of the buffer behind it.
  EXPECT_EQ(Utf8ToCp1252(std::string_view("a\xE2\x82\xAC", 3)), "a?");
  // The count of replacements leaves out the '?' that was typed.
  size_t replaced = 9;
  EXPECT_EQ(Utf8ToCp1252("?\xE2\x82\xAC\xE2\x9C\x93x\xC3", &replaced), "?\x80?x?");
  EXPECT_EQ(replaced, 2u);
  EXPECT_EQ(Utf8ToCp1252("plain?", &replaced), "plain?");
  EXPECT_EQ(replaced, 0u);
}

TEST(Utf8, StrictPrefixStopsAtTheFirstUnsupportedSequence) {
  struct Case {
    std::string_view utf8;
    size_t consumed;
    std::string_view decoded;
  };
  const Case cases[] = {
      {"ab\xF0\x9F\x98\x80", 2, "ab"},  // no four-byte forms
      {"ab\xC1\x81", 2, "ab"},         {"ab\x80", 2, "ab"},      {"ab\xC3", 2, "ab"},
      {"ab\xE2\x82", 2, "ab"},         {"ab\xE2\x82z", 2, "ab"}, {"\xE4\xB8\xADz", 4, "?z"},
  };
  for (const Case& c : cases) {
    std::string decoded = "<";
    EXPECT_EQ(DecodeUtf8Prefix(c.utf8, decoded), c.consumed)
        << testing::PrintToString(std::string(c.utf8));
    EXPECT_EQ(decoded, "<" + std::string(c.decoded));
  }
  std::string decoded;
  EXPECT_EQ(DecodeUtf8Prefix(std::string_view("a\xC3\xA9", 2), decoded), 1u);
}

}  // namespace
}  // namespace kelpdex::text
