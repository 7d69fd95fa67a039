// gzip output in pieces: each filled buffer of the file stream becomes one gzip member,
// compressed on the calling thread and one helper thread, and written to the descriptor in
// order by the calling thread alone. A file of consecutive members is one gzip stream to every
// reader.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "persist/deflater.h"
#include "persist/ordered_work.h"

namespace kelpdex {

class GzipWriter {
 public:
  GzipWriter(int fd, DeflateFor use);
  // Stops the helper; pieces not yet written are dropped.
  ~GzipWriter() = default;
  GzipWriter(const GzipWriter&) = delete;
  GzipWriter& operator=(const GzipWriter&) = delete;

  // Only before the first piece.
  void SetUse(DeflateFor use) { use_ = use; }

  // Hands over the first `size` bytes of `piece` (of `capacity` bytes) as the next member, and
  // gives back in `piece` an empty buffer of the same capacity to fill next. `last` marks the
  // member that ends the bytes of a save. False once a compression or a write has failed; the
  // writer then takes nothing more.
  bool Put(std::unique_ptr<uint8_t[]>& piece, size_t capacity, size_t size, bool last);
  // Waits for every piece handed over and writes it out. False as Put.
  bool Finish();

 private:
  struct Slot {
    std::unique_ptr<uint8_t[]> input;
    size_t size = 0;
    std::unique_ptr<uint8_t[]> output;
    size_t outputCapacity = 0;
    size_t outputSize = 0;  // 0 when the compression failed
    bool last = false;
  };
  // Two pieces can be compressed while a third is written and a fourth filled.
  static constexpr uint64_t kSlots = 3;

  Slot& At(uint64_t sequence) { return slots_[sequence % kSlots]; }
  // Writes the oldest piece once it is compressed.
  bool WriteHead();
  void Compress(Slot& slot, std::unique_ptr<Deflater>& deflater);

  int fd_;
  DeflateFor use_;
  bool failed_ = false;
  std::unique_ptr<Deflater> deflaters_[2];  // the caller's and the helper's
  Slot slots_[kSlots];
  // Last, so that its helper stops before the slots and deflaters it works on go.
  OrderedWork work_;
};

}  // namespace kelpdex
