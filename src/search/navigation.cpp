#include "search/navigation.h"

#include <cstring>

#include "store/cell_record.h"

namespace kelpdex {

namespace {

// The same stored record apart from its row number, so a different format counts as different.
bool SameCell(const CellRecord* a, const CellRecord* b) {
  if (a == nullptr || b == nullptr) return a == b;
  uint32_t size = cell::Size(a);
  if (size != cell::Size(b)) return false;
  const uint8_t* x = reinterpret_cast<const uint8_t*>(a);
  const uint8_t* y = reinterpret_cast<const uint8_t*>(b);
  // The row number stands at bytes 3 to 6.
  return std::memcmp(x, y, 3) == 0 && std::memcmp(x + 7, y + 7, size - 7) == 0;
}

}  // namespace

bool StepRecord(Worksheet& data, const RecordSet& records, StepKind kind, bool forward,
                GridSelection& selection) {
  uint32_t count = records.count();
  uint32_t p = selection.firstPosition;
  uint16_t first = selection.firstField, last = selection.lastField;
  CellStore& cells = data.cells;
  uint32_t current = p < RecordSet::kEntries ? records[p] : kRowLimit;
  for (uint32_t q = p;;) {
    if (forward) {
      if (q + 1 >= count) return false;
      ++q;
    } else {
      if (q == 0) return false;
      --q;
    }
    bool previousByPosition = !forward && (kind == StepKind::kNonEmpty || kind == StepKind::kEmpty);
    uint32_t row = previousByPosition ? q : records[q];
    bool qualifies = true;
    for (uint32_t f = first; f <= last && qualifies; ++f) {
      const CellRecord* cell =
          row < kRowLimit ? cells.GetCellFast(row, static_cast<uint16_t>(f)) : nullptr;
      switch (kind) {
        case StepKind::kNonEmpty:
          qualifies = cell != nullptr;
          break;
        case StepKind::kEmpty:
          qualifies = cell == nullptr;
          break;
        case StepKind::kIdentical:
        case StepKind::kDifferent: {
          const CellRecord* reference =
              current < kRowLimit ? cells.GetCellFast(current, static_cast<uint16_t>(f)) : nullptr;
          bool same = SameCell(reference, cell);
          qualifies = kind == StepKind::kIdentical ? same : !same;
          break;
        }
      }
    }
    if (qualifies) {
      selection.firstPosition = selection.lastPosition = q;
      return true;
    }
  }
}

bool ParseGoTo(std::string_view text, uint32_t& record) {
  if (text.size() > 20) text = text.substr(0, 20);
  // Read as a decimal conversion reads: blanks first, then an optional plus sign.
  size_t at = 0;
  while (at < text.size() && (text[at] == ' ' || text[at] == '\t')) ++at;
  if (at < text.size() && text[at] == '+') ++at;
  size_t digits = at;
  uint64_t n = 0;
  while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
    n = n * 10 + static_cast<uint64_t>(text[at] - '0');
    if (n > UINT32_MAX) return false;
    ++at;
  }
  if (at == digits) return false;
  while (at < text.size() && text[at] == ' ') ++at;
  if (at != text.size()) return false;
  record = static_cast<uint32_t>(n);
  return true;
}

bool GoToRecord(const RecordSet& records, uint32_t record, GridSelection& selection) {
  if (record < 1 || record > records.count()) return false;
  selection.firstPosition = selection.lastPosition = record - 1;
  selection.lastField = selection.firstField;
  return true;
}

}  // namespace kelpdex
