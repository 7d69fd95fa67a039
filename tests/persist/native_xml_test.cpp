#include "persist/native_xml.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "persist/file_kind.h"
#include "persist/xml_document_fixture.h"
#include "persist/xml_writer.h"
#include "store/catalogue.h"
#include "store/row_block.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::ReadFileBytes;
using testing::WriteFileBytes;

class NativeXmlTest : public testing::XmlDocumentTest {};

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
  std::string textA = ReadFileBytes(SaveXml(a, "a.xml"));
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
  EXPECT_EQ(ReadFileBytes(SaveXml(b, "b.xml")), textA);
}

TEST_F(NativeXmlTest, TextIsDecodedByTheEncodingOfTheProlog) {
  // "\xC3\xA9" is e acute in UTF-8, which becomes one byte; other encodings keep both bytes.
  std::string cells = "<Cell rc=\"r1c1\"><T>caf\xC3\xA9</T></Cell>\r\n";
  for (const char* encoding : {"UTF-8", "Windows-1252", "ISO-8859-2"}) {
    WriteFileBytes(dir.Path("enc.xml"), Document(cells, encoding));
    Workbook book;
    ASSERT_TRUE(LoadXml(dir.Path("enc.xml"), book)) << encoding;
    EXPECT_EQ(CellText(book, 0, 0), std::string(encoding) == "UTF-8" ? "caf\xE9" : "caf\xC3\xA9");
  }
}

TEST_F(NativeXmlTest, LimitsAndDefaults) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  std::vector<uint8_t> rec(kBlockPayload);
  cell::EncodeText(rec.data(), 0, 5, std::string(kXmlEscapeLimit + 1, 'x'));
  ASSERT_TRUE(book.FindTable("People")->cells.PutCell(rec.data()));
  SaveXml(book, "long.xml");
  EXPECT_FALSE(ok);
  EXPECT_EQ(error, err::kXmlInvalidData);

  // Without a Selected worksheet the first table is current, not the catalogue before it.
  WriteFileBytes(dir.Path("first.xml"), Document(""));
  Workbook first;
  ASSERT_TRUE(LoadXml(dir.Path("first.xml"), first));
  EXPECT_EQ(first.currentSheet, first.FindTable("T"));
  // A catalogue whose table is missing does not compile.
  std::string orphan =
      "<?xml version=\"1.0\"?><Workbook><Styles/><Folder Name=\"system\"/>"
      "<Worksheet Name=\"Lost\" TreeLevel=\"2\"/><Worksheet Name=\"T\" TreeLevel=\"2\"/>"
      "<Worksheet Name=\"T\" Selected=\"1\"/></Workbook>";
  WriteFileBytes(dir.Path("orphan.xml"), orphan);
  Workbook lost;
  EXPECT_FALSE(LoadXml(dir.Path("orphan.xml"), lost));
  EXPECT_EQ(lost.errorCode, err::kInvalidDatabase);
  std::string noTables =
      "<?xml version=\"1.0\"?><Workbook><Styles/><Folder Name=\"x\"/></Workbook>";
  WriteFileBytes(dir.Path("none.xml"), noTables);
  Workbook none;
  EXPECT_FALSE(LoadXml(dir.Path("none.xml"), none));
  EXPECT_EQ(none.errorCode, err::kNeedsOneTable);
}

TEST_F(NativeXmlTest, TheTreeIsRefusedWithItsLineWhereNoPathCouldFindANode) {
  const std::string head = "<?xml version=\"1.0\"?>\r\n<Workbook>\r\n<Styles/>\r\n";
  const std::string tables =
      "<Folder Name=\"system\" TreeLevel=\"1\"/>\r\n<Worksheet Name=\"T\" TreeLevel=\"2\"/>\r\n";
  const struct {
    std::string nodes;
    ErrorCode code;
  } cases[] = {
      {tables + "<Worksheet Name=\"T\" TreeLevel=\"0\"/>", err::kXmlInvalidData},
      // Below a worksheet, or two levels below a folder, a node hangs in no folder.
      {tables + "<Worksheet Name=\"T\" TreeLevel=\"3\"/>", err::kXmlInvalidData},
      {"<Folder Name=\"system\" TreeLevel=\"1\"/>\r\n<Worksheet Name=\"T\" TreeLevel=\"3\"/>",
       err::kXmlInvalidData},
      {"<Worksheet Name=\"T\" TreeLevel=\"2\"/>", err::kXmlInvalidData},
      {tables + "<Worksheet Name=\"" + std::string(128, 'n') + "\"/>", err::kXmlInvalidAttribute},
  };
  for (const auto& c : cases) {
    WriteFileBytes(dir.Path("tree.xml"), head + c.nodes + "\r\n</Workbook>\r\n");
    Workbook book;
    EXPECT_FALSE(LoadXml(dir.Path("tree.xml"), book)) << c.nodes.substr(0, 200);
    EXPECT_EQ(book.errorCode, c.code) << c.nodes.substr(0, 200);
    // The nodes start on line 4; the one refused is the last.
    int breaks = 0;
    for (size_t at = c.nodes.find('\n'); at != std::string::npos; at = c.nodes.find('\n', at + 1)) {
      ++breaks;
    }
    EXPECT_EQ(line, 4 + breaks) << c.nodes.substr(0, 200);
  }
  // The deepest levels allowed: a folder's child, and a sheet beside a folder's child.
  WriteFileBytes(
      dir.Path("deep.xml"),
      head + tables +
          "<Worksheet Name=\"T\"/><Folder Name=\"a\"/><Folder Name=\"b\" TreeLevel=\"2\"/>"
          "<Worksheet Name=\"c\" TreeLevel=\"3\"/><Worksheet Name=\"d\" TreeLevel=\"3\"/>"
          "</Workbook>");
  Workbook deep;
  ASSERT_TRUE(LoadXml(dir.Path("deep.xml"), deep)) << int(deep.errorCode);
  EXPECT_NE(deep.FindNode("\\a\\b\\d"), nullptr);
}

TEST_F(NativeXmlTest, ACatalogueOfMoreFieldsThanColumnsDoesNotCompileInEitherForm) {
  for (uint32_t fields : {2047u, 2048u}) {
    Workbook book;
    ASSERT_TRUE(CreateTable(book, "T"));
    uint8_t record[64];
    cell::EncodeText(record, fields, 0, "Last");
    ASSERT_TRUE(book.FindCatalogue("T")->cells.PutCell(record));
    Workbook fromXml, fromBinary;
    SaveXml(book, "wide.xml");
    ASSERT_TRUE(ok);
    bool xmlLoaded = LoadXml(dir.Path("wide.xml"), fromXml);
    bool binaryLoaded = LoadBinary(SaveBinary(book, "wide.kpx"), fromBinary);
    EXPECT_EQ(xmlLoaded, fields == 2047u);
    EXPECT_EQ(binaryLoaded, fields == 2047u);
    if (fields > 2047u) {
      EXPECT_EQ(fromXml.errorCode, err::kInvalidDatabase);
      EXPECT_EQ(fromBinary.errorCode, err::kInvalidDatabase);
    }
  }
}

}  // namespace
}  // namespace kelpdex
