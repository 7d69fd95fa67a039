// Text through a format: a generic date or time string shown by a date format, or any text
// through the "@" section.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/locale_settings.h"
#include "format/format_string.h"
#include "format/generic_date.h"

namespace kelpdex {

// True with the text in `out` (kDisplayTextMax bytes) when the format applies: its "@" or fourth
// section, or its date section when the text is a generic date string. False otherwise; the caller
// shows the text as it stands. `settings` null means genericLocale, with English names.
bool FormatText(std::string_view text, const CompiledFormat& format, char* out,
                size_t* length = nullptr, const LocaleSettings* settings = nullptr);
bool FormatText(std::string_view text, std::string_view formatText, char* out,
                size_t* length = nullptr, const LocaleSettings* settings = nullptr);
std::string FormatText(std::string_view text, std::string_view formatText,
                       const LocaleSettings* settings = nullptr);

// A date record through a date section of a compiled format. False when the section shows a
// date part the record lacks.
bool FormatDate(const DateTimeRecord& record, const CompiledFormat& format, int section, char* out,
                size_t* length = nullptr, const LocaleSettings* settings = nullptr);

}  // namespace kelpdex
