#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "exchange/excel_xml.h"
#include "exchange_test_util.h"
#include "format/number_style.h"
#include "persist/document_file.h"
#include "persist/native_xml.h"
#include "store/bytes.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

using testing::CellAt;
using testing::FieldAt;
using testing::ReadFileBytes;

// The cells of a store with the Auto mark taken off: the form has no place for it.
std::string CellsWithoutAuto(const CellStore& store) {
  std::string out;
  CellCursor cursor;
  while (const CellRecord* r = const_cast<CellStore&>(store).NextCell(cursor)) {
    std::string bytes(reinterpret_cast<const char*>(cell::Bytes(r)), cell::Size(r));
    bytes[0] = static_cast<char>(bytes[0] & ~cell::kAuto);
    out += bytes;
  }
  return out;
}

// A SpreadsheetML file around the given worksheets, with one style "s1".
std::string Spreadsheet(const std::string& sheets) {
  return "<?xml version=\"1.0\"?>\n"
         "<?mso-application progid=\"Excel.Sheet\"?>\n"
         "<Workbook xmlns=\"urn:schemas-microsoft-com:office:spreadsheet\"\n"
         " xmlns:ss=\"urn:schemas-microsoft-com:office:spreadsheet\">\n"
         "<Styles><Style ss:ID=\"Default\" ss:Name=\"Normal\"/>"
         "<Style ss:ID=\"s1\"><Font ss:Bold=\"1\"/></Style></Styles>\n" +
         sheets + "</Workbook>\n";
}

std::string Sheet(const std::string& name, const std::string& rows,
                  const std::string& options = "") {
  return "<Worksheet ss:Name=\"" + name + "\"><Table>\n" + rows + "</Table>" + options +
         "</Worksheet>\n";
}

// A catalogue sheet of one Text field "Name", as the writer puts it.
std::string Catalogue(const std::string& table) {
  return Sheet("sys_" + table,
               "<Row><Cell><Data ss:Type=\"String\">Field</Data></Cell>"
               "<Cell><Data ss:Type=\"String\">Type</Data></Cell></Row>\n"
               "<Row><Cell><Data ss:Type=\"String\">Name</Data></Cell>"
               "<Cell><Data ss:Type=\"String\">Text</Data></Cell></Row>\n");
}

class ExcelXmlTest : public ::testing::Test {
 protected:
  // Reads `text` as a file; false with the code and line left in the members.
  bool Import(const std::string& text, ExcelXmlMode mode = ExcelXmlMode::kDatabase) {
    return ImportExcelXml(book, dir.Write("in.xml", text), mode, &line);
  }
  ErrorCode Refused(const std::string& text, ExcelXmlMode mode = ExcelXmlMode::kDatabase) {
    EXPECT_FALSE(Import(text, mode));
    EXPECT_EQ(book.firstNode, nullptr);
    return book.errorCode;
  }

  testing::TempDir dir;
  Workbook book;
  int line = 0;
};

TEST_F(ExcelXmlTest, TwoTablesRoundTripToTheSameTreeCellsAndFormats) {
  Workbook source;
  testing::BuildSampleWorkbook(source);
  ErrorCode error = err::kNone;
  const std::string path = dir.Path("out.xml");
  ASSERT_TRUE(ExportExcelXml(source, path, error)) << int(error);
  const std::string file = ReadFileBytes(path);

  // The skeleton: the prolog, the namespaces, the settings elements in their order with the
  // form's "xmls" attribute, and the catalogues ahead of the tables.
  EXPECT_EQ(file.rfind("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n\r\n<Workbook", 0), 0u);
  EXPECT_NE(file.find("xmlns:o=\"urn:schemas-microsoft-com:office:office\""), std::string::npos);
  EXPECT_NE(file.find("<OfficeDocumentSettings xmls=\"urn:schemas-microsoft-com:office:office\">"),
            std::string::npos);
  EXPECT_NE(file.find("<ExcelWorkbook xmls=\"urn:schemas-microsoft-com:office:excel\">"),
            std::string::npos);
  EXPECT_NE(file.find("<Version>10.2625</Version>"), std::string::npos);
  std::vector<size_t> order = {
      file.find("<DocumentProperties"),    file.find("<OfficeDocumentSettings"),
      file.find("<ExcelWorkbook"),         file.find("<Styles>"),
      file.find("ss:Name=\"sys_People\""), file.find("ss:Name=\"sys_Orders\""),
      file.find("ss:Name=\"People\""),     file.find("ss:Name=\"Orders\"")};
  for (size_t i = 0; i < order.size(); ++i) {
    ASSERT_NE(order[i], std::string::npos) << i;
    if (i > 0) {
      EXPECT_LT(order[i - 1], order[i]) << i;
    }
  }
  EXPECT_NE(file.find("ss:ArrayRange=\"RC:R[1]C[1]\""), std::string::npos);
  EXPECT_NE(file.find("<Data ss:Type=\"Error\">#DIV/0!</Data>"), std::string::npos);

  ASSERT_TRUE(ImportExcelXml(book, path, ExcelXmlMode::kDatabase, &line)) << int(book.errorCode);
  // The user's own folder is no part of the form; the rest comes back in place.
  std::vector<std::string> tree;
  for (const WorkbookNode* n = book.firstNode; n != nullptr; n = n->next) {
    tree.push_back(std::string(n->Name()) + "/" + std::to_string(n->level));
  }
  EXPECT_EQ(tree,
            (std::vector<std::string>{"People/1", "Orders/1", "system/1", "People/2", "Orders/2"}));
  EXPECT_EQ(book.currentSheet, book.FindTable("People"));
  for (const char* path : {"\\People", "\\Orders", "\\system\\People", "\\system\\Orders"}) {
    SCOPED_TRACE(path);
    auto* a = static_cast<Worksheet*>(source.FindNode(path));
    auto* b = static_cast<Worksheet*>(book.FindNode(path));
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(CellsWithoutAuto(a->cells), CellsWithoutAuto(b->cells));
    for (uint32_t row : {0u, 5u, 6u, 200u}) {
      for (uint16_t column : {0, 1}) {
        const uint16_t sa = a->formats.StyleAt(row, column);
        const uint16_t sb = b->formats.StyleAt(row, column);
        EXPECT_EQ(source.styles.Style(sa).bytes[style::kFillAt],
                  book.styles.Style(sb).bytes[style::kFillAt]);
        EXPECT_EQ(source.styles.Style(sa).bytes[style::kFontSetAt],
                  book.styles.Style(sb).bytes[style::kFontSetAt]);
      }
    }
    for (uint16_t c = 0; c < 4; ++c) {
      EXPECT_EQ(a->formats.Column(c).words[0], b->formats.Column(c).words[0]) << c;
    }
    for (uint32_t r : {7u, 8u, 4000u}) {
      EXPECT_EQ(a->formats.rowWords().Value(r), b->formats.rowWords().Value(r)) << r;
    }
    EXPECT_EQ(a->pageSettings[page_settings::kOrientationAt],
              b->pageSettings[page_settings::kOrientationAt]);
  }
  // The catalogue's mark of the chosen key survives, and the font of the styled column.
  TableSpec people;
  ASSERT_TRUE(MakeTableSpec(book, "People", people));
  EXPECT_EQ(CurrentKey(people), 0);
  const uint16_t styled = book.FindTable("People")->formats.ColumnStyle(1);
  const FontRecord& font = book.styles.Font(book.styles.Style(styled).bytes[style::kFontIndexAt]);
  EXPECT_STREQ(reinterpret_cast<const char*>(font.bytes), "Sans");
  EXPECT_EQ(font.bytes[font::kSizeAt], 12);
}

TEST_F(ExcelXmlTest, StyleAttributesMapBothWays) {
  Workbook source;
  ASSERT_TRUE(CreateTable(source, "T"));
  StyleRecord record = source.styles.Style(0);
  uint8_t* b = record.bytes;
  b[style::kHorizontalAt] = 2;  // Center
  b[style::kVerticalAt] = 4;    // Top
  b[style::kWrapAt] = 1;
  StoreU16(b + style::kRotationAt, static_cast<uint16_t>(-45));
  b[style::kBordersAt] = 4 | 1;  // left and top
  b[style::kBorderLineAt] = 7;   // two pixels wide
  b[style::kBorderColourSetAt] = 1;
  StoreU32(b + style::kBorderColourAt, 0x0000FF);  // red
  b[style::kFillAt] = 11;                          // DiagCross
  b[style::kFillColourFlagsAt] = 3;
  StoreU32(b + style::kFillColourAt, 0x00FF00);
  StoreU32(b + style::kFillBackgroundAt, 0xFF0000);
  b[style::kProtectedAt] = 1;
  NumberStyle percent;
  percent.kind = format_kind::kPercentage;
  percent.decimalDigits = 2;
  WriteNumberStyle(percent, record);
  uint16_t id = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(source.styles.FindOrAddStyle(record, id, error));
  Worksheet& data = *source.FindTable("T");
  uint8_t cellRecord[64];
  cell::EncodeNumber(cellRecord, 0, 0, 0.5);
  ASSERT_TRUE(data.cells.PutCell(cellRecord));
  ASSERT_TRUE(data.formats.ApplyStyleRun(StyleRun{0, 0, 0, id}));
  const std::string path = dir.Path("styles.xml");
  ASSERT_TRUE(ExportExcelXml(source, path, error));
  const std::string file = ReadFileBytes(path);
  const std::string sid = "s" + std::to_string(id);
  for (const std::string& part :
       {"<Cell ss:StyleID=\"" + sid + "\">",
        std::string("<Alignment ss:Horizontal=\"Center\" ss:Vertical=\"Top\" ss:WrapText=\"1\" "
                    "ss:Rotate=\"-45\"/>"),
        std::string("<Border ss:Position=\"Left\" ss:LineStyle=\"Continuous\" ss:Weight=\"2\" "
                    "ss:Color=\"#ff0000\"/>"),
        std::string("<Interior ss:Color=\"#0000FF\" ss:Pattern=\"DiagCross\" "
                    "ss:PatternColor=\"#00FF00\"/>"),
        std::string("<NumberFormat ss:Format=\"#,##0.00\\%\"/>"),
        std::string("<Protection ss:Protected=\"1\"/>")}) {
    EXPECT_NE(file.find(part), std::string::npos) << part;
  }
  ASSERT_TRUE(ImportExcelXml(book, path, ExcelXmlMode::kDatabase, &line)) << int(book.errorCode);
  const uint8_t* back = book.styles.Style(book.FindTable("T")->formats.StyleAt(0, 0)).bytes;
  for (uint32_t at : {style::kHorizontalAt, style::kVerticalAt, style::kWrapAt, style::kRotationAt,
                      style::kBordersAt, style::kBorderLineAt, style::kFillAt,
                      style::kFillColourFlagsAt, style::kProtectedAt}) {
    EXPECT_EQ(back[at], b[at]) << at;
  }
  EXPECT_EQ(LoadU32(back + style::kBorderColourAt), 0x0000FFu);
  EXPECT_EQ(LoadU32(back + style::kFillColourAt), 0x00FF00u);
  EXPECT_EQ(LoadU32(back + style::kFillBackgroundAt), 0xFF0000u);
  EXPECT_EQ(ReadNumberStyle(book.styles.Style(book.FindTable("T")->formats.StyleAt(0, 0))).kind,
            format_kind::kUserDefined);
}

TEST_F(ExcelXmlTest, BadInputFailsWithItsCodeAndLine) {
  const std::string pair = Catalogue("T");
  struct Case {
    const char* what;
    std::string text;
    ErrorCode code;
    int line;  // 0: not checked
  };
  const std::vector<Case> cases = {
      {"a sys_ sheet without its partner", Spreadsheet(pair), err::kInvalidExcelDatabase, 0},
      {"a sheet without its catalogue", Spreadsheet(pair + Sheet("T", "") + Sheet("U", "")),
       err::kInvalidExcelDatabase, 0},
      {"a spreadsheet's own file", Spreadsheet(Sheet("Sheet1", "<Row/>")),
       err::kInvalidExcelDatabase, 0},
      {"a row index that goes backwards",
       Spreadsheet(pair + Sheet("T", "<Row ss:Index=\"3\"/>\n<Row ss:Index=\"2\"/>\n")),
       err::kXmlInvalidData, 12},
      {"a cell index that repeats",
       Spreadsheet(pair + Sheet("T", "<Row><Cell ss:Index=\"2\"/>\n<Cell ss:Index=\"2\"/></Row>")),
       err::kXmlInvalidData, 12},
      {"a style id past 512", Spreadsheet("<Styles><Style ss:ID=\"s513\"/></Styles>"),
       err::kXmlInvalidAttribute, 6},
      {"a cell's style nobody defined",
       Spreadsheet(pair + Sheet("T", "<Row><Cell ss:StyleID=\"s9\"/></Row>")),
       err::kXmlInvalidAttribute, 11},
      {"a number that is not one",
       Spreadsheet(pair + Sheet("T", "<Row><Cell><Data ss:Type=\"Number\">1x</Data></Cell></Row>")),
       err::kXmlInvalidData, 11},
      {"an unknown error name",
       Spreadsheet(pair +
                   Sheet("T", "<Row><Cell><Data ss:Type=\"Error\">#OOPS</Data></Cell></Row>")),
       err::kXmlInvalidData, 11},
      {"an unknown data type",
       Spreadsheet(pair + Sheet("T", "<Row><Cell><Data ss:Type=\"Blob\">1</Data></Cell></Row>")),
       err::kXmlInvalidAttribute, 11},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(Refused(c.text), c.code);
    if (c.line != 0) {
      EXPECT_EQ(line, c.line);
    }
  }
  EXPECT_EQ(ErrorText(err::kInvalidExcelDatabase),
            std::string_view("Missing or invalid database specification.\nExcel XML files must "
                             "contain worksheets organized in the structure required by Kelpdex."
                             "\nPlease refer to the \"Excel XML files\" help topic."));

  // A file cut anywhere fails with one of the XML codes and a line, never half a document.
  Workbook source;
  testing::BuildSampleWorkbook(source);
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ExportExcelXml(source, dir.Path("whole.xml"), error));
  const std::string whole = ReadFileBytes(dir.Path("whole.xml"));
  for (size_t cut : {whole.size() / 7, whole.size() / 2, whole.size() - 3}) {
    SCOPED_TRACE(cut);
    EXPECT_TRUE(IsXmlLineError(Refused(whole.substr(0, cut))));
    EXPECT_GT(line, 1);
  }
}

TEST_F(ExcelXmlTest, ReaderTakesGapsDatesErrorsFormulasAndSkipsUnknownOptions) {
  const std::string data =
      "<Row><Cell><Data ss:Type=\"String\">a</Data></Cell>"
      "<Cell ss:Index=\"3\" ss:StyleID=\"s1\"><Data ss:Type=\"DateTime\">2006-01-31T13:10:55"
      "</Data></Cell></Row>\n"
      "<Row ss:Index=\"4\" ss:Height=\"30\"><Cell ss:Formula=\"=Name&amp;1\"><Data "
      "ss:Type=\"Error\">#n/a!</Data></Cell><Cell ss:Formula=\"={1,2}\" ss:ArrayRange=\"RC:RC[1]\">"
      "<Data ss:Type=\"Number\">1</Data></Cell></Row>\n";
  const std::string options =
      "<WorksheetOptions xmlns=\"urn:schemas-microsoft-com:office:excel\">"
      "<Unknown a=\"1\"><Deeper>text <b>bold</b></Deeper></Unknown>"
      "<PageSetup><Layout x:Orientation=\"Landscape\" x:CenterVertical=\"1\"/><Header "
      "x:Data=\"Head\"/></PageSetup>"
      "<Print><Scale>80</Scale><ValidPrinterInfo/></Print><DoNotDisplayGridlines/>"
      "<Selected/></WorksheetOptions>";
  ASSERT_TRUE(Import(Spreadsheet(Catalogue("T") + Sheet("T", data, options))))
      << int(book.errorCode) << " line " << line;
  Worksheet& t = *book.FindTable("T");
  EXPECT_EQ(book.currentSheet, &t);
  EXPECT_EQ(CellAt(book, 0, 0), "a");
  EXPECT_EQ(CellAt(book, 0, 2), "2006-01-31T13:10:55");  // a date stays its text
  EXPECT_EQ(CellAt(book, 0, 1), "");
  EXPECT_NE(t.formats.StyleAt(0, 2), 0);
  EXPECT_EQ(t.formats.StyleAt(0, 0), 0);
  EXPECT_EQ(t.formats.rowWords().Value(3) >> 1, 40);  // 30 points
  const CellRecord* formula = t.cells.GetCell(3, 0);
  ASSERT_NE(formula, nullptr);
  ASSERT_TRUE(cell::IsFormula(formula));
  EXPECT_EQ(cell::FormulaText(formula), "=Name&1");
  EXPECT_EQ(cell::ErrorNibble(formula), 0x40);
  const CellRecord* array = t.cells.GetCell(3, 1);
  ASSERT_NE(array, nullptr);
  EXPECT_EQ(cell::ArrayColumns(array), 2);
  EXPECT_EQ(cell::ArrayRows(array), 1u);
  EXPECT_EQ(t.pageSettings[page_settings::kOrientationAt], 2);
  EXPECT_EQ(t.pageSettings[page_settings::kVerticalAlignmentAt], 1);
  EXPECT_EQ(t.pageSettings[page_settings::kHorizontalAlignmentAt], 0);
  EXPECT_STREQ(reinterpret_cast<const char*>(t.pageSettings.data() + page_settings::kHeaderTextAt),
               "Head");
  EXPECT_EQ(t.sheetSettings[sheet_settings::kShowGridAt], 0);
}

TEST_F(ExcelXmlTest, WorksheetsAsTablesNameFieldsFromTheFirstRow) {
  const std::string first =
      "<Row><Cell><Data ss:Type=\"String\">Name </Data></Cell>"
      "<Cell><Data ss:Type=\"String\">name</Data></Cell>"
      "<Cell><Data ss:Type=\"Number\">7</Data></Cell><Cell ss:Index=\"5\"><Data "
      "ss:Type=\"String\">Note</Data></Cell></Row>\n"
      "<Row><Cell><Data ss:Type=\"String\">ann</Data></Cell>"
      "<Cell><Data ss:Type=\"Number\">1.5</Data></Cell>"
      "<Cell><Data ss:Type=\"String\">x</Data></Cell></Row>\n"
      "<Row ss:Index=\"4\"><Cell ss:Index=\"2\" ss:Formula=\"=1+1\"><Data "
      "ss:Type=\"Number\">2</Data></Cell></Row>\n";
  // Without catalogues the documented import refuses; as tables, each sheet is one.
  const std::string file =
      Spreadsheet(Sheet("People", first) + Sheet("system", "<Row/>") +
                  Sheet("People",
                        "<Row><Cell><Data ss:Type=\"String\">Item</Data></Cell></Row><Row><Cell>"
                        "<Data ss:Type=\"Number\">4</Data></Cell></Row>"));
  EXPECT_EQ(Refused(file), err::kInvalidExcelDatabase);
  ASSERT_TRUE(Import(file, ExcelXmlMode::kWorksheetsAsTables)) << int(book.errorCode);
  EXPECT_EQ(book.TableCount(), 3u);
  EXPECT_NE(book.FindTable("Table"), nullptr);
  EXPECT_NE(book.FindTable("People_2"), nullptr);
  ASSERT_EQ(book.currentSheet, book.FindTable("People"));
  ASSERT_EQ(testing::FieldCountOf(book), 5);
  EXPECT_EQ(FieldAt(book, 0).name, "Name");
  EXPECT_EQ(FieldAt(book, 1).name, "name_2");
  EXPECT_EQ(FieldAt(book, 2).name, "field3");  // a name must begin with a letter
  EXPECT_EQ(FieldAt(book, 3).name, "field4");
  EXPECT_EQ(FieldAt(book, 4).name, "Note");
  EXPECT_EQ(FieldAt(book, 0).type, FieldType::kText);
  EXPECT_EQ(FieldAt(book, 1).type, FieldType::kNumber);
  EXPECT_EQ(FieldAt(book, 2).type, FieldType::kText);
  EXPECT_EQ(CellAt(book, 0, 0), "ann");
  EXPECT_EQ(CellAt(book, 0, 1), "#1.5");
  EXPECT_EQ(CellAt(book, 2, 1), "#2");  // a formula leaves its value
  EXPECT_EQ(book.records.count(), 3u);
  // Each sheet's fields went into its own table.
  book.currentSheet = book.FindTable("People_2");
  ASSERT_TRUE(RefreshCurrentTable(book));
  ASSERT_EQ(testing::FieldCountOf(book), 1);
  EXPECT_EQ(FieldAt(book, 0).name, "Item");
  EXPECT_EQ(FieldAt(book, 0).type, FieldType::kNumber);
  EXPECT_EQ(CellAt(book, 0, 0), "#4");
}

TEST_F(ExcelXmlTest, SniffTellsSpreadsheetsFromNativeDocumentsAndFailedExportKeepsTheFile) {
  Workbook source;
  testing::BuildSampleWorkbook(source);
  ErrorCode error = err::kNone;
  ASSERT_TRUE(ExportExcelXml(source, dir.Path("excel.xml"), error));
  ASSERT_TRUE(WriteDocumentFile(dir.Path("native.xml"), source, NativeFormat::kXml, error));
  EXPECT_EQ(SniffXmlRoot(dir.Path("excel.xml")), XmlRoot::kSpreadsheet);
  EXPECT_EQ(SniffXmlRoot(dir.Path("native.xml")), XmlRoot::kNative);
  EXPECT_EQ(SniffXmlRoot(dir.Write("pi.xml", Spreadsheet(""))), XmlRoot::kSpreadsheet);
  // A prefixed root, as some writers put it, with its namespace on it.
  EXPECT_EQ(SniffXmlRoot(dir.Write("ss.xml",
                                   "<?xml version=\"1.0\"?>\n<!-- made by hand -->\n"
                                   "<ss:Workbook xmlns:ss=\"urn:schemas-microsoft-com:"
                                   "office:spreadsheet\"/>")),
            XmlRoot::kSpreadsheet);
  EXPECT_EQ(SniffXmlRoot(dir.Write("other.xml", "<?xml version=\"1.0\"?><Workbooks/>")),
            XmlRoot::kOther);
  EXPECT_EQ(SniffXmlRoot(dir.Write("text.xml", "a,b\n")), XmlRoot::kOther);
  EXPECT_EQ(SniffXmlRoot(dir.Path("missing.xml")), XmlRoot::kOther);

  // A value too long for the form fails the export with 94, and the earlier file stays.
  uint8_t record[8192];
  cell::EncodeText(record, 0, 0, std::string(3000, '"'));
  ASSERT_TRUE(source.FindTable("People")->cells.PutCell(record));
  const std::string before = ReadFileBytes(dir.Path("excel.xml"));
  EXPECT_FALSE(ExportExcelXml(source, dir.Path("excel.xml"), error));
  EXPECT_EQ(error, err::kXmlInvalidData);
  EXPECT_EQ(ReadFileBytes(dir.Path("excel.xml")), before);
}

}  // namespace
}  // namespace kelpdex
