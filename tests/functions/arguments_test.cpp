#include "functions/arguments.h"

#include <gtest/gtest.h>

#include <string>

#include "store/range_cursor.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

// Test functions that expose what the helpers hand a handler.
std::string gText;
RangeArg gRange;
double gRangeSum = 0;

// TEXTOF(x): keeps the text GetTextArg gives and returns its length.
void TextOf(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  char buffer[kTextArgSize];
  std::string_view text;
  uint8_t error = GetTextArg(e, base, buffer, text);
  gText.assign(text);
  SetNumberResult(e, base, static_cast<double>(text.size()), error);
}

// SHAPE(x): keeps the rectangle GetRangeArg gives (owning an array's chain beyond the call) and
// returns rows * 1000 + columns.
void Shape(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  RangeArg range;
  uint8_t error = GetRangeArg(e, base, range);
  double shape = 0;
  if (error == 0) {
    shape = range.rows() * 1000.0 + range.columns();
    gRangeSum = 0;
    RangeCursor read(range.cells, range.firstRow, range.lastRow, range.firstColumn,
                     range.lastColumn);
    while (CellRecord* r = read.Next()) {
      if (cell::IsNumber(r)) gRangeSum += cell::Number(r);
    }
    gRange = std::move(range);
  }
  SetNumberResult(e, base, shape, error);
}

const FunctionEntry kEntries[] = {{Shape, "SHAPE("}, {TextOf, "TEXTOF("}};
const FunctionTable kFunctions = {kEntries, 2};

class ArgumentsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t.PutNumber(0, 0, 2.5);
    t.PutText(0, 1, "Bob");
    t.PutNumber(1, 0, 4);
  }
  void TearDown() override { gRange = RangeArg(); }
  testing::FormulaSheet t{{{"A", kFieldNumber}, {"B", kFieldText}}, &kFunctions};
};

TEST_F(ArgumentsTest, TextOfEveryKind) {
  EXPECT_EQ(t.Eval("=TEXTOF(\"ab\"&\"c\")"), "3");
  EXPECT_EQ(gText, "abc");
  EXPECT_EQ(t.Eval("=TEXTOF(1/8)"), "5");
  EXPECT_EQ(gText, "0.125");
  EXPECT_EQ(t.Eval("=TEXTOF(B)"), "3");  // a reference is loaded first
  EXPECT_EQ(gText, "Bob");
  EXPECT_EQ(t.Eval("=TEXTOF(1/0)"), "#DIV/0!");
  EXPECT_EQ(gText, "#DIV/0!");
  EXPECT_EQ(t.Eval("=TEXTOF({1,2})"), "#VALUE!");
  EXPECT_EQ(t.Eval("=TEXTOF(A:B)"), "#VALUE!");
  // The string was taken off the pool: a concatenation behind it still finds its own operands.
  EXPECT_EQ(t.Eval("=\"x\"&TEXTOF(\"long text\")&\"y\""), "x9y");
}

TEST_F(ArgumentsTest, RangesAndArraysWithTheirBounds) {
  // A range of fields is the record's cells from A to B.
  EXPECT_EQ(t.Eval("=SHAPE(A:B)"), "1002");
  EXPECT_EQ(gRange.firstRow, 0u);
  EXPECT_EQ(gRange.lastColumn, 1);
  EXPECT_EQ(gRange.owned, nullptr);
  EXPECT_EQ(gRangeSum, 2.5);

  // The array's chain is the caller's: it stays readable after the call, while the engine goes
  // on making arrays of its own.
  EXPECT_EQ(t.Eval("=SHAPE({1,2,3;4,5,6})"), "2003");
  ASSERT_NE(gRange.owned, nullptr);
  EXPECT_EQ(gRangeSum, 21);
  EXPECT_EQ(t.Eval("=SHAPE({9;9})"), "2001");
  EXPECT_EQ(t.Eval("=SHAPE({1,2,3;4,5,6})"), "2003");
  EXPECT_EQ(gRangeSum, 21);

  EXPECT_EQ(t.Eval("=SHAPE(\"text\")"), "#VALUE!");
  EXPECT_EQ(t.Eval("=SHAPE(5)"), "#VALUE!");
  EXPECT_EQ(t.Eval("=SHAPE(1/0)"), "#DIV/0!");
}

}  // namespace
}  // namespace kelpdex
