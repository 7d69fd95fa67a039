#include "search/duplicate_groups.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include "text/code_page.h"

namespace kelpdex {

namespace {

constexpr uint32_t kNoGroup = UINT32_MAX;

uint64_t Mix(uint64_t h) {
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  return h;
}

// What each key field has held so far: a field with numbers and texts both goes back to the
// sort, since the comparison reads such a text as a number only against a number, and equality
// is then no longer the same thing as equal hashes.
struct FieldKinds {
  bool numbers = false;
  bool texts = false;
};

// The hash of one key cell, equal for every two cells the comparison calls equal within a field
// of one kind. False for a value that would break that.
bool HashCell(const CellRecord* cell, FieldKinds& kinds, uint64_t& h) {
  SortValue v = ReadSortValue(cell);
  switch (v.kind) {
    case SortValue::kEmpty:
      h = 0x51ed27u;
      return true;
    case SortValue::kError:
      h = 0x1000u + v.error;
      return true;
    case SortValue::kNumber: {
      if (!std::isfinite(v.number)) return false;
      kinds.numbers = true;
      double x = v.number + 0.0;  // -0 and 0 compare equal
      uint64_t bits;
      std::memcpy(&bits, &x, sizeof bits);
      h = Mix(bits ^ 0x2000u);
      return !kinds.texts;
    }
    case SortValue::kText: {
      kinds.texts = true;
      uint64_t t = 0xcbf29ce484222325ull;
      for (char c : v.text) t = (t ^ text::CharUpper(static_cast<uint8_t>(c))) * 0x100000001b3ull;
      h = Mix(t ^ v.text.size());
      return !kinds.numbers;
    }
  }
  return false;
}

// Open addressing from a hash to a group, grown by doubling; a slot holds group + 1 (0 is free)
// and the hash's upper half, so most mismatches never touch the cells.
class GroupTable {
 public:
  bool Init() { return Resize(1024); }
  // The group of an equal record, or kNoGroup with `slot` where a new one goes.
  template <typename SameAs>
  uint32_t Find(uint64_t hash, uint32_t& slot, SameAs sameAs) const {
    uint32_t tag = static_cast<uint32_t>(hash >> 32);
    for (uint32_t i = static_cast<uint32_t>(hash) & mask_;; i = (i + 1) & mask_) {
      const Slot& s = slots_[i];
      if (s.group == 0) {
        slot = i;
        return kNoGroup;
      }
      if (s.tag == tag && sameAs(s.group - 1)) return s.group - 1;
    }
  }
  // Enters a new group at `slot`; false when growing runs out of memory.
  bool Insert(uint64_t hash, uint32_t slot, uint32_t group, uint32_t groups) {
    slots_[slot] = {group + 1, static_cast<uint32_t>(hash >> 32), static_cast<uint32_t>(hash)};
    if (uint64_t{groups} * 2 <= mask_) return true;
    return Resize((mask_ + 1) * 2);
  }

 private:
  struct Slot {
    uint32_t group;
    uint32_t tag;
    uint32_t low;  // the hash's lower half, to place the slot again when the table grows
  };
  bool Resize(uint32_t capacity) {
    std::unique_ptr<Slot[]> grown(new (std::nothrow) Slot[capacity]());
    if (grown == nullptr) return false;
    uint32_t mask = capacity - 1;
    for (uint32_t i = 0; slots_ != nullptr && i <= mask_; ++i) {
      if (slots_[i].group == 0) continue;
      uint32_t j = slots_[i].low & mask;
      while (grown[j].group != 0) j = (j + 1) & mask;
      grown[j] = slots_[i];
    }
    slots_ = std::move(grown);
    mask_ = mask;
    return true;
  }

  std::unique_ptr<Slot[]> slots_;
  uint32_t mask_ = 0;
};

}  // namespace

bool GroupDuplicates(Worksheet& sheet, const SortKeys& keys, uint32_t* rows, uint32_t rowCount,
                     uint32_t& count) {
  if (keys.count == 0 || rowCount < 2) return false;
  // Which key a column is, for the storage-order pass below.
  std::unique_ptr<int16_t[]> keyOf(new (std::nothrow) int16_t[kColumnLimit]);
  std::unique_ptr<uint32_t[]> groupOf(new (std::nothrow) uint32_t[rowCount]);
  // Per group: its first row (the one the table compares against), then its size.
  std::unique_ptr<uint32_t[]> firstRow(new (std::nothrow) uint32_t[rowCount]);
  std::unique_ptr<uint32_t[]> size(new (std::nothrow) uint32_t[rowCount]);
  GroupTable table;
  if (keyOf == nullptr || groupOf == nullptr || firstRow == nullptr || size == nullptr ||
      !table.Init()) {
    return false;
  }
  std::fill(keyOf.get(), keyOf.get() + kColumnLimit, int16_t{-1});
  for (uint16_t k = keys.count; k-- > 0;) keyOf[keys.fields[k]] = static_cast<int16_t>(k);
  if (!sheet.cells.BuildRowIndex(0, rowCount - 1)) return false;

  FieldKinds kinds[kMaxSortKeys];
  const CellRecord* cells[kMaxSortKeys] = {};
  const CellRecord* other[kMaxSortKeys];
  uint32_t groups = 0;
  bool ok = true;
  // Puts `row`, whose key cells stand in `cells`, into its group.
  auto enter = [&](uint32_t row) {
    uint64_t h = 0x9e3779b97f4a7c15ull;
    for (uint16_t k = 0; k < keys.count; ++k) {
      uint64_t cellHash;
      if (!HashCell(cells[k], kinds[k], cellHash)) return false;
      h = Mix(h ^ cellHash) + k;
    }
    auto sameAs = [&](uint32_t group) {
      for (uint16_t k = 0; k < keys.count; ++k) {
        other[k] = sheet.cells.GetCellFast(firstRow[group], keys.fields[k]);
      }
      return CompareRows(cells, other, keys.count, keys.flags) == 0;
    };
    uint32_t slot = 0;
    uint32_t group = table.Find(h, slot, sameAs);
    if (group == kNoGroup) {
      group = groups++;
      firstRow[group] = row;
      size[group] = 0;
      if (!table.Insert(h, slot, group, groups)) return false;
    }
    groupOf[row] = group;
    ++size[group];
    return true;
  };

  // One pass in storage order gathers each row's key cells; rows without cells are empty records.
  CellCursor cursor;
  uint32_t row = 0;
  for (CellRecord* r = sheet.cells.NextCell(cursor); ok; r = sheet.cells.NextCell(cursor)) {
    uint32_t cellRow = r != nullptr ? cell::Row(r) : rowCount;
    if (cellRow > rowCount) cellRow = rowCount;
    while (ok && row < cellRow) {
      ok = enter(row++);
      std::fill(cells, cells + keys.count, nullptr);
    }
    if (r == nullptr || cellRow >= rowCount) break;
    if (int16_t k = keyOf[cell::Column(r)]; k >= 0) cells[k] = r;
  }
  if (!ok) {
    sheet.cells.InvalidateRowIndex();
    return false;
  }

  // The groups of two or more, sorted by one record each, give each group its place.
  uint32_t shared = 0;
  for (uint32_t g = 0; g < groups; ++g) {
    if (size[g] >= 2) firstRow[shared++] = firstRow[g];
  }
  SortRows(sheet, keys, firstRow.get(), shared, true);
  // `size` turns into each group's next place in the result; single records get none.
  for (uint32_t g = 0; g < groups; ++g) {
    if (size[g] < 2) size[g] = kNoGroup;
  }
  uint32_t place = 0;
  for (uint32_t i = 0; i < shared; ++i) {
    uint32_t g = groupOf[firstRow[i]];
    uint32_t members = size[g];
    size[g] = place;
    place += members;
  }
  for (uint32_t r = 0; r < rowCount; ++r) {
    uint32_t& next = size[groupOf[r]];
    if (next != kNoGroup) rows[next++] = r;
  }
  count = place;
  sheet.cells.InvalidateRowIndex();
  return true;
}

}  // namespace kelpdex
