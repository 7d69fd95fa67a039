// Split panes with one selection, dragging records, and the binary-field pane beside the grid.
#include <QDropEvent>
#include <QMimeData>
#include <QSplitter>

#include "frame_fixture.h"
#include "persist/side_file.h"
#include "persist/side_values.h"
#include "views/frame/binary_pane.h"
#include "views/frame/grid_panes.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class GridPanesTest : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Fish", {Field("Name", FieldType::kText), Field("Size", FieldType::kNumber),
                       Field("Double", FieldType::kNumber, "F:=Size*2")});
    const char* names[] = {"cod", "eel", "ray", "gar", "koi"};
    for (uint32_t r = 0; r < 5; ++r) {
      Put(r, 0, names[r]);
      Put(r, 1, std::to_string(r + 1));
    }
    Show();
  }
  std::string Names() {
    std::string all;
    for (uint32_t r = 0; r < book.records.count(); ++r) all += Shown(0, r) + " ";
    return all;
  }
  GridView* Pane(const char* name) { return frame->findChild<GridView*>(name); }
};

TEST_F(GridPanesTest, SplitPanesShareOneSelectionAndScrollApart) {
  ASSERT_TRUE(frame->Dispatch(32809));  // Table - Horizontally
  ASSERT_TRUE(frame->Dispatch(32811));  // Table - Vertically
  EXPECT_TRUE(frame->ActionOf(32809)->isChecked());
  EXPECT_TRUE(frame->ActionOf(32811)->isChecked());
  EXPECT_FALSE(frame->ActionOf(32810)->isChecked());
  GridView* below = Pane("Grid2");
  GridView* corner = Pane("Grid3");
  ASSERT_NE(below, nullptr);
  ASSERT_NE(corner, nullptr);
  EXPECT_EQ(below->fieldCount(), 3);
  // A selection made in one pane shows in all; their scroll places stay their own.
  below->ScrollToPosition(3);
  frame->panes().first().MoveTo(1, 2);
  EXPECT_EQ(below->activePosition(), 2u);
  EXPECT_EQ(corner->activeField(), 1);
  EXPECT_EQ(below->topPosition(), 3u);
  // The pane in focus is the one commands act on, and the others show what they did.
  below->setFocus();
  QApplication::processEvents();
  ASSERT_EQ(&frame->grid(), below);
  below->MoveTo(0, 4);
  ASSERT_TRUE(frame->Dispatch(32782));  // Insert New Records before "koi"
  EXPECT_EQ(book.records.count(), 6u);
  EXPECT_EQ(frame->panes().first().DisplayText(0, 5), "koi");
  EXPECT_EQ(frame->panes().first().activePosition(), below->activePosition());
  // None takes both splits away; the remaining pane carries on with the selection.
  ASSERT_TRUE(frame->Dispatch(32810));
  EXPECT_EQ(Pane("Grid2"), nullptr);
  EXPECT_EQ(Pane("Grid3"), nullptr);
  EXPECT_EQ(&frame->grid(), &frame->panes().first());
  EXPECT_EQ(frame->grid().activePosition(), 4u);
  EXPECT_TRUE(frame->ActionOf(32810)->isChecked());
}

TEST_F(GridPanesTest, DraggedRecordsMoveOrCopyBeforeTheRowDroppedOn) {
  grid().SetSelection({0, 0, 0, 1});  // cod and eel
  ASSERT_TRUE(grid().MoveRecords(4, false));
  EXPECT_EQ(Names(), "ray gar cod eel koi ");
  EXPECT_EQ(grid().selection().firstPosition, 2u);
  EXPECT_EQ(grid().selection().lastPosition, 3u);
  // Calculated fields of the moved records are computed in their new place.
  EXPECT_EQ(Shown(2, 2), "2");
  EXPECT_EQ(Shown(2, 3), "4");
  // Onto itself nothing happens; a copy leaves the originals.
  EXPECT_FALSE(grid().MoveRecords(3, false));
  grid().SetSelection({0, 4, 0, 4});
  ASSERT_TRUE(grid().MoveRecords(0, true));
  EXPECT_EQ(Names(), "koi ray gar cod eel koi ");
  // Moving down past the last record appends them there.
  grid().SetSelection({0, 0, 0, 0});
  ASSERT_TRUE(grid().MoveRecords(6, false));
  EXPECT_EQ(Names(), "ray gar cod eel koi koi ");
  // Each move and copy is one Undo.
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Names(), "koi ray gar cod eel koi ");
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Names(), "ray gar cod eel koi ");
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Names(), "cod eel ray gar koi ");
  ASSERT_TRUE(frame->Dispatch(57644));
  EXPECT_EQ(Names(), "ray gar cod eel koi ");
}

TEST_F(GridPanesTest, CellsDroppedFromElsewhereBecomeNewRecords) {
  auto* mime = new QMimeData;
  mime->setText("pike\t9\r\nbass\t8\r\n");
  QRect target = grid().CellRect(0, 1);
  ASSERT_TRUE(target.isValid());
  QDragEnterEvent enter(target.center(), Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(grid().viewport(), &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(target.center()), Qt::CopyAction, mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(grid().viewport(), &drop);
  EXPECT_TRUE(drop.isAccepted());
  EXPECT_EQ(Names(), "cod pike bass eel ray gar koi ");
  EXPECT_EQ(Shown(2, 1), "18");
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Names(), "cod eel ray gar koi ");
  delete mime;
}

class BinaryPaneTest : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Dives", {Field("Site", FieldType::kText), Field("Log", FieldType::kLongText),
                        Field("Photos", FieldType::kFiles)});
    Put(0, 0, "Reef");
    Put(1, 0, "Wreck");
    Worksheet& data = *book.currentSheet;
    SetLongTextValue(book, data, 0, 1, "{\\rtf1\\ansi Calm water\\par Turtles seen}");
    BinaryObjectList photos;
    ASSERT_NE(photos.Append("turtle.jpg", "jpg", "xyz"), nullptr);
    SetObjectsValue(book, data, 1, 2, photos);
    Show();
  }
};

TEST_F(BinaryPaneTest, GridShowsTheStartOfValuesAndThePaneTheWholeOne) {
  EXPECT_EQ(Shown(1, 0), "Calm water");
  EXPECT_EQ(Shown(2, 1), "turtle.jpg");
  EXPECT_EQ(Shown(2, 0), "");
  BinaryPanes& pane = frame->binaryPanes();
  EXPECT_TRUE(pane.isVisible());
  grid().MoveTo(1, 0);
  EXPECT_EQ(pane.shownField(0), 1);
  EXPECT_EQ(pane.shownText(0), "Calm water\nTurtles seen");
  // The current field picks the view's field; the split's second view shows the next one.
  grid().MoveTo(2, 1);
  EXPECT_EQ(pane.shownField(0), 2);
  EXPECT_EQ(pane.shownText(0), "turtle.jpg  (3 bytes)");
  ASSERT_TRUE(frame->Dispatch(32813));
  EXPECT_EQ(pane.split(), 2);
  EXPECT_TRUE(frame->ActionOf(32813)->isChecked());
  EXPECT_EQ(pane.shownField(1), 1);
  EXPECT_EQ(pane.shownText(1), "");
  ASSERT_TRUE(frame->Dispatch(32813));  // toggles back
  EXPECT_EQ(pane.split(), 0);
  // A table without such fields hides the pane.
  ASSERT_TRUE(CreateTable(book, "Plain"));
  frame->RebuildForTable(true);
  frame->SelectTable(1);
  EXPECT_FALSE(pane.isVisible());
}

}  // namespace
}  // namespace kelpdex::views
