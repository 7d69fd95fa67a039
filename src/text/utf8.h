// Conversions between the single-byte code page (Windows-1252) and UTF-8. UTF-8 exists only at
// the edges of the program: Qt strings, XML files, UTF-8 text files, the settings file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpdex::text {

// The Unicode code point of a Windows-1252 byte. The five bytes the code page leaves undefined
// (0x81, 0x8D, 0x8F, 0x90, 0x9D) map to the C1 control of the same value.
uint32_t Cp1252ToUnicode(uint8_t c);
// The Windows-1252 byte of a code point, or -1 when the code page has none.
int UnicodeToCp1252(uint32_t codePoint);

std::string Cp1252ToUtf8(std::string_view s);

// Whether every byte is below 0x80, so that the text reads the same in UTF-8 and the code page.
// The bytes are or-ed in a loop the compiler can widen: it runs for every cell of an exchange.
inline bool IsAscii(std::string_view s) {
  uint8_t bits = 0;
  for (char c : s) bits |= static_cast<uint8_t>(c);
  return bits < 0x80;
}
void AppendCp1252AsUtf8(std::string& out, std::string_view s);

// Lenient decoding for text arriving from outside: every malformed sequence, and every code
// point the code page cannot hold, becomes one '?'. `replaced`, when given, receives how many
// did, so that a caller can tell the user or refuse.
std::string Utf8ToCp1252(std::string_view s, size_t* replaced = nullptr);

// The strict decoder of the native XML reader: one-byte ASCII, lead bytes 0xC2..0xDF with one
// continuation byte, 0xE0..0xEF with two. Anything else, or a sequence that runs past the end,
// stops the decoding. Appends what it decoded to `out` (unmappable code points as '?') and
// returns the number of input bytes consumed; equal to s.size() when all was decoded.
size_t DecodeUtf8Prefix(std::string_view s, std::string& out);

}  // namespace kelpdex::text
