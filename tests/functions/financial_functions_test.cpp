#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "functions/function_table.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class FinancialTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // A record of flows, a text behind them, and their dates; ranges run across fields.
    const double flows[] = {-10000, 2750, 4250, 3250, 2750};
    const char* dates[] = {"1992-01-01", "1992-03-01", "1992-10-30", "1993-02-15", "1993-04-01"};
    for (uint16_t c = 0; c < 5; ++c) {
      t_.PutNumber(0, c, flows[c]);
      t_.PutText(0, static_cast<uint16_t>(c + 6), dates[c]);
    }
    t_.PutText(0, 5, "note");
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  double Number(const std::string& formula) {
    t_.Eval(formula);
    const FormulaValue& v = t_.engine->Result();
    EXPECT_EQ(v.errorCode, 0) << formula << " gave " << t_.engine->ResultDisplay();
    return v.number;
  }
  testing::FormulaSheet t_{{{"Fa", kFieldNumber},
                            {"Fb", kFieldNumber},
                            {"Fc", kFieldNumber},
                            {"Fd", kFieldNumber},
                            {"Fe", kFieldNumber},
                            {"Note", kFieldText},
                            {"Ta", kFieldText},
                            {"Tb", kFieldText},
                            {"Tc", kFieldText},
                            {"Td", kFieldText},
                            {"Te", kFieldText}},
                           &BuiltinFunctions()};
};

TEST_F(FinancialTest, AnnuityDefaultsTypesAndZeroRate) {
  EXPECT_NEAR(Number("=pmt(8%/12, 10, 10000)"), -1037.03208935916, 1e-9);
  EXPECT_NEAR(Number("=pmt(8%/12, 10, 10000, 0, 1)"), -1030.16432717798, 1e-9);
  // Any type but 0 pays in advance.
  EXPECT_EQ(Eval("=pmt(8%/12, 10, 10000, 0, 7)"), Eval("=pmt(8%/12, 10, 10000, 0, 1)"));
  // At a rate of exactly 0 the relation is pv + pmt*n + fv = 0.
  EXPECT_EQ(Eval("=pmt(0, 4, 1000, 200)"), "-300");
  EXPECT_EQ(Eval("=fv(0, 4, -300, 1000)"), "200");
  EXPECT_EQ(Eval("=pv(0, 4, -300, 200)"), "1000");
  EXPECT_EQ(Eval("=nper(0, -300, 1000, 200)"), "4");
  EXPECT_NEAR(Number("=nper(1%, -100, 1000,,)"), 10.5886444594232, 1e-12);
  EXPECT_NEAR(Number("=pv(0.08/12, 12*20, 500, , 0)"), -59777.1458511878, 1e-8);
  // A tiny rate gives what the zero-rate limit gives, not the cancellation of (1+r)^n - 1.
  EXPECT_NEAR(Number("=fv(1e-12, 360, -100, 0)"), 36000, 1e-3);
}

TEST_F(FinancialTest, PaymentPartsAddUp) {
  EXPECT_NEAR(Number("=ipmt(0.1/12, 1, 36, 8000,)"), -66.6666666666667, 1e-10);
  EXPECT_NEAR(Number("=ppmt(10%/12, 1, 24, 2000,,)"), -75.6231860083666, 1e-10);
  // Paid in advance, the first payment carries no interest.
  EXPECT_NEAR(Number("=ppmt(1%, 1, 12, 1000, 0, 1)"), Number("=pmt(1%, 12, 1000, 0, 1)"), 1e-12);
  EXPECT_NEAR(Number("=ppmt(1%, 5, 12, 1000) + ipmt(1%, 5, 12, 1000)"),
              Number("=pmt(1%, 12, 1000)"), 1e-12);
  EXPECT_NEAR(Number("=cumIPMT(0.0075, 360, 125000, 13, 24)"), -11135.2321307508, 1e-8);
  EXPECT_NEAR(Number("=cumPRINC(0.0075, 360, 125000, 13, 24)"), -934.107123420876, 1e-9);
  EXPECT_NEAR(Number("=cumPRINC(0.0075, 360, 125000, 1, 360)"), -125000, 1e-6);
  EXPECT_EQ(Eval("=cumIPMT(0.0075, 360, 125000, 13, 361)"), "#NUM!");
  EXPECT_EQ(Eval("=cumIPMT(0.0075, 360, 125000, 0, 12)"), "#NUM!");
  EXPECT_EQ(Eval("=cumPRINC(0.0075, 360, 125000, 24, 13)"), "#NUM!");
  EXPECT_EQ(Eval("=ipmt(1%, 13, 12, 1000)"), "#NUM!");
  EXPECT_EQ(Eval("=ppmt(1%, 0, 12, 1000)"), "#NUM!");
}

TEST_F(FinancialTest, BadRatesAndArgumentsAreErrorValues) {
  // A rate of -100% or below has nothing to compound.
  for (const char* f :
       {"=pmt(-1, 10, 100)", "=pv(-1, 10, 100)", "=fv(-1.5, 10, 100)", "=nper(-1, -10, 100)",
        "=ipmt(-1, 1, 10, 100)", "=npv(-1, 1, 2)", "=xnpv(-1, Fa:Fe, Ta:Te)", "=mirr(Fa:Fe, -1)",
        "=rate(10, -10, 100, 0, 0, -1)"}) {
    EXPECT_EQ(Eval(f), "#NUM!") << f;
  }
  EXPECT_EQ(Eval("=pmt(1%, 0, 100)"), "#NUM!");
  EXPECT_EQ(Eval("=nper(1%, 0, 100)"), "#NUM!");  // no payment ever reaches 0
  EXPECT_EQ(Eval("=nper(0, 0, 100)"), "#NUM!");
  EXPECT_EQ(Eval("=pmt(\"x\", 10, 100)"), "#NUM!");
  EXPECT_EQ(Eval("=pmt(1%, 10, 1/0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=pmt(1%, 10)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=sln(1, 2, 3, 4)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=sln(100, 10, 0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=effect(0, 4)"), "#NUM!");
  EXPECT_EQ(Eval("=nominal(5%, 0.5)"), "#NUM!");
  EXPECT_EQ(Eval("=dollarDe(1.02, 0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=dollarFr(1.02, -16)"), "#NUM!");
}

TEST_F(FinancialTest, ScalarsBroadcastOverArrays) {
  EXPECT_EQ(Eval("=sum(sln({100, 200}, 0, 10))"), "30");
  EXPECT_EQ(Eval("=sum(pmt(0, {2, 4}, 400))"), "-300");
}

TEST_F(FinancialTest, DepreciationSchedules) {
  // The rate of db is used unrounded: 185,912.96, not the 186,083.33 of a three-place rate.
  EXPECT_NEAR(Number("=db(1000000, 100000, 6, 1, 7)"), 185912.959716189, 1e-8);
  EXPECT_NEAR(Number("=db(1000000, 100000, 6, 7, 7)"), 15867.888384391, 1e-8);
  EXPECT_EQ(Eval("=db(1000000, 100000, 6, 7)"), "#NUM!");  // a full first year: 6 periods
  EXPECT_EQ(Eval("=db(1000000, 100000, 6, 1, 13)"), "#NUM!");
  EXPECT_NEAR(Number("=db(1000, 100, 5, 1) + db(1000, 100, 5, 2) + db(1000, 100, 5, 3) + "
                     "db(1000, 100, 5, 4) + db(1000, 100, 5, 5)"),
              900, 1e-9);
  EXPECT_NEAR(Number("=ddb(2400, 300, 3650, 1,)"), 1.31506849315068, 1e-13);
  EXPECT_EQ(Eval("=ddb(2400, 300, 10, 2, 1.5)"), "306");
  // The balance stops at the salvage value: late periods write off what is left, then nothing.
  EXPECT_EQ(Eval("=ddb(1000, 500, 4, 2)"), "0");
  EXPECT_EQ(Eval("=ddb(1000, 400, 4, 2)"), "100");
  EXPECT_EQ(Eval("=ddb(1000, 0, 2, 1, 5)"), "1000");  // a factor past the life takes it all
  EXPECT_EQ(Eval("=ddb(1000, 0, 4, 5)"), "#NUM!");
  EXPECT_NEAR(Number("=syd(30000,7500,10,1)"), 4090.909090909, 1e-8);
  EXPECT_EQ(Eval("=syd(30000,7500,10,11)"), "#NUM!");
  EXPECT_EQ(Eval("=sln(30000, 7500, 10)"), "2250");
}

TEST_F(FinancialTest, CashFlowListsWalkTheirArguments) {
  EXPECT_NEAR(Number("=npv(10%, -10000, 3000, 4200, 6800)"), 1188.44341233522, 1e-9);
  // Ranges and arrays mix with scalars in argument order; text cells and holes are skipped.
  EXPECT_NEAR(Number("=npv(10%, Fa:Note)"), Number("=npv(10%, {-10000, 2750}, 4250, 3250, 2750)"),
              1e-9);
  EXPECT_NEAR(Number("=fvSchedule(1, {0.09, 0.11, 0.1})"), 1.33089, 1e-13);
  EXPECT_EQ(Eval("=fvSchedule(100)"), "#SYNTAX!");
  EXPECT_NEAR(Number("=mirr({-120000, 39000, 30000, 21000, 37000, 46000}, 12%)"), 0.12609413036591,
              1e-13);
  EXPECT_EQ(Eval("=mirr({100, 200}, 5%)"), "#DIV/0!");  // no outflow
  EXPECT_EQ(Eval("=npv(10%, 1, 1/0)"), "#DIV/0!");
}

TEST_F(FinancialTest, RateSearchesAreBoundedAndFailAsNum) {
  EXPECT_NEAR(Number("=irr(-70000, 12000, 15000, 18000, 21000, 26000, 0%)"), 0.08663094803653,
              1e-13);
  // A range alone takes the default guess; a scalar after it is the guess.
  EXPECT_NEAR(Number("=irr(Fa:Fe)"), Number("=irr(Fa:Fe, 0.3)"), 1e-12);
  // No sign change: the interval widens until it spans 100 and the search gives up.
  EXPECT_EQ(Eval("=irr({100, 200, 300}, 0.1)"), "#NUM!");
  EXPECT_EQ(Eval("=irr({-100, -200}, 0.1)"), "#NUM!");
  EXPECT_EQ(Eval("=irr({-100, 50, 60}, 1e300)"), "#NUM!");
  // The search keeps its lower end above 0: a loss is never found.
  EXPECT_EQ(Eval("=irr({-100, 50, 40}, 0.1)"), "#NUM!");
  EXPECT_NEAR(Number("=rate(48, -200, 8000,,,)"), 0.0077014724882, 1e-12);
  EXPECT_NEAR(Number("=rate(10, 0, -100, 200)"), std::pow(2.0, 0.1) - 1, 1e-13);
  EXPECT_EQ(Eval("=rate(10, 100, 100, 100)"), "#NUM!");  // no rate pays both ways
  // The entry's example prints 2086.64760205153, a slip in the eleventh digit.
  EXPECT_NEAR(Number("=xnpv(0.09, Fa:Fe, Ta:Te)"), 2086.647602031535, 1e-9);
  EXPECT_NEAR(Number("=xirr(Fa:Fe, Ta:Te)"), 0.37336253351883, 1e-12);
  EXPECT_EQ(Eval("=xnpv(0.09, Fa:Fe, Ta:Td)"), "#NUM!");  // lengths differ
  EXPECT_EQ(Eval("=xnpv(0.09, {1, 2}, {\"1992-01-01\", \"1991-12-31\"})"), "#NUM!");
  EXPECT_EQ(Eval("=xnpv(0.09, {1, 2}, {\"1992-01-01\", \"yesterday\"})"), "#VALUE!");
  EXPECT_EQ(Eval("=xnpv(0.09, {1, 2}, {\"1992-01-01\", 5})"), "#VALUE!");
}

TEST_F(FinancialTest, RatesAndQuotes) {
  EXPECT_NEAR(Number("=effect(5.25%, 4)"), 0.05354266737076, 1e-14);
  EXPECT_NEAR(Number("=nominal(5.3543%, 4)"), 0.05250031986836, 1e-14);
  EXPECT_NEAR(Number("=nominal(effect(7%, 12), 12)"), 0.07, 1e-15);
  EXPECT_NEAR(Number("=dollarDe(1.02, 16)"), 1.125, 1e-13);
  EXPECT_NEAR(Number("=dollarFr(1.125, 16)"), 1.02, 1e-13);
  EXPECT_NEAR(Number("=dollarDe(-3.5, 8)"), -3.625, 1e-13);
  EXPECT_NEAR(Number("=dollarFr(dollarDe(7.123, 200), 200)"), 7.123, 1e-12);
}

}  // namespace
}  // namespace kelpdex
