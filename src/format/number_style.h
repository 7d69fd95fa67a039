// The number format as the format dialog chooses it: a kind and a few parameters, kept inside the
// style record, and the format string generated from it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/locale_settings.h"
#include "store/style_table.h"

namespace kelpdex {

namespace format_kind {
constexpr uint8_t kDefault = 0;  // shown as "General"
constexpr uint8_t kGeneral = 1;  // fixed decimals, leading zeroes, grouping, negatives
constexpr uint8_t kCurrency = 2;
constexpr uint8_t kAccounting = 3;
constexpr uint8_t kDate = 4;
constexpr uint8_t kTime = 5;
constexpr uint8_t kDateTime = 6;
constexpr uint8_t kPercentage = 7;
constexpr uint8_t kFraction = 8;
constexpr uint8_t kScientific = 9;
constexpr uint8_t kUserDefined = 10;
constexpr uint8_t kCount = 11;
}  // namespace format_kind

// How negative numbers show (the `Negative` attribute).
namespace negative {
constexpr uint8_t kMinus = 0;
constexpr uint8_t kRed = 1;
constexpr uint8_t kBrackets = 2;
constexpr uint8_t kRedAndBrackets = 3;
}  // namespace negative

// The longest format string, without its NUL.
constexpr size_t kFormatTextMax = 1024;
// Room for any string BuildFormatString writes, NUL included.
constexpr size_t kBuiltFormatMax = kFormatTextMax + 1;

struct NumberStyle {
  uint8_t kind = format_kind::kDefault;
  bool fixedDecimals = false;
  uint8_t decimalDigits = 0;  // at most 14
  bool leadingZeroesSet = false;
  uint8_t leadingZeroes = 0;
  bool groupDigits = false;
  uint8_t negative = negative::kMinus;
  uint8_t symbolPosition = 0;  // "$1.1", "$ 1.1", "1.1$", "1.1 $"
  char symbol[16] = {};
  uint8_t index = 0;      // Date and Time kinds; the date index of DateTime
  uint8_t timeIndex = 0;  // DateTime
  bool dateAfterTime = false;
  bool systemDateOrder = false;
  uint8_t denominatorDigits = 0;  // Fraction, when no fixed denominator
  int64_t denominator = 0;        // Fraction: a fixed denominator when not 0
  uint8_t exponent = 0;           // Scientific: 0 free, 1 fixed positive, 2 fixed negative
  uint8_t exponentPower = 0;      // the fixed exponent's magnitude
  char userFormat[kFormatTextMax + 1] = {};  // UserDefined
};

bool operator==(const NumberStyle& a, const NumberStyle& b);

// The number format area of a style record: offsets of the parameters around the kind byte.
namespace number_style {
constexpr uint32_t kDenominatorAt = 24;  // i64
constexpr uint32_t kKindAt = style::kFormatKindAt;
constexpr uint32_t kFixedDecimalsAt = 33;
constexpr uint32_t kDecimalDigitsAt = 34;
constexpr uint32_t kLeadingZeroesSetAt = 35;
constexpr uint32_t kLeadingZeroesAt = 36;
constexpr uint32_t kGroupDigitsAt = 37;
constexpr uint32_t kNegativeAt = 38;
constexpr uint32_t kSymbolPositionAt = 39;
constexpr uint32_t kIndexAt = 40;
constexpr uint32_t kTimeIndexAt = 41;
constexpr uint32_t kDateAfterTimeAt = 42;
constexpr uint32_t kSystemDateOrderAt = 43;
constexpr uint32_t kDenominatorDigitsAt = 44;
constexpr uint32_t kExponentAt = 45;
constexpr uint32_t kExponentPowerAt = 46;
constexpr uint32_t kSymbolAt = 48;  // 16 bytes
constexpr uint32_t kUserFormatAt = style::kUserFormatAt;
}  // namespace number_style

NumberStyle ReadNumberStyle(const StyleRecord& record);
void WriteNumberStyle(const NumberStyle& numberStyle, StyleRecord& record);

// The XML names of the kinds, of the Negative values and of the symbol positions.
const char* FormatKindName(uint8_t kind);
const char* NegativeName(uint8_t value);
const char* SymbolPositionName(uint8_t value);

// The format string of a style. `settings` null means the fixed genericLocale. Returns the length;
// `out` takes kBuiltFormatMax bytes. Default and unknown kinds give "".
size_t BuildFormatString(const NumberStyle& numberStyle, char* out,
                         const LocaleSettings* settings = nullptr);
std::string BuildFormatString(const NumberStyle& numberStyle,
                              const LocaleSettings* settings = nullptr);

}  // namespace kelpdex
