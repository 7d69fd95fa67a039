#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/xml_document_fixture.h"
#include "store/bytes.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

class XmlContainersTest : public testing::XmlDocumentTest {};

// A container of images with every part the form spells, and a sheet background.
ContainerRecord ImageContainer(uint32_t id) {
  ContainerRecord c;
  uint8_t* b = c.bytes.data();
  StoreU32(b + container::kIdAt, id);
  StoreU16(b + container::kColumnsAt, 2);
  StoreU16(b + container::kRowsAt, 1);
  StoreU16(b + container::kHorzSpacingAt, 4);
  StoreU16(b + container::kOpacityAt, 80);
  StoreU32(b + container::kPlacementRowAt, 9);
  StoreU16(b + container::kPlacementColumnAt, 2);
  StoreU32(b + container::kPlacementLeftAt, static_cast<uint32_t>(-5));
  b[container::kBorderStyleAt] = 2;
  b[container::kBorderColourSetAt] = 1;
  StoreU32(b + container::kBorderColourAt, 0x123456);
  StoreU16(b + container::kBorderWidthAt, 3);
  uint8_t* bg = b + container::kBackgroundAt;
  bg[background::kKindAt] = background_kind::kFractal;
  double zr = -0.75;
  std::memcpy(bg + background::kFractalAt, &zr, 8);
  bg[background::kColourCountAt] = 2;
  StoreU32(bg + background::kColoursAt, 0xFF0000);
  StoreU32(bg + background::kColoursAt + 4, 0x00A0B0);
  b[container::kTitleFontSetAt] = 1;
  std::memcpy(b + container::kTitleFontAt, "Serif", 5);
  std::memcpy(b + container::kTitleTextAt, "Photos", 6);
  b[container::kObjectCountAt] = 2;
  b[container::kObjectsAt] = 7;
  b[container::kObjectsAt + 1] = 8;
  return c;
}

TEST_F(XmlContainersTest, ContainersAndBackgroundsTravelFieldByField) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  Worksheet& data = *book.FindTable("People");
  data.containers.push_back(ImageContainer(3));
  data.containers.push_back(ContainerRecord());  // nothing in it: an empty Objects
  uint8_t* bg = data.sheetSettings.data() + sheet_settings::kBackgroundAt;
  bg[background::kKindAt] = background_kind::kImage;
  bg[background::kViewAt] = 2;
  std::memcpy(bg + background::kImagePathAt, "/pictures/paper.PNG", 19);
  Workbook back;
  ASSERT_TRUE(LoadXml(SaveXml(book, "containers.xml"), back)) << int(back.errorCode) << " " << line;
  testing::ExpectSameWorkbook(book, back);

  // A repeated id gives way to the lowest free one; an image of another kind is refused.
  std::string text = ReadFileBytes(dir.Path("containers.xml"));
  size_t at = text.find("<Container ID=\"0\"");
  ASSERT_NE(at, std::string::npos);
  text.replace(at, 18, "<Container ID=\"3\"");
  WriteFileBytes(dir.Path("twice.xml"), text);
  Workbook twice;
  ASSERT_TRUE(LoadXml(dir.Path("twice.xml"), twice)) << int(twice.errorCode);
  const auto& containers = twice.FindTable("People")->containers;
  // The sample's own container holds id 1, so the repeated 3 becomes 2.
  ASSERT_EQ(containers.size(), 3u);
  EXPECT_EQ(LoadU32(containers[1].bytes.data() + container::kIdAt), 3u);
  EXPECT_EQ(LoadU32(containers[2].bytes.data() + container::kIdAt), 2u);
  text = ReadFileBytes(dir.Path("containers.xml"));
  at = text.find("paper.PNG");
  ASSERT_NE(at, std::string::npos);
  text.replace(at, 9, "paper.gif");
  WriteFileBytes(dir.Path("gif.xml"), text);
  Workbook gif;
  EXPECT_FALSE(LoadXml(dir.Path("gif.xml"), gif));
  EXPECT_EQ(gif.errorCode, err::kXmlInvalidData);
}

}  // namespace
}  // namespace kelpdex
