// The bookkeeping of one doubly linked chain of blocks: head and tail, the block count and the
// waste (free bytes) that decides when the records are packed again. It owns no memory: blocks
// come from and go back to the pool of whoever keeps the chain.
#pragma once

#include <cstdint>
#include <cstring>

#include "store/row_block.h"

namespace kelpdex {

class BlockChain {
 public:
  // A fifth of the memory wasted, and at least this much, asks for a compaction.
  static constexpr uint32_t kCompactionWaste = 1000001;

  BlockChain() = default;
  // Two descriptors of one chain would free it twice, so a chain moves and is never copied.
  BlockChain(const BlockChain&) = delete;
  BlockChain& operator=(const BlockChain&) = delete;
  BlockChain(BlockChain&& other) noexcept { *this = static_cast<BlockChain&&>(other); }
  BlockChain& operator=(BlockChain&& other) noexcept {
    if (this == &other) return *this;
    head_ = other.head_;
    tail_ = other.tail_;
    blockCount_ = other.blockCount_;
    freeBytes_ = other.freeBytes_;
    other.Release();
    return *this;
  }

  RowBlock* head() const { return head_; }
  RowBlock* tail() const { return tail_; }
  uint32_t blockCount() const { return blockCount_; }
  uint32_t freeBytes() const { return freeBytes_; }

  // A block joins with its unused room counted as waste; one that leaves takes that room with it.
  void Append(RowBlock* block) {
    block->next = nullptr;
    block->prev = tail_;
    if (tail_ != nullptr) {
      tail_->next = block;
    } else {
      head_ = block;
    }
    tail_ = block;
    ++blockCount_;
    freeBytes_ += kBlockPayload - block->used;
  }
  void LinkAfter(RowBlock* block, RowBlock* after) {
    block->prev = after;
    block->next = after->next;
    if (after->next != nullptr) after->next->prev = block;
    after->next = block;
    if (tail_ == after) tail_ = block;
    ++blockCount_;
    freeBytes_ += kBlockPayload - block->used;
  }
  // The caller gives the block back to its pool.
  void Remove(RowBlock* block) {
    uint32_t unused = kBlockPayload - block->used;
    if (freeBytes_ >= unused) freeBytes_ -= unused;
    if (block->prev != nullptr) {
      block->prev->next = block->next;
    } else {
      head_ = block->next;
    }
    if (block->next != nullptr) {
      block->next->prev = block->prev;
    } else {
      tail_ = block->prev;
    }
    block->next = nullptr;
    block->prev = nullptr;
    --blockCount_;
  }

  // Records leaving or entering blocks already in the chain. The count never goes below zero,
  // since waste is counted from the last compaction while records may fill older room.
  void CountFreed(uint32_t bytes) { freeBytes_ += bytes; }
  void CountFilled(uint32_t bytes) { freeBytes_ -= bytes < freeBytes_ ? bytes : freeBytes_; }
  // After a sweep that packed every record.
  void ForgetWaste() { freeBytes_ = 0; }
  // The integer division is the rule: more than about a fifth of the memory wasted.
  bool WantsCompaction() const {
    return freeBytes_ >= kCompactionWaste &&
           (static_cast<uint64_t>(blockCount_) * 8192) / freeBytes_ < 5;
  }

  // Copies a record behind the last one, into a fresh block from `take` when the tail has no
  // room: how chains are built in key order, by loaders and merges. False when `take` gives
  // nullptr, with the chain as it was.
  template <typename Take>
  bool AppendRecord(const uint8_t* record, uint32_t size, Take&& take) {
    if (tail_ == nullptr || tail_->used + size > kBlockPayload) {
      RowBlock* block = take();
      if (block == nullptr) return false;
      Append(block);
    }
    std::memcpy(tail_->data + tail_->used, record, size);
    tail_->used = static_cast<uint16_t>(tail_->used + size);
    CountFilled(size);
    return true;
  }

  // Takes a chain linked through `next` (null for none): the links back are set and the blocks
  // and their room counted. Whatever chain was held before is forgotten, not freed.
  void Adopt(RowBlock* head);
  // Hands out the head; the chain is empty afterwards and the caller owns the blocks.
  RowBlock* Release() {
    RowBlock* head = head_;
    head_ = tail_ = nullptr;
    blockCount_ = 0;
    freeBytes_ = 0;
    return head;
  }

  // Packs the records towards the head, `capacity` bytes to a block, and gives the blocks left
  // over to `pool` (to the heap once it holds `keep` spares). `sizeOf(record)` is a record's
  // size; `absorb(kept, record)` may fold a record into the one kept before it and say so. The
  // waste starts again from nothing.
  template <typename SizeOf, typename Absorb>
  void Compact(BlockPool& pool, uint32_t keep, uint32_t capacity, SizeOf sizeOf, Absorb absorb);

 private:
  // The end of a compaction: the blocks behind `last` go to the pool, and so does a head left
  // empty.
  void CutAfter(RowBlock* last, BlockPool& pool, uint32_t keep);

  RowBlock* head_ = nullptr;
  RowBlock* tail_ = nullptr;
  uint32_t blockCount_ = 0;
  uint32_t freeBytes_ = 0;
};

template <typename SizeOf, typename Absorb>
void BlockChain::Compact(BlockPool& pool, uint32_t keep, uint32_t capacity, SizeOf sizeOf,
                         Absorb absorb) {
  if (head_ == nullptr) return;
  RowBlock* wb = head_;
  uint32_t woff = 0;
  uint8_t* lastKept = nullptr;
  for (RowBlock* rb = head_; rb != nullptr; rb = rb->next) {
    uint32_t rused = rb->used;
    for (uint32_t roff = 0; roff < rused;) {
      uint8_t* r = rb->data + roff;
      uint32_t size = sizeOf(r);
      roff += size;
      if (lastKept != nullptr && absorb(lastKept, r)) continue;
      // The write position never passes the read position, so each move is safe.
      if (woff + size > capacity) {
        wb->used = static_cast<uint16_t>(woff);
        wb = wb->next;
        woff = 0;
      }
      if (wb->data + woff != r) std::memmove(wb->data + woff, r, size);
      lastKept = wb->data + woff;
      woff += size;
    }
  }
  wb->used = static_cast<uint16_t>(woff);
  CutAfter(wb, pool, keep);
}

}  // namespace kelpdex
