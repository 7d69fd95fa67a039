// The cells of one worksheet: packed records in a doubly linked chain of 8 KB blocks, sorted by
// row and then column. Inserting a cell moves bytes within one block at most; a full block splits.
#pragma once

#include <cstdint>

#include "store/block_chain.h"
#include "store/cell_record.h"
#include "store/row_block.h"

namespace kelpdex {

constexpr uint8_t kCursorFollow = 8;  // leave the cursor behind the record just found

// A caller-owned position in a chain, valid until the next write to the chain other than a write
// through this cursor. It also remembers the key of the record it stands behind, so that a write
// or lookup before that point restarts from the right place instead of breaking the order.
struct CellCursor {
  uint8_t flags = kCursorFollow;
  RowBlock* block = nullptr;  // nullptr: from the start
  uint16_t offset = 0;
  uint64_t key = 0;  // (row << 16) | column of the record before `offset`
  // Where that record begins when the cursor stands right behind it, so that asking for the
  // same cell again costs nothing; kNoRecord otherwise.
  static constexpr uint16_t kNoRecord = 0xFFFF;
  uint16_t found = kNoRecord;

  void Clear() {
    block = nullptr;
    offset = 0;
    key = 0;
    found = kNoRecord;
  }
};

class CellStore {
 public:
  static constexpr uint32_t kRowGroupShift = 10;  // the row index has one page per 1024 rows
  static constexpr uint32_t kRowGroups = kRowLimit >> kRowGroupShift;
  // Spare blocks kept after a compaction; the rest go back to the heap.
  static constexpr uint32_t kFreeListKeep = 64;

  // `sharedPool` lets several stores recycle one set of spare blocks; it must outlive them.
  explicit CellStore(BlockPool* sharedPool = nullptr);
  ~CellStore();
  CellStore(const CellStore&) = delete;
  CellStore& operator=(const CellStore&) = delete;

  // Writes a copy of a prepared record, replacing the cell at its row and column. A row beyond
  // the last is ignored and counts as success. False means out of memory, with the store as it
  // was (a replaced cell included) or, for a record larger than a block, nothing written.
  bool PutCell(const uint8_t* record, CellCursor* cursor = nullptr);
  CellRecord* GetCell(uint32_t row, uint16_t column, CellCursor* cursor = nullptr);
  // GetCell for random reads, through the row index (built for a row group on first use).
  // Over rows a successful BuildRowIndex covered, it only reads, so threads may share it.
  CellRecord* GetCellFast(uint32_t row, uint16_t column);
  // The cells of `row` in columns [0, columnCount) in one walk of the row, into `cells` indexed
  // by column (null where there is none): a whole record for GetCellFast's cost of one field.
  // The same rules for threads as GetCellFast.
  void GetRowFast(uint32_t row, uint16_t columnCount, CellRecord** cells);
  // The record at the cursor, in storage order; nullptr at the end. The iteration primitive of
  // every whole-sheet pass, so it lives in the header.
  CellRecord* NextCell(CellCursor& cursor) {
    RowBlock* b = cursor.block;
    uint32_t off = cursor.offset;
    if (b == nullptr) {
      b = chain_.head();
      off = 0;
      if (b == nullptr) return nullptr;
    }
    while (off >= b->used) {
      if (b->next == nullptr) {
        cursor.block = b;
        cursor.offset = b->used;
        return nullptr;
      }
      b = b->next;
      off = 0;
    }
    uint8_t* r = b->data + off;
    if (cursor.flags & kCursorFollow) {
      cursor.block = b;
      cursor.offset = static_cast<uint16_t>(off + cell::Size(r));
      cursor.key = (static_cast<uint64_t>(cell::Row(r)) << 16) | cell::Column(r);
      cursor.found = static_cast<uint16_t>(off);
    }
    return cell::At(r);
  }
  // Deletes the cells of a rectangle. Any cell of a healthy array formula takes the whole array
  // with it. Emptied blocks go to the heap with `freeBlocks`, else to the free list.
  void DeleteRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow, uint32_t lastRow,
                   CellCursor* cursor = nullptr, bool freeBlocks = false);
  // Bounds of all records; each pointer may be null. An empty store gives zeros.
  void LastUsed(uint16_t* minColumn, uint16_t* maxColumn, uint32_t* minRow, uint32_t* maxRow) const;
  uint16_t MaxRowUsed() const;
  // Copies the records of a rectangle into another store; false on out of memory.
  bool CopyRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow, uint32_t lastRow,
                 CellStore& target, CellCursor* cursor = nullptr);

  // Moves every record of `other` into this store in one sweep, replacing cells with the same
  // row and column; `other` is left empty. Costs one copy of both chains, where record-by-record
  // insertion would shift block tails once per record. False on out of memory with both stores
  // unchanged.
  bool MergeFrom(CellStore& other);

  // Row and column renumbering. The records keep their order, so no block is rewritten.
  bool CanInsertRows(uint32_t firstRow, uint32_t lastRow) const;
  void InsertRows(uint32_t firstRow, uint32_t lastRow);  // CanInsertRows must hold
  void DeleteRow(uint32_t row);
  // Several rows at once, `rows` ascending and distinct. RemoveRows deletes their cells and closes
  // the gaps in one renumbering pass; InsertRowsBefore opens an empty row before each listed row
  // (CanInsertRows(0, count - 1) must hold).
  void RemoveRows(const uint32_t* rows, size_t count);
  void InsertRowsBefore(const uint32_t* rows, size_t count);
  // The row of the last record, from the tail block alone; false for an empty store.
  bool LastRecordRow(uint32_t& row) const;
  bool CanInsertColumn(uint16_t column) const;
  void InsertColumn(uint16_t column);  // CanInsertColumn must hold
  void DeleteColumn(uint16_t column);

  // Empties the store; blocks go to the free list unless `freeBlocks`.
  void Reset(bool freeBlocks);
  // Hands out the chain; with `forget` the store no longer owns it.
  RowBlock* DetachChain(bool forget);
  // Takes a chain (which may be null), putting the present blocks on the free list.
  void AdoptChain(RowBlock* head);
  // A block for a chain being loaded, from the spares first; nullptr when memory is exhausted.
  RowBlock* TakeSpareBlock() { return pool_->Take(); }
  // Readies `count` spare blocks in one slab ahead of a load; false on out of memory.
  bool ReserveSpareBlocks(uint32_t count) { return pool_->ReserveMany(count); }

  // Marks every row-index page inexact, as before a batch of changes. Pages still serve as
  // starting hints for lookups.
  void InvalidateRowIndex();
  // Builds the row index for the groups covering [firstRow, lastRow]; false on out of memory.
  bool BuildRowIndex(uint32_t firstRow, uint32_t lastRow);

  RowBlock* head() const { return chain_.head(); }
  RowBlock* freeList() const { return pool_->list(); }
  uint32_t blockCount() const { return chain_.blockCount(); }
  uint32_t freeBlockCount() const { return pool_->count(); }
  uint32_t freeBytes() const { return chain_.freeBytes(); }

 private:
  struct RowIndexEntry {
    RowBlock* block;
    uint16_t offset;
  };
  struct Position {
    RowBlock* block;
    uint32_t offset;
  };

  Position Locate(uint64_t key, const CellCursor* cursor);
  // A live block at or near the first record of `row`, from the row index; nullptr if the index
  // has nothing for that part of the sheet.
  RowBlock* HintBlock(uint32_t row);
  void Compact();
  void MaybeCompact();
  void InvalidateFrom(uint32_t row, const RowBlock* lastTouched);
  // Blocks left the chain: no page may be used even as a hint.
  void DropRowIndex();
  void Renumber(uint32_t firstRow, int32_t rowDelta, uint16_t firstColumn, int32_t columnDelta);
  const uint8_t* LastRecord() const;

  BlockChain chain_;
  BlockPool ownPool_;
  BlockPool* pool_;
  // Bit 0: the page is exact (every entry is the first record of its row). Bit 1: every entry
  // is a live block of the chain at or before its row's records, which stays true across writes
  // because records only move forward into later blocks until a block is freed.
  static constexpr uint8_t kPageExact = 1;
  static constexpr uint8_t kPageHint = 2;
  // Chains shorter than this are walked; the index is not worth building for them.
  static constexpr uint32_t kIndexMinBlocks = 32;
  RowIndexEntry* rowIndexPages_[kRowGroups] = {};
  uint8_t rowIndexValid_[kRowGroups] = {};
  uint32_t validPageCount_ = 0;  // exact pages
  uint32_t hintPageCount_ = 0;
};

}  // namespace kelpdex
