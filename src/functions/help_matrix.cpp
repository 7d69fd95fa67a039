// Help entries of the category "matrix, over-/determined eq. systems", with mDeterm, mInverse
// and mMult of the mathematical one, which share their handlers.
#include "functions/help_table.h"

namespace kelpdex {

namespace {

const HelpEntry kEntries[] = {
    {HelpCode(help::kMathematical, 1),
     "mDeterm",
     {"m"},
     "1",
     "mDeterm(m)\r\n\r\n"
     "Returns the determinant of the square matrix 'm', computed by Gaussian elimination. A "
     "singular matrix gives 0.\r\n\r\n"
     "=mDeterm({2, -1, 3; 1, 3, 1; 4, 1, 1}) returns -32\r\n"},
    {HelpCode(help::kMathematical, 1),
     "mInverse",
     {"m"},
     "1",
     "mInverse(m)\r\n\r\n"
     "Returns the inverse of the square matrix 'm'. A singular matrix gives #NUM!.\r\n\r\n"
     "=mInverse({4, 7; 2, 6}) returns {0.6, -0.7; -0.2, 0.4}\r\n"},
    {HelpCode(help::kMathematical, kVariableArguments),
     "mMult",
     {"m1", "m2", "..."},
     "11",
     "mMult(m1, m2, ...)\r\n\r\n"
     "Returns the matrix product m1*m2*... The rows of each matrix must equal the columns of the "
     "product before it; otherwise #VALUE!.\r\n\r\n"
     "=mMult({1, 2}, {3; 4}) returns 11\r\n"},
    {HelpCode(help::kMatrix, 1),
     "mtxT",
     {"A"},
     "1",
     "mtxT(A)\r\n\r\n"
     "Returns the transpose of the matrix 'A'.\r\n\r\n"
     "=mtxT({1, 2, 3; 4, 5, 6}) returns {1, 4; 2, 5; 3, 6}\r\n"},
    {HelpCode(help::kMatrix, kVariableArguments),
     "mtxMlt",
     {"A1", "A2", "..."},
     "11",
     "mtxMlt(A1, A2, ...)\r\n\r\n"
     "Returns the matrix product A1*A2*...*AN. The rows of each matrix must equal the columns of "
     "the product before it; otherwise #VALUE!.\r\n\r\n"
     "=mtxMlt({1, 2; 3, 4}, {5; 6}, {2, 1}) returns {34, 17; 78, 39}\r\n"},
    {HelpCode(help::kMatrix, 2),
     "mtxDiag",
     {"n", "x"},
     "01",
     "mtxDiag(n, x)\r\n\r\n"
     "Returns an n x n diagonal matrix. A number 'x' stands on every diagonal element; an array "
     "'x' gives its elements, row by row, to the diagonal in turn.\r\n\r\n"
     "=mtxDiag(3, {1, 2, 3}) returns {1, 0, 0; 0, 2, 0; 0, 0, 3}\r\n"
     "=mtxDiag(2, 7) returns {7, 0; 0, 7}\r\n"},
    {HelpCode(help::kMatrix, 1),
     "mtxRand",
     {"n", "[seed1]", "[seed2]"},
     "000",
     "mtxRand(n, [seed1], [seed2])\r\n\r\n"
     "Returns a column of n uniform random numbers in the range (0, 1), n from 1 to 2097152. A "
     "seed given restarts its generator; without seeds the generators go on from their last state, "
     "which rand and randBetween share.\r\n\r\n"
     "=mtxRand(4, 10000, 25000) returns {0.71261246808435; 0.28457538373252; 0.42105025462307; "
     "0.93072516522912}\r\n"},
    {HelpCode(help::kMatrix, 1),
     "mtxRand2",
     {"n", "[seed1]", "[seed2]", "[type]", "[v1]", "[v2]"},
     "000000",
     "mtxRand2(n, [seed1], [seed2], [type], [v1], [v2])\r\n\r\n"
     "Returns a column of n random numbers of the distribution 'type': 0 uniform in (0, 1), 1 "
     "normal with mean v1 and deviation v2, 2 exponential with mean v1, 3 Poisson with mean v1, 4 "
     "Bernoulli with probability v1, 5 geometric with probability v1 (the trials up to the first "
     "success). An omitted type is 0.\r\n\r\n"
     "=mtxRand2(1, 5, 7, 4, 1) returns 1\r\n"},
    {HelpCode(help::kMatrix, 2),
     "mtxSeries",
     {"n", "x", "[step]"},
     "000",
     "mtxSeries(n, x, [step])\r\n\r\n"
     "Returns a column of n values from 'x' on by 'step'. For a date string 'x' the step is a "
     "period string such as \"P1D\" (the default) and the values are date strings; otherwise the "
     "step is a number, 1 by default.\r\n\r\n"
     "=mtxSeries(3, 1.5, 0.5) returns {1.5; 2; 2.5}\r\n"
     "=mtxSeries(3, \"2005-12-30\", \"P1D\") returns {\"2005-12-30\"; \"2005-12-31\"; "
     "\"2006-01-01\"}\r\n"},
    {HelpCode(help::kMatrix, 3),
     "mtxGauss",
     {"A", "B", "[iterations]", "[scaling]", "result"},
     "11000",
     "mtxGauss(A, B, [iterations], [scaling], result)\r\n\r\n"
     "Gaussian elimination with partial pivoting, optionally with scaled rows, for the square "
     "matrix 'A'. The 'result' argument selects: 1 the solutions of A*x=B, a column for each "
     "column of B, improved by 'iterations' steps; 2 L and 3 U with L*U=P*A; 4 the permutation P; "
     "5 the inverse of A; 6 the determinant. A singular A gives #NUM! (the determinant 0).\r\n\r\n"
     "=mtxGauss({2, -1, 3; 1, 3, 1; 4, 1, 1}, {6; 8; 2},,,1) returns {-0.75; 1.875; 3.125}\r\n"
     "=mtxGauss({2, -1, 3; 1, 3, 1; 4, 1, 1}, {6; 8; 2},,,6) returns -32\r\n"},
    {HelpCode(help::kMatrix, 3),
     "mtxChl",
     {"A", "B", "[iterations]", "result"},
     "1100",
     "mtxChl(A, B, [iterations], result)\r\n\r\n"
     "Cholesky decomposition U^T*U=A of the symmetric positive definite matrix 'A'. The 'result' "
     "argument selects: 1 the solutions of A*x=B; 2 U; 3 U^T; 4 the inverse of A; 5 the "
     "determinant. Any other A gives #NUM!.\r\n\r\n"
     "=mtxChl({4, 2; 2, 3}, {2; 1},,1) returns {0.5; 0}\r\n"
     "=mtxChl({4, 2; 2, 3},,,5) returns 8\r\n"},
    {HelpCode(help::kMatrix, 2),
     "mtxFwSubst",
     {"L", "B"},
     "11",
     "mtxFwSubst(L, B)\r\n\r\n"
     "Solves L*y=B for the lower triangular matrix 'L' by forward substitution, a column for each "
     "column of B.\r\n\r\n"
     "=mtxFwSubst({2, 0; 1, 1}, {4; 5}) returns {2; 3}\r\n"},
    {HelpCode(help::kMatrix, 2),
     "mtxBkSubst",
     {"U", "B"},
     "11",
     "mtxBkSubst(U, B)\r\n\r\n"
     "Solves U*x=B for the upper triangular matrix 'U' by back substitution, a column for each "
     "column of B.\r\n\r\n"
     "=mtxBkSubst({1, 1; 0, 2}, {5; 4}) returns {3; 2}\r\n"},
    {HelpCode(help::kMatrix, 3),
     "mtxSVD",
     {"A", "B", "[minMaxRatio]", "result"},
     "1100",
     "mtxSVD(A, B, [minMaxRatio], result)\r\n\r\n"
     "Singular value decomposition U*S*V^T=A of the m x n matrix 'A' and the least-squares "
     "solution of A*x~=B. Singular values below minMaxRatio (at least and by default 1e-15) times "
     "the largest count as zero. The 'result' argument selects: 1 the solutions; 2 the number of "
     "non-zero singular values; 3 the rest values (A*x-B)^T*(A*x-B), one per column of B; 4 the "
     "pseudo-inverse; 5 U (m x n); 6 S (n x n); 7 V (n x n).\r\n\r\n"
     "=mtxSVD({1, 2; 2, 3; 7, 1}, {1; 2; 3},,1) returns {0.37476459510358; 0.38418079096045}\r\n"
     "=mtxSVD({1, 2; 2, 4},,,2) returns 1\r\n"},
    {HelpCode(help::kMatrix, 5),
     "mtxLSC",
     {"A", "b", "E", "d", "[minMaxRatio]", "result"},
     "111100",
     "mtxLSC(A, b, E, d, [minMaxRatio], result)\r\n\r\n"
     "Least squares A*x~=b under the constraints E*x=d, which hold exactly; E has at most as many "
     "rows as A has columns. The 'result' argument selects: 1 x; 2 the rest value "
     "(A*x-b)^T*(A*x-b).\r\n\r\n"
     "=mtxLSC({1, 0; 0, 1; 1, 1}, {1; 2; 2}, {1, 1}, {1},,1) returns {0; 1}\r\n"},
    {HelpCode(help::kMatrix, 4),
     "mtxLSW",
     {"A", "b", "G", "[minMaxRatio]", "result"},
     "11100",
     "mtxLSW(A, b, G, [minMaxRatio], result)\r\n\r\n"
     "Weighted least squares: (A*x-b)^T*G*(A*x-b) is minimised for a symmetric positive "
     "semi-definite G with as many rows as A. With G the identity it equals mtxSVD. The 'result' "
     "argument selects: 1 x; 2 the rest value.\r\n\r\n"
     "=mtxLSW({1, 2; 2, 3; 7, 1}, {1; 2; 3}, {1,0,0;0,1,0;0,0,1},,1) returns {0.37476459510358; "
     "0.38418079096045}\r\n"},
};

}  // namespace

std::span<const HelpEntry> MatrixHelp() {
  return kEntries;
}

}  // namespace kelpdex
