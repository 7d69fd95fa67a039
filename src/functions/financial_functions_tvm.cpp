// Time value of money: the annuity relation and what is derived from it, the rate solver, and
// the conversions between nominal, effective and fractional quotes.
#include <cmath>

#include "functions/arguments.h"
#include "functions/financial_functions.h"
#include "functions/financial_functions_call.h"

namespace kelpdex::fn {

namespace {

// (1+r)^n and ((1+r)^n - 1)/r through log1p and expm1, so that rates close to 0 keep their
// digits instead of cancelling against the 1.
double Growth(double rate, double nper) {
  return std::exp(nper * std::log1p(rate));
}
double AnnuityFactor(double rate, double nper) {
  return rate == 0 ? nper : std::expm1(nper * std::log1p(rate)) / rate;
}

// A rate at or below -100% leaves nothing to compound; every derived quantity is "#NUM!".
bool UsableRate(double rate) {
  return rate > -1;
}

// r / ((1+r)^n - 1), with its limit 1/n at r = 0.
double SinkingFactor(double rate, double nper) {
  return rate == 0 ? 1 / nper : rate / std::expm1(nper * std::log1p(rate));
}

// The balance owed after `k` payments at the end of each period, the sign of `pv` kept:
// (pv((1+r)^n - (1+r)^k) - fv((1+r)^k - 1)) / ((1+r)^n - 1). Written so, it has none of the
// cancellation of pv(1+r)^k + pmt((1+r)^k - 1)/r, which loses every digit of a long loan at a
// high rate.
double BalanceAfter(double rate, double k, double nper, double pv, double fv) {
  if (rate == 0) return (pv * (nper - k) - fv * k) / nper;
  double logGrowth = std::log1p(rate);
  double rest = Growth(rate, k) * std::expm1((nper - k) * logGrowth);
  return (pv * rest - fv * std::expm1(k * logGrowth)) / std::expm1(nper * logGrowth);
}

// The principal part of payment `period`: the change of the balance it makes,
// -r(pv + fv)(1+r)^(k-1) / ((1+r)^n - 1). Paid in advance, the first payment is all principal and
// the rest are shifted one period back.
double PrincipalPart(double rate, double period, double nper, double pv, double fv, double type) {
  if (type != 0 && period == 1) return AnnuityPmt(rate, nper, pv, fv, type);
  double exponent = type != 0 ? period - 2 : period - 1;
  return -(pv + fv) * SinkingFactor(rate, nper) * Growth(rate, exponent);
}

// The annuity equation as a function of the rate, with its derivative, for Newton's method.
void RateEquation(double r, double nper, double pmt, double pv, double fv, double type, double& f,
                  double& slope) {
  double q = 1 + r;
  double growth = Growth(r, nper);
  double factor = AnnuityFactor(r, nper);
  // d/dr of ((1+r)^n - 1)/r; near 0 the quotient loses everything, and the limit is n(n-1)/2.
  double factorSlope =
      std::fabs(r) < 1e-7 ? nper * (nper - 1) / 2 : (nper * growth / q - factor) / r;
  f = pv * growth + pmt * (1 + r * type) * factor + fv;
  slope = pv * nper * growth / q + pmt * (type * factor + (1 + r * type) * factorSlope);
}

void Finish(FormulaEngine& e, const NumberCall& call, double value, uint8_t error) {
  SetNumberResult(e, call.slot, error == 0 ? value : 0, LargerError(call.error, error));
}

// 10^ceil(log10(d)): the power of ten that the fractional part of a quote is written against.
double QuoteScale(double denominator) {
  return std::pow(10.0, std::ceil(std::log10(denominator)));
}

void RunDollar(FormulaEngine& e, bool toDecimal) {
  NumberCall call;
  if (!ReadNumberCall(e, 2, 2, call)) return;
  double x = call.x[0], d = std::trunc(call.x[1]);
  uint8_t error = d < 0 ? ferr::kNum : (d == 0 ? ferr::kDivZero : 0);
  double result = 0;
  if (error == 0) {
    double whole = std::trunc(x);
    double fraction = x - whole;
    result = whole + (toDecimal ? fraction * QuoteScale(d) / d : fraction * d / QuoteScale(d));
  }
  Finish(e, call, result, error);
}

// cumIPMT and cumPRINC: the parts of the payments n1..n2 of a loan paid in arrears, from the
// balances before and after them, so that a long span costs no more than a short one.
void RunCumulative(FormulaEngine& e, bool interest) {
  NumberCall call;
  if (!ReadNumberCall(e, 5, 5, call)) return;
  double rate = call.x[0], nper = call.x[1], pv = call.x[2];
  double first = RoundHalfAway(call.x[3]), last = RoundHalfAway(call.x[4]);
  uint8_t error = 0;
  if (!UsableRate(rate) || nper <= 0 || first < 1 || last < first || last > nper) {
    error = ferr::kNum;
  }
  double result = 0;
  if (error == 0) {
    double pmt = AnnuityPmt(rate, nper, pv, 0, 0);
    double principal =
        BalanceAfter(rate, last, nper, pv, 0) - BalanceAfter(rate, first - 1, nper, pv, 0);
    result = interest ? pmt * (last - first + 1) - principal : principal;
  }
  Finish(e, call, result, error);
}

}  // namespace

bool ReadNumberCall(FormulaEngine& e, int required, int parameters, NumberCall& call) {
  int base = e.Operand(e.depth()).argumentBase;
  int given = e.depth() - base;
  if (given < required) {
    e.SetSyntaxError();
    return false;
  }
  call.count = given < parameters ? given : parameters;
  if (BroadcastArrays(e, call.count)) return false;
  call.slot = e.depth() - call.count;
  // From the top down, so that a text argument is the top of the pool when it is coerced.
  for (int k = call.count - 1; k >= 0; --k) {
    call.error = LargerError(call.error, GetNumberArg(e, call.slot + k, call.x[k]));
  }
  return true;
}

double AnnuityFv(double rate, double nper, double pmt, double pv, double type) {
  return -(pv * Growth(rate, nper) + pmt * (1 + rate * type) * AnnuityFactor(rate, nper));
}

double AnnuityPv(double rate, double nper, double pmt, double fv, double type) {
  return -(fv + pmt * (1 + rate * type) * AnnuityFactor(rate, nper)) / Growth(rate, nper);
}

double AnnuityPmt(double rate, double nper, double pv, double fv, double type) {
  return -(fv + pv * Growth(rate, nper)) / ((1 + rate * type) * AnnuityFactor(rate, nper));
}

void Pmt(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 3, 5, call)) return;
  double rate = call.x[0], nper = call.x[1];
  uint8_t error = !UsableRate(rate) || nper == 0 ? ferr::kNum : 0;
  double type = PaymentType(call.x[4]);
  Finish(e, call, error == 0 ? AnnuityPmt(rate, nper, call.x[2], call.x[3], type) : 0, error);
}

void Pv(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 3, 5, call)) return;
  uint8_t error = UsableRate(call.x[0]) ? 0 : ferr::kNum;
  double type = PaymentType(call.x[4]);
  Finish(e, call, error == 0 ? AnnuityPv(call.x[0], call.x[1], call.x[2], call.x[3], type) : 0,
         error);
}

void Fv(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 3, 5, call)) return;
  uint8_t error = UsableRate(call.x[0]) ? 0 : ferr::kNum;
  double type = PaymentType(call.x[4]);
  Finish(e, call, error == 0 ? AnnuityFv(call.x[0], call.x[1], call.x[2], call.x[3], type) : 0,
         error);
}

void NPer(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 3, 5, call)) return;
  double rate = call.x[0], pmt = call.x[1], pv = call.x[2], fv = call.x[3];
  double type = PaymentType(call.x[4]);
  uint8_t error = UsableRate(rate) ? 0 : ferr::kNum;
  double n = 0;
  if (error == 0 && rate == 0) {
    if (pmt == 0) error = ferr::kNum;
    n = error == 0 ? -(pv + fv) / pmt : 0;
  } else if (error == 0) {
    // (1+r)^n = (a - fv) / (pv + a) with a = pmt(1 + r type)/r; no period count reaches a
    // ratio that is not positive.
    double a = pmt * (1 + rate * type) / rate;
    double ratio = (a - fv) / (pv + a);
    if (!(ratio > 0) || !std::isfinite(ratio)) error = ferr::kNum;
    n = error == 0 ? std::log(ratio) / std::log1p(rate) : 0;
  }
  Finish(e, call, n, error);
}

void IPmt(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 4, 5, call)) return;
  double rate = call.x[0], period = call.x[1], nper = call.x[2];
  uint8_t error = !UsableRate(rate) || nper == 0 || period < 1 || period > nper ? ferr::kNum : 0;
  // The interest of a period on the balance left after the payment before it.
  double result =
      error == 0 ? -rate * BalanceAfter(rate, period - 1, nper, call.x[3], call.x[4]) : 0;
  Finish(e, call, result, error);
}

void PPmt(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 4, 6, call)) return;
  double rate = call.x[0], period = call.x[1], nper = call.x[2], pv = call.x[3], fv = call.x[4];
  double type = PaymentType(call.x[5]);
  uint8_t error = !UsableRate(rate) || nper == 0 || period < 1 || period > nper ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? PrincipalPart(rate, period, nper, pv, fv, type) : 0, error);
}

void CumIPmt(FormulaEngine& e) {
  RunCumulative(e, true);
}

void CumPrinc(FormulaEngine& e) {
  RunCumulative(e, false);
}

void Rate(FormulaEngine& e) {
  NumberCall call;
  call.x[5] = 0.1;  // the guess
  if (!ReadNumberCall(e, 3, 6, call)) return;
  double nper = call.x[0], pmt = call.x[1], pv = call.x[2], fv = call.x[3];
  double type = PaymentType(call.x[4]);
  double r = call.x[5];
  uint8_t error = nper <= 0 || !UsableRate(r) ? ferr::kNum : 0;
  // Newton's method from the guess. It either settles within a few dozen steps or wanders off;
  // a step limit and the domain r > -1 turn the latter into "#NUM!".
  bool settled = false;
  for (int step = 0; error == 0 && step < 100 && !settled; ++step) {
    double f = 0, slope = 0;
    RateEquation(r, nper, pmt, pv, fv, type, f, slope);
    double next = r - f / slope;
    if (!std::isfinite(next) || !UsableRate(next)) break;
    settled = std::fabs(next - r) <= 1e-13 * (1 + std::fabs(next));
    r = next;
  }
  if (!settled) error = ferr::kNum;
  Finish(e, call, r, error);
}

void Effect(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 2, 2, call)) return;
  double rate = call.x[0], n = std::trunc(call.x[1]);
  uint8_t error = rate <= 0 || n < 1 ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? std::expm1(n * std::log1p(rate / n)) : 0, error);
}

void Nominal(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 2, 2, call)) return;
  double rate = call.x[0], n = std::trunc(call.x[1]);
  uint8_t error = rate <= 0 || n < 1 ? ferr::kNum : 0;
  Finish(e, call, error == 0 ? n * std::expm1(std::log1p(rate) / n) : 0, error);
}

void DollarDe(FormulaEngine& e) {
  RunDollar(e, true);
}

void DollarFr(FormulaEngine& e) {
  RunDollar(e, false);
}

}  // namespace kelpdex::fn
