#include "table/cell_entry.h"

#include <gtest/gtest.h>

#include "format/number_style.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class CellEntryTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Name", FieldType::kText), Field("Qty", FieldType::kNumber),
               Field("Double", FieldType::kNumber, "F:=Qty*2"), Field("Born", FieldType::kText),
               Field("Notes", FieldType::kLongText)});
    // The Born column shows dates: typed dates are kept as generic date text.
    NumberStyle date;
    date.kind = format_kind::kDate;
    StyleRecord record = book.styles.Style(0);
    WriteNumberStyle(date, record);
    uint16_t id = 0;
    ErrorCode error = err::kNone;
    ASSERT_TRUE(book.styles.FindOrAddStyle(record, id, error));
    Data().formats.SetColumnStyle(3, id);
    for (uint32_t r = 0; r < 3; ++r) PutNumber(r, 1, r + 1);
    ASSERT_TRUE(RefreshCurrentTable(book));
  }
};

TEST_F(CellEntryTest, EachFieldKindReadsTheTextItsOwnWay) {
  EXPECT_EQ(CommitText(book, 0, 1, "12.5"), EntryResult::kWritten);
  EXPECT_EQ(At(0, 1), "12.5");
  EXPECT_EQ(At(0, 2), "25");  // the record's calculated field follows
  // A date or an error literal in a Number field is a zero.
  EXPECT_EQ(CommitText(book, 1, 1, "2026-01-02"), EntryResult::kWritten);
  EXPECT_EQ(At(1, 1), "0");
  EXPECT_EQ(CommitText(book, 2, 1, "#N/A"), EntryResult::kWritten);
  EXPECT_EQ(At(2, 1), "0");
  // A Text field keeps digits as typed; a date-styled one keeps dates in the generic form.
  EXPECT_EQ(CommitText(book, 0, 0, "0012"), EntryResult::kWritten);
  EXPECT_EQ(At(0, 0), "'0012'");
  EXPECT_EQ(CommitText(book, 0, 3, "1/2/2026"), EntryResult::kWritten);
  EXPECT_EQ(At(0, 3), "'2026-01-02'");
  EXPECT_EQ(CommitText(book, 1, 3, "not a date"), EntryResult::kWritten);
  EXPECT_EQ(At(1, 3), "'not a date'");
  // An empty text empties the cell.
  EXPECT_EQ(CommitText(book, 0, 0, ""), EntryResult::kWritten);
  EXPECT_EQ(At(0, 0), "-");
}

TEST_F(CellEntryTest, NotesTellWhatWasStoredOtherThanTyped) {
  EntryNotes notes;
  EXPECT_EQ(CommitText(book, 0, 1, "12", {}, &notes), EntryResult::kWritten);
  EXPECT_FALSE(notes.cut || notes.numberAsZero);
  EXPECT_EQ(CommitText(book, 0, 1, "twelve", {}, &notes), EntryResult::kWritten);
  EXPECT_TRUE(notes.numberAsZero);
  EXPECT_FALSE(notes.cut);
  EXPECT_EQ(At(0, 1), "0");
  // A text one past the edit's limit keeps the limit's worth.
  std::string longText(kEditTextMax, 'a');
  EXPECT_EQ(CommitText(book, 0, 0, longText, {}, &notes), EntryResult::kWritten);
  EXPECT_FALSE(notes.cut);
  EXPECT_EQ(CommitText(book, 0, 0, longText + "b", {}, &notes), EntryResult::kWritten);
  EXPECT_TRUE(notes.cut);
  EXPECT_EQ(notes.typedLength, kEditTextMax + 1);
  EXPECT_FALSE(notes.numberAsZero);
  EXPECT_EQ(At(0, 0), "'" + longText + "'");
}

TEST_F(CellEntryTest, CalculatedAndLongFieldsAreNotTypedInto) {
  EXPECT_EQ(CommitText(book, 0, 2, "7"), EntryResult::kRefused);
  EXPECT_EQ(CommitText(book, 0, 4, "long"), EntryResult::kRefused);
  EXPECT_EQ(CommitText(book, 0, 9, "x"), EntryResult::kRefused);
  EXPECT_EQ(At(0, 2), "-");
}

TEST_F(CellEntryTest, TypingBehindTheLastRecordAddsRecords) {
  ASSERT_EQ(book.records.count(), 3u);
  EXPECT_EQ(CommitText(book, 4, 1, "3"), EntryResult::kWritten);
  EXPECT_EQ(book.records.count(), 5u);
  EXPECT_EQ(At(book.records[4], 1), "3");
  EXPECT_EQ(At(book.records[4], 2), "6");
  EXPECT_TRUE(book.records.Consistent(FirstFreeRow(book.records, Data())));
  // An empty text behind the end adds nothing.
  EXPECT_EQ(CommitText(book, 7, 0, ""), EntryResult::kWritten);
  EXPECT_EQ(book.records.count(), 5u);
  EXPECT_EQ(CommitText(book, RecordSet::kEntries, 0, "x"), EntryResult::kFailed);
  EXPECT_EQ(book.errorCode, err::kTooManyRecords);
}

TEST_F(CellEntryTest, TypingOverAnArrayFormulaRemovesTheWholeArray) {
  uint8_t rec[256];
  cell::EncodeFormula(rec, 0, 0, "={1;2}");
  cell::SetArray(rec, 1, 2);
  ASSERT_TRUE(Data().cells.PutCell(rec));
  cell::EncodeNumber(rec, 1, 0, 2, cell::kAuto);
  ASSERT_TRUE(Data().cells.PutCell(rec));
  EXPECT_EQ(CommitText(book, 0, 0, "plain"), EntryResult::kWritten);
  EXPECT_EQ(At(0, 0), "'plain'");
  EXPECT_EQ(At(1, 0), "-");
}

}  // namespace
}  // namespace kelpdex
