#include "format/format_number.h"

#include <gtest/gtest.h>

#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

std::string Fmt(double x, const char* format, const LocaleSettings* settings = nullptr) {
  return FormatNumber(x, format, settings);
}

TEST(FormatNumber, PlaceholdersRoundHalfAwayOnTheDecimalDigits) {
  EXPECT_EQ(Fmt(0.5, "0"), "1");
  EXPECT_EQ(Fmt(2.5, "0"), "3");
  EXPECT_EQ(Fmt(-2.5, "0"), "-3");
  EXPECT_EQ(Fmt(1.005, "0.00"), "1.01");
  EXPECT_EQ(Fmt(0.125, "0.00"), "0.13");
  EXPECT_EQ(Fmt(9.995, "0.00"), "10.00");
  EXPECT_EQ(Fmt(0.5, "#.##"), ".5");
  EXPECT_EQ(Fmt(3, "0.#"), "3.");
  EXPECT_EQ(Fmt(1.5, "0.0#"), "1.5");
  EXPECT_EQ(Fmt(1.5, "0.0?"), "1.5 ");
  EXPECT_EQ(Fmt(7, "000"), "007");
  EXPECT_EQ(Fmt(7, "??0"), "  7");
  EXPECT_EQ(Fmt(12345, "00"), "12345");
  EXPECT_EQ(Fmt(0, "#"), "");
  EXPECT_EQ(Fmt(-0.001, "0.00"), "0.00");  // rounded to zero, no sign left
  EXPECT_EQ(Fmt(12345678, "000-00-0000"), "012-34-5678");
}

TEST(FormatNumber, GroupingScalingAndPercent) {
  EXPECT_EQ(Fmt(1234567.891, "#,##0.00"), "1,234,567.89");
  EXPECT_EQ(Fmt(-999.999, "#,##0.00"), "-1,000.00");
  EXPECT_EQ(Fmt(12, "#,##0"), "12");
  EXPECT_EQ(Fmt(0, "#,##0"), "0");
  EXPECT_EQ(Fmt(1234567.891, "#.##0,00", &kGermanLocale), "1.234.567,89");
  EXPECT_EQ(Fmt(1234567, "0.0,,"), "1.2");
  EXPECT_EQ(Fmt(1234567, "#,##0,"), "1,235");
  EXPECT_EQ(Fmt(0.256, "0.0%"), "25.6%");
  EXPECT_EQ(Fmt(25.6, "#,##0.0\\%"), "25.6%");  // an escaped percent does not scale
  EXPECT_EQ(Fmt(1e20, "#,##0"), "100,000,000,000,000,000,000");
}

TEST(FormatNumber, SectionsConditionsAndColours) {
  const char* f = "0.0;(0.0);\"nil\";@";
  EXPECT_EQ(Fmt(2, f), "2.0");
  EXPECT_EQ(Fmt(-2, f), "(2.0)");  // the second section shows no sign
  EXPECT_EQ(Fmt(0, f), "nil");
  EXPECT_EQ(Fmt(-3, "0;"), "");  // an empty section hides the value

  char out[kDisplayTextMax];
  FormatColour colour;
  ASSERT_TRUE(FormatNumber(-5, "0;[Red]-0", out, nullptr, nullptr, &colour));
  EXPECT_STREQ(out, "-5");
  EXPECT_TRUE(colour.set);
  EXPECT_EQ(colour.colour, 0x0000FFu);
  ASSERT_TRUE(FormatNumber(5, "0;[Red]-0", out, nullptr, nullptr, &colour));
  EXPECT_FALSE(colour.set);

  const char* c = "[>=100][blue]\"big \"0;[<0]\"neg \"0;\"small \"0";
  EXPECT_EQ(Fmt(150, c), "big 150");
  EXPECT_EQ(Fmt(-4, c), "neg 4");
  EXPECT_EQ(Fmt(5, c), "small 5");
  EXPECT_EQ(Fmt(1, "[>5]0"), "1");  // no section takes it: the general form
}

TEST(FormatNumber, FractionsSearchOrFixTheDenominator) {
  EXPECT_EQ(Fmt(10.8, "# ?/?"), "10 4/5");
  EXPECT_EQ(Fmt(0.333, "?/???"), "332/997");  // 333/1000 needs a fourth digit
  EXPECT_EQ(Fmt(3.14159265, "# ?\?/???"), "3 16/113");
  EXPECT_EQ(Fmt(5, "# ?/?"), "5    ");
  EXPECT_EQ(Fmt(0.5, "# ?/?"), " 1/2");
  EXPECT_EQ(Fmt(1.5, "?/?"), "3/2");
  EXPECT_EQ(Fmt(0.99, "# ?/?"), "1    ");
  EXPECT_EQ(Fmt(1.3, "# ?/\"16\""), "1 5/16");
  EXPECT_EQ(Fmt(-2.25, "# ?/?"), "-2 1/4");
  EXPECT_EQ(Fmt(0, "# ?/?"), "0    ");
}

TEST(FormatNumber, ExponentsFixedExponentsAndGeneral) {
  EXPECT_EQ(Fmt(12345, "0.00E+00"), "1.23E+04");
  EXPECT_EQ(Fmt(0.00012345, "0.00e+00"), "1.23e-04");
  EXPECT_EQ(Fmt(12345, "0.00E-00"), "1.23E04");
  EXPECT_EQ(Fmt(9.996, "0.00E+0"), "1.00E+1");
  EXPECT_EQ(Fmt(0, "0.0E+00"), "0.0E+00");
  EXPECT_EQ(Fmt(-12345, "0.0E+0"), "-1.2E+4");
  EXPECT_EQ(Fmt(12345, "##0.0E+0"), "12.3E+3");
  EXPECT_EQ(Fmt(1234567, "##0.0E+0"), "1.2E+6");
  EXPECT_EQ(Fmt(12345, "0.00e+\"03\""), "12.35e+03");
  EXPECT_EQ(Fmt(0.012345, "0.00e-\"03\""), "12.35e-03");
  // A fixed exponent that leaves no double to show does not apply: the value shows as General.
  EXPECT_EQ(Fmt(5, "0e-\"400\""), "5");
  EXPECT_EQ(Fmt(1234567890.12345, "General"), "1234567890.12345");
  EXPECT_EQ(Fmt(-2.5, "General;(General)"), "(2.5)");
  EXPECT_EQ(Fmt(2.5, "General \"kg\"", &kGermanLocale), "2,5 kg");
}

TEST(FormatNumber, LiteralsBlanksAndWhatDoesNotApply) {
  EXPECT_EQ(Fmt(1234.5, "_(\"$\"* #,##0.00_);\\(\"$\"* #,##0.00\\);_(\"$\"* -??_);_(@_)"),
            " $1,234.50 ");
  EXPECT_EQ(Fmt(-1234.5, "_(\"$\"* #,##0.00_);\\(\"$\"* #,##0.00\\);_(\"$\"* -??_);_(@_)"),
            "($1,234.50)");
  EXPECT_EQ(Fmt(0, "_(\"$\"* #,##0.00_);\\(\"$\"* #,##0.00\\);_(\"$\"* -??_);_(@_)"),
            " $-   ");  // the fill belongs to the grid, which knows the width
  char out[kDisplayTextMax];
  EXPECT_FALSE(FormatNumber(5, "yyyy-mm-dd", out));
  EXPECT_FALSE(FormatNumber(5, "0;0;0;0;0", out));
  EXPECT_EQ(Fmt(5, "0;0;0;0;0"), "5");  // the fallback is the general form
  EXPECT_EQ(Fmt(1e300, "0").size(), 301u);
}

}  // namespace
}  // namespace kelpdex
