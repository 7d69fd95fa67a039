// Cash flows: their net present and future values, the internal rates of return with their
// bracketing search, and the flows on a calendar (xnpv, xirr) dated by generic date strings.
#include <cmath>
#include <vector>

#include "format/generic_date.h"
#include "functions/arguments.h"
#include "functions/financial_functions.h"
#include "functions/numeric/root_bracket.h"
#include "functions/statistical_functions_walk.h"
#include "store/range_cursor.h"

namespace kelpdex::fn {

namespace {

constexpr double kFloorRate = 1e-14;
constexpr double kSearchTolerance = 1e-14;
constexpr int kSearchSteps = 1000;

// Flows at whole periods 0, 1, 2, ... (irr) or at fractions of a 365-day year (xirr).
struct Flows {
  const std::vector<double>* amounts = nullptr;
  const std::vector<double>* years = nullptr;  // null for whole periods
};

// The net present value at `rate` as of the first flow; false where it has no valid value.
bool PresentValue(void* context, double rate, double& value) {
  const Flows& flows = *static_cast<const Flows*>(context);
  if (!(rate > -1)) return false;
  double sum = 0;
  if (flows.years == nullptr) {
    double discount = 1;
    for (double amount : *flows.amounts) {
      sum += amount / discount;
      discount *= 1 + rate;
    }
  } else {
    double logGrowth = std::log1p(rate);
    for (size_t i = 0; i < flows.amounts->size(); ++i) {
      sum += (*flows.amounts)[i] * std::exp(-(*flows.years)[i] * logGrowth);
    }
  }
  value = sum;
  return !IsBadNumber(sum);
}

// The rate at which the flows' value is 0, found from the guess: an interval around it is widened
// step by step (the lower end held above 0) until the value changes sign within it, then
// narrowed. Gives up once the interval spans more than 100, so the widening is bounded too.
bool SearchRate(Flows& flows, double guess, double& rate) {
  double lo = guess > 0.00010000000001 ? guess - 0.0001 : kFloorRate;
  double hi = guess + 0.0001;
  double step = 0.0001;
  while (true) {
    double flo = 0, fhi = 0;
    if (!PresentValue(&flows, lo, flo) || !PresentValue(&flows, hi, fhi)) return false;
    if (flo * fhi < 0) break;
    lo = lo - step > kFloorRate ? lo - step : kFloorRate;
    hi += step;
    if (std::fabs(lo) + std::fabs(hi) > 100) return false;
    step = step * 2 < 0.02 ? step * 2 : 0.02;
  }
  return numeric::RegulaFalsiIllinois(PresentValue, &flows, lo, hi, kSearchTolerance, kSearchSteps,
                                      rate) == numeric::RootOutcome::kFound;
}

// The dates of xnpv and xirr, in seconds, from a generic date string or an array of them.
struct Dates {
  std::vector<int64_t> seconds;
  uint8_t error = 0;

  void Add(std::string_view text) {
    if (text.empty()) return;  // an empty cell
    DateTimeRecord r;
    int64_t s = 0;
    if (!ParseGenericDate(text, r) || !r.hasDate || !DateToSeconds(r, s)) {
      error = LargerError(error, ferr::kValue);
      return;
    }
    seconds.push_back(s);
  }
  static void AddCell(void* context, const CellRecord* r) {
    auto* self = static_cast<Dates*>(context);
    uint8_t nibble = cell::ErrorNibble(r);
    if (nibble != 0) {
      self->error = LargerError(self->error, nibble);
    } else if (cell::IsText(r)) {
      self->Add(cell::Text(r));
    } else if (cell::IsFormula(r) && !cell::CachedString(r).empty()) {
      self->Add(cell::CachedString(r));
    } else {
      self->error = LargerError(self->error, ferr::kValue);  // a number is no date here
    }
  }
};

uint8_t ReadDates(FormulaEngine& e, int slot, Dates& dates) {
  FormulaValue& v = e.Operand(slot);
  if ((v.kind & kind::kArrayOrRange) != 0) {
    uint8_t error = ForEachCellOf(e, slot, &dates, Dates::AddCell);
    return LargerError(error, dates.error);
  }
  char buffer[kTextArgSize];
  std::string_view text;
  uint8_t error = GetTextArg(e, slot, buffer, text);
  if (error == 0) dates.Add(text);
  return LargerError(error, dates.error);
}

// The flows and dates of xnpv and xirr, as amounts and years after the first date. Lists of
// different lengths, or a date before the first, are "#NUM!".
uint8_t ReadDatedFlows(FormulaEngine& e, int flowSlot, std::vector<double>& amounts,
                       std::vector<double>& years) {
  Dates dates;
  uint8_t error = ReadDates(e, flowSlot + 1, dates);
  error =
      LargerError(error, stat::CollectValues(e, flowSlot, flowSlot, stat::Take::kNumbers, amounts));
  if (error != 0) return error;
  if (amounts.empty() || amounts.size() != dates.seconds.size()) return ferr::kNum;
  years.clear();
  for (int64_t s : dates.seconds) {
    if (s < dates.seconds[0]) return ferr::kNum;
    years.push_back(static_cast<double>(s - dates.seconds[0]) / (86400.0 * 365));
  }
  return 0;
}

// The rate argument of a cash-flow function, read after the lists above it are released.
uint8_t ReadRate(FormulaEngine& e, int slot, double& rate) {
  uint8_t error = GetNumberArg(e, slot, rate);
  if (error == 0 && !(rate > -1)) error = ferr::kNum;
  return error;
}

}  // namespace

void Npv(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int base = e.Operand(e.depth()).argumentBase;
  std::vector<double> amounts;
  uint8_t error = stat::CollectValues(e, base + 1, e.depth() - 1, stat::Take::kNumbers, amounts);
  double rate = 0;
  error = LargerError(error, ReadRate(e, base, rate));
  // The first flow comes one period after the start.
  amounts.insert(amounts.begin(), 0.0);
  Flows flows{&amounts, nullptr};
  double value = 0;
  if (error == 0 && !PresentValue(&flows, rate, value)) error = ferr::kNum;
  SetNumberResult(e, base, value, error);
}

void Irr(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  int top = e.depth() - 1;
  // The last of two or more arguments is the guess, unless it is an array or range of flows.
  double guess = 0.1;
  uint8_t error = 0;
  if (top > base && (e.Operand(top).kind & kind::kArrayOrRange) == 0) {
    error = GetNumberArg(e, top, guess);
    e.Release(e.Operand(top));
    --top;
  }
  std::vector<double> amounts;
  error = LargerError(error, stat::CollectValues(e, base, top, stat::Take::kNumbers, amounts));
  Flows flows{&amounts, nullptr};
  double rate = 0;
  if (error == 0 && !SearchRate(flows, guess, rate)) error = ferr::kNum;
  SetNumberResult(e, base, rate, error);
}

void Mirr(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int slot = e.depth() - 2;
  double rate = 0;
  uint8_t error = ReadRate(e, slot + 1, rate);
  std::vector<double> amounts;
  error = LargerError(error, stat::CollectValues(e, slot, slot, stat::Take::kNumbers, amounts));
  double result = 0;
  if (error == 0) {
    // Outflows discounted to the start, inflows carried to the end, both at the one rate.
    double n = static_cast<double>(amounts.size());
    double outflows = 0, inflows = 0;
    for (size_t k = 0; k < amounts.size(); ++k) {
      double t = static_cast<double>(k);
      if (amounts[k] < 0) outflows += amounts[k] / std::pow(1 + rate, t);
      if (amounts[k] > 0) inflows += amounts[k] * std::pow(1 + rate, n - 1 - t);
    }
    if (outflows == 0 || inflows == 0 || n < 2) {
      error = ferr::kDivZero;
    } else {
      result = std::pow(inflows / -outflows, 1 / (n - 1)) - 1;
    }
  }
  SetNumberResult(e, slot, result, error);
}

void FvSchedule(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int base = e.Operand(e.depth()).argumentBase;
  std::vector<double> rates;
  uint8_t error = stat::CollectValues(e, base + 1, e.depth() - 1, stat::Take::kNumbers, rates);
  double value = 0;
  error = LargerError(error, GetNumberArg(e, base, value));
  for (double r : rates) value *= 1 + r;
  SetNumberResult(e, base, value, error);
}

void XNpv(FormulaEngine& e) {
  if (!HasArguments(e, 3)) return;
  int slot = e.depth() - 3;
  std::vector<double> amounts, years;
  uint8_t error = ReadDatedFlows(e, slot + 1, amounts, years);
  double rate = 0;
  error = LargerError(error, ReadRate(e, slot, rate));
  Flows flows{&amounts, &years};
  double value = 0;
  if (error == 0 && !PresentValue(&flows, rate, value)) error = ferr::kNum;
  SetNumberResult(e, slot, value, error);
}

void XIrr(FormulaEngine& e) {
  if (!HasArguments(e, 2)) return;
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base >= 3 ? 3 : 2;
  int slot = e.depth() - count;
  double guess = 0.1;
  uint8_t error = count == 3 ? GetNumberArg(e, slot + 2, guess) : 0;
  if (count == 3) e.Release(e.Operand(slot + 2));
  std::vector<double> amounts, years;
  error = LargerError(error, ReadDatedFlows(e, slot, amounts, years));
  Flows flows{&amounts, &years};
  double rate = 0;
  if (error == 0 && !SearchRate(flows, guess, rate)) error = ferr::kNum;
  SetNumberResult(e, slot, rate, error);
}

}  // namespace kelpdex::fn
