#include <cmath>

#include "functions/arguments.h"
#include "functions/numeric/beta.h"
#include "functions/numeric/gamma.h"
#include "functions/numeric/normal.h"
#include "functions/numeric/quantile.h"
#include "functions/scalar_call.h"
#include "functions/statistical_functions.h"

namespace kelpdex::fn {

namespace {

using numeric::IncompleteBeta;
using numeric::IncompleteGamma;

// Reads the scalar arguments; false when the call is already complete (too few arguments, or it
// was broadcast over arrays).
bool Read(FormulaEngine& e, const char* kinds, int required, ScalarCall& call) {
  return ReadScalarCall(e, kinds, required, call);
}

void Finish(FormulaEngine& e, const ScalarCall& call, double value, uint8_t error) {
  SetNumberResult(e, call.slot, error == 0 ? value : 0, LargerError(call.error, error));
}

// Degrees of freedom below 1 have no meaning for the tests these distributions serve.
bool ValidDegrees(double df) {
  return df >= 1 && std::isfinite(df);
}

// --- chi-squared with k degrees of freedom: the gamma distribution of shape k/2, scale 2 -----
struct ChiSquared {
  double k;
};
bool ChiTail(const void* c, double x, double& value, bool upper) {
  double lower = 0, complement = 0;
  if (!IncompleteGamma(static_cast<const ChiSquared*>(c)->k / 2, x / 2, lower, complement)) {
    return false;
  }
  value = upper ? complement : lower;
  return true;
}
double ChiDensity(const void* c, double x) {
  double a = static_cast<const ChiSquared*>(c)->k / 2;
  return numeric::PoissonTerm(a, x / 2) * a / x;
}

// --- Student's t with n degrees of freedom; the tail P(T > t) for t >= 0 -------------------
struct Student {
  double n;
};
bool StudentUpperTail(double n, double t, double& value) {
  double lower = 0, upper = 0;
  double t2 = t * t;
  if (std::isinf(t2)) {
    value = 0;
    return true;
  }
  // x = n/(n + t²) and its complement are both formed directly.
  if (!IncompleteBeta(n / 2, 0.5, n / (n + t2), t2 / (n + t2), lower, upper)) return false;
  value = 0.5 * lower;
  return true;
}
bool StudentTail(const void* c, double t, double& value, bool) {
  return StudentUpperTail(static_cast<const Student*>(c)->n, t, value);
}
double StudentDensity(const void* c, double t) {
  double n = static_cast<const Student*>(c)->n;
  return std::exp(std::lgamma((n + 1) / 2) - std::lgamma(n / 2) - 0.5 * std::log(n * M_PI) -
                  (n + 1) / 2 * std::log1p(t * t / n));
}

// --- F with m and n degrees of freedom --------------------------------------------------------
struct FRatio {
  double m, n;
};
bool FTail(const void* c, double x, double& value, bool upper) {
  auto* f = static_cast<const FRatio*>(c);
  double lower = 0, complement = 0;
  double mx = f->m * x;
  if (std::isinf(mx)) {
    value = upper ? 0 : 1;
    return true;
  }
  if (!IncompleteBeta(f->m / 2, f->n / 2, mx / (mx + f->n), f->n / (mx + f->n), lower,
                      complement)) {
    return false;
  }
  value = upper ? complement : lower;
  return true;
}
double FDensity(const void* c, double x) {
  auto* f = static_cast<const FRatio*>(c);
  double m = f->m, n = f->n;
  double lnBeta = std::lgamma(m / 2) + std::lgamma(n / 2) - std::lgamma((m + n) / 2);
  return std::exp(0.5 * m * std::log(m * x) + 0.5 * n * std::log(n) -
                  0.5 * (m + n) * std::log(m * x + n) - std::log(x) - lnBeta);
}

template <bool (*TailOf)(const void*, double, double&, bool)>
bool LowerTail(const void* c, double x, double& value) {
  return TailOf(c, x, value, false);
}
template <bool (*TailOf)(const void*, double, double&, bool)>
bool UpperTail(const void* c, double x, double& value) {
  return TailOf(c, x, value, true);
}

// The x at which P(X < x) = p, from the tail nearer to p, so that p close to 1 keeps the digits
// of 1 - p.
template <bool (*TailOf)(const void*, double, double&, bool)>
bool Quantile(const void* c, double (*density)(const void*, double), double p, double x0,
              double& x) {
  bool upper = p > 0.5;
  numeric::Tail tail{c, upper ? UpperTail<TailOf> : LowerTail<TailOf>, density, upper};
  return numeric::SolveTail(tail, upper ? 1 - p : p, x0, x);
}

// P(X <= s) for X binomial with n trials of probability p.
double BinomialCdf(double s, double n, double p, uint8_t& error) {
  if (s >= n) return 1;
  double lower = 0, upper = 0;
  if (!IncompleteBeta(n - s, s + 1, 1 - p, p, lower, upper)) error = ferr::kNum;
  return lower;
}

// fDist and fInv take the numerator's degrees of freedom first, then the denominator's.
FRatio RatioOf(const ScalarCall& call) {
  return FRatio{call.number[1], call.number[2]};
}

}  // namespace

void BinomDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnnn", 4, call)) return;
  double s = std::trunc(call.number[0]), n = std::trunc(call.number[1]), p = call.number[2];
  uint8_t error = 0;
  double result = 0;
  if (s < 0 || s > n || !(p >= 0 && p <= 1)) {
    error = ferr::kNum;
  } else if (call.number[3] != 0) {
    result = BinomialCdf(s, n, p, error);
  } else {
    result = numeric::BinomialTerm(s, n, p, 1 - p);
  }
  Finish(e, call, result, error);
}

void CritBinom(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double n = std::trunc(call.number[0]), p = call.number[1], alpha = call.number[2];
  uint8_t error = 0;
  double lo = 0, hi = n;
  if (n < 0 || !(p >= 0 && p <= 1) || !(alpha >= 0 && alpha <= 1)) {
    error = ferr::kNum;
  } else {
    // The smallest k with P(X <= k) >= alpha, by bisection over the counts.
    while (lo < hi && error == 0) {
      double mid = std::floor((lo + hi) / 2);
      if (BinomialCdf(mid, n, p, error) >= alpha) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
  }
  Finish(e, call, lo, error);
}

void ChiDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nn", 2, call)) return;
  double x = call.number[0], k = call.number[1];
  double result = 0;
  uint8_t error = x < 0 || !ValidDegrees(k) ? ferr::kNum : 0;
  ChiSquared chi{k};
  if (error == 0 && !ChiTail(&chi, x, result, false)) error = ferr::kNum;
  Finish(e, call, result, error);
}

void ChiInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nn", 2, call)) return;
  double p = call.number[0], k = call.number[1];
  double x = 0;
  uint8_t error = !(p >= 0 && p < 1) || !ValidDegrees(k) ? ferr::kNum : 0;
  if (error == 0 && p > 0) {
    // Wilson and Hilferty's cube of a normal deviate is the first guess.
    double h = 2 / (9 * k);
    double guess =
        k * std::pow(std::fmax(1 - h + numeric::NormalQuantile(p) * std::sqrt(h), 0.1), 3);
    ChiSquared chi{k};
    if (!Quantile<ChiTail>(&chi, ChiDensity, p, guess, x)) error = ferr::kNum;
  }
  Finish(e, call, x, error);
}

void Confidence(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double alpha = call.number[0], sigma = call.number[1], n = std::trunc(call.number[2]);
  uint8_t error = !(alpha > 0 && alpha < 1) || sigma <= 0 || n < 1 ? ferr::kNum : 0;
  double result = error == 0 ? -numeric::NormalQuantile(alpha / 2) * sigma / std::sqrt(n) : 0;
  Finish(e, call, result, error);
}

void ExponDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double x = call.number[0], lambda = call.number[1];
  uint8_t error = x < 0 || lambda <= 0 ? ferr::kNum : 0;
  double result = 0;
  if (error == 0) {
    result = call.number[2] != 0 ? -std::expm1(-lambda * x) : lambda * std::exp(-lambda * x);
  }
  Finish(e, call, result, error);
}

void FDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double x = call.number[0];
  FRatio f = RatioOf(call);
  double result = 0;
  uint8_t error = x < 0 || !ValidDegrees(f.m) || !ValidDegrees(f.n) ? ferr::kNum : 0;
  if (error == 0 && !FTail(&f, x, result, false)) error = ferr::kNum;
  Finish(e, call, result, error);
}

void FInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double p = call.number[0];
  FRatio f = RatioOf(call);
  double x = 0;
  uint8_t error = !(p >= 0 && p < 1) || !ValidDegrees(f.m) || !ValidDegrees(f.n) ? ferr::kNum : 0;
  if (error == 0 && p > 0 && !Quantile<FTail>(&f, FDensity, p, 1, x)) error = ferr::kNum;
  Finish(e, call, x, error);
}

void Fisher(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "n", 1, call)) return;
  double x = call.number[0];
  uint8_t error = !(x > -1 && x < 1) ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? std::atanh(x) : 0, error);
}

void FisherInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "n", 1, call)) return;
  Finish(e, call, std::tanh(call.number[0]), 0);
}

void HypGeomDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnnn", 4, call)) return;
  double x = std::trunc(call.number[0]), n = std::trunc(call.number[1]);
  double r = std::trunc(call.number[2]), total = std::trunc(call.number[3]);
  double b = total - r;
  uint8_t error = 0;
  double result = 0;
  if (x < 0 || n < 0 || r < 0 || b < 0 || n > total || x > n || x > r || n - x > b) {
    error = ferr::kNum;
  } else if (n == 0 || n == total) {
    result = 1;  // the sample is nothing or everything: one outcome only
  } else {
    // C(r, x) C(b, n - x) / C(r + b, n) as three binomial terms of one probability, whose powers
    // cancel: no factorial is formed.
    double p = n / total, q = 1 - p;
    result = numeric::BinomialTerm(x, r, p, q) * numeric::BinomialTerm(n - x, b, p, q) /
             numeric::BinomialTerm(n, total, p, q);
  }
  Finish(e, call, result, error);
}

void NormDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnnn", 4, call)) return;
  double sigma = call.number[2];
  uint8_t error = sigma <= 0 ? ferr::kNum : 0;
  double result = 0;
  if (error == 0) {
    double z = (call.number[0] - call.number[1]) / sigma;
    result = call.number[3] != 0 ? numeric::NormalCdf(z) : numeric::NormalDensity(z) / sigma;
  }
  Finish(e, call, result, error);
}

void NormSDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "n", 1, call)) return;
  Finish(e, call, numeric::NormalCdf(call.number[0]), 0);
}

void NormInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double p = call.number[0], sigma = call.number[2];
  uint8_t error = !(p > 0 && p < 1) || sigma <= 0 ? ferr::kNum : 0;
  double result = error == 0 ? call.number[1] + sigma * numeric::NormalQuantile(p) : 0;
  Finish(e, call, result, error);
}

void NormSInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "n", 1, call)) return;
  double p = call.number[0];
  uint8_t error = !(p > 0 && p < 1) ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? numeric::NormalQuantile(p) : 0, error);
}

void Permut(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nn", 2, call)) return;
  double n = std::trunc(call.number[0]), k = std::trunc(call.number[1]);
  uint8_t error = n < 0 || k < 0 || k > n ? ferr::kNum : 0;
  double result = 1;
  // The factors are at least 2 until the last one, so the product overflows (and stops) within
  // about a thousand steps.
  for (double i = 0; i < k && error == 0 && std::isfinite(result); ++i) result *= n - i;
  Finish(e, call, result, error);
}

void Poisson(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double x = std::trunc(call.number[0]), mean = call.number[1];
  uint8_t error = x < 0 || mean < 0 ? ferr::kNum : 0;
  double result = 0;
  if (error == 0 && call.number[2] == 0) {
    result = numeric::PoissonTerm(x, mean);
  } else if (error == 0 && mean == 0) {
    result = 1;
  } else if (error == 0) {
    // P(X <= x) = Q(x + 1, mean).
    double lower = 0;
    if (!IncompleteGamma(x + 1, mean, lower, result)) error = ferr::kNum;
  }
  Finish(e, call, result, error);
}

void Standardize(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnn", 3, call)) return;
  double sigma = call.number[2];
  uint8_t error = sigma <= 0 ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? (call.number[0] - call.number[1]) / sigma : 0, error);
}

void TDist(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nn", 2, call)) return;
  double t = call.number[0], n = call.number[1];
  uint8_t error = !ValidDegrees(n) ? ferr::kNum : 0;
  double tail = 0;
  if (error == 0 && !StudentUpperTail(n, std::fabs(t), tail)) error = ferr::kNum;
  Finish(e, call, t < 0 ? tail : 1 - tail, error);
}

void TInv(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nn", 2, call)) return;
  double p = call.number[0], n = call.number[1];
  uint8_t error = !(p > 0 && p < 1) || !ValidDegrees(n) ? ferr::kNum : 0;
  double t = 0;
  if (error == 0 && p != 0.5) {
    // Symmetric: the positive t whose upper tail is the smaller of p and 1 - p.
    double q = p < 0.5 ? p : 1 - p;
    Student student{n};
    numeric::Tail tail{&student, UpperTail<StudentTail>, StudentDensity, true};
    if (!numeric::SolveTail(tail, q, -numeric::NormalQuantile(q), t)) error = ferr::kNum;
    if (p < 0.5) t = -t;
  }
  Finish(e, call, t, error);
}

void Weibull(FormulaEngine& e) {
  ScalarCall call;
  if (!Read(e, "nnnn", 4, call)) return;
  double x = call.number[0], shape = call.number[1], scale = call.number[2];
  uint8_t error = x < 0 || shape <= 0 || scale <= 0 ? ferr::kNum : 0;
  double result = 0;
  if (error == 0) {
    double power = std::pow(x / scale, shape);
    result = call.number[3] != 0
                 ? -std::expm1(-power)
                 : shape / scale * std::pow(x / scale, shape - 1) * std::exp(-power);
  }
  Finish(e, call, result, error);
}

}  // namespace kelpdex::fn
