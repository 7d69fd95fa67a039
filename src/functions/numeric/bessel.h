// Bessel functions of the first and second kind of whole order, from the C library. The order
// must lie in 0..kMaxBesselOrder; the second kind is defined for x > 0 only. Outside that the
// result is NaN, which callers turn into their error value.
#pragma once

namespace kelpdex::numeric {

// The library runs a recurrence over the order, so its time grows with n: about a quarter of a
// second at 10^7 and most of a minute at 2*10^9. A million keeps a call within milliseconds.
constexpr int kMaxBesselOrder = 1000000;

double BesselJ(int n, double x);
double BesselY(int n, double x);

}  // namespace kelpdex::numeric
