#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "formula/formula_engine.h"
#include "store/workbook.h"

namespace kelpdex {
namespace {

class RecalculateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    sheet_ = new Worksheet("T");
    book_.AttachNode(sheet_, nullptr);
    engine_ = std::make_unique<FormulaEngine>(&book_, sheet_, nullptr);
  }
  void AddField(const char* name, uint8_t type, const char* formula = "") {
    FormulaField f;
    f.name = name;
    f.type = type;
    f.formula = formula;
    fields_.push_back(f);
    engine_->SetFields(fields_.data(), static_cast<uint16_t>(fields_.size()));
  }
  void PutNumber(uint32_t row, uint16_t column, double x) {
    uint8_t rec[32];
    cell::EncodeNumber(rec, row, column, x);
    ASSERT_TRUE(sheet_->cells.PutCell(rec));
  }
  void PutText(uint32_t row, uint16_t column, const std::string& text) {
    uint8_t rec[300];
    cell::EncodeText(rec, row, column, text);
    ASSERT_TRUE(sheet_->cells.PutCell(rec));
  }
  // A formula cell that has not been calculated in this pass, with a cached number.
  void PutFormulaCell(uint32_t row, uint16_t column, double cached) {
    uint8_t rec[64];
    cell::EncodeFormula(rec, row, column, "=0");
    cell::SetCachedNumber(rec, cached);
    ASSERT_TRUE(sheet_->cells.PutCell(rec));
  }
  CellRecord* At(uint32_t row, uint16_t column) { return sheet_->cells.GetCell(row, column); }

  Workbook book_;
  Worksheet* sheet_ = nullptr;
  std::vector<FormulaField> fields_;
  std::unique_ptr<FormulaEngine> engine_;
};

TEST_F(RecalculateTest, FieldsComputeInOrderIntoAutoCells) {
  AddField("Price", kFieldNumber);
  AddField("Qty", kFieldNumber);
  AddField("Early", kFieldText, "=Total&\"\"");  // reads a later field: last calculation's value
  AddField("Total", kFieldNumber, "=Price*Qty");
  AddField("Label", kFieldText, "=\"x\"&Total");  // reads an earlier field: fresh
  fields_.reserve(8);
  for (uint32_t row = 0; row < 3; ++row) {
    PutNumber(row, 0, row + 1.5);
    PutNumber(row, 1, 2);
    PutNumber(row, 3, -1);  // a stale total
  }
  const uint32_t rows[] = {2, 0, 1};
  ASSERT_TRUE(engine_->RecalculateRows(rows, 3));
  for (uint32_t row = 0; row < 3; ++row) {
    CellRecord* total = At(row, 3);
    ASSERT_TRUE(cell::IsNumber(total));
    EXPECT_TRUE(cell::IsAuto(total));
    EXPECT_EQ(cell::Number(total), (row + 1.5) * 2);
    EXPECT_EQ(cell::Text(At(row, 2)), "-1");
    EXPECT_EQ(cell::Text(At(row, 4)), "x" + std::to_string(int(row * 2 + 3)));
  }
}

TEST_F(RecalculateTest, CellKindFollowsTheField) {
  AddField("T1", kFieldText, "=1/4");
  AddField("T2", kFieldText, "=1/0");
  AddField("T3", kFieldText, "=1+");
  AddField("T4", kFieldText, "={1,2}");
  AddField("N1", kFieldNumber, "=\" 7 \"");
  AddField("N2", kFieldNumber, "=\"seven\"");
  AddField("N3", kFieldNumber, "=(");
  AddField("N4", kFieldNumber, "no formula");
  ASSERT_TRUE(engine_->RecalculateRow(0));
  EXPECT_EQ(cell::Text(At(0, 0)), "0.25");
  EXPECT_EQ(cell::Text(At(0, 1)), "#DIV/0!");
  EXPECT_EQ(cell::ErrorNibble(At(0, 1)), ferr::kDivZero);
  EXPECT_TRUE(cell::IsText(At(0, 2)));
  EXPECT_EQ(cell::ErrorNibble(At(0, 2)), ferr::kSyntax);
  EXPECT_EQ(cell::ErrorNibble(At(0, 3)), ferr::kValue);
  EXPECT_EQ(cell::Number(At(0, 4)), 7);
  EXPECT_EQ(cell::ErrorNibble(At(0, 5)), ferr::kNum);
  EXPECT_EQ(cell::ErrorNibble(At(0, 6)), ferr::kSyntax);
  EXPECT_EQ(cell::ErrorNibble(At(0, 7)), ferr::kSyntax);
}

TEST_F(RecalculateTest, UnfinishedFormulaCellsAreComputedFirst) {
  AddField("Price", kFieldNumber);
  AddField("Double", kFieldNumber, "=Later*2");
  AddField("Later", kFieldNumber, "=Price+1");
  PutNumber(0, 0, 10);
  PutFormulaCell(0, 2, 100);  // the old result, not yet recalculated
  ASSERT_TRUE(engine_->RecalculateRow(0));
  EXPECT_EQ(cell::Number(At(0, 2)), 11);
  EXPECT_EQ(cell::Number(At(0, 1)), 22);
}

TEST_F(RecalculateTest, ACircleLeavesTheFieldAskedForAsItWas) {
  AddField("A", kFieldNumber, "=B+1");
  AddField("B", kFieldNumber, "=A+1");
  PutFormulaCell(0, 0, 5);
  PutFormulaCell(0, 1, 7);
  ASSERT_TRUE(engine_->RecalculateRow(0));
  EXPECT_TRUE(cell::IsFormula(At(0, 0)));
  EXPECT_EQ(fields_[0].flags & 0x80, 0x80);
  ASSERT_TRUE(cell::IsNumber(At(0, 1)));
  EXPECT_EQ(cell::Number(At(0, 1)), 6);
}

}  // namespace
}  // namespace kelpdex
