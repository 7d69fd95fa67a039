// Help entries of the category "statistical". The texts stand as the picker has always shown
// them, slips included: two syntax lines name max for maxA and median, one spells standarize, and
// trimMean is entered as "treamMean".
#include "functions/help_table.h"

namespace kelpdex {

namespace {

constexpr uint8_t kCategory = help::kStatistical;

const HelpEntry kEntries[] = {
    {HelpCode(kCategory, kVariableArguments),
     "aveDev",
     {"x1", "x2", "..."},
     "11",
     "aveDev(x1, x2, ...)\r\n\r\n"
     "Returns the average of the absolute deviations of the specified numbers from their "
     "mean.\r\n\r\n"
     "=aveDev(4, 5, 6, 3, 5, 4) returns 0.83333333333333\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "average",
     {"x1", "x2", "..."},
     "11",
     "average(x1, x2, ...)\r\n\r\n"
     "Returns the arithmetic mean of the specified arguments.\r\n\r\n"
     "=average(4, 5, 6, 3, 5, 4) returns 4.5\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "averageA",
     {"x1", "x2", "..."},
     "11",
     "averageA(x1, x2, ...)\r\n\r\n"
     "Returns the arithmetic mean of the specified arguments.\r\n\r\n"
     "=averageA(4, 5, 6, 3, 5, 4) returns 4.5\r\n"},
    {HelpCode(kCategory, 4),
     "binomDist",
     {"s", "t", "p", "c"},
     "0000",
     "=binomDist(s, t, p, c)\r\n\r\n"
     "Returns the binomial distribution probability. The 's' argument represents the number of "
     "successes, the 't' argument is the number of trials and the 'p' argument is the probability "
     "of success on each trial. If the 'c' argument is 1 (true), it returns the cumulative "
     "distribution function. Otherwise, the probability mass function is returned.\r\n\r\n"
     "=binomDist(6,10,0.5,FALSE) returns 0.205078125\r\n"},
    {HelpCode(kCategory, 2),
     "chiDist",
     {"x", "f_degrees"},
     "00",
     "chiDist(x, f_degrees)\r\n\r\n"
     "Returns the one-tailed probability of the chi-squared distribution. The returned value is "
     "calculated as P(X < x). The 'f_degrees' argument specifies the number of degrees of "
     "freedom.\r\n\r\n"
     "=chiDist(18.307, 10) returns 0.9499994109077\r\n"},
    {HelpCode(kCategory, 2),
     "chiInv",
     {"probability", "f_degrees"},
     "00",
     "chiInv(probability, f_degrees)\r\n\r\n"
     "Returns the inverse of the chiDist function for a given probability.\r\n\r\n"
     "=chiInv(0.9499994109077, 10) returns 18.307\r\n"},
    {HelpCode(kCategory, 2),
     "chiTest",
     {"observed", "expected"},
     "11",
     "chiTest(observed, expected)\r\n\r\n"
     "Performs the test for independence of two discrete variables x (x[1], ..., x[k]) and y "
     "(y[1], ..., y[l]). The 'observed' argument specifies the k x l contingence table with "
     "elements representing the observed numbers of experiments in which the x[i] & y[j] pairs "
     "were obtained. The returned probability is calculated as P(X < c^2) where c^2 is the "
     "obtained chi-squared statistic. The 'expected' argument specifies a respective table with "
     "the expected numbers of subsequent experiments.\r\n\r\n"
     "=chiTest({58, 35; 11, 25; 10, 23}, {45.35, 47.65; 17.56, 18.44; 16.09, 16.91}) returns "
     "0.99969180798302\r\n"},
    {HelpCode(kCategory, 2),
     "chiTest2",
     {"observed", "expected"},
     "11",
     "chiTest2(observed, expected)\r\n\r\n"
     "Returns the chi2-statistic fot two discrete variables x (x[1], ..., x[k]) and y (y[1], ..., "
     "y[l]). The 'observed' argument specifies the k x l contingence table with elements "
     "representing the observed numbers of experiments in which the x[i] & y[j] pairs were "
     "obtained. The returned value can be compared against the critical chi2 values obtained with "
     "the 'chi2Inv' function. The 'expected' argument specifies a respective table with the "
     "expected numbers of subsequent experiments.\r\n\r\n"
     "=chiTest2({58, 35; 11, 25; 10, 23}, {45.35, 47.65; 17.56, 18.44; 16.09, 16.91}) returns "
     "16.1695750747969\r\n"},
    {HelpCode(kCategory, 3),
     "confidence",
     {"alpha", "deviation", "size"},
     "000",
     "confidence(alpha, deviation, size)\r\n\r\n"
     "Returns the confidence interval for a population mean. The 'alpha' parameter specifies the "
     "significance level (which equals 1 - 'confidence level'). The 'deviation' argument specifies "
     "the (known) population standard deviation. The 'size' argument specifies the sample "
     "size.\r\n\r\n"
     "=confidence(0.05, 2.5, 50) returns 0.6929519802241\r\n"},
    {HelpCode(kCategory, 2),
     "correl",
     {"array1", "array2"},
     "11",
     "correl(array1, array2)\r\n\r\n"
     "Returns the correlation coefficient of 'array1' and 'array2'. Both arguments can be arrays "
     "or cell ranges having the same dimensions.\r\n\r\n"
     "=correl({3, 2, 4, 5, 6}, {9, 7, 12, 15, 17}) returns 0.99705448550158\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "count",
     {"x1", "x2", "..."},
     "11",
     "count(x1, x2, ...)\r\n\r\n"
     "Counts the number of cells containing numbers. The 'x' arguments can be any data types "
     "including arrays and references.\r\n\r\n"
     "=count({1, 3, \"abc\"}, {\"4.5\", 5.6}) returns 4\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "countA",
     {"x1", "x2", "..."},
     "11",
     "countA(x1, x2, ...)\r\n\r\n"
     "Counts the number of cells that are not empty. The 'x' arguments can be any data types "
     "including arrays and references.\r\n\r\n"
     "=count({1, 3, \"abc\"}, {\"4.5\", 5.6,,}) returns 5\r\n"},
    {HelpCode(kCategory, 2),
     "covar",
     {"array1", "array2"},
     "11",
     "covar(array1, array2)\r\n\r\n"
     "Returns covariance of 'array1' and 'array2'. Both arguments can be arrays or cell ranges "
     "having the same dimensions.\r\n\r\n"
     "=covar({3, 2, 4, 5, 6}, {9, 7, 12, 15, 17}) returns 5.2\r\n"},
    {HelpCode(kCategory, 3),
     "critBinom",
     {"trials", "probability", "alpha"},
     "000",
     "critBinom(trials, probability, alpha)\r\n\r\n"
     "Returns the smallest value (the number of successes) for which the cumulative binomial "
     "distribution function is greater or equal to 'alpha' for a given number of trials and the "
     "probability of success in each trial.\r\n\r\n"
     "=critBinom(6,0.5,0.75) returns 4\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "devSq",
     {"x1", "x2", "..."},
     "11",
     "devSq(x1, x2, ...)\r\n\r\n"
     "Returns the sum of squares of deviations of the specified numbers from their mean. The 'x' "
     "arguments can be any numbers, arrays or references.\r\n\r\n"
     "=devSq(4, 5, 8, 7, 11, 4, 3) returns 48\r\n"},
    {HelpCode(kCategory, 3),
     "exponDist",
     {"x", "lambda", "cumulative"},
     "000",
     "exponDist(x, lambda, cumulative)\r\n\r\n"
     "Returns the probability of the exponential distribution. The returned value is calculated as "
     "P(X < x). The 'lambda' argument specifies distribution parameter. If the 'cumulative' "
     "argument is 1/TRUE, it returns the cumulative distribution function. Otherwise the "
     "probability density function is returned.\r\n\r\n"
     "=exponDist(0.2, 10, 1) returns 0.86466471676339\r\n"},
    {HelpCode(kCategory, 3),
     "fDist",
     {"x", "f_degrees1", "f_degrees2"},
     "000",
     "fDist(x, f_degrees1, f_degrees2)\r\n\r\n"
     "Returns the F probability distribution function. The 'f_degrees1' and 'f_degrees2' arguments "
     "specifies the numbers of degrees of freedom used in the F expression respectively as the "
     "numerator and denominator values. The returned value is calculated as P(F < x).\r\n\r\n"
     "=fDist(15.20675, 6, 4) returns 0.99729988597273\r\n"},
    {HelpCode(kCategory, 3),
     "fInv",
     {"x", "f_degrees1", "f_degrees2"},
     "000",
     "fInv(x, f_degrees1, f_degrees2)\r\n\r\n"
     "Returns the inverse of the 'fDist' probability distribution function. The 'f_degrees1' and "
     "'f_degrees2' arguments specifies the numbers of degrees of freedom used in the F expression "
     "respectively as the numerator and denominator values.\r\n\r\n"
     "=fInv(0.99729988597273, 6, 4) returns 15.206750002102\r\n"},
    {HelpCode(kCategory, 1),
     "fisher",
     {"x"},
     "0",
     "=fisher(x)\r\n\r\n"
     "Returns the Fisher transformation for a given x. The returned value is calculated as z = "
     "0.5*ln((1 - x)/(1 + x)).\r\n\r\n"
     "=fisher(0.75) returns 0.97295507452766\r\n"},
    {HelpCode(kCategory, 1),
     "fisherInv",
     {"y"},
     "0",
     "fisherInv(y)\r\n\r\n"
     "Returns the inverse of the 'fisher' function. The returned value is calculated as x = "
     "exp(2*y) - 1)/(exp(2y) + 1).\r\n\r\n"
     "=fisherInv(0.97295507452766) returns 0.75\r\n"},
    {HelpCode(kCategory, 3),
     "forecast",
     {"x", "array_y", "array_x"},
     "011",
     "forecast(x, array_y, array_x)\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and calculates the future "
     "value using the existing 'x' value. If the procedure is not convergent, the function returns "
     "#NUM!.\r\n\r\n"
     "=forecast(30, {6, 7, 9, 15, 21}, {20, 28, 31, 38, 40}) returns 10.6072530864198\r\n"},
    {HelpCode(kCategory, 2),
     "frequency",
     {"data_array", "bins_array"},
     "11",
     "frequency(data_array, bins_array)\r\n\r\n"
     "Counts how often values in 'data_array' occur in the ranges specified by 'bins_array'. The "
     "returned value is a vector (a one-column array) of numbers. If 'bins_array' has 'n' "
     "elements, the returned array has n + 1 elements. Each 'bins_array' element define a range of "
     "values smaller or equal to that element. The last range includes all values greater than the "
     "last 'bins_array' element.\r\n\r\n"
     "=frequency({79, 85, 78, 85, 83, 81, 95, 88, 97}, {70, 79, 89}) returns {0; 2; 5; 2}\r\n"},
    {HelpCode(kCategory, 2),
     "fTest",
     {"array1", "array2"},
     "11",
     "fTest(array1, array2)\r\n\r\n"
     "Performs the F-test and return the one-tail probability that variances in the 'array1' and "
     "'array2' data sets are significantly different.\r\n\r\n"
     "=fTest({6, 7, 9, 15, 21}, {20, 28, 31, 38, 40}) returns 0.67584107664634\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "geoMean",
     {"x1", "x2", "..."},
     "11",
     "geoMean(x1, x2, ...)\r\n\r\n"
     "Returns the geometric mean for the specified values. The 'x' arguments can be numbers, array "
     "of numbers or references.\r\n\r\n"
     "=geoMean(4, 5, 8, 7, 11, 4, 3) returns 5.47698696965696\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "harMean",
     {"x1", "x2", "..."},
     "11",
     "harMean(x1, x2, ...)\r\n\r\n"
     "Returns the harmonic for the specified values. The 'x' arguments can be numbers, array of "
     "numbers or references.\r\n\r\n"
     "=harMean(4, 5, 8, 7, 11, 4, 3) returns 5.02837596206173\r\n"},
    {HelpCode(kCategory, 4),
     "hypGeomDist",
     {"sample_s", "sample_size", "population_s", "population_size"},
     "0000",
     "hypGeomDist(sample_s, sample_size, population_s, population_size)\r\n\r\n"
     "Returns the hypergeometric distribution function: the probability of 'sample_s' successes in "
     "an 'sample_size'-element sample with the known 'population_s' number of successes in the "
     "'population_size'-element population.\r\n\r\n"
     "=hypGeomDist(1, 4, 8, 20) returns 0.36326109391125\r\n"},
    {HelpCode(kCategory, 2),
     "intercept",
     {"array_y", "array_x"},
     "11",
     "intercept(array_y, array_x)\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and returns the point of "
     "intersection of the y-axis. The 'array_y' and 'array_x' arrays must have the same "
     "dimensions. If the procedure is not convergent, the function returns #NUM!.\r\n\r\n"
     "=intercept({2, 3, 9, 1, 8}, {6, 5, 11, 7, 5}) returns 0.04838709677419\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "kurt",
     {"x1", "x2", "..."},
     "11",
     "kurt(x1, x2, ...)\r\n\r\n"
     "Returns the kurtosis of the specified numbers. The 'x' arguments can be any numbers, arrays "
     "or references.\r\n\r\n"
     "=kurt(3, 4, 5, 2, 3, 4, 5, 6, 4, 7) returns -0.1517993720842\r\n"},
    {HelpCode(kCategory, 2),
     "large",
     {"array", "k"},
     "10",
     "large(array, k)\r\n\r\n"
     "Returns the k-th largest value in the specified array.\r\n\r\n"
     "=large({3, 4, 5, 2, 3, 4, 5, 6, 4, 7}, 3) returns 5\r\n"},
    {HelpCode(kCategory, 1),
     "linEst",
     {"array_y", "[array_x]", "[const_b]"},
     "110",
     "linEst(array_y, [array_x], [const_b])\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and returns the a two-element "
     "vector containing the 'a' and 'b' coefficients of the y=a*x + b line. If the 'const_b' "
     "argument is 0 (false), the 'b' parameter is assumed to be 0. If 'const_b' is omitted, it's "
     "assumed to be 1. If the 'array_x' argument is omitted, it's assumed to be an array "
     "containing integers from 1 to the number of elements in 'array_y'. The 'array_y' and "
     "'array_x' arrays must have the same dimensions. If the procedure is not convergent, the "
     "function returns the #NUM!\r\n\r\n"
     "=linEst({2, 3, 9, 1, 8}, {6, 5, 11, 7, 5},) returns {0.04838709677419; "
     "0.66935483870968}\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "max",
     {"x1", "x2", "..."},
     "11",
     "max(x1, x2, ...)\r\n\r\n"
     "Returns the largest value. The 'x' arguments can be numbers, array of numbers or "
     "references.\r\n\r\n"
     "=max(4, 5, 8, 7, 11, 4, 3) returns 11\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "maxA",
     {"x1", "x2", "..."},
     "11",
     "max(x1, x2, ...)\r\n\r\n"
     "Returns the largest value. The 'x' arguments can be numbers, array of numbers or "
     "references.\r\n\r\n"
     "=max(4, 5, 8, 7, 11, 4, 3) returns 11\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "median",
     {"x1", "x2", "..."},
     "11",
     "max(x1, x2, ...)\r\n\r\n"
     "Returns the median of the specified numbers. The median is such a number that half the "
     "numbers are greater and half the numbers are smaller than the median. The 'x' arguments can "
     "be numbers, array of numbers or references.\r\n\r\n"
     "=median(1, 2, 3, 4, 5, 6) returns 3.5\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "min",
     {"x1", "x2", "..."},
     "11",
     "min(x1, x2, ...)\r\n\r\n"
     "Returns the smallest value. The 'x' arguments can be numbers, array of numbers or "
     "references.\r\n\r\n"
     "=min(4, 5, 8, 7, 11, 4, 3) returns 3\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "minA",
     {"x1", "x2", "..."},
     "11",
     "minA(x1, x2, ...)\r\n\r\n"
     "Returns the smallest value. The 'x' arguments can be numbers, array of numbers or "
     "references.\r\n\r\n"
     "=minA(4, 5, 8, 7, 11, 4, 3) returns 3\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "mode",
     {"x1", "x2", "..."},
     "11",
     "mode(x1, x2, ...)\r\n\r\n"
     "Returns the most frequently occurring number in the specified numbers. The 'x' arguments can "
     "be numbers, array of numbers or references.\r\n\r\n"
     "=mode({5.6, 4, 4, 3, 2, 4}) returns 4\r\n"},
    {HelpCode(kCategory, 4),
     "normDist",
     {"x", "mean", "deviation", "cumulative"},
     "0000",
     "normDist(x, mean, deviation, cumulative)\r\n\r\n"
     "Returns the normal distribution for a given mean and standard deviation. If the 'cumulative' "
     "argument is 1 (true), the 'normDist' function returns the cumulative distribution function. "
     "Otherwise, the probability mass function is returned.\r\n\r\n"
     "=normDist(42, 40, 1.5, true) returns 0.90878877482188\r\n"},
    {HelpCode(kCategory, 1),
     "normsDist",
     {"x"},
     "0",
     "normsDist(x)\r\n\r\n"
     "Returns the standard normal cumulative distribution (where the mean is 0 and the standard "
     "deviation is 1).\r\n\r\n"
     "=normsDist(1.33333333432674) returns 0.90878877498481\r\n"},
    {HelpCode(kCategory, 3),
     "normInv",
     {"probability", "mean", "deviation"},
     "000",
     "normInv(probability, mean, deviation)\r\n\r\n"
     "Returns the inverse of the normal distribution for the given mean and standard "
     "deviation.\r\n\r\n"
     "=normInv(0.90878877482188, 40, 1.5) returns 42.0000000014901\r\n"},
    {HelpCode(kCategory, 1),
     "normsInv",
     {"probability"},
     "0",
     "normsInv(probability)\r\n\r\n"
     "Returns the inverse of the standard normal cumulative distribution (where the mean is 0 and "
     "the standard deviation is 1).\r\n\r\n"
     "=normsInv(0.90878877482188) returns 1.33333333432674\r\n"},
    {HelpCode(kCategory, 2),
     "pearson",
     {"array1", "array2"},
     "11",
     "pearson(array1, array2)\r\n\r\n"
     "Returns the Pearson correlation coefficient for numbers in 'array1' and 'array2'. Both "
     "arrays must have the same dimensions.\r\n\r\n"
     "=pearson({9,7,5,3,1},{10,6,1,5,3}) returns 0.69937860618024\r\n"},
    {HelpCode(kCategory, 2),
     "percentile",
     {"array", "k"},
     "10",
     "percentile(array, k)\r\n\r\n"
     "Returns the k-th percentile for the specified 'n' numbers. The 'k' argument must be in the "
     "range <0, 1>. If it's not a multiple of 1/(n - 1), the returned value is "
     "interpolated.\r\n\r\n"
     "=percentile({1, 2, 3, 4}, 0.3) returns 1.9\r\n"},
    {HelpCode(kCategory, 2),
     "percentRank",
     {"array", "x", "[significance]"},
     "100",
     "percentRank(array, x, [significance])\r\n\r\n"
     "Returns the rank of the value 'x' in the specified array of numbers. The returned percentage "
     "value represents the relative standing of x within 'array'. The 'significance' argument "
     "specifies the number of decimal places in the result. If it's omitted, it's assumed to be 3. "
     "If 'array' doesn't include 'x', the function returns an interpolated value.\r\n\r\n"
     "=percentRank({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 4,) returns 0.333\r\n"},
    {HelpCode(kCategory, 2),
     "permut",
     {"n", "k"},
     "00",
     "permut(n, k)\r\n\r\n"
     "Returns the number of k-element permutations of the n-element set.\r\n\r\n"
     "=permut(100, 3) returns 970200\r\n"},
    {HelpCode(kCategory, 3),
     "poisson",
     {"x", "mean", "cumulative"},
     "000",
     "poisson(x, mean, cumulative)\r\n\r\n"
     "Returns the Poisson distribution for a given number of events 'x' where 'mean' is the "
     "distribution parameter. If the 'cumulative' argument is 1 (true), the 'poisson' function "
     "returns the cumulative distribution function. Otherwise, the probability mass function is "
     "returned.\r\n\r\n"
     "=poisson(2, 5, false) returns 0.08422433748857\r\n"},
    {HelpCode(kCategory, 3),
     "prob",
     {"array_x", "array_p", "lower_limit", "[upper_limit]"},
     "1100",
     "prob(array_x, array_p, lower_limit, [upper_limit])\r\n\r\n"
     "Returns the cumulative probability for values in the range <lower_limit, upper_limit> based "
     "on the intervals specified by the 'array_x' and the corresponding probabilities 'array_b'. "
     "Each 'array_b' element must be in the range <0, 1> and their sum must equal 1. If the "
     "'upper_limit' argument is omitted, the function returns the probability for the "
     "'lower_limit' value.\r\n\r\n"
     "=prob({0, 1, 2, 3}, {0.2, 0.3, 0.1, 0.4}, 1, 3) returns 0.8\r\n"},
    {HelpCode(kCategory, 2),
     "quartile",
     {"array", "n"},
     "10",
     "quartile(array, n)\r\n\r\n"
     "Returns the quartile of the data set. The 'n' argument specifies which value should be "
     "returned: 0 minimum value 1 1st quartile 2 2nd quartile 3 3rd quartile 4 maximum "
     "value\r\n\r\n"
     "=quartile({1, 2, 4, 7, 8, 9, 10, 12}, 1) returns 3.5\r\n"},
    {HelpCode(kCategory, 2),
     "rank",
     {"x", "array", "[order]"},
     "010",
     "rank(x, array, [order])\r\n\r\n"
     "Returns the rank of a given number in the data set specified by the 'array' argument. The "
     "rank of a number is its position obtained after sorting the data set. Equal numbers have the "
     "same rank. If the 'order' argument is 1/TRUE, the returned rank value corresponds to the "
     "ascending order. Otherwise, the descending order is used. If it's omitted, it's assumed to "
     "be 0.\r\n\r\n"
     "=rank(3.5, {7, 3.5, 3.5, 1, 2}, 1) returns 3\r\n"},
    {HelpCode(kCategory, 2),
     "rsq",
     {"array1", "array2"},
     "11",
     "rsq(array1, array2)\r\n\r\n"
     "Returns the square of the Pearson correlation coefficient for numbers in 'array1' and "
     "'array2'. Both arrays must have the same dimensions.\r\n\r\n"
     "=rsq({9, 7, 5, 3, 1}, {10, 6, 1, 5, 3}) returns 0.48913043478261\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "skew",
     {"x1", "x2", "..."},
     "11",
     "skew(x1, x2, ...)\r\n\r\n"
     "Returns the skewness of (the distribution consisting of) the specified numbers. The 'x' "
     "arguments can be any numbers, arrays or references.\r\n\r\n"
     "=skew(3, 4, 5, 2, 3, 4, 5, 6, 4, 7) returns 0.3595430714068\r\n"},
    {HelpCode(kCategory, 2),
     "slope",
     {"array_y", "array_x"},
     "11",
     "slope(array_y, array_x)\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and returns the slope of that "
     "line. The 'array_y' and 'array_x' arrays must have the same dimensions.\r\n\r\n"
     "=slope({2, 3, 9, 1, 8}, {6, 5, 11, 7, 5}) returns 0.66935483870968\r\n"},
    {HelpCode(kCategory, 2),
     "small",
     {"array", "k"},
     "10",
     "small(array, k)\r\n\r\n"
     "Returns the k-th smallest value in the specified array.\r\n\r\n"
     "=small({3, 4, 5, 2, 3, 4, 5, 6, 4, 7}, 3) returns 3\r\n"},
    {HelpCode(kCategory, 3),
     "standardize",
     {"x", "mean", "deviation"},
     "000",
     "standarize(x, mean, deviation)\r\n\r\n"
     "Returns a normalized value 'z' for the standard normal distribution such that normDist(x, "
     "mean, deviation) = normsDist(z).\r\n\r\n"
     "=standardize(42, 40, 1.5) returns 1.3(3)\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "stdev",
     {"x1", "x2", "..."},
     "11",
     "stdev(x1, x2, ...)\r\n\r\n"
     "Returns the standard deviation based on a given sample. The 'x' arguments can be any "
     "numbers, arrays or references.\r\n\r\n"
     "=stdev(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "27.4639157198435\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "stdevA",
     {"x1", "x2", "..."},
     "11",
     "stdevA(x1, x2, ...)\r\n\r\n"
     "Returns the standard deviation based on a given sample. The 'x' arguments can be any "
     "numbers, arrays or references.\r\n\r\n"
     "=stdevA(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "27.4639157198435\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "stdevP",
     {"x1", "x2", "..."},
     "11",
     "stdevP(x1, x2, ...)\r\n\r\n"
     "Returns the standard deviation based on the entire population. The 'x' arguments can be any "
     "numbers, arrays or references.\r\n\r\n"
     "=stdevP(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "26.0545581424825\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "stdevPA",
     {"x1", "x2", "..."},
     "11",
     "stdevPA(x1, x2, ...)\r\n\r\n"
     "Returns the standard deviation based on the entire population. The 'x' arguments can be any "
     "numbers, arrays or references.\r\n\r\n"
     "=stdevPA(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "26.0545581424825\r\n"},
    {HelpCode(kCategory, 2),
     "stEyx",
     {"array_y", "array_x"},
     "11",
     "stEyx(array_y, array_x)\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and returns the standard "
     "error of the predicted y-values lying on that line.\r\n\r\n"
     "=stEyx({2, 3, 9, 1, 8}, {6, 5, 11, 7, 5}) returns 3.74560674557182\r\n"},
    {HelpCode(kCategory, 2),
     "tDist",
     {"x", "f_degrees"},
     "00",
     "tDist(x, f_degrees)\r\n\r\n"
     "Returns the Student's t-distribution function. The 'x' argument is the numeric value for "
     "which the distribution is calculated. The 'f_degrees' argument is the number of degrees of "
     "freedom. The returned value is calculated as P(X < x).\r\n\r\n"
     "=tDist(1.96, 60) returns 0.97267753526449\r\n"},
    {HelpCode(kCategory, 2),
     "tInv",
     {"p", "f_degrees"},
     "00",
     "tInv(p, f_degrees)\r\n\r\n"
     "Returns the inverse of the Student's (one-tailed) t-distribution function for a given "
     "probability value.\r\n\r\n"
     "=tInv(0.97267753526449, 60) returns 1.95999983312891\r\n"},
    {HelpCode(kCategory, 1),
     "trend",
     {"array_y", "[array_x]", "[array_n]", "[const_b]"},
     "1110",
     "trend(array_y, [array_x], [array_n], [const_b])\r\n\r\n"
     "Finds a best-fit regression line for the known x- and y-values and returns a vector (a "
     "one-column array) of predicted y-values for the new x-values specified in the 'array_n' "
     "array. If the 'const_b' argument is 0/FALSE, the 'b' parameter is assumed to be 0. The "
     "default value of 'const_b' is 1. If the 'array_x' argument is omitted, it's assumed to be an "
     "array containing integers from 1 to the number of elements in 'array_y'. If the 'array_n' "
     "argument is omitted, it's assumed to be the same as 'array_x'. The 'array_y' and 'array_x' "
     "arrays must have the same dimensions. If the procedure is not convergent, the function "
     "returns #NUM!.\r\n\r\n"
     "=trend({2, 3, 9, 1, 8}, {6, 5, 11, 7, 5}, {12, 13, 14}, 1) returns {8.08064516129032; 8.75; "
     "9.41935483970968 }\r\n"},
    {HelpCode(kCategory, 2),
     "treamMean",
     {"array", "percent"},
     "10",
     "treamMean(array, percent)\r\n\r\n"
     "Returns the mean of the specified data set after excluding a given percentage of numbers "
     "from the top and bottom of that data set. The 'percent' argument must be in the range <0, "
     "1>. It's rounded to the nearest multiple of 2 so that the data set elements can be exclude "
     "symmetrically.\r\n\r\n"
     "=trimMean({4, 5, 6, 7, 2, 3, 4, 5, 1, 2, 3}, 0.2) returns 3.77777777777778\r\n"},
    {HelpCode(kCategory, 3),
     "tTest",
     {"array1", "array2", "tails"},
     "110",
     "tTest(array1, array2, tails)\r\n\r\n"
     "Performs the T-test and returns the probability that the means in the 'array1' and 'array2' "
     "data sets are significantly different. The 'tails' argument specifies the number of "
     "distribution tails: 1 or 2.\r\n\r\n"
     "=tTest({3, 4, 5, 8, 9, 1, 2, 4, 5}, {6, 19, 3, 2, 14, 4, 5, 17, 1}, 2) returns "
     "0.1919958849411\r\n"},
    {HelpCode(kCategory, 2),
     "tTest2",
     {"array1", "array2"},
     "11",
     "tTest2(array1, array2)\r\n\r\n"
     "Returns the t-statistic for the 'array1' and 'array2' data sets. The returned value can be "
     "compared against critical t-statistic values obtained with the 'tInv' function.\r\n\r\n"
     "=tTest2({3, 4, 5, 8, 9, 1, 2, 4, 5}, {6, 19, 3, 2, 14, 4, 5, 17, 1}) returns "
     "-1.3622298275595\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "var",
     {"x1", "x2", "..."},
     "11",
     "var(x1, x2, ...)\r\n\r\n"
     "Returns variance based on a given sample. The 'x' arguments can be any numbers, arrays or "
     "references.\r\n\r\n"
     "=var(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "754.266666666667\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "varA",
     {"x1", "x2", "..."},
     "11",
     "varA(x1, x2, ...)\r\n\r\n"
     "Returns variance based on a given sample. The 'x' arguments can be any numbers, arrays or "
     "references.\r\n\r\n"
     "=varA(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns "
     "754.266666666667\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "varP",
     {"x1", "x2", "..."},
     "11",
     "varP(x1, x2, ...)\r\n\r\n"
     "Returns variance based on the entire population. The 'x' arguments can be any numbers, "
     "arrays or references.\r\n\r\n"
     "=varP(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns 678.84\r\n"},
    {HelpCode(kCategory, kVariableArguments),
     "varPA",
     {"x1", "x2", "..."},
     "11",
     "varPA(x1, x2, ...)\r\n\r\n"
     "Returns variance based on the entire population. The 'x' arguments can be any numbers, "
     "arrays or references.\r\n\r\n"
     "=varPA(1345, 1301, 1368, 1322, 1310, 1370, 1318, 1350, 1303, 1299) returns 678.84\r\n"},
    {HelpCode(kCategory, 4),
     "weibull",
     {"x", "alpha", "beta", "cumulative"},
     "0000",
     "weibull(x, alpha, beta, cumulative)\r\n\r\n"
     "Returns the Weibull distribution for a geiven 'x'. The 'alpha' and 'beta' arguments are the "
     "distribution parameters. If the 'cumulative' argument is 1 (true), 'weibull' returns the "
     "cumulative distribution function. Otherwise, the probability mass function is "
     "returned.\r\n\r\n"
     "=weibull(105, 20, 100, true) returns 0.92958139006928\r\n"},
    {HelpCode(kCategory, 2),
     "zTest",
     {"array", "x", "[deviation]"},
     "100",
     "zTest(array, x, [deviation])\r\n\r\n"
     "Performs Z-test and returns the two-tailed probability that 'x' doesn't belong to the "
     "population represented by the n-element 'array' sample. The returned value is calculated as "
     "1 - normsDist((m - x)/deviation/sqrt(n)) where 'm' is the sample mean. The 'deviation' "
     "argument is the known population standard deviation. If it's omitted, the sample deviation "
     "is used.\r\n\r\n"
     "=zTest({3, 6, 7, 8, 6, 5, 4, 2, 1, 9}, 4,) returns 0.09057420261958\r\n"},
    {HelpCode(kCategory, 2),
     "zTest2",
     {"array", "x", "[deviation]"},
     "100",
     "zTest2(array, x, [deviation])\r\n\r\n"
     "Returns the z-statistic for a given variable and a given data set. The population is "
     "represented by the n-element 'array' sample. The returned value is calculated as z = (m - "
     "x)/deviation/sqrt(n) where 'm' is the sample mean. The 'deviation' argument is the known "
     "population standard deviation. If it's omitted, the sample deviation is used.\r\n\r\n"
     "=zTest2({3, 6, 7, 8, 6, 5, 4, 2, 1, 9}, 4,) returns 1.33722748248063\r\n"},
};

}  // namespace

std::span<const HelpEntry> StatisticalHelp() {
  return kEntries;
}

}  // namespace kelpdex
