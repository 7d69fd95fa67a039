#include "format/number_text.h"

#include <gtest/gtest.h>

#include "formula/formula_value.h"

namespace kelpdex {
namespace {

TEST(NumberToGeneral, FifteenDigitsAndTheExponentForm) {
  EXPECT_EQ(NumberToGeneral(1234567890.12345), "1234567890.12345");
  EXPECT_EQ(NumberToGeneral(0.1 + 0.2), "0.3");
  EXPECT_EQ(NumberToGeneral(-2.5), "-2.5");
  EXPECT_EQ(NumberToGeneral(0), "0");
  EXPECT_EQ(NumberToGeneral(1e15), "1e+15");
  EXPECT_EQ(NumberToGeneral(1e-15), "1e-15");
  EXPECT_EQ(NumberToGeneral(999999999999999.0), "999999999999999");
  EXPECT_EQ(NumberToGeneral(-999999999999999.0), "-999999999999999");
  EXPECT_EQ(NumberToGeneral(-1234567890.12345), "-1234567890.12345");
  EXPECT_EQ(NumberToGeneral(123456789012345678.0), "1.23456789012346e+17");
  // The literal 0.00000000000001 is the same double as 1e-14: at the limit, still in fixed form;
  // anything smaller takes the exponent.
  EXPECT_EQ(NumberToGeneral(0.00000000000001), "0.00000000000001");
  EXPECT_EQ(NumberToGeneral(9.9e-15), "9.9e-15");
  EXPECT_EQ(NumberToGeneral(-0.5), "-0.5");
  LocaleSettings comma = genericLocale;
  comma.decimalSeparator = ',';
  EXPECT_EQ(NumberToGeneral(2.5, &comma), "2,5");
}

TEST(ScanNumber, NotationAndMalformedForms) {
  double x = 0;
  EXPECT_EQ(ScanNumber("1,5;2", ',', false, x), 3u);
  EXPECT_EQ(x, 1.5);
  EXPECT_EQ(ScanNumber("2e", '.', false, x), 0u);
  EXPECT_EQ(ScanNumber("..5", '.', false, x), 0u);
  EXPECT_EQ(ScanNumber("-3", '.', true, x), 2u);
  EXPECT_EQ(x, -3);
  EXPECT_TRUE(TextToNumber("  12  ", '.', x));
  EXPECT_FALSE(TextToNumber("12 a", '.', x));
  EXPECT_EQ(ScanNumber("1e400", '.', false, x), 5u);
  EXPECT_TRUE(IsBadNumber(x));
}

}  // namespace
}  // namespace kelpdex
