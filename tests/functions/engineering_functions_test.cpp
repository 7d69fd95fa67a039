#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "functions/engineering_functions.h"
#include "functions/function_table.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class EngineeringTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t_.PutText(0, 0, "1 + 1i");
    t_.PutText(0, 1, "");
    t_.PutNumber(0, 2, 2);
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  testing::FormulaSheet t_{{{"Za", kFieldText}, {"Zb", kFieldText}, {"Zc", kFieldNumber}},
                           &BuiltinFunctions()};
};

TEST(ComplexText, ParsesTheWrittenForms) {
  struct Case {
    const char* text;
    double re, im;
    char suffix;
  };
  const Case good[] = {
      {"3 + 4i", 3, 4, 'i'}, {"3+4i", 3, 4, 'i'},     {" -3 - 4j ", -3, -4, 'j'},
      {"5", 5, 0, 0},        {"-2.5i", 0, -2.5, 'i'}, {"i", 0, 1, 'i'},
      {"-j", 0, -1, 'j'},    {"1 + i", 1, 1, 'i'},    {"1e3-2.5e-1i", 1000, -0.25, 'i'},
      {"0.5 j", 0, 0.5, 'j'}};
  for (const Case& c : good) {
    double re = -99, im = -99;
    char suffix = 'x';
    ASSERT_TRUE(ParseComplexArg(c.text, re, im, &suffix)) << c.text;
    EXPECT_EQ(re, c.re) << c.text;
    EXPECT_EQ(im, c.im) << c.text;
    EXPECT_EQ(suffix, c.suffix) << c.text;
  }
  for (const char* bad : {"", "  ", "1ii", "i1", "3 + 4", "3 + 4i5", "+3", "3 + -4i", "ii",
                          "3 + 4k", "1e400", "1e-320i", "3 4i", "- 3", "3 + 4I"}) {
    double re = 0, im = 0;
    EXPECT_FALSE(ParseComplexArg(bad, re, im)) << bad;
  }
}

TEST(ComplexText, PrintsBothPartsAndTheSign) {
  char out[kComplexTextSize];
  EXPECT_EQ(std::string(out, FormatComplex(3, -4, 'i', out)), "3 - 4i");
  EXPECT_EQ(std::string(out, FormatComplex(-0.0, 0, 'j', out)), "0 + 0j");
  EXPECT_EQ(std::string(out, FormatComplex(1e20, 1e-20, 'i', out)), "1e+20 + 1e-20i");
}

TEST_F(EngineeringTest, ComplexFunctions) {
  EXPECT_EQ(Eval("=complex(1, 2,)"), "1 + 2i");
  EXPECT_EQ(Eval("=complex(3.5, -4.6, \"j\")"), "3.5 - 4.6j");
  EXPECT_EQ(Eval("=complex(1, 2, \"k\")"), "#VALUE!");
  EXPECT_EQ(Eval("=imConjugate(\"3 + 4j\")"), "3 - 4j");
  EXPECT_EQ(Eval("=imPower(\"2+3i\", 3)"), "-46 + 9i");
  EXPECT_EQ(Eval("=imPower(\"2+3i\", -1)"), Eval("=imDiv(1, \"2+3i\")"));
  EXPECT_EQ(Eval("=imPower(0, 0)"), "#NUM!");
  EXPECT_EQ(Eval("=imSqrt(\"1 + i\")"), "1.09868411346781 + 0.45508986056223i");
  EXPECT_EQ(Eval("=imSqrt(-4)"), "0 + 2i");
  EXPECT_EQ(Eval("=imLog2(\"3 + 4i\")"), "2.32192809488736 + 1.33780421245098i");
  // cos(1 + i) = cos 1 cosh 1 - i sin 1 sinh 1: the imaginary part is negative.
  EXPECT_EQ(Eval("=imCos(\"1 + 1i\")"), "0.83373002513115 - 0.98889770576287i");
  EXPECT_EQ(Eval("=imLn(0)"), "#NUM!");
  EXPECT_EQ(Eval("=imDiv(\"1+i\", 0)"), "#NUM!");
  EXPECT_EQ(Eval("=imArgument(0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=imAbs(\"5 + 12i\")"), "13");
  EXPECT_EQ(Eval("=imReal(\"1ii\")"), "#NUM!");
  EXPECT_EQ(Eval("=imaginary(1/0)"), "#DIV/0!");
  // exp overflows: the result is no number.
  EXPECT_EQ(Eval("=imExp(\"1000 + i\")"), "#NUM!");
}

TEST_F(EngineeringTest, SumsAndProductsWalkArraysAndRanges) {
  EXPECT_EQ(Eval("=imSum(\"1 + 1i\", \"2 + 2i\", {\"1 + 1i\", \"1 + 1i\"}, 1, \"1i\")"), "6 + 6i");
  // The empty text field is skipped, the number field is a real number.
  EXPECT_EQ(Eval("=imSum(Za:Zc)"), "3 + 1i");
  EXPECT_EQ(Eval("=imProduct(Za:Zc, \"i\")"), "-2 + 2i");
  EXPECT_EQ(Eval("=imProduct(\"3+4i\", \"5-3i\")"), "27 + 11i");
  EXPECT_EQ(Eval("=imSum(\"1+i\", \"x\")"), "#NUM!");
  EXPECT_EQ(Eval("=imSum(\"1+i\", {1, \"2j\"})"), "2 + 3j");
  EXPECT_EQ(Eval("=imSum()"), "#SYNTAX!");
  // Unary functions broadcast.
  EXPECT_EQ(Eval("=imReal({\"3+4i\", \"5\"})"), "3");
  EXPECT_EQ(Eval("=sum(imReal({\"3+4i\", \"5\"}))"), "8");
}

TEST_F(EngineeringTest, BaseConversionsAndTheirLimits) {
  EXPECT_EQ(Eval("=bin2dec(\"1111111111\")"), "-1");
  EXPECT_EQ(Eval("=bin2dec(\"1000000000\")"), "-512");
  EXPECT_EQ(Eval("=bin2dec(\"0111111111\")"), "511");
  EXPECT_EQ(Eval("=bin2dec(\"11111111111\")"), "#NUM!");  // eleven digits
  EXPECT_EQ(Eval("=bin2dec(\"102\")"), "#NUM!");
  EXPECT_EQ(Eval("=bin2dec(\"\")"), "0");
  EXPECT_EQ(Eval("=hex2dec(\"8000000000\")"), "-549755813888");
  EXPECT_EQ(Eval("=hex2dec(\"7fffffffff\")"), "549755813887");
  EXPECT_EQ(Eval("=oct2dec(4000000000)"), "-536870912");
  EXPECT_EQ(Eval("=dec2bin(511)"), "111111111");
  EXPECT_EQ(Eval("=dec2bin(512)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2bin(-512)"), "1000000000");
  EXPECT_EQ(Eval("=dec2bin(-513)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2oct(536870911)"), "3777777777");
  EXPECT_EQ(Eval("=dec2oct(536870912)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2hex(-549755813888)"), "8000000000");
  EXPECT_EQ(Eval("=dec2hex(549755813888)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2oct(58, 3)"), "072");
  EXPECT_EQ(Eval("=dec2hex(100, 4)"), "0064");
  // A width too small for the digits, or outside 0..10, is an error; 0 asks for no padding.
  EXPECT_EQ(Eval("=dec2bin(9, 3)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2bin(9, 11)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2bin(9, -1)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2bin(9, 0)"), "1001");
  EXPECT_EQ(Eval("=dec2bin(-1, 9)"), "#NUM!");
  EXPECT_EQ(Eval("=dec2bin(-1, 10)"), "1111111111");
  EXPECT_EQ(Eval("=dec2bin(2.5)"), "11");  // rounded half away from zero
  EXPECT_EQ(Eval("=hex2bin(\"200\")"), "#NUM!");
  EXPECT_EQ(Eval("=hex2bin(\"FFFFFFFE00\")"), "1000000000");
  EXPECT_EQ(Eval("=oct2bin(7777777000, )"), "1000000000");
  EXPECT_EQ(Eval("=hex2oct(\"FFE0000000\")"), "4000000000");
  EXPECT_EQ(Eval("=hex2oct(\"FFDFFFFFFF\")"), "#NUM!");
  EXPECT_EQ(Eval("=bin2hex(11111011, 4)"), "00FB");
  EXPECT_EQ(Eval("=oct2hex(\"7777777777\", 10)"), "FFFFFFFFFF");
  EXPECT_EQ(Eval("=dec2hex(1e20)"), "#NUM!");
  EXPECT_EQ(Eval("=bin2dec(1e20)"), "#NUM!");
}

TEST_F(EngineeringTest, SpecialFunctionsAndComparisons) {
  EXPECT_EQ(Eval("=besselJ(1.9, 2)"), "0.32992572769239");
  EXPECT_EQ(Eval("=besselJ(1.9, -1)"), "#NUM!");
  // The order is bounded: the library's time grows with it.
  EXPECT_NE(Eval("=besselJ(3e9, 1000000)"), "#NUM!");
  EXPECT_EQ(Eval("=besselJ(3e9, 1000000)"), Eval("=besselJ(3e9, 999999.6)"));
  EXPECT_EQ(Eval("=besselJ(3e9, 1000001)"), "#NUM!");
  EXPECT_EQ(Eval("=besselY(3e9, 2e9)"), "#NUM!");
  EXPECT_EQ(Eval("=besselY(0, 1)"), "#NUM!");
  EXPECT_EQ(Eval("=besselY(-2, 1)"), "#NUM!");
  EXPECT_EQ(Eval("=besselJ(1.9)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=erf(0.745, )"), Eval("=erf(0.745)"));
  EXPECT_EQ(Eval("=erf(1, 1)"), "0");
  EXPECT_EQ(Eval("=erf(0.5, -0.5)"), Eval("=-erf(-0.5, 0.5)"));
  // Far in the tail erf(b) - erf(a) would be 0; the complements keep the digits.
  EXPECT_EQ(Eval("=erf(6, 7)"), Eval("=erfc(6) - erfc(7)"));
  EXPECT_NE(Eval("=erf(6, 7)"), "0");
  EXPECT_EQ(Eval("=erfc(30)"), "0");
  EXPECT_EQ(Eval("=erfc(26.7)"), "#NUM!");  // a subnormal result
  EXPECT_EQ(Eval("=delta(12, 11)"), "0");
  EXPECT_EQ(Eval("=delta(0,)"), "1");
  EXPECT_EQ(Eval("=delta(\"3\", 3)"), "1");
  EXPECT_EQ(Eval("=getStep(1.4,)"), "1");
  EXPECT_EQ(Eval("=getStep(2, 2)"), "0");
  EXPECT_EQ(Eval("=getStep(-1)"), "0");
  EXPECT_EQ(Eval("=sum(getStep({1, 2, 3}, 2))"), "1");
}

}  // namespace
}  // namespace kelpdex
