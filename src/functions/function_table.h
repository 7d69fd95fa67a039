// The built-in functions: one row per name a formula can call, with its handler.
#pragma once

#include <cstdint>

#include "formula/formula_engine.h"

namespace kelpdex {

struct FunctionRow {
  const char* name;  // upper case, with its "(" behind it
  void (*handler)(FormulaEngine& engine);
};

constexpr uint16_t kFunctionRowCount = 358;

// The rows in their declared order, which groups them by family. A null handler marks a family
// that is not built yet.
const FunctionRow* FunctionRows();
// The rows sorted by the bytes of their names, done once, for the tokenizer's bisection. A row
// without a handler takes DeclaredOnlyHandler here.
const FunctionTable& BuiltinFunctions();

// The one handler of the names the table declares but does not implement: it drops the
// arguments and answers "#IMPL!".
void DeclaredOnlyHandler(FormulaEngine& engine);

}  // namespace kelpdex
