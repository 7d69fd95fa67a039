#include "search/record_sets.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "search/run_filters.h"
#include "search/search_keys.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class RecordSetsTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber)});
  }
  std::vector<uint32_t> Found() {
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + book.records.count());
  }
};

// Against a count by map: every record whose two fields repeat is found once, groups together.
TEST_F(RecordSetsTest, DuplicatesAreEveryMemberOfEveryGroupOfEqualRecords) {
  std::mt19937 random(3);
  const uint32_t rows = 2000;
  std::map<std::string, int> groups;
  std::vector<std::string> keyOf(rows);
  for (uint32_t r = 0; r < rows; ++r) {
    std::string key;
    if (random() % 5) {
      std::string a(1, static_cast<char>('a' + random() % 6));
      if (random() % 2) a[0] = static_cast<char>(a[0] - 'a' + 'A');  // case does not count
      PutText(r, 0, a);
      key += static_cast<char>(a[0] | 0x20);
    }
    key += '|';
    if (random() % 5) {
      int b = static_cast<int>(random() % 8);
      PutNumber(r, 1, b);
      key += std::to_string(b);
    }
    keyOf[r] = key;
    ++groups[key];
  }
  size_t expected = 0;
  for (auto& [key, n] : groups) expected += n >= 2 ? n : 0;
  ASSERT_TRUE(FindDuplicates(Table(), book.records, 0, 1));
  std::vector<uint32_t> found = Found();
  ASSERT_EQ(found.size(), expected);
  // Each group stands together: a key seen once does not come back after another.
  std::map<std::string, bool> closed;
  for (size_t i = 0; i < found.size(); ++i) {
    const std::string& key = keyOf[found[i]];
    EXPECT_GE(groups[key], 2) << key;
    if (i > 0 && keyOf[found[i - 1]] != key) {
      EXPECT_FALSE(closed[key]) << key;
      closed[keyOf[found[i - 1]]] = true;
    }
  }
  EXPECT_TRUE(book.records.Consistent(rows));
}

TEST_F(RecordSetsTest, ComplementTwiceGivesEveryFoundRecordBackInRowOrder) {
  for (uint32_t r = 0; r < 10; ++r) PutNumber(r, 1, r % 4);
  ASSERT_TRUE(SetFieldFilter(Table(), 1, "2:1"));
  ASSERT_TRUE(RunSearch(book));
  EXPECT_EQ(Found(), (std::vector<uint32_t>{1, 5, 9}));
  ASSERT_TRUE(FindComplement(Table(), book.records));
  EXPECT_EQ(Found(), (std::vector<uint32_t>{0, 2, 3, 4, 6, 7, 8}));
  // The filters went in the prologue.
  EXPECT_EQ(GetKeyFilterText(Table(), 0, 1), "");
  ASSERT_TRUE(FindComplement(Table(), book.records));
  EXPECT_EQ(Found(), (std::vector<uint32_t>{1, 5, 9}));
  ASSERT_TRUE(RemoveAllFilters(Table(), book.records));
  EXPECT_EQ(Found().size(), 10u);
  ASSERT_TRUE(FindComplement(Table(), book.records));
  EXPECT_TRUE(Found().empty());
  EXPECT_TRUE(book.records.Consistent(10));
}

TEST_F(RecordSetsTest, OneRecordHasNoDuplicatesAndEmptyRecordsAreAGroup) {
  PutText(0, 0, "x");
  ASSERT_TRUE(FindDuplicates(Table(), book.records, 0, 1));
  EXPECT_TRUE(Found().empty());
  PutText(3, 0, "y");  // rows 1 and 2 are empty
  ASSERT_TRUE(FindDuplicates(Table(), book.records, 0, 1));
  std::vector<uint32_t> found = Found();
  EXPECT_EQ(std::multiset<uint32_t>(found.begin(), found.end()), (std::multiset<uint32_t>{1, 2}));
}

}  // namespace
}  // namespace kelpdex
