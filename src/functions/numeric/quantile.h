// The inversion of a continuous distribution's tail: the x at which it reaches a given
// probability.
#pragma once

namespace kelpdex::numeric {

// A tail of a distribution on [0, inf): `tail` gives P(X < x), or P(X > x) when `upper`, and
// false where it cannot; `density` the density at x.
struct Tail {
  const void* context;
  bool (*tail)(const void* context, double x, double& value);
  double (*density)(const void* context, double x);
  bool upper;
};

// The x > 0 at which the tail equals `target` (0 < target < 1), searched from the guess `x0`:
// Newton's steps on the logarithms of the tail and of x, kept inside a bracket that halves when a
// step leaves it. False when it does not converge.
bool SolveTail(const Tail& f, double target, double x0, double& x);

}  // namespace kelpdex::numeric
