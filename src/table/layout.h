// The layout commands of the grid over the current table: field widths, record heights and the
// style of whole fields. Each takes its undo step first.
#pragma once

#include <cstdint>

#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// The widest field and the tallest record the grid draws, in its units.
constexpr uint16_t kMaxFieldWidth = 0xFFF;
constexpr uint16_t kMaxRecordHeight = 0xFFF;

// Fields firstColumn..lastColumn of the context get a fixed width. False with code 25 without a
// table, 21 when the undo step could not be taken.
bool SetFieldWidths(Workbook& workbook, uint16_t width, const UndoContext& selection);
// Records firstRecord..lastRecord of the context get a fixed height.
bool SetRecordHeights(Workbook& workbook, uint16_t height, const UndoContext& selection);
// Fields firstColumn..lastColumn of the context take style `styleId`, a style of the workbook's
// table, for
// every record: the column's style, with the style runs over those fields cleared.
bool ApplyFieldStyle(Workbook& workbook, uint16_t styleId, const UndoContext& selection);

}  // namespace kelpdex
