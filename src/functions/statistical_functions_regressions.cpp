#include <cmath>
#include <vector>

#include "functions/arguments.h"
#include "functions/numeric/beta.h"
#include "functions/numeric/gamma.h"
#include "functions/numeric/normal.h"
#include "functions/statistical_functions.h"
#include "functions/statistical_functions_walk.h"

namespace kelpdex::fn {

namespace {

using stat::Grid;

bool IsOmitted(FormulaEngine& e, int slot) {
  const FormulaValue& v = e.Operand(slot);
  return v.kind == kind::kEmpty && v.errorCode == 0;
}

// The positions where both grids hold a number, with their means and centred sums.
struct Pairs {
  std::vector<double> x, y;
  double meanX = 0, meanY = 0, sxx = 0, syy = 0, sxy = 0;

  void Add(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) return;
    x.push_back(a);
    y.push_back(b);
  }
  size_t size() const { return x.size(); }
  // Two passes: the means first, then the sums of the centred values.
  void Sum() {
    if (x.empty()) return;
    meanX = stat::Mean(x);
    meanY = stat::Mean(y);
    sxx = syy = sxy = 0;
    for (size_t i = 0; i < x.size(); ++i) {
      double dx = x[i] - meanX, dy = y[i] - meanY;
      sxx += dx * dx;
      syy += dy * dy;
      sxy += dx * dy;
    }
  }
};

// Reads the two arrays on top of the stack (x below, y above unless `yFirst`) into pairs; a
// difference in shape is "#N/A!".
uint8_t ReadPairs(FormulaEngine& e, int slot, bool yFirst, Pairs& pairs) {
  Grid first, second;
  uint8_t error = stat::ReadGrid(e, slot + 1, second);
  error = LargerError(error, stat::ReadGrid(e, slot, first));
  if (error != 0) return error;
  if (first.rows != second.rows || first.columns != second.columns) return ferr::kNA;
  const Grid& gx = yFirst ? second : first;
  const Grid& gy = yFirst ? first : second;
  for (size_t i = 0; i < gx.values.size(); ++i) pairs.Add(gx.values[i], gy.values[i]);
  pairs.Sum();
  return 0;
}

// The common frame of the functions of two arrays of one shape.
void RunPairs(FormulaEngine& e, bool yFirst, double (*compute)(const Pairs& p, uint8_t& error)) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  Pairs pairs;
  uint8_t error = ReadPairs(e, slot, yFirst, pairs);
  double result = error == 0 ? compute(pairs, error) : 0;
  SetNumberResult(e, slot, result, error);
}

double Correlation(const Pairs& p, uint8_t& error) {
  if (p.size() < 2 || p.sxx == 0 || p.syy == 0) {
    error = ferr::kDivZero;
    return 0;
  }
  return p.sxy / std::sqrt(p.sxx * p.syy);
}

// The least-squares line y = intercept + slope x.
bool Line(const Pairs& p, double& slope, double& intercept, uint8_t& error) {
  if (p.size() < 1 || p.sxx == 0) {
    error = ferr::kDivZero;
    return false;
  }
  slope = p.sxy / p.sxx;
  intercept = p.meanY - slope * p.meanX;
  return true;
}

// The line through the origin, y = slope x.
bool LineThroughOrigin(const Pairs& p, double& slope, uint8_t& error) {
  double xx = 0, xy = 0;
  for (size_t i = 0; i < p.size(); ++i) {
    xx += p.x[i] * p.x[i];
    xy += p.x[i] * p.y[i];
  }
  if (xx == 0) {
    error = ferr::kDivZero;
    return false;
  }
  slope = xy / xx;
  return true;
}

// linEst and trend: y, then x (the positions 1, 2, ... when omitted), read from the top slot
// `last` down to `slot`. A grid of y's shape is given back for trend's default new x.
uint8_t ReadFit(FormulaEngine& e, int slot, int last, Pairs& pairs, Grid& xs) {
  Grid ys;
  uint8_t error = 0;
  bool hasX = last > slot && !IsOmitted(e, slot + 1);
  if (hasX) error = stat::ReadGrid(e, slot + 1, xs);
  if (last > slot) e.Release(e.Operand(slot + 1));
  error = LargerError(error, stat::ReadGrid(e, slot, ys));
  if (error != 0) return error;
  if (!hasX) {
    xs = ys;
    for (size_t i = 0; i < xs.values.size(); ++i) xs.values[i] = static_cast<double>(i + 1);
  }
  if (xs.rows != ys.rows || xs.columns != ys.columns) return ferr::kNA;
  for (size_t i = 0; i < xs.values.size(); ++i) pairs.Add(xs.values[i], ys.values[i]);
  pairs.Sum();
  return 0;
}

// Reads the optional constant flag in `slot` (1 when omitted) and releases it.
uint8_t ReadConstFlag(FormulaEngine& e, int slot, bool& withConstant) {
  double flag = 1;
  uint8_t error = GetNumberArg(e, slot, flag);
  e.Release(e.Operand(slot));
  withConstant = flag != 0;
  return error;
}

// Fits the line, through the origin when there is no constant.
bool Fit(const Pairs& p, bool withConstant, double& slope, double& intercept, uint8_t& error) {
  intercept = 0;
  return withConstant ? Line(p, slope, intercept, error) : LineThroughOrigin(p, slope, error);
}

// The mean and sample variance of the numbers of one array argument.
bool Moments(const std::vector<double>& x, double& mean, double& variance) {
  if (x.size() < 2) return false;
  mean = stat::Mean(x);
  variance = stat::SquaredDeviations(x, mean) / static_cast<double>(x.size() - 1);
  return true;
}

// The t statistic of two samples with a pooled variance, and its degrees of freedom.
uint8_t TwoSampleT(FormulaEngine& e, int slot, double& t, double& df) {
  std::vector<double> a, b;
  uint8_t error = stat::CollectValues(e, slot + 1, slot + 1, stat::Take::kNumbers, b);
  error = LargerError(error, stat::CollectValues(e, slot, slot, stat::Take::kNumbers, a));
  if (error != 0) return error;
  double ma = 0, va = 0, mb = 0, vb = 0;
  if (!Moments(a, ma, va) || !Moments(b, mb, vb)) return ferr::kDivZero;
  double na = static_cast<double>(a.size()), nb = static_cast<double>(b.size());
  df = na + nb - 2;
  double pooled = ((na - 1) * va + (nb - 1) * vb) / df;
  double se = std::sqrt(pooled * (1 / na + 1 / nb));
  if (se == 0) return ferr::kDivZero;
  t = (ma - mb) / se;
  return 0;
}

// The z statistic of zTest and zTest2: array, x, and the optional known deviation.
void RunZ(FormulaEngine& e, bool probability) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2) {
    e.SetSyntaxError();
    return;
  }
  int slot = count >= 3 ? e.depth() - 3 : e.depth() - 2;
  double sigma = -1, x = 0;
  uint8_t error = 0;
  if (count >= 3) {
    error = GetNumberArg(e, slot + 2, sigma);
    e.Release(e.Operand(slot + 2));
  }
  error = LargerError(error, GetNumberArg(e, slot + 1, x));
  e.Release(e.Operand(slot + 1));
  std::vector<double> values;
  error = LargerError(error, stat::CollectValues(e, slot, slot, stat::Take::kNumbers, values));
  double z = 0;
  if (error == 0) {
    double mean = 0, variance = 0;
    bool known = sigma >= 0;
    if (values.empty() || (!known && !Moments(values, mean, variance))) {
      error = ferr::kDivZero;
    } else {
      mean = stat::Mean(values);
      double deviation = known ? sigma : std::sqrt(variance);
      if (deviation == 0) {
        error = ferr::kDivZero;
      } else {
        z = (mean - x) / (deviation / std::sqrt(static_cast<double>(values.size())));
      }
    }
  }
  // 1 - normsDist(z), taken from the other tail so that a large z keeps its digits.
  SetNumberResult(e, slot, probability ? numeric::NormalCdf(-z) : z, error);
}

// chiTest and chiTest2: the statistic Σ (o - e)²/e and its degrees of freedom.
uint8_t ChiStatistic(FormulaEngine& e, int slot, double& chi2, double& df) {
  Grid observed, expected;
  uint8_t error = stat::ReadGrid(e, slot + 1, expected);
  error = LargerError(error, stat::ReadGrid(e, slot, observed));
  if (error != 0) return error;
  if (observed.rows != expected.rows || observed.columns != expected.columns) return ferr::kNA;
  chi2 = 0;
  for (size_t i = 0; i < observed.values.size(); ++i) {
    double o = observed.values[i], x = expected.values[i];
    if (std::isnan(o) || std::isnan(x)) continue;
    if (x == 0) return ferr::kDivZero;
    if (x < 0) return ferr::kNum;
    chi2 += (o - x) * (o - x) / x;
  }
  double r = observed.rows, c = observed.columns;
  df = r > 1 && c > 1 ? (r - 1) * (c - 1) : r * c - 1;
  return df < 1 ? ferr::kDivZero : 0;
}

}  // namespace

void Correl(FormulaEngine& e) {
  RunPairs(e, false, Correlation);
}
void Pearson(FormulaEngine& e) {
  RunPairs(e, false, Correlation);
}
void Rsq(FormulaEngine& e) {
  RunPairs(e, false, [](const Pairs& p, uint8_t& error) {
    double r = Correlation(p, error);
    return r * r;
  });
}

void Covar(FormulaEngine& e) {
  RunPairs(e, false, [](const Pairs& p, uint8_t& error) {
    if (p.size() == 0) {
      error = ferr::kDivZero;
      return 0.0;
    }
    return p.sxy / static_cast<double>(p.size());
  });
}

void Slope(FormulaEngine& e) {
  RunPairs(e, true, [](const Pairs& p, uint8_t& error) {
    double slope = 0, intercept = 0;
    return Line(p, slope, intercept, error) ? slope : 0;
  });
}

void Intercept(FormulaEngine& e) {
  RunPairs(e, true, [](const Pairs& p, uint8_t& error) {
    double slope = 0, intercept = 0;
    return Line(p, slope, intercept, error) ? intercept : 0;
  });
}

void StEyx(FormulaEngine& e) {
  RunPairs(e, true, [](const Pairs& p, uint8_t& error) {
    double slope = 0, intercept = 0;
    if (p.size() < 3) {
      error = ferr::kDivZero;
      return 0.0;
    }
    if (!Line(p, slope, intercept, error)) return 0.0;
    // The residuals summed directly: syy - sxy²/sxx cancels to noise when the fit is close.
    double sum = 0;
    for (size_t i = 0; i < p.size(); ++i) {
      double r = (p.y[i] - p.meanY) - slope * (p.x[i] - p.meanX);
      sum += r * r;
    }
    return std::sqrt(sum / static_cast<double>(p.size() - 2));
  });
}

void Forecast(FormulaEngine& e) {
  if (!HasArguments(e, 3)) return;
  int slot = e.depth() - 3;
  Pairs pairs;
  uint8_t error = ReadPairs(e, slot + 1, true, pairs);
  double x = 0;
  error = LargerError(error, GetNumberArg(e, slot, x));
  e.Release(e.Operand(slot));
  double slope = 0, intercept = 0;
  double result = error == 0 && Line(pairs, slope, intercept, error)
                      ? pairs.meanY + slope * (x - pairs.meanX)
                      : 0;
  SetNumberResult(e, slot, result, error);
}

void LinEst(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 1 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  bool withConstant = true;
  uint8_t error = count == 3 ? ReadConstFlag(e, base + 2, withConstant) : 0;
  Pairs pairs;
  Grid xs;
  error = LargerError(error, ReadFit(e, base, base + count - 1, pairs, xs));
  double line[2] = {0, 0};  // the intercept, then the slope
  if (error == 0) Fit(pairs, withConstant, line[1], line[0], error);
  stat::SetColumnResult(e, base, line, 2, error);
}

void Trend(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 1 || count > 4) {
    e.SetSyntaxError();
    return;
  }
  bool withConstant = true;
  uint8_t error = count == 4 ? ReadConstFlag(e, base + 3, withConstant) : 0;
  Grid targets;
  bool hasTargets = count >= 3 && !IsOmitted(e, base + 2);
  if (hasTargets) error = LargerError(error, stat::ReadGrid(e, base + 2, targets));
  if (count >= 3) e.Release(e.Operand(base + 2));
  Pairs pairs;
  Grid xs;
  error = LargerError(error, ReadFit(e, base, base + (count < 2 ? 0 : 1), pairs, xs));
  double slope = 0, intercept = 0;
  std::vector<double> predicted;
  if (error == 0 && Fit(pairs, withConstant, slope, intercept, error)) {
    for (double x : (hasTargets ? targets : xs).values) {
      if (!std::isnan(x)) predicted.push_back(intercept + slope * x);
    }
    if (predicted.empty()) error = ferr::kValue;
  }
  stat::SetColumnResult(e, base, predicted.data(), predicted.size(), error);
}

void ChiTest(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  double chi2 = 0, df = 0;
  uint8_t error = ChiStatistic(e, slot, chi2, df);
  double lower = 0, upper = 0;
  if (error == 0 && !numeric::IncompleteGamma(df / 2, chi2 / 2, lower, upper)) error = ferr::kNum;
  SetNumberResult(e, slot, lower, error);
}

void ChiTest2(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  double chi2 = 0, df = 0;
  uint8_t error = ChiStatistic(e, slot, chi2, df);
  SetNumberResult(e, slot, chi2, error);
}

void FTest(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  std::vector<double> a, b;
  uint8_t error = stat::CollectValues(e, slot + 1, slot + 1, stat::Take::kNumbers, b);
  error = LargerError(error, stat::CollectValues(e, slot, slot, stat::Take::kNumbers, a));
  double ma = 0, va = 0, mb = 0, vb = 0, result = 0;
  if (error == 0 && (!Moments(a, ma, va) || !Moments(b, mb, vb) || va == 0 || vb == 0)) {
    error = ferr::kDivZero;
  }
  if (error == 0) {
    // P(F > va/vb) with (na - 1, nb - 1) degrees of freedom.
    double m = static_cast<double>(a.size() - 1), n = static_cast<double>(b.size() - 1);
    double mx = m * va / vb, lower = 0;
    if (!numeric::IncompleteBeta(m / 2, n / 2, mx / (mx + n), n / (mx + n), lower, result)) {
      error = ferr::kNum;
    }
  }
  SetNumberResult(e, slot, result, error);
}

void TTest(FormulaEngine& e) {
  if (!HasArguments(e, 3)) return;
  int slot = e.depth() - 3;
  int32_t tails = 2;
  uint8_t error = GetIntegerArg(e, slot + 2, tails, 1, 2);
  e.Release(e.Operand(slot + 2));
  double t = 0, df = 0;
  error = LargerError(error, TwoSampleT(e, slot, t, df));
  double result = 0, lower = 0;
  if (error == 0) {
    double t2 = t * t;
    // P(|T| > |t|) = I_{df/(df + t²)}(df/2, 1/2).
    if (!numeric::IncompleteBeta(df / 2, 0.5, df / (df + t2), t2 / (df + t2), result, lower)) {
      error = ferr::kNum;
    }
    if (tails == 1) result /= 2;
  }
  SetNumberResult(e, slot, result, error);
}

void TTest2(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  double t = 0, df = 0;
  uint8_t error = TwoSampleT(e, slot, t, df);
  SetNumberResult(e, slot, t, error);
}

void ZTest(FormulaEngine& e) {
  RunZ(e, true);
}
void ZTest2(FormulaEngine& e) {
  RunZ(e, false);
}

void Prob(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 3 || count > 4) {
    e.SetSyntaxError();
    return;
  }
  double lo = 0, hi = 0;
  uint8_t error = 0;
  bool hasUpper = count == 4 && !IsOmitted(e, base + 3);
  if (count == 4) {
    error = GetNumberArg(e, base + 3, hi);
    e.Release(e.Operand(base + 3));
  }
  error = LargerError(error, GetNumberArg(e, base + 2, lo));
  e.Release(e.Operand(base + 2));
  if (!hasUpper) hi = lo;
  Grid xs, ps;
  error = LargerError(error, stat::ReadGrid(e, base + 1, ps));
  error = LargerError(error, stat::ReadGrid(e, base, xs));
  if (error == 0 && (xs.rows != ps.rows || xs.columns != ps.columns)) error = ferr::kNA;
  double total = 0, within = 0;
  for (size_t i = 0; error == 0 && i < ps.values.size(); ++i) {
    double p = ps.values[i], x = xs.values[i];
    if (std::isnan(p) || std::isnan(x)) continue;
    if (p < 0 || p > 1) error = ferr::kNum;
    total += p;
    if (x >= lo && x <= hi) within += p;
  }
  // The probabilities must add up to 1, up to the rounding of their sum.
  if (error == 0 && std::fabs(total - 1) > 1e-12 * static_cast<double>(ps.values.size())) {
    error = ferr::kNum;
  }
  SetNumberResult(e, base, within, error);
}

}  // namespace kelpdex::fn
