// Column styles: one attribute of a column's style, and of every style run in the column,
// changed at once, with the resulting styles shared through the style table.
#pragma once

#include <cstdint>

#include "store/style_table.h"
#include "store/workbook.h"

namespace kelpdex {

// False with the workbook's code set (26 when the style table is full, 21 out of memory).
bool SetColumnStyleAttribute(Workbook& workbook, Worksheet& sheet, uint16_t column, int kind,
                             const StyleRecord& values, const FontRecord* fontValues);

// The same for the green fill that marks a catalogue column as the chosen key or form.
bool MarkColumn(Workbook& workbook, Worksheet& sheet, uint16_t column, bool selected);

}  // namespace kelpdex
