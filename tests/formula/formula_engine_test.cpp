#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "format/number_text.h"
#include "formula/formula_engine.h"
#include "store/catalogue.h"
#include "store/workbook.h"
#include "support/formula_sheet.h"
#include "support/stand_in_functions.h"

namespace kelpdex {
namespace {

using testing::Argc;
using testing::Sum;

const FunctionEntry kEntries[] = {{Argc, "ARGC("}, {Sum, "SUM("}};
const FunctionTable kFunctions = {kEntries, 2};

class FormulaTest : public ::testing::Test {
 protected:
  void SetUp() override {
    t_.PutNumber(0, 0, 12.5);
    t_.PutText(0, 1, "Bob");
    t_.PutNumber(0, 2, 4);
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }

  testing::FormulaSheet t_{{{"Price", kFieldNumber},
                            {"Name", kFieldText},
                            {"Qty", kFieldNumber},
                            {"Empty", kFieldNumber},
                            {"Price Net", kFieldNumber}},
                           &kFunctions};
  std::unique_ptr<FormulaEngine>& engine_ = t_.engine;
};

struct Case {
  const char* formula;
  const char* shown;
};

// One row per case: the formula and what the grid would show for it.
const Case kCases[] = {
    // Precedence and associativity.
    {"=2+3*4", "14"},
    {"=(2+3)*4", "20"},
    {"=2^3^2", "64"},
    {"=-2^2", "4"},
    {"=2^-1", "0.5"},
    {"=1&2+3", "15"},
    {"=1<2=1", "1"},
    {"=5%", "0.05"},
    {"=5%+1", "1.05"},
    {"+7", "7"},
    {"=+7", "#SYNTAX!"},
    {"= 1 +\r\n 2", "3"},
    // Syntax failures.
    {"=", "#SYNTAX!"},
    {"=1 2", "#SYNTAX!"},
    {"=(1)2", "#SYNTAX!"},
    {"=5%%", "#SYNTAX!"},
    {"=--2", "#SYNTAX!"},
    {"=1+*2", "#SYNTAX!"},
    {"=SUM (1)", "#SYNTAX!"},
    {"=1,2", "#SYNTAX!"},
    {"=(1+2", "#SYNTAX!"},
    {"=1+2)", "#SYNTAX!"},
    {"='it''s'", "#SYNTAX!"},
    {"=1\t+2", "#SYNTAX!"},
    {"=TRUEX", "#SYNTAX!"},
    // Literals.
    {"=TRUE", "1"},
    {"=false", "0"},
    {"=#div/0!", "#DIV/0!"},
    {"=Nosuchname", "#NAME?"},
    {"='Nosuchname'", "Nosuchname"},
    {"=\"say 'hi'\"", "say 'hi'"},
    {"=1.5E3", "1500"},
    {"=.25", "0.25"},
    // Calls and omitted arguments.
    {"=ARGC(1,,2)", "3"},
    {"=ARGC(1,)", "2"},
    {"=ARGC()", "0"},
    {"=SUM(1,SUM(2,3),4)", "10"},
    {"=SUM(1,\"x\")", "#NUM!"},
    // Coercion and comparison.
    {"=Empty+1", "1"},
    {"=\"abc\"+1", "#NUM!"},
    {"=\" 12 \"+1", "13"},
    {"=\"a\"=\"A\"", "1"},
    {"=\"ab\"<\"abc\"", "1"},
    {"=1=\"1\"", "#VALUE!"},
    {"=Empty=\"\"", "1"},
    {"=Empty=0", "1"},
    {"=Empty&\"x\"", "x"},
    {"=Nosuchname&\"x\"", "#NAME?"},
    // Number range.
    {"=1/0", "#DIV/0!"},
    {"=1E308*10", "#NUM!"},
    {"=1E-307/1E10", "#NUM!"},
    {"=(-8)^(1/3)", "#NUM!"},
    {"=0^0", "1"},
    {"=1E309", "#NUM!"},
    // Fields of the current record.
    {"=Price*Qty", "50"},
    {"=price * qty", "50"},
    {"=Name&\"!\"", "Bob!"},
    {"=Price>=10", "1"},
    {"=Price Net", "#SYNTAX!"},  // "Price" stands first and captures the name
    // Arrays and broadcasting.
    {"={1,2}+{1,2,3}", "#VALUE!"},
    {"={1,2}+1", "2"},
    {"={\"a\",2;3}", "a"},
    {"={1,2", "#SYNTAX!"},
    {"={1 2}", "#SYNTAX!"},
    // Ranges and sheets.
    {"=Price:Qty", "12.5"},
    {"=Qty:Price", "#REF!"},
    {"=Price:Qty_Name:Name", "Bob"},
    {"=Price:Price_Qty:Qty", "#NULL!"},
    {"=7_8", "7"},  // not two ranges: the right operand is dropped
    {"=\\system\\T!Price", "Field"},
    {"=system\\T!Name", "Type"},
    {"=nowhere!Price", "#NAME?"},
    {"=system!Price:Name", "Field"},  // a folder stacks the range of every sheet inside it
    {"='[other.kpx]Sheet'!Price", "#REF!"},
    {"=5!Price", "#VALUE!"},
};

TEST_F(FormulaTest, TableOfFormulas) {
  for (const Case& c : kCases) {
    EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
  }
}

TEST_F(FormulaTest, ResultClasses) {
  EXPECT_EQ(engine_->EvaluateFormula("=1+1", 0, 0), kind::kNumber);
  EXPECT_EQ(engine_->EvaluateFormula("=\"a\"&\"b\"", 0, 0), kind::kString);
  EXPECT_EQ(engine_->ResultText(), "ab");
  EXPECT_EQ(engine_->EvaluateFormula("={1;2}", 0, 0), kind::kArray);
  EXPECT_EQ(engine_->EvaluateFormula("plain text", 0, 0), 0);
  EXPECT_EQ(engine_->EvaluateFormula("=1+", 0, 0), 0);
  EXPECT_EQ(engine_->Result().errorCode, ferr::kSyntax);
}

TEST_F(FormulaTest, BroadcastingVisitsEveryPositionWithAScalar) {
  ASSERT_EQ(engine_->EvaluateFormula("={1,,3;4}*2", 0, 0), kind::kArray);
  const FormulaValue& v = engine_->Result();
  EXPECT_EQ(v.column2, 2);
  EXPECT_EQ(v.row2, 1u);
  CellStore& cells = engine_->TopArray();
  std::string shown;
  CellCursor cursor;
  while (CellRecord* r = cells.NextCell(cursor)) {
    shown += std::to_string(cell::Row(r)) + std::to_string(cell::Column(r)) + "=" +
             NumberToGeneral(cell::Number(r)) + " ";
  }
  // The gaps are visited too: an empty element counts as 0.
  EXPECT_EQ(shown, "00=2 01=0 02=6 10=8 11=0 12=0 ");
  // Two arrays alone: only where a cell exists.
  ASSERT_EQ(engine_->EvaluateFormula("={1,,3}+{1,,1}", 0, 0), kind::kArray);
  int count = 0;
  CellCursor c2;
  while (engine_->TopArray().NextCell(c2) != nullptr) ++count;
  EXPECT_EQ(count, 2);
}

TEST_F(FormulaTest, LimitsOfStacksAndPool) {
  std::string nested = "=" + std::string(20, '(') + "1" + std::string(20, ')');
  EXPECT_EQ(Eval(nested), "1");
  nested = "=" + std::string(50, '(') + "1" + std::string(50, ')');
  EXPECT_EQ(Eval(nested), "#SYNTAX!");

  std::string six(600, 'x');
  EXPECT_EQ(Eval("=\"" + six + "\"&\"" + six + "\""), "#VALUE!");
  EXPECT_EQ(Eval("=\"" + six + "\"&\"" + std::string(424, 'y') + "\""),
            six + std::string(424, 'y'));

  // The pool holds 3072 bytes: a fourth string of a thousand characters does not fit and becomes
  // an error value, while the three before it count.
  std::string padded = "\"1" + std::string(999, ' ') + "\"";
  EXPECT_EQ(Eval("=SUM(" + padded + "," + padded + "," + padded + ")"), "3");
  EXPECT_EQ(Eval("=SUM(" + padded + "," + padded + "," + padded + "," + padded + ")"), "#NAME?");
  EXPECT_EQ(Eval("=ARGC(" + padded + "," + padded + "," + padded + "," + padded + ")"), "4");
}

}  // namespace
}  // namespace kelpdex

namespace kelpdex {
namespace {

class RewriteTest : public FormulaTest {
 protected:
  void TearDown() override { currentLocale = genericLocale; }
  void UseCommaDecimal() {
    currentLocale = genericLocale;
    currentLocale.decimalSeparator = ',';
    currentLocale.thousandSeparator = '.';
    currentLocale.listSeparator = ';';
    currentLocale.rowSeparator = '\\';
  }
  std::string Stored(std::string typed) {
    EXPECT_TRUE(engine_->RewriteFormula(typed, true)) << typed;
    return typed;
  }
  std::string Shown(std::string stored) {
    EXPECT_TRUE(engine_->RewriteFormula(stored, false)) << stored;
    return stored;
  }
};

TEST_F(RewriteTest, CommaDecimalNotationBothWays) {
  UseCommaDecimal();
  EXPECT_EQ(Stored("=SUM(1,5;2)"), "=SUM(1.5,2)");
  EXPECT_EQ(Shown("=SUM(1.5,2)"), "=SUM(1,5;2)");
  EXPECT_EQ(Stored("={1,5;2\\3;\"a\"}"), "={1.5,2;3,\"a\"}");
  EXPECT_EQ(Shown("={1.5,2;3,\"a\"}"), "={1,5;2\\3;\"a\"}");
  // Names, functions, blanks and the case of what was typed survive; so do long literals.
  EXPECT_EQ(Stored("= price *  Qty + sum(0,1234567890123456789)"),
            "= price *  Qty + sum(0.1234567890123456789)");
  EXPECT_EQ(Stored("=Name&'say \"x\"'&\"y\""), "=Name&'say \"x\"'&\"y\"");
  EXPECT_EQ(Stored("+1,5E3"), "=1.5E3");
}

TEST_F(RewriteTest, RoundTripKeepsTheValue) {
  UseCommaDecimal();
  for (std::string typed : {"=ARGC(1;;2)", "=2^-1*3,25", "={1;2\\3;4}+1", "=Nosuchname&#N/A!"}) {
    std::string stored = Stored(typed);
    currentLocale = genericLocale;
    std::string value = Eval(stored);
    UseCommaDecimal();
    EXPECT_EQ(Shown(stored), typed);
    EXPECT_NE(value, "#SYNTAX!") << stored;
  }
}

TEST_F(RewriteTest, TooLongOrNotAFormulaLeavesTheTextAlone) {
  UseCommaDecimal();
  std::string longer = "=" + std::string(1030, '1');
  std::string copy = longer;
  EXPECT_FALSE(engine_->RewriteFormula(copy, true));
  EXPECT_EQ(copy, longer);
  std::string plain = "1,5";
  EXPECT_FALSE(engine_->RewriteFormula(plain, true));
  EXPECT_EQ(plain, "1,5");
}

}  // namespace
}  // namespace kelpdex

namespace kelpdex {
namespace {

class OtherDocuments : public ExternalDocuments {
 public:
  std::unique_ptr<Workbook> Open(const std::string& file, const std::string& referrer) override {
    ++opened;
    from = referrer;
    if (file != "other.kpx") return nullptr;
    auto book = std::make_unique<Workbook>();
    auto* sheet = new Worksheet("Sheet");
    book->AttachNode(sheet, nullptr);
    uint8_t rec[64];
    cell::EncodeNumber(rec, 0, 0, 42);
    sheet->cells.PutCell(rec);
    cell::EncodeText(rec, 0, 1, "far");
    sheet->cells.PutCell(rec);
    return book;
  }
  int opened = 0;
  std::string from;
};

TEST_F(FormulaTest, ReferencesIntoAnotherDocument) {
  OtherDocuments documents;
  SetExternalDocuments(&documents);
  EXPECT_EQ(Eval("='[other.kpx]Sheet'!Price"), "42");
  EXPECT_EQ(Eval("=\"[other.kpx  ]\\Sheet\"!Name&\"!\""), "far!");
  EXPECT_EQ(Eval("='[other.kpx]Sheet'!Price:Name"), "42");  // a range comes back as an array
  EXPECT_EQ(Eval("='[missing.kpx]Sheet'!Price"), "#REF!");
  EXPECT_EQ(Eval("='[other.kpx]Nope'!Price"), "#REF!");
  EXPECT_EQ(Eval("='[other.kpx]" + std::string(257, 'p') + "'!Price"), "#REF!");
  // Each evaluation opens the file afresh; an overlong path is refused unopened.
  EXPECT_EQ(documents.opened, 5);
  SetExternalDocuments(nullptr);
  EXPECT_EQ(Eval("='[other.kpx]Sheet'!Price"), "#REF!");
}

TEST_F(FormulaTest, AnotherDocumentIsReadOnceForAnEvaluationOrAPass) {
  OtherDocuments documents;
  SetExternalDocuments(&documents);
  t_.book.fileName = "/data/mine.kpx";
  EXPECT_EQ(Eval("='[other.kpx]Sheet'!Price + '[other.kpx]Sheet'!Price"), "84");
  EXPECT_EQ(documents.opened, 1);
  EXPECT_EQ(documents.from, "/data/mine.kpx");
  // A missing file is remembered for the pass too, so records do not look for it again.
  engine_->StartPass();
  for (int record = 0; record < 3; ++record) {
    EXPECT_EQ(Eval("='[other.kpx]Sheet'!Name"), "far");
    EXPECT_EQ(Eval("='[missing.kpx]Sheet'!Name"), "#REF!");
  }
  engine_->EndPass();
  EXPECT_EQ(documents.opened, 3);
  // A new pass reads the file again: it may have changed in between.
  engine_->StartPass();
  EXPECT_EQ(Eval("='[other.kpx]Sheet'!Price"), "42");
  engine_->EndPass();
  EXPECT_EQ(documents.opened, 4);
  SetExternalDocuments(nullptr);
}

}  // namespace
TEST_F(FormulaTest, ConcatenationKeepsEachOperandWhole) {
  // Texts on top of the pool join where they stand; other orders are copied. Both ways the
  // operands keep their order and nothing of one runs into the other.
  EXPECT_EQ(Eval("=\"ab\"&\"cd\"&1&\"\"&2.5"), "abcd12.5");
  EXPECT_EQ(Eval("=1&\"x\"&2"), "1x2");
  EXPECT_EQ(Eval("=Name&Name&\"!\""), "BobBob!");
  EXPECT_EQ(Eval("=\"x\"&(1&\"y\")&Empty"), "x1y");
  EXPECT_EQ(Eval("=(\"a\"&\"b\")&(\"c\"&\"d\")=\"abcd\""), "1");
  EXPECT_EQ(Eval("=ARGC(\"a\"&\"b\", \"c\")&\"d\""), "2d");
  // The longest result is 1024 characters, with a number's digits as with a text.
  std::string long1020 = "\"" + std::string(1020, 'z') + "\"";
  EXPECT_EQ(Eval("=" + long1020 + "&1234"), std::string(1020, 'z') + "1234");
  EXPECT_EQ(Eval("=" + long1020 + "&12345"), "#VALUE!");
  EXPECT_EQ(Eval("=" + long1020 + "&\"1234\"&\"\""), std::string(1020, 'z') + "1234");
  EXPECT_EQ(Eval("=" + long1020 + "&\"12345\""), "#VALUE!");
}

}  // namespace kelpdex
