// The calling frame's helpers: each reads one argument slot, loading a reference first, and
// returns the slot's error code (0 for none).
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "formula/formula_engine.h"
#include "store/range_cursor.h"

namespace kelpdex {

constexpr double kLargestDouble = 1.7976931348623157e308;

// A number; strings are coerced as in arithmetic. An empty value leaves `out` as preset, which is
// how optional arguments keep their defaults. Outside [min, max]: "#NUM!"; an array: "#VALUE!".
uint8_t GetNumberArg(FormulaEngine& engine, int slot, double& out, double min = -kLargestDouble,
                     double max = kLargestDouble);
// The same, rounded half away from zero to a whole number within [min, max].
uint8_t GetIntegerArg(FormulaEngine& engine, int slot, int32_t& out, int32_t min = 0,
                      int32_t max = 0x7FFFFFFF);

// Room for any text argument: the pool cannot hold a longer string.
constexpr size_t kTextArgSize = FormulaEngine::kPoolBytes + 1;

// The text of an argument, copied into `buffer` (kTextArgSize bytes) and popped from the pool: a
// number in its "General" form, an error as its literal (the code is returned as well), an empty
// value as "". An array or range gives "#VALUE!".
uint8_t GetTextArg(FormulaEngine& engine, int slot, char* buffer, std::string_view& text);

// A rectangle of cells: a range of a worksheet, or an array whose chain the caller now owns.
struct RangeArg {
  CellStore* cells = nullptr;        // the worksheet's chain, or owned.get()
  std::unique_ptr<CellStore> owned;  // an array's chain; must not outlive the engine
  uint32_t firstRow = 0;
  uint32_t lastRow = 0;
  uint16_t firstColumn = 0;
  uint16_t lastColumn = 0;

  uint32_t rows() const { return lastRow - firstRow + 1; }
  uint32_t columns() const { return static_cast<uint32_t>(lastColumn - firstColumn) + 1; }
};

// A range or array argument. Any other kind gives "#VALUE!" (a string is released); an error on
// the slot is returned with `out` untouched.
uint8_t GetRangeArg(FormulaEngine& engine, int slot, RangeArg& out);

// Rounds half away from zero, the rounding of every whole-number argument.
inline double RoundHalfAway(double x) {
  return x >= 0 ? std::trunc(x + 0.5) : std::trunc(x - 0.5);
}

// Too few arguments stop the formula with "#SYNTAX!"; returns true when there are enough.
bool HasArguments(FormulaEngine& engine, int count);
// Broadcasts the handler over the arrays and ranges among the `count` arguments on top of the
// stack; true when it did, and the call is then complete.
bool BroadcastArrays(FormulaEngine& engine, int count);
// Leaves a number result in `slot` and makes it the top of the stack.
void SetNumberResult(FormulaEngine& engine, int slot, double value, uint8_t error);
// Leaves a text result in `slot` (pushed on the pool) and makes it the top of the stack. With an
// error, or when the pool has no room for the text, the slot holds the error alone ("#VALUE!" for
// the pool).
void SetTextResult(FormulaEngine& engine, int slot, std::string_view text, uint8_t error);

// The cells of an array or range operand: an array lives in the engine's top array from row and
// column 0, a range in its sheet; a range whose sheet is gone has none.
RangeCursor OperandCells(FormulaEngine& engine, const FormulaValue& v);

// Visits the cells that exist in an array or range argument in row-major order, then releases the
// argument. Returns the slot's own error (no cell is visited then) or 0.
uint8_t ForEachCellOf(FormulaEngine& engine, int slot, void* context,
                      void (*visit)(void* context, const CellRecord* cell));

// Visits the numbers of an aggregate's arguments, last to first as the stack releases them:
// scalars through GetNumberArg, arrays and ranges cell by cell with a forward cursor. Returns the
// largest error met.
// Text cells that are no number give `textError`.
uint8_t ForEachNumber(FormulaEngine& engine, int base, bool skipEmptyCells, void* context,
                      void (*visit)(void* context, double value), uint8_t textError = ferr::kNum);

}  // namespace kelpdex
