// Cells that come in strictly ascending order, as a file holds them, packed straight into fresh
// blocks as a binary load does. The store takes the chain once at the end, whatever happened;
// when nothing was appended its own cells stay.
#pragma once

#include <cstdint>

#include "store/block_chain.h"
#include "store/cell_record.h"
#include "store/cell_store.h"

namespace kelpdex {

class CellAppender {
 public:
  explicit CellAppender(CellStore& cells) : cells_(cells) {}
  ~CellAppender() {
    // Adopting an empty chain would put the store's own blocks on its free list.
    if (chain_.head() != nullptr) cells_.AdoptChain(chain_.Release());
  }
  CellAppender(const CellAppender&) = delete;
  CellAppender& operator=(const CellAppender&) = delete;

  // False when memory runs out; what was appended before stays.
  bool Append(const uint8_t* record) {
    return chain_.AppendRecord(record, cell::Size(record),
                               [this] { return cells_.TakeSpareBlock(); });
  }

 private:
  CellStore& cells_;
  BlockChain chain_;
};

}  // namespace kelpdex
