#include "store/cell_store.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace kelpdex {

namespace {

constexpr uint32_t kGroupRows = 1u << CellStore::kRowGroupShift;

inline uint64_t KeyOf(uint32_t row, uint16_t column) {
  return (static_cast<uint64_t>(row) << 16) | column;
}
inline uint64_t KeyOf(const uint8_t* r) {
  return KeyOf(cell::Row(r), cell::Column(r));
}
// Blocks in a chain are never empty, except a lone head that is about to receive a record.
inline uint64_t FirstKey(const RowBlock* b) {
  return KeyOf(b->data);
}

// Leaves the cursor at `offset`, behind a record with `key` that begins at `found` (or
// CellCursor::kNoRecord when only records below `key` stand before it).
void LeaveCursor(CellCursor* cursor, RowBlock* block, uint32_t offset, uint64_t key,
                 uint32_t found) {
  if (cursor == nullptr) return;
  if ((cursor->flags & kCursorFollow) == 0) {
    cursor->Clear();
    return;
  }
  cursor->block = block;
  cursor->offset = static_cast<uint16_t>(offset);
  cursor->key = key;
  cursor->found = static_cast<uint16_t>(found);
}

}  // namespace

CellStore::CellStore(BlockPool* sharedPool)
    : pool_(sharedPool != nullptr ? sharedPool : &ownPool_) {}

CellStore::~CellStore() {
  pool_->GiveChain(chain_.Release(), true);
  for (RowIndexEntry* page : rowIndexPages_) std::free(page);
}

RowBlock* CellStore::HintBlock(uint32_t row) {
  if (chain_.blockCount() < kIndexMinBlocks) return nullptr;
  uint32_t g = row >> kRowGroupShift;
  if (!(rowIndexValid_[g] & kPageHint)) {
    if (!BuildRowIndex(g << kRowGroupShift, (g << kRowGroupShift) | (kGroupRows - 1))) {
      return nullptr;
    }
  }
  // The nearest entry at or before the row; an empty stretch falls back to earlier pages.
  for (uint32_t i = (row & (kGroupRows - 1)) + 1;;) {
    const RowIndexEntry* page = rowIndexPages_[g];
    while (i > 0) {
      if (page[i - 1].block != nullptr) return page[i - 1].block;
      --i;
    }
    if (g == 0 || !(rowIndexValid_[g - 1] & kPageHint)) return nullptr;
    --g;
    i = kGroupRows;
  }
}

CellStore::Position CellStore::Locate(uint64_t key, const CellCursor* cursor) {
  RowBlock* b = nullptr;
  uint32_t off = 0;
  if (cursor != nullptr && cursor->block != nullptr) {
    b = cursor->block;
    if (cursor->key == key && cursor->found != CellCursor::kNoRecord) return {b, cursor->found};
    if (cursor->key < key) off = cursor->offset;
  } else if (chain_.head() != nullptr) {
    b = HintBlock(static_cast<uint32_t>(key >> 16));
  }
  if (b == nullptr) {
    b = chain_.head();
    if (b == nullptr) return {nullptr, 0};
  } else if (off == 0) {
    // A starting block may stand behind the target: step back to one that starts before it.
    while (b->prev != nullptr && FirstKey(b) > key) b = b->prev;
  }
  while (b->next != nullptr && FirstKey(b->next) <= key) {
    b = b->next;
    off = 0;
  }
  const uint8_t* d = b->data;
  while (off < b->used && KeyOf(d + off) < key) off += cell::Size(d + off);
  return {b, off};
}

void CellStore::InvalidateFrom(uint32_t row, const RowBlock* lastTouched) {
  if (validPageCount_ == 0) return;
  uint32_t lastRow = kLastRow;
  if (lastTouched->next != nullptr) lastRow = cell::Row(lastTouched->next->data);
  for (uint32_t g = row >> kRowGroupShift; g <= (lastRow >> kRowGroupShift); ++g) {
    if (rowIndexValid_[g] & kPageExact) {
      rowIndexValid_[g] &= static_cast<uint8_t>(~kPageExact);
      --validPageCount_;
    }
  }
}

void CellStore::InvalidateRowIndex() {
  if (validPageCount_ == 0) return;
  for (uint8_t& state : rowIndexValid_) state &= static_cast<uint8_t>(~kPageExact);
  validPageCount_ = 0;
}

void CellStore::DropRowIndex() {
  if (validPageCount_ == 0 && hintPageCount_ == 0) return;
  std::memset(rowIndexValid_, 0, sizeof rowIndexValid_);
  validPageCount_ = 0;
  hintPageCount_ = 0;
}

bool CellStore::PutCell(const uint8_t* record, CellCursor* cursor) {
  uint32_t row = cell::Row(record);
  if (row >= kRowLimit) return true;
  uint32_t size = cell::Size(record);
  if (size > kBlockPayload) return false;
  uint64_t key = KeyOf(record);
  if (chain_.head() == nullptr) {
    RowBlock* block = pool_->Take();
    if (block == nullptr) return false;
    chain_.Append(block);
  }

  Position pos = Locate(key, cursor);
  RowBlock* b = pos.block;
  uint32_t off = pos.offset;
  RowBlock* furthest = b;  // the last block whose records may move

  if (off < b->used && KeyOf(b->data + off) == key) {
    uint32_t old = cell::Size(b->data + off);
    if (old == size) {
      // A replacement of the same size, the common case of recalculation, moves nothing.
      std::memcpy(b->data + off, record, size);
      LeaveCursor(cursor, b, off + size, key, off);
      return true;
    }
    // Secure the blocks a split may need before the old record goes, so that failure leaves
    // the cell as it was.
    if (b->used - old + size > kBlockPayload && !pool_->Reserve(size > kSplitOffset ? 2 : 1)) {
      return false;
    }
    std::memmove(b->data + off, b->data + off + old, b->used - off - old);
    b->used = static_cast<uint16_t>(b->used - old);
    chain_.CountFreed(old);
  }

  // Sequential inserts at a block's start fill the lighter previous block instead.
  if (off == 0 && b->prev != nullptr && b->prev->used < b->used) {
    b = b->prev;
    off = b->used;
  }

  RowBlock* placedBlock = b;
  uint32_t placedOffset = off;
  if (b->used + size <= kBlockPayload) {
    std::memmove(b->data + off + size, b->data + off, b->used - off);
    std::memcpy(b->data + off, record, size);
    b->used = static_cast<uint16_t>(b->used + size);
  } else {
    uint32_t tail = b->used - off;
    bool intoFirst = off < kSplitOffset && off + size <= kBlockPayload;
    bool needThird = !intoFirst && size + tail > kBlockPayload && tail > 0;
    if (!pool_->Reserve(needThird ? 2 : 1)) return false;
    RowBlock* second = pool_->Take();
    chain_.LinkAfter(second, b);
    if (intoFirst) {
      std::memcpy(second->data, b->data + off, tail);
      second->used = static_cast<uint16_t>(tail);
      std::memcpy(b->data + off, record, size);
      b->used = static_cast<uint16_t>(off + size);
    } else if (!needThird) {
      std::memcpy(second->data, record, size);
      std::memcpy(second->data + size, b->data + off, tail);
      second->used = static_cast<uint16_t>(size + tail);
      b->used = static_cast<uint16_t>(off);
      placedBlock = second;
      placedOffset = 0;
    } else {
      RowBlock* third = pool_->Take();
      chain_.LinkAfter(third, second);
      std::memcpy(third->data, b->data + off, tail);
      third->used = static_cast<uint16_t>(tail);
      std::memcpy(second->data, record, size);
      second->used = static_cast<uint16_t>(size);
      b->used = static_cast<uint16_t>(off);
      placedBlock = second;
      placedOffset = 0;
      if (furthest == b) furthest = third;
    }
    if (furthest == b) furthest = second;
  }
  chain_.CountFilled(size);
  InvalidateFrom(row, furthest);
  LeaveCursor(cursor, placedBlock, placedOffset + size, key, placedOffset);

  uint32_t blocksBefore = chain_.blockCount();
  MaybeCompact();
  if (chain_.blockCount() != blocksBefore && cursor != nullptr) {
    // Compaction rewrote every record; find the one just written again.
    Position again = Locate(key, nullptr);
    LeaveCursor(cursor, again.block, again.offset + size, key, again.offset);
  }
  return true;
}

CellRecord* CellStore::GetCell(uint32_t row, uint16_t column, CellCursor* cursor) {
  if (row >= kRowLimit || chain_.head() == nullptr) return nullptr;
  uint64_t key = KeyOf(row, column);
  Position pos = Locate(key, cursor);
  uint8_t* r = pos.block->data + pos.offset;
  if (pos.offset < pos.block->used && KeyOf(r) == key) {
    LeaveCursor(cursor, pos.block, pos.offset + cell::Size(r), key, pos.offset);
    return cell::At(r);
  }
  // Every record before the position is below the key, which keeps the cursor useful for the
  // next lookup further on.
  if (key > 0) LeaveCursor(cursor, pos.block, pos.offset, key - 1, CellCursor::kNoRecord);
  return nullptr;
}

bool CellStore::BuildRowIndex(uint32_t firstRow, uint32_t lastRow) {
  if (chain_.head() == nullptr) return true;
  lastRow = std::min(lastRow, kLastRow);
  uint32_t g1 = firstRow >> kRowGroupShift;
  uint32_t g2 = lastRow >> kRowGroupShift;
  while (g1 <= g2 && (rowIndexValid_[g1] & kPageExact)) ++g1;
  while (g2 > g1 && (rowIndexValid_[g2] & kPageExact)) --g2;
  if (g1 > g2) return true;
  for (uint32_t g = g1; g <= g2; ++g) {
    if (rowIndexPages_[g] == nullptr) {
      rowIndexPages_[g] =
          static_cast<RowIndexEntry*>(std::malloc(kGroupRows * sizeof(RowIndexEntry)));
      if (rowIndexPages_[g] == nullptr) return false;
    }
    std::memset(static_cast<void*>(rowIndexPages_[g]), 0, kGroupRows * sizeof(RowIndexEntry));
  }

  // Start from a block an earlier page knows, stepping back as far as the start needs, or from
  // the head.
  uint32_t base = g1 << kRowGroupShift;
  uint32_t end = (g2 << kRowGroupShift) + kGroupRows - 1;
  RowBlock* b = chain_.head();
  for (uint32_t g = g1; g-- > 0;) {
    if (!(rowIndexValid_[g] & kPageHint)) continue;
    const RowIndexEntry* page = rowIndexPages_[g];
    uint32_t i = kGroupRows;
    while (i > 0 && page[i - 1].block == nullptr) --i;
    if (i == 0) continue;
    b = page[i - 1].block;
    break;
  }
  while (b->prev != nullptr && cell::Row(b->data) >= base) b = b->prev;
  while (b->next != nullptr && cell::Row(b->next->data) < base) b = b->next;
  uint32_t lastSeen = kRowLimit;
  for (; b != nullptr; b = b->next) {
    const uint8_t* d = b->data;
    for (uint32_t off = 0; off < b->used; off += cell::Size(d + off)) {
      uint32_t row = cell::Row(d + off);
      if (row < base || row == lastSeen) continue;
      if (row > end) goto done;
      lastSeen = row;
      rowIndexPages_[row >> kRowGroupShift][row & (kGroupRows - 1)] = {b,
                                                                       static_cast<uint16_t>(off)};
    }
  }
done:
  for (uint32_t g = g1; g <= g2; ++g) {
    if (!(rowIndexValid_[g] & kPageExact)) ++validPageCount_;
    if (!(rowIndexValid_[g] & kPageHint)) ++hintPageCount_;
    rowIndexValid_[g] = kPageExact | kPageHint;
  }
  return true;
}

CellRecord* CellStore::GetCellFast(uint32_t row, uint16_t column) {
  if (row >= kRowLimit || chain_.head() == nullptr) return nullptr;
  uint32_t g = row >> kRowGroupShift;
  if (!(rowIndexValid_[g] & kPageExact)) {
    // A page made inexact by writes still gives a close start; rebuilding it at every write
    // would cost more than the short scan.
    if ((rowIndexValid_[g] & kPageHint) ||
        !BuildRowIndex(g << kRowGroupShift, (g << kRowGroupShift) | (kGroupRows - 1))) {
      return GetCell(row, column, nullptr);
    }
  }
  const RowIndexEntry& entry = rowIndexPages_[g][row & (kGroupRows - 1)];
  RowBlock* b = entry.block;
  if (b == nullptr) return nullptr;
  uint32_t off = entry.offset;
  for (;;) {
    if (off >= b->used) {
      b = b->next;
      if (b == nullptr) return nullptr;
      off = 0;
    }
    uint8_t* r = b->data + off;
    if (cell::Row(r) != row) return nullptr;
    uint16_t c = cell::Column(r);
    if (c >= column) return c == column ? cell::At(r) : nullptr;
    off += cell::Size(r);
  }
}

void CellStore::GetRowFast(uint32_t row, uint16_t columnCount, CellRecord** cells) {
  std::fill(cells, cells + columnCount, nullptr);
  if (row >= kRowLimit || chain_.head() == nullptr || columnCount == 0) return;
  uint32_t g = row >> kRowGroupShift;
  if (!(rowIndexValid_[g] & kPageExact) &&
      ((rowIndexValid_[g] & kPageHint) ||
       !BuildRowIndex(g << kRowGroupShift, (g << kRowGroupShift) | (kGroupRows - 1)))) {
    // No exact index page: cell by cell, as GetCellFast would do it.
    for (uint16_t c = 0; c < columnCount; ++c) cells[c] = GetCell(row, c, nullptr);
    return;
  }
  const RowIndexEntry& entry = rowIndexPages_[g][row & (kGroupRows - 1)];
  RowBlock* b = entry.block;
  if (b == nullptr) return;
  uint32_t off = entry.offset;
  for (;;) {
    if (off >= b->used) {
      b = b->next;
      if (b == nullptr) return;
      off = 0;
    }
    uint8_t* r = b->data + off;
    if (cell::Row(r) != row) return;
    uint16_t c = cell::Column(r);
    if (c >= columnCount) return;
    cells[c] = cell::At(r);
    off += cell::Size(r);
  }
}

void CellStore::DeleteRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow,
                            uint32_t lastRow, CellCursor* cursor, bool freeBlocks) {
  if (chain_.head() == nullptr || firstRow > lastRow || firstColumn > lastColumn ||
      firstRow >= kRowLimit) {
    return;
  }
  lastRow = std::min(lastRow, kLastRow);
  InvalidateRowIndex();
  uint8_t buffer[kBlockPayload];

restart:
  Position pos = Locate(KeyOf(firstRow, firstColumn), cursor);
  RowBlock* b = pos.block;
  uint32_t start = pos.offset;
  while (b != nullptr) {
    if (start == 0 && b->used > 0 && cell::Row(b->data) > lastRow) break;
    std::memcpy(buffer, b->data, start);
    uint32_t kept = start;
    uint32_t off = start;
    bool dropped = false;
    bool pastRange = false;
    while (off < b->used) {
      uint8_t* r = b->data + off;
      uint32_t size = cell::Size(r);
      uint32_t row = cell::Row(r);
      uint16_t column = cell::Column(r);
      if (row > lastRow) {
        std::memcpy(buffer + kept, r, b->used - off);
        kept += b->used - off;
        pastRange = true;
        break;
      }
      bool inside = row >= firstRow && column >= firstColumn && column <= lastColumn;
      if (!inside) {
        std::memcpy(buffer + kept, r, size);
        kept += size;
        off += size;
        continue;
      }
      if (cell::IsFormula(r) && (r[cell::kFlagsAt] & cell::kArrayHead) &&
          (cell::ArrayColumns(r) > 1 || cell::ArrayRows(r) > 1) &&
          cell::ErrorNibble(r) != cell::kFillError) {
        // Part of a healthy array goes with the whole array; the mark comes off first so that
        // the head does not start this again.
        r[cell::kFlagsAt] &= static_cast<uint8_t>(~cell::kArrayHead);
        uint32_t arrayLastColumn =
            std::min<uint32_t>(column + cell::ArrayColumns(r) - 1, kLastColumn);
        uint32_t arrayLastRow = std::min<uint32_t>(row + cell::ArrayRows(r) - 1, kLastRow);
        DeleteRange(column, static_cast<uint16_t>(arrayLastColumn), row, arrayLastRow, nullptr,
                    freeBlocks);
        cursor = nullptr;
        goto restart;
      }
      dropped = true;
      off += size;
    }
    RowBlock* next = b->next;
    if (dropped) {
      if (kept > 0) {
        std::memcpy(b->data, buffer, kept);
        chain_.CountFreed(b->used - kept);
        b->used = static_cast<uint16_t>(kept);
      } else {
        chain_.Remove(b);
        pool_->Give(b, freeBlocks);
        DropRowIndex();
      }
    }
    if (pastRange) break;
    b = next;
    start = 0;
  }
  if (cursor != nullptr) cursor->Clear();
  // Mass deletion is where waste comes from, so the compaction test runs here as well.
  MaybeCompact();
}

void CellStore::MaybeCompact() {
  if (chain_.WantsCompaction()) Compact();
}

void CellStore::Compact() {
  if (chain_.head() == nullptr) return;
  DropRowIndex();
  chain_.Compact(
      *pool_, kFreeListKeep, kBlockPayload, [](const uint8_t* r) { return cell::Size(r); },
      [](uint8_t*, const uint8_t*) { return false; });
}

const uint8_t* CellStore::LastRecord() const {
  const RowBlock* b = chain_.tail();
  if (b == nullptr || b->used == 0) return nullptr;
  const uint8_t* last = b->data;
  for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) last = b->data + off;
  return last;
}

void CellStore::LastUsed(uint16_t* minColumn, uint16_t* maxColumn, uint32_t* minRow,
                         uint32_t* maxRow) const {
  uint16_t lowColumn = 0;
  uint16_t highColumn = 0;
  uint32_t lowRow = 0;
  uint32_t highRow = 0;
  bool any = false;
  for (const RowBlock* b = chain_.head(); b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) {
      const uint8_t* r = b->data + off;
      uint16_t column = cell::Column(r);
      uint32_t row = cell::Row(r);
      if (!any) {
        lowColumn = highColumn = column;
        lowRow = row;
        any = true;
      }
      lowColumn = std::min(lowColumn, column);
      highColumn = std::max(highColumn, column);
      highRow = row;
    }
  }
  if (minColumn != nullptr) *minColumn = lowColumn;
  if (maxColumn != nullptr) *maxColumn = highColumn;
  if (minRow != nullptr) *minRow = lowRow;
  if (maxRow != nullptr) *maxRow = highRow;
}

uint16_t CellStore::MaxRowUsed() const {
  const uint8_t* last = LastRecord();
  return last != nullptr ? static_cast<uint16_t>(cell::Row(last)) : 0;
}

bool CellStore::CopyRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow,
                          uint32_t lastRow, CellStore& target, CellCursor* cursor) {
  if (chain_.head() == nullptr || firstRow > lastRow || firstRow >= kRowLimit) return true;
  CellCursor local;
  CellCursor* into = cursor != nullptr ? cursor : &local;
  Position pos = Locate(KeyOf(firstRow, firstColumn), nullptr);
  for (RowBlock* b = pos.block; b != nullptr; b = b->next, pos.offset = 0) {
    for (uint32_t off = pos.offset; off < b->used; off += cell::Size(b->data + off)) {
      const uint8_t* r = b->data + off;
      if (cell::Row(r) > lastRow) return true;
      uint16_t column = cell::Column(r);
      if (column < firstColumn || column > lastColumn) continue;
      if (!target.PutCell(r, into)) return false;
    }
  }
  return true;
}

void CellStore::Renumber(uint32_t firstRow, int32_t rowDelta, uint16_t firstColumn,
                         int32_t columnDelta) {
  InvalidateRowIndex();
  for (RowBlock* b = chain_.head(); b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) {
      uint8_t* r = b->data + off;
      if (rowDelta != 0 && cell::Row(r) >= firstRow) {
        cell::SetRow(r, static_cast<uint32_t>(static_cast<int64_t>(cell::Row(r)) + rowDelta));
      }
      if (columnDelta != 0 && cell::Column(r) >= firstColumn) {
        cell::SetColumn(r, static_cast<uint16_t>(cell::Column(r) + columnDelta));
      }
    }
  }
}

namespace {

// A reading position in a chain that is consumed front to back.
struct ChainReader {
  RowBlock* block;
  uint32_t offset;
  bool Done() const { return block == nullptr; }
  const uint8_t* Record() const { return block->data + offset; }
  // Steps past the current record; returns the block just finished, if any.
  RowBlock* Advance(uint32_t size) {
    offset += size;
    if (offset < block->used) return nullptr;
    RowBlock* finished = block;
    block = block->next;
    offset = 0;
    return finished;
  }
};

}  // namespace

bool CellStore::MergeFrom(CellStore& other) {
  if (other.chain_.head() == nullptr) return true;
  // A dry run of sizes alone finds how far the writer can run ahead of the blocks the readers
  // hand back, so that every block the merge needs is secured before anything changes.
  int64_t ahead = 0;
  {
    ChainReader mine{chain_.head(), 0};
    ChainReader theirs{other.chain_.head(), 0};
    uint32_t fill = kBlockPayload;
    int64_t written = 0;
    int64_t freed = 0;
    while (!mine.Done() || !theirs.Done()) {
      bool takeTheirs =
          mine.Done() || (!theirs.Done() && KeyOf(theirs.Record()) <= KeyOf(mine.Record()));
      if (takeTheirs && !mine.Done() && KeyOf(theirs.Record()) == KeyOf(mine.Record())) {
        freed += mine.Advance(cell::Size(mine.Record())) != nullptr;
      }
      ChainReader& from = takeTheirs ? theirs : mine;
      uint32_t size = cell::Size(from.Record());
      if (fill + size > kBlockPayload) {
        ++written;
        fill = 0;
      }
      fill += size;
      freed += from.Advance(size) != nullptr;
      ahead = std::max(ahead, written - freed);
    }
  }
  if (!pool_->Reserve(static_cast<uint32_t>(ahead) + 1)) return false;

  ChainReader mine{chain_.head(), 0};
  ChainReader theirs{other.chain_.head(), 0};
  BlockChain merged;
  while (!mine.Done() || !theirs.Done()) {
    bool takeTheirs =
        mine.Done() || (!theirs.Done() && KeyOf(theirs.Record()) <= KeyOf(mine.Record()));
    if (takeTheirs && !mine.Done() && KeyOf(theirs.Record()) == KeyOf(mine.Record())) {
      if (RowBlock* done = mine.Advance(cell::Size(mine.Record()))) pool_->Give(done, false);
    }
    ChainReader& from = takeTheirs ? theirs : mine;
    uint32_t size = cell::Size(from.Record());
    // The blocks are secured by the dry run.
    merged.AppendRecord(from.Record(), size, [this] { return pool_->Take(); });
    if (RowBlock* done = from.Advance(size)) pool_->Give(done, false);
  }
  // Both old chains went to the pool block by block as the readers left them.
  chain_ = std::move(merged);
  // Like a compaction, the sweep leaves no waste behind.
  chain_.ForgetWaste();
  DropRowIndex();
  other.chain_.Release();
  other.DropRowIndex();
  pool_->Trim(kFreeListKeep);
  return true;
}

bool CellStore::CanInsertRows(uint32_t firstRow, uint32_t lastRow) const {
  if (lastRow < firstRow) return true;
  const uint8_t* last = LastRecord();
  if (last == nullptr || cell::Row(last) < firstRow) return true;
  return static_cast<uint64_t>(cell::Row(last)) + (lastRow - firstRow + 1) <= kLastRow;
}

void CellStore::InsertRows(uint32_t firstRow, uint32_t lastRow) {
  if (lastRow < firstRow) return;
  Renumber(firstRow, static_cast<int32_t>(lastRow - firstRow + 1), 0, 0);
}

void CellStore::DeleteRow(uint32_t row) {
  DeleteRange(0, kLastColumn, row, row, nullptr, false);
  Renumber(row + 1, -1, 0, 0);
}

void CellStore::RemoveRows(const uint32_t* rows, size_t count) {
  if (count == 0) return;
  CellCursor cursor;
  for (size_t i = 0; i < count; ++i) {
    DeleteRange(0, kLastColumn, rows[i], rows[i], &cursor, false);
  }
  // Storage order is row order, so the count of removed rows below a record only grows.
  InvalidateRowIndex();
  const uint32_t* end = rows + count;
  const uint32_t* below = rows;
  for (RowBlock* b = chain_.head(); b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) {
      uint8_t* r = b->data + off;
      uint32_t row = cell::Row(r);
      while (below != end && *below < row) ++below;
      if (below != rows) cell::SetRow(r, row - static_cast<uint32_t>(below - rows));
    }
  }
}

void CellStore::InsertRowsBefore(const uint32_t* rows, size_t count) {
  if (count == 0) return;
  InvalidateRowIndex();
  const uint32_t* end = rows + count;
  const uint32_t* atOrBelow = rows;
  for (RowBlock* b = chain_.head(); b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) {
      uint8_t* r = b->data + off;
      uint32_t row = cell::Row(r);
      while (atOrBelow != end && *atOrBelow <= row) ++atOrBelow;
      if (atOrBelow != rows) cell::SetRow(r, row + static_cast<uint32_t>(atOrBelow - rows));
    }
  }
}

bool CellStore::LastRecordRow(uint32_t& row) const {
  const uint8_t* last = LastRecord();
  if (last == nullptr) return false;
  row = cell::Row(last);
  return true;
}

bool CellStore::CanInsertColumn(uint16_t column) const {
  for (const RowBlock* b = chain_.head(); b != nullptr; b = b->next) {
    for (uint32_t off = 0; off < b->used; off += cell::Size(b->data + off)) {
      uint16_t c = cell::Column(b->data + off);
      if (c >= column && c >= kLastColumn) return false;
    }
  }
  return true;
}

void CellStore::InsertColumn(uint16_t column) {
  Renumber(0, 0, column, 1);
}

void CellStore::DeleteColumn(uint16_t column) {
  DeleteRange(column, column, 0, kLastRow, nullptr, false);
  Renumber(0, 0, static_cast<uint16_t>(column + 1), -1);
}

void CellStore::Reset(bool freeBlocks) {
  pool_->GiveChain(chain_.Release(), freeBlocks);
  DropRowIndex();
}

RowBlock* CellStore::DetachChain(bool forget) {
  if (!forget) return chain_.head();
  DropRowIndex();
  return chain_.Release();
}

void CellStore::AdoptChain(RowBlock* head) {
  pool_->GiveChain(chain_.head(), false);
  chain_.Adopt(head);
  DropRowIndex();
}

}  // namespace kelpdex
