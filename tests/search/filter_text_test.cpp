#include "search/filter_text.h"

#include <gtest/gtest.h>

#include <string>

namespace kelpdex {
namespace {

std::string Expand(std::string_view field, FieldType type, std::string_view filter) {
  char out[kFilterFormulaRoom];
  size_t n = BuildFilterFormula(field, type, filter, out);
  EXPECT_EQ(n, std::char_traits<char>::length(out));
  return std::string(out, n);
}

TEST(FilterTextTest, EveryOperatorExpandsForNumberAndTextFields) {
  struct Case {
    const char* filter;
    const char* number;
    const char* text;
  } cases[] = {
      {"0:=Qty > 2", "=Qty > 2", "=Qty > 2"},
      {"1:Ber", "=SEARCH(\"Ber\", F,) = 1", "=SEARCH(\"Ber\", F,) = 1"},
      {"2:12", "=F = 12", "=F = \"12\""},
      {"3:12", "=F <> 12", "=F <> \"12\""},
      {"4:12", "=F > 12", "=F > \"12\""},
      {"5:12", "=F < 12", "=F < \"12\""},
      {"6:  10   20 30", "=(F >= 10)*(F <= 20)", "=(F >= \"10\")*(F <= \"20\")"},
      {"7:a b", "=AND(F = a, F = b)", "=AND(SEARCH(\"a\", F,) = 1, SEARCH(\"b\", F,) = 1)"},
      {"8:a", "=OR(F = a)", "=OR(SEARCH(\"a\", F,) = 1)"},
      {"8:   ", "=OR()", "=OR()"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.filter);
    EXPECT_EQ(Expand("F", FieldType::kNumber, c.filter), c.number);
    EXPECT_EQ(Expand("F", FieldType::kText, c.filter), c.text);
    EXPECT_EQ(Expand("F", FieldType::kUnknown, c.filter), c.text);
  }
}

TEST(FilterTextTest, NoTestForEmptyBadOrIncompleteFilters) {
  for (const char* filter : {"", "2", "x:1", "2-1", "9:1", "6:10", "6:   ", "0:"}) {
    SCOPED_TRACE(filter);
    EXPECT_EQ(Expand("F", FieldType::kNumber, filter), "");
  }
}

TEST(FilterTextTest, OperandsGoInAsTypedAndLongExpansionsAreCut) {
  // A quote is not escaped: it ends the formula's string, which then fails to parse.
  EXPECT_EQ(Expand("Name", FieldType::kText, "2:a\"b"), "=Name = \"a\"b\"");
  // A field name is used without quoting, blanks and all.
  EXPECT_EQ(Expand("Last Name", FieldType::kNumber, "4:1"), "=Last Name > 1");
  std::string word(600, 'w');
  std::string cut = Expand("F", FieldType::kText, "7:" + word + " " + word);
  EXPECT_EQ(cut.size(), kFilterFormulaRoom - 1);
  EXPECT_EQ(cut.substr(0, 13), "=AND(SEARCH(\"");
}

TEST(FilterTextTest, SplitAndMakeAreInverse) {
  int digit = -1;
  std::string_view operand;
  std::string made = MakeFilterText(6, "1 2:3");
  ASSERT_TRUE(SplitFilterText(made, digit, operand));
  EXPECT_EQ(digit, 6);
  EXPECT_EQ(operand, "1 2:3");
  EXPECT_FALSE(SplitFilterText("", digit, operand));
  EXPECT_FALSE(SplitFilterText("12:x", digit, operand));
}

}  // namespace
}  // namespace kelpdex
