// The fixed-size records a worksheet and a document carry besides their cells: page settings,
// sheet settings, inspected cells, and the containers of images and charts. They are kept as the
// byte images the binary file stores, read and written at their named offsets, so the file forms
// move them without interpreting what other parts of the program own.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "store/bytes.h"

namespace kelpdex {

constexpr uint32_t kPageSettingsSize = 1152;
constexpr uint32_t kSheetSettingsSize = 472;
constexpr uint32_t kInspectedCellSize = 396;
constexpr uint32_t kContainerSize = 984;
constexpr uint32_t kChartSize = 732;
constexpr uint32_t kChartMatrixSize = 64;  // 16 floats
constexpr uint32_t kSeriesSize = 3528;

namespace sheet_settings {
constexpr uint32_t kBackgroundAt = 8;
constexpr uint32_t kShowGridAt = 400;
constexpr uint32_t kGridColourSetAt = 401;
constexpr uint32_t kGridColourAt = 404;
constexpr uint32_t kHeadingsColourSetAt = 408;
constexpr uint32_t kHeadingsColourAt = 412;
constexpr uint32_t kTopLeftColumnAt = 416;
constexpr uint32_t kTopLeftRowAt = 420;
constexpr uint32_t kSelectionFirstColumnAt = 428;
constexpr uint32_t kSelectionFirstRowAt = 432;
constexpr uint32_t kSelectionLastColumnAt = 440;
constexpr uint32_t kSelectionLastRowAt = 444;
constexpr uint32_t kFreezeColumnAt = 452;
constexpr uint32_t kFreezeRowAt = 456;
constexpr uint32_t kFreezeFlagsAt = 460;  // bit 0 rows frozen, bit 3 columns frozen
constexpr uint32_t kScaleAt = 464;        // percent
}  // namespace sheet_settings

namespace page_settings {
constexpr uint32_t kPrinterNameAt = 1;
constexpr uint32_t kPaperSizeAt = 129;
constexpr uint32_t kOrientationAt = 257;
constexpr uint32_t kFirstPageNumberAt = 294;
constexpr uint32_t kExcludedRowsAt = 296;
constexpr uint32_t kExcludedColumnsAt = 424;
constexpr uint32_t kPagesAt = 552;
constexpr uint32_t kCopiesAt = 680;
constexpr uint32_t kCollateAt = 682;
constexpr uint32_t kBackToFrontAt = 683;
constexpr uint32_t kHeaderMarginAt = 688;  // double
constexpr uint32_t kFooterMarginAt = 696;  // double
constexpr uint32_t kHeaderTextAt = 704;
constexpr uint32_t kFooterTextAt = 832;
constexpr uint32_t kFontAt = 960;
constexpr uint32_t kOnFirstPageAt = 1100;
constexpr uint32_t kLeftMarginAt = 1104;
constexpr uint32_t kRightMarginAt = 1112;
constexpr uint32_t kTopMarginAt = 1120;
constexpr uint32_t kBottomMarginAt = 1128;
constexpr uint32_t kAlignmentAt = 1136;
constexpr uint32_t kRowHeadingsAt = 1144;
constexpr uint32_t kColumnHeadingsAt = 1145;
}  // namespace page_settings

namespace inspected_cell {
constexpr uint32_t kRowAt = 0;
constexpr uint32_t kColumnAt = 4;
constexpr uint32_t kPathAt = 12;  // 256 bytes, zero-terminated
constexpr uint32_t kNameAt = 268;
}  // namespace inspected_cell

// A background: a fill, a fractal, or an image file. The same 392-byte record stands in the sheet
// settings and in every container.
constexpr uint32_t kBackgroundSize = 392;
namespace background {
constexpr uint32_t kKindAt = 0;  // background_kind::
constexpr uint32_t kPatternAt = 1;
constexpr uint32_t kColourFlagsAt = 2;  // 1 pattern colour set, 2 background colour set
constexpr uint32_t kPatternColourAt = 4;
constexpr uint32_t kBackgroundColourAt = 8;
constexpr uint32_t kFractalAt = 16;  // six doubles: Zr, Zi, MinX, MaxX, MinY, MaxY
constexpr uint32_t kColourCountAt = 64;
constexpr uint32_t kColoursAt = 68;  // up to 16 COLORREFs
constexpr uint32_t kMaxColours = 16;
constexpr uint32_t kViewAt = 132;       // 0 Default, 1 FitToWindowSize, 2 Wallpaper
constexpr uint32_t kImagePathAt = 136;  // 256 bytes, zero-terminated
}  // namespace background
namespace background_kind {
constexpr uint8_t kNone = 0;
constexpr uint8_t kFill = 1;
constexpr uint8_t kFractal = 2;
constexpr uint8_t kImage = 3;
}  // namespace background_kind

// A container: a grid of images and charts placed over cells.
namespace container {
constexpr uint32_t kIdAt = 0;
constexpr uint32_t kColumnsAt = 4;  // u16
constexpr uint32_t kRowsAt = 6;
constexpr uint32_t kHorzSpacingAt = 8;
constexpr uint32_t kVertSpacingAt = 10;
constexpr uint32_t kOpacityAt = 12;
constexpr uint32_t kPlacementRowAt = 16;     // u32
constexpr uint32_t kPlacementColumnAt = 20;  // u16
constexpr uint32_t kPlacementLeftAt = 24;    // four i32 offsets
constexpr uint32_t kPlacementTopAt = 28;
constexpr uint32_t kPlacementRightAt = 32;
constexpr uint32_t kPlacementBottomAt = 36;
constexpr uint32_t kBorderStyleAt = 40;  // line style
constexpr uint32_t kBorderColourSetAt = 41;
constexpr uint32_t kBorderWidthAt = 42;  // u16
constexpr uint32_t kBorderColourAt = 44;
constexpr uint32_t kBackgroundAt = 48;  // a background record
constexpr uint32_t kTitleFontAt = 440;  // a 135-byte font record
constexpr uint32_t kTitleFontSetAt = 575;
constexpr uint32_t kTitleTextAt = 576;  // 128 bytes
constexpr uint32_t kObjectCountAt = 704;
// One byte per object in cell order: 0 the next chart of the container, else an image's id.
constexpr uint32_t kObjectsAt = 705;
constexpr uint32_t kMaxObjects = 255;
constexpr uint32_t kChartCountAt = 976;
}  // namespace container

namespace chart {
// The series count stands in the record's last byte.
constexpr uint32_t kSeriesCountAt = kChartSize - 1;
// The three rotation angles in degrees (floats) that files before the matrix carried.
constexpr uint32_t kRotationAt = 700;
}  // namespace chart

struct ChartRecord {
  std::array<uint8_t, kChartSize> bytes{};
  std::array<uint8_t, kChartMatrixSize> matrix{};
  std::vector<std::array<uint8_t, kSeriesSize>> series;
};

struct ContainerRecord {
  std::array<uint8_t, kContainerSize> bytes{};
  std::vector<ChartRecord> charts;
};

struct InspectedCell {
  std::array<uint8_t, kInspectedCellSize> bytes{};
};

// The settings of a new sheet: the grid shown, 100 percent.
inline std::array<uint8_t, kSheetSettingsSize> DefaultSheetSettings() {
  std::array<uint8_t, kSheetSettingsSize> s{};
  s[sheet_settings::kShowGridAt] = 1;
  StoreU32(s.data() + sheet_settings::kScaleAt, 100);
  return s;
}

// One copy, from page 1, with both headings.
inline std::array<uint8_t, kPageSettingsSize> DefaultPageSettings() {
  std::array<uint8_t, kPageSettingsSize> p{};
  StoreU16(p.data() + page_settings::kFirstPageNumberAt, 1);
  StoreU16(p.data() + page_settings::kCopiesAt, 1);
  p[page_settings::kRowHeadingsAt] = 1;
  p[page_settings::kColumnHeadingsAt] = 1;
  return p;
}

}  // namespace kelpdex
