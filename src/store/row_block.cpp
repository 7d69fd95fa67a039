#include "store/row_block.h"

#include <cstdlib>

namespace kelpdex {

namespace {
long allocationBudget = -1;
}  // namespace

RowBlock* AllocateBlock() {
  if (allocationBudget == 0) return nullptr;
  if (allocationBudget > 0) --allocationBudget;
  auto* block = static_cast<RowBlock*>(std::malloc(sizeof(RowBlock)));
  if (block == nullptr) return nullptr;
  block->next = nullptr;
  block->prev = nullptr;
  block->used = 0;
  return block;
}

void ReleaseBlock(RowBlock* block) {
  std::free(block);
}

void SetBlockAllocationBudget(long count) {
  allocationBudget = count;
}

}  // namespace kelpdex
