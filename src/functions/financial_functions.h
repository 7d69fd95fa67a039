// Handlers of the financial family. Rates are per period; `type` 0 puts payments at the end of
// each period, any other value at its beginning. Cash-flow lists walk their arguments as SUM
// does; every other parameter is a scalar and broadcasts over arrays.
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

// Time value of money.
void CumIPmt(FormulaEngine& e);
void CumPrinc(FormulaEngine& e);
void DollarDe(FormulaEngine& e);
void DollarFr(FormulaEngine& e);
void Effect(FormulaEngine& e);
void Fv(FormulaEngine& e);
void IPmt(FormulaEngine& e);
void Nominal(FormulaEngine& e);
void NPer(FormulaEngine& e);
void Pmt(FormulaEngine& e);
void PPmt(FormulaEngine& e);
void Pv(FormulaEngine& e);
void Rate(FormulaEngine& e);

// Depreciation.
void Db(FormulaEngine& e);
void Ddb(FormulaEngine& e);
void Sln(FormulaEngine& e);
void Syd(FormulaEngine& e);

// Cash flows and their solvers.
void FvSchedule(FormulaEngine& e);
void Irr(FormulaEngine& e);
void Mirr(FormulaEngine& e);
void Npv(FormulaEngine& e);
void XIrr(FormulaEngine& e);
void XNpv(FormulaEngine& e);

}  // namespace kelpdex::fn
