#include "search/navigation.h"

#include <gtest/gtest.h>

#include "search/run_filters.h"
#include "search/sort_keys.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class NavigationTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber)});
    // Row: A, B.  0: x 1 | 1: - 1 | 2: - - | 3: x 1 | 4: y - | 5: x 1
    PutText(0, 0, "x");
    PutNumber(0, 1, 1);
    PutNumber(1, 1, 1);
    PutText(3, 0, "x");
    PutNumber(3, 1, 1);
    PutText(4, 0, "y");
    PutText(5, 0, "x");
    PutNumber(5, 1, 1);
    ASSERT_TRUE(RunSearch(book));
  }
  // Steps from `position` over fields A and B; the position reached, or -1 for a beep.
  long Step(StepKind kind, bool forward, uint32_t position) {
    GridSelection s{0, position, 1, position};
    if (!StepRecord(Data(), book.records, kind, forward, s)) return -1;
    EXPECT_EQ(s.firstField, 0);
    EXPECT_EQ(s.lastField, 1);
    return s.firstPosition;
  }
};

TEST_F(NavigationTest, EachStepFindsTheNearestQualifyingRecord) {
  EXPECT_EQ(Step(StepKind::kNonEmpty, true, 0), 3);
  EXPECT_EQ(Step(StepKind::kEmpty, true, 0), 2);  // both fields empty, not row 1
  EXPECT_EQ(Step(StepKind::kEmpty, true, 2), -1);
  EXPECT_EQ(Step(StepKind::kIdentical, true, 0), 3);
  EXPECT_EQ(Step(StepKind::kDifferent, true, 0), 2);  // every field different
  EXPECT_EQ(Step(StepKind::kIdentical, false, 5), 3);
  EXPECT_EQ(Step(StepKind::kIdentical, false, 0), -1);
  EXPECT_EQ(Step(StepKind::kNonEmpty, false, 5), 3);
}

// The previous forms of Non-Empty and Empty read the row numbered as the position, the others
// the record set's row.
TEST_F(NavigationTest, PreviousEmptyReadsStorageRowsByPosition) {
  ASSERT_EQ(SortByFields(Table(), 0, 0, true, false), err::kNone);  // A descending
  ASSERT_TRUE(RunSearch(book));
  // Positions now show rows 4 (y), then the x rows, then rows 1 and 2 without A.
  EXPECT_EQ(book.records[0], 4u);
  EXPECT_EQ(Step(StepKind::kEmpty, false, 5), 2);  // storage row 2 is empty
  // Through the set: wherever row 2 stands among the records without A.
  long at = book.records[4] == 2 ? 4 : 5;
  EXPECT_EQ(Step(StepKind::kEmpty, true, 0), at);
}

TEST(GoToTest, OnlyAWholeNumberWithTrailingBlanksIsTaken) {
  uint32_t n = 0;
  EXPECT_TRUE(ParseGoTo("42  ", n));
  EXPECT_EQ(n, 42u);
  EXPECT_TRUE(ParseGoTo(" +7", n));
  EXPECT_EQ(n, 7u);
  for (const char* bad : {"", " ", "3-7", "4x", "-1", "99999999999", "+"}) {
    EXPECT_FALSE(ParseGoTo(bad, n)) << bad;
  }
  RecordSet records;
  ASSERT_TRUE(records.BuildInOrder(5));
  GridSelection s{1, 0, 3, 2};
  EXPECT_FALSE(GoToRecord(records, 6, s));
  EXPECT_FALSE(GoToRecord(records, 0, s));
  ASSERT_TRUE(GoToRecord(records, 5, s));
  EXPECT_EQ(s.firstPosition, 4u);
  EXPECT_EQ(s.lastField, 1);
}

}  // namespace
}  // namespace kelpdex
