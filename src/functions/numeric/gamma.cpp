#include "functions/numeric/gamma.h"

#include <cfloat>
#include <cmath>

namespace kelpdex::numeric {

namespace {

constexpr double kLnSqrt2Pi = 0.918938533204672741780329736406;
constexpr double kTwoPi = 6.283185307179586476925286766559;

// Room for the O(sqrt(a)) terms that the series and the fraction need when x is close to a.
int IterationLimit(double a) {
  return 1000 + static_cast<int>(50 * std::sqrt(a));
}

}  // namespace

double LogGamma(double x) {
  return std::lgamma(x);
}

double StirlingError(double x) {
  // Below 15 the direct form loses nothing worth having: ln Γ(16) is only 28.
  if (x <= 15) return std::lgamma(x + 1) - (x + 0.5) * std::log(x) + x - kLnSqrt2Pi;
  constexpr double s0 = 1.0 / 12, s1 = 1.0 / 360, s2 = 1.0 / 1260, s3 = 1.0 / 1680, s4 = 1.0 / 1188;
  double xx = x * x;
  if (x > 500) return (s0 - s1 / xx) / x;
  if (x > 80) return (s0 - (s1 - s2 / xx) / xx) / x;
  if (x > 35) return (s0 - (s1 - (s2 - s3 / xx) / xx) / xx) / x;
  return (s0 - (s1 - (s2 - (s3 - s4 / xx) / xx) / xx) / xx) / x;
}

double DevianceTerm(double x, double m) {
  if (std::fabs(x - m) < 0.1 * (x + m)) {
    // The series in v = (x - m)/(x + m) keeps the digits that the difference below would lose.
    double v = (x - m) / (x + m);
    double s = (x - m) * v;
    double term = 2 * x * v;
    double v2 = v * v;
    for (int j = 1; j < 1000; ++j) {
      term *= v2;
      double next = s + term / (2 * j + 1);
      if (next == s) return next;
      s = next;
    }
    return s;
  }
  return x * std::log(x / m) + m - x;
}

double PoissonTerm(double x, double m) {
  if (x < 0 || m < 0) return 0;
  if (m == 0) return x == 0 ? 1 : 0;
  if (x == 0) return std::exp(-m);
  if (x <= m * DBL_MIN) return std::exp(-m);
  if (m < x * DBL_MIN) return std::exp(-m + x * std::log(m) - std::lgamma(x + 1));
  return std::exp(-StirlingError(x) - DevianceTerm(x, m)) / std::sqrt(kTwoPi * x);
}

bool IncompleteGamma(double a, double x, double& lower, double& upper) {
  if (!(a > 0) || !(x >= 0)) return false;
  if (x == 0) {
    lower = 0;
    upper = 1;
    return true;
  }
  if (std::isinf(x)) {
    lower = 1;
    upper = 0;
    return true;
  }
  int limit = IterationLimit(a);
  // The prefactor bounds the smaller tail; once it underflows, so does that tail, and the
  // expansions below need not run on numbers at the edge of the range.
  double prefactor = PoissonTerm(a, x);
  if (prefactor == 0) {
    lower = x < a ? 0 : 1;
    upper = 1 - lower;
    return true;
  }
  if (x < a + 1) {
    // P = x^a e^-x / Γ(a + 1) · Σ x^n / ((a + 1) ... (a + n)); every term is positive.
    double sum = 1, term = 1;
    int n = 1;
    for (; n < limit; ++n) {
      term *= x / (a + n);
      sum += term;
      if (term < sum * 1e-17) break;
    }
    if (n == limit) return false;
    lower = prefactor * sum;
    upper = 1 - lower;
    return true;
  }
  // Q = x^a e^-x / Γ(a) · 1/(x + 1 - a - 1(1 - a)/(x + 3 - a - ...)), by the modified Lentz method.
  constexpr double tiny = 1e-300;
  double b = x + 1 - a;
  double c = 1 / tiny;
  double d = 1 / b;
  double h = d;
  int i = 1;
  for (; i < limit; ++i) {
    double an = -i * (i - a);
    b += 2;
    d = an * d + b;
    if (std::fabs(d) < tiny) d = tiny;
    c = b + an / c;
    if (std::fabs(c) < tiny) c = tiny;
    d = 1 / d;
    double delta = d * c;
    h *= delta;
    if (std::fabs(delta - 1) < 1e-16) break;
  }
  if (i == limit) return false;
  upper = a * prefactor * h;
  lower = 1 - upper;
  return true;
}

}  // namespace kelpdex::numeric
