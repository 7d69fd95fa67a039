// Whole-workbook comparison and a sample workbook that uses every part of the document, for the
// tests of the file formats.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "store/catalogue.h"
#include "store/field_row.h"
#include "store/workbook.h"
#include "table/schema.h"

namespace kelpdex::testing {

inline std::string CellsOf(const CellStore& store) {
  std::string bytes;
  for (const RowBlock* b = store.head(); b != nullptr; b = b->next) {
    bytes.append(reinterpret_cast<const char*>(b->data), b->used);
  }
  return bytes;
}

inline std::string RunsOf(const FormatStore& formats) {
  std::string out;
  RunCursor cursor;
  StyleRun run;
  while (formats.NextRun(cursor, run)) {
    out += std::to_string(run.row) + ":" + std::to_string(run.firstColumn) + "-" +
           std::to_string(run.lastColumn) + "=" + std::to_string(run.styleId) + " ";
  }
  return out;
}

// Expects two workbooks to hold the same document.
inline void ExpectSameWorkbook(const Workbook& a, const Workbook& b) {
  EXPECT_EQ(a.lastSavedBy, b.lastSavedBy);
  EXPECT_EQ(a.lastSavedAt, b.lastSavedAt);
  EXPECT_EQ(a.treePaneWidth, b.treePaneWidth);
  EXPECT_EQ(a.inspectPaneHeight, b.inspectPaneHeight);
  ASSERT_EQ(a.inspectCells.size(), b.inspectCells.size());
  for (size_t i = 0; i < a.inspectCells.size(); ++i) {
    EXPECT_EQ(a.inspectCells[i].bytes, b.inspectCells[i].bytes);
  }
  for (uint32_t slot = 0; slot < kDropDownListSlots; ++slot) {
    EXPECT_EQ(a.dropDownLists[slot].used, b.dropDownLists[slot].used) << slot;
    EXPECT_EQ(a.dropDownLists[slot].name, b.dropDownLists[slot].name) << slot;
    EXPECT_EQ(a.dropDownLists[slot].items, b.dropDownLists[slot].items) << slot;
  }
  ASSERT_EQ(a.styles.styleCount(), b.styles.styleCount());
  ASSERT_EQ(a.styles.fontCount(), b.styles.fontCount());
  for (uint16_t i = 0; i < a.styles.styleCount(); ++i) {
    EXPECT_EQ(std::memcmp(a.styles.Style(i).bytes, b.styles.Style(i).bytes, kStyleRecordSize), 0);
  }
  for (uint8_t i = 0; i < a.styles.fontCount(); ++i) {
    EXPECT_EQ(std::memcmp(a.styles.Font(i).bytes, b.styles.Font(i).bytes, kFontRecordSize), 0);
  }
  EXPECT_EQ(a.folderCount, b.folderCount);
  EXPECT_EQ(a.worksheetCount, b.worksheetCount);
  const WorkbookNode* x = a.firstNode;
  const WorkbookNode* y = b.firstNode;
  for (; x != nullptr && y != nullptr; x = x->next, y = y->next) {
    SCOPED_TRACE(std::string(x->Name()));
    EXPECT_EQ(x->Name(), y->Name());
    EXPECT_EQ(x->level, y->level);
    ASSERT_EQ(x->nodeType, y->nodeType);
    EXPECT_EQ(x == a.currentSheet, y == b.currentSheet);
    if (x->IsFolder()) {
      EXPECT_EQ(x->open, y->open);
      continue;
    }
    const auto& s = *static_cast<const Worksheet*>(x);
    const auto& t = *static_cast<const Worksheet*>(y);
    EXPECT_EQ(CellsOf(s.cells), CellsOf(t.cells));
    EXPECT_EQ(RunsOf(s.formats), RunsOf(t.formats));
    for (uint16_t c = 0; c < kColumnLimit; ++c) {
      ASSERT_EQ(std::memcmp(s.formats.Column(c).words, t.formats.Column(c).words, 6), 0) << c;
    }
    uint32_t rows = std::max(s.formats.rowWords().rowCount(), t.formats.rowWords().rowCount());
    for (uint32_t r = 0; r < rows; ++r) {
      ASSERT_EQ(s.formats.rowWords().Value(r), t.formats.rowWords().Value(r)) << r;
    }
    EXPECT_EQ(s.pageSettings, t.pageSettings);
    EXPECT_EQ(s.sheetSettings, t.sheetSettings);
    ASSERT_EQ(s.containers.size(), t.containers.size());
    for (size_t i = 0; i < s.containers.size(); ++i) {
      EXPECT_EQ(s.containers[i].bytes, t.containers[i].bytes) << "container " << i;
      ASSERT_EQ(s.containers[i].charts.size(), t.containers[i].charts.size());
      for (size_t k = 0; k < s.containers[i].charts.size(); ++k) {
        EXPECT_EQ(s.containers[i].charts[k].bytes, t.containers[i].charts[k].bytes);
        EXPECT_EQ(s.containers[i].charts[k].matrix, t.containers[i].charts[k].matrix);
        EXPECT_EQ(s.containers[i].charts[k].series, t.containers[i].charts[k].series);
      }
    }
  }
  EXPECT_EQ(x, nullptr);
  EXPECT_EQ(y, nullptr);
}

// Two tables with fields, keys and forms, styles and fonts, drop-down lists, row heights, column
// widths, style runs, an array formula, errors, Auto cells, a container with a chart, inspected
// cells.
inline void BuildSampleWorkbook(Workbook& book) {
  ASSERT_TRUE(CreateTable(book, "People"));
  ASSERT_TRUE(CreateTable(book, "Orders"));
  book.currentSheet = book.FindTable("People");
  FieldSpec name;
  name.name = "Name";
  name.type = FieldType::kText;
  FieldSpec age;
  age.name = "Age";
  age.type = FieldType::kNumber;
  age.formulaOrValue = "F:=Age+1";
  ASSERT_TRUE(InsertField(book, 0, name));
  ASSERT_TRUE(InsertField(book, 1, age));
  Worksheet& data = *book.FindTable("People");
  uint8_t rec[256];
  for (uint32_t r = 0; r < 300; ++r) {
    std::string text = "person " + std::to_string(r);
    cell::EncodeText(rec, r, 0, text);
    ASSERT_TRUE(data.cells.PutCell(rec));
    cell::EncodeNumber(rec, r, 1, r * 1.5, r % 7 == 0 ? cell::kAuto : 0);
    ASSERT_TRUE(data.cells.PutCell(rec));
  }
  cell::EncodeNumber(rec, 300, 1, 0, 0x10);  // "#DIV/0!"
  ASSERT_TRUE(data.cells.PutCell(rec));
  cell::EncodeFormulaWithString(rec, 301, 0, "=\"a\"&\"b\"", "ab", cell::kAuto);
  ASSERT_TRUE(data.cells.PutCell(rec));
  cell::EncodeFormula(rec, 302, 0, "={1,2;3,4}");
  cell::SetArray(rec, 2, 2);
  cell::SetCachedNumber(rec, 1);
  ASSERT_TRUE(data.cells.PutCell(rec));
  FontRecord font{};
  std::strcpy(reinterpret_cast<char*>(font.bytes), "Sans");
  font.bytes[font::kSizeAt] = 12;
  uint8_t fontId = 0;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(book.styles.FindOrAddFont(font, fontId, error));
  StyleRecord style = book.styles.Style(0);
  style.bytes[style::kFontSetAt] = 1;
  style.bytes[style::kFontIndexAt] = fontId;
  uint16_t styleId = 0;
  ASSERT_TRUE(book.styles.FindOrAddStyle(style, styleId, error));
  ASSERT_TRUE(data.formats.ApplyStyleRun(StyleRun{0, 1, 5, styleId}));
  ASSERT_TRUE(data.formats.ApplyStyleRun(StyleRun{1, 1, 200, styleId}));
  data.formats.Column(0).SetWidth(140, true);
  data.formats.SetColumnStyle(1, styleId);
  ASSERT_TRUE(data.formats.rowWords().Set(7, 30, true));
  ASSERT_TRUE(data.formats.rowWords().Set(4000, 12, false));
  uint32_t slot = 0;
  ASSERT_TRUE(book.AddDropDownList(slot));
  book.dropDownLists[slot].items = {"red", "green", ""};
  ASSERT_TRUE(book.AddDropDownList(slot));
  book.RemoveDropDownList(0);  // an empty slot before a used one
  // A container holding one chart of two series, with the counts the files keep beside them.
  ContainerRecord container;
  container.bytes[container::kIdAt] = 1;
  container.bytes[container::kObjectCountAt] = 1;
  container.bytes[container::kObjectsAt] = 0;  // the chart
  container.bytes[container::kChartCountAt] = 1;
  ChartRecord chartRecord;
  chartRecord.bytes[0] = 1;    // a 2D chart
  chartRecord.bytes[10] = 42;  // one of its options
  for (int k = 0; k < 4; ++k) {
    float one = 1.0f;
    std::memcpy(chartRecord.matrix.data() + 20 * k, &one, 4);  // the identity
  }
  chartRecord.series.resize(2);
  chartRecord.series[1][4] = 'S';  // the second series' name
  chartRecord.bytes[chart::kSeriesCountAt] = 2;
  container.charts.push_back(chartRecord);
  data.containers.push_back(container);
  data.sheetSettings[sheet_settings::kFreezeFlagsAt] = 1;
  data.pageSettings[page_settings::kOrientationAt] = 2;
  InspectedCell inspected;
  std::strcpy(reinterpret_cast<char*>(inspected.bytes.data()) + inspected_cell::kPathAt,
              "\\People");
  book.inspectCells.push_back(inspected);
  book.lastSavedBy = "tester";
  book.lastSavedAt = "2026-11-21T10:00:00";
  book.treePaneWidth = 180;
  // A folder of the user's own, collapsed.
  auto* folder = new Folder("Archive");
  book.AttachNode(folder, nullptr);
}

}  // namespace kelpdex::testing
