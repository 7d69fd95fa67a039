#include "functions/optimisation_functions.h"

#include <cmath>
#include <utility>
#include <vector>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/numeric/quadratic.h"
#include "functions/numeric/simplex.h"

namespace kelpdex::fn {

namespace {

using numeric::LinearProgram;
using numeric::LpStatus;
using numeric::Matrix;

// Enough optimum vertices for any practical choice of `vector`.
constexpr size_t kMostOptima = 1000;

// The elements of a row or column matrix; false for any other shape.
bool VectorOf(const Matrix& m, size_t length, std::vector<double>& out) {
  if (m.empty() || (m.rows() != 1 && m.columns() != 1)) return false;
  if (size_t(m.rows()) * m.columns() != length) return false;
  out.assign(m.data(), m.data() + length);
  return true;
}

// A, s, b, c from the first four positions; `extra` the position of the int or bin flags, or -1.
uint8_t ReadProgram(mtx::Arguments& a, int extra, LinearProgram& lp) {
  for (int i = 0; i < 4; ++i) {
    if (!a.given[i]) return ferr::kValue;
  }
  lp.a = std::move(a.matrix[0]);
  uint32_t m = lp.a.rows(), n = lp.a.columns();
  std::vector<double> sense;
  if (!VectorOf(a.matrix[1], m, sense) || !VectorOf(a.matrix[2], m, lp.b) ||
      !VectorOf(a.matrix[3], n, lp.c)) {
    return ferr::kValue;
  }
  for (double s : sense) {
    if (s != 1 && s != 0 && s != -1) return ferr::kNum;
    lp.sense.push_back(static_cast<int>(s));
  }
  lp.integer.assign(n, 0);
  if (extra >= 0) {
    std::vector<double> flags;
    if (!a.given[extra] || !VectorOf(a.matrix[extra], n, flags)) return ferr::kValue;
    for (uint32_t j = 0; j < n; ++j) lp.integer[j] = flags[j] == 1;
  }
  return 0;
}

uint8_t StatusError(LpStatus status) {
  switch (status) {
    case LpStatus::kOptimal:
      return 0;
    case LpStatus::kUnbounded:
      return ferr::kNA;
    case LpStatus::kInfeasible:
      return ferr::kNull;
    default:
      return ferr::kNum;
  }
}

// The frame of the three: `extra` is the position of the int or bin flags, or -1.
void RunProgram(FormulaEngine& e, int extra, bool binary) {
  mtx::Arguments a;
  bool ok =
      extra < 0 ? mtx::ReadArguments(e, "mmmmnnn", 5, a) : mtx::ReadArguments(e, "mmmmmnnn", 6, a);
  if (!ok) return;
  int at = extra < 0 ? 4 : 5;
  uint8_t error = a.error;
  LinearProgram lp;
  if (error == 0) error = ReadProgram(a, extra, lp);
  if (a.given[at + 1]) lp.epsilon = a.number[at + 1] > 0 ? a.number[at + 1] : lp.epsilon;
  if (a.given[at + 2]) lp.bigM = a.number[at + 2];
  double selector = a.given[at] ? RoundHalfAway(a.number[at]) : 0;
  if (error == 0 && selector < 0) error = ferr::kNum;
  if (error == 0 && binary) {
    // Each binary variable gets its row x[j] <= 1 and is held whole.
    uint32_t m = lp.a.rows(), n = lp.a.columns();
    uint32_t added = 0;
    for (uint32_t j = 0; j < n; ++j) added += lp.integer[j];
    Matrix wider;
    if (!wider.Allocate(m + added, n)) error = ferr::kMemory;
    for (uint32_t i = 0; error == 0 && i < m; ++i) {
      for (uint32_t j = 0; j < n; ++j) wider(i, j) = lp.a(i, j);
    }
    for (uint32_t j = 0, row = m; error == 0 && j < n; ++j) {
      if (!lp.integer[j]) continue;
      wider(row++, j) = 1;
      lp.sense.push_back(1);
      lp.b.push_back(1);
    }
    if (error == 0) lp.a = std::move(wider);
  }
  std::vector<std::vector<double>> optima;
  if (error == 0) {
    LpStatus status = extra < 0 ? numeric::SolveLinearProgram(lp, kMostOptima, optima)
                                : numeric::SolveIntegerProgram(lp, kMostOptima, optima);
    error = StatusError(status);
  }
  Matrix out;
  if (error == 0 && selector == 0) {
    if (!out.Allocate(1, 1))
      error = ferr::kMemory;
    else
      out(0, 0) = static_cast<double>(optima.size());
  } else if (error == 0) {
    if (selector > static_cast<double>(optima.size())) error = ferr::kNum;
    const std::vector<double>* x = error == 0 ? &optima[size_t(selector) - 1] : nullptr;
    if (x != nullptr && !out.Allocate(static_cast<uint32_t>(x->size()), 1)) error = ferr::kMemory;
    for (size_t j = 0; error == 0 && j < x->size(); ++j) out(static_cast<uint32_t>(j), 0) = (*x)[j];
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace

void LProg(FormulaEngine& e) {
  RunProgram(e, -1, false);
}

void LProgInt(FormulaEngine& e) {
  RunProgram(e, 4, false);
}

void LProgBin(FormulaEngine& e) {
  RunProgram(e, 4, true);
}

void QProg(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "mmmmmnn", 6, a)) return;
  uint8_t error = a.error;
  LinearProgram lp;
  if (error == 0) error = ReadProgram(a, -1, lp);
  const Matrix& c = a.matrix[4];
  if (error == 0 && (c.rows() != lp.a.columns() || c.columns() != lp.a.columns())) {
    error = ferr::kValue;
  }
  if (a.given[6] && a.number[6] > 0) lp.epsilon = a.number[6];
  double selector = a.given[5] ? RoundHalfAway(a.number[5]) : 0;
  if (error == 0 && selector < 0) error = ferr::kNum;
  // A positive definite C makes the optimum unique: the count is 1 and only vector 1 exists.
  if (error == 0 && selector > 1) error = ferr::kNum;
  std::vector<double> x;
  if (error == 0) {
    // A C that is not positive definite is "#NUM!", as the Cholesky functions answer it.
    error = StatusError(numeric::SolveQuadraticProgram(lp, c, x));
  }
  Matrix out;
  uint32_t rows = selector == 0 ? 1 : static_cast<uint32_t>(x.size());
  if (error == 0 && !out.Allocate(rows, 1)) error = ferr::kMemory;
  for (uint32_t j = 0; error == 0 && j < rows; ++j) out(j, 0) = selector == 0 ? 1 : x[j];
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace kelpdex::fn
