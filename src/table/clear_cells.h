// Delete in the grid: the cells of a selection emptied as one undo step.
#pragma once

#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// Empties the cells of fields firstColumn..lastColumn of records firstRecord..lastRecord of the
// record set, passing over calculated, Long Text and Images/Files fields and records behind the
// last, then computes the calculated fields of the rows changed. False with the workbook's code
// (25 without a table, 21 when the undo step or the recalculation failed).
bool ClearCells(Workbook& workbook, const UndoContext& selection);

}  // namespace kelpdex
