#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <string>

#include "persist/binary_format.h"
#include "persist/file_kind.h"
#include "store/bytes.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

std::string ReadAll(const std::string& path) {
  return testing::ReadFileBytes(path);
}

void WriteAll(const std::string& path, const std::string& bytes) {
  testing::WriteFileBytes(path, bytes);
}

class NativeXmlTest : public ::testing::Test {
 protected:
  std::string SaveXml(const Workbook& book, const std::string& name, bool gz = false) {
    std::string path = dir.Path(name);
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, gz));
    ok = WriteXmlDocument(out, book);
    error = out.error();
    out.Close();
    return path;
  }
  bool LoadXml(const std::string& path, Workbook& book) {
    FileStream in;
    if (!in.Open(path, StreamMode::kRead, true)) return false;
    return ReadXmlDocument(in, book, &line);
  }
  // A minimal document around the given cells of table "T".
  std::string Document(const std::string& cells, const std::string& encoding = "UTF-8",
                       const std::string& styles = "<Styles/>") {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\r\n<Workbook>\r\n" + styles +
           "<Folder Name=\"system\" TreeLevel=\"1\"/>\r\n"
           "<Worksheet Name=\"T\" TreeLevel=\"2\"/>\r\n"
           "<Worksheet Name=\"T\" TreeLevel=\"1\">\r\n<Cells>\r\n" +
           cells + "</Cells>\r\n</Worksheet>\r\n</Workbook>\r\n";
  }
  std::string CellText(Workbook& book, uint32_t row, uint16_t column) {
    CellRecord* r = book.FindTable("T")->cells.GetCell(row, column);
    if (r == nullptr) return "-";
    if (cell::IsText(r)) return std::string(cell::Text(r));
    if (cell::IsNumber(r)) return std::to_string(cell::Number(r));
    return "formula";
  }

  testing::TempDir dir;
  bool ok = false;
  ErrorCode error = err::kNone;
  int line = 0;
};

TEST_F(NativeXmlTest, TheWholeDocumentRoundTripsPlainAndGzipped) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  for (bool gz : {false, true}) {
    std::string path = SaveXml(book, gz ? "sample.xml.gz" : "sample.xml", gz);
    ASSERT_TRUE(ok) << int(error);
    NativeFileKind kind;
    ProtectionMode protection;
    ErrorCode sniffError;
    ASSERT_TRUE(SniffFile(path, kind, protection, sniffError));
    EXPECT_EQ(kind, gz ? NativeFileKind::kXmlCompressed : NativeFileKind::kXml);
    Workbook back;
    ASSERT_TRUE(LoadXml(path, back)) << int(back.errorCode) << " line " << line;
    testing::ExpectSameWorkbook(book, back);
  }
}

TEST_F(NativeXmlTest, XmlThenBinaryThenXmlGivesTheSameText) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  Workbook a;
  ASSERT_TRUE(LoadXml(SaveXml(book, "first.xml"), a));
  std::string textA = ReadAll(SaveXml(a, "a.xml"));
  std::string binary = dir.Path("b.kpx");
  {
    FileStream out;
    ASSERT_TRUE(out.Open(binary, StreamMode::kWrite, false));
    ASSERT_TRUE(WriteBinaryDocument(out, a));
  }
  Workbook b;
  FileStream in;
  ASSERT_TRUE(in.Open(binary, StreamMode::kRead, true));
  ASSERT_TRUE(ReadBinaryDocument(in, b));
  EXPECT_EQ(ReadAll(SaveXml(b, "b.xml")), textA);
}

TEST_F(NativeXmlTest, PlainAndUnusualCellsReadAlikeAcrossBufferRefills) {
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
  // Blanks collapse and a leading blank goes, as the form reads text; a tab travels as "&#09;"
  // and comes back; the rest comes back as it was.
  CellStore& cells = back.FindTable("People")->cells;
  for (uint32_t r = 400; r < 30000; r += 997) {
    std::string text = std::string(texts[r % 7]) + std::to_string(r);
    if (r % 7 == 2) text.erase(0, 1);
    if (r % 7 == 5) text = "two spaces" + std::to_string(r);
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

TEST_F(NativeXmlTest, ContainersAndBackgroundsTravelFieldByField) {
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
  std::string text = ReadAll(dir.Path("containers.xml"));
  size_t at = text.find("<Container ID=\"0\"");
  ASSERT_NE(at, std::string::npos);
  text.replace(at, 18, "<Container ID=\"3\"");
  WriteAll(dir.Path("twice.xml"), text);
  Workbook twice;
  ASSERT_TRUE(LoadXml(dir.Path("twice.xml"), twice)) << int(twice.errorCode);
  const auto& containers = twice.FindTable("People")->containers;
  // The sample's own container holds id 1, so the repeated 3 becomes 2.
  ASSERT_EQ(containers.size(), 3u);
  EXPECT_EQ(LoadU32(containers[1].bytes.data() + container::kIdAt), 3u);
  EXPECT_EQ(LoadU32(containers[2].bytes.data() + container::kIdAt), 2u);
  text = ReadAll(dir.Path("containers.xml"));
  at = text.find("paper.PNG");
  ASSERT_NE(at, std::string::npos);
  text.replace(at, 9, "paper.gif");
  WriteAll(dir.Path("gif.xml"), text);
  Workbook gif;
  EXPECT_FALSE(LoadXml(dir.Path("gif.xml"), gif));
  EXPECT_EQ(gif.errorCode, err::kXmlInvalidData);
}

TEST_F(NativeXmlTest, CellAddressesOrderAndValues) {
  WriteAll(dir.Path("cells.xml"),
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

  WriteAll(dir.Path("order.xml"), Document("<Cell rc=\"r2c1\"><T>a</T></Cell>\r\n"
                                           "<Cell rc=\"r1c1\"><T>b</T></Cell>\r\n"));
  Workbook bad;
  EXPECT_FALSE(LoadXml(dir.Path("order.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlInvalidAttribute);
  EXPECT_EQ(line, 8);
  WriteAll(dir.Path("norc.xml"), Document("<Cell><T>a</T></Cell>\r\n"));
  EXPECT_FALSE(LoadXml(dir.Path("norc.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlMissingAttribute);
  WriteAll(dir.Path("badnum.xml"), Document("<Cell rc=\"r1c1\"><N>12abc</N></Cell>\r\n"));
  EXPECT_FALSE(LoadXml(dir.Path("badnum.xml"), bad));
  EXPECT_EQ(bad.errorCode, err::kXmlInvalidData);
}

TEST_F(NativeXmlTest, EncodingsAndTheProtectionAsymmetry) {
  // "\xC3\xA9" is e acute in UTF-8, which becomes one byte; other encodings keep both bytes.
  std::string cells = "<Cell rc=\"r1c1\"><T>caf\xC3\xA9</T></Cell>\r\n";
  for (const char* encoding : {"UTF-8", "Windows-1252", "ISO-8859-2"}) {
    WriteAll(dir.Path("enc.xml"), Document(cells, encoding));
    Workbook book;
    ASSERT_TRUE(LoadXml(dir.Path("enc.xml"), book)) << encoding;
    EXPECT_EQ(CellText(book, 0, 0), std::string(encoding) == "UTF-8" ? "caf\xE9" : "caf\xC3\xA9");
  }
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
  WriteAll(dir.Path("protect.xml"),
           Document("", "UTF-8",
                    "<Styles><Style ID=\"0\"><Protection Protect=\"Yes\"/></Style></Styles>"));
  Workbook hand;
  ASSERT_TRUE(LoadXml(dir.Path("protect.xml"), hand)) << int(hand.errorCode) << " " << line;
  EXPECT_EQ(hand.styles.Style(0).bytes[style::kProtectedAt], 1);
}

TEST_F(NativeXmlTest, LimitsAndDefaults) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  uint8_t rec[4000];
  cell::EncodeText(rec, 0, 5, std::string(3100, 'x'));
  ASSERT_TRUE(book.FindTable("People")->cells.PutCell(rec));
  SaveXml(book, "long.xml");
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, err::kXmlInvalidData);

  // Without a Selected worksheet the first table is current, not the catalogue before it.
  WriteAll(dir.Path("first.xml"), Document(""));
  Workbook first;
  ASSERT_TRUE(LoadXml(dir.Path("first.xml"), first));
  EXPECT_EQ(first.currentSheet, first.FindTable("T"));
  // A catalogue whose table is missing does not compile.
  std::string orphan =
      "<?xml version=\"1.0\"?><Workbook><Styles/><Folder Name=\"system\"/>"
      "<Worksheet Name=\"Lost\" TreeLevel=\"2\"/><Worksheet Name=\"T\" Selected=\"1\"/>"
      "<Worksheet Name=\"T\" TreeLevel=\"2\"/></Workbook>";
  WriteAll(dir.Path("orphan.xml"), orphan);
  Workbook lost;
  EXPECT_FALSE(LoadXml(dir.Path("orphan.xml"), lost));
  EXPECT_EQ(lost.errorCode, err::kInvalidDatabase);
  std::string noTables =
      "<?xml version=\"1.0\"?><Workbook><Styles/><Folder Name=\"x\"/></Workbook>";
  WriteAll(dir.Path("none.xml"), noTables);
  Workbook none;
  EXPECT_FALSE(LoadXml(dir.Path("none.xml"), none));
  EXPECT_EQ(none.errorCode, err::kNeedsOneTable);
}

}  // namespace
}  // namespace kelpdex
