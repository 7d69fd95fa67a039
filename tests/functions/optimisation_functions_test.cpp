#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/cell_record.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class Optimisation : public ::testing::Test {
 protected:
  testing::FormulaSheet sheet{{{"F", kFieldNumber}, {"X", kFieldNumber}, {"Y", kFieldNumber}},
                              &BuiltinFunctions()};

  // The numbers of the result in row-major order; empty with `error` set for an error.
  std::vector<double> Eval(const std::string& formula, uint8_t* error = nullptr) {
    sheet.engine->EvaluateFormula("=" + formula, 0, 0);
    const FormulaValue& v = sheet.engine->Result();
    if (error != nullptr) *error = v.errorCode;
    if (v.errorCode != 0) return {};
    if (v.kind == kind::kNumber) return {v.number};
    std::vector<double> out;
    for (uint32_t r = 0; v.kind == kind::kArray && r <= v.row2; ++r) {
      for (uint16_t c = 0; c <= v.column2; ++c) {
        const CellRecord* cell = sheet.engine->TopArray().GetCell(r, c);
        out.push_back(cell == nullptr ? NAN : cell::Number(cell));
      }
    }
    return out;
  }
  uint8_t ErrorOf(const std::string& formula) {
    uint8_t error = 0;
    Eval(formula, &error);
    return error;
  }
  void ExpectNear(const std::vector<double>& got, const std::vector<double>& want, double tol) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << "at " << i;
  }
  void PutFormula(uint32_t row, uint16_t column, const std::string& text) {
    std::vector<uint8_t> record(cell::FormulaSize(text.size(), false, 0));
    cell::EncodeFormula(record.data(), row, column, text);
    sheet.sheet->cells.PutCell(record.data());
  }
};

TEST_F(Optimisation, LinearProgramsAndTheirOptima) {
  const std::string lp = "LProg({2, 1, 1; 1, 1, 3}, {1; 0}, {5; 10}, {4; 2; 2}, ";
  // The objective is parallel to the first row: two optimum vertices.
  ExpectNear(Eval(lp + "1,,)"), {1, 0, 3}, 1e-9);
  ExpectNear(Eval(lp + "0,,)"), {2}, 0);
  ExpectNear(Eval(lp + "2,,)"), {0, 2.5, 2.5}, 1e-9);
  EXPECT_EQ(ErrorOf(lp + "3,,)"), ferr::kNum);
  // x1 <= 1 with x1 >= 2 cannot hold; nothing bounds x1 + x2 from above.
  EXPECT_EQ(ErrorOf("LProg({1; 1}, {1; -1}, {1; 2}, {1}, 1)"), ferr::kNull);
  EXPECT_EQ(ErrorOf("LProg({1, -1}, {1}, {1}, {1; 1}, 1)"), ferr::kNA);
  EXPECT_EQ(ErrorOf("LProg({1, -1}, {2}, {1}, {1; 1}, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("LProg({1, -1}, {1; 1}, {1}, {1; 1}, 1)"), ferr::kValue);
}

TEST_F(Optimisation, IntegerAndBinaryPrograms) {
  ExpectNear(
      Eval("LProgInt({2.5, 1.5, 1; 1, 1.5, 3}, {1; 0}, {15; 10}, {1; 1; 2}, {1; 0; 1}, 1,,)"),
      {4, 0, 2}, 1e-9);
  // max x1 + x2 with 2 x1 + 2 x2 <= 3: the relaxation is 1.5, whole numbers give 1.
  std::vector<double> x = Eval("LProgBin({2, 2}, {1}, {3}, {1; 1}, {1; 1}, 1)");
  ASSERT_EQ(x.size(), 2u);
  EXPECT_DOUBLE_EQ(x[0] + x[1], 1);
  ExpectNear(Eval("LProgBin({1, 1}, {1}, {5}, {1; 1}, {1; 1}, 1)"), {1, 1}, 1e-9);
  EXPECT_EQ(ErrorOf("LProgInt({2, 0}, {0}, {1}, {1; 0}, {1; 0}, 1)"), ferr::kNull);
}

TEST_F(Optimisation, QuadraticPrograms) {
  const std::string qp = "QProg({1, 2; 1, 1}, {1; 1}, {10; 9}, {10; 25}, ";
  ExpectNear(Eval(qp + "{10, 2; 2, 1}, 1,)"), {0, 5}, 1e-9);
  ExpectNear(Eval(qp + "{10, 2; 2, 1}, 0)"), {1}, 0);
  EXPECT_EQ(ErrorOf(qp + "{10, 2; 2, 1}, 2)"), ferr::kNum);
  // Only the symmetric part of C counts: {10, 4; 0, 1} is the same objective.
  ExpectNear(Eval(qp + "{10, 4; 0, 1}, 1)"), {0, 5}, 1e-9);
  // Loose constraints leave the free maximum: 2*C*x = p.
  ExpectNear(Eval("QProg({1, 1}, {1}, {100}, {4; 6}, {1, 0; 0, 3}, 1)"), {2, 1}, 1e-9);
  // An equation and a >= row: max -(x1^2 + x2^2) with x1 + x2 = 2 and x1 >= 1.5.
  ExpectNear(Eval("QProg({1, 1; 1, 0}, {0; -1}, {2; 1.5}, {0; 0}, {1, 0; 0, 1}, 1)"), {1.5, 0.5},
             1e-9);
  // The equation again, once more as two rows that say the same.
  ExpectNear(Eval("QProg({1, 1; 2, 2}, {0; 0}, {2; 4}, {0; 0}, {1, 0; 0, 1}, 1)"), {1, 1}, 1e-9);
  // The free maximum at x1 = -1 is cut off by x >= 0, so the multiplier of that bound matters.
  ExpectNear(Eval("QProg({1, 1}, {1}, {10}, {-2; 4}, {1, 0; 0, 1}, 1)"), {0, 2}, 1e-9);
  EXPECT_EQ(ErrorOf("QProg({1, 1; 1, 1}, {1; -1}, {1; 2}, {1; 1}, {1, 0; 0, 1}, 1)"), ferr::kNull);
  EXPECT_EQ(ErrorOf(qp + "{1, 0; 0, -1}, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf(qp + "{1, 0; 0, 0}, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf(qp + "{1, 0, 0; 0, 1, 0; 0, 0, 1}, 1)"), ferr::kValue);
}

TEST_F(Optimisation, RootAndMinimaOfACellsFormula) {
  PutFormula(0, 0, "=X*X-2");
  sheet.PutNumber(0, 1, 7);
  std::vector<double> r = Eval("root(F, X, 0, 2)");
  ASSERT_EQ(r.size(), 1u);
  EXPECT_NEAR(r[0], std::sqrt(2.0), 1e-14);
  // The variable cell gets its number back.
  EXPECT_EQ(cell::Number(sheet.sheet->cells.GetCell(0, 1)), 7);
  EXPECT_EQ(ErrorOf("root(F, X, 2, 3)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("root(F, X, 2, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("root(X, X, 0, 2)"), ferr::kRef);
  EXPECT_EQ(ErrorOf("root(F, F, 0, 2)"), ferr::kRef);

  PutFormula(0, 0, "=(X-1)^2+(Y+2)^2+3");
  sheet.PutNumber(0, 2, 5);
  ExpectNear(Eval("minSimplex(F, X:Y, {1, 1}, 0.5, 1e-20,, 1)"), {1, -2}, 1e-6);
  ExpectNear(Eval("minSimplex(F, X:Y, {1, 1}, 0.5, 1e-20,, 2)"), {3}, 1e-10);
  // Only the flagged variable moves.
  ExpectNear(Eval("minSimplex(F, X:Y, {0, 1}, 0.5, 1e-20,, 1)"), {7, -2}, 1e-6);
  EXPECT_EQ(ErrorOf("minSimplex(F, X:Y, {1, 1}, 0.5, 1e-20, 5, 1)"), ferr::kNum);
  std::vector<double> best = Eval("minMC(F, X:Y, {1, 1}, -5, 5, 2000)");
  ASSERT_EQ(best.size(), 2u);
  EXPECT_NEAR(best[0], 1, 0.5);
  EXPECT_NEAR(best[1], -2, 0.5);
  EXPECT_EQ(cell::Number(sheet.sheet->cells.GetCell(0, 2)), 5);
}

TEST_F(Optimisation, PolynomialRegression) {
  const std::string data = "{1; 2; 3; 4; 5}, {1.1; 1.2; 1.3; 1.4; 1.5}, {0.2; 0.2; 0.2; 0.2; 0.23}";
  std::vector<double> x = Eval("polyReg(" + data + ", 4, 1)");
  ASSERT_EQ(x.size(), 4u);
  // The constant's coefficient is sum(g y) / sqrt(sum(g)) with the weights g = 1 / sy^2.
  double g5 = 1 / (0.23 * 0.23);
  EXPECT_NEAR(x[0], (25 * (1.1 + 1.2 + 1.3 + 1.4) + g5 * 1.5) / std::sqrt(100 + g5), 1e-12);
  EXPECT_NEAR(x[1], 1.4979, 1e-4);
  EXPECT_NEAR(x[2], 0, 1e-12);
  EXPECT_NEAR(x[3], 0, 1e-12);
  // A straight line fits exactly from degree 1 on: chi2 falls to 0 there.
  std::vector<double> chi2 = Eval("polyReg(" + data + ", 4, 3)");
  ASSERT_EQ(chi2.size(), 4u);
  EXPECT_GT(chi2[0], 1);
  EXPECT_NEAR(chi2[1], 0, 1e-20);
  std::vector<double> b = Eval("polyReg(" + data + ", 2, 2)");
  ASSERT_EQ(b.size(), 4u);
  EXPECT_EQ(b[1], 0);  // lower triangular
  EXPECT_EQ(ErrorOf("polyReg(" + data + ", 6, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("polyReg({1; 1; 1}, {1; 2; 3}, {1; 1; 1}, 2, 1)"), ferr::kNum);
}

TEST_F(Optimisation, FittedValuesAndTheirLimits) {
  const std::string line = "{1; 2; 3; 4; 5}, {1.1; 1.2; 1.3; 1.4; 1.5}, {0.2; 0.2; 0.2; 0.2; 0.23}";
  const std::string fit =
      "polyReg(" + line + ", 4, 1), polyReg(" + line + ", 4, 2), polyReg(" + line + ", 4, 3), 5, ";
  // A straight line through the points: extrapolated exactly, with no scatter to widen it.
  ExpectNear(Eval("polyPoints(" + fit + "2, {0; 6}, 0.95)"), {1.0, 0, 1.6, 0}, 1e-12);
  // As many terms as points leave no degree of freedom for the scatter.
  std::string full = fit;
  for (size_t at = full.find(", 4, "); at != std::string::npos; at = full.find(", 4, ", at))
    full.replace(at, 5, ", 5, ");
  EXPECT_EQ(ErrorOf("polyPoints(" + full + "5, {0}, 0.95)"), ferr::kDivZero);
  EXPECT_EQ(ErrorOf("polyPoints(" + fit + "6, {0}, 0.95)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("polyPoints(" + fit + "2, {0}, 1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("polyPoints({1}, {1}, {0}, 5, 2, {0}, 0.5)"), ferr::kValue);

  // Scattered points with equal weights: the textbook band of a straight line,
  // t * s * sqrt(1/N + (t0 - mean)^2 / Sxx), with t of 3 degrees of freedom at 95%.
  const std::string data = "{0; 1; 2; 3; 4}, {1; 3; 2; 5; 4}, {1; 1; 1; 1; 1}";
  const std::string scattered = "polyReg(" + data + ", 2, 1), polyReg(" + data +
                                ", 2, 2), polyReg(" + data + ", 2, 3), 5, 2, {7}, 0.95)";
  std::vector<double> band = Eval("polyPoints(" + scattered);
  ASSERT_EQ(band.size(), 2u);
  const double slope = 0.8, intercept = 1.4;  // least squares of the five points
  double ssr = 0;
  const double ys[] = {1, 3, 2, 5, 4};
  for (int i = 0; i < 5; ++i) ssr += std::pow(ys[i] - intercept - slope * i, 2);
  const double t975 = 3.182446305284263;
  EXPECT_NEAR(band[0], intercept + 7 * slope, 1e-12);
  EXPECT_NEAR(band[1], t975 * std::sqrt(ssr / 3) * std::sqrt(1.0 / 5 + 25.0 / 10), 1e-9);

  // Points on a line come back unchanged, and the k rows beyond each end continue the line.
  std::vector<double> series = Eval("timeSeries({2; 5; 8; 11; 14; 17}, 1, 2, 0.9)");
  ASSERT_EQ(series.size(), 20u);
  for (int row = 0; row < 10; ++row) {
    EXPECT_NEAR(series[2 * row], 2 + 3 * (row - 2), 1e-12) << "row " << row;
    EXPECT_NEAR(series[2 * row + 1], 0, 1e-12) << "row " << row;
  }
  // A straight line through 2k + 1 points of a parabola is, at its centre, their mean; the
  // limit there is t * s / sqrt(2k + 1) with 2k - 1 degrees of freedom.
  std::vector<double> smooth = Eval("timeSeries({1; 4; 9; 16; 25; 36; 49}, 1, 1, 0.95)");
  ASSERT_EQ(smooth.size(), 18u);
  const double t975of1 = 12.706204736174698;
  for (int c = 2; c <= 6; ++c) {
    double mean = ((c - 1) * (c - 1) + c * c + (c + 1) * (c + 1)) / 3.0;
    // The residuals of a line through three consecutive squares are 1/3, -2/3 and 1/3.
    double s = std::sqrt(2.0 / 3);
    EXPECT_NEAR(smooth[2 * c], mean, 1e-12) << "centre " << c;
    EXPECT_NEAR(smooth[2 * c + 1], t975of1 * s / std::sqrt(3.0), 1e-8) << "centre " << c;
  }
  EXPECT_EQ(ErrorOf("timeSeries({1; 2; 3; 4; 5}, 2, 1, 0.9)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("timeSeries({1; 2; 3; 4}, 1, 2, 0.9)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("timeSeries({1; 2; 3; 4}, 1, 1, 0)"), ferr::kNum);
}

}  // namespace
}  // namespace kelpdex
