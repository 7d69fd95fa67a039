// Find Duplicates by grouping: one pass puts every record in the group of records equal to it
// on the key fields, and only one record of each group is sorted. The result is one the sort and
// walk would give, at the cost of a pass instead of a sort of every record.
#pragma once

#include <cstdint>

#include "search/sort_rows.h"
#include "store/workbook.h"

namespace kelpdex {

// Writes into rows[0..count) every row below `rowCount` that has a partner equal on all keys,
// each group's rows together in rising order, the groups in the keys' order. False, with `rows`
// untouched, when grouping cannot stand in for the comparison (a key field mixes numbers with
// texts, which the comparison may read as numbers, or holds a value that is not finite) or
// memory runs short; the caller then sorts.
bool GroupDuplicates(Worksheet& sheet, const SortKeys& keys, uint32_t* rows, uint32_t rowCount,
                     uint32_t& count);

}  // namespace kelpdex
