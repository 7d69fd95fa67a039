// Handlers of the mathematical family.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void Abs(FormulaEngine& e);
void Acos(FormulaEngine& e);
void Acosh(FormulaEngine& e);
void Asin(FormulaEngine& e);
void Asinh(FormulaEngine& e);
void Atan(FormulaEngine& e);
void Atanh(FormulaEngine& e);
void Cos(FormulaEngine& e);
void Cosh(FormulaEngine& e);
void Sin(FormulaEngine& e);
void Sinh(FormulaEngine& e);
void Tan(FormulaEngine& e);
void Tanh(FormulaEngine& e);
void Degrees(FormulaEngine& e);
void Radians(FormulaEngine& e);
void Exp(FormulaEngine& e);
void Ln(FormulaEngine& e);
void Log10(FormulaEngine& e);
void Sqrt(FormulaEngine& e);
void SqrtPi(FormulaEngine& e);
void Sign(FormulaEngine& e);
void Int(FormulaEngine& e);
void Fact(FormulaEngine& e);
void FactDouble(FormulaEngine& e);
void Even(FormulaEngine& e);
void Odd(FormulaEngine& e);

void Atan2(FormulaEngine& e);
void Power(FormulaEngine& e);
void Mod(FormulaEngine& e);
void Quotient(FormulaEngine& e);
void Log(FormulaEngine& e);
void Ceiling(FormulaEngine& e);
void Floor(FormulaEngine& e);
void MRound(FormulaEngine& e);
void Combin(FormulaEngine& e);
void Combin2(FormulaEngine& e);

void Round(FormulaEngine& e);
void RoundDown(FormulaEngine& e);
void RoundUp(FormulaEngine& e);
void Trunc(FormulaEngine& e);

void Pi(FormulaEngine& e);
void Sum(FormulaEngine& e);
void SumSq(FormulaEngine& e);
void Product(FormulaEngine& e);

}  // namespace kelpdex::fn
