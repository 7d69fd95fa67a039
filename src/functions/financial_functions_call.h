// The scalar arguments of a financial handler: all numbers, several optional, read once for all
// with arity and broadcasting settled first.
#pragma once

#include <cstdint>

#include "formula/formula_engine.h"

namespace kelpdex::fn {

struct NumberCall {
  static constexpr int kMaxParameters = 6;
  int slot = 0;       // the first argument's slot, where the result goes
  int count = 0;      // the arguments given, at most `parameters`
  uint8_t error = 0;  // the largest error among them
  // Preset by the caller with the defaults: an omitted or empty argument keeps its value.
  double x[kMaxParameters] = {};
};

// Fewer than `required` arguments stop the formula with "#SYNTAX!"; arguments beyond
// `parameters` stay on the stack and end it the same way. False when the call is already
// complete (a syntax error, or the handler was broadcast over arrays among the arguments).
bool ReadNumberCall(FormulaEngine& e, int required, int parameters, NumberCall& call);

// The annuity relation pv*(1+r)^n + pmt*(1+r*type)*((1+r)^n - 1)/r + fv = 0, solved for one of
// its terms; at r = 0 it becomes pv + pmt*n + fv = 0. `type` is 0 or 1.
double AnnuityFv(double rate, double nper, double pmt, double pv, double type);
double AnnuityPv(double rate, double nper, double pmt, double fv, double type);
double AnnuityPmt(double rate, double nper, double pv, double fv, double type);

// Payment type as given: any value but 0 means the beginning of the period.
inline double PaymentType(double type) {
  return type != 0 ? 1.0 : 0.0;
}

}  // namespace kelpdex::fn
