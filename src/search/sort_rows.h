// The record order: the found part of the record set permuted by the table's sort keys. Records
// never move in storage; only the vector of row numbers does.
#pragma once

#include <cstdint>
#include <string_view>

#include "store/catalogue.h"
#include "store/cell_record.h"
#include "store/record_set.h"

namespace kelpdex {

// A cell as the comparison reads it: a formula by its cached value.
struct SortValue {
  enum Kind : uint8_t { kEmpty, kNumber, kText, kError } kind = kEmpty;
  uint8_t error = 0;
  double number = 0;
  std::string_view text;
};

inline SortValue ReadSortValue(const CellRecord* r) {
  SortValue v;
  if (r == nullptr) return v;
  if (uint8_t error = cell::ErrorNibble(r); error != 0) {
    v.kind = SortValue::kError;
    v.error = error;
  } else if (cell::IsText(r)) {
    v.kind = SortValue::kText;
    v.text = cell::Text(r);
  } else if (cell::IsNumber(r)) {
    v.kind = SortValue::kNumber;
    v.number = cell::Number(r);
  } else if (cell::FormulaFlags(r) & cell::kCachedString) {
    v.kind = SortValue::kText;
    v.text = cell::CachedString(r);
  } else {
    v.kind = SortValue::kNumber;
    v.number = cell::CachedNumber(r);
  }
  return v;
}

// Positions 1 to 99 make keys; a definition holds at most this many.
constexpr uint16_t kMaxSortKeys = 100;

// A collected sort definition. A true flag is natural order (smaller first); it stands for a Sort
// Index above 20000.
struct SortKeys {
  uint16_t count = 0;
  uint16_t fields[kMaxSortKeys] = {};
  bool flags[kMaxSortKeys] = {};
};

// The keys of a table's "Sort Index" column, most significant first.
SortKeys CollectSortKeys(const TableSpec& table);

// Negative, 0 or positive: `left` and `right` hold each row's cell of every key (null for none).
// Errors first (by code), numbers and texts that read as numbers by value, texts by their code
// page upper case; an empty cell, or a text compared with a number that does not read as one,
// comes last in either direction.
int CompareRows(const CellRecord* const* left, const CellRecord* const* right, uint16_t keyCount,
                const bool* keyFlags);

// Sorts rows[0..count) of `sheet` in place by the keys, with the iterative quicksort: the pivot is
// the row nearest the middle that has a key cell, so runs of empty records do not degrade it. Not
// stable. Rows at or past the record limit have no cells.
// With `keepRowIndex` the sheet's row index stays built for the caller's own lookups after it.
void SortRows(Worksheet& sheet, const SortKeys& keys, uint32_t* rows, uint32_t count,
              bool keepRowIndex = false);

// Fault injection for tests: sorts of more records than this go the way a sort goes when memory
// for its entries runs out.
void SetSortEntryLimit(uint32_t count);

// Sorts the found records of the set by the table's keys; nothing without keys.
void SortRecordSet(const TableSpec& table, RecordSet& records);

}  // namespace kelpdex
