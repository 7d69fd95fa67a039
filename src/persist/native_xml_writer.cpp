#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

#include "format/number_style.h"
#include "format/number_text.h"
#include "persist/native_xml.h"
#include "persist/xml_charts.h"
#include "persist/xml_writer.h"
#include "store/bytes.h"
#include "store/cell_error.h"

namespace kelpdex {

namespace xml_words {
const char* const kLineStyles[10] = {
    "None",       "Continuous",    "Dot",           "Dash",          "DashDot",
    "DashDotDot", "Continuous1px", "Continuous2px", "Continuous3px", "Double"};
const char* const kPatterns[23] = {"None",           "Solid",
                                   "Gray125",        "Gray75",
                                   "Gray50",         "Gray25",
                                   "Gray0625",       "HorzStripe",
                                   "VertStripe",     "ReverseDiagStripe",
                                   "DiagStripe",     "DiagCross",
                                   "ThickDiagCross", "ThinHorzStripe",
                                   "ThinVertStripe", "ThinReverseDiagStripe",
                                   "ThinDiagStripe", "ThinHorzCross",
                                   "ThinDiagCross",  "VertGradient",
                                   "HorzGradient",   "VertSymGradient",
                                   "HorzSymGradient"};
const char* const kFamilies[6] = {"Any", "Swiss", "Modern", "Roman", "Script", "Decorative"};
const char* const kWeights[4] = {"Normal", "Thin", "Bold", "Heavy"};
const char* const kCharSets[17] = {
    "Default", "Ansi",    "Baltic",   "Chineese", "EastEurope", "GB2312", "Greek",  "Hangul", "Mac",
    "OEM",     "Russian", "ShiftJIS", "Symbol",   "Turkish",    "Hebrew", "Arabic", "Thai"};
}  // namespace xml_words

namespace {

template <size_t N>
const char* Word(const char* const (&words)[N], uint8_t value) {
  return value < N ? words[value] : words[0];
}

std::string_view FieldText(const uint8_t* bytes, size_t size) {
  return std::string_view(reinterpret_cast<const char*>(bytes),
                          strnlen(reinterpret_cast<const char*>(bytes), size));
}

std::string CellAddress(uint32_t row, uint16_t column) {
  return "r" + std::to_string(row + 1) + "c" + std::to_string(column + 1);
}

class DocumentWriter {
 public:
  DocumentWriter(FileStream& stream, const Workbook& book) : w_(stream), book_(book) {}

  bool Write() {
    w_.Prolog();
    w_.Tag("Workbook", TagMode::kOpen, 0, 1);
    WriteLastModification();
    WriteWindow();
    WriteDropDownLists();
    WriteStyles();
    WriteInspectCells();
    for (const WorkbookNode* n = book_.firstNode; n != nullptr && w_.ok(); n = n->next) {
      XmlAttributes a;
      a.Text("Name", n->Name());
      if (n->IsFolder()) {
        a.Bool("Expanded", n->open != 0).Int("TreeLevel", n->level);
        w_.Tag("Folder", a, TagMode::kEmpty, 1, 1);
      } else {
        a.Int("TreeLevel", n->level);
        if (n == book_.currentSheet) a.Bool("Selected", true);
        w_.Tag("Worksheet", a, TagMode::kOpen, 1, 1);
        WriteWorksheet(*static_cast<const Worksheet*>(n));
        w_.Tag("Worksheet", TagMode::kClose, 1, 1);
      }
    }
    w_.Tag("Workbook", TagMode::kClose, 0, 1);
    return w_.ok();
  }

 private:
  void WriteLastModification() {
    if (book_.lastSavedBy.empty() && book_.lastSavedAt.empty()) return;
    w_.Tag("LastModification", TagMode::kOpen, 1, 1);
    w_.TextElement("User", book_.lastSavedBy.substr(0, 127), 2, 1);
    w_.TextElement("Date", book_.lastSavedAt.substr(0, 49), 2, 1);
    w_.Tag("LastModification", TagMode::kClose, 1, 1);
  }

  void WriteWindow() {
    w_.Tag("Window", TagMode::kOpen, 1, 1);
    XmlAttributes tree;
    tree.Int("Visible", book_.treePaneVisible).Int("Width", book_.treePaneWidth);
    w_.Tag("TreePane", tree, TagMode::kEmpty, 2, 1);
    XmlAttributes inspect;
    inspect.Int("Visible", book_.inspectPaneVisible).Int("Height", book_.inspectPaneHeight);
    w_.Tag("InspectPane", inspect, TagMode::kEmpty, 2, 1);
    w_.Tag("Window", TagMode::kClose, 1, 1);
  }

  void WriteDropDownLists() {
    bool any = false;
    for (const DropDownList& list : book_.dropDownLists) any |= list.used;
    if (!any) {
      w_.Tag("DropDownLists", TagMode::kEmpty, 1, 1);
      return;
    }
    w_.Tag("DropDownLists", TagMode::kOpen, 1, 1);
    for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
      const DropDownList& list = book_.dropDownLists[slot];
      if (!list.used) continue;
      XmlAttributes a;
      a.Int("ID", slot + 1);
      w_.Tag("List", a, TagMode::kOpen, 2, 1);
      if (!list.name.empty()) w_.TextElement("Name", list.name.substr(0, 29), 3, 1);
      for (const std::string& item : list.items) w_.TextElement("Item", item, 3, 1);
      w_.Tag("List", TagMode::kClose, 2, 1);
    }
    w_.Tag("DropDownLists", TagMode::kClose, 1, 1);
  }

  // The attributes of a font record, each only where it says something.
  static void FontAttributes(const uint8_t* f, XmlAttributes& a) {
    std::string_view name = FieldText(f + font::kNameAt, 128);
    if (!name.empty()) a.Text("Name", name);
    if (f[font::kFamilyAt]) a.Text("Family", Word(xml_words::kFamilies, f[font::kFamilyAt]));
    if (f[font::kSizeAt]) a.Int("Size", f[font::kSizeAt]);
    if (f[font::kWeightAt]) a.Text("Weight", Word(xml_words::kWeights, f[font::kWeightAt]));
    if (f[font::kItalicAt]) a.Text("Slant", "Italic");
    if (f[font::kUnderlineAt]) a.Bool("Underline", true);
    if (f[font::kStrikeoutAt]) a.Bool("Strikeout", true);
    if (f[font::kCharSetAt]) a.Text("CharSet", Word(xml_words::kCharSets, f[font::kCharSetAt]));
  }

  void WriteNumberFormat(const StyleRecord& record, int indent) {
    NumberStyle s = ReadNumberStyle(record);
    XmlAttributes a;
    // The form's child names: kind 0 shows "General", kind 1 carries the fields as "Default".
    static const char* const kChildren[format_kind::kCount] = {
        "General",  "Default",    "Currency", "Accounting", "Date",       "Time",
        "DateTime", "Percentage", "Fraction", "Scientific", "UserDefined"};
    uint8_t kind = s.kind < format_kind::kCount ? s.kind : 0;
    auto decimals = [&] {
      // A fixed count of decimals is written even when it is 0, which "0" and "0.#" tell apart.
      if (s.fixedDecimals) a.Int("DecimalDigits", s.decimalDigits);
    };
    switch (kind) {
      case format_kind::kGeneral:
        decimals();
        if (s.leadingZeroesSet) a.Int("LeadingZeroes", s.leadingZeroes);
        if (s.groupDigits) a.Bool("GroupDigits", true);
        if (s.negative) a.Text("Negative", NegativeName(s.negative));
        break;
      case format_kind::kCurrency:
        if (s.decimalDigits) a.Int("DecimalDigits", s.decimalDigits);
        if (s.negative) a.Text("Negative", NegativeName(s.negative));
        if (s.symbol[0])
          a.Text("Symbol", FieldText(reinterpret_cast<const uint8_t*>(s.symbol), 16));
        if (s.symbolPosition) a.Text("SymbolPosition", SymbolPositionName(s.symbolPosition));
        break;
      case format_kind::kAccounting:
        if (s.decimalDigits) a.Int("DecimalDigits", s.decimalDigits);
        if (s.symbol[0])
          a.Text("Symbol", FieldText(reinterpret_cast<const uint8_t*>(s.symbol), 16));
        break;
      case format_kind::kDate:
        if (s.index) a.Int("Index", s.index);
        if (s.systemDateOrder) a.Bool("SystemDateOrder", true);
        break;
      case format_kind::kTime:
        if (s.index) a.Int("Index", s.index);
        break;
      case format_kind::kDateTime:
        if (s.index) a.Int("DateIndex", s.index);
        if (s.timeIndex) a.Int("TimeIndex", s.timeIndex);
        if (s.dateAfterTime) a.Bool("DateAfterTime", true);
        if (s.systemDateOrder) a.Bool("SystemDateOrder", true);
        break;
      case format_kind::kPercentage:
        decimals();
        break;
      case format_kind::kFraction:
        if (s.denominator) {
          a.Int("Denominator", s.denominator);
        } else if (s.denominatorDigits) {
          a.Int("DenominatorDigits", s.denominatorDigits);
        }
        break;
      case format_kind::kScientific:
        decimals();
        if (s.exponent) a.Int("Exponent", s.exponent);
        break;
      default:
        break;
    }
    w_.Tag("NumberFormat", TagMode::kOpen, indent, 1);
    if (kind == format_kind::kUserDefined) {
      w_.TextElement("UserDefined",
                     FieldText(reinterpret_cast<const uint8_t*>(s.userFormat), kFormatTextMax),
                     indent + 1, 1);
    } else {
      w_.Tag(kChildren[kind], a, TagMode::kEmpty, indent + 1, 1);
    }
    w_.Tag("NumberFormat", TagMode::kClose, indent, 1);
  }

  void WriteStyle(uint16_t id) {
    const uint8_t* b = book_.styles.Style(id).bytes;
    XmlAttributes head;
    head.Int("ID", id);
    w_.Tag("Style", head, TagMode::kOpen, 2, 1);
    if (b[style::kFontSetAt]) {
      XmlAttributes a;
      a.Int("FontID", b[style::kFontIndexAt]);
      if (b[style::kFontColourSetAt]) {
        a.Colour("Color", LoadU32(b + style::kFontColourAt), HexCase::kLower);
      }
      w_.Tag("FontRef", a, TagMode::kEmpty, 3, 1);
    }
    if (b[style::kFormatKindAt] != 0 || b[style::kUserFormatAt] != 0) {
      WriteNumberFormat(book_.styles.Style(id), 3);
    }
    if (b[style::kFillAt]) {
      XmlAttributes a;
      a.Text("PatternType", Word(xml_words::kPatterns, b[style::kFillAt]));
      if (b[style::kFillColourFlagsAt] & 1) {
        a.Colour("PatternColor", LoadU32(b + style::kFillColourAt), HexCase::kUpper);
      }
      if (b[style::kFillColourFlagsAt] & 2) {
        a.Colour("BackgroundColor", LoadU32(b + style::kFillBackgroundAt), HexCase::kUpper);
      }
      w_.Tag("FillPattern", a, TagMode::kEmpty, 3, 1);
    }
    WriteAlignment(b);
    if (LoadU16(b + style::kDropDownAt)) {
      XmlAttributes a;
      a.Int("ListID", LoadU16(b + style::kDropDownAt));
      if (b[style::kDropDownSortAt]) a.Bool("Sort", true);
      if (b[style::kDropDownAppendAt]) a.Bool("AutoAppend", true);
      if (b[style::kDropDownCompleteAt]) a.Bool("AutoComplete", true);
      w_.Tag("DropDownListRef", a, TagMode::kEmpty, 3, 1);
    }
    if (b[style::kProtectedAt] || b[style::kHiddenAt]) {
      // The writer's names: the reader looks for others, so protection does not come back.
      XmlAttributes a;
      a.Bool("Protected", b[style::kProtectedAt] != 0).Bool("Hidden", b[style::kHiddenAt] != 0);
      w_.Tag("Protection", a, TagMode::kEmpty, 3, 1);
    }
    if (b[style::kBordersAt]) {
      XmlAttributes a;
      a.Text("Style", Word(xml_words::kLineStyles, b[style::kBorderLineAt]));
      if (b[style::kBorderColourSetAt]) {
        a.Colour("Color", LoadU32(b + style::kBorderColourAt), HexCase::kLower);
      }
      // Sides in the form's word order; the mask counts top, bottom, left, right, diagonals.
      static const struct {
        uint8_t bit;
        const char* word;
      } kSides[] = {{4, "Left"},   {8, "Right"},         {1, "Top"},
                    {2, "Bottom"}, {16, "DiagonalLeft"}, {32, "DiagonalRight"}};
      std::string sides;
      for (const auto& side : kSides) {
        if (!(b[style::kBordersAt] & side.bit)) continue;
        if (!sides.empty()) sides += ' ';
        sides += side.word;
      }
      w_.TextElement("Borders", a, sides, 3, 1);
    }
    w_.Tag("Style", TagMode::kClose, 2, 1);
  }

  void WriteAlignment(const uint8_t* b) {
    static const struct {
      uint8_t value;
      const char* word;
    } kVertical[] = {{4, "Top"}, {5, "Center"}, {7, "Bottom"}},
      kHorizontal[] = {{1, "Left"}, {2, "Center"}, {3, "Right"}};
    XmlAttributes a;
    for (const auto& v : kVertical) {
      if (b[style::kVerticalAt] == v.value) a.Text("VerticalAlignment", v.word);
    }
    for (const auto& h : kHorizontal) {
      if (b[style::kHorizontalAt] == h.value) a.Text("HorizontalAlignment", h.word);
    }
    bool rest = b[style::kIndentAt] || b[style::kIndentAt + 1] || b[style::kWrapAt] ||
                b[style::kFitAt] || LoadU16(b + style::kRotationAt);
    if (rest) {
      a.Int("HorizontalIndent", b[style::kIndentAt])
          .Int("VerticalIndent", b[style::kIndentAt + 1])
          .Bool("WrapText", b[style::kWrapAt] != 0)
          .Bool("FitToCell", b[style::kFitAt] != 0)
          .Int("Rotation", static_cast<int16_t>(LoadU16(b + style::kRotationAt)));
    }
    if (!a.str().empty()) w_.Tag("Alignment", a, TagMode::kEmpty, 3, 1);
  }

  void WriteStyles() {
    if (book_.styles.fontCount() <= 1 && book_.styles.styleCount() == 0) {
      w_.Tag("Styles", TagMode::kEmpty, 1, 1);
      return;
    }
    w_.Tag("Styles", TagMode::kOpen, 1, 1);
    for (uint8_t id = 1; id < book_.styles.fontCount(); ++id) {
      XmlAttributes a;
      a.Int("ID", id);
      FontAttributes(book_.styles.Font(id).bytes, a);
      w_.Tag("Font", a, TagMode::kEmpty, 2, 1);
    }
    for (uint16_t id = 0; id < book_.styles.styleCount(); ++id) WriteStyle(id);
    w_.Tag("Styles", TagMode::kClose, 1, 1);
  }

  void WriteInspectCells() {
    if (book_.inspectCells.empty()) return;
    w_.Tag("InspectCells", TagMode::kOpen, 1, 1);
    for (const InspectedCell& c : book_.inspectCells) {
      const uint8_t* b = c.bytes.data();
      XmlAttributes a;
      std::string_view path = FieldText(b + inspected_cell::kPathAt, 256);
      if (!path.empty()) a.Text("Worksheet", path);
      a.Text("rc", CellAddress(LoadU32(b + inspected_cell::kRowAt),
                               static_cast<uint16_t>(LoadU32(b + inspected_cell::kColumnAt))));
      std::string_view name = FieldText(b + inspected_cell::kNameAt, kInspectedCellSize - 268);
      if (!name.empty()) a.Text("Name", name);
      w_.Tag("Cell", a, TagMode::kEmpty, 2, 1);
    }
    w_.Tag("InspectCells", TagMode::kClose, 1, 1);
  }

  void WriteFormatting(const Worksheet& sheet) {
    const FormatStore& f = sheet.formats;
    w_.Tag("Formatting", TagMode::kOpen, 2, 1);
    for (uint16_t c = 0; c < kColumnLimit && w_.ok(); ++c) {
      const ColumnFormat& col = f.Column(c);
      if (col.words[0] == 0 && col.words[1] == 0 && col.words[2] == 0) continue;
      XmlAttributes a;
      a.Text("rc", "c" + std::to_string(c + 1)).Int("Width", col.Width());
      if (col.FixedWidth()) a.Bool("Fixed", true);
      a.Int("StyleID", col.StyleId()).Int("AutoRowHeight", col.AutoRowHeight());
      w_.Tag("Column", a, TagMode::kEmpty, 3, 1);
    }
    // Rows with a height of their own or with style runs, in row order.
    const uint32_t rows = f.rowCount();
    auto nextWordRow = [&](uint32_t from) {
      while (from < rows && (f.RowWordValue(from) & 0x1FFF) == 0) ++from;
      return from;
    };
    RunCursor cursor;
    StyleRun run;
    bool haveRun = f.NextRun(cursor, run);
    uint32_t wordRow = nextWordRow(0);
    while (w_.ok()) {
      uint32_t row = std::min(wordRow < rows ? wordRow : kRowLimit, haveRun ? run.row : kRowLimit);
      if (row == kRowLimit) break;
      uint16_t word = f.RowWordValue(row);
      XmlAttributes a;
      a.Text("rc", "r" + std::to_string(row + 1));
      uint16_t height = (word >> 1) & 0xFFF;
      if (height != 0 || (word & 1)) a.Int("Height", height);
      if (word & 1) a.Bool("Fixed", true);
      bool spans = haveRun && run.row == row;
      w_.Tag("Row", a, spans ? TagMode::kOpen : TagMode::kEmpty, 3, 1);
      while (haveRun && run.row == row) {
        XmlAttributes span;
        span.Text("rc", "c" + std::to_string(run.firstColumn + 1) + ":c" +
                            std::to_string(run.lastColumn + 1))
            .Int("StyleID", run.styleId);
        w_.Tag("Span", span, TagMode::kEmpty, 4, 1);
        haveRun = f.NextRun(cursor, run);
      }
      if (spans) w_.Tag("Row", TagMode::kClose, 3, 1);
      if (wordRow == row) wordRow = nextWordRow(row + 1);
    }
    w_.Tag("Formatting", TagMode::kClose, 2, 1);
  }

  // One line per cell, put together in place: the document's bulk, so no attribute objects.
  bool WriteCellLine(const CellRecord* r, bool sameRow) {
    std::string& line = cellLine_;
    line.assign("\t\t\t<Cell rc=\"");
    char number[32];
    auto put = [&](uint32_t v) {
      auto res = std::to_chars(number, number + sizeof number, v);
      line.append(number, static_cast<size_t>(res.ptr - number));
    };
    if (!sameRow) {
      line += 'r';
      put(cell::Row(r) + 1);
      line += 'c';
    } else {
      line += "rc";
    }
    put(cell::Column(r) + 1u);
    line += '"';
    if (cell::IsAuto(r)) line += " Auto=\"1\"";
    line += '>';
    if (cell::IsFormula(r)) {
      line += "<F";
      if (cell::FormulaFlags(r) & cell::kArrayHead) {
        line += " Width=\"";
        put(cell::ArrayColumns(r));
        line += "\" Height=\"";
        put(cell::ArrayRows(r));
        line += '"';
      }
      line += '>';
      if (!EscapeXml(cell::FormulaText(r), line)) return false;
      line += "</F>";
    }
    auto element = [&](const char* name, std::string_view value) {
      line += '<';
      line += name;
      line += '>';
      bool fits = EscapeXml(value, line);
      line += "</";
      line += name;
      line += '>';
      return fits;
    };
    bool fits = true;
    uint8_t error = cell::ErrorNibble(r);
    if (error != 0) {
      fits = element("Error", ErrorLiteral(error));
    } else if (cell::IsText(r)) {
      fits = element("T", cell::Text(r));
    } else if (cell::IsNumber(r)) {
      fits = element("N", std::string_view(number, NumberToGeneral(cell::Number(r), number)));
    } else if (cell::FormulaFlags(r) & cell::kCachedString) {
      fits = element("T", cell::CachedString(r));
    } else if (cell::FormulaFlags(r) & cell::kCachedNumber) {
      fits = element("N", std::string_view(number, NumberToGeneral(cell::CachedNumber(r), number)));
    }
    if (!fits) return false;
    line += "</Cell>\r\n";
    return w_.RawLine(line);
  }

  void WriteCells(const Worksheet& sheet) {
    w_.Tag("Cells", TagMode::kOpen, 2, 1);
    CellCursor cursor;
    uint32_t lastRow = kRowLimit;
    while (const CellRecord* r = const_cast<CellStore&>(sheet.cells).NextCell(cursor)) {
      if (!w_.ok()) break;
      bool sameRow = cell::Row(r) == lastRow;
      lastRow = cell::Row(r);
      if (!WriteCellLine(r, sameRow)) {
        w_.FailTooLong();
        break;
      }
    }
    w_.Tag("Cells", TagMode::kClose, 2, 1);
  }

  void WriteGeneralSettings(const Worksheet& sheet) {
    const uint8_t* s = sheet.sheetSettings.data();
    using namespace sheet_settings;
    w_.Tag("GeneralSettings", TagMode::kOpen, 2, 1);
    WriteBackground(s + kBackgroundAt, 3);
    XmlAttributes t;
    uint32_t scale = LoadU32(s + kScaleAt);
    if (scale != 100) t.Text("Scale", std::to_string(scale) + "%");
    if (!s[kShowGridAt]) t.Text("ShowGrid", "0");
    if (s[kGridColourSetAt]) t.Colour("GridColor", LoadU32(s + kGridColourAt), HexCase::kUpper);
    if (s[kHeadingsColourSetAt]) {
      t.Colour("HeadingsColor", LoadU32(s + kHeadingsColourAt), HexCase::kUpper);
    }
    w_.Tag("Table", t, TagMode::kOpen, 3, 1);
    XmlAttributes topLeft;
    topLeft.Text("rc", CellAddress(LoadU32(s + kTopLeftRowAt),
                                   static_cast<uint16_t>(LoadU32(s + kTopLeftColumnAt))));
    w_.Tag("TopLeft", topLeft, TagMode::kEmpty, 4, 1);
    XmlAttributes selection;
    selection.Text("rc",
                   CellAddress(LoadU32(s + kSelectionFirstRowAt),
                               static_cast<uint16_t>(LoadU32(s + kSelectionFirstColumnAt))) +
                       ":" +
                       CellAddress(LoadU32(s + kSelectionLastRowAt),
                                   static_cast<uint16_t>(LoadU32(s + kSelectionLastColumnAt))));
    w_.Tag("Selection", selection, TagMode::kEmpty, 4, 1);
    uint8_t freeze = s[kFreezeFlagsAt];
    if (freeze & 1) {
      XmlAttributes f;
      f.Text("rc", "r" + std::to_string(LoadU32(s + kFreezeRowAt) + 1));
      w_.Tag("Freezed", f, TagMode::kEmpty, 4, 1);
    } else if (freeze & 8) {
      XmlAttributes f;
      f.Text("rc", "c" + std::to_string(LoadU32(s + kFreezeColumnAt) + 1));
      w_.Tag("Freezed", f, TagMode::kEmpty, 4, 1);
    }
    w_.Tag("Table", TagMode::kClose, 3, 1);
    w_.Tag("GeneralSettings", TagMode::kClose, 2, 1);
  }

  void WritePageSettings(const Worksheet& sheet) {
    const uint8_t* p = sheet.pageSettings.data();
    using namespace page_settings;
    auto text = [&](uint32_t at) { return FieldText(p + at, 127); };
    auto real = [&](uint32_t at) {
      double v;
      std::memcpy(&v, p + at, 8);
      return v;
    };
    w_.Tag("PageSettings", TagMode::kOpen, 2, 1);
    XmlAttributes printer;
    printer.Text("Name", text(kPrinterNameAt));
    w_.Tag("Printer", printer, TagMode::kOpen, 3, 1);
    XmlAttributes size;
    if (p[kOrientationAt] == 2) size.Bool("Landscape", true);
    w_.TextElement("SheetSize", size, text(kPaperSizeAt), 4, 1);
    w_.Tag("Printer", TagMode::kClose, 3, 1);

    XmlAttributes range;
    uint16_t scale = LoadU16(p + kScaleAt);
    range.Text("Scale", scale == 0 ? std::string("FitToSheetSize") : std::to_string(scale) + "%")
        .Int("FirstPageNumber", LoadU16(p + kFirstPageNumberAt));
    w_.Tag("PrintRange", range, TagMode::kOpen, 3, 1);
    if (p[kPrintRangeAt] == 2) {
      w_.TextElement("Pages", text(kPagesAt), 4, 1);
    } else {
      w_.Tag(p[kPrintRangeAt] == 1 ? "Selection" : "All", TagMode::kEmpty, 4, 1);
    }
    w_.Tag("PrintRange", TagMode::kClose, 3, 1);
    w_.TextElement("ExcludedRows", text(kExcludedRowsAt), 3, 1);
    w_.TextElement("ExcludedColumns", text(kExcludedColumnsAt), 3, 1);
    XmlAttributes copies;
    copies.Bool("Collate", p[kCollateAt] != 0).Bool("BackToFrontOrder", p[kBackToFrontAt] != 0);
    w_.TextElement("Copies", copies, std::to_string(LoadU16(p + kCopiesAt)), 3, 1);

    XmlAttributes headers;
    headers.Bool("OnFirstPage", p[kOnFirstPageAt] != 0);
    w_.Tag("Headers", headers, TagMode::kOpen, 3, 1);
    XmlAttributes hm;
    hm.Real("Top", real(kHeaderMarginAt)).Real("Bottom", real(kFooterMarginAt));
    w_.Tag("Margins", hm, TagMode::kEmpty, 4, 1);
    w_.TextElement("HeaderText", text(kHeaderTextAt), 4, 1);
    w_.TextElement("FooterText", text(kFooterTextAt), 4, 1);
    XmlAttributes font;
    FontAttributes(p + kFontAt, font);
    w_.Tag("Font", font, TagMode::kEmpty, 4, 1);
    w_.Tag("Headers", TagMode::kClose, 3, 1);

    w_.Tag("PageLayout", TagMode::kOpen, 3, 1);
    XmlAttributes margins;
    margins.Real("Left", real(kLeftMarginAt))
        .Real("Top", real(kTopMarginAt))
        .Real("Right", real(kRightMarginAt))
        .Real("Bottom", real(kBottomMarginAt));
    w_.Tag("Margins", margins, TagMode::kEmpty, 4, 1);
    XmlAttributes pages;
    pages.Int("Columns", LoadU16(p + kPagesPerSheetColumnsAt))
        .Int("Rows", LoadU16(p + kPagesPerSheetRowsAt));
    w_.Tag("PagesPerSheet", pages, TagMode::kEmpty, 4, 1);
    XmlAttributes align;
    align.Int("HorizontalAlignment", p[kHorizontalAlignmentAt])
        .Int("VerticalAlignment", p[kVerticalAlignmentAt]);
    w_.Tag("Alignment", align, TagMode::kEmpty, 4, 1);
    w_.Tag("PageLayout", TagMode::kClose, 3, 1);
    XmlAttributes rh, ch;
    rh.Bool("Visible", p[kRowHeadingsAt] != 0);
    ch.Bool("Visible", p[kColumnHeadingsAt] != 0);
    w_.Tag("RowHeadings", rh, TagMode::kEmpty, 3, 1);
    w_.Tag("ColumnHeadings", ch, TagMode::kEmpty, 3, 1);
    w_.Tag("PageSettings", TagMode::kClose, 2, 1);
  }

  static std::string ColourText(uint32_t colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", colour & 0xFF, (colour >> 8) & 0xFF,
                  (colour >> 16) & 0xFF);
    return text;
  }

  void WriteBackground(const uint8_t* b, int indent) {
    using namespace background;
    uint8_t kind = b[kKindAt];
    if (kind == background_kind::kNone || kind > background_kind::kImage) return;
    w_.Tag("Background", TagMode::kOpen, indent, 1);
    if (kind == background_kind::kFill) {
      XmlAttributes a;
      a.Text("PatternType", Word(xml_words::kPatterns, b[kPatternAt]));
      if (b[kColourFlagsAt] & 1)
        a.Colour("PatternColor", LoadU32(b + kPatternColourAt), HexCase::kUpper);
      if (b[kColourFlagsAt] & 2) {
        a.Colour("BackgroundColor", LoadU32(b + kBackgroundColourAt), HexCase::kUpper);
      }
      w_.Tag("FillPattern", a, TagMode::kEmpty, indent + 1, 1);
    } else if (kind == background_kind::kFractal) {
      w_.Tag("Fractal", TagMode::kOpen, indent + 1, 1);
      static const char* const kNames[6] = {"Zr", "Zi", "MinX", "MaxX", "MinY", "MaxY"};
      char number[32];
      for (int k = 0; k < 6; ++k) {
        double v;
        std::memcpy(&v, b + kFractalAt + 8 * k, 8);
        w_.TextElement(kNames[k], std::string_view(number, NumberToGeneral(v, number)), indent + 2,
                       1);
      }
      uint8_t count = std::min<uint8_t>(b[kColourCountAt], kMaxColours);
      for (uint8_t k = 0; k < count; ++k) {
        w_.TextElement("Color", ColourText(LoadU32(b + kColoursAt + 4 * k)), indent + 2, 1);
      }
      w_.Tag("Fractal", TagMode::kClose, indent + 1, 1);
    } else {
      static const char* const kViews[3] = {"Default", "FitToWindowSize", "Wallpaper"};
      XmlAttributes a;
      a.Text("View", Word(kViews, b[kViewAt]));
      w_.TextElement("Image", a, FieldText(b + kImagePathAt, 255), indent + 1, 1);
    }
    w_.Tag("Background", TagMode::kClose, indent, 1);
  }

  void WriteContainer(const ContainerRecord& c, int indent) {
    using namespace container;
    const uint8_t* b = c.bytes.data();
    XmlAttributes head;
    head.Int("ID", LoadU32(b + kIdAt))
        .Int("Columns", LoadU16(b + kColumnsAt))
        .Int("Rows", LoadU16(b + kRowsAt))
        .Int("HorzSpacing", LoadU16(b + kHorzSpacingAt))
        .Int("VertSpacing", LoadU16(b + kVertSpacingAt))
        .Int("Opacity", LoadU16(b + kOpacityAt));
    w_.Tag("Container", head, TagMode::kOpen, indent, 1);
    XmlAttributes place;
    place.Text("rc", CellAddress(LoadU32(b + kPlacementRowAt), LoadU16(b + kPlacementColumnAt)))
        .Int("Left", static_cast<int32_t>(LoadU32(b + kPlacementLeftAt)))
        .Int("Top", static_cast<int32_t>(LoadU32(b + kPlacementTopAt)))
        .Int("Right", static_cast<int32_t>(LoadU32(b + kPlacementRightAt)))
        .Int("Bottom", static_cast<int32_t>(LoadU32(b + kPlacementBottomAt)));
    w_.Tag("Placement", place, TagMode::kEmpty, indent + 1, 1);
    if (b[kBorderStyleAt] || b[kBorderColourSetAt] || LoadU16(b + kBorderWidthAt)) {
      XmlAttributes line;
      line.Text("Style", Word(xml_words::kLineStyles, b[kBorderStyleAt]));
      if (b[kBorderColourSetAt])
        line.Colour("Color", LoadU32(b + kBorderColourAt), HexCase::kLower);
      line.Int("Width", LoadU16(b + kBorderWidthAt));
      w_.Tag("Border", line, TagMode::kEmpty, indent + 1, 1);
    }
    WriteBackground(b + kBackgroundAt, indent + 1);
    std::string_view title = FieldText(b + kTitleTextAt, 127);
    if (b[kTitleFontSetAt] || !title.empty()) {
      w_.Tag("Title", TagMode::kOpen, indent + 1, 1);
      if (b[kTitleFontSetAt]) {
        XmlAttributes font;
        FontAttributes(b + kTitleFontAt, font);
        w_.Tag("Font", font, TagMode::kEmpty, indent + 2, 1);
      }
      w_.TextElement("Text", title, indent + 2, 1);
      w_.Tag("Title", TagMode::kClose, indent + 1, 1);
    }
    uint32_t count = std::min<uint32_t>(b[kObjectCountAt], kMaxObjects);
    if (count == 0) {
      w_.Tag("Objects", TagMode::kEmpty, indent + 1, 1);
    } else {
      w_.Tag("Objects", TagMode::kOpen, indent + 1, 1);
      size_t nextChart = 0;
      for (uint32_t k = 0; k < count && w_.ok(); ++k) {
        uint8_t object = b[kObjectsAt + k];
        if (object != 0) {
          XmlAttributes image;
          image.Int("ID", object);
          w_.Tag("Image", image, TagMode::kEmpty, indent + 2, 1);
        } else if (nextChart < c.charts.size()) {
          WriteChartElement(w_, c.charts[nextChart++], indent + 2);
        }
      }
      w_.Tag("Objects", TagMode::kClose, indent + 1, 1);
    }
    w_.Tag("Container", TagMode::kClose, indent, 1);
  }

  void WriteWorksheet(const Worksheet& sheet) {
    for (const ContainerRecord& c : sheet.containers) WriteContainer(c, 2);
    WriteFormatting(sheet);
    WriteCells(sheet);
    WriteGeneralSettings(sheet);
    WritePageSettings(sheet);
  }

  XmlWriter w_;
  const Workbook& book_;
  std::string cellLine_;
};

}  // namespace

bool WriteXmlDocument(FileStream& stream, const Workbook& book) {
  DocumentWriter writer(stream, book);
  writer.Write();
  return stream.Flush();
}

}  // namespace kelpdex
