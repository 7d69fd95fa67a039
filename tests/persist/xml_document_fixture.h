// Saving and loading whole native XML documents for the tests of its sections: a fixture with the
// files in a fresh folder, and a minimal document written by hand around given cells and styles.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "persist/binary_format.h"
#include "persist/native_xml.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex::testing {

class XmlDocumentTest : public ::testing::Test {
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
  std::string SaveBinary(const Workbook& book, const std::string& name) {
    std::string path = dir.Path(name);
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, false));
    EXPECT_TRUE(WriteBinaryDocument(out, book));
    out.Close();
    return path;
  }
  bool LoadBinary(const std::string& path, Workbook& book) {
    FileStream in;
    if (!in.Open(path, StreamMode::kRead, true)) return false;
    return ReadBinaryDocument(in, book);
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

  TempDir dir;
  bool ok = false;
  ErrorCode error = err::kNone;
  int line = 0;
};

}  // namespace kelpdex::testing
