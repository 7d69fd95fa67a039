// The value record of the formula engine's two stacks and of every function argument. Operators,
// values and stack markers share one kind word, whose numbers are part of the design.
#pragma once

#include <cstdint>
#include <string_view>

#include "store/cell_error.h"

namespace kelpdex {

class Worksheet;

namespace kind {
constexpr uint16_t kInvalid = 0;
constexpr uint16_t kEqual = 1;
constexpr uint16_t kLess = 2;
constexpr uint16_t kLessEqual = 3;
constexpr uint16_t kGreater = 4;
constexpr uint16_t kGreaterEqual = 5;
constexpr uint16_t kNotEqual = 6;
constexpr uint16_t kAdd = 7;
constexpr uint16_t kSubtract = 8;
constexpr uint16_t kConcatenate = 9;
constexpr uint16_t kMultiply = 10;
constexpr uint16_t kDivide = 11;
constexpr uint16_t kPower = 12;
constexpr uint16_t kNegate = 13;
constexpr uint16_t kPercent = 14;
constexpr uint16_t kIntersection = 15;
constexpr uint16_t kSheet = 16;
constexpr uint16_t kRange = 17;
constexpr uint16_t kLastOperator = 17;
constexpr uint16_t kNumber = 32;
constexpr uint16_t kReference = 64;
constexpr uint16_t kRangeReference = 128;
constexpr uint16_t kString = 256;
constexpr uint16_t kEmpty = 512;  // an omitted argument (code 0) or an error value
constexpr uint16_t kOpen = 1024;
constexpr uint16_t kClose = 2048;
constexpr uint16_t kEnd = 4096;
constexpr uint16_t kListSeparator = 8192;
constexpr uint16_t kFunction = 16384;
constexpr uint16_t kArray = 32768;

// Class tests on the kind word.
constexpr uint16_t kArrayOrRange = 0x8080;
constexpr uint16_t kNumberOrEmpty = 0x220;
constexpr uint16_t kStringOrEmpty = 0x300;

inline bool IsOperand(uint16_t k) {
  return k == kNumber || k == kString || k == kReference || k == kArray || k == kEmpty ||
         k == kRangeReference;
}
}  // namespace kind

// Reference flags.
namespace rflag {
constexpr uint8_t kRow = 1;
constexpr uint8_t kColumn = 8;
constexpr uint8_t kAbsolute = kRow | kColumn;  // what a field name gives
}  // namespace rflag

struct FormulaValue {
  uint16_t kind = 0;
  uint16_t column = 0;
  uint32_t row = 0;
  uint8_t flags = 0;
  uint16_t column1 = 0;
  uint32_t row1 = 0;
  uint8_t flags1 = 0;
  uint16_t column2 = 0;
  uint32_t row2 = 0;
  uint8_t flags2 = 0;
  double number = 0;
  uint16_t functionIndex = 0;
  uint16_t argumentBase = 0;
  uint8_t errorCode = 0;
  Worksheet* sheet = nullptr;

  static FormulaValue Number(double x, uint8_t error = 0) {
    FormulaValue v;
    v.kind = kind::kNumber;
    v.number = x;
    v.errorCode = error;
    return v;
  }
  // An array of `rows` by `columns` cells on the engine's array list, corners from (0, 0).
  static FormulaValue Array(uint32_t rows, uint16_t columns) {
    FormulaValue v;
    v.kind = kind::kArray;
    v.row2 = rows - 1;
    v.column2 = static_cast<uint16_t>(columns - 1);
    v.flags1 = v.flags2 = rflag::kAbsolute;
    return v;
  }
  static FormulaValue Empty(uint8_t error = 0) {
    FormulaValue v;
    v.kind = kind::kEmpty;
    v.errorCode = error;
    return v;
  }
};

// Whether a comparison operator (kEqual .. kNotEqual) holds for the order of its operands:
// negative, 0 or positive as the left one is smaller, equal or greater.
inline bool ComparisonHolds(uint16_t op, int order) {
  switch (op) {
    case kind::kEqual:
      return order == 0;
    case kind::kLess:
      return order < 0;
    case kind::kLessEqual:
      return order <= 0;
    case kind::kGreater:
      return order > 0;
    case kind::kGreaterEqual:
      return order >= 0;
    default:
      return order != 0;
  }
}

// Subnormals, infinities, NaN and magnitudes past the largest double: a "#NUM!" result.
bool IsBadNumber(double x);

}  // namespace kelpdex
