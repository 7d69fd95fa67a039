#include "store/column_style.h"

#include "store/bytes.h"

namespace kelpdex {

bool SetColumnStyleAttribute(Workbook& workbook, Worksheet& sheet, uint16_t column, int kind,
                             const StyleRecord& values, const FontRecord* fontValues) {
  ErrorCode error = err::kNone;
  uint16_t columnStyle = 0;
  if (!workbook.styles.DeriveStyle(sheet.formats.ColumnStyle(column), kind, values, fontValues,
                                   columnStyle, error)) {
    workbook.errorCode = error != err::kNone ? error : err::kTooManyStyles;
    return false;
  }

  // The runs crossing the column keep their other attributes: each gets its own derived style
  // for this column's cells. They are gathered first, since applying a run rewrites the chain.
  FormatStore scratch;
  RunCursor cursor;
  StyleRun run;
  while (sheet.formats.NextRun(cursor, run)) {
    if (run.firstColumn > column || run.lastColumn < column) continue;
    StyleRun piece{column, column, run.row, 0};
    if (!workbook.styles.DeriveStyle(run.styleId, kind, values, fontValues, piece.styleId, error)) {
      workbook.errorCode = error != err::kNone ? error : err::kTooManyStyles;
      return false;
    }
    if (!scratch.ApplyStyleRun(piece)) {
      workbook.errorCode = err::kOutOfMemory;
      return false;
    }
  }
  cursor.Clear();
  while (scratch.NextRun(cursor, run)) {
    if (!sheet.formats.ApplyStyleRun(run)) {
      workbook.errorCode = err::kOutOfMemory;
      return false;
    }
  }
  sheet.formats.SetColumnStyle(column, columnStyle);
  return true;
}

bool MarkColumn(Workbook& workbook, Worksheet& sheet, uint16_t column, bool selected) {
  StyleRecord values{};
  if (selected) {
    values.bytes[style::kFillAt] = style::kSolidFill;
    StoreU32(values.bytes + style::kFillColourAt, style::kSelectionColour);
    values.bytes[style::kFillColourFlagsAt] = 1;  // the pattern colour is set
  }
  return SetColumnStyleAttribute(workbook, sheet, column, style::kFill, values, nullptr);
}

}  // namespace kelpdex
