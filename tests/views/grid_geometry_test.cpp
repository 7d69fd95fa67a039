#include <gtest/gtest.h>

#include "store/workbook.h"
#include "views/grid/clipboard_text.h"
#include "views/grid/grid_geometry.h"
#include "views/grid/link_target.h"

namespace kelpdex::views {
namespace {

TEST(GridGeometry, HeaderHitsLeaveResizeMarginsAtEachColumnEdge) {
  Worksheet sheet("T");
  sheet.formats.Column(1).SetWidth(50, true);
  VisibleColumns columns;
  LayoutColumns(sheet, 3, 0, 0, 1000, columns);
  ASSERT_EQ(columns.count, 3);
  const ColumnSpan& second = columns.spans[1];
  EXPECT_EQ(second.left, kRowHeaderWidth + kDefaultFieldWidth + kGridLine);
  EXPECT_EQ(second.width, 50);
  int right = second.left + second.width;
  EXPECT_EQ(HitTestField(second.left + 20, 5, columns).field, 1);
  // Two pixels inside either edge is a resize zone, never a hit on the field.
  HeaderHit nearRight = HitTestField(right - 2, 5, columns);
  EXPECT_EQ(nearRight.field, -1);
  EXPECT_EQ(nearRight.resizeField, 1);
  HeaderHit nearLeft = HitTestField(second.left + 2, 5, columns);
  EXPECT_EQ(nearLeft.field, -1);
  EXPECT_EQ(nearLeft.resizeField, 0);
  EXPECT_EQ(HitTestField(second.left + 3, 5, columns).field, 1);
  EXPECT_EQ(HitTestField(second.left + 20, kHeaderHeight, columns).field, -1);
  EXPECT_EQ(HitTestField(second.left + 20, -1, columns).field, -1);
}

TEST(GridGeometry, FrozenFieldsStayWhileTheRestScrolls) {
  Worksheet sheet("T");
  VisibleColumns columns;
  LayoutColumns(sheet, 10, 2, 6, 1000, columns);
  ASSERT_GE(columns.count, 4);
  EXPECT_EQ(columns.spans[0].field, 0);
  EXPECT_EQ(columns.spans[1].field, 1);
  EXPECT_EQ(columns.spans[2].field, 6);
  // The walk stops at the client's edge.
  int last = columns.spans[columns.count - 1].left;
  EXPECT_LT(last, 1000);
}

TEST(GridGeometry, SelectionFrameBands) {
  PixelRect many{100, 100, 300, 200};
  EXPECT_TRUE(IsOnSelectionFrame(104, 150, many, false));
  EXPECT_TRUE(IsOnSelectionFrame(200, 195, many, false));
  EXPECT_FALSE(IsOnSelectionFrame(200, 150, many, false));
  EXPECT_FALSE(IsOnSelectionFrame(99, 150, many, false));
  PixelRect one{100, 100, 300, 121};
  EXPECT_TRUE(IsOnSelectionFrame(200, 103, one, true));
  EXPECT_FALSE(IsOnSelectionFrame(200, 104, one, true));
  EXPECT_FALSE(IsOnSelectionFrame(104, 115, one, true));
}

TEST(LinkTarget, SchemesPrefixesAndNonLinks) {
  EXPECT_EQ(LinkTarget("  HTTP://x"), "HTTP://x");
  EXPECT_EQ(LinkTarget("mailto:a@b.c"), "mailto:a@b.c");
  EXPECT_EQ(LinkTarget("Prospero:thing"), "Prospero:thing");
  EXPECT_EQ(LinkTarget("www.example.org"), "http://www.example.org");
  EXPECT_EQ(LinkTarget("c:\\data\\a.kpx"), "file://c:\\data\\a.kpx");
  EXPECT_EQ(LinkTarget("ann@example.org"), "mailto:ann@example.org");
  EXPECT_EQ(LinkTarget("plain words"), "");
  EXPECT_EQ(LinkTarget("   "), "");
  EXPECT_EQ(LinkTarget(""), "");
  EXPECT_EQ(LinkTarget("1:2"), "");
}

TEST(ClipboardText, QuotingRoundTrips) {
  const std::vector<std::vector<std::string>> cells = {{"plain", "a\tb", "say \"hi\""},
                                                       {"", "x", "line"}};
  std::string text;
  for (const auto& line : cells) {
    for (size_t i = 0; i < line.size(); ++i) {
      if (i) text += '\t';
      AppendClipboardCell(text, line[i]);
    }
    text += "\r\n";
  }
  EXPECT_EQ(text, "plain\t\"a\tb\"\t\"say \"\"hi\"\"\"\r\n\tx\tline\r\n");
  EXPECT_EQ(ParseClipboardText(text, 1024), cells);
  // A last line without its break, and the cut at the cell limit.
  auto parsed = ParseClipboardText("abcdef\tg", 3);
  ASSERT_EQ(parsed.size(), 1u);
  EXPECT_EQ(parsed[0], (std::vector<std::string>{"abc", "g"}));
}

}  // namespace
}  // namespace kelpdex::views
