#include "exchange/text_separators.h"

namespace kelpdex {

int SeparatorIndex(char separator) {
  for (int i = 0; i < kOtherSeparator; ++i) {
    if (kNamedSeparators[i].separator == separator) return i;
  }
  return kOtherSeparator;
}

bool SeparatorOfName(std::string_view name, char& separator) {
  for (const NamedSeparator& named : kNamedSeparators) {
    if (name == named.name) {
      separator = named.separator;
      return true;
    }
  }
  if (name.size() != 1) return false;
  separator = name[0];
  return true;
}

std::string FormatTextWidths(const TextFileOptions& options) {
  std::string list;
  for (uint16_t width : options.widths) {
    if (width == 0) break;
    if (!list.empty()) list += ',';
    list += std::to_string(width);
  }
  return list;
}

}  // namespace kelpdex
