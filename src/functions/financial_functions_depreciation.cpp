// Depreciation of an asset by period: straight line, sum of the years' digits, fixed-declining
// and double-declining balance. Each period is found in closed form, so a long life costs no
// more than a short one.
#include <cmath>

#include "functions/arguments.h"
#include "functions/financial_functions.h"
#include "functions/financial_functions_call.h"

namespace kelpdex::fn {

namespace {

void Finish(FormulaEngine& e, const NumberCall& call, double value, uint8_t error) {
  SetNumberResult(e, call.slot, error == 0 ? value : 0, LargerError(call.error, error));
}

}  // namespace

void Sln(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 3, 3, call)) return;
  double cost = call.x[0], salvage = call.x[1], life = call.x[2];
  uint8_t error = life == 0 ? ferr::kDivZero : 0;
  Finish(e, call, error == 0 ? (cost - salvage) / life : 0, error);
}

void Syd(FormulaEngine& e) {
  NumberCall call;
  if (!ReadNumberCall(e, 4, 4, call)) return;
  double cost = call.x[0], salvage = call.x[1], life = call.x[2], period = call.x[3];
  uint8_t error = life <= 0 || period < 1 || period > life ? ferr::kNum : 0;
  double result = 0;
  if (error == 0) result = (cost - salvage) * (life - period + 1) * 2 / (life * (life + 1));
  Finish(e, call, result, error);
}

void Db(FormulaEngine& e) {
  NumberCall call;
  call.x[4] = 12;  // months in the first year
  if (!ReadNumberCall(e, 4, 5, call)) return;
  double cost = call.x[0], salvage = call.x[1];
  double life = RoundHalfAway(call.x[2]), period = RoundHalfAway(call.x[3]);
  double months = RoundHalfAway(call.x[4]);
  // A first year of fewer than 12 months leaves the rest of the last year as one more period.
  double periods = months < 12 ? life + 1 : life;
  uint8_t error = 0;
  if (cost <= 0 || salvage < 0 || life < 1 || months < 1 || months > 12 || period < 1 ||
      period > periods) {
    error = ferr::kNum;
  }
  double result = 0;
  if (error == 0) {
    // The rate is used as computed, not rounded to three places.
    double rate = 1 - std::pow(salvage / cost, 1 / life);
    double first = cost * rate * months / 12;
    double afterFirst = cost - first;
    if (period == 1) {
      result = first;
    } else if (period <= life) {
      result = afterFirst * std::pow(1 - rate, period - 2) * rate;
    } else {
      result = afterFirst * std::pow(1 - rate, life - 1) * rate * (12 - months) / 12;
    }
  }
  Finish(e, call, result, error);
}

void Ddb(FormulaEngine& e) {
  NumberCall call;
  call.x[4] = 2;  // the factor
  if (!ReadNumberCall(e, 4, 5, call)) return;
  double cost = call.x[0], salvage = call.x[1], life = call.x[2], period = call.x[3];
  double factor = call.x[4];
  uint8_t error = 0;
  if (cost < 0 || salvage < 0 || life <= 0 || period <= 0 || period > life || factor <= 0) {
    error = ferr::kNum;
  }
  double result = 0;
  if (error == 0) {
    // A factor above the life would write off more than the whole value in one period.
    double rate = factor / life < 1 ? factor / life : 1;
    double before = cost * std::pow(1 - rate, period - 1);
    result = before * rate;
    // The balance never goes below the salvage value.
    if (before - result < salvage) result = before - salvage > 0 ? before - salvage : 0;
  }
  Finish(e, call, result, error);
}

}  // namespace kelpdex::fn
