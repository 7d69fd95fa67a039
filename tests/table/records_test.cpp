#include "table/records.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "core/strings.h"
#include "format/number_style.h"
#include "support/recording_prompter.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class RecordsTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText, "V:nobody"),
               Field("Qty", FieldType::kNumber, "V:1,5"),
               Field("Double", FieldType::kNumber, "f:=Qty*2"),
               Field("Stored", FieldType::kText, "F:x+1")});
    for (uint32_t r = 0; r < 5; ++r) {
      PutText(r, 0, "n" + std::to_string(r));
      PutNumber(r, 1, r);
    }
    ASSERT_TRUE(RefreshCurrentTable(book));
  }
  std::vector<uint32_t> Rows() {
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + book.records.count());
  }
  UndoContext Selection(uint16_t c1, uint32_t r1, uint16_t c2, uint32_t r2) {
    UndoContext s;
    s.firstColumn = c1;
    s.firstRecord = r1;
    s.lastColumn = c2;
    s.lastRecord = r2;
    return s;
  }
};

TEST_F(RecordsTest, FormulaMarkersAndTheCalculatedRule) {
  ASSERT_EQ(book.fieldDefaults.size(), 4u);
  EXPECT_TRUE(book.fieldDefaults[2].IsCalculated());  // "f:" counts, in any case
  EXPECT_EQ(book.fieldDefaults[3].formula, "x+1");
  EXPECT_FALSE(book.fieldDefaults[3].IsCalculated());
  EXPECT_EQ(book.fieldDefaults[1].defaultValue, "1,5");
  EXPECT_EQ(book.records.count(), 5u);
  EXPECT_TRUE(book.records.Consistent(5));
}

TEST_F(RecordsTest, UpdateFormulasMarksResultsAutoAndAsksAboveTheLimit) {
  ASSERT_EQ(UpdateFormulas(book), UpdateResult::kUpdated);
  EXPECT_EQ(At(3, 2), "6");
  EXPECT_TRUE(cell::IsAuto(Data().cells.GetCell(3, 2)));
  EXPECT_EQ(At(3, 3), "-");  // "x+1" is stored, never computed

  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope(prompter);
  book.records.SetCount(kAskBeforeUpdating);  // the free tail rows count as empty records
  ASSERT_EQ(UpdateFormulas(book), UpdateResult::kUpdated);
  EXPECT_TRUE(prompter.boxes.empty());
  book.records.SetCount(kAskBeforeUpdating + 1);
  EXPECT_EQ(UpdateFormulas(book), UpdateResult::kDeclined);
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_EQ(prompter.boxes[0].text, LoadStringText(str::kUpdateAllFormulas));
}

TEST_F(RecordsTest, InsertIntoAnOrderedSet) {
  uint32_t first = 0;
  ASSERT_TRUE(InsertRecords(book, 1, 2, &first));
  EXPECT_EQ(first, 1u);
  EXPECT_EQ(book.records.count(), 7u);
  EXPECT_EQ(At(1, 0), "-");
  EXPECT_EQ(At(3, 0), "'n1'");
  EXPECT_EQ(At(1, 2), "0");  // the new records' calculated fields are computed
  EXPECT_EQ(Rows(), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(book.records.Consistent(FirstFreeRow(book.records, Data())));
  // Behind the last record nothing is inserted.
  ASSERT_TRUE(InsertRecords(book, 7, 9));
  EXPECT_EQ(book.records.count(), 7u);
}

TEST_F(RecordsTest, InsertIntoANarrowedSetPutsARowBeforeEachSelectedOne) {
  // A filter has left records on rows 4, 1, 3 in that order.
  uint32_t* rows = book.records.rows();
  rows[0] = 4;
  rows[1] = 1;
  rows[2] = 3;
  book.records.SetCount(3);
  book.records.SetOrdered(false);
  book.records.RewriteFreeTail(5);
  ASSERT_TRUE(InsertRecords(book, 0, 1));
  // Rows 1 and 4 got an empty row before them: old 1 -> 2, 3 -> 4, 4 -> 6; new rows 1 and 5.
  EXPECT_EQ(Rows(), (std::vector<uint32_t>{5, 1, 6, 2, 4}));
  EXPECT_EQ(At(2, 0), "'n1'");
  EXPECT_EQ(At(6, 0), "'n4'");
  EXPECT_EQ(At(5, 0), "-");
  EXPECT_EQ(At(0, 0), "'n0'");  // not in the set, still renumbered correctly
  EXPECT_TRUE(book.records.Consistent(FirstFreeRow(book.records, Data())));
}

TEST_F(RecordsTest, RemoveRecordsClosesTheGapsAndFreesTheLastRow) {
  Data().objects.push_back(SheetObject{3, 1, FieldType::kLongText, "x"});
  ASSERT_TRUE(RemoveRecords(book, 1, 2));
  EXPECT_EQ(book.records.count(), 3u);
  EXPECT_EQ(At(1, 0), "'n3'");
  EXPECT_EQ(Data().objects[0].row, 1u);
  ASSERT_TRUE(RemoveRecords(book, 2, 2));  // the last record
  EXPECT_EQ(book.records.count(), 2u);
  EXPECT_EQ(book.records[2], 2u);  // its row is the first free one
  EXPECT_TRUE(book.records.Consistent(FirstFreeRow(book.records, Data())));
}

TEST_F(RecordsTest, FillDefaultsWritesOnlyEmptyCellsOfValueFields) {
  Data().cells.DeleteRange(0, 1, 2, 2);
  ASSERT_TRUE(FillDefaults(book, Selection(0, 2, 3, 6)));
  EXPECT_EQ(At(2, 0), "'nobody'");
  EXPECT_EQ(At(2, 1), "0");  // "1,5" is no number under the generic locale: a zero stays
  EXPECT_EQ(At(3, 0), "'n3'");
  EXPECT_EQ(At(6, 0), "'nobody'");
  EXPECT_EQ(book.records.count(), 7u);  // records behind the last joined the set
  EXPECT_EQ(At(6, 2), "0");             // and were computed
  EXPECT_EQ(At(6, 3), "-");
}

TEST_F(RecordsTest, StepValueAddsADayAnHourOrOne) {
  NumberStyle date;
  date.kind = format_kind::kDate;
  StyleRecord record = book.styles.Style(0);
  WriteNumberStyle(date, record);
  uint16_t id = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(book.styles.FindOrAddStyle(record, id, error));
  Data().formats.SetColumnStyle(0, id);
  PutText(0, 0, "2004-12-31");
  ASSERT_TRUE(StepValue(book, +1, Selection(0, 0, 1, 1)));
  EXPECT_EQ(At(0, 0), "'2005-01-01'");
  EXPECT_EQ(At(0, 1), "1");
  EXPECT_EQ(At(1, 0), "'n1'");  // no date: left alone
  EXPECT_EQ(At(0, 2), "2");     // the row was recomputed
  ASSERT_TRUE(StepValue(book, -1, Selection(0, 0, 0, 0)));
  EXPECT_EQ(At(0, 0), "'2004-12-31'");
}

TEST(DateCommands, ThePresentAndItsNeighbours) {
  platform::LocalTime now;
  now.year = 2005;
  now.month = 1;
  now.day = 31;
  now.hour = 9;
  now.minute = 5;
  now.second = 7;
  EXPECT_EQ(DateCommandText(DateCommand::kDate, now), "2005-01-31");
  EXPECT_EQ(DateCommandText(DateCommand::kTime, now), "09:05:07");
  EXPECT_EQ(DateCommandText(DateCommand::kDateAndTime, now), "2005-01-31T09:05:07");
  EXPECT_EQ(DateCommandText(DateCommand::kNextWeek, now), "2005-02-07");
  EXPECT_EQ(DateCommandText(DateCommand::kPreviousWeek, now), "2005-01-24");
  EXPECT_EQ(DateCommandText(DateCommand::kNextMonth, now), "2005-02-28");
  EXPECT_EQ(DateCommandText(DateCommand::kPreviousMonth, now), "2004-12-31");
  EXPECT_EQ(DateCommandText(DateCommand::kEndOfNextMonth, now), "2005-02-28");
  EXPECT_EQ(DateCommandText(DateCommand::kEndOfPreviousMonth, now), "2004-12-31");
}

}  // namespace
}  // namespace kelpdex
