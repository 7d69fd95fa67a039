#include "functions/matrix_functions.h"

#include <cmath>
#include <utility>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/numeric/cholesky.h"
#include "functions/numeric/lu.h"

namespace kelpdex::fn {

namespace {

using numeric::Matrix;

// The `result` selector at `i`, 1 to `most`; 0 when it is missing or out of range.
int Selector(const mtx::Arguments& a, int i, int most) {
  if (!a.given[i]) return 0;
  double r = RoundHalfAway(a.number[i]);
  return r >= 1 && r <= most ? static_cast<int>(r) : 0;
}

// Improving iterations: a few are plenty, and the cap keeps a typo from running for minutes.
int Iterations(const mtx::Arguments& a, int i, uint8_t& error) {
  if (!a.given[i]) return 0;
  double n = RoundHalfAway(a.number[i]);
  if (n < 0 || n > 100) {
    error = LargerError(error, ferr::kNum);
    return 0;
  }
  return static_cast<int>(n);
}

uint8_t MemoryOr(bool ok, uint8_t error) {
  return ok ? uint8_t{0} : error;
}

}  // namespace

void MtxT(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "m", 1, a)) return;
  Matrix t;
  uint8_t error = a.error;
  if (error == 0 && !numeric::Transpose(a.matrix[0], t)) error = ferr::kMemory;
  mtx::SetMatrixResult(e, a.base, t, error);
}

void MtxMlt(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2) {
    e.SetSyntaxError();
    return;
  }
  // The stack gives the last factor first, so the product grows from the right.
  Matrix product, factor;
  uint8_t error = 0;
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    error = LargerError(error, mtx::ReadMatrix(e, slot, factor));
    if (error != 0) continue;
    if (slot == e.depth() - 1) {
      product = std::move(factor);
    } else if (factor.columns() != product.rows()) {
      error = ferr::kValue;
    } else if (!numeric::Multiply(factor, product, product)) {
      error = ferr::kMemory;
    }
  }
  mtx::SetMatrixResult(e, base, product, error);
}

void MtxDiag(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "nm", 2, a)) return;
  uint8_t error = a.error;
  double n = RoundHalfAway(a.number[0]);
  if (error == 0 && (!a.given[0] || n < 1 || n > kColumnLimit)) error = ferr::kNum;
  if (error == 0 && !a.given[1]) error = ferr::kValue;
  Matrix d;
  if (error == 0) {
    const Matrix& x = a.matrix[1];
    uint32_t size = static_cast<uint32_t>(n);
    size_t available = size_t(x.rows()) * x.columns();
    if (available != 1 && available < size) error = ferr::kValue;
    if (error == 0 && !d.Allocate(size, size)) error = ferr::kMemory;
    for (uint32_t i = 0; error == 0 && i < size; ++i) {
      d(i, i) = available == 1 ? x.data()[0] : x.data()[i];
    }
  }
  mtx::SetMatrixResult(e, a.base, d, error);
}

// What mtxGauss and mtxChl check first: the result chosen by the argument at `selectorAt`
// (1 to `results`), the errors of the arguments `solveMask` (a solution reads the right side too)
// or `otherMask` name, the improving iterations, and a square matrix with, for a solution, a
// right side of as many rows.
uint8_t StartSquareSystem(const mtx::Arguments& a, int selectorAt, int results, uint32_t solveMask,
                          uint32_t otherMask, int& result, int& iterations) {
  result = Selector(a, selectorAt, results);
  uint8_t error = a.ErrorOf(result == 1 ? solveMask : otherMask);
  iterations = Iterations(a, 2, error);
  if (error == 0 && result == 0) error = ferr::kNum;
  const Matrix& m = a.matrix[0];
  if (error == 0 &&
      (!a.given[0] || m.rows() != m.columns() || (result == 1 && a.matrix[1].rows() != m.rows()))) {
    error = ferr::kValue;
  }
  return error;
}

void MtxGauss(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "mmnnn", 3, a)) return;
  int result = 0, iterations = 0;
  uint8_t error = StartSquareSystem(a, 4, 6, 0x1F, 0x1D, result, iterations);
  const Matrix& m = a.matrix[0];
  Matrix out, l, u, p;
  numeric::LuFactors f;
  bool singular = false;
  bool scaling = a.given[3] && a.number[3] != 0;
  if (error == 0 && !numeric::LuFactor(m, scaling, f, singular)) {
    error = singular ? ferr::kNum : ferr::kMemory;
  }
  if (singular && result == 6) {
    // A singular matrix has the determinant 0, not an error.
    error = 0;
    if (out.Allocate(1, 1)) out(0, 0) = 0;
  } else if (error == 0) {
    bool ok = true;
    switch (result) {
      case 1:
        ok = numeric::LuSolve(m, f, a.matrix[1], iterations, out);
        break;
      case 2:
      case 3:
      case 4:
        ok = numeric::LuParts(f, l, u, p);
        out = std::move(result == 2 ? l : result == 3 ? u : p);
        break;
      case 5:
        ok = numeric::LuInverse(f, out);
        break;
      default:
        ok = out.Allocate(1, 1);
        if (ok) out(0, 0) = numeric::LuDeterminant(f);
        break;
    }
    error = MemoryOr(ok, ferr::kMemory);
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

void MtxChl(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "mmnn", 3, a)) return;
  int result = 0, iterations = 0;
  uint8_t error = StartSquareSystem(a, 3, 5, 0xF, 0xD, result, iterations);
  const Matrix& m = a.matrix[0];
  Matrix u, out;
  bool notDefinite = false;
  if (error == 0 && !numeric::CholeskyFactor(m, u, notDefinite)) {
    error = notDefinite ? ferr::kNum : ferr::kMemory;
  }
  if (error == 0) {
    bool ok = true;
    switch (result) {
      case 1:
        ok = numeric::CholeskySolve(m, u, a.matrix[1], iterations, out);
        break;
      case 2:
        out = std::move(u);
        break;
      case 3:
        ok = numeric::Transpose(u, out);
        break;
      case 4:
        ok = numeric::CholeskyInverse(u, out);
        break;
      default:
        ok = out.Allocate(1, 1);
        if (ok) out(0, 0) = numeric::CholeskyDeterminant(u);
        break;
    }
    error = MemoryOr(ok, ferr::kMemory);
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

namespace {

void Substitute(FormulaEngine& e, bool forward) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "mm", 2, a)) return;
  uint8_t error = a.error;
  const Matrix& t = a.matrix[0];
  const Matrix& b = a.matrix[1];
  if (error == 0 &&
      (!a.given[0] || !a.given[1] || t.rows() != t.columns() || b.rows() != t.rows())) {
    error = ferr::kValue;
  }
  Matrix x;
  bool singular = false;
  if (error == 0) {
    bool ok = forward ? numeric::ForwardSubstitute(t, b, x, singular)
                      : numeric::BackSubstitute(t, b, x, singular);
    if (!ok) error = singular ? ferr::kNum : ferr::kMemory;
  }
  mtx::SetMatrixResult(e, a.base, x, error);
}

// mDeterm and mInverse: the Gauss core with scaling, on one square matrix.
void SquareGauss(FormulaEngine& e, bool inverse) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "m", 1, a)) return;
  uint8_t error = a.error;
  const Matrix& m = a.matrix[0];
  if (error == 0 && (!a.given[0] || m.rows() != m.columns())) error = ferr::kValue;
  numeric::LuFactors f;
  bool singular = false;
  Matrix out;
  if (error == 0 && !numeric::LuFactor(m, true, f, singular) && !singular) error = ferr::kMemory;
  if (error == 0 && inverse) {
    if (singular)
      error = ferr::kNum;
    else if (!numeric::LuInverse(f, out))
      error = ferr::kMemory;
  } else if (error == 0) {
    if (!out.Allocate(1, 1))
      error = ferr::kMemory;
    else
      out(0, 0) = singular ? 0 : numeric::LuDeterminant(f);
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace

void MtxFwSubst(FormulaEngine& e) {
  Substitute(e, true);
}

void MtxBkSubst(FormulaEngine& e) {
  Substitute(e, false);
}

void MDeterm(FormulaEngine& e) {
  SquareGauss(e, false);
}

void MInverse(FormulaEngine& e) {
  SquareGauss(e, true);
}

}  // namespace kelpdex::fn
