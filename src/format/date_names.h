// Month and weekday names and the AM/PM designators that date formats show and that typed dates
// are matched against: English for the generic settings, the locale's own otherwise.
#pragma once

#include "core/locale_settings.h"
#include "platform/locale_provider.h"

namespace kelpdex {

struct DateNames {
  char months[12][40];
  char shortMonths[12][24];
  char days[7][40];  // Sunday first, as dayOfWeek counts
  char shortDays[7][24];
  char am[16];
  char pm[16];
};

const DateNames& EnglishDateNames();

// The names of the locale the settings were built from; English for genericLocale, for null and
// for any name the locale cannot supply. Built once per locale and kept.
const DateNames& DateNamesFor(const LocaleSettings* settings);

// Where locale names come from; null restores the machine's. Forgets the names built so far.
void SetDateNamesProvider(platform::LocaleProvider* provider);

}  // namespace kelpdex
