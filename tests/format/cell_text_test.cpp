#include "format/cell_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "format/parse_date.h"
#include "support/format_locales.h"

namespace kelpdex {
namespace {

using testing::kGermanLocale;

NumberStyle Kind(uint8_t kind) {
  NumberStyle s;
  s.kind = kind;
  return s;
}

struct Typed {
  TypedResult result;
  NumberStyle style;
  std::vector<uint8_t> cell = std::vector<uint8_t>(kTypedCellMax);
  const CellRecord* record() const { return cell::At(cell.data()); }
};

Typed Type(const std::string& text, const NumberStyle& style,
           const LocaleSettings& settings = genericLocale) {
  Typed t;
  t.style = style;
  t.result = TextToCell(text, t.style, t.cell.data(), 4, 2, settings);
  return t;
}

TEST(CellDisplayText, NumbersTextsErrorsAndFormulasThroughTheStyle) {
  uint8_t rec[64];
  NumberStyle money = Kind(format_kind::kCurrency);
  std::strcpy(money.symbol, "$");
  money.decimalDigits = 2;
  money.negative = negative::kBrackets;
  CellFormatter generic(money, genericLocale);
  char out[kDisplayTextMax];
  cell::EncodeNumber(rec, 0, 0, -1234.5);
  generic.Display(cell::At(rec), out);
  EXPECT_STREQ(out, "($1,234.50)");

  NumberStyle percent = Kind(format_kind::kPercentage);
  percent.fixedDecimals = true;
  percent.decimalDigits = 1;
  cell::EncodeNumber(rec, 0, 0, 0.256);
  EXPECT_EQ(CellFormatter(percent, kGermanLocale).Display(cell::At(rec), out), 5u);
  EXPECT_STREQ(out, "25,6%");

  // A date kind shows a number in the general form, and a generic date text through the date.
  NumberStyle date = Kind(format_kind::kDate);
  date.index = 9;
  EXPECT_EQ(CellDisplayText(cell::At(rec), date), "0.256");
  uint8_t text[64];
  cell::EncodeText(text, 0, 0, "2006-01-31");
  CellFormatter(date, genericLocale).Display(cell::At(text), out);
  EXPECT_STREQ(out, "January 31, 2006");
  cell::EncodeText(text, 0, 0, "hello");
  EXPECT_EQ(CellDisplayText(cell::At(text), date), "hello");

  cell::EncodeNumber(rec, 0, 0, 0, 0x10);
  EXPECT_EQ(CellDisplayText(cell::At(rec), money), "#DIV/0!");

  uint8_t formula[128];
  cell::EncodeFormula(formula, 0, 0, "=1/8");
  EXPECT_EQ(CellDisplayText(cell::At(formula), money), "");  // never computed
  cell::SetCachedNumber(formula, 0.125);
  EXPECT_EQ(CellFormatter(money, genericLocale).Display(cell::At(formula), out), 5u);
  EXPECT_STREQ(out, "$0.13");
  cell::EncodeFormulaWithString(formula, 0, 0, "=\"x\"", "2006-01-31");
  CellFormatter(date, genericLocale).Display(cell::At(formula), out);
  EXPECT_STREQ(out, "January 31, 2006");

  NumberStyle user = Kind(format_kind::kUserDefined);
  std::strcpy(user.userFormat, "0.0;[red]-0.0;\"zero\";\"[\"@\"]\"");
  CellFormatter userFormatter(user, genericLocale);
  FormatColour colour;
  cell::EncodeNumber(rec, 0, 0, -2);
  userFormatter.Display(cell::At(rec), out, &colour);
  EXPECT_STREQ(out, "-2.0");
  EXPECT_TRUE(colour.set);
  cell::EncodeText(text, 0, 0, "t");
  userFormatter.Display(cell::At(text), out);
  EXPECT_STREQ(out, "[t]");
  std::strcpy(user.userFormat, "[red][red][red][red]0");  // a broken format: the general form
  cell::EncodeNumber(rec, 0, 0, 2.5);
  EXPECT_EQ(CellDisplayText(cell::At(rec), user), "2.5");
}

TEST(TextToCell, ErrorLiteralsAreWholeAndCaseBlind) {
  Typed t = Type("#div/0!", Kind(format_kind::kDefault));
  ASSERT_EQ(t.result.kind, TypedCell::kError);
  EXPECT_TRUE(cell::IsNumber(t.record()));
  EXPECT_EQ(cell::ErrorNibble(t.record()), 0x10);
  EXPECT_EQ(cell::Row(t.record()), 4u);
  EXPECT_EQ(cell::Column(t.record()), 2);
  t = Type("#div/0", Kind(format_kind::kDefault));
  ASSERT_EQ(t.result.kind, TypedCell::kText);
  EXPECT_EQ(cell::Text(t.record()), "#div/0");
  EXPECT_EQ(Type("#SYNTAX!", Kind(0)).result.kind, TypedCell::kError);
}

TEST(TextToCell, NumbersDatesAndTextInTheirOrder) {
  SetDateParseYearForTesting(2026);
  Typed t = Type("1,234.5", Kind(format_kind::kDefault));
  ASSERT_EQ(t.result.kind, TypedCell::kNumber);
  EXPECT_EQ(cell::Number(t.record()), 1234.5);
  EXPECT_EQ(t.style.kind, format_kind::kGeneral);  // the grouping typed comes back as a style
  t = Type("42", Kind(format_kind::kDefault));
  EXPECT_EQ(t.style.kind, format_kind::kDefault);

  // A date typed is kept as its generic text.
  t = Type("8/11/2005", Kind(format_kind::kDefault));
  ASSERT_EQ(t.result.kind, TypedCell::kText);
  EXPECT_EQ(cell::Text(t.record()), "2005-08-11");
  t = Type("21.11.2026 10:15", Kind(format_kind::kDefault), kGermanLocale);
  EXPECT_EQ(cell::Text(t.record()), "2026-11-21T10:15:00");

  // In a fraction column "1/2" is a half, not the second of January.
  t = Type("1/2", Kind(format_kind::kFraction));
  ASSERT_EQ(t.result.kind, TypedCell::kNumber);
  EXPECT_EQ(cell::Number(t.record()), 0.5);
  EXPECT_EQ(t.style.kind, format_kind::kFraction);
  EXPECT_EQ(Type("10 4/5", Kind(format_kind::kDefault)).result.kind, TypedCell::kNumber);

  // A currency column reads its own symbol where the locale has another.
  NumberStyle pounds = Kind(format_kind::kCurrency);
  std::strcpy(pounds.symbol, "GBP");
  t = Type("GBP 12,50", pounds, kGermanLocale);
  ASSERT_EQ(t.result.kind, TypedCell::kNumber);
  EXPECT_EQ(cell::Number(t.record()), 12.5);
  EXPECT_STREQ(t.style.symbol, "GBP");
  t = Type("12,5 %", pounds, kGermanLocale);  // not money: read as a percentage further on
  EXPECT_EQ(cell::Number(t.record()), 0.125);
  EXPECT_EQ(t.style.kind, format_kind::kPercentage);

  EXPECT_EQ(Type("1e999", Kind(format_kind::kDefault)).result.kind, TypedCell::kUnchanged);
  t = Type("hello world", Kind(format_kind::kDefault));
  EXPECT_EQ(cell::Text(t.record()), "hello world");
  EXPECT_EQ(Type(std::string(8174, 'x'), Kind(0)).result.kind, TypedCell::kTooLong);
  EXPECT_EQ(Type(std::string(8173, 'x'), Kind(0)).result.kind, TypedCell::kText);
  SetDateParseYearForTesting(0);
}

}  // namespace
}  // namespace kelpdex
