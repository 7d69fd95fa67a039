// Handlers of the statistical family: aggregates, distributions and their inverses, two-array
// functions and tests, regressions, ranks and percentiles.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

// Aggregates (statistical_functions_aggregates.cpp).
void AveDev(FormulaEngine& e);
void Average(FormulaEngine& e);
void AverageA(FormulaEngine& e);
void Count(FormulaEngine& e);
void CountA(FormulaEngine& e);
void DevSq(FormulaEngine& e);
void GeoMean(FormulaEngine& e);
void HarMean(FormulaEngine& e);
void Kurt(FormulaEngine& e);
void Max(FormulaEngine& e);
void MaxA(FormulaEngine& e);
void Min(FormulaEngine& e);
void MinA(FormulaEngine& e);
void Skew(FormulaEngine& e);
void StDev(FormulaEngine& e);
void StDevA(FormulaEngine& e);
void StDevP(FormulaEngine& e);
void StDevPA(FormulaEngine& e);
void Var(FormulaEngine& e);
void VarA(FormulaEngine& e);
void VarP(FormulaEngine& e);
void VarPA(FormulaEngine& e);

// Distributions and their inverses (statistical_functions_distributions.cpp).
void BinomDist(FormulaEngine& e);
void ChiDist(FormulaEngine& e);
void ChiInv(FormulaEngine& e);
void Confidence(FormulaEngine& e);
void CritBinom(FormulaEngine& e);
void ExponDist(FormulaEngine& e);
void FDist(FormulaEngine& e);
void FInv(FormulaEngine& e);
void Fisher(FormulaEngine& e);
void FisherInv(FormulaEngine& e);
void HypGeomDist(FormulaEngine& e);
void NormDist(FormulaEngine& e);
void NormInv(FormulaEngine& e);
void NormSDist(FormulaEngine& e);
void NormSInv(FormulaEngine& e);
void Permut(FormulaEngine& e);
void Poisson(FormulaEngine& e);
void Standardize(FormulaEngine& e);
void TDist(FormulaEngine& e);
void TInv(FormulaEngine& e);
void Weibull(FormulaEngine& e);

// Two arrays, tests and regressions (statistical_functions_regressions.cpp).
void ChiTest(FormulaEngine& e);
void ChiTest2(FormulaEngine& e);
void Correl(FormulaEngine& e);
void Covar(FormulaEngine& e);
void Forecast(FormulaEngine& e);
void FTest(FormulaEngine& e);
void Intercept(FormulaEngine& e);
void LinEst(FormulaEngine& e);
void Pearson(FormulaEngine& e);
void Prob(FormulaEngine& e);
void Rsq(FormulaEngine& e);
void Slope(FormulaEngine& e);
void StEyx(FormulaEngine& e);
void Trend(FormulaEngine& e);
void TTest(FormulaEngine& e);
void TTest2(FormulaEngine& e);
void ZTest(FormulaEngine& e);
void ZTest2(FormulaEngine& e);

// Ranks, percentiles and counts by value (statistical_functions_ranks.cpp).
void Frequency(FormulaEngine& e);
void Large(FormulaEngine& e);
void Median(FormulaEngine& e);
void Mode(FormulaEngine& e);
void Percentile(FormulaEngine& e);
void PercentRank(FormulaEngine& e);
void Quartile(FormulaEngine& e);
void Rank(FormulaEngine& e);
void Small(FormulaEngine& e);
void TrimMean(FormulaEngine& e);

}  // namespace kelpdex::fn
