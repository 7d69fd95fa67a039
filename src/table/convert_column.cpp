#include "table/convert_column.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "format/cell_text.h"
#include "format/number_style.h"
#include "format/parse_number.h"
#include "table/table_state.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\r' || c == '\n' || c == '\t';
}

// The text after a text mode; false when the mode leaves it as it is.
bool ConvertText(int mode, std::string_view in, std::string& out) {
  out.assign(in);
  switch (mode) {
    case convert::kUpperCase:
      text::UpperInPlace(out);
      break;
    case convert::kLowerCase:
      text::LowerInPlace(out);
      break;
    case convert::kWordCapitals: {
      bool letterBefore = false;
      for (char& c : out) {
        if (!letterBefore) c = text::CharUpper(c);
        letterBefore = text::IsCharAlpha(c);
      }
      break;
    }
    case convert::kFirstCapital: {
      text::LowerInPlace(out);
      for (char& c : out) {
        if (text::IsCharAlphaNumeric(c)) {
          c = text::CharUpper(c);
          break;
        }
      }
      break;
    }
    case convert::kTrimEnd: {
      size_t n = out.size();
      while (n > 0 && IsBlank(out[n - 1])) --n;
      out.resize(n);
      break;
    }
    case convert::kTrimStart: {
      size_t n = 0;
      while (n < out.size() && IsBlank(out[n])) ++n;
      out.erase(0, n);
      break;
    }
    default:
      return false;
  }
  return out != in;
}

// Cuts an array formula down to its head wherever its rectangle reaches into the rows and column;
// true when one was cut, and the walk over the column starts again.
bool CutArrayInto(CellStore& cells, uint16_t column, uint32_t firstRow, uint32_t lastRow) {
  CellCursor cursor;
  while (CellRecord* r = cells.NextCell(cursor)) {
    if (!cell::IsFormula(r) || !(cell::FormulaFlags(r) & cell::kArrayHead)) continue;
    uint32_t row = cell::Row(r);
    uint16_t left = cell::Column(r);
    uint32_t bottom = row + cell::ArrayRows(r) - 1;
    uint32_t right = left + cell::ArrayColumns(r) - 1u;
    if (column < left || column > right || bottom < firstRow || row > lastRow) continue;
    cell::Bytes(r)[cell::kFlagsAt] &= static_cast<uint8_t>(~cell::kArrayHead);
    // The array is no longer whole, so its other cells go one by one; the head keeps its formula.
    if (right > left) {
      cells.DeleteRange(static_cast<uint16_t>(left + 1), static_cast<uint16_t>(right), row, row);
    }
    if (bottom > row) {
      cells.DeleteRange(left, static_cast<uint16_t>(right), row + 1, bottom);
    }
    return true;
  }
  return false;
}

NumberStyle ColumnNumberStyle(const Workbook& workbook, const Worksheet& sheet, uint16_t column) {
  return ReadNumberStyle(workbook.styles.Style(sheet.formats.ColumnStyle(column)));
}

// A text as a number, with the column's own currency symbol where the locale's does not read it.
bool ParseLabel(std::string_view text, const NumberStyle& style, double& value) {
  NumberStyle parsed = style;
  if (ParseNumberText(text, value, parsed, &currentLocale) == NumberParse::kNumber) return true;
  if (style.kind != format_kind::kCurrency && style.kind != format_kind::kAccounting) return false;
  LocaleSettings own = currentLocale;
  std::memset(own.currencySymbol, 0, sizeof own.currencySymbol);
  std::memcpy(own.currencySymbol, style.symbol,
              std::min(strnlen(style.symbol, sizeof style.symbol), sizeof own.currencySymbol - 1));
  return ParseNumberText(text, value, parsed, &own) == NumberParse::kNumber;
}

}  // namespace

bool ConvertColumn(Workbook& workbook, Worksheet& sheet, uint16_t column, int mode,
                   uint32_t firstRow, uint32_t lastRow) {
  if (mode < convert::kLabelsToNumbers || mode > convert::kTrimStart || firstRow > lastRow) {
    return true;
  }
  CellStore& cells = sheet.cells;
  while (CutArrayInto(cells, column, firstRow, lastRow)) {
  }
  NumberStyle style = ColumnNumberStyle(workbook, sheet, column);
  CellFormatter formatter(style);

  // Pass one: the converted cells go to a scratch store, so that no write moves the cursor's
  // ground; cells trimmed to nothing are listed for deletion.
  CellStore scratch;
  std::vector<uint32_t> emptied;
  std::vector<uint8_t> record(kBlockPayload);
  std::string converted;
  char display[kDisplayTextMax];
  CellCursor write;
  CellCursor cursor;
  CellRecord* r = cells.GetCell(firstRow, 0, &cursor);
  if (r == nullptr) r = cells.NextCell(cursor);
  for (; r != nullptr && cell::Row(r) <= lastRow; r = cells.NextCell(cursor)) {
    if (cell::Column(r) != column || cell::IsAuto(r)) continue;
    uint32_t row = cell::Row(r);
    uint8_t errorBits = cell::Tag(r) & cell::kErrorMask;
    bool put = false;
    if (mode == convert::kLabelsToNumbers) {
      double value = 0;
      if (cell::IsText(r) && ParseLabel(cell::Text(r), style, value)) {
        cell::EncodeNumber(record.data(), row, column, value, errorBits);
        put = true;
      }
    } else if (mode == convert::kNumbersToLabels) {
      if (cell::IsNumber(r)) {
        size_t n = formatter.DisplayNumber(cell::Number(r), display);
        cell::EncodeText(record.data(), row, column, std::string_view(display, n), errorBits);
        put = true;
      }
    } else if (cell::IsText(r) && ConvertText(mode, cell::Text(r), converted)) {
      if (converted.empty()) {
        emptied.push_back(row);
      } else {
        cell::EncodeText(record.data(), row, column, converted, errorBits);
        put = true;
      }
    }
    if (put && !scratch.PutCell(record.data(), &write)) {
      workbook.errorCode = err::kOutOfMemory;
      return false;
    }
  }
  // Pass two: the scratch records replace theirs in one merge.
  for (uint32_t row : emptied) cells.DeleteRange(column, column, row, row);
  if (!cells.MergeFrom(scratch)) {
    workbook.errorCode = err::kOutOfMemory;
    return false;
  }
  return true;
}

bool ConvertSelection(Workbook& workbook, int mode, const UndoContext& selection) {
  TableSpec table;
  if (!CurrentTable(workbook, table)) return false;
  if (workbook.records.count() == 0 || selection.firstRecord > selection.lastRecord) return true;
  if (workbook.undo != nullptr && !workbook.undo->RecordCells(selection)) return false;
  // The selected records' rows, in runs of consecutive rows.
  uint32_t last = std::min(selection.lastRecord, workbook.records.count() - 1);
  std::vector<uint32_t> rows;
  for (uint32_t record = selection.firstRecord; record <= last; ++record) {
    rows.push_back(workbook.records[record]);
  }
  std::sort(rows.begin(), rows.end());
  bool textMode = mode >= convert::kUpperCase;
  for (uint32_t c = selection.firstColumn; c <= selection.lastColumn; ++c) {
    if (c >= workbook.fieldDefaults.size()) break;
    FieldType type = workbook.fieldDefaults[c].type;
    if (textMode ? type != FieldType::kText : !HoldsCellValues(type)) {
      continue;
    }
    for (size_t i = 0; i < rows.size();) {
      size_t j = i;
      while (j + 1 < rows.size() && rows[j + 1] == rows[j] + 1) ++j;
      if (!ConvertColumn(workbook, *table.data, static_cast<uint16_t>(c), mode, rows[i], rows[j])) {
        return false;
      }
      i = j + 1;
    }
  }
  return true;
}

}  // namespace kelpdex
