#include "functions/matrix_arguments.h"

#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "functions/arguments.h"
#include "store/cell_record.h"
#include "store/range_cursor.h"

namespace kelpdex::mtx {

uint8_t ReadMatrix(FormulaEngine& e, int slot, numeric::Matrix& m) {
  FormulaValue& v = e.Operand(slot);
  e.LoadReference(v);
  if (v.kind != kind::kArray && v.kind != kind::kRangeReference) {
    double x = 0;
    uint8_t error = GetNumberArg(e, slot, x);
    e.Release(e.Operand(slot));
    if (error != 0) return error;
    if (!m.Allocate(1, 1)) return ferr::kMemory;
    m(0, 0) = x;
    return 0;
  }
  RangeArg range;
  uint8_t error = GetRangeArg(e, slot, range);
  if (error != 0) return error;
  if (!m.Allocate(range.rows(), range.columns())) return ferr::kMemory;
  // Sparse: only the cells that exist are visited, the rest stay 0.
  RangeCursor read(range.cells, range.firstRow, range.lastRow, range.firstColumn, range.lastColumn);
  while (const CellRecord* r = read.Next()) {
    error = LargerError(error, cell::ErrorNibble(r));
    double x = 0;
    std::string_view text;
    if (cell::IsText(r)) {
      text = cell::Text(r);
    } else if (cell::IsFormula(r) && !cell::CachedString(r).empty()) {
      text = cell::CachedString(r);
    } else {
      x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
    }
    if (!text.empty() &&
        (!TextToNumber(text, currentLocale.decimalSeparator, x) || IsBadNumber(x))) {
      error = LargerError(error, ferr::kValue);
    }
    m(cell::Row(r) - range.firstRow, cell::Column(r) - range.firstColumn) = x;
  }
  e.Operand(slot) = FormulaValue::Empty();
  return error;
}

bool ReadArguments(FormulaEngine& e, const char* kinds, int required, Arguments& out) {
  out.base = e.Operand(e.depth()).argumentBase;
  out.count = e.depth() - out.base;
  int most = static_cast<int>(std::strlen(kinds));
  if (out.count < required || out.count > most) {
    e.SetSyntaxError();
    return false;
  }
  int top = out.base + out.count - 1;
  // Unread arguments must stay at the bottom, so the reading stops at the first one.
  int lowest = out.base;
  while (lowest <= top && kinds[lowest - out.base] == 'x') ++lowest;
  for (int slot = top; slot >= lowest; --slot) {
    int i = slot - out.base;
    FormulaValue& v = e.Operand(slot);
    out.given[i] = !(v.kind == kind::kEmpty && v.errorCode == 0);
    if (!out.given[i]) continue;
    uint8_t error = 0;
    if (kinds[i] == 'm') {
      error = ReadMatrix(e, slot, out.matrix[i]);
    } else {
      error = GetNumberArg(e, slot, out.number[i]);
      out.given[i] = e.Operand(slot).kind == kind::kNumber;
      e.Release(e.Operand(slot));
    }
    out.errors[i] = error;
    out.error = LargerError(out.error, error);
  }
  e.SetDepth(lowest);
  return true;
}

bool ReadArgumentsResultLast(FormulaEngine& e, const char* kinds, int required, Arguments& out) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  int most = static_cast<int>(std::strlen(kinds));
  if (count < required || count > most) {
    e.SetSyntaxError();
    return false;
  }
  char given[kMaxArguments + 1] = {};
  std::memcpy(given, kinds, static_cast<size_t>(count - 1));
  given[count - 1] = kinds[most - 1];
  if (!ReadArguments(e, given, required, out)) return false;
  int from = count - 1, to = most - 1;
  if (from != to) {
    out.matrix[to] = std::move(out.matrix[from]);
    out.number[to] = out.number[from];
    out.given[to] = out.given[from];
    out.errors[to] = out.errors[from];
    out.given[from] = false;
    out.errors[from] = 0;
  }
  out.count = most;
  return true;
}

uint8_t Arguments::ErrorOf(uint32_t mask) const {
  uint8_t worst = 0;
  for (int i = 0; i < kMaxArguments; ++i) {
    if ((mask >> i & 1) != 0) worst = LargerError(worst, errors[i]);
  }
  return worst;
}

void SetMatrixResult(FormulaEngine& e, int slot, const numeric::Matrix& m, uint8_t error) {
  e.SetDepth(slot);
  if (error == 0 && m.empty()) error = ferr::kValue;
  if (error == 0 && (m.columns() > kColumnLimit || m.rows() > kRowLimit)) error = ferr::kValue;
  if (error != 0) {
    e.Operand(slot) = FormulaValue::Empty(error);
    return;
  }
  if (m.rows() == 1 && m.columns() == 1) {
    double x = m(0, 0);
    e.Operand(slot) =
        IsBadNumber(x) ? FormulaValue::Number(0, ferr::kNum) : FormulaValue::Number(x);
    return;
  }
  CellStore* cells = e.PushArray();
  if (cells == nullptr) {
    e.Operand(slot) = FormulaValue::Empty(ferr::kMemory);
    return;
  }
  CellCursor write;
  for (uint32_t i = 0; i < m.rows(); ++i) {
    for (uint32_t j = 0; j < m.columns(); ++j) {
      uint8_t record[cell::kNumberSize];
      double x = m(i, j);
      bool bad = IsBadNumber(x);
      cell::EncodeNumber(record, i, static_cast<uint16_t>(j), bad ? 0 : x, bad ? ferr::kNum : 0);
      if (!cells->PutCell(record, &write)) {
        e.PopArray();
        e.Operand(slot) = FormulaValue::Empty(ferr::kMemory);
        return;
      }
    }
  }
  e.Operand(slot) = FormulaValue::Array(m.rows(), static_cast<uint16_t>(m.columns()));
}

void SetColumnTexts(FormulaEngine& e, int slot, const char* const* texts, size_t count) {
  e.SetDepth(slot);
  CellStore* cells = count > 0 && count <= kRowLimit ? e.PushArray() : nullptr;
  if (cells == nullptr) {
    e.Operand(slot) = FormulaValue::Empty(count == 0 ? ferr::kValue : ferr::kMemory);
    return;
  }
  CellCursor write;
  uint8_t record[cell::kTextHeader + 256];
  for (size_t i = 0; i < count; ++i) {
    std::string_view text = texts[i];
    if (text.size() > 256) text = text.substr(0, 256);
    cell::EncodeText(record, static_cast<uint32_t>(i), 0, text);
    if (!cells->PutCell(record, &write)) {
      e.PopArray();
      e.Operand(slot) = FormulaValue::Empty(ferr::kMemory);
      return;
    }
  }
  e.Operand(slot) = FormulaValue::Array(static_cast<uint32_t>(count), 1);
}

}  // namespace kelpdex::mtx
