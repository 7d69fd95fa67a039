// The options of a text file, shared by import and export and kept with the document, so that a
// Reload reads the file as the user chose and a save writes it the same way.
#pragma once

#include <array>
#include <cstdint>

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

}  // namespace kelpdex
