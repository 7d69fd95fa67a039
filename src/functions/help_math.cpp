// Help entries of the category "mathematical".
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kMathematical;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, 1),
     "abs",
     {"x"},
     "0",
     "abs(x)\r\n\r\n"
     "Returns the absolute value of x, the number without its sign.\r\n\r\n"
     "=abs(-2.5) returns 2.5\r\n"
     "=abs(3) returns 3\r\n"},
    {HelpCode(kCategory, 1),
     "acos",
     {"x"},
     "0",
     "acos(x)\r\n\r\n"
     "Returns the arccosine of x in radians, from 0 to pi. x must lie between -1 and 1.\r\n\r\n"
     "=acos(0.5) returns 1.0471975511966\r\n"
     "=acos(2) returns #NUM!\r\n"},
    {HelpCode(kCategory, 1),
     "acosh",
     {"x"},
     "0",
     "acosh(x)\r\n\r\n"
     "Returns the inverse hyperbolic cosine of x. x must be at least 1.\r\n\r\n"
     "=acosh(1) returns 0\r\n"
     "=acosh(2) returns 1.31695789692482\r\n"},
    {HelpCode(kCategory, 1),
     "asin",
     {"x"},
     "0",
     "asin(x)\r\n\r\n"
     "Returns the arcsine of x in radians, from -pi/2 to pi/2. x must lie between -1 and 1.\r\n\r\n"
     "=asin(0.5) returns 0.523598775598299\r\n"},
    {HelpCode(kCategory, 1),
     "asinh",
     {"x"},
     "0",
     "asinh(x)\r\n\r\n"
     "Returns the inverse hyperbolic sine of x.\r\n\r\n"
     "=asinh(1) returns 0.881373587019543\r\n"},
    {HelpCode(kCategory, 1),
     "atan",
     {"x"},
     "0",
     "atan(x)\r\n\r\n"
     "Returns the arctangent of x in radians, from -pi/2 to pi/2.\r\n\r\n"
     "=atan(1) returns 0.785398163397448\r\n"},
    {HelpCode(kCategory, 2),
     "atan2",
     {"x", "y"},
     "00",
     "atan2(x, y)\r\n\r\n"
     "Returns the angle in radians, from -pi to pi, between the x axis and the line from the "
     "origin to the point (x, y): the arctangent of y/x in the right quadrant. If x is 0, it "
     "returns 0.\r\n\r\n"
     "=atan2(1, 1) returns 0.785398163397448\r\n"
     "=atan2(-1, 1) returns 2.35619449019234\r\n"
     "=atan2(-1, -1) returns -2.35619449019234\r\n"
     "=atan2(0, 5) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "atanh",
     {"x"},
     "0",
     "atanh(x)\r\n\r\n"
     "Returns the inverse hyperbolic tangent of x. x must lie strictly between -1 and 1.\r\n\r\n"
     "=atanh(0.5) returns 0.549306144334055\r\n"
     "=atanh(1) returns #NUM!\r\n"},
    {HelpCode(kCategory, 1),
     "ceiling",
     {"x", "[m]"},
     "00",
     "ceiling(x, [m])\r\n\r\n"
     "Rounds x away from zero to a multiple of m. m must not be negative; if it's "
     "omitted, it's assumed to be 1. An m of 0 returns the #DIV/0! error value.\r\n\r\n"
     "=ceiling(2.1) returns 3\r\n"
     "=ceiling(7, 5) returns 10\r\n"
     "=ceiling(-5.1, 1) returns -6\r\n"},
    {HelpCode(kCategory, 2),
     "combin",
     {"n", "k"},
     "00",
     "combin(n, k)\r\n\r\n"
     "Returns the number of ways to choose k items out of n, regardless of their order.\r\n\r\n"
     "=combin(5, 2) returns 10\r\n"
     "=combin(49, 6) returns 13983816\r\n"},
    {HelpCode(kCategory, 2),
     "combin2",
     {"n", "k"},
     "00",
     "combin2(n, k)\r\n\r\n"
     "Returns the number of ways to choose k items out of n kinds when a kind may be chosen "
     "more than once (combinations with repetition), which is combin(n + k - 1, k).\r\n\r\n"
     "=combin2(8, 2) returns 36\r\n"},
    {HelpCode(kCategory, 1),
     "cos",
     {"x"},
     "0",
     "cos(x)\r\n\r\n"
     "Returns the cosine of x, an angle in radians.\r\n\r\n"
     "=cos(0) returns 1\r\n"
     "=cos(pi()) returns -1\r\n"},
    {HelpCode(kCategory, 1),
     "cosh",
     {"x"},
     "0",
     "cosh(x)\r\n\r\n"
     "Returns the hyperbolic cosine of x.\r\n\r\n"
     "=cosh(0) returns 1\r\n"
     "=cosh(1) returns 1.54308063481524\r\n"},
    {HelpCode(kCategory, 2),
     "countIf",
     {"array", "criteria"},
     "10",
     "countIf(array, criteria)\r\n\r\n"
     "Counts the cells of array that meet criteria. A criteria text may begin with =, >, >=, < "
     "or <= to compare; otherwise a cell must equal it, and a text may be a pattern where ? "
     "stands for one character and * for any string (place a tilde (~) before them to search "
     "for ? or * itself). Texts are compared regardless of case. An error value as criteria "
     "counts the cells holding that error.\r\n\r\n"
     "=countIf({1, 2, 3, \"a\", \"ab\"}, \">=2\") returns 2\r\n"
     "=countIf({\"apple\", \"Avocado\", \"pear\"}, \"a*\") returns 2\r\n"
     "=countIf({1, 2, 2}, 2) returns 2\r\n"},
    // The syntax line keeps its old misspelling on purpose; the name itself is right.
    {HelpCode(kCategory, 1),
     "degrees",
     {"x"},
     "0",
     "degress(x)\r\n\r\n"
     "Converts x from radians to degrees.\r\n\r\n"
     "=degrees(pi()) returns 180\r\n"
     "=degrees(1) returns 57.2957795130823\r\n"},
    {HelpCode(kCategory, 1),
     "even",
     {"x"},
     "0",
     "even(x)\r\n\r\n"
     "Rounds x away from zero to the next even integer.\r\n\r\n"
     "=even(1.5) returns 2\r\n"
     "=even(3) returns 4\r\n"
     "=even(-1) returns -2\r\n"},
    {HelpCode(kCategory, 1),
     "exp",
     {"x"},
     "0",
     "exp(x)\r\n\r\n"
     "Returns e raised to the power of x.\r\n\r\n"
     "=exp(0) returns 1\r\n"
     "=exp(1) returns 2.71828182845905\r\n"},
    {HelpCode(kCategory, 1),
     "fact",
     {"n"},
     "0",
     "fact(n)\r\n\r\n"
     "Returns the factorial of n, 1*2*3*...*n. n is rounded to an integer, which must lie "
     "between 1 and 170.\r\n\r\n"
     "=fact(5) returns 120\r\n"
     "=fact(0) returns #NUM!\r\n"},
    {HelpCode(kCategory, 1),
     "factDouble",
     {"n"},
     "0",
     "factDouble(n)\r\n\r\n"
     "Returns the double factorial of n, n*(n-2)*(n-4)*... down to 1 or 2. n is rounded to an "
     "integer, which must lie between 1 and 170.\r\n\r\n"
     "=factDouble(7) returns 105\r\n"
     "=factDouble(6) returns 48\r\n"},
    {HelpCode(kCategory, 1),
     "floor",
     {"x", "[m]"},
     "00",
     "floor(x, [m])\r\n\r\n"
     "Rounds x towards zero to a multiple of m. m must not be negative; if it's "
     "omitted, it's assumed to be 1. An m of 0 returns the #DIV/0! error value.\r\n\r\n"
     "=floor(2.9) returns 2\r\n"
     "=floor(23, 5) returns 20\r\n"
     "=floor(-5.1, 1) returns -5\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "gcd",
     {"x1", "x2", "..."},
     "11",
     "gcd(x1, x2, ...)\r\n\r\n"
     "Returns the greatest common divisor of the specified integers, which can be numbers or "
     "arrays of numbers. A negative number returns the #NUM! error value.\r\n\r\n"
     "=gcd(12, 18) returns 6\r\n"
     "=gcd({12, 18}, 27) returns 3\r\n"},
    {HelpCode(kCategory, 1),
     "int",
     {"x"},
     "0",
     "int(x)\r\n\r\n"
     "Rounds x down to the nearest integer, towards minus infinity.\r\n\r\n"
     "=int(5.9) returns 5\r\n"
     "=int(-5.1) returns -6\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "lcm",
     {"x1", "x2", "..."},
     "11",
     "lcm(x1, x2, ...)\r\n\r\n"
     "Returns the least common multiple of the specified integers, which can be numbers or "
     "arrays of numbers.\r\n\r\n"
     "=lcm(4, 6) returns 12\r\n"
     "=lcm(2, 3, 4) returns 12\r\n"},
    {HelpCode(kCategory, 1),
     "ln",
     {"x"},
     "0",
     "ln(x)\r\n\r\n"
     "Returns the natural logarithm of x, which must be greater than 0.\r\n\r\n"
     "=ln(1) returns 0\r\n"
     "=ln(10) returns 2.30258509299405\r\n"
     "=ln(0) returns #NUM!\r\n"},
    {HelpCode(kCategory, 1),
     "log",
     {"x", "[y]"},
     "00",
     "log(x, [y])\r\n\r\n"
     "Returns the logarithm of x to the base y. x and y must be greater than 0; if y is "
     "omitted, it's assumed to be 10. A base of 1 returns the #DIV/0! error value.\r\n\r\n"
     "=log(100) returns 2\r\n"
     "=log(8, 2) returns 3\r\n"
     "=log(8, 1) returns #DIV/0!\r\n"},
    {HelpCode(kCategory, 1),
     "log10",
     {"x"},
     "0",
     "log10(x)\r\n\r\n"
     "Returns the logarithm of x to the base 10. x must be greater than 0.\r\n\r\n"
     "=log10(1000) returns 3\r\n"
     "=log10(0.01) returns -2\r\n"},
    {HelpCode(kCategory, 2),
     "mod",
     {"x", "y"},
     "00",
     "mod(x, y)\r\n\r\n"
     "Returns the remainder of x divided by y. The result has the sign of x. A y of 0 returns "
     "the #DIV/0! error value.\r\n\r\n"
     "=mod(7, 3) returns 1\r\n"
     "=mod(-3, 2) returns -1\r\n"
     "=mod(5, 0) returns #DIV/0!\r\n"},
    {HelpCode(kCategory, 2),
     "mRound",
     {"x", "m"},
     "00",
     "mRound(x, m)\r\n\r\n"
     "Rounds x to the nearest multiple of m, halves away from zero. x and m must have the same "
     "sign.\r\n\r\n"
     "=mRound(10, 3) returns 9\r\n"
     "=mRound(-10, -3) returns -9\r\n"
     "=mRound(-10, 3) returns #NUM!\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "multinomial",
     {"x1", "x2", "..."},
     "11",
     "multinomial(x1, x2, ...)\r\n\r\n"
     "Returns the factorial of the sum of the specified numbers divided by the product of "
     "their factorials, (x1 + x2 + ...)!/(x1!*x2!*...).\r\n\r\n"
     "=multinomial(2, 3, 4) returns 1260\r\n"},
    {HelpCode(kCategory, 1),
     "odd",
     {"x"},
     "0",
     "odd(x)\r\n\r\n"
     "Rounds x away from zero to the next odd integer.\r\n\r\n"
     "=odd(1.5) returns 3\r\n"
     "=odd(2) returns 3\r\n"
     "=odd(-4) returns -5\r\n"},
    {HelpCode(kCategory, 0),
     "pi",
     {},
     "",
     "pi()\r\n\r\n"
     "Returns the number pi, the ratio of a circle's circumference to its diameter.\r\n\r\n"
     "=pi() returns 3.14159265358979\r\n"},
    {HelpCode(kCategory, 2),
     "power",
     {"x", "y"},
     "00",
     "power(x, y)\r\n\r\n"
     "Returns x raised to the power of y, as the ^ operator does.\r\n\r\n"
     "=power(2, 10) returns 1024\r\n"
     "=power(4, 0.5) returns 2\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "product",
     {"x1", "x2", "..."},
     "11",
     "product(x1, x2, ...)\r\n\r\n"
     "Multiplies all the specified numbers, which can be numbers or arrays of numbers. Empty "
     "cells in arrays are ignored.\r\n\r\n"
     "=product(2, 3, 4) returns 24\r\n"
     "=product({2, , 3}) returns 6\r\n"},
    {HelpCode(kCategory, 2),
     "quotient",
     {"x", "y"},
     "00",
     "quotient(x, y)\r\n\r\n"
     "Returns the integer part of x divided by y, the fraction dropped towards zero. A y of 0 "
     "returns the #DIV/0! error value.\r\n\r\n"
     "=quotient(7, 2) returns 3\r\n"
     "=quotient(-7, 2) returns -3\r\n"},
    {HelpCode(kCategory, 1),
     "radians",
     {"x"},
     "0",
     "radians(x)\r\n\r\n"
     "Converts x from degrees to radians.\r\n\r\n"
     "=radians(180) returns 3.14159265358979\r\n"},
    {HelpCode(kCategory, 0),
     "rand",
     {},
     "",
     "rand()\r\n\r\n"
     "Returns a random number greater than 0 and less than 1. A new number is drawn each time "
     "the formula is calculated.\r\n\r\n"
     "=rand() returns a number such as 0.71261246808435\r\n"},
    {HelpCode(kCategory, 2),
     "randBetween",
     {"x1", "x2"},
     "00",
     "randBetween(x1, x2)\r\n\r\n"
     "Returns a random number between x1 and x2. A new number is drawn each time the formula "
     "is calculated.\r\n\r\n"
     "=randBetween(1, 6) returns a number such as 4.56306234042175\r\n"},
    {HelpCode(kCategory, 1),
     "round",
     {"x", "[digits]"},
     "00",
     "round(x, [digits])\r\n\r\n"
     "Rounds x to the specified number of decimal places, halves away from zero. A negative "
     "'digits' rounds to the left of the decimal point. 'digits' must lie between -14 and 14; "
     "if it's omitted, it's assumed to be 0.\r\n\r\n"
     "=round(2.15, 1) returns 2.2\r\n"
     "=round(-1.475, 2) returns -1.48\r\n"
     "=round(1234.5678, -2) returns 1200\r\n"},
    {HelpCode(kCategory, 1),
     "roundDown",
     {"x", "[digits]"},
     "00",
     "roundDown(x, [digits])\r\n\r\n"
     "Rounds x towards zero to the specified number of decimal places. A negative 'digits' "
     "rounds to the left of the decimal point. 'digits' must lie between -14 and 14; if it's "
     "omitted, it's assumed to be 0.\r\n\r\n"
     "=roundDown(3.14159, 3) returns 3.141\r\n"
     "=roundDown(-2.7, 0) returns -2\r\n"},
    {HelpCode(kCategory, 1),
     "roundUp",
     {"x", "[digits]"},
     "00",
     "roundUp(x, [digits])\r\n\r\n"
     "Rounds x away from zero to the specified number of decimal places. A negative 'digits' "
     "rounds to the left of the decimal point. 'digits' must lie between -14 and 14; if it's "
     "omitted, it's assumed to be 0.\r\n\r\n"
     "=roundUp(3.14159, 3) returns 3.142\r\n"
     "=roundUp(-2.7,) returns -3\r\n"},
    {HelpCode(kCategory, 4),
     "seriesSum",
     {"x", "n", "m", "a"},
     "0001",
     "seriesSum(x, n, m, a)\r\n\r\n"
     "Returns the sum of the power series a1*x^n + a2*x^(n+m) + a3*x^(n+2m) + ..., where the "
     "coefficients a1, a2, ... are the numbers of the array a, read row by row.\r\n\r\n"
     "=seriesSum(2, 1, 1, {1, 1, 1}) returns 14\r\n"
     "=seriesSum(2, 3, 1, 5) returns 40\r\n"},
    {HelpCode(kCategory, 1),
     "sign",
     {"x"},
     "0",
     "sign(x)\r\n\r\n"
     "Returns 1 if x is positive, -1 if it's negative and 0 if it's 0.\r\n\r\n"
     "=sign(12) returns 1\r\n"
     "=sign(-0.5) returns -1\r\n"
     "=sign(0) returns 0\r\n"},
    {HelpCode(kCategory, 1),
     "sin",
     {"x"},
     "0",
     "sin(x)\r\n\r\n"
     "Returns the sine of x, an angle in radians.\r\n\r\n"
     "=sin(pi()/2) returns 1\r\n"
     "=sin(0.5) returns 0.479425538604203\r\n"},
    {HelpCode(kCategory, 1),
     "sinh",
     {"x"},
     "0",
     "sinh(x)\r\n\r\n"
     "Returns the hyperbolic sine of x.\r\n\r\n"
     "=sinh(1) returns 1.1752011936438\r\n"},
    {HelpCode(kCategory, 1),
     "sqrt",
     {"x"},
     "0",
     "sqrt(x)\r\n\r\n"
     "Returns the square root of x, which must not be negative.\r\n\r\n"
     "=sqrt(16) returns 4\r\n"
     "=sqrt(-1) returns #NUM!\r\n"},
    {HelpCode(kCategory, 1),
     "sqrtPi",
     {"x"},
     "0",
     "sqrtPi(x)\r\n\r\n"
     "Returns the square root of x multiplied by pi. x must not be negative.\r\n\r\n"
     "=sqrtPi(1) returns 1.77245385090552\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "sum",
     {"x1", "x2", "..."},
     "11",
     "sum(x1, x2, ...)\r\n\r\n"
     "Adds all the specified numbers, which can be numbers, arrays or references. Texts that "
     "represent numbers are converted.\r\n\r\n"
     "=sum(1, 2, 3) returns 6\r\n"
     "=sum({1, 2; 3, 4}, 5) returns 15\r\n"
     "=sum(true, 1) returns 2\r\n"},
    {HelpCode(kCategory, 2),
     "sumIf",
     {"searchArray", "criteria", "[sumArray]"},
     "101",
     "sumIf(searchArray, criteria, [sumArray])\r\n\r\n"
     "Adds the cells of sumArray whose counterparts in searchArray meet criteria. If sumArray "
     "is omitted, the matching cells of searchArray themselves are added. The criteria are "
     "those of countIf.\r\n\r\n"
     "=sumIf({1, 2, 3}, \">1\") returns 5\r\n"
     "=sumIf({\"a\", \"b\", \"a\"}, \"a\", {1, 2, 3}) returns 4\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "sumProduct",
     {"a1", "a2", "..."},
     "11",
     "sumProduct(a1, a2, ...)\r\n\r\n"
     "Multiplies the corresponding elements of the specified arrays and returns the sum of "
     "the products. All arrays must have the same dimensions. Positions holding an empty cell "
     "are ignored.\r\n\r\n"
     "=sumProduct({1, 2; 3, 4}, {5, 6; 7, 8}) returns 70\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "sumSq",
     {"x1", "x2", "..."},
     "11",
     "sumSq(x1, x2, ...)\r\n\r\n"
     "Returns the sum of the squares of the specified numbers, which can be numbers or arrays "
     "of numbers.\r\n\r\n"
     "=sumSq(3, 4) returns 25\r\n"},
    {HelpCode(kCategory, 2),
     "sumX2mY2",
     {"array_x", "array_y"},
     "11",
     "sumX2mY2(array_x, array_y)\r\n\r\n"
     "Returns the sum of the differences of the squares of corresponding elements, "
     "x^2 - y^2. Both arrays must have the same dimensions; empty cells count as 0.\r\n\r\n"
     "=sumX2mY2({2, 3}, {1, 1}) returns 11\r\n"},
    {HelpCode(kCategory, 2),
     "sumX2pY2",
     {"array_x", "array_y"},
     "11",
     "sumX2pY2(array_x, array_y)\r\n\r\n"
     "Returns the sum of the sums of the squares of corresponding elements, x^2 + y^2. Both "
     "arrays must have the same dimensions; empty cells count as 0.\r\n\r\n"
     "=sumX2pY2({1, 2}, {3, 4}) returns 30\r\n"},
    {HelpCode(kCategory, 2),
     "sumXmY2",
     {"array_x", "array_y"},
     "11",
     "sumXmY2(array_x, array_y)\r\n\r\n"
     "Returns the sum of the squares of the differences of corresponding elements, "
     "(x - y)^2. Both arrays must have the same dimensions; empty cells count as 0.\r\n\r\n"
     "=sumXmY2({1, 2}, {3, 5}) returns 13\r\n"},
    {HelpCode(kCategory, 1),
     "tan",
     {"x"},
     "0",
     "tan(x)\r\n\r\n"
     "Returns the tangent of x, an angle in radians.\r\n\r\n"
     "=tan(pi()/4) returns 1\r\n"
     "=tan(1) returns 1.5574077246549\r\n"},
    {HelpCode(kCategory, 1),
     "tanh",
     {"x"},
     "0",
     "tanh(x)\r\n\r\n"
     "Returns the hyperbolic tangent of x.\r\n\r\n"
     "=tanh(0.5) returns 0.46211715726001\r\n"},
    {HelpCode(kCategory, 1),
     "trunc",
     {"x", "[digits]"},
     "00",
     "trunc(x, [digits])\r\n\r\n"
     "Cuts x off after the specified number of decimal places, towards zero. 'digits' must lie "
     "between -14 and 14; if it's omitted, it's assumed to be 0.\r\n\r\n"
     "=trunc(8.9,) returns 8\r\n"
     "=trunc(-8.9,) returns -8\r\n"
     "=trunc(3.14159, 2) returns 3.14\r\n"},
};

}  // namespace

std::span<const HelpEntry> MathHelp() {
  return kEntries;
}

}  // namespace kelpdex
