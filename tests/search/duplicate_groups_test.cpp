#include "search/duplicate_groups.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "search/record_sets.h"
#include "search/sort_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class DuplicateGroupsTest : public testing::SortTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber),
               Field("C", FieldType::kText)});
  }
};

// Random records with few distinct values, upper and lower case, -0 beside 0, empty cells and
// whole empty records, against a count by a map: the same rows, each group together in rising
// row order, the groups in the order of the comparison.
TEST_F(DuplicateGroupsTest, GroupsAreTheSortedWalksResult) {
  for (uint32_t seed = 1; seed <= 6; ++seed) {
    book.Clear();
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber),
               Field("C", FieldType::kText)});
    std::mt19937 random(seed);
    const uint32_t rows = 600 + seed * 300;
    std::vector<std::string> keyOf(rows);
    std::map<std::string, int> groups;
    for (uint32_t r = 0; r < rows; ++r) {
      std::string key;
      if (random() % 6) {
        std::string a = seed % 2 ? "ab" : "abcdefghij";
        a[random() % a.size()] = static_cast<char>('a' + random() % 3);
        std::string stored = a;
        if (random() % 2) stored[0] = static_cast<char>(stored[0] - 'a' + 'A');
        PutText(r, 0, stored);
        key += a;
      }
      key += '|';
      if (random() % 5) {
        double b = static_cast<double>(random() % 4);
        PutNumber(r, 1, b == 0 && random() % 2 ? -0.0 : b);
        key += std::to_string(b);
      }
      key += '|';
      if (random() % 3 == 0) {
        PutText(r, 2, "z");
        key += 'z';
      }
      keyOf[r] = key;
      ++groups[key];
    }
    SortKeys keys = Keys({{0, true}, {1, true}, {2, true}});
    std::vector<uint32_t> found(rows);
    uint32_t count = 0;
    ASSERT_TRUE(GroupDuplicates(Data(), keys, found.data(), rows, count)) << seed;
    found.resize(count);
    size_t expected = 0;
    for (auto& [key, n] : groups) expected += n >= 2 ? n : 0;
    ASSERT_EQ(count, expected) << seed;
    std::set<std::string> closed;
    for (size_t i = 0; i < found.size(); ++i) {
      ASSERT_GE(groups[keyOf[found[i]]], 2);
      if (i == 0) continue;
      int order = Compare(keys, found[i - 1], found[i]);
      if (keyOf[found[i - 1]] == keyOf[found[i]]) {
        EXPECT_EQ(order, 0);
        EXPECT_LT(found[i - 1], found[i]);
      } else {
        EXPECT_LT(order, 0) << seed << " at " << i;
        EXPECT_TRUE(closed.insert(keyOf[found[i - 1]]).second);
      }
    }
  }
}

// A field that holds the number 5 and the text "5" is left to the sort, which calls them equal.
TEST_F(DuplicateGroupsTest, NumbersBesideTextsGoToTheSort) {
  PutText(0, 0, "5");
  PutNumber(1, 0, 5);
  PutText(2, 0, "x");
  SortKeys keys = Keys({{0, true}});
  std::vector<uint32_t> rows(3, 7);
  uint32_t count = 0;
  EXPECT_FALSE(GroupDuplicates(Data(), keys, rows.data(), 3, count));
  EXPECT_EQ(rows, (std::vector<uint32_t>{7, 7, 7}));
  ASSERT_TRUE(FindDuplicates(Table(), book.records, 0, 0));
  std::vector<uint32_t> found(book.records.rows(), book.records.rows() + book.records.count());
  EXPECT_EQ(std::multiset<uint32_t>(found.begin(), found.end()), (std::multiset<uint32_t>{0, 1}));
}

// Cells past the row count belong to no record; records with no cells at all group together.
TEST_F(DuplicateGroupsTest, RowsPastTheCountAndRecordsWithoutCells) {
  PutText(1, 2, "q");
  PutText(4, 0, "only");
  PutText(9, 0, "only");  // past the count below
  SortKeys keys = Keys({{0, true}});
  std::vector<uint32_t> rows(6);
  uint32_t count = 0;
  ASSERT_TRUE(GroupDuplicates(Data(), keys, rows.data(), 6, count));
  rows.resize(count);
  EXPECT_EQ(rows, (std::vector<uint32_t>{0, 1, 2, 3, 5}));
}

}  // namespace
}  // namespace kelpdex
