// The quantile of Student's t distribution, for the confidence limits of the fits.
#pragma once

namespace kelpdex::numeric {

// The t >= 0 with P(T > t) = q for n > 0 degrees of freedom and 0 < q <= 0.5. False when the
// search does not converge.
bool StudentUpperQuantile(double q, double n, double& t);

}  // namespace kelpdex::numeric
