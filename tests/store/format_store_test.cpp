#include <array>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "store/format_store.h"

namespace kelpdex {
namespace {

using Rec = std::array<uint32_t, 4>;  // row, firstColumn, lastColumn, styleId
using Runs = std::vector<Rec>;
using Cells = std::map<std::pair<uint32_t, uint16_t>, uint16_t>;

bool Apply(FormatStore& store, uint32_t row, uint32_t first, uint32_t last, uint32_t style) {
  return store.ApplyStyleRun(StyleRun{static_cast<uint16_t>(first), static_cast<uint16_t>(last),
                                      row, static_cast<uint16_t>(style)});
}

// One run of columns 0..9 in each row from 0, `step` rows apart.
void Fill(FormatStore& store, uint32_t rows, uint32_t step = 1) {
  for (uint32_t i = 0; i < rows; ++i) ASSERT_TRUE(Apply(store, i * step, 0, 9, 1));
}

// All runs in order, after checking the chain's links and counts and that runs are sorted,
// apart, and joined wherever they touch with one style.
Runs CheckedRuns(const FormatStore& store) {
  uint32_t blocks = 0;
  const RowBlock* prev = nullptr;
  for (const RowBlock* b = store.head(); b != nullptr; prev = b, b = b->next, ++blocks) {
    EXPECT_EQ(b->prev, prev);
    EXPECT_TRUE(b->used > 0 && b->used <= FormatStore::kRunCapacity && b->used % 10 == 0);
  }
  EXPECT_EQ(blocks, store.blockCount());
  Runs runs;
  RunCursor cursor;
  for (StyleRun r; store.NextRun(cursor, r);) {
    if (!runs.empty()) {
      const auto& [row, first, last, style] = runs.back();
      EXPECT_TRUE(row < r.row || (row == r.row && last + 1 < r.firstColumn) ||
                  (row == r.row && last + 1 == r.firstColumn && style != r.styleId))
          << "row " << r.row << " column " << r.firstColumn;
    }
    runs.push_back({r.row, r.firstColumn, r.lastColumn, r.styleId});
  }
  return runs;
}

// The runs as "row:first-last/style", space-separated.
std::string RunText(const FormatStore& store) {
  std::string text;
  for (const auto& [row, first, last, style] : CheckedRuns(store)) {
    text += (text.empty() ? "" : " ") + std::to_string(row) + ":" + std::to_string(first) + "-" +
            std::to_string(last) + "/" + std::to_string(style);
  }
  return text;
}

TEST(FormatStore, ApplyJoinsTouchingRunsAndWinsOverOverlaps) {
  FormatStore store;
  ASSERT_TRUE(Apply(store, 3, 5, 9, 1));
  ASSERT_TRUE(Apply(store, 3, 10, 12, 1));  // right of the run
  ASSERT_TRUE(Apply(store, 3, 2, 4, 1));    // left of it
  ASSERT_TRUE(Apply(store, 3, 13, 13, 2));  // touching, other style
  EXPECT_EQ(RunText(store), "3:2-12/1 3:13-13/2");
  ASSERT_TRUE(Apply(store, 3, 6, 7, 4));  // inside: the old run is cut around it
  EXPECT_EQ(RunText(store), "3:2-5/1 3:6-7/4 3:8-12/1 3:13-13/2");
  ASSERT_TRUE(Apply(store, 3, 6, 7, 1));  // bridges both neighbours
  EXPECT_EQ(RunText(store), "3:2-12/1 3:13-13/2");
  ASSERT_TRUE(Apply(store, 3, 0, 4000, 7));  // over everything, cut at the last column
  EXPECT_EQ(RunText(store), "3:0-2046/7");
  EXPECT_EQ(store.StyleAt(3, 1000), 7u);
  EXPECT_EQ(store.StyleAt(2, 1000), 0u);
  store.SetColumnStyle(1000, 9);
  EXPECT_EQ(store.StyleAt(2, 1000), 9u);  // no run: the column's style

  // Alternating single cells fill more than a block; joins reach across the block edge.
  FormatStore wide;
  for (uint32_t c = 0; c < 1000; ++c) ASSERT_TRUE(Apply(wide, 3, c, c, 1 + c % 2));
  ASSERT_EQ(wide.blockCount(), 2u);
  ASSERT_TRUE(Apply(wide, 3, 818, 818, 2));  // the first run of the second block
  EXPECT_EQ(CheckedRuns(wide).size(), 998u);
  EXPECT_EQ(wide.StyleAt(3, 817), 2u);
  EXPECT_EQ(wide.StyleAt(3, 820), 1u);
  ASSERT_TRUE(Apply(wide, 3, 0, kLastColumn, 5));
  EXPECT_EQ(RunText(wide), "3:0-2046/5");
  EXPECT_EQ(wide.blockCount(), 1u);
}

// Random applies, clears and row and column changes against a map of styled cells, checked
// every `checkEvery` steps.
void RunRandomOperations(uint32_t rows, int steps, int checkEvery) {
  FormatStore store;
  Cells model;
  std::mt19937 random(rows);
  auto pick = [&](uint32_t n) { return static_cast<uint32_t>(random() % n); };
  // Drops a row and a column (-1 for none), then shifts rows from rowAt and columns from
  // columnAt.
  auto remap = [&](int64_t dropRow, int dropColumn, uint32_t rowAt, int rowBy, int columnAt,
                   int columnBy) {
    Cells moved;
    for (auto [k, style] : model) {
      if (k.first == dropRow || k.second == dropColumn) continue;
      moved[{k.first + (k.first >= rowAt ? rowBy : 0),
             static_cast<uint16_t>(k.second + (k.second >= columnAt ? columnBy : 0))}] = style;
    }
    model.swap(moved);
  };
  for (int step = 0; step < steps; ++step) {
    uint32_t row = pick(rows);
    uint16_t a = static_cast<uint16_t>(pick(30));
    uint16_t b = static_cast<uint16_t>(a + pick(8));
    uint32_t op = pick(38);
    if (op < 24) {
      uint16_t style = static_cast<uint16_t>(pick(3));
      ASSERT_TRUE(Apply(store, row, a, b, style));
      for (uint16_t c = a; c <= b; ++c) model[{row, c}] = style;
    } else if (op < 34) {
      uint32_t lastRow = row + pick(3);
      ASSERT_TRUE(store.ClearStyleRange(a, b, row, lastRow));
      for (uint32_t r = row; r <= lastRow; ++r) {
        for (uint16_t c = a; c <= b; ++c) model.erase({r, c});
      }
    } else if (op == 34) {
      store.InsertRows(row, row + 1);
      remap(-1, -1, row, 2, kColumnLimit, 0);
    } else if (op == 35) {
      store.DeleteRow(row);
      remap(row, -1, row + 1, -1, kColumnLimit, 0);
    } else if (op == 36) {
      // Runs are maximal, so a styled cell whose left neighbour has its style is inside a run
      // that spans the new column, and the new cell takes the style too.
      Cells old = model;
      store.InsertColumn(a);
      remap(-1, -1, kRowLimit, 0, a, 1);
      for (auto [key, style] : old) {
        auto left = old.find({key.first, static_cast<uint16_t>(a - 1)});
        if (key.second == a && a > 0 && left != old.end() && left->second == style) {
          model[key] = style;
        }
      }
    } else if (op == 37) {
      store.DeleteColumn(a);
      remap(-1, a, kRowLimit, 0, a + 1, -1);
    }
    if (step % checkEvery != 0) continue;
    Cells cells;
    for (const auto& [r, first, last, style] : CheckedRuns(store)) {
      for (uint32_t c = first; c <= last; ++c) cells[{r, static_cast<uint16_t>(c)}] = style;
    }
    ASSERT_EQ(cells, model) << "step " << step << " op " << op;
    for (uint32_t r = 0; r < rows + 2; ++r) {
      for (uint16_t c = 0; c < 40; ++c) {
        auto it = model.find({r, c});
        ASSERT_EQ(store.StyleAt(r, c), it != model.end() ? it->second : 0)
            << "step " << step << " at " << r << "," << c;
      }
    }
  }
}

TEST(FormatStore, RandomOperationsMatchACellModel) {
  RunRandomOperations(12, 3000, 1);
  RunRandomOperations(700, 8000, 400);  // several blocks: changes reach across block edges
}

TEST(FormatStore, FullBlocksSplitAndOverflowInOrder) {
  // A run early in a full block splits it there: the tail moves to a new block.
  FormatStore early;
  Fill(early, 818, 2);
  ASSERT_TRUE(Apply(early, 1, 0, 0, 2));
  EXPECT_EQ(CheckedRuns(early).at(1), (Rec{1, 0, 0, 2}));
  EXPECT_EQ(early.head()->used, 20u);

  // Cutting every run of a full block in two pushes the surplus into a block behind.
  FormatStore cut;
  Fill(cut, 818);
  ASSERT_TRUE(cut.ClearStyleRange(4, 5, 0, 817));
  Runs runs = CheckedRuns(cut);
  EXPECT_EQ(runs.size(), 1636u);
  EXPECT_EQ(runs.back(), (Rec{817, 6, 9, 1}));
  EXPECT_EQ(cut.blockCount(), 2u);

  // A small surplus goes to the front of the next block when it has room.
  FormatStore spill;
  Fill(spill, 818);
  ASSERT_TRUE(Apply(spill, 900, 0, 0, 2));
  ASSERT_TRUE(spill.ClearStyleRange(4, 5, 0, 0));
  runs = CheckedRuns(spill);
  EXPECT_EQ(runs.size(), 820u);
  EXPECT_EQ(runs.at(1), (Rec{0, 6, 9, 1}));
  EXPECT_EQ(spill.blockCount(), 2u);
}

TEST(FormatStore, RowChangesMoveWordsAcrossBlocksKeepingHighBits) {
  FormatStore store;
  std::vector<uint16_t> model(9000);
  for (uint32_t row = 1; row < model.size(); ++row) {
    if (row % 7 == 0) *store.rowWords().Word(row) = 0xA000;  // bits that setting the height keeps
    ASSERT_TRUE(store.rowWords().Set(row, static_cast<uint16_t>(row % 4000), row & 1));
    model[row] = static_cast<uint16_t>(((row % 4000) << 1) | (row & 1) | (row % 7 ? 0 : 0xA000));
  }
  EXPECT_EQ(store.rowWords().blockCount(), 3u);
  ASSERT_TRUE(Apply(store, 200, 0, 0, 3));
  ASSERT_TRUE(Apply(store, kLastRow - 4100, 0, 0, 4));  // pushed off by the first insert
  for (int round = 0; round < 2; ++round) {
    // More than a block's worth; the inserted rows keep the high bits of the words there.
    store.InsertRows(100, 4200);
    EXPECT_EQ(RunText(store), round == 0 ? "4301:0-0/3" : "8401:0-0/3");
    std::vector<uint16_t> inserted(4101);
    for (uint32_t i = 0; i < inserted.size() && 100 + i < model.size(); ++i) {
      inserted[i] = model[100 + i] & 0xE000;
    }
    model.insert(model.begin() + 100, inserted.begin(), inserted.end());
    store.DeleteRow(4090);
    model.erase(model.begin() + 4090);
    model.push_back(model.back() & 0xE000);
    ASSERT_EQ(store.rowWords().rowCount(), model.size());
    EXPECT_FALSE(store.rowWords().blockTableValid());  // the insert added blocks
    for (int pass = 0; pass < 2; ++pass) {
      for (uint32_t row = 0; row < model.size(); ++row) {
        ASSERT_EQ(store.rowWords().Value(row), model[row]) << row << (pass ? " with table" : "");
      }
      ASSERT_TRUE(store.rowWords().BuildBlockTable());
    }
  }
  EXPECT_EQ(RunText(store), "8400:0-0/3");
  EXPECT_EQ(*store.rowWords().Word(8183), model[8183]);
  EXPECT_EQ(store.rowWords().Value(kLastRow), 0u);
  EXPECT_EQ(store.rowWords().rowCount(), model.size());  // reading did not grow the words
}

TEST(FormatStore, ColumnChangesMoveRunsAndEntries) {
  FormatStore store;
  ASSERT_TRUE(Apply(store, 0, 2, 5, 1));
  ASSERT_TRUE(Apply(store, 0, 6, 6, 2));
  ASSERT_TRUE(Apply(store, 0, 7, 8, 1));
  ASSERT_TRUE(Apply(store, 1, 2040, kLastColumn, 3));
  ASSERT_TRUE(Apply(store, 2, kLastColumn, kLastColumn, 3));
  store.Column(4).SetWidth(120, true);
  store.SetColumnStyle(kLastColumn, 6);
  store.InsertColumn(4);  // the first run spans it and widens
  EXPECT_EQ(RunText(store), "0:2-6/1 0:7-7/2 0:8-9/1 1:2041-2046/3");
  EXPECT_TRUE(store.Column(5).Width() == 120 && store.Column(5).FixedWidth());
  EXPECT_EQ(store.Column(4).words[0], 0u);

  store.SetColumnStyle(kLastColumn, 6);
  store.DeleteColumn(7);  // the runs either side join
  EXPECT_EQ(RunText(store), "0:2-8/1 1:2040-2045/3");
  EXPECT_EQ(store.ColumnStyle(kLastColumn - 1), 6u);
  EXPECT_EQ(store.ColumnStyle(kLastColumn), 0u);
}

TEST(FormatStore, OutOfMemoryLeavesTheStoreUnchanged) {
  FormatStore store;
  SetBlockAllocationBudget(0);
  EXPECT_FALSE(Apply(store, 0, 0, 0, 1));
  EXPECT_EQ(store.head(), nullptr);
  EXPECT_FALSE(store.rowWords().Set(10, 5, false));
  EXPECT_EQ(store.rowWords().rowCount(), 0u);
  SetBlockAllocationBudget(1);
  Fill(store, 818);
  Runs before = CheckedRuns(store);
  EXPECT_FALSE(Apply(store, 400, 20, 20, 2));
  EXPECT_FALSE(Apply(store, 400, 3, 4, 2));
  EXPECT_FALSE(store.ClearStyleRange(3, 4, 400, 400));
  SetBlockAllocationBudget(-1);
  EXPECT_EQ(CheckedRuns(store), before);
}

TEST(FormatStore, CompactionReclaimsWasteKeepingRuns) {
  FormatStore store;
  const uint32_t rows = 110000;
  for (uint32_t row = 0; row < rows; ++row) {
    ASSERT_TRUE(Apply(store, row, 0, 0, 1));
    ASSERT_TRUE(Apply(store, row, 5, 5, 2));
  }
  uint32_t blocksBefore = store.blockCount();
  ASSERT_TRUE(store.ClearStyleRange(5, 5, 0, kLastRow));
  EXPECT_LT(store.blockCount(), blocksBefore * 6 / 10);
  EXPECT_EQ(store.freeBytes(), 0u);
  Runs runs = CheckedRuns(store);
  EXPECT_EQ(runs.size(), rows);
  EXPECT_EQ(runs.back(), (Rec{rows - 1, 0, 0, 1}));
}

}  // namespace
}  // namespace kelpdex
