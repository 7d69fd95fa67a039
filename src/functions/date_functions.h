// Handlers of the date/time family. There are no date serial numbers: dates, times and periods are
// generic strings ("2006-01-31T13:10:55", "P1Y2M3D"), and the handlers read and write those, or
// whole numbers. A string that does not parse is "#VALUE!".
#pragma once

#include "formula/formula_engine.h"

namespace kelpdex::fn {

void Date(FormulaEngine& e);
void DateDiff(FormulaEngine& e);
void DateValue(FormulaEngine& e);
void Day(FormulaEngine& e);
void EDate(FormulaEngine& e);
void EDate2(FormulaEngine& e);
void EoMonth(FormulaEngine& e);
void Hour(FormulaEngine& e);
void Minute(FormulaEngine& e);
void Month(FormulaEngine& e);
void NetworkDays(FormulaEngine& e);
void Now(FormulaEngine& e);
void Second(FormulaEngine& e);
void Time(FormulaEngine& e);
void TimeValue(FormulaEngine& e);
void Today(FormulaEngine& e);
void WeekDay(FormulaEngine& e);
void WeekNum(FormulaEngine& e);
void WorkDay(FormulaEngine& e);
void Year(FormulaEngine& e);

}  // namespace kelpdex::fn
