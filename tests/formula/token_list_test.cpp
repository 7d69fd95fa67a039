// A calculated field read through its kept token list must give exactly what reading its text
// gives. Random tables of random formulas, well formed and broken, are recalculated both ways on
// two copies of the same records, and the copies must end byte for byte alike.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "store/workbook.h"
#include "support/stand_in_functions.h"

namespace kelpdex {
namespace {

using testing::Argc;
using testing::Sum;

// Leaves nothing at all when its argument is a negative number: a handler whose effect on the
// stack depends on the values ("sum(1, split(x))" then sums one argument or two), which a record
// must survive whatever the records before it did.
void Split(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  FormulaValue& v = e.Operand(base);
  if (e.depth() == base + 1) e.CoerceToNumber(v);
  bool vanish = e.depth() == base + 1 && v.kind == kind::kNumber && v.number < 0;
  for (int slot = e.depth() - 1; slot >= base; --slot) e.Release(e.Operand(slot));
  e.SetDepth(vanish ? base - 1 : base);
  if (!vanish) e.Operand(base) = FormulaValue::Number(1);
}

const FunctionEntry kEntries[] = {
    {Argc, "ARGC("}, {nullptr, "LATER("}, {Split, "SPLIT("}, {Sum, "SUM("}};
const FunctionTable kFunctions = {kEntries, 4};

// Names that are prefixes of one another, one with a blank and one with the intersection mark.
const char* const kNames[] = {"Price", "Price Net", "Pri", "Qty", "Qty2", "Name", "A", "AB", "X_1"};

class FormulaMaker {
 public:
  explicit FormulaMaker(std::mt19937& random) : random_(random) {}

  int Pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
  bool Chance(int percent) { return Pick(100) < percent; }

  // Mostly "=" formulas; now and then a "+" one or plain text that is no formula at all.
  std::string Formula(const std::vector<std::string>& names) {
    names_ = &names;
    int lead = Pick(20);
    std::string text = lead == 0 ? "" : lead == 1 ? "+" : "=";
    text += Expression(0);
    if (Chance(8)) text.insert(Pick(static_cast<int>(text.size()) + 1), Junk());
    return text;
  }

 private:
  std::string Junk() {
    static const char* const kJunk[] = {"(", ")", ",", "\t", "?", "@",
                                        "!", "{", "}", ";",  " ", "%"};
    return kJunk[Pick(12)];
  }

  std::string Name() {
    std::string name = (*names_)[Pick(static_cast<int>(names_->size()))];
    for (char& c : name) {
      if (Chance(30)) c = static_cast<char>(Chance(50) ? std::toupper(c) : std::tolower(c));
    }
    if (Chance(10)) name += "x";  // no longer the field's name
    return name;
  }

  std::string Literal() {
    switch (Pick(9)) {
      case 0: {
        static const char* const kNumbers[] = {"3",     "0.5", ".25", "1e3", "12345678901234567890",
                                               "1e999", "007", "2."};
        return kNumbers[Pick(8)];
      }
      case 1:
        return Chance(50) ? "\"ab c\"" : "'7'";
      case 2: {
        // Long strings: a few of them fill the 3072-byte pool.
        std::string text(400 + Pick(1400), static_cast<char>('a' + Pick(26)));
        return "\"" + text + (Chance(90) ? "\"" : "");
      }
      case 3: {
        static const char* const kArrays[] = {"{1,2;3,4}", "{1,,3}", "{\"a\",TRUE;#N/A!,-2}",
                                              "{1,2",      "{1;}",   "{x y, 2}",
                                              "{}",        "{- 3}",  "{#BAD,1}"};
        return kArrays[Pick(9)];
      }
      case 4: {
        static const char* const kWords[] = {"TRUE", "false", "#DIV/0!", "#n/a!", "#NAME?",
                                             "Foo",  "zed1",  "\\x",     "#"};
        return kWords[Pick(9)];
      }
      default:
        return Name();
    }
  }

  std::string Call(int depth) {
    static const char* const kCalls[] = {"SUM(", "ARGC(", "sum(", "LATER(", "NOPE(", "SPLIT("};
    std::string text = kCalls[Pick(6)];
    int count = Pick(5);
    for (int i = 0; i < count; ++i) {
      if (i > 0) text += ",";
      if (!Chance(20)) text += Expression(depth + 1);  // an empty argument otherwise
    }
    if (!Chance(4)) text += ")";
    return text;
  }

  std::string Expression(int depth) {
    if (depth >= 3) return Literal();
    static const char* const kOperators[] = {"+", "-", "*",  "/",  "^",  "&", "=",
                                             "<", ">", "<=", ">=", "<>", ":", "_"};
    switch (Pick(8)) {
      case 0:
        return Call(depth);
      case 1:
        return "(" + Expression(depth + 1) + (Chance(96) ? ")" : "");
      case 2:
        return "-" + Expression(depth + 1);
      case 3:
        return Expression(depth + 1) + "%";
      case 4:
      case 5:
        return Expression(depth + 1) + (Chance(30) ? " " : "") + kOperators[Pick(14)] +
               Expression(depth + 1);
      default:
        return Literal();
    }
  }

  std::mt19937& random_;
  const std::vector<std::string>* names_ = nullptr;
};

// One table's records on its own sheet, with an engine over them.
struct Copy {
  explicit Copy(const std::vector<FormulaField>& fieldList) : fields(fieldList) {
    sheet = new Worksheet("T");
    book.AttachNode(sheet, nullptr);
    engine = std::make_unique<FormulaEngine>(&book, sheet, &kFunctions);
    engine->SetFields(fields.data(), static_cast<uint16_t>(fields.size()));
  }
  Workbook book;
  Worksheet* sheet = nullptr;
  std::vector<FormulaField> fields;
  std::unique_ptr<FormulaEngine> engine;
};

// The cells of both sheets, byte for byte; the first difference is reported.
void ExpectSameCells(Worksheet& kept, Worksheet& read, const std::string& table) {
  CellCursor a, b;
  for (;;) {
    CellRecord* x = kept.cells.NextCell(a);
    CellRecord* y = read.cells.NextCell(b);
    ASSERT_EQ(x == nullptr, y == nullptr) << table;
    if (x == nullptr) return;
    ASSERT_EQ(cell::Row(x), cell::Row(y)) << table;
    ASSERT_EQ(cell::Column(x), cell::Column(y)) << table;
    ASSERT_EQ(cell::Size(x), cell::Size(y))
        << table << "row " << cell::Row(x) << " column " << cell::Column(x);
    ASSERT_EQ(std::memcmp(cell::Bytes(x), cell::Bytes(y), cell::Size(x)), 0)
        << table << "row " << cell::Row(x) << " column " << cell::Column(x);
  }
}

TEST(TokenList, RecalculationMatchesReadingTheText) {
  std::mt19937 random(20240611);
  FormulaMaker maker(random);
  constexpr uint32_t kRows = 6;
  int goodCells = 0, syntaxCells = 0, nameCells = 0, circles = 0, pastThePool = 0;
  for (int round = 0; round < 2000; ++round) {
    // The fields: distinct names, Text or Number, about half of them calculated.
    std::vector<std::string> names(std::begin(kNames), std::end(kNames));
    std::shuffle(names.begin(), names.end(), random);
    names.resize(3 + maker.Pick(5));
    std::vector<FormulaField> fields(names.size());
    std::string table;
    for (size_t i = 0; i < names.size(); ++i) {
      fields[i].name = names[i];
      fields[i].type = maker.Chance(50) ? kFieldText : kFieldNumber;
      if (i == 0 || maker.Chance(50)) fields[i].formula = maker.Formula(names);
      table += names[i] + " " + fields[i].formula + "\n";
    }
    Copy kept(fields), read(fields);
    read.engine->SetTokenLists(false);
    // The records: plain values, and in calculated columns old results or formula cells not yet
    // calculated, which make the fields that read them wait (and find circles).
    std::vector<uint8_t> rec(kBlockPayload);
    for (uint32_t row = 0; row < kRows; ++row) {
      for (uint16_t column = 0; column < fields.size(); ++column) {
        int what = maker.Pick(5);
        if (what == 0) continue;
        if (!fields[column].formula.empty() && what >= 3) {
          cell::EncodeFormula(rec.data(), row, column, "=0");
          cell::SetCachedNumber(rec.data(), maker.Pick(100));
        } else if (what == 1) {
          // Now and then an error value, which no operator may read as a number or a text.
          cell::EncodeNumber(rec.data(), row, column, maker.Pick(2000) / 8.0 - 50,
                             maker.Chance(10) ? ferr::kNA : uint8_t{0});
        } else {
          // Texts two of which are too long to join.
          static const std::string kLong(700, 'L');
          static const char* const kTexts[] = {"Bob", " 7 ", "", "1e2", "x y", kLong.c_str()};
          cell::EncodeText(rec.data(), row, column, kTexts[maker.Pick(6)]);
        }
        ASSERT_TRUE(kept.sheet->cells.PutCell(rec.data()));
        ASSERT_TRUE(read.sheet->cells.PutCell(rec.data()));
      }
    }
    if (round % 2 == 0) {
      // A pass over every record, in a shuffled order.
      uint32_t rows[kRows] = {3, 0, 5, 1, 4, 2};
      ASSERT_EQ(kept.engine->RecalculateRows(rows, kRows),
                read.engine->RecalculateRows(rows, kRows))
          << table;
    } else {
      // Record by record outside a pass; the circle marks must agree too.
      for (uint32_t row = 0; row < kRows; ++row) {
        ASSERT_EQ(kept.engine->RecalculateRow(row), read.engine->RecalculateRow(row)) << table;
        for (size_t i = 0; i < fields.size(); ++i) {
          ASSERT_EQ(kept.fields[i].flags, read.fields[i].flags) << table << "field " << i;
          circles += (kept.fields[i].flags & 0x80) != 0;
        }
      }
    }
    ExpectSameCells(*kept.sheet, *read.sheet, table);
    if (HasFailure()) return;
    CellCursor c;
    while (CellRecord* r = kept.sheet->cells.NextCell(c)) {
      if (!cell::IsAuto(r)) continue;
      goodCells += cell::ErrorNibble(r) == 0;
      syntaxCells += cell::ErrorNibble(r) == ferr::kSyntax;
      nameCells += cell::ErrorNibble(r) == ferr::kName;
    }
    for (const FormulaField& f : fields) pastThePool += f.formula.size() > 3072;
  }
  // The generator reached the cases that matter: values, broken formulas, unknown names, circles
  // and strings past the pool.
  EXPECT_GT(goodCells, 2000);
  EXPECT_GT(syntaxCells, 2000);
  EXPECT_GT(nameCells, 500);
  EXPECT_GT(circles, 50);
  EXPECT_GT(pastThePool, 5);
}

TEST(TokenList, JoinedOperandsAgreeWithTheOperator) {
  // Each "&" whose right operand is one token joins it onto the left text where it stands, in
  // every record after the first; the records here give that every kind of operand.
  const char* const kFormulas[] = {
      "=Name & \"-\" & Qty", "=\"<\" & Name & #N/A!", "=Name & 12.5 & Foo",
      "=Qty & Name & Qty",   "=Name & Calc",          "=Name & Name & Name & \"!\"",
      "=(Name & 0) & (Qty)", "=\"[\" & (Qty & Name)", "=Foo & Name"};
  for (const char* formula : kFormulas) {
    std::vector<FormulaField> fields = {
        {.type = kFieldText, .name = "Name", .formula = ""},
        {.type = kFieldNumber, .name = "Qty", .formula = ""},
        {.type = kFieldText, .name = "Code", .formula = formula},
        {.type = kFieldNumber, .name = "Calc", .formula = "=Qty * 2"}};
    Copy kept(fields), read(fields);
    read.engine->SetTokenLists(false);
    const std::string longName(700, 'L');
    std::vector<uint8_t> rec(kBlockPayload);
    auto put = [&](size_t size) {
      ASSERT_GT(size, 0u);
      ASSERT_TRUE(kept.sheet->cells.PutCell(rec.data()));
      ASSERT_TRUE(read.sheet->cells.PutCell(rec.data()));
    };
    put(cell::EncodeText(rec.data(), 0, 0, "Bob"));
    put(cell::EncodeNumber(rec.data(), 0, 1, 3));
    // Record 1 has no name, and an error for its quantity.
    put(cell::EncodeNumber(rec.data(), 1, 1, 0, ferr::kNA));
    put(cell::EncodeText(rec.data(), 2, 0, longName));
    put(cell::EncodeText(rec.data(), 2, 1, "7"));
    put(cell::EncodeNumber(rec.data(), 3, 0, 2.5));
    put(cell::EncodeText(rec.data(), 4, 0, "Ann"));
    put(cell::EncodeNumber(rec.data(), 4, 1, 0.1));
    const uint32_t rows[] = {0, 1, 2, 3, 4};
    ASSERT_TRUE(kept.engine->RecalculateRows(rows, 5));
    ASSERT_TRUE(read.engine->RecalculateRows(rows, 5));
    ExpectSameCells(*kept.sheet, *read.sheet, formula);
    if (std::string(formula) == kFormulas[0]) {
      EXPECT_EQ(cell::Text(kept.sheet->cells.GetCell(4, 2)), "Ann-0.1");
    }
  }
}

class TokenListTest : public ::testing::Test {
 protected:
  TokenListTest() : copy_(MakeFields()) {}
  static std::vector<FormulaField> MakeFields() {
    return {{.type = kFieldNumber, .name = "Price", .formula = ""},
            {.type = kFieldNumber, .name = "Qty", .formula = ""},
            {.type = kFieldNumber, .name = "Total", .formula = "=Price*Qty"}};
  }
  void SetUp() override {
    uint8_t rec[32];
    for (uint32_t row = 0; row < 2; ++row) {
      cell::EncodeNumber(rec, row, 0, 10 + row);
      ASSERT_TRUE(copy_.sheet->cells.PutCell(rec));
      cell::EncodeNumber(rec, row, 1, 3);
      ASSERT_TRUE(copy_.sheet->cells.PutCell(rec));
    }
  }
  double Total(uint32_t row) { return cell::Number(copy_.sheet->cells.GetCell(row, 2)); }

  Copy copy_;
};

TEST_F(TokenListTest, AReplacedFormulaIsReadAfresh) {
  ASSERT_TRUE(copy_.engine->RecalculateRow(0));
  EXPECT_EQ(Total(0), 30);
  // The same length, so only a list made anew tells the formulas apart.
  copy_.fields[2].formula = "=Price+Qty";
  ASSERT_TRUE(copy_.engine->RecalculateRow(0));
  EXPECT_EQ(Total(0), 13);
  const uint32_t rows[] = {0, 1};
  copy_.fields[2].formula = "=Price-Qty";
  ASSERT_TRUE(copy_.engine->RecalculateRows(rows, 2));
  EXPECT_EQ(Total(0), 7);
  EXPECT_EQ(Total(1), 8);
}

TEST_F(TokenListTest, FieldsSetAgainInAPassAreResolvedAgain) {
  // The fields are renamed in place, so the formula's text stays where it was; only the names
  // now stand for the other columns.
  copy_.engine->StartPass();
  ASSERT_TRUE(copy_.engine->RecalculateRow(0));
  copy_.fields[2].formula = "=Price/Qty";
  copy_.fields[0].name = "Qty";
  copy_.fields[1].name = "Price";
  copy_.engine->SetFields(copy_.fields.data(), static_cast<uint16_t>(copy_.fields.size()));
  ASSERT_TRUE(copy_.engine->RecalculateRow(1));
  ASSERT_TRUE(copy_.engine->EndPass());
  EXPECT_EQ(Total(0), 30);
  EXPECT_EQ(Total(1), 3.0 / 11);
}

TEST_F(TokenListTest, ARecordTheFirstRecordsStepsDoNotFitIsReadAfresh) {
  // Records after the first replay its steps; a negative price makes SPLIT leave nothing, so the
  // count of ARGC's arguments, and the depth after SPLIT, differ from the first record's.
  uint8_t rec[32];
  const double prices[] = {10, -4, 7, -1};
  for (uint32_t row = 0; row < 4; ++row) {
    cell::EncodeNumber(rec, row, 0, prices[row]);
    ASSERT_TRUE(copy_.sheet->cells.PutCell(rec));
  }
  copy_.fields[2].formula = "=ARGC(1, SPLIT(Price)) * 10 + ARGC(SPLIT(Price), 2, 3)";
  const uint32_t rows[] = {0, 1, 2, 3};
  ASSERT_TRUE(copy_.engine->RecalculateRows(rows, 4));
  EXPECT_EQ(Total(0), 23);
  EXPECT_EQ(Total(1), 12);
  EXPECT_EQ(Total(2), 23);
  EXPECT_EQ(Total(3), 12);
}

}  // namespace
}  // namespace kelpdex
