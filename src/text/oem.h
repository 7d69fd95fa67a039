// Conversion between Windows-1252 and the OEM code page 850 used by xBase and DOS text files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kelpdex::text {

// Exact mapping where both code pages hold the character; otherwise the nearest plain letter
// (an accent dropped) where there is one, else '?'.
uint8_t OemToChar(uint8_t c);
uint8_t CharToOem(uint8_t c);
void OemToCharInPlace(char* s, size_t n);
void CharToOemInPlace(char* s, size_t n);
void OemToCharInPlace(std::string& s);
void CharToOemInPlace(std::string& s);

}  // namespace kelpdex::text
