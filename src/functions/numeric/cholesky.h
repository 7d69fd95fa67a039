// Cholesky factors U^T*U = A of a symmetric positive definite matrix, with the solutions,
// inverse and determinant that follow from them.
#pragma once

#include "functions/numeric/matrix.h"

namespace kelpdex::numeric {

// The upper triangular U. False when A is not square, not symmetric, not positive definite (with
// `notDefinite` set for the last two) or memory runs out.
bool CholeskyFactor(const Matrix& a, Matrix& u, bool& notDefinite);
// Solves A*x = b through the factor, with `iterations` improving steps against the original A.
bool CholeskySolve(const Matrix& a, const Matrix& u, const Matrix& b, int iterations, Matrix& x);
bool CholeskyInverse(const Matrix& u, Matrix& inverse);
double CholeskyDeterminant(const Matrix& u);

}  // namespace kelpdex::numeric
