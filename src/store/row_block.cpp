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

RowBlock* BlockPool::Take() {
  if (list_ == nullptr) return AllocateBlock();
  RowBlock* block = list_;
  list_ = block->next;
  --count_;
  block->next = nullptr;
  block->prev = nullptr;
  block->used = 0;
  return block;
}

void BlockPool::Give(RowBlock* block, bool toHeap) {
  if (toHeap) {
    ReleaseBlock(block);
    return;
  }
  block->next = list_;
  block->prev = nullptr;
  list_ = block;
  ++count_;
}

void BlockPool::GiveChain(RowBlock* head, bool toHeap) {
  while (head != nullptr) {
    RowBlock* next = head->next;
    Give(head, toHeap);
    head = next;
  }
}

bool BlockPool::Reserve(uint32_t count) {
  while (count_ < count) {
    RowBlock* block = AllocateBlock();
    if (block == nullptr) return false;
    Give(block, false);
  }
  return true;
}

void BlockPool::Trim(uint32_t keep) {
  while (count_ > keep) {
    RowBlock* block = list_;
    list_ = block->next;
    --count_;
    ReleaseBlock(block);
  }
}

void SetBlockAllocationBudget(long count) {
  allocationBudget = count;
}

}  // namespace kelpdex
