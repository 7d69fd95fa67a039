// Character classes and case of the single-byte code page (Windows-1252).
// Every casing and case-insensitive comparison in Kelpdex goes through these tables, never
// through the C locale, so that results are identical on every machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpdex::text {

extern const uint8_t kUpperTable[256];
extern const uint8_t kLowerTable[256];
// Bit 0: letter; bit 1: decimal digit.
extern const uint8_t kClassTable[256];

inline uint8_t CharUpper(uint8_t c) { return kUpperTable[c]; }
inline uint8_t CharLower(uint8_t c) { return kLowerTable[c]; }
inline char CharUpper(char c) { return static_cast<char>(kUpperTable[static_cast<uint8_t>(c)]); }
inline char CharLower(char c) { return static_cast<char>(kLowerTable[static_cast<uint8_t>(c)]); }
inline bool IsCharAlpha(char c) { return (kClassTable[static_cast<uint8_t>(c)] & 1) != 0; }
inline bool IsCharAlphaNumeric(char c) { return (kClassTable[static_cast<uint8_t>(c)] & 3) != 0; }

void UpperInPlace(char* s, size_t n);
void LowerInPlace(char* s, size_t n);
void UpperInPlace(std::string& s);
void LowerInPlace(std::string& s);
std::string Upper(std::string_view s);
std::string Lower(std::string_view s);

// Compares byte by byte after upper-casing, as unsigned bytes. Returns <0, 0 or >0.
int CompareNoCase(std::string_view a, std::string_view b);
bool EqualNoCase(std::string_view a, std::string_view b);
// True when `s` begins with `prefix`, ignoring case.
bool StartsWithNoCase(std::string_view s, std::string_view prefix);

}  // namespace kelpdex::text
