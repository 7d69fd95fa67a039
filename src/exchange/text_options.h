// What the text import and export share beside the options the document keeps.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "store/text_file_options.h"

namespace kelpdex {

// The longest cell a text file carries; the rest of a longer one is dropped.
constexpr size_t kTextCellMax = 1024;

// "W1,W2,..." into `options.widths`; false for anything but a list of whole numbers from 1 to
// 65535, or more widths than a table has fields.
bool ParseTextWidths(std::string_view list, TextFileOptions& options);

// What an import left out because the sheet has no room for it: the highest row and column
// dropped, counted from 0, or -1 for none.
struct TextImportReport {
  int64_t highestDroppedRow = -1;
  int32_t highestDroppedColumn = -1;
};

}  // namespace kelpdex
