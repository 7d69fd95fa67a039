// Edit, Insert and the layout part of Format: Undo and Redo, the clipboard, the conversions,
// Increment and Decrement, the date commands, widths, heights and frozen fields.
#include <QApplication>
#include <QFontMetrics>
#include <QInputDialog>
#include <algorithm>

#include "core/reporting.h"
#include "table/convert_column.h"
#include "table/layout.h"
#include "table/records.h"
#include "text/utf8.h"
#include "views/commands/command_dispatch.h"
#include "views/commands/command_table.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

int ConvertMode(uint16_t id) {
  switch (id) {
    case 32787:
      return convert::kLabelsToNumbers;
    case 32786:
      return convert::kNumbersToLabels;
    case 33058:
      return convert::kUpperCase;
    case 33059:
      return convert::kLowerCase;
    case 33136:
      return convert::kWordCapitals;
    case 33137:
      return convert::kFirstCapital;
    case 33134:
      return convert::kTrimEnd;
    case 33135:
      return convert::kTrimStart;
    default:
      return 0;
  }
}

bool DateCommandOf(uint16_t id, DateCommand& command) {
  switch (id) {
    case 32907:
      command = DateCommand::kDate;
      return true;
    case 32936:
      command = DateCommand::kTime;
      return true;
    case 32806:
      command = DateCommand::kDateAndTime;
      return true;
    case 33004:
      command = DateCommand::kNextWeek;
      return true;
    case 33005:
      command = DateCommand::kPreviousWeek;
      return true;
    case 32944:
      command = DateCommand::kNextMonth;
      return true;
    case 33003:
      command = DateCommand::kPreviousMonth;
      return true;
    case 33002:
      command = DateCommand::kEndOfNextMonth;
      return true;
    case 32943:
      command = DateCommand::kEndOfPreviousMonth;
      return true;
    default:
      return false;
  }
}

// The widest text of the field among the records on screen and its name.
int AutoWidth(GridView& grid, uint16_t field) {
  QFontMetrics metrics(grid.font());
  int width = metrics.horizontalAdvance(QString::fromUtf8(
                  text::Cp1252ToUtf8(grid.DisplayText(field, grid.topPosition())))) +
              12;
  width = std::max(width, 40);
  int rows = grid.VisibleRecordCount();
  for (int i = 0; i < rows; ++i) {
    std::string shown = grid.DisplayText(field, grid.topPosition() + static_cast<uint32_t>(i));
    width = std::max(width,
                     metrics.horizontalAdvance(QString::fromUtf8(text::Cp1252ToUtf8(shown))) + 12);
  }
  return std::min(width, int{kMaxFieldWidth});
}

void Done(MainFrame& frame, bool ok, bool rebuild = false) {
  if (!ok) {
    ShowError(frame.book().errorCode);
    return;
  }
  frame.session().MarkModified(true);
  if (rebuild) {
    frame.grid().Refresh();
  } else {
    frame.grid().viewport()->update();
  }
}

}  // namespace

void RunEditCommand(MainFrame& frame, uint16_t id) {
  Workbook& book = frame.book();
  GridView& grid = frame.grid();
  UndoContext context = grid.Context();
  if (int mode = ConvertMode(id)) return Done(frame, ConvertSelection(book, mode, context));
  DateCommand date;
  if (DateCommandOf(id, date)) return Done(frame, InsertDateValue(book, date, context));
  switch (id) {
    case cmd::kUndo:
    case cmd::kRedo: {
      UndoOutcome outcome = id == cmd::kUndo ? frame.undo().Undo() : frame.undo().Redo();
      if (book.errorCode != err::kNone && !outcome.applied) ShowError(book.errorCode);
      book.errorCode = err::kNone;
      frame.session().MarkModified(true);
      if (outcome.refreshFrame) {
        frame.RebuildForTable(true);
      } else {
        grid.Refresh();
      }
      if (outcome.applied) {
        GridSelection s{outcome.selection.firstColumn, outcome.selection.firstRecord,
                        outcome.selection.lastColumn, outcome.selection.lastRecord};
        grid.SetSelection(s);
      }
      return;
    }
    case cmd::kCopy:
      return grid.CopySelection();
    case cmd::kCut:
      grid.CopySelection();
      return grid.ClearSelection();
    case cmd::kPaste:
      grid.PasteClipboard();
      return;
    case cmd::kDelete:
      return grid.ClearSelection();
    case 32937:
    case 32938:
      return Done(frame, StepValue(book, id == 32937 ? 1 : -1, context));
    case cmd::kRowHeight: {
      bool ok = false;
      int height = QInputDialog::getInt(&frame, "Row Height", "&Height:", kDefaultRecordHeight, 4,
                                        kMaxRecordHeight, 1, &ok);
      if (ok) Done(frame, SetRecordHeights(book, static_cast<uint16_t>(height), context), true);
      return;
    }
    case cmd::kAutoRowHeight:
      // Height 0 is the automatic height the grid draws by its font.
      return Done(frame, SetRecordHeights(book, 0, context), true);
    case cmd::kColumnWidth: {
      bool ok = false;
      int width = QInputDialog::getInt(
          &frame, "Column Width", "&Width:", FieldWidth(*book.currentSheet, grid.activeField()), 4,
          kMaxFieldWidth, 1, &ok);
      if (ok) Done(frame, SetFieldWidths(book, static_cast<uint16_t>(width), context), true);
      return;
    }
    case cmd::kAutoColumnWidth: {
      // One step per field, since each takes its own width.
      for (uint16_t f = context.firstColumn; f <= context.lastColumn; ++f) {
        UndoContext one = context;
        one.firstColumn = one.lastColumn = f;
        if (!SetFieldWidths(book, static_cast<uint16_t>(AutoWidth(grid, f)), one)) {
          return Done(frame, false);
        }
      }
      return Done(frame, true, true);
    }
    case cmd::kFreezeFields:
      grid.SetFrozenFields(grid.frozenFields() > 0 ? 0
                                                   : static_cast<uint16_t>(grid.activeField() + 1));
      return;
    default:
      return;
  }
}

}  // namespace kelpdex::views
