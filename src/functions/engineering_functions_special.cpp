// Error and Bessel functions, and the two comparisons delta and getStep.
#include <cmath>

#include "functions/arguments.h"
#include "functions/engineering_functions.h"
#include "functions/numeric/bessel.h"
#include "functions/scalar_call.h"

namespace kelpdex::fn {

namespace {

void RunBessel(FormulaEngine& e, double (*f)(int n, double x)) {
  ScalarCall call;
  if (!ReadScalarCall(e, "ni", 2, call)) return;
  uint8_t error = call.error;
  if (error == 0 && call.integer[1] < 0) error = ferr::kNum;
  SetNumberResult(e, call.slot, error == 0 ? f(call.integer[1], call.number[0]) : 0, error);
}

// x and an optional y (default 0), compared.
void RunComparison(FormulaEngine& e, bool (*holds)(double x, double y)) {
  ScalarCall call;
  if (!ReadScalarCall(e, "nn", 1, call)) return;
  SetNumberResult(e, call.slot, holds(call.number[0], call.number[1]) ? 1 : 0, call.error);
}

// The integral of the error function's density from a to b. Where both limits lie on the same
// side of 0 the difference is taken between the complements, whose digits survive far out in the
// tail where erf itself is 1 to the last bit.
double ErfBetween(double a, double b) {
  if (a >= 0 && b >= 0) return std::erfc(a) - std::erfc(b);
  if (a <= 0 && b <= 0) return std::erfc(-b) - std::erfc(-a);
  return std::erf(b) - std::erf(a);
}

}  // namespace

void BesselJ(FormulaEngine& e) {
  RunBessel(e, numeric::BesselJ);
}

void BesselY(FormulaEngine& e) {
  RunBessel(e, numeric::BesselY);
}

void Erf(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "nn", 1, call)) return;
  bool twoLimits = call.count == 2 && call.given[1];
  double result = twoLimits ? ErfBetween(call.number[0], call.number[1]) : std::erf(call.number[0]);
  SetNumberResult(e, call.slot, result, call.error);
}

void Erfc(FormulaEngine& e) {
  ScalarCall call;
  if (!ReadScalarCall(e, "n", 1, call)) return;
  SetNumberResult(e, call.slot, std::erfc(call.number[0]), call.error);
}

void Delta(FormulaEngine& e) {
  RunComparison(e, [](double x, double y) { return x == y; });
}

void GetStep(FormulaEngine& e) {
  RunComparison(e, [](double x, double y) { return x > y; });
}

}  // namespace kelpdex::fn
