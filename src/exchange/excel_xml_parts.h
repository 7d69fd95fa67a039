// The pieces the Excel 2003 XML writer and reader share: the namespaces, the styles section, the
// "ss:" attributes and the units of widths and heights. Private to exchange/.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "persist/xml_scanner.h"
#include "persist/xml_writer.h"
#include "store/style_table.h"
#include "store/workbook.h"

namespace kelpdex::excel_xml {

constexpr std::string_view kSpreadsheetNs = "urn:schemas-microsoft-com:office:spreadsheet";
constexpr std::string_view kOfficeNs = "urn:schemas-microsoft-com:office:office";
constexpr std::string_view kExcelNs = "urn:schemas-microsoft-com:office:excel";

// Style ids run from "s1" to "s512"; "Default" is style 0.
constexpr int kMaxStyleId = 512;

// Widths and heights are kept as screen pixels at 96 dots an inch; the file speaks points.
inline double PixelsToPoints(uint16_t pixels) {
  return pixels * 0.75;
}
inline uint16_t PointsToPixels(double points) {
  double pixels = points / 0.75 + 0.5;
  if (!(pixels > 0)) return 0;
  return pixels > 4095 ? 4095 : static_cast<uint16_t>(pixels);
}

// An attribute under the "ss" prefix, or without a prefix, as other writers put it; null when
// absent.
inline const char* SsAttr(const XmlScanner& x, std::string_view name) {
  const char* value = x.Attr(name, "ss");
  return value != nullptr ? value : x.Attr(name);
}

// Writes the Styles element: "Default" for style 0, then "s%d" for each further style.
void WriteStyles(XmlWriter& w, const StyleTable& table);

// What a file's style ids stand for: the slot of the style table each id was read into. Ids of
// the form "s%d" are numbers; other spreadsheets also name styles ("ce1", "Heading"), and those
// are looked up by their text.
struct StyleIds {
  std::array<int16_t, kMaxStyleId + 1> slot;  // -1 for an id not defined
  std::unordered_map<std::string, uint16_t> named;
  StyleIds() { slot.fill(-1); }
};

// Reads the Styles element, its opening tag just read. The records go to `styles` (slot 0 the
// default) and `fonts` (slot 0 the default font).
bool ReadStyles(XmlScanner& x, std::vector<StyleRecord>& styles, std::vector<FontRecord>& fonts,
                StyleIds& ids);

// The slot of a "ss:StyleID" value; 92 for an "s%d" outside "s1".."s512", or an id no style had.
bool StyleSlot(XmlScanner& x, const char* value, const StyleIds& ids, uint16_t& slot);

// What one pass over a file gathers: the sheets in file order, not yet in a tree, and what the
// tree needs to know about them.
struct SheetList {
  std::vector<std::unique_ptr<Worksheet>> sheets;
  int64_t activeSheet = -1;    // ExcelWorkbook's ActiveSheet
  int64_t selectedSheet = -1;  // the first sheet whose options say Selected
  std::string lastAuthor;
  std::string lastSaved;
  std::vector<StyleRecord> styles;
  std::vector<FontRecord> fonts;
  StyleIds styleIds;
};

// Reads the whole file into `out`. False with the stream's error, `line` the line it was found
// on; `cancelled` when the progress sink stopped the read.
bool ReadSheets(FileStream& stream, SheetList& out, int& line, bool& cancelled);

// Skips the rest of an element whose opening tag was just read, children and text included.
bool SkipElement(XmlScanner& x);

}  // namespace kelpdex::excel_xml
