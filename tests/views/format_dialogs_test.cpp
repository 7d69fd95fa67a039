// The Format Field sheet, the drop-down list editor, Go To, the filter dialog's function pane and
// Load Profile, driven through their controls: the messages they show, where the focus lands,
// and what reaches the document and the frame. Each dialog is rendered to a PNG.
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFontComboBox>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTimer>

#include "document/settings_host.h"
#include "format/user_formats.h"
#include "frame_fixture.h"
#include "store/bytes.h"
#include "support/temp_dir.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/dialogs/drop_down_editor.h"
#include "views/dialogs/filter_dialog.h"
#include "views/dialogs/format_sheet.h"
#include "views/dialogs/function_picker.h"
#include "views/dialogs/go_to_dialog.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class FormatDialogs : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Boats", {Field("Name", FieldType::kText), Field("Share", FieldType::kNumber)});
    Put(0, 0, "Kelp");
    Put(0, 1, "0.5");
    Put(1, 1, "0.25");
    Put(2, 1, "2");
    ASSERT_TRUE(RefreshCurrentTable(book));
    Show();
  }
  void Open(QDialog& dialog, const char* png) {
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QDir().mkpath(KELPDEX_RENDER_DIR);
    EXPECT_TRUE(dialog.grab().save(QString(KELPDEX_RENDER_DIR) + "/" + png));
  }
  // Runs a command whose dialog is modal, with `drive` acting on the dialog once it is up.
  template <typename Dialog, typename Drive>
  void WithDialog(uint16_t id, Drive drive) {
    bool reached = false;
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
      reached = dialog != nullptr;
      if (dialog != nullptr) drive(*dialog);
      if (dialog != nullptr && dialog->isVisible()) dialog->reject();
    });
    ASSERT_TRUE(frame->Dispatch(id));
    ASSERT_TRUE(reached);
  }
  FormatSheet::Page PageShown(FormatSheet& sheet) {
    return static_cast<FormatSheet::Page>(sheet.pages()->currentIndex());
  }
  QString LastAsked() const { return asked.empty() ? QString() : asked.back(); }
};

TEST_F(FormatDialogs, EachFormatCommandOpensItsPageWithTheFocusOnItsFirstControl) {
  struct Case {
    uint16_t id;
    FormatSheet::Page page;
    const char* png;
  };
  for (Case c : {Case{57696, FormatSheet::kFontPage, "format_sheet_font.png"},
                 Case{32818, FormatSheet::kStylePage, "format_sheet_style.png"},
                 Case{33052, FormatSheet::kAlignmentPage, "format_sheet_alignment.png"},
                 Case{33053, FormatSheet::kDropDownPage, "format_sheet_drop_down.png"}}) {
    WithDialog<FormatSheet>(c.id, [&](FormatSheet& sheet) {
      EXPECT_EQ(sheet.windowTitle(), "Format Field");
      EXPECT_EQ(PageShown(sheet), c.page) << c.id;
      QWidget* first[] = {sheet.fontBox(), sheet.kindList(), sheet.horizontalBox(),
                          sheet.listBox()};
      EXPECT_EQ(sheet.focusWidget(), first[c.page]) << c.id;
      sheet.grab().save(QString(KELPDEX_RENDER_DIR) + "/" + c.png);
    });
  }
}

TEST_F(FormatDialogs, StyleSampleFollowsTheControlsAndAWrongFormatIsRefusedWhereTyped) {
  grid().MoveTo(1, 0);
  FormatSheet sheet(book, ReadFieldFormat(book, 1), Cell(1, 0), FormatSheet::kStylePage,
                    frame.get());
  Open(sheet, "format_sheet_style_percentage.png");
  // The sample shows the current cell through the edited format, as the controls change.
  sheet.kindList()->setCurrentRow(format_kind::kPercentage);
  sheet.fixedDecimalsBox()->setChecked(true);
  sheet.decimalsBox()->setValue(1);
  EXPECT_EQ(sheet.sample()->text(), "50.0%");
  sheet.decimalsBox()->setValue(0);
  EXPECT_EQ(sheet.sample()->text(), "50%");
  // Controls of other kinds are out of sight, those of this kind in it.
  EXPECT_TRUE(sheet.decimalsBox()->isVisible());
  EXPECT_FALSE(sheet.symbolBox()->isVisible());
  EXPECT_FALSE(sheet.dateList()->isVisible());

  sheet.kindList()->setCurrentRow(format_kind::kUserDefined);
  EXPECT_TRUE(sheet.userFormatBox()->isVisible());
  sheet.userFormatBox()->setEditText("[red][blue][green][white]0");
  EXPECT_EQ(sheet.sample()->text(), "");
  sheet.kindList()->setFocus();
  sheet.accept();
  EXPECT_EQ(LastAsked(), "Invalid value.");
  EXPECT_TRUE(sheet.isVisible());
  EXPECT_TRUE(sheet.userFormatBox()->hasFocus() || sheet.userFormatBox()->lineEdit()->hasFocus());
  EXPECT_EQ(sheet.userFormatBox()->lineEdit()->selectedText(), "[red][blue][green][white]0");

  // A good string is taken and joins the list the profile keeps.
  const size_t before = UserNumberFormats().UserFormats().size();
  sheet.userFormatBox()->setEditText("0.000\" kn\"");
  EXPECT_EQ(sheet.sample()->text(), "0.500 kn");
  sheet.accept();
  EXPECT_FALSE(sheet.isVisible());
  std::vector<std::string> users = UserNumberFormats().UserFormats();
  ASSERT_EQ(users.size(), before + 1);
  EXPECT_EQ(users.back(), "0.000\" kn\"");
  UserNumberFormats().ResetToBuiltIn();
}

TEST_F(FormatDialogs, ApplyingChangesOnlyWhatTheSheetChangedOnEveryFieldAndUndoes) {
  // Field 1 gets a percentage first; then both fields are selected and only alignment and bold
  // change: the percentage must survive on field 1, and field 0 must not take it.
  grid().MoveTo(1, 0);
  WithDialog<FormatSheet>(32818, [](FormatSheet& sheet) {
    sheet.kindList()->setCurrentRow(format_kind::kPercentage);
    sheet.fixedDecimalsBox()->setChecked(true);
    sheet.accept();
  });
  EXPECT_EQ(Shown(1, 1), "25%");
  GridSelection all = grid().selection();
  all.firstField = 0;
  all.lastField = 1;
  grid().SetSelection(all);
  WithDialog<FormatSheet>(33052, [](FormatSheet& sheet) {
    sheet.horizontalBox()->setCurrentIndex(3);  // Right
    sheet.boldBox()->setChecked(true);
    sheet.accept();
  });
  EXPECT_EQ(Shown(1, 1), "25%");
  EXPECT_EQ(Shown(0, 0), "Kelp");
  EXPECT_TRUE(book.modified);
  for (uint16_t field : {0, 1}) {
    FieldFormat now = ReadFieldFormat(book, field);
    EXPECT_EQ(now.style.bytes[style::kHorizontalAt], 3) << field;
    EXPECT_GE(now.font.bytes[font::kWeightAt], 2) << field;
  }
  EXPECT_EQ(ReadNumberStyle(ReadFieldFormat(book, 0).style).kind, format_kind::kDefault);
  ASSERT_TRUE(frame->Dispatch(cmd::kUndo));
  EXPECT_EQ(ReadFieldFormat(book, 1).style.bytes[style::kHorizontalAt], 4);
  EXPECT_EQ(Shown(1, 1), "25%");
  ASSERT_TRUE(frame->Dispatch(cmd::kUndo));
  EXPECT_EQ(Shown(1, 1), "0.25");
}

TEST_F(FormatDialogs, DropDownListsAreEditedOnACopyAndChosenOnTheirPage) {
  DropDownEditor editor(book.dropDownLists, frame.get());
  Open(editor, "drop_down_editor_empty.png");
  EXPECT_EQ(editor.focusWidget(), editor.listNames());
  EXPECT_FALSE(editor.deleteButton()->isEnabled());
  editor.newButton()->click();
  EXPECT_EQ(editor.nameBox()->text(), "List 1.");
  EXPECT_EQ(editor.focusWidget(), editor.nameBox());
  editor.nameBox()->setText("Ports");
  editor.itemsBox()->setPlainText("Bergen\n\nOslo\n");
  editor.newButton()->click();
  EXPECT_EQ(editor.nameBox()->text(), "List 1.");
  // A name of blanks is not kept: the list stays chosen and the focus stays on its name.
  editor.nameBox()->setText("   ");
  editor.listNames()->setCurrentRow(0);
  EXPECT_EQ(editor.listNames()->currentRow(), 1);
  EXPECT_EQ(editor.focusWidget(), editor.nameBox());
  editor.nameBox()->setText("Boats");
  editor.itemsBox()->setPlainText(QString(1025, 'x'));
  editor.accept();
  EXPECT_EQ(LastAsked(), "Please enter no more than 1024 characters.");
  EXPECT_EQ(editor.focusWidget(), editor.itemsBox());
  EXPECT_TRUE(editor.isVisible());
  editor.itemsBox()->setPlainText("Skiff");
  Open(editor, "drop_down_editor.png");
  // Deleting asks first; No keeps the list.
  nextAnswer = answer::kNo;
  editor.deleteButton()->click();
  EXPECT_EQ(LastAsked(),
            "The selected drop-down list will be permanently deleted. (This action can't be "
            "undone.)\nContinue?");
  EXPECT_EQ(editor.listNames()->count(), 2);
  nextAnswer = answer::kYes;
  editor.deleteButton()->click();
  EXPECT_EQ(editor.listNames()->count(), 1);
  // Nothing reaches the document before OK.
  EXPECT_FALSE(book.dropDownLists[0].used);
  editor.accept();
  const DropDownLists& kept = editor.lists();
  EXPECT_EQ(kept[0].name, "Ports");
  EXPECT_EQ(kept[0].items, (std::vector<std::string>{"Bergen", "Oslo"}));
  EXPECT_FALSE(kept[1].used);

  // The page offers the document's lists by name and keeps the choice by number.
  book.dropDownLists = kept;
  FormatSheet sheet(book, ReadFieldFormat(book, 0), nullptr, FormatSheet::kDropDownPage,
                    frame.get());
  ASSERT_EQ(sheet.listBox()->count(), 2);
  EXPECT_EQ(sheet.listBox()->itemText(0), "(None)");
  sheet.listBox()->setCurrentIndex(1);
  sheet.autoCompleteBox()->setChecked(true);
  sheet.accept();
  EXPECT_EQ(LoadU16(sheet.edited().style.bytes + style::kDropDownAt), 1);
  EXPECT_EQ(sheet.edited().style.bytes[style::kDropDownCompleteAt], 1);
}

TEST_F(FormatDialogs, AFullSetOfListsRefusesANewOne) {
  DropDownLists full;
  for (DropDownList& list : full) {
    list.used = true;
    list.name = "Harbours";
  }
  DropDownEditor editor(full, frame.get());
  editor.newButton()->click();
  EXPECT_TRUE(LastAsked().contains("Too many drop-down lists in one document"));
}

TEST_F(FormatDialogs, GoToTakesOnlyAPositionOfTheRecordsFound) {
  GoToDialog dialog(1, 3, frame.get());
  Open(dialog, "go_to_dialog.png");
  EXPECT_EQ(dialog.focusWidget(), dialog.recordBox());
  EXPECT_EQ(dialog.recordBox()->selectedText(), "1");
  for (const char* typed : {"3-7", "4", "0", "two"}) {
    dialog.recordBox()->setText(typed);
    QTest::keyClick(dialog.recordBox(), Qt::Key_Return);
    EXPECT_EQ(LastAsked(), "Please enter an integer between 1 and 3.") << typed;
    EXPECT_TRUE(dialog.isVisible()) << typed;
    EXPECT_EQ(dialog.recordBox()->selectedText(), typed);
  }
  dialog.recordBox()->setText(" 3 ");
  QTest::keyClick(dialog.recordBox(), Qt::Key_Return);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.record(), 3u);

  // The menu command moves the cursor, in its field, to the record chosen.
  grid().MoveTo(1, 0);
  WithDialog<GoToDialog>(cmd::kGoTo, [](GoToDialog& go) {
    go.recordBox()->setText("2");
    go.accept();
  });
  EXPECT_EQ(grid().activePosition(), 1u);
  EXPECT_EQ(grid().activeField(), 1);
  // Escape leaves the cursor where it was.
  WithDialog<GoToDialog>(cmd::kGoTo, [](GoToDialog& go) {
    go.recordBox()->setText("3");
    QTest::keyClick(go.recordBox(), Qt::Key_Escape);
  });
  EXPECT_EQ(grid().activePosition(), 1u);
}

TEST_F(FormatDialogs, TheFormulasPaneInsertsAFunctionIntoTheExpressionWithoutApplying) {
  bool applied = false;
  FilterDialog dialog("Share", FieldType::kNumber, "2:1", frame.get());
  QObject::connect(&dialog, &FilterDialog::closedWith, [&](bool apply) { applied = apply; });
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
  EXPECT_FALSE(dialog.functionPicker()->isVisible());
  EXPECT_EQ(dialog.formulasButton()->text(), "&Formulas >");
  QTest::keyClick(dialog.formulasButton(), Qt::Key_Space);
  EXPECT_TRUE(dialog.functionPicker()->isVisible());
  EXPECT_EQ(dialog.formulasButton()->text(), "&Formulas <");
  EXPECT_EQ(dialog.focusWidget(), dialog.functionPicker()->functionList());
  dialog.grab().save(QString(KELPDEX_RENDER_DIR) + "/filter_dialog_formulas.png");

  dialog.expressionBox()->clear();
  QListWidget* functions = dialog.functionPicker()->functionList();
  ASSERT_GT(functions->count(), 0);
  const QString name = functions->currentItem()->text();
  QTest::keyClick(functions, Qt::Key_Return);
  QCoreApplication::processEvents();
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_TRUE(dialog.expressionRadio()->isChecked());
  EXPECT_EQ(dialog.expressionBox()->text(), "=" + name + "(");
  EXPECT_EQ(dialog.focusWidget(), dialog.expressionBox());
  EXPECT_EQ(QString::fromStdString(dialog.filterText()), "0:=" + name + "(");
  // The next Enter, in the Expression box, applies as always.
  QTest::keyClick(dialog.expressionBox(), Qt::Key_Return);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(applied);
}

TEST_F(FormatDialogs, ALoadedProfileTakesEffectAtOnceAndAFailedOneChangesNothing) {
  kelpdex::testing::TempDir dir;
  SessionSettings written;
  written.undoLevel = 7;
  written.fontName = "DejaVu Serif";
  written.windowShow = show::kNormal;
  written.windowLeft = 40;
  written.windowTop = 50;
  written.windowRight = 840;
  written.windowBottom = 650;
  written.recentFiles = {"C:\\boats.kdx"};
  UserFormatList formats;
  ASSERT_TRUE(formats.Add("0.0\" m\""));
  const std::string path = dir.Path("harbour.xml");
  ASSERT_TRUE(SaveProfileFile(path, written, formats, true));

  ASSERT_TRUE(LoadProfileIntoFrame(*frame, path));
  EXPECT_EQ(book.undoLevel, 7);
  EXPECT_EQ(grid().font().family(), "DejaVu Serif");
  EXPECT_EQ(frame->geometry().size(), QSize(800, 600));
  EXPECT_EQ(settings.recentFiles, written.recentFiles);
  std::vector<std::string> users = UserNumberFormats().UserFormats();
  EXPECT_NE(std::find(users.begin(), users.end(), "0.0\" m\""), users.end());
  // A pane made by a split later draws with the same font.
  ASSERT_TRUE(frame->Dispatch(cmd::kSplitTableVertical));
  EXPECT_EQ(grid().font().family(), "DejaVu Serif");

  asked.clear();
  EXPECT_FALSE(LoadProfileIntoFrame(*frame, dir.Path("missing.xml")));
  EXPECT_EQ(asked.size(), 1u);
  EXPECT_EQ(settings.undoLevel, 7);
  UserNumberFormats().ResetToBuiltIn();
}

}  // namespace
}  // namespace kelpdex::views
