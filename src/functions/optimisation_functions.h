// The category "optimization & minimization", with polyReg, polyPoints and timeSeries of the
// statistical one.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

// optimisation_functions.cpp: the linear and quadratic programs.
void LProg(FormulaEngine& e);
void LProgInt(FormulaEngine& e);
void LProgBin(FormulaEngine& e);
void QProg(FormulaEngine& e);

// optimisation_functions_formula.cpp: the functions that re-evaluate a formula.
void Root(FormulaEngine& e);
void MinSimplex(FormulaEngine& e);
void MinMC(FormulaEngine& e);

// optimisation_functions_fits.cpp
void PolyReg(FormulaEngine& e);
void PolyPoints(FormulaEngine& e);
void TimeSeries(FormulaEngine& e);

}  // namespace kelpdex::fn
