// The calling frame's helpers: each reads one argument slot, loading a reference first, and
// returns the slot's error code (0 for none).
#pragma once

#include <cmath>
#include <cstdint>

#include "formula/formula_engine.h"

namespace kelpdex {

constexpr double kLargestDouble = 1.7976931348623157e308;

// A number; strings are coerced as in arithmetic. An empty value leaves `out` as preset, which is
// how optional arguments keep their defaults. Outside [min, max]: "#NUM!"; an array: "#VALUE!".
uint8_t GetNumberArg(FormulaEngine& engine, int slot, double& out, double min = -kLargestDouble,
                     double max = kLargestDouble);
// The same, rounded half away from zero to a whole number within [min, max].
uint8_t GetIntegerArg(FormulaEngine& engine, int slot, int32_t& out, int32_t min = 0,
                      int32_t max = 0x7FFFFFFF);

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

// Visits the numbers of an aggregate's arguments, last to first as the stack releases them:
// scalars through GetNumberArg, arrays and ranges cell by cell with a forward cursor. Returns the
// largest error met.
// Text cells that are no number give `textError`.
uint8_t ForEachNumber(FormulaEngine& engine, int base, bool skipEmptyCells, void* context,
                      void (*visit)(void* context, double value), uint8_t textError = ferr::kNum);

}  // namespace kelpdex
