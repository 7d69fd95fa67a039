// index and transpose: pieces of an array or range, and an array turned on its diagonal.
#include <algorithm>
#include <cstring>
#include <vector>

#include "functions/arguments.h"
#include "functions/lookup_functions.h"
#include "functions/lookup_search.h"
#include "store/workbook.h"

namespace kelpdex::fn {

namespace {

// A selector of index: one number (0 for all) or a list of them.
struct Selector {
  bool isList = false;
  int32_t single = 0;
  std::vector<uint32_t> list;  // from 1
};

uint8_t ReadSelector(FormulaEngine& e, int slot, Selector& out) {
  FormulaValue& v = e.Operand(slot);
  if (v.kind != kind::kArray && v.kind != kind::kRangeReference) {
    uint8_t error = GetIntegerArg(e, slot, out.single, 0, 0x7FFFFFFF);
    e.Release(v);
    return error;
  }
  RangeArg numbers;
  uint8_t error = GetRangeArg(e, slot, numbers);
  e.Release(v);
  if (error != 0) return error;
  // Every place of the list must name a number; a gap or a text names nothing.
  uint64_t places = uint64_t(numbers.rows()) * numbers.columns();
  out.isList = true;
  RangeCursor read(numbers.cells, numbers.firstRow, numbers.lastRow, numbers.firstColumn,
                   numbers.lastColumn);
  while (const CellRecord* r = read.Next()) {
    CellKey key = KeyOfCell(r);
    if (cell::ErrorNibble(r) != 0) return cell::ErrorNibble(r);
    if (key.kind != LookupKey::Kind::kNumber || key.number < 1 || key.number > 2147483647.0) {
      return ferr::kValue;
    }
    out.list.push_back(static_cast<uint32_t>(RoundHalfAway(key.number)));
  }
  return out.list.size() == places ? 0 : ferr::kValue;
}

// Copies cell (row, column) of `from`, when it exists, to (toRow, toColumn) of `to`.
bool CopyCell(CellStore& from, uint32_t row, uint16_t column, CellStore& to, uint32_t toRow,
              uint16_t toColumn, CellCursor& write) {
  const CellRecord* r = from.GetCell(row, column);
  if (r == nullptr) return true;
  uint8_t record[kBlockPayload];
  std::memcpy(record, cell::Bytes(r), cell::Size(r));
  cell::SetRow(record, toRow);
  cell::SetColumn(record, toColumn);
  return to.PutCell(record, &write);
}

void SetArrayResult(FormulaEngine& e, int slot, uint32_t rows, uint32_t columns, bool ok) {
  FormulaValue result = FormulaValue::Array(rows, static_cast<uint16_t>(columns));
  if (!ok) {
    e.PopArray();
    result = FormulaValue::Empty(ferr::kMemory);
  }
  e.SetDepth(slot);
  e.Operand(slot) = result;
}

// The rows (or columns) a list names, in its order, as a new array.
void PickLines(FormulaEngine& e, int slot, const RangeArg& x, const std::vector<uint32_t>& list,
               bool rows) {
  uint32_t lines = rows ? x.rows() : x.columns();
  for (uint32_t k : list) {
    if (k > lines) {
      e.SetDepth(slot);
      e.Operand(slot) = FormulaValue::Empty(ferr::kRef);
      return;
    }
  }
  CellStore* out = e.PushArray();
  if (out == nullptr) {
    e.SetDepth(slot);
    e.Operand(slot) = FormulaValue::Empty(ferr::kMemory);
    return;
  }
  bool ok = true;
  CellCursor write;
  uint32_t outRows = rows ? uint32_t(list.size()) : x.rows();
  uint32_t outColumns = rows ? x.columns() : uint32_t(list.size());
  if (rows) {
    for (uint32_t i = 0; i < list.size(); ++i) {
      RangeCursor read(x.cells, x.firstRow + list[i] - 1, x.firstRow + list[i] - 1, x.firstColumn,
                       x.lastColumn);
      ok &= CopyRebased(read, *out, write, i);
    }
  } else if (x.cells != nullptr) {
    // Written row by row, so that the new array grows at its end.
    for (uint32_t r = 0; r < outRows; ++r) {
      for (uint32_t j = 0; j < list.size(); ++j) {
        ok &= CopyCell(*x.cells, x.firstRow + r, static_cast<uint16_t>(x.firstColumn + list[j] - 1),
                       *out, r, static_cast<uint16_t>(j), write);
      }
    }
  }
  SetArrayResult(e, slot, outRows, outColumns, ok);
}

}  // namespace

void Index(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  Selector n, m;
  uint8_t error = 0;
  if (count == 3) error = ReadSelector(e, base + 2, n);
  error = LargerError(error, ReadSelector(e, base + 1, m));
  FormulaValue& xv = e.Operand(base);
  bool isRange = xv.kind == kind::kRangeReference;
  Worksheet* sheet = isRange ? xv.sheet : nullptr;
  RangeArg x;
  error = LargerError(error, GetRangeArg(e, base, x));
  e.Release(e.Operand(base));
  if (error == 0 && m.isList && n.isList) error = ferr::kValue;
  if (error == 0 && ((m.isList && n.single != 0) || (n.isList && m.single != 0))) {
    error = ferr::kValue;  // a list of rows takes no column, and a list of columns no row
  }
  if (error != 0) {
    e.SetDepth(base);
    e.Operand(base) = FormulaValue::Empty(error);
    return;
  }
  if (m.isList) return PickLines(e, base, x, m.list, true);
  if (n.isList) return PickLines(e, base, x, n.list, false);
  uint32_t row = uint32_t(m.single), column = uint32_t(n.single);
  e.SetDepth(base);
  if (row > x.rows() || column > x.columns()) {
    e.Operand(base) = FormulaValue::Empty(ferr::kRef);
    return;
  }
  // 0 takes the whole extent: a row, a column, or everything.
  uint32_t row1 = row == 0 ? x.firstRow : x.firstRow + row - 1;
  uint32_t row2 = row == 0 ? x.lastRow : row1;
  uint16_t column1 =
      static_cast<uint16_t>(column == 0 ? x.firstColumn : x.firstColumn + column - 1);
  uint16_t column2 = column == 0 ? x.lastColumn : column1;
  if (isRange) {
    // A range answers with a reference, so that the cells stay where they are.
    FormulaValue& out = e.Operand(base);
    out = FormulaValue();
    out.sheet = sheet;
    if (row1 == row2 && column1 == column2) {
      out.kind = kind::kReference;
      out.row = row1;
      out.column = column1;
      out.flags = rflag::kAbsolute;
    } else {
      out.kind = kind::kRangeReference;
      out.row1 = row1;
      out.row2 = row2;
      out.column1 = column1;
      out.column2 = column2;
      out.flags1 = out.flags2 = rflag::kAbsolute;
    }
    return;
  }
  if (row1 == row2 && column1 == column2)
    return SetCellResult(e, base, nullptr, x.cells, row1, column1);
  CellStore* out = e.PushArray();
  if (out == nullptr) {
    e.Operand(base) = FormulaValue::Empty(ferr::kMemory);
    return;
  }
  RangeCursor read(x.cells, row1, row2, column1, column2);
  CellCursor write;
  bool ok = CopyRebased(read, *out, write, 0);
  SetArrayResult(e, base, row2 - row1 + 1, uint32_t(column2 - column1) + 1, ok);
}

void Transpose(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() - base != 1) {
    e.SetSyntaxError();
    return;
  }
  FormulaValue& v = e.Operand(base);
  if (v.kind != kind::kArray && v.kind != kind::kRangeReference) {
    // A single value is its own transpose.
    e.LoadReference(v);
    e.SetDepth(base);
    return;
  }
  RangeArg x;
  uint8_t error = GetRangeArg(e, base, x);
  e.Release(v);
  e.SetDepth(base);
  if (error != 0) {
    e.Operand(base) = FormulaValue::Empty(error);
    return;
  }
  if (x.columns() > kRowLimit || x.rows() > uint32_t(kLastColumn) + 1) {
    e.Operand(base) = FormulaValue::Empty(ferr::kValue);  // no array has that shape
    return;
  }
  // The cells are gathered with their new places and written in the new order, so that the
  // result's chain grows at its end.
  struct Moved {
    uint64_t key;
    uint32_t offset;
  };
  std::vector<Moved> moved;
  std::vector<uint8_t> bytes;
  RangeCursor read(x.cells, x.firstRow, x.lastRow, x.firstColumn, x.lastColumn);
  while (const CellRecord* r = read.Next()) {
    uint32_t row = cell::Column(r) - x.firstColumn;
    uint32_t column = cell::Row(r) - x.firstRow;
    moved.push_back({(uint64_t(row) << 16) | column, uint32_t(bytes.size())});
    bytes.insert(bytes.end(), cell::Bytes(r), cell::Bytes(r) + cell::Size(r));
  }
  std::sort(moved.begin(), moved.end(),
            [](const Moved& a, const Moved& b) { return a.key < b.key; });
  CellStore* out = e.PushArray();
  if (out == nullptr) {
    e.Operand(base) = FormulaValue::Empty(ferr::kMemory);
    return;
  }
  bool ok = true;
  CellCursor write;
  for (const Moved& m : moved) {
    uint8_t* record = bytes.data() + m.offset;
    cell::SetRow(record, static_cast<uint32_t>(m.key >> 16));
    cell::SetColumn(record, static_cast<uint16_t>(m.key & 0xFFFF));
    ok &= out->PutCell(record, &write);
  }
  SetArrayResult(e, base, x.columns(), x.rows(), ok);
}

}  // namespace kelpdex::fn
