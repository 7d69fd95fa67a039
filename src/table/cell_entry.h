// Typed text committed into a cell of the current table, the one way an edit reaches a record.
#pragma once

#include <cstdint>
#include <string_view>

#include "store/undo_recorder.h"
#include "store/workbook.h"

namespace kelpdex {

// The longest text an edit takes.
constexpr size_t kEditTextMax = 1024;

enum class EntryResult {
  kWritten,
  kRefused,  // Long Text, Images/Files and calculated fields are not typed into
  kFailed,   // errorCode says why: 42, 21, or the undo snapshot's failure
};

// What an edit stored other than the text as typed; the grid passes it over in silence, kpx
// tells it.
struct EntryNotes {
  size_t typedLength = 0;     // the length of the text as given
  bool cut = false;           // longer than kEditTextMax: the rest was dropped
  bool numberAsZero = false;  // a Number field got 0 for a text that is no plain number
};

// Writes `text` into field `field` of record `record` (from 0; at or behind the last record it
// adds records up to it). In a Number field the text goes through TextToCell and anything but a
// plain number becomes 0; in a field with a date or time style through TextToCell, keeping the
// typed text where no text record came back; elsewhere as text, uninterpreted. An empty text
// leaves the cell empty. The record's calculated fields are computed afterwards.
EntryResult CommitText(Workbook& workbook, uint32_t record, uint16_t field, std::string_view text,
                       const UndoContext& context = {}, EntryNotes* notes = nullptr);

}  // namespace kelpdex
