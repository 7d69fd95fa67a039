#include "table/convert_column.h"

#include <gtest/gtest.h>

#include "format/number_style.h"
#include "table/table_fixture.h"

namespace kelpdex {
namespace {

using testing::Field;

class ConvertTest : public testing::TableTest {
 protected:
  void SetUp() override {
    MakeTable({Field("Text", FieldType::kText), Field("Number", FieldType::kNumber),
               Field("Other", FieldType::kText)});
  }
  std::string After(int mode, const std::string& text) {
    PutText(0, 0, text);
    EXPECT_TRUE(ConvertColumn(book, Data(), 0, mode, 0, 0));
    return At(0, 0);
  }
  void SetColumnFormat(uint16_t column, const NumberStyle& style) {
    StyleRecord record = book.styles.Style(0);
    WriteNumberStyle(style, record);
    uint16_t id = 0;
    ErrorCode error = err::kNone;
    ASSERT_TRUE(book.styles.FindOrAddStyle(record, id, error));
    Data().formats.SetColumnStyle(column, id);
  }
};

TEST_F(ConvertTest, TextModes) {
  EXPECT_EQ(After(convert::kUpperCase,
                  "stra\xDF"
                  "e caf\xE9"),
            "'STRA\xDF"
            "E CAF\xC9'");
  EXPECT_EQ(After(convert::kLowerCase, "MIXED Case"), "'mixed case'");
  EXPECT_EQ(After(convert::kWordCapitals, "o'neil mc-donald 2nd"), "'O'Neil Mc-Donald 2Nd'");
  EXPECT_EQ(After(convert::kFirstCapital, "  9 LIVES here"), "'  9 lives here'");
  EXPECT_EQ(After(convert::kFirstCapital, "-- hELLO"), "'-- Hello'");
  EXPECT_EQ(After(convert::kTrimEnd, " a \t\r\n"), "' a'");
  EXPECT_EQ(After(convert::kTrimStart, "\r\n\t b "), "'b '");
  EXPECT_EQ(After(convert::kTrimEnd, " \t "), "-");  // trimmed to nothing: the cell goes
}

TEST_F(ConvertTest, LabelsAndNumbersThroughTheColumnFormatSkippingAuto) {
  NumberStyle money;
  money.kind = format_kind::kCurrency;
  std::strcpy(money.symbol, "EUR");
  money.decimalDigits = 2;
  money.symbolPosition = 3;
  SetColumnFormat(1, money);
  PutText(0, 1, "1,234.50 EUR");
  PutText(1, 1, "12");
  PutText(2, 1, "twelve");
  PutText(3, 1, "99", cell::kAuto);
  PutNumber(4, 1, -3.5);
  ASSERT_TRUE(ConvertColumn(book, Data(), 1, convert::kLabelsToNumbers, 0, kLastRow));
  EXPECT_EQ(At(0, 1), "1234.5");  // the column's own symbol reads where the locale's does not
  EXPECT_EQ(At(1, 1), "12");
  EXPECT_EQ(At(2, 1), "'twelve'");
  EXPECT_EQ(At(3, 1), "'99'");
  ASSERT_TRUE(ConvertColumn(book, Data(), 1, convert::kNumbersToLabels, 0, 1));
  EXPECT_EQ(At(0, 1), "'1,234.50 EUR'");
  EXPECT_EQ(At(1, 1), "'12.00 EUR'");
  EXPECT_EQ(At(4, 1), "-3.5");  // outside the rows asked for

  // Error bits survive the change of kind.
  PutNumber(5, 1, 0, 0x50);
  ASSERT_TRUE(ConvertColumn(book, Data(), 1, convert::kNumbersToLabels, 5, 5));
  CellRecord* r = Data().cells.GetCell(5, 1);
  ASSERT_TRUE(cell::IsText(r));
  EXPECT_EQ(cell::ErrorNibble(r), 0x50);
  // Other columns are not touched.
  PutText(0, 2, "7");
  ASSERT_TRUE(ConvertColumn(book, Data(), 1, convert::kLabelsToNumbers, 0, kLastRow));
  EXPECT_EQ(At(0, 2), "'7'");
}

TEST_F(ConvertTest, AnArrayReachingIntoTheColumnIsCutToItsHead) {
  uint8_t head[128];
  uint32_t size = cell::EncodeFormula(head, 0, 0, "={1,2;3,4}");
  cell::SetArray(head, 2, 2);
  ASSERT_TRUE(Data().cells.PutCell(head));
  ASSERT_LT(size, sizeof head);
  PutText(0, 1, "2");
  PutText(1, 0, "3");
  PutText(1, 1, "4");
  ASSERT_TRUE(ConvertColumn(book, Data(), 1, convert::kLabelsToNumbers, 0, kLastRow));
  CellRecord* r = Data().cells.GetCell(0, 0);
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(cell::FormulaFlags(r) & cell::kArrayHead, 0);
  EXPECT_EQ(At(0, 1), "-");
  EXPECT_EQ(At(1, 0), "-");
  EXPECT_EQ(At(1, 1), "-");
}

}  // namespace
}  // namespace kelpdex
