// The category "lookup & reference": searches of a row or column, the shape of arrays, index and
// transpose, vLookUp2 between tables, and the COM call-outs rtd and udf.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void Columns(FormulaEngine& e);
void Rows(FormulaEngine& e);
void HLookUp(FormulaEngine& e);
void VLookUp(FormulaEngine& e);
void LookUp(FormulaEngine& e);
void Match(FormulaEngine& e);
void Index(FormulaEngine& e);
void Transpose(FormulaEngine& e);
void VLookUp2(FormulaEngine& e);
void Rtd(FormulaEngine& e);
void Udf(FormulaEngine& e);

}  // namespace kelpdex::fn
