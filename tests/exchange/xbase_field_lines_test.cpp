#include "exchange/xbase_field_lines.h"

#include <gtest/gtest.h>

#include "exchange/text_options.h"
#include "exchange/text_separators.h"

namespace kelpdex {
namespace {

XbaseField Make(const char* name, char type, uint16_t length, uint8_t decimals = 0) {
  XbaseField field;
  field.name = name;
  field.type = type;
  field.length = length;
  field.decimals = decimals;
  return field;
}

TEST(XbaseFieldLines, EachTypeHasItsLineForm) {
  EXPECT_EQ(XbaseFieldLine(1, Make("NAME", 'C', 128)), "1.  NAME [Text: 128]");
  EXPECT_EQ(XbaseFieldLine(2, Make("PRICE", 'N', 18, 2)), "2.  PRICE [Numeric: 18/2]");
  EXPECT_EQ(XbaseFieldLine(3, Make("RATE", 'F', 20)), "3.  RATE [Float: 20]");
  EXPECT_EQ(XbaseFieldLine(4, Make("PAID", 'L', 1)), "4.  PAID [Logical: 1]");
  EXPECT_EQ(XbaseFieldLine(5, Make("BORN", 'D', 8)), "5.  BORN [Date: 8]");
  EXPECT_EQ(XbaseFieldLine(6, Make("NOTES", 'M', 10)), "6.  NOTES [Memo: 10]");
  EXPECT_EQ(XbaseFieldLine(7, Make("COST", 'Y', 8)), "7.  COST [Currency: 8]");
  EXPECT_EQ(XbaseFieldLine(8, Make("AT", 'T', 8)), "8.  AT [DateTime: 8]");
  EXPECT_EQ(XbaseFieldLine(9, Make("PIC", 'P', 10)), "9.  PIC [Memo/Picture: 10]");
  EXPECT_EQ(XbaseFieldLine(10, Make("ODD", 'Q', 3)), "10.  ODD [Unknow]");
  XbaseHeader header;
  header.recordCount = 12;
  header.year = 124;
  header.month = 5;
  header.day = 17;
  EXPECT_EQ(XbaseSummaryLine(header), "Summary: 12 record(s), updated on 2024/5/17");
}

TEST(XbaseFieldLines, AnEditedFieldStaysWritable) {
  XbaseField date = Make("D", 'D', 3, 2);
  FitXbaseField(date);
  EXPECT_EQ(date.length, 8);
  EXPECT_EQ(date.decimals, 0);
  XbaseField number = Make("N", 'N', 40, 30);
  FitXbaseField(number);
  EXPECT_EQ(number.length, 20);
  EXPECT_EQ(number.decimals, 18);
  XbaseField tiny = Make("T", 'F', 2, 1);
  FitXbaseField(tiny);
  EXPECT_EQ(tiny.decimals, 0);
  XbaseField text = Make("C", 'C', 0, 4);
  FitXbaseField(text);
  EXPECT_EQ(text.length, 1);
  EXPECT_EQ(text.decimals, 0);
  EXPECT_EQ(XbaseTypeIndex('M'), 5);
  EXPECT_EQ(XbaseTypeIndex('Y'), -1);
}

TEST(TextSeparators, NamesAndWidthsReadAsTheDialogsAndCommandLineGiveThem) {
  char separator = 0;
  ASSERT_TRUE(SeparatorOfName("semicolon", separator));
  EXPECT_EQ(separator, ';');
  ASSERT_TRUE(SeparatorOfName("|", separator));
  EXPECT_EQ(separator, '|');
  EXPECT_FALSE(SeparatorOfName("pipe", separator));
  EXPECT_EQ(SeparatorIndex('\t'), 1);
  EXPECT_EQ(SeparatorIndex('|'), kOtherSeparator);
  TextFileOptions options;
  EXPECT_EQ(FormatTextWidths(options), "");
  ASSERT_TRUE(ParseTextWidths("10,3,250", options));
  EXPECT_EQ(FormatTextWidths(options), "10,3,250");
}

}  // namespace
}  // namespace kelpdex
