// Database menu: tables and fields, through the field dialog's checks, and the table switch.
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QInputDialog>
#include <QLineEdit>
#include <QRadioButton>

#include "core/reporting.h"
#include "core/strings.h"
#include "search/run_filters.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

QString Utf8(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}
std::string CodePage(const QString& text) {
  return text::Utf8ToCp1252(text.toStdString());
}

// The field dialog: the thin form over FieldEdit; CheckField decides, the dialog stays open on a
// refusal with its message shown.
bool FieldDialog(MainFrame& frame, const TableSpec& table, FieldEdit& edit, FieldSpec& row) {
  QDialog dialog(&frame);
  dialog.setWindowTitle(edit.fieldIndex == kNewField ? "Add Field" : "Modify Field");
  auto* form = new QFormLayout(&dialog);
  auto* name = new QLineEdit(Utf8(edit.name), &dialog);
  auto* type = new QComboBox(&dialog);
  for (const char* t : {"Text", "Number", "Long Text", "Images/Files"}) type->addItem(t);
  type->setCurrentIndex(std::max(0, ComboOfFieldType(edit.type)));
  auto* link = new QCheckBox("Text / &Link", &dialog);
  link->setChecked(edit.link);
  auto* formula = new QRadioButton("&Formula", &dialog);
  auto* value = new QRadioButton("&Value", &dialog);
  (edit.isValue ? value : formula)->setChecked(true);
  auto* text = new QLineEdit(Utf8(edit.formulaOrValue), &dialog);
  form->addRow("&Name:", name);
  form->addRow("&Type:", type);
  form->addRow("", link);
  form->addRow(formula, value);
  form->addRow("Formula / Value:", text);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  form->addRow(buttons);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
    edit.name = CodePage(name->text());
    edit.type = FieldTypeOfCombo(type->currentIndex());
    edit.link = link->isChecked();
    edit.isValue = value->isChecked();
    edit.formulaOrValue = CodePage(text->text());
    FieldCheck check = CheckField(table, edit, row);
    if (!check.ok()) {
      ShowMessage(check.Text());
      type->setCurrentIndex(std::max(0, ComboOfFieldType(edit.type)));
      (check.focus == FieldFocus::kFormula ? text
       : check.focus == FieldFocus::kType  ? static_cast<QWidget*>(type)
                                           : name)
          ->setFocus();
      return;
    }
    dialog.accept();
  });
  return dialog.exec() == QDialog::Accepted;
}

bool TableNameDialog(MainFrame& frame, const char* title, std::string& name,
                     const Worksheet* current) {
  for (;;) {
    bool ok = false;
    QString typed =
        QInputDialog::getText(&frame, title, "&Name:", QLineEdit::Normal, Utf8(name), &ok);
    if (!ok) return false;
    name = CodePage(typed.trimmed());
    switch (CheckTableName(frame.book(), name, current)) {
      case TableNameCheck::kOk:
        return true;
      case TableNameCheck::kDuplicate:
        AskText(FormatString(157), mb::kOk | mb::kIconExclamation);
        break;
      case TableNameCheck::kReserved:
        ShowMessage(kReservedTableNameText);
        break;
      case TableNameCheck::kInvalid:
        QApplication::beep();
        break;
    }
  }
}

}  // namespace

void RunTableCommand(MainFrame& frame, uint16_t id) {
  Workbook& book = frame.book();
  GridView& grid = frame.grid();
  TableSpec table;
  if (!CurrentTable(book, table)) return;
  UndoContext context = grid.Context();
  const uint16_t current = grid.activeField();
  bool ok = true;
  bool tables = false;
  switch (id) {
    case cmd::kAddTable: {
      std::string name;
      if (!TableNameDialog(frame, "Add Table", name, nullptr)) return;
      grid.StoreState();
      ok = AddTable(book, name, context);
      tables = true;
      break;
    }
    case cmd::kRenameTable: {
      std::string name(book.currentSheet->Name());
      if (!TableNameDialog(frame, "Rename Table", name, book.currentSheet)) return;
      ok = RenameTable(book, name, context);
      tables = true;
      break;
    }
    case cmd::kDeleteTable: {
      DeleteTableResult result = DeleteTable(book, nullptr, context);
      if (result == DeleteTableResult::kCancelled) return;
      ok = result == DeleteTableResult::kDeleted;
      tables = true;
      break;
    }
    case cmd::kAddField:
    case cmd::kInsertField:
    case cmd::kModifyField: {
      FieldEdit edit = id == cmd::kModifyField ? EditOfField(table, current) : FieldEdit();
      FieldSpec row;
      if (!FieldDialog(frame, table, edit, row)) return;
      if (id == cmd::kModifyField) {
        ok = ModifyField(book, current, row, context);
      } else {
        uint16_t at = id == cmd::kAddField ? FieldCount(table) : current;
        ok = InsertField(book, at, row, context);
      }
      break;
    }
    case cmd::kDeleteField:
      ok = DeleteField(book, current, context);
      break;
    case cmd::kMoveFieldLeft:
    case cmd::kMoveFieldRight: {
      int other = id == cmd::kMoveFieldLeft ? current - 1 : current + 1;
      ok = SwapFields(book, current, other, context);
      if (ok && other >= 0 && other < grid.fieldCount()) {
        grid.MoveTo(other, grid.activePosition());
      }
      break;
    }
    case cmd::kNextTable:
    case cmd::kPreviousTable: {
      grid.StoreState();
      bool moved = id == cmd::kNextTable ? NextTable(book) : PreviousTable(book);
      if (!moved) return QApplication::beep();
      frame.SearchCurrentTable();
      frame.RebuildForTable(false);
      return;
    }
    default:
      return;
  }
  if (!ok) {
    ShowError(book.errorCode);
    return;
  }
  frame.session().MarkModified(true);
  // A schema change leaves the record set in row order; the filters and sort come back.
  frame.SearchCurrentTable();
  grid.StoreState();
  frame.RebuildForTable(tables);
}

}  // namespace kelpdex::views
