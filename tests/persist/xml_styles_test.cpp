#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/xml_document_fixture.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::WriteFileBytes;

class XmlStylesTest : public testing::XmlDocumentTest {};

TEST_F(XmlStylesTest, ASavedProtectionDoesNotComeBackButTheReadersOwnNamesDo) {
  // Saved protection does not come back; the reader's own names do.
  Workbook book;
  testing::BuildSampleWorkbook(book);
  StyleRecord protectedStyle = book.styles.Style(0);
  protectedStyle.bytes[style::kProtectedAt] = 1;
  uint16_t id = 0;
  ErrorCode e = err::kNone;
  ASSERT_TRUE(book.styles.FindOrAddStyle(protectedStyle, id, e));
  Workbook back;
  ASSERT_TRUE(LoadXml(SaveXml(book, "prot.xml"), back));
  EXPECT_EQ(back.styles.Style(id).bytes[style::kProtectedAt], 0);
  WriteFileBytes(
      dir.Path("protect.xml"),
      Document("", "UTF-8",
               "<Styles><Style ID=\"0\"><Protection Protect=\"Yes\"/></Style></Styles>"));
  Workbook hand;
  ASSERT_TRUE(LoadXml(dir.Path("protect.xml"), hand)) << int(hand.errorCode) << " " << line;
  EXPECT_EQ(hand.styles.Style(0).bytes[style::kProtectedAt], 1);
}

}  // namespace
}  // namespace kelpdex
