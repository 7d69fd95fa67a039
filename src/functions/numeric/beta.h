// The binomial term and the regularized incomplete beta function, accurate in both tails.
#pragma once

namespace kelpdex::numeric {

// C(n, k) p^k q^(n-k) for real 0 <= k <= n, with q = 1 - p given separately so that a p close to
// 1 keeps its complement's digits.
double BinomialTerm(double k, double n, double p, double q);

// The regularized incomplete beta function I_x(a, b) and its complement 1 - I_x(a, b), for a, b > 0
// and x + y = 1, y given separately for the same reason as q above. False when the continued
// fraction did not settle.
bool IncompleteBeta(double a, double b, double x, double y, double& lower, double& upper);

}  // namespace kelpdex::numeric
