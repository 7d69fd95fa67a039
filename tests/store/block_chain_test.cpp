#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/block_chain.h"
#include "store/cell_store.h"

namespace kelpdex {
namespace {

// The links both ways, the ends and the count agree; returns the room the blocks leave unused.
uint64_t CheckedRoom(const BlockChain& chain) {
  uint64_t room = 0;
  uint32_t blocks = 0;
  const RowBlock* prev = nullptr;
  for (const RowBlock* b = chain.head(); b != nullptr; prev = b, b = b->next, ++blocks) {
    EXPECT_EQ(b->prev, prev);
    room += kBlockPayload - b->used;
  }
  EXPECT_EQ(chain.tail(), prev);
  EXPECT_EQ(chain.blockCount(), blocks);
  return room;
}

// A block from `pool` holding `used` bytes of `fill`.
RowBlock* Filled(BlockPool& pool, uint16_t used, uint8_t fill) {
  RowBlock* b = pool.Take();
  std::memset(b->data, fill, used);
  b->used = used;
  return b;
}

// The path a loader takes: cell records in key order packed into fresh blocks, the chain then
// handed to a store in one piece.
TEST(BlockChain, CellsAppendedInOrderPackBlocksAndPassToAStore) {
  CellStore store;
  BlockChain chain;
  auto take = [&store] { return store.TakeSpareBlock(); };
  std::vector<std::string> texts;
  uint8_t record[kBlockPayload];
  for (uint32_t row = 0; row < 3000; ++row) {
    // Now and then a record large enough to leave room behind in the block before it.
    std::string text(row % 97 == 0 ? 3000 + row : row % 50, static_cast<char>('a' + row % 26));
    uint32_t size = cell::EncodeText(record, row, static_cast<uint16_t>(row % 3), text);
    const RowBlock* tail = chain.tail();
    bool fits = tail != nullptr && tail->used + size <= kBlockPayload;
    ASSERT_TRUE(chain.AppendRecord(record, size, take));
    // A record goes into the tail whenever it fits, else starts the next block.
    EXPECT_EQ(chain.tail() == tail, fits) << row;
    texts.push_back(text);
  }
  // A record that fills the tail to the last byte still goes into it.
  uint32_t size = cell::EncodeText(record, 3000, 0, std::string(7000, 'y'));
  ASSERT_TRUE(chain.AppendRecord(record, size, take));
  RowBlock* brim = chain.tail();
  ASSERT_GE(kBlockPayload - brim->used, cell::TextSize(0));
  std::string rest(kBlockPayload - brim->used - cell::TextSize(0), 'x');
  size = cell::EncodeText(record, 3001, 0, rest);
  ASSERT_TRUE(chain.AppendRecord(record, size, take));
  EXPECT_EQ(chain.tail(), brim);
  EXPECT_EQ(brim->used, kBlockPayload);
  texts.push_back(std::string(7000, 'y'));
  texts.push_back(rest);
  ASSERT_GT(chain.blockCount(), 10u);
  EXPECT_EQ(chain.freeBytes(), CheckedRoom(chain));

  // A block that cannot be had leaves the chain as it was.
  size = cell::EncodeText(record, 3002, 0, std::string(kBlockPayload - 100, 'z'));
  uint32_t blocks = chain.blockCount();
  uint32_t freeBytes = chain.freeBytes();
  const RowBlock* tail = chain.tail();
  uint16_t tailUsed = tail->used;
  EXPECT_FALSE(chain.AppendRecord(record, size, [] { return static_cast<RowBlock*>(nullptr); }));
  EXPECT_EQ(chain.blockCount(), blocks);
  EXPECT_EQ(chain.freeBytes(), freeBytes);
  EXPECT_EQ(chain.tail(), tail);
  EXPECT_EQ(tail->used, tailUsed);

  store.AdoptChain(chain.Release());
  EXPECT_EQ(chain.head(), nullptr);
  EXPECT_EQ(store.blockCount(), blocks);
  EXPECT_EQ(store.freeBytes(), freeBytes);  // what appending counted is what adoption finds
  uint32_t lastRow = 0;
  ASSERT_TRUE(store.LastRecordRow(lastRow));
  EXPECT_EQ(lastRow, 3001u);
  CellCursor cursor;
  uint32_t row = 0;
  while (CellRecord* r = store.NextCell(cursor)) {
    ASSERT_EQ(cell::Row(r), row);
    ASSERT_EQ(cell::Text(r), texts[row]);
    ++row;
  }
  EXPECT_EQ(row, 3002u);
}

TEST(BlockChain, LinkingAndRemovingKeepTheEndsAndTheWaste) {
  BlockPool pool;
  BlockChain chain;
  RowBlock* a = Filled(pool, 100, 'a');
  RowBlock* c = Filled(pool, 8000, 'c');
  chain.Append(a);
  chain.LinkAfter(c, a);  // after the tail: becomes the tail
  EXPECT_EQ(chain.tail(), c);
  RowBlock* b = Filled(pool, kBlockPayload, 'b');
  chain.LinkAfter(b, a);  // in the middle: the ends stay
  EXPECT_EQ(chain.head(), a);
  EXPECT_EQ(chain.tail(), c);
  EXPECT_EQ(chain.freeBytes(), CheckedRoom(chain));
  EXPECT_EQ(chain.freeBytes(), (kBlockPayload - 100) + (kBlockPayload - 8000));

  chain.CountFilled(50);
  chain.CountFreed(20);
  EXPECT_EQ(chain.freeBytes(), (kBlockPayload - 100) + (kBlockPayload - 8000) - 30);

  chain.Remove(c);  // the tail steps back
  EXPECT_EQ(chain.tail(), b);
  EXPECT_EQ(chain.freeBytes(), (kBlockPayload - 100) - 30);
  chain.Remove(a);  // the head steps on
  EXPECT_EQ(chain.head(), b);
  EXPECT_EQ(b->prev, nullptr);
  EXPECT_EQ(chain.blockCount(), 1u);
  // Waste counted since a compaction can be less than a leaving block's room: it stops at zero.
  chain.CountFilled(1u << 30);
  EXPECT_EQ(chain.freeBytes(), 0u);
  b->used = 10;
  chain.Remove(b);
  EXPECT_EQ(chain.freeBytes(), 0u);
  EXPECT_EQ(chain.head(), nullptr);
  EXPECT_EQ(chain.tail(), nullptr);
  for (RowBlock* block : {a, b, c}) pool.Give(block, true);
}

TEST(BlockChain, CompactionAsksForAFifthOfTheMemoryWasted) {
  BlockPool pool;
  BlockChain chain;
  for (int i = 0; i < 611; ++i) chain.Append(Filled(pool, kBlockPayload, 0));
  chain.CountFreed(BlockChain::kCompactionWaste - 1);
  EXPECT_FALSE(chain.WantsCompaction());  // below the floor
  chain.CountFreed(1);
  EXPECT_FALSE(chain.WantsCompaction());  // 611 blocks of 8192 bytes: five times the waste
  RowBlock* last = chain.tail();
  chain.Remove(last);
  EXPECT_TRUE(chain.WantsCompaction());
  pool.Give(last, true);
  pool.GiveChain(chain.Release(), true);
}

// Records of the compaction test: a size byte, a kind byte, then filler.
void PutRecord(RowBlock* b, uint8_t size, uint8_t kind) {
  b->data[b->used] = size;
  b->data[b->used + 1] = kind;
  std::memset(b->data + b->used + 2, kind, size - 2u);
  b->used = static_cast<uint16_t>(b->used + size);
}

TEST(BlockChain, CompactionPacksFoldsAndReturnsTheRest) {
  BlockPool pool;
  BlockChain chain;
  std::vector<std::pair<uint8_t, uint8_t>> expected;  // size and kind after folding
  for (int i = 0; i < 12; ++i) {
    RowBlock* b = pool.Take();
    chain.Append(b);
    for (int k = 0; k < 30; ++k) {
      uint8_t size = static_cast<uint8_t>(10 + (i * 30 + k) % 200);
      // Every third record repeats its predecessor's kind and folds into it.
      uint8_t kind = static_cast<uint8_t>(k % 3 == 2 ? (k - 1) % 250 : k % 250);
      PutRecord(b, size, kind);
      if (k % 3 != 2) expected.push_back({size, kind});
    }
  }
  uint32_t blocksBefore = chain.blockCount();
  chain.CountFreed(12345);
  // Below the payload, as for style runs, yet above every block's fill, so the writer never
  // overtakes the reader.
  chain.Compact(
      pool, 2, 8000, [](const uint8_t* r) { return uint32_t{r[0]}; },
      [](uint8_t* kept, const uint8_t* r) { return kept[1] == r[1]; });

  EXPECT_EQ(chain.freeBytes(), 0u);
  CheckedRoom(chain);
  std::vector<std::pair<uint8_t, uint8_t>> seen;
  for (const RowBlock* b = chain.head(); b != nullptr; b = b->next) {
    ASSERT_LE(b->used, 8000u);
    uint32_t off = 0;
    for (; off < b->used; off += b->data[off]) {
      const uint8_t* r = b->data + off;
      for (uint32_t k = 2; k < r[0]; ++k) ASSERT_EQ(r[k], r[1]);  // moved whole
      seen.push_back({r[0], r[1]});
    }
    ASSERT_EQ(off, b->used);
    // Packed: the next block's first record would not have fitted here.
    if (b->next != nullptr) {
      EXPECT_GT(b->used + b->next->data[0], 8000u);
    }
  }
  EXPECT_EQ(seen, expected);
  // The blocks left over went to the pool, which keeps two and gives the rest to the heap.
  EXPECT_LT(chain.blockCount(), blocksBefore);
  EXPECT_EQ(pool.count(), 2u);

  // A chain with nothing in it is given back whole.
  for (RowBlock* b = chain.head(); b != nullptr; b = b->next) b->used = 0;
  chain.Compact(
      pool, 64, 8000, [](const uint8_t* r) { return uint32_t{r[0]}; },
      [](uint8_t*, const uint8_t*) { return false; });
  EXPECT_EQ(chain.head(), nullptr);
  EXPECT_EQ(chain.tail(), nullptr);
  EXPECT_EQ(chain.blockCount(), 0u);
}

}  // namespace
}  // namespace kelpdex
