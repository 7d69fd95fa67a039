#include "functions/math_functions.h"

#include <cmath>

#include "functions/arguments.h"

namespace kelpdex::fn {

namespace {

constexpr double kPi = 3.14159265358979323846;

// One number in, one number out; `error` is set for a domain error.
using UnaryMath = double (*)(double x, uint8_t& error);

// The scalar pattern: enough arguments, broadcasting over arrays, the number, the computation.
// A fixed-arity handler counts from the top, so extra arguments stay and end in "#SYNTAX!".
void RunUnary(FormulaEngine& e, UnaryMath f) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  double x = 0;
  uint8_t error = GetNumberArg(e, slot, x);
  double result = error == 0 ? f(x, error) : 0;
  SetNumberResult(e, slot, result, error);
}

using BinaryMath = double (*)(double x, double y, uint8_t& error);

// Two scalars; `y` may be optional with `yDefault`, an omitted argument keeping it.
void RunBinary(FormulaEngine& e, BinaryMath f, bool yOptional = false, double yDefault = 0) {
  int base = e.Operand(e.depth()).argumentBase;
  if (yOptional && e.depth() == base + 1) {
    // One argument given: the second takes its default.
    if (BroadcastArrays(e, 1)) return;
    int slot = e.depth() - 1;
    double x = 0;
    uint8_t error = GetNumberArg(e, slot, x);
    double result = error == 0 ? f(x, yDefault, error) : 0;
    SetNumberResult(e, slot, result, error);
    return;
  }
  if (!HasArguments(e, 2) || BroadcastArrays(e, 2)) return;
  int slot = e.depth() - 2;
  double x = 0, y = yDefault;
  uint8_t error = GetNumberArg(e, slot + 1, y);
  error = LargerError(error, GetNumberArg(e, slot, x));
  double result = error == 0 ? f(x, y, error) : 0;
  SetNumberResult(e, slot, result, error);
}

double Fail(uint8_t& error, uint8_t code) {
  error = code;
  return 0;
}

// n! for n in 1..170, step 1; n!! with step 2.
void RunFactorial(FormulaEngine& e, int step) {
  if (!HasArguments(e, 1) || BroadcastArrays(e, 1)) return;
  int slot = e.depth() - 1;
  int32_t n = 0;
  uint8_t error = GetIntegerArg(e, slot, n, 1, 170);
  double product = 1;
  for (int32_t k = n; k > 1; k -= step) product *= k;
  SetNumberResult(e, slot, product, error);
}

double Combinations(double n, double k, uint8_t& error) {
  n = std::trunc(n);
  k = std::trunc(k);
  if (n < 0 || k < 0 || k > n) return Fail(error, ferr::kNum);
  // The smaller of k and n - k gives the same count in fewer steps, and a count past the largest
  // double ends the loop: without both, combin(1e15, 5e14) would run for days.
  if (n - k < k) k = n - k;
  double result = 1;
  for (double i = 1; i <= k && std::isfinite(result); ++i) result = result * (n - k + i) / i;
  return std::round(result);
}

// Rounding at `digits` places: the magnitude scaled by a power of ten, split by modf.
enum class RoundMode { kNearest, kDown, kUp };
void RunRounding(FormulaEngine& e, RoundMode mode) {
  int base = e.Operand(e.depth()).argumentBase;
  if (!HasArguments(e, 1)) return;
  int count = e.depth() - base >= 2 ? 2 : 1;
  if (BroadcastArrays(e, count)) return;
  int slot = e.depth() - count;
  int32_t digits = 0;
  uint8_t error = 0;
  if (count == 2) error = GetIntegerArg(e, slot + 1, digits, -14, 14);
  double x = 0;
  error = LargerError(error, GetNumberArg(e, slot, x));
  double result = 0;
  if (error == 0) {
    double sign = x < 0 ? -1 : 1;
    double scale = std::pow(10.0, digits < 0 ? -digits : digits);
    double m = std::fabs(x);
    m = digits < 0 ? m / scale : m * scale;
    double whole = 0;
    double fraction = std::modf(m, &whole);
    if (mode == RoundMode::kNearest) whole += std::floor(fraction + 0.5);
    if (mode == RoundMode::kUp && fraction > 0) whole += 1;
    result = sign * (digits < 0 ? whole * scale : whole / scale);
  }
  SetNumberResult(e, slot, result, error);
}

struct Total {
  double value;
};

}  // namespace

void Abs(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::fabs(x); });
}
void Acos(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) {
    return x < -1 || x > 1 ? Fail(err, ferr::kNum) : std::acos(x);
  });
}
void Asin(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) {
    return x < -1 || x > 1 ? Fail(err, ferr::kNum) : std::asin(x);
  });
}
void Acosh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) { return x < 1 ? Fail(err, ferr::kNum) : std::acosh(x); });
}
void Asinh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::asinh(x); });
}
void Atan(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::atan(x); });
}
void Atanh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) {
    return x <= -1 || x >= 1 ? Fail(err, ferr::kNum) : std::atanh(x);
  });
}
void Cos(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::cos(x); });
}
void Cosh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::cosh(x); });
}
void Sin(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::sin(x); });
}
void Sinh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::sinh(x); });
}
void Tan(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::tan(x); });
}
void Tanh(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::tanh(x); });
}
void Degrees(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return x * 180 / kPi; });
}
void Radians(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return x * kPi / 180; });
}
void Exp(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::exp(x); });
}
void Ln(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) { return x <= 0 ? Fail(err, ferr::kNum) : std::log(x); });
}
void Log10(FormulaEngine& e) {
  RunUnary(e,
           [](double x, uint8_t& err) { return x <= 0 ? Fail(err, ferr::kNum) : std::log10(x); });
}
void Sqrt(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t& err) { return x < 0 ? Fail(err, ferr::kNum) : std::sqrt(x); });
}
void SqrtPi(FormulaEngine& e) {
  RunUnary(
      e, [](double x, uint8_t& err) { return x < 0 ? Fail(err, ferr::kNum) : std::sqrt(x * kPi); });
}
void Sign(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return x > 0 ? 1.0 : (x < 0 ? -1.0 : 0.0); });
}
void Int(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) { return std::floor(x); });
}
void Fact(FormulaEngine& e) {
  RunFactorial(e, 1);
}
void FactDouble(FormulaEngine& e) {
  RunFactorial(e, 2);
}
void Even(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) {
    double m = std::ceil(std::fabs(x));
    if (std::fmod(m, 2) != 0) m += 1;
    return x < 0 ? -m : m;
  });
}
void Odd(FormulaEngine& e) {
  RunUnary(e, [](double x, uint8_t&) {
    double m = std::ceil(std::fabs(x));
    if (std::fmod(m, 2) == 0) m += 1;
    return x < 0 ? -m : m;
  });
}

void Atan2(FormulaEngine& e) {
  RunBinary(e, [](double x, double y, uint8_t&) { return x == 0 ? 0.0 : std::atan2(y, x); });
}
void Power(FormulaEngine& e) {
  RunBinary(e, [](double x, double y, uint8_t&) { return std::pow(x, y); });
}
void Mod(FormulaEngine& e) {
  RunBinary(e, [](double x, double y, uint8_t& err) {
    return y == 0 ? Fail(err, ferr::kDivZero) : std::fmod(x, y);
  });
}
void Quotient(FormulaEngine& e) {
  RunBinary(e, [](double x, double y, uint8_t& err) {
    return y == 0 ? Fail(err, ferr::kDivZero) : std::trunc(x / y);
  });
}
void Log(FormulaEngine& e) {
  RunBinary(
      e,
      [](double x, double y, uint8_t& err) {
        if (x <= 0 || y <= 0) return Fail(err, ferr::kNum);
        // ln 1 is exactly 0, so a base of 1 is a division by zero, not a bad number.
        double lnBase = std::log(y);
        if (lnBase == 0) return Fail(err, ferr::kDivZero);
        return std::log(x) / lnBase;
      },
      true, 10);
}
void Ceiling(FormulaEngine& e) {
  RunBinary(
      e,
      [](double x, double m, uint8_t& err) {
        if (m < 0) return Fail(err, ferr::kNum);
        if (m == 0) return Fail(err, ferr::kDivZero);
        double r = std::ceil(std::fabs(x) / m) * m;
        return x < 0 ? -r : r;
      },
      true, 1);
}
void Floor(FormulaEngine& e) {
  RunBinary(
      e,
      [](double x, double m, uint8_t& err) {
        if (m < 0) return Fail(err, ferr::kNum);
        if (m == 0) return Fail(err, ferr::kDivZero);
        double r = std::floor(std::fabs(x) / m) * m;
        return x < 0 ? -r : r;
      },
      true, 1);
}
void MRound(FormulaEngine& e) {
  RunBinary(e, [](double x, double m, uint8_t& err) {
    if (m == 0) return 0.0;
    if ((x < 0) != (m < 0) && x != 0) return Fail(err, ferr::kNum);
    double r = std::floor(std::fabs(x) / std::fabs(m) + 0.5) * std::fabs(m);
    return x < 0 ? -r : r;
  });
}
void Combin(FormulaEngine& e) {
  RunBinary(e, Combinations);
}
void Combin2(FormulaEngine& e) {
  RunBinary(e, [](double n, double k, uint8_t& err) { return Combinations(n + k - 1, k, err); });
}

void Round(FormulaEngine& e) {
  RunRounding(e, RoundMode::kNearest);
}
void RoundDown(FormulaEngine& e) {
  RunRounding(e, RoundMode::kDown);
}
void RoundUp(FormulaEngine& e) {
  RunRounding(e, RoundMode::kUp);
}
void Trunc(FormulaEngine& e) {
  RunRounding(e, RoundMode::kDown);
}

void Pi(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  // No arguments allowed: an argument is a syntax error, not a value.
  if (e.depth() != base) {
    e.SetSyntaxError();
    return;
  }
  e.Operand(base) = FormulaValue::Number(kPi);
}

void Sum(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Total total{0};
  uint8_t error = ForEachNumber(e, base, false, &total,
                                [](void* c, double x) { static_cast<Total*>(c)->value += x; });
  SetNumberResult(e, base, total.value, error);
}

void SumSq(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Total total{0};
  uint8_t error = ForEachNumber(e, base, false, &total,
                                [](void* c, double x) { static_cast<Total*>(c)->value += x * x; });
  SetNumberResult(e, base, total.value, error);
}

void Product(FormulaEngine& e) {
  if (!HasArguments(e, 1)) return;
  int base = e.Operand(e.depth()).argumentBase;
  Total total{1};
  // Empty cells in arrays are skipped rather than counted as zero.
  uint8_t error = ForEachNumber(e, base, true, &total,
                                [](void* c, double x) { static_cast<Total*>(c)->value *= x; });
  SetNumberResult(e, base, total.value, error);
}

}  // namespace kelpdex::fn
