#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/locale_settings.h"
#include "formula/formula_engine.h"
#include "functions/criteria.h"
#include "functions/function_table.h"
#include "store/cell_record.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class TextTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Field C of the record is missing.
    t_.PutText(0, 0, "abc");
    t_.PutText(0, 1, "Hello World");
    t_.PutText(0, 3, "xyz");
    t_.PutNumber(0, 4, 3);
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  // The cells of an array result, row by row, "|" between them and "_" for a missing cell.
  std::string Cells(const std::string& formula) {
    t_.engine->EvaluateFormula(formula, 0, 0);
    const FormulaValue& result = t_.engine->Result();
    if (result.kind != kind::kArray) return "not an array: " + t_.engine->ResultDisplay();
    std::string out;
    for (uint32_t r = 0; r <= result.row2; ++r) {
      for (uint16_t c = 0; c <= result.column2; ++c) {
        const CellRecord* cell = t_.engine->TopArray().GetCell(r, c);
        if (!out.empty()) out += "|";
        if (cell == nullptr) {
          out += "_";
        } else if (cell::ErrorNibble(cell) != 0) {
          out += ErrorLiteral(cell::ErrorNibble(cell));
        } else {
          out += cell::IsText(cell) ? std::string(cell::Text(cell)) : "#";
        }
      }
    }
    return out;
  }
  testing::FormulaSheet t_{{{"A", kFieldText},
                            {"B", kFieldText},
                            {"C", kFieldText},
                            {"D", kFieldText},
                            {"N", kFieldNumber}},
                           &BuiltinFunctions()};
};

TEST_F(TextTest, PositionsAndCounts) {
  EXPECT_EQ(Eval("=mid(\"abc\", 9, 1)"), "");
  EXPECT_EQ(Eval("=mid(\"abc\", 0, 1)"), "#VALUE!");
  EXPECT_EQ(Eval("=mid(\"abc\", 2, -1)"), "#VALUE!");
  EXPECT_EQ(Eval("=mid(\"abcdef\", 2, 99)"), "bcdef");
  EXPECT_EQ(Eval("=left(\"abc\",)"), "a");
  EXPECT_EQ(Eval("=left(\"abc\")"), "a");
  EXPECT_EQ(Eval("=left(\"abc\", 0)"), "");
  EXPECT_EQ(Eval("=left(\"abc\", -1)"), "#VALUE!");
  EXPECT_EQ(Eval("=right(\"abc\", 7)"), "abc");
  EXPECT_EQ(Eval("=right(B, N)"), "rld");
  EXPECT_EQ(Eval("=replace(\"abcd\", 2, 0, \"XY\")"), "aXYbcd");
  EXPECT_EQ(Eval("=replace(\"abcd\", 9, 2, \"!\")"), "abcd!");
  EXPECT_EQ(Eval("=code(\"\")"), "#VALUE!");
  EXPECT_EQ(Eval("=char(0)"), "#VALUE!");
  EXPECT_EQ(Eval("=code(char(233))"), "233");
  // Arguments beyond the parameters stay on the stack and spoil the formula.
  EXPECT_EQ(Eval("=left(\"abc\", 1, 2)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=mid(\"abc\", 1)"), "#SYNTAX!");
}

TEST_F(TextTest, TextsCutAndMappedWhereTheyStandKeepThePoolInStep) {
  // A plain text with whole numbers is changed on top of the pool; a count given as text, or a
  // number to cut, takes the full frame. Both must agree, with other texts alive below.
  EXPECT_EQ(Eval("=left(B, 5) & \"|\" & left(B, \"5\")"), "Hello|Hello");
  EXPECT_EQ(Eval("=right(B, 2.5) & \"|\" & right(B, \"3\")"), "rld|rld");
  EXPECT_EQ(Eval("=mid(B, 7, 3) & mid(B, 99, 3) & \"|\" & mid(B, \"7\", 3)"), "Wor|Wor");
  EXPECT_EQ(Eval("=\"x\" & left(A, 2) & upper(A) & lower(B) & right(A, 9)"),
            "xabABChello worldabc");
  EXPECT_EQ(Eval("=left(\"x\" & A, 2) & \"|\" & left(N, 1) & left(12345, 2) & left(C, 2)"),
            "xa|312");
  EXPECT_EQ(
      Eval("=\"[\" & trim(\"  a \t b  \") & proper(\"ab cd\") & clean(char(7) & \"z\") & \"]\""),
      "[a bAb Cdz]");
  // Texts shortened in place leave room that the next push takes.
  EXPECT_EQ(Eval("=left(rept(\"a\", 3000), 1) & left(rept(\"b\", 3000), 2)"), "abb");
  EXPECT_EQ(Eval("=left(A, 4294967296)"), "#NUM!");
  EXPECT_EQ(Eval("=mid(A, 0, 1)"), "#VALUE!");
  EXPECT_EQ(Eval("=left(A, 1/0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=upper(na())"), "#N/A!");
  EXPECT_EQ(Eval("=left(Nowhere, 2)"), "#NAME?");
}

TEST_F(TextTest, FindComparesBytesAndSearchMatchesPatterns) {
  EXPECT_EQ(Eval("=find(\"x\", \"abc\", 9)"), "#VALUE!");
  EXPECT_EQ(Eval("=find(\"B\", \"abcb\")"), "#VALUE!");
  EXPECT_EQ(Eval("=find(\"b\", \"abcb\", 3)"), "4");
  EXPECT_EQ(Eval("=search(\"B\", \"abcb\", 3)"), "4");
  EXPECT_EQ(Eval("=search(\"~*\", \"a*b\")"), "2");
  EXPECT_EQ(Eval("=search(\"~?\", \"ab\")"), "#VALUE!");
  EXPECT_EQ(Eval("=search(\"d*d\", \"abcd\")"), "#VALUE!");
  EXPECT_EQ(Eval("=exact(\"Abc\", \"abc\") + exact(\"\", C)"), "1");
}

TEST(FindPattern, LeftmostMatchWithItsLongestStretch) {
  size_t length = 0;
  EXPECT_EQ(FindPattern("b*d", "abcdbd", 0, length), 1u);
  EXPECT_EQ(length, 5u);
  EXPECT_EQ(FindPattern("b*d", "abcdbd", 2, length), 4u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(FindPattern("?~*", "a*B*", 0, length), 0u);
  EXPECT_EQ(length, 2u);
  EXPECT_EQ(FindPattern("~x", "a~xb", 0, length), 1u);  // a tilde before a letter is itself
  EXPECT_EQ(FindPattern("*", "abc", 3, length), 3u);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(FindPattern("c", "abc", 4, length), std::string_view::npos);
  // The matcher of countIf agrees on whole texts.
  for (std::string_view pattern : {"a*c", "?b?", "~*", "*~?*", "A*"}) {
    for (std::string_view text : {"abc", "*", "x?y", "ab"}) {
      bool whole = FindPattern(pattern, text, 0, length) == 0 && length == text.size();
      bool anchored = WildcardMatch(pattern, text);
      // A whole-text match is found at 0 with the text's length, since the longest stretch wins.
      EXPECT_EQ(whole, anchored) << pattern << " in " << text;
    }
  }
}

TEST_F(TextTest, SubstituteCountsOccurrences) {
  EXPECT_EQ(Eval("=substitute(\"a1b1c1\", \"1\", \"--\", 2)"), "a1b--c1");
  EXPECT_EQ(Eval("=substitute(\"a1b1c1\", \"1\", \"\")"), "abc");
  EXPECT_EQ(Eval("=substitute(\"a1b1c1\", \"1\", \"x\", 4)"), "a1b1c1");
  EXPECT_EQ(Eval("=substitute(\"aAa\", \"a\", \"b\")"), "bbb");
  EXPECT_EQ(Eval("=substitute(\"abc\", \"\", \"x\")"), "abc");
  EXPECT_EQ(Eval("=substitute(\"abc\", \"*\", \"x\")"), "x");
  EXPECT_EQ(Eval("=substitute(\"a*c\", \"~*\", \"+\")"), "a+c");
  EXPECT_EQ(Eval("=substitute(\"abc\", \"b\", \"x\", -1)"), "#VALUE!");
}

TEST_F(TextTest, CaseSpacingAndCleaning) {
  EXPECT_EQ(Eval("=proper(\"o'neil mcDONALD 2nd\")"), "O'Neil Mcdonald 2Nd");
  EXPECT_EQ(Eval("=upper(\"caf\" & char(233))"), "CAF\xC9");
  EXPECT_EQ(Eval("=lower(B)"), "hello world");
  EXPECT_EQ(Eval("=\"[\" & trim(\"  a \t b  \") & \"]\""), "[a b]");
  EXPECT_EQ(Eval("=len(clean(char(9) & \"a\" & char(127) & char(200)))"), "2");
  EXPECT_EQ(Eval("=asc(1/4) & asc(\"x\")"), "0.25x");
}

TEST_F(TextTest, ResultsBeyondThePoolAreValueErrors) {
  EXPECT_EQ(Eval("=len(rept(\"abc\", 1000))"), "3000");
  EXPECT_EQ(Eval("=rept(\"abc\", 1024)"), "#VALUE!");
  EXPECT_EQ(Eval("=rept(\"abc\", 2147483647)"), "#VALUE!");
  EXPECT_EQ(Eval("=rept(\"\", 2147483647)"), "");
  EXPECT_EQ(Eval("=rept(\"a\", -1)"), "#VALUE!");
  // Array cells are not on the pool, so they can carry a result past it.
  const std::string forty = "\"1234567890123456789012345678901234567890\"";
  EXPECT_EQ(Eval("=concatenate(rept(\"a\", 3000), {" + forty + "," + forty + "})"), "#VALUE!");
  EXPECT_EQ(Eval("=len(concatenate(rept(\"a\", 2900), {" + forty + "," + forty + "}))"), "2980");
  EXPECT_EQ(Eval("=len(concatenate(rept(\"a\", 1000), rept(\"b\", 1000)))"), "2000");
  // Room taken by strings still alive below the call counts too.
  EXPECT_EQ(Eval("=if(1, rept(\"x\", 2000), 0) & rept(\"y\", 1500)"), "#VALUE!");
  EXPECT_EQ(Eval("=len(substitute(rept(\"a\", 1500), \"a\", \"bb\"))"), "3000");
  EXPECT_EQ(Eval("=substitute(rept(\"a\", 1600), \"a\", \"bb\")"), "#VALUE!");
  // After all of that the pool is balanced again.
  EXPECT_EQ(Eval("=upper(left(A, 2)) & \"-\" & N"), "AB-3");
}

TEST_F(TextTest, ConcatenateReadsArraysWholeAndSkipsEmptyCells) {
  EXPECT_EQ(Eval("=concatenate(A:D, \"|\", {1, 2; 3, 4}, N)"), "abcHello Worldxyz|12343");
  EXPECT_EQ(Eval("=concatenate(\"a\", 1/0, \"b\")"), "#DIV/0!");
  EXPECT_EQ(Eval("=concatenate(\"a\")"), "a");
  EXPECT_EQ(Eval("=concatenate()"), "#SYNTAX!");
}

TEST_F(TextTest, ScalarParametersBroadcast) {
  EXPECT_EQ(Cells("=upper(A:D)"), "ABC|HELLO WORLD|_|XYZ");
  EXPECT_EQ(Cells("=left(\"abcdef\", {1, 3, -1})"), "a|abc|#VALUE!");
  EXPECT_EQ(Cells("=mid({\"abc\"; \"hello\"}, 2, {1; 3})"), "b|ell");
  EXPECT_EQ(Eval("=sum(len({\"ab\", \"\"; \"abcd\", 5}))"), "7");
  EXPECT_EQ(Cells("=substitute({\"a-b\", \"c-d\"}, \"-\", {\"+\", \"*\"})"), "a+b|c*d");
  EXPECT_EQ(Eval("=left({1, 2}, {1, 2, 3})"), "#VALUE!");
}

TEST_F(TextTest, NumbersAsTextAndBack) {
  EXPECT_EQ(Eval("=dollar(-1234.567)"), "-$1,234.57");
  EXPECT_EQ(Eval("=dollar(1250, -2)"), "$1,300");
  EXPECT_EQ(Eval("=fixed(1234.5, 1, 1)"), "1234.5");
  EXPECT_EQ(Eval("=fixed(-0.5, 0)"), "-1");
  EXPECT_EQ(Eval("=text(0.256, \"0.0%\")"), "25.6%");
  EXPECT_EQ(Eval("=text(\"abc\", \"0\")"), "#NUM!");
  EXPECT_EQ(Eval("=value(\"$1,234.50\") + value(\"50%\")"), "1235");
  EXPECT_EQ(Eval("=value(\"12abc\")"), "#VALUE!");
  EXPECT_EQ(Eval("=value(N)"), "3");
  // The notation in force decides separators and the currency symbol.
  LocaleSettings saved = currentLocale;
  currentLocale.decimalSeparator = ',';
  currentLocale.thousandSeparator = '.';
  currentLocale.currencySymbol[0] = '\x80';  // the euro sign of the code page
  EXPECT_EQ(Eval("=fixed(1234.567, 2)"), "1.234,57");
  EXPECT_EQ(Eval("=dollar(2.5, 1)"),
            "\x80"
            "2,5");
  EXPECT_EQ(Eval("=value(\"1.234,5\")"), "1234.5");
  currentLocale = saved;
}

TEST_F(TextTest, ErrorsInArgumentsWin) {
  EXPECT_EQ(Eval("=left(1/0, 2)"), "#DIV/0!");
  EXPECT_EQ(Eval("=left(1/0, \"x\")"), "#NUM!");
  EXPECT_EQ(Eval("=mid(\"abc\", 1/0, na())"), "#N/A!");
  EXPECT_EQ(Eval("=len(1/0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=t(\"a\") & jis(\"a\")"), "#IMPL!");
  EXPECT_EQ(Eval("=bahtText(1)"), "#IMPL!");
}

}  // namespace
}  // namespace kelpdex
