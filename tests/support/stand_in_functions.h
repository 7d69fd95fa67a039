// Two small functions stand in for the library in the formula engine's tests: ARGC counts its
// arguments, SUM adds scalars.
#pragma once

#include <cstdint>

#include "formula/formula_engine.h"

namespace kelpdex::testing {

inline void Argc(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  for (int slot = e.depth() - 1; slot >= base; --slot) e.Release(e.Operand(slot));
  e.SetDepth(base);
  e.Operand(base) = FormulaValue::Number(count);
}

inline void Sum(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  double total = 0;
  uint8_t error = 0;
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = e.Operand(slot);
    e.CoerceToNumber(v);
    error = LargerError(error, v.errorCode);
    if (v.kind == kind::kNumber) total += v.number;
    e.Release(v);
  }
  e.SetDepth(base);
  e.Operand(base) = FormulaValue::Number(total, error);
}

}  // namespace kelpdex::testing
