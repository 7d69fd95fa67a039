// Typing into cells through the real keys, and what reaches the document.
#include "frame_fixture.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class GridEditing : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("People", {Field("Name", FieldType::kText), Field("Amount", FieldType::kNumber),
                         Field("Twice", FieldType::kNumber, "F:=Amount*2"),
                         Field("Notes", FieldType::kLongText)});
    Put(0, 0, "Ann");
    Put(0, 1, "5");
    Put(1, 0, "Bob");
    Show();
  }
};

TEST_F(GridEditing, EnterCommitsThroughTheEntryPathAndMovesAsTheSettingSays) {
  Type(0, 1, "Robert");
  EXPECT_FALSE(grid().editing());
  EXPECT_EQ(Shown(0, 1), "Robert");
  EXPECT_EQ(grid().activePosition(), 2u);
  EXPECT_TRUE(book.modified);
  settings.whenEnterPressed = 3;  // one field to the right
  Type(1, 1, "7");
  EXPECT_EQ(grid().activeField(), 2);
  EXPECT_EQ(grid().activePosition(), 1u);
  EXPECT_EQ(Shown(2, 1), "14");  // the record's calculated field followed
  settings.whenEnterPressed = 0;
  Type(0, 0, "Anne");
  EXPECT_EQ(grid().activeField(), 0);
  EXPECT_EQ(grid().activePosition(), 0u);
  // Tab commits and moves right; the arrow keys commit and step.
  Type(0, 1, "Rob", Qt::Key_Tab);
  EXPECT_EQ(Shown(0, 1), "Rob");
  EXPECT_EQ(grid().activeField(), 1);
  Type(1, 0, "8", Qt::Key_Up);
  EXPECT_EQ(grid().activePosition(), 0u);
  EXPECT_EQ(Shown(1, 0), "8");
}

TEST_F(GridEditing, EscapeRestoresAndF2EditsTheShownText) {
  Type(0, 0, "Zed", Qt::Key_Escape);
  EXPECT_FALSE(grid().editing());
  EXPECT_EQ(Shown(0, 0), "Ann");
  grid().MoveTo(0, 0);
  QTest::keyClick(&grid(), Qt::Key_F2);
  ASSERT_TRUE(grid().editing());
  EXPECT_EQ(grid().editor()->text(), "Ann");
  QTest::keyClicks(grid().editor(), "a");
  QTest::keyClick(grid().editor(), Qt::Key_Return);
  EXPECT_EQ(Shown(0, 0), "Anna");
}

TEST_F(GridEditing, NumberFieldsTakeZeroForTextAndTextFieldsKeepIt) {
  Type(1, 1, "#N/A!");
  const CellRecord* cell = Cell(1, 1);
  ASSERT_NE(cell, nullptr);
  EXPECT_TRUE(cell::IsNumber(cell));
  EXPECT_EQ(cell::Number(cell), 0.0);
  Type(1, 1, "2005-01-31");
  EXPECT_EQ(cell::Number(Cell(1, 1)), 0.0);
  Type(0, 1, "2005-01-31");
  ASSERT_TRUE(cell::IsText(Cell(0, 1)));
  EXPECT_EQ(cell::Text(Cell(0, 1)), "2005-01-31");
  Type(0, 0, "#N/A!");
  EXPECT_EQ(cell::Text(Cell(0, 0)), "#N/A!");
}

TEST_F(GridEditing, ClearingACellRemovesItAndRecalculates) {
  EXPECT_EQ(Shown(2, 0), "10");
  grid().MoveTo(1, 0);
  QTest::keyClick(&grid(), Qt::Key_F2);
  grid().editor()->clear();
  QTest::keyClick(grid().editor(), Qt::Key_Return);
  EXPECT_EQ(Cell(1, 0), nullptr);
  EXPECT_EQ(Shown(2, 0), "0");
  // Delete empties the selection in one undo step, and Undo brings it back.
  Put(1, 1, "3");
  grid().SetSelection({0, 0, 1, 1});
  QTest::keyClick(&grid(), Qt::Key_Delete);
  EXPECT_EQ(Cell(0, 0), nullptr);
  EXPECT_EQ(Cell(1, 1), nullptr);
  EXPECT_EQ(Shown(2, 1), "0");
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Shown(0, 0), "Ann");
  EXPECT_EQ(Shown(1, 1), "3");
}

TEST_F(GridEditing, CalculatedAndLongTextFieldsRefuseSilently) {
  for (uint16_t field : {2, 3}) {
    grid().MoveTo(field, 0);
    QTest::keyClick(&grid(), Qt::Key_F2);
    EXPECT_FALSE(grid().editing()) << field;
    QTest::keyClicks(&grid(), "x");
    EXPECT_FALSE(grid().editing()) << field;
  }
  EXPECT_TRUE(asked.empty());
  EXPECT_FALSE(book.modified);
}

TEST_F(GridEditing, EmptyRowsPastTheEndTakeNewRecords) {
  ASSERT_EQ(book.records.count(), 2u);
  QTest::keyClick(&grid(), Qt::Key_End, Qt::ControlModifier);
  EXPECT_EQ(grid().activePosition(), 1u);
  for (int i = 0; i < 4; ++i) QTest::keyClick(&grid(), Qt::Key_Down);
  EXPECT_EQ(grid().activePosition(), 5u);
  EXPECT_EQ(Shown(0, 5), "");
  Type(0, 5, "Eve");
  EXPECT_EQ(book.records.count(), 6u);
  EXPECT_EQ(Shown(0, 5), "Eve");
}

TEST_F(GridEditing, CtrlZInTheEditorUndoesTypingNotTheLastAction) {
  Type(0, 0, "First");
  int32_t top = book.undoTop;
  Type(0, 1, "Typed", Qt::Key_unknown);
  QTest::keyClick(grid().editor(), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_TRUE(grid().editing());
  EXPECT_NE(grid().editor()->text(), "Typed");
  EXPECT_EQ(book.undoTop, top);
  EXPECT_EQ(Shown(0, 0), "First");
  QTest::keyClick(grid().editor(), Qt::Key_Escape);
  // Outside the editor Ctrl+Z takes back the last commit.
  frame->activateWindow();
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Shown(0, 0), "Ann");
  ASSERT_TRUE(frame->Dispatch(57644));
  EXPECT_EQ(Shown(0, 0), "First");
}

TEST_F(GridEditing, KeyboardNavigationStaysInsideTheTable) {
  grid().MoveTo(0, 0);
  QTest::keyClick(&grid(), Qt::Key_Left);
  QTest::keyClick(&grid(), Qt::Key_Up);
  EXPECT_EQ(grid().activeField(), 0);
  EXPECT_EQ(grid().activePosition(), 0u);
  QTest::keyClick(&grid(), Qt::Key_End);
  EXPECT_EQ(grid().activeField(), 3);
  QTest::keyClick(&grid(), Qt::Key_Right);
  EXPECT_EQ(grid().activeField(), 3);
  QTest::keyClick(&grid(), Qt::Key_PageDown);
  EXPECT_GT(grid().activePosition(), 5u);
  QTest::keyClick(&grid(), Qt::Key_Home, Qt::ControlModifier);
  EXPECT_EQ(grid().activeField(), 0);
  EXPECT_EQ(grid().activePosition(), 0u);
  QTest::keyClick(&grid(), Qt::Key_Down, Qt::ShiftModifier);
  QTest::keyClick(&grid(), Qt::Key_Right, Qt::ShiftModifier);
  GridSelection s = grid().selection();
  EXPECT_EQ(s.lastField, 1);
  EXPECT_EQ(s.lastPosition, 1u);
  EXPECT_EQ(frame->recordBox()->text(), "1-2");
}

}  // namespace
}  // namespace kelpdex::views
