// The 8 KB unit of every chain: cells, style runs and row words. The payload is always 8182
// bytes; on 64-bit builds the links in front of it take more than the classic 10 bytes.
#pragma once

#include <cstdint>

namespace kelpdex {

constexpr uint32_t kBlockPayload = 8182;
// Where a full block is split: an insertion below this offset moves the tail out, one at or
// above it starts the new block.
constexpr uint32_t kSplitOffset = 4091;

struct BlockSlab;

struct RowBlock {
  RowBlock* next;
  RowBlock* prev;
  BlockSlab* slab;  // the slab the block was carved from, or null for a block of its own
  uint16_t used;    // bytes of records in data
  uint8_t data[kBlockPayload];
};

// A block from the heap, with its header cleared; nullptr when memory is exhausted.
RowBlock* AllocateBlock();
void ReleaseBlock(RowBlock* block);
// Many blocks at once, carved from one allocation that the system may back with large pages,
// linked through `next`: what a load asks for, where a block-by-block allocation would spend its
// time in page faults. The allocation goes back when its last block is released. nullptr when
// memory is exhausted.
RowBlock* AllocateBlockSlab(uint32_t count);

// The spare blocks of one chain, reused before the heap is asked again.
class BlockPool {
 public:
  BlockPool() = default;
  ~BlockPool() { GiveChain(list_, true); }
  BlockPool(const BlockPool&) = delete;
  BlockPool& operator=(const BlockPool&) = delete;

  // A block with its header cleared, spare or new; nullptr when memory is exhausted.
  RowBlock* Take();
  // Keeps the block as a spare, or returns it to the heap.
  void Give(RowBlock* block, bool toHeap);
  // Gives every block of a chain linked through `next`.
  void GiveChain(RowBlock* head, bool toHeap);
  // Makes sure `count` spares wait, so that a later Take cannot fail.
  bool Reserve(uint32_t count);
  // The same for a large number, from one slab.
  bool ReserveMany(uint32_t count);
  // Returns spares beyond `keep` to the heap.
  void Trim(uint32_t keep);

  RowBlock* list() const { return list_; }
  uint32_t count() const { return count_; }

 private:
  RowBlock* list_ = nullptr;
  uint32_t count_ = 0;
};

// Fault injection for tests: after `count` more successful allocations every allocation fails,
// until the budget is set again; a negative count removes the limit.
void SetBlockAllocationBudget(long count);

}  // namespace kelpdex
