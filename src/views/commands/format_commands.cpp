// Font, Style, Alignment and Drop-down List: the one Format Field sheet, opened at the page of
// the command, over the style of the current field.
#include <algorithm>

#include "core/reporting.h"
#include "table/field_format.h"
#include "views/commands/command_dispatch.h"
#include "views/dialogs/format_sheet.h"
#include "views/frame/main_frame.h"
#include "views/grid/grid_view.h"

namespace kelpdex::views {

namespace {

FormatSheet::Page PageOf(uint16_t id) {
  switch (id) {
    case 32818:
      return FormatSheet::kStylePage;
    case 33052:
      return FormatSheet::kAlignmentPage;
    case 33053:
      return FormatSheet::kDropDownPage;
    default:
      return FormatSheet::kFontPage;
  }
}

}  // namespace

void RunFormatCommand(MainFrame& frame, uint16_t id) {
  Workbook& book = frame.book();
  GridView& grid = frame.grid();
  if (book.currentSheet == nullptr) return;
  const uint16_t field = grid.activeField();
  const FieldFormat original = ReadFieldFormat(book, field);
  const CellRecord* current =
      book.currentSheet->cells.GetCellFast(book.records[grid.activePosition()], field);
  FormatSheet sheet(book, original, current, PageOf(id), &frame);
  if (sheet.exec() != QDialog::Accepted) return;
  if (!ApplyFieldFormat(book, original, sheet.edited(), grid.Context())) {
    ShowError(book.errorCode);
    return;
  }
  frame.session().MarkModified(true);
  grid.InvalidateLooks();
  grid.Refresh();
}

}  // namespace kelpdex::views
