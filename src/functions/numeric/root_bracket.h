// A root of a function of one variable between two points where it changes sign: regula falsi
// with the Illinois rule, always bounded by a number of steps.
#pragma once

namespace kelpdex::numeric {

// The function searched: false when it has no usable value at x (NaN, overflow, a subnormal).
using RootFunction = bool (*)(void* context, double x, double& fx);

enum class RootOutcome {
  kFound,
  kNoSignChange,  // f(x0) and f(x1) lie on the same side of zero
  kBadValue,      // the function failed at a point of the search
  kNoConvergence  // the step limit was reached
};

// Searches from x0 and x1 until a step moves the estimate by less than `tolerance`, or the value
// is exactly 0; the estimate is left in `root`. The Illinois rule halves the weight of an end
// that has stayed put, so one end cannot hold the secant back for ever.
RootOutcome RegulaFalsiIllinois(RootFunction f, void* context, double x0, double x1,
                                double tolerance, int maxSteps, double& root);

}  // namespace kelpdex::numeric
