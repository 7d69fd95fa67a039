// Handlers of the mathematical aggregates over several arrays, the criteria functions and the
// random numbers.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void Gcd(FormulaEngine& e);
void Lcm(FormulaEngine& e);
void Multinomial(FormulaEngine& e);
void SumProduct(FormulaEngine& e);
void SumX2mY2(FormulaEngine& e);
void SumX2pY2(FormulaEngine& e);
void SumXmY2(FormulaEngine& e);
void SeriesSum(FormulaEngine& e);
void CountIf(FormulaEngine& e);
void SumIf(FormulaEngine& e);
void Rand(FormulaEngine& e);
void RandBetween(FormulaEngine& e);

}  // namespace kelpdex::fn
