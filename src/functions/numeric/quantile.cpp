#include "functions/numeric/quantile.h"

#include <cmath>
#include <limits>

namespace kelpdex::numeric {

bool SolveTail(const Tail& f, double target, double x0, double& x) {
  if (!(target > 0) || !(target < 1) || !(x0 > 0)) return false;
  const double lnTarget = std::log(target);
  // "Beyond" means the tail is still on the side of the target that lies towards larger x.
  auto beyond = [&](double value) { return f.upper ? value > target : value < target; };
  double lo = 0, hi = std::numeric_limits<double>::infinity();
  x = x0;
  for (int i = 0; i < 400; ++i) {
    double value = 0;
    if (!f.tail(f.context, x, value)) return false;
    if (value == target) return true;
    if (beyond(value)) {
      lo = x;
    } else {
      hi = x;
    }
    double next;
    double density = f.density(f.context, x);
    if (value > 0 && density > 0 && std::isfinite(density)) {
      // Newton on ln(tail) against ln x, which is nearly straight in both kinds of tail: a power
      // of x near 0, an exponential far out. d ln(tail)/d ln x = ±x·density/tail.
      double slope = (f.upper ? -density : density) * x / value;
      double step = (std::log(value) - lnTarget) / slope;
      next = x * std::exp(-std::fmax(-30.0, std::fmin(30.0, step)));
    } else {
      next = std::numeric_limits<double>::quiet_NaN();
    }
    if (!(next > lo && next < hi)) {
      // Out of the bracket: double while no upper end is known, else halve it, geometrically
      // when it spans orders of magnitude.
      if (std::isinf(hi)) {
        next = x * 2;
      } else if (lo > 0 && hi > 4 * lo) {
        next = std::sqrt(lo * hi);
      } else {
        next = 0.5 * (lo + hi);
      }
    }
    if (!std::isfinite(next)) return false;
    if (std::fabs(next - x) <= 2e-16 * x || (std::isfinite(hi) && hi - lo <= 2e-16 * hi)) {
      x = next;
      return true;
    }
    x = next;
  }
  return false;
}

}  // namespace kelpdex::numeric
