// Regional settings the format tests run under: the generic one and a comma-decimal one with the
// separators a German user has.
#pragma once

#include "core/locale_settings.h"

namespace kelpdex::testing {

inline const LocaleSettings kGermanLocale = {7, ',', '.', '.', ':', ';', '\\', 1, 1, "\x80"};

}  // namespace kelpdex::testing
