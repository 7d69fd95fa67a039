// The containers of a sheet in the native XML document: placement, border, background, title,
// and the images and charts they hold in their cell order (the charts themselves are
// xml_charts.cpp's).
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "persist/native_xml.h"
#include "persist/xml_charts.h"
#include "persist/xml_sections.h"
#include "store/bytes.h"

namespace kelpdex::native_xml {

namespace {

bool ReadLine(XmlScanner& x, uint8_t* style, uint8_t* colourSet, uint8_t* width, uint8_t* colour) {
  if (!ReadWord(x, "Style", xml_words::kLineStyles, *style)) return false;
  uint32_t value = 0;
  if (x.Attr("Color") != nullptr) {
    if (!x.ColourAttr("Color", value)) return false;
    *colourSet = 1;
    StoreU32(colour, value);
  }
  int w = 0;
  if (!x.IntAttr("Width", w, 0, 65535)) return false;
  StoreU16(width, static_cast<uint16_t>(w));
  return true;
}

}  // namespace

bool ReadContainer(XmlScanner& x, Worksheet& sheet, std::vector<bool>& seenIds) {
  using namespace container;
  ContainerRecord c;
  uint8_t* b = c.bytes.data();
  int64_t id = 0;
  int columns = 0, rows = 0, horizontal = 0, vertical = 0, opacity = 0;
  if (!x.IntAttr("ID", id, 0, 0xFFFFFFFFll) || !x.IntAttr("Columns", columns, 0, 65535) ||
      !x.IntAttr("Rows", rows, 0, 65535) || !x.IntAttr("HorzSpacing", horizontal, 0, 65535) ||
      !x.IntAttr("VertSpacing", vertical, 0, 65535) || !x.IntAttr("Opacity", opacity, 0, 65535)) {
    return false;
  }
  // An id already used in this sheet gives way to the lowest free one.
  if (id <= 255) {
    if (seenIds[static_cast<size_t>(id)]) {
      id = 1;
      while (id <= 255 && seenIds[static_cast<size_t>(id)]) ++id;
    }
    if (id <= 255) seenIds[static_cast<size_t>(id)] = true;
  }
  StoreU32(b + kIdAt, static_cast<uint32_t>(id));
  StoreU16(b + kColumnsAt, static_cast<uint16_t>(columns));
  StoreU16(b + kRowsAt, static_cast<uint16_t>(rows));
  StoreU16(b + kHorzSpacingAt, static_cast<uint16_t>(horizontal));
  StoreU16(b + kVertSpacingAt, static_cast<uint16_t>(vertical));
  StoreU16(b + kOpacityAt, static_cast<uint16_t>(opacity));
  if (x.isClose()) {
    sheet.containers.push_back(std::move(c));
    return true;
  }
  if (x.Tag("Placement", kOptionalOpen)) {
    Address at;
    int left = 0, top = 0, right = 0, bottom = 0;
    if (!ReadRc(x, at, Address()) || !x.IntAttr("Left", left, INT32_MIN, INT32_MAX) ||
        !x.IntAttr("Top", top, INT32_MIN, INT32_MAX) ||
        !x.IntAttr("Right", right, INT32_MIN, INT32_MAX) ||
        !x.IntAttr("Bottom", bottom, INT32_MIN, INT32_MAX) || !CloseIfOpen(x, "Placement")) {
      return false;
    }
    StoreU32(b + kPlacementRowAt, at.row);
    StoreU16(b + kPlacementColumnAt, at.column);
    StoreU32(b + kPlacementLeftAt, static_cast<uint32_t>(left));
    StoreU32(b + kPlacementTopAt, static_cast<uint32_t>(top));
    StoreU32(b + kPlacementRightAt, static_cast<uint32_t>(right));
    StoreU32(b + kPlacementBottomAt, static_cast<uint32_t>(bottom));
  }
  if (x.Tag("Border", kOptionalOpen)) {
    if (!ReadLine(x, b + kBorderStyleAt, b + kBorderColourSetAt, b + kBorderWidthAt,
                  b + kBorderColourAt) ||
        !CloseIfOpen(x, "Border")) {
      return false;
    }
  }
  if (!x.ok() || !ReadBackground(x, b + kBackgroundAt)) return false;
  if (x.Tag("Title", scan::kOpen | scan::kOptional) && !x.isClose()) {
    if (x.Tag("Font", kOptionalOpen)) {
      if (!ReadFontAttributes(x, b + kTitleFontAt) || !CloseIfOpen(x, "Font")) return false;
      b[kTitleFontSetAt] = 1;
    }
    if (x.Text("Text", 127, scan::kOptional)) {
      std::memcpy(b + kTitleTextAt, x.text().data(), x.text().size());
    }
    if (!x.ok() || !x.Tag("Title", scan::kClose)) return false;
  }
  if (!x.ok()) return false;
  if (x.Tag("Objects", scan::kOpen | scan::kOptional) && !x.isClose()) {
    uint32_t count = 0;
    while (x.Tag("", kOptionalOpen)) {
      if (count == kMaxObjects) return x.Fail(err::kXmlUnexpectedElement);
      std::string_view kind = x.name();
      if (kind == "Image") {
        int image = 0;
        if (x.RequiredAttr("ID") == nullptr || !x.IntAttr("ID", image, 1, 255) ||
            !CloseIfOpen(x, "Image")) {
          return false;
        }
        b[kObjectsAt + count++] = static_cast<uint8_t>(image);
      } else if (kind == "Chart2D" || kind == "ChartXY" || kind == "Chart3D") {
        ChartRecord chart;
        if (c.charts.size() == 255 || !ReadChartElement(x, chart)) {
          return c.charts.size() == 255 ? x.Fail(err::kXmlUnexpectedElement) : false;
        }
        c.charts.push_back(std::move(chart));
        b[kObjectsAt + count++] = 0;
      } else {
        return x.Fail(err::kXmlUnexpectedElement);
      }
    }
    if (!x.ok() || !x.Tag("Objects", scan::kClose)) return false;
    b[kObjectCountAt] = static_cast<uint8_t>(count);
  }
  if (!x.ok() || !x.Tag("Container", scan::kClose)) return false;
  b[kChartCountAt] = static_cast<uint8_t>(c.charts.size());
  sheet.containers.push_back(std::move(c));
  return true;
}

void WriteContainer(XmlWriter& w, const ContainerRecord& c, int indent) {
  using namespace container;
  const uint8_t* b = c.bytes.data();
  XmlAttributes head;
  head.Int("ID", LoadU32(b + kIdAt))
      .Int("Columns", LoadU16(b + kColumnsAt))
      .Int("Rows", LoadU16(b + kRowsAt))
      .Int("HorzSpacing", LoadU16(b + kHorzSpacingAt))
      .Int("VertSpacing", LoadU16(b + kVertSpacingAt))
      .Int("Opacity", LoadU16(b + kOpacityAt));
  w.Tag("Container", head, TagMode::kOpen, indent, 1);
  XmlAttributes place;
  place.Text("rc", CellAddress(LoadU32(b + kPlacementRowAt), LoadU16(b + kPlacementColumnAt)))
      .Int("Left", static_cast<int32_t>(LoadU32(b + kPlacementLeftAt)))
      .Int("Top", static_cast<int32_t>(LoadU32(b + kPlacementTopAt)))
      .Int("Right", static_cast<int32_t>(LoadU32(b + kPlacementRightAt)))
      .Int("Bottom", static_cast<int32_t>(LoadU32(b + kPlacementBottomAt)));
  w.Tag("Placement", place, TagMode::kEmpty, indent + 1, 1);
  if (b[kBorderStyleAt] || b[kBorderColourSetAt] || LoadU16(b + kBorderWidthAt)) {
    XmlAttributes line;
    line.Text("Style", WordOf(xml_words::kLineStyles, b[kBorderStyleAt]));
    if (b[kBorderColourSetAt]) line.Colour("Color", LoadU32(b + kBorderColourAt), HexCase::kLower);
    line.Int("Width", LoadU16(b + kBorderWidthAt));
    w.Tag("Border", line, TagMode::kEmpty, indent + 1, 1);
  }
  WriteBackground(w, b + kBackgroundAt, indent + 1);
  std::string_view title = FieldText(b + kTitleTextAt, 127);
  if (b[kTitleFontSetAt] || !title.empty()) {
    w.Tag("Title", TagMode::kOpen, indent + 1, 1);
    if (b[kTitleFontSetAt]) {
      XmlAttributes font;
      WriteFontAttributes(b + kTitleFontAt, font);
      w.Tag("Font", font, TagMode::kEmpty, indent + 2, 1);
    }
    w.TextElement("Text", title, indent + 2, 1);
    w.Tag("Title", TagMode::kClose, indent + 1, 1);
  }
  uint32_t count = std::min<uint32_t>(b[kObjectCountAt], kMaxObjects);
  if (count == 0) {
    w.Tag("Objects", TagMode::kEmpty, indent + 1, 1);
  } else {
    w.Tag("Objects", TagMode::kOpen, indent + 1, 1);
    size_t nextChart = 0;
    for (uint32_t k = 0; k < count && w.ok(); ++k) {
      uint8_t object = b[kObjectsAt + k];
      if (object != 0) {
        XmlAttributes image;
        image.Int("ID", object);
        w.Tag("Image", image, TagMode::kEmpty, indent + 2, 1);
      } else if (nextChart < c.charts.size()) {
        WriteChartElement(w, c.charts[nextChart++], indent + 2);
      }
    }
    w.Tag("Objects", TagMode::kClose, indent + 1, 1);
  }
  w.Tag("Container", TagMode::kClose, indent, 1);
}

}  // namespace kelpdex::native_xml
