#include "store/row_words.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "store/cell_record.h"

namespace kelpdex {

namespace {

// Row words are plain in-memory words, never written out as they stand, so they are used in the
// machine's own order. The payload starts at an even offset on every build.
static_assert(offsetof(RowBlock, data) % alignof(uint16_t) == 0);
inline uint16_t* Words(RowBlock* block) {
  return reinterpret_cast<uint16_t*>(block->data);
}

constexpr uint32_t kMaxWordBlocks =
    (kRowLimit + RowWords::kWordsPerBlock - 1) / RowWords::kWordsPerBlock;

}  // namespace

RowWords::~RowWords() {
  pool_.GiveChain(chain_.Release(), true);
  std::free(blockTable_);
}

bool RowWords::Grow(uint32_t count) {
  if (count <= rowCount_) return true;
  uint32_t blocks = (count + kWordsPerBlock - 1) / kWordsPerBlock;
  // Every block is secured before any is linked, so a failure changes nothing.
  if (!pool_.Reserve(blocks - chain_.blockCount())) return false;
  while (chain_.blockCount() < blocks) {
    RowBlock* block = pool_.Take();
    std::memset(block->data, 0, kBlockPayload);
    if (chain_.tail() != nullptr) chain_.tail()->used = kBlockPayload;
    chain_.Append(block);
    blockTableValid_ = 0;
  }
  rowCount_ = count;
  chain_.tail()->used = static_cast<uint16_t>((count - (blocks - 1) * kWordsPerBlock) * 2);
  return true;
}

uint32_t RowWords::GrowWithin(uint32_t target) {
  if (!Grow(target)) {
    target = std::min(target, chain_.blockCount() * kWordsPerBlock);
    Grow(target);  // within the blocks there are: cannot fail
  }
  return target;
}

RowWords::Position RowWords::Locate(uint32_t row) const {
  uint32_t index = row / kWordsPerBlock;
  uint32_t blocks = chain_.blockCount();
  RowBlock* b;
  if (index >= blocks / 2) {
    b = chain_.tail();
    for (uint32_t i = blocks - 1; i > index; --i) b = b->prev;
  } else {
    b = chain_.head();
    for (uint32_t i = 0; i < index; ++i) b = b->next;
  }
  return {b, row % kWordsPerBlock};
}

uint16_t* RowWords::Word(uint32_t row) {
  if (row >= kRowLimit) return nullptr;
  if (row >= rowCount_ && !Grow(row + 1)) return nullptr;
  if (blockTableValid_) return blockTable_[row / kWordsPerBlock] + row % kWordsPerBlock;
  Position at = Locate(row);
  return Words(at.block) + at.index;
}

uint16_t RowWords::Value(uint32_t row) const {
  if (row >= rowCount_) return 0;
  if (blockTableValid_) return blockTable_[row / kWordsPerBlock][row % kWordsPerBlock];
  Position at = Locate(row);
  return Words(at.block)[at.index];
}

bool RowWords::Set(uint32_t row, uint16_t height, bool fixed) {
  if (row >= kRowLimit) return true;
  uint16_t bits = static_cast<uint16_t>(((height & 0xFFF) << 1) | (fixed ? kFixedHeight : 0));
  // A missing word reads as 0, so a plain row needs none.
  if (row >= rowCount_ && bits == 0) return true;
  uint16_t* word = Word(row);
  if (word == nullptr) return false;
  *word = static_cast<uint16_t>((*word & kKeptBits) | bits);
  return true;
}

bool RowWords::Fill(uint32_t first, uint32_t count, uint16_t value) {
  if (count == 0) return true;
  if (first >= kRowLimit || count > kRowLimit - first) return false;
  if (!Grow(first + count)) return false;
  Position p = Locate(first);
  for (; count > 0; --count) {
    Words(p.block)[p.index] = value;
    if (++p.index == kWordsPerBlock) p = {p.block->next, 0};
  }
  return true;
}

bool RowWords::BuildBlockTable() {
  uint32_t blocks = chain_.blockCount();
  if (blocks > blockTableCapacity_) {
    uint32_t capacity = std::min(std::max(blocks, blockTableCapacity_ * 2), kMaxWordBlocks);
    void* table = std::realloc(blockTable_, capacity * sizeof(uint16_t*));
    if (table == nullptr) return false;
    blockTable_ = static_cast<uint16_t**>(table);
    blockTableCapacity_ = capacity;
  }
  uint32_t i = 0;
  for (RowBlock* b = chain_.head(); b != nullptr; b = b->next) blockTable_[i++] = Words(b);
  blockTableValid_ = 1;
  return true;
}

void RowWords::Move(uint32_t to, uint32_t from, uint32_t count) {
  if (count == 0 || to == from) return;
  if (to > from) {
    // Backwards, block piece by block piece, so that overlapping ranges copy correctly.
    Position s = Locate(from + count - 1);
    Position d = Locate(to + count - 1);
    for (;;) {
      uint32_t n = std::min({count, s.index + 1, d.index + 1});
      std::memmove(Words(d.block) + d.index + 1 - n, Words(s.block) + s.index + 1 - n, n * 2);
      count -= n;
      if (count == 0) return;
      for (Position* p : {&s, &d}) {
        if (p->index >= n) {
          p->index -= n;
        } else {
          *p = {p->block->prev, kWordsPerBlock - 1};
        }
      }
    }
  }
  Position s = Locate(from);
  Position d = Locate(to);
  for (;;) {
    uint32_t n = std::min({count, kWordsPerBlock - s.index, kWordsPerBlock - d.index});
    std::memmove(Words(d.block) + d.index, Words(s.block) + s.index, n * 2);
    count -= n;
    if (count == 0) return;
    for (Position* p : {&s, &d}) {
      if (p->index + n < kWordsPerBlock) {
        p->index += n;
      } else {
        *p = {p->block->next, 0};
      }
    }
  }
}

void RowWords::Mask(uint32_t first, uint32_t count) {
  if (count == 0) return;
  Position p = Locate(first);
  for (; count > 0; --count) {
    uint16_t* word = Words(p.block) + p.index;
    *word &= kKeptBits;
    if (++p.index == kWordsPerBlock) p = {p.block->next, 0};
  }
}

void RowWords::InsertRows(uint32_t firstRow, uint32_t lastRow) {
  if (lastRow < firstRow || firstRow >= kRowLimit || rowCount_ <= firstRow) return;
  lastRow = std::min(lastRow, kLastRow);
  const uint32_t count = lastRow - firstRow + 1;
  uint32_t target = GrowWithin(std::min(rowCount_ + count, kRowLimit));
  if (target > lastRow + 1) Move(lastRow + 1, firstRow, target - lastRow - 1);
  Mask(firstRow, std::min(count, target - firstRow));
}

void RowWords::RemoveRows(const uint32_t* rows, size_t count) {
  // Each stretch between two removed rows moves down by the removals below it.
  uint32_t removed = 0;
  for (size_t i = 0; i < count && rows[i] < rowCount_; ++i) {
    uint32_t from = rows[i] + 1;
    uint32_t until = i + 1 < count ? std::min(rows[i + 1], rowCount_) : rowCount_;
    ++removed;
    if (until > from) Move(from - removed, from, until - from);
  }
  if (removed > 0) Mask(rowCount_ - removed, removed);
}

void RowWords::InsertRowsBefore(const uint32_t* rows, size_t count) {
  if (count == 0 || rowCount_ <= rows[0]) return;
  uint32_t target =
      GrowWithin(std::min<uint32_t>(rowCount_ + static_cast<uint32_t>(count), kRowLimit));
  // From the top down, each stretch moves up by the insertions at or below its start; the row
  // opened before each listed row is cleared.
  for (size_t i = count; i-- > 0;) {
    uint32_t from = rows[i];
    if (from >= target) continue;
    uint32_t until = i + 1 < count ? rows[i + 1] : target;
    uint32_t shift = static_cast<uint32_t>(i + 1);
    if (until > target - shift) until = target - shift;
    if (until > from) Move(from + shift, from, until - from);
    if (from + i < target) Mask(from + static_cast<uint32_t>(i), 1);
  }
}

void RowWords::DeleteRow(uint32_t row) {
  if (row >= rowCount_) return;
  Move(row, row + 1, rowCount_ - row - 1);
  Mask(rowCount_ - 1, 1);
}

void RowWords::Reset(bool freeBlocks) {
  pool_.GiveChain(chain_.Release(), freeBlocks);
  rowCount_ = 0;
  blockTableValid_ = 0;
}

}  // namespace kelpdex
