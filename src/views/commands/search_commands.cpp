// Tools menu's searching: the field filter (the plain form of the filter dialog), the search
// keys, the sort order, and the record sets of Remove All Filters, Find Duplicates and Find
// Complement.
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <functional>

#include "core/reporting.h"
#include "core/strings.h"
#include "search/filter_dialog_model.h"
#include "search/filter_text.h"
#include "search/record_sets.h"
#include "search/run_filters.h"
#include "search/search_keys.h"
#include "search/sort_keys.h"
#include "store/catalogue.h"
#include "store/field_row.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/dialogs/name_dialog.h"
#include "views/dialogs/sort_order_dialog.h"
#include "views/frame/main_frame.h"
#include "views/frame/status_progress.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

QString Utf8(std::string_view codePage) {
  return QString::fromUtf8(text::Cp1252ToUtf8(codePage));
}
std::string CodePage(const QString& text) {
  return text::Utf8ToCp1252(text.toStdString());
}

// The filter dialog's widgets over its model; false on Cancel.
bool FilterDialog(MainFrame& frame, const TableSpec& table, uint16_t field, std::string& filter) {
  FieldSpec spec;
  if (!ReadField(table, field, spec)) return false;
  FilterDialogModel model(spec.name, spec.type, GetKeyFilterText(table, 0, field));
  QDialog dialog(&frame);
  dialog.setWindowTitle("Set Search Filter");
  auto* form = new QFormLayout(&dialog);
  auto* search = new QRadioButton(Utf8(model.Heading()), &dialog);
  auto* op = new QComboBox(&dialog);
  auto* text = new QLineEdit(Utf8(model.searchText()), &dialog);
  auto* expressionSide = new QRadioButton("&Expression:", &dialog);
  auto* expression = new QLineEdit(Utf8(model.expression()), &dialog);
  if (!model.textOnly()) {
    for (const char* name : kFilterOperatorNames) op->addItem(name);
    if (model.operatorIndex() >= 0) op->setCurrentIndex(model.operatorIndex());
    form->addRow(search);
    form->addRow(op, text);
    form->addRow(expressionSide, expression);
    (model.side() == FilterDialogModel::Side::kSearch ? search : expressionSide)->setChecked(true);
  } else {
    form->addRow(new QLabel(Utf8(model.Heading()), &dialog));
    form->addRow(text);
  }
  model.OnExpressionPreview([&](const std::string& shown) { expression->setText(Utf8(shown)); });
  QObject::connect(text, &QLineEdit::textEdited, &dialog, [&](const QString& t) {
    model.SetSearchText(CodePage(t));
    search->setChecked(true);
  });
  QObject::connect(op, &QComboBox::activated, &dialog, [&](int i) {
    model.SetOperator(i);
    search->setChecked(true);
  });
  QObject::connect(expression, &QLineEdit::textEdited, &dialog, [&](const QString& t) {
    model.SetExpressionText(CodePage(t));
    expressionSide->setChecked(true);
  });
  QObject::connect(search, &QRadioButton::toggled, &dialog, [&](bool on) {
    model.SetSide(on ? FilterDialogModel::Side::kSearch : FilterDialogModel::Side::kExpression);
  });
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  form->addRow(buttons);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  if (dialog.exec() != QDialog::Accepted) return false;
  filter = model.FilterText();
  return true;
}

bool SortDialog(MainFrame& frame, const TableSpec& table) {
  SortOrderDialogModel model(table);
  SortOrderDialog dialog(model, &frame);
  if (dialog.exec() != QDialog::Accepted) return false;
  if (!model.Apply(table)) {
    ShowError(frame.book().errorCode);
    return false;
  }
  return true;
}

// The key dialog runs the key command itself on OK: a name clash and an empty name keep it open.
KeyResult KeyNameDialog(MainFrame& frame, const char* title, const std::string& name,
                        const std::function<KeyResult(const std::string&)>& command) {
  KeyResult result = KeyResult::kEmptyName;
  NameDialog dialog(
      title, name, 1024,
      [&](const std::string& typed) {
        result = command(typed);
        if (result == KeyResult::kNameExists) {
          AskText(FormatString(159), mb::kOk | mb::kIconExclamation);
          return false;
        }
        if (result == KeyResult::kEmptyName) {
          QApplication::beep();
          return false;
        }
        return true;
      },
      &frame);
  return dialog.exec() == QDialog::Accepted ? result : KeyResult::kEmptyName;
}

// After filters, keys or the sort changed: the search runs again and the grid follows.
void Research(MainFrame& frame) {
  LongWork work(frame.progress());
  if (!RunSearch(frame.book())) ShowError(frame.book().errorCode);
  frame.session().MarkModified(true);
  frame.grid().StoreState();
  frame.RebuildForTable(false);
}

void Key(MainFrame& frame, KeyResult result) {
  switch (result) {
    case KeyResult::kDone:
      return Research(frame);
    case KeyResult::kNameExists:
      AskText(FormatString(159), mb::kOk | mb::kIconExclamation);
      return;
    case KeyResult::kFailed:
      ShowError(frame.book().errorCode);
      return;
    default:
      QApplication::beep();
      return;
  }
}

}  // namespace

void RunSearchCommand(MainFrame& frame, uint16_t id) {
  Workbook& book = frame.book();
  GridView& grid = frame.grid();
  TableSpec table;
  if (!CurrentTable(book, table)) return;
  const GridSelection s = grid.selection();
  const bool shift = QApplication::keyboardModifiers() & Qt::ShiftModifier;
  switch (id) {
    case cmd::kSetSearchFilter:
    case cmd::kSearchToolbar: {
      std::string filter;
      if (!FilterDialog(frame, table, grid.activeField(), filter)) return;
      if (!SetFieldFilter(table, grid.activeField(), filter)) {
        return ShowError(book.errorCode);
      }
      return Research(frame);
    }
    case cmd::kRemoveAllFilters:
    case cmd::kFindDuplicates:
    case cmd::kFindComplement: {
      LongWork work(frame.progress());
      bool ok = id == cmd::kRemoveAllFilters ? RemoveAllFilters(table, book.records)
                : id == cmd::kFindDuplicates
                    ? FindDuplicates(table, book.records, s.firstField, s.lastField)
                    : FindComplement(table, book.records);
      if (!ok) return;  // out of memory leaves the set as it was, without a word
      frame.session().MarkModified(true);
      grid.StoreState();
      return frame.RebuildForTable(false);
    }
    case cmd::kSort:
      if (SortDialog(frame, table)) Research(frame);
      return;
    case cmd::kAscending:
    case cmd::kDescending: {
      ErrorCode code =
          SortByFields(table, s.firstField, s.lastField, id == cmd::kDescending, shift);
      if (code != err::kNone) ShowError(code);
      return Research(frame);
    }
    case cmd::kNoSorting:
      if (!RemoveSortKeys(table, s.firstField, s.lastField)) return ShowError(book.errorCode);
      return Research(frame);
    case 33077: {
      KeyResult result = KeyNameDialog(frame, "Add New Search Key", {}, [&](const std::string& n) {
        return AddSearchKey(table, n);
      });
      if (result != KeyResult::kEmptyName) Key(frame, result);
      return;
    }
    case 33078:
    case 33079: {
      std::vector<std::string> names = SearchKeyNames(table);
      QStringList list;
      for (size_t i = 1; i < names.size(); ++i) list << Utf8(names[i]);
      if (list.isEmpty()) return QApplication::beep();
      bool ok = false;
      QString chosen = QInputDialog::getItem(&frame, "Search Key", "&Key:", list, 0, false, &ok);
      if (!ok) return;
      int index = FindSearchKey(table, CodePage(chosen));
      if (id == 33078) return Key(frame, DeleteSearchKey(table, static_cast<uint16_t>(index)));
      KeyResult result =
          KeyNameDialog(frame, "Rename Search Key", CodePage(chosen), [&](const std::string& n) {
            return RenameSearchKey(table, static_cast<uint16_t>(index), n);
          });
      if (result != KeyResult::kEmptyName) Key(frame, result);
      return;
    }
    default:
      return;
  }
}

}  // namespace kelpdex::views
