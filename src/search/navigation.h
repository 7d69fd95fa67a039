// Moving through the record set: the stepping commands that look for the next or previous record
// with a stated property in the selected fields, and the Go To box.
#pragma once

#include <cstdint>
#include <string_view>

#include "store/record_set.h"
#include "store/workbook.h"

namespace kelpdex {

// The grid's selection: fields first..last, positions of the record set first..last.
struct GridSelection {
  uint16_t firstField = 0;
  uint32_t firstPosition = 0;
  uint16_t lastField = 0;
  uint32_t lastPosition = 0;
};

enum class StepKind : uint8_t { kNonEmpty, kEmpty, kIdentical, kDifferent };

// Steps from the selection's first position to the next (or previous) one whose record has the
// property in every selected field, and moves the selection there with the same fields. False
// (the desktop beeps) when no position qualifies; the selection stays. The previous forms of
// Non-Empty and Empty read the storage row numbered as the position, not the record set's row.
bool StepRecord(Worksheet& data, const RecordSet& records, StepKind kind, bool forward,
                GridSelection& selection);

// The Go To box: a decimal number (blanks before it and a plus sign allowed, blanks behind it),
// at most 20 characters read. False for anything else, a range such as "3-7" included.
bool ParseGoTo(std::string_view text, uint32_t& record);
// Moves the selection to record `record` (from 1) in its first field; false past the records.
bool GoToRecord(const RecordSet& records, uint32_t record, GridSelection& selection);

}  // namespace kelpdex
