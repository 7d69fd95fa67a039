// The commands that change a table's sort definition, the catalogue's "Sort Index" column:
// Ascending and Descending on the selected fields, No Sorting, and the Sort Order dialog. The
// caller re-runs the search afterwards, which sorts by the new definition.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "core/error_code.h"
#include "store/catalogue.h"

namespace kelpdex {

constexpr uint16_t kSortBaseReversed = 10000;  // Descending; the dialog's "Ascending"
constexpr uint16_t kSortBaseNatural = 20000;   // Ascending; the dialog's "Descending"

// Ascending (or Descending) on fields first..last: they become the last keys, after the keys of
// the other fields that `keepOthers` (Shift held) keeps. Returns 0, 43 when the keys would pass
// 99 (the other fields' keys stay as changed), or the workbook's code (21) when the undo step
// could not be taken.
ErrorCode SortByFields(const TableSpec& table, uint16_t first, uint16_t last, bool descending,
                       bool keepOthers);
// The same for a list of fields with a direction each, first most significant, replacing every
// key: what a command line gives.
ErrorCode SetSortKeys(const TableSpec& table,
                      const std::vector<std::pair<uint16_t, bool>>& fieldsDescending);
// No Sorting on fields first..last: their keys go and the later keys close up.
bool RemoveSortKeys(const TableSpec& table, uint16_t first, uint16_t last);
// No Sorting is offered only while a field has a key.
bool HasSortKeys(const TableSpec& table);

// The Sort Order dialog: five rows of a field (or "Select a field") and a direction. Its
// "Ascending" stores the base the Descending command stores, and the reverse, so that a
// definition made here reads back as it was chosen.
class SortOrderDialogModel {
 public:
  static constexpr int kRows = 5;
  static constexpr int kNoField = -1;  // "Select a field"
  struct Row {
    int field = kNoField;
    bool descending = false;
  };

  explicit SortOrderDialogModel(const TableSpec& table);
  // "Select a field" and the field names in catalogue order.
  const std::vector<std::string>& choices() const { return choices_; }
  Row& row(int index) { return rows_[index]; }
  const Row& row(int index) const { return rows_[index]; }
  // OK: the rows replace the whole definition. False with the workbook's code.
  bool Apply(const TableSpec& table) const;

 private:
  std::vector<std::string> choices_;
  Row rows_[kRows];
};

}  // namespace kelpdex
