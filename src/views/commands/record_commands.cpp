// Records, stepping through the record set, Go To, and find and replace with the find bar.
#include <QApplication>
#include <QToolBar>
#include <algorithm>

#include "core/reporting.h"
#include "search/find_replace.h"
#include "search/navigation.h"
#include "store/catalogue.h"
#include "table/records.h"
#include "table/table_state.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/dialogs/go_to_dialog.h"
#include "views/frame/main_frame.h"
#include "views/frame/status_progress.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

bool StepOf(uint16_t id, StepKind& kind, bool& forward) {
  switch (id) {
    case 33100:
      kind = StepKind::kNonEmpty;
      forward = false;
      return true;
    case 33101:
      kind = StepKind::kEmpty;
      forward = false;
      return true;
    case 33102:
      kind = StepKind::kIdentical;
      forward = false;
      return true;
    case 33108:
      kind = StepKind::kDifferent;
      forward = false;
      return true;
    case 33104:
      kind = StepKind::kNonEmpty;
      forward = true;
      return true;
    case 33105:
      kind = StepKind::kEmpty;
      forward = true;
      return true;
    case 33106:
      kind = StepKind::kIdentical;
      forward = true;
      return true;
    case 33109:
      kind = StepKind::kDifferent;
      forward = true;
      return true;
    default:
      return false;
  }
}

FindOptions OptionsOf(MainFrame& frame) {
  FindOptions options;
  options.text = text::Utf8ToCp1252(frame.FindText().toStdString());
  options.replacement = text::Utf8ToCp1252(frame.ReplaceText().toStdString());
  options.matchCase = frame.MatchCase();
  options.wholeCell = frame.WholeCells();
  return options;
}

void FindNextCell(MainFrame& frame, const TableSpec& table) {
  GridView& grid = frame.grid();
  frame.RememberFindTexts();
  GridSelection hit;
  LongWork work(frame.progress());
  if (FindNext(table, frame.book().records, grid.selection(), grid.activeField(),
               grid.activePosition(), OptionsOf(frame), hit)) {
    // Select the found cell alone, and keep a multi-cell selection's range for the next search
    // only while it is the selection.
    grid.SetSelection(hit);
  } else {
    AskText("No more occurrences found.", mb::kOk | mb::kIconInformation);
  }
}

}  // namespace

void RunRecordCommand(MainFrame& frame, uint16_t id) {
  Workbook& book = frame.book();
  GridView& grid = frame.grid();
  TableSpec table;
  if (!CurrentTable(book, table)) return;
  UndoContext context = grid.Context();
  GridSelection selection = grid.selection();
  StepKind kind;
  bool forward = false;
  if (StepOf(id, kind, forward)) {
    if (StepRecord(*table.data, book.records, kind, forward, selection)) {
      grid.SetSelection(selection);
    } else {
      QApplication::beep();
    }
    return;
  }
  const uint32_t count = book.records.count();
  switch (id) {
    case cmd::kGoTop:
      return grid.MoveTo(grid.activeField(), 0);
    case cmd::kGoBottom:
      return grid.MoveTo(grid.activeField(), std::max(count, 1u) - 1);
    case cmd::kStepBack:
      return grid.MoveTo(grid.activeField(), static_cast<int64_t>(grid.activePosition()) - 1);
    case cmd::kStepForward:
      return grid.MoveTo(grid.activeField(), grid.activePosition() + 1);
    case cmd::kGoTo: {
      // The menu and the toolbar ask in a dialog; Ctrl+G goes to the record box instead.
      GoToDialog dialog(grid.activePosition() + 1, count, &frame);
      if (dialog.exec() != QDialog::Accepted) return;
      GridSelection selection = grid.selection();
      if (!GoToRecord(book.records, dialog.record(), selection)) return QApplication::beep();
      selection.firstField = selection.lastField = grid.activeField();
      grid.SetSelection(selection);
      grid.setFocus();
      return;
    }
    case cmd::kGoToBox:
      return frame.FocusRecordBox();
    case cmd::kInsertRecords:
    case cmd::kRemoveRecords: {
      // The record bar's amount counts from the selection's first record when it is more
      // than the selection holds.
      uint32_t amount = static_cast<uint32_t>(frame.RecordAmount());
      uint32_t last = std::max(context.lastRecord, context.firstRecord + amount - 1);
      bool ok = id == cmd::kInsertRecords
                    ? InsertRecords(book, context.firstRecord, last, nullptr, context)
                    : RemoveRecords(book, context.firstRecord,
                                    std::min(last, std::max(count, 1u) - 1), context);
      if (!ok) return ShowError(book.errorCode);
      frame.session().MarkModified(true);
      return grid.Refresh();
    }
    case cmd::kDefaultValues:
      if (!FillDefaults(book, context)) return ShowError(book.errorCode);
      frame.session().MarkModified(true);
      return grid.Refresh();
    case cmd::kUpdateFormulas: {
      if (count == 0) return;  // nothing to compute in a table without records
      LongWork work(frame.progress());
      UpdateResult result = UpdateFormulas(book);
      if (result == UpdateResult::kFailed) return ShowError(book.errorCode);
      if (result == UpdateResult::kUpdated) frame.session().MarkModified(true);
      return grid.Refresh();
    }
    case cmd::kFindReplace:
      if (frame.findBar()->isVisible() && !frame.FindText().isEmpty()) {
        return FindNextCell(frame, table);
      }
      return frame.ShowFindBar();
    case cmd::kFindNext:
      if (frame.FindText().isEmpty()) return frame.ShowFindBar();
      return FindNextCell(frame, table);
    case cmd::kReplace:
    case cmd::kReplaceAll: {
      frame.RememberFindTexts();
      FindOptions options = OptionsOf(frame);
      if (options.text.empty()) return;
      GridSelection range = id == cmd::kReplaceAll ? WholeTable(table, book.records) : selection;
      uint32_t changed = 0;
      LongWork work(frame.progress());
      bool ok = ReplaceInRange(table, book.records, range, options, changed);
      if (!ok) ShowError(book.errorCode);
      if (changed > 0) frame.session().MarkModified(true);
      grid.viewport()->update();
      return;
    }
    default:
      return;
  }
}

}  // namespace kelpdex::views
