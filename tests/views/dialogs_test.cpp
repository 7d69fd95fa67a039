// The dialogs driven through their controls: the messages they show in the situations that call
// for them, where the focus lands, and what reaches the document. Each is also rendered to a PNG.
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTimer>

#include "frame_fixture.h"
#include "search/search_keys.h"
#include "views/dialogs/field_dialog.h"
#include "views/dialogs/filter_dialog.h"
#include "views/dialogs/name_dialog.h"
#include "views/dialogs/new_database_wizard.h"
#include "views/dialogs/options_dialog.h"
#include "views/dialogs/protection_dialog.h"
#include "views/dialogs/sort_order_dialog.h"

namespace kelpdex::views {
namespace {

using testing::Field;

class Dialogs : public testing::FrameTest {
 protected:
  void SetUp() override {
    FrameTest::SetUp();
    MakeTable("Boats", {Field("Name", FieldType::kText), Field("Length", FieldType::kNumber),
                        Field("Log", FieldType::kLongText)});
    Show();
    ASSERT_TRUE(CurrentTable(book, table));
  }
  // Shows the dialog as the user gets it and keeps its picture. Where the focus lands is read
  // from the dialog's own focus child: the offscreen platform leaves the frame the active
  // window.
  void Open(QDialog& dialog, const char* png) {
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    QDir().mkpath(KELPDEX_RENDER_DIR);
    EXPECT_TRUE(dialog.grab().save(QString(KELPDEX_RENDER_DIR) + "/" + png));
  }
  void Save(QWidget& widget, const char* png) {
    EXPECT_TRUE(widget.grab().save(QString(KELPDEX_RENDER_DIR) + "/" + png));
  }
  QString LastAsked() const { return asked.empty() ? QString() : asked.back(); }
  TableSpec table;
};

TEST_F(Dialogs, FieldDialogChecksInOrderAndPutsTheFocusWhereTheyPoint) {
  FieldEdit edit;
  FieldDialog dialog(table, edit, frame.get());
  Open(dialog, "field_dialog.png");
  EXPECT_EQ(dialog.focusWidget(), dialog.nameBox());
  dialog.nameBox()->setText("9lives");
  dialog.formulaBox()->setFocus();
  dialog.accept();
  EXPECT_EQ(LastAsked(), "Please enter a valid field name starting with a letter.");
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.focusWidget(), dialog.nameBox());
  dialog.nameBox()->setText("length  ");
  dialog.accept();
  EXPECT_EQ(LastAsked(),
            "A field with that name already exists. Please enter a unique field name.");
  EXPECT_TRUE(dialog.isVisible());

  // "-- Insert Field --" writes a name into the formula and goes back to its first entry; the
  // function picker adds a function with its parenthesis and shows its help.
  dialog.valueRadio()->setChecked(true);
  dialog.insertFieldList()->setCurrentIndex(2);
  emit dialog.insertFieldList()->activated(2);
  EXPECT_EQ(dialog.formulaBox()->text(), "=Length");
  EXPECT_TRUE(dialog.formulaRadio()->isChecked());
  EXPECT_EQ(dialog.insertFieldList()->currentIndex(), 0);
  EXPECT_EQ(dialog.insertFieldList()->itemText(0), "-- Insert Field --");
  ASSERT_GT(dialog.functionList()->count(), 0);
  QString function = dialog.functionList()->item(0)->text();
  dialog.functionList()->setCurrentRow(0);
  EXPECT_TRUE(dialog.helpText()->text().contains(function, Qt::CaseInsensitive));
  QTest::keyClick(dialog.functionList(), Qt::Key_Return);
  EXPECT_EQ(dialog.formulaBox()->text(), "=Length" + function + "(");
  // A category lists its own functions.
  int before = dialog.functionList()->count();
  dialog.categoryList()->setCurrentIndex(dialog.categoryList()->count() - 1);
  EXPECT_NE(dialog.functionList()->item(0)->text(), function);
  EXPECT_GT(before + dialog.functionList()->count(), 0);

  dialog.nameBox()->setText("Width");
  dialog.formulaBox()->setText("=Length/4");
  dialog.accept();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(dialog.fieldRow().name, "Width");
  EXPECT_EQ(dialog.fieldRow().formulaOrValue, "F:=Length/4");
}

TEST_F(Dialogs, ModifyingALongTextFieldIntoAnotherTypeIsRefused) {
  FieldEdit edit = EditOfField(table, 2);
  FieldDialog dialog(table, edit, frame.get());
  Open(dialog, "modify_field_dialog.png");
  EXPECT_EQ(dialog.windowTitle(), "Modify Field");
  dialog.typeBox()->setCurrentIndex(1);
  dialog.accept();
  EXPECT_TRUE(LastAsked().startsWith("Sorry, this type of conversion is not available."));
  EXPECT_EQ(dialog.typeBox()->currentText(), "Long Text");
  EXPECT_TRUE(dialog.isVisible());
}

TEST_F(Dialogs, TableAndKeyNamesMustBeUnique) {
  ASSERT_TRUE(CreateTable(book, "Crew"));
  NameDialog dialog(
      "Add New Table", {}, 127,
      [this](const std::string& name) { return CheckTableNameAnswer(book, name, nullptr); },
      frame.get());
  Open(dialog, "add_table_dialog.png");
  QTest::keyClicks(dialog.nameBox(), "crew ");
  QTest::keyClick(dialog.nameBox(), Qt::Key_Return);
  EXPECT_EQ(LastAsked(), "A table with that name already exists. Please enter a unique name.");
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(dialog.nameBox()->selectedText(), "crew ");
  QTest::keyClicks(dialog.nameBox(), "Harbours  ");
  QTest::keyClick(dialog.nameBox(), Qt::Key_Return);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.name(), "Harbours");

  // Add Search Key through the command: "Default" clashes, and the dialog stays for a new name.
  bool clashed = false;
  QTimer::singleShot(0, [&] {
    auto* keys = qobject_cast<NameDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(keys, nullptr);
    EXPECT_EQ(keys->windowTitle(), "Add New Search Key");
    keys->nameBox()->setText("DEFAULT");
    keys->accept();
    clashed = keys->isVisible() &&
              LastAsked() == "A key with that name already exists. Please enter a unique key name.";
    keys->nameBox()->setText("Long boats");
    keys->accept();
  });
  ASSERT_TRUE(frame->Dispatch(33077));
  EXPECT_TRUE(clashed);
  EXPECT_EQ(FindSearchKey(table, "Long boats"), 1);
}

TEST_F(Dialogs, SortOrderReadsBackAsChosen) {
  SortOrderDialogModel model(table);
  {
    SortOrderDialog dialog(model, frame.get());
    Open(dialog, "sort_order_dialog.png");
    EXPECT_EQ(dialog.fieldList(0)->itemText(0), "Select a field");
    // Rows 1 and 3 filled, row 2 left empty.
    dialog.fieldList(0)->setCurrentIndex(2);
    dialog.descending(0)->setChecked(true);
    dialog.fieldList(2)->setCurrentIndex(1);
    dialog.ascending(2)->setChecked(true);
    dialog.accept();
  }
  ASSERT_TRUE(model.Apply(table));
  SortOrderDialogModel again(table);
  SortOrderDialog dialog(again, frame.get());
  EXPECT_EQ(dialog.fieldList(0)->currentText(), "Length");
  EXPECT_TRUE(dialog.descending(0)->isChecked());
  EXPECT_EQ(dialog.fieldList(1)->currentText(), "Name");
  EXPECT_TRUE(dialog.ascending(1)->isChecked());
  EXPECT_EQ(dialog.fieldList(2)->currentIndex(), 0);
}

TEST_F(Dialogs, ProtectionNeedsSixCharactersTypedTwiceExactly) {
  ProtectionAnswers answers;
  ProtectionDialog dialog(answers, frame.get());
  Open(dialog, "protection_dialog.png");
  EXPECT_FALSE(dialog.passwordBox()->isEnabled());
  dialog.passwordProtection()->setChecked(true);
  EXPECT_TRUE(dialog.passwordBox()->isEnabled());
  dialog.passwordBox()->setText("kelp5");
  dialog.confirmationBox()->setText("kelp5");
  dialog.confirmationBox()->setFocus();
  dialog.accept();
  EXPECT_EQ(LastAsked(), "Please enter at least 6 characters as a password.");
  EXPECT_EQ(dialog.focusWidget(), dialog.passwordBox());
  EXPECT_EQ(dialog.passwordBox()->selectedText(), "kelp5");
  dialog.passwordBox()->setText("kelp55");
  dialog.confirmationBox()->setText("Kelp55");
  dialog.accept();
  EXPECT_EQ(LastAsked(), "The entered passwords do not match. Please re-type your password.");
  EXPECT_TRUE(dialog.isVisible());
  // The read-only copy is asked about first; No keeps the dialog.
  dialog.confirmationBox()->setText("kelp55");
  dialog.allowReadOnly()->setChecked(true);
  nextAnswer = answer::kNo;
  dialog.accept();
  EXPECT_TRUE(LastAsked().startsWith("The protection option you've selected will allow anyone"));
  EXPECT_TRUE(dialog.isVisible());
  nextAnswer = answer::kYes;
  dialog.accept();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(answers.protect);
  EXPECT_TRUE(answers.allowReadOnly);
  EXPECT_EQ(answers.password.view(), "kelp55");

  OpenPasswordDialog open("/tmp/boats.kpx", true, frame.get());
  Open(open, "open_password_dialog.png");
  EXPECT_EQ(open.focusWidget(), open.passwordBox());
  ASSERT_NE(open.readOnlyButton(), nullptr);
  open.readOnlyButton()->click();
  EXPECT_EQ(open.choice(), PasswordChoice::kReadOnly);
}

TEST_F(Dialogs, OptionsStoreOnlyOnOk) {
  settings.autoCloseMinutes = 7;  // from a profile, off the list's steps
  {
    OptionsDialog dialog(settings, frame.get());
    Open(dialog, "options_dialog.png");
    EXPECT_EQ(dialog.autoClose()->currentText(), "After 7 mins (of inactivity)");
    EXPECT_EQ(dialog.autoSave()->currentText(), "Never");
    dialog.undoLevel()->setValue(5);
    dialog.reject();
  }
  EXPECT_EQ(settings.undoLevel, 20);
  OptionsDialog dialog(settings, frame.get());
  dialog.undoLevel()->setValue(5);
  dialog.autoSave()->setCurrentIndex(dialog.autoSave()->findText("After 1 min"));
  dialog.enterAction()->setCurrentIndex(3);
  dialog.fileFormat()->setCurrentIndex(2);
  dialog.wrapText()->setChecked(false);
  dialog.accept();
  EXPECT_EQ(settings.undoLevel, 5);
  EXPECT_EQ(settings.autoSaveMinutes, 1);
  EXPECT_EQ(settings.autoCloseMinutes, 7);
  EXPECT_EQ(settings.whenEnterPressed, 3);
  EXPECT_EQ(settings.defaultFileFormat, NativeFormat::kBinary);
  EXPECT_FALSE(settings.wrapTextInMemoFields);
  EXPECT_TRUE(settings.fontName.empty());
}

TEST_F(Dialogs, FilterDialogPreviewsItsFormulaAndAppliesAsItCloses) {
  Put(0, 0, "Skiff");
  Put(1, 0, "Sloop");
  Put(2, 0, "Skiff");
  Put(0, 1, "5");
  ASSERT_TRUE(frame->SearchCurrentTable());
  frame->RebuildForTable(false);
  ASSERT_EQ(book.records.count(), 3u);
  grid().MoveTo(0, 0);
  ASSERT_TRUE(frame->Dispatch(33113));
  auto* filter = qobject_cast<FilterDialog*>(frame->filterDialog.data());
  ASSERT_NE(filter, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(filter));
  EXPECT_EQ(filter->searchRadio()->text(), "&Search 'Name' for:");
  EXPECT_EQ(filter->operatorList()->currentText(), "Equal");
  // Typing re-expands the filter into the Expression box as a preview.
  QTest::keyClicks(filter->searchBox(), "Skiff");
  EXPECT_TRUE(filter->expressionBox()->text().contains("Skiff"));
  EXPECT_TRUE(filter->searchRadio()->isChecked());
  QDir().mkpath(KELPDEX_RENDER_DIR);
  EXPECT_TRUE(filter->grab().save(QString(KELPDEX_RENDER_DIR) + "/filter_dialog.png"));
  // Enter closes and applies: the search runs again with the filter.
  QTest::keyClick(filter->searchBox(), Qt::Key_Return);
  QApplication::processEvents();
  EXPECT_TRUE(frame->filterDialog.isNull());
  EXPECT_EQ(book.records.count(), 2u);
  EXPECT_FALSE(GetKeyFilterText(table, 0, 0).empty());

  // Cancel keeps the filter it shows but leaves the records as they are.
  grid().MoveTo(1, 0);
  ASSERT_TRUE(frame->Dispatch(33113));
  filter = qobject_cast<FilterDialog*>(frame->filterDialog.data());
  ASSERT_NE(filter, nullptr);
  QTest::keyClicks(filter->expressionBox(), "=Length>4");
  EXPECT_TRUE(filter->expressionRadio()->isChecked());
  QTest::keyClick(filter->expressionBox(), Qt::Key_Escape);
  QApplication::processEvents();
  EXPECT_EQ(GetKeyFilterText(table, 0, 1), "0:=Length>4");
  EXPECT_EQ(book.records.count(), 2u);

  // A Long Text field gets the one text box, with its options shown off.
  FilterDialog text("Log", FieldType::kLongText, "", frame.get());
  EXPECT_EQ(text.searchRadio(), nullptr);
  QTest::keyClicks(text.searchBox(), "storm");
  EXPECT_EQ(text.filterText(), "0:storm");
}

TEST_F(Dialogs, NewDatabaseWizardChecksEachPageBeforeItGoesOn) {
  NewDatabaseAnswers answers;
  NewDatabaseWizard wizard(answers, frame.get());
  Open(wizard, "new_database_wizard.png");
  EXPECT_EQ(wizard.windowTitle(), "New Database - Table");
  wizard.tableBox()->setText("System");
  wizard.next();
  EXPECT_EQ(wizard.currentId(), 0);
  EXPECT_FALSE(LastAsked().isEmpty());
  wizard.tableBox()->setText("Fleet ");
  wizard.next();
  ASSERT_EQ(wizard.currentId(), 1);
  EXPECT_EQ(wizard.windowTitle(), "New Database - Fields");
  // Each field passes the field dialog's checks, among the fields listed before it too.
  QTest::keyClicks(wizard.fieldNameBox(), "Hull");
  QTest::keyClick(wizard.fieldNameBox(), Qt::Key_Return);
  wizard.fieldNameBox()->setText("hull");
  wizard.addFieldButton()->click();
  EXPECT_EQ(LastAsked(),
            "A field with that name already exists. Please enter a unique field name.");
  wizard.fieldNameBox()->setText("Crew");
  wizard.fieldTypeBox()->setCurrentIndex(1);
  wizard.next();  // the name still typed is added on the way
  ASSERT_EQ(wizard.currentId(), 2);
  EXPECT_EQ(wizard.fieldList()->count(), 2);
  EXPECT_EQ(wizard.fieldList()->item(1)->text(), "Crew (Number)");
  Save(wizard, "new_database_wizard_file.png");
  wizard.fileBox()->setText("/tmp/fleet.kpx");
  wizard.accept();
  EXPECT_EQ(answers.tableName, "Fleet");
  ASSERT_EQ(answers.fields.size(), 2u);
  EXPECT_EQ(answers.fields[0].name, "Hull");
  EXPECT_EQ(answers.fields[1].type, FieldType::kNumber);
  EXPECT_EQ(answers.path, "/tmp/fleet.kpx");
}

}  // namespace
}  // namespace kelpdex::views
