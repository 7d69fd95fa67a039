// The gamma function's relatives: log-gamma, the Stirling error, the Poisson term and the
// regularized incomplete gamma functions. Every result carries a relative error of a few units in
// the last place wherever double precision allows, the tails included.
#pragma once

namespace kelpdex::numeric {

// ln |Γ(x)|.
double LogGamma(double x);

// ln(x!) - ln(sqrt(2πx) (x/e)^x) for x > 0: what Stirling's formula leaves out of the factorial.
double StirlingError(double x);

// x ln(x/m) + m - x, the deviance term of a Poisson count x against a mean m, without the
// cancellation of its naive form when x is close to m.
double DevianceTerm(double x, double m);

// m^x e^-m / Γ(x + 1) for x >= 0 and m >= 0, whole x or not.
double PoissonTerm(double x, double m);

// The regularized incomplete gamma functions P(a, x) and Q(a, x) = 1 - P(a, x), a > 0, x >= 0.
// Each is computed directly in its own tail. False when the series or the continued fraction did
// not settle.
bool IncompleteGamma(double a, double x, double& lower, double& upper);

}  // namespace kelpdex::numeric
