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

namespace container {
constexpr uint32_t kIdAt = 0;
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
