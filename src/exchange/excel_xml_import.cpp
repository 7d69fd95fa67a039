// Reading an Excel 2003 XML file in one forward pass: the document properties, the workbook
// settings, the styles, and each worksheet with its columns, rows, cells and options. The sheets
// are gathered apart and put into the tree at the end (excel_xml_tree.cpp).
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>
#include <string>

#include "core/progress.h"
#include "exchange/excel_xml.h"
#include "exchange/excel_xml_parts.h"
#include "persist/native_xml.h"
#include "store/block_chain.h"
#include "store/bytes.h"
#include "store/cell_appender.h"
#include "store/cell_error.h"
#include "text/code_page.h"

namespace kelpdex::excel_xml {

namespace {

constexpr ScanFlags kAnyTag = scan::kOpen | scan::kClose | scan::kAttributes;
// Formula text longer than this does not fit the formula cells of the other forms either.
constexpr size_t kFormulaTextMax = 1024;
// The longest text a cell of the file may hold, as the scanner's buffer takes it.
constexpr size_t kTextCellBytes = XmlScanner::kTextBufferSize;

// A whole decimal number of `text` within min..max.
bool ParseWhole(std::string_view text, int64_t min, int64_t max, int64_t& value) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && ec == std::errc() && end == text.data() + text.size() && value >= min &&
         value <= max;
}

// One R1C1 reference at the front of `text`, relative parts ("R[-1]") taken from the base cell.
bool ParseR1C1(std::string_view& text, int64_t baseRow, int64_t baseColumn, int64_t& row,
               int64_t& column) {
  auto part = [&](char letter, int64_t base, int64_t& out) {
    if (text.empty() || (text[0] != letter && text[0] != letter + 32)) return false;
    text.remove_prefix(1);
    out = base;
    bool bracket = !text.empty() && text[0] == '[';
    if (bracket) text.remove_prefix(1);
    int64_t n = 0;
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (ec == std::errc()) {
      text.remove_prefix(static_cast<size_t>(end - text.data()));
      out = bracket ? base + n : n - 1;
    } else if (bracket) {
      return false;
    }
    if (bracket) {
      if (text.empty() || text[0] != ']') return false;
      text.remove_prefix(1);
    }
    return true;
  };
  return part('R', baseRow, row) && part('C', baseColumn, column);
}

class ExcelReader {
 public:
  ExcelReader(FileStream& stream, SheetList& out) : x_(stream), out_(out) {}

  bool Read();
  int line() const { return x_.errorLine() != 0 ? x_.errorLine() : x_.line(); }
  bool cancelled() const { return cancelled_; }

 private:
  bool Fail(ErrorCode code) { return x_.Fail(code); }
  // The text of the element whose opening tag was just read, through its closing tag.
  bool ElementText(size_t maxLength);
  bool ElementNumber(int64_t min, int64_t max, int64_t& value);
  bool ReadProperties();
  bool ReadExcelWorkbook();
  bool ReadWorksheet();
  bool ReadTable(Worksheet& sheet);
  bool ReadColumn(Worksheet& sheet, int64_t& column);
  bool ReadRow(Worksheet& sheet, int64_t& row, CellAppender& chain);
  bool ReadCell(Worksheet& sheet, uint32_t row, int64_t& column, CellAppender& chain);
  // The common cell forms parsed in place: false when the next element is not one of them, with
  // nothing consumed, so that ReadCell() takes it.
  bool FastCell(uint32_t row, int64_t& column, CellAppender& chain, bool& failed);
  bool ReadOptions(Worksheet& sheet);
  bool ReadPageSetup(Worksheet& sheet);
  // The index an "ss:Index" gives, or the one behind `current`; 94 when it is not ahead.
  bool NextIndex(int64_t current, int64_t limit, int64_t& index);

  XmlScanner x_;
  SheetList& out_;
  std::string formula_;
  std::string text_;
  uint8_t record_[kBlockPayload];
  uint32_t rowsRead_ = 0;
  bool cancelled_ = false;
};

bool ExcelReader::ElementText(size_t maxLength) {
  std::string name(x_.name());
  if (x_.isClose()) {
    text_.clear();
    return true;
  }
  if (!x_.TextBody(maxLength) || !x_.Tag(name, scan::kClose)) return false;
  text_.assign(x_.text());
  return true;
}

bool ExcelReader::ElementNumber(int64_t min, int64_t max, int64_t& value) {
  return ElementText(32) && (ParseWhole(text_, min, max, value) || Fail(err::kXmlInvalidData));
}

bool ExcelReader::NextIndex(int64_t current, int64_t limit, int64_t& index) {
  index = current + 1;
  const char* text = SsAttr(x_, "Index");
  if (text == nullptr) return index < limit || Fail(err::kXmlInvalidAttribute);
  int64_t value = 0;
  if (!ParseWhole(text, 1, limit, value)) return Fail(err::kXmlInvalidAttribute);
  if (value - 1 <= current) return Fail(err::kXmlInvalidData);
  index = value - 1;
  return true;
}

bool ExcelReader::ReadProperties() {
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "DocumentProperties" || Fail(err::kXmlUnexpectedElement);
    std::string name(x_.name());
    if (!ElementText(127)) return false;
    if (name == "LastAuthor") out_.lastAuthor = text_;
    // The file's time has a "Z" behind the generic date form.
    if (name == "LastSaved") out_.lastSaved = text_.substr(0, text_.find('Z'));
  }
}

bool ExcelReader::ReadExcelWorkbook() {
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "ExcelWorkbook" || Fail(err::kXmlUnexpectedElement);
    if (x_.name() == "ActiveSheet") {
      if (!ElementNumber(0, 0x7fffffff, out_.activeSheet)) return false;
    } else if (!x_.isClose() && !SkipElement(x_)) {
      return false;
    }
  }
}

bool ExcelReader::ReadWorksheet() {
  std::string name;
  if (const char* text = SsAttr(x_, "Name")) {
    name = text;
    if (name.size() >= kNodeNameSize) return Fail(err::kXmlInvalidAttribute);
  } else {
    name = "Worksheet" + std::to_string(out_.sheets.size() + 1);
  }
  Worksheet* sheet = new (std::nothrow) Worksheet(name);
  if (sheet == nullptr) return Fail(err::kXmlOutOfMemory);
  out_.sheets.emplace_back(sheet);
  if (x_.isClose()) return true;
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "Worksheet" || Fail(err::kXmlUnexpectedElement);
    bool ok = true;
    if (x_.isClose()) continue;
    if (x_.name() == "Table") {
      ok = ReadTable(*sheet);
    } else if (x_.name() == "WorksheetOptions") {
      ok = ReadOptions(*sheet);
    } else {
      ok = SkipElement(x_);
    }
    if (!ok) return false;
  }
}

bool ExcelReader::ReadTable(Worksheet& sheet) {
  CellAppender chain(sheet.cells);
  int64_t column = -1, row = -1;
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "Table" || Fail(err::kXmlUnexpectedElement);
    bool ok;
    if (x_.name() == "Row") {
      ok = ReadRow(sheet, row, chain);
    } else if (x_.name() == "Column") {
      ok = ReadColumn(sheet, column);
    } else {
      ok = x_.isClose() || SkipElement(x_);
    }
    if (!ok) return false;
  }
}

bool ExcelReader::ReadColumn(Worksheet& sheet, int64_t& column) {
  int64_t index = 0, span = 0;
  if (!NextIndex(column, kColumnLimit, index)) return false;
  if (const char* text = SsAttr(x_, "Span")) {
    if (!ParseWhole(text, 0, kColumnLimit - 1 - index, span)) {
      return Fail(err::kXmlInvalidAttribute);
    }
  }
  uint16_t styleId = 0;
  if (const char* text = SsAttr(x_, "StyleID")) {
    if (!StyleSlot(x_, text, out_.styleIds, styleId)) return false;
  }
  uint16_t width = 0;
  if (const char* text = SsAttr(x_, "Width")) {
    double points = 0;
    auto [end, ec] = std::from_chars(text, text + std::strlen(text), points);
    if (ec != std::errc() || *end != '\0' || !std::isfinite(points)) {
      return Fail(err::kXmlInvalidData);
    }
    width = PointsToPixels(points);
  }
  const char* autoFit = SsAttr(x_, "AutoFitWidth");
  const bool fixed = autoFit != nullptr && std::strcmp(autoFit, "0") == 0 && width != 0;
  for (int64_t c = index; c <= index + span; ++c) {
    ColumnFormat& f = sheet.formats.Column(static_cast<uint16_t>(c));
    f.SetStyleId(styleId);
    if (width != 0) f.SetWidth(width, fixed);
  }
  column = index + span;
  return x_.isClose() || SkipElement(x_);
}

bool ExcelReader::ReadRow(Worksheet& sheet, int64_t& row, CellAppender& chain) {
  int64_t index = 0;
  if (!NextIndex(row, kRowLimit, index)) return false;
  row = index;
  if (const char* text = SsAttr(x_, "Height")) {
    double points = 0;
    auto [end, ec] = std::from_chars(text, text + std::strlen(text), points);
    if (ec != std::errc() || *end != '\0' || !std::isfinite(points)) {
      return Fail(err::kXmlInvalidData);
    }
    const char* autoFit = SsAttr(x_, "AutoFitHeight");
    const bool fixed = autoFit != nullptr && std::strcmp(autoFit, "0") == 0;
    if (!sheet.formats.rowWords().Set(static_cast<uint32_t>(row), PointsToPixels(points), fixed)) {
      return Fail(err::kXmlOutOfMemory);
    }
  }
  if ((++rowsRead_ & 0x3FFF) == 0 && ProgressCancelled()) {
    cancelled_ = true;
    return Fail(err::kXmlInvalidData);
  }
  if (x_.isClose()) return true;
  int64_t column = -1;
  for (;;) {
    bool failed = false;
    if (FastCell(static_cast<uint32_t>(row), column, chain, failed)) {
      if (failed) return false;
      continue;
    }
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "Row" || Fail(err::kXmlUnexpectedElement);
    bool ok;
    if (x_.name() == "Cell") {
      ok = ReadCell(sheet, static_cast<uint32_t>(row), column, chain);
    } else {
      ok = x_.isClose() || SkipElement(x_);
    }
    if (!ok) return false;
  }
}

bool ExcelReader::ReadCell(Worksheet& sheet, uint32_t row, int64_t& column, CellAppender& chain) {
  int64_t index = 0;
  if (!NextIndex(column, kColumnLimit, index)) return false;
  column = index;
  const uint16_t at = static_cast<uint16_t>(index);
  if (const char* text = SsAttr(x_, "MergeAcross")) {
    // A merged cell covers the columns behind it; the next cell stands past them.
    int64_t across = 0;
    if (!ParseWhole(text, 0, kColumnLimit - 1 - index, across)) {
      return Fail(err::kXmlInvalidAttribute);
    }
    column += across;
  }
  bool styled = false;
  uint16_t styleId = 0;
  if (const char* text = SsAttr(x_, "StyleID")) {
    if (!StyleSlot(x_, text, out_.styleIds, styleId)) return false;
    styled = true;
  }
  const char* formula = SsAttr(x_, "Formula");
  bool isFormula = formula != nullptr;
  if (isFormula) {
    formula_.assign(formula);
    if (formula_.size() > kFormulaTextMax) return Fail(err::kXmlInvalidData);
  }
  int64_t arrayRows = 0, arrayColumns = 0;
  if (const char* range = SsAttr(x_, "ArrayRange")) {
    std::string_view text(range);
    int64_t r1, c1, r2, c2;
    if (!ParseR1C1(text, row, at, r1, c1)) return Fail(err::kXmlInvalidAttribute);
    r2 = r1;
    c2 = c1;
    if (!text.empty()) {
      if (text[0] != ':') return Fail(err::kXmlInvalidAttribute);
      text.remove_prefix(1);
      if (!ParseR1C1(text, row, at, r2, c2)) return Fail(err::kXmlInvalidAttribute);
    }
    arrayRows = r2 - r1 + 1;
    arrayColumns = c2 - c1 + 1;
    if (!text.empty() || arrayRows < 1 || arrayRows > kRowLimit || arrayColumns < 1 ||
        arrayColumns > kColumnLimit) {
      return Fail(err::kXmlInvalidAttribute);
    }
  }
  bool haveNumber = false, haveText = false;
  double number = 0;
  uint8_t error = 0;
  if (!x_.isClose()) {
    for (;;) {
      if (!x_.Tag("", kAnyTag)) return false;
      if (!x_.isOpen()) {
        if (x_.name() != "Cell") return Fail(err::kXmlUnexpectedElement);
        break;
      }
      if (x_.name() != "Data") {
        if (!x_.isClose() && !SkipElement(x_)) return false;
        continue;
      }
      const char* typeText = SsAttr(x_, "Type");
      if (typeText == nullptr) return Fail(err::kXmlMissingAttribute);
      std::string type(typeText);
      if (!ElementText(kTextCellBytes)) return false;
      std::string_view body = text_;
      if (type == "Number" || type == "Boolean") {
        while (!body.empty() && body.back() == ' ') body.remove_suffix(1);
        auto [end, ec] = std::from_chars(body.data(), body.data() + body.size(), number);
        if (body.empty() || ec != std::errc() || end != body.data() + body.size() ||
            !std::isfinite(number)) {
          return Fail(err::kXmlInvalidData);
        }
        haveNumber = true;
      } else if (type == "String" || type == "DateTime") {
        // Dates stay the text they are: the program keeps them as generic date strings.
        haveText = true;
      } else if (type == "Error") {
        for (uint8_t code = 0x10; code <= 0xC0; code = static_cast<uint8_t>(code + 0x10)) {
          if (text::EqualNoCase(body, ErrorLiteral(code))) error = code;
        }
        if (error == 0) return Fail(err::kXmlInvalidData);
      } else {
        return Fail(err::kXmlInvalidAttribute);
      }
    }
  }
  if (styled && styleId != sheet.formats.ColumnStyle(at) &&
      !sheet.formats.ApplyStyleRun(StyleRun{at, at, row, styleId})) {
    return Fail(err::kXmlOutOfMemory);
  }
  if (isFormula) {
    if (cell::FormulaSize(formula_.size(), haveText, text_.size()) > kBlockPayload) {
      return Fail(err::kXmlInvalidData);
    }
    if (haveText) {
      cell::EncodeFormulaWithString(record_, row, at, formula_, text_, error);
    } else {
      cell::EncodeFormula(record_, row, at, formula_, error);
      if (haveNumber) cell::SetCachedNumber(record_, number);
    }
    if (arrayRows > 0) {
      cell::SetArray(record_, static_cast<uint16_t>(arrayColumns),
                     static_cast<uint32_t>(arrayRows));
    }
  } else if (haveText) {
    cell::EncodeText(record_, row, at, text_, error);
  } else if (haveNumber || error != 0) {
    cell::EncodeNumber(record_, row, at, number, error);
  } else {
    return true;
  }
  return chain.Append(record_) || Fail(err::kXmlOutOfMemory);
}

// A value the general path would take as it stands: no markup, control bytes or bytes beyond
// ASCII, no leading blank and no two blanks in a row.
bool PlainValue(const uint8_t* p, size_t size) {
  if (size > 0 && p[0] == ' ') return false;
  for (size_t i = 0; i < size; ++i) {
    const uint8_t c = p[i];
    if (c >= 0x80 || c < 0x20 || c == '&' || c == '>' || (c == ' ' && p[i - 1] == ' ')) {
      return false;
    }
  }
  return true;
}

bool SameBytes(const uint8_t* p, std::string_view text) {
  return std::memcmp(p, text.data(), text.size()) == 0;
}

bool ExcelReader::FastCell(uint32_t row, int64_t& column, CellAppender& chain, bool& failed) {
  size_t size = 0;
  const uint8_t* p = x_.PeekRaw(size);
  constexpr std::string_view kCell = "<Cell", kIndex = " ss:Index=\"", kData = "><Data ss:Type=\"",
                             kEnd = "</Data></Cell>";
  if (p == nullptr || size < 64 || !SameBytes(p, kCell)) return false;
  size_t i = kCell.size();
  int64_t index = column + 1;
  if (SameBytes(p + i, kIndex)) {
    i += kIndex.size();
    size_t start = i;
    while (i < size && p[i] >= '0' && p[i] <= '9') ++i;
    if (i == start || i - start > 4 || i >= size || p[i] != '"') return false;
    index = 0;
    for (size_t k = start; k < i; ++k) index = index * 10 + (p[k] - '0');
    --index;
    ++i;
  }
  // Anything out of order or out of range is left to the general path, which reports it.
  if (index <= column || index >= kColumnLimit) return false;
  if (i + kData.size() + 8 > size || !SameBytes(p + i, kData)) return false;
  i += kData.size();
  bool isNumber;
  if (SameBytes(p + i, "Number\">")) {
    isNumber = true;
    i += 8;
  } else if (SameBytes(p + i, "String\">")) {
    isNumber = false;
    i += 8;
  } else {
    return false;
  }
  const size_t bodyStart = i;
  const void* lt = std::memchr(p + i, '<', size - i);
  if (lt == nullptr) return false;
  i = static_cast<size_t>(static_cast<const uint8_t*>(lt) - p);
  const size_t bodySize = i - bodyStart;
  if (i + kEnd.size() > size || !SameBytes(p + i, kEnd) || bodySize > kTextCellBytes ||
      !PlainValue(p + bodyStart, bodySize)) {
    return false;
  }
  const char* body = reinterpret_cast<const char*>(p + bodyStart);
  const uint16_t at = static_cast<uint16_t>(index);
  if (isNumber) {
    double number = 0;
    auto [end, ec] = std::from_chars(body, body + bodySize, number);
    if (bodySize == 0 || ec != std::errc() || end != body + bodySize || !std::isfinite(number)) {
      return false;
    }
    cell::EncodeNumber(record_, row, at, number);
  } else {
    cell::EncodeText(record_, row, at, std::string_view(body, bodySize));
  }
  column = index;
  if (!chain.Append(record_)) {
    Fail(err::kXmlOutOfMemory);
    failed = true;
  }
  x_.Consume(i + kEnd.size());
  return true;
}

bool ExcelReader::ReadPageSetup(Worksheet& sheet) {
  uint8_t* p = sheet.pageSettings.data();
  using namespace page_settings;
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "PageSetup" || Fail(err::kXmlUnexpectedElement);
    std::string_view name = x_.name();
    if (name == "Layout") {
      if (const char* orientation = x_.Attr("Orientation", "x")) {
        p[kOrientationAt] = std::strcmp(orientation, "Landscape") == 0 ? 2 : 1;
      }
      for (const auto& [word, offset] :
           {std::pair<const char*, uint32_t>{"CenterHorizontal", kHorizontalAlignmentAt},
            std::pair<const char*, uint32_t>{"CenterVertical", kVerticalAlignmentAt}}) {
        const char* centre = x_.Attr(word, "x");
        if (centre != nullptr && std::strcmp(centre, "1") == 0) p[offset] = 1;
      }
      if (const char* first = x_.Attr("StartPageNumber", "x")) {
        int64_t value = 0;
        if (!ParseWhole(first, 1, 65534, value)) return Fail(err::kXmlInvalidAttribute);
        StoreU16(p + kFirstPageNumberAt, static_cast<uint16_t>(value));
      }
    } else if (name == "Header" || name == "Footer") {
      if (const char* data = x_.Attr("Data", "x")) {
        const size_t length = std::strlen(data);
        if (length > 127) return Fail(err::kXmlInvalidAttribute);
        uint8_t* field = p + (name == "Header" ? kHeaderTextAt : kFooterTextAt);
        std::memset(field, 0, 128);
        std::memcpy(field, data, length);
      }
    } else if (name == "PageMargins") {
      static const std::pair<const char*, uint32_t> kMargins[] = {{"Left", kLeftMarginAt},
                                                                  {"Top", kTopMarginAt},
                                                                  {"Right", kRightMarginAt},
                                                                  {"Bottom", kBottomMarginAt}};
      for (const auto& [word, offset] : kMargins) {
        const char* text = x_.Attr(word, "x");
        if (text == nullptr) continue;
        double inches = 0;
        auto [end, ec] = std::from_chars(text, text + std::strlen(text), inches);
        if (ec != std::errc() || *end != '\0' || !(inches >= 0 && inches < 1000)) {
          return Fail(err::kXmlInvalidData);
        }
        StoreF64(p + offset, inches * 25.4);
      }
    }
    if (!x_.isClose() && !SkipElement(x_)) return false;
  }
}

bool ExcelReader::ReadOptions(Worksheet& sheet) {
  uint8_t* p = sheet.pageSettings.data();
  uint8_t* s = sheet.sheetSettings.data();
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "WorksheetOptions" || Fail(err::kXmlUnexpectedElement);
    std::string name(x_.name());
    int64_t value = 0;
    bool ok = true;
    if (name == "PageSetup") {
      ok = x_.isClose() || ReadPageSetup(sheet);
    } else if (name == "Print") {
      for (bool open = !x_.isClose(); ok && open;) {
        if (!x_.Tag("", kAnyTag)) return false;
        open = x_.isOpen();  // else </Print>
        if (!open) break;
        if (x_.name() == "Scale") {
          ok = ElementNumber(10, 1000, value);
          StoreU16(p + page_settings::kScaleAt, static_cast<uint16_t>(value));
        } else if (x_.name() == "NumberofCopies") {
          ok = ElementNumber(1, 65534, value);
          StoreU16(p + page_settings::kCopiesAt, static_cast<uint16_t>(value));
        } else {
          ok = x_.isClose() || SkipElement(x_);
        }
      }
      continue;
    } else if (name == "DoNotDisplayGridlines") {
      s[sheet_settings::kShowGridAt] = 0;
      ok = x_.isClose() || SkipElement(x_);
    } else if (name == "TopRowVisible" || name == "LeftColumnVisible") {
      const bool top = name == "TopRowVisible";
      ok = ElementNumber(0, top ? kLastRow : kLastColumn, value);
      StoreU32(s + (top ? sheet_settings::kTopLeftRowAt : sheet_settings::kTopLeftColumnAt),
               static_cast<uint32_t>(value));
    } else if (name == "Selected") {
      out_.selectedSheet = static_cast<int64_t>(out_.sheets.size()) - 1;
      ok = x_.isClose() || SkipElement(x_);
    } else if (name == "Panes") {
      // The pane of the active cell: its row and column become the selection.
      int depth = 1;
      while (ok && depth > 0) {
        if (!x_.Tag("", kAnyTag)) return false;
        if (x_.isOpen() && (x_.name() == "ActiveRow" || x_.name() == "ActiveCol")) {
          const bool isRow = x_.name() == "ActiveRow";
          ok = ElementNumber(0, isRow ? kLastRow : kLastColumn, value);
          uint32_t at = isRow ? sheet_settings::kSelectionFirstRowAt
                              : sheet_settings::kSelectionFirstColumnAt;
          StoreU32(s + at, static_cast<uint32_t>(value));
        } else if (x_.isOpen() && x_.name() != "Pane") {
          ok = x_.isClose() || SkipElement(x_);
        } else if (x_.isOpen() && !x_.isClose()) {
          ++depth;
        } else if (!x_.isOpen()) {
          --depth;
        }
      }
    } else {
      ok = x_.isClose() || SkipElement(x_);
    }
    if (!ok) return false;
  }
}

bool ExcelReader::Read() {
  if (!x_.ok() || !x_.Prolog() || !x_.Tag("Workbook", scan::kOpen | scan::kAttributes)) {
    return false;
  }
  out_.styles.assign(1, StyleTable().Style(0));
  out_.fonts.assign(1, StyleTable().Font(0));
  if (x_.isClose()) return true;
  for (;;) {
    if (!x_.Tag("", kAnyTag)) return false;
    if (!x_.isOpen()) return x_.name() == "Workbook" || Fail(err::kXmlUnexpectedElement);
    std::string name(x_.name());
    bool ok;
    if (name == "Worksheet") {
      ok = ReadWorksheet();
    } else if (x_.isClose()) {
      ok = true;
    } else if (name == "DocumentProperties") {
      ok = ReadProperties();
    } else if (name == "ExcelWorkbook") {
      ok = ReadExcelWorkbook();
    } else if (name == "Styles") {
      ok = ReadStyles(x_, out_.styles, out_.fonts, out_.styleIds);
    } else {
      ok = SkipElement(x_);
    }
    if (!ok) return false;
  }
}

}  // namespace

bool ReadSheets(FileStream& stream, SheetList& out, int& line, bool& cancelled) {
  ExcelReader reader(stream, out);
  bool ok = reader.Read() && stream.ok();
  line = ok ? 0 : reader.line();
  cancelled = reader.cancelled();
  return ok;
}

}  // namespace kelpdex::excel_xml
