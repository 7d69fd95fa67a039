#include "search/sort_rows.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "store/field_row.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

// A cell as the comparison reads it.
struct SortValue {
  enum Kind : uint8_t { kEmpty, kNumber, kText, kError } kind = kEmpty;
  uint8_t error = 0;
  double number = 0;
  std::string_view text;
};

SortValue Read(const CellRecord* r) {
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

// A text compared with a number reads as one, or else counts as empty.
void ReadAsNumber(SortValue& v) {
  double x = 0;
  if (TextToNumber(v.text, currentLocale.decimalSeparator, x) && std::isfinite(x)) {
    v.kind = SortValue::kNumber;
    v.number = x;
  } else {
    v.kind = SortValue::kEmpty;
  }
}

int CompareTexts(std::string_view a, std::string_view b) {
  size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    uint8_t x = text::CharUpper(static_cast<uint8_t>(a[i]));
    uint8_t y = text::CharUpper(static_cast<uint8_t>(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

int CompareKey(const CellRecord* left, const CellRecord* right, bool natural) {
  SortValue a = Read(left), b = Read(right);
  int order = 0;
  if (a.kind == SortValue::kError || b.kind == SortValue::kError) {
    if (a.kind != SortValue::kError) {
      order = 1;
    } else if (b.kind != SortValue::kError) {
      order = -1;
    } else {
      order = a.error == b.error ? 0 : (a.error < b.error ? -1 : 1);
    }
    return natural ? order : -order;
  }
  if (a.kind == SortValue::kNumber && b.kind == SortValue::kText) ReadAsNumber(b);
  if (a.kind == SortValue::kText && b.kind == SortValue::kNumber) ReadAsNumber(a);
  // Empty records stay at the end whichever the direction.
  if (a.kind == SortValue::kEmpty || b.kind == SortValue::kEmpty) {
    return a.kind == b.kind ? 0 : (a.kind == SortValue::kEmpty ? 1 : -1);
  }
  if (a.kind == SortValue::kNumber) {
    order = a.number < b.number ? -1 : (a.number > b.number ? 1 : 0);
  } else {
    order = CompareTexts(a.text, b.text);
  }
  return natural ? order : -order;
}

// The key cells of the rows being sorted, fetched once each: position p's cells stand at
// p * keyCount. The sort permutes positions and compares through these pointers, so the cells
// themselves are read in place and never copied. Without memory for the pointers, each
// comparison looks its cells up again through the row index: slower, the same order.
class KeyCells {
 public:
  KeyCells(Worksheet& sheet, const SortKeys& keys, const uint32_t* rows, uint32_t count)
      : sheet_(sheet), keys_(keys), rows_(rows), keyCount_(keys.count) {
    cells_.reset(new (std::nothrow) const CellRecord*[size_t{count} * keyCount_]);
    if (cells_ == nullptr) return;
    for (uint32_t p = 0; p < count; ++p) Fetch(p, cells_.get() + size_t{p} * keyCount_);
  }
  // The cells of a position; `slot` (0 or 1) keeps two looked-up positions apart.
  const CellRecord* const* At(uint32_t position, int slot) {
    if (cells_ != nullptr) return cells_.get() + size_t{position} * keyCount_;
    Fetch(position, lookedUp_[slot]);
    return lookedUp_[slot];
  }
  bool AnyCell(uint32_t position) {
    const CellRecord* const* cells = At(position, 0);
    for (uint16_t k = 0; k < keyCount_; ++k) {
      if (cells[k] != nullptr) return true;
    }
    return false;
  }

 private:
  void Fetch(uint32_t position, const CellRecord** out) {
    uint32_t row = rows_[position];
    for (uint16_t k = 0; k < keyCount_; ++k) {
      out[k] = row < kRowLimit ? sheet_.cells.GetCellFast(row, keys_.fields[k]) : nullptr;
    }
  }

  Worksheet& sheet_;
  const SortKeys& keys_;
  const uint32_t* rows_;
  uint16_t keyCount_;
  std::unique_ptr<const CellRecord*[]> cells_;
  const CellRecord* lookedUp_[2][kMaxSortKeys] = {};
};

// The quicksort over positions 0..count), each standing for its row and its key cells.
void SortPositions(KeyCells& cells, const SortKeys& keys, uint32_t* order, uint32_t count) {
  struct Range {
    int64_t low, high;
  };
  constexpr int kStackRoom = 100;
  Range stack[kStackRoom];
  int depth = 0;
  stack[depth++] = {0, static_cast<int64_t>(count) - 1};
  const CellRecord* pivot[kMaxSortKeys];
  while (depth > 0) {
    Range range = stack[--depth];
    while (range.low < range.high) {
      int64_t low = range.low, high = range.high;
      // The pivot: the row nearest the middle, looking down then up, that has a key cell.
      int64_t middle = (low + high) / 2, chosen = middle;
      for (int64_t down = middle, up = middle; down >= low || up <= high; --down, ++up) {
        if (down >= low && cells.AnyCell(order[down])) {
          chosen = down;
          break;
        }
        if (up <= high && cells.AnyCell(order[up])) {
          chosen = up;
          break;
        }
      }
      const CellRecord* const* p = cells.At(order[chosen], 0);
      std::copy(p, p + keys.count, pivot);
      int64_t i = low, j = high;
      while (i <= j) {
        while (CompareRows(cells.At(order[i], 1), pivot, keys.count, keys.flags) < 0) ++i;
        while (CompareRows(pivot, cells.At(order[j], 1), keys.count, keys.flags) < 0) --j;
        if (i <= j) {
          std::swap(order[i], order[j]);
          ++i;
          --j;
        }
      }
      // The larger part waits on the stack, the smaller goes on, so the stack stays shallow.
      Range left{low, j}, right{i, high};
      bool leftLarger = j - low > high - i;
      Range larger = leftLarger ? left : right;
      Range smaller = leftLarger ? right : left;
      if (larger.high > larger.low && depth < kStackRoom) stack[depth++] = larger;
      range = smaller;
    }
  }
}

}  // namespace

SortKeys CollectSortKeys(const TableSpec& table) {
  SortKeys keys;
  uint16_t fields = FieldCount(table);
  for (uint16_t f = 0; f < fields; ++f) {
    FieldSpec spec;
    if (!ReadField(table, f, spec)) continue;
    uint16_t position = SortKeyPlace(spec.sortIndex);
    if (position < 1 || position >= kMaxSortKeys) continue;
    // The commands leave no gaps between positions, so the count of keys is also the highest.
    keys.fields[position - 1] = f;
    keys.flags[position - 1] = spec.sortIndex > 20000;
    ++keys.count;
  }
  return keys;
}

int CompareRows(const CellRecord* const* left, const CellRecord* const* right, uint16_t keyCount,
                const bool* keyFlags) {
  for (uint16_t k = 0; k < keyCount; ++k) {
    int order = CompareKey(left[k], right[k], keyFlags[k]);
    if (order != 0) return order;
  }
  return 0;
}

void SortRows(Worksheet& sheet, const SortKeys& keys, uint32_t* rows, uint32_t count) {
  if (keys.count > kMaxSortKeys || keys.count == 0 || count < 2) return;
  // Above ten rows every lookup goes straight to its row.
  uint32_t highest = 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (rows[i] < kRowLimit && rows[i] > highest) highest = rows[i];
  }
  if (count > 10) sheet.cells.BuildRowIndex(0, highest);
  KeyCells cells(sheet, keys, rows, count);
  std::unique_ptr<uint32_t[]> order(new (std::nothrow) uint32_t[count]);
  std::unique_ptr<uint32_t[]> sorted(new (std::nothrow) uint32_t[count]);
  if (order != nullptr && sorted != nullptr) {
    for (uint32_t p = 0; p < count; ++p) order[p] = p;
    SortPositions(cells, keys, order.get(), count);
    for (uint32_t p = 0; p < count; ++p) sorted[p] = rows[order[p]];
    std::copy(sorted.get(), sorted.get() + count, rows);
  }
  sheet.cells.InvalidateRowIndex();
}

void SortRecordSet(const TableSpec& table, RecordSet& records) {
  if (table.data == nullptr || !records.allocated()) return;
  SortKeys keys = CollectSortKeys(table);
  if (keys.count == 0) return;
  SortRows(*table.data, keys, records.rows(), records.count());
  records.SetOrdered(false);
}

}  // namespace kelpdex
