// Writing an Excel 2003 XML file: the document properties and workbook settings, the styles, then
// every catalogue as "sys_<table>" and every table under its own name, each a Table of rows and
// cells followed by its WorksheetOptions.
#include <charconv>
#include <cstring>
#include <string>
#include <vector>

#include "core/progress.h"
#include "exchange/excel_xml.h"
#include "exchange/excel_xml_parts.h"
#include "format/generic_date.h"
#include "persist/document_file.h"
#include "persist/native_xml.h"
#include "platform/os.h"
#include "store/bytes.h"
#include "store/cell_error.h"

namespace kelpdex {

namespace {

using namespace excel_xml;

// One sheet as the file names it.
struct SheetEntry {
  const Worksheet* sheet;
  std::string name;
};

// Catalogues first, each as "sys_%s", then the tables in the order of their catalogues. Other
// sheets and folders have no place in the form.
std::vector<SheetEntry> SheetsToWrite(const Workbook& book) {
  std::vector<SheetEntry> catalogues, tables;
  const WorkbookNode* system = book.FindNode("\\system");
  if (system == nullptr || !system->IsFolder()) return {};
  for (const WorkbookNode* n = system->next; n != nullptr && n->level > system->level;
       n = n->next) {
    if (!n->IsWorksheet() || n->level != system->level + 1) continue;
    const Worksheet* data = book.FindTable(n->Name());
    if (data == nullptr) continue;
    catalogues.push_back({static_cast<const Worksheet*>(n), "sys_" + std::string(n->Name())});
    tables.push_back({data, std::string(n->Name())});
  }
  catalogues.insert(catalogues.end(), tables.begin(), tables.end());
  return catalogues;
}

class ExcelWriter {
 public:
  ExcelWriter(FileStream& stream, const Workbook& book) : w_(stream), book_(book) {}

  bool Write();
  bool cancelled() const { return cancelled_; }

 private:
  void WriteProperties(size_t activeSheet);
  void WriteSheet(const SheetEntry& entry, bool selected);
  void WriteColumns(const FormatStore& formats);
  void WriteRows(const Worksheet& sheet);
  void WriteOptions(const Worksheet& sheet, bool selected);
  // Appends one cell's element to the pending text; false when a value is too long for the form.
  bool AppendCell(const CellRecord* r, uint16_t styleId, bool gap);
  void AppendRowStart(uint32_t row, uint16_t word, bool gap, bool empty);
  void Flush(bool force);
  void PutNumber(uint64_t v) {
    char digits[24];
    auto r = std::to_chars(digits, digits + sizeof digits, v);
    out_.append(digits, static_cast<size_t>(r.ptr - digits));
  }

  XmlWriter w_;
  const Workbook& book_;
  std::string out_;  // escaped text in the code page, written in large pieces
  bool cancelled_ = false;
};

bool ExcelWriter::Write() {
  std::vector<SheetEntry> sheets = SheetsToWrite(book_);
  size_t active = 0;
  for (size_t i = 0; i < sheets.size(); ++i) {
    if (sheets[i].sheet == book_.currentSheet) active = i;
  }
  w_.Prolog();
  XmlAttributes ns;
  ns.Text("xmlns", kSpreadsheetNs)
      .Text("xmlns:o", kOfficeNs)
      .Text("xmlns:x", kExcelNs)
      .Text("xmlns:ss", kSpreadsheetNs);
  w_.Tag("Workbook", ns, TagMode::kOpen, 0, 1);
  WriteProperties(active);
  WriteStyles(w_, book_.styles);
  for (size_t i = 0; i < sheets.size() && w_.ok(); ++i) WriteSheet(sheets[i], i == active);
  w_.Tag("Workbook", TagMode::kClose, 0, 1);
  return w_.ok();
}

void ExcelWriter::WriteProperties(size_t activeSheet) {
  std::string user = platform::UserName().substr(0, 127);
  std::string now = FormatGenericDate(platform::GetLocalTime()) + "Z";
  XmlAttributes office;
  office.Text("xmlns", kOfficeNs);
  w_.Tag("DocumentProperties", office, TagMode::kOpen, 1, 1);
  w_.TextElement("Author", user, 2, 1);
  w_.TextElement("LastAuthor", user, 2, 1);
  w_.TextElement("Created", now, 2, 1);
  w_.TextElement("LastSaved", now, 2, 1);
  w_.TextElement("Company", "", 2, 1);
  w_.TextElement("Version", "10.2625", 2, 1);
  w_.Tag("DocumentProperties", TagMode::kClose, 1, 1);
  // These two carry the namespace under the attribute name "xmls", as files of this kind always
  // have; readers that check namespaces take them for unknown elements and pass over them.
  XmlAttributes officeSettings;
  officeSettings.Text("xmls", kOfficeNs);
  w_.Tag("OfficeDocumentSettings", officeSettings, TagMode::kOpen, 1, 1);
  w_.Tag("DownloadComponents", TagMode::kEmpty, 2, 1);
  XmlAttributes location;
  location.Text("HRef", "file:///");
  w_.Tag("LocationOfComponents", location, TagMode::kEmpty, 2, 1);
  w_.Tag("OfficeDocumentSettings", TagMode::kClose, 1, 1);
  XmlAttributes excelSettings;
  excelSettings.Text("xmls", kExcelNs);
  w_.Tag("ExcelWorkbook", excelSettings, TagMode::kOpen, 1, 1);
  w_.TextElement("WindowHeight", "12000", 2, 1);
  w_.TextElement("WindowWidth", "16000", 2, 1);
  w_.TextElement("WindowTopX", "0", 2, 1);
  w_.TextElement("WindowTopY", "0", 2, 1);
  w_.TextElement("ActiveSheet", std::to_string(activeSheet), 2, 1);
  w_.TextElement("ProtectStructure", "False", 2, 1);
  w_.TextElement("ProtectWindows", "False", 2, 1);
  w_.Tag("ExcelWorkbook", TagMode::kClose, 1, 1);
}

void ExcelWriter::WriteSheet(const SheetEntry& entry, bool selected) {
  const Worksheet& sheet = *entry.sheet;
  XmlAttributes name;
  name.Text("ss:Name", entry.name);
  w_.Tag("Worksheet", name, TagMode::kOpen, 1, 1);
  uint32_t rows = 0, columns = 0;
  if (sheet.cells.head() != nullptr) {
    uint16_t minColumn, maxColumn;
    uint32_t minRow, maxRow;
    sheet.cells.LastUsed(&minColumn, &maxColumn, &minRow, &maxRow);
    rows = maxRow + 1;
    columns = maxColumn + 1u;
  }
  for (uint16_t c = 0; c < kColumnLimit; ++c) {
    const ColumnFormat& f = sheet.formats.Column(c);
    if ((f.Width() != 0 || f.StyleId() != 0) && c + 1u > columns) columns = c + 1u;
  }
  const RowWords& words = sheet.formats.rowWords();
  for (uint32_t r = words.rowCount(); r > rows; --r) {
    if ((words.Value(r - 1) & 0x1FFF) != 0) {
      rows = r;
      break;
    }
  }
  // Other readers size the sheet from these; FullColumns and FullRows say that no rows or columns
  // of a larger range were left out.
  XmlAttributes table;
  table.Int("ss:ExpandedColumnCount", columns > 0 ? columns : 1)
      .Int("ss:ExpandedRowCount", rows > 0 ? rows : 1)
      .Text("x:FullColumns", "1")
      .Text("x:FullRows", "1");
  w_.Tag("Table", table, TagMode::kOpen, 2, 1);
  WriteColumns(sheet.formats);
  WriteRows(sheet);
  w_.Tag("Table", TagMode::kClose, 2, 1);
  WriteOptions(sheet, selected);
  w_.Tag("Worksheet", TagMode::kClose, 1, 1);
}

void ExcelWriter::WriteColumns(const FormatStore& formats) {
  int previous = -1;
  for (uint16_t c = 0; c < kColumnLimit && w_.ok(); ++c) {
    const ColumnFormat& f = formats.Column(c);
    if (f.Width() == 0 && f.StyleId() == 0) continue;
    XmlAttributes a;
    if (c != previous + 1) a.Int("ss:Index", c + 1);
    previous = c;
    if (f.StyleId() != 0) a.Text("ss:StyleID", "s" + std::to_string(f.StyleId()));
    if (f.Width() != 0) {
      if (f.FixedWidth()) a.Text("ss:AutoFitWidth", "0");
      a.Real("ss:Width", PixelsToPoints(f.Width()));
    }
    w_.Tag("Column", a, TagMode::kEmpty, 3, 1);
  }
}

void ExcelWriter::AppendRowStart(uint32_t row, uint16_t word, bool gap, bool empty) {
  out_ += "\t\t\t<Row";
  if (gap) {
    out_ += " ss:Index=\"";
    PutNumber(row + 1);
    out_ += '"';
  }
  uint16_t height = (word >> 1) & 0xFFF;
  if (height != 0) {
    if (word & RowWords::kFixedHeight) out_ += " ss:AutoFitHeight=\"0\"";
    out_ += " ss:Height=\"";
    char number[kXmlNumberMax];
    out_.append(number, XmlNumberText(PixelsToPoints(height), number));
    out_ += '"';
  }
  out_ += empty ? "/>\r\n" : ">\r\n";
}

bool ExcelWriter::AppendCell(const CellRecord* r, uint16_t styleId, bool gap) {
  out_ += "\t\t\t\t<Cell";
  if (gap) {
    out_ += " ss:Index=\"";
    PutNumber(cell::Column(r) + 1u);
    out_ += '"';
  }
  if (styleId != kMaxStyles) {
    if (styleId == 0) {
      out_ += " ss:StyleID=\"Default\"";
    } else {
      out_ += " ss:StyleID=\"s";
      PutNumber(styleId);
      out_ += '"';
    }
  }
  bool fits = true;
  if (cell::IsFormula(r)) {
    // Formulas name fields, never cells, so the text needs no translation to R1C1; only an
    // array's extent is relative to its cell.
    std::string_view formula = cell::FormulaText(r);
    out_ += " ss:Formula=\"";
    if (formula.empty() || formula[0] != '=') out_ += '=';
    fits = EscapeXml(formula, out_);
    out_ += '"';
    if (cell::FormulaFlags(r) & cell::kArrayHead) {
      out_ += " ss:ArrayRange=\"RC:R[";
      PutNumber(cell::ArrayRows(r) - 1u);
      out_ += "]C[";
      PutNumber(cell::ArrayColumns(r) - 1u);
      out_ += "]\"";
    }
  }
  char number[kXmlNumberMax];
  auto data = [&](const char* type, std::string_view value, bool escape) {
    out_ += "><Data ss:Type=\"";
    out_ += type;
    out_ += "\">";
    if (escape) {
      fits = EscapeXml(value, out_) && fits;
    } else {
      out_ += value;
    }
    out_ += "</Data></Cell>\r\n";
  };
  const uint8_t error = cell::ErrorNibble(r);
  if (error != 0) {
    data("Error", ErrorLiteral(error), false);
  } else if (cell::IsText(r)) {
    data("String", cell::Text(r), true);
  } else if (cell::IsNumber(r)) {
    data("Number", std::string_view(number, XmlNumberText(cell::Number(r), number)), false);
  } else if (cell::FormulaFlags(r) & cell::kCachedString) {
    data("String", cell::CachedString(r), true);
  } else if (cell::FormulaFlags(r) & cell::kCachedNumber) {
    data("Number", std::string_view(number, XmlNumberText(cell::CachedNumber(r), number)), false);
  } else {
    out_ += "/>\r\n";
  }
  return fits;
}

void ExcelWriter::Flush(bool force) {
  if (!force && out_.size() < (1u << 16)) return;
  w_.RawLine(out_);
  out_.clear();
}

void ExcelWriter::WriteRows(const Worksheet& sheet) {
  const FormatStore& formats = sheet.formats;
  const RowWords& words = formats.rowWords();
  const uint32_t wordRows = words.rowCount();
  RunCursor runCursor;
  StyleRun run;
  bool haveRun = formats.NextRun(runCursor, run);
  CellCursor cursor;
  int64_t openRow = -1;  // the row whose element is open
  int64_t lastRow = -1;  // the last row written
  int32_t lastColumn = -1;
  uint32_t count = 0;
  // Rows that carry only a height of their own, up to (not including) `end`.
  auto heightRows = [&](uint32_t end) {
    for (uint32_t row = static_cast<uint32_t>(lastRow + 1); row < end && row < wordRows; ++row) {
      uint16_t word = words.Value(row);
      if ((word & 0x1FFF) == 0) continue;
      AppendRowStart(row, word, row != lastRow + 1, true);
      lastRow = row;
    }
  };
  while (const CellRecord* r = const_cast<CellStore&>(sheet.cells).NextCell(cursor)) {
    const uint32_t row = cell::Row(r);
    const uint16_t column = cell::Column(r);
    if (row != openRow) {
      if (openRow >= 0) out_ += "\t\t\t</Row>\r\n";
      heightRows(row);
      AppendRowStart(row, row < wordRows ? words.Value(row) : 0, row != lastRow + 1, false);
      openRow = lastRow = row;
      lastColumn = -1;
      Flush(false);
      if (!w_.ok()) return;
      if ((++count & 0x3FFF) == 0 && ProgressCancelled()) {
        cancelled_ = true;
        w_.FailTooLong();
        return;
      }
    }
    // The style runs come in the cells' order, so one walk beside them finds each cell's run.
    while (haveRun && (run.row < row || (run.row == row && run.lastColumn < column))) {
      haveRun = formats.NextRun(runCursor, run);
    }
    const bool inRun = haveRun && run.row == row && run.firstColumn <= column;
    const uint16_t styleId = inRun ? run.styleId : formats.ColumnStyle(column);
    // A cell says its style only where it is not the column's.
    const uint16_t written = styleId != formats.ColumnStyle(column) ? styleId : kMaxStyles;
    if (!AppendCell(r, written, column != lastColumn + 1)) {
      w_.FailTooLong();
      return;
    }
    lastColumn = column;
  }
  if (openRow >= 0) out_ += "\t\t\t</Row>\r\n";
  heightRows(wordRows);
  Flush(true);
}

void ExcelWriter::WriteOptions(const Worksheet& sheet, bool selected) {
  const uint8_t* p = sheet.pageSettings.data();
  const uint8_t* s = sheet.sheetSettings.data();
  using namespace page_settings;
  XmlAttributes ns;
  ns.Text("xmlns", kExcelNs);
  w_.Tag("WorksheetOptions", ns, TagMode::kOpen, 2, 1);
  w_.Tag("PageSetup", TagMode::kOpen, 3, 1);
  XmlAttributes layout;
  if (p[kOrientationAt] == 2) layout.Text("x:Orientation", "Landscape");
  // The page alignment counts in the order of its words, so 1 is "Center" on both axes.
  if (p[kHorizontalAlignmentAt] == 1) layout.Text("x:CenterHorizontal", "1");
  if (p[kVerticalAlignmentAt] == 1) layout.Text("x:CenterVertical", "1");
  layout.Int("x:StartPageNumber", LoadU16(p + kFirstPageNumberAt));
  w_.Tag("Layout", layout, TagMode::kEmpty, 4, 1);
  auto text = [&](uint32_t at) {
    return std::string_view(reinterpret_cast<const char*>(p + at),
                            strnlen(reinterpret_cast<const char*>(p + at), 127));
  };
  XmlAttributes header, footer;
  header.Text("x:Data", text(kHeaderTextAt));
  footer.Text("x:Data", text(kFooterTextAt));
  w_.Tag("Header", header, TagMode::kEmpty, 4, 1);
  w_.Tag("Footer", footer, TagMode::kEmpty, 4, 1);
  // Margins are kept in millimetres; the form gives inches.
  XmlAttributes margins;
  margins.Real("x:Left", LoadF64(p + kLeftMarginAt) / 25.4)
      .Real("x:Top", LoadF64(p + kTopMarginAt) / 25.4)
      .Real("x:Right", LoadF64(p + kRightMarginAt) / 25.4)
      .Real("x:Bottom", LoadF64(p + kBottomMarginAt) / 25.4);
  w_.Tag("PageMargins", margins, TagMode::kEmpty, 4, 1);
  w_.Tag("PageSetup", TagMode::kClose, 3, 1);
  w_.Tag("Print", TagMode::kOpen, 3, 1);
  uint16_t scale = LoadU16(p + kScaleAt);
  w_.TextElement("Scale", std::to_string(scale != 0 ? scale : 100), 4, 1);
  w_.TextElement("NumberofCopies", std::to_string(LoadU16(p + kCopiesAt)), 4, 1);
  w_.Tag("Print", TagMode::kClose, 3, 1);
  if (!s[sheet_settings::kShowGridAt]) w_.Tag("DoNotDisplayGridlines", TagMode::kEmpty, 3, 1);
  if (uint32_t top = LoadU32(s + sheet_settings::kTopLeftRowAt)) {
    w_.TextElement("TopRowVisible", std::to_string(top), 3, 1);
  }
  if (uint32_t left = LoadU32(s + sheet_settings::kTopLeftColumnAt)) {
    w_.TextElement("LeftColumnVisible", std::to_string(left), 3, 1);
  }
  if (selected) w_.Tag("Selected", TagMode::kEmpty, 3, 1);
  w_.Tag("Panes", TagMode::kOpen, 3, 1);
  w_.Tag("Pane", TagMode::kOpen, 4, 1);
  w_.TextElement("Number", "3", 5, 1);
  uint32_t activeRow = LoadU32(s + sheet_settings::kSelectionFirstRowAt);
  uint32_t activeColumn = LoadU32(s + sheet_settings::kSelectionFirstColumnAt);
  w_.TextElement("ActiveRow", std::to_string(activeRow), 5, 1);
  w_.TextElement("ActiveCol", std::to_string(activeColumn), 5, 1);
  w_.TextElement("RangeSelection",
                 "R" + std::to_string(activeRow + 1) + "C" + std::to_string(activeColumn + 1), 5,
                 1);
  w_.Tag("Pane", TagMode::kClose, 4, 1);
  w_.Tag("Panes", TagMode::kClose, 3, 1);
  w_.TextElement("ProtectObjects", "False", 3, 1);
  w_.TextElement("ProtectScenarios", "False", 3, 1);
  w_.Tag("WorksheetOptions", TagMode::kClose, 2, 1);
}

}  // namespace

bool WriteExcelXml(FileStream& stream, const Workbook& book) {
  ExcelWriter writer(stream, book);
  writer.Write();
  return stream.Flush();
}

bool ExportExcelXml(const Workbook& book, const std::string& path, ErrorCode& error) {
  error = err::kNone;
  SafeFileWriter file;
  if (!file.Open(path, false, error)) return false;
  ExcelWriter writer(file.stream(), book);
  bool ok = writer.Write() && file.stream().Flush();
  // A cancel stops the writer through the stream; it is no failure to show.
  if (writer.cancelled()) return false;
  if (!ok) {
    error = file.stream().error();
    return false;
  }
  return file.Commit(error);
}

}  // namespace kelpdex
