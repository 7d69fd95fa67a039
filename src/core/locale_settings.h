// The separators, date orders and currency symbol that every conversion between numbers and
// text uses. Two exist: the fixed generic one, in which formulas and files are stored, and the
// one in force for display and typing.
#pragma once

#include <cstdint>

#include "platform/locale_provider.h"

namespace kelpdex {

struct LocaleSettings {
  uint8_t localeIndex;  // the locale choice it was built from
  char decimalSeparator;
  char thousandSeparator;
  char dateSeparator;
  char timeSeparator;
  char listSeparator;  // between function arguments and array columns
  char rowSeparator;   // between array rows
  uint8_t dateOrder;   // 0 month first, 1 day first, 2 year first
  uint8_t longDateOrder;
  char currencySymbol[15];
};
static_assert(sizeof(LocaleSettings) == 24, "the regional record is 24 bytes");

extern const LocaleSettings genericLocale;
// Starts as a copy of genericLocale; rebuilt by the procedures below.
extern LocaleSettings currentLocale;

// Builds the regional settings of a locale choice (0 generic, 1 system default, 2 user default,
// 3.. a language of the table). All or nothing: when the locale is not installed, any value cannot
// be read, or its decimal separator cannot be told from the formula separators, the result is a
// copy of genericLocale.
LocaleSettings BuildLocaleSettings(int localeChoice, platform::LocaleProvider& provider);

// Rebuilds currentLocale from a choice. Does nothing, and returns false, when currentLocale was
// already built from that choice.
bool ApplyLocaleChoice(int localeChoice, platform::LocaleProvider& provider);

// The system's regional settings changed: currentLocale follows the user's default locale until
// the next start, whatever was chosen.
void OnSystemSettingChange(platform::LocaleProvider& provider);

}  // namespace kelpdex
