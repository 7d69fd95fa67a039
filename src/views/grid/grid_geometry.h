// The grid's geometry without a window: which columns stand where, the hit zones of the header
// (the field body against the resize margins) and the frame of the selection where a drag begins.
#pragma once

#include <cstdint>

#include "store/workbook.h"

namespace kelpdex::views {

constexpr int kNameRowHeight = 22;
constexpr int kFilterRowHeight = 20;
constexpr int kHeaderHeight = kNameRowHeight + kFilterRowHeight;
constexpr int kRowHeaderWidth = 64;
constexpr int kDefaultFieldWidth = 110;
constexpr int kDefaultRecordHeight = 21;
constexpr int kResizeMargin = 3;  // pixels inside each column edge that resize rather than hit
constexpr int kFrameBand = 8;     // the band along a selection's edges that starts a drag
constexpr int kGridLine = 1;
// The walk of a row never passes this field.
constexpr uint16_t kFieldScanLimit = 2047;

// A field's width and a record's height as the worksheet keeps them, or the defaults.
int FieldWidth(const Worksheet& data, uint16_t field);
int RecordHeight(const Worksheet& data, uint32_t row);

// The columns on screen: the frozen fields, then the scrolled ones from `firstScrolled`, until
// the client's right edge. Fixed capacity: no column is narrower than a few pixels.
struct ColumnSpan {
  uint16_t field;
  int left;  // client x of the column's first pixel
  int width;
};
struct VisibleColumns {
  static constexpr int kCapacity = 512;
  ColumnSpan spans[kCapacity];
  int count = 0;
};
void LayoutColumns(const Worksheet& data, uint16_t fieldCount, uint16_t frozen,
                   uint16_t firstScrolled, int clientWidth, VisibleColumns& out);

// What a point of the header hits: a field's body, or the resize margin of a field's right edge
// (the left margin of a column resizes its left neighbour).
struct HeaderHit {
  int field = -1;        // -1: no field
  int resizeField = -1;  // -1: not on a margin
};
// No hit for a y outside the header. Each column counts from 3 pixels inside its left edge to 3
// pixels inside its right edge.
HeaderHit HitTestField(int x, int y, const VisibleColumns& columns);

// The selection's rectangle in client pixels; `singlePosition` when it spans one record.
struct PixelRect {
  int left, top, right, bottom;  // right and bottom exclusive
};
// A selection of several positions grabs on a band of kFrameBand pixels inside each edge; a
// single position only on the top 4 pixels of its cells.
bool IsOnSelectionFrame(int x, int y, const PixelRect& selection, bool singlePosition);

}  // namespace kelpdex::views
