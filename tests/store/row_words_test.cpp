#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "store/cell_record.h"
#include "store/row_words.h"

namespace kelpdex {
namespace {

constexpr uint32_t kPerBlock = RowWords::kWordsPerBlock;

// Rows of three blocks and a bit, each word telling its row apart, some with high bits.
void FillDistinct(RowWords& words, uint32_t rows) {
  for (uint32_t row = 0; row < rows; ++row) {
    if (row % 5 == 0) *words.Word(row) = 0x6000;
    ASSERT_TRUE(words.Set(row, static_cast<uint16_t>(row % 4000), row % 3 == 0));
  }
}

std::vector<uint16_t> Values(const RowWords& words) {
  std::vector<uint16_t> values;
  for (uint32_t row = 0; row < words.rowCount(); ++row) values.push_back(words.Value(row));
  return values;
}

// A batch of removals or insertions lands every word where single-row changes would, also where
// the stretches between the listed rows cross block boundaries.
TEST(RowWords, BatchesMatchSingleRowChangesAcrossBlocks) {
  std::mt19937 rng(4091);
  const uint32_t rows = 3 * kPerBlock + 500;
  for (int round = 0; round < 8; ++round) {
    std::vector<uint32_t> listed;
    for (uint32_t row = 0; row < rows + 40; ++row) {
      // Dense near the block edges, where pieces of a move change blocks.
      uint32_t edge = row % kPerBlock;
      if (rng() % (edge < 8 || edge > kPerBlock - 8 ? 3 : 400) == 0) listed.push_back(row);
    }
    RowWords batch;
    RowWords single;
    FillDistinct(batch, rows);
    FillDistinct(single, rows);
    if (round % 2 == 0) {
      batch.RemoveRows(listed.data(), listed.size());
      for (size_t i = listed.size(); i-- > 0;) single.DeleteRow(listed[i]);
    } else {
      batch.InsertRowsBefore(listed.data(), listed.size());
      // Row i of the list has i rows opened before it by then.
      for (size_t i = 0; i < listed.size(); ++i) {
        uint32_t at = listed[i] + static_cast<uint32_t>(i);
        single.InsertRows(at, at);
      }
    }
    // A batch may grow the words further than single changes would; missing words read as 0.
    // Which high bits, owned by no row, end up in an opened row or in the rows a removal vacates
    // at the end differs between the two ways, so in those rows only the owned bits count.
    std::vector<bool> loose(rows + listed.size() + 50, false);
    if (round % 2 == 0) {
      uint32_t vacated = rows;
      for (uint32_t row : listed) vacated -= row < rows;
      for (uint32_t row = vacated; row < rows; ++row) loose[row] = true;
    } else {
      for (size_t i = 0; i < listed.size(); ++i) loose[listed[i] + i] = true;
    }
    uint32_t span = static_cast<uint32_t>(loose.size());
    for (uint32_t row = 0; row < span; ++row) {
      uint16_t mask = loose[row] ? 0x1FFF : 0xFFFF;
      ASSERT_EQ(batch.Value(row) & mask, single.Value(row) & mask)
          << "round " << round << " row " << row;
    }
  }
}

TEST(RowWords, InsertingKeepsTheWordsThereIsRoomForWhenGrowthFails) {
  RowWords words;
  FillDistinct(words, kPerBlock);  // exactly one full block
  std::vector<uint16_t> before = Values(words);
  SetBlockAllocationBudget(0);
  words.InsertRows(2, 11);
  SetBlockAllocationBudget(-1);
  ASSERT_EQ(words.rowCount(), kPerBlock);
  std::vector<uint16_t> after = Values(words);
  EXPECT_EQ(after[1], before[1]);
  for (uint32_t row = 2; row < 12; ++row) EXPECT_EQ(after[row], before[row] & 0xE000) << row;
  // Everything behind moved ten rows down; the last ten words fell off the end.
  for (uint32_t row = 12; row < kPerBlock; ++row) ASSERT_EQ(after[row], before[row - 10]) << row;

  // With memory the words grow instead.
  words.InsertRows(0, 0);
  EXPECT_EQ(words.rowCount(), kPerBlock + 1);
  EXPECT_EQ(words.Value(kPerBlock), before[kPerBlock - 11]);
}

TEST(RowWords, FillGrowsOnlyWithinTheSheetAndResetKeepsSpares) {
  RowWords words;
  EXPECT_EQ(words.Value(10), 0u);
  EXPECT_EQ(words.rowCount(), 0u);  // reading grows nothing
  EXPECT_FALSE(words.Fill(kLastRow, 2, 7));
  EXPECT_EQ(words.rowCount(), 0u);
  ASSERT_TRUE(words.Fill(kPerBlock - 3, 6, 0x1234));  // across a block boundary
  EXPECT_EQ(words.rowCount(), kPerBlock + 3);
  EXPECT_EQ(words.blockCount(), 2u);
  EXPECT_EQ(words.Value(kPerBlock - 4), 0u);
  for (uint32_t row = kPerBlock - 3; row < kPerBlock + 3; ++row)
    EXPECT_EQ(words.Value(row), 0x1234);
  ASSERT_TRUE(words.BuildBlockTable());
  EXPECT_EQ(words.Value(kPerBlock + 1), 0x1234);
  ASSERT_TRUE(words.Set(3 * kPerBlock, 1, false));  // a new block: lookups walk again
  EXPECT_FALSE(words.blockTableValid());
  EXPECT_EQ(words.Value(kPerBlock + 1), 0x1234);

  words.Reset(false);
  EXPECT_EQ(words.rowCount(), 0u);
  EXPECT_EQ(words.blockCount(), 0u);
  EXPECT_EQ(words.freeBlockCount(), 4u);
  EXPECT_EQ(words.Value(kPerBlock), 0u);
}

}  // namespace
}  // namespace kelpdex
