#include "store/row_block.h"

#include <cstdlib>
#include <new>

#include "platform/os.h"

namespace kelpdex {

namespace {
long allocationBudget = -1;
}  // namespace

struct BlockSlab {
  void* memory;
  uint32_t live;  // blocks not yet released
  size_t bytes;
};

namespace {

constexpr size_t kLargePage = 2u << 20;

}  // namespace

RowBlock* AllocateBlock() {
  if (allocationBudget == 0) return nullptr;
  if (allocationBudget > 0) --allocationBudget;
  auto* block = static_cast<RowBlock*>(std::malloc(sizeof(RowBlock)));
  if (block == nullptr) return nullptr;
  block->next = nullptr;
  block->prev = nullptr;
  block->slab = nullptr;
  block->used = 0;
  return block;
}

RowBlock* AllocateBlockSlab(uint32_t count) {
  if (count == 0) return nullptr;
  if (allocationBudget >= 0) {
    if (allocationBudget < static_cast<long>(count)) return nullptr;
    allocationBudget -= count;
  }
  auto* slab = new (std::nothrow) BlockSlab{nullptr, count, 0};
  if (slab == nullptr) return nullptr;
  size_t bytes = static_cast<size_t>(count) * sizeof(RowBlock);
  size_t rounded = (bytes + kLargePage - 1) / kLargePage * kLargePage;
#ifdef _WIN32
  slab->memory = _aligned_malloc(rounded, kLargePage);
#else
  if (posix_memalign(&slab->memory, kLargePage, rounded) != 0) slab->memory = nullptr;
#endif
  slab->bytes = rounded;
  if (slab->memory == nullptr) {
    delete slab;
    return nullptr;
  }
  // A slab is taken to be filled at once (a load, a large insertion): its pages are mapped in
  // one sweep rather than one fault at a time.
  platform::PrefaultMemory(slab->memory, rounded);
  auto* blocks = static_cast<RowBlock*>(slab->memory);
  for (uint32_t i = 0; i < count; ++i) {
    blocks[i].next = i + 1 < count ? &blocks[i + 1] : nullptr;
    blocks[i].prev = nullptr;
    blocks[i].slab = slab;
    blocks[i].used = 0;
  }
  return blocks;
}

void ReleaseBlock(RowBlock* block) {
  BlockSlab* slab = block->slab;
  if (slab == nullptr) {
    std::free(block);
    return;
  }
  if (--slab->live == 0) {
#ifdef _WIN32
    _aligned_free(slab->memory);
#else
    std::free(slab->memory);
#endif
    delete slab;
  }
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

bool BlockPool::ReserveMany(uint32_t count) {
  if (count_ >= count) return true;
  RowBlock* blocks = AllocateBlockSlab(count - count_);
  if (blocks == nullptr) return Reserve(count);  // no room for one piece: block by block
  while (blocks != nullptr) {
    RowBlock* next = blocks->next;
    Give(blocks, false);
    blocks = next;
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
