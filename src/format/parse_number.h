// Typed text read as a number in the notations a user writes: groups, currency before or behind,
// brackets, percent, fractions and exponents, under the regional settings in force.
#pragma once

#include <string_view>

#include "core/locale_settings.h"
#include "format/number_style.h"

namespace kelpdex {

enum class NumberParse {
  kNotANumber,  // anything else stands in the text
  kNumber,
  kOutOfRange,  // a well-formed number that no double holds
};

// Texts longer than this are not tried.
constexpr size_t kMaxNumberText = 1025;

// On kNumber, `value` holds the number and `formatOut` the style that shows it again in the form
// typed: kind 0 for a plain number, else Currency, Percentage, Fraction, Scientific, or General
// with grouping or brackets. `formatOut` is left alone otherwise. `settings` null means
// genericLocale.
NumberParse ParseNumberText(std::string_view text, double& value, NumberStyle& formatOut,
                            const LocaleSettings* settings = nullptr);

}  // namespace kelpdex
