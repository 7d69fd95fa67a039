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

#include "exchange/xbase_field_lines.h"
#include "frame_fixture.h"
#include "search/search_keys.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "views/dialogs/field_dialog.h"
#include "views/dialogs/filter_dialog.h"
#include "views/dialogs/name_dialog.h"
#include "views/dialogs/new_database_wizard.h"
#include "views/dialogs/options_dialog.h"
#include "views/dialogs/protection_dialog.h"
#include "views/dialogs/sort_order_dialog.h"
#include "views/dialogs/text_file_dialog.h"
#include "views/dialogs/xbase_field_dialog.h"

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

TEST_F(Dialogs, TextFileDialogNamesTheWrongChoiceAndKeepsTheOptionsUntilAllHold) {
  TextFileOptions options;
  {
    TextFileDialog save(TextFileDialog::Direction::kExport, options, frame.get());
    Open(save, "text_export_dialog.png");
    EXPECT_EQ(save.windowTitle(), "Save Text File");
    EXPECT_EQ(save.conversionList(), nullptr);
  }
  TextFileDialog dialog(TextFileDialog::Direction::kImport, options, frame.get());
  Open(dialog, "text_import_dialog.png");
  EXPECT_EQ(dialog.windowTitle(), "Open Text File");
  EXPECT_EQ(dialog.focusWidget(), dialog.separatorList());
  EXPECT_EQ(dialog.separatorList()->currentText(), "comma");
  EXPECT_FALSE(dialog.otherSeparator()->isEnabled());
  EXPECT_FALSE(dialog.widthsBox()->isEnabled());

  dialog.separatorList()->setCurrentIndex(5);  // other
  EXPECT_TRUE(dialog.otherSeparator()->isEnabled());
  dialog.accept();
  EXPECT_EQ(LastAsked(), "Type the separator character in the box beside the list.");
  EXPECT_EQ(dialog.focusWidget(), dialog.otherSeparator());
  EXPECT_TRUE(dialog.isVisible());

  dialog.widthsChoice()->setChecked(true);
  EXPECT_FALSE(dialog.separatorList()->isEnabled());
  dialog.widthsBox()->setText("10,x,4");
  dialog.accept();
  EXPECT_EQ(LastAsked(),
            "The field widths are whole numbers from 1 to 65535, separated by commas.");
  EXPECT_EQ(dialog.focusWidget(), dialog.widthsBox());
  dialog.widthsBox()->setText("10,6,4");
  dialog.quoteBox()->setText("*");
  dialog.accept();
  EXPECT_EQ(LastAsked(), "The quote is \" or '.");
  EXPECT_EQ(dialog.focusWidget(), dialog.quoteBox());
  EXPECT_EQ(options.quote, '"');  // nothing taken while a choice is wrong
  EXPECT_FALSE(options.fixedWidths);

  dialog.quoteBox()->setText("'");
  dialog.encodingList()->setCurrentIndex(2);
  dialog.conversionList()->setCurrentIndex(1);
  dialog.headerBox()->setChecked(true);
  dialog.accept();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(options.fixedWidths);
  EXPECT_EQ(options.widths[1], 6);
  EXPECT_EQ(options.widths[3], 0);
  EXPECT_EQ(options.quote, '\'');
  EXPECT_EQ(options.encoding, TextEncoding::kOem);
  EXPECT_TRUE(options.numbers);
  EXPECT_TRUE(options.headerLine);
  // The next dialog starts from them.
  TextFileDialog again(TextFileDialog::Direction::kImport, options, frame.get());
  EXPECT_TRUE(again.widthsChoice()->isChecked());
  EXPECT_EQ(again.widthsBox()->text(), "10,6,4");
  EXPECT_EQ(again.focusWidget(), again.widthsBox());
}

TEST_F(Dialogs, XbaseFieldDialogEditsTheExportFieldsAndShowsAnImportsSummary) {
  XbaseHeader header;
  std::vector<XbaseExportField> fields;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(BuildXbaseHeader(book, header, XbaseDialect::kDbase4, &fields, error));
  ASSERT_EQ(fields.size(), 3u);
  XbaseFieldDialog dialog(fields, false, frame.get());
  Open(dialog, "xbase_export_dialog.png");
  EXPECT_EQ(dialog.windowTitle(), "xBase Field Definition");
  EXPECT_EQ(dialog.fieldList()->item(1)->text(), "2.  Length [Float: 20]");
  EXPECT_EQ(dialog.focusWidget(), dialog.fieldList());
  dialog.fieldList()->setCurrentRow(1);
  EXPECT_EQ(dialog.nameBox()->text(), "Length");
  dialog.typeList()->setCurrentIndex(1);  // Numeric
  dialog.lengthBox()->setValue(9);
  dialog.decimalsBox()->setValue(2);
  EXPECT_EQ(dialog.fieldList()->item(1)->text(), "2.  Length [Numeric: 9/2]");
  dialog.fieldList()->setCurrentRow(0);
  dialog.typeList()->setCurrentIndex(4);  // Date takes its own length
  EXPECT_EQ(dialog.lengthBox()->value(), 8);
  EXPECT_FALSE(dialog.lengthBox()->isEnabled());
  dialog.nameBox()->setText("LENGTH");
  dialog.accept();
  EXPECT_EQ(LastAsked(), "Two fields have the name Length.");
  EXPECT_TRUE(dialog.isVisible());
  dialog.nameBox()->setText("");
  QTest::keyClicks(dialog.nameBox(), "Length");
  dialog.accept();
  EXPECT_EQ(LastAsked(), "Two fields have the name Length.");
  EXPECT_EQ(dialog.fieldList()->currentRow(), 1);
  EXPECT_EQ(dialog.focusWidget(), dialog.nameBox());
  EXPECT_EQ(fields[1].field.type, 'F');  // nothing taken yet
  dialog.nameBox()->selectAll();
  QTest::keyClicks(dialog.nameBox(), "Size");
  dialog.oemBox()->setChecked(true);
  dialog.accept();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(fields[0].field.type, 'D');
  EXPECT_EQ(fields[0].field.length, 8);
  EXPECT_EQ(fields[1].field.name, "Size");
  EXPECT_EQ(fields[1].field.type, 'N');
  EXPECT_EQ(fields[1].field.decimals, 2);
  EXPECT_TRUE(dialog.oem());

  header.recordCount = 3;
  header.year = 125;
  header.month = 11;
  header.day = 2;
  std::vector<XbaseField> read;
  for (const XbaseExportField& f : fields) read.push_back(f.field);
  XbaseFieldDialog import(XbaseSummaryLine(header), read, true, frame.get());
  Open(import, "xbase_import_dialog.png");
  EXPECT_EQ(import.nameBox(), nullptr);
  EXPECT_EQ(import.fieldList()->count(), 3);
  EXPECT_EQ(import.fieldList()->item(0)->text(), "1.  LENGTH [Date: 8]");
  EXPECT_TRUE(
      import.findChild<QLabel*>()->text().startsWith("Summary: 3 record(s), updated on "
                                                     "2025/11/2"));
  EXPECT_TRUE(import.oem());
}

// The dialogs stand between the lifecycle and the foreign files: Save As text asks for the
// options, and a spreadsheet without catalogues is offered as tables.
TEST_F(Dialogs, ForeignFilesAskThroughTheirDialogs) {
  Put(0, 0, "Kelp; Fast");
  Put(0, 1, "12");
  kelpdex::testing::TempDir dir;
  int shown = 0;
  frame->exchangeDialogs().script = [&](QDialog& dialog) {
    ++shown;
    auto* text = qobject_cast<TextFileDialog*>(&dialog);
    if (text == nullptr) return false;
    text->separatorList()->setCurrentIndex(3);  // semicolon
    text->headerBox()->setChecked(true);
    text->accept();
    return text->result() == QDialog::Accepted;
  };
  std::string csv = dir.Path("boats.csv");
  ASSERT_TRUE(frame->session().WriteDocument(&csv, DocumentKind::kText, NativeFormat::kXml));
  EXPECT_EQ(shown, 1);
  EXPECT_EQ(kelpdex::testing::ReadFileBytes(csv), "Name;Length;Log\r\n\"Kelp; Fast\";12\r\n");
  // Cancel writes nothing.
  std::string other = dir.Path("other.csv");
  frame->exchangeDialogs().script = [&](QDialog&) { return false; };
  EXPECT_FALSE(frame->session().WriteDocument(&other, DocumentKind::kText, NativeFormat::kXml));
  EXPECT_FALSE(platform::FileExists(other));

  std::string sheet = dir.Write(
      "crew.xml",
      "<?xml version=\"1.0\"?>\n<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\" "
      "xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\">\n<Worksheet ss:Name=\"Crew\">"
      "<Table><Row><Cell><Data ss:Type=\"String\">Name</Data></Cell></Row><Row><Cell><Data "
      "ss:Type=\"String\">Ann</Data></Cell></Row></Table></Worksheet>\n</Workbook>\n");
  nextAnswer = answer::kYes;
  ASSERT_TRUE(frame->session().OpenDocument(sheet, DocumentKind::kExcelXml));
  EXPECT_TRUE(
      LastAsked().startsWith("The file crew.xml holds worksheets but no Kelpdex database."));
  EXPECT_NE(book.FindTable("Crew"), nullptr);
}

}  // namespace
}  // namespace kelpdex::views
