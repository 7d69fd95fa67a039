#include "format/number_style.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

NumberStyle Style(uint8_t kind) {
  NumberStyle s;
  s.kind = kind;
  return s;
}

NumberStyle Currency(const char* symbol, uint8_t position, uint8_t neg, uint8_t decimals) {
  NumberStyle s = Style(format_kind::kCurrency);
  std::strcpy(s.symbol, symbol);
  s.symbolPosition = position;
  s.negative = neg;
  s.decimalDigits = decimals;
  return s;
}

TEST(BuildFormatString, GeneralKindDecimalsLeadingZeroesAndNegatives) {
  NumberStyle s = Style(format_kind::kGeneral);
  s.fixedDecimals = true;
  EXPECT_EQ(BuildFormatString(s), "0");
  s.fixedDecimals = false;
  EXPECT_EQ(BuildFormatString(s), "0.#");
  s.fixedDecimals = true;
  s.decimalDigits = 2;
  s.groupDigits = true;
  s.negative = negative::kBrackets;
  EXPECT_EQ(BuildFormatString(s), "#,##0.00;(#,##0.00)");
  EXPECT_EQ(BuildFormatString(s, &kGermanLocale), "#.##0,00;(#.##0,00)");
  s.leadingZeroesSet = true;
  s.leadingZeroes = 3;
  s.negative = negative::kRedAndBrackets;
  EXPECT_EQ(BuildFormatString(s), "000.00;[red](000.00)");
  s.leadingZeroes = 0;  // printf's "%0*d" of zero still writes one digit
  s.negative = negative::kRed;
  s.decimalDigits = 0;
  EXPECT_EQ(BuildFormatString(s), "0;[red]0");
}

TEST(BuildFormatString, CurrencyKeepsItsLiteralCommaInEveryLocale) {
  EXPECT_EQ(BuildFormatString(Currency("$", 0, negative::kBrackets, 0), &kGermanLocale),
            "\"$\"#.##0;(\"$\"#,##0)");
  EXPECT_EQ(BuildFormatString(Currency("$", 0, negative::kBrackets, 2), &kGermanLocale),
            "\"$\"#.##0,00;(\"$\"#.##0,00)");
  EXPECT_EQ(BuildFormatString(Currency("EUR", 3, negative::kBrackets, 0), &kGermanLocale),
            "#.##0\" EUR\";(#.##0\" EUR\")");
  // Whatever groups the digits, the bracket section without decimals keeps its comma.
  for (char group : {',', '.', ' ', '\''}) {
    LocaleSettings locale = genericLocale;
    locale.thousandSeparator = group;
    std::string expected = std::string("\"$\"#") + group + "##0;(\"$\"#,##0)";
    EXPECT_EQ(BuildFormatString(Currency("$", 0, negative::kBrackets, 0), &locale), expected);
  }
  EXPECT_EQ(BuildFormatString(Currency("$", 1, negative::kRed, 2)),
            "\"$ \"#,##0.00;[red]\"$ \"#,##0.00");
  EXPECT_EQ(BuildFormatString(Currency("kr", 2, negative::kRedAndBrackets, 1)),
            "#,##0.0\"kr\";[red](#,##0.0\"kr\")");
}

TEST(BuildFormatString, AccountingPercentFractionScientific) {
  NumberStyle a = Style(format_kind::kAccounting);
  std::strcpy(a.symbol, "$");
  EXPECT_EQ(BuildFormatString(a), "_(\"$\"* #,##0_);\\(\"$\"* #,##0\\);_(\"$\"* -_);_(@_)");
  a.decimalDigits = 2;
  EXPECT_EQ(BuildFormatString(a), "_(\"$\"* #,##0.00_);\\(\"$\"* #,##0.00\\);_(\"$\"* -??_);_(@_)");

  NumberStyle p = Style(format_kind::kPercentage);
  EXPECT_EQ(BuildFormatString(p, &kGermanLocale), "#.##0,#\\%");
  p.fixedDecimals = true;
  EXPECT_EQ(BuildFormatString(p), "#,##0\\%");
  p.decimalDigits = 3;
  EXPECT_EQ(BuildFormatString(p), "#,##0.000\\%");

  NumberStyle f = Style(format_kind::kFraction);
  f.denominatorDigits = 2;
  EXPECT_EQ(BuildFormatString(f), "?\\ ?\?/??");
  f.denominator = 16;
  EXPECT_EQ(BuildFormatString(f), "?\\ ?\?/\"16\"");

  NumberStyle e = Style(format_kind::kScientific);
  e.fixedDecimals = true;
  EXPECT_EQ(BuildFormatString(e), "0e+00");
  e.decimalDigits = 2;
  EXPECT_EQ(BuildFormatString(e, &kGermanLocale), "0,00e+00");
  e.exponent = 2;
  e.exponentPower = 3;
  EXPECT_EQ(BuildFormatString(e), "0.00e-\"03\"");
  e.fixedDecimals = false;
  e.exponent = 1;
  EXPECT_EQ(BuildFormatString(e), "0.#e+\"03\"");
  e.exponent = 7;
  EXPECT_EQ(BuildFormatString(e), "#.#");
}

TEST(BuildFormatString, DatesByIndexAndOrderTimesAndJoins) {
  NumberStyle d = Style(format_kind::kDate);
  d.index = 1;
  // Without the system order the fixed month-first order holds, whatever the locale says.
  EXPECT_EQ(BuildFormatString(d, &kGermanLocale), "mm.dd.yyyy");
  d.systemDateOrder = true;
  EXPECT_EQ(BuildFormatString(d, &kGermanLocale), "dd.mm.yyyy");
  d.index = 10;
  EXPECT_EQ(BuildFormatString(d, &kGermanLocale), "dddd, dd mmmm, yyyy");
  d.index = 99;
  EXPECT_EQ(BuildFormatString(d), "m/d/yyyy");

  NumberStyle t = Style(format_kind::kTime);
  t.index = 7;
  EXPECT_EQ(BuildFormatString(t), "hh:mm:ss AM/PM");
  t.index = 8;
  EXPECT_EQ(BuildFormatString(t, &kGermanLocale), "[m]:ss,00");
  t.index = 9;
  EXPECT_EQ(BuildFormatString(t), "[h]:mm:ss");

  NumberStyle dt = Style(format_kind::kDateTime);
  dt.index = 0;
  dt.timeIndex = 2;
  EXPECT_EQ(BuildFormatString(dt), "m/d/yyyy\\ hh:mm");
  dt.dateAfterTime = true;
  EXPECT_EQ(BuildFormatString(dt), "hh:mm\\ m/d/yyyy");

  EXPECT_EQ(BuildFormatString(Style(format_kind::kDefault)), "");
  NumberStyle u = Style(format_kind::kUserDefined);
  std::strcpy(u.userFormat, "0.000;[blue]-0");
  EXPECT_EQ(BuildFormatString(u), "0.000;[blue]-0");
}

TEST(NumberStyleRecord, EveryFieldSurvivesTheStyleRecordAndOtherBytesStay) {
  NumberStyle s = Currency("CHF", 3, negative::kRedAndBrackets, 4);
  s.fixedDecimals = true;
  s.leadingZeroesSet = true;
  s.leadingZeroes = 5;
  s.groupDigits = true;
  s.index = 9;
  s.timeIndex = 4;
  s.dateAfterTime = true;
  s.systemDateOrder = true;
  s.denominatorDigits = 3;
  s.denominator = 1000000007LL;
  s.exponent = 2;
  s.exponentPower = 12;
  std::strcpy(s.userFormat, "#,##0.00 \"units\"");
  StyleRecord record{};
  std::memset(record.bytes, 0xAB, sizeof record.bytes);
  WriteNumberStyle(s, record);
  EXPECT_TRUE(ReadNumberStyle(record) == s);
  EXPECT_EQ(record.bytes[style::kFontSetAt], 0xAB);  // the font part is not the format's
  EXPECT_EQ(record.bytes[style::kFormatKindAt], format_kind::kCurrency);

  // A file may fill the text areas to the brim; reading still ends them.
  std::memset(record.bytes + number_style::kUserFormatAt, 'x', kFormatTextMax);
  std::memset(record.bytes + number_style::kSymbolAt, 'y', 16);
  NumberStyle full = ReadNumberStyle(record);
  EXPECT_EQ(std::strlen(full.userFormat), kFormatTextMax);
  EXPECT_EQ(std::strlen(full.symbol), 15u);
}

}  // namespace
}  // namespace kelpdex
