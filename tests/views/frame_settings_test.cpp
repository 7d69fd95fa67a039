// Drop-down lists, the Enter settings, field and layout commands, regional data from QLocale,
// the progress bar and the window's rectangle.
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStatusBar>

#include "core/locale_settings.h"
#include "frame_fixture.h"
#include "store/bytes.h"
#include "store/column_style.h"
#include "store/style_table.h"
#include "views/frame/qt_locale_provider.h"
#include "views/frame/status_progress.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class FrameSettings : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Fruit", {Field("Name", FieldType::kText), Field("Kind", FieldType::kText),
                        Field("Weight", FieldType::kNumber)});
    Put(0, 0, "pear");
    Put(0, 2, "120");
    Put(1, 0, "fig");
    Put(3, 0, "kiwi");
    MakeTable("Other", {Field("A", FieldType::kText)});
    Show();
  }
  std::vector<std::string> Names() {
    TableSpec table;
    EXPECT_TRUE(CurrentTable(book, table));
    std::vector<std::string> names;
    FieldSpec f;
    for (uint16_t i = 0; i < FieldCount(table); ++i)
      names.push_back(ReadField(table, i, f) ? f.name : "?");
    return names;
  }
};

TEST_F(FrameSettings, DropDownListsCompleteAndAppend) {
  uint32_t slot = 0;
  ASSERT_TRUE(book.AddDropDownList(slot));
  book.dropDownLists[slot].items = {"apple", "banana"};
  StyleRecord values{};
  StoreU16(values.bytes + style::kDropDownAt, static_cast<uint16_t>(slot + 1));
  values.bytes[style::kDropDownAppendAt] = 1;
  values.bytes[style::kDropDownCompleteAt] = 1;
  ASSERT_TRUE(
      SetColumnStyleAttribute(book, *book.currentSheet, 1, style::kDropDown, values, nullptr));
  grid().InvalidateLooks();
  Type(1, 0, "ban", Qt::Key_unknown);
  EXPECT_TRUE(grid().dropDown()->isVisible());
  EXPECT_EQ(grid().dropDown()->count(), 2);
  EXPECT_EQ(grid().editor()->text(), "banana");
  EXPECT_EQ(grid().editor()->selectedText(), "ana");
  QTest::keyClick(grid().editor(), Qt::Key_Return);
  EXPECT_EQ(Shown(1, 0), "banana");
  EXPECT_FALSE(grid().dropDown()->isVisible());
  Type(1, 1, "cherry");
  EXPECT_EQ(book.dropDownLists[slot].items,
            (std::vector<std::string>{"apple", "banana", "cherry"}));
}

TEST_F(FrameSettings, EnterFollowsTheNextExistingCell) {
  settings.whenEnterPressed = 2;  // down to the next record with a cell in this field
  Type(0, 1, "date");
  EXPECT_EQ(grid().activePosition(), 3u);
  settings.whenEnterPressed = 4;  // right to the next cell of this record
  Type(0, 0, "plum");
  EXPECT_EQ(grid().activeField(), 2);
  EXPECT_EQ(grid().activePosition(), 0u);
}

TEST_F(FrameSettings, ConversionsDatesAndFieldMovesGoThroughTheLogic) {
  grid().SetSelection({0, 0, 0, 1});
  ASSERT_TRUE(frame->Dispatch(33058));  // all letters to upper case
  EXPECT_EQ(Shown(0, 0), "PEAR");
  EXPECT_EQ(Shown(0, 1), "FIG");
  EXPECT_EQ(Shown(0, 3), "kiwi");
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Shown(0, 0), "pear");
  grid().MoveTo(1, 3);
  ASSERT_TRUE(frame->Dispatch(32907));  // Date
  EXPECT_TRUE(QRegularExpression("^\\d{4}-\\d{2}-\\d{2}$")
                  .match(QString::fromStdString(Shown(1, 3)))
                  .hasMatch())
      << Shown(1, 3);
  grid().MoveTo(0, 0);
  ASSERT_TRUE(frame->Dispatch(33099));  // Move Field Right
  EXPECT_EQ(Names(), (std::vector<std::string>{"Kind", "Name", "Weight"}));
  EXPECT_EQ(grid().activeField(), 1);
  EXPECT_EQ(Shown(1, 0), "pear");
  ASSERT_TRUE(frame->Dispatch(33071));  // Delete Field
  EXPECT_EQ(Names(), (std::vector<std::string>{"Kind", "Weight"}));
  EXPECT_EQ(grid().fieldCount(), 2);
  ASSERT_TRUE(frame->Dispatch(57643));
  EXPECT_EQ(Names(), (std::vector<std::string>{"Kind", "Name", "Weight"}));
  EXPECT_EQ(Shown(1, 3), "kiwi");
}

TEST_F(FrameSettings, FrozenFieldsStayWithTheirTable) {
  grid().MoveTo(1, 0);
  ASSERT_TRUE(frame->Dispatch(33151));
  EXPECT_EQ(grid().frozenFields(), 2);
  EXPECT_TRUE(frame->ActionOf(33151)->isChecked());
  frame->SelectTable(1);
  EXPECT_EQ(grid().frozenFields(), 0);
  frame->SelectTable(0);
  EXPECT_EQ(grid().frozenFields(), 2);
  ASSERT_TRUE(frame->Dispatch(33151));
  EXPECT_EQ(grid().frozenFields(), 0);
}

TEST_F(FrameSettings, LocalesComeFromQLocaleAndTheMenuTicksTheOneInForce) {
  QtLocaleProvider provider;
  char buf[16];
  ASSERT_TRUE(provider.IsValidLocale(0x0407));  // German (Germany)
  ASSERT_GT(provider.GetLocaleInfo(0x0407, platform::kLocaleSDecimal, buf, 2), 0);
  EXPECT_STREQ(buf, ",");
  ASSERT_GT(provider.GetLocaleInfo(0x0407, platform::kLocaleIDate, buf, sizeof buf), 0);
  EXPECT_STREQ(buf, "1");  // day first
  ASSERT_GT(provider.GetLocaleInfo(0x0409, platform::kLocaleIDate, buf, sizeof buf), 0);
  EXPECT_STREQ(buf, "0");
  EXPECT_FALSE(provider.IsValidLocale(0x7777));
  EXPECT_EQ(provider.GetLocaleInfo(0x0407, 0x7777, buf, sizeof buf), 0);
  ASSERT_TRUE(frame->Dispatch(33019));  // User Default
  EXPECT_EQ(settings.localeChoice, 2);
  EXPECT_TRUE(frame->ActionOf(33019)->isChecked() || currentLocale.localeIndex == 0);
  ASSERT_TRUE(frame->Dispatch(33018));  // back to Generic for the other tests
  EXPECT_EQ(currentLocale.localeIndex, 0);
  EXPECT_TRUE(frame->ActionOf(33018)->isChecked());
  EXPECT_FALSE(frame->ActionOf(33019)->isChecked());
}

TEST_F(FrameSettings, LongWorkShowsTheBarAndCancelReachesTheLogic) {
  StatusProgress& progress = frame->progress();
  ProgressSink* before = SetProgressSink(nullptr);
  SetProgressSink(before);
  {
    LongWork work(progress);
    EXPECT_TRUE(progress.active());
    EXPECT_FALSE(ProgressCancelled());
    QTest::qWait(120);
    ReportProgress(5, 10);
    auto* bar = frame->statusBar()->findChild<QProgressBar*>("ProgressBar");
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->value(), 500);
    QTest::mouseClick(frame->statusBar()->findChild<QPushButton*>("ProgressCancel"),
                      Qt::LeftButton);
    EXPECT_TRUE(ProgressCancelled());
  }
  EXPECT_FALSE(progress.active());
  EXPECT_EQ(SetProgressSink(before), before);
  // A command refuses to start while long work runs, and runs once it is over.
  {
    LongWork again(progress);
    EXPECT_FALSE(frame->Dispatch(32782));
  }
  EXPECT_TRUE(frame->Dispatch(32782));
}

TEST_F(FrameSettings, TheWindowRectangleGoesToTheSettingsAndComesBack) {
  frame->setGeometry(40, 50, 700, 500);
  frame->StoreWindowState();
  EXPECT_EQ(settings.windowRight - settings.windowLeft, 700);
  EXPECT_EQ(settings.windowBottom - settings.windowTop, 500);
  EXPECT_EQ(settings.windowShow, show::kNormal);
  SessionSettings other;
  other.windowLeft = 10;
  other.windowTop = 20;
  other.windowRight = 810;
  other.windowBottom = 620;
  Workbook empty;
  MainFrame second(empty, other);
  second.RestoreWindowState();
  EXPECT_EQ(second.geometry().size(), QSize(800, 600));
}

}  // namespace
}  // namespace kelpdex::views
