// The options of a text file, shared by import and export and kept with the document so that a
// Reload reads the file as the user last chose.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "store/cell_record.h"

namespace kelpdex {

enum class TextEncoding : uint8_t {
  kUtf8 = 1,
  kAnsi = 2,  // the document's own code page, bytes as they are
  kOem = 3,   // code page 850
};

struct TextFileOptions {
  char separator = ',';
  bool fixedWidths = false;
  // Width of each field; a 0 ends the list, and a field past it has no limit.
  std::array<uint16_t, kColumnLimit> widths{};
  char quote = '"';
  TextEncoding encoding = TextEncoding::kUtf8;
  // Import only: cells that read as numbers become numbers, as long as their column held no text.
  bool numbers = false;
  // The first line holds the field names, on import and on export.
  bool headerLine = false;
};

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
