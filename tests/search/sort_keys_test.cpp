#include "search/sort_keys.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "search/sort_rows.h"
#include "support/scripted_recorder.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class SortKeysTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("A", FieldType::kText), Field("B", FieldType::kNumber),
               Field("C", FieldType::kText), Field("D", FieldType::kNumber)});
  }
  std::vector<uint16_t> Indexes() {
    std::vector<uint16_t> values;
    FieldSpec fieldRow;
    for (uint16_t f = 0; f < 4; ++f)
      values.push_back(ReadField(Table(), f, fieldRow) ? fieldRow.sortIndex : 999);
    return values;
  }
};

TEST_F(SortKeysTest, AscendingDescendingAndShiftRefinement) {
  ASSERT_EQ(SortByFields(Table(), 1, 2, false, false), err::kNone);
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{0, 20001, 20002, 0}));
  // Shift keeps the other keys and adds the selection behind them.
  ASSERT_EQ(SortByFields(Table(), 3, 3, true, true), err::kNone);
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{0, 20001, 20002, 10003}));
  // Without Shift the selection alone is the definition.
  ASSERT_EQ(SortByFields(Table(), 0, 0, true, false), err::kNone);
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{10001, 0, 0, 0}));
  SortKeys keys = CollectSortKeys(Table());
  ASSERT_EQ(keys.count, 1);
  EXPECT_FALSE(keys.flags[0]);
  EXPECT_TRUE(HasSortKeys(Table()));
}

TEST_F(SortKeysTest, TooManyKeysIsError43AndTheRetainedKeysStay) {
  ASSERT_EQ(SetSortKeys(Table(), {{0, false}}), err::kNone);
  // Hand-made definition: a key at place 98 and one at 99 make 99 retained... here two retained
  // keys at high places and a selection that would reach 100.
  FieldSpec fieldRow;
  ASSERT_TRUE(ReadField(Table(), 2, fieldRow));
  fieldRow.sortIndex = 20098;
  ASSERT_TRUE(WriteField(Table(), 2, fieldRow));
  std::vector<std::pair<uint16_t, bool>> many(kMaxSortKeys, {0, false});
  EXPECT_EQ(SetSortKeys(Table(), many), err::kTooManySortKeys);
  EXPECT_EQ(SortByFields(Table(), 1, 3, false, true), err::kNone);  // 1 retained + 3
  // 97 more retained keys are not at hand with four fields; the check is on the sum.
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{20001, 20002, 20003, 20004}));
}

TEST_F(SortKeysTest, NoSortingClosesThePlacesBehindTheRemovedKeys) {
  ASSERT_EQ(SetSortKeys(Table(), {{0, false}, {1, true}, {2, false}}), err::kNone);
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{20001, 10002, 20003, 0}));
  ASSERT_TRUE(RemoveSortKeys(Table(), 1, 1));
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{20001, 0, 20002, 0}));
  ASSERT_TRUE(RemoveSortKeys(Table(), 0, 3));
  EXPECT_FALSE(HasSortKeys(Table()));
}

TEST_F(SortKeysTest, TheDialogReadsBackWhatWasChosenWithGapsClosed) {
  SortOrderDialogModel dialog(Table());
  EXPECT_EQ(dialog.choices(), (std::vector<std::string>{"Select a field", "A", "B", "C", "D"}));
  dialog.row(0) = {3, false};  // D ascending
  dialog.row(2) = {1, true};   // B descending, row 2 left empty
  ASSERT_TRUE(dialog.Apply(Table()));
  // The dialog's Ascending stores the Descending command's base: required, so it reads back.
  EXPECT_EQ(Indexes(), (std::vector<uint16_t>{0, 20002, 0, 10001}));
  SortOrderDialogModel again(Table());
  EXPECT_EQ(again.row(0).field, 3);
  EXPECT_FALSE(again.row(0).descending);
  EXPECT_EQ(again.row(1).field, 1);
  EXPECT_TRUE(again.row(1).descending);
  EXPECT_EQ(again.row(2).field, SortOrderDialogModel::kNoField);
}

TEST_F(SortKeysTest, EachCommandTakesOneSnapshotFirst) {
  testing::ScriptedRecorder recorder;
  book.undo = &recorder;
  ASSERT_EQ(SortByFields(Table(), 0, 0, false, false), err::kNone);
  ASSERT_TRUE(RemoveSortKeys(Table(), 0, 0));
  ASSERT_TRUE(SortOrderDialogModel(Table()).Apply(Table()));
  EXPECT_EQ(recorder.calls, std::vector<std::string>(3, "field list"));
  recorder.refuse = true;
  EXPECT_NE(SortByFields(Table(), 0, 0, false, false), err::kNone);
  EXPECT_FALSE(HasSortKeys(Table()));
  book.undo = nullptr;
}

}  // namespace
}  // namespace kelpdex
