// Help entries of the category "optimization & minimization", with polyReg, polyPoints and
// timeSeries of the statistical one. The formula-driven examples name a cell F holding the formula
// and a variable cell X.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

const HelpEntry kEntries[] = {
    {HelpCode(help::kOptimization, 5),
     "LProg",
     {"A", "s", "b", "c", "vector", "[epsilon]", "[m]"},
     "1111000",
     "LProg(A, s, b, c, vector, [epsilon], [m])\r\n\r\n"
     "Maximises sum(c[j]*x[j]) over x >= 0 under the constraints A*x with b: row i is <= b[i] when "
     "s[i] is 1, = when 0, >= when -1. 'vector' 0 returns the number of optimum vectors, i the "
     "i-th. Coefficients below 'epsilon' (1e-08) count as 0; 'm' is the cost of the artificial "
     "variables, taken from the data when omitted. An unbounded objective gives #N/A!, "
     "inconsistent constraints #NULL!.\r\n\r\n"
     "=LProg({2, 1, 1; 1, 1, 3}, {1; 0}, {5; 10}, {4; 2; 2},1,,) returns {1; 0; 3}\r\n"
     "=LProg({2, 1, 1; 1, 1, 3}, {1; 0}, {5; 10}, {4; 2; 2},0,,) returns 2\r\n"},
    {HelpCode(help::kOptimization, 6),
     "LProgInt",
     {"A", "s", "b", "c", "int", "vector", "[epsilon]", "[m]"},
     "11111000",
     "LProgInt(A, s, b, c, int, vector, [epsilon], [m])\r\n\r\n"
     "As LProg, with x[j] held to whole numbers where int[j] is 1.\r\n\r\n"
     "=LProgInt({2.5, 1.5, 1; 1, 1.5, 3}, {1; 0}, {15; 10}, {1; 1; 2}, {1; 0; 1}, 1,,) returns {4; "
     "0; 2}\r\n"},
    {HelpCode(help::kOptimization, 6),
     "LProgBin",
     {"A", "s", "b", "c", "bin", "vector", "[epsilon]", "[m]"},
     "11111000",
     "LProgBin(A, s, b, c, bin, vector, [epsilon], [m])\r\n\r\n"
     "As LProg, with x[j] either 0 or 1 where bin[j] is 1.\r\n\r\n"
     "=LProgBin({1, 1}, {1}, {5}, {1; 1}, {1; 1}, 1) returns {1; 1}\r\n"},
    {HelpCode(help::kOptimization, 6),
     "QProg",
     {"A", "s", "b", "p", "C", "vector", "[epsilon]"},
     "1111100",
     "QProg(A, s, b, p, C, vector, [epsilon])\r\n\r\n"
     "Maximises p^T*x - x^T*C*x over x >= 0 under the constraints of LProg. C must be positive "
     "definite (only its symmetric part counts), otherwise the result is #NUM!; the optimum is "
     "then unique, so 'vector' 0 returns 1 and 'vector' 1 the optimum. Inconsistent constraints "
     "give #NULL!. 'epsilon' (1e-08) is the tolerance of the constraints and of the steps.\r\n\r\n"
     "=QProg({1, 2; 1, 1}, {1; 1}, {10; 9}, {10; 25}, {10, 2; 2, 1}, 1,) returns {0; 5}\r\n"},
    {HelpCode(help::kOptimization, 4),
     "minSimplex",
     {"function", "x", "v", "[start]", "[epsilon]", "[maxSteps]", "result"},
     "0010000",
     "minSimplex(function, x, v, [start], [epsilon], [maxSteps], result)\r\n\r\n"
     "Minimises the formula in the cell 'function' over the variable cells 'x' by the downhill "
     "simplex method of Nelder and Mead; only variables whose 'v' is 1 move. 'start' (1e-05) is "
     "the first step, 'epsilon' (1e-25) the relative spread that ends the search, 'maxSteps' "
     "(2000) the most steps, after which the result is #NUM!; 0 counts as omitted. The 'result' "
     "argument selects: 1 the x vector; 2 the minimum; 3 the steps taken.\r\n\r\n"
     "=minSimplex(F, X, {1}, 0.5, 1e-20,, 1) returns 3\r\n"},
    {HelpCode(help::kOptimization, 6),
     "minMC",
     {"f(x)", "x", "v", "from", "to", "n"},
     "001000",
     "minMC(f(x), x, v, from, to, n)\r\n\r\n"
     "Draws n points uniformly in [from, to] for every variable cell of 'x' whose 'v' is 1, "
     "evaluates the formula in the cell 'f(x)' at each, and returns the best point.\r\n\r\n"
     "=minMC(F, X, {1}, 2.9, 3.1, 1) returns 3\r\n"},
    {HelpCode(help::kOptimization, 4),
     "root",
     {"f(x)", "x", "x0", "x1", "[epsilon]"},
     "00000",
     "root(f(x), x, x0, x1, [epsilon])\r\n\r\n"
     "Finds a root of the formula in the cell 'f(x)' in the variable cell 'x' between x0 and x1 by "
     "regula falsi with the Illinois modification. x0 must be below x1 and f must change sign "
     "between them; otherwise #NUM!. 'epsilon' defaults to 1e-15.\r\n\r\n"
     "=root(F, X, 0, 2) returns 1.4142135623731\r\n"},
    {HelpCode(help::kStatistical, 5),
     "polyReg",
     {"t", "y", "sy", "r", "type"},
     "11100",
     "polyReg(t, y, sy, r, type)\r\n\r\n"
     "Fits the measurements y with deviations sy at the points t by r orthonormal polynomials. The "
     "'type' argument selects: 1 the coefficients x, each of deviation 1; 2 the lower triangular "
     "matrix B whose row j gives the polynomial f_j(t) = sum of B[j, k]*t^(k-1); 3 the chi2 of "
     "each degree.\r\n\r\n"
     "=polyReg({1; 2; 3; 4; 5}, {1.1; 1.2; 1.3; 1.4; 1.5}, {0.2; 0.2; 0.2; 0.2; 0.23}, 4, 1) "
     "returns {14.0688; 1.4979; 0; 0}\r\n"},
    {HelpCode(help::kStatistical, 7),
     "polyPoints",
     {"x", "B", "chi2", "n", "r", "t", "p"},
     "1110010",
     "polyPoints(x, B, chi2, n, r, t, p)\r\n\r\n"
     "Evaluates a fit of polyReg at the points t: the coefficients x (type 1), the matrix B (type "
     "2) and chi2 (type 3, or the one value of the fit used) of n measurements. Returns two "
     "columns, one row per point: y', the polynomial of the first r orthonormal polynomials "
     "(degree r - 1), and eta, the confidence limit at probability p, so that the true value lies "
     "between y' - eta and y' + eta. eta scales the coefficients' unit deviation by "
     "sqrt(chi2/(n - r)) and takes Student's t with n - r degrees of freedom; r = n gives "
     "#DIV/0!.\r\n\r\n"
     "=polyPoints(polyReg({0; 1; 2; 3; 4}, {1; 3; 2; 5; 4}, {1; 1; 1; 1; 1}, 2, 1), "
     "polyReg({0; 1; 2; 3; 4}, {1; 3; 2; 5; 4}, {1; 1; 1; 1; 1}, 2, 2), "
     "polyReg({0; 1; 2; 3; 4}, {1; 3; 2; 5; 4}, {1; 1; 1; 1; 1}, 2, 3), 5, 2, {7; 2.5}, 0.95) "
     "returns {7, 5.7284033495117; 3.4, 1.6536476079337}\r\n"},
    {HelpCode(help::kStatistical, 4),
     "timeSeries",
     {"y", "l", "k", "p"},
     "1000",
     "timeSeries(y, l, k, p)\r\n\r\n"
     "Smooths the N equally spaced measurements y by moving polynomials: for each point with k "
     "neighbours on both sides, a polynomial of degree l fitted to those 2k + 1 points gives y'. "
     "The first and the last such polynomials also give the first and last k points and k more "
     "beyond each end, so N + 2k rows come back, in two columns: y' and eta, the confidence limit "
     "at probability p from the scatter within the window. l must be below 2k, and N at least "
     "2k + 1; otherwise #NUM!.\r\n\r\n"
     "=timeSeries({1; 4; 9; 16; 25}, 1, 1, 0.95) returns {-3.3333333333333, 15.84742160299; "
     "0.66666666666667, 9.4706458420388; 4.6666666666667, 5.9897623547292; 9.6666666666667, "
     "5.9897623547292; 16.666666666667, 5.9897623547292; 24.666666666667, 9.4706458420388; "
     "32.666666666667, 15.84742160299}\r\n"},
};

}  // namespace

std::span<const HelpEntry> OptimisationHelp() {
  return kEntries;
}

}  // namespace kelpdex
