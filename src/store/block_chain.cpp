#include "store/block_chain.h"

namespace kelpdex {

void BlockChain::Adopt(RowBlock* head) {
  head_ = head;
  tail_ = nullptr;
  blockCount_ = 0;
  freeBytes_ = 0;
  for (RowBlock* b = head; b != nullptr; b = b->next) {
    b->prev = tail_;
    tail_ = b;
    ++blockCount_;
    freeBytes_ += kBlockPayload - b->used;
  }
}

void BlockChain::CutAfter(RowBlock* last, BlockPool& pool, uint32_t keep) {
  RowBlock* rest = last->next;
  last->next = nullptr;
  tail_ = last;
  while (rest != nullptr) {
    RowBlock* next = rest->next;
    pool.Give(rest, pool.count() >= keep);
    --blockCount_;
    rest = next;
  }
  if (head_->used == 0) {
    pool.Give(head_, pool.count() >= keep);
    head_ = tail_ = nullptr;
    blockCount_ = 0;
  }
  // Counts waste since the last compaction, so it starts again from nothing.
  freeBytes_ = 0;
}

}  // namespace kelpdex
