// The clipboard, the header's zones and links, driven through the widgets.
#include <QClipboard>
#include <QMimeData>

#include "frame_fixture.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class GridMouseAndClipboard : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("T", {Field("Name", FieldType::kText), Field("Site", FieldType::kText, "", true),
                    Field("Count", FieldType::kNumber)});
    Put(0, 0, "tab\there");
    Put(0, 1, "  HTTP://x");
    Put(0, 2, "4");
    Put(1, 0, "say \"so\"");
    Show();
  }
  QPoint HeaderPoint(int column, int dx, int y = 5) {
    const ColumnSpan& c = grid().columns().spans[column];
    return QPoint(c.left + dx, y);
  }
};

TEST_F(GridMouseAndClipboard, CopyQuotesAndPasteRestoresTabsAndQuotes) {
  grid().SetSelection({0, 0, 0, 1});
  ASSERT_TRUE(frame->Dispatch(57634));
  const QMimeData* mime = QApplication::clipboard()->mimeData();
  ASSERT_NE(mime, nullptr);
  EXPECT_EQ(mime->text(), "\"tab\there\"\r\n\"say \"\"so\"\"\"\r\n");
  EXPECT_TRUE(mime->hasFormat("application/x-kelpdex"));
  grid().MoveTo(0, 3);
  ASSERT_TRUE(frame->Dispatch(57637));
  EXPECT_EQ(Shown(0, 3), "tab\there");
  EXPECT_EQ(Shown(0, 4), "say \"so\"");
  EXPECT_EQ(book.records.count(), 5u);
  // One paste is one undo step.
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Shown(0, 3), "");
  EXPECT_EQ(Shown(0, 4), "");
  EXPECT_EQ(book.records.count(), 2u);
}

TEST_F(GridMouseAndClipboard, PlainTextPastePassesOverCalculatedFields) {
  auto* mime = new QMimeData;
  mime->setText("a\t12\r\nb\t13\r\n");
  QApplication::clipboard()->setMimeData(mime);
  grid().MoveTo(1, 2);
  ASSERT_TRUE(frame->Dispatch(57637));
  EXPECT_EQ(Shown(1, 2), "a");
  EXPECT_EQ(Shown(2, 3), "13");
  ASSERT_NE(Cell(2, 3), nullptr);
  EXPECT_TRUE(cell::IsNumber(Cell(2, 3)));
}

TEST_F(GridMouseAndClipboard, HeaderZonesSelectFieldsOrResize) {
  grid().MoveTo(0, 1);
  const ColumnSpan second = grid().columns().spans[1];
  QPoint nearEdge = HeaderPoint(1, second.width - 2);
  QTest::mouseMove(grid().viewport(), nearEdge);
  EXPECT_EQ(grid().viewport()->cursor().shape(), Qt::SplitHCursor);
  QTest::mouseMove(grid().viewport(), HeaderPoint(1, 20));
  EXPECT_EQ(grid().viewport()->cursor().shape(), Qt::ArrowCursor);
  // A drag on the margin widens the field as one undo step; the selection stays.
  QTest::mousePress(grid().viewport(), Qt::LeftButton, {}, nearEdge);
  QTest::mouseMove(grid().viewport(), nearEdge + QPoint(40, 0));
  QTest::mouseRelease(grid().viewport(), Qt::LeftButton, {}, nearEdge + QPoint(40, 0));
  EXPECT_EQ(FieldWidth(*book.currentSheet, 1), second.width + 40);
  EXPECT_EQ(grid().activeField(), 0);
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(FieldWidth(*book.currentSheet, 1), second.width);
  // A click on the name selects the whole field.
  QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, HeaderPoint(2, 30));
  GridSelection s = grid().selection();
  EXPECT_EQ(s.firstField, 2);
  EXPECT_EQ(s.lastField, 2);
  EXPECT_EQ(s.firstPosition, 0u);
  EXPECT_EQ(s.lastPosition, 1u);
}

TEST_F(GridMouseAndClipboard, ClickOnALinkOpensItAfterItsBlanks) {
  std::vector<QString> opened;
  grid().linkOpener = [&](const QString& url) { opened.push_back(url); };
  QRect link = grid().CellRect(1, 0);
  ASSERT_TRUE(link.isValid());
  QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, link.center());
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0], "HTTP://x");
  // A plain field's text is never followed.
  QTest::mouseClick(grid().viewport(), Qt::LeftButton, {}, grid().CellRect(0, 0).center());
  EXPECT_EQ(opened.size(), 1u);
}

}  // namespace
}  // namespace kelpdex::views
