#include "store/format_store.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "store/bytes.h"

namespace kelpdex {

namespace {

// A run record: u16 firstColumn, u16 lastColumn, u32 row, u16 styleId.
inline uint16_t FirstColumnOf(const uint8_t* r) {
  return LoadU16(r);
}
inline uint16_t LastColumnOf(const uint8_t* r) {
  return LoadU16(r + 2);
}
inline uint32_t RowOf(const uint8_t* r) {
  return LoadU32(r + 4);
}
inline uint16_t StyleOf(const uint8_t* r) {
  return LoadU16(r + 8);
}

inline StyleRun ReadRun(const uint8_t* r) {
  return StyleRun{FirstColumnOf(r), LastColumnOf(r), RowOf(r), StyleOf(r)};
}
inline void WriteRun(uint8_t* r, const StyleRun& run) {
  StoreU16(r, run.firstColumn);
  StoreU16(r + 2, run.lastColumn);
  StoreU32(r + 4, run.row);
  StoreU16(r + 8, run.styleId);
}

inline uint64_t KeyOf(uint32_t row, uint16_t column) {
  return (static_cast<uint64_t>(row) << 16) | column;
}
inline uint64_t KeyOf(const uint8_t* r) {
  return KeyOf(RowOf(r), FirstColumnOf(r));
}

// A run that `next` continues with no gap and the same style is joined to it.
inline bool Joins(const uint8_t* kept, const StyleRun& next) {
  return RowOf(kept) == next.row && StyleOf(kept) == next.styleId &&
         LastColumnOf(kept) + 1u == next.firstColumn;
}

}  // namespace

FormatStore::FormatStore() = default;

FormatStore::~FormatStore() {
  pool_.GiveChain(chain_.Release(), true);
}

// --- the chain of runs ---------------------------------------------------------------------------

void FormatStore::DropBlock(RowBlock* block, bool toHeap) {
  chain_.Remove(block);
  pool_.Give(block, toHeap);
}

FormatStore::Position FormatStore::Locate(uint64_t key) const {
  RowBlock* head = chain_.head();
  if (head == nullptr) return {nullptr, 0};
  // A key between two blocks lands at the end of the earlier one, which spreads inserts made in
  // order over both.
  RowBlock* tail = chain_.tail();
  RowBlock* b = KeyOf(tail->data) <= key ? tail : head;
  while (b->next != nullptr && KeyOf(b->next->data) <= key) b = b->next;
  // Records have one size, so the block can be searched by halving.
  uint32_t low = 0;
  uint32_t high = b->used / kRunSize;
  while (low < high) {
    uint32_t mid = (low + high) / 2;
    if (KeyOf(b->data + mid * kRunSize) < key) {
      low = mid + 1;
    } else {
      high = mid;
    }
  }
  return {b, low * kRunSize};
}

namespace {

// Moves a position at a block's end to the start of the next block; false at the chain's end.
bool Normalize(RowBlock*& block, uint32_t& offset) {
  if (block == nullptr) return false;
  while (offset >= block->used) {
    if (block->next == nullptr) return false;
    block = block->next;
    offset = 0;
  }
  return true;
}

}  // namespace

uint32_t FormatStore::SplitsIn(const RowBlock* block, uint32_t from, uint16_t firstColumn,
                               uint16_t lastColumn, uint32_t firstRow, uint32_t lastRow) const {
  uint32_t splits = 0;
  for (uint32_t off = from; off < block->used; off += kRunSize) {
    const uint8_t* r = block->data + off;
    uint32_t row = RowOf(r);
    if (row > lastRow) break;
    if (row >= firstRow && FirstColumnOf(r) < firstColumn && LastColumnOf(r) > lastColumn) {
      ++splits;
    }
  }
  return splits;
}

void FormatStore::InsertRecords(Position at, const uint8_t* records, uint32_t size) {
  RowBlock* b = at.block;
  uint32_t off = at.offset;
  if (b->used + size <= kRunCapacity) {
    std::memmove(b->data + off + size, b->data + off, b->used - off);
    std::memcpy(b->data + off, records, size);
    b->used = static_cast<uint16_t>(b->used + size);
  } else {
    // The caller has reserved the block, so this cannot fail.
    RowBlock* second = pool_.Take();
    chain_.LinkAfter(second, b);
    uint32_t tail = b->used - off;
    if (off < kSplitOffset) {
      std::memcpy(second->data, b->data + off, tail);
      second->used = static_cast<uint16_t>(tail);
      std::memcpy(b->data + off, records, size);
      b->used = static_cast<uint16_t>(off + size);
    } else {
      std::memcpy(second->data, records, size);
      std::memcpy(second->data + size, b->data + off, tail);
      second->used = static_cast<uint16_t>(size + tail);
      b->used = static_cast<uint16_t>(off);
    }
  }
  chain_.CountFilled(size);
}

void FormatStore::DeleteRecords(Position at, uint32_t count) {
  while (count > 0 && Normalize(at.block, at.offset)) {
    RowBlock* b = at.block;
    uint32_t oldUsed = b->used;
    uint32_t n = std::min(count, (oldUsed - at.offset) / kRunSize);
    uint32_t bytes = n * kRunSize;
    count -= n;
    if (bytes == oldUsed) {
      at = {b->next, 0};
      DropBlock(b, false);
      continue;
    }
    std::memmove(b->data + at.offset, b->data + at.offset + bytes, oldUsed - at.offset - bytes);
    b->used = static_cast<uint16_t>(oldUsed - bytes);
    chain_.CountFreed(bytes);
  }
}

bool FormatStore::ApplyStyleRun(const StyleRun& run) {
  if (run.row >= kRowLimit || run.firstColumn > kLastColumn || run.firstColumn > run.lastColumn) {
    return true;
  }
  const uint32_t row = run.row;
  const uint16_t first = run.firstColumn;
  const uint16_t last = std::min(run.lastColumn, kLastColumn);
  StyleRun fresh{first, last, row, run.styleId};

  if (chain_.head() == nullptr) {
    RowBlock* block = pool_.Take();
    if (block == nullptr) return false;
    WriteRun(block->data, fresh);
    block->used = kRunSize;
    chain_.Append(block);
    return true;
  }

  // The runs of the row that overlap or touch the new one lie together in storage, starting
  // with the run before the new one's place if that reaches it.
  Position start = Locate(KeyOf(row, first));
  Position before = start;
  if (before.offset >= kRunSize) {
    before.offset -= kRunSize;
  } else if (before.block->prev != nullptr) {
    before = {before.block->prev, before.block->prev->used - kRunSize};
  } else {
    before.block = nullptr;
  }
  if (before.block != nullptr) {
    const uint8_t* r = before.block->data + before.offset;
    if (RowOf(r) == row && LastColumnOf(r) + 1u >= first) start = before;
  }
  uint32_t hits = 0;
  StyleRun firstHit;
  StyleRun lastHit;
  Position afterHits = start;
  for (Position p = start; Normalize(p.block, p.offset); p.offset += kRunSize) {
    const uint8_t* r = p.block->data + p.offset;
    if (RowOf(r) != row || FirstColumnOf(r) > last + 1u) break;
    if (hits++ == 0) firstHit = ReadRun(r);
    lastHit = ReadRun(r);
    afterHits = {p.block, p.offset + kRunSize};
  }

  // What replaces them: the new run, widened over touching or covered runs of its style, with
  // the uncovered ends of other styles on either side.
  StyleRun replacement[3];
  uint32_t count = 0;
  bool rightEnd = false;
  StyleRun right;
  if (hits > 0 && firstHit.firstColumn < first) {
    if (firstHit.styleId == fresh.styleId) {
      fresh.firstColumn = firstHit.firstColumn;
    } else {
      replacement[count++] =
          StyleRun{firstHit.firstColumn, static_cast<uint16_t>(first - 1), row, firstHit.styleId};
    }
  }
  if (hits > 0 && lastHit.lastColumn > last) {
    if (lastHit.styleId == fresh.styleId) {
      fresh.lastColumn = lastHit.lastColumn;
    } else {
      right = StyleRun{static_cast<uint16_t>(last + 1), lastHit.lastColumn, row, lastHit.styleId};
      rightEnd = true;
    }
  }
  replacement[count++] = fresh;
  if (rightEnd) replacement[count++] = right;

  Position insertAt = hits == 0 ? start : afterHits;
  // A split needs one block at most; securing it first keeps a failure from changing anything.
  if (count > hits && insertAt.block->used + (count - hits) * kRunSize > kRunCapacity &&
      !pool_.Reserve(1)) {
    return false;
  }

  Position write = start;
  uint32_t overwritten = std::min(hits, count);
  for (uint32_t i = 0; i < overwritten; ++i, write.offset += kRunSize) {
    Normalize(write.block, write.offset);
    WriteRun(write.block->data + write.offset, replacement[i]);
  }
  if (count > hits) {
    uint8_t records[3 * kRunSize];
    for (uint32_t i = hits; i < count; ++i)
      WriteRun(records + (i - hits) * kRunSize, replacement[i]);
    InsertRecords(insertAt, records, (count - hits) * kRunSize);
  } else {
    DeleteRecords(write, hits - count);
  }
  MaybeCompact();
  return true;
}

bool FormatStore::ClearStyleRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow,
                                  uint32_t lastRow, bool freeBlocks) {
  if (chain_.head() == nullptr || firstRow > lastRow || firstColumn > lastColumn ||
      firstRow >= kRowLimit || firstColumn > kLastColumn) {
    return true;
  }
  lastRow = std::min(lastRow, kLastRow);
  lastColumn = std::min(lastColumn, kLastColumn);
  Position start = Locate(KeyOf(firstRow, 0));

  // Only a run cut in two adds a record. Count the blocks that could overflow by it and secure
  // one spare block for each before anything changes.
  if (firstColumn > 0 && lastColumn < kLastColumn) {
    uint32_t overflowing = 0;
    uint32_t from = start.offset;
    for (const RowBlock* b = start.block; b != nullptr; b = b->next, from = 0) {
      if (from == 0 && RowOf(b->data) > lastRow) break;
      uint32_t splits = SplitsIn(b, from, firstColumn, lastColumn, firstRow, lastRow);
      if (b->used + splits * kRunSize > kRunCapacity) ++overflowing;
    }
    if (overflowing > 0 && !pool_.Reserve(overflowing)) return false;
  }

  // Room for a block's runs when every one of them is cut in two.
  uint8_t buffer[2 * kRunCapacity];
  RowBlock* b = start.block;
  uint32_t from = start.offset;
  while (b != nullptr) {
    if (from == 0 && RowOf(b->data) > lastRow) break;
    uint32_t used = b->used;
    std::memcpy(buffer, b->data, from);
    uint32_t out = from;
    bool changed = false;
    bool pastRange = false;
    for (uint32_t off = from; off < used; off += kRunSize) {
      const uint8_t* r = b->data + off;
      if (RowOf(r) > lastRow) {
        std::memcpy(buffer + out, r, used - off);
        out += used - off;
        pastRange = true;
        break;
      }
      StyleRun run = ReadRun(r);
      if (run.lastColumn < firstColumn || run.firstColumn > lastColumn) {
        std::memcpy(buffer + out, r, kRunSize);
        out += kRunSize;
        continue;
      }
      changed = true;
      if (run.firstColumn < firstColumn) {
        WriteRun(buffer + out, StyleRun{run.firstColumn, static_cast<uint16_t>(firstColumn - 1),
                                        run.row, run.styleId});
        out += kRunSize;
      }
      if (run.lastColumn > lastColumn) {
        WriteRun(buffer + out, StyleRun{static_cast<uint16_t>(lastColumn + 1), run.lastColumn,
                                        run.row, run.styleId});
        out += kRunSize;
      }
    }
    RowBlock* next = b->next;
    if (changed && out == 0) {
      DropBlock(b, freeBlocks);
    } else if (changed) {
      uint32_t keep = std::min(out, kRunCapacity);
      std::memcpy(b->data, buffer, keep);
      b->used = static_cast<uint16_t>(keep);
      if (keep <= used) {
        chain_.CountFreed(used - keep);
      } else {
        chain_.CountFilled(keep - used);
      }
      uint32_t overflow = out - keep;
      if (overflow > 0) {
        // The overflow is finished runs, which pass through the next block's turn unchanged; it
        // goes there only if that block cannot overflow in turn.
        if (next != nullptr &&
            next->used + overflow +
                    SplitsIn(next, 0, firstColumn, lastColumn, firstRow, lastRow) * kRunSize <=
                kRunCapacity) {
          std::memmove(next->data + overflow, next->data, next->used);
          std::memcpy(next->data, buffer + keep, overflow);
          next->used = static_cast<uint16_t>(next->used + overflow);
          chain_.CountFilled(overflow);
        } else {
          RowBlock* extra = pool_.Take();  // reserved above
          std::memcpy(extra->data, buffer + keep, overflow);
          extra->used = static_cast<uint16_t>(overflow);
          chain_.LinkAfter(extra, b);
        }
      }
    }
    if (pastRange) break;
    b = next;
    from = 0;
  }
  MaybeCompact();
  return true;
}

uint16_t FormatStore::StyleAt(uint32_t row, uint16_t column) const {
  if (row >= kRowLimit || column > kLastColumn) return 0;
  if (chain_.head() != nullptr) {
    uint64_t key = KeyOf(row, column);
    // Locate stops in the block of the last run that starts at or before the cell: only that
    // run can cover it.
    Position p = Locate(key);
    const uint8_t* d = p.block->data;
    if (p.offset < p.block->used && KeyOf(d + p.offset) == key) return StyleOf(d + p.offset);
    if (p.offset > 0) {
      const uint8_t* r = d + p.offset - kRunSize;
      if (RowOf(r) == row && LastColumnOf(r) >= column) return StyleOf(r);
    }
  }
  return ColumnStyle(column);
}

bool FormatStore::NextRun(RunCursor& cursor, StyleRun& run) const {
  RowBlock* b = cursor.block;
  uint32_t off = cursor.offset;
  if (b == nullptr) {
    b = chain_.head();
    off = 0;
    if (b == nullptr) return false;
  }
  if (!Normalize(b, off)) {
    cursor.block = b;
    cursor.offset = b->used;
    return false;
  }
  run = ReadRun(b->data + off);
  cursor.block = b;
  cursor.offset = static_cast<uint16_t>(off + kRunSize);
  return true;
}

template <typename Map>
void FormatStore::RewriteRuns(uint32_t fromRow, Map map) {
  if (chain_.head() == nullptr) return;
  Position start = Locate(KeyOf(fromRow, 0));
  uint8_t* lastKept = nullptr;
  RowBlock* b = start.block;
  uint32_t from = start.offset;
  while (b != nullptr) {
    uint32_t used = b->used;
    uint32_t write = from;
    for (uint32_t off = from; off < used; off += kRunSize) {
      StyleRun run = ReadRun(b->data + off);
      if (!map(run)) continue;
      // Deleting a column can bring two runs of one style together.
      if (lastKept != nullptr && Joins(lastKept, run)) {
        StoreU16(lastKept + 2, run.lastColumn);
        continue;
      }
      lastKept = b->data + write;
      WriteRun(lastKept, run);
      write += kRunSize;
    }
    RowBlock* next = b->next;
    if (write == 0) {
      DropBlock(b, false);
    } else if (write < used) {
      chain_.CountFreed(used - write);
      b->used = static_cast<uint16_t>(write);
    }
    b = next;
    from = 0;
  }
  MaybeCompact();
}

void FormatStore::MapStyles(const uint16_t* map, uint16_t count) {
  auto mapped = [&](uint16_t id) { return id < count ? map[id] : uint16_t{0}; };
  for (ColumnFormat& column : columns_) column.SetStyleId(mapped(column.StyleId()));
  RewriteRuns(0, [&](StyleRun& run) {
    run.styleId = mapped(run.styleId);
    return true;
  });
}

void FormatStore::MaybeCompact() {
  if (chain_.WantsCompaction()) Compact();
}

void FormatStore::Compact() {
  // Runs that a rewrite left touching, with one style, become one.
  chain_.Compact(
      pool_, kFreeListKeep, kRunCapacity, [](const uint8_t*) { return kRunSize; },
      [](uint8_t* kept, const uint8_t* r) {
        if (!Joins(kept, ReadRun(r))) return false;
        StoreU16(kept + 2, LastColumnOf(r));
        return true;
      });
}

// --- rows and columns ----------------------------------------------------------------------------

void FormatStore::InsertRows(uint32_t firstRow, uint32_t lastRow) {
  if (lastRow < firstRow || firstRow >= kRowLimit) return;
  lastRow = std::min(lastRow, kLastRow);
  const uint32_t count = lastRow - firstRow + 1;
  RewriteRuns(firstRow, [&](StyleRun& run) {
    if (run.row < firstRow) return true;
    if (run.row >= kRowLimit - count) return false;
    run.row += count;
    return true;
  });
  rowWords_.InsertRows(firstRow, lastRow);
}

void FormatStore::RemoveRows(const uint32_t* rows, size_t count) {
  if (count == 0) return;
  const uint32_t* end = rows + count;
  RewriteRuns(rows[0], [&](StyleRun& run) {
    const uint32_t* at = std::lower_bound(rows, end, run.row);
    if (at != end && *at == run.row) return false;
    run.row -= static_cast<uint32_t>(at - rows);
    return true;
  });
  rowWords_.RemoveRows(rows, count);
}

void FormatStore::InsertRowsBefore(const uint32_t* rows, size_t count) {
  if (count == 0) return;
  const uint32_t* end = rows + count;
  RewriteRuns(rows[0], [&](StyleRun& run) {
    uint32_t shift = static_cast<uint32_t>(std::upper_bound(rows, end, run.row) - rows);
    if (run.row >= kRowLimit - shift) return false;
    run.row += shift;
    return true;
  });
  rowWords_.InsertRowsBefore(rows, count);
}

void FormatStore::DeleteRow(uint32_t row) {
  if (row >= kRowLimit) return;
  RewriteRuns(row, [&](StyleRun& run) {
    if (run.row == row) return false;
    if (run.row > row) --run.row;
    return true;
  });
  rowWords_.DeleteRow(row);
}

void FormatStore::InsertColumn(uint16_t column) {
  if (column > kLastColumn) return;
  RewriteRuns(0, [&](StyleRun& run) {
    if (run.firstColumn >= kLastColumn) return false;
    if (run.lastColumn >= kLastColumn) run.lastColumn = kLastColumn - 1;
    if (run.firstColumn >= column) ++run.firstColumn;
    if (run.lastColumn >= column) ++run.lastColumn;
    return true;
  });
  std::copy_backward(columns_ + column, columns_ + kLastColumn, columns_ + kColumnLimit);
  // A new column starts with the default width and style, as inserted rows do.
  columns_[column] = ColumnFormat();
}

void FormatStore::DeleteColumn(uint16_t column) {
  if (column > kLastColumn) return;
  // Runs are narrowed in place rather than cut and shifted, so a run across the column stays
  // one run.
  RewriteRuns(0, [&](StyleRun& run) {
    if (run.firstColumn == column && run.lastColumn == column) return false;
    if (run.firstColumn > column) --run.firstColumn;
    if (run.lastColumn >= column) --run.lastColumn;
    return true;
  });
  std::copy(columns_ + column + 1, columns_ + kColumnLimit, columns_ + column);
  columns_[kLastColumn] = ColumnFormat();
}

void FormatStore::AdoptRunChain(RowBlock* head) {
  pool_.GiveChain(chain_.head(), false);
  chain_.Adopt(head);
}

void FormatStore::Reset(bool freeBlocks) {
  pool_.GiveChain(chain_.Release(), freeBlocks);
  rowWords_.Reset(freeBlocks);
  std::fill(columns_, columns_ + kColumnLimit, ColumnFormat());
}

}  // namespace kelpdex
