// Renders the main window with a sample table to PNG files for a person to look at: filters in
// the header, a selection, a frozen field, a link, a styled field and an empty table.
#include <QDir>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <QScrollBar>
#include <QStatusBar>
#include <QTabBar>
#include <QToolBar>

#include "frame_fixture.h"
#include "persist/side_values.h"
#include "search/search_keys.h"
#include "store/column_style.h"
#include "store/style_table.h"
#include "support/temp_dir.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class Render : public testing::FrameTest {
 protected:
  QImage Save(QWidget& widget, const char* name) {
    QDir().mkpath(KELPDEX_RENDER_DIR);
    QApplication::processEvents();
    QImage image = widget.grab().toImage();
    EXPECT_TRUE(image.save(QString(KELPDEX_RENDER_DIR) + "/" + name));
    return image;
  }
};

TEST_F(Render, MainWindowWithASampleTable) {
  MakeTable(
      "Contacts",
      {Field("Name", FieldType::kText), Field("City", FieldType::kText),
       Field("Web", FieldType::kText, "", true), Field("Salary", FieldType::kNumber),
       Field("Yearly", FieldType::kNumber, "F:=Salary*12"), Field("Notes", FieldType::kLongText)});
  const char* rows[][4] = {{"Ann Lee", "Oslo", "www.example.org", "4200"},
                           {"Bob Marsh", "Lyon", "  HTTP://x", "3900"},
                           {"Cleo Diaz", "Oslo", "cleo@example.org", "5100"},
                           {"Dan Wu", "Turin", "", "2800"},
                           {"Eva Stone", "Oslo", "https://kelpdex.example", "6100"}};
  for (uint32_t r = 0; r < 5; ++r) {
    for (uint16_t f = 0; f < 4; ++f) {
      if (rows[r][f][0] != '\0') Put(r, f, rows[r][f]);
    }
  }
  // A bold, filled style on City shows that cell styles reach the painter.
  TableSpec table;
  ASSERT_TRUE(CurrentTable(book, table));
  StyleRecord values{};
  values.bytes[style::kFillAt] = style::kSolidFill;
  values.bytes[style::kFillColourFlagsAt] = 1;
  values.bytes[style::kFillColourAt] = 0xE0;
  values.bytes[style::kFillColourAt + 1] = 0xF0;
  values.bytes[style::kFillColourAt + 2] = 0xFF;
  ASSERT_TRUE(SetColumnStyleAttribute(book, *table.data, 1, style::kFill, values, nullptr));
  ASSERT_TRUE(SetFieldFilter(table, 1, "2:Oslo"));
  ASSERT_TRUE(SetFieldFilter(table, 3, "4:3000"));
  SetLongTextValue(book, *table.data, 0, 5, "Met at the harbour fair.\nCall back in May.");
  Show();
  grid().SetFrozenFields(1);
  grid().SetSelection({1, 1, 3, 2});
  frame->ShowFindBar();
  QImage window = Save(*frame, "main_window.png");
  EXPECT_EQ(book.records.count(), 3u);  // Oslo and above 3000
  // The header's filter row is drawn in its own colour where a filter stands, and the frozen
  // field's line is darker than the grid's lines.
  QImage cells = Save(grid(), "grid.png");
  const ColumnSpan& city = grid().columns().spans[1];
  QColor filterCell = cells.pixelColor(city.left + city.width - 6, kNameRowHeight + 4);
  QColor plainFilter = cells.pixelColor(
      grid().columns().spans[2].left + grid().columns().spans[2].width - 6, kNameRowHeight + 4);
  EXPECT_NE(filterCell, plainFilter);
  EXPECT_FALSE(window.isNull());
  // The scroll bars tell the same place as the grid.
  EXPECT_EQ(grid().verticalScrollBar()->value(), static_cast<int>(grid().topPosition()));
  EXPECT_EQ(grid().horizontalScrollBar()->value(), 1);
  EXPECT_EQ(grid().horizontalScrollBar()->minimum(), 1);

  // Split two by two, the lower panes scrolled on their own, with the binary pane beside them
  // showing the Long Text of the current record.
  ASSERT_TRUE(frame->Dispatch(32809));
  ASSERT_TRUE(frame->Dispatch(32811));
  grid().MoveTo(5, 0);
  EXPECT_EQ(grid().DisplayText(5, 0), "Met at the harbour fair.");
  Save(*frame, "split_panes.png");
  ASSERT_TRUE(frame->Dispatch(32810));

  // The same document with a table of no fields.
  ASSERT_TRUE(CreateTable(book, "Bare"));
  frame->RebuildForTable(true);
  frame->SelectTable(1);
  Save(*frame, "no_fields.png");
  EXPECT_EQ(grid().fieldCount(), 0);
}

// The sample database as a user first sees it, opened through the lifecycle like a file named on
// the command line.
TEST_F(Render, TheSampleDatabase) {
  kelpdex::testing::TempDir dir;
  QFile::copy(KELPDEX_SAMPLES_DIR "/contacts.kpx",
              QString::fromStdString(dir.Path("contacts.kpx")));
  ASSERT_TRUE(frame->session().OpenFromCommandLine(dir.Path("contacts.kpx")));
  EXPECT_EQ(frame->windowTitle(), "contacts.kpx - Kelpdex");
  EXPECT_EQ(frame->tabStrip()->count(), 2);
  frame->SelectTable(0);
  EXPECT_EQ(grid().fieldCount(), 7);
  EXPECT_EQ(book.records.count(), 8u);
  EXPECT_FALSE(frame->statusBar()->findChild<QLabel*>("FormatPane")->text().isEmpty());
  grid().MoveTo(1, 2);
  Save(*frame, "sample_contacts.png");
}

}  // namespace
}  // namespace kelpdex::views
