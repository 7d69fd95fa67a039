// A date or time typed in a local form ("8/11/2005", "21. November 2026", "6:24 PM") read into a
// date record, so that it can be kept as a generic date string.
#pragma once

#include <string_view>

#include "core/locale_settings.h"
#include "format/generic_date.h"
#include "format/number_style.h"

namespace kelpdex {

// `kind` is format_kind::kDate, kTime or kDateTime (date, time, or a date with an optional time
// behind it). Tries the generic form, then the style's own format string under the fixed
// separators, then the date (or time) pictures by index under `settings`. Month and weekday names
// match the locale's and the English ones in any case. A two-digit year falls in the current
// century and a missing year is the current one. `style` may be null; `settings` null means
// genericLocale.
bool ParseDateText(std::string_view text, DateTimeRecord& record, int kind,
                   const NumberStyle* style = nullptr, const LocaleSettings* settings = nullptr);

// The year a two-digit or missing year is taken from; 0 restores the clock's. For tests.
void SetDateParseYearForTesting(int year);

}  // namespace kelpdex
