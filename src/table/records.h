// Record commands over the current table: inserting and removing records, default values, the
// recalculation of calculated fields, stepping a value, and writing the present date or time.
// Selections are in record numbers of the record set (from 0); rows are found through it.
#pragma once

#include <cstdint>

#include "platform/os.h"
#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// The records whose count makes UpdateFormulas ask before it starts.
constexpr uint32_t kAskBeforeUpdating = 50000;

// Inserts lastRecord - firstRecord + 1 empty records at the selection: in an ordered set as one
// block of rows, in a sorted or narrowed set one row before each selected record. Computes the
// new rows' calculated fields. False with code 42 (too many records), 35 (no empty rows) or 21;
// `firstNew` gets the first new record. Nothing happens for a selection behind the last record.
bool InsertRecords(Workbook& workbook, uint32_t firstRecord, uint32_t lastRecord,
                   uint32_t* firstNew = nullptr, const UndoContext& context = {});
// Removes the selected records with their cells, formats and objects.
bool RemoveRecords(Workbook& workbook, uint32_t firstRecord, uint32_t lastRecord,
                   const UndoContext& context = {});

// Writes each field's default value into the empty cells of the selected records (fields
// firstColumn to lastColumn of the context), skipping calculated fields, then computes the
// calculated fields of those rows.
bool FillDefaults(Workbook& workbook, const UndoContext& selection);

enum class UpdateResult { kUpdated, kDeclined, kFailed };
// Recomputes every calculated field of every record of the set, in ascending row order. Above
// kAskBeforeUpdating records it asks string 137 first.
UpdateResult UpdateFormulas(Workbook& workbook);
// The calculated fields of some rows, in ascending row order.
bool RecalculateRecordRows(Workbook& workbook, const uint32_t* rows, size_t count);

// Adds `direction` (+1 or -1) to each selected Text or Number cell: a day to a date, an hour to
// a time, 1 to a number. Absent cells and formulas are left alone.
bool StepValue(Workbook& workbook, int direction, const UndoContext& selection);

enum class DateCommand {
  kDate,
  kTime,
  kDateAndTime,
  kNextWeek,
  kPreviousWeek,
  kNextMonth,
  kPreviousMonth,
  kEndOfNextMonth,
  kEndOfPreviousMonth,
};
// The generic date or time string a command writes, from the moment `now`.
std::string DateCommandText(DateCommand command, const platform::LocalTime& now);
// Writes it into the current cell of the context (activeColumn, activeRecord) as text and computes
// the row's calculated fields.
bool InsertDateValue(Workbook& workbook, DateCommand command, const UndoContext& context,
                     const platform::LocalTime& now = platform::GetLocalTime());

}  // namespace kelpdex
