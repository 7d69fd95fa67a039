// Where a chart's settings stand inside the 732-byte chart record and the 3,528-byte series record
// that containers carry. The XML document reads and writes these fields; the binary file moves the
// records whole. Numbers are little-endian (store/bytes.h), colours COLORREFs with red in the low
// byte, texts zero-padded with at most 127 bytes, fonts laid out as the font table's records.
#pragma once

#include <cstdint>

#include "store/sheet_records.h"
#include "store/style_table.h"

namespace kelpdex {

// Chart and series records share two small groups.
namespace chart_line {
// A drawn line: written as Style (a word of xml_words::kLineStyles), Color "#rrggbb" in lower
// case, Width (0..255).
constexpr uint32_t kStyleAt = 0;
constexpr uint32_t kWidthAt = 1;
constexpr uint32_t kColourAt = 4;  // u32
constexpr uint32_t kSize = 8;
}  // namespace chart_line

namespace chart_fill {
// A fill: PatternType (xml_words::kPatterns), PatternColor and BackgroundColor in upper case.
constexpr uint32_t kPatternAt = 0;
constexpr uint32_t kColourAt = 4;      // u32
constexpr uint32_t kBackgroundAt = 8;  // u32
constexpr uint32_t kSize = 12;
}  // namespace chart_fill

constexpr uint32_t kChartTextSize = 128;  // 127 bytes and the terminating zero
constexpr uint32_t kMaxChartSeries = 16;

namespace chart {
constexpr uint32_t kTypeAt = 0;
constexpr uint8_t kChart2D = 1;
constexpr uint8_t kChartXY = 2;
constexpr uint8_t kChart3D = 3;

// Options: seven u16 numbers, in the order of the Options children.
constexpr uint32_t kViewWidthAt = 4;
constexpr uint32_t kViewHeightAt = 6;
constexpr uint32_t kBarSizeAt = 8;
constexpr uint32_t kStackBarSizeAt = 10;
constexpr uint32_t kLineWidth3DAt = 12;
constexpr uint32_t kPieThickness3DAt = 14;
constexpr uint32_t kPieSplitAt = 16;

// Title: a font record and the text.
constexpr uint32_t kTitleFontAt = 20;
constexpr uint32_t kTitleTextAt = kTitleFontAt + kFontRecordSize;  // 155

// Legend: position 0 None, 1 Bottom, 2 Right, 3 Left; layout 0 Horizontal, 1 Vertical; its font.
constexpr uint32_t kLegendPositionAt = 283;
constexpr uint32_t kLegendLayoutAt = 284;
constexpr uint32_t kLegendFontAt = 285;  // to 420

// Transformation besides the matrix record: light direction in degrees 0..180 each, perspective
// 1..100 (0 in a record that never had one, and then not written).
constexpr uint32_t kLightDirectionXAt = 420;
constexpr uint32_t kLightDirectionYAt = 421;
constexpr uint32_t kPerspectiveAt = 422;

// The chart planes XY, XZ, YZ (the last two drawn only in a 3D chart): a fill and then a border
// line each.
constexpr uint32_t kPlaneXYAt = 424;
constexpr uint32_t kPlaneXZAt = 444;
constexpr uint32_t kPlaneYZAt = 464;
constexpr uint32_t kPlaneFillAt = 0;
constexpr uint32_t kPlaneBorderAt = chart_fill::kSize;
constexpr uint32_t kPlaneSize = chart_fill::kSize + chart_line::kSize;

// 484..699 and 712..730 are free; 700..711 keep the rotation angles of older files
// (kRotationAt), and the last byte holds the series count (kSeriesCountAt).
static_assert(kPlaneYZAt + kPlaneSize <= kRotationAt);
}  // namespace chart

namespace series {
// Scale: 0 Linear, 1 Log2, 2 natural logarithm, 3 Log10.
constexpr uint32_t kScaleAt = 0;
// The series this one is set against: kind 0 none, 1 RelatedSigma, 2 RelatedX, and its number
// 1..16 among the chart's series.
constexpr uint32_t kRelatedKindAt = 1;
constexpr uint32_t kRelatedAt = 2;
constexpr uint8_t kRelatedSigma = 1;
constexpr uint8_t kRelatedX = 2;
constexpr uint32_t kNameAt = 4;

// DataArray: the range of values shown, two doubles.
constexpr uint32_t kFromValueAt = 132;
constexpr uint32_t kToValueAt = 140;
// DataPeriods: periods and subperiods u16 each, the divisor a double.
constexpr uint32_t kPeriodsAt = 148;
constexpr uint32_t kSubperiodsAt = 150;
constexpr uint32_t kDivisorAt = 152;

// The four views Column, Line, Area, Scatter, four bytes each: stacked (0 None, 1 Normal,
// 2 Relative), labels shown, visible, and for Scatter the symbol (an index of the symbol words).
constexpr uint32_t kColumnViewAt = 160;
constexpr uint32_t kLineViewAt = 164;
constexpr uint32_t kAreaViewAt = 168;
constexpr uint32_t kScatterViewAt = 172;
constexpr uint32_t kViewStackedAt = 0;
constexpr uint32_t kViewLabelsAt = 1;
constexpr uint32_t kViewVisibleAt = 2;
constexpr uint32_t kViewSymbolAt = 3;
constexpr uint32_t kViewSize = 4;

// Axis: type (0 Automatic, 1 Category, 2 Value, 3 Time), labels shown and title shown (booleans),
// the counts of ticks and of subticks between two ticks (u16), the title text, the axis line, the
// major and minor grid lines, and up to eight user grid lines, each a line and its value (double).
constexpr uint32_t kAxisAt = 176;
constexpr uint32_t kAxisTypeAt = 176;
constexpr uint32_t kAxisLabelsAt = 177;
constexpr uint32_t kAxisTitleAt = 178;
constexpr uint32_t kAxisTicksAt = 180;
constexpr uint32_t kAxisSubticksAt = 182;
constexpr uint32_t kAxisTitleTextAt = 184;
constexpr uint32_t kAxisLineAt = kAxisTitleTextAt + kChartTextSize;  // 312
constexpr uint32_t kMajorGridAt = 320;
constexpr uint32_t kMinorGridAt = 328;
constexpr uint32_t kUserGridCountAt = 336;
constexpr uint32_t kUserGridAt = 340;
constexpr uint32_t kUserGridValueAt = chart_line::kSize;
constexpr uint32_t kUserGridSize = chart_line::kSize + 8;
constexpr uint32_t kMaxUserGridLines = 8;
constexpr uint32_t kAxisEnd = kUserGridAt + kMaxUserGridLines * kUserGridSize;  // 468

// The rest of the record is free.
static_assert(kAxisEnd <= kSeriesSize);
}  // namespace series

}  // namespace kelpdex
