// Commands wired end to end: the lifecycle questions, records, sort, filters, find and replace,
// Go To, and the table switch.
#include <QComboBox>
#include <QLabel>
#include <QTabBar>
#include <QToolBar>

#include "frame_fixture.h"
#include "search/search_keys.h"
#include "support/temp_dir.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class FrameCommandsTest : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Stock", {Field("Item", FieldType::kText), Field("Qty", FieldType::kNumber)});
    const char* items[] = {"pear", "apple", "fig", "apple", "kiwi"};
    for (uint32_t i = 0; i < 5; ++i) {
      Put(i, 0, items[i]);
      Put(i, 1, std::to_string(10 - i));
    }
    MakeTable("Empty", {Field("X", FieldType::kNumber, "F:=1+1")});
    Show();
  }
};

TEST_F(FrameCommandsTest, ClosingWithChangesAsksAndCancelKeepsEverything) {
  Type(0, 0, "plum");
  nextAnswer = answer::kCancel;
  EXPECT_FALSE(frame->close());
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], "Save changes to New Database?");
  EXPECT_NE(book.firstNode, nullptr);
  EXPECT_TRUE(book.modified);
  EXPECT_EQ(Shown(0, 0), "plum");
  nextAnswer = answer::kNo;
  EXPECT_TRUE(frame->Dispatch(57602));
  EXPECT_EQ(book.firstNode, nullptr);
  EXPECT_EQ(frame->tabStrip()->count(), 0);
}

TEST_F(FrameCommandsTest, AFailedSaveKeepsTheDocumentOpenAndModified) {
  kelpdex::testing::TempDir dir;
  book.fileName = dir.Path("no/such/folder/stock.kpx");
  Type(0, 0, "plum");
  nextAnswer = answer::kOk;
  frame->Dispatch(57603);
  EXPECT_FALSE(asked.empty());
  EXPECT_NE(book.firstNode, nullptr);
  EXPECT_TRUE(book.modified);
  // A good path saves, and the file opens again with the typed value.
  book.fileName = dir.Path("stock.kpx");
  ASSERT_TRUE(frame->Dispatch(57603));
  EXPECT_FALSE(book.modified);
  ASSERT_TRUE(frame->Dispatch(32802));  // Reload
  EXPECT_EQ(Shown(0, 0), "plum");
  EXPECT_EQ(frame->tabStrip()->count(), 2);
}

TEST_F(FrameCommandsTest, TablesSwitchAndUpdateFormulasOnAnEmptyTableDoesNothing) {
  frame->tabStrip()->setCurrentIndex(1);
  EXPECT_EQ(book.currentSheet, book.FindTable("Empty"));
  EXPECT_EQ(book.records.count(), 0u);
  QTest::keyClick(&grid(), Qt::Key_F9);
  EXPECT_TRUE(asked.empty());
  EXPECT_FALSE(book.modified);
  EXPECT_EQ(frame->foundPane()->text(), "Record(s) found: 0");
  // The selection of a table comes back when it is shown again.
  ASSERT_TRUE(frame->Dispatch(33097));  // Previous Table
  EXPECT_EQ(book.currentSheet, book.FindTable("Stock"));
  grid().SetSelection({1, 3, 1, 3});
  ASSERT_TRUE(frame->Dispatch(33096));
  ASSERT_TRUE(frame->Dispatch(33097));
  EXPECT_EQ(grid().activePosition(), 3u);
  EXPECT_EQ(grid().activeField(), 1);
}

TEST_F(FrameCommandsTest, ATableWithoutFieldsOffersOnlyAddField) {
  TableSpec empty;
  ASSERT_TRUE(CreateTable(book, "Bare"));
  frame->RebuildForTable(true);
  frame->SelectTable(2);
  EXPECT_EQ(grid().fieldCount(), 0);
  frame->UpdateUi();
  EXPECT_TRUE(frame->ActionOf(33068)->isEnabled());
  for (uint16_t id : {33114, 33072, 33071, 32782, 57634}) {
    EXPECT_FALSE(frame->ActionOf(id)->isEnabled()) << id;
  }
  QTest::keyClicks(&grid(), "a");
  EXPECT_FALSE(grid().editing());
}

TEST_F(FrameCommandsTest, SortFiltersAndTheRecordSet) {
  grid().MoveTo(0, 0);
  ASSERT_TRUE(frame->Dispatch(33073));  // Ascending on Item
  EXPECT_EQ(Shown(0, 0), "apple");
  EXPECT_EQ(Shown(0, 4), "pear");
  EXPECT_TRUE(frame->ActionOf(33075)->isEnabled());
  ASSERT_TRUE(frame->Dispatch(33075));
  EXPECT_EQ(Shown(0, 0), "pear");
  EXPECT_FALSE(frame->ActionOf(33075)->isEnabled());
  grid().MoveTo(0, 0);
  ASSERT_TRUE(frame->Dispatch(33143));  // Find Duplicates on Item
  EXPECT_EQ(book.records.count(), 2u);
  EXPECT_EQ(Shown(0, 0), "apple");
  ASSERT_TRUE(frame->Dispatch(33145));  // Complement
  EXPECT_EQ(book.records.count(), 3u);
  ASSERT_TRUE(frame->Dispatch(33146));
  EXPECT_EQ(book.records.count(), 5u);
  // A filter in force narrows the set and the header shows its formula.
  TableSpec table;
  ASSERT_TRUE(CurrentTable(book, table));
  ASSERT_TRUE(SetFieldFilter(table, 1, "4:7"));
  ASSERT_TRUE(RunSearch(book));
  frame->RebuildForTable(false);
  EXPECT_EQ(book.records.count(), 3u);
  EXPECT_EQ(frame->foundPane()->text(), "Record(s) found: 3");
}

TEST_F(FrameCommandsTest, FindReplaceAndGoTo) {
  frame->Dispatch(57636);
  EXPECT_TRUE(frame->findBar()->isVisible());
  auto* find = frame->findBar()->findChild<QComboBox*>("FindText");
  auto* replace = frame->findBar()->findChild<QComboBox*>("ReplaceText");
  find->setEditText("app*");
  grid().MoveTo(0, 0);
  ASSERT_TRUE(frame->Dispatch(33148));
  EXPECT_EQ(grid().activePosition(), 1u);
  ASSERT_TRUE(frame->Dispatch(33148));
  EXPECT_EQ(grid().activePosition(), 3u);
  ASSERT_TRUE(frame->Dispatch(33148));
  ASSERT_FALSE(asked.empty());
  EXPECT_EQ(asked.back(), "No more occurrences found.");
  find->setEditText("apple");
  replace->setEditText("quince");
  ASSERT_TRUE(frame->Dispatch(33150));
  EXPECT_EQ(Shown(0, 1), "quince");
  EXPECT_EQ(Shown(0, 3), "quince");
  EXPECT_TRUE(book.modified);
  // The record box: a number moves there, a range beeps and leaves the selection.
  frame->recordBox()->setText("5");
  QTest::keyClick(frame->recordBox(), Qt::Key_Return);
  EXPECT_EQ(grid().activePosition(), 4u);
  frame->recordBox()->setText("2-3");
  QTest::keyClick(frame->recordBox(), Qt::Key_Return);
  EXPECT_EQ(grid().activePosition(), 4u);
}

TEST_F(FrameCommandsTest, RecordCommandsInsertAndRemoveAtTheSelection) {
  grid().MoveTo(0, 1);
  ASSERT_TRUE(frame->Dispatch(32782));
  EXPECT_EQ(book.records.count(), 6u);
  EXPECT_EQ(Shown(0, 1), "");
  EXPECT_EQ(Shown(0, 2), "apple");
  ASSERT_TRUE(frame->Dispatch(32783));
  EXPECT_EQ(book.records.count(), 5u);
  EXPECT_EQ(Shown(0, 1), "apple");
  grid().MoveTo(1, 0);
  QTest::keyClick(&grid(), Qt::Key_Up, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(Shown(1, 0), "11");
}

}  // namespace
}  // namespace kelpdex::views
