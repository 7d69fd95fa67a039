// The category "matrix, over-/determined eq. systems", with mDeterm, mInverse and mMult of the
// mathematical one: handlers that read arrays and ranges into matrices, run the numerical core
// and write the result back as an array value.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void MtxT(FormulaEngine& e);
void MtxMlt(FormulaEngine& e);
void MtxDiag(FormulaEngine& e);
void MtxGauss(FormulaEngine& e);
void MtxChl(FormulaEngine& e);
void MtxFwSubst(FormulaEngine& e);
void MtxBkSubst(FormulaEngine& e);
void MDeterm(FormulaEngine& e);
void MInverse(FormulaEngine& e);

// matrix_functions_svd.cpp
void MtxSvd(FormulaEngine& e);
void MtxLsc(FormulaEngine& e);
void MtxLsw(FormulaEngine& e);

// matrix_functions_series.cpp
void MtxRand(FormulaEngine& e);
void MtxRand2(FormulaEngine& e);
void MtxSeries(FormulaEngine& e);

}  // namespace kelpdex::fn
