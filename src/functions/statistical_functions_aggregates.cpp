#include <cmath>
#include <vector>

#include "functions/arguments.h"
#include "functions/statistical_functions.h"
#include "functions/statistical_functions_walk.h"
#include "store/range_cursor.h"
#include "store/workbook.h"

namespace kelpdex::fn {

using stat::Take;

namespace {

// The common frame of the aggregates that need all their values at once: at least one argument,
// the values collected, the result computed from them.
void RunCollected(FormulaEngine& e, Take take,
                  double (*compute)(std::vector<double>& x, uint8_t& error)) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  std::vector<double> x;
  uint8_t error = stat::CollectValues(e, base, e.depth() - 1, take, x);
  double result = 0;
  if (error == 0) result = compute(x, error);
  SetNumberResult(e, base, result, error);
}

// Variance of the sample (n - 1) or of the population (n).
double Variance(std::vector<double>& x, uint8_t& error, bool sample) {
  size_t n = x.size();
  if (n < (sample ? 2u : 1u)) {
    error = ferr::kDivZero;
    return 0;
  }
  double ss = stat::SquaredDeviations(x, stat::Mean(x));
  return ss / static_cast<double>(sample ? n - 1 : n);
}

double SampleVariance(std::vector<double>& x, uint8_t& error) {
  return Variance(x, error, true);
}
double PopulationVariance(std::vector<double>& x, uint8_t& error) {
  return Variance(x, error, false);
}
double SampleDeviation(std::vector<double>& x, uint8_t& error) {
  return std::sqrt(Variance(x, error, true));
}
double PopulationDeviation(std::vector<double>& x, uint8_t& error) {
  return std::sqrt(Variance(x, error, false));
}

double MeanOf(std::vector<double>& x, uint8_t& error) {
  if (x.empty()) {
    error = ferr::kDivZero;
    return 0;
  }
  return stat::Mean(x);
}

// The largest or smallest value; no value at all gives 0.
double Extreme(const std::vector<double>& x, bool largest) {
  if (x.empty()) return 0;
  double best = x[0];
  for (double v : x) best = largest ? std::fmax(best, v) : std::fmin(best, v);
  return best;
}

// The sums of the third and fourth powers of the standardized values, with the sample deviation.
bool StandardizedMoments(const std::vector<double>& x, size_t least, double& m3, double& m4,
                         uint8_t& error) {
  size_t n = x.size();
  if (n < least) {
    error = ferr::kDivZero;
    return false;
  }
  double mean = stat::Mean(x);
  double s = std::sqrt(stat::SquaredDeviations(x, mean) / static_cast<double>(n - 1));
  if (s == 0) {
    error = ferr::kDivZero;
    return false;
  }
  m3 = m4 = 0;
  for (double v : x) {
    double z = (v - mean) / s;
    m3 += z * z * z;
    m4 += z * z * z * z;
  }
  return true;
}

}  // namespace

void Average(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, MeanOf);
}
void AverageA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, MeanOf);
}

void AveDev(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    double mean = MeanOf(x, error);
    if (error != 0) return 0.0;
    double sum = 0;
    for (double v : x) sum += std::fabs(v - mean);
    return sum / static_cast<double>(x.size());
  });
}

void DevSq(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    double mean = MeanOf(x, error);
    return error != 0 ? 0.0 : stat::SquaredDeviations(x, mean);
  });
}

void GeoMean(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    if (x.empty()) {
      error = ferr::kDivZero;
      return 0.0;
    }
    // Through the logarithms, so that a long product neither overflows nor underflows.
    double sum = 0;
    for (double v : x) {
      if (v <= 0) {
        error = ferr::kNum;
        return 0.0;
      }
      sum += std::log(v);
    }
    return std::exp(sum / static_cast<double>(x.size()));
  });
}

void HarMean(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    if (x.empty()) {
      error = ferr::kDivZero;
      return 0.0;
    }
    double sum = 0;
    for (double v : x) {
      if (v <= 0) {
        error = ferr::kNum;
        return 0.0;
      }
      sum += 1 / v;
    }
    return static_cast<double>(x.size()) / sum;
  });
}

void Kurt(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    double m3 = 0, m4 = 0;
    if (!StandardizedMoments(x, 4, m3, m4, error)) return 0.0;
    double n = static_cast<double>(x.size());
    return n * (n + 1) / ((n - 1) * (n - 2) * (n - 3)) * m4 -
           3 * (n - 1) * (n - 1) / ((n - 2) * (n - 3));
  });
}

void Skew(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, [](std::vector<double>& x, uint8_t& error) {
    double m3 = 0, m4 = 0;
    if (!StandardizedMoments(x, 3, m3, m4, error)) return 0.0;
    double n = static_cast<double>(x.size());
    return n / ((n - 1) * (n - 2)) * m3;
  });
}

void Max(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers,
               [](std::vector<double>& x, uint8_t&) { return Extreme(x, true); });
}
void MaxA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, [](std::vector<double>& x, uint8_t&) { return Extreme(x, true); });
}
void Min(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers,
               [](std::vector<double>& x, uint8_t&) { return Extreme(x, false); });
}
void MinA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, [](std::vector<double>& x, uint8_t&) { return Extreme(x, false); });
}

void StDev(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, SampleDeviation);
}
void StDevA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, SampleDeviation);
}
void StDevP(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, PopulationDeviation);
}
void StDevPA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, PopulationDeviation);
}
void Var(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, SampleVariance);
}
void VarA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, SampleVariance);
}
void VarP(FormulaEngine& e) {
  RunCollected(e, Take::kNumbers, PopulationVariance);
}
void VarPA(FormulaEngine& e) {
  RunCollected(e, Take::kAll, PopulationVariance);
}

void Count(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  double count = 0;
  // Errors are neither counted nor passed on: count tells how many numbers there are.
  stat::WalkValues(e, base, e.depth() - 1, Take::kNumbers, &count,
                   [](void* c, double) { *static_cast<double*>(c) += 1; });
  SetNumberResult(e, base, count, 0);
}

void CountA(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  double count = 0;
  for (int slot = e.depth() - 1; slot >= base; --slot) {
    FormulaValue& v = e.Operand(slot);
    if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
      RangeCursor read = OperandCells(e, v);
      while (CellRecord* r = read.Next()) {
        count += !(cell::IsText(r) && cell::Text(r).empty() && cell::ErrorNibble(r) == 0);
      }
    } else {
      e.LoadReference(v);
      bool emptyText = v.kind == kind::kString && v.errorCode == 0 && e.TopString().empty();
      count += (v.kind != kind::kEmpty || v.errorCode != 0) && !emptyText;
    }
    e.Release(v);
  }
  SetNumberResult(e, base, count, 0);
}

}  // namespace kelpdex::fn
