// root, minSimplex and minMC: each evaluates the formula of a cell again and again while it
// changes the numbers of variable cells in place.
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/optimisation_functions.h"
#include "functions/random.h"
#include "store/bytes.h"
#include "store/cell_record.h"
#include "store/workbook.h"

namespace kelpdex::fn {

namespace {

// The formula of f(x) and the variable cells, with their numbers kept to be put back.
class Objective {
 public:
  explicit Objective(FormulaEngine& e) : outer_(e) {}
  ~Objective() { Restore(); }
  Objective(const Objective&) = delete;
  Objective& operator=(const Objective&) = delete;

  // Binds the formula cell in `functionSlot` and the variables in `variableSlot` (a reference or
  // range of number cells). "#REF!" when either is not what it must be; neither slot is loaded.
  uint8_t Bind(int functionSlot, int variableSlot) {
    uint8_t error = BindCells(functionSlot, variableSlot);
    // The two slots were left unloaded; whatever else they hold goes back to the pool now.
    outer_.Release(outer_.Operand(variableSlot));
    outer_.Release(outer_.Operand(functionSlot));
    return error;
  }

  uint8_t BindCells(int functionSlot, int variableSlot) {
    const FormulaValue& f = outer_.Operand(functionSlot);
    const FormulaValue& x = outer_.Operand(variableSlot);
    if (f.kind != kind::kReference || f.errorCode != 0) return ferr::kRef;
    Worksheet* sheet = f.sheet != nullptr ? f.sheet : outer_.sheet();
    if (sheet == nullptr) return ferr::kRef;
    const CellRecord* cell = sheet->cells.GetCell(f.row, f.column);
    if (cell == nullptr || !cell::IsFormula(cell)) return ferr::kRef;
    formula_ = cell::FormulaText(cell);
    if (formula_.empty() || (formula_[0] != '=' && formula_[0] != '+')) formula_.insert(0, "=");
    row_ = f.row;
    field_ = f.column;
    sheet_ = sheet;
    if (x.errorCode != 0) return ferr::kRef;
    Worksheet* xs = x.sheet != nullptr ? x.sheet : outer_.sheet();
    if (x.kind == kind::kReference) return AddVariables(xs, x.row, x.row, x.column, x.column);
    if (x.kind == kind::kRangeReference)
      return AddVariables(xs, x.row1, x.row2, x.column1, x.column2);
    return ferr::kRef;
  }

  size_t size() const { return cells_.size(); }
  double Start(size_t i) const { return saved_[i]; }

  // f at the point x; false with `error` set when the formula gives no number.
  bool Evaluate(const double* x, double& value, uint8_t& error) {
    for (size_t i = 0; i < cells_.size(); ++i) StoreF64(cell::Bytes(Cell(i)) + 7, x[i]);
    // A second engine over the same table leaves the caller's stacks, pool and arrays alone.
    FormulaEngine inner(outer_.workbook(), sheet_, outer_.functions());
    inner.SetFields(outer_.fields(), outer_.fieldCount());
    inner.EvaluateFormula(formula_, field_, row_);
    FormulaValue result = inner.Result();
    if (result.kind == kind::kString) inner.CoerceToNumber(result);
    error = result.errorCode != 0 ? result.errorCode : inner.syntaxError() ? ferr::kSyntax : 0;
    if (error == 0 && result.kind != kind::kNumber) error = ferr::kValue;
    value = result.number;
    return error == 0;
  }

  void Restore() {
    for (size_t i = 0; i < cells_.size(); ++i) StoreF64(cell::Bytes(Cell(i)) + 7, saved_[i]);
  }

 private:
  struct Place {
    Worksheet* sheet;
    uint32_t row;
    uint16_t column;
  };

  // The cell is looked up again each time: the formula may write other cells of the sheet.
  CellRecord* Cell(size_t i) {
    return cells_[i].sheet->cells.GetCell(cells_[i].row, cells_[i].column);
  }

  uint8_t AddVariables(Worksheet* sheet, uint32_t row1, uint32_t row2, uint16_t c1, uint16_t c2) {
    if (sheet == nullptr || size_t(row2 - row1 + 1) * (c2 - c1 + 1) > 4096) return ferr::kRef;
    for (uint32_t r = row1; r <= row2; ++r) {
      for (uint16_t c = c1; c <= c2; ++c) {
        const CellRecord* cell = sheet->cells.GetCell(r, c);
        if (cell == nullptr || !cell::IsNumber(cell)) return ferr::kRef;
        cells_.push_back({sheet, r, c});
        saved_.push_back(cell::Number(cell));
      }
    }
    return 0;
  }

  FormulaEngine& outer_;
  std::string formula_;
  Worksheet* sheet_ = nullptr;
  uint32_t row_ = 0;
  uint16_t field_ = 0;
  std::vector<Place> cells_;
  std::vector<double> saved_;
};

// Rejects and releases the two unloaded slots after the call is done.
void Finish(FormulaEngine& e, int base, double value, uint8_t error) {
  SetNumberResult(e, base, value, error);
}

}  // namespace

void Root(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "xxnnn", 4, a)) return;
  Objective f(e);
  uint8_t error = LargerError(a.error, f.Bind(a.base, a.base + 1));
  if (error == 0 && f.size() != 1) error = ferr::kRef;
  double epsilon = a.given[4] && a.number[4] > 0 ? a.number[4] : 1e-15;
  double x0 = a.number[2], x1 = a.number[3];
  if (error == 0 && (!a.given[2] || !a.given[3] || !(x0 < x1))) error = ferr::kNum;
  double f0 = 0, f1 = 0, root = 0;
  if (error == 0 && f.Evaluate(&x0, f0, error) && f.Evaluate(&x1, f1, error)) {
    if (f0 * f1 > 0)
      error = ferr::kNum;
    else if (f0 == 0)
      root = x0;
    else if (f1 == 0)
      root = x1;
    else {
      // Regula falsi, Illinois: halving the stale end keeps the bracket shrinking from both sides.
      bool done = false;
      for (int step = 0; step < 1000 && !done && error == 0; ++step) {
        double x2 = x1 - (x1 - x0) * f1 / (f1 - f0);
        double f2 = 0;
        if (!f.Evaluate(&x2, f2, error)) break;
        done = f2 == 0 || std::fabs(x2 - x1) < epsilon;
        if (f2 * f1 > 0) {
          f0 /= 2;
        } else {
          x0 = x1;
          f0 = f1;
        }
        x1 = x2;
        f1 = f2;
        if (!done && f2 * f0 > 0) error = ferr::kNum;
      }
      if (error == 0 && !done) error = ferr::kNum;
      root = x1;
    }
  }
  f.Restore();
  Finish(e, a.base, root, error);
}

void MinSimplex(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArgumentsResultLast(e, "xxmnnnn", 4, a)) return;
  Objective f(e);
  uint8_t error = LargerError(a.error, f.Bind(a.base, a.base + 1));
  size_t n = f.size();
  const numeric::Matrix& v = a.matrix[2];
  if (error == 0 && (!a.given[2] || size_t(v.rows()) * v.columns() != n)) error = ferr::kValue;
  // 0 counts as omitted for the three settings.
  double start = a.given[3] && a.number[3] != 0 ? a.number[3] : 1e-5;
  double epsilon = a.given[4] && a.number[4] != 0 ? a.number[4] : 1e-25;
  double maxSteps = a.given[5] && a.number[5] != 0 ? RoundHalfAway(a.number[5]) : 2000;
  double result = a.given[6] ? RoundHalfAway(a.number[6]) : 0;
  if (error == 0 && (result < 1 || result > 3 || maxSteps < 1 || maxSteps > 1e7))
    error = ferr::kNum;
  std::vector<size_t> active;
  for (size_t i = 0; error == 0 && i < n; ++i) {
    if (v.data()[i] == 1) active.push_back(i);
  }
  size_t k = active.size();
  std::vector<std::vector<double>> vertex(k + 1);
  std::vector<double> value(k + 1, 0);
  for (size_t j = 0; error == 0 && j <= k; ++j) {
    vertex[j].resize(n);
    for (size_t i = 0; i < n; ++i) vertex[j][i] = f.Start(i);
    if (j > 0) vertex[j][active[j - 1]] += start;
    f.Evaluate(vertex[j].data(), value[j], error);
  }
  double steps = 0;
  bool converged = k == 0;
  std::vector<double> centre(n), trial(n), other(n);
  auto mix = [&](double t, const std::vector<double>& towards, std::vector<double>& out) {
    for (size_t i = 0; i < n; ++i) out[i] = centre[i] + t * (towards[i] - centre[i]);
  };
  while (error == 0 && !converged) {
    size_t hi = 0, lo = 0;
    for (size_t j = 1; j <= k; ++j) {
      if (value[j] > value[hi]) hi = j;
      if (value[j] < value[lo]) lo = j;
    }
    size_t next = lo;
    for (size_t j = 0; j <= k; ++j) {
      if (j != hi && value[j] >= value[next]) next = j;
    }
    double spread = 2 * std::fabs(value[hi] - value[lo]) /
                    (std::fabs(value[hi]) + std::fabs(value[lo]) + 1e-30);
    if (spread < epsilon) {
      converged = true;
      break;
    }
    if (steps >= maxSteps) {
      error = ferr::kNum;
      break;
    }
    steps += 1;
    centre.assign(vertex[hi].begin(), vertex[hi].end());
    for (size_t i : active) {
      double sum = 0;
      for (size_t j = 0; j <= k; ++j) sum += j == hi ? 0 : vertex[j][i];
      centre[i] = sum / static_cast<double>(k);
    }
    double ft = 0, fo = 0;
    mix(-1, vertex[hi], trial);  // reflection through the centre of the others
    if (!f.Evaluate(trial.data(), ft, error)) break;
    if (ft < value[lo]) {
      mix(-2, vertex[hi], other);  // expansion
      if (!f.Evaluate(other.data(), fo, error)) break;
      if (fo < ft) std::swap(trial, other), ft = fo;
      vertex[hi] = trial, value[hi] = ft;
    } else if (ft < value[next]) {
      vertex[hi] = trial, value[hi] = ft;
    } else {
      if (ft < value[hi]) vertex[hi] = trial, value[hi] = ft;
      mix(0.5, vertex[hi], other);  // contraction
      if (!f.Evaluate(other.data(), fo, error)) break;
      if (fo < value[hi]) {
        vertex[hi] = other, value[hi] = fo;
      } else {
        for (size_t j = 0; j <= k && error == 0; ++j) {  // shrink towards the best
          if (j == lo) continue;
          for (size_t i : active)
            vertex[j][i] = vertex[lo][i] + 0.5 * (vertex[j][i] - vertex[lo][i]);
          f.Evaluate(vertex[j].data(), value[j], error);
        }
      }
    }
  }
  size_t best = 0;
  for (size_t j = 1; j <= k; ++j) {
    if (value[j] < value[best]) best = j;
  }
  f.Restore();
  if (error != 0 || result != 1) {
    double answer = result == 2 ? (k + 1 > 0 && error == 0 ? value[best] : 0) : steps;
    Finish(e, a.base, answer, error);
    return;
  }
  numeric::Matrix out;
  if (!out.Allocate(static_cast<uint32_t>(n), 1)) error = ferr::kMemory;
  for (size_t i = 0; error == 0 && i < n; ++i) out(static_cast<uint32_t>(i), 0) = vertex[best][i];
  mtx::SetMatrixResult(e, a.base, out, error);
}

void MinMC(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "xxmnnn", 6, a)) return;
  Objective f(e);
  uint8_t error = LargerError(a.error, f.Bind(a.base, a.base + 1));
  size_t n = f.size();
  const numeric::Matrix& v = a.matrix[2];
  if (error == 0 && size_t(v.rows()) * v.columns() != n) error = ferr::kValue;
  double from = a.number[3], to = a.number[4], draws = RoundHalfAway(a.number[5]);
  if (error == 0 && (!(from <= to) || draws < 1 || draws > 1e7)) error = ferr::kNum;
  std::vector<double> x(n), best(n);
  for (size_t i = 0; i < n; ++i) x[i] = best[i] = f.Start(i);
  double bestValue = 0;
  bool found = false;
  for (double d = 0; error == 0 && d < draws; d += 1) {
    for (size_t i = 0; i < n; ++i) {
      if (v.data()[i] == 1) x[i] = from + (to - from) * NextUniform();
    }
    double y = 0;
    if (!f.Evaluate(x.data(), y, error)) break;
    if (!found || y < bestValue) {
      found = true;
      bestValue = y;
      best = x;
    }
  }
  f.Restore();
  numeric::Matrix out;
  if (error == 0 && !out.Allocate(static_cast<uint32_t>(n), 1)) error = ferr::kMemory;
  for (size_t i = 0; error == 0 && i < n; ++i) out(static_cast<uint32_t>(i), 0) = best[i];
  mtx::SetMatrixResult(e, a.base, out, error);
}

}  // namespace kelpdex::fn
