#include "format/parse_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>

#include "format/format_number.h"
#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

struct Parsed {
  NumberParse result;
  double value;
  NumberStyle style;
};

Parsed Parse(const std::string& text, const LocaleSettings* settings = nullptr) {
  Parsed p{NumberParse::kNotANumber, -777, NumberStyle()};
  p.style.kind = 99;  // must be replaced on success
  p.result = ParseNumberText(text, p.value, p.style, settings);
  return p;
}

TEST(ParseNumberText, PlainNumbersSignsBlanksAndExponents) {
  Parsed p = Parse("  -12.5 ");
  ASSERT_EQ(p.result, NumberParse::kNumber);
  EXPECT_EQ(p.value, -12.5);
  EXPECT_EQ(p.style.kind, format_kind::kDefault);
  EXPECT_EQ(Parse(".5").value, 0.5);
  EXPECT_EQ(Parse("+7").value, 7);
  EXPECT_EQ(Parse("5.").value, 5);
  p = Parse("1.25e 3");  // blanks may follow the exponent mark
  EXPECT_EQ(p.value, 1250);
  EXPECT_EQ(p.style.kind, format_kind::kScientific);
  EXPECT_EQ(p.style.decimalDigits, 2);
  EXPECT_EQ(Parse("2E-2").value, 0.02);
  EXPECT_EQ(Parse("1e999").result, NumberParse::kOutOfRange);
  for (const char* bad :
       {"",   " ",  "-",    ".", "1.2.3", "--1", "1e",  "e5",   "12a",      "1 2",
        "(5", "5)", "-(5)", "%", "1/0",   "1/",  "1,2", "1,23", "1234,567", ",123"}) {
    Parsed b = Parse(bad);
    EXPECT_EQ(b.result, NumberParse::kNotANumber) << bad;
    EXPECT_EQ(b.style.kind, 99) << bad;
  }
  EXPECT_EQ(Parse(std::string(1026, '1')).result, NumberParse::kNotANumber);
}

TEST(ParseNumberText, GroupsBracketsPercentAndFractionsReportTheirFormat) {
  Parsed p = Parse("1,234,567.50");
  EXPECT_EQ(p.value, 1234567.5);
  EXPECT_EQ(p.style.kind, format_kind::kGeneral);
  EXPECT_TRUE(p.style.groupDigits);
  EXPECT_EQ(p.style.decimalDigits, 2);
  p = Parse("(1,000)");
  EXPECT_EQ(p.value, -1000);
  EXPECT_EQ(p.style.negative, negative::kBrackets);
  p = Parse("12.5%");
  EXPECT_EQ(p.value, 0.125);
  EXPECT_EQ(p.style.kind, format_kind::kPercentage);
  EXPECT_EQ(p.style.decimalDigits, 1);
  EXPECT_EQ(Parse("%50").value, 0.5);
  p = Parse("10 4/5");
  EXPECT_DOUBLE_EQ(p.value, 10.8);
  EXPECT_EQ(p.style.kind, format_kind::kFraction);
  EXPECT_EQ(p.style.denominatorDigits, 1);
  EXPECT_EQ(Parse("-3/16").value, -0.1875);
}

TEST(ParseNumberText, CurrencyBeforeOrBehindUnderEachLocale) {
  Parsed p = Parse("$1,234.5");
  EXPECT_EQ(p.value, 1234.5);
  EXPECT_EQ(p.style.kind, format_kind::kCurrency);
  EXPECT_STREQ(p.style.symbol, "$");
  EXPECT_EQ(p.style.symbolPosition, 0);
  EXPECT_EQ(Parse("-$ 5").style.symbolPosition, 1);
  EXPECT_EQ(Parse("-$ 5").value, -5);
  EXPECT_EQ(Parse("($5.00)").value, -5);
  EXPECT_EQ(Parse("5$").style.symbolPosition, 2);
  EXPECT_EQ(Parse("$5%").result, NumberParse::kNotANumber);

  p = Parse("1.234,56 \x80", &kGermanLocale);
  ASSERT_EQ(p.result, NumberParse::kNumber);
  EXPECT_EQ(p.value, 1234.56);
  EXPECT_EQ(p.style.symbolPosition, 3);
  EXPECT_EQ(Parse("1,5", &kGermanLocale).value, 1.5);
  EXPECT_EQ(Parse("1.5", &kGermanLocale).result, NumberParse::kNotANumber);
  EXPECT_EQ(Parse("$5", &kGermanLocale).result, NumberParse::kNotANumber);
}

// Whatever a style shows with all its digits, typing that text back gives the value again.
TEST(ParseNumberText, ReadsBackWhatEveryStyleKindShows) {
  const double values[] = {0, 1, -1, 0.25, -1234.5, 98765.4321, 1e-3, 123456789.25};
  for (const LocaleSettings* settings : {&genericLocale, &kGermanLocale}) {
    NumberStyle general;
    general.kind = format_kind::kGeneral;
    general.fixedDecimals = true;
    general.decimalDigits = 4;
    general.groupDigits = true;
    general.negative = negative::kBrackets;
    NumberStyle currency;
    currency.kind = format_kind::kCurrency;
    std::memcpy(currency.symbol, settings->currencySymbol, sizeof settings->currencySymbol);
    currency.symbolPosition = 3;
    currency.decimalDigits = 4;
    NumberStyle percent;
    percent.kind = format_kind::kPercentage;
    percent.fixedDecimals = true;
    percent.decimalDigits = 6;
    NumberStyle scientific;
    scientific.kind = format_kind::kScientific;
    scientific.fixedDecimals = true;
    scientific.decimalDigits = 10;
    NumberStyle accounting;
    accounting.kind = format_kind::kAccounting;
    std::memcpy(accounting.symbol, settings->currencySymbol, sizeof settings->currencySymbol);
    accounting.decimalDigits = 4;
    NumberStyle padded;
    padded.kind = format_kind::kGeneral;
    padded.leadingZeroesSet = true;
    padded.leadingZeroes = 3;
    padded.fixedDecimals = true;
    padded.decimalDigits = 4;
    for (const NumberStyle* style :
         {&general, &currency, &percent, &scientific, &accounting, &padded}) {
      std::string format = BuildFormatString(*style, settings);
      for (double x : values) {
        // Accounting shows zero as a dash: no digits to read back.
        if (style == &accounting && x == 0) continue;
        double shown = style->kind == format_kind::kPercentage ? x * 100 : x;
        std::string text = FormatNumber(shown, format, settings);
        Parsed p = Parse(text, settings);
        ASSERT_EQ(p.result, NumberParse::kNumber) << format << " " << text;
        EXPECT_NEAR(p.value, x, 1e-9 * (1 + std::fabs(x))) << format << " " << text;
      }
    }
  }
  NumberStyle fraction;
  fraction.kind = format_kind::kFraction;
  fraction.denominatorDigits = 2;
  for (double x : {0.5, 10.8, 2.25, 3.0 + 7.0 / 16}) {
    std::string text = FormatNumber(x, BuildFormatString(fraction));
    EXPECT_DOUBLE_EQ(Parse(text).value, x) << text;
  }
}

}  // namespace
}  // namespace kelpdex
