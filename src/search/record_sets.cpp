#include "search/record_sets.h"

#include <memory>
#include <new>
#include <vector>

#include "search/duplicate_groups.h"
#include "search/run_filters.h"
#include "search/search_keys.h"
#include "search/sort_rows.h"

namespace kelpdex {

namespace {

// The prologue the three commands share: the filters go, as one undo step.
bool Prologue(const TableSpec& table, RecordSet& records) {
  if (!records.Allocate()) {
    table.workbook->errorCode = err::kOutOfMemory;
    return false;
  }
  return ClearAllFilters(table);
}

void Finish(const TableSpec& table, RecordSet& records, uint32_t count, uint32_t rowCount) {
  records.SetCount(count);
  records.RewriteFreeTail(rowCount);
  records.SetOrdered(false);
  SortRecordSet(table, records);
}

}  // namespace

void DuplicateRows(Worksheet& sheet, const std::vector<uint16_t>& fields, uint32_t* rows,
                   uint32_t rowCount, uint32_t& count) {
  for (uint32_t i = 0; i < rowCount; ++i) rows[i] = i;
  count = rowCount;
  if (rowCount < 2) {
    count = 0;
    return;
  }
  SortKeys keys;
  for (size_t k = 0; k < fields.size() && keys.count < kMaxSortKeys; ++k) {
    keys.fields[keys.count] = fields[k];
    keys.flags[keys.count++] = true;
  }
  if (GroupDuplicates(sheet, keys, rows, rowCount, count)) return;
  // The sort's row index serves the comparison of neighbours below.
  SortRows(sheet, keys, rows, rowCount, true);
  std::unique_ptr<uint32_t[]> groups(new (std::nothrow) uint32_t[rowCount]);
  if (groups == nullptr) {
    sheet.cells.InvalidateRowIndex();
    return;  // the sorted vector stays, all of it found
  }
  // Neighbours in the sorted order are compared through their key cells, looked up once each.
  std::vector<const CellRecord*> a(keys.count), b(keys.count);
  auto fetch = [&](uint32_t row, std::vector<const CellRecord*>& cells) {
    for (uint16_t k = 0; k < keys.count; ++k)
      cells[k] = sheet.cells.GetCellFast(row, keys.fields[k]);
  };
  uint32_t kept = 0;
  uint32_t i = 0;
  while (i < rowCount) {
    fetch(rows[i], a);
    uint32_t j = i + 1;
    for (; j < rowCount; ++j) {
      fetch(rows[j], b);
      if (CompareRows(a.data(), b.data(), keys.count, keys.flags) != 0) break;
      if (j == i + 1) groups[kept++] = rows[i];
      groups[kept++] = rows[j];
    }
    i = j;
  }
  std::copy(groups.get(), groups.get() + kept, rows);
  count = kept;
  sheet.cells.InvalidateRowIndex();
}

void ComplementRows(uint32_t* rows, uint32_t rowCount, uint32_t& count) {
  std::unique_ptr<bool[]> found(new (std::nothrow) bool[rowCount]());
  if (found == nullptr) {
    count = rowCount;  // the set stays as it was; the row count is what comes back
    return;
  }
  for (uint32_t i = 0; i < count; ++i) {
    if (rows[i] < rowCount) found[rows[i]] = true;
  }
  uint32_t kept = 0;
  for (uint32_t row = 0; row < rowCount; ++row) {
    if (!found[row]) rows[kept++] = row;
  }
  count = kept;
}

bool RemoveAllFilters(const TableSpec& table, RecordSet& records) {
  if (!Prologue(table, records)) return false;
  uint32_t rowCount = TableRowCount(table);
  uint32_t* rows = records.rows();
  for (uint32_t i = 0; i < rowCount; ++i) rows[i] = i;
  Finish(table, records, rowCount, rowCount);
  return true;
}

bool FindDuplicates(const TableSpec& table, RecordSet& records, uint16_t first, uint16_t last) {
  std::vector<uint16_t> fields;
  for (uint32_t f = first; f <= last; ++f) fields.push_back(static_cast<uint16_t>(f));
  return FindDuplicates(table, records, fields);
}

bool FindDuplicates(const TableSpec& table, RecordSet& records,
                    const std::vector<uint16_t>& fields) {
  if (!Prologue(table, records)) return false;
  uint32_t rowCount = TableRowCount(table);
  uint32_t count = 0;
  DuplicateRows(*table.data, fields, records.rows(), rowCount, count);
  Finish(table, records, count, rowCount);
  return true;
}

bool FindComplement(const TableSpec& table, RecordSet& records) {
  uint32_t count = records.count();
  if (!Prologue(table, records)) return false;
  uint32_t rowCount = TableRowCount(table);
  ComplementRows(records.rows(), rowCount, count);
  Finish(table, records, count, rowCount);
  return true;
}

}  // namespace kelpdex
