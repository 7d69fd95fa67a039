#include "functions/numeric/cholesky.h"

#include <cmath>

namespace kelpdex::numeric {

namespace {

// Solves U^T*U*x = b in place.
void SubstituteInPlace(const Matrix& u, Matrix& x) {
  uint32_t n = u.rows();
  for (uint32_t c = 0; c < x.columns(); ++c) {
    for (uint32_t i = 0; i < n; ++i) {
      double sum = x(i, c);
      for (uint32_t k = 0; k < i; ++k) sum -= u(k, i) * x(k, c);
      x(i, c) = sum / u(i, i);
    }
    for (uint32_t i = n; i-- > 0;) {
      double sum = x(i, c);
      for (uint32_t k = i + 1; k < n; ++k) sum -= u(i, k) * x(k, c);
      x(i, c) = sum / u(i, i);
    }
  }
}

}  // namespace

bool CholeskyFactor(const Matrix& a, Matrix& u, bool& notDefinite) {
  notDefinite = false;
  uint32_t n = a.rows();
  if (n != a.columns() || n == 0) return false;
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t j = i + 1; j < n; ++j) {
      // Symmetry to rounding: sheets often hold products computed in another order.
      double tolerance = 1e-12 * (std::fabs(a(i, j)) + std::fabs(a(j, i)));
      if (std::fabs(a(i, j) - a(j, i)) > tolerance) {
        notDefinite = true;
        return false;
      }
    }
  }
  if (!u.Allocate(n, n)) return false;
  for (uint32_t i = 0; i < n; ++i) {
    double diagonal = a(i, i);
    for (uint32_t k = 0; k < i; ++k) diagonal -= u(k, i) * u(k, i);
    if (!(diagonal > 0)) {
      notDefinite = true;
      return false;
    }
    u(i, i) = std::sqrt(diagonal);
    for (uint32_t j = i + 1; j < n; ++j) {
      double sum = a(i, j);
      for (uint32_t k = 0; k < i; ++k) sum -= u(k, i) * u(k, j);
      u(i, j) = sum / u(i, i);
    }
  }
  return true;
}

bool CholeskySolve(const Matrix& a, const Matrix& u, const Matrix& b, int iterations, Matrix& x) {
  if (b.rows() != u.rows() || !x.CopyFrom(b)) return false;
  SubstituteInPlace(u, x);
  Matrix residual;
  for (int step = 0; step < iterations; ++step) {
    if (!Multiply(a, x, residual)) return false;
    for (uint32_t i = 0; i < b.rows(); ++i) {
      for (uint32_t c = 0; c < b.columns(); ++c) residual(i, c) = b(i, c) - residual(i, c);
    }
    SubstituteInPlace(u, residual);
    for (uint32_t i = 0; i < x.rows(); ++i) {
      for (uint32_t c = 0; c < x.columns(); ++c) x(i, c) += residual(i, c);
    }
  }
  return true;
}

bool CholeskyInverse(const Matrix& u, Matrix& inverse) {
  if (!Identity(u.rows(), inverse)) return false;
  SubstituteInPlace(u, inverse);
  return true;
}

double CholeskyDeterminant(const Matrix& u) {
  double d = 1;
  for (uint32_t i = 0; i < u.rows(); ++i) d *= u(i, i) * u(i, i);
  return d;
}

}  // namespace kelpdex::numeric
