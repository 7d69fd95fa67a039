// Find Next, Replace and Replace All over the cells of the record set, as they are shown.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/error_code.h"
#include "search/navigation.h"
#include "store/catalogue.h"
#include "store/record_set.h"

namespace kelpdex {

// The offset of the first match of `pattern` in `text`, or -1; an empty pattern never matches.
// "*" any run, "?" one character, "~" before "*", "?" or "~" makes it literal. Without
// `matchCase` characters compare by their code page upper case. With `wholeCell` only a match
// of the whole text counts. `end`, when given, gets the offset behind the match.
long FindInText(std::string_view pattern, std::string_view text, bool matchCase, bool wholeCell,
                size_t* end = nullptr);

struct FindOptions {
  std::string text;
  std::string replacement;
  bool matchCase = false;
  bool wholeCell = false;
};

// Find Next from the cell after (activeField, activePosition), or from that cell itself with
// `fromActive`: the range is the selection, or the whole table when the selection is one cell;
// the scan goes field by field through a record, then on to the next position, without
// wrapping. Long Text and Images/Files cells are passed over. On a hit `hit` is that one cell;
// false at the end of the range ("No more occurrences found.").
bool FindNext(const TableSpec& table, const RecordSet& records, const GridSelection& selection,
              uint16_t activeField, uint32_t activePosition, const FindOptions& options,
              GridSelection& hit, bool fromActive = false);

// Replace (in the selection) and Replace All (`range` covering the whole table): every occurrence
// in the shown text of each cell, left to right. Number fields take the new text through the
// entry parser, text fields as it is; Long Text, Images/Files and calculated fields are left.
// Each changed record's calculated fields are computed again. One undo step. `changed` gets the
// number of cells written; false with the workbook's code (21), what was replaced standing.
bool ReplaceInRange(const TableSpec& table, const RecordSet& records, const GridSelection& range,
                    const FindOptions& options, uint32_t& changed);
// The whole table as a range: every field, every found record.
GridSelection WholeTable(const TableSpec& table, const RecordSet& records);

}  // namespace kelpdex
