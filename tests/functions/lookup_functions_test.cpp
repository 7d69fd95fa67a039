#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "functions/function_table.h"
#include "store/catalogue.h"
#include "store/workbook.h"
#include "support/formula_sheet.h"

namespace kelpdex {
namespace {

class LookupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // One record: A..D hold 4, "pear", 7 and "Plum"; Gap is empty.
    t_.PutNumber(0, 0, 4);
    t_.PutText(0, 1, "pear");
    t_.PutNumber(0, 2, 7);
    t_.PutText(0, 3, "Plum");
  }
  std::string Eval(const std::string& formula) { return t_.Eval(formula); }
  testing::FormulaSheet t_{{{"A", kFieldNumber},
                            {"B", kFieldText},
                            {"C", kFieldNumber},
                            {"D", kFieldText},
                            {"Gap", kFieldNumber}},
                           &BuiltinFunctions()};
};

struct Case {
  const char* formula;
  const char* shown;
};

const Case kCases[] = {
    // Shapes.
    {"=columns({1,2,3;4,5,6})+10*rows({1,2,3;4,5,6})", "23"},
    {"=columns(A:D)", "4"},
    {"=rows(A:D)", "1"},
    {"=columns(7)", "1"},
    {"=columns(1/0)", "#DIV/0!"},
    {"=columns()", "#SYNTAX!"},
    {"=rows({1;2}, 1)", "#SYNTAX!"},
    // vLookUp and hLookUp: the exact search, the nearest below (the default) and above.
    {"=vLookUp(2, {1,\"a\";2,\"b\";3,\"c\"}, 2, 0)", "b"},
    {"=vLookUp(2.5, {1,\"a\";2,\"b\";3,\"c\"}, 2)", "b"},
    {"=vLookUp(2.5, {1,\"a\";2,\"b\";3,\"c\"}, 2, -1)", "c"},
    {"=vLookUp(0.5, {1,\"a\";2,\"b\"}, 2)", "#N/A!"},
    {"=vLookUp(9, {1,\"a\";2,\"b\"}, 2, -1)", "#N/A!"},
    {"=vLookUp(2.5, {1,\"a\";2,\"b\"}, 2, 0)", "#N/A!"},
    // Unsorted: the largest value not greater wins wherever it stands, the first of equals.
    {"=vLookUp(6, {5,\"x\";1,\"y\";3,\"z\";5,\"w\"}, 2)", "x"},
    {"=vLookUp(4, {5,\"x\";1,\"y\";3,\"z\"}, 2, -1)", "x"},
    {"=hLookUp(2, {1,2,3;\"a\",\"b\",\"c\"}, 2, 0)", "b"},
    {"=hLookUp(2.5, {1,2,3;\"a\",\"b\",\"c\"}, 2, -1)", "c"},
    {"=hLookUp(3, {1,2,3;\"a\",\"b\",\"c\"}, 1)", "3"},
    // Numbers meet numbers and texts texts, without regard to case.
    {"=vLookUp(\"2\", {1,\"a\";2,\"b\"}, 2, 0)", "#N/A!"},
    {"=vLookUp(\"BE\", {\"al\",1;\"be\",2;\"ce\",3}, 2, 0)", "2"},
    {"=vLookUp(\"bz\", {\"al\",1;\"be\",2;\"ce\",3}, 2)", "2"},
    {"=vLookUp(\"bz\", {\"al\",1;\"be\",2;\"ce\",3}, 2, -1)", "3"},
    // Patterns, in exact searches only; "~" makes "*" and "?" plain.
    {"=vLookUp(\"c*\", {\"al\",1;\"be\",2;\"ce\",3}, 2, 0)", "3"},
    {"=vLookUp(\"?E\", {\"al\",1;\"be\",2;\"ce\",3}, 2, 0)", "2"},
    {"=vLookUp(\"a~*\", {\"ab\",1;\"a*\",2}, 2, 0)", "2"},
    {"=vLookUp(\"a*\", {\"ab\",1;\"a*\",2}, 2, 1)", "2"},
    // The column asked for, and what the result holds.
    {"=vLookUp(2, {1,\"a\";2,\"b\"}, 3, 0)", "#REF!"},
    {"=vLookUp(2, {1,\"a\";2,\"b\"}, 0, 0)", "#VALUE!"},
    {"=vLookUp(2, {1,\"a\";2,}, 2, 0)", ""},
    {"=vLookUp(2, {1,\"a\";2,#NUM!}, 2, 0)", "#NUM!"},
    {"=vLookUp(2, {1,#DIV/0!;2,\"b\"}, 2, 0)", "b"},
    {"=vLookUp(1/0, {1,\"a\"}, 2, 0)", "#DIV/0!"},
    {"=vLookUp(Gap, {0,\"zero\"}, 2, 0)", "#N/A!"},
    {"=vLookUp({1,2}, {1,\"a\"}, 2, 0)", "#VALUE!"},
    {"=vLookUp(1, 5, 1, 0)", "#VALUE!"},
    {"=vLookUp(1, {1}, 1, 0, 0)", "#SYNTAX!"},
    {"=vLookUp(1, {1})", "#SYNTAX!"},
    // Over the record's fields as a range.
    {"=hLookUp(\"PEAR\", B:D, 1, 0)", "pear"},
    {"=hLookUp(7, A:D, 1, -1)", "7"},
    // lookUp: one array searched along its longer side, or two vectors.
    {"=lookUp(3, {1,5,3,4;\"a\",\"b\",\"c\",\"d\"})", "c"},
    {"=lookUp(3, {1,\"a\";5,\"b\";3,\"c\"})", "c"},
    {"=lookUp(4.5, {1,\"a\";5,\"b\";3,\"c\"})", "c"},
    {"=lookUp(3, {1,5,3,4}, {\"a\",\"b\",\"c\",\"d\"})", "c"},
    {"=lookUp(3, {1;5;3;4}, {\"a\",\"b\",\"c\",\"d\"})", "c"},
    {"=lookUp(0, {1,5,3,4}, {\"a\",\"b\",\"c\",\"d\"})", "#N/A!"},
    {"=lookUp(3, {1,5,3,4}, {\"a\",\"b\",\"c\"})", "#VALUE!"},
    {"=lookUp(3, {1,5;3,4}, {\"a\",\"b\",\"c\",\"d\"})", "#VALUE!"},
    {"=lookUp(\"plum\", A:D, {1,2,3,4})", "4"},
    // match counts row by row through the whole array.
    {"=match(2, {1,2,3}, 0)", "2"},
    {"=match(\"b\", {1,2,3;\"a\",\"b\",\"c\"}, 0)", "5"},
    {"=match(2.9, {1,2,3})", "2"},
    {"=match(2.1, {1,2,3}, -1)", "3"},
    {"=match(\"p*\", A:D, 0)", "2"},
    {"=match(\"x\", {1,2,3}, 0)", "#N/A!"},
    {"=match(1, {1,2}, \"a\")", "#NUM!"},
    // index: values out of arrays, references out of ranges.
    {"=index({1,3,5;2,4,6}, 2, 2)", "4"},
    {"=index({1,3,5;2,4,6}, 2, 0)", "2"},
    {"=sum(index({1,3,5;2,4,6}, 0, 3))", "11"},
    {"=sum(index({1,3,5;2,4,6}, 2))", "12"},
    {"=sum(index({1,3,5;2,4,6}, 0, 0))", "21"},
    {"=index({1,3,5;2,4,6}, 3, 1)", "#REF!"},
    {"=index({1,3,5;2,4,6}, 1, 4)", "#REF!"},
    {"=index({1,3,5;2,4,6}, -1, 1)", "#NUM!"},
    {"=index(A:D, 1, 3)", "7"},
    {"=isRef(index(A:D, 1, 3))", "1"},
    {"=index(A:D, 1, 2)&\"s\"", "pears"},
    {"=columns(index(A:D, 1, 0))", "4"},
    {"=index(A:D, 2, 1)", "#REF!"},
    {"=index(5, 1, 1)", "#VALUE!"},
    {"=index({1,2})", "#SYNTAX!"},
    // Lists of rows or of columns, in the order named.
    {"=index(index({1,2;3,4;5,6}, {3;1}), 1, 2)", "6"},
    {"=rows(index({1,2;3,4;5,6}, {3;1;3}))", "3"},
    {"=index(index({1,2,3;4,5,6}, , {3,1}), 2, 2)", "4"},
    {"=index({1,2;3,4}, {1;3})", "#REF!"},
    {"=index({1,2;3,4}, {1;\"x\"})", "#VALUE!"},
    {"=index({1,2;3,4}, {1;2}, 1)", "#VALUE!"},
    {"=index({1,2;3,4}, {1;2}, {1})", "#VALUE!"},
    // transpose.
    {"=index(transpose({1,2,3;4,5,6}), 3, 2)", "6"},
    {"=rows(transpose({1,2,3;4,5,6}))*10+columns(transpose({1,2,3;4,5,6}))", "32"},
    {"=index(transpose(A:D), 2, 1)", "pear"},
    {"=index(transpose({1,,3}), 2, 1)", ""},
    {"=transpose(\"x\")", "x"},
    {"=transpose(1/0)", "#DIV/0!"},
    {"=transpose({1}, {2})", "#SYNTAX!"},
};

TEST_F(LookupTest, Cases) {
  for (const Case& c : kCases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
}

TEST_F(LookupTest, ArgumentsLeaveNothingBehind) {
  // Strings and arrays of every argument are given back: a sum around the calls sees only their
  // results, and the pool does not run out over many calls in one formula.
  std::string many = "=0";
  for (int i = 0; i < 12; ++i) {
    many += "+vLookUp(\"b\", {\"a\",1;\"b\",2}, 2, 0)+match(\"q\", {\"p\",\"q\"}, 0)";
  }
  EXPECT_EQ(Eval(many), "48");
  EXPECT_EQ(Eval("=vLookUp(\"zz\", {\"a\",1}, 2, 0)&\"|\"&index({\"u\",\"v\"}, 1, 2)"), "#N/A!");
  EXPECT_EQ(Eval("=concatenate(hLookUp(\"b\", {\"a\",\"b\";\"x\",\"y\"}, 2, 0), \"!\")"), "y!");
}

TEST_F(LookupTest, ComServersAnswerRefAfterTheirChecks) {
  EXPECT_EQ(Eval("=rtd(\"MSComCtl2.MonthView.2\",, \"Day\")"), "#REF!");
  EXPECT_EQ(Eval("=rtd(\"Some.Server\", \"host\", \"A\", \"B\")"), "#REF!");
  EXPECT_EQ(Eval("=udf(\"\",, \"test\", 1, 1, 0)"), "#REF!");
  EXPECT_EQ(Eval("=udf(\"Some.Server\",, \"run\", {1,2;3,4}, 1/0, \"x\")"), "#REF!");
  // Too few arguments make the formula malformed; names must be texts; errors in names win.
  EXPECT_EQ(Eval("=rtd(\"Some.Server\",)"), "#SYNTAX!");
  EXPECT_EQ(Eval("=udf(\"Some.Server\", , )"), "#VALUE!");
  EXPECT_EQ(Eval("=udf(\"Some.Server\")"), "#SYNTAX!");
  EXPECT_EQ(Eval("=rtd(5,, \"Day\")"), "#VALUE!");
  EXPECT_EQ(Eval("=rtd(\"Some.Server\",, {\"Day\"})"), "#VALUE!");
  EXPECT_EQ(Eval("=rtd(\"Some.Server\",, \"\")"), "#VALUE!");
  EXPECT_EQ(Eval("=udf(\"Some.Server\",, 1/0)"), "#DIV/0!");
  EXPECT_EQ(Eval("=udf(Nosuch,, \"run\")"), "#NAME?");
}

// A second table, "products", with fields Id (number), Name (text), Price (number) and Code
// (text) named in its catalogue, beside the formula's table "T".
class TableLookupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(CreateTable(t_.book, "products"));
    catalogue_ = t_.book.FindCatalogue("products");
    products_ = t_.book.FindTable("products");
    const char* names[] = {"Id", "Name", "Price", "Code"};
    for (uint16_t f = 0; f < 4; ++f)
      ASSERT_TRUE(PutCatalogueText(*catalogue_, f + 1u, 0, names[f]));
  }
  void PutNumber(Worksheet* sheet, uint32_t row, uint16_t column, double x) {
    uint8_t record[cell::kNumberSize];
    cell::EncodeNumber(record, row, column, x);
    ASSERT_TRUE(sheet->cells.PutCell(record));
  }
  void PutText(Worksheet* sheet, uint32_t row, uint16_t column, const std::string& text) {
    std::vector<uint8_t> record(cell::TextSize(text.size()));
    cell::EncodeText(record.data(), row, column, text);
    ASSERT_TRUE(sheet->cells.PutCell(record.data()));
  }
  std::string Eval(const std::string& formula, uint32_t row = 0) { return t_.Eval(formula, row); }

  testing::FormulaSheet t_{{{"Key", kFieldNumber}, {"Word", kFieldText}}, &BuiltinFunctions()};
  Worksheet* catalogue_ = nullptr;
  Worksheet* products_ = nullptr;
};

TEST_F(TableLookupTest, FindsTheRecordAndAnswersFromTheOtherField) {
  // Records: ids 10, 30, 20, 30 (a duplicate), then one without a price.
  const double ids[] = {10, 30, 20, 30, 40};
  const char* names[] = {"bolt", "Nut", "washer", "second nut", "gasket"};
  for (uint32_t r = 0; r < 5; ++r) {
    PutNumber(products_, r, 0, ids[r]);
    PutText(products_, r, 1, names[r]);
    if (r < 4) PutNumber(products_, r, 2, 1.5 * (r + 1));
  }
  PutText(products_, 0, 3, "");
  t_.PutNumber(0, 0, 20);
  t_.PutText(0, 1, "NUT");
  struct {
    const char* formula;
    const char* shown;
  } cases[] = {
      {"=vLookUp2(Key, \"products\", \"Id\", \"Name\",)", "washer"},
      {"=vLookUp2(30, \"PRODUCTS\", \"id\", \"name\")", "Nut"},  // the first of equal keys
      {"=vLookUp2(Word, \"products\", \"Name\", \"Id\")", "30"},
      {"=vLookUp2(\"*nut\", \"products\", \"Name\", \"Id\")", "30"},
      {"=vLookUp2(\"w?sher\", \"products\", \"Name\", \"Price\")", "4.5"},
      {"=vLookUp2(25, \"products\", \"Id\", \"Name\")", "#N/A!"},  // exact by default
      {"=vLookUp2(25, \"products\", \"Id\", \"Name\", 1)", "washer"},
      {"=vLookUp2(25, \"products\", \"Id\", \"Name\", -1)", "Nut"},
      {"=vLookUp2(99, \"products\", \"Id\", \"Name\", 1)", "gasket"},
      {"=vLookUp2(5, \"products\", \"Id\", \"Name\", 1)", "#N/A!"},
      {"=vLookUp2(\"c\", \"products\", \"Name\", \"Id\", 1)", "10"},
      {"=vLookUp2(\"30\", \"products\", \"Id\", \"Name\")", "#N/A!"},
      // A record without a value in the answering field.
      {"=vLookUp2(40, \"products\", \"Id\", \"Price\")", "#NULL!"},
      {"=vLookUp2(10, \"products\", \"Id\", \"Code\")", "#NULL!"},
      // Names that lead nowhere, and arguments in error.
      {"=vLookUp2(10, \"parts\", \"Id\", \"Name\")", "#NAME?"},
      {"=vLookUp2(10, \"products\", \"Ident\", \"Name\")", "#NAME?"},
      {"=vLookUp2(10, \"products\", \"Id\", \"Colour\")", "#NAME?"},
      {"=vLookUp2(1/0, \"products\", \"Id\", \"Name\")", "#DIV/0!"},
      {"=vLookUp2(10, \"products\", \"Id\")", "#SYNTAX!"},
      {"=vLookUp2(10, \"products\", \"Id\", \"Name\", 0, 0)", "#SYNTAX!"},
  };
  for (const auto& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << c.formula;
  // The same answers with the index of a pass.
  t_.engine->StartPass();
  for (const auto& c : cases) EXPECT_EQ(Eval(c.formula), c.shown) << "in a pass: " << c.formula;
  t_.engine->EndPass();
}

TEST_F(TableLookupTest, IndexOfAPassAgreesWithTheSearch) {
  // Random keys, many of them repeated, numbers and texts mixed in one field: every key and
  // every type must give the same record through the index as through the walk over the cells.
  std::mt19937 rng(7);
  for (uint32_t r = 0; r < 600; ++r) {
    if (rng() % 9 == 0) continue;  // records without a key
    if (rng() % 3 == 0) {
      PutText(products_, r, 0, std::string(1, char('a' + rng() % 6)) + char('A' + rng() % 3));
    } else {
      PutNumber(products_, r, 0, double(rng() % 200) / 4);
    }
    PutNumber(products_, r, 1, r);
  }
  std::vector<std::string> keys;
  for (int k = 0; k < 120; ++k) keys.push_back(std::to_string(double(rng() % 220) / 4 - 2));
  for (const char* text : {"\"aa\"", "\"Ab\"", "\"c\"", "\"FZ\"", "\"zz\"", "\"\"", "\"0\""}) {
    keys.push_back(text);
  }
  std::vector<std::string> formulas, walked;
  for (const std::string& key : keys) {
    for (int type = -1; type <= 1; ++type) {
      formulas.push_back("=vLookUp2(" + key + ", \"products\", \"Id\", \"Name\", " +
                         std::to_string(type) + ")");
      walked.push_back(Eval(formulas.back()));
    }
  }
  int found = 0;
  t_.engine->StartPass();
  for (size_t i = 0; i < formulas.size(); ++i) {
    EXPECT_EQ(Eval(formulas[i]), walked[i]) << formulas[i];
    found += walked[i] != "#N/A!";
  }
  t_.engine->EndPass();
  EXPECT_GT(found, 200);  // the keys do meet the table
}

TEST_F(TableLookupTest, AnEditBetweenPassesIsSeen) {
  PutNumber(products_, 0, 0, 1);
  PutText(products_, 0, 1, "old");
  t_.engine->StartPass();
  EXPECT_EQ(Eval("=vLookUp2(1, \"products\", \"Id\", \"Name\")"), "old");
  t_.engine->EndPass();
  PutNumber(products_, 0, 0, 2);
  PutNumber(products_, 1, 0, 1);
  PutText(products_, 1, 1, "new");
  t_.engine->StartPass();
  EXPECT_EQ(Eval("=vLookUp2(1, \"products\", \"Id\", \"Name\")"), "new");
  EXPECT_EQ(Eval("=vLookUp2(2, \"products\", \"Id\", \"Name\")"), "old");
  t_.engine->EndPass();
  // Outside a pass the cells are read as they are now.
  PutText(products_, 1, 1, "newer");
  EXPECT_EQ(Eval("=vLookUp2(1, \"products\", \"Id\", \"Name\")"), "newer");
}

}  // namespace
}  // namespace kelpdex
