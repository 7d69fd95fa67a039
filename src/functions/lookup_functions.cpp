// columns, rows, hLookUp, vLookUp, lookUp and match.
#include "functions/lookup_functions.h"

#include "functions/arguments.h"
#include "functions/lookup_search.h"
#include "store/workbook.h"

namespace kelpdex::fn {

namespace {

int CallBase(FormulaEngine& e) {
  return e.Operand(e.depth()).argumentBase;
}

// Between `least` and `most` arguments, else the formula is malformed. Returns the count, or -1.
int CountArguments(FormulaEngine& e, int least, int most) {
  int count = e.depth() - CallBase(e);
  if (count < least || count > most) {
    e.SetSyntaxError();
    return -1;
  }
  return count;
}

// The sheet of a range argument, read before GetRangeArg takes it; null for an array.
Worksheet* SheetOf(FormulaEngine& e, int slot) {
  const FormulaValue& v = e.Operand(slot);
  return v.kind == kind::kRangeReference && v.errorCode == 0 ? v.sheet : nullptr;
}

// A range or array argument; the slot is left empty whatever it held.
uint8_t TakeRange(FormulaEngine& e, int slot, RangeArg& out, Worksheet*& sheet) {
  sheet = SheetOf(e, slot);
  uint8_t error = GetRangeArg(e, slot, out);
  e.Release(e.Operand(slot));
  return error;
}

void SetError(FormulaEngine& e, int slot, uint8_t error) {
  e.SetDepth(slot);
  e.Operand(slot) = FormulaValue::Empty(error);
}

uint32_t ExtentOf(FormulaEngine& e, int slot, bool columns, uint8_t& error) {
  FormulaValue& v = e.Operand(slot);
  error = v.errorCode;
  uint32_t extent = 1;
  if (v.kind == kind::kRangeReference) {
    extent = columns ? uint32_t(v.column2 - v.column1) + 1 : v.row2 - v.row1 + 1;
  } else if (v.kind == kind::kArray) {
    extent = columns ? uint32_t(v.column2) + 1 : v.row2 + 1;
  } else if (v.kind == kind::kEmpty && error == 0) {
    error = ferr::kValue;  // nothing to measure
  }
  e.Release(v);
  return extent;
}

void Extent(FormulaEngine& e, bool columns) {
  if (CountArguments(e, 1, 1) < 0) return;
  int base = CallBase(e);
  uint8_t error = 0;
  uint32_t extent = ExtentOf(e, base, columns, error);
  SetNumberResult(e, base, extent, error);
}

// hLookUp and vLookUp: the value is looked for in the first row (or column) of the array, and the
// answer comes from the n-th row (or column) at the place found.
void LineLookUp(FormulaEngine& e, bool vertical) {
  int count = CountArguments(e, 3, 4);
  if (count < 0) return;
  int base = CallBase(e);
  MatchType type = MatchType::kBelow;
  uint8_t error = 0;
  if (count == 4) error = ReadMatchType(e, base + 3, MatchType::kBelow, type);
  int32_t n = 1;
  error = LargerError(error, GetIntegerArg(e, base + 2, n, -0x7FFFFFFF, 0x7FFFFFFF));
  e.Release(e.Operand(base + 2));
  RangeArg source;
  Worksheet* sheet = nullptr;
  error = LargerError(error, TakeRange(e, base + 1, source, sheet));
  LookupKey key;
  error = LargerError(error, ReadLookupKey(e, base, type, key));
  if (error != 0) return SetError(e, base, error);
  uint32_t lines = vertical ? source.columns() : source.rows();
  if (n < 1) return SetError(e, base, ferr::kValue);
  if (static_cast<uint32_t>(n) > lines) return SetError(e, base, ferr::kRef);
  RangeCursor read = vertical ? RangeCursor(source.cells, source.firstRow, source.lastRow,
                                            source.firstColumn, source.firstColumn)
                              : RangeCursor(source.cells, source.firstRow, source.firstRow,
                                            source.firstColumn, source.lastColumn);
  const CellRecord* found = SearchCells(read, key, type);
  if (found == nullptr) return SetError(e, base, ferr::kNA);
  uint32_t row = vertical ? cell::Row(found) : source.firstRow + uint32_t(n) - 1;
  uint16_t column =
      vertical ? static_cast<uint16_t>(source.firstColumn + n - 1) : cell::Column(found);
  SetCellResult(e, base, sheet, source.cells, row, column);
}

bool IsVector(const RangeArg& a) {
  return a.rows() == 1 || a.columns() == 1;
}

}  // namespace

void Columns(FormulaEngine& e) {
  Extent(e, true);
}

void Rows(FormulaEngine& e) {
  Extent(e, false);
}

void HLookUp(FormulaEngine& e) {
  LineLookUp(e, false);
}

void VLookUp(FormulaEngine& e) {
  LineLookUp(e, true);
}

void LookUp(FormulaEngine& e) {
  int count = CountArguments(e, 2, 3);
  if (count < 0) return;
  int base = CallBase(e);
  uint8_t error = 0;
  RangeArg result;
  Worksheet* resultSheet = nullptr;
  if (count == 3) error = TakeRange(e, base + 2, result, resultSheet);
  RangeArg search;
  Worksheet* searchSheet = nullptr;
  error = LargerError(error, TakeRange(e, base + 1, search, searchSheet));
  LookupKey key;
  error = LargerError(error, ReadLookupKey(e, base, MatchType::kBelow, key));
  if (error != 0) return SetError(e, base, error);

  if (count == 2) {
    // One array: a wide one is searched along its top row and answers from its last row, any
    // other down its first column, answering from its last column.
    bool wide = search.columns() > search.rows();
    RangeCursor read = wide ? RangeCursor(search.cells, search.firstRow, search.firstRow,
                                          search.firstColumn, search.lastColumn)
                            : RangeCursor(search.cells, search.firstRow, search.lastRow,
                                          search.firstColumn, search.firstColumn);
    const CellRecord* found = SearchCells(read, key, MatchType::kBelow);
    if (found == nullptr) return SetError(e, base, ferr::kNA);
    uint32_t row = wide ? search.lastRow : cell::Row(found);
    uint16_t column = wide ? cell::Column(found) : search.lastColumn;
    return SetCellResult(e, base, searchSheet, search.cells, row, column);
  }

  // Two vectors of the same length, either of them a row or a column.
  uint64_t cells = uint64_t(search.rows()) * search.columns();
  if (!IsVector(search) || !IsVector(result) ||
      cells != uint64_t(result.rows()) * result.columns()) {
    return SetError(e, base, ferr::kValue);
  }
  RangeCursor read(search.cells, search.firstRow, search.lastRow, search.firstColumn,
                   search.lastColumn);
  const CellRecord* found = SearchCells(read, key, MatchType::kBelow);
  if (found == nullptr) return SetError(e, base, ferr::kNA);
  uint32_t k = search.rows() == 1 ? uint32_t(cell::Column(found) - search.firstColumn)
                                  : cell::Row(found) - search.firstRow;
  bool resultIsRow = result.rows() == 1;
  uint32_t row = resultIsRow ? result.firstRow : result.firstRow + k;
  uint16_t column =
      static_cast<uint16_t>(resultIsRow ? result.firstColumn + k : result.firstColumn);
  SetCellResult(e, base, resultSheet, result.cells, row, column);
}

void Match(FormulaEngine& e) {
  int count = CountArguments(e, 2, 3);
  if (count < 0) return;
  int base = CallBase(e);
  MatchType type = MatchType::kBelow;
  uint8_t error = 0;
  if (count == 3) error = ReadMatchType(e, base + 2, MatchType::kBelow, type);
  RangeArg within;
  Worksheet* sheet = nullptr;
  error = LargerError(error, TakeRange(e, base + 1, within, sheet));
  LookupKey key;
  error = LargerError(error, ReadLookupKey(e, base, type, key));
  if (error != 0) return SetError(e, base, error);
  // The position counts row by row through the whole rectangle, from 1.
  RangeCursor read(within.cells, within.firstRow, within.lastRow, within.firstColumn,
                   within.lastColumn);
  const CellRecord* found = SearchCells(read, key, type);
  if (found == nullptr) return SetError(e, base, ferr::kNA);
  double position = double(cell::Row(found) - within.firstRow) * within.columns() +
                    double(cell::Column(found) - within.firstColumn) + 1;
  SetNumberResult(e, base, position, 0);
}

}  // namespace kelpdex::fn
