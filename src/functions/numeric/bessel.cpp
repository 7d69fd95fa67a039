#include "functions/numeric/bessel.h"

#include <cmath>
#include <limits>

namespace kelpdex::numeric {

double BesselJ(int n, double x) {
  if (n < 0 || n > kMaxBesselOrder || std::isnan(x))
    return std::numeric_limits<double>::quiet_NaN();
  return ::jn(n, x);
}

double BesselY(int n, double x) {
  // The library answers -inf or a domain error at and below 0; both mean no value here.
  if (n < 0 || n > kMaxBesselOrder || !(x > 0)) return std::numeric_limits<double>::quiet_NaN();
  return ::yn(n, x);
}

}  // namespace kelpdex::numeric
