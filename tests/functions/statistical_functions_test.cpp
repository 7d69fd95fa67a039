#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "functions/numeric/beta.h"
#include "functions/numeric/gamma.h"
#include "functions/numeric/normal.h"
#include "store/cell_record.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class StatisticalTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // One record: a number, a text, a text that reads as a number, nothing, a number.
    t_.PutNumber(0, 0, 2);
    t_.PutText(0, 1, "abc");
    t_.PutText(0, 2, "4");
    t_.PutNumber(0, 4, 6);
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  // The cells of a one-column array result, as shown.
  std::string Column(const std::string& formula) {
    t_.engine->EvaluateFormula(formula, 0, 0);
    const FormulaValue& v = t_.engine->Result();
    if (v.kind != kind::kArray) return t_.engine->ResultDisplay();
    std::string shown;
    for (uint32_t r = 0; r <= v.row2; ++r) {
      const CellRecord* c = t_.engine->TopArray().GetCell(r, 0);
      char buffer[32];
      std::snprintf(buffer, sizeof buffer, "%.15g", c != nullptr ? cell::Number(c) : -1.0);
      shown += (r == 0 ? "" : ";") + std::string(buffer);
    }
    return shown;
  }
  testing::FormulaSheet t_{{{"A", kFieldNumber},
                            {"B", kFieldText},
                            {"C", kFieldText},
                            {"D", kFieldNumber},
                            {"E", kFieldNumber}},
                           &BuiltinFunctions()};
};

struct Case {
  const char* formula;
  const char* shown;
};

TEST_F(StatisticalTest, AggregatesTakeCellsByTheirSuffix) {
  const Case cases[] = {
      // Without the suffix a text counts when it reads as a number; with it every text is 0.
      {"=average(A:E)", "4"},
      {"=averageA(A:E)", "2"},
      {"=count(A:E)", "3"},
      {"=countA(A:E)", "4"},
      {"=maxA(A:E, -1)", "6"},
      {"=minA(A:E)", "0"},
      {"=min(A:E)", "2"},
      {"=count({1, 3, \"abc\"}, {\"4.5\", 5.6,,})", "4"},
      {"=countA({1, 3, \"abc\"}, {\"4.5\", 5.6,,})", "5"},
      {"=count(1/0, 2, \"x\")", "1"},
      {"=average({1, #N/A!}, 1/0)", "#N/A!"},
      {"=average(\"abc\")", "#NUM!"},
      {"=average({\"abc\"})", "#DIV/0!"},
      {"=max({\"abc\"})", "0"},
      {"=var(1)", "#DIV/0!"},
      {"=varP(1)", "0"},
      {"=stdevA({true, false})", "0.70710678118655"},
      {"=geoMean(1, -1)", "#NUM!"},
      {"=harMean(2, 0)", "#NUM!"},
      {"=kurt(1, 2, 3)", "#DIV/0!"},
      {"=skew(1, 1, 1)", "#DIV/0!"},
      {"=average()", "#SYNTAX!"},
  };
  for (const Case& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
}

TEST_F(StatisticalTest, TwoArrayFunctionsCheckTheirShapes) {
  const Case cases[] = {
      {"=correl({1, 2, 3}, {1, 2})", "#N/A!"},
      {"=chiTest({1, 2}, {1; 2})", "#N/A!"},
      {"=correl(\"abc\", {1})", "#VALUE!"},
      {"=slope({1, 2}, {3, 3})", "#DIV/0!"},
      {"=correl({1, 2, 3}, {5, 5, 5})", "#DIV/0!"},
      // A position where either array holds no number drops out of both.
      {"=covar({1, \"a\", 3}, {2, 9, 6})", "2"},
      {"=prob({1, 2}, {0.5, 0.6}, 1)", "#NUM!"},
      {"=prob({1, 2, 3}, {0.25, 0.25, 0.5}, 2, 3)", "0.75"},
      {"=tTest({1, 2, 3}, {2, 3, 4}, 3)", "#NUM!"},
      {"=fTest({1, 2}, {3})", "#DIV/0!"},
      {"=zTest({1, 2, 3}, 2, 0)", "#DIV/0!"},
  };
  for (const Case& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
}

TEST_F(StatisticalTest, RanksAndFitsGiveColumnsAndTheirErrors) {
  // Bins in any order; each count stands at its own bin.
  EXPECT_EQ(Column("=frequency({1, 2, 3, 4, 5}, {4, 2})"), "2;2;1");
  EXPECT_EQ(Column("=linEst({1, 2, 3}, , 0)"), "0;1");
  EXPECT_EQ(Column("=trend({2, 4, 6})"), "2;4;6");
  EXPECT_EQ(Column("=trend({2, 4, 6}, {1, 2, 3}, {10; 11})"), "20;22");
  const Case cases[] = {
      {"=mode({1, 2, 3})", "#N/A!"},
      {"=mode({2, 1, 1, 2})", "2"},
      {"=rank(5, {1, 2})", "#N/A!"},
      {"=rank(2, {1, 2, 2, 3})", "2"},
      {"=percentRank({1, 2, 3}, 4)", "#N/A!"},
      {"=percentRank({1, 2, 3}, 2.5, 1)", "0.7"},
      {"=large({1, 2, 3}, 4)", "#NUM!"},
      {"=percentile({1, 2}, 1.5)", "#NUM!"},
      {"=quartile({1, 2, 3, 4, 5}, 3)", "4"},
      {"=trimMean({1, 2, 3, 100}, 0.5)", "2.5"},
      {"=median({4, 1, 3})", "3"},
  };
  for (const Case& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
}

TEST_F(StatisticalTest, DistributionsCheckParametersAndBroadcast) {
  const Case cases[] = {
      {"=normDist(1, 0, 0, TRUE)", "#NUM!"},
      {"=normsInv(0)", "#NUM!"},
      {"=normsInv(1)", "#NUM!"},
      {"=chiDist(-1, 2)", "#NUM!"},
      {"=chiDist(1, 0.5)", "#NUM!"},
      {"=chiInv(0, 3)", "0"},
      {"=tInv(0.5, 3)", "0"},
      {"=binomDist(11, 10, 0.5, 1)", "#NUM!"},
      {"=hypGeomDist(5, 4, 8, 20)", "#NUM!"},
      {"=poisson(3, 0, TRUE)", "1"},
      {"=permut(3, 4)", "#NUM!"},
      {"=fisher(1)", "#NUM!"},
      {"=normsDist(1, 2)", "#SYNTAX!"},
      {"=sum(normsDist({-1.5, 1.5}))", "1"},
      {"=fDistP(2, 3, 4) = fDist(2, 3, 4)", "1"},
      // The gamma and beta families are declared, not built.
      {"=gammaLn(2)", "#IMPL!"},
      {"=betaDist(0.5, 2, 3)", "#IMPL!"},
      {"=negBinomDist(1, 2, 0.5)", "#IMPL!"},
  };
  for (const Case& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
  // Each position of an array argument gets its own result.
  EXPECT_EQ(Column("=chiDist({0; 1E308}, 3)"), "0;1");
}

double Relative(double got, double want) {
  return std::fabs(got - want) / std::fabs(want);
}

TEST(NumericSpecialFunctions, TailsKeepTheirRelativeAccuracy) {
  // e^-x passes the rounding of x on as x times its relative error, so the bound grows with x.
  for (double x = 0.01; x < 700; x *= 1.7) {
    // Q(1/2, x) = erfc(sqrt(x)) and P(1, x) = 1 - e^-x, each deep into its small tail.
    double lower = 0, upper = 0;
    ASSERT_TRUE(numeric::IncompleteGamma(0.5, x, lower, upper));
    EXPECT_LT(Relative(upper, std::erfc(std::sqrt(x))), 1e-15 * (20 + x)) << x;
    ASSERT_TRUE(numeric::IncompleteGamma(1, x, lower, upper));
    EXPECT_LT(Relative(lower, -std::expm1(-x)), 1e-13) << x;
  }
  for (double y = 1e-300; y < 0.5; y *= 1e7) {
    // I_x(a, 1) = x^a, and the complement of I_x(1, b) is y^b.
    double lower = 0, upper = 0;
    ASSERT_TRUE(numeric::IncompleteBeta(2.5, 1, 1 - y, y, lower, upper));
    EXPECT_LT(Relative(lower, std::pow(1 - y, 2.5)), 1e-13) << y;
    ASSERT_TRUE(numeric::IncompleteBeta(1, 0.75, 1 - y, y, lower, upper));
    EXPECT_LT(Relative(upper, std::pow(y, 0.75)), 1e-12) << y;
  }
  // Large counts: Stirling's corrections against the plain log-gamma where it is still exact.
  EXPECT_LT(Relative(numeric::BinomialTerm(50, 100, 0.5, 0.5),
                     std::exp(std::lgamma(101) - 2 * std::lgamma(51) - 100 * std::log(2.0))),
            1e-12);
  EXPECT_LT(Relative(numeric::PoissonTerm(1e6, 1e6), 1 / std::sqrt(2 * M_PI * 1e6)), 1e-6);
}

TEST(NumericSpecialFunctions, NormalQuantileInvertsBothTails) {
  // Above 0 the rounding of p itself decides the digits, so the lower tail is walked; the upper
  // one is reached through an exact complement below.
  for (double z = -37; z < 0.1; z += 0.37) {
    double p = numeric::NormalCdf(z);
    EXPECT_LT(std::fabs(numeric::NormalQuantile(p) - z), 1e-13 * std::fmax(1, std::fabs(z))) << z;
  }
  // 1 - 2^-50 is exact, so the upper tail must give the lower one's quantile to the last digits.
  double tiny = std::ldexp(1.0, -50);
  EXPECT_LT(Relative(numeric::NormalQuantile(1 - tiny), -numeric::NormalQuantile(tiny)), 1e-14);
  EXPECT_TRUE(std::isnan(numeric::NormalQuantile(0)));
}

}  // namespace
}  // namespace kelpdex
