// One 16-bit word per row of a worksheet (height, fixedHeight, and high bits no row operation
// owns), 4091 to a block in a chain that grows up to the last row asked for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "store/block_chain.h"
#include "store/row_block.h"

namespace kelpdex {

class RowWords {
 public:
  static constexpr uint32_t kWordsPerBlock = kBlockPayload / 2;  // 4091 row words
  static constexpr uint16_t kFixedHeight = 0x0001;
  // Bits of a row word that no row operation owns: clearing a row keeps them.
  static constexpr uint16_t kKeptBits = 0xE000;

  RowWords() = default;
  ~RowWords();
  RowWords(const RowWords&) = delete;
  RowWords& operator=(const RowWords&) = delete;

  // Sets height and fixedHeight of a row, keeping its high bits. Rows beyond the last are ignored.
  // False on out of memory.
  bool Set(uint32_t row, uint16_t height, bool fixed);
  // The row's word, growing the words up to it; nullptr for a row beyond the last or on out of
  // memory.
  uint16_t* Word(uint32_t row);
  // 0 for a row that has no word.
  uint16_t Value(uint32_t row) const;
  // Gives rows [first, first + count) the word `value`, growing the words; false on out of
  // memory.
  bool Fill(uint32_t first, uint32_t count, uint16_t value);
  // Makes every word lookup a table access until the next block is added; false on out of memory.
  bool BuildBlockTable();

  // The words move with their rows; the opened rows keep only their high bits. Should the words
  // fail to grow, InsertRows keeps the ones it has room for and drops the words pushed past them.
  void InsertRows(uint32_t firstRow, uint32_t lastRow);
  void DeleteRow(uint32_t row);
  // `rows` ascending and distinct, as for the style runs.
  void RemoveRows(const uint32_t* rows, size_t count);
  void InsertRowsBefore(const uint32_t* rows, size_t count);

  // Empties the words; blocks go to the spares unless `freeBlocks`.
  void Reset(bool freeBlocks);

  RowBlock* head() const { return chain_.head(); }
  uint32_t blockCount() const { return chain_.blockCount(); }
  uint32_t freeBlockCount() const { return pool_.count(); }
  uint32_t rowCount() const { return rowCount_; }
  bool blockTableValid() const { return blockTableValid_ != 0; }

 private:
  struct Position {
    RowBlock* block;
    uint32_t index;
  };

  bool Grow(uint32_t count);
  // Grows to `target` rows, or as far as the blocks there are allow; the row count reached.
  uint32_t GrowWithin(uint32_t target);
  Position Locate(uint32_t row) const;
  void Move(uint32_t to, uint32_t from, uint32_t count);
  void Mask(uint32_t first, uint32_t count);

  // The words fill their blocks by the row count, so the chain's waste count means nothing here.
  BlockChain chain_;
  BlockPool pool_;
  uint16_t** blockTable_ = nullptr;
  uint32_t blockTableCapacity_ = 0;
  uint8_t blockTableValid_ = 0;
  uint32_t rowCount_ = 0;
};

}  // namespace kelpdex
