#include "functions/numeric/normal.h"

#include <cmath>

namespace kelpdex::numeric {

namespace {

constexpr double kSqrt2 = 1.414213562373095048801688724210;
constexpr double kSqrt2Pi = 2.506628274631000502415765284811;

// A rational first guess good to about 1e-9 over (0, 0.5], for the lower tail.
double FirstGuess(double p) {
  static const double a[] = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                             1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
  static const double b[] = {-5.447609879822406e+01, 1.615858368580409e+02, -1.556989798598866e+02,
                             6.680131188771972e+01, -1.328068155288572e+01};
  static const double c[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                             -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
  static const double d[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                             3.754408661907416e+00};
  if (p < 0.02425) {
    double q = std::sqrt(-2 * std::log(p));
    return (((((c[0] * q + c[1]) * q + c[2]) * q + c[3]) * q + c[4]) * q + c[5]) /
           ((((d[0] * q + d[1]) * q + d[2]) * q + d[3]) * q + 1);
  }
  double q = p - 0.5;
  double r = q * q;
  return (((((a[0] * r + a[1]) * r + a[2]) * r + a[3]) * r + a[4]) * r + a[5]) * q /
         (((((b[0] * r + b[1]) * r + b[2]) * r + b[3]) * r + b[4]) * r + 1);
}

}  // namespace

double NormalDensity(double z) {
  return std::exp(-0.5 * z * z) / kSqrt2Pi;
}

double NormalCdf(double z) {
  return 0.5 * std::erfc(-z / kSqrt2);
}

double NormalQuantile(double p) {
  if (!(p > 0) || !(p < 1)) return NAN;
  if (p > 0.5) return -NormalQuantile(1 - p);
  if (p == 0.5) return 0;
  double z = FirstGuess(p);
  // Halley's steps against the lower tail, whose relative accuracy holds all the way out.
  for (int i = 0; i < 4; ++i) {
    double e = NormalCdf(z) - p;
    double u = e * kSqrt2Pi * std::exp(0.5 * z * z);
    double step = u / (1 + 0.5 * z * u);
    z -= step;
    if (std::fabs(step) <= 1e-16 * std::fabs(z)) break;
  }
  return z;
}

}  // namespace kelpdex::numeric
