#include "functions/numeric/student.h"

#include <cmath>

#include "functions/numeric/beta.h"
#include "functions/numeric/normal.h"
#include "functions/numeric/quantile.h"

namespace kelpdex::numeric {

namespace {

bool UpperTail(const void* context, double t, double& value) {
  double n = *static_cast<const double*>(context);
  double t2 = t * t;
  if (std::isinf(t2)) {
    value = 0;
    return true;
  }
  double lower = 0, upper = 0;
  // P(T > t) = I_x(n/2, 1/2) / 2 with x = n/(n + t^2), its complement formed directly.
  if (!IncompleteBeta(n / 2, 0.5, n / (n + t2), t2 / (n + t2), lower, upper)) return false;
  value = 0.5 * lower;
  return true;
}

double Density(const void* context, double t) {
  double n = *static_cast<const double*>(context);
  return std::exp(std::lgamma((n + 1) / 2) - std::lgamma(n / 2) - 0.5 * std::log(n * M_PI) -
                  (n + 1) / 2 * std::log1p(t * t / n));
}

}  // namespace

bool StudentUpperQuantile(double q, double n, double& t) {
  t = 0;
  if (!(n > 0) || !(q > 0) || q > 0.5) return false;
  if (q == 0.5) return true;
  Tail tail{&n, UpperTail, Density, true};
  return SolveTail(tail, q, -NormalQuantile(q), t);
}

}  // namespace kelpdex::numeric
