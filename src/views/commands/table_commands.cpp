// Database menu: tables and fields, through the field dialog's checks, and the table switch.
#include <QApplication>
#include <QDialog>

#include "core/reporting.h"
#include "core/strings.h"
#include "search/run_filters.h"
#include "store/catalogue.h"
#include "table/schema.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/dialogs/field_dialog.h"
#include "views/dialogs/name_dialog.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

bool TableNameDialog(MainFrame& frame, const char* title, std::string& name,
                     const Worksheet* current) {
  Workbook& book = frame.book();
  NameDialog dialog(
      title, name, static_cast<int>(kNodeNameSize - 1),
      [&book, current](const std::string& typed) {
        return CheckTableNameAnswer(book, typed, current);
      },
      &frame);
  if (dialog.exec() != QDialog::Accepted) return false;
  name = dialog.name();
  return true;
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
      if (!TableNameDialog(frame, "Add New Table", name, nullptr)) return;
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
      FieldDialog dialog(table, edit, &frame);
      if (dialog.exec() != QDialog::Accepted) return;
      const FieldSpec& row = dialog.fieldRow();
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
