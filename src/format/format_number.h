// A number through a compiled format: section choice, rounding, scaling, digit filling, grouping,
// fractions and exponents. Dates are strings in Kelpdex, so a date format never applies here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/locale_settings.h"
#include "format/format_string.h"

namespace kelpdex {

// Room for any displayed value, NUL included; longer results are cut.
constexpr size_t kDisplayTextMax = 2048;

// What the format asked of the display beside the text.
struct FormatColour {
  bool set = false;
  uint32_t colour = 0;  // COLORREF
};

// Writes the value into `out` (kDisplayTextMax bytes) and returns true; false when the format does
// not apply to a number (a date format, no section for the value), and the caller falls back on
// NumberToGeneral. The compiled format must come from the same `settings` (null: genericLocale).
bool FormatNumber(double x, const CompiledFormat& format, char* out, size_t* length = nullptr,
                  const LocaleSettings* settings = nullptr, FormatColour* colour = nullptr);
bool FormatNumber(double x, std::string_view formatText, char* out, size_t* length = nullptr,
                  const LocaleSettings* settings = nullptr, FormatColour* colour = nullptr);
// For callers off the hot path: the text, or NumberToGeneral's when the format does not apply.
std::string FormatNumber(double x, std::string_view formatText,
                         const LocaleSettings* settings = nullptr);

}  // namespace kelpdex
