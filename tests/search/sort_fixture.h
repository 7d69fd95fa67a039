// A table fixture for the tests of the record order: sort keys from (field, natural) pairs, and
// the comparison of two rows under them.
#pragma once

#include <utility>
#include <vector>

#include "search/sort_rows.h"
#include "table/table_fixture.h"

namespace kelpdex::testing {

class SortTest : public TableTest {
 protected:
  SortKeys Keys(std::vector<std::pair<uint16_t, bool>> keys) {
    SortKeys k;
    for (auto [field, natural] : keys) {
      k.fields[k.count] = field;
      k.flags[k.count++] = natural;
    }
    return k;
  }
  int Compare(const SortKeys& keys, uint32_t a, uint32_t b) {
    const CellRecord* left[kMaxSortKeys];
    const CellRecord* right[kMaxSortKeys];
    for (uint16_t k = 0; k < keys.count; ++k) {
      left[k] = Data().cells.GetCell(a, keys.fields[k]);
      right[k] = Data().cells.GetCell(b, keys.fields[k]);
    }
    return CompareRows(left, right, keys.count, keys.flags);
  }
};

}  // namespace kelpdex::testing
