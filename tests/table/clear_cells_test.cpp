// Delete in the grid: only stored values of the selection go, calculated fields follow, and a
// refused undo snapshot leaves every cell in place.
#include "table/clear_cells.h"

#include <gtest/gtest.h>

#include <string>

#include "support/scripted_recorder.h"
#include "table/records.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class ClearCellsTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Amount", FieldType::kNumber),
               Field("Double", FieldType::kNumber, "F:=Amount*2"),
               Field("Notes", FieldType::kLongText)});
    for (uint32_t r = 0; r < 3; ++r) {
      PutText(r, 0, "n" + std::to_string(r));
      PutNumber(r, 1, 10.0 + r);
      PutNumber(r, 3, 7);  // a Long Text cell holds its side-file offset
    }
    ASSERT_TRUE(RefreshCurrentTable(book));
    ASSERT_TRUE(RecalculateRecordRows(book, rows, 3));
    book.undo = &recorder;
  }
  void TearDown() override { book.undo = nullptr; }
  UndoContext Selection(uint16_t firstColumn, uint32_t firstRecord, uint16_t lastColumn,
                        uint32_t lastRecord) {
    UndoContext context;
    context.firstColumn = firstColumn;
    context.firstRecord = firstRecord;
    context.lastColumn = lastColumn;
    context.lastRecord = lastRecord;
    return context;
  }
  const uint32_t rows[3] = {0, 1, 2};
  testing::ScriptedRecorder recorder;
};

TEST_F(ClearCellsTest, EmptiesStoredValuesAndRecalculatesTheRecords) {
  ASSERT_EQ(At(1, 2), "22");
  ASSERT_TRUE(ClearCells(book, Selection(0, 1, 3, 2)));
  EXPECT_EQ(At(1, 0), "-");
  EXPECT_EQ(At(2, 1), "-");
  // The calculated field is passed over but computed again from the emptied Amount.
  EXPECT_EQ(At(1, 2), "0");
  EXPECT_EQ(At(2, 2), "0");
  // Long Text keeps its value: Delete in the grid never drops a side-file value.
  EXPECT_EQ(At(1, 3), "7");
  // The record outside the selection is untouched.
  EXPECT_EQ(At(0, 0), "'n0'");
  EXPECT_EQ(At(0, 2), "20");
  EXPECT_EQ(recorder.calls.size(), 1u);
}

TEST_F(ClearCellsTest, SelectionsPastTheRecordsAndFieldsAreCut) {
  // Starting behind the last record there is nothing to do and no undo step.
  EXPECT_TRUE(ClearCells(book, Selection(0, 3, 1, 9)));
  EXPECT_TRUE(recorder.calls.empty());
  // A selection running past the last record and field is cut to the table.
  EXPECT_TRUE(ClearCells(book, Selection(1, 2, 40, 50)));
  EXPECT_EQ(At(2, 1), "-");
  EXPECT_EQ(At(2, 0), "'n2'");
  EXPECT_EQ(At(1, 1), "11");
}

TEST_F(ClearCellsTest, ARefusedSnapshotKeepsEveryCell) {
  recorder.refuse = true;
  EXPECT_FALSE(ClearCells(book, Selection(0, 0, 1, 2)));
  EXPECT_EQ(At(0, 0), "'n0'");
  EXPECT_EQ(At(2, 1), "12");
}

}  // namespace
}  // namespace kelpdex
