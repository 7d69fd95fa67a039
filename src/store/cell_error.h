// The error codes a value can carry: the high nibble of a cell's tag, and the error byte of the
// formula engine's values. They live with the cell record so that formats and files can name
// them without the formula engine.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelpdex {

// Where two meet, the larger wins.
namespace ferr {
constexpr uint8_t kNone = 0;
constexpr uint8_t kDivZero = 0x10;
constexpr uint8_t kName = 0x20;
constexpr uint8_t kNull = 0x30;
constexpr uint8_t kNA = 0x40;
constexpr uint8_t kNum = 0x50;
constexpr uint8_t kRef = 0x60;
constexpr uint8_t kValue = 0x70;
constexpr uint8_t kMemory = 0x80;
constexpr uint8_t kFill = 0x90;
constexpr uint8_t kCirc = 0xA0;
constexpr uint8_t kImpl = 0xB0;
constexpr uint8_t kSyntax = 0xC0;
}  // namespace ferr

// The literal of an error code ("#DIV/0!" .. "#SYNTAX!"); empty outside 0x10..0xC0.
std::string_view ErrorLiteral(uint8_t code);
inline uint8_t LargerError(uint8_t a, uint8_t b) {
  return a > b ? a : b;
}

}  // namespace kelpdex
