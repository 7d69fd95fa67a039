// Removing and inserting many rows at once must leave every cell, style run, row height and
// object where removing or inserting them one by one would have.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <vector>

#include "store/workbook.h"

namespace kelpdex {
namespace {

struct Model {
  std::map<std::pair<uint32_t, uint16_t>, double> cells;
  std::map<uint32_t, uint16_t> heights;  // rows with a height set
  std::map<uint32_t, uint16_t> styles;   // one run per styled row, over columns 2..4
  std::multiset<std::pair<uint32_t, uint16_t>> objects;
};

void Fill(Worksheet& sheet, Model& model, std::mt19937& rng, uint32_t rows) {
  CellCursor cursor;
  for (uint32_t r = 0; r < rows; ++r) {
    for (uint16_t c = 0; c < 5; ++c) {
      if (rng() % 3 == 0) continue;
      double v = r * 10.0 + c;
      uint8_t rec[cell::kNumberSize];
      cell::EncodeNumber(rec, r, c, v);
      ASSERT_TRUE(sheet.cells.PutCell(rec, &cursor));
      model.cells[{r, c}] = v;
    }
    if (rng() % 4 == 0) {
      uint16_t h = static_cast<uint16_t>(10 + r % 200);
      ASSERT_TRUE(sheet.formats.rowWords().Set(r, h, false));
      model.heights[r] = h;
    }
    if (rng() % 5 == 0) {
      uint16_t style = static_cast<uint16_t>(1 + r % 7);
      ASSERT_TRUE(sheet.formats.ApplyStyleRun(StyleRun{2, 4, r, style}));
      model.styles[r] = style;
    }
    if (rng() % 9 == 0) {
      sheet.objects.push_back(SheetObject{r, 3, FieldType::kLongText, "x"});
      model.objects.insert({r, 3});
    }
  }
}

void Check(Worksheet& sheet, const Model& model, uint32_t rows) {
  std::map<std::pair<uint32_t, uint16_t>, double> cells;
  CellCursor cursor;
  while (CellRecord* r = sheet.cells.NextCell(cursor)) {
    cells[{cell::Row(r), cell::Column(r)}] = cell::Number(r);
  }
  ASSERT_EQ(cells, model.cells);
  for (uint32_t r = 0; r < rows; ++r) {
    auto h = model.heights.find(r);
    uint16_t expected = h == model.heights.end() ? 0 : h->second;
    ASSERT_EQ(sheet.formats.rowWords().Value(r) & 0xFFF, expected << 1 & 0xFFF) << "row " << r;
    auto s = model.styles.find(r);
    ASSERT_EQ(sheet.formats.StyleAt(r, 3), s == model.styles.end() ? 0 : s->second) << "row " << r;
  }
  std::multiset<std::pair<uint32_t, uint16_t>> objects;
  for (const SheetObject& o : sheet.objects) objects.insert({o.row, o.column});
  ASSERT_EQ(objects, model.objects);
}

template <typename K, typename V, typename F>
std::map<K, V> Remap(const std::map<K, V>& in, F f) {
  std::map<K, V> out;
  for (const auto& [k, v] : in) {
    auto mapped = f(k);
    if (mapped) out[*mapped] = v;
  }
  return out;
}

TEST(RowBatches, RemoveAndInsertManyRowsAgainstAModel) {
  std::mt19937 rng(7);
  for (int round = 0; round < 6; ++round) {
    Worksheet sheet("T");
    Model model;
    const uint32_t rows = 3000 + rng() % 3000;
    Fill(sheet, model, rng, rows);

    std::set<uint32_t> pick;
    size_t want = 1 + rng() % 400;
    while (pick.size() < want) pick.insert(rng() % (rows + 10));
    std::vector<uint32_t> list(pick.begin(), pick.end());

    if (round % 2 == 0) {
      sheet.RemoveRows(list.data(), list.size());
      auto newRow = [&](uint32_t r) -> std::optional<uint32_t> {
        if (pick.count(r)) return std::nullopt;
        return r -
               static_cast<uint32_t>(std::lower_bound(list.begin(), list.end(), r) - list.begin());
      };
      model.cells = Remap(
          model.cells,
          [&](std::pair<uint32_t, uint16_t> k) -> std::optional<std::pair<uint32_t, uint16_t>> {
            auto r = newRow(k.first);
            if (!r) return std::nullopt;
            return std::make_pair(*r, k.second);
          });
      model.heights = Remap(model.heights, newRow);
      model.styles = Remap(model.styles, newRow);
      std::multiset<std::pair<uint32_t, uint16_t>> objects;
      for (auto [r, c] : model.objects) {
        if (auto n = newRow(r)) objects.insert({*n, c});
      }
      model.objects = objects;
    } else {
      ErrorCode error = err::kNone;
      ASSERT_TRUE(sheet.InsertRowsBefore(list.data(), list.size(), error));
      auto newRow = [&](uint32_t r) -> std::optional<uint32_t> {
        return r +
               static_cast<uint32_t>(std::upper_bound(list.begin(), list.end(), r) - list.begin());
      };
      model.cells = Remap(
          model.cells,
          [&](std::pair<uint32_t, uint16_t> k) -> std::optional<std::pair<uint32_t, uint16_t>> {
            return std::make_pair(*newRow(k.first), k.second);
          });
      model.heights = Remap(model.heights, newRow);
      model.styles = Remap(model.styles, newRow);
      std::multiset<std::pair<uint32_t, uint16_t>> objects;
      for (auto [r, c] : model.objects) objects.insert({*newRow(r), c});
      model.objects = objects;
    }
    Check(sheet, model, rows + static_cast<uint32_t>(list.size()) + 10);
    uint32_t last = model.cells.empty() ? 0 : model.cells.rbegin()->first.first + 1;
    for (auto [r, c] : model.objects) last = std::max(last, r + 1);
    EXPECT_EQ(sheet.UsedRows(), last);
  }
}

TEST(RowBatches, InsertingPastTheLastRowIsRefused) {
  Worksheet sheet("T");
  uint8_t rec[cell::kNumberSize];
  cell::EncodeNumber(rec, kLastRow - 1, 0, 1);
  ASSERT_TRUE(sheet.cells.PutCell(rec));
  uint32_t rows[2] = {0, 5};
  ErrorCode error = err::kNone;
  EXPECT_FALSE(sheet.InsertRowsBefore(rows, 2, error));
  EXPECT_EQ(error, err::kNoEmptyRows);
  EXPECT_TRUE(sheet.InsertRowsBefore(rows, 1, error));
  EXPECT_EQ(sheet.UsedRows(), kRowLimit);
}

}  // namespace
}  // namespace kelpdex
