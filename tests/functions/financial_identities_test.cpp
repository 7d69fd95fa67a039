// The financial functions against relations written out here independently of their code: the
// annuity identities, present values summed term by term, rates of return checked by the value
// they zero, and depreciation schedules that add up to cost less salvage. A few thousand argument
// sets are drawn with a fixed seed.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

std::string Num(double x) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.17g", x);
  return buffer;
}

std::string Call(const char* name, const std::vector<double>& args) {
  std::string f = std::string("=") + name + "(";
  for (size_t i = 0; i < args.size(); ++i) f += (i == 0 ? "" : ", ") + Num(args[i]);
  return f + ")";
}

std::string List(const std::vector<double>& values) {
  std::string s = "{";
  for (size_t i = 0; i < values.size(); ++i) s += (i == 0 ? "" : ", ") + Num(values[i]);
  return s + "}";
}

class FinancialIdentities : public ::testing::Test {
 protected:
  // The formula's number; a failure is reported (a few at most) and NaN returned.
  double Value(const std::string& formula) {
    t_.engine->EvaluateFormula(formula, 0, 0);
    const FormulaValue& v = t_.engine->Result();
    if (v.errorCode == 0 && v.kind == kind::kNumber) return v.number;
    if (++reported_ <= 20) ADD_FAILURE() << formula << " gave " << t_.engine->ResultDisplay();
    return NAN;
  }
  // got against want to a relative 1e-9, or absolutely against `scale` when want is near 0.
  void Expect(const std::string& what, double got, double want, double scale = 1) {
    ++checks_;
    if (std::fabs(got - want) <= 1e-9 * std::fmax(std::fabs(want), scale)) return;
    if (++reported_ <= 20) {
      ADD_FAILURE() << what << "\n  got " << Num(got) << ", want " << Num(want);
    }
  }
  double Uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng_); }
  // A whole number in [lo, hi], as a double since every argument is one.
  double Whole(double lo, double hi) {
    return static_cast<double>(std::uniform_int_distribution<int64_t>(
        static_cast<int64_t>(lo), static_cast<int64_t>(hi))(rng_));
  }

  testing::FormulaSheet t_{{}, &BuiltinFunctions()};
  std::mt19937_64 rng_{20240613};
  int checks_ = 0;
  int reported_ = 0;
};

TEST_F(FinancialIdentities, AnnuityRelations) {
  for (int k = 0; k < 1500; ++k) {
    double r = Whole(0, 9) == 0 ? 0 : Uniform(-0.05, 0.2);
    double n = Whole(1, 480);
    double pv = Uniform(-1e6, 1e6), fv = Uniform(-1e5, 1e5);
    double type = Whole(0, 1);
    double q = std::pow(1 + r, n);
    // The relation itself, written out: pv q + pmt (1 + r type)(q - 1)/r + fv = 0.
    double annuity = r == 0 ? n : (q - 1) / r;
    double scale = std::fabs(pv) + std::fabs(fv);
    double pmt = Value(Call("pmt", {r, n, pv, fv, type}));
    // Each value is good to the size of the terms it is made of: pv comes from the others
    // divided by (1+r)^n, which a falling rate over a long time makes tiny.
    double terms = std::fabs(pv) * q + std::fabs(pmt * (1 + r * type) * annuity) + std::fabs(fv);
    Expect("pmt in the relation", pv * q + pmt * (1 + r * type) * annuity + fv, 0, terms);
    Expect("pv of pmt", Value(Call("pv", {r, n, pmt, fv, type})), pv, terms / q);
    Expect("fv of pmt", Value(Call("fv", {r, n, pmt, pv, type})), fv, terms);
    // nper is ill-conditioned where (1+r)^n is large: a last-bit change of pmt moves it a lot.
    if (std::fabs(pmt) > 1e-6 * scale && q < 1e4 && q > 1e-4) {
      Expect("nper of pmt", Value(Call("nper", {r, pmt, pv, fv, type})), n, 1);
    }
    // Payments in arrears: the principal parts repay the loan down to -fv, and each payment
    // splits into its two parts.
    double arrears = Value(Call("pmt", {r, n, pv, fv, 0}));
    double p = Whole(1, n);
    Expect("ipmt + ppmt",
           Value(Call("ipmt", {r, p, n, pv, fv})) + Value(Call("ppmt", {r, p, n, pv, fv, 0})),
           arrears, scale);
    if (fv == 0 || k % 2 == 0) {
      double first = Whole(1, n), last = Whole(first, n);
      double principal = Value(Call("cumPRINC", {r, n, pv, first, last}));
      double interest = Value(Call("cumIPMT", {r, n, pv, first, last}));
      double plain = Value(Call("pmt", {r, n, pv}));
      Expect("cumIPMT + cumPRINC", principal + interest, plain * (last - first + 1), scale);
      if (first == 1 && last == n) Expect("cumPRINC of all", principal, -pv, scale);
    }
  }
  EXPECT_GT(checks_, 7000);
}

TEST_F(FinancialIdentities, RateRecoversTheRateOfAPayment) {
  for (int k = 0; k < 400; ++k) {
    double r = Uniform(0.0005, 0.05), n = Whole(6, 360);
    double pv = Uniform(1000, 1e6), fv = Whole(0, 1) == 0 ? 0 : -Uniform(0, pv);
    double type = Whole(0, 1);
    double pmt = Value(Call("pmt", {r, n, pv, fv, type}));
    Expect("rate of pmt", Value(Call("rate", {n, pmt, pv, fv, type})), r, 1e-4);
  }
  // A zero rate taken as 0 by the limit, and the conversions between quotes.
  for (int k = 0; k < 300; ++k) {
    double nominal = Uniform(0.001, 0.5);
    double m = Whole(1, 365);
    double effect = std::pow(1 + nominal / m, m) - 1;
    Expect("effect", Value(Call("effect", {nominal, m})), effect);
    Expect("nominal", Value(Call("nominal", {effect, m})), nominal);
  }
}

TEST_F(FinancialIdentities, CashFlowsAndTheirRatesOfReturn) {
  for (int k = 0; k < 600; ++k) {
    int count = static_cast<int>(Whole(2, 20));
    double r0 = Uniform(0.001, 0.6);
    std::vector<double> flows(static_cast<size_t>(count));
    double value = 0;
    for (int i = 1; i < count; ++i) {
      flows[static_cast<size_t>(i)] = Uniform(0, 5000);
      value += flows[static_cast<size_t>(i)] / std::pow(1 + r0, i);
    }
    // One outlay that the later inflows pay back exactly at r0: the only root of the value.
    flows[0] = -value;
    Expect("irr", Value("=irr(" + List(flows) + ", " + Num(Uniform(0, 0.5)) + ")"), r0);

    double rate = Uniform(-0.5, 1);
    double direct = 0;
    for (int i = 0; i < count; ++i)
      direct += flows[static_cast<size_t>(i)] / std::pow(1 + rate, i + 1);
    Expect("npv", Value("=npv(" + Num(rate) + ", " + List(flows) + ")"), direct, value);

    // The same flows on calendar dates: days apart, the first date earliest.
    std::string dates = "{";
    double xvalue = 0;
    std::vector<double> years;
    int day = 0;
    for (int i = 0; i < count; ++i) {
      day += i == 0 ? 0 : static_cast<int>(Whole(1, 400));
      // The civil calendar of the standard library, so that the test does not lean on the
      // engine's own.
      std::chrono::year_month_day ymd{
          std::chrono::sys_days{std::chrono::year{2001} / std::chrono::January / 1} +
          std::chrono::days{day}};
      char date[16];
      std::snprintf(date, sizeof date, "%04d-%02u-%02u", static_cast<int>(ymd.year()),
                    static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()));
      dates += (i == 0 ? "\"" : ", \"") + std::string(date) + "\"";
      xvalue += flows[static_cast<size_t>(i)] / std::pow(1 + rate, day / 365.0);
      years.push_back(day / 365.0);
    }
    dates += "}";
    Expect("xnpv", Value("=xnpv(" + Num(rate) + ", " + List(flows) + ", " + dates + ")"), xvalue,
           value);
    // An outlay that the same inflows pay back exactly at the yearly rate r0.
    flows[0] = 0;
    for (size_t i = 1; i < flows.size(); ++i) flows[0] -= flows[i] / std::pow(1 + r0, years[i]);
    Expect("xirr", Value("=xirr(" + List(flows) + ", " + dates + ")"), r0);
  }
}

TEST_F(FinancialIdentities, DepreciationSchedulesWriteOffCostLessSalvage) {
  for (int k = 0; k < 300; ++k) {
    double cost = Uniform(100, 1e6), salvage = Uniform(1, cost * 0.9);
    int life = static_cast<int>(Whole(1, 40));
    double sln = 0, syd = 0, db = 0;
    for (int p = 1; p <= life; ++p) {
      sln += Value(Call("sln", {cost, salvage, double(life)}));
      syd += Value(Call("syd", {cost, salvage, double(life), double(p)}));
      db += Value(Call("db", {cost, salvage, double(life), double(p)}));
    }
    Expect("sln schedule", sln, cost - salvage, cost);
    Expect("syd schedule", syd, cost - salvage, cost);
    Expect("db schedule", db, cost - salvage, cost);
    // The double-declining balance never goes below the salvage value, and reaches it only by
    // stopping there.
    double ddb = 0;
    for (int p = 1; p <= life; ++p)
      ddb += Value(Call("ddb", {cost, salvage, double(life), double(p)}));
    EXPECT_LE(ddb, cost - salvage + 1e-9 * cost) << cost << " " << salvage << " " << life;
  }
}

}  // namespace
}  // namespace kelpdex
