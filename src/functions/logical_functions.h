// Handlers of the logical and informational families.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void And(FormulaEngine& e);
void Or(FormulaEngine& e);
void Not(FormulaEngine& e);
void True(FormulaEngine& e);
void False(FormulaEngine& e);
void If(FormulaEngine& e);

void CountBlank(FormulaEngine& e);
void ErrorType(FormulaEngine& e);
void IsBlank(FormulaEngine& e);
void IsErr(FormulaEngine& e);
void IsError(FormulaEngine& e);
void IsEven(FormulaEngine& e);
void IsOdd(FormulaEngine& e);
void IsLogical(FormulaEngine& e);
void IsNA(FormulaEngine& e);
void IsNonText(FormulaEngine& e);
void IsText(FormulaEngine& e);
void IsNumber(FormulaEngine& e);
void IsRef(FormulaEngine& e);
void N(FormulaEngine& e);
void NA(FormulaEngine& e);
void Type(FormulaEngine& e);

}  // namespace kelpdex::fn
