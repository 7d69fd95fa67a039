// The generated columns: mtxRand, mtxRand2 and mtxSeries.
#include <cmath>
#include <string>
#include <string_view>
#include <vector>

#include "core/locale_settings.h"
#include "format/generic_date.h"
#include "format/number_text.h"
#include "functions/arguments.h"
#include "functions/matrix_arguments.h"
#include "functions/matrix_functions.h"
#include "functions/numeric/normal.h"
#include "functions/random.h"

namespace kelpdex::fn {

namespace {

using numeric::Matrix;

constexpr double kLargestSeed = 2147483562;

// n and the two seeds of both generators; a seed given replaces its generator's state.
uint8_t StartDraws(const mtx::Arguments& a, uint32_t& n) {
  double count = RoundHalfAway(a.number[0]);
  if (!a.given[0] || count < 1 || count > kRowLimit) return ferr::kNum;
  n = static_cast<uint32_t>(count);
  int64_t seeds[2] = {-1, -1};
  for (int i = 0; i < 2; ++i) {
    if (!a.given[1 + i]) continue;
    double s = RoundHalfAway(a.number[1 + i]);
    if (s < 1 || s > kLargestSeed) return ferr::kNum;
    seeds[i] = static_cast<int64_t>(s);
  }
  SeedUniform(seeds[0], seeds[1]);
  return 0;
}

// Poisson counts by inversion while e^-mean is a normal double; beyond, the normal
// approximation, rounded, whose error is then far below the count's own spread.
double Poisson(double mean) {
  if (mean > 700) {
    double x = std::round(mean + std::sqrt(mean) * numeric::NormalQuantile(NextUniform()));
    return x < 0 ? 0 : x;
  }
  double u = NextUniform();
  double term = std::exp(-mean), total = term;
  double k = 0;
  // The tail past mean + 40 standard deviations and 100 is below any uniform draw.
  double last = mean + 40 * std::sqrt(mean) + 100;
  while (total < u && k < last) {
    k += 1;
    term *= mean / k;
    total += term;
  }
  return k;
}

}  // namespace

void MtxRand(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "nnn", 1, a)) return;
  uint32_t n = 0;
  uint8_t error = a.error != 0 ? a.error : StartDraws(a, n);
  Matrix out;
  if (error == 0 && !out.Allocate(n, 1)) error = ferr::kMemory;
  for (uint32_t i = 0; error == 0 && i < n; ++i) out(i, 0) = NextUniform();
  mtx::SetMatrixResult(e, a.base, out, error);
}

void MtxRand2(FormulaEngine& e) {
  mtx::Arguments a;
  if (!mtx::ReadArguments(e, "nnnnnn", 1, a)) return;
  uint8_t error = a.error;
  double type = a.given[3] ? RoundHalfAway(a.number[3]) : 0;
  double v1 = a.number[4], v2 = a.number[5];
  // Each distribution's parameters, checked before the state of the generators is touched.
  bool valid = true;
  if (type == 1)
    valid = a.given[4] && a.given[5] && v2 > 0;
  else if (type == 2 || type == 3)
    valid = a.given[4] && v1 > 0;
  else if (type == 4)
    valid = a.given[4] && v1 >= 0 && v1 <= 1;
  else if (type == 5)
    valid = a.given[4] && v1 > 0 && v1 <= 1;
  else
    valid = type == 0;
  if (error == 0 && !valid) error = ferr::kNum;
  uint32_t n = 0;
  if (error == 0) error = StartDraws(a, n);
  Matrix out;
  if (error == 0 && !out.Allocate(n, 1)) error = ferr::kMemory;
  for (uint32_t i = 0; error == 0 && i < n; ++i) {
    double u = NextUniform();
    double x = u;
    switch (static_cast<int>(type)) {
      case 1:
        x = v1 + v2 * numeric::NormalQuantile(u);
        break;
      case 2:
        x = -v1 * std::log(u);
        break;
      case 3:
        x = Poisson(v1);
        break;
      case 4:
        x = u < v1 ? 1 : 0;
        break;
      case 5:
        // Trials up to the first success; u in (0, 1) keeps the logarithm finite.
        x = v1 == 1 ? 1 : std::ceil(std::log(u) / std::log1p(-v1));
        break;
      default:
        break;
    }
    out(i, 0) = x;
  }
  mtx::SetMatrixResult(e, a.base, out, error);
}

namespace {

// A period taken `times` times; false when a unit overflows.
bool ScalePeriod(const PeriodRecord& step, int64_t times, PeriodRecord& out) {
  int32_t PeriodRecord::*units[] = {&PeriodRecord::years,       &PeriodRecord::months,
                                    &PeriodRecord::days,        &PeriodRecord::hours,
                                    &PeriodRecord::minutes,     &PeriodRecord::seconds,
                                    &PeriodRecord::milliseconds};
  out = step;
  for (auto unit : units) {
    int64_t v = int64_t(step.*unit) * times;
    if (v > 0x7FFFFFFF) return false;
    out.*unit = static_cast<int32_t>(v);
  }
  return true;
}

}  // namespace

void MtxSeries(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 2 || count > 3) {
    e.SetSyntaxError();
    return;
  }
  // Read top down: step, then x, each as text when it is one, then n.
  char stepBuffer[kTextArgSize], startBuffer[kTextArgSize];
  std::string_view stepText, startText;
  double step = 1, start = 0;
  bool stepIsText = false, startIsText = false;
  uint8_t error = 0;
  auto readOne = [&](int slot, double& number, bool& isText, char* buffer, std::string_view& text) {
    FormulaValue& v = e.Operand(slot);
    e.LoadReference(v);
    if (v.kind == kind::kString && v.errorCode == 0) {
      error = LargerError(error, GetTextArg(e, slot, buffer, text));
      e.Operand(slot) = FormulaValue::Empty();
      // A text that reads as a number is one; any other is a date or a period.
      isText = !TextToNumber(text, currentLocale.decimalSeparator, number);
      return;
    }
    error = LargerError(error, GetNumberArg(e, slot, number));
    e.Release(e.Operand(slot));
  };
  if (count == 3) readOne(base + 2, step, stepIsText, stepBuffer, stepText);
  readOne(base + 1, start, startIsText, startBuffer, startText);
  double n = 0;
  error = LargerError(error, GetNumberArg(e, base, n));
  e.Release(e.Operand(base));
  n = RoundHalfAway(n);
  if (error == 0 && (n < 1 || n > kRowLimit)) error = ferr::kNum;
  uint32_t rows = error == 0 ? static_cast<uint32_t>(n) : 0;

  if (error == 0 && !startIsText) {
    // A numeric series; a period step makes no sense for it.
    Matrix out;
    if (stepIsText) error = ferr::kValue;
    if (error == 0 && !out.Allocate(rows, 1)) error = ferr::kMemory;
    for (uint32_t i = 0; error == 0 && i < rows; ++i) out(i, 0) = start + step * i;
    mtx::SetMatrixResult(e, base, out, error);
    return;
  }
  DateTimeRecord first;
  PeriodRecord period;
  period.days = 1;
  if (error == 0 && !ParseGenericDate(startText, first)) error = ferr::kValue;
  if (error == 0 && count == 3 && (!stepIsText || !ParseGenericPeriod(stepText, period))) {
    error = ferr::kValue;
  }
  std::vector<std::string> dates;
  if (error == 0) dates.reserve(rows);
  for (uint32_t i = 0; error == 0 && i < rows; ++i) {
    PeriodRecord taken;
    DateTimeRecord at;
    if (!ScalePeriod(period, i, taken) || !AddPeriod(first, taken, at)) {
      error = ferr::kNum;
      break;
    }
    dates.push_back(FormatGenericDate(at));
  }
  if (error != 0) {
    e.SetDepth(base);
    e.Operand(base) = FormulaValue::Empty(error);
    return;
  }
  std::vector<const char*> texts;
  texts.reserve(rows);
  for (const std::string& d : dates) texts.push_back(d.c_str());
  mtx::SetColumnTexts(e, base, texts.data(), texts.size());
}

}  // namespace kelpdex::fn
