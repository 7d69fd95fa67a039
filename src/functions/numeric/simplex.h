// Linear programs by the simplex method with artificial variables (the big-M form), the
// enumeration of their optimum vertices, and the branch and bound of the integer variants.
#pragma once

#include <cstdint>
#include <vector>

#include "functions/numeric/matrix.h"

namespace kelpdex::numeric {

// max c^T*x subject to row i of A*x being <= b[i] (sense 1), = b[i] (0) or >= b[i] (-1), x >= 0.
struct LinearProgram {
  Matrix a;
  std::vector<int> sense;
  std::vector<double> b, c;
  double epsilon = 1e-8;  // intermediate coefficients below it count as 0
  double bigM = 0;        // cost of an artificial variable; 0 picks one from the data
  // Variables held to whole numbers (integer[j] 1), and those that are also at most 1.
  std::vector<uint8_t> integer;
};

// kNotDefinite: the quadratic term of a quadratic program is not positive definite.
enum class LpStatus : uint8_t { kOptimal, kUnbounded, kInfeasible, kNoConvergence, kNotDefinite };

// The optimum vertices, the first one found first; at most `most` of them.
LpStatus SolveLinearProgram(const LinearProgram& lp, size_t most,
                            std::vector<std::vector<double>>& optima);
// The same with the variables flagged in lp.integer held to whole numbers: branch and bound,
// depth first, over the relaxations. The optima are the whole-number vectors of the best value.
LpStatus SolveIntegerProgram(const LinearProgram& lp, size_t most,
                             std::vector<std::vector<double>>& optima);

}  // namespace kelpdex::numeric
