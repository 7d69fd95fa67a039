#include "search/sort_rows.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "store/field_row.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

uint32_t entryLimit = UINT32_MAX;

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
  // Bytes that are the same are the same in upper case too, so the table is consulted only from
  // the first byte that differs; equal names, the common case deep in a sort, never touch it.
  size_t i = 0;
  while (i < n && a[i] == b[i]) ++i;
  for (; i < n; ++i) {
    uint8_t x = text::CharUpper(static_cast<uint8_t>(a[i]));
    uint8_t y = text::CharUpper(static_cast<uint8_t>(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

int CompareKey(const CellRecord* left, const CellRecord* right, bool natural) {
  SortValue a = ReadSortValue(left), b = ReadSortValue(right);
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

// The records being sorted as entries of their row and the pointers to their key cells, fetched
// once through the row index. The sort moves whole entries, so its scans run through memory in
// order, and compares through the pointers, so the cells are read in place and never copied.
class Entries {
 public:
  Entries(Worksheet& sheet, const SortKeys& keys, const uint32_t* rows, uint32_t count)
      : stride_(keys.count + 1u) {
    if (count > entryLimit) return;
    slots_.reset(new (std::nothrow) Slot[size_t{count} * stride_]);
    if (slots_ == nullptr) return;
    for (uint32_t p = 0; p < count; ++p) {
      Slot* entry = slots_.get() + size_t{p} * stride_;
      entry[0].row = rows[p];
      for (uint16_t k = 0; k < keys.count; ++k) {
        entry[k + 1].cell =
            rows[p] < kRowLimit ? sheet.cells.GetCellFast(rows[p], keys.fields[k]) : nullptr;
      }
    }
  }
  bool ok() const { return slots_ != nullptr; }
  const CellRecord* const* Cells(int64_t i) const { return &At(i)[1].cell; }
  uint32_t Row(int64_t i) const { return At(i)[0].row; }
  // Asks the memory for the key cells of an entry some way ahead of a scan. Past the first few
  // keys a comparison seldom gets that far.
  void Prefetch(int64_t i) const {
    const Slot* entry = At(i);
    size_t last = stride_ < 4 ? stride_ : 4;
    for (size_t k = 1; k < last; ++k) __builtin_prefetch(entry[k].cell);
  }
  bool AnyCell(int64_t i) const {
    for (size_t k = 1; k < stride_; ++k) {
      if (At(i)[k].cell != nullptr) return true;
    }
    return false;
  }
  void Swap(int64_t i, int64_t j) {
    Slot* a = At(i);
    Slot* b = At(j);
    for (size_t k = 0; k < stride_; ++k) std::swap(a[k], b[k]);
  }

 private:
  union Slot {
    uint32_t row;
    const CellRecord* cell;
  };
  Slot* At(int64_t i) const { return slots_.get() + static_cast<size_t>(i) * stride_; }

  size_t stride_;
  std::unique_ptr<Slot[]> slots_;
};

// The pivot: the row nearest the middle, looking down then up, that has a key cell.
template <typename Records>
int64_t MiddlePivot(Records& entries, int64_t low, int64_t high) {
  int64_t middle = (low + high) / 2;
  for (int64_t down = middle, up = middle; down >= low || up <= high; --down, ++up) {
    if (down >= low && entries.AnyCell(down)) return down;
    if (up <= high && entries.AnyCell(up)) return up;
  }
  return middle;
}

// One partition step of the quicksort over entries [low, high]: afterwards [low, j] holds no
// entry above the pivot and [i, high] none below it.
template <typename Records>
void Partition(Records& entries, const SortKeys& keys, int64_t low, int64_t high, int64_t chosen,
               int64_t& i, int64_t& j) {
  // How far ahead of a scan its cells are asked for: enough to cover a memory latency.
  constexpr int64_t kAhead = 32;
  const CellRecord* pivot[kMaxSortKeys];
  const CellRecord* const* chosenCells = entries.Cells(chosen);
  std::copy(chosenCells, chosenCells + keys.count, pivot);
  i = low;
  j = high;
  while (i <= j) {
    // Every entry a scan visits asks for the cells of the one kAhead further on, so that the
    // comparison seldom waits for memory.
    for (;; ++i) {
      if constexpr (std::is_same_v<Records, Entries>) {
        if (i + kAhead <= high) entries.Prefetch(i + kAhead);
      }
      if (CompareRows(entries.Cells(i), pivot, keys.count, keys.flags) >= 0) break;
    }
    for (;; --j) {
      if constexpr (std::is_same_v<Records, Entries>) {
        if (j - kAhead >= low) entries.Prefetch(j - kAhead);
      }
      if (CompareRows(pivot, entries.Cells(j), keys.count, keys.flags) >= 0) break;
    }
    if (i <= j) {
      entries.Swap(i, j);
      ++i;
      --j;
    }
  }
}

// The quicksort over the entries [first, last], kept in memory (Entries) or looked up
// (LookedUp).
template <typename Records>
void SortEntries(Records& entries, const SortKeys& keys, int64_t first, int64_t last) {
  struct Range {
    int64_t low, high;
  };
  constexpr int kStackRoom = 100;
  Range stack[kStackRoom];
  int depth = 0;
  stack[depth++] = {first, last};
  while (depth > 0) {
    Range range = stack[--depth];
    while (range.low < range.high) {
      int64_t i = 0, j = 0;
      Partition(entries, keys, range.low, range.high, MiddlePivot(entries, range.low, range.high),
                i, j);
      // The larger part waits on the stack, the smaller goes on, so the stack stays shallow.
      Range left{range.low, j}, right{i, range.high};
      bool leftLarger = j - range.low > range.high - i;
      Range larger = leftLarger ? left : right;
      Range smaller = leftLarger ? right : left;
      if (larger.high > larger.low && depth < kStackRoom) stack[depth++] = larger;
      range = smaller;
    }
  }
}

// The pivot of the split: the median of a sample spread over the entries, so that the two
// threads get about the same share whatever order the records came in.
int64_t SamplePivot(Entries& entries, const SortKeys& keys, int64_t last) {
  constexpr int64_t kSample = 63;
  int64_t sample[kSample];
  for (int64_t s = 0; s < kSample; ++s) sample[s] = last * (2 * s + 1) / (2 * kSample);
  std::sort(sample, sample + kSample, [&](int64_t a, int64_t b) {
    return CompareRows(entries.Cells(a), entries.Cells(b), keys.count, keys.flags) < 0;
  });
  return sample[kSample / 2];
}

// A large sort in memory splits once and sorts the two parts on two threads: the comparisons
// mostly wait for memory, and two cores wait for twice as many cells at a time. The parts share
// no entry, so the order is the one a single thread would reach.
void SortEntriesInParallel(Entries& entries, const SortKeys& keys, uint32_t count) {
  constexpr uint32_t kParallelFrom = 65536;
  int64_t last = static_cast<int64_t>(count) - 1;
  if (count < kParallelFrom || std::thread::hardware_concurrency() < 2) {
    SortEntries(entries, keys, 0, last);
    return;
  }
  int64_t i = 0, j = 0;
  Partition(entries, keys, 0, last, SamplePivot(entries, keys, last), i, j);
  std::thread helper;
  try {
    helper = std::thread([&] { SortEntries(entries, keys, 0, j); });
  } catch (const std::system_error&) {
    SortEntries(entries, keys, 0, j);  // no thread to be had: the same work on this one
  }
  SortEntries(entries, keys, i, last);
  if (helper.joinable()) helper.join();
}

// Without memory for the entries: the same quicksort over the rows themselves, each comparison
// looking its cells up again through the row index. Slower, the same order.
class LookedUp {
 public:
  LookedUp(Worksheet& sheet, const SortKeys& keys, uint32_t* rows)
      : sheet_(sheet), keys_(keys), rows_(rows) {}
  const CellRecord* const* Cells(int64_t i) { return Fetch(i, next_ ^= 1); }
  bool AnyCell(int64_t i) {
    const CellRecord* const* cells = Fetch(i, 0);
    for (uint16_t k = 0; k < keys_.count; ++k) {
      if (cells[k] != nullptr) return true;
    }
    return false;
  }
  void Swap(int64_t i, int64_t j) { std::swap(rows_[i], rows_[j]); }

 private:
  const CellRecord* const* Fetch(int64_t i, int slot) {
    uint32_t row = rows_[i];
    for (uint16_t k = 0; k < keys_.count; ++k) {
      cells_[slot][k] = row < kRowLimit ? sheet_.cells.GetCellFast(row, keys_.fields[k]) : nullptr;
    }
    return cells_[slot];
  }

  Worksheet& sheet_;
  const SortKeys& keys_;
  uint32_t* rows_;
  int next_ = 0;
  const CellRecord* cells_[2][kMaxSortKeys] = {};
};

}  // namespace

void SetSortEntryLimit(uint32_t count) {
  entryLimit = count;
}

SortKeys CollectSortKeys(const TableSpec& table) {
  SortKeys keys;
  uint16_t fields = FieldCount(table);
  for (uint16_t f = 0; f < fields; ++f) {
    FieldSpec fieldRow;
    if (!ReadField(table, f, fieldRow)) continue;
    uint16_t position = SortKeyPlace(fieldRow.sortIndex);
    if (position < 1 || position >= kMaxSortKeys) continue;
    // The commands leave no gaps between positions, so the count of keys is also the highest.
    keys.fields[position - 1] = f;
    keys.flags[position - 1] = fieldRow.sortIndex > 20000;
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

void SortRows(Worksheet& sheet, const SortKeys& keys, uint32_t* rows, uint32_t count,
              bool keepRowIndex) {
  if (keys.count > kMaxSortKeys || keys.count == 0 || count < 2) return;
  // Above ten rows every lookup goes straight to its row.
  uint32_t highest = 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (rows[i] < kRowLimit && rows[i] > highest) highest = rows[i];
  }
  if (count > 10) sheet.cells.BuildRowIndex(0, highest);
  Entries entries(sheet, keys, rows, count);
  if (entries.ok()) {
    SortEntriesInParallel(entries, keys, count);
    for (uint32_t p = 0; p < count; ++p) rows[p] = entries.Row(p);
  } else {
    LookedUp lookedUp(sheet, keys, rows);
    SortEntries(lookedUp, keys, 0, static_cast<int64_t>(count) - 1);
  }
  if (!keepRowIndex) sheet.cells.InvalidateRowIndex();
}

void SortRecordSet(const TableSpec& table, RecordSet& records) {
  if (table.data == nullptr || !records.allocated()) return;
  SortKeys keys = CollectSortKeys(table);
  if (keys.count == 0) return;
  SortRows(*table.data, keys, records.rows(), records.count());
  records.SetOrdered(false);
}

}  // namespace kelpdex
