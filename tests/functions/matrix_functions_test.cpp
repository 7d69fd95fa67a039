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

using Rows = std::vector<std::vector<double>>;

class MatrixFunctions : public ::testing::Test {
 protected:
  testing::FormulaSheet sheet{{{"A", kFieldNumber}, {"B", kFieldNumber}, {"C", kFieldNumber}},
                              &BuiltinFunctions()};

  // The result as rows of numbers; a scalar is 1 x 1, an error leaves `error` set and no rows.
  Rows Eval(const std::string& formula, uint8_t* error = nullptr) {
    sheet.engine->EvaluateFormula("=" + formula, 0, 0);
    const FormulaValue& v = sheet.engine->Result();
    if (error != nullptr) *error = v.errorCode;
    if (v.errorCode != 0) return {};
    if (v.kind == kind::kNumber) return {{v.number}};
    Rows rows;
    if (v.kind != kind::kArray) return rows;
    for (uint32_t r = 0; r <= v.row2; ++r) {
      rows.emplace_back();
      for (uint16_t c = 0; c <= v.column2; ++c) {
        const CellRecord* cell = sheet.engine->TopArray().GetCell(r, c);
        rows.back().push_back(cell == nullptr || cell::ErrorNibble(cell) != 0 ? NAN
                                                                              : cell::Number(cell));
      }
    }
    return rows;
  }
  uint8_t ErrorOf(const std::string& formula) {
    uint8_t error = 0;
    Eval(formula, &error);
    return error;
  }
  void ExpectNear(const Rows& got, const Rows& want, double tolerance = 1e-12) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t r = 0; r < want.size(); ++r) {
      ASSERT_EQ(got[r].size(), want[r].size()) << "row " << r;
      for (size_t c = 0; c < want[r].size(); ++c) {
        EXPECT_NEAR(got[r][c], want[r][c], tolerance * (1 + std::fabs(want[r][c])))
            << "at " << r << ", " << c;
      }
    }
  }
};

TEST_F(MatrixFunctions, GaussSolvesFactorsAndInverts) {
  const std::string a = "{2, -1, 3; 1, 3, 1; 4, 1, 1}";
  ExpectNear(Eval("mtxGauss(" + a + ", {6; 8; 2},,,1)"), {{-0.75}, {1.875}, {3.125}});
  ExpectNear(Eval("mtxGauss(" + a + ", {6; 8; 2},,,6)"), {{-32}});
  // The last argument selects the result even when the optional ones are left out.
  ExpectNear(Eval("mtxGauss(" + a + ", {6; 8; 2}, 1)"), {{-0.75}, {1.875}, {3.125}});
  // L*U reproduces P*A, and the inverse times A is the identity.
  ExpectNear(Eval("mtxMlt(mtxGauss(" + a + ",,,,2), mtxGauss(" + a + ",,,,3))"),
             Eval("mtxMlt(mtxGauss(" + a + ",,,,4), " + a + ")"));
  ExpectNear(Eval("mtxMlt(mtxGauss(" + a + ",,,1,5), " + a + ")"),
             {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  ExpectNear(Eval("mDeterm(" + a + ")"), {{-32}});
  ExpectNear(Eval("mInverse({4, 7; 2, 6})"), {{0.6, -0.7}, {-0.2, 0.4}});
  // Two right-hand sides give two columns.
  ExpectNear(Eval("mtxGauss({2, 0; 0, 4}, {2, 4; 4, 8},,,1)"), {{1, 2}, {1, 2}});
}

TEST_F(MatrixFunctions, SingularAndMisshapenMatrices) {
  const std::string singular = "{1, 2; 2, 4}";
  EXPECT_EQ(ErrorOf("mtxGauss(" + singular + ", {1; 2},,,1)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("mInverse(" + singular + ")"), ferr::kNum);
  ExpectNear(Eval("mDeterm(" + singular + ")"), {{0}});
  ExpectNear(Eval("mtxGauss(" + singular + ",,,,6)"), {{0}});
  EXPECT_EQ(ErrorOf("mDeterm({1, 2, 3; 4, 5, 6})"), ferr::kValue);
  EXPECT_EQ(ErrorOf("mtxGauss({1, 0; 0, 1}, {1; 2; 3},,,1)"), ferr::kValue);
  EXPECT_EQ(ErrorOf("mtxMlt({1, 2}, {1, 2})"), ferr::kValue);
  EXPECT_EQ(ErrorOf("mtxGauss({1, 0; 0, 1}, {1; 2},,,7)"), ferr::kNum);
  // B is read only for the solution: its error does not spoil the determinant.
  ExpectNear(Eval("mtxGauss({1, 0; 0, 2}, 1/0,,,6)"), {{2}});
  EXPECT_EQ(ErrorOf("mtxGauss({1, 0; 0, 2}, 1/0,,,1)"), ferr::kDivZero);
  EXPECT_EQ(ErrorOf("mInverse({1, \"x\"; 0, 1})"), ferr::kValue);
  EXPECT_EQ(ErrorOf("mtxFwSubst({0, 0; 1, 1}, {1; 1})"), ferr::kNum);
  sheet.engine->EvaluateFormula("=mtxGauss({1, 0; 0, 1})", 0, 0);
  EXPECT_TRUE(sheet.engine->syntaxError());
}

TEST_F(MatrixFunctions, ProductsTransposeDiagonalAndSubstitution) {
  ExpectNear(Eval("mtxMlt({1, 2; 3, 4}, {5; 6}, {2, 1})"), {{34, 17}, {78, 39}});
  ExpectNear(Eval("mMult({1, 2}, {3; 4})"), {{11}});
  ExpectNear(Eval("mtxT({1, 2, 3; 4, 5, 6})"), {{1, 4}, {2, 5}, {3, 6}});
  ExpectNear(Eval("mtxDiag(3, {1, 2, 3})"), {{1, 0, 0}, {0, 2, 0}, {0, 0, 3}});
  ExpectNear(Eval("mtxDiag(2, 7)"), {{7, 0}, {0, 7}});
  EXPECT_EQ(ErrorOf("mtxDiag(4, {1, 2, 3})"), ferr::kValue);
  EXPECT_EQ(ErrorOf("mtxDiag(0, 1)"), ferr::kNum);
  ExpectNear(Eval("mtxFwSubst({2, 0; 1, 1}, {4; 5})"), {{2}, {3}});
  ExpectNear(Eval("mtxBkSubst({1, 1; 0, 2}, {5; 4})"), {{3}, {2}});
}

TEST_F(MatrixFunctions, CholeskyOfDefiniteMatricesOnly) {
  const std::string a = "{4, 2; 2, 3}";
  ExpectNear(Eval("mtxChl(" + a + ", {2; 1},,1)"), {{0.5}, {0}});
  ExpectNear(Eval("mtxMlt(mtxChl(" + a + ",,,3), mtxChl(" + a + ",,,2))"), {{4, 2}, {2, 3}});
  ExpectNear(Eval("mtxChl(" + a + ",,,5)"), {{8}});
  ExpectNear(Eval("mtxMlt(mtxChl(" + a + ",,,4), " + a + ")"), {{1, 0}, {0, 1}});
  EXPECT_EQ(ErrorOf("mtxChl({1, 2; 2, 1},,,5)"), ferr::kNum);
  EXPECT_EQ(ErrorOf("mtxChl({1, 2; 0, 1},,,2)"), ferr::kNum);
}

TEST_F(MatrixFunctions, SvdAndLeastSquares) {
  ExpectNear(Eval("mtxLSW({1, 2; 2, 3; 7, 1}, {1; 2; 3}, {1,0,0;0,1,0;0,0,1},,1)"),
             {{0.37476459510358}, {0.38418079096045}});
  // With G the identity the weighted fit is the plain one, rest values included.
  ExpectNear(Eval("mtxSVD({1, 2; 2, 3; 7, 1}, {1; 2; 3},,1)"),
             {{0.37476459510358}, {0.38418079096045}});
  ExpectNear(Eval("mtxLSW({1, 2; 2, 3; 7, 1}, {1; 2; 3}, {1,0,0;0,1,0;0,0,1},,2)"),
             Eval("mtxSVD({1, 2; 2, 3; 7, 1}, {1; 2; 3},,3)"));
  // U*S*V^T gives A back; a rank-deficient matrix has one singular value.
  const std::string a = "{1, 2, 3; 2, 4, 6; 1, 0, 1; 0, 1, 1}";
  ExpectNear(
      Eval("mtxMlt(mtxSVD(" + a + ",,,5), mtxSVD(" + a + ",,,6), mtxT(mtxSVD(" + a + ",,,7)))"),
      {{1, 2, 3}, {2, 4, 6}, {1, 0, 1}, {0, 1, 1}});
  // A wide matrix leaves columns of pure rounding in the rotations; they must not stall them.
  const std::string wide = "{1, 2, 3, 4; 2, 1, 0, 5}";
  ExpectNear(Eval("mtxMlt(mtxSVD(" + wide + ",,,5), mtxSVD(" + wide + ",,,6), mtxT(mtxSVD(" + wide +
                  ",,,7)))"),
             {{1, 2, 3, 4}, {2, 1, 0, 5}});
  ExpectNear(Eval("mtxMlt(" + wide + ", mtxSVD(" + wide + ",,,4))"), {{1, 0}, {0, 1}});
  ExpectNear(Eval("mtxSVD({1, 2; 2, 4},,,2)"), {{1}});
  ExpectNear(Eval("mtxSVD({1, 2; 2, 4},, 0.9, 2)"), {{1}});
  // The pseudo-inverse of a full-rank square matrix is its inverse.
  ExpectNear(Eval("mtxSVD({4, 7; 2, 6},,,4)"), {{0.6, -0.7}, {-0.2, 0.4}});
  // The constrained fit keeps x1 + x2 = 1 exactly.
  Rows x = Eval("mtxLSC({1, 0; 0, 1; 1, 1}, {1; 2; 2}, {1, 1}, {1},,1)");
  ASSERT_EQ(x.size(), 2u);
  EXPECT_NEAR(x[0][0] + x[1][0], 1, 1e-14);
  ExpectNear(x, {{0}, {1}});
  // One constraint over three unknowns, its null space taken from a wide SVD. With x1 = x2 = a
  // the normal equations are 6a + 2c = 11 and 2a + 2c = 7.
  ExpectNear(Eval("mtxLSC({1, 0, 0; 0, 1, 0; 0, 0, 1; 1, 1, 1}, {1; 2; 3; 4}, {1, -1, 0}, {0},,1)"),
             {{1}, {1}, {2.5}});
  EXPECT_EQ(ErrorOf("mtxLSC({1, 0; 0, 1}, {1; 2}, {1, 1; 1, 0; 0, 1}, {1; 1; 1},,1)"),
            ferr::kValue);
}

TEST_F(MatrixFunctions, CellsReadAsNumbersAndRandomColumns) {
  // A field range of one record: an empty cell is 0, a text cell that is no number stops the
  // function, one that is a number counts.
  sheet.PutNumber(0, 0, 2);
  sheet.PutText(0, 2, " 4 ");
  ExpectNear(Eval("mtxT(A:C)"), {{2}, {0}, {4}});
  sheet.PutText(0, 1, "x");
  EXPECT_EQ(ErrorOf("mtxT(A:C)"), ferr::kValue);

  // Seeds restart both generators; without them the stored state runs on.
  Rows first = Eval("mtxRand(4, 10000, 25000)");
  ASSERT_EQ(first.size(), 4u);
  EXPECT_NEAR(first[0][0], 0.71261246808435, 1e-14);
  ExpectNear(Eval("mtxRand(4, 10000, 25000)"), first, 0);
  Rows next = Eval("mtxRand(4)");
  ASSERT_EQ(next.size(), 4u);
  EXPECT_NE(next[0][0], first[0][0]);
  EXPECT_EQ(ErrorOf("mtxRand(0)"), ferr::kNum);
  // Drawn columns stay inside their distributions' support.
  for (const char* formula : {"mtxRand2(200, 5, 7, 2, 3)", "mtxRand2(200, 5, 7, 3, 4)",
                              "mtxRand2(200, 5, 7, 4, 0.3)", "mtxRand2(200, 5, 7, 5, 0.3)"}) {
    Rows draws = Eval(formula);
    ASSERT_EQ(draws.size(), 200u) << formula;
    double sum = 0;
    for (const auto& row : draws) {
      EXPECT_GE(row[0], 0) << formula;
      sum += row[0];
    }
    EXPECT_GT(sum, 0) << formula;
  }
  EXPECT_EQ(ErrorOf("mtxRand2(3, , , 1, 0, -1)"), ferr::kNum);
  ExpectNear(Eval("mtxSeries(3, 1.5, 0.5)"), {{1.5}, {2}, {2.5}});
}

TEST_F(MatrixFunctions, SeriesOfDates) {
  sheet.engine->EvaluateFormula("=mtxSeries(5, \"2005-12-30\", \"P1D\")", 0, 0);
  const FormulaValue& v = sheet.engine->Result();
  ASSERT_EQ(v.kind, kind::kArray);
  ASSERT_EQ(v.row2, 4u);
  const char* want[] = {"2005-12-30", "2005-12-31", "2006-01-01", "2006-01-02", "2006-01-03"};
  for (uint32_t r = 0; r < 5; ++r) {
    const CellRecord* cell = sheet.engine->TopArray().GetCell(r, 0);
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ(cell::Text(cell), want[r]);
  }
  EXPECT_EQ(ErrorOf("mtxSeries(2, \"2005-12-30\", 1)"), ferr::kValue);
}

TEST_F(MatrixFunctions, LargeMatricesWithinTheArrayLimits) {
  // 1,000 x 1,000: a diagonal one inverts, one with a zero on its diagonal is singular; neither
  // hangs.
  sheet.engine->EvaluateFormula("=mInverse(mtxDiag(1000, mtxSeries(1000, 1)))", 0, 0);
  const FormulaValue& v = sheet.engine->Result();
  ASSERT_EQ(v.errorCode, 0);
  ASSERT_EQ(v.kind, kind::kArray);
  EXPECT_EQ(v.row2, 999u);
  EXPECT_EQ(v.column2, 999u);
  const CellRecord* last = sheet.engine->TopArray().GetCell(999, 999);
  ASSERT_NE(last, nullptr);
  EXPECT_DOUBLE_EQ(cell::Number(last), 1 / 1000.0);
  EXPECT_EQ(ErrorOf("mInverse(mtxDiag(1000, mtxSeries(1000, 0)))"), ferr::kNum);
  // Wider than a sheet allows, a result cannot be stored.
  EXPECT_EQ(ErrorOf("mtxT(mtxRand(2100))"), ferr::kValue);
}

}  // namespace
}  // namespace kelpdex
