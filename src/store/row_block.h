// The 8 KB unit of every chain: cells, style runs and row words. The payload is always 8182
// bytes; on 64-bit builds the links in front of it take more than the classic 10 bytes.
#pragma once

#include <cstdint>

namespace kelpdex {

constexpr uint32_t kBlockPayload = 8182;
// Where a full block is split: an insertion below this offset moves the tail out, one at or
// above it starts the new block.
constexpr uint32_t kSplitOffset = 4091;

struct RowBlock {
  RowBlock* next;
  RowBlock* prev;
  uint16_t used;  // bytes of records in data
  uint8_t data[kBlockPayload];
};

// A block from the heap, with its header cleared; nullptr when memory is exhausted.
RowBlock* AllocateBlock();
void ReleaseBlock(RowBlock* block);

// Fault injection for tests: after `count` more successful allocations every allocation fails,
// until the budget is set again; a negative count removes the limit.
void SetBlockAllocationBudget(long count);

}  // namespace kelpdex
