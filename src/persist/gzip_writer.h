// gzip output in pieces: each filled buffer of the file stream becomes one gzip member,
// compressed by libdeflate on the calling thread and one helper thread, and written to the
// descriptor in order by the calling thread alone. A file of consecutive members is one gzip
// stream to every reader.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

struct libdeflate_compressor;

namespace kelpdex {

class GzipWriter {
 public:
  GzipWriter(int fd, int level);
  // Stops the helper; pieces not yet written are dropped.
  ~GzipWriter();
  GzipWriter(const GzipWriter&) = delete;
  GzipWriter& operator=(const GzipWriter&) = delete;

  // Only before the first piece.
  void SetLevel(int level) { level_ = level; }

  // Hands over the first `size` bytes of `piece` (of `capacity` bytes) as the next member, and
  // gives back in `piece` an empty buffer of the same capacity to fill next. `last` marks the
  // member that ends the bytes of a save. False once a compression or a write has failed; the
  // writer then takes nothing more.
  bool Put(std::unique_ptr<uint8_t[]>& piece, size_t capacity, size_t size, bool last);
  // Waits for every piece handed over and writes it out. False as Put.
  bool Finish();

 private:
  enum class State : uint8_t { kFree, kQueued, kBusy, kDone };
  struct Slot {
    std::unique_ptr<uint8_t[]> input;
    size_t size = 0;
    std::unique_ptr<uint8_t[]> output;
    size_t outputCapacity = 0;
    size_t outputSize = 0;  // 0 when the compression failed
    bool last = false;
    State state = State::kFree;
  };
  // Two pieces can be compressed while a third is written and a fourth filled.
  static constexpr uint64_t kSlots = 3;

  Slot& At(uint64_t sequence) { return slots_[sequence % kSlots]; }
  // One step towards writing the oldest piece: write it if it is done, else compress the oldest
  // piece nobody has taken, else wait for the helper. Called with the lock held.
  bool Step(std::unique_lock<std::mutex>& lock);
  bool Compress(Slot& slot, libdeflate_compressor*& compressor);
  void StartHelper();
  void RunHelper();

  int fd_;
  int level_;
  bool failed_ = false;
  libdeflate_compressor* compressor_ = nullptr;  // the calling thread's
  Slot slots_[kSlots];
  uint64_t head_ = 0;  // the oldest piece not yet written
  uint64_t tail_ = 0;  // the next piece to come
  std::mutex mutex_;
  std::condition_variable changed_;
  std::thread helper_;
  bool helperTried_ = false;
  bool stop_ = false;
};

}  // namespace kelpdex
