#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "store/cell_store.h"

namespace kelpdex {
namespace {

// Writes a text cell through a cursor.
bool PutText(CellStore& store, uint32_t row, uint16_t column, const std::string& text,
             CellCursor* cursor = nullptr) {
  std::vector<uint8_t> rec(cell::TextSize(text.size()));
  cell::EncodeText(rec.data(), row, column, text);
  return store.PutCell(rec.data(), cursor);
}

bool PutNumber(CellStore& store, uint32_t row, uint16_t column, double value) {
  uint8_t rec[cell::kNumberSize];
  cell::EncodeNumber(rec, row, column, value);
  return store.PutCell(rec);
}

std::string TextAt(CellStore& store, uint32_t row, uint16_t column) {
  CellRecord* r = store.GetCell(row, column);
  if (r == nullptr) return "<none>";
  return std::string(cell::Text(r));
}

using Model = std::map<std::pair<uint32_t, uint16_t>, std::string>;

// Walks the whole chain, checking every block's bookkeeping and that keys strictly rise.
void ExpectMatchesModel(CellStore& store, const Model& model) {
  std::vector<std::pair<std::pair<uint32_t, uint16_t>, std::string>> seen;
  uint32_t blocks = 0;
  const RowBlock* prev = nullptr;
  for (const RowBlock* b = store.head(); b != nullptr; b = b->next) {
    ASSERT_EQ(b->prev, prev);
    ASSERT_GT(b->used, 0u) << "empty block in the chain";
    ASSERT_LE(b->used, kBlockPayload);
    uint32_t off = 0;
    while (off < b->used) off += cell::Size(b->data + off);
    ASSERT_EQ(off, b->used) << "records do not end at the block's used mark";
    prev = b;
    ++blocks;
  }
  EXPECT_EQ(blocks, store.blockCount());
  // The last row comes from the tail block alone, so the tail must follow every change.
  uint32_t lastRow = 0;
  ASSERT_EQ(store.LastRecordRow(lastRow), !model.empty());
  if (!model.empty()) {
    EXPECT_EQ(lastRow, model.rbegin()->first.first);
  }
  CellCursor cursor;
  while (CellRecord* r = store.NextCell(cursor)) {
    seen.push_back({{cell::Row(r), cell::Column(r)}, std::string(cell::Text(r))});
  }
  ASSERT_EQ(seen.size(), model.size());
  size_t i = 0;
  for (const auto& [key, text] : model) {
    ASSERT_EQ(seen[i].first, key) << "order differs at " << i;
    ASSERT_EQ(seen[i].second, text);
    ++i;
  }
}

TEST(CellRecord, SizesFollowTheTag) {
  uint8_t buf[200];
  EXPECT_EQ(cell::EncodeText(buf, 5, 2, "hello"), 14u);
  EXPECT_EQ(cell::Size(buf), 14u);
  EXPECT_TRUE(cell::IsText(buf));
  EXPECT_EQ(cell::Row(buf), 5u);
  EXPECT_EQ(cell::Column(buf), 2u);
  EXPECT_EQ(cell::EncodeNumber(buf, 1, 1, 2.5, cell::kAuto | 0x70), 15u);
  EXPECT_TRUE(cell::IsNumber(buf));
  EXPECT_TRUE(cell::IsAuto(buf));
  EXPECT_EQ(cell::ErrorNibble(buf), 0x70);
  EXPECT_EQ(cell::EncodeFormula(buf, 1, 1, "=a+b"), 39u);
  EXPECT_TRUE(cell::IsFormula(buf));
  EXPECT_EQ(cell::EncodeFormulaWithString(buf, 1, 1, "=a&b", "xyz"), 35u + 4 + 2 + 3);
  EXPECT_EQ(cell::Size(buf), 44u);
  EXPECT_EQ(cell::CachedString(buf), "xyz");
  // The layout is little-endian whatever the host.
  cell::EncodeText(buf, 0x01020304, 0x0506, "");
  const uint8_t expected[] = {0x01, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x00, 0x00};
  EXPECT_EQ(std::memcmp(buf, expected, sizeof expected), 0);
}

TEST(CellStore, PutGetReplaceAndLimits) {
  CellStore store;
  EXPECT_EQ(store.GetCell(0, 0), nullptr);
  EXPECT_TRUE(PutText(store, 3, 1, "b"));
  EXPECT_TRUE(PutText(store, 3, 0, "a"));
  EXPECT_TRUE(PutText(store, 0, 5, "first"));
  EXPECT_TRUE(PutText(store, 3, 0, "a much longer replacement"));
  EXPECT_EQ(TextAt(store, 3, 0), "a much longer replacement");
  EXPECT_EQ(TextAt(store, 3, 1), "b");
  EXPECT_EQ(TextAt(store, 3, 2), "<none>");
  // Beyond the last row: ignored, and still a success.
  EXPECT_TRUE(PutText(store, kRowLimit, 0, "lost"));
  EXPECT_EQ(store.GetCell(kRowLimit, 0), nullptr);
  EXPECT_TRUE(PutText(store, kLastRow, kLastColumn, "corner"));
  EXPECT_EQ(TextAt(store, kLastRow, kLastColumn), "corner");
  EXPECT_TRUE(PutNumber(store, 3, 1, 42));
  ASSERT_TRUE(cell::IsNumber(store.GetCell(3, 1)));
  EXPECT_EQ(cell::Number(store.GetCell(3, 1)), 42);
}

TEST(CellStore, RecordOfExactlyOneBlockAndOneTooLarge) {
  CellStore store;
  std::string full(kBlockPayload - cell::kTextHeader, 'x');  // 8173 bytes
  ASSERT_TRUE(PutText(store, 10, 0, "before"));
  ASSERT_TRUE(PutText(store, 11, 0, "after"));
  ASSERT_TRUE(PutText(store, 10, 1, full));
  EXPECT_EQ(TextAt(store, 10, 1), full);
  Model model = {{{10, 0}, "before"}, {{10, 1}, full}, {{11, 0}, "after"}};
  ExpectMatchesModel(store, model);
  EXPECT_FALSE(PutText(store, 12, 0, full + "y"));
  ExpectMatchesModel(store, model);
}

TEST(CellStore, GrowingReplacementAtTheBrimSplitsInOrder) {
  CellStore store;
  Model model;
  CellCursor cursor;
  // Fill one block nearly to the brim with 100-byte records.
  for (uint32_t row = 0; row < 81; ++row) {
    std::string text(91, static_cast<char>('a' + row % 26));
    ASSERT_TRUE(PutText(store, row, 0, text, &cursor));
    model[{row, 0}] = text;
  }
  ASSERT_EQ(store.blockCount(), 1u);
  for (uint32_t row : {0u, 40u, 80u}) {
    std::string longer(400, static_cast<char>('A' + row % 26));
    ASSERT_TRUE(PutText(store, row, 0, longer));
    model[{row, 0}] = longer;
    ExpectMatchesModel(store, model);
  }
  EXPECT_GT(store.blockCount(), 1u);
}

TEST(CellStore, ReplacementThatCannotSplitLeavesTheOldCell) {
  CellStore store;
  CellCursor cursor;
  for (uint32_t row = 0; row < 81; ++row) PutText(store, row, 0, std::string(91, 'q'), &cursor);
  SetBlockAllocationBudget(0);
  bool ok = PutText(store, 40, 0, std::string(500, 'z'));
  SetBlockAllocationBudget(-1);
  EXPECT_FALSE(ok);
  EXPECT_EQ(TextAt(store, 40, 0), std::string(91, 'q'));
  // A cell that fits needs no block and still goes in.
  SetBlockAllocationBudget(0);
  EXPECT_TRUE(PutText(store, 40, 0, "short"));
  SetBlockAllocationBudget(-1);
}

TEST(CellStore, CursorsStayCorrectWhenMovedBackwards) {
  CellStore store;
  CellCursor cursor;
  for (uint32_t row = 0; row < 2000; ++row) ASSERT_TRUE(PutText(store, row, 2, "x", &cursor));
  // A write before the cursor's position must not be appended behind it.
  ASSERT_TRUE(PutText(store, 5, 1, "early", &cursor));
  ASSERT_TRUE(PutText(store, 1999, 3, "late", &cursor));
  ASSERT_TRUE(PutText(store, 0, 0, "start", &cursor));
  EXPECT_EQ(TextAt(store, 5, 1), "early");
  // Asking for the cell the cursor stands behind answers at once, and a write there replaces it.
  CellRecord* again = store.GetCell(700, 2, &cursor);
  EXPECT_EQ(store.GetCell(700, 2, &cursor), again);
  ASSERT_TRUE(PutText(store, 700, 2, "a longer text than before", &cursor));
  EXPECT_EQ(TextAt(store, 700, 2), "a longer text than before");
  EXPECT_EQ(std::string(cell::Text(store.GetCell(700, 2, &cursor))), "a longer text than before");
  EXPECT_NE(store.GetCell(1999, 2, &cursor), nullptr);
  EXPECT_NE(store.GetCell(3, 2, &cursor), nullptr);
  CellCursor scan;
  uint64_t last = 0;
  bool first = true;
  while (CellRecord* r = store.NextCell(scan)) {
    uint64_t key = (uint64_t(cell::Row(r)) << 16) | cell::Column(r);
    if (!first) {
      ASSERT_GT(key, last);
    }
    last = key;
    first = false;
  }
}

TEST(CellStore, DeletingPartOfAnArrayFormulaDeletesTheArray) {
  for (uint8_t headError : {uint8_t{0}, cell::kFillError}) {
    CellStore store;
    uint8_t rec[64];
    for (uint32_t row = 4; row <= 5; ++row) {
      for (uint16_t column = 2; column <= 3; ++column) {
        cell::EncodeFormula(rec, row, column, "=m", headError);
        if (row == 4 && column == 2) cell::SetArray(rec, 2, 2);
        ASSERT_TRUE(store.PutCell(rec));
      }
    }
    PutText(store, 4, 1, "left");
    PutText(store, 5, 4, "right");
    // A member cell alone goes alone; the head takes a healthy array with it.
    store.DeleteRange(3, 3, 5, 5);
    EXPECT_NE(store.GetCell(4, 3), nullptr);
    store.DeleteRange(2, 2, 4, 4);
    int remaining = 0;
    CellCursor cursor;
    while (CellRecord* r = store.NextCell(cursor)) remaining += cell::IsFormula(r);
    EXPECT_EQ(remaining, headError == 0 ? 0 : 2) << int(headError);
    EXPECT_EQ(TextAt(store, 4, 1), "left");
    EXPECT_EQ(TextAt(store, 5, 4), "right");
  }
}

TEST(CellStore, MassDeletionCompactsAndKeepsOrder) {
  CellStore store;
  Model model;
  CellCursor cursor;
  for (uint32_t row = 0; row < 40000; ++row) {
    for (uint16_t column = 0; column < 4; ++column) {
      std::string text = std::to_string(row * 4 + column) + "-some text";
      PutText(store, row, column, text, &cursor);
      model[{row, column}] = text;
    }
  }
  uint32_t blocksBefore = store.blockCount();
  // Delete every other cell: blocks keep records, so only compaction can give memory back.
  for (uint32_t row = 0; row < 40000; ++row) {
    for (uint16_t column = row % 2; column < 4; column += 2) {
      store.DeleteRange(column, column, row, row);
      model.erase({row, column});
    }
  }
  EXPECT_LT(store.blockCount(), blocksBefore * 3 / 4);
  ExpectMatchesModel(store, model);
}

TEST(CellStore, LastUsedAndMaxRow) {
  CellStore store;
  uint16_t minC = 9, maxC = 9;
  uint32_t minR = 9, maxR = 9;
  store.LastUsed(&minC, &maxC, &minR, &maxR);
  EXPECT_EQ(minC + maxC + minR + maxR, 0u);
  PutText(store, 7, 9, "a");
  PutText(store, 300000, 2, "b");
  PutText(store, 8, 40, "c");
  store.LastUsed(&minC, &maxC, &minR, &maxR);
  EXPECT_EQ(minC, 2);
  EXPECT_EQ(maxC, 40);
  EXPECT_EQ(minR, 7u);
  EXPECT_EQ(maxR, 300000u);
  EXPECT_EQ(store.MaxRowUsed(), static_cast<uint16_t>(300000));
}

TEST(CellStore, RowIndexFollowsWrites) {
  CellStore store;
  CellCursor cursor;
  for (uint32_t row = 0; row < 5000; row += 2) PutText(store, row, 1, std::to_string(row), &cursor);
  ASSERT_TRUE(store.BuildRowIndex(0, kLastRow));
  EXPECT_EQ(std::string(cell::Text(store.GetCellFast(2002, 1))), "2002");
  EXPECT_EQ(store.GetCellFast(2003, 1), nullptr);
  EXPECT_EQ(store.GetCellFast(2002, 0), nullptr);
  // Writes shift records inside blocks; the index must not hand out stale places.
  for (uint32_t row = 1; row < 5000; row += 2) PutText(store, row, 0, "odd-" + std::to_string(row));
  for (uint32_t row = 0; row < 5000; ++row) {
    CellRecord* r = store.GetCellFast(row, row % 2 == 0 ? 1 : 0);
    ASSERT_NE(r, nullptr) << row;
    EXPECT_EQ(std::string(cell::Text(r)),
              row % 2 == 0 ? std::to_string(row) : "odd-" + std::to_string(row));
  }
  store.DeleteRow(0);
  EXPECT_EQ(std::string(cell::Text(store.GetCellFast(0, 0))), "odd-1");
}

// A whole row in one walk gives what GetCell gives column by column, across block boundaries,
// past the asked width, for empty rows, and before and after the index is rebuilt.
TEST(CellStore, RowFastMatchesCellByCell) {
  CellStore store;
  CellCursor cursor;
  for (uint32_t row = 0; row < 3000; ++row) {
    for (uint16_t c = 0; c < 12; ++c) {
      if ((row * 7 + c * 3) % 5 != 0 && row % 97 != 0) {
        PutText(store, row, c, std::to_string(row) + ":" + std::to_string(c), &cursor);
      }
    }
  }
  CellRecord* cells[10];
  auto check = [&](bool indexed) {
    for (uint32_t row : {0u, 1u, 96u, 97u, 1023u, 1024u, 2999u, 3000u, kLastRow}) {
      std::fill(std::begin(cells), std::end(cells), reinterpret_cast<CellRecord*>(&cells));
      store.GetRowFast(row, 10, cells);
      for (uint16_t c = 0; c < 10; ++c) {
        ASSERT_EQ(cells[c], store.GetCell(row, c))
            << row << "," << c << (indexed ? " indexed" : "");
      }
    }
  };
  check(false);
  ASSERT_TRUE(store.BuildRowIndex(0, kLastRow));
  check(true);
  PutText(store, 1024, 9, "moved");  // shifts the records behind it within their block
  check(false);
}

TEST(CellStore, RowAndColumnShifts) {
  CellStore store;
  PutText(store, 0, 0, "a");
  PutText(store, 1, 1, "b");
  PutText(store, 2, 2, "c");
  ASSERT_TRUE(store.CanInsertRows(1, 3));
  store.InsertRows(1, 3);
  EXPECT_EQ(TextAt(store, 4, 1), "b");
  EXPECT_EQ(TextAt(store, 5, 2), "c");
  store.DeleteRow(4);
  EXPECT_EQ(TextAt(store, 4, 2), "c");
  EXPECT_EQ(TextAt(store, 4, 1), "<none>");
  ASSERT_TRUE(store.CanInsertColumn(1));
  store.InsertColumn(1);
  EXPECT_EQ(TextAt(store, 4, 3), "c");
  EXPECT_EQ(TextAt(store, 0, 0), "a");
  store.DeleteColumn(0);
  EXPECT_EQ(TextAt(store, 4, 2), "c");
  EXPECT_EQ(TextAt(store, 0, 0), "<none>");

  PutText(store, kLastRow - 2, 0, "near the end");
  EXPECT_TRUE(store.CanInsertRows(10, 11));
  EXPECT_FALSE(store.CanInsertRows(10, 12));
  EXPECT_TRUE(store.CanInsertRows(kLastRow - 1, kLastRow));
  PutText(store, 3, kLastColumn, "edge");
  EXPECT_FALSE(store.CanInsertColumn(5));
}

TEST(CellStore, ChainsMoveBetweenStores) {
  CellStore a;
  CellStore b;
  for (uint32_t row = 0; row < 3000; ++row) PutText(a, row, 0, "row " + std::to_string(row));
  ASSERT_TRUE(a.CopyRange(0, 0, 100, 199, b));
  EXPECT_EQ(TextAt(b, 150, 0), "row 150");
  EXPECT_EQ(TextAt(b, 200, 0), "<none>");
  uint32_t blocks = a.blockCount();
  RowBlock* chain = a.DetachChain(true);
  EXPECT_EQ(a.head(), nullptr);
  b.AdoptChain(chain);
  EXPECT_EQ(b.blockCount(), blocks);
  EXPECT_EQ(b.MaxRowUsed(), 2999u);  // read from the adopted chain's tail
  EXPECT_EQ(TextAt(b, 2999, 0), "row 2999");
  EXPECT_GT(b.freeBlockCount(), 0u);  // its old blocks wait for reuse
  b.Reset(false);
  EXPECT_EQ(b.head(), nullptr);
  EXPECT_EQ(b.GetCell(0, 0), nullptr);
}

// Random operations against a map, checking order and content after every step.
TEST(CellStore, RandomOperationsMatchAReferenceModel) {
  std::mt19937 rng(20261121);
  CellStore store;
  Model model;
  auto rand = [&](uint32_t n) { return static_cast<uint32_t>(rng() % n); };
  for (int step = 0; step < 3000; ++step) {
    uint32_t op = rand(100);
    if (op < 60) {
      uint32_t row = rand(400);
      uint16_t column = static_cast<uint16_t>(rand(12));
      // Mostly short texts, now and then a large one that forces splits.
      size_t length = rand(10) == 0 ? 1000 + rand(3000) : rand(60);
      std::string text(length, static_cast<char>('a' + rand(26)));
      text += std::to_string(step);
      ASSERT_TRUE(PutText(store, row, column, text));
      model[{row, column}] = text;
    } else if (op < 80) {
      uint32_t r1 = rand(400), r2 = r1 + rand(5);
      uint16_t c1 = static_cast<uint16_t>(rand(12)), c2 = static_cast<uint16_t>(c1 + rand(4));
      store.DeleteRange(c1, c2, r1, r2);
      for (auto it = model.begin(); it != model.end();) {
        bool inside = it->first.first >= r1 && it->first.first <= r2 && it->first.second >= c1 &&
                      it->first.second <= c2;
        it = inside ? model.erase(it) : std::next(it);
      }
    } else if (op < 87) {
      uint32_t first = rand(400), count = 1 + rand(3);
      ASSERT_TRUE(store.CanInsertRows(first, first + count - 1));
      store.InsertRows(first, first + count - 1);
      Model moved;
      for (auto& [k, v] : model)
        moved[{k.first >= first ? k.first + count : k.first, k.second}] = v;
      model.swap(moved);
    } else if (op < 93) {
      uint32_t row = rand(400);
      store.DeleteRow(row);
      Model moved;
      for (auto& [k, v] : model) {
        if (k.first == row) continue;
        moved[{k.first > row ? k.first - 1 : k.first, k.second}] = v;
      }
      model.swap(moved);
    } else if (op < 97) {
      uint16_t column = static_cast<uint16_t>(rand(12));
      ASSERT_TRUE(store.CanInsertColumn(column));
      store.InsertColumn(column);
      Model moved;
      for (auto& [k, v] : model) {
        moved[{k.first, static_cast<uint16_t>(k.second >= column ? k.second + 1 : k.second)}] = v;
      }
      model.swap(moved);
    } else {
      uint16_t column = static_cast<uint16_t>(rand(12));
      store.DeleteColumn(column);
      Model moved;
      for (auto& [k, v] : model) {
        if (k.second == column) continue;
        moved[{k.first, static_cast<uint16_t>(k.second > column ? k.second - 1 : k.second)}] = v;
      }
      model.swap(moved);
    }
    ExpectMatchesModel(store, model);
    if (::testing::Test::HasFatalFailure()) {
      FAIL() << "after step " << step << " (op " << op << ")";
    }
  }
}

}  // namespace
}  // namespace kelpdex

namespace kelpdex {
namespace {

TEST(CellStore, MergeFromMatchesAModelAndFailsCleanly) {
  std::mt19937 rng(99);
  for (int round = 0; round < 20; ++round) {
    CellStore target;
    CellStore incoming;
    Model model;
    Model theirs;
    int mineCount = round == 0 ? 0 : 3000;
    for (int i = 0; i < mineCount; ++i) {
      uint32_t row = rng() % 2000;
      uint16_t column = static_cast<uint16_t>(rng() % 6);
      std::string text(rng() % (i % 50 == 0 ? 3000 : 40), 'm');
      PutText(target, row, column, text);
      model[{row, column}] = text;
    }
    for (int i = 0; i < 1500; ++i) {
      uint32_t row = rng() % 2000;
      uint16_t column = static_cast<uint16_t>(rng() % 8);
      std::string text = "t" + std::to_string(i) + std::string(rng() % 30, 't');
      PutText(incoming, row, column, text);
      theirs[{row, column}] = text;
    }
    if (round == 1) {
      // No block to be had: nothing changes on either side.
      SetBlockAllocationBudget(0);
      uint32_t spare = target.freeBlockCount();
      bool merged = target.MergeFrom(incoming);
      SetBlockAllocationBudget(-1);
      if (!merged) {
        ExpectMatchesModel(target, model);
        ExpectMatchesModel(incoming, theirs);
      } else {
        EXPECT_GT(spare, 0u);  // the spares alone were enough
      }
    }
    for (auto& [key, text] : theirs) model[key] = text;
    ASSERT_TRUE(target.MergeFrom(incoming));
    ExpectMatchesModel(target, model);
    EXPECT_EQ(incoming.head(), nullptr);
    EXPECT_EQ(incoming.GetCell(0, 0), nullptr);
    // The merged store goes on working as usual.
    ASSERT_TRUE(PutText(target, 5, 3, "after"));
    model[{5, 3}] = "after";
    ExpectMatchesModel(target, model);
  }
}

}  // namespace
}  // namespace kelpdex
