#include "functions/numeric/beta.h"

#include <cmath>

#include "functions/numeric/gamma.h"

namespace kelpdex::numeric {

namespace {

constexpr double kLnTwoPi = 1.837877066409345483560659472811;

// I_x(a, b) through its continued fraction, which converges fast for x < (a + 1)/(a + b + 2).
bool BetaFraction(double a, double b, double x, double y, double& value) {
  // x^a y^b / (a B(a, b)) = b/(a + b) · C(a + b, a) x^a y^b, the binomial term with its care for
  // large a and b, where ln B(a, b) from log-gammas would cancel away most digits. When it
  // underflows, so does the tail.
  double prefactor = b / (a + b) * BinomialTerm(a, a + b, x, y);
  if (prefactor == 0) {
    value = 0;
    return true;
  }
  constexpr double tiny = 1e-300;
  int limit = 1000 + static_cast<int>(50 * std::sqrt(a > b ? a : b));
  double qab = a + b, qap = a + 1, qam = a - 1;
  double c = 1;
  double d = 1 - qab * x / qap;
  if (std::fabs(d) < tiny) d = tiny;
  d = 1 / d;
  double h = d;
  int m = 1;
  for (; m < limit; ++m) {
    int m2 = 2 * m;
    double aa = m * (b - m) * x / ((qam + m2) * (a + m2));
    d = 1 + aa * d;
    if (std::fabs(d) < tiny) d = tiny;
    c = 1 + aa / c;
    if (std::fabs(c) < tiny) c = tiny;
    d = 1 / d;
    h *= d * c;
    aa = -(a + m) * (qab + m) * x / ((a + m2) * (qap + m2));
    d = 1 + aa * d;
    if (std::fabs(d) < tiny) d = tiny;
    c = 1 + aa / c;
    if (std::fabs(c) < tiny) c = tiny;
    d = 1 / d;
    double delta = d * c;
    h *= delta;
    if (std::fabs(delta - 1) < 1e-16) break;
  }
  if (m == limit) return false;
  value = prefactor * h;
  return true;
}

}  // namespace

double BinomialTerm(double k, double n, double p, double q) {
  if (p == 0) return k == 0 ? 1 : 0;
  if (q == 0) return k == n ? 1 : 0;
  if (k == 0) {
    if (n == 0) return 1;
    return std::exp(p < 0.1 ? -DevianceTerm(n, n * q) - n * p : n * std::log(q));
  }
  if (k == n) return std::exp(q < 0.1 ? -DevianceTerm(n, n * p) - n * q : n * std::log(p));
  if (k < 0 || k > n) return 0;
  double lc = StirlingError(n) - StirlingError(k) - StirlingError(n - k) - DevianceTerm(k, n * p) -
              DevianceTerm(n - k, n * q);
  double lf = kLnTwoPi + std::log(k) + std::log1p(-k / n);
  return std::exp(lc - 0.5 * lf);
}

bool IncompleteBeta(double a, double b, double x, double y, double& lower, double& upper) {
  if (!(a > 0) || !(b > 0) || !(x >= 0) || !(y >= 0)) return false;
  if (x == 0 || y == 0) {
    lower = x == 0 ? 0 : 1;
    upper = 1 - lower;
    return true;
  }
  // The fraction serves below the mean; above it, the symmetry I_x(a, b) = 1 - I_y(b, a).
  if (x < (a + 1) / (a + b + 2)) {
    if (!BetaFraction(a, b, x, y, lower)) return false;
    upper = 1 - lower;
  } else {
    if (!BetaFraction(b, a, y, x, upper)) return false;
    lower = 1 - upper;
  }
  return true;
}

}  // namespace kelpdex::numeric
