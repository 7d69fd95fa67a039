// Reads the cells of a rectangle of a cell store in row-major order, visiting only the cells
// that exist, with one forward cursor: a row's cells outside the columns are jumped over.
#pragma once

#include <cstdint>
#include <cstring>

#include "store/cell_store.h"

namespace kelpdex {

class RangeCursor {
 public:
  RangeCursor() = default;
  RangeCursor(CellStore* store, uint32_t row1, uint32_t row2, uint16_t column1, uint16_t column2) {
    Open(store, row1, row2, column1, column2);
  }

  // Positions before the first cell of the rectangle; a null store has no cells.
  void Open(CellStore* store, uint32_t row1, uint32_t row2, uint16_t column1, uint16_t column2) {
    store_ = store;
    row1_ = row1;
    row2_ = row2;
    column1_ = column1;
    column2_ = column2;
    cursor_.Clear();
    started_ = false;
    current_ = nullptr;
  }

  // The next cell of the rectangle, or nullptr at its end.
  CellRecord* Next() {
    if (store_ == nullptr) return current_ = nullptr;
    CellRecord* r;
    if (!started_) {
      started_ = true;
      r = store_->GetCell(row1_, column1_, &cursor_);
      if (r == nullptr) r = store_->NextCell(cursor_);
    } else {
      r = store_->NextCell(cursor_);
    }
    while (r != nullptr) {
      uint32_t row = cell::Row(r);
      uint16_t column = cell::Column(r);
      if (row > row2_) {
        r = nullptr;
        break;
      }
      if (row >= row1_ && column >= column1_ && column <= column2_) break;
      if (column < column1_) {
        r = store_->GetCell(row, column1_, &cursor_);
        if (r == nullptr) r = store_->NextCell(cursor_);
      } else if (row + 1 > row2_) {
        r = nullptr;
      } else {
        r = store_->GetCell(row + 1, column1_, &cursor_);
        if (r == nullptr) r = store_->NextCell(cursor_);
      }
    }
    return current_ = r;
  }

  CellRecord* current() const { return current_; }
  // The current cell's position relative to the first corner, as (row << 16) | column; false
  // when there is none.
  bool Position(uint64_t& key) const {
    if (current_ == nullptr) return false;
    key = (uint64_t(cell::Row(current_) - row1_) << 16) | (cell::Column(current_) - column1_);
    return true;
  }
  uint32_t row1() const { return row1_; }
  uint16_t column1() const { return column1_; }

 private:
  CellStore* store_ = nullptr;
  uint32_t row1_ = 0;
  uint32_t row2_ = 0;
  uint16_t column1_ = 0;
  uint16_t column2_ = 0;
  CellCursor cursor_;
  bool started_ = false;
  CellRecord* current_ = nullptr;
};

// Copies the rest of a rectangle's cells into `target`, moved so that its first corner lands on
// (rowOffset, 0). False when `target` runs out of memory; the copying goes on regardless.
inline bool CopyRebased(RangeCursor& read, CellStore& target, CellCursor& write,
                        uint32_t rowOffset) {
  uint8_t record[kBlockPayload];
  bool ok = true;
  while (CellRecord* r = read.Next()) {
    uint32_t size = cell::Size(r);
    std::memcpy(record, cell::Bytes(r), size);
    cell::SetRow(record, cell::Row(r) - read.row1() + rowOffset);
    cell::SetColumn(record, static_cast<uint16_t>(cell::Column(r) - read.column1()));
    ok &= target.PutCell(record, &write);
  }
  return ok;
}

}  // namespace kelpdex
