// A sheet's own settings in the native XML document: Formatting (column widths and styles, row
// heights and style runs), GeneralSettings (zoom, grid, the view's position and freeze) and
// PageSettings (printer, print range, headers, page layout).
#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "persist/native_xml.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"

namespace kelpdex::native_xml {

bool ReadFormatting(XmlScanner& x, FormatStore& f) {
  if (!x.Tag("Formatting", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  while (x.Tag("Column", kOptionalOpen)) {
    Address at;
    if (!ReadRc(x, at, Address()) || !at.hasColumn || at.hasRow) {
      return x.Fail(err::kXmlInvalidAttribute);
    }
    int width = 0, styleId = 0, autoHeight = 0;
    bool fixed = false;
    if (!x.IntAttr("Width", width, 0, 4095) || !x.BoolAttr("Fixed", fixed) ||
        !x.IntAttr("StyleID", styleId, 0, 511) ||
        !x.IntAttr("AutoRowHeight", autoHeight, 0, 4095) || !CloseIfOpen(x, "Column")) {
      return false;
    }
    ColumnFormat& column = f.Column(at.column);
    column.SetWidth(static_cast<uint16_t>(width), fixed);
    column.SetStyleId(static_cast<uint16_t>(styleId));
    column.SetAutoRowHeight(static_cast<uint16_t>(autoHeight));
  }
  if (!x.ok()) return false;
  while (x.Tag("Row", kOptionalOpen)) {
    Address at;
    if (!ReadRc(x, at, Address()) || !at.hasRow || at.hasColumn) {
      return x.Fail(err::kXmlInvalidAttribute);
    }
    int height = 0;
    bool fixed = false;
    if (!x.IntAttr("Height", height, 0, 4095) || !x.BoolAttr("Fixed", fixed)) return false;
    if ((height != 0 || fixed) &&
        !f.rowWords().Fill(at.row, 1, static_cast<uint16_t>((height << 1) | (fixed ? 1 : 0)))) {
      return x.Fail(err::kXmlOutOfMemory);
    }
    if (x.isClose()) continue;
    while (x.Tag("Span", kOptionalOpen)) {
      Address first, last;
      if (!ReadRcRange(x, first, last)) return false;
      if (last.column < first.column) return x.Fail(err::kXmlMissingAttribute);
      int styleId = 0;
      if (!x.IntAttr("StyleID", styleId, 0, 511) || !CloseIfOpen(x, "Span")) return false;
      if (!f.ApplyStyleRun(
              StyleRun{first.column, last.column, at.row, static_cast<uint16_t>(styleId)})) {
        return x.Fail(err::kXmlOutOfMemory);
      }
    }
    if (!x.ok() || !x.Tag("Row", scan::kClose)) return false;
  }
  return x.ok() && x.Tag("Formatting", scan::kClose);
}

void WriteFormatting(XmlWriter& w, const FormatStore& f) {
  w.Tag("Formatting", TagMode::kOpen, 2, 1);
  for (uint16_t c = 0; c < kColumnLimit && w.ok(); ++c) {
    const ColumnFormat& col = f.Column(c);
    if (col.words[0] == 0 && col.words[1] == 0 && col.words[2] == 0) continue;
    XmlAttributes a;
    a.Text("rc", "c" + std::to_string(c + 1)).Int("Width", col.Width());
    if (col.FixedWidth()) a.Bool("Fixed", true);
    a.Int("StyleID", col.StyleId()).Int("AutoRowHeight", col.AutoRowHeight());
    w.Tag("Column", a, TagMode::kEmpty, 3, 1);
  }
  // Rows with a height of their own or with style runs, in row order.
  const uint32_t rows = f.rowWords().rowCount();
  auto nextWordRow = [&](uint32_t from) {
    while (from < rows && (f.rowWords().Value(from) & 0x1FFF) == 0) ++from;
    return from;
  };
  RunCursor cursor;
  StyleRun run;
  bool haveRun = f.NextRun(cursor, run);
  uint32_t wordRow = nextWordRow(0);
  while (w.ok()) {
    uint32_t row = std::min(wordRow < rows ? wordRow : kRowLimit, haveRun ? run.row : kRowLimit);
    if (row == kRowLimit) break;
    uint16_t word = f.rowWords().Value(row);
    XmlAttributes a;
    a.Text("rc", "r" + std::to_string(row + 1));
    uint16_t height = (word >> 1) & 0xFFF;
    if (height != 0 || (word & 1)) a.Int("Height", height);
    if (word & 1) a.Bool("Fixed", true);
    bool spans = haveRun && run.row == row;
    w.Tag("Row", a, spans ? TagMode::kOpen : TagMode::kEmpty, 3, 1);
    while (haveRun && run.row == row) {
      XmlAttributes span;
      span.Text("rc", "c" + std::to_string(run.firstColumn + 1) + ":c" +
                          std::to_string(run.lastColumn + 1))
          .Int("StyleID", run.styleId);
      w.Tag("Span", span, TagMode::kEmpty, 4, 1);
      haveRun = f.NextRun(cursor, run);
    }
    if (spans) w.Tag("Row", TagMode::kClose, 3, 1);
    if (wordRow == row) wordRow = nextWordRow(row + 1);
  }
  w.Tag("Formatting", TagMode::kClose, 2, 1);
}

bool ReadGeneralSettings(XmlScanner& x, Worksheet& sheet) {
  if (!x.Tag("GeneralSettings", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  uint8_t* s = sheet.sheetSettings.data();
  using namespace sheet_settings;
  if (!ReadBackground(x, s + kBackgroundAt)) return false;
  if (x.Tag("Table", kOptionalOpen)) {
    if (const char* scale = x.Attr("Scale")) {
      std::string_view t(scale);
      if (!t.empty() && t.back() == '%') t.remove_suffix(1);  // the percent sign is dropped
      uint32_t value = 0;
      if (!ParseNumber(t, value) || !t.empty() || value > 1000) {
        return x.Fail(err::kXmlInvalidAttribute);
      }
      StoreU32(s + kScaleAt, value);
    }
    bool grid = true;
    if (!x.BoolAttr("ShowGrid", grid)) return false;
    s[kShowGridAt] = grid;
    uint32_t colour = 0;
    if (x.Attr("GridColor") != nullptr) {
      if (!x.ColourAttr("GridColor", colour)) return false;
      s[kGridColourSetAt] = 1;
      StoreU32(s + kGridColourAt, colour);
    }
    if (x.Attr("HeadingsColor") != nullptr) {
      if (!x.ColourAttr("HeadingsColor", colour)) return false;
      s[kHeadingsColourSetAt] = 1;
      StoreU32(s + kHeadingsColourAt, colour);
    }
    if (!x.isClose()) {
      Address at;
      if (x.Tag("TopLeft", kOptionalOpen)) {
        if (!ReadRc(x, at, Address()) || !CloseIfOpen(x, "TopLeft")) return false;
        StoreU32(s + kTopLeftRowAt, at.row);
        StoreU32(s + kTopLeftColumnAt, at.column);
      }
      if (x.Tag("Selection", kOptionalOpen)) {
        Address first, last;
        if (!ReadRcRange(x, first, last) || !CloseIfOpen(x, "Selection")) return false;
        StoreU32(s + kSelectionFirstRowAt, first.row);
        StoreU32(s + kSelectionFirstColumnAt, first.column);
        StoreU32(s + kSelectionLastRowAt, last.row);
        StoreU32(s + kSelectionLastColumnAt, last.column);
      }
      if (x.Tag("Freezed", kOptionalOpen)) {
        if (!ReadRc(x, at, Address()) || !CloseIfOpen(x, "Freezed")) return false;
        if (at.hasRow) {
          s[kFreezeFlagsAt] = 1;
          StoreU32(s + kFreezeRowAt, at.row);
        } else {
          s[kFreezeFlagsAt] = 8;
          StoreU32(s + kFreezeColumnAt, at.column);
        }
      }
      if (!x.ok() || !x.Tag("Table", scan::kClose)) return false;
    }
  }
  return x.ok() && x.Tag("GeneralSettings", scan::kClose);
}

void WriteGeneralSettings(XmlWriter& w, const Worksheet& sheet) {
  const uint8_t* s = sheet.sheetSettings.data();
  using namespace sheet_settings;
  w.Tag("GeneralSettings", TagMode::kOpen, 2, 1);
  WriteBackground(w, s + kBackgroundAt, 3);
  XmlAttributes t;
  uint32_t scale = LoadU32(s + kScaleAt);
  if (scale != 100) t.Text("Scale", std::to_string(scale) + "%");
  if (!s[kShowGridAt]) t.Text("ShowGrid", "0");
  if (s[kGridColourSetAt]) t.Colour("GridColor", LoadU32(s + kGridColourAt), HexCase::kUpper);
  if (s[kHeadingsColourSetAt]) {
    t.Colour("HeadingsColor", LoadU32(s + kHeadingsColourAt), HexCase::kUpper);
  }
  w.Tag("Table", t, TagMode::kOpen, 3, 1);
  XmlAttributes topLeft;
  topLeft.Text("rc", CellAddress(LoadU32(s + kTopLeftRowAt),
                                 static_cast<uint16_t>(LoadU32(s + kTopLeftColumnAt))));
  w.Tag("TopLeft", topLeft, TagMode::kEmpty, 4, 1);
  XmlAttributes selection;
  selection.Text("rc", CellAddress(LoadU32(s + kSelectionFirstRowAt),
                                   static_cast<uint16_t>(LoadU32(s + kSelectionFirstColumnAt))) +
                           ":" +
                           CellAddress(LoadU32(s + kSelectionLastRowAt),
                                       static_cast<uint16_t>(LoadU32(s + kSelectionLastColumnAt))));
  w.Tag("Selection", selection, TagMode::kEmpty, 4, 1);
  uint8_t freeze = s[kFreezeFlagsAt];
  if (freeze & 1) {
    XmlAttributes f;
    f.Text("rc", "r" + std::to_string(LoadU32(s + kFreezeRowAt) + 1));
    w.Tag("Freezed", f, TagMode::kEmpty, 4, 1);
  } else if (freeze & 8) {
    XmlAttributes f;
    f.Text("rc", "c" + std::to_string(LoadU32(s + kFreezeColumnAt) + 1));
    w.Tag("Freezed", f, TagMode::kEmpty, 4, 1);
  }
  w.Tag("Table", TagMode::kClose, 3, 1);
  w.Tag("GeneralSettings", TagMode::kClose, 2, 1);
}

bool ReadPageSettings(XmlScanner& x, Worksheet& sheet) {
  if (!x.Tag("PageSettings", scan::kOpen | scan::kOptional)) return x.ok();
  if (x.isClose()) return true;
  uint8_t* p = sheet.pageSettings.data();
  using namespace page_settings;
  auto putText = [&](uint32_t at, std::string_view text) {
    std::memset(p + at, 0, 128);
    std::memcpy(p + at, text.data(), std::min<size_t>(text.size(), 127));
  };
  auto putReal = [&](const char* name, uint32_t at) {
    double v = 0;
    std::memcpy(&v, p + at, 8);
    if (!x.RealAttr(name, v)) return false;
    std::memcpy(p + at, &v, 8);
    return true;
  };
  if (x.Tag("Printer", kOptionalOpen)) {
    if (const char* name = x.Attr("Name")) putText(kPrinterNameAt, name);
    if (!x.isClose()) {
      if (x.Text("SheetSize", 127, scan::kOptional | scan::kAttributes)) {
        putText(kPaperSizeAt, x.text());
        bool landscape = false;
        if (!x.BoolAttr("Landscape", landscape)) return false;
        // Only landscape is written; any other orientation reads back as the default.
        if (landscape) {
          p[kOrientationAt] = 2;
        } else if (p[kOrientationAt] == 2) {
          p[kOrientationAt] = 0;
        }
      }
      if (!x.ok() || !x.Tag("Printer", scan::kClose)) return false;
    }
  }
  if (x.Tag("PrintRange", kOptionalOpen)) {
    if (const char* scale = x.Attr("Scale")) {
      std::string_view t(scale);
      uint32_t value = 0;
      if (t == "FitToSheetSize") {
        value = 0;
      } else {
        if (!t.empty() && t.back() == '%') t.remove_suffix(1);
        if (!ParseNumber(t, value) || !t.empty() || value < 10 || value > 1000) {
          return x.Fail(err::kXmlInvalidAttribute);
        }
      }
      StoreU16(p + kScaleAt, static_cast<uint16_t>(value));
    }
    int first = LoadU16(p + kFirstPageNumberAt);
    if (!x.IntAttr("FirstPageNumber", first, 1, 65534)) return false;
    StoreU16(p + kFirstPageNumberAt, static_cast<uint16_t>(first));
    if (!x.isClose()) {
      if (x.Tag("All", scan::kOpen | scan::kOptional)) {
        p[kPrintRangeAt] = 0;
        if (!CloseIfOpen(x, "All")) return false;
      } else if (x.Tag("Selection", scan::kOpen | scan::kOptional)) {
        p[kPrintRangeAt] = 1;
        if (!CloseIfOpen(x, "Selection")) return false;
      } else if (x.Text("Pages", 127, scan::kOptional)) {
        p[kPrintRangeAt] = 2;
        putText(kPagesAt, x.text());
      }
      if (!x.ok() || !x.Tag("PrintRange", scan::kClose)) return false;
    }
  }
  if (x.Text("ExcludedRows", 127, scan::kOptional)) putText(kExcludedRowsAt, x.text());
  if (x.Text("ExcludedColumns", 127, scan::kOptional)) putText(kExcludedColumnsAt, x.text());
  if (x.Text("Copies", 8, scan::kOptional | scan::kAttributes)) {
    std::string_view t = x.text();
    uint32_t copies = 0;
    if (!ParseNumber(t, copies) || !t.empty() || copies < 1 || copies > 65534) {
      return x.Fail(err::kXmlInvalidData);
    }
    StoreU16(p + kCopiesAt, static_cast<uint16_t>(copies));
    bool collate = false, backToFront = false;
    if (!x.BoolAttr("Collate", collate) || !x.BoolAttr("BackToFrontOrder", backToFront)) {
      return false;
    }
    p[kCollateAt] = collate;
    p[kBackToFrontAt] = backToFront;
  }
  if (!x.ok()) return false;
  if (x.Tag("Headers", kOptionalOpen)) {
    bool first = false;
    if (!x.BoolAttr("OnFirstPage", first)) return false;
    p[kOnFirstPageAt] = first;
    if (!x.isClose()) {
      if (x.Tag("Margins", kOptionalOpen)) {
        if (!putReal("Top", kHeaderMarginAt) || !putReal("Bottom", kFooterMarginAt) ||
            !CloseIfOpen(x, "Margins")) {
          return false;
        }
      }
      if (x.Text("HeaderText", 127, scan::kOptional)) putText(kHeaderTextAt, x.text());
      if (x.Text("FooterText", 127, scan::kOptional)) putText(kFooterTextAt, x.text());
      if (x.Tag("Font", kOptionalOpen)) {
        std::memset(p + kFontAt, 0, kFontSize);
        if (!ReadFontAttributes(x, p + kFontAt) || !CloseIfOpen(x, "Font")) return false;
      }
      if (!x.ok() || !x.Tag("Headers", scan::kClose)) return false;
    }
  }
  if (x.Tag("PageLayout", scan::kOpen | scan::kOptional)) {
    if (!x.isClose()) {
      if (x.Tag("Margins", kOptionalOpen)) {
        if (!putReal("Left", kLeftMarginAt) || !putReal("Top", kTopMarginAt) ||
            !putReal("Right", kRightMarginAt) || !putReal("Bottom", kBottomMarginAt) ||
            !CloseIfOpen(x, "Margins")) {
          return false;
        }
      }
      if (x.Tag("PagesPerSheet", kOptionalOpen)) {
        int columns = LoadU16(p + kPagesPerSheetColumnsAt),
            rows = LoadU16(p + kPagesPerSheetRowsAt);
        if (!x.IntAttr("Columns", columns, 0, 65534) || !x.IntAttr("Rows", rows, 0, 65534) ||
            !CloseIfOpen(x, "PagesPerSheet")) {
          return false;
        }
        StoreU16(p + kPagesPerSheetColumnsAt, static_cast<uint16_t>(columns));
        StoreU16(p + kPagesPerSheetRowsAt, static_cast<uint16_t>(rows));
      }
      if (x.Tag("Alignment", kOptionalOpen)) {
        int h = p[kHorizontalAlignmentAt], v = p[kVerticalAlignmentAt];
        if (!x.IntAttr("HorizontalAlignment", h, 0, 255) ||
            !x.IntAttr("VerticalAlignment", v, 0, 255) || !CloseIfOpen(x, "Alignment")) {
          return false;
        }
        p[kHorizontalAlignmentAt] = static_cast<uint8_t>(h);
        p[kVerticalAlignmentAt] = static_cast<uint8_t>(v);
      }
      if (!x.ok() || !x.Tag("PageLayout", scan::kClose)) return false;
    }
  }
  for (auto [name, at] : {std::pair<const char*, uint32_t>{"RowHeadings", kRowHeadingsAt},
                          std::pair<const char*, uint32_t>{"ColumnHeadings", kColumnHeadingsAt}}) {
    if (x.Tag(name, kOptionalOpen)) {
      bool visible = p[at] != 0;
      if (!x.BoolAttr("Visible", visible) || !CloseIfOpen(x, name)) return false;
      p[at] = visible;
    }
  }
  return x.ok() && x.Tag("PageSettings", scan::kClose);
}

void WritePageSettings(XmlWriter& w, const Worksheet& sheet) {
  const uint8_t* p = sheet.pageSettings.data();
  using namespace page_settings;
  auto text = [&](uint32_t at) { return FieldText(p + at, 127); };
  auto real = [&](uint32_t at) {
    double v;
    std::memcpy(&v, p + at, 8);
    return v;
  };
  w.Tag("PageSettings", TagMode::kOpen, 2, 1);
  XmlAttributes printer;
  printer.Text("Name", text(kPrinterNameAt));
  w.Tag("Printer", printer, TagMode::kOpen, 3, 1);
  XmlAttributes size;
  if (p[kOrientationAt] == 2) size.Bool("Landscape", true);
  w.TextElement("SheetSize", size, text(kPaperSizeAt), 4, 1);
  w.Tag("Printer", TagMode::kClose, 3, 1);

  XmlAttributes range;
  uint16_t scale = LoadU16(p + kScaleAt);
  range.Text("Scale", scale == 0 ? std::string("FitToSheetSize") : std::to_string(scale) + "%")
      .Int("FirstPageNumber", LoadU16(p + kFirstPageNumberAt));
  w.Tag("PrintRange", range, TagMode::kOpen, 3, 1);
  if (p[kPrintRangeAt] == 2) {
    w.TextElement("Pages", text(kPagesAt), 4, 1);
  } else {
    w.Tag(p[kPrintRangeAt] == 1 ? "Selection" : "All", TagMode::kEmpty, 4, 1);
  }
  w.Tag("PrintRange", TagMode::kClose, 3, 1);
  w.TextElement("ExcludedRows", text(kExcludedRowsAt), 3, 1);
  w.TextElement("ExcludedColumns", text(kExcludedColumnsAt), 3, 1);
  XmlAttributes copies;
  copies.Bool("Collate", p[kCollateAt] != 0).Bool("BackToFrontOrder", p[kBackToFrontAt] != 0);
  w.TextElement("Copies", copies, std::to_string(LoadU16(p + kCopiesAt)), 3, 1);

  XmlAttributes headers;
  headers.Bool("OnFirstPage", p[kOnFirstPageAt] != 0);
  w.Tag("Headers", headers, TagMode::kOpen, 3, 1);
  XmlAttributes hm;
  hm.Real("Top", real(kHeaderMarginAt)).Real("Bottom", real(kFooterMarginAt));
  w.Tag("Margins", hm, TagMode::kEmpty, 4, 1);
  w.TextElement("HeaderText", text(kHeaderTextAt), 4, 1);
  w.TextElement("FooterText", text(kFooterTextAt), 4, 1);
  XmlAttributes font;
  WriteFontAttributes(p + kFontAt, font);
  w.Tag("Font", font, TagMode::kEmpty, 4, 1);
  w.Tag("Headers", TagMode::kClose, 3, 1);

  w.Tag("PageLayout", TagMode::kOpen, 3, 1);
  XmlAttributes margins;
  margins.Real("Left", real(kLeftMarginAt))
      .Real("Top", real(kTopMarginAt))
      .Real("Right", real(kRightMarginAt))
      .Real("Bottom", real(kBottomMarginAt));
  w.Tag("Margins", margins, TagMode::kEmpty, 4, 1);
  XmlAttributes pages;
  pages.Int("Columns", LoadU16(p + kPagesPerSheetColumnsAt))
      .Int("Rows", LoadU16(p + kPagesPerSheetRowsAt));
  w.Tag("PagesPerSheet", pages, TagMode::kEmpty, 4, 1);
  XmlAttributes align;
  align.Int("HorizontalAlignment", p[kHorizontalAlignmentAt])
      .Int("VerticalAlignment", p[kVerticalAlignmentAt]);
  w.Tag("Alignment", align, TagMode::kEmpty, 4, 1);
  w.Tag("PageLayout", TagMode::kClose, 3, 1);
  XmlAttributes rh, ch;
  rh.Bool("Visible", p[kRowHeadingsAt] != 0);
  ch.Bool("Visible", p[kColumnHeadingsAt] != 0);
  w.Tag("RowHeadings", rh, TagMode::kEmpty, 3, 1);
  w.Tag("ColumnHeadings", ch, TagMode::kEmpty, 3, 1);
  w.Tag("PageSettings", TagMode::kClose, 2, 1);
}

}  // namespace kelpdex::native_xml
