#include "functions/numeric/root_bracket.h"

#include <cmath>

namespace kelpdex::numeric {

RootOutcome RegulaFalsiIllinois(RootFunction f, void* context, double x0, double x1,
                                double tolerance, int maxSteps, double& root) {
  double f0 = 0, f1 = 0;
  if (!f(context, x0, f0) || !f(context, x1, f1)) return RootOutcome::kBadValue;
  if (f0 == 0 || f1 == 0) {
    root = f0 == 0 ? x0 : x1;
    return RootOutcome::kFound;
  }
  if (!(f0 * f1 < 0)) return RootOutcome::kNoSignChange;
  for (int step = 0; step < maxSteps; ++step) {
    double x2 = x1 - (x1 - x0) * f1 / (f1 - f0);
    double f2 = 0;
    if (!std::isfinite(x2) || !f(context, x2, f2)) return RootOutcome::kBadValue;
    if (f2 * f1 >= 0) {
      f0 /= 2;
    } else {
      x0 = x1;
      f0 = f1;
    }
    double moved = std::fabs(x2 - x1);
    x1 = x2;
    f1 = f2;
    root = x2;
    if (moved < tolerance || f2 == 0) return RootOutcome::kFound;
    // The two ends must still enclose the root; a NaN that slipped through ends here as well.
    if (!(f2 * f0 < 0)) return RootOutcome::kBadValue;
  }
  return RootOutcome::kNoConvergence;
}

}  // namespace kelpdex::numeric
