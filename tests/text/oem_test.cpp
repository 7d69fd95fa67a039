#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "text/oem.h"

namespace kelpdex::text {
namespace {

// A character both code pages hold survives the trip through the other one; a character only
// one of them holds falls back to ASCII, never to a different accented character.
TEST(Oem, SharedCharactersRoundTripAndTheRestFallBackToAscii) {
  int oemShared = 0;
  int charShared = 0;
  for (int i = 0; i < 256; ++i) {
    const auto c = static_cast<uint8_t>(i);
    SCOPED_TRACE(i);
    if (i < 0x80) {
      EXPECT_EQ(OemToChar(c), c);
      EXPECT_EQ(CharToOem(c), c);
      continue;
    }
    if (const uint8_t asChar = OemToChar(c); asChar >= 0x80) {
      EXPECT_EQ(CharToOem(asChar), c);
      ++oemShared;
    }
    if (const uint8_t asOem = CharToOem(c); asOem >= 0x80) {
      EXPECT_EQ(OemToChar(asOem), c);
      ++charShared;
    }
  }
  // Each side has 31 upper-half characters the other lacks: box drawings, blocks, ı, ‗ and ■
  // in 850; € and the typographic signs of 0x80..0x9F plus its five undefined bytes in 1252.
  EXPECT_EQ(oemShared, 97);
  EXPECT_EQ(charShared, 97);
}

TEST(Oem, FallbacksAndSamples) {
  EXPECT_EQ(OemToChar(0x9F), 0x83);  // ƒ
  EXPECT_EQ(OemToChar(0xFF), 0xA0);  // no-break space
  EXPECT_EQ(OemToChar(0xD5), 'i');   // ı
  EXPECT_EQ(OemToChar(0xCD), '-');
  EXPECT_EQ(OemToChar(0xB3), '|');
  EXPECT_EQ(OemToChar(0xC5), '+');
  EXPECT_EQ(OemToChar(0xB1), '?');  // shading
  EXPECT_EQ(CharToOem(0x8A), 'S');  // Š
  EXPECT_EQ(CharToOem(0x9F), 'Y');  // Ÿ
  EXPECT_EQ(CharToOem(0x80), '?');  // €
  EXPECT_EQ(CharToOem(0x9D), '?');

  std::string s = "M\x81nchen Fu\xE1 \x9C";  // OEM "München Fuß £"
  OemToCharInPlace(s);
  EXPECT_EQ(s, "M\xFCnchen Fu\xDF \xA3");
  CharToOemInPlace(s.data(), 2);
  EXPECT_EQ(s, "M\x81nchen Fu\xDF \xA3");
}

}  // namespace
}  // namespace kelpdex::text
