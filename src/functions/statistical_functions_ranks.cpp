#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "functions/arguments.h"
#include "functions/statistical_functions.h"
#include "functions/statistical_functions_walk.h"

namespace kelpdex::fn {

namespace {

using stat::Take;

bool IsOmitted(FormulaEngine& e, int slot) {
  const FormulaValue& v = e.Operand(slot);
  return v.kind == kind::kEmpty && v.errorCode == 0;
}

// Reads the scalar in `slot` and releases it.
uint8_t ReadNumber(FormulaEngine& e, int slot, double& x) {
  uint8_t error = GetNumberArg(e, slot, x);
  e.Release(e.Operand(slot));
  return error;
}

// The value at fraction k of the sorted values, interpolated between neighbours.
double Interpolated(const std::vector<double>& sorted, double k) {
  double at = k * static_cast<double>(sorted.size() - 1);
  size_t i = static_cast<size_t>(std::floor(at));
  if (i + 1 >= sorted.size()) return sorted.back();
  return sorted[i] + (at - static_cast<double>(i)) * (sorted[i + 1] - sorted[i]);
}

// The frame of the functions of one array and one number: array in `slot`, the number above it.
// `compute` gets the values sorted ascending.
void RunArrayAndNumber(FormulaEngine& e, double (*compute)(const std::vector<double>& sorted,
                                                           double k, uint8_t& error)) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  double k = 0;
  uint8_t error = ReadNumber(e, slot + 1, k);
  std::vector<double> x;
  error = LargerError(error, stat::CollectValues(e, slot, slot, Take::kNumbers, x));
  double result = 0;
  if (error == 0 && x.empty()) error = ferr::kNum;
  if (error == 0) {
    std::sort(x.begin(), x.end());
    result = compute(x, k, error);
  }
  SetNumberResult(e, slot, result, error);
}

// The k-th value counted from the small end (k rounded half away from zero, from 1).
double KthSmallest(const std::vector<double>& sorted, double k, uint8_t& error) {
  double rank = RoundHalfAway(k);
  if (!(rank >= 1 && rank <= static_cast<double>(sorted.size()))) {
    error = ferr::kNum;
    return 0;
  }
  return sorted[static_cast<size_t>(rank) - 1];
}

}  // namespace

void Large(FormulaEngine& e) {
  RunArrayAndNumber(e, [](const std::vector<double>& sorted, double k, uint8_t& error) {
    return KthSmallest(sorted, static_cast<double>(sorted.size()) + 1 - RoundHalfAway(k), error);
  });
}

void Small(FormulaEngine& e) {
  RunArrayAndNumber(e, KthSmallest);
}

void Percentile(FormulaEngine& e) {
  RunArrayAndNumber(e, [](const std::vector<double>& sorted, double k, uint8_t& error) {
    if (!(k >= 0 && k <= 1)) {
      error = ferr::kNum;
      return 0.0;
    }
    return Interpolated(sorted, k);
  });
}

void Quartile(FormulaEngine& e) {
  RunArrayAndNumber(e, [](const std::vector<double>& sorted, double q, uint8_t& error) {
    q = std::trunc(q);
    if (!(q >= 0 && q <= 4)) {
      error = ferr::kNum;
      return 0.0;
    }
    return Interpolated(sorted, q / 4);
  });
}

void TrimMean(FormulaEngine& e) {
  RunArrayAndNumber(e, [](const std::vector<double>& sorted, double percent, uint8_t& error) {
    if (!(percent >= 0 && percent < 1)) {
      error = ferr::kNum;
      return 0.0;
    }
    // As many values leave at each end: half the share, rounded down to a whole count.
    size_t cut = static_cast<size_t>(std::floor(static_cast<double>(sorted.size()) * percent / 2));
    double sum = 0;
    for (size_t i = cut; i < sorted.size() - cut; ++i) sum += sorted[i];
    return sum / static_cast<double>(sorted.size() - 2 * cut);
  });
}

void Median(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  std::vector<double> x;
  uint8_t error = stat::CollectValues(e, base, e.depth() - 1, Take::kNumbers, x);
  double result = 0;
  if (error == 0 && x.empty()) error = ferr::kDivZero;
  if (error == 0) {
    std::sort(x.begin(), x.end());
    result = Interpolated(x, 0.5);
  }
  SetNumberResult(e, base, result, error);
}

void Mode(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  std::vector<double> x;
  uint8_t error = stat::CollectValues(e, base, e.depth() - 1, Take::kNumbers, x);
  double result = 0;
  if (error == 0) {
    // Sorted positions keep equal values together; among equally frequent values the one met
    // first in the arguments wins.
    std::vector<size_t> order(x.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return x[a] < x[b]; });
    size_t bestCount = 1, bestFirst = 0;
    for (size_t i = 0; i < order.size();) {
      size_t j = i;
      while (j < order.size() && x[order[j]] == x[order[i]]) ++j;
      size_t count = j - i;
      if (count > bestCount || (count == bestCount && count > 1 && order[i] < bestFirst)) {
        bestCount = count;
        bestFirst = order[i];
      }
      i = j;
    }
    // No value that occurs twice: there is no mode.
    if (bestCount < 2) {
      error = ferr::kNA;
    } else {
      result = x[bestFirst];
    }
  }
  SetNumberResult(e, base, result, error);
}

void Rank(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  double order = 0, x = 0;
  uint8_t error = count == 3 ? ReadNumber(e, base + 2, order) : 0;
  std::vector<double> values;
  error = LargerError(error, stat::CollectValues(e, base + 1, base + 1, Take::kNumbers, values));
  error = LargerError(error, ReadNumber(e, base, x));
  double before = 0;
  bool found = false;
  for (double v : values) {
    found |= v == x;
    before += order != 0 ? v < x : v > x;
  }
  if (error == 0 && !found) error = ferr::kNA;
  SetNumberResult(e, base, before + 1, error);
}

void PercentRank(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  double digits = 3, x = 0;
  uint8_t error = count == 3 && !IsOmitted(e, base + 2) ? ReadNumber(e, base + 2, digits) : 0;
  if (count == 3) e.Release(e.Operand(base + 2));
  error = LargerError(error, ReadNumber(e, base + 1, x));
  std::vector<double> v;
  error = LargerError(error, stat::CollectValues(e, base, base, Take::kNumbers, v));
  digits = std::trunc(digits);
  double result = 0;
  if (error == 0 && (digits < 1 || digits > 15)) error = ferr::kNum;
  if (error == 0 && v.empty()) error = ferr::kDivZero;
  if (error == 0) {
    std::sort(v.begin(), v.end());
    if (x < v.front() || x > v.back()) {
      error = ferr::kNA;
    } else if (v.size() == 1) {
      result = 1;
    } else {
      // The share of values below x; between two values, interpolated.
      size_t below = static_cast<size_t>(std::lower_bound(v.begin(), v.end(), x) - v.begin());
      double n1 = static_cast<double>(v.size() - 1);
      if (v[below] == x) {
        result = static_cast<double>(below) / n1;
      } else {
        double a = v[below - 1], b = v[below];
        result = (static_cast<double>(below - 1) + (x - a) / (b - a)) / n1;
      }
      // Cut, not rounded, to the digits asked for; the nudge keeps 0.3 from reading 0.2999...
      double scale = std::pow(10.0, digits);
      result = std::floor(result * scale * (1 + 1e-13)) / scale;
    }
  }
  SetNumberResult(e, base, result, error);
}

void Frequency(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  std::vector<double> data, bins;
  uint8_t error = stat::CollectValues(e, slot + 1, slot + 1, Take::kNumbers, bins);
  error = LargerError(error, stat::CollectValues(e, slot, slot, Take::kNumbers, data));
  // Bins may come in any order: each value goes to the smallest bin at least as large, and the
  // counts are reported in the bins' own order, with the values above them all last.
  std::vector<size_t> order(bins.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return bins[a] < bins[b]; });
  std::vector<double> sorted(bins.size());
  for (size_t i = 0; i < order.size(); ++i) sorted[i] = bins[order[i]];
  std::vector<double> counts(bins.size() + 1, 0);
  for (double x : data) {
    size_t at =
        static_cast<size_t>(std::lower_bound(sorted.begin(), sorted.end(), x) - sorted.begin());
    counts[at < order.size() ? order[at] : bins.size()] += 1;
  }
  stat::SetColumnResult(e, slot, counts.data(), counts.size(), error);
}

}  // namespace kelpdex::fn
