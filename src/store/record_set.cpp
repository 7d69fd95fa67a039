#include "store/record_set.h"

#include <new>
#include <vector>

namespace kelpdex {

bool RecordSet::Allocate() {
  if (rows_ != nullptr) return true;
  rows_.reset(new (std::nothrow) uint32_t[kEntries]);
  return rows_ != nullptr;
}

bool RecordSet::BuildInOrder(uint32_t usedRows) {
  if (!Allocate()) return false;
  for (uint32_t i = 0; i < kEntries; ++i) rows_[i] = i;
  count_ = usedRows > kEntries ? kEntries : usedRows;
  ordered_ = true;
  return true;
}

void RecordSet::RewriteFreeTail(uint32_t firstFree) {
  if (rows_ == nullptr) return;
  uint32_t row = firstFree;
  for (uint32_t i = count_; i < kEntries; ++i) {
    rows_[i] = row;
    if (row < kLastRow) ++row;
  }
}

bool RecordSet::Consistent(uint32_t firstFree) const {
  if (rows_ == nullptr) return count_ == 0;
  if (count_ > firstFree) return false;
  std::vector<bool> seen(firstFree);
  for (uint32_t i = 0; i < count_; ++i) {
    uint32_t row = rows_[i];
    if (row >= firstFree || seen[row]) return false;
    seen[row] = true;
  }
  uint32_t row = firstFree;
  for (uint32_t i = count_; i < kEntries; ++i) {
    if (rows_[i] != row) return false;
    if (row < kLastRow) ++row;
  }
  return true;
}

}  // namespace kelpdex
