// How a Long Text or Images/Files cell reads in a list of values: the grid's cells and the text
// dump both show it this way.
#pragma once

#include <cstdint>
#include <string>

#include "core/error_code.h"
#include "store/workbook.h"

namespace kelpdex {

// A Long Text cell as the start of its plain text, an Images/Files cell as its object names
// joined by "; ", in the document's code page; empty for a cell that holds no value. The value
// is read from the sheet's pending list or else the side file beside `book.fileName`. False
// with the error when the side file fails.
bool SideValueText(const Workbook& book, Worksheet& data, uint32_t row, uint16_t column,
                   FieldType type, std::string& shown, ErrorCode& error);

}  // namespace kelpdex
