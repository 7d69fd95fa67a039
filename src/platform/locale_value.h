// How a locale value reaches the caller on every OS: converted from UTF-8 to Windows-1252 and
// copied with GetLocaleInfoA's buffer rules.
#pragma once

#include <string>
#include <string_view>

namespace kelpdex::platform {

// The Windows-1252 form of a UTF-8 locale value. The narrow and thin spaces that several locales
// use as thousands separators become the no-break space, which the code page can hold.
std::string LocaleValueToCp1252(std::string_view utf8);

// Copies `value` and its NUL into buf. Returns the bytes written, or 0 when they do not fit; with
// a size of 0 nothing is written and the size needed is returned.
int StoreLocaleValue(std::string_view value, char* buf, int size);

}  // namespace kelpdex::platform
