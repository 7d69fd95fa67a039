#include "table/cell_entry.h"

#include <vector>

#include "format/cell_text.h"
#include "store/catalogue.h"
#include "table/records.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

EntryResult Failed(Workbook& workbook, ErrorCode code) {
  workbook.errorCode = code;
  return EntryResult::kFailed;
}

bool IsDateKind(uint8_t kind) {
  return kind == format_kind::kDate || kind == format_kind::kTime || kind == format_kind::kDateTime;
}

}  // namespace

EntryResult CommitText(Workbook& workbook, uint32_t record, uint16_t field, std::string_view text,
                       const UndoContext& context, EntryNotes* notes) {
  EntryNotes unused;
  if (notes == nullptr) notes = &unused;
  *notes = EntryNotes();
  notes->typedLength = text.size();
  TableSpec table;
  if (!CurrentTable(workbook, table)) return EntryResult::kFailed;
  if (!workbook.records.allocated() && !RefreshCurrentTable(workbook)) return EntryResult::kFailed;
  if (field >= workbook.fieldDefaults.size()) return EntryResult::kRefused;
  const FieldDefault& fieldDefault = workbook.fieldDefaults[field];
  bool typed = HoldsCellValues(fieldDefault.type);
  if (!typed || fieldDefault.IsCalculated()) return EntryResult::kRefused;
  if (record >= RecordSet::kEntries) return Failed(workbook, err::kTooManyRecords);
  const uint32_t row = workbook.records[record];
  if (row > kLastRow) return Failed(workbook, err::kTooManyRecords);
  if (text.size() > kEditTextMax) {
    text = text.substr(0, kEditTextMax);
    notes->cut = true;
  }
  if (workbook.undo != nullptr && !workbook.undo->RecordCell(context, row, field)) {
    return EntryResult::kFailed;
  }

  Worksheet& sheet = *table.data;
  // The cell goes first; an array formula takes its whole rectangle with it.
  sheet.cells.DeleteRange(field, field, row, row);
  if (!text.empty()) {
    NumberStyle style = ReadNumberStyle(workbook.styles.Style(sheet.formats.ColumnStyle(field)));
    std::vector<uint8_t> cellRecord(kTypedCellMax);
    uint32_t size = 0;
    if (fieldDefault.type == FieldType::kNumber) {
      TypedResult result = TextToCell(text, style, cellRecord.data(), row, field);
      if (result.kind != TypedCell::kNumber) {
        size = cell::EncodeNumber(cellRecord.data(), row, field, 0);
        notes->numberAsZero = true;
      } else {
        size = result.size;
      }
    } else if (IsDateKind(style.kind)) {
      TypedResult result = TextToCell(text, style, cellRecord.data(), row, field);
      size = result.kind == TypedCell::kText
                 ? result.size
                 : cell::EncodeText(cellRecord.data(), row, field, text);
    } else {
      size = cell::EncodeText(cellRecord.data(), row, field, text);
    }
    if (size == 0 || !sheet.cells.PutCell(cellRecord.data())) {
      return Failed(workbook, err::kOutOfMemory);
    }
    if (record >= workbook.records.count()) {
      workbook.records.SetCount(record + 1);
      workbook.records.RewriteFreeTail(FirstFreeRow(workbook.records, sheet));
    }
  }
  if (record < workbook.records.count() && !RecalculateRecordRows(workbook, &row, 1)) {
    return Failed(workbook, err::kOutOfMemory);
  }
  return EntryResult::kWritten;
}

}  // namespace kelpdex
