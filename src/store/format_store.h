// The formatting of one worksheet, kept beside its cells: style runs (a style over a stretch of
// columns in one row) in a chain of 8 KB blocks, one format entry per column, and one word per
// row for heights.
#pragma once

#include <cstdint>

#include "store/block_chain.h"
#include "store/cell_record.h"
#include "store/row_block.h"
#include "store/row_words.h"

namespace kelpdex {

struct StyleRun {
  uint16_t firstColumn = 0;
  uint16_t lastColumn = 0;
  uint32_t row = 0;
  uint16_t styleId = 0;
};

// A position for NextRun; a null block means from the start. Valid until the next change to the
// runs.
struct RunCursor {
  RowBlock* block = nullptr;
  uint16_t offset = 0;

  void Clear() {
    block = nullptr;
    offset = 0;
  }
};

// word 0: bit 0 fixedWidth, bits 1..12 width; word 1: bits 0..11 styleId; word 2: bits 0..11
// autoRowHeight, the height that column's content asks for.
struct ColumnFormat {
  uint16_t words[3] = {};

  bool FixedWidth() const { return (words[0] & 1) != 0; }
  uint16_t Width() const { return (words[0] >> 1) & 0xFFF; }
  uint16_t StyleId() const { return words[1] & 0xFFF; }
  uint16_t AutoRowHeight() const { return words[2] & 0xFFF; }
  void SetWidth(uint16_t width, bool fixed) {
    words[0] =
        static_cast<uint16_t>((words[0] & 0xE000) | ((width & 0xFFF) << 1) | (fixed ? 1 : 0));
  }
  void SetStyleId(uint16_t styleId) {
    words[1] = static_cast<uint16_t>((words[1] & 0xF000) | (styleId & 0xFFF));
  }
  void SetAutoRowHeight(uint16_t height) {
    words[2] = static_cast<uint16_t>((words[2] & 0xF000) | (height & 0xFFF));
  }
};

class FormatStore {
 public:
  static constexpr uint32_t kRunSize = 10;
  // 818 runs; the last two bytes of the payload stay unused.
  static constexpr uint32_t kRunCapacity = 8180;
  static constexpr uint32_t kFreeListKeep = 64;

  FormatStore();
  ~FormatStore();
  FormatStore(const FormatStore&) = delete;
  FormatStore& operator=(const FormatStore&) = delete;

  // Gives the run's cells its style. The new run wins over any runs it overlaps, and joins
  // touching runs of the same row and style, so runs never overlap. A row beyond the last or an
  // empty column range is ignored (true); a lastColumn beyond the last column is cut. False on out
  // of memory, with the runs unchanged.
  bool ApplyStyleRun(const StyleRun& run);
  // Cuts runs so that none covers the rectangle; a run sticking out on both sides becomes two.
  // Emptied blocks go to the heap with `freeBlocks`, else to the free list. False only on out of
  // memory, with the runs unchanged.
  bool ClearStyleRange(uint16_t firstColumn, uint16_t lastColumn, uint32_t firstRow,
                       uint32_t lastRow, bool freeBlocks = false);
  // The style of the run covering the cell, else the column's style.
  uint16_t StyleAt(uint32_t row, uint16_t column) const;
  // The next run in order (row, then firstColumn); false at the end.
  bool NextRun(RunCursor& cursor, StyleRun& run) const;

  ColumnFormat& Column(uint16_t column) { return columns_[column]; }
  const ColumnFormat& Column(uint16_t column) const { return columns_[column]; }
  uint16_t ColumnStyle(uint16_t column) const {
    return column < kColumnLimit ? columns_[column].StyleId() : 0;
  }
  void SetColumnStyle(uint16_t column, uint16_t styleId) {
    if (column < kColumnLimit) columns_[column].SetStyleId(styleId);
  }

  // The row words; row changes of the store move them with the runs.
  RowWords& rowWords() { return rowWords_; }
  const RowWords& rowWords() const { return rowWords_; }

  // Row and column changes. Runs and row words move with their rows; runs and column entries with
  // their columns. Formats pushed off the sheet are dropped. Should the row words fail to grow,
  // InsertRows keeps the ones it has room for and drops the words pushed past them.
  void InsertRows(uint32_t firstRow, uint32_t lastRow);
  void DeleteRow(uint32_t row);
  // Several rows at once, `rows` ascending and distinct: removal closes the gaps, insertion puts
  // one empty row before each listed row (counted in the numbering before the call).
  void RemoveRows(const uint32_t* rows, size_t count);
  void InsertRowsBefore(const uint32_t* rows, size_t count);
  // A run spanning the column widens; the new column's entry starts cleared.
  void InsertColumn(uint16_t column);
  void DeleteColumn(uint16_t column);

  // Moves every run and column entry from style id `i` to `map[i]`, as when the styles come from
  // another workbook's table; an id at or beyond `count` becomes the default style 0.
  void MapStyles(const uint16_t* map, uint16_t count);

  // Empties runs, row words and columns; blocks go to the free lists unless `freeBlocks`.
  void Reset(bool freeBlocks);

  // Loading: blocks of runs read from a file, linked through `next` in order, become the store's
  // runs; the present ones go to the spares. The caller has checked their contents.
  RowBlock* TakeSpareBlock() { return pool_.Take(); }
  bool ReserveSpareBlocks(uint32_t count) { return pool_.ReserveMany(count); }
  void AdoptRunChain(RowBlock* head);
  RowBlock* head() const { return chain_.head(); }
  RowBlock* freeList() const { return pool_.list(); }
  uint32_t blockCount() const { return chain_.blockCount(); }
  uint32_t freeBlockCount() const { return pool_.count(); }
  uint32_t freeBytes() const { return chain_.freeBytes(); }

 private:
  struct Position {
    RowBlock* block;
    uint32_t offset;
  };
  void DropBlock(RowBlock* block, bool toHeap);
  Position Locate(uint64_t key) const;
  uint32_t SplitsIn(const RowBlock* block, uint32_t from, uint16_t firstColumn, uint16_t lastColumn,
                    uint32_t firstRow, uint32_t lastRow) const;
  void InsertRecords(Position at, const uint8_t* records, uint32_t size);
  void DeleteRecords(Position at, uint32_t count);
  template <typename Map>
  void RewriteRuns(uint32_t fromRow, Map map);
  void MaybeCompact();
  void Compact();

  // The chain of runs; its tail lets runs added in order (as loaders do) skip the walk from the
  // head.
  BlockChain chain_;
  BlockPool pool_;

  ColumnFormat columns_[kColumnLimit];

  RowWords rowWords_;
};

}  // namespace kelpdex
