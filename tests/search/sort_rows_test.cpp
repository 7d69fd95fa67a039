#include "search/sort_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "search/run_filters.h"
#include "search/sort_fixture.h"
#include "search/sort_keys.h"

namespace kelpdex {
namespace {

using testing::Field;

class SortRowsTest : public testing::SortTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber)});
  }
  std::vector<uint32_t> Sorted(const SortKeys& keys, uint32_t count) {
    std::vector<uint32_t> rows(count);
    for (uint32_t i = 0; i < count; ++i) rows[i] = i;
    SortRows(Data(), keys, rows.data(), count);
    return rows;
  }
  std::vector<std::string> Column(const std::vector<uint32_t>& rows, uint16_t column) {
    std::vector<std::string> shown;
    for (uint32_t row : rows) shown.push_back(At(row, column));
    return shown;
  }
};

TEST_F(SortRowsTest, MixedValuesFollowTheComparisonRulesInBothDirections) {
  PutNumber(0, 0, 3);
  PutText(1, 0, "12");
  PutNumber(2, 0, 0, 0x10);  // an error
  PutText(4, 0, " 2.5 ");
  PutNumber(5, 0, -1);
  // Row 3 has no cell: numbers and texts that read as numbers by value, errors first, the empty
  // record last.
  EXPECT_EQ(Column(Sorted(Keys({{0, true}}), 6), 0),
            (std::vector<std::string>{"#16", "-1", "' 2.5 '", "3", "'12'", "-"}));
  // Descending reverses all but the empty record, which errors now follow.
  EXPECT_EQ(Column(Sorted(Keys({{0, false}}), 6), 0),
            (std::vector<std::string>{"'12'", "3", "' 2.5 '", "-1", "-", "#16"}));
  // A text that is no number counts as empty beside numbers: behind them either way.
  PutText(1, 0, "abc");
  PutText(4, 0, "-");
  EXPECT_EQ(Column(Sorted(Keys({{0, true}}), 6), 0),
            (std::vector<std::string>{"#16", "-1", "3", "'-'", "'abc'", "-"}));
  EXPECT_EQ(Column(Sorted(Keys({{0, false}}), 6), 0),
            (std::vector<std::string>{"3", "-1", "'abc'", "'-'", "-", "#16"}));
}

TEST_F(SortRowsTest, TextsCompareByUpperCaseBytesAndTheFirstDifferenceDecides) {
  PutText(0, 0, "b");
  PutText(1, 0, "A");
  PutText(2, 0, "a");
  PutText(3, 0, "ab");
  PutText(4, 0, "\xe9");  // é after every ASCII letter
  for (uint32_t r = 0; r < 5; ++r) PutNumber(r, 1, r);
  // A byte that differs only in case decides nothing; the next one that differs does.
  PutText(5, 0, "xYz");
  PutText(6, 0, "xyA");
  EXPECT_GT(Compare(Keys({{0, true}}), 5, 6), 0);
  EXPECT_EQ(Compare(Keys({{0, true}}), 1, 2), 0);
  EXPECT_LT(Compare(Keys({{0, true}}), 2, 3), 0);
  EXPECT_GT(Compare(Keys({{0, true}}), 4, 0), 0);
  Data().cells.Reset(false);
  PutText(0, 0, "b");
  PutText(1, 0, "A");
  PutText(2, 0, "a");
  PutText(3, 0, "ab");
  PutText(4, 0, "\xe9");
  for (uint32_t r = 0; r < 5; ++r) PutNumber(r, 1, r);
  std::vector<uint32_t> rows = Sorted(Keys({{0, true}, {1, false}}), 5);
  EXPECT_EQ(Column(rows, 0), (std::vector<std::string>{"'a'", "'A'", "'ab'", "'b'", "'\xe9'"}));
  EXPECT_EQ(rows[0], 2u);  // the equal pair by the second key, descending
}

// Random tables against a reference: the result is a permutation and is ordered under the
// comparison, including long runs of empty records.
TEST_F(SortRowsTest, RandomTablesComeOutOrderedAndComplete) {
  std::mt19937 random(7);
  for (int round = 0; round < 13; ++round) {
    Data().cells.Reset(false);
    // The last round is large enough to be split between two threads.
    uint32_t count = round == 12 ? 90000 : 1 + random() % 3000;
    for (uint32_t r = 0; r < count; ++r) {
      if (random() % 3 == 0) continue;  // empty records in runs of chance
      if (random() % 2) {
        PutText(r, 0, std::string(1, static_cast<char>('a' + random() % 5)));
      } else {
        PutNumber(r, 0, random() % 7);
      }
      if (random() % 4) PutNumber(r, 1, random() % 4);
    }
    SortKeys keys = Keys({{1, round % 2 == 0}, {0, round % 3 == 0}});
    // Every other round sorts as without memory for the entries: cells looked up each time.
    SetSortEntryLimit(round % 2 ? 0 : UINT32_MAX);
    std::vector<uint32_t> rows = Sorted(keys, count);
    SetSortEntryLimit(UINT32_MAX);
    std::vector<uint32_t> all = rows;
    std::sort(all.begin(), all.end());
    for (uint32_t i = 0; i < count; ++i) ASSERT_EQ(all[i], i);
    for (uint32_t i = 1; i < count; ++i) {
      ASSERT_LE(Compare(keys, rows[i - 1], rows[i]), 0) << round << " at " << i;
    }
  }
}

TEST_F(SortRowsTest, TheSearchSortsTheFoundRecordsByTheStoredKeys) {
  for (uint32_t r = 0; r < 6; ++r) PutNumber(r, 1, (r * 5) % 6);
  ASSERT_EQ(SortByFields(Table(), 1, 1, true, false), err::kNone);
  ASSERT_TRUE(RunSearch(book));
  EXPECT_EQ(Column(std::vector<uint32_t>(book.records.rows(), book.records.rows() + 6), 1),
            (std::vector<std::string>{"5", "4", "3", "2", "1", "0"}));
  EXPECT_TRUE(book.records.Consistent(6));
  // One record, or no key, leaves the order alone.
  SortKeys none;
  uint32_t one = 4;
  SortRows(Data(), none, &one, 1);
  EXPECT_EQ(one, 4u);
}

}  // namespace
}  // namespace kelpdex
