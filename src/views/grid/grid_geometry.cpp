#include "views/grid/grid_geometry.h"

#include <algorithm>

namespace kelpdex::views {

int FieldWidth(const Worksheet& data, uint16_t field) {
  int width = data.formats.Column(field).Width();
  return width == 0 ? kDefaultFieldWidth : std::max(width, 4);
}

int RecordHeight(const Worksheet& data, uint32_t row) {
  int height = (data.formats.rowWords().Value(row) >> 1) & 0xFFF;
  return height == 0 ? kDefaultRecordHeight : std::max(height, 4);
}

void LayoutColumns(const Worksheet& data, uint16_t fieldCount, uint16_t frozen,
                   uint16_t firstScrolled, int clientWidth, VisibleColumns& out) {
  out.count = 0;
  int x = kRowHeaderWidth;
  uint16_t limit = std::min(fieldCount, kFieldScanLimit);
  auto add = [&](uint16_t field) {
    if (x >= clientWidth || out.count == VisibleColumns::kCapacity) return false;
    int width = FieldWidth(data, field);
    out.spans[out.count++] = {field, x, width};
    x += width + kGridLine;
    return true;
  };
  for (uint16_t f = 0; f < std::min(frozen, limit); ++f) {
    if (!add(f)) return;
  }
  for (uint16_t f = std::max(firstScrolled, frozen); f < limit; ++f) {
    if (!add(f)) return;
  }
}

HeaderHit HitTestField(int x, int y, const VisibleColumns& columns) {
  HeaderHit hit;
  if (y < 0 || y >= kHeaderHeight) return hit;
  for (int i = 0; i < columns.count; ++i) {
    const ColumnSpan& c = columns.spans[i];
    int right = c.left + c.width;  // the grid line's pixel
    if (x < c.left - kGridLine - kResizeMargin) break;
    if (x >= c.left + kResizeMargin && x < right - kResizeMargin) {
      hit.field = c.field;
      return hit;
    }
    if (x >= right - kResizeMargin && x <= right + kResizeMargin) {
      hit.resizeField = c.field;
      return hit;
    }
  }
  return hit;
}

bool IsOnSelectionFrame(int x, int y, const PixelRect& s, bool singlePosition) {
  if (x < s.left || x >= s.right || y < s.top || y >= s.bottom) return false;
  if (singlePosition) return y < s.top + 4;
  return x < s.left + kFrameBand || x >= s.right - kFrameBand || y < s.top + kFrameBand ||
         y >= s.bottom - kFrameBand;
}

}  // namespace kelpdex::views
