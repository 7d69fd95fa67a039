// The cell separators a user picks by name, in the order the text file dialogs list them, and the
// field widths as the comma-separated text the dialogs and kpx take.
#pragma once

#include <string>
#include <string_view>

#include "store/text_file_options.h"

namespace kelpdex {

struct NamedSeparator {
  const char* name;
  char separator;
};

// "comma", "tab", "point", "semicolon", "space"; "other" follows them in the dialogs and stands
// for the one character typed beside the list.
inline constexpr NamedSeparator kNamedSeparators[] = {
    {"comma", ','}, {"tab", '\t'}, {"point", '.'}, {"semicolon", ';'}, {"space", ' '}};
inline constexpr int kOtherSeparator = 5;

// The place of `separator` among the named ones, or kOtherSeparator.
int SeparatorIndex(char separator);
// The separator a name stands for: a named one, or a single character as it is. False for
// anything else.
bool SeparatorOfName(std::string_view name, char& separator);

// The widths in force as "W1,W2,...", empty when there are none.
std::string FormatTextWidths(const TextFileOptions& options);

}  // namespace kelpdex
