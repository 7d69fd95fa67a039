// Gaussian elimination with partial pivoting: the factors L*U = P*A, solutions with improving
// iterations, the inverse and the determinant. Triangular substitution lives here too.
#pragma once

#include <cstdint>
#include <vector>

#include "functions/numeric/matrix.h"

namespace kelpdex::numeric {

struct LuFactors {
  Matrix lu;                    // U on and above the diagonal, L's multipliers below it
  std::vector<uint32_t> order;  // row i of P*A is row order[i] of A
  int sign = 1;                 // of the permutation
};

// Factors a square A. With `scaling` the pivot is chosen relative to the largest of 1 and each
// row's magnitudes. False when A is not square or a pivot column holds only zeros (singular), or
// memory runs out; `singular` tells the second case apart.
bool LuFactor(const Matrix& a, bool scaling, LuFactors& out, bool& singular);

// Solves A*x = b for every column of b, then repeats `iterations` times: the residual b - A*x
// with the unfactored A, solved for a correction that is added.
bool LuSolve(const Matrix& a, const LuFactors& f, const Matrix& b, int iterations, Matrix& x);

double LuDeterminant(const LuFactors& f);
bool LuInverse(const LuFactors& f, Matrix& inverse);
// The unit lower L, the upper U and the permutation matrix P of the factors.
bool LuParts(const LuFactors& f, Matrix& l, Matrix& u, Matrix& p);

// Solves L*y = b for lower triangular L, or U*x = b for upper triangular U, column by column. A
// zero on the diagonal is a singular system: false with `singular` set.
bool ForwardSubstitute(const Matrix& l, const Matrix& b, Matrix& y, bool& singular);
bool BackSubstitute(const Matrix& u, const Matrix& b, Matrix& x, bool& singular);

}  // namespace kelpdex::numeric
