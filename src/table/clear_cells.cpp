#include "table/clear_cells.h"

#include <algorithm>
#include <vector>

#include "store/catalogue.h"
#include "table/records.h"
#include "table/table_state.h"

namespace kelpdex {

bool ClearCells(Workbook& workbook, const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  const uint32_t count = workbook.records.count();
  if (selection.firstRecord >= count) return true;
  const uint32_t lastRecord = std::min(selection.lastRecord, count - 1);
  const uint16_t lastField = std::min<uint16_t>(
      selection.lastColumn, static_cast<uint16_t>(workbook.fieldDefaults.size() - 1));
  if (workbook.fieldDefaults.empty() || selection.firstColumn > lastField) return true;
  if (workbook.undo != nullptr && !workbook.undo->RecordCells(selection)) return false;
  Worksheet& sheet = *table.data;
  std::vector<uint32_t> changed;
  for (uint32_t record = selection.firstRecord; record <= lastRecord; ++record) {
    const uint32_t row = workbook.records[record];
    bool any = false;
    for (uint16_t field = selection.firstColumn; field <= lastField; ++field) {
      const FieldDefault& f = workbook.fieldDefaults[field];
      if (!HoldsCellValues(f.type) || f.IsCalculated()) continue;
      if (sheet.cells.GetCellFast(row, field) == nullptr) continue;
      sheet.cells.DeleteRange(field, field, row, row);
      any = true;
    }
    if (any) changed.push_back(row);
  }
  // The recalculation walks rows in ascending order, as the cell store keeps them.
  std::sort(changed.begin(), changed.end());
  return changed.empty() || RecalculateRecordRows(workbook, changed.data(), changed.size());
}

}  // namespace kelpdex
