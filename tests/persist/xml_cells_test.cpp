#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/xml_document_fixture.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

class XmlCellsTest : public testing::XmlDocumentTest {};

TEST_F(XmlCellsTest, PlainAndUnusualCellsReadAlikeAcrossBufferRefills) {
  // Enough cells to cross the stream buffer many times, mixing values that the fast path takes
  // with values that need decoding, so that both paths and their hand-over are exercised.
  Workbook book;
  testing::BuildSampleWorkbook(book);
  Worksheet& data = *book.FindTable("People");
  std::vector<uint8_t> rec(256);
  const char* texts[] = {"plain", "a&b", " leading", "caf\xE9", "x<y>z", "two  spaces", "t\tab"};
  for (uint32_t r = 400; r < 30000; ++r) {
    std::string text = std::string(texts[r % 7]) + std::to_string(r);
    cell::EncodeText(rec.data(), r, 0, text, r % 5 == 0 ? cell::kAuto : 0);
    ASSERT_TRUE(data.cells.PutCell(rec.data()));
    cell::EncodeNumber(rec.data(), r, 1, r * 0.25 - 100, r % 11 == 0 ? 0x70 : 0);
    ASSERT_TRUE(data.cells.PutCell(rec.data()));
  }
  Workbook back;
  ASSERT_TRUE(LoadXml(SaveXml(book, "many.xml"), back)) << int(back.errorCode) << " " << line;
  // Blanks the reader would collapse and tabs travel as references: every text comes back.
  CellStore& cells = back.FindTable("People")->cells;
  for (uint32_t r = 400; r < 30000; r += 997) {
    std::string text = std::string(texts[r % 7]) + std::to_string(r);
    CellRecord* c = cells.GetCell(r, 0);
    ASSERT_NE(c, nullptr) << r;
    EXPECT_EQ(cell::Text(c), text) << r;
    EXPECT_EQ(cell::IsAuto(c), r % 5 == 0) << r;
    CellRecord* n = cells.GetCell(r, 1);
    ASSERT_NE(n, nullptr) << r;
    EXPECT_EQ(cell::ErrorNibble(n), r % 11 == 0 ? 0x70 : 0) << r;
    if (r % 11 != 0) {
      EXPECT_EQ(cell::Number(n), r * 0.25 - 100) << r;
    }
  }
}

TEST_F(XmlCellsTest, CellAddressesOrderAndValues) {
  WriteFileBytes(dir.Path("cells.xml"),
                 Document("<Cell rc='r1c1'><T>a</T></Cell>\r\n"
                          "<Cell rc=\"rc2\"><N>2.5</N></Cell>\r\n"
                          "<Cell rc=\"r3c2\" Auto=\"true\"><F>=1+1</F><N>2</N></Cell>\r\n"
                          "<Cell rc=\"r4c1\"><Error>#div/0!</Error></Cell>\r\n"
                          "<Cell rc=\"r5c1\"><T>line&#13;&#10;break   and  blanks</T></Cell>\r\n"));
  Workbook book;
  ASSERT_TRUE(LoadXml(dir.Path("cells.xml"), book)) << int(book.errorCode) << " line " << line;
  EXPECT_EQ(CellText(book, 0, 0), "a");
  EXPECT_EQ(CellText(book, 0, 1), "2.500000");
  CellRecord* f = book.FindTable("T")->cells.GetCell(2, 1);
  ASSERT_TRUE(f != nullptr && cell::IsFormula(f));
  EXPECT_TRUE(cell::IsAuto(f));
  EXPECT_EQ(cell::CachedNumber(f), 2);
  EXPECT_EQ(cell::ErrorNibble(book.FindTable("T")->cells.GetCell(3, 0)), 0x10);
  EXPECT_EQ(CellText(book, 4, 0), "line\r\nbreak and blanks");

  WriteFileBytes(dir.Path("order.xml"), Document("<Cell rc=\"r2c1\"><T>a</T></Cell>\r\n"
                                                 "<Cell rc=\"r1c1\"><T>b</T></Cell>\r\n"));
  Workbook bad;
  EXPECT_FALSE(LoadXml(dir.Path("order.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlInvalidAttribute);
  EXPECT_EQ(line, 8);
  WriteFileBytes(dir.Path("norc.xml"), Document("<Cell><T>a</T></Cell>\r\n"));
  EXPECT_FALSE(LoadXml(dir.Path("norc.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlMissingAttribute);
  WriteFileBytes(dir.Path("badnum.xml"), Document("<Cell rc=\"r1c1\"><N>12abc</N></Cell>\r\n"));
  EXPECT_FALSE(LoadXml(dir.Path("badnum.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlInvalidData);
}

}  // namespace
}  // namespace kelpdex
