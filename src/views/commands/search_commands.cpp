// Tools menu's searching: the field's floating filter dialog, the search keys, the sort order, and
// the record sets of Remove All Filters, Find Duplicates and Find Complement.
#include <QApplication>
#include <QDialog>
#include <QInputDialog>
#include <QPointer>
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
#include "views/dialogs/filter_dialog.h"
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

// The filter dialog floats under the field's header cell and reports when it closes: the filter
// it shows is stored either way, and the search runs again unless it was cancelled.
void OpenFilterDialog(MainFrame& frame, const TableSpec& table, uint16_t field) {
  if (frame.filterDialog) frame.filterDialog->close();
  FieldSpec fieldRow;
  if (field >= frame.grid().fieldCount() || !ReadField(table, field, fieldRow)) return;
  auto* dialog =
      new FilterDialog(fieldRow.name, fieldRow.type, GetKeyFilterText(table, 0, field), &frame);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  GridView& grid = frame.grid();
  int left = 0;
  for (int i = 0; i < grid.columns().count; ++i) {
    if (grid.columns().spans[i].field == field) left = grid.columns().spans[i].left;
  }
  dialog->move(grid.viewport()->mapToGlobal(QPoint(left, kHeaderHeight)));
  QObject::connect(dialog, &FilterDialog::closedWith, &frame, [&frame, field, dialog](bool apply) {
    Workbook& book = frame.book();
    TableSpec current;
    if (!CurrentTable(book, current)) return;
    if (!SetFieldFilter(current, field, dialog->filterText())) return ShowError(book.errorCode);
    if (apply) return Research(frame);
    // Kept but not searched: the header shows the filter that waits.
    frame.session().MarkModified(true);
    frame.grid().Refresh();
  });
  frame.filterDialog = dialog;
  dialog->show();
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
    case cmd::kSearchToolbar:
      return OpenFilterDialog(frame, table, grid.activeField());
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
