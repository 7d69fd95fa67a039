#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "persist/chart_layout.h"
#include "persist/xml_document_fixture.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
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

void PutName(uint8_t* font, char c, size_t size) {
  std::memset(font + font::kNameAt, c, size);
}

std::string NameOf(const uint8_t* font) {
  const char* name = reinterpret_cast<const char*>(font + font::kNameAt);
  return std::string(name, strnlen(name, 128));
}

TEST_F(XmlStylesTest, AFontNameIsAtMost127BytesWhereverAFontIsSpelled) {
  // The longest name in each place a font is spelled: the font table, a page header, a container
  // title and a chart title.
  Workbook book;
  testing::BuildSampleWorkbook(book);
  FontRecord font{};
  PutName(font.bytes, 's', 127);
  uint8_t fontId = 0;
  ErrorCode e = err::kNone;
  ASSERT_TRUE(book.styles.FindOrAddFont(font, fontId, e));
  Worksheet& data = *book.FindTable("People");
  PutName(data.pageSettings.data() + page_settings::kFontAt, 'h', 127);
  ContainerRecord& container = data.containers[0];
  container.bytes[container::kTitleFontSetAt] = 1;
  PutName(container.bytes.data() + container::kTitleFontAt, 't', 127);
  PutName(container.charts[0].bytes.data() + chart::kTitleFontAt, 'c', 127);
  std::string path = SaveXml(book, "longest.xml");
  ASSERT_TRUE(ok) << int(error);
  Workbook back;
  ASSERT_TRUE(LoadXml(path, back)) << int(back.errorCode) << " line " << line;
  testing::ExpectSameWorkbook(book, back);

  // One byte more is refused in each of them, with the line of its font.
  std::string text = ReadFileBytes(path);
  for (char c : {'s', 'h', 't', 'c'}) {
    size_t at = text.find("Name=\"" + std::string(127, c) + "\"");
    ASSERT_NE(at, std::string::npos) << c;
    std::string longer = text;
    longer.insert(at + 6, 1, c);
    WriteFileBytes(dir.Path("longer.xml"), longer);
    Workbook refused;
    EXPECT_FALSE(LoadXml(dir.Path("longer.xml"), refused)) << c;
    EXPECT_EQ(refused.errorCode, err::kXmlInvalidAttribute) << c;
    EXPECT_EQ(line, 1 + std::count(text.begin(), text.begin() + static_cast<long>(at), '\n')) << c;
  }

  // A record whose 128 name bytes are all set stays so through the binary form, which keeps the
  // field as it stands; the XML form writes the first 127 bytes, so that its reader takes the
  // document back.
  FontRecord full{};
  PutName(full.bytes, 'f', 128);
  uint8_t fullId = 0;
  ASSERT_TRUE(book.styles.FindOrAddFont(full, fullId, e));
  PutName(data.pageSettings.data() + page_settings::kFontAt, 'h', 128);
  Workbook fromBinary;
  ASSERT_TRUE(LoadBinary(SaveBinary(book, "full.kpx"), fromBinary)) << int(fromBinary.errorCode);
  EXPECT_EQ(NameOf(fromBinary.styles.Font(fullId).bytes), std::string(128, 'f'));
  Workbook fromXml;
  ASSERT_TRUE(LoadXml(SaveXml(fromBinary, "full.xml"), fromXml))
      << int(fromXml.errorCode) << " line " << line;
  EXPECT_EQ(NameOf(fromXml.styles.Font(fullId).bytes), std::string(127, 'f'));
  EXPECT_EQ(NameOf(fromXml.FindTable("People")->pageSettings.data() + page_settings::kFontAt),
            std::string(127, 'h'));
}

}  // namespace
}  // namespace kelpdex
