#include "formula/formula_value.h"

#include <cmath>

namespace kelpdex {

bool IsBadNumber(double x) {
  double magnitude = std::fabs(x);
  if (std::isnan(x) || magnitude > 1.7976931348623157e308) return true;
  return x != 0 && magnitude < 2.2250738585072014e-308;
}

}  // namespace kelpdex
