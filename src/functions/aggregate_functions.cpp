#include "functions/aggregate_functions.h"

#include <cmath>
#include <string>

#include "functions/arguments.h"
#include "functions/criteria.h"
#include "functions/random.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex::fn {

namespace {

// An array or range argument as a rectangle of a cell store, read with forward cursors.
struct Grid {
  CellStore* store = nullptr;
  uint32_t row1 = 0;
  uint16_t column1 = 0;
  uint32_t rows = 0;
  uint16_t columns = 0;
  CellCursor cursor;

  // All the cells of the rectangle, in order.
  RangeCursor Cells() {
    return RangeCursor(store, row1, row1 + rows - 1, column1,
                       static_cast<uint16_t>(column1 + columns - 1));
  }

  // The number at a relative position, read forward; false for no number there.
  bool NumberAt(uint32_t row, uint16_t column, double& x, uint8_t& error) {
    if (store == nullptr) return false;
    CellRecord* r = store->GetCell(row1 + row, static_cast<uint16_t>(column1 + column), &cursor);
    if (r == nullptr || cell::IsText(r)) return false;
    error = LargerError(error, cell::ErrorNibble(r));
    x = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
    return true;
  }
};

// The grid of an array or range slot; `arraysAbove` counts the array arguments above it.
bool GridOf(FormulaEngine& e, int slot, int arraysAbove, Grid& grid) {
  FormulaValue& v = e.Operand(slot);
  if (v.kind == kind::kArray) {
    grid.store = &e.ArrayBelowTop(arraysAbove);
    grid.rows = v.row2 + 1;
    grid.columns = static_cast<uint16_t>(v.column2 + 1);
    return true;
  }
  if (v.kind == kind::kRangeReference) {
    grid.store = v.sheet != nullptr ? &v.sheet->cells : nullptr;
    grid.row1 = v.row1;
    grid.column1 = v.column1;
    grid.rows = v.row2 - v.row1 + 1;
    grid.columns = static_cast<uint16_t>(v.column2 - v.column1 + 1);
    return true;
  }
  return false;
}

void ReleaseArguments(FormulaEngine& e, int base) {
  for (int slot = e.depth() - 1; slot >= base; --slot) e.Release(e.Operand(slot));
}

struct Integers {
  double value;
  bool first;
  uint8_t error;
};

double Gcd2(double a, double b) {
  while (b != 0) {
    double t = std::fmod(a, b);
    a = b;
    b = t;
  }
  return a;
}

void RunIntegerFold(FormulaEngine& e, bool lcm) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Integers acc{lcm ? 1.0 : 0.0, true, 0};
  auto visit = lcm ? +[](void* c, double x) {
    auto* a = static_cast<Integers*>(c);
    x = std::trunc(x);
    if (x < 0) a->error = LargerError(a->error, ferr::kNum);
    if (x == 0 || a->value == 0) {
      a->value = 0;
      return;
    }
    a->value = a->value / Gcd2(a->value, x) * x;
  }
                   : +[](void* c, double x) {
                       auto* a = static_cast<Integers*>(c);
                       x = std::trunc(x);
                       if (x < 0) a->error = LargerError(a->error, ferr::kNum);
                       a->value = Gcd2(a->value, std::fabs(x));
                     };
  uint8_t error = ForEachNumber(e, base, true, &acc, visit);
  SetNumberResult(e, base, acc.value, LargerError(error, acc.error));
}

// Two arrays of one shape, position by position; empty cells count as 0.
void RunPairs(FormulaEngine& e, double (*term)(double x, double y)) {
  if (!HasArguments(e, 2)) return;
  int base = e.depth() - 2;
  Grid x, y;
  bool yArray = e.Operand(base + 1).kind == kind::kArray;
  if (!GridOf(e, base + 1, 0, y) || !GridOf(e, base, yArray ? 1 : 0, x) || x.rows != y.rows ||
      x.columns != y.columns) {
    ReleaseArguments(e, base);
    SetNumberResult(e, base, 0, ferr::kValue);
    return;
  }
  double total = 0;
  uint8_t error = 0;
  for (uint32_t r = 0; r < x.rows; ++r) {
    for (uint16_t c = 0; c < x.columns; ++c) {
      double a = 0, b = 0;
      x.NumberAt(r, c, a, error);
      y.NumberAt(r, c, b, error);
      total += term(a, b);
    }
  }
  ReleaseArguments(e, base);
  SetNumberResult(e, base, total, error);
}

}  // namespace

void Gcd(FormulaEngine& e) {
  RunIntegerFold(e, false);
}
void Lcm(FormulaEngine& e) {
  RunIntegerFold(e, true);
}

void Multinomial(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  struct Acc {
    double sum = 0;
    double denominator = 1;
    uint8_t error = 0;
  } acc;
  uint8_t error = ForEachNumber(e, base, true, &acc, [](void* c, double x) {
    auto* a = static_cast<Acc*>(c);
    x = std::trunc(x);
    if (x < 0 || x > 170) {
      a->error = ferr::kNum;
      return;
    }
    a->sum += x;
    for (double k = 2; k <= x; ++k) a->denominator *= k;
  });
  double result = 0;
  if (error == 0 && acc.error == 0) {
    if (acc.sum > 170) {
      acc.error = ferr::kNum;
    } else {
      result = 1;
      for (double k = 2; k <= acc.sum; ++k) result *= k;
      result = std::round(result / acc.denominator);
    }
  }
  SetNumberResult(e, base, result, LargerError(error, acc.error));
}

void SumProduct(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  Grid grids[FormulaEngine::kStackSize];
  int arraysAbove = 0;
  bool ok = true;
  for (int i = count - 1; i >= 0; --i) {
    bool isArray = e.Operand(base + i).kind == kind::kArray;
    ok &= GridOf(e, base + i, arraysAbove, grids[i]);
    arraysAbove += isArray;
    ok &= grids[i].rows == grids[count - 1].rows && grids[i].columns == grids[count - 1].columns;
  }
  double total = 0;
  uint8_t error = 0;
  if (ok) {
    // Positions where any array has no number are left out.
    for (uint32_t r = 0; r < grids[0].rows; ++r) {
      for (uint16_t c = 0; c < grids[0].columns; ++c) {
        double product = 1;
        bool all = true;
        for (int i = 0; i < count && all; ++i) {
          double x = 0;
          all = grids[i].NumberAt(r, c, x, error);
          product *= x;
        }
        if (all) total += product;
      }
    }
  }
  ReleaseArguments(e, base);
  SetNumberResult(e, base, total, ok ? error : ferr::kValue);
}

void SumX2mY2(FormulaEngine& e) {
  RunPairs(e, [](double x, double y) { return x * x - y * y; });
}
void SumX2pY2(FormulaEngine& e) {
  RunPairs(e, [](double x, double y) { return x * x + y * y; });
}
void SumXmY2(FormulaEngine& e) {
  RunPairs(e, [](double x, double y) { return (x - y) * (x - y); });
}

void SeriesSum(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() - base != 4) {
    e.SetSyntaxError();
    return;
  }
  struct Series {
    double x = 0, n = 0, m = 0, total = 0;
    int index = 0;
  } series;
  auto add = [](void* c, double a) {
    auto* s = static_cast<Series*>(c);
    s->total += a * std::pow(s->x, s->n + s->index++ * s->m);
  };
  uint8_t error = 0;
  FormulaValue& coefficients = e.Operand(base + 3);
  if (coefficients.kind & kind::kArrayOrRange) {
    // An array owns no pool entry, so the scalars below it are read first, top down.
    error = GetNumberArg(e, base + 2, series.m);
    error = LargerError(error, GetNumberArg(e, base + 1, series.n));
    error = LargerError(error, GetNumberArg(e, base, series.x));
    error = LargerError(error, ForEachNumber(e, base + 3, false, &series, add));
  } else {
    double a = 0;
    error = GetNumberArg(e, base + 3, a);
    error = LargerError(error, GetNumberArg(e, base + 2, series.m));
    error = LargerError(error, GetNumberArg(e, base + 1, series.n));
    error = LargerError(error, GetNumberArg(e, base, series.x));
    add(&series, a);
  }
  SetNumberResult(e, base, series.total, error);
}

void CountIf(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() - base != 2) {
    e.SetSyntaxError();
    return;
  }
  Criteria criteria;
  FormulaValue& c = e.Operand(base + 1);
  e.LoadReference(c);
  uint8_t error = 0;
  if (c.errorCode != 0) {
    criteria.SetError(c.errorCode);
  } else if (c.kind == kind::kString) {
    criteria.SetText(e.TopString());
  } else {
    criteria.SetNumber(c.kind == kind::kNumber ? c.number : 0);
  }
  e.Release(c);
  e.SetDepth(base + 1);
  Grid grid;
  double count = 0;
  if (GridOf(e, base, 0, grid)) {
    RangeCursor read = grid.Cells();
    while (CellRecord* r = read.Next()) count += criteria.Matches(r);
  } else {
    error = ferr::kValue;
  }
  e.Release(e.Operand(base));
  SetNumberResult(e, base, count, error);
}

void SumIf(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  Grid sums;
  bool separateSums = count == 3 && GridOf(e, base + 2, 0, sums);
  bool sumsOnTopAreArray = separateSums && e.Operand(base + 2).kind == kind::kArray;
  Criteria criteria;
  FormulaValue& c = e.Operand(base + 1);
  // The criterion's string, if any, sits below a sum array's nothing: arrays are not pooled.
  if (c.kind == kind::kReference) e.LoadReference(c);
  if (c.errorCode != 0) {
    criteria.SetError(c.errorCode);
  } else if (c.kind == kind::kString) {
    criteria.SetText(e.TopString());
  } else {
    criteria.SetNumber(c.kind == kind::kNumber ? c.number : 0);
  }
  Grid search;
  uint8_t error = 0;
  double total = 0;
  if (!GridOf(e, base, sumsOnTopAreArray ? 1 : 0, search) || (count == 3 && !separateSums)) {
    error = ferr::kValue;
  } else {
    Grid& from = separateSums ? sums : search;
    RangeCursor read = search.Cells();
    while (CellRecord* r = read.Next()) {
      if (!criteria.Matches(r)) continue;
      uint16_t column = cell::Column(r);
      double x = 0;
      if (from.NumberAt(cell::Row(r) - search.row1, static_cast<uint16_t>(column - search.column1),
                        x, error)) {
        total += x;
      }
    }
  }
  ReleaseArguments(e, base);
  SetNumberResult(e, base, total, error);
}

void Rand(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  if (e.depth() != base) {
    e.SetSyntaxError();
    return;
  }
  e.Operand(base) = FormulaValue::Number(NextUniform());
}

void RandBetween(FormulaEngine& e) {
  if (!HasArguments(e, 2) || BroadcastArrays(e, 2)) return;
  int slot = e.depth() - 2;
  double x1 = 0, x2 = 0;
  uint8_t error = GetNumberArg(e, slot + 1, x2);
  error = LargerError(error, GetNumberArg(e, slot, x1));
  if (x1 > x2) std::swap(x1, x2);
  double result = error == 0 ? x1 + NextUniform() * (x2 - x1) : 0;
  SetNumberResult(e, slot, result, error);
}

}  // namespace kelpdex::fn
