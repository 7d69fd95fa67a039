#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/workbook.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class LogicalTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t_.PutNumber(0, 0, 3);
    t_.PutText(0, 1, "abc");
    t_.PutText(0, 2, "");
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  testing::FormulaSheet t_{
      {{"Num", kFieldNumber}, {"Text", kFieldText}, {"Blank", kFieldText}, {"Empty", kFieldNumber}},
      &BuiltinFunctions()};
};

struct Case {
  const char* formula;
  const char* shown;
};

const Case kCases[] = {
    {"=and(1, 2, true, \"10\")", "1"},
    {"=and(1, 0)", "0"},
    {"=or(0, 0.4)", "0"},
    {"=or(0, 0.5)", "1"},
    {"=and(1, -1)", "#VALUE!"},
    {"=and(1, \"x\")", "#VALUE!"},
    {"=and({1,1;1,0})", "0"},
    {"=and()", "#SYNTAX!"},
    {"=not(0)", "1"},
    {"=not(2)", "0"},
    {"=not({0,1})", "1"},
    {"=true()+false()", "1"},
    {"=true(1)", "#SYNTAX!"},
    {"=if(1, \"yes\", \"no\")", "yes"},
    {"=if(0, \"yes\", \"no\")", "no"},
    {"=if(\"1\", \"yes\", \"no\")", "yes"},
    {"=if(Num>2, Text, \"small\")&\"!\"", "abc!"},
    {"=if(0, 1/0, 7)", "7"},
    {"=if(1, 1/0, 7)", "#DIV/0!"},
    {"=if(-1, 1, 2)", "#NUM!"},
    {"=if(0, {1,2}, {3,4})", "3"},
    {"=if(1, {1,2}, {3,4})", "1"},
    {"=if({1,0}, \"a\", \"b\")", "a"},
    // Arrays among the choices go element by element beside an array of tests.
    {"=concatenate(if({1,0,1}, {\"a\",\"b\",\"c\"}, \"z\"))", "azc"},
    {"=if({1,0}, {1,2}, {3,4,5})", "#VALUE!"},
    {"=if(1, 2)", "#SYNTAX!"},
    {"=isBlank(Empty)", "1"},
    {"=isBlank(Blank)", "1"},
    {"=isBlank(Text)", "0"},
    {"=isErr(na())", "0"},
    {"=isErr(1/0)", "1"},
    {"=isError(na())", "1"},
    {"=isNA(na())", "1"},
    {"=isEven(12.6)", "0"},
    {"=isOdd(12.6)", "1"},
    {"=isEven(\"x\")", "#NUM!"},
    {"=isLogical(1)", "1"},
    {"=isLogical(2)", "0"},
    {"=isText(Text)", "1"},
    {"=isNonText(Num)", "1"},
    {"=isNumber(\"12\")", "1"},
    {"=isNumber(Text)", "0"},
    {"=isRef(Num)", "1"},
    {"=isRef(3)", "0"},
    {"=n(\"12\")+n(Text)", "12"},
    {"=na()", "#N/A!"},
    {"=type(1)", "1"},
    {"=type(\"a\")", "2"},
    {"=type(1/0)", "16"},
    {"=type({1,2})", "64"},
    {"=errorType(1/0)", "1"},
    {"=errorType(1)", "#VALUE!"},
    {"=countBlank(Num:Empty)", "2"},
    {"=countBlank(1, , \"\")", "2"},
};

TEST_F(LogicalTest, TableOfResults) {
  for (const Case& c : kCases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
}

}  // namespace
}  // namespace kelpdex
