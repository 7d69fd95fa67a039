#include "table/records.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/prompter.h"
#include "core/reporting.h"
#include "core/strings.h"
#include "format/generic_date.h"
#include "format/number_style.h"
#include "format/parse_number.h"
#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "table/table_state.h"

namespace kelpdex {

namespace {

bool Fail(Workbook& workbook, ErrorCode code) {
  workbook.errorCode = code;
  return false;
}

// The rows of records first..last (clamped to the set), ascending.
std::vector<uint32_t> SelectedRows(const Workbook& workbook, uint32_t first, uint32_t last) {
  std::vector<uint32_t> rows;
  if (first > last) return rows;
  rows.reserve(last - first + 1);
  for (uint32_t record = first; record <= last && record < RecordSet::kEntries; ++record) {
    rows.push_back(workbook.records[record]);
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

NumberStyle ColumnNumberStyle(const Workbook& workbook, const Worksheet& sheet, uint16_t column) {
  return ReadNumberStyle(workbook.styles.Style(sheet.formats.ColumnStyle(column)));
}

// The commands work on the record set; a table that was never refreshed gets its set here.
bool CurrentTableWithRecords(Workbook& workbook, TableSpec& table) {
  if (!CurrentTable(workbook, table)) return false;
  return workbook.records.allocated() || RefreshCurrentTable(workbook);
}

void PutRecordSetTail(Workbook& workbook, const Worksheet& sheet) {
  workbook.records.RewriteFreeTail(FirstFreeRow(workbook.records, sheet));
}

}  // namespace

bool RecalculateRecordRows(Workbook& workbook, const uint32_t* rows, size_t count) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  std::vector<FormulaField> fields = FormulaFields(workbook.fieldDefaults);
  bool any = false;
  for (const FormulaField& f : fields) any |= !f.formula.empty();
  if (!any || count == 0) return true;
  FormulaEngine engine(&workbook, table.data, &BuiltinFunctions());
  engine.SetFields(fields.data(), static_cast<uint16_t>(fields.size()));
  // Only a pass over every record starts the calculation marks afresh.
  bool everyRecord = count == workbook.records.count() && rows == workbook.records.rows();
  if (!engine.RecalculateRows(rows, count, everyRecord)) return Fail(workbook, err::kOutOfMemory);
  return true;
}

bool InsertRecords(Workbook& workbook, uint32_t firstRecord, uint32_t lastRecord,
                   uint32_t* firstNew, const UndoContext& context) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return false;
  RecordSet& set = workbook.records;
  if (!set.allocated() || firstRecord > lastRecord || firstRecord >= set.count()) return true;
  lastRecord = std::min(lastRecord, set.count() - 1);
  const uint32_t n = lastRecord - firstRecord + 1;
  Worksheet& sheet = *table.data;
  if (static_cast<uint64_t>(sheet.UsedRows()) + n > kRowLimit) {
    return Fail(workbook, err::kTooManyRecords);
  }
  uint32_t* rows = set.rows();
  const uint32_t count = set.count();
  // The rows the new records get, known before anything moves so that the undo step can name
  // them: one block at the first selected record's row in an ordered set, else a row before each
  // selected record's row.
  std::vector<uint32_t> newRows(n);
  std::vector<uint32_t> sorted;
  const uint32_t at = rows[firstRecord];
  if (set.ordered()) {
    for (uint32_t k = 0; k < n; ++k) newRows[k] = at + k;
  } else {
    sorted = SelectedRows(workbook, firstRecord, lastRecord);
    for (uint32_t k = 0; k < n; ++k) {
      uint32_t row = rows[firstRecord + k];
      auto place = std::lower_bound(sorted.begin(), sorted.end(), row) - sorted.begin();
      newRows[k] = row + static_cast<uint32_t>(place);
    }
  }
  UndoContext step = context;
  step.firstRecord = firstRecord;
  step.lastRecord = lastRecord;
  if (workbook.undo != nullptr && !workbook.undo->RecordRowsInserted(step, newRows.data(), n)) {
    return false;
  }

  ErrorCode error = err::kNone;
  if (set.ordered()) {
    if (!sheet.InsertRows(at, at + n - 1, error)) return Fail(workbook, error);
    for (uint32_t i = 0; i < count; ++i) {
      if (rows[i] >= at) rows[i] += n;
    }
  } else {
    if (!sheet.InsertRowsBefore(sorted.data(), sorted.size(), error)) {
      return Fail(workbook, error);
    }
    for (uint32_t i = 0; i < count; ++i) {
      rows[i] += static_cast<uint32_t>(std::upper_bound(sorted.begin(), sorted.end(), rows[i]) -
                                       sorted.begin());
    }
  }
  // The new records take the selection's place; the rest move up behind them.
  std::memmove(rows + firstRecord + n, rows + firstRecord, (count - firstRecord) * sizeof *rows);
  std::copy(newRows.begin(), newRows.end(), rows + firstRecord);
  set.SetCount(count + n);
  PutRecordSetTail(workbook, sheet);
  if (firstNew != nullptr) *firstNew = firstRecord;
  std::sort(newRows.begin(), newRows.end());
  return RecalculateRecordRows(workbook, newRows.data(), newRows.size());
}

bool RemoveRecords(Workbook& workbook, uint32_t firstRecord, uint32_t lastRecord,
                   const UndoContext& context) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return false;
  RecordSet& set = workbook.records;
  if (!set.allocated() || firstRecord > lastRecord || firstRecord >= set.count()) return true;
  lastRecord = std::min(lastRecord, set.count() - 1);
  std::vector<uint32_t> removed = SelectedRows(workbook, firstRecord, lastRecord);
  UndoContext step = context;
  step.firstRecord = firstRecord;
  step.lastRecord = lastRecord;
  if (workbook.undo != nullptr &&
      !workbook.undo->RecordRowsRemoved(step, removed.data(),
                                        static_cast<uint32_t>(removed.size()))) {
    return false;
  }
  Worksheet& sheet = *table.data;
  sheet.RemoveRows(removed.data(), removed.size());
  uint32_t* rows = set.rows();
  const uint32_t count = set.count();
  const uint32_t n = lastRecord - firstRecord + 1;
  std::memmove(rows + firstRecord, rows + lastRecord + 1, (count - lastRecord - 1) * sizeof *rows);
  set.SetCount(count - n);
  for (uint32_t i = 0; i < count - n; ++i) {
    rows[i] -= static_cast<uint32_t>(std::lower_bound(removed.begin(), removed.end(), rows[i]) -
                                     removed.begin());
  }
  PutRecordSetTail(workbook, sheet);
  return true;
}

bool FillDefaults(Workbook& workbook, const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return false;
  const std::vector<FieldDefault>& fields = workbook.fieldDefaults;
  bool any = false;
  for (const FieldDefault& f : fields) any |= !f.defaultValue.empty();
  if (!any || selection.firstRecord > selection.lastRecord) return true;
  if (workbook.undo != nullptr && !workbook.undo->RecordCells(selection)) return false;
  RecordSet& set = workbook.records;
  std::vector<uint32_t> rows =
      SelectedRows(workbook, selection.firstRecord,
                   std::min<uint32_t>(selection.lastRecord, RecordSet::kEntries - 1));
  Worksheet& sheet = *table.data;
  std::vector<uint8_t> record(kBlockPayload);
  std::vector<uint32_t> filled;
  CellCursor cursor;
  uint16_t lastField = static_cast<uint16_t>(
      std::min<size_t>(fields.size(), static_cast<size_t>(selection.lastColumn) + 1));
  for (uint32_t row : rows) {
    if (row > kLastRow) return Fail(workbook, err::kTooManyRecords);
    bool wrote = false;
    for (uint16_t c = selection.firstColumn; c < lastField; ++c) {
      const FieldDefault& f = fields[c];
      if (!HoldsCellValues(f.type)) continue;
      if (f.IsCalculated() || f.defaultValue.empty()) continue;
      if (sheet.cells.GetCell(row, c, &cursor) != nullptr) continue;
      if (f.type == FieldType::kText) {
        cell::EncodeText(record.data(), row, c, f.defaultValue);
      } else {
        // A default that reads as no number leaves a zero behind.
        double value = 0;
        NumberStyle style = ColumnNumberStyle(workbook, sheet, c);
        if (ParseNumberText(f.defaultValue, value, style, &currentLocale) != NumberParse::kNumber) {
          value = 0;
        }
        cell::EncodeNumber(record.data(), row, c, value);
      }
      if (!sheet.cells.PutCell(record.data(), &cursor)) return Fail(workbook, err::kOutOfMemory);
      wrote = true;
    }
    if (wrote) filled.push_back(row);
  }
  // Records behind the last that got a cell join the set.
  uint32_t last = std::min<uint32_t>(selection.lastRecord, RecordSet::kEntries - 1);
  for (uint32_t r = last + 1; r-- > set.count();) {
    if (std::binary_search(filled.begin(), filled.end(), set[r])) {
      set.SetCount(r + 1);
      break;
    }
  }
  PutRecordSetTail(workbook, sheet);
  return RecalculateRecordRows(workbook, filled.data(), filled.size());
}

UpdateResult UpdateFormulas(Workbook& workbook) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return UpdateResult::kFailed;
  const RecordSet& set = workbook.records;
  if (set.count() == 0) return UpdateResult::kUpdated;
  if (set.count() > kAskBeforeUpdating &&
      Ask(str::kUpdateAllFormulas, mb::kYesNo | mb::kIconQuestion) != answer::kYes) {
    return UpdateResult::kDeclined;
  }
  if (!RecalculateRecordRows(workbook, set.rows(), set.count())) {
    ShowError(err::kOutOfMemory);
    return UpdateResult::kFailed;
  }
  return UpdateResult::kUpdated;
}

bool StepValue(Workbook& workbook, int direction, const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return false;
  Worksheet& sheet = *table.data;
  const std::vector<FieldDefault>& fields = workbook.fieldDefaults;
  std::vector<uint32_t> rows;
  uint32_t last = std::min<uint32_t>(selection.lastRecord, workbook.records.count());
  std::vector<uint8_t> record(kBlockPayload);
  PeriodRecord day, hour;
  day.days = 1;
  hour.hours = 1;
  day.negative = hour.negative = direction < 0;
  bool recorded = false;
  for (uint32_t rec = selection.firstRecord; rec <= last && rec < workbook.records.count(); ++rec) {
    uint32_t row = workbook.records[rec];
    bool changed = false;
    for (uint32_t c = selection.firstColumn; c <= selection.lastColumn && c < fields.size(); ++c) {
      auto column = static_cast<uint16_t>(c);
      FieldType type = fields[c].type;
      if (!HoldsCellValues(type)) continue;
      CellRecord* r = sheet.cells.GetCell(row, column);
      if (r == nullptr || cell::IsFormula(r)) continue;
      uint8_t kind = ColumnNumberStyle(workbook, sheet, column).kind;
      bool dateStyle = kind == format_kind::kDate || kind == format_kind::kDateTime;
      bool timeStyle = kind == format_kind::kTime;
      uint8_t keep = cell::Tag(r) & (cell::kAuto | cell::kErrorMask);
      if (cell::IsNumber(r)) {
        cell::EncodeNumber(record.data(), row, column, cell::Number(r) + direction, keep);
      } else if (dateStyle || timeStyle) {
        // A date or time is a generic string; the period arithmetic steps it.
        DateTimeRecord date, result;
        if (!ParseGenericDate(cell::Text(r), date)) continue;
        if (!AddPeriod(date, dateStyle ? day : hour, result)) continue;
        cell::EncodeText(record.data(), row, column, FormatGenericDate(result), keep);
      } else {
        continue;
      }
      // One undo step for the command, taken at its first change: one cell's record when the
      // selection is one cell, else the selected block.
      if (!recorded && workbook.undo != nullptr) {
        bool one = selection.firstRecord == selection.lastRecord &&
                   selection.firstColumn == selection.lastColumn;
        if (!(one ? workbook.undo->RecordCell(selection, row, column)
                  : workbook.undo->RecordCells(selection))) {
          return false;
        }
      }
      recorded = true;
      if (!sheet.cells.PutCell(record.data())) return Fail(workbook, err::kOutOfMemory);
      changed = true;
    }
    if (changed) rows.push_back(row);
  }
  std::sort(rows.begin(), rows.end());
  return RecalculateRecordRows(workbook, rows.data(), rows.size());
}

std::string DateCommandText(DateCommand command, const platform::LocalTime& now) {
  DateTimeRecord today;
  MakeDate(now.year, now.month, now.day, today);
  DateTimeRecord result = today;
  PeriodRecord step;
  switch (command) {
    case DateCommand::kTime: {
      DateTimeRecord t;
      t.hasTime = true;
      t.hour = now.hour;
      t.minute = now.minute;
      t.second = now.second;
      return FormatGenericDate(t);
    }
    case DateCommand::kDateAndTime:
      result.hasTime = true;
      result.hour = now.hour;
      result.minute = now.minute;
      result.second = now.second;
      return FormatGenericDate(result);
    case DateCommand::kNextWeek:
    case DateCommand::kPreviousWeek:
      step.days = 7;
      step.negative = command == DateCommand::kPreviousWeek;
      AddPeriod(today, step, result);
      return FormatGenericDate(result);
    case DateCommand::kNextMonth:
    case DateCommand::kPreviousMonth:
    case DateCommand::kEndOfNextMonth:
    case DateCommand::kEndOfPreviousMonth: {
      bool back =
          command == DateCommand::kPreviousMonth || command == DateCommand::kEndOfPreviousMonth;
      step.months = 1;
      step.negative = back;
      AddPeriod(today, step, result);
      if (command == DateCommand::kEndOfNextMonth || command == DateCommand::kEndOfPreviousMonth) {
        MakeDate(result.year, result.month, DaysInMonth(result.year, result.month), result);
      }
      return FormatGenericDate(result);
    }
    case DateCommand::kDate:
    default:
      return FormatGenericDate(today);
  }
}

bool InsertDateValue(Workbook& workbook, DateCommand command, const UndoContext& context,
                     const platform::LocalTime& now) {
  TableSpec table;
  if (!CurrentTableWithRecords(workbook, table)) return false;
  uint16_t column = context.activeColumn;
  if (column >= workbook.fieldDefaults.size() ||
      !HoldsCellValues(workbook.fieldDefaults[column].type) ||
      context.activeRecord >= RecordSet::kEntries) {
    return true;
  }
  // The step covers the one cell written, not the whole selection.
  UndoContext step = context;
  step.firstColumn = step.lastColumn = column;
  step.firstRecord = step.lastRecord = context.activeRecord;
  if (workbook.undo != nullptr && !workbook.undo->RecordCells(step)) return false;
  uint32_t row = workbook.records[context.activeRecord];
  std::string text = DateCommandText(command, now);
  std::vector<uint8_t> record(cell::TextSize(text.size()));
  cell::EncodeText(record.data(), row, column, text);
  if (!table.data->cells.PutCell(record.data())) return Fail(workbook, err::kOutOfMemory);
  if (context.activeRecord >= workbook.records.count()) {
    workbook.records.SetCount(context.activeRecord + 1);
    PutRecordSetTail(workbook, *table.data);
  }
  return RecalculateRecordRows(workbook, &row, 1);
}

}  // namespace kelpdex
