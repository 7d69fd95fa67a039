// The record set: which worksheet row each displayed record is, for every one of the 2,097,152
// places. Entries from `count` on hold the free rows behind the last used one in rising order,
// so a record typed behind the last needs no allocation: the count is raised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "store/cell_record.h"

namespace kelpdex {

class RecordSet {
 public:
  static constexpr uint32_t kEntries = kRowLimit;

  // The entries are allocated on first use (8 MB); false when memory runs out.
  bool Allocate();
  bool allocated() const { return rows_ != nullptr; }

  uint32_t count() const { return count_; }
  void SetCount(uint32_t count) { count_ = count; }
  uint32_t* rows() { return rows_.get(); }
  const uint32_t* rows() const { return rows_.get(); }
  uint32_t operator[](uint32_t record) const { return rows_[record]; }

  // False while a search or a sort has reordered or narrowed the set.
  bool ordered() const { return ordered_; }
  void SetOrdered(bool ordered) { ordered_ = ordered; }

  // The set of a table without filters: records 0 .. usedRows - 1 on their own rows, the free rows
  // behind. False when the entries could not be allocated.
  bool BuildInOrder(uint32_t usedRows);
  // Rewrites the entries from `count` on as the free series from `firstFree`. Where a narrowed
  // set leaves more entries than free rows, the rest repeat the last row.
  void RewriteFreeTail(uint32_t firstFree);

  // The invariant, for tests and checks: the first `count` entries are distinct rows below
  // `firstFree`, and the tail is the free series. Costs a pass over all entries.
  bool Consistent(uint32_t firstFree) const;

 private:
  std::unique_ptr<uint32_t[]> rows_;
  uint32_t count_ = 0;
  bool ordered_ = true;
};

}  // namespace kelpdex
