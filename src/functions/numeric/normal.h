// The standard normal distribution: its density, its two tails and its quantile.
#pragma once

namespace kelpdex::numeric {

double NormalDensity(double z);
// P(Z < z), accurate relative to itself far into the lower tail; the upper tail is NormalCdf(-z).
double NormalCdf(double z);
// The z with NormalCdf(z) = p, for 0 < p < 1; taken from the nearer tail, so p close to 1 keeps
// the digits that 1 - p has.
double NormalQuantile(double p);

}  // namespace kelpdex::numeric
