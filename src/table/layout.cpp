#include "table/layout.h"

#include <algorithm>

#include "store/catalogue.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

bool Fail(Workbook& workbook, ErrorCode code) {
  if (workbook.errorCode == err::kNone) workbook.errorCode = code;
  return false;
}

// The selected fields, cut to the table's.
bool SelectedFields(Workbook& workbook, const UndoContext& selection, TableSpec& table,
                    uint16_t& first, uint16_t& last) {
  if (!CurrentTable(workbook, table)) return false;
  uint16_t count = FieldCount(table);
  first = selection.firstColumn;
  last = std::min<uint16_t>(selection.lastColumn, count == 0 ? 0 : count - 1);
  return count > 0 && first <= last;
}

}  // namespace

bool SetFieldWidths(Workbook& workbook, uint16_t width, const UndoContext& selection) {
  TableSpec table;
  uint16_t first = 0, last = 0;
  if (!SelectedFields(workbook, selection, table, first, last))
    return workbook.currentSheet != nullptr;
  if (workbook.undo != nullptr && !workbook.undo->RecordColumnFormats(selection)) {
    return Fail(workbook, err::kOutOfMemory);
  }
  width = std::min(width, kMaxFieldWidth);
  for (uint32_t c = first; c <= last; ++c) {
    table.data->formats.Column(static_cast<uint16_t>(c)).SetWidth(width, true);
  }
  return true;
}

bool SetRecordHeights(Workbook& workbook, uint16_t height, const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  const RecordSet& set = workbook.records;
  if (!set.allocated() || selection.firstRecord > selection.lastRecord) return true;
  if (workbook.undo != nullptr && !workbook.undo->RecordRowFormats(selection)) {
    return Fail(workbook, err::kOutOfMemory);
  }
  height = std::min(height, kMaxRecordHeight);
  uint32_t last = std::min(selection.lastRecord, RecordSet::kEntries - 1);
  RowWords& words = table.data->formats.rowWords();
  for (uint32_t r = selection.firstRecord; r <= last; ++r) {
    if (!words.Set(set[r], height, true)) return Fail(workbook, err::kOutOfMemory);
  }
  return true;
}

bool ApplyFieldStyle(Workbook& workbook, uint16_t styleId, const UndoContext& selection) {
  TableSpec table;
  uint16_t first = 0, last = 0;
  if (!SelectedFields(workbook, selection, table, first, last))
    return workbook.currentSheet != nullptr;
  UndoContext step = selection;
  step.firstColumn = first;
  step.lastColumn = last;
  if (workbook.undo != nullptr && !workbook.undo->RecordRange(step)) {
    return Fail(workbook, err::kOutOfMemory);
  }
  FormatStore& formats = table.data->formats;
  if (!formats.ClearStyleRange(first, last, 0, kLastRow)) return Fail(workbook, err::kOutOfMemory);
  for (uint32_t c = first; c <= last; ++c)
    formats.SetColumnStyle(static_cast<uint16_t>(c), styleId);
  return true;
}

}  // namespace kelpdex
