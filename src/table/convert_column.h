// The conversions of a column's cells: text to numbers and back through the column's format, and
// the letter-case and blank-trimming commands over text.
#pragma once

#include <cstdint>

#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

namespace convert {
constexpr int kLabelsToNumbers = 1;
constexpr int kNumbersToLabels = 2;
constexpr int kUpperCase = 3;
constexpr int kLowerCase = 4;
constexpr int kWordCapitals = 5;  // first letters in words to upper case
constexpr int kFirstCapital = 6;  // the first letter or digit up, the rest down
constexpr int kTrimEnd = 7;       // trailing blanks, CR, LF and tabs
constexpr int kTrimStart = 8;     // leading ones
}  // namespace convert

// Converts the cells of `column` in rows [firstRow, lastRow]. Cells computed by a calculated field
// (Auto) are never touched; the text modes leave numbers alone, and a text trimmed to nothing is
// deleted. An array formula reaching into the column is cut down to its head first. False with
// code 21 when memory runs out, with the column as it was.
bool ConvertColumn(Workbook& workbook, Worksheet& sheet, uint16_t column, int mode,
                   uint32_t firstRow, uint32_t lastRow);

// The Convert commands over the grid's selection of the current table: fields firstColumn to
// lastColumn, records firstRecord to lastRecord of the record set. The text modes apply to Text
// fields only. Takes undo kind 2 first.
bool ConvertSelection(Workbook& workbook, int mode, const UndoContext& selection);

}  // namespace kelpdex
