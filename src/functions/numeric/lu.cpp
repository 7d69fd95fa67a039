#include "functions/numeric/lu.h"

#include <cmath>
#include <utility>

namespace kelpdex::numeric {

namespace {

// Solves in place with the factors, column by column of x (already permuted). Column-oriented,
// so that the zeros of a sparse right-hand side such as the identity's cost nothing.
void SubstituteInPlace(const LuFactors& f, Matrix& x) {
  uint32_t n = f.lu.rows();
  for (uint32_t c = 0; c < x.columns(); ++c) {
    for (uint32_t k = 0; k < n; ++k) {
      double xk = x(k, c);
      if (xk == 0) continue;
      for (uint32_t i = k + 1; i < n; ++i) x(i, c) -= f.lu(i, k) * xk;
    }
    for (uint32_t k = n; k-- > 0;) {
      double xk = x(k, c) /= f.lu(k, k);
      if (xk == 0) continue;
      for (uint32_t i = 0; i < k; ++i) x(i, c) -= f.lu(i, k) * xk;
    }
  }
}

bool SolveWith(const LuFactors& f, const Matrix& b, Matrix& x) {
  if (!x.Allocate(b.rows(), b.columns())) return false;
  for (uint32_t i = 0; i < b.rows(); ++i) {
    for (uint32_t c = 0; c < b.columns(); ++c) x(i, c) = b(f.order[i], c);
  }
  SubstituteInPlace(f, x);
  return true;
}

}  // namespace

bool LuFactor(const Matrix& a, bool scaling, LuFactors& out, bool& singular) {
  singular = false;
  uint32_t n = a.rows();
  if (n != a.columns() || n == 0) return false;
  if (!out.lu.CopyFrom(a)) return false;
  out.order.resize(n);
  out.sign = 1;
  std::vector<double> scale(n, 1.0);
  for (uint32_t i = 0; i < n; ++i) {
    out.order[i] = i;
    if (!scaling) continue;
    for (uint32_t j = 0; j < n; ++j) scale[i] = std::fmax(scale[i], std::fabs(a(i, j)));
  }
  Matrix& m = out.lu;
  for (uint32_t k = 0; k < n; ++k) {
    uint32_t pivot = k;
    double best = 0;
    for (uint32_t i = k; i < n; ++i) {
      double size = std::fabs(m(i, k)) / scale[i];
      if (size > best) {
        best = size;
        pivot = i;
      }
    }
    if (best == 0) {
      singular = true;
      return false;
    }
    if (pivot != k) {
      double* rowK = m.data() + size_t(k) * n;
      double* rowP = m.data() + size_t(pivot) * n;
      for (uint32_t j = 0; j < n; ++j) std::swap(rowK[j], rowP[j]);
      std::swap(scale[k], scale[pivot]);
      std::swap(out.order[k], out.order[pivot]);
      out.sign = -out.sign;
    }
    double diagonal = m(k, k);
    for (uint32_t i = k + 1; i < n; ++i) {
      double factor = m(i, k) / diagonal;
      m(i, k) = factor;
      // Zeros below the pivot cost nothing: sparse sheets are common.
      if (factor == 0) continue;
      double* rowI = m.data() + size_t(i) * n;
      const double* rowK = m.data() + size_t(k) * n;
      for (uint32_t j = k + 1; j < n; ++j) rowI[j] -= factor * rowK[j];
    }
  }
  return true;
}

bool LuSolve(const Matrix& a, const LuFactors& f, const Matrix& b, int iterations, Matrix& x) {
  if (b.rows() != a.rows()) return false;
  if (!SolveWith(f, b, x)) return false;
  Matrix residual, correction;
  for (int step = 0; step < iterations; ++step) {
    if (!Multiply(a, x, residual)) return false;
    for (uint32_t i = 0; i < b.rows(); ++i) {
      for (uint32_t c = 0; c < b.columns(); ++c) residual(i, c) = b(i, c) - residual(i, c);
    }
    if (!SolveWith(f, residual, correction)) return false;
    for (uint32_t i = 0; i < x.rows(); ++i) {
      for (uint32_t c = 0; c < x.columns(); ++c) x(i, c) += correction(i, c);
    }
  }
  return true;
}

double LuDeterminant(const LuFactors& f) {
  double d = f.sign;
  for (uint32_t i = 0; i < f.lu.rows(); ++i) d *= f.lu(i, i);
  return d;
}

bool LuInverse(const LuFactors& f, Matrix& inverse) {
  Matrix identity;
  if (!Identity(f.lu.rows(), identity)) return false;
  return SolveWith(f, identity, inverse);
}

bool LuParts(const LuFactors& f, Matrix& l, Matrix& u, Matrix& p) {
  uint32_t n = f.lu.rows();
  if (!l.Allocate(n, n) || !u.Allocate(n, n) || !p.Allocate(n, n)) return false;
  for (uint32_t i = 0; i < n; ++i) {
    for (uint32_t j = 0; j < n; ++j) {
      if (j < i)
        l(i, j) = f.lu(i, j);
      else
        u(i, j) = f.lu(i, j);
    }
    l(i, i) = 1;
    p(i, f.order[i]) = 1;
  }
  return true;
}

bool ForwardSubstitute(const Matrix& l, const Matrix& b, Matrix& y, bool& singular) {
  singular = false;
  uint32_t n = l.rows();
  if (n != l.columns() || b.rows() != n || n == 0) return false;
  if (!y.CopyFrom(b)) return false;
  for (uint32_t c = 0; c < b.columns(); ++c) {
    for (uint32_t i = 0; i < n; ++i) {
      if (l(i, i) == 0) {
        singular = true;
        return false;
      }
      double sum = y(i, c);
      for (uint32_t k = 0; k < i; ++k) sum -= l(i, k) * y(k, c);
      y(i, c) = sum / l(i, i);
    }
  }
  return true;
}

bool BackSubstitute(const Matrix& u, const Matrix& b, Matrix& x, bool& singular) {
  singular = false;
  uint32_t n = u.rows();
  if (n != u.columns() || b.rows() != n || n == 0) return false;
  if (!x.CopyFrom(b)) return false;
  for (uint32_t c = 0; c < b.columns(); ++c) {
    for (uint32_t i = n; i-- > 0;) {
      if (u(i, i) == 0) {
        singular = true;
        return false;
      }
      double sum = x(i, c);
      for (uint32_t k = i + 1; k < n; ++k) sum -= u(i, k) * x(k, c);
      x(i, c) = sum / u(i, i);
    }
  }
  return true;
}

}  // namespace kelpdex::numeric
