// How the statistical functions read their arguments: the values of aggregates, the grids of
// two-array functions, and column results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "formula/formula_engine.h"

namespace kelpdex::stat {

// How the cells of arrays and ranges (and referenced cells) count.
enum class Take : uint8_t {
  kNumbers,  // numbers, and texts that read as numbers; other texts and empty cells are skipped
  kAll,      // every non-empty cell, a text as 0 (the functions with the A suffix)
};

// Walks the arguments in the slots first..last, last to first as the stack gives them back,
// releasing each, and calls `visit` for every value taken. Scalars are coerced as arithmetic
// does; a text that is no number there is "#NUM!". Returns the largest error met.
uint8_t WalkValues(FormulaEngine& e, int first, int last, Take take, void* context,
                   void (*visit)(void* context, double value));
// The same, collecting the values in argument order.
uint8_t CollectValues(FormulaEngine& e, int first, int last, Take take, std::vector<double>& out);

// An array or range argument as a rectangle; positions that hold no number are NaN.
struct Grid {
  uint32_t rows = 0;
  uint32_t columns = 0;
  std::vector<double> values;  // row by row
};

// Reads an array or range argument (a number counts as a 1 x 1 grid) and releases it. Another
// kind is "#VALUE!"; an error in a cell is returned as the largest error met.
uint8_t ReadGrid(FormulaEngine& e, int slot, Grid& grid);

// Releases the arguments in the slots first..last, last to first.
void ReleaseSlots(FormulaEngine& e, int first, int last);

// Leaves a one-column array of `count` numbers in `slot` and makes it the top of the stack; with
// an error, or a value that is no valid number, the slot holds the error alone.
void SetColumnResult(FormulaEngine& e, int slot, const double* values, size_t count, uint8_t error);

// The arithmetic mean and the sum of squared deviations from it, in two passes for accuracy.
double Mean(const std::vector<double>& x);
double SquaredDeviations(const std::vector<double>& x, double mean);

}  // namespace kelpdex::stat
