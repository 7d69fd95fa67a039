// The format-string language compiled into an item list with up to four sections, which the
// number and date formatters and the typed-text parser run on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/locale_settings.h"

namespace kelpdex {

// Item kinds, one bit each. The bits from 0x400000 on are the formatter's own refinements.
namespace item {
constexpr uint32_t kLiteral = 0x1;
constexpr uint32_t kDigit = 0x2;      // "0", "#" or "?", the character says which
constexpr uint32_t kThousands = 0x4;  // grouping, or a scaling by 1000 (see the section)
constexpr uint32_t kPoint = 0x8;
constexpr uint32_t kExponent = 0x10;
constexpr uint32_t kBar = 0x20;
constexpr uint32_t kText = 0x40;  // "@"
constexpr uint32_t kYear = 0x1000;
constexpr uint32_t kMonth = 0x2000;
constexpr uint32_t kDay = 0x4000;
constexpr uint32_t kHour = 0x8000;
constexpr uint32_t kMinute = 0x10000;
constexpr uint32_t kSecond = 0x20000;
constexpr uint32_t kAmPm = 0x40000;
constexpr uint32_t kDateSeparator = 0x80000;
constexpr uint32_t kTimeSeparator = 0x100000;
constexpr uint32_t kElapsed = 0x200000;  // with kHour, kMinute or kSecond: "[h]", "[m]", "[s]"
constexpr uint32_t kGeneral = 0x400000;  // "General": the whole value in its general form
constexpr uint32_t kBlank = 0x800000;    // "_x": a blank as wide as x
constexpr uint32_t kFill = 0x1000000;    // "*x": x repeated to fill the cell
constexpr uint32_t kPercent = 0x2000000;
constexpr uint32_t kSecondFraction = 0x4000000;  // the point and digits behind seconds

constexpr uint32_t kDateTokens = kYear | kMonth | kDay | kHour | kMinute | kSecond | kAmPm;
constexpr uint32_t kNumberTokens = kDigit | kPoint | kExponent | kBar;
}  // namespace item

struct FormatItem {
  uint32_t kind;
  uint8_t section;
  // The character: the literal, the placeholder, the separator; for a date or time token the
  // count of its letters ("mmmm" is 4); for AM/PM 5 and for A/P 3.
  char ch;
};

// A colour or condition in brackets, 24 bytes as the compiled form has always kept them.
struct FormatBracket {
  uint8_t type;  // bracket::kColour or bracket::kCondition
  uint8_t op;    // condition::
  uint8_t unused[2];
  uint32_t colour;  // COLORREF: red in the low byte
  double value;
  uint8_t reserved[8];
};
static_assert(sizeof(FormatBracket) == 24);

namespace bracket {
constexpr uint8_t kColour = 1;
constexpr uint8_t kCondition = 2;
}  // namespace bracket

namespace condition {
constexpr uint8_t kEqual = 1;
constexpr uint8_t kNotEqual = 2;
constexpr uint8_t kLess = 3;
constexpr uint8_t kLessEqual = 4;
constexpr uint8_t kGreater = 5;
constexpr uint8_t kGreaterEqual = 6;
}  // namespace condition

struct FormatSection {
  uint32_t kinds;  // union of the items' kinds
  uint16_t first;  // index of the first item
  uint16_t count;
  uint16_t integerDigits;   // placeholders before the point (or before the numerator)
  uint16_t decimalDigits;   // placeholders behind the point
  uint16_t exponentDigits;  // placeholders behind the exponent mark
  uint16_t numeratorDigits;
  uint16_t denominatorDigits;
  int16_t pointAt;      // item index of the point, -1 for none
  int16_t barAt;        // item index of the fraction bar, -1 for none
  int16_t numeratorAt;  // item index of the first numerator placeholder, -1 for none
  bool grouping;
  uint8_t thousandsScale;  // trailing separators: the value is divided by 1000 per each
  uint8_t percentCount;
  char exponentChar;     // 'E' or 'e'
  char exponentSign;     // '+' shows every sign, '-' only a negative one
  uint8_t secondDigits;  // digits of a second's fraction
  bool twelveHour;       // an AM/PM token is present
  int64_t fixedDenominator;
  uint8_t bracketCount;
  FormatBracket brackets[3];
};

constexpr int kMaxFormatItems = 1025;
constexpr int kMaxFormatSections = 4;

struct CompiledFormat {
  FormatItem items[kMaxFormatItems];
  uint16_t itemCount;
  bool overflow;
  uint8_t sectionCount;
  FormatSection sections[kMaxFormatSections];
  char decimalSeparator;  // of the settings it was compiled under
  char thousandSeparator;

  bool HasDateTokens() const;
  // The section that holds "@", or the fourth; -1 when there is none.
  int TextSection() const;
};

// False when the text is no valid format: a fifth section, a fourth bracket, digits mixed with
// date tokens, a bracket without its "]", more than kMaxFormatItems items or an empty text.
// `settings` null means genericLocale.
bool ParseFormatString(std::string_view text, CompiledFormat& compiled,
                       const LocaleSettings* settings = nullptr);

// The sixteen colour names or "#RRGGBB", without brackets and in any case.
bool ParseColourName(std::string_view text, uint32_t& colour);
// The name of one of the sixteen, else "#RRGGBB". `out` takes 8 bytes. Returns the length.
size_t ColourName(uint32_t colour, char* out);

}  // namespace kelpdex
