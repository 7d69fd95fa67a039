#include "functions/arguments.h"

#include <cmath>
#include <cstring>

#include "core/locale_settings.h"
#include "format/number_text.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex {

uint8_t GetNumberArg(FormulaEngine& engine, int slot, double& out, double min, double max) {
  // Slots are read from the top down, so a string's text is the top of the pool here.
  FormulaValue& v = engine.Operand(slot);
  engine.CoerceToNumber(v);
  if (v.errorCode != 0) return v.errorCode;
  if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
    engine.Release(v);
    return v.errorCode = ferr::kValue;
  }
  if (v.kind == kind::kNumber) {
    if (v.number < min || v.number > max) return v.errorCode = ferr::kNum;
    out = v.number;
  }
  return 0;
}

uint8_t GetIntegerArg(FormulaEngine& engine, int slot, int32_t& out, int32_t min, int32_t max) {
  double x = out;
  uint8_t error = GetNumberArg(engine, slot, x);
  if (error != 0) return error;
  if (engine.Operand(slot).kind != kind::kNumber) return 0;  // empty: the default stands
  double rounded = RoundHalfAway(x);
  if (std::fabs(rounded) > 2147483647.0 || rounded < min || rounded > max) {
    return engine.Operand(slot).errorCode = ferr::kNum;
  }
  out = static_cast<int32_t>(rounded);
  return 0;
}

uint8_t GetTextArg(FormulaEngine& engine, int slot, char* buffer, std::string_view& text) {
  FormulaValue& v = engine.Operand(slot);
  engine.LoadReference(v);
  text = std::string_view();
  buffer[0] = '\0';
  if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
    engine.Release(v);
    return v.errorCode = ferr::kValue;
  }
  std::string_view source;
  char number[32];
  if (v.errorCode != 0) {
    source = ErrorLiteral(v.errorCode);
  } else if (v.kind == kind::kString) {
    source = engine.TopString();
  } else if (v.kind == kind::kNumber) {
    source = std::string_view(number, NumberToGeneral(v.number, number));
  }
  size_t n = source.size() < kTextArgSize - 1 ? source.size() : kTextArgSize - 1;
  // An empty view may carry no pointer at all, which memcpy must not be given.
  if (n > 0) std::memcpy(buffer, source.data(), n);
  buffer[n] = '\0';
  text = std::string_view(buffer, n);
  if (v.kind == kind::kString) engine.PopString();
  return v.errorCode;
}

uint8_t GetRangeArg(FormulaEngine& engine, int slot, RangeArg& out) {
  FormulaValue& v = engine.Operand(slot);
  engine.LoadReference(v);
  if (v.errorCode != 0) return v.errorCode;
  if (v.kind == kind::kRangeReference) {
    if (v.sheet == nullptr) return v.errorCode = ferr::kRef;
    out.owned.reset();
    out.cells = &v.sheet->cells;
    out.firstRow = v.row1;
    out.lastRow = v.row2;
    out.firstColumn = v.column1;
    out.lastColumn = v.column2;
    return 0;
  }
  if (v.kind == kind::kArray) {
    // An array's cells count from 0; its value keeps the last row and column.
    out.firstRow = 0;
    out.lastRow = v.row2;
    out.firstColumn = 0;
    out.lastColumn = v.column2;
    out.owned = engine.TakeTopArray();
    out.cells = out.owned.get();
    v.kind = kind::kEmpty;
    return 0;
  }
  engine.Release(v);
  return v.errorCode = ferr::kValue;
}

bool HasArguments(FormulaEngine& engine, int count) {
  int base = engine.Operand(engine.depth()).argumentBase;
  if (engine.depth() < base + count) {
    engine.SetSyntaxError();
    return false;
  }
  return true;
}

bool BroadcastArrays(FormulaEngine& engine, int count) {
  int first = engine.depth() - count;
  // Looked at first, so that the common call with no array pays no marks for the whole stack.
  int i = 0;
  while (i < count && (engine.Operand(first + i).kind & kind::kArrayOrRange) == 0) ++i;
  if (i == count) return false;
  bool isArray[FormulaEngine::kStackSize] = {};
  for (; i < count; ++i) isArray[i] = (engine.Operand(first + i).kind & kind::kArrayOrRange) != 0;
  engine.ApplyOverArray(isArray, first);
  return true;
}

void SetNumberResult(FormulaEngine& engine, int slot, double value, uint8_t error) {
  if (error == 0 && IsBadNumber(value)) error = ferr::kNum;
  engine.Operand(slot) = FormulaValue::Number(error == 0 ? value : 0, error);
  engine.SetDepth(slot);
}

void SetTextResult(FormulaEngine& engine, int slot, std::string_view text, uint8_t error) {
  engine.SetDepth(slot);
  if (error == 0 && engine.PushString(text)) {
    engine.Operand(slot) = FormulaValue();
    engine.Operand(slot).kind = kind::kString;
    return;
  }
  engine.Operand(slot) = FormulaValue::Empty(error != 0 ? error : ferr::kValue);
}

RangeCursor OperandCells(FormulaEngine& engine, const FormulaValue& v) {
  bool isArray = v.kind == kind::kArray;
  CellStore* cells =
      isArray ? &engine.TopArray() : (v.sheet != nullptr ? &v.sheet->cells : nullptr);
  return RangeCursor(cells, isArray ? 0 : v.row1, v.row2, isArray ? 0 : v.column1, v.column2);
}

uint8_t ForEachCellOf(FormulaEngine& engine, int slot, void* context,
                      void (*visit)(void* context, const CellRecord* cell)) {
  FormulaValue& v = engine.Operand(slot);
  uint8_t error = v.errorCode;
  if (error == 0) {
    RangeCursor read = OperandCells(engine, v);
    while (const CellRecord* r = read.Next()) visit(context, r);
  }
  engine.Release(v);
  return error;
}

uint8_t ForEachNumber(FormulaEngine& engine, int base, bool skipEmptyCells, void* context,
                      void (*visit)(void* context, double value), uint8_t textError) {
  uint8_t error = 0;
  for (int slot = engine.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = engine.Operand(slot);
    if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
      error = LargerError(error, v.errorCode);
      RangeCursor read = OperandCells(engine, v);
      while (CellRecord* r = read.Next()) {
        uint8_t nibble = cell::ErrorNibble(r);
        if (nibble != 0) {
          error = LargerError(error, nibble);
          continue;
        }
        double x = 0;
        if (cell::IsText(r)) {
          if (cell::Text(r).empty() && skipEmptyCells) continue;
          if (!TextToNumber(cell::Text(r), currentLocale.decimalSeparator, x) || IsBadNumber(x)) {
            error = LargerError(error, textError);
            continue;
          }
        } else {
          x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
        }
        visit(context, x);
      }
      engine.Release(v);
      continue;
    }
    double x = 0;
    uint8_t e = GetNumberArg(engine, slot, x);
    // A scalar text that is no number takes the caller's code too.
    if (e == ferr::kNum && engine.Operand(slot).kind == kind::kEmpty) e = textError;
    error = LargerError(error, e);
    bool present = engine.Operand(slot).kind == kind::kNumber;
    engine.Release(engine.Operand(slot));
    if (e == 0 && present) visit(context, x);
  }
  return error;
}

}  // namespace kelpdex
