// The search: the filters in force, field by field, narrow the table's records to the record set
// that the grid, the forms, printing and mail walk.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/error_code.h"
#include "core/field_type.h"
#include "store/catalogue.h"
#include "store/record_set.h"

namespace kelpdex {

// A record of a Long Text or Images/Files field, as the matcher needs it.
struct LongTextRecord {
  FieldType type = FieldType::kLongText;
  uint32_t row = 0;
  uint16_t field = 0;
  uint32_t object = 0;  // the number in the record's cell; 0 when there is none
};

// The test of Long Text and Images/Files fields: a case-insensitive search for `needle` in the
// plain text of a Long Text value, or in the names of an Images/Files value's files. False, with
// `error` set when it could not look (21, or the side file's code); the record is then dropped.
class LongTextMatcher {
 public:
  virtual ~LongTextMatcher() = default;
  virtual bool Matches(const LongTextRecord& record, std::string_view needle, bool wholeWord,
                       bool matchCase, ErrorCode& error) = 0;
};

struct FilterOptions {
  LongTextMatcher* matcher = nullptr;  // none: a filter on such a field matches nothing
  bool matchWholeWord = false;
  bool matchCase = false;
  // The filter texts to use instead of those in force, one per field (a shorter list leaves the
  // rest without filter); null for the catalogue's "Key{Default}".
  const std::vector<std::string>* filters = nullptr;
  // Off, every record goes through the filter's formula text: the reference the compiled form of
  // a filter is checked against.
  bool compile = true;
};

// The table's row count as the record set counts it: rows in use, at most the set's entries.
uint32_t TableRowCount(const TableSpec& table);

// Fills `records` with the rows that pass every filter, in row order, and the free rows behind
// them. Returns the count found; false (the workbook's code: 21) when the set could not be
// allocated.
bool RunFilters(const TableSpec& table, RecordSet& records, const FilterOptions& options,
                uint32_t& found);

// The record set of the current table as it is shown: its filters applied, then its order. Run
// when a table is opened or refreshed and after every change of filters or keys.
bool RunSearch(Workbook& workbook, const FilterOptions& options = {});

// "Record(s) found: %s" with the count in the current locale's number form.
std::string FoundText(uint32_t count);

}  // namespace kelpdex
