// mtxSVD and the least-squares functions that reduce to it.
#include <algorithm>
#include <cmath>
#include <utility>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/matrix_functions.h"
#include "functions/numeric/svd.h"

namespace kelpdex::fn {

namespace {

using numeric::Matrix;

int Selector(const mtx::Arguments& a, int i, int most) {
  if (!a.given[i]) return 0;
  double r = RoundHalfAway(a.number[i]);
  return r >= 1 && r <= most ? static_cast<int>(r) : 0;
}

// An omitted or smaller ratio is raised to the smallest one allowed.
double Ratio(const mtx::Arguments& a, int i) {
  return a.given[i] ? std::max(a.number[i], numeric::kMinMaxRatio) : numeric::kMinMaxRatio;
}

// The sums of squares (A*x - B_i)^T*(A*x - B_i), one per column, optionally weighted by G.
bool RestValues(const Matrix& a, const Matrix& x, const Matrix& b, const Matrix* g, Matrix& out) {
  Matrix ax;
  if (!numeric::Multiply(a, x, ax) || !out.Allocate(b.columns(), 1)) return false;
  for (uint32_t c = 0; c < b.columns(); ++c) {
    double sum = 0;
    for (uint32_t i = 0; i < b.rows(); ++i) {
      double ri = ax(i, c) - b(i, c);
      if (g == nullptr) {
        sum += ri * ri;
        continue;
      }
      for (uint32_t j = 0; j < b.rows(); ++j) sum += ri * (*g)(i, j) * (ax(j, c) - b(j, c));
    }
    out(c, 0) = sum;
  }
  return true;
}

uint8_t CoreError(bool notConvergent) {
  return notConvergent ? ferr::kNum : ferr::kMemory;
}

}  // namespace

void MtxSvd(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "mmnn", 3, a)) return;
  int result = Selector(a, 3, 7);
  bool needsB = result == 1 || result == 3;
  uint8_t error = a.ErrorOf(needsB ? 0xF : 0xD);
  if (error == 0 && result == 0) error = ferr::kNum;
  const Matrix& m = a.matrix[0];
  if (error == 0 && (!a.given[0] || (needsB && (!a.given[1] || a.matrix[1].rows() != m.rows())))) {
    error = ferr::kValue;
  }
  numeric::Svd svd;
  bool notConvergent = false;
  if (error == 0 && !numeric::SvdDecompose(m, svd, notConvergent)) error = CoreError(notConvergent);
  double ratio = Ratio(a, 2);
  Matrix out, x;
  if (error == 0) {
    bool ok = true;
    switch (result) {
      case 1:
        ok = numeric::SvdSolve(svd, a.matrix[1], ratio, out);
        break;
      case 2:
        ok = out.Allocate(1, 1);
        if (ok) out(0, 0) = numeric::SvdRank(svd, ratio);
        break;
      case 3:
        ok = numeric::SvdSolve(svd, a.matrix[1], ratio, x) &&
             RestValues(m, x, a.matrix[1], nullptr, out);
        break;
      case 4:
        ok = numeric::SvdPseudoInverse(svd, ratio, out);
        break;
      case 5:
        out = std::move(svd.u);
        break;
      case 6:
        ok = out.Allocate(m.columns(), m.columns());
        for (uint32_t i = 0; ok && i < m.columns(); ++i) out(i, i) = svd.s[i];
        break;
      default:
        out = std::move(svd.v);
        break;
    }
    if (!ok) error = ferr::kMemory;
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

void MtxLsc(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "mmmmnn", 5, a)) return;
  int result = Selector(a, 5, 2);
  uint8_t error = a.error;
  if (error == 0 && result == 0) error = ferr::kNum;
  const Matrix &m = a.matrix[0], &b = a.matrix[1], &c = a.matrix[2], &d = a.matrix[3];
  bool shapes = a.given[0] && a.given[1] && a.given[2] && a.given[3] && b.rows() == m.rows() &&
                b.columns() == 1 && c.columns() == m.columns() && c.rows() <= m.columns() &&
                d.rows() == c.rows() && d.columns() == 1;
  if (error == 0 && !shapes) error = ferr::kValue;
  Matrix x, out;
  bool notConvergent = false;
  if (error == 0 && !numeric::ConstrainedLeastSquares(m, b, c, d, Ratio(a, 4), x, notConvergent)) {
    error = CoreError(notConvergent);
  }
  if (error == 0) {
    if (result == 1)
      out = std::move(x);
    else if (!RestValues(m, x, b, nullptr, out))
      error = ferr::kMemory;
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

void MtxLsw(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "mmmnn", 4, a)) return;
  int result = Selector(a, 4, 2);
  uint8_t error = a.error;
  if (error == 0 && result == 0) error = ferr::kNum;
  const Matrix &m = a.matrix[0], &b = a.matrix[1], &g = a.matrix[2];
  bool shapes = a.given[0] && a.given[1] && a.given[2] && b.rows() == m.rows() &&
                b.columns() == 1 && g.rows() == m.rows() && g.columns() == m.rows();
  if (error == 0 && !shapes) error = ferr::kValue;
  Matrix x, out;
  bool notConvergent = false;
  if (error == 0 && !numeric::WeightedLeastSquares(m, b, g, Ratio(a, 3), x, notConvergent)) {
    error = CoreError(notConvergent);
  }
  if (error == 0) {
    if (result == 1)
      out = std::move(x);
    else if (!RestValues(m, x, b, &g, out))
      error = ferr::kMemory;
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace kelpdex::fn
