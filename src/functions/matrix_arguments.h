// How the matrix and optimisation functions read their arguments into plain matrices of doubles
// and write matrices back as array values.
#pragma once

#include <cstdint>

#include "formula/formula_engine.h"
#include "functions/numeric/matrix.h"

namespace kelpdex::mtx {

constexpr int kMaxArguments = 10;

// The arguments of one call, read from the stack and released.
struct Arguments {
  int base = 0;
  int count = 0;
  numeric::Matrix matrix[kMaxArguments];
  double number[kMaxArguments] = {};
  bool given[kMaxArguments] = {};      // false for an omitted argument
  uint8_t errors[kMaxArguments] = {};  // each argument's own error
  uint8_t error = 0;                   // the largest error met

  // The largest error among the arguments whose positions `mask` flags (bit i for position i).
  uint8_t ErrorOf(uint32_t mask) const;
};

// Reads the call's arguments by `kinds`, one letter per position: 'm' a matrix (a range, an
// array, or a scalar as 1 x 1), 'n' a number, 'x' left on the stack unread. Fewer than
// `required` or more than the letters set the syntax flag and give false; otherwise every read
// argument is released, and the stack keeps only the unread ones.
bool ReadArguments(FormulaEngine& e, const char* kinds, int required, Arguments& out);

// The same for functions whose last argument selects the result and whose optional arguments
// stand before it: the last argument given is always that selector, moved to the last position,
// and the optional ones not given count as omitted.
bool ReadArgumentsResultLast(FormulaEngine& e, const char* kinds, int required, Arguments& out);

// Reads one range, array or scalar slot into a matrix and releases it. Empty cells are 0; a cell
// holding an error gives that error, a text that is no number "#VALUE!".
uint8_t ReadMatrix(FormulaEngine& e, int slot, numeric::Matrix& m);

// Leaves the matrix in `slot` as the call's result: an array with values that are no valid
// number marked "#NUM!" in their cells, or a plain number for 1 x 1. With an error the slot holds
// the error alone; a matrix wider or taller than a sheet is "#VALUE!", a failed store "#MEMORY!".
void SetMatrixResult(FormulaEngine& e, int slot, const numeric::Matrix& m, uint8_t error);

// A column of numbers, or of texts when `texts` is given (one per row, a null entry standing for
// a number).
void SetColumnTexts(FormulaEngine& e, int slot, const char* const* texts, size_t count);

}  // namespace kelpdex::mtx
