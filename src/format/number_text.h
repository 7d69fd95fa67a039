// Numbers as text: the "General" form, and the scanner that reads a number typed in a notation.
// Neither depends on the C library's locale.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/locale_settings.h"

namespace kelpdex {

// At most 15 significant digits, trailing zeros cut; the exponent form beyond 15 integer digits or
// below 1e-14. `settings` null means "." as the decimal character. Returns the length written
// (out needs 32 bytes).
size_t NumberToGeneral(double x, char* out, const LocaleSettings* settings = nullptr);
std::string NumberToGeneral(double x, const LocaleSettings* settings = nullptr);

// Reads a number at the start of `text`: digits, one decimal character, digits, then "E" or "e"
// with an optional sign and at least one digit. With `allowSign` a leading "-" is taken. Returns
// the bytes consumed, 0 when there is no well-formed number there.
size_t ScanNumber(std::string_view text, char decimal, bool allowSign, double& value);

// The whole text as a number, with blanks around it allowed, as arithmetic coerces a string.
// False when anything else stands in the text.
bool TextToNumber(std::string_view text, char decimal, double& value);

}  // namespace kelpdex
