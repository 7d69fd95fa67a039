// The singular value decomposition U*S*V^T = A of an m x n matrix by one-sided Jacobi rotations,
// and the least-squares solutions and pseudo-inverse built on it. One-sided Jacobi keeps small
// singular values to high relative accuracy, which matters for ill-conditioned sheets.
#pragma once

#include <vector>

#include "functions/numeric/matrix.h"

namespace kelpdex::numeric {

// The smallest ratio of a singular value to the largest that still counts as non-zero.
constexpr double kMinMaxRatio = 1e-15;

struct Svd {
  Matrix u;               // m x n; a column of a zero singular value is 0
  std::vector<double> s;  // n singular values, largest first
  Matrix v;               // n x n, orthogonal
};

// False when memory runs out, or (with `notConvergent` set) when the rotations do not settle.
bool SvdDecompose(const Matrix& a, Svd& out, bool& notConvergent);
// The singular values above ratio times the largest.
uint32_t SvdRank(const Svd& svd, double ratio);
// The least-squares solution of minimum norm of A*x ~= b, one column per column of b.
bool SvdSolve(const Svd& svd, const Matrix& b, double ratio, Matrix& x);
bool SvdPseudoInverse(const Svd& svd, double ratio, Matrix& inverse);

// min |A*x - b| subject to E*x = d: the minimum-norm solution of the constraints, then the
// least-squares correction within their null space.
bool ConstrainedLeastSquares(const Matrix& a, const Matrix& b, const Matrix& e, const Matrix& d,
                             double ratio, Matrix& x, bool& notConvergent);
// min (A*x - b)^T*G*(A*x - b) for a symmetric positive semi-definite G: the problem is multiplied
// through by a square root of G taken from G's own decomposition.
bool WeightedLeastSquares(const Matrix& a, const Matrix& b, const Matrix& g, double ratio,
                          Matrix& x, bool& notConvergent);

}  // namespace kelpdex::numeric
