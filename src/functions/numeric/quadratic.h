// Quadratic programs: max p^T*x - x^T*C*x under the linear constraints of a LinearProgram, by a
// primal active-set method started from a vertex the simplex finds.
#pragma once

#include <vector>

#include "functions/numeric/matrix.h"
#include "functions/numeric/simplex.h"

namespace kelpdex::numeric {

// lp.c holds p. C (n x n) enters through its symmetric part, which must be positive definite
// (otherwise kNotDefinite); the optimum is then unique and the objective bounded. lp.integer is
// ignored.
LpStatus SolveQuadraticProgram(const LinearProgram& lp, const Matrix& c, std::vector<double>& x);

}  // namespace kelpdex::numeric
