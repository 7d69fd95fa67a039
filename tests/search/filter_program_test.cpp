// The compiled form of a filter against the formula text it stands for: over random filters and
// random records, both must keep exactly the same records.
#include "search/filter_program.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "search/filter_text.h"
#include "search/run_filters.h"
#include "table/records.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class FilterProgramTest : public testing::TableTest {
 protected:
  // Names that begin with each other, a name with a blank behind a field named by its first
  // word, and a calculated field.
  void SetUp() override {
    MakeTable({Field("Qty", FieldType::kNumber), Field("Qty2", FieldType::kNumber),
               Field("Name", FieldType::kText), Field("Last", FieldType::kNumber),
               Field("Last Name", FieldType::kText), Field("Calc", FieldType::kNumber, "F:=Qty*2"),
               Field("Q", FieldType::kText)});
  }
  std::string RandomText(std::mt19937& random) {
    static const char* texts[] = {"",    "abc", "ABC", "abd", "10", "-3", "1e3", "zz",
                                  "a b", "Ab",  "a*",  "?b",  "*c", "~*", "a~?", "b*d"};
    return texts[random() % 16];
  }
  std::string RandomNumber(std::mt19937& random) {
    static const char* numbers[] = {"0",   "10",    "-3", "2.5", " 7 ", "1e2", ".5",  "-",
                                    "abc", "1e999", "3x", "- 4", "",    "--2", "TRUE"};
    return numbers[random() % 15];
  }
  std::string RandomOperand(std::mt19937& random, bool number) {
    std::string operand;
    int words = static_cast<int>(random() % 4);
    for (int w = 0; w < words; ++w) {
      if (w > 0) operand += std::string(1 + random() % 2, ' ');
      operand += number && random() % 4 != 0 ? RandomNumber(random) : RandomText(random);
    }
    if (random() % 10 == 0) operand += "\"";
    return operand;
  }
  void FillRecords(std::mt19937& random, uint32_t rows) {
    for (uint32_t r = 0; r < rows; ++r) {
      for (uint16_t c : {0, 1, 2, 3, 4, 6}) {
        switch (random() % 6) {
          case 0:
            break;  // empty
          case 1:
            PutText(r, c, RandomText(random));
            break;
          case 2:
            PutNumber(r, c, 0, 0x70);  // an error value
            break;
          default:
            PutNumber(r, c, static_cast<double>(static_cast<int>(random() % 21) - 5) / 2);
        }
      }
    }
    ASSERT_TRUE(RefreshCurrentTable(book));
    ASSERT_EQ(UpdateFormulas(book), UpdateResult::kUpdated);
  }
  std::vector<uint32_t> Run(const std::vector<std::string>& filters, bool compile) {
    FilterOptions options;
    options.filters = &filters;
    options.compile = compile;
    uint32_t found = 0;
    EXPECT_TRUE(RunFilters(Table(), book.records, options, found));
    return std::vector<uint32_t>(book.records.rows(), book.records.rows() + found);
  }
};

TEST_F(FilterProgramTest, CompiledFiltersKeepWhatTheirFormulasKeep) {
  std::mt19937 random(20261124);
  FillRecords(random, 300);
  const FieldType types[] = {FieldType::kNumber, FieldType::kNumber, FieldType::kText,
                             FieldType::kNumber, FieldType::kText,   FieldType::kNumber,
                             FieldType::kText};
  int compiled = 0;
  for (int round = 0; round < 600; ++round) {
    std::vector<std::string> filters(7);
    uint16_t field = static_cast<uint16_t>(random() % 7);
    int digit = 1 + static_cast<int>(random() % 8);
    std::string operand = RandomOperand(random, types[field] == FieldType::kNumber);
    filters[field] = MakeFilterText(digit, operand);
    SCOPED_TRACE(std::to_string(field) + " " + filters[field]);
    std::vector<FormulaField> fields = FormulaFields(book.fieldDefaults);
    FilterProgram program;
    std::vector<std::string> names = Names();
    compiled += program.Compile(fields, names[field], types[field], digit, operand);
    ASSERT_EQ(Run(filters, true), Run(filters, false));
  }
  // Most shapes the random filters take are compiled, so the comparison is not empty.
  EXPECT_GT(compiled, 100);
}

TEST_F(FilterProgramTest, OnlyFormulasOfOneComparableShapeAreCompiled) {
  std::vector<FormulaField> fields = FormulaFields(BuildFieldDefaults(Table()));
  FilterProgram program;
  struct Case {
    const char* name;
    FieldType type;
    int digit;
    const char* operand;
    bool compiled;
    uint16_t column;
  } cases[] = {
      {"Qty", FieldType::kNumber, filter_op::kEqual, " -2.5 ", true, 0},
      {"qty2", FieldType::kNumber, filter_op::kBetween, "1 2 3", true, 1},
      {"Last Name", FieldType::kText, filter_op::kEqual, "x", false, 0},  // read as "Last"
      {"Name", FieldType::kText, filter_op::kLess, "a\"b", false, 0},
      {"Name", FieldType::kText, filter_op::kAnd, "a* ?b", true, 2},
      {"Name", FieldType::kText, filter_op::kPattern, "a\"", false, 0},
      {"Qty", FieldType::kNumber, filter_op::kOr, "1 x", false, 0},
      {"Qty", FieldType::kNumber, filter_op::kPattern, "1", true, 0},
      {"Qty", FieldType::kNumber, filter_op::kExpression, "=Qty", false, 0},
      {"Calc", FieldType::kNumber, filter_op::kGreater, "4", true, 5},
      {"Nothing", FieldType::kNumber, filter_op::kGreater, "4", false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + c.operand);
    EXPECT_EQ(program.Compile(fields, c.name, c.type, c.digit, c.operand), c.compiled);
    if (c.compiled) {
      EXPECT_EQ(program.column(), c.column);
    }
  }
}

}  // namespace
}  // namespace kelpdex
